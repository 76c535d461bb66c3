#pragma once

#include <array>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <exception>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <thread>

#include <tessarine/core/values/Address.h>
#include <tessarine/io/csv/detail/CsvValues.h>

namespace tessarine::detail {

class TCellStore;

/// Cells on their way into a store, in batches. From the first full batch on, a second thread stores one while the next
/// is filled; where there is no second thread, each is stored when it is full. What is in the store behind Settle() is
/// what TCsvTextCache::TextOf, TCellStore::SetText and SetNumber make of the cells one by one, which is the plain way.
/// Between the first cell and Settle() nobody else touches the store or the cache.
class TCsvCellQueue {
 public:
  /// The arguments outlive the queue.
  TCsvCellQueue(TCsvTextCache& ACache, TCellStore& AStore, bool AOnTwoThreads = HasSecondProcessor());
  TCsvCellQueue(const TCsvCellQueue&) = delete;
  TCsvCellQueue& operator=(const TCsvCellQueue&) = delete;
  ~TCsvCellQueue();

  static bool HasSecondProcessor() { return std::thread::hardware_concurrency() > 1; }

  void AddNumber(int32_t ACol, int32_t ARow, double ANumber) {
    TEntry& entry = Add(ACol, ARow, false);
    entry.Number = ANumber;
    if (FFilling->Count == kBatchCells) Give();
  }

  /// Takes a copy of a text in UTF-8.
  void AddText(int32_t ACol, int32_t ARow, std::string_view AText) {
    FFilling->Bytes += AText;
    TEntry& entry = Add(ACol, ARow, true);
    entry.TextEnd = FFilling->Bytes.size();
    if (FFilling->Count == kBatchCells || entry.TextEnd >= kBatchBytes) Give();
  }

  /// How many cells were added.
  size_t Count() const { return FGivenCells + FFilling->Count; }

  /// Returns when all cells are in the store. Throws what storing them threw.
  void Settle();

 private:
  static constexpr size_t kBatchCells = 8192;
  static constexpr size_t kBatchBytes = size_t{128} * 1024;
  static constexpr uint32_t kBatches = 4;

  struct TEntry {
    union {
      double Number;
      size_t TextEnd;  // in the batch's bytes; the text begins where the one before it ends
    };
    int32_t Row;
    uint16_t Col;
    bool IsText;
  };
  static_assert(sizeof(TEntry) == 16 && kMaxCol <= 0xFFFF);

  struct TBatch {
    std::unique_ptr<TEntry[]> Cells;  // kBatchCells of them, the first Count are set
    size_t Count = 0;
    std::string Bytes;
    bool IsEnd = false;  // nothing comes any more

    std::span<const TEntry> Filled() const { return {Cells.get(), Count}; }
    void Clear() {
      Count = 0;
      Bytes.clear();
    }
  };

  TEntry& Add(int32_t ACol, int32_t ARow, bool AIsText) {
    TEntry& entry = FFilling->Cells[FFilling->Count++];
    entry.Row = ARow;
    entry.Col = static_cast<uint16_t>(ACol);
    entry.IsText = AIsText;
    return entry;
  }
  void Give();
  bool TryStart();
  void PassOn();
  void Work();
  void Store(const TBatch& ABatch);

  TCsvTextCache& FCache;
  TCellStore& FStore;
  bool FOnTwoThreads;
  size_t FGivenCells = 0;
  std::array<TBatch, kBatches> FRing;
  TBatch* FFilling = &FRing[0];
  std::atomic<uint32_t> FGiven = 0;   // batches that were passed on; the next is being filled
  std::atomic<uint32_t> FStored = 0;  // batches that the second thread is done with
  std::exception_ptr FError;          // of the second thread; read when it is done with all
  std::thread FWorker;
};

}  // namespace tessarine::detail
