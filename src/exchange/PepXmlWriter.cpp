#include "exchange/PepXmlWriter.h"

#include <pugixml.hpp>

#include <map>

#include "spectrum/MzSpectrumName.h"

namespace {

constexpr double kProton = 1.00727646688;
const std::string kTppDecoyPrefix = "DECOY_";

void Attribute(pugi::xml_node node, const char* name, const std::string& value) {
  node.append_attribute(name) = value.c_str();
}

void Score(pugi::xml_node hit, const std::string& name, const std::string& value) {
  pugi::xml_node score = hit.append_child("search_score");
  Attribute(score, "name", name);
  Attribute(score, "value", value);
}

// The modified residue masses of a hit, by 1-based position: residue plus
// modifications plus, on the site, the glycan.
std::map<int32_t, double> ModifiedMasses(const CExportedHit& hit, const CMassTable& table) {
  const std::string plain = hit.PlainSequence();
  std::map<int32_t, double> masses;
  auto add = [&](int32_t position, double delta) {
    if (position < 1 || static_cast<std::size_t>(position) > plain.size()) return;
    auto [place, fresh] = masses.emplace(position, 0.0);
    if (fresh) place->second = table.AminoAcid(plain[static_cast<std::size_t>(position) - 1]);
    place->second += delta;
  };
  for (const CModification& mod : hit.modifications) add(mod.position, table.Modification(mod.name));
  if (hit.site > 0) add(hit.site, hit.glycanMass);
  return masses;
}

void AddHit(pugi::xml_node query, const CExportedRun& run, const CExportedHit& hit,
            const CMassTable& table) {
  const std::string plain = hit.PlainSequence();
  const double calculated = hit.libraryMH + hit.glycanMass - kProton;
  pugi::xml_node result = query.append_child("search_result").append_child("search_hit");
  result.append_attribute("hit_rank") = 1;
  Attribute(result, "peptide", plain);
  Attribute(result, "peptide_prev_aa", hit.prevAA.empty() ? "-" : hit.prevAA.substr(hit.prevAA.size() - 1));
  Attribute(result, "peptide_next_aa", hit.lastAA.empty() ? "-" : hit.lastAA.substr(0, 1));
  Attribute(result, "protein", PepXmlProtein(hit));
  result.append_attribute("num_tot_proteins") = 1;
  Attribute(result, "calc_neutral_pep_mass", NumberText(calculated));
  Attribute(result, "massdiff", NumberText(hit.queryMH - kProton - calculated));
  result.append_attribute("is_rejected") = 0;
  pugi::xml_node mods = result.append_child("modification_info");
  for (const auto& [position, mass] : ModifiedMasses(hit, table)) {
    pugi::xml_node mod = mods.append_child("mod_aminoacid_mass");
    mod.append_attribute("position") = position;
    Attribute(mod, "mass", NumberText(mass));
  }
  Score(result, "glycan_composition", GlycanCompositionText(hit.glycanName));
  Score(result, "glycan_mass", hit.fields[8]);
  for (std::size_t c = 13; c < 20 && c < run.header.size(); ++c)
    Score(result, run.header[c], hit.fields[c]);
  if (hit.fields.size() > 27) Score(result, "FDR", hit.fields[27]);
  for (const auto& [column, value] : hit.qvalues) Score(result, column, value);
}

}  // namespace

std::string PepXmlProtein(const CExportedHit& hit) {
  if (hit.decoy && hit.protein.rfind(kDecoyPrefix, 0) == 0)
    return kTppDecoyPrefix + hit.protein.substr(kDecoyPrefix.size());
  if (hit.decoy) return kTppDecoyPrefix + hit.protein;
  return hit.protein.empty() ? "unknown" : hit.protein;
}

