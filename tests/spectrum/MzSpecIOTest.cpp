// The mzML and mzXML reader: which spectra it takes, how it names them, what
// it makes of precursor and peaks, and how it reports damaged files.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <string>
#include <vector>

#include "SpectrumTestUtil.h"
#include "common/TestUtil.h"

using spectest::MhOf;

namespace {

constexpr int kMzml = 4, kMzxml = 5;
// 64-bit zlib arrays: m/z 100.5, 99.1, 300.123456789 (unsorted, as written) and
// intensities 10, 20.5, 0.
const std::string kMz = "eJxjYAAChUiHNBA4FuEwrfjy2p8HixwAToMJCw==";
const std::string kIntensity = "eJxjYAABFQcw1WACoYEAABCoAVk=";

std::string Array(const std::string& kind, const std::string& text, const std::string& length = "") {
  return "<binaryDataArray encodedLength=\"" + std::to_string(text.size()) + "\"" +
         (length.empty() ? "" : " arrayLength=\"" + length + "\"") +
         "><cvParam cvRef=\"MS\" accession=\"MS:1000523\" name=\"64-bit float\"/>"
         "<cvParam cvRef=\"MS\" accession=\"MS:1000574\" name=\"zlib compression\"/>"
         "<cvParam cvRef=\"MS\" accession=\"" + kind + "\"/><binary>" + text + "</binary></binaryDataArray>";
}

// One spectrum; `params` are the spectrum-level parameters, `ion` those of the selected ion.
std::string Spectrum(int index, const std::string& id, const std::string& params, const std::string& ion,
                     const std::string& mz = kMz, const std::string& length = "3") {
  return "<spectrum index=\"" + std::to_string(index) + "\" id=\"" + id + "\" defaultArrayLength=\"" + length +
         "\">\n" + params +
         "<scanList count=\"1\"><scan><cvParam accession=\"MS:1000016\" value=\"1.5\"/></scan></scanList>"
         "<precursorList count=\"1\"><precursor><selectedIonList count=\"1\"><selectedIon>" + ion +
         "</selectedIon></selectedIonList></precursor></precursorList><binaryDataArrayList count=\"2\">\n" +
         Array("MS:1000514", mz) + Array("MS:1000515", kIntensity) + "</binaryDataArrayList></spectrum>\n";
}

std::string Mzml(const std::string& spectra) {
  return "\xEF\xBB\xBF<?xml version=\"1.0\" encoding=\"utf-8\"?>\n<mzML xmlns=\"http://psi.hupo.org/ms/mzml\">"
         "<referenceableParamGroupList count=\"1\"><referenceableParamGroup id=\"msn\">"
         "<cvParam cvRef=\"MS\" accession=\"MS:1000511\" name=\"ms level\" value=\"2\"/>"
         "</referenceableParamGroup></referenceableParamGroupList><run id=\"r\">"
         "<spectrumList count=\"5000\">\n" + spectra + "</spectrumList></run></mzML>\n";
}

const std::string kMs2 = "<cvParam cvRef=\"MS\" accession=\"MS:1000511\" name=\"ms level\" value=\"2\"/>";
const std::string kMz500 = "<cvParam cvRef=\"MS\" accession=\"MS:1000744\" value=\"500.25\"/>";
std::string Charge(int z) { return "<cvParam cvRef=\"MS\" accession=\"MS:1000041\" value=\"" + std::to_string(z) + "\"/>"; }
std::string Title(const std::string& t) { return "<cvParam cvRef=\"MS\" accession=\"MS:1000796\" value=\"" + t + "\"/>"; }

struct Captured {
  spectest::Loaded loaded;
  std::string output;
};
Captured LoadCapturing(int format, const std::string& path) {
  testing::internal::CaptureStdout();
  Captured c{spectest::Load(format, path), ""};
  c.output = testing::internal::GetCapturedStdout();
  return c;
}

}  // namespace

