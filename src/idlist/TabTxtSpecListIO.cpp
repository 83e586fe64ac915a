#include "idlist/TabTxtSpecListIO.h"

#include <algorithm>
#include <iostream>

#include "idlist/ListFile.h"
#include "run/Process.h"
#include "run/TextLine.h"

void CTabTxtSpecListIO::Init(const CIdentificationFile& file) { path = file.path; }

void CTabTxtSpecListIO::Read(std::vector<CIdentifiedSpectrum>& list) {
  std::ifstream in;
  if (!OpenListFile(path, in)) return;
  std::string line;
  std::string mods;
  std::vector<std::string_view> fields;
  bool tooLong = false;
  ReadLine(in, line);  // heading
  bool got = ReadLine(in, line, &tooLong);
  // The line at which the end of the file is met is not taken, nor anything
  // behind an empty line.
  while (got && !in.eof() && !line.empty()) {
    if (std::count(line.begin(), line.end(), '\t') != 3) {
      std::cout << "[Error] The format of the spectral identification list is wrong!"
                << std::endl;
      ExitProgram(1);
    }
    // An empty field lets the scan slide onto the next one, so a line with
    // fewer than four fields has no sound meaning: it is reported and skipped.
    if (ScanTokens(line, 4, fields) < 4) {
      std::cout << "[Warning]: The line \"" << line << "\" of \"" << path
                << "\" has fewer than four fields! It will be skipped!\n";
    } else {
      record.spectrumName.assign(fields[0]);
      record.charge = ParseInt(fields[1]);
      record.sequence.assign(fields[2]);
      mods.assign(fields[3]);
      NormalizeParenMods(mods);
      if (ParseRecordModifications(mods, record)) AddIdentified(list, record, "00");
    }
    // An overlong line was cut; the reading ends behind it.
    if (tooLong) break;
    got = ReadLine(in, line, &tooLong);
  }
}
