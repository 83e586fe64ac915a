// One streaming pass to list the MS2 spectra, then peaks decoded on demand.
#include "spectrum/MzSpecIO.h"

#include <iostream>

#include "run/InputFailures.h"
#include "spectrum/ChargeLimit.h"
#include "spectrum/MzSpectrumName.h"

void CMzSpecIO::Init() {
  work.peaks.clear();
  extension = ".mzML";
  protonMass = 1.00727647012;
}

void CMzSpecIO::OpenRead(const std::string& pathname) {
  CloseRead();
  path = pathname;
  stem = FileStem(pathname);
  if (!file.Open(pathname)) {
    std::cout << "\nCMzSpecIO error: failed to open spectrum file " << pathname << std::endl;
    NoteInputFailure();
  } else {
    std::unique_ptr<CMzHandler> handler = MakeHandler();
    CXmlEventStream stream(*handler);
    handler->Attach(stream, [this](const CMzRecord& record) { Index(record); });
    constexpr std::size_t kChunk = 1 << 18;
    const std::unique_ptr<char[]> buffer(new char[kChunk]);  // left uninitialised: small files touch little of it
    bool fine = true;
    while (fine) {
      const std::size_t got = file.ReadNext(buffer.get(), kChunk);
      fine = stream.Feed(buffer.get(), got, got == 0) && got != 0;
    }
    // The spectra complete before a fault are kept, as a truncated MGF keeps its blocks.
    const std::string& problem = !file.Problem().empty() ? file.Problem() : stream.Problem();
    if (!problem.empty()) {
      std::cout << "\n[Warning]: " << pathname << ": " << problem << "; the " << entries.size()
                << " MS2 spectra before it are kept" << std::endl;
      NoteInputFailure();
    }
    if (chargesOutOfRange > 0)
      std::cout << "\n[Warning]: " << pathname << ": " << chargesOutOfRange
                << " MS2 spectra have a charge outside 1 to " << kMaxPrecursorCharge << "; it is read as 0"
                << std::endl;
    if (profileSpectra > 0)
      std::cout << "\n[Warning]: " << pathname << ": " << profileSpectra
                << " MS2 spectra are profile spectra, not centroided; their points are read as peaks"
                << std::endl;
  }
  Rewind();
}

void CMzSpecIO::Index(const CMzRecord& record) {
  if (record.msLevel != 2) return;
  if (record.profile) ++profileSpectra;
  const uint32_t charge = ChargeInRange(record.charge) ? static_cast<uint32_t>(record.charge) : 0;
  if (record.charge != 0 && charge == 0) ++chargesOutOfRange;
  entries.push_back({record.precursorMz, charge, record.interleaved, record.mz, record.intensity});
  index.insert_or_assign(MzSpectrumName(record, stem), static_cast<uint32_t>(entries.size() - 1));
}

bool CMzSpecIO::ReadNext(std::vector<CSpectrum>& out) {
  if (cursor == index.end()) return false;
  const std::string& name = cursor->first;
  ++cursor;
  ReadByName(name, out);  // true even where the read failed: the entry is used up
  return true;
}

uint32_t CMzSpecIO::ReadAll(std::vector<CSpectrum>& out) {
  uint32_t count = 0;
  for (; cursor != index.end(); ++cursor)
    if (ReadByName(cursor->first, out)) ++count;
  return count;
}

void CMzSpecIO::CloseRead() {
  file.Close();
  entries.clear();
  index.clear();
  cursor = index.end();
  profileSpectra = 0;
  chargesOutOfRange = 0;
}

bool CMzSpecIO::ReadByName(const std::string& name, std::vector<CSpectrum>& out) {
  const auto found = index.find(name);
  if (found == index.end()) {
    std::cout << "\n[Warning]: Unable to load spectrum " << name << '\n';
    return false;
  }
  const CEntry& entry = entries[found->second];
  std::string problem;
  if (!Decode(entry, problem)) {
    std::cout << "\n[Warning]: Unable to load spectrum " << name << " of " << path << ": " << problem
              << '\n';
    return false;
  }
  work.name = name;
  work.charge = entry.charge;
  // [M+H]+ from m/z and charge, as the MGF reader computes it.
  work.precursorMass = (entry.precursorMz - protonMass) * static_cast<double>(entry.charge) + protonMass;
  const std::size_t count = entry.interleaved ? mzValues.size() / 2 : mzValues.size();
  work.peaks.assign(count, CPeak());
  for (std::size_t i = 0; i < count; ++i) {
    CPeak& peak = work.peaks[i];
    peak.mz = entry.interleaved ? mzValues[2 * i] : mzValues[i];
    peak.intensity = entry.interleaved ? mzValues[2 * i + 1] : intensityValues[i];
  }
  out.push_back(work);
  return true;
}

bool CMzSpecIO::Decode(const CEntry& entry, std::string& problem) {
  mzValues.clear();
  intensityValues.clear();
  if (entry.interleaved) {
    if (!entry.mz.present) return true;  // a scan without a peaks element has no peaks
    if (!file.ReadAt(entry.mz.begin, entry.mz.end, text)) {
      problem = "the file ended or changed since it was opened";
      return false;
    }
    if (!DecodeArray(text, entry.mz.encoding, entry.mz.expectedLength, mzValues, problem)) return false;
    if (mzValues.size() % 2 != 0) {
      problem = "the peak array holds an odd count of values";
      return false;
    }
    return true;
  }
  if (!entry.mz.present && !entry.intensity.present) return true;
  if (!entry.mz.present || !entry.intensity.present) {
    problem = entry.mz.present ? "no intensity array" : "no m/z array";
    return false;
  }
  for (auto [array, values] : {std::pair{&entry.mz, &mzValues}, std::pair{&entry.intensity, &intensityValues}}) {
    if (!file.ReadAt(array->begin, array->end, text)) {
      problem = "the file ended or changed since it was opened";
      return false;
    }
    if (!DecodeArray(text, array->encoding, array->expectedLength, *values, problem)) return false;
  }
  if (mzValues.size() != intensityValues.size()) {
    problem = "the m/z and intensity arrays differ in length";
    return false;
  }
  return true;
}

void CMzSpecIO::Rewind() { cursor = index.begin(); }

uint32_t CMzSpecIO::Count() { return static_cast<uint32_t>(index.size()); }