TEST(MzSpecIOTest, NamesPrecursorAndPeaksOfMzmlSpectra) {
  struct Case {
    std::string id, params, ion, name;
    uint32_t charge;
  };
  const Case cases[] = {
      {"controllerType=0 controllerNumber=1 scan=17", kMs2, kMz500 + Charge(2), "f.v1.17.17.2", 2},
      {"index=4", kMs2, kMz500 + Charge(3), "f.v1.5.5.3", 3},
      {"spectrum=9", kMs2, kMz500, "f.v1.9.9.0", 0},
      // Agilent and ms_deisotope write scanId=; a style without any of the
      // known keys takes the index attribute, plus one.
      {"scanId=12", kMs2, kMz500 + Charge(2), "f.v1.12.12.2", 2},
      {"frame=12", kMs2, kMz500 + Charge(2), "f.v1.6.6.2", 2},
      {"scan=30", "<referenceableParamGroupRef ref=\"msn\"/>", kMz500 + Charge(2), "f.v1.30.30.2", 2},
      {"scan=31", kMs2 + Title("  run7.3.3.2 File:&quot;x.raw&quot;"), kMz500 + Charge(2), "run7.3.3.2", 2},
      {"scan=32", kMs2 + Title(" "), kMz500 + Charge(4), "f.v1.32.32.4", 4},
  };
  std::string spectra = Spectrum(0, "scan=1", "<cvParam accession=\"MS:1000511\" value=\"1\"/>", "");
  for (std::size_t i = 0; i < std::size(cases); ++i)
    spectra += Spectrum(static_cast<int>(i + 1), cases[i].id, cases[i].params, cases[i].ion);
  testutil::TempDir dir;
  testutil::WriteFile(dir / "f.v1.mzML", Mzml(spectra));
  const Captured got = LoadCapturing(kMzml, dir / "f.v1.mzML");
  EXPECT_EQ(got.output, "");
  ASSERT_EQ(got.loaded.count, std::size(cases));  // the MS1 spectrum is left out
  for (const Case& want : cases) {
    SCOPED_TRACE(want.name);
    const auto names = spectest::Names(got.loaded.spectra);
    const auto at = std::find(names.begin(), names.end(), want.name);
    ASSERT_NE(at, names.end());
    const CSpectrum& s = got.loaded.spectra[static_cast<std::size_t>(at - names.begin())];
    EXPECT_EQ(s.charge, want.charge);
    EXPECT_EQ(s.precursorMass, MhOf(500.25, static_cast<int>(want.charge)));
    ASSERT_EQ(s.peaks.size(), 3u);
    const double mz[] = {100.5, 99.1, 300.123456789}, intensity[] = {10, 20.5, 0};
    for (int k = 0; k < 3; ++k) EXPECT_EQ(s.peaks[k].mz, mz[k]) << k;
    for (int k = 0; k < 3; ++k) EXPECT_EQ(s.peaks[k].intensity, intensity[k]) << k;
  }
  EXPECT_TRUE(std::is_sorted(got.loaded.spectra.begin(), got.loaded.spectra.end(),
                             [](const CSpectrum& a, const CSpectrum& b) { return a.name < b.name; }));
}

