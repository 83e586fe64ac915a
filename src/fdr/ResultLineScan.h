#pragma once
#include <cstdint>
#include <string>

#include "spectrum/ChargeLimit.h"

// The fields of a result line that the FDR stage uses.
struct CResultLineFields {
  int32_t charge = 0;       // column 5
  double massShift = 0.0;   // column 8
  double score = 0.0;       // column 20
  char hitKind = '\0';      // first character of column 21: 'D' for a decoy hit
};

// Reads a result line with the meaning of the scan format
//   "%*s\t%*s\t%*lf\t%*lf\t%d\t%*s\t%*s\t%lf\t%*lf\t%*s\t%*s\t%*s\t%*d\t%*d\t%*lf\t
//    %*d\t%*lf\t%*lf\t%*lf\t%lf\t%c\t%*s\t%*s\t%*s\t%*s\t%*s\t%*d"
// Fields are words separated by white space, so an empty field moves the later
// ones; a conversion that fails leaves its field and all behind it at their
// defaults. The text ends at the first NUL character, as a C string would. A
// charge outside 0..kMaxPrecursorCharge, which no spectrum reader gives, reads
// as 0 (unknown): the line is damaged.
CResultLineFields ScanResultLine(const std::string& line);

// The same through std::sscanf. ScanResultLine gives identical results faster and
// falls back on this for any line that isn't plainly formed.
CResultLineFields ScanResultLineWithFormat(const std::string& line);
