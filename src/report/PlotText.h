#pragma once
#include <string>
#include <vector>

#include "report/HitAnnotation.h"
#include "spectrum/Spectrum.h"

// The compact text in which the report carries its spectra; the page's script
// reads it back (decodePeaks, decodeLibrary, decodeHit). Numbers are base 36:
// m/z in units of 0.0001 as the difference to the peak before, intensity in
// thousandths of the strongest peak as two digits. A report of 20,000 hits
// stays a few tens of megabytes this way.

// A library entry's peaks: "<intensity><m/z>[.<type><charge><position>]"
// joined by commas; the part after the point only for b, y, Y and other ions.
void AppendLibraryPeaks(const CSpectrum& entry, std::string& out);

// One hit: "<library line>|<query peaks>|<matches>|<oxonium peaks>" with query
// peaks "<intensity><m/z>", matches "<query peak>.<library peak>.<1 direct or
// 2 shifted>" and oxonium peaks by their query peak index.
void AppendHitPeaks(std::size_t libraryLine, const CHitAnnotation& hit, std::string& out);

// Base-36 text of an integer, '-' before a negative one.
void AppendBase36(long long value, std::string& out);