TEST(MzSpecIOTest, MzxmlScansNestedOrNotAreNamedByTheirNumber) {
  // Version 2 puts the MS2 scan inside its MS1 scan; 32-bit network order,
  // uncompressed, and 64-bit zlib, both holding (100.5, 10) (200.25, 20.5).
  const std::string peaks32 = "<peaks precision=\"32\" byteOrder=\"network\" pairOrder=\"m/z-int\">"
                              "QskAAEEgAABDSEAAQaQAAA==</peaks>";
  const std::string text =
      "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n<mzXML><msRun scanCount=\"3113\">\n"
      "<scan num=\"19\" msLevel=\"1\" peaksCount=\"2\">" + peaks32 +
      "<scan num=\"20\" msLevel=\"2\" peaksCount=\"2\"\n centroided=\"0\">"
      "<precursorMz precursorIntensity=\"5\">\n  612.5\n</precursorMz>" + peaks32 + "</scan></scan>\n"
      "<scan num=\"21\" msLevel=\"2\" peaksCount=\"2\"><precursorMz precursorCharge=\"3\">700.5</precursorMz>"
      "<peaks compressionType=\"zlib\" precision=\"64\" byteOrder=\"network\" contentType=\"m/z-int\">"
      "eJxziFRgAAEHFQYInckBoU0awDQAMOYCww==</peaks></scan>\n"
      "</msRun><index name=\"scan\"><offset id=\"19\">99999</offset></index><indexOffset>99999</indexOffset></mzXML>";
  testutil::TempDir dir;
  testutil::WriteFile(dir / "old.mzXML", text);
  const Captured got = LoadCapturing(kMzxml, dir / "old.mzXML");
  // The profile scan is read, and said to be so once for the file.
  EXPECT_NE(got.output.find("1 MS2 spectra are profile spectra, not centroided"), std::string::npos);
  EXPECT_NE(got.output.find(dir / "old.mzXML"), std::string::npos);
  ASSERT_EQ(spectest::Names(got.loaded.spectra), (std::vector<std::string>{"old.20.20.0", "old.21.21.3"}));
  EXPECT_EQ(got.loaded.spectra[0].precursorMass, MhOf(612.5, 0));
  EXPECT_EQ(got.loaded.spectra[1].precursorMass, MhOf(700.5, 3));
  for (const CSpectrum& s : got.loaded.spectra) {
    ASSERT_EQ(s.peaks.size(), 2u);
    EXPECT_EQ(s.peaks[1].mz, 200.25);
    EXPECT_EQ(s.peaks[1].intensity, 20.5);
  }
}

TEST(MzSpecIOTest, DamagedFilesEndInAMessageNamingTheFile) {
  const std::string two = Mzml(Spectrum(0, "scan=1", kMs2, kMz500 + Charge(2)) +
                               Spectrum(1, "scan=2", kMs2, kMz500 + Charge(2)));
  const std::string cut = two.substr(0, two.find("scan=2") + 200);
  struct Case {
    const char* what;
    std::string content;
    const char* message;
    uint32_t count, loaded;
  };
  const Case cases[] = {
      {"truncated XML", cut, "XML error at line", 1, 1},
      {"binary junk", std::string("\x00\x13\xff<mzML", 8) + two, "XML error at line 1", 0, 0},
      {"bad base64", Mzml(Spectrum(0, "scan=1", kMs2, Charge(2), "eJx*&amp;%$#")), "not base64", 1, 0},
      {"not zlib", Mzml(Spectrum(0, "scan=1", kMs2, Charge(2), "AAAAAAAAAAAA")), "can't be decoded", 1, 0},
      {"wrong array length", Mzml(Spectrum(0, "scan=1", kMs2, Charge(2), kMz, "4")),
       "holds 3 values where 4 are announced", 1, 0},
      {"missing file", "", "failed to open spectrum file", 0, 0},
  };
  testutil::TempDir dir;
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const std::string path = dir / (std::string(c.what) + ".mzML");
    if (c.content.size() > 0) testutil::WriteFile(path, c.content);
    const Captured got = LoadCapturing(kMzml, path);
    EXPECT_NE(got.output.find(c.message), std::string::npos) << got.output;
    EXPECT_NE(got.output.find(path), std::string::npos) << got.output;
    EXPECT_EQ(got.loaded.count, c.count);
    EXPECT_EQ(got.loaded.spectra.size(), c.loaded);
  }
  // gzip is told by its content; a cut gzip stream keeps what came before the cut.
  testutil::WriteFile(dir / "g", two);
  ASSERT_EQ(std::system(("gzip -n -f " + (dir / "g")).c_str()), 0);
  const std::string zipped = testutil::ReadFile(dir / "g.gz");
  testutil::WriteFile(dir / "whole.mzML", zipped);
  testutil::WriteFile(dir / "cut.mzML.gz", zipped.substr(0, zipped.size() / 2));
  EXPECT_EQ(LoadCapturing(kMzml, dir / "whole.mzML").loaded.spectra.size(), 2u);
  const Captured damaged = LoadCapturing(kMzml, dir / "cut.mzML.gz");
  EXPECT_NE(damaged.output.find("gzip stream damaged"), std::string::npos) << damaged.output;
  EXPECT_LE(damaged.loaded.spectra.size(), 1u);
}

