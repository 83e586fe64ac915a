#include "search/MatchingPool.h"

#include <system_error>

namespace {
// Queries per chunk: a few milliseconds of work, so that taking a chunk costs
// nothing in comparison and a batch still spreads over many workers.
constexpr std::size_t kChunkQueries = 4;
}  // namespace

CMatchingPool::CMatchingPool(std::size_t threads, Work matchQueries)
    : work(std::move(matchQueries)) {
  if (threads <= 1) return;
  workers.reserve(threads);
  for (std::size_t w = 0; w < threads; ++w) {
    try {
      workers.emplace_back([this, w](std::stop_token stop) { Serve(stop, w); });
    } catch (const std::system_error&) {
      break;  // the system gives no more threads: search with those it gave
    }
  }
  // A single worker would only add hand-overs to the plain loop.
  if (workers.size() == 1) workers.clear();
}

void CMatchingPool::Submit(CSearchBatch& batch) {
  const std::size_t count = batch.spectra.size();
  if (workers.empty()) {
    batch.pending = 0;
    if (count > 0) work(0, batch, 0, count);
    return;
  }
  {
    std::lock_guard lock(mutex);
    batch.pending = count;
    for (std::size_t first = 0; first < count; first += kChunkQueries)
      chunks.push_back({&batch, first, std::min(count, first + kChunkQueries)});
  }
  chunkReady.notify_all();
}

void CMatchingPool::Wait(CSearchBatch& batch) {
  std::unique_lock lock(mutex);
  batchDone.wait(lock, [&batch] { return batch.pending == 0; });
}

void CMatchingPool::Serve(std::stop_token stop, std::size_t worker) {
  std::unique_lock lock(mutex);
  for (;;) {
    if (!chunkReady.wait(lock, stop, [this] { return !chunks.empty(); })) return;
    const Chunk chunk = chunks.front();
    chunks.pop_front();
    lock.unlock();
    work(worker, *chunk.batch, chunk.first, chunk.last);
    lock.lock();
    chunk.batch->pending -= chunk.last - chunk.first;
    if (chunk.batch->pending == 0) batchDone.notify_all();
  }
}
