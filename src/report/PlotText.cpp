#include "report/PlotText.h"

#include <algorithm>
#include <cmath>

namespace {
constexpr double kMzUnitsPerDa = 10000.0;

void AppendIntensity(double relative, std::string& out) {
  static const char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
  const long value = std::lround(std::clamp(relative, 0.0, 1.0) * 1000.0);  // 1000 is "rs"
  out += kDigits[value / 36];
  out += kDigits[value % 36];
}

// Appends the m/z as a difference to `previous`, which it then becomes.
void AppendMz(double mz, long long& previous, std::string& out) {
  const double scaled = mz * kMzUnitsPerDa;
  // Out-of-range values (never in real spectra) are drawn at 0 instead of overflowing.
  const long long units = std::fabs(scaled) < 9e15 ? std::llround(scaled) : 0;
  AppendBase36(units - previous, out);
  previous = units;
}
}  // namespace

void AppendBase36(long long value, std::string& out) {
  static const char kDigits[] = "0123456789abcdefghijklmnopqrstuvwxyz";
  if (value < 0) {
    out += '-';
    value = -value;
  }
  char text[16];
  int length = 0;
  do {
    text[length++] = kDigits[value % 36];
    value /= 36;
  } while (value > 0);
  while (length > 0) out += text[--length];
}

void AppendLibraryPeaks(const CSpectrum& entry, std::string& out) {
  double strongest = 0.0;
  for (const CPeak& peak : entry.peaks) strongest = std::max(strongest, peak.intensity);
  long long previous = 0;
  for (std::size_t i = 0; i < entry.peaks.size(); ++i) {
    const CPeak& peak = entry.peaks[i];
    if (i > 0) out += ',';
    AppendIntensity(strongest > 0.0 ? peak.intensity / strongest : 0.0, out);
    AppendMz(peak.mz, previous, out);
    if (peak.type >= kPeakB && peak.type < kPeakUnannotated) {
      out += '.';
      out += static_cast<char>('0' + peak.type);
      AppendBase36(std::min<uint32_t>(peak.charge, 35), out);
      AppendBase36(peak.position, out);
    }
  }
}

void AppendHitPeaks(std::size_t libraryLine, const CHitAnnotation& hit, std::string& out) {
  AppendBase36(static_cast<long long>(libraryLine), out);
  out += '|';
  long long previous = 0;
  for (std::size_t i = 0; i < hit.queryPeaks.size(); ++i) {
    if (i > 0) out += ',';
    AppendIntensity(hit.queryPeaks[i].relative, out);
    AppendMz(hit.queryPeaks[i].mz, previous, out);
  }
  out += '|';
  for (std::size_t i = 0; i < hit.matches.size(); ++i) {
    if (i > 0) out += ',';
    AppendBase36(hit.matches[i].queryPeak, out);
    out += '.';
    AppendBase36(hit.matches[i].libraryPeak, out);
    out += hit.matches[i].shifted ? ".2" : ".1";
  }
  out += '|';
  bool first = true;
  for (std::size_t i = 0; i < hit.queryPeaks.size(); ++i) {
    if (!hit.queryPeaks[i].oxonium) continue;
    if (!first) out += ',';
    first = false;
    AppendBase36(static_cast<long long>(i), out);
  }
}
