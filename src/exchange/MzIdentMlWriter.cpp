#include "exchange/MzIdentMlWriter.h"

#include <pugixml.hpp>

#include <set>

#include "exchange/SpectrumReferences.h"

namespace {

constexpr double kProton = 1.00727646688;

// Controlled terms of the modifications the lists commonly carry; any other
// is written as "unknown modification" with its name as the value.
struct CUnimodTerm {
  const char* prefix;
  const char* accession;
  const char* name;
};
constexpr CUnimodTerm kUnimod[] = {
    {"Carbamidomethyl", "UNIMOD:4", "Carbamidomethyl"},
    {"Oxidation", "UNIMOD:35", "Oxidation"},
    {"Deamidated", "UNIMOD:7", "Deamidated"},
    {"Acetyl", "UNIMOD:1", "Acetyl"},
    {"Phospho", "UNIMOD:21", "Phospho"},
};

pugi::xml_node CvParam(pugi::xml_node parent, const char* cv, const char* accession,
                       const char* name, const std::string& value = "") {
  pugi::xml_node param = parent.append_child("cvParam");
  param.append_attribute("cvRef") = cv;
  param.append_attribute("accession") = accession;
  param.append_attribute("name") = name;
  if (!value.empty()) param.append_attribute("value") = value.c_str();
  return param;
}

void UserParam(pugi::xml_node parent, const std::string& name, const std::string& value) {
  pugi::xml_node param = parent.append_child("userParam");
  param.append_attribute("name") = name.c_str();
  param.append_attribute("value") = value.c_str();
}

void Tolerance(pugi::xml_node parent, const char* element, double value, int32_t unit) {
  pugi::xml_node tolerance = parent.append_child(element);
  for (const auto& [accession, name] : {std::pair{"MS:1001412", "search tolerance plus value"},
                                        std::pair{"MS:1001413", "search tolerance minus value"}}) {
    pugi::xml_node param = CvParam(tolerance, "PSI-MS", accession, name, NumberText(value));
    param.append_attribute("unitCvRef") = "UO";
    param.append_attribute("unitAccession") = unit == 1 ? "UO:0000169" : "UO:0000221";
    param.append_attribute("unitName") = unit == 1 ? "parts per million" : "dalton";
  }
}

// The modification name without its residue: "Oxidation" of "Oxidation[M]".
std::string BareName(const std::string& name) {
  const std::size_t bracket = name.find('[');
  return bracket == 0 || bracket == std::string::npos ? name : name.substr(0, bracket);
}

void ModificationTerm(pugi::xml_node parent, const std::string& name) {
  const std::string bare = BareName(name);
  for (const CUnimodTerm& term : kUnimod)
    if (bare == term.prefix) {
      CvParam(parent, "UNIMOD", term.accession, term.name);
      return;
    }
  CvParam(parent, "PSI-MS", "MS:1001460", "unknown modification", name);
}

// Residue at a modification's position: the N- or C-terminus reads as ".".
std::string ResidueAt(const std::string& sequence, int32_t position) {
  if (position < 1 || static_cast<std::size_t>(position) > sequence.size()) return ".";
  return std::string(1, sequence[static_cast<std::size_t>(position) - 1]);
}

void AddSoftware(pugi::xml_node root) {
  pugi::xml_node software =
      root.append_child("AnalysisSoftwareList").append_child("AnalysisSoftware");
  software.append_attribute("id") = "QuorinGlyco";
  software.append_attribute("name") = "QuorinGlyco";
  software.append_attribute("version") = kVersion.c_str();
  UserParam(software.append_child("SoftwareName"), "QuorinGlyco", "");
}

void AddProtocol(pugi::xml_node root, const CExportedRun& run, const CExchangeSettings& settings) {
  const CParam& param = *settings.param;
  pugi::xml_node protocol = root.append_child("AnalysisProtocolCollection")
                                .append_child("SpectrumIdentificationProtocol");
  protocol.append_attribute("id") = "SIP";
  protocol.append_attribute("analysisSoftware_ref") = "QuorinGlyco";
  CvParam(protocol.append_child("SearchType"), "PSI-MS", "MS:1001083", "ms-ms search");
  pugi::xml_node additional = protocol.append_child("AdditionalSearchParams");
  UserParam(additional, "search kind", "spectral library search of intact N-glycopeptides");
  UserParam(additional, "minimal_peptide_ions", std::to_string(param.search.minimal_peptide_ions));
  if (param.construction.enabled) {
    std::string motifs;
    for (int32_t code : param.construction.N_glycan_motifs) {
      static const char* const kMotifs[] = {"NXS", "NXT", "NXC", "NXV"};
      if (code >= 0 && code < 4) (motifs += motifs.empty() ? "" : ",") += kMotifs[code];
    }
    UserParam(additional, "N-glycan motifs", motifs);
  }
  for (const CGlycan& glycan : settings.massTable.glycans)
    UserParam(additional, "glycan " + GlycanCompositionText(glycan.name), NumberText(glycan.mass));

  // Every modification the identifications carry, as variable modifications;
  // the glycans are listed above, one mass each.
  std::set<std::pair<std::string, std::string>> seen;  // name, residue
  for (const CExportedHit& hit : run.hits)
    for (const CModification& mod : hit.modifications)
      seen.emplace(mod.name, ResidueAt(hit.PlainSequence(), mod.position));
  if (!seen.empty()) {
    pugi::xml_node mods = protocol.append_child("ModificationParams");
    for (const auto& [name, residue] : seen) {
      pugi::xml_node mod = mods.append_child("SearchModification");
      mod.append_attribute("fixedMod") = "false";
      mod.append_attribute("massDelta") = NumberText(settings.massTable.Modification(name)).c_str();
      mod.append_attribute("residues") = residue.c_str();
      ModificationTerm(mod, name);
    }
  }
  Tolerance(protocol, "FragmentTolerance", param.search.query_product_ion_tolerance,
            param.search.query_product_ion_unit);
  Tolerance(protocol, "ParentTolerance", param.search.query_precursor_ion_tolerance,
            param.search.query_precursor_ion_unit);
  CvParam(protocol.append_child("Threshold"), "PSI-MS", "MS:1001494", "no threshold");
}

void AddInputs(pugi::xml_node inputs, const CExchangeSettings& settings) {
  const CSearchParam& search = settings.param->search;
  pugi::xml_node database = inputs.append_child("SearchDatabase");
  database.append_attribute("id") = "SDB";
  database.append_attribute("location") = search.input_speclib_filename.c_str();
  UserParam(database.append_child("DatabaseName"), "spectral library",
            search.input_speclib_filename);
  for (std::size_t i = 0; i < search.query_datasets.size(); ++i) {
    const CDatasetFile& dataset = search.query_datasets[i];
    const CSpectraFormatTerms terms = SpectraFormatTerms(dataset.format);
    pugi::xml_node data = inputs.append_child("SpectraData");
    data.append_attribute("id") = ("SD" + std::to_string(i + 1)).c_str();
    data.append_attribute("location") = dataset.pathname.c_str();
    CvParam(data.append_child("FileFormat"), "PSI-MS", terms.fileAccession, terms.fileName);
    CvParam(data.append_child("SpectrumIDFormat"), "PSI-MS", terms.idAccession, terms.idName);
  }
}

// Peptide of one line (each line its own: a line is one identification).
void AddPeptide(pugi::xml_node sequences, const CExportedHit& hit, const std::string& id,
                const CExchangeSettings& settings) {
  const std::string plain = hit.PlainSequence();
  pugi::xml_node peptide = sequences.append_child("Peptide");
  peptide.append_attribute("id") = ("PEP_" + id).c_str();
  peptide.append_child("PeptideSequence").text() = plain.c_str();
  for (const CModification& mod : hit.modifications) {
    pugi::xml_node node = peptide.append_child("Modification");
    node.append_attribute("location") = mod.position;
    const std::string residue = ResidueAt(plain, mod.position);
    if (residue != ".") node.append_attribute("residues") = residue.c_str();
    node.append_attribute("monoisotopicMassDelta") =
        NumberText(settings.massTable.Modification(mod.name)).c_str();
    ModificationTerm(node, mod.name);
  }
  if (hit.site > 0) {
    pugi::xml_node glycan = peptide.append_child("Modification");
    glycan.append_attribute("location") = hit.site;
    glycan.append_attribute("residues") = ResidueAt(plain, hit.site).c_str();
    glycan.append_attribute("monoisotopicMassDelta") = NumberText(hit.glycanMass).c_str();
    CvParam(glycan, "PSI-MS", "MS:1001460", "unknown modification",
            GlycanCompositionText(hit.glycanName));
  }
}

void AddEvidence(pugi::xml_node sequences, const CExportedHit& hit, const std::string& id) {
  const std::string plain = hit.PlainSequence();
  pugi::xml_node evidence = sequences.append_child("PeptideEvidence");
  evidence.append_attribute("id") = ("PE_" + id).c_str();
  evidence.append_attribute("peptide_ref") = ("PEP_" + id).c_str();
  evidence.append_attribute("dBSequence_ref") = ("DBS_" + id).c_str();
  if (hit.start > 0) {
    evidence.append_attribute("start") = hit.start;
    evidence.append_attribute("end") = hit.start + static_cast<int>(plain.size()) - 1;
  }
  // Flanking residues where the list knew them (only letters are allowed).
  auto flank = [](const std::string& text, bool last) {
    const char c = text.empty() ? '?' : (last ? text.front() : text.back());
    return std::string(1, c >= 'A' && c <= 'Z' ? c : '-');
  };
  if (!hit.prevAA.empty()) evidence.append_attribute("pre") = flank(hit.prevAA, false).c_str();
  if (!hit.lastAA.empty()) evidence.append_attribute("post") = flank(hit.lastAA, true).c_str();
  evidence.append_attribute("isDecoy") = hit.decoy ? "true" : "false";
}

void AddResult(pugi::xml_node list, const CExportedRun& run, const CExportedHit& hit,
               const std::string& id) {
  pugi::xml_node result = list.append_child("SpectrumIdentificationResult");
  result.append_attribute("id") = ("SIR_" + id).c_str();
  result.append_attribute("spectrumID") = hit.spectrumId.c_str();
  result.append_attribute("spectraData_ref") = ("SD" + std::to_string(hit.spectraFile + 1)).c_str();
  pugi::xml_node item = result.append_child("SpectrumIdentificationItem");
  item.append_attribute("id") = ("SII_" + id).c_str();
  const double z = hit.charge > 0 ? hit.charge : 1;
  item.append_attribute("chargeState") = hit.charge;
  item.append_attribute("experimentalMassToCharge") =
      NumberText((hit.queryMH + (z - 1) * kProton) / z).c_str();
  item.append_attribute("calculatedMassToCharge") =
      NumberText((hit.libraryMH + hit.glycanMass + (z - 1) * kProton) / z).c_str();
  item.append_attribute("peptide_ref") = ("PEP_" + id).c_str();
  item.append_attribute("rank") = 1;
  item.append_attribute("passThreshold") = "true";
  item.append_child("PeptideEvidenceRef").append_attribute("peptideEvidence_ref") =
      ("PE_" + id).c_str();
  // The FDR column is a target-decoy q-value: walked down the scores, made monotone.
  if (hit.fields.size() > 27) CvParam(item, "PSI-MS", "MS:1002354", "PSM-level q-value", hit.fields[27]);
  UserParam(item, "glycan composition", GlycanCompositionText(hit.glycanName));
  UserParam(item, "glycan mass", hit.fields[8]);
  UserParam(item, "glycosylation site", std::to_string(hit.site));
  UserParam(item, "library entry", hit.fields[1]);
  // The scores and ion counts, under the result file's own column names.
  for (std::size_t c = 11; c < 20 && c < run.header.size(); ++c) UserParam(item, run.header[c], hit.fields[c]);
  for (std::size_t c = 20; c < 23 && c < run.header.size(); ++c) UserParam(item, run.header[c], hit.fields[c]);
  for (const auto& [column, value] : hit.qvalues) UserParam(item, column, value);
  CvParam(result, "PSI-MS", "MS:1000796", "spectrum title", hit.query);
}

}  // namespace