TEST(MzSpecIOTest, HostileValuesAreBoundedOrRefused) {
  testutil::TempDir dir;
  // A parameter group that names itself inside its own definition, used by a
  // spectrum; charges beyond belief read as 0.
  const std::string selfReferencing =
      "<mzML><referenceableParamGroupList count=\"1\"><referenceableParamGroup id=\"a\">" + kMs2 +
      "<referenceableParamGroupRef ref=\"a\"/><cvParam accession=\"MS:1000127\" value=\"\"/>"
      "<referenceableParamGroupRef ref=\"a\"/></referenceableParamGroup></referenceableParamGroupList>"
      "<run id=\"r\"><spectrumList count=\"3\">" +
      Spectrum(0, "scan=1", "<referenceableParamGroupRef ref=\"a\"/>", kMz500 + Charge(2)) +
      Spectrum(1, "scan=2", kMs2, kMz500 + Charge(2000000000)) + Spectrum(2, "scan=3", kMs2, kMz500 + Charge(-3)) +
      "</spectrumList></run></mzML>";
  testutil::WriteFile(dir / "g.mzML", selfReferencing);
  const Captured mzml = LoadCapturing(kMzml, dir / "g.mzML");
  EXPECT_EQ(spectest::Names(mzml.loaded.spectra), (std::vector<std::string>{"g.1.1.2", "g.2.2.0", "g.3.3.0"}));
  EXPECT_NE(mzml.output.find("2 MS2 spectra have a charge outside 1 to 20; it is read as 0"), std::string::npos)
      << mzml.output;
  // Forty groups, each naming the one before twice (and one defined twice
  // with itself inside), would hold 2^40 parameters: bounded, read at once.
  std::string groups = "<referenceableParamGroup id=\"g0\">" + kMs2 + "</referenceableParamGroup>";
  for (int i = 1; i < 40; ++i)
    groups += "<referenceableParamGroup id=\"g" + std::to_string(i) + "\"><referenceableParamGroupRef ref=\"g" +
              std::to_string(i - 1) + "\"/><referenceableParamGroupRef ref=\"g" + std::to_string(i - 1) +
              "\"/></referenceableParamGroup>";
  for (int i = 0; i < 2; ++i)
    groups += "<referenceableParamGroup id=\"g39\"><referenceableParamGroupRef ref=\"g39\"/>"
              "<referenceableParamGroupRef ref=\"g39\"/></referenceableParamGroup>";
  testutil::WriteFile(dir / "d.mzML", "<mzML><referenceableParamGroupList count=\"42\">" + groups +
                                          "</referenceableParamGroupList><run id=\"r\"><spectrumList count=\"1\">" +
                                          Spectrum(0, "scan=1", "<referenceableParamGroupRef ref=\"g38\"/>",
                                                   kMz500 + Charge(2)) +
                                          "</spectrumList></run></mzML>");
  EXPECT_EQ(spectest::Names(LoadCapturing(kMzml, dir / "d.mzML").loaded.spectra),
            (std::vector<std::string>{"d.1.1.2"}));
  // A negative peak count is a count the file got wrong, not a missing one.
  const std::string scan = "<mzXML><msRun><scan num=\"5\" msLevel=\"2\" peaksCount=\"-1\">"
                           "<precursorMz precursorCharge=\"99\">500</precursorMz><peaks precision=\"32\" "
                           "byteOrder=\"network\">QskAAEEgAABDSEAAQaQAAA==</peaks></scan></msRun></mzXML>";
  testutil::WriteFile(dir / "n.mzXML", scan);
  const Captured mzxml = LoadCapturing(kMzxml, dir / "n.mzXML");
  EXPECT_EQ(mzxml.loaded.count, 1u);
  EXPECT_TRUE(mzxml.loaded.spectra.empty());
  EXPECT_NE(mzxml.output.find("Unable to load spectrum n.5.5.0 of " + (dir / "n.mzXML") +
                              ": the file announces a negative count of values"),
            std::string::npos)
      << mzxml.output;
}

