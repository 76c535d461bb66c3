#include <tessarine/io/csv/detail/CsvTextQueue.h>

#include <cstring>

#include <tessarine/core/sheet/detail/CellStore.h>

namespace tessarine::detail {

bool TCsvTextQueue::TryAdd(int32_t ACol, int32_t ARow, std::string_view AText) {
  if (!FCache.IsLookedUp(AText, static_cast<size_t>(ACol - 1))) return false;
  if (FCount == FEntries.size()) Flush();
  TEntry& entry = FEntries[FCount++];
  entry.Hash = TCsvTextCache::HashOf(AText);
  entry.Col = ACol;
  entry.Row = ARow;
  entry.Length = AText.size();
  std::memcpy(entry.Bytes, AText.data(), AText.size());
  FCache.FetchBucket(entry.Hash);
  return true;
}

void TCsvTextQueue::Flush() {
  const size_t count = FCount;
  FCount = 0;
  for (size_t i = 0; i < count; ++i) FCache.FetchTexts(FEntries[i].Hash);
  for (size_t i = 0; i < count; ++i) {
    const TEntry& entry = FEntries[i];
    const auto col = static_cast<size_t>(entry.Col - 1);
    FStore.SetText(entry.Col, entry.Row, FCache.TextOf(entry.Text(), col, entry.Hash), 0);
  }
}

}  // namespace tessarine::detail
