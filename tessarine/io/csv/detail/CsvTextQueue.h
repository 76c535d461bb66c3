#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

#include <tessarine/io/csv/detail/CsvValues.h>

namespace tessarine::detail {

class TCellStore;

/// Texts on their way into a store. Some of them wait side by side, so that the processor fetches for all at once what
/// looking them up needs. What is in the store after Flush() is what TCsvTextCache::TextOf and TCellStore::SetText
/// make of the texts one by one, which is the plain way; places are not given twice before it.
class TCsvTextQueue {
 public:
  /// The arguments outlive the queue.
  TCsvTextQueue(TCsvTextCache& ACache, TCellStore& AStore) : FCache(ACache), FStore(AStore) {}
  TCsvTextQueue(const TCsvTextQueue&) = delete;
  TCsvTextQueue& operator=(const TCsvTextQueue&) = delete;

  /// Takes a copy of a text for a place; false for one that is not looked up, which is left to the caller.
  bool TryAdd(int32_t ACol, int32_t ARow, std::string_view AText);

  /// Puts all that wait into the store.
  void Flush();

  size_t Count() const { return FCount; }

 private:
  struct TEntry {
    uint64_t Hash;
    int32_t Col;
    int32_t Row;
    size_t Length;
    char Bytes[TCsvTextCache::kLongest];

    std::string_view Text() const { return {Bytes, Length}; }
  };

  TCsvTextCache& FCache;
  TCellStore& FStore;
  size_t FCount = 0;
  std::array<TEntry, 32> FEntries;  // the first FCount are set
};

}  // namespace tessarine::detail