TEST(MzSpecIOTest, RealFilesOfSeveralWriters) {
  SKIP_WITHOUT_REALDATA();
  const std::string folder = testutil::RealData("mzml");
  struct Expected {
    const char* file;
    uint32_t count;    // MS2 spectra
    const char* name;  // first in name order
    uint32_t charge;
    std::size_t peaks;
    double firstMz;
  };
  const Expected cases[] = {
      // Stale index offsets, CRLF.
      {"sliced-mzml.mzML", 90, "sliced-raw.10.10.3", 3, 35, 602.17700195312},
      // Profile spectra without charge.
      {"has_missing_charge_state_info.mzML", 2, "20170823-CEMS-005.2.2.", 0, 30226, 198.009994507},
      {"kojak_arp.mzML.gz", 20, "kojak_arp.19781.19781.3", 3, 73, 170.999},
      // Numpress linear and slof; linear and pic.
      {"small-numpressLS.mzML", 34, "small-numpressLS.10.10.0", 0, 552, 245.139},
      {"Rpal_01-mzRefinement.mzML", 85, "Rpal_01.10.10.1", 1, 19, 102.598},
      {"MzValues_Zlib+Numpress.mzML", 0, nullptr, 0, 0, 0.0},
      // Numpress inside zlib; spectrum= IDs.
      {"FileFilter_49_output.mzML", 50, "FileFilter_49_output.1.1.0", 0, 290, 100.0},
      // spectrumList count 5000 for 7 spectra, index list offset past the end.
      {"tester.mzML", 7, nullptr, 2, 192, 110.072},
      {"only_ms2_mzml.mzML", 1, "only_ms2_mzml.1.1.0", 0, 1000, 103.495},
      {"really_small.mzml", 34, "really_small.36.36.2", 2, 136, 121.312},
      // Byte-order mark, one line, MS level only in a parameter group, no selected ion.
      {"RawCentriodCidWithMsLevelInRefParamGroup.mzML", 51, "RawCentriodCidWithMsLevelInRefParamGroup.1001.1001.0",
       0, 33, 56.9623},
      // Unsorted m/z, unknown CV terms, scanId= IDs, count above the spectra present.
      {"20150710_3um_AGP_001_29_30.preprocessed.mzML.gz", 255,
       "20150710_3um_AGP_001_29_30.preprocessed.1740086.1740086.4", 4, 623, 55.0176},
      {"diameter_test.mzXML", 80, "diameter_test.10.10.0", 0, 267, 149.045},
      {"BSA_min_21.mzXML", 82, "BSA_min_21.10.10.2", 2, 320, 156.94},
      // Version 2, MS2 nested in MS1, stale index.
      {"test.mzXML", 1, "test.20.20.0", 0, 43, 223.089},
  };
  for (const Expected& want : cases) {
    SCOPED_TRACE(want.file);
    const std::string path = folder + "/" + want.file;
    const std::string name(want.file);
    const int format = name.find("mzXML") != std::string::npos ? kMzxml : kMzml;
    const Captured got = LoadCapturing(format, path);
    EXPECT_EQ(got.output.find("error"), std::string::npos) << got.output;
    EXPECT_EQ(got.loaded.count, want.count);
    ASSERT_EQ(got.loaded.spectra.size(), want.count) << got.output;
    if (want.count == 0) continue;
    const CSpectrum& s = got.loaded.spectra[0];
    EXPECT_TRUE(!want.name || s.name == want.name) << s.name;
    EXPECT_EQ(s.charge, want.charge);
    EXPECT_EQ(s.peaks.size(), want.peaks);
    EXPECT_NEAR(s.peaks.at(0).mz, want.firstMz, 1e-3);
  }
}
