#include "run/ConfigKeys.h"

#include <charconv>
#include <cstdlib>

namespace {

const char* const kC = "construction";
const char* const kS = "search";

bool IsIndexedMatch(const std::string& pattern, const std::string& key) {
  // "name_N" matches "name_" followed by a whole number from 1 on, written
  // without leading zeros, as the keys are looked up.
  if (pattern.size() < 2 || pattern.compare(pattern.size() - 2, 2, "_N") != 0) return false;
  const std::size_t stem = pattern.size() - 1;
  if (key.size() <= stem || key.compare(0, stem, pattern, 0, stem) != 0) return false;
  if (key[stem] == '0') return false;
  for (std::size_t i = stem; i < key.size(); ++i)
    if (key[i] < '0' || key[i] > '9') return false;
  return true;
}

}  // namespace

const std::vector<CConfigKey>& ConfigKeys() {
  using K = KeyKind;
  static const std::vector<CConfigKey> keys = {
      {kC, "construction", K::Switch, "yes",
       "yes builds a library; no switches the stage off (any case)"},
      {kC, "modification_remove", K::Text, "Deamidated[N]",
       "the modification, as the lists spell it, that marks a former site asparagine "
       "(Deamidated[N] for tab-txt, quorin, Mascot, MaxQuant; N[115] for pepXML); optional"},
      {kC, "identification_format", K::Keyword, "tab-txt",
       "format of the lists: quorin, pepxml, lanvek, mascot, maxquant or tab-txt (any case)"},
      {kC, "probability_threshold", K::Number, "0.9",
       "least PeptideProphet probability of a kept hit, from 0 to 1; read only for pepxml"},
      {kC, "identification_number", K::Integer, "1", "how many lists follow, 0 or more"},
      {kC, "identification_filename_N", K::Path, "identifications.txt",
       "path of list N, for N from 1 to identification_number"},
      {kC, "library_dataset_number", K::Integer, "1", "how many spectrum files follow, 0 or more"},
      {kC, "library_dataset_format", K::Keyword, "mgf",
       "format of the spectrum files: mgf, dta (a .dta file or a folder of them), dtas, mzml "
       "(also .mzML.gz) or mzxml (any case)"},
      {kC, "library_dataset_pathname_N", K::Path, "identified.mgf",
       "path of spectrum file N; the lists' spectrum names begin with its name up to the last "
       "point"},
      {kC, "library_product_ion_unit", K::Keyword, "da", "da or ppm, exactly in lower case"},
      {kC, "library_product_ion_tolerance", K::Number, "0.02",
       "fragment tolerance in that unit, 0 or more; up to 0.025 Da or 25 ppm is high resolution"},
      {kC, "theta", K::Number, "0.3",
       "weight of the theoretical b/y ions in a library spectrum, from 0 to 1"},
      {kC, "output_speclib_filename", K::Path, "library.quolib",
       "library file to write; its companion list gets _libcomp.txt in place of the extension"},
      {kC, "added_Y_ions", K::Text, "Y0,Y1,Y2,Y3,Y4,Y5",
       "Y ions (peptide + part of the glycan core) added to each entry: any of Y0 to Y5, "
       "comma-separated"},
      {kC, "Y_ion_relative_intensity", K::Number, "0.5", "intensity of the added Y ions, a number"},
      {kC, "N_glycan_motifs", K::Text, "NXS,NXT",
       "sequons of a site: any of NXS, NXT, NXC, NXV, comma-separated, upper case"},
      {kC, "protein_database", K::Path, "proteins.fasta",
       "FASTA file; read for lanvek lists and with motifs_across_cleavage = yes, but always "
       "required"},
      {kC, "motifs_across_cleavage", K::Switch, "no",
       "yes looks each marked peptide up in protein_database for the residues after it, so that "
       "a sequon completed there (...NK|S...) is a site; optional, default no"},
      {kS, "search", K::Switch, "yes",
       "yes searches (and ranks by FDR); no switches both stages off (any case)"},
      {kS, "input_speclib_filename", K::Path, "library.quolib", "library file to search"},
      {kS, "query_dataset_number", K::Integer, "1",
       "how many query spectrum files follow, 0 or more"},
      {kS, "query_dataset_format", K::Keyword, "mgf",
       "format of the query files: mgf, dta (a .dta file or a folder of them), dtas, mzml (also "
       ".mzML.gz) or mzxml (any case)"},
      {kS, "query_dataset_pathname_N", K::Path, "glycopeptides.mgf", "path of query file N"},
      {kS, "query_precursor_ion_unit", K::Keyword, "ppm", "da or ppm, exactly in lower case"},
      {kS, "query_precursor_ion_tolerance", K::Number, "10",
       "precursor tolerance in that unit, 0 or more"},
      {kS, "query_product_ion_unit", K::Keyword, "da", "da or ppm, exactly in lower case"},
      {kS, "query_product_ion_tolerance", K::Number, "0.02",
       "fragment tolerance in that unit, 0 or more; up to 0.025 Da or 25 ppm is high resolution"},
      {kS, "output_result_filename", K::Path, "result.txt",
       "result file: 27 tab-separated columns, ranked with a 28th (FDR) after the search"},
      {kS, "minimal_peptide_ions", K::Integer, "2",
       "least number of matched b/y ions of a reported hit, a whole number"},
      {kS, "glycopeptide_fdr", K::Switch, "no",
       "yes also writes peptide, glycan and glycopeptide q-values beside the result; optional, "
       "default no"},
  };
  return keys;
}

const CConfigKey* FindConfigKey(const std::string& section, const std::string& key) {
  for (const CConfigKey& entry : ConfigKeys()) {
    if (section != entry.section) continue;
    if (key == entry.key || IsIndexedMatch(entry.key, key)) return &entry;
  }
  return nullptr;
}

std::vector<std::pair<std::string, std::string>> UnknownConfigKeys(const CConfigFile& config) {
  std::vector<std::pair<std::string, std::string>> unknown;
  for (const char* name : {kC, kS}) {
    const CConfigSection* section = config.FindSection(name);
    if (!section) continue;
    for (const auto& [key, value] : section->entries)
      if (!FindConfigKey(name, key)) unknown.emplace_back(name, key);
  }
  return unknown;
}

std::string ConfigTemplate() {
  std::string text =
      "# QuorinGlyco configuration. Lines: [section], key = value; '#' or ';' starts a comment\n"
      "# anywhere, so neither can stand in a value or path. Relative paths are taken from this\n"
      "# file's folder (QuorinGlyco run FILE).\n";
  std::string section;
  for (const CConfigKey& entry : ConfigKeys()) {
    if (section != entry.section) {
      section = entry.section;
      text += "\n[" + section + "]\n";
    }
    std::string key = entry.key;
    if (key.size() > 2 && key.compare(key.size() - 2, 2, "_N") == 0)
      key.replace(key.size() - 1, 1, "1");
    text += std::string("# ") + entry.help + "\n" + key + " = " + entry.example + "\n";
  }
  return text;
}

bool IsNumberText(const std::string& text, bool integer) {
  if (text.empty()) return false;
  const char* begin = text.data();
  const char* end = begin + text.size();
  if (*begin == '+') ++begin;  // atof takes a plus sign; from_chars does not
  if (integer) {
    long value = 0;
    auto [at, error] = std::from_chars(begin, end, value);
    return error == std::errc() && at == end;
  }
  double value = 0.0;
  auto [at, error] = std::from_chars(begin, end, value);
  return error == std::errc() && at == end;
}