void WriteMzIdentMl(const CExportedRun& run, const CExchangeSettings& settings, std::ostream& out) {
  pugi::xml_document document;
  pugi::xml_node declaration = document.append_child(pugi::node_declaration);
  declaration.append_attribute("version") = "1.0";
  declaration.append_attribute("encoding") = "UTF-8";
  pugi::xml_node root = document.append_child("MzIdentML");
  root.append_attribute("xmlns") = "http://psidev.info/psi/pi/mzIdentML/1.1";
  root.append_attribute("id") = "QuorinGlyco";
  root.append_attribute("version") = "1.1.0";
  root.append_attribute("creationDate") = settings.creationDate.c_str();
  pugi::xml_node cvs = root.append_child("cvList");
  for (const auto& [id, name, uri] :
       {std::tuple{"PSI-MS", "Proteomics Standards Initiative Mass Spectrometry Vocabularies",
                   "https://raw.githubusercontent.com/HUPO-PSI/psi-ms-CV/master/psi-ms.obo"},
        std::tuple{"UNIMOD", "UNIMOD", "http://www.unimod.org/obo/unimod.obo"},
        std::tuple{"UO", "UNIT-ONTOLOGY",
                   "https://raw.githubusercontent.com/bio-ontology-research-group/unit-ontology/master/unit.obo"}}) {
    pugi::xml_node cv = cvs.append_child("cv");
    cv.append_attribute("id") = id;
    cv.append_attribute("fullName") = name;
    cv.append_attribute("uri") = uri;
  }
  AddSoftware(root);

  // The schema wants all DBSequence, then all Peptide, then all PeptideEvidence elements.
  pugi::xml_node sequences = root.append_child("SequenceCollection");
  for (std::size_t i = 0; i < run.hits.size(); ++i) {
    const CExportedHit& hit = run.hits[i];
    pugi::xml_node protein = sequences.append_child("DBSequence");
    protein.append_attribute("id") = ("DBS_" + std::to_string(i + 1)).c_str();
    protein.append_attribute("accession") = hit.protein.empty() ? "unknown" : hit.protein.c_str();
    protein.append_attribute("searchDatabase_ref") = "SDB";
  }
  for (std::size_t i = 0; i < run.hits.size(); ++i)
    AddPeptide(sequences, run.hits[i], std::to_string(i + 1), settings);
  for (std::size_t i = 0; i < run.hits.size(); ++i)
    AddEvidence(sequences, run.hits[i], std::to_string(i + 1));

  pugi::xml_node identification =
      root.append_child("AnalysisCollection").append_child("SpectrumIdentification");
  identification.append_attribute("id") = "SI";
  identification.append_attribute("spectrumIdentificationProtocol_ref") = "SIP";
  identification.append_attribute("spectrumIdentificationList_ref") = "SIL";
  for (std::size_t i = 0; i < settings.param->search.query_datasets.size(); ++i)
    identification.append_child("InputSpectra").append_attribute("spectraData_ref") =
        ("SD" + std::to_string(i + 1)).c_str();
  identification.append_child("SearchDatabaseRef").append_attribute("searchDatabase_ref") = "SDB";
  AddProtocol(root, run, settings);

  pugi::xml_node data = root.append_child("DataCollection");
  AddInputs(data.append_child("Inputs"), settings);
  pugi::xml_node list = data.append_child("AnalysisData").append_child("SpectrumIdentificationList");
  list.append_attribute("id") = "SIL";
  for (std::size_t i = 0; i < run.hits.size(); ++i)
    AddResult(list, run, run.hits[i], std::to_string(i + 1));
  document.save(out, "  ", pugi::format_default | pugi::format_no_declaration, pugi::encoding_utf8);
}
