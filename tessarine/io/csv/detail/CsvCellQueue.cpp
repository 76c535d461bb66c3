#include <tessarine/io/csv/detail/CsvCellQueue.h>

#include <algorithm>
#include <span>
#include <system_error>
#include <utility>

#include <tessarine/core/sheet/detail/CellStore.h>

namespace tessarine::detail {

namespace {

constexpr size_t kAhead = 32;  // cells whose texts are looked for side by side, so that their memory comes at once

}  // namespace

TCsvCellQueue::TCsvCellQueue(TCsvTextCache& ACache, TCellStore& AStore, bool AOnTwoThreads)
    : FCache(ACache), FStore(AStore), FOnTwoThreads(AOnTwoThreads) {
  FFilling->Cells.reset(new TEntry[kBatchCells]);
}

TCsvCellQueue::~TCsvCellQueue() {
  if (!FWorker.joinable()) return;
  FFilling->IsEnd = true;
  FGiven.fetch_add(1);
  FGiven.notify_one();
  FWorker.join();
}

void TCsvCellQueue::Settle() {
  if (FFilling->Count > 0) Give();
  for (uint32_t stored = FStored; stored != FGiven; stored = FStored) FStored.wait(stored);
  if (FError) std::rethrow_exception(std::exchange(FError, nullptr));
}

/// The batch that is filled goes its way, and an empty one takes its place.
void TCsvCellQueue::Give() {
  FGivenCells += FFilling->Count;
  if (FOnTwoThreads && (FWorker.joinable() || TryStart())) return PassOn();
  FOnTwoThreads = false;
  try {
    Store(*FFilling);
  } catch (...) {
    FFilling->Clear();
    throw;
  }
  FFilling->Clear();
}

bool TCsvCellQueue::TryStart() {
  for (TBatch& batch : FRing) {
    if (!batch.Cells) batch.Cells.reset(new TEntry[kBatchCells]);
  }
  try {
    FWorker = std::thread([this] { Work(); });
    return true;
  } catch (const std::system_error&) {
    return false;
  }
}

void TCsvCellQueue::PassOn() {
  const uint32_t given = FGiven.fetch_add(1) + 1;
  FGiven.notify_one();
  if (given - FStored == kBatches) {  // full: two at a time, since to fall asleep and wake up is dear
    for (uint32_t stored = FStored; given - stored > kBatches / 2; stored = FStored) FStored.wait(stored);
  }
  FFilling = &FRing[given % kBatches];
}

void TCsvCellQueue::Work() {
  for (uint32_t done = 0;; ++done) {
    FGiven.wait(done);
    TBatch& batch = FRing[done % kBatches];
    if (batch.IsEnd) return;
    try {
      if (!FError) Store(batch);
    } catch (...) {
      FError = std::current_exception();
    }
    batch.Clear();
    FStored = done + 1;
    FStored.notify_one();
  }
}

void TCsvCellQueue::Store(const TBatch& ABatch) {
  std::array<std::string_view, kAhead> texts;
  std::array<uint64_t, kAhead> hashes;
  size_t textStart = 0;
  for (size_t first = 0; first < ABatch.Count; first += kAhead) {
    const auto cells = ABatch.Filled().subspan(first, std::min(kAhead, ABatch.Count - first));
    size_t count = 0;
    for (const TEntry& cell : cells) {
      if (!cell.IsText) continue;
      texts[count] = std::string_view(ABatch.Bytes).substr(textStart, cell.TextEnd - textStart);
      textStart = cell.TextEnd;
      hashes[count] = 0;
      if (FCache.IsLookedUp(texts[count], size_t{cell.Col} - 1)) {
        hashes[count] = TCsvTextCache::HashOf(texts[count]);
        FCache.FetchBucket(hashes[count]);
      }
      ++count;
    }
    for (size_t i = 0; i < count; ++i) FCache.FetchTexts(hashes[i]);
    size_t next = 0;
    for (const TEntry& cell : cells) {
      if (cell.IsText) {
        TText text = FCache.TextOf(texts[next], size_t{cell.Col} - 1, hashes[next]);
        FStore.SetText(cell.Col, cell.Row, std::move(text), 0);
        ++next;
      } else {
        FStore.SetNumber(cell.Col, cell.Row, cell.Number, 0);
      }
    }
  }
}

}  // namespace tessarine::detail
