#include "idlist/PepXmlSpecListIO.h"

#include <cmath>
#include <cstdlib>
#include <iostream>
#include <sstream>

#include "idlist/ListCounts.h"
#include "idlist/XmlDocument.h"
#include "molecule/MassTable.h"
#include "run/InputFailures.h"

std::string MakePepXmlModName(const std::string& residue, const std::string& massText) {
  return residue + "[" + massText.substr(0, massText.find('.')) + "]";
}

void CPepXmlSpecListIO::Init(const CIdentificationFile& file) {
  path = file.path;
  format = 1;
  probability_threshold = file.probability_threshold;
}

namespace {

// The element, or a CXmlException naming what the document lacks. The reader
// can't go on without these, so the file counts as faulty, as for a syntax
// error.
CXmlElement& Require(CXmlElement* element, const std::string& name) {
  if (!element) throw CXmlException("Can not find " + name + " element!");
  return *element;
}

// Adds the file's modification masses to the table where it lacks them or
// differs from them by more than 1 Da.
void UpdateMassTable(CXmlElement& searchSummary, CMassTable& table) {
  for (CXmlNode* node : searchSummary.children) {
    if (node->type != kXmlElement || node->text != "aminoacid_modification") continue;
    auto& modification = static_cast<CXmlElement&>(*node);
    const std::string residue = modification.AttributeValue("aminoacid");
    const std::string mass = modification.AttributeValue("mass");
    const double massdiff = std::atof(modification.AttributeValue("massdiff").c_str());
    const std::string name = MakePepXmlModName(residue, mass);
    if (std::fabs(table.Modification(name) - massdiff) > 1.0) table.SetEntry(2, name, massdiff);
  }
}

}  // namespace

// Attributes are read with AttributeValue: an absent one reads as empty text
// as with GetAttribute, and the attributes nobody asks for stay unparsed text,
// which keeps the tree of a large file small.
void CPepXmlSpecListIO::Read(std::vector<CIdentifiedSpectrum>& list) {
  const std::size_t sizeBefore = list.size();
  try {
    CXmlDocument document;
    document.LoadFile(path);

    CXmlElement* root = nullptr;
    for (CXmlNode* node : document.children) {
      if (node->type == kXmlElement) {
        root = static_cast<CXmlElement*>(node);
        break;
      }
    }
    if (!root) throw CXmlException("Can not find root element!");

    CXmlElement& runSummary = Require(root->GetChild("msms_run_summary", 0), "msms_run_summary");
    CMassTable table;
    CMassTableFile tableFile;
    tableFile.filename = massTablePath;
    tableFile.Load(table);
    UpdateMassTable(Require(runSummary.GetChild("search_summary", 0), "search_summary"), table);
    // Written back on every read, changed or not.
    if (!massTableUpdatePath.empty()) tableFile.filename = massTableUpdatePath;
    tableFile.Save(table);
    massTableWritten = true;

    std::cout << '\t' << runSummary.CountChildren("spectrum_query")
              << " query spectra identified." << std::endl;

    // One walk over the run's children: the queries in document order.
    for (CXmlNode* node : runSummary.children) {
      if (node->type != kXmlElement || node->text != "spectrum_query") continue;
      auto& query = static_cast<CXmlElement&>(*node);
      CXmlElement* result = query.GetChild("search_result", 0);
      if (!result) continue;
      CXmlElement* hit = result->GetChild("search_hit", 0);
      if (!hit) continue;
      CXmlElement* analysis = hit->GetChild("analysis_result", 0);
      if (!analysis) continue;
      CXmlElement* prophet = analysis->GetChild("peptideprophet_result", 0);
      if (!prophet) continue;
      const double probability = std::atof(prophet->AttributeValue("probability").c_str());
      if (probability < probability_threshold) {
        ++ListCounts().read;
        ++ListCounts().belowProbability;
        continue;
      }

      record.spectrumName = query.AttributeValue("spectrum");
      record.sequence = hit->AttributeValue("peptide");
      record.charge = std::atoi(query.AttributeValue("assumed_charge").c_str());
      record.modifications.clear();
      if (CXmlElement* info = hit->GetChild("modification_info", 0)) {
        for (CXmlNode* child : info->children) {
          if (child->type != kXmlElement || child->text != "mod_aminoacid_mass") continue;
          auto& modified = static_cast<CXmlElement&>(*child);
          const int position = std::atoi(modified.AttributeValue("position").c_str());
          if (position < 1 || static_cast<std::size_t>(position) > record.sequence.size()) {
            throw CXmlException("Modification position " + std::to_string(position) +
                                " lies outside the peptide " + record.sequence +
                                " of spectrum " + record.spectrumName + "!");
          }
          const std::string residue(1, record.sequence[static_cast<std::size_t>(position) - 1]);
          record.modifications.push_back(
              {position, MakePepXmlModName(residue, modified.AttributeValue("mass"))});
        }
      }
      AddIdentified(list, record, "00");
    }
  } catch (const CXmlException& error) {
    // A faulty file gives no records: those of its queries read before the
    // fault are taken out again.
    if (list.size() > sizeBefore) {
      ListCounts().kept -= list.size() - sizeBefore;
      list.resize(sizeBefore);
    }
    std::cout << error.message << std::endl;
    NoteInputFailure();
    return;
  }
  // The threshold in the default stream format, whatever flags other code has
  // left on std::cout.
  std::ostringstream threshold;
  threshold << probability_threshold;
  std::cout << '\t' << list.size() << " spectra with probability over " << threshold.str() << "."
            << std::endl
            << std::endl;
}
