// One set of identifications and spectra written in every list and dataset
// format the program reads, for tests that build the same library by each route.
#pragma once
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "common/TestUtil.h"
#include "molecule/MassTable.h"

namespace xfmt {

// One identified spectrum; modification names in the Unimod style of tab-txt.
struct CIdent {
  std::string run;
  std::string scan;
  std::string charge;
  std::string sequence;
  std::vector<std::pair<int, std::string>> mods;
  std::string Name(const std::string& suffix) const {
    return run + "." + scan + "." + scan + "." + charge + suffix;
  }
};

// Spectrum name suffix and the name of each modification in one list style.
struct CStyle {
  std::string suffix;
  std::map<std::string, std::string> names;
  std::string Mod(const std::string& unimod) const {
    auto it = names.find(unimod);
    return it == names.end() ? unimod : it->second;
  }
};

inline std::vector<std::string> Cut(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::size_t start = 0, end;
  while ((end = text.find(separator, start)) != std::string::npos) {
    parts.push_back(text.substr(start, end - start));
    start = end + 1;
  }
  parts.push_back(text.substr(start));
  return parts;
}

// Reads a tab-txt list of names run.scan.scan.charge (heading, then records).
inline std::vector<CIdent> ReadTabTxt(const std::string& path) {
  std::vector<CIdent> ids;
  const auto lines = testutil::ReadLines(path);
  for (std::size_t i = 1; i < lines.size() && !lines[i].empty(); ++i) {
    const auto f = Cut(lines[i], '\t');
    const auto name = Cut(f[0], '.');
    CIdent id{name[0], name[1], f[1], f[2], {}};
    if (f[3] != "null")
      for (const std::string& mod : Cut(f[3], ';'))
        if (!mod.empty())
          id.mods.push_back({std::atoi(mod.c_str()),
                             mod.substr(mod.find('(') + 1, mod.size() - mod.find('(') - 2)});
    ids.push_back(id);
  }
  return ids;
}

inline std::string ParenMods(const CIdent& id, const CStyle& style) {
  std::string text;
  for (const auto& [pos, name] : id.mods)
    text += std::to_string(pos) + "," + id.sequence[pos - 1] + "(" + style.Mod(name) + ");";
  return text.empty() ? "null" : text;
}

inline std::string TabTxt(const std::vector<CIdent>& ids, const CStyle& style) {
  std::string text = "Spectrum\tCharge\tPeptide\tModifications\n";
  for (const CIdent& id : ids)
    text += id.Name(style.suffix) + "\t" + id.charge + "\t" + id.sequence + "\t" + ParenMods(id, style) + "\n";
  return text;
}

inline std::string Quorin(const std::vector<CIdent>& ids, const CStyle& style) {
  std::string text = "Spectrum Name\tSequence\tModification\tCharge\n";
  for (std::size_t i = 0; i < ids.size(); ++i) {
    const CIdent& id = ids[i];
    const std::string sep = i % 2 ? " , " : "\t";  // a blank-comma-blank run separates too
    std::string mods;
    for (const auto& [pos, name] : id.mods) mods += std::to_string(pos) + "," + style.Mod(name) + ";";
    text += id.Name(style.suffix) + sep + id.sequence + sep + (mods.empty() ? "-" : mods) + sep + id.charge + "\n";
  }
  return text;
}

// `accession` gives the protein of each sequence; decoy accessions come first to
// make the reader pick the real one.
inline std::string Lanvek(const std::vector<CIdent>& ids, const CStyle& style,
                          const std::map<std::string, std::string>& accession) {
  std::string text = "Spectrum\tName\tCharge\nHit\tRank\tPeptide\tScore\tMods\ta\tb\tc\td\tProteins\n";
  int number = 0;
  for (const CIdent& id : ids) {
    const std::string hit = "\t" + id.sequence + "\t99.5\t" + ParenMods(id, style) + "\t1\t1\t1\t1\t";
    text += std::to_string(++number) + "\t" + id.Name(style.suffix) + "\t" + id.charge + "\n";
    text += "*\t1" + hit + "REVERSE_X/" + accession.at(id.sequence) + "\n";
    text += "*\t2\tPEPTIDEK\t12.0\tnull\t1\t1\t1\t1\tOTHER\n";  // later hits are skipped
  }
  return text;
}

// Modification table ids 1 to 9 in the order of `unimods`; names as "Deamidated (N)".
// Every other title has words and commas behind the name, which shift no column
// the reader needs.
inline std::string Mascot(const std::vector<CIdent>& ids, const CStyle& style,
                          const std::vector<std::string>& unimods) {
  std::string text = "\"Variable modifications,------\"\n\"\"\n\"Identifier,Name,Delta\"\n";
  for (std::size_t i = 0; i < unimods.size(); ++i) {
    std::string name = style.Mod(unimods[i]);
    name.replace(name.find('['), 1, " (").back() = ')';
    text += "\"" + std::to_string(i + 1) + "," + name + ",0.0\"\n";
  }
  text += "\"\"\n\"Protein hits,------\"\n\"\"\nprot_hit_num,prot_acc,pep_seq,pep_var_mod_pos,pep_scan_title\n";
  for (std::size_t row = 0; row < ids.size(); ++row) {
    const CIdent& id = ids[row];
    std::string digits(id.sequence.size(), '0');
    for (const auto& [pos, name] : id.mods)
      for (std::size_t i = 0; i < unimods.size(); ++i)
        if (unimods[i] == name) digits[pos - 1] = static_cast<char>('1' + i);
    text += "1,\"sp|P1\"," + id.sequence + ",0." + digits + ".0,\"" + id.Name(style.suffix) +
            (row % 2 ? "\"\n" : " Cmpd 12, +MSn(703.1), 22.5 min\"\n");
  }
  return text;
}

// pepXML with modification names from residue and modified residue mass. Second
// hits and a query under the probability threshold 0.9 must be passed over.
inline std::string PepXml(const std::vector<CIdent>& ids, const CStyle& style, const CMassTable& table,
                          const std::vector<std::string>& unimods) {
  auto modMass = [&](const std::string& unimod) {
    char residue = unimod[unimod.size() - 2];
    char text[64];
    std::snprintf(text, sizeof text, "%.6f", table.AminoAcid(residue) + table.Modification(unimod));
    return std::string(text);
  };
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<msms_pipeline_analysis>\n"
                     "<msms_run_summary base_name=\"lib\">\n<search_summary>\n";
  for (const std::string& m : unimods)
    text += "<aminoacid_modification aminoacid=\"" + std::string(1, m[m.size() - 2]) + "\" massdiff=\"" +
            std::to_string(table.Modification(m)) + "\" mass=\"" + modMass(m) + "\"/>\n";
  text += "</search_summary>\n"
          "<spectrum_query spectrum=\"lib_run1.999.999.2.dta\" assumed_charge=\"2\">\n<search_result>\n"
          "<search_hit peptide=\"AANGTK\">\n<modification_info>\n<mod_aminoacid_mass position=\"3\" mass=\"" +
          modMass("Deamidated[N]") + "\"/>\n</modification_info>\n<analysis_result>\n"
          "<peptideprophet_result probability=\"0.89\"/>\n</analysis_result>\n</search_hit>\n</search_result>\n"
          "</spectrum_query>\n";
  for (const CIdent& id : ids) {
    text += "<spectrum_query spectrum=\"" + id.Name(style.suffix) + "\" assumed_charge=\"" + id.charge +
            "\">\n<search_result>\n<search_hit hit_rank=\"1\" peptide=\"" + id.sequence + "\">\n";
    if (!id.mods.empty()) {
      text += "<modification_info>\n";
      for (const auto& [pos, name] : id.mods)
        text += "<mod_aminoacid_mass position=\"" + std::to_string(pos) + "\" mass=\"" + modMass(name) + "\"/>\n";
      text += "</modification_info>\n";
    }
    text += "<analysis_result analysis=\"peptideprophet\">\n<peptideprophet_result probability=\"0.97\"/>\n"
            "</analysis_result>\n</search_hit>\n<search_hit hit_rank=\"2\" peptide=\"WWWWWK\">\n"
            "<analysis_result>\n<peptideprophet_result probability=\"0.99\"/>\n</analysis_result>\n"
            "</search_hit>\n</search_result>\n</spectrum_query>\n";
  }
  return text + "</msms_run_summary>\n</msms_pipeline_analysis>\n";
}

// MaxQuant msms table; the reader adds Carbamidomethyl[C] to every C itself, so
// cysteines carry no code. `Mass` is the neutral mass of the peptide with all
// its modifications, so that no label is recovered.
inline std::string MaxQuant(const std::vector<CIdent>& ids, const CStyle& style, const CMassTable& table) {
  const std::vector<std::string> heads = {"Deamidation (N)", "Oxidation (M)"};
  std::string text = "Index\tRaw file\tScan number\tSequence\tCharge\tModified sequence";
  for (const char* group : {" Probabilities", " Score Diffs", ""})
    for (const std::string& head : heads) text += "\t" + head + group;
  text += "\tProteins\tMass\tid\n";
  for (const CIdent& id : ids) {
    if (&id == &ids[ids.size() / 2]) text += "\n";  // empty lines are skipped
    double mass = table.Molecule("H2O");
    for (char residue : id.sequence) mass += table.AminoAcid(residue);
    std::string modified = "_";
    for (std::size_t i = 0; i < id.sequence.size(); ++i) {
      modified += id.sequence[i];
      for (const auto& [pos, name] : id.mods) {
        if (pos != static_cast<int>(i + 1)) continue;
        mass += table.Modification(style.Mod(name));
        if (id.sequence[i] != 'C') modified += "(" + std::string(name == "Oxidation[M]" ? "ox" : "de") + ")";
      }
    }
    char massText[32];
    std::snprintf(massText, sizeof massText, "%.5f", mass);
    text += "7\t" + id.run + "\t" + id.scan + "\t" + id.sequence + "\t" + id.charge + "\t" + modified + "_" +
            "\t1\t1\t50\t50\t" + "\t\tP1\t" + massText + "\t" + id.scan + "\n";
  }
  return text;
}

// One MGF block as the datasets need it: title, charge, PEPMASS and peak lines.
struct CMgfBlock {
  std::string title;
  int charge = 0;
  double pepmass = 0.0;
  std::vector<std::string> peaks;
  double MH() const { return (pepmass - 1.00727647012) * charge + 1.00727647012; }
};

inline std::vector<CMgfBlock> ReadMgf(const std::string& path) {
  std::vector<CMgfBlock> blocks;
  for (const std::string& line : testutil::ReadLines(path)) {
    if (line.rfind("BEGIN", 0) == 0) blocks.emplace_back();
    else if (line.rfind("TITLE=", 0) == 0) blocks.back().title = line.substr(6);
    else if (line.rfind("CHARGE=", 0) == 0) blocks.back().charge = std::atoi(line.c_str() + 7);
    else if (line.rfind("PEPMASS=", 0) == 0) blocks.back().pepmass = std::atof(line.c_str() + 8);
    else if (!line.empty() && line[0] >= '0' && line[0] <= '9') blocks.back().peaks.push_back(line);
  }
  return blocks;
}

inline std::string Join(const std::vector<std::string>& lines) {
  std::string text;
  for (const std::string& line : lines) text += line + "\n";
  return text;
}

// Windows line ends, which every reader accepts as well.
inline std::string Crlf(const std::string& text) {
  std::string out;
  for (char c : text) out += c == '\n' ? std::string("\r\n") : std::string(1, c);
  return out;
}

inline std::string DtaHead(const CMgfBlock& b) {
  char text[64];
  std::snprintf(text, sizeof text, "%.10f %d\n", b.MH(), b.charge);
  return text;
}

inline void WriteMgf(const std::vector<CMgfBlock>& blocks, const std::string& suffix, const std::string& path) {
  std::string text;
  for (const CMgfBlock& b : blocks)
    text += "BEGIN IONS\nTITLE=" + b.title + suffix + "\nCHARGE=" + std::to_string(b.charge) +
            "+\nPEPMASS=" + std::to_string(b.pepmass) + "\n" + Join(b.peaks) + "END IONS\n\n";
  testutil::WriteFile(path, text);
}

// One DTA file per spectrum, named by its title plus `suffix`; CRLF lines, the
// last one without a line end.
inline void WriteDtaDirectory(const std::vector<CMgfBlock>& blocks, const std::string& suffix,
                              const std::string& dir) {
  std::filesystem::create_directories(dir);
  for (const CMgfBlock& b : blocks) {
    const std::string text = Crlf(DtaHead(b) + Join(b.peaks));
    testutil::WriteFile(dir + "/" + b.title + suffix, text.substr(0, text.size() - 2));
  }
}

inline void WriteDtas(const std::vector<CMgfBlock>& blocks, const std::string& suffix, const std::string& path) {
  std::string text = "[Header]\nsource=test\n[Parameters]\n[Spectra]\n";
  for (const CMgfBlock& b : blocks) text += b.title + suffix + "\n" + DtaHead(b) + Join(b.peaks) + "\n";
  testutil::WriteFile(path, Crlf(text));
}

}  // namespace xfmt
