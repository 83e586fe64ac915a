#pragma once
#include <sys/mman.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <new>
#include <type_traits>
#include <vector>

// Append-only storage of plain items in blocks that never move: a run of
// items appended at once stays contiguous, and growing never copies what is
// stored (a copy of the library's largest arrays would double the memory a
// search needs). Blocks are whole huge pages where the system has them:
// matching reads entries scattered over the whole store, and huge pages take
// far fewer address translations.
template <typename T>
class CBlockStore {
  static_assert(std::is_trivially_copyable_v<T> && std::is_trivially_destructible_v<T>);

 public:
  CBlockStore() = default;
  CBlockStore(const CBlockStore&) = delete;
  CBlockStore& operator=(const CBlockStore&) = delete;
  ~CBlockStore() { Clear(); }

  // Room for `count` items, contiguous and uninitialised; Keep(n) then stores
  // the first n of them. Throws std::bad_alloc when no memory is left.
  T* Room(std::size_t count) {
    if (blocks.empty() || capacity - used < count) {
      const std::size_t bytes = RoundUp(std::max(kBlockBytes, count * sizeof(T)), kHugePage);
      blocks.push_back({Map(bytes), bytes});
      capacity = bytes / sizeof(T);
      used = 0;
    }
    return static_cast<T*>(blocks.back().at) + used;
  }
  void Keep(std::size_t count) { used += count; }
  // Gives back the untouched end of the last block; nothing is added after.
  void Seal() {
    if (blocks.empty()) return;
    Block& last = blocks.back();
    const std::size_t kept = RoundUp(std::max<std::size_t>(used * sizeof(T), 1), kPage);
    if (kept >= last.bytes) return;
    munmap(static_cast<char*>(last.at) + kept, last.bytes - kept);
    last.bytes = kept;
    capacity = used;
  }
  void Clear() {
    for (const Block& block : blocks) munmap(block.at, block.bytes);
    blocks.clear();
    capacity = used = 0;
  }

 private:
  struct Block {
    void* at;
    std::size_t bytes;
  };
  static constexpr std::size_t kPage = 4096;
  static constexpr std::size_t kHugePage = std::size_t{1} << 21;
  static constexpr std::size_t kBlockBytes = 2 * kHugePage;
  static std::size_t RoundUp(std::size_t n, std::size_t unit) { return (n + unit - 1) / unit * unit; }

  // `bytes` (whole huge pages) on a huge-page boundary: mapped with one huge
  // page to spare, the spare ends unmapped again.
  static void* Map(std::size_t bytes) {
    void* mapped = mmap(nullptr, bytes + kHugePage, PROT_READ | PROT_WRITE,
                        MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (mapped == MAP_FAILED) throw std::bad_alloc();
    const auto start = reinterpret_cast<std::uintptr_t>(mapped);
    const std::uintptr_t aligned = RoundUp(start, kHugePage);
    if (aligned > start) munmap(mapped, aligned - start);
    if (aligned + bytes < start + bytes + kHugePage)
      munmap(reinterpret_cast<void*>(aligned + bytes), start + kHugePage - aligned);
    void* at = reinterpret_cast<void*>(aligned);
#ifdef MADV_HUGEPAGE
    madvise(at, bytes, MADV_HUGEPAGE);  // a refusal only means small pages
#endif
    return at;
  }

  std::vector<Block> blocks;
  std::size_t capacity = 0;
  std::size_t used = 0;
};
