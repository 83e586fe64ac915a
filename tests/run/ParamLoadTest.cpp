#include <gtest/gtest.h>

#include <map>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "common/TestUtil.h"
#include "run/Param.h"

namespace {

using testutil::TempDir;

// A valid configuration, keys in their reading order.
const char* const kValid =
    "[construction]\nconstruction = yes\nmodification_remove = Deamidated\n"
    "identification_format = PepXML\nprobability_threshold = 0.9\nidentification_number = 2\n"
    "identification_filename_1 = a.pep.xml\nidentification_filename_2 = b.pep.xml\n"
    "library_dataset_number = 1\nlibrary_dataset_format = MGF\n"
    "library_dataset_pathname_1 = lib.mgf\nlibrary_product_ion_unit = da\n"
    "library_product_ion_tolerance = 0.02\ntheta = 0.5\noutput_speclib_filename = out.quolib\n"
    "added_Y_ions = Y0,Y1,Y2\nY_ion_relative_intensity = 0.3\nN_glycan_motifs = NXS, NXT\n"
    "protein_database = db.fasta\n"
    "[search]\nsearch = yes\ninput_speclib_filename = in.quolib\nquery_dataset_number = 2\n"
    "query_dataset_format = dtas\nquery_dataset_pathname_1 = q1.dtas\n"
    "query_dataset_pathname_2 = q2.dtas\nquery_precursor_ion_unit = ppm\n"
    "query_precursor_ion_tolerance = 10\nquery_product_ion_unit = da\n"
    "query_product_ion_tolerance = 0.02\noutput_result_filename = result.txt\n"
    "minimal_peptide_ions = 3\nglycopeptide_fdr = no\n";

// Changes to the valid configuration: a new value, or nullopt to leave the key out.
using Changes = std::map<std::string, std::optional<std::string>>;

std::string ConfigText(const Changes& changes) {
  std::istringstream in(kValid);
  std::string text;
  for (std::string line; std::getline(in, line);) {
    auto change = changes.find(line.substr(0, line.find(" = ")));
    if (change == changes.end()) text += line + "\n";
    else if (change->second) text += change->first + " = " + *change->second + "\n";
  }
  return text;
}

CParam& Load(const std::string& path) {
  CParam::GetInstance().configure_filename = path;
  CParam::GetInstance().Load();
  return CParam::GetInstance();
}

CParam& LoadText(const TempDir& dir, const std::string& text) {
  testutil::WriteFile(dir / "run.conf", text);
  return Load(dir / "run.conf");
}

// The whole output of a load that must fail, compared exactly.
void ExpectFault(const std::string& text, const std::string& message, int status = 1) {
  TempDir dir;
  testutil::WriteFile(dir / "run.conf", text);
  std::string escaped;
  for (char c : message) escaped += std::string(".[]()*+?{}|$^\\").find(c) == std::string::npos
                                        ? std::string(1, c) : std::string("[") + c + "]";
  EXPECT_EXIT((testutil::PrintToStderr(), Load(dir / "run.conf")), testing::ExitedWithCode(status),
              "^" + escaped + "$");
}

std::string Fault(const std::string& key, const std::string& section) {
  return "Missing or invalid parameter \"" + key + "\" in section \"" + section + "\".\n";
}

TEST(ParamLoad, ValidConfigurationFillsBothSections) {
  TempDir dir;
  CParam& param = LoadText(dir, ConfigText({}));
  const CConstructionParam& c = param.construction;
  EXPECT_EQ(c.modification_remove, "Deamidated");
  ASSERT_EQ(c.identification_files.size(), 2u);
  EXPECT_EQ(c.identification_files[1].path + "/" + std::to_string(c.identification_files[1].format),
            "b.pep.xml/1");
  EXPECT_DOUBLE_EQ(c.identification_files[0].probability_threshold, 0.9);
  ASSERT_EQ(c.library_datasets.size(), 1u);
  EXPECT_EQ(c.library_datasets[0].format, 2);
  EXPECT_DOUBLE_EQ(param.LibraryProductTolerance(1000.0), 0.02);  // Da: the value itself
  EXPECT_DOUBLE_EQ(c.theta, 0.5);
  EXPECT_EQ(c.output_speclib_filename + c.protein_database, "out.quolibdb.fasta");
  EXPECT_EQ(c.added_Y_ions, (std::vector<uint32_t>{0, 1, 2}));
  EXPECT_DOUBLE_EQ(c.Y_ion_relative_intensity, 0.3);
  EXPECT_EQ(c.N_glycan_motifs, (std::vector<int32_t>{0, 1}));
  const CSearchParam& s = param.search;
  EXPECT_EQ(s.input_speclib_filename + s.output_result_filename, "in.quolibresult.txt");
  ASSERT_EQ(s.query_datasets.size(), 2u);
  EXPECT_EQ(s.query_datasets[1].pathname + "/" + std::to_string(s.query_datasets[1].format),
            "q2.dtas/3");
  EXPECT_EQ(s.minimal_peptide_ions, 3);
  EXPECT_DOUBLE_EQ(param.QueryPrecursorTolerance(2000.0), 0.02);  // 10 ppm at 2000
  EXPECT_DOUBLE_EQ(param.QueryProductTolerance(500.0), 0.02);
  EXPECT_EQ(ToleranceInDa(5.0, 2, 100.0), -1.0);
}

TEST(ParamLoad, FormatKeywordsLenientNumbersAndDisabledSections) {
  TempDir dir;
  const std::map<std::string, int32_t> formats = {{"quorin", 0}, {"LANVEK", 2}, {"mascot", 4},
                                                  {"pilot", 5}, {"MaxQuant", 6}, {"tab-txt", 7}};
  for (auto [keyword, code] : formats) {
    // probability_threshold is read for pepxml only, so a bad one can't fail here.
    CParam& param = LoadText(dir, ConfigText({{"identification_format", keyword},
                                              {"probability_threshold", "7"}}));
    EXPECT_EQ(param.construction.identification_files.at(0).format, code) << keyword;
  }
  for (auto [keyword, code] : std::map<std::string, int32_t>{{"MzML", 4}, {"mzxml", 5}}) {
    CParam& read =
        LoadText(dir, ConfigText({{"library_dataset_format", keyword}, {"query_dataset_format", keyword}}));
    EXPECT_EQ(read.construction.library_datasets.at(0).format, code) << keyword;
    EXPECT_EQ(read.search.query_datasets.at(0).format, code) << keyword;
  }
  CParam& param = LoadText(dir, ConfigText({{"identification_number", "abc"}, {"theta", "1"},
      {"library_dataset_number", "0"}, {"library_dataset_format", "Dta"}, {"added_Y_ions", "y1"},
      {"library_product_ion_unit", "ppm"}, {"library_product_ion_tolerance", "20"},
      {"minimal_peptide_ions", "-4x"}}));
  EXPECT_TRUE(param.construction.identification_files.empty());
  EXPECT_TRUE(param.construction.library_datasets.empty());
  EXPECT_DOUBLE_EQ(param.construction.theta, 1.0);
  EXPECT_TRUE(param.construction.added_Y_ions.empty());
  EXPECT_DOUBLE_EQ(param.LibraryProductTolerance(1000.0), 0.02);  // 20 ppm at 1000
  EXPECT_EQ(param.search.minimal_peptide_ions, -4);
  EXPECT_DOUBLE_EQ(LoadText(dir, ConfigText({{"theta", "0"}})).construction.theta, 0.0);
  // The q-value key is optional and folded.
  for (auto [value, on] : {std::pair<std::optional<std::string>, bool>{std::nullopt, false},
                           {"", false}, {"No", false}, {"YES", true}, {"yes", true}})
    EXPECT_EQ(LoadText(dir, ConfigText({{"glycopeptide_fdr", value}})).search.glycopeptide_fdr, on);

  // A disabled section reads no other key and keeps its defaults.
  LoadText(dir, ConfigText({{"construction", "No"}, {"theta", "5"}}));
  EXPECT_FALSE(param.construction.enabled);
  EXPECT_TRUE(param.construction.identification_files.empty());
  EXPECT_TRUE(param.search.enabled);
  LoadText(dir, "[construction]\nconstruction = no\n[search]\nsearch = NO\n");
  EXPECT_FALSE(param.search.enabled);
  EXPECT_EQ(param.search.output_result_filename, "");
}

TEST(ParamLoad, TheFirstFaultInReadingOrderNamesItsKey) {
  const std::string none = "(absent)";
  // Each changed key is the one its message names.
  const std::vector<std::pair<std::string, std::string>> construction = {
      {"identification_format", "xml"}, {"identification_format", none},
      {"probability_threshold", ""}, {"probability_threshold", "-0.1"},
      {"probability_threshold", "1.01"}, {"identification_number", none},
      {"identification_number", "-1"}, {"identification_filename_2", none},
      {"identification_filename_1", ""}, {"library_dataset_number", "-2"},
      {"library_dataset_pathname_1", none}, {"library_product_ion_unit", "Da"},
      {"library_product_ion_unit", none}, {"library_product_ion_tolerance", "-0.5"},
      {"theta", none}, {"theta", "1.5"}, {"output_speclib_filename", ""}, {"added_Y_ions", none},
      {"Y_ion_relative_intensity", ""}, {"N_glycan_motifs", none}, {"protein_database", none}};
  const std::vector<std::pair<std::string, std::string>> search = {
      {"input_speclib_filename", ""}, {"query_dataset_number", none},
      {"query_dataset_format", "mzdata"}, {"query_precursor_ion_unit", ""},
      {"query_precursor_ion_unit", "PPM"}, {"query_precursor_ion_tolerance", "-1"},
      {"query_product_ion_unit", none}, {"query_product_ion_tolerance", ""},
      {"output_result_filename", none}, {"minimal_peptide_ions", ""},
      {"glycopeptide_fdr", "maybe"}, {"glycopeptide_fdr", "1"}};
  for (auto [cases, section] : {std::pair{&construction, "construction"}, {&search, "search"}}) {
    for (const auto& [key, value] : *cases) {
      SCOPED_TRACE(key + " = " + value);
      ExpectFault(ConfigText({{key, value == none ? std::nullopt : std::optional(value)}}),
                  Fault(key, section));
    }
  }
  // A count of 0 still needs a valid format; a missing N is named with it;
  // of several faults the first in reading order is reported.
  ExpectFault(ConfigText({{"library_dataset_number", "0"}, {"library_dataset_format", "raw"}}),
              Fault("library_dataset_format", "construction"));
  ExpectFault(ConfigText({{"query_dataset_number", "3"}}),
              Fault("query_dataset_pathname_3", "search"));
  ExpectFault(ConfigText({{"theta", "2"}, {"protein_database", ""}, {"minimal_peptide_ions", ""}}),
              Fault("theta", "construction"));
  // An empty file, or one without the two sections, enables both stages.
  ExpectFault("", Fault("identification_format", "construction"));
  ExpectFault("[other]\nx = 1\n", Fault("identification_format", "construction"));
  ExpectFault(ConfigText({{"N_glycan_motifs", "NXS,nxt"}}),
              "The input N-linked Glycan motif nxtis not valid, please check!\n");
  ExpectFault(ConfigText({{"added_Y_ions", "Y1, Y7"}}),
              "The valid Y ions are Y0-Y5, but the input is Y7\n");
}

}  // namespace