void WritePepXml(const CExportedRun& run, const CExchangeSettings& settings,
                 const std::string& outPath, std::ostream& out) {
  const CSearchParam& search = settings.param->search;
  pugi::xml_document document;
  pugi::xml_node declaration = document.append_child(pugi::node_declaration);
  declaration.append_attribute("version") = "1.0";
  declaration.append_attribute("encoding") = "UTF-8";
  pugi::xml_node root = document.append_child("msms_pipeline_analysis");
  Attribute(root, "date", settings.creationDate);
  Attribute(root, "xmlns", "http://regis-web.systemsbiology.net/pepXML");
  Attribute(root, "summary_xml", outPath);

  std::size_t index = 0;
  for (std::size_t file = 0; file < search.query_datasets.size(); ++file) {
    const std::string& path = search.query_datasets[file].pathname;
    const std::string base = path.substr(0, path.size() - CompressedFileBase(path).size()) + FileStem(path);
    const std::string extension = CompressedFileBase(path).substr(FileStem(path).size());
    pugi::xml_node summary = root.append_child("msms_run_summary");
    Attribute(summary, "base_name", base);
    Attribute(summary, "raw_data_type", "raw");
    Attribute(summary, "raw_data", extension);
    // Library peptides come from any digest: readers want an enzyme named.
    pugi::xml_node enzyme = summary.append_child("sample_enzyme");
    Attribute(enzyme, "name", "unspecific cleavage");
    pugi::xml_node specificity = enzyme.append_child("specificity");
    Attribute(specificity, "cut", "ACDEFGHIKLMNPQRSTVWY");
    Attribute(specificity, "sense", "C");
    pugi::xml_node engine = summary.append_child("search_summary");
    Attribute(engine, "base_name", base);
    Attribute(engine, "search_engine", "QuorinGlyco");
    Attribute(engine, "search_engine_version", kVersion);
    Attribute(engine, "precursor_mass_type", "monoisotopic");
    Attribute(engine, "fragment_mass_type", "monoisotopic");
    engine.append_attribute("search_id") = 1;
    pugi::xml_node database = engine.append_child("search_database");
    Attribute(database, "local_path", search.input_speclib_filename);
    Attribute(database, "type", "AA");
    // Every modified residue mass of the file's hits, declared as readers expect.
    std::map<std::pair<char, std::string>, double> declared;  // residue, mass -> delta
    for (const CExportedHit& hit : run.hits) {
      if (hit.spectraFile != file) continue;
      for (const auto& [position, mass] : ModifiedMasses(hit, settings.massTable)) {
        const char residue = hit.PlainSequence()[static_cast<std::size_t>(position) - 1];
        declared.emplace(std::pair{residue, NumberText(mass)},
                         mass - settings.massTable.AminoAcid(residue));
      }
    }
    for (const auto& [key, delta] : declared) {
      pugi::xml_node mod = engine.append_child("aminoacid_modification");
      Attribute(mod, "aminoacid", std::string(1, key.first));
      Attribute(mod, "massdiff", NumberText(delta));
      Attribute(mod, "mass", key.second);
      Attribute(mod, "variable", "Y");
    }
    auto parameter = [&](const std::string& name, const std::string& value) {
      pugi::xml_node node = engine.append_child("parameter");
      Attribute(node, "name", name);
      Attribute(node, "value", value);
    };
    const char* units[] = {"Da", "ppm"};
    parameter("precursor_tolerance", NumberText(search.query_precursor_ion_tolerance) + " " +
                                         units[search.query_precursor_ion_unit == 1]);
    parameter("fragment_tolerance", NumberText(search.query_product_ion_tolerance) + " " +
                                        units[search.query_product_ion_unit == 1]);
    parameter("glycan_table_size", std::to_string(settings.massTable.glycans.size()));

    for (const CExportedHit& hit : run.hits) {
      if (hit.spectraFile != file) continue;
      ++index;
      pugi::xml_node query = summary.append_child("spectrum_query");
      Attribute(query, "spectrum", hit.query);
      // The scan of the file where known (its 1-based place), else the running number.
      const int64_t scan = hit.spectrumIndex >= 0 ? hit.spectrumIndex + 1 : static_cast<int64_t>(index);
      query.append_attribute("start_scan") = static_cast<long long>(scan);
      query.append_attribute("end_scan") = static_cast<long long>(scan);
      Attribute(query, "precursor_neutral_mass", NumberText(hit.queryMH - kProton));
      query.append_attribute("assumed_charge") = hit.charge;
      query.append_attribute("index") = static_cast<unsigned long long>(index);
      AddHit(query, run, hit, settings.massTable);
    }
  }
  document.save(out, "  ", pugi::format_default | pugi::format_no_declaration, pugi::encoding_utf8);
}
