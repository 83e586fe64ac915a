#pragma once
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>
#include <sstream>
#include <stop_token>
#include <thread>
#include <vector>

#include "search/SpectralMatch.h"
#include "spectrum/Spectrum.h"

// One batch of queries on its way through the search: read in order, matched
// by any thread, written in order.
struct CSearchBatch {
  std::vector<CSpectrum> spectra;
  std::vector<CSpectralMatch> results;  // one per spectrum, same order
  std::ostringstream console;           // what reading printed, shown when the batch is written
  std::size_t pending = 0;              // queries not matched yet (guarded by the pool)
};

// Matches query batches on a number of threads. One thread hands batches in
// and waits for them in order (the searcher, which reads and writes); their
// queries go in small chunks to whichever worker is free, so reading the next
// batch overlaps matching. With one thread there are no workers: a batch is
// matched at once as it is handed in.
class CMatchingPool {
 public:
  // work(worker, batch, first, last) matches queries [first, last) of the
  // batch with state of the worker's own (worker < Threads()).
  using Work = std::function<void(std::size_t, CSearchBatch&, std::size_t, std::size_t)>;

  CMatchingPool(std::size_t threads, Work work);
  CMatchingPool(const CMatchingPool&) = delete;
  CMatchingPool& operator=(const CMatchingPool&) = delete;
  // Stops and joins the workers.
  ~CMatchingPool() = default;

  // Threads that match: at least 1 (fewer than asked if the system refused some).
  std::size_t Threads() const { return workers.empty() ? 1 : workers.size(); }
  // Queues every query of the batch (or matches them now, with one thread).
  void Submit(CSearchBatch& batch);
  // Returns once every query of the batch is matched.
  void Wait(CSearchBatch& batch);

 private:
  struct Chunk {
    CSearchBatch* batch;
    std::size_t first;
    std::size_t last;
  };
  void Serve(std::stop_token stop, std::size_t worker);

  Work work;
  std::mutex mutex;
  std::condition_variable_any chunkReady;
  std::condition_variable batchDone;
  std::deque<Chunk> chunks;
  // Last, so that the workers are joined before the members they use go.
  std::vector<std::jthread> workers;
};
