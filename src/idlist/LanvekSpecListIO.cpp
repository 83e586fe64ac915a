#include "idlist/LanvekSpecListIO.h"

#include <iostream>

#include "idlist/ListFile.h"
#include "molecule/ProteinDatabase.h"
#include "run/Process.h"
#include "run/StringUtil.h"
#include "run/TextLine.h"

namespace {

// Index of the charge token of a name split at its full stops: the token behind
// the first pair of equal neighbours (the repeated scan number), else token 3.
// npos when the name has no such token.
std::size_t ChargeTokenIndex(const std::vector<std::string>& tokens) {
  const std::size_t k = tokens.size();
  for (std::size_t i = 1; i + 2 <= k; ++i)
    if (tokens[i - 1] == tokens[i]) return i + 1;
  return k > 3 ? 3 : std::string::npos;
}

// The first accession without "REVERSE_", else the first one.
std::string ChooseProtein(const std::string& proteins) {
  std::vector<std::string> parts;
  Split(proteins, "/", parts);
  for (const std::string& part : parts)
    if (part.find("REVERSE_") == std::string::npos) return part;
  return proteins.substr(0, proteins.find('/'));
}

}  // namespace

void CLanvekSpecListIO::Init(const CIdentificationFile& file) { path = file.path; }

void CLanvekSpecListIO::Read(std::vector<CIdentifiedSpectrum>& list) {
  std::ifstream in;
  if (!OpenListFile(path, in)) return;
  CProteinDatabase database;
  database.path = CParam::GetInstance().construction.protein_database;
  database.Load();  // a failed load shows at the first lookup

  std::string line;
  bool ended = false;  // a read met the end of the file, or cut an overlong line
  auto next = [&]() {
    bool tooLong = false;
    if (!ReadLine(in, line, &tooLong)) line.clear();
    if (in.eof() || tooLong) ended = true;
  };
  next();
  if (!ended) next();
  if (!ended) next();
  if (ended) return;

  std::vector<std::string_view> tokens;
  std::vector<std::string> nameTokens;
  std::string mods;
  while (!line.empty()) {
    bool takeHit = true;
    if (ScanTokens(line, 2, tokens) < 2) {
      std::cout << "[Warning]: The spectrum line \"" << line
                << "\" has no spectrum name! This result will be discarded!\n";
      takeHit = false;
    } else {
      record.spectrumName.assign(tokens[1]);
      nameTokens.clear();
      Split(record.spectrumName, ".", nameTokens);
      std::size_t chargeIndex = ChargeTokenIndex(nameTokens);
      // A name too short to hold a charge token can't be given a charge.
      if (chargeIndex == std::string::npos) {
        std::cout << "[Warning]: The name of the spectrum " << record.spectrumName
                  << " has no charge token! This result will be discarded!\n";
        takeHit = false;
      } else {
        record.charge = ParseInt(nameTokens[chargeIndex]);
        if (record.charge == 0) {
          std::cout << "[Warning]: The charge of the spectrum " << record.spectrumName
                    << "is unknown!" << " This result will be discarded!" << std::endl;
          takeHit = false;
        }
      }
    }
    next();
    if (takeHit) {
      // A hit line short of its ten fields has no defined meaning: skipped.
      if (ScanTokens(line, 10, tokens) < 10) {
        std::cout << "[Warning]: The hit line of the spectrum " << record.spectrumName
                  << " has fewer than ten fields! This result will be discarded!\n";
      } else {
        record.sequence.assign(tokens[2]);
        mods.assign(tokens[4]);
        NormalizeParenMods(mods);
        const std::string accession = ChooseProtein(std::string(tokens[9]));
        if (ParseRecordModifications(mods, record)) {
          if (!database.FindPeptide(accession, record.sequence, record.startPosition,
                                    record.prevAA, record.lastAA))
            ExitProgram(1);
          record.proteinAC = accession;
          AddIdentified(list, record, record.lastAA);
        }
      }
    }
    while (!ended && !line.empty() && line[0] == '*') next();
    if (ended) break;
  }
}
