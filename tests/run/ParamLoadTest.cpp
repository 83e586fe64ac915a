#include <gtest/gtest.h>
#include <unistd.h>

#include <map>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "common/TestUtil.h"
#include "run/Param.h"

namespace {

using testutil::TempDir;

// A valid configuration, keys in their reading order.
const std::vector<std::pair<std::string, std::vector<std::pair<std::string, std::string>>>>
    kValidConfig = {
        {"construction",
         {{"construction", "yes"},
          {"modification_remove", "Deamidated"},
          {"identification_format", "PepXML"},
          {"probability_threshold", "0.9"},
          {"identification_number", "2"},
          {"identification_filename_1", "a.pep.xml"},
          {"identification_filename_2", "b.pep.xml"},
          {"library_dataset_number", "1"},
          {"library_dataset_format", "MGF"},
          {"library_dataset_pathname_1", "lib.mgf"},
          {"library_product_ion_unit", "da"},
          {"library_product_ion_tolerance", "0.02"},
          {"theta", "0.5"},
          {"output_speclib_filename", "out.quolib"},
          {"added_Y_ions", "Y0,Y1,Y2"},
          {"Y_ion_relative_intensity", "0.3"},
          {"N_glycan_motifs", "NXS, NXT"},
          {"protein_database", "db.fasta"}}},
        {"search",
         {{"search", "yes"},
          {"input_speclib_filename", "in.quolib"},
          {"query_dataset_number", "2"},
          {"query_dataset_format", "dtas"},
          {"query_dataset_pathname_1", "q1.dtas"},
          {"query_dataset_pathname_2", "q2.dtas"},
          {"query_precursor_ion_unit", "ppm"},
          {"query_precursor_ion_tolerance", "10"},
          {"query_product_ion_unit", "da"},
          {"query_product_ion_tolerance", "0.02"},
          {"output_result_filename", "result.txt"},
          {"minimal_peptide_ions", "3"}}}};

// Changes to the valid configuration: a value, or nullopt to leave the key out.
using Changes = std::map<std::string, std::optional<std::string>>;

std::string ConfigText(const Changes& changes) {
  std::string text;
  for (const auto& [section, entries] : kValidConfig) {
    text += "[" + section + "]\n";
    for (const auto& [key, value] : entries) {
      auto change = changes.find(key);
      if (change == changes.end()) text += key + " = " + value + "\n";
      else if (change->second) text += key + " = " + *change->second + "\n";
    }
  }
  return text;
}

CParam& LoadText(const TempDir& dir, const std::string& text) {
  testutil::WriteFile(dir / "run.conf", text);
  CParam& param = CParam::GetInstance();
  param.configure_filename = dir / "run.conf";
  param.Load();
  return param;
}

// Death tests watch standard error; the program speaks on standard output.
void LoadWithOutputOnStderr(const std::string& path) {
  ::dup2(STDERR_FILENO, STDOUT_FILENO);
  CParam& param = CParam::GetInstance();
  param.configure_filename = path;
  param.Load();
}

std::string EscapeRegex(const std::string& text) {
  std::string escaped;
  for (char c : text) {
    if (std::string(".[]()*+?{}|$^\\").find(c) != std::string::npos) {
      escaped += '[';
      escaped += c;
      escaped += ']';
    } else {
      escaped += c;
    }
  }
  return escaped;
}

std::string FaultMessage(const std::string& key, const std::string& section) {
  return "Missing or invalid parameter \"" + key + "\" in section \"" + section + "\".\n";
}

void ExpectFault(const Changes& changes, const std::string& message, int status = 1) {
  TempDir dir;
  testutil::WriteFile(dir / "run.conf", ConfigText(changes));
  std::string path = dir / "run.conf";
  EXPECT_EXIT(LoadWithOutputOnStderr(path), testing::ExitedWithCode(status),
              "^" + EscapeRegex(message) + "$");
}

struct FaultCase {
  Changes changes;
  std::string key;
  std::string section;
};

TEST(ParamLoad, ValidConfigurationFillsBothSections) {
  TempDir dir;
  CParam& param = LoadText(dir, ConfigText({}));
  const CConstructionParam& c = param.construction;
  EXPECT_TRUE(c.enabled);
  EXPECT_EQ(c.library_source_kind, 0);
  EXPECT_EQ(c.modification_remove, "Deamidated");
  ASSERT_EQ(c.identification_files.size(), 2u);
  EXPECT_EQ(c.identification_files[1].path, "b.pep.xml");
  EXPECT_EQ(c.identification_files[1].format, 1);
  EXPECT_DOUBLE_EQ(c.identification_files[0].probability_threshold, 0.9);
  ASSERT_EQ(c.library_datasets.size(), 1u);
  EXPECT_EQ(c.library_datasets[0].pathname, "lib.mgf");
  EXPECT_EQ(c.library_datasets[0].format, 2);
  EXPECT_EQ(c.library_product_ion_unit, 0);
  EXPECT_DOUBLE_EQ(c.library_product_ion_tolerance, 0.02);
  EXPECT_DOUBLE_EQ(c.theta, 0.5);
  EXPECT_EQ(c.output_speclib_filename, "out.quolib");
  EXPECT_EQ(c.added_Y_ions, (std::vector<uint32_t>{0, 1, 2}));
  EXPECT_DOUBLE_EQ(c.Y_ion_relative_intensity, 0.3);
  EXPECT_EQ(c.N_glycan_motifs, (std::vector<int32_t>{0, 1}));
  EXPECT_EQ(c.protein_database, "db.fasta");
  EXPECT_EQ(c.mass_table_filename, "MassTable.ini");

  const CSearchParam& s = param.search;
  EXPECT_TRUE(s.enabled);
  EXPECT_EQ(s.input_speclib_filename, "in.quolib");
  ASSERT_EQ(s.query_datasets.size(), 2u);
  EXPECT_EQ(s.query_datasets[1].pathname, "q2.dtas");
  EXPECT_EQ(s.query_datasets[1].format, 3);
  EXPECT_EQ(s.query_precursor_ion_unit, 1);
  EXPECT_DOUBLE_EQ(s.query_precursor_ion_tolerance, 10.0);
  EXPECT_EQ(s.query_product_ion_unit, 0);
  EXPECT_DOUBLE_EQ(s.query_product_ion_tolerance, 0.02);
  EXPECT_EQ(s.output_result_filename, "result.txt");
  EXPECT_EQ(s.minimal_peptide_ions, 3);
  EXPECT_EQ(s.top_peak_limit, 12);
  EXPECT_EQ(s.spectra_per_batch, 100);
  EXPECT_DOUBLE_EQ(param.QueryPrecursorTolerance(2000.0), 0.02);
  EXPECT_DOUBLE_EQ(param.QueryProductTolerance(500.0), 0.02);
}

TEST(ParamLoad, FormatKeywordsAndLenientNumbers) {
  TempDir dir;
  const std::vector<std::pair<std::string, int32_t>> formats = {
      {"quorin", 0}, {"LANVEK", 2}, {"mascot", 4}, {"pilot", 5}, {"MaxQuant", 6}, {"tab-txt", 7}};
  for (const auto& [keyword, code] : formats) {
    // probability_threshold is read for pepxml only, so a bad one can't fail here.
    CParam& param = LoadText(dir, ConfigText({{"identification_format", keyword},
                                              {"probability_threshold", "7"}}));
    ASSERT_EQ(param.construction.identification_files.size(), 2u) << keyword;
    EXPECT_EQ(param.construction.identification_files[0].format, code) << keyword;
  }
  CParam& param = LoadText(dir, ConfigText({{"identification_number", "abc"},
                                            {"library_dataset_number", "0"},
                                            {"library_dataset_format", "Dta"},
                                            {"theta", "1"},
                                            {"library_product_ion_unit", "ppm"},
                                            {"library_product_ion_tolerance", "20"},
                                            {"added_Y_ions", "y1"},
                                            {"minimal_peptide_ions", "-4x"}}));
  EXPECT_TRUE(param.construction.identification_files.empty());
  EXPECT_TRUE(param.construction.library_datasets.empty());
  EXPECT_DOUBLE_EQ(param.construction.theta, 1.0);
  EXPECT_TRUE(param.construction.added_Y_ions.empty());
  EXPECT_DOUBLE_EQ(param.LibraryProductTolerance(1000.0), 0.02);
  EXPECT_EQ(param.search.minimal_peptide_ions, -4);
  EXPECT_DOUBLE_EQ(LoadText(dir, ConfigText({{"theta", "0"}})).construction.theta, 0.0);
}

TEST(ParamLoad, DisabledSectionsReadNothingElse) {
  TempDir dir;
  CParam& param = LoadText(dir, ConfigText({{"construction", "No"}, {"theta", "5"}}));
  EXPECT_FALSE(param.construction.enabled);
  EXPECT_TRUE(param.construction.identification_files.empty());
  EXPECT_EQ(param.construction.output_speclib_filename, "");
  EXPECT_TRUE(param.search.enabled);

  LoadText(dir, "[construction]\nconstruction = no\n[search]\nsearch = NO\nminimal_peptide_ions =\n");
  EXPECT_FALSE(param.construction.enabled);
  EXPECT_FALSE(param.search.enabled);
  EXPECT_EQ(param.search.output_result_filename, "");
  EXPECT_TRUE(param.search.query_datasets.empty());
}

TEST(ParamLoad, ConstructionFaultsNameTheKey) {
  const std::string section = "construction";
  const std::vector<FaultCase> cases = {
      {{{"identification_format", "xml"}}, "identification_format", section},
      {{{"identification_format", std::nullopt}}, "identification_format", section},
      {{{"probability_threshold", std::nullopt}}, "probability_threshold", section},
      {{{"probability_threshold", ""}}, "probability_threshold", section},
      {{{"probability_threshold", "-0.1"}}, "probability_threshold", section},
      {{{"probability_threshold", "1.01"}}, "probability_threshold", section},
      {{{"identification_number", std::nullopt}}, "identification_number", section},
      {{{"identification_number", "-1"}}, "identification_number", section},
      {{{"identification_number", "3"}}, "identification_filename_3", section},
      {{{"identification_filename_1", ""}}, "identification_filename_1", section},
      {{{"identification_filename_2", std::nullopt}}, "identification_filename_2", section},
      {{{"library_dataset_number", ""}}, "library_dataset_number", section},
      {{{"library_dataset_number", "-2"}}, "library_dataset_number", section},
      {{{"library_dataset_number", "0"}, {"library_dataset_format", "raw"}},
       "library_dataset_format",
       section},
      {{{"library_dataset_pathname_1", std::nullopt}}, "library_dataset_pathname_1", section},
      {{{"library_product_ion_unit", "Da"}}, "library_product_ion_unit", section},
      {{{"library_product_ion_unit", std::nullopt}}, "library_product_ion_unit", section},
      {{{"library_product_ion_tolerance", ""}}, "library_product_ion_tolerance", section},
      {{{"library_product_ion_tolerance", "-0.5"}}, "library_product_ion_tolerance", section},
      {{{"theta", std::nullopt}}, "theta", section},
      {{{"theta", "1.5"}}, "theta", section},
      {{{"theta", "-1"}}, "theta", section},
      {{{"output_speclib_filename", ""}}, "output_speclib_filename", section},
      {{{"added_Y_ions", std::nullopt}}, "added_Y_ions", section},
      {{{"Y_ion_relative_intensity", ""}}, "Y_ion_relative_intensity", section},
      {{{"N_glycan_motifs", std::nullopt}}, "N_glycan_motifs", section},
      {{{"protein_database", std::nullopt}}, "protein_database", section},
      // The first fault in reading order is the one reported.
      {{{"theta", "2"}, {"protein_database", ""}, {"output_result_filename", ""}}, "theta", section},
  };
  for (const FaultCase& fault : cases) {
    SCOPED_TRACE(fault.key);
    ExpectFault(fault.changes, FaultMessage(fault.key, fault.section));
  }
}

TEST(ParamLoad, SearchFaultsNameTheKey) {
  const std::string section = "search";
  const std::vector<FaultCase> cases = {
      {{{"input_speclib_filename", ""}}, "input_speclib_filename", section},
      {{{"query_dataset_number", std::nullopt}}, "query_dataset_number", section},
      {{{"query_dataset_number", "-1"}}, "query_dataset_number", section},
      {{{"query_dataset_format", "mzml"}}, "query_dataset_format", section},
      {{{"query_dataset_number", "3"}}, "query_dataset_pathname_3", section},
      {{{"query_precursor_ion_unit", ""}}, "query_precursor_ion_unit", section},
      {{{"query_precursor_ion_unit", "PPM"}}, "query_precursor_ion_unit", section},
      {{{"query_precursor_ion_tolerance", "-1"}}, "query_precursor_ion_tolerance", section},
      {{{"query_product_ion_unit", std::nullopt}}, "query_product_ion_unit", section},
      {{{"query_product_ion_tolerance", ""}}, "query_product_ion_tolerance", section},
      {{{"output_result_filename", std::nullopt}}, "output_result_filename", section},
      {{{"minimal_peptide_ions", ""}}, "minimal_peptide_ions", section},
  };
  for (const FaultCase& fault : cases) {
    SCOPED_TRACE(fault.key);
    ExpectFault(fault.changes, FaultMessage(fault.key, fault.section));
  }
}

TEST(ParamLoad, FilesWithoutSectionsAndUnreadableFiles) {
  TempDir dir;
  for (const std::string& text : {std::string(""), std::string("[other]\nx = 1\n")}) {
    testutil::WriteFile(dir / "run.conf", text);
    std::string path = dir / "run.conf";
    EXPECT_EXIT(LoadWithOutputOnStderr(path), testing::ExitedWithCode(1),
                "^" + EscapeRegex(FaultMessage("identification_format", "construction")) + "$");
  }
  std::string missing = dir / "missing.conf";
  EXPECT_EXIT(LoadWithOutputOnStderr(missing), testing::ExitedWithCode(255),
              "^" + EscapeRegex("Error when reading \"" + missing + "\".\n") + "$");
}

TEST(ParamLoad, ListFaultsComeFromTheListParsers) {
  ExpectFault({{"N_glycan_motifs", "NXS,nxt"}},
              "The input N-linked Glycan motif nxtis not valid, please check!\n");
  ExpectFault({{"added_Y_ions", "Y1, Y7"}}, "The valid Y ions are Y0-Y5, but the input is Y7\n");
}

}  // namespace
