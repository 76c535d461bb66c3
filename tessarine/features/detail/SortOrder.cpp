#include <tessarine/features/detail/SortOrder.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <optional>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/values/Coercion.h>
#include <tessarine/core/values/detail/NoCase.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// What a row is compared by under one key.
struct TSortItem {
  bool HasNumber = false;
  double Number = 0;
  TText Shown;
};

/// The number of a cell that holds or yields one.
std::optional<double> StoredNumber(const TWorksheet& ASheet, TCellAddress AAddress) {
  const TCellSlot* slot = ASheet.Store().Find(AAddress.Col, AAddress.Row);
  if (!slot) return std::nullopt;
  const TValueView value = ASheet.Store().EffectiveView(*slot);
  return value.Kind == cvkNumber ? std::optional(value.Number) : std::nullopt;
}

TSortItem ItemAt(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, TCellAddress AAddress) {
  TSortItem item;
  item.Shown = ASheet.GetDisplayText(AAddress, AStyleSheet);
  if (const std::optional<double> number = StoredNumber(ASheet, AAddress)) {
    item.HasNumber = true;
    item.Number = *number;
  } else {
    item.HasNumber = TextAsNumber(item.Shown.View(), item.Number);
  }
  return item;
}

int CompareItems(const TSortItem& ALeft, const TSortItem& ARight) {
  if (ALeft.HasNumber && ARight.HasNumber)
    return ALeft.Number < ARight.Number ? -1 : ALeft.Number > ARight.Number ? 1 : 0;
  return CompareAsciiNoCase(ALeft.Shown, ARight.Shown);
}

/// A stable merge sort. Needs no order of ABefore to end and to stay in bounds: numbers and texts in one column may
/// well form a circle (2 before 10, 10 before "1a", "1a" before 2).
template <class TItem, class TBefore>
void MergeSort(std::vector<TItem>& AItems, TBefore&& ABefore) {
  std::vector<TItem> merged(AItems.size());
  const size_t count = AItems.size();
  for (size_t width = 1; width < count; width *= 2) {
    for (size_t start = 0; start < count; start += 2 * width) {
      const size_t middle = std::min(start + width, count);
      const size_t end = std::min(start + 2 * width, count);
      size_t left = start;
      size_t right = middle;
      size_t target = start;
      while (left < middle && right < end)
        merged[target++] = ABefore(AItems[right], AItems[left]) ? AItems[right++] : AItems[left++];
      while (left < middle) merged[target++] = AItems[left++];
      while (right < end) merged[target++] = AItems[right++];
    }
    AItems.swap(merged);
  }
}

std::vector<int32_t> RowsFrom(int32_t AFirst, int32_t ALast) {
  std::vector<int32_t> rows(static_cast<size_t>(ALast - AFirst + 1));
  std::iota(rows.begin(), rows.end(), AFirst);
  return rows;
}

/// An integer that sorts as the number does; both zeros are one.
uint64_t SortableBits(double ANumber) {
  const auto bits = std::bit_cast<uint64_t>(ANumber == 0 ? 0.0 : ANumber);
  constexpr uint64_t kSign = uint64_t{1} << 63;
  return (bits & kSign) != 0 ? ~bits : bits | kSign;
}

/// A key's items for all rows, read once.
class TKeyColumn {
 public:
  TKeyColumn(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, int32_t ACol, int32_t AFirst,
             int32_t ALast)
      : FSheet(ASheet),
        FStyles(AStyleSheet),
        FCol(ACol),
        FFirst(AFirst),
        FCount(static_cast<size_t>(ALast - AFirst + 1)) {}

  /// One integer a row that sorts as the items do, when nothing but numbers or nothing but texts without one compare;
  /// nothing for a mixture, whose order may be none.
  std::optional<std::vector<uint64_t>> TryRanks() {
    std::vector<uint64_t> ranks;
    ranks.reserve(FCount);
    if (TryNumberRanks(ranks)) return ranks;
    ranks.clear();
    if (TryTextRanks(ranks)) return ranks;
    return std::nullopt;
  }

  void ReadItems() {
    FItems.reserve(FCount);
    for (size_t i = 0; i < FCount; ++i) FItems.push_back(ItemAt(FSheet, FStyles, AddressOf(i)));
  }

  const TSortItem& Item(int32_t ARow) const { return FItems[static_cast<size_t>(ARow - FFirst)]; }

 private:
  TCellAddress AddressOf(size_t AIndex) const { return {FCol, FFirst + static_cast<int32_t>(AIndex)}; }

  bool TryNumberRanks(std::vector<uint64_t>& ARanks) const {
    for (size_t i = 0; i < FCount; ++i) {
      const std::optional<double> number = StoredNumber(FSheet, AddressOf(i));
      if (!number || std::isnan(*number)) return false;
      ARanks.push_back(SortableBits(*number));
    }
    return true;
  }

  bool TryTextRanks(std::vector<uint64_t>& ARanks) const {
    boost::unordered_flat_map<TText, uint32_t, TTextNoCaseHash, TTextNoCaseEqual> known;
    double number = 0;
    for (size_t i = 0; i < FCount; ++i) {
      const TCellAddress address = AddressOf(i);
      TText shown = FSheet.GetDisplayText(address, FStyles);
      const auto [place, isNew] = known.try_emplace(std::move(shown), static_cast<uint32_t>(known.size()));
      if (isNew && TextAsNumber(place->first.View(), number)) return false;
      if (StoredNumber(FSheet, address)) return false;
      ARanks.push_back(place->second);
    }
    std::vector<std::pair<TText, uint32_t>> texts(known.begin(), known.end());
    std::sort(texts.begin(), texts.end(),
              [](const auto& ALeft, const auto& ARight) { return CompareAsciiNoCase(ALeft.first, ARight.first) < 0; });
    std::vector<uint32_t> rankOf(texts.size());
    for (size_t rank = 0; rank < texts.size(); ++rank) rankOf[texts[rank].second] = static_cast<uint32_t>(rank);
    for (uint64_t& rank : ARanks) rank = rankOf[rank];
    return true;
  }

  const TWorksheet& FSheet;
  const TTessarineStyleSheet* FStyles;
  int32_t FCol;
  int32_t FFirst;
  size_t FCount;
  std::vector<TSortItem> FItems;
};

/// Reorders rows by one key, keeping the order of equal ones: by 11 bits at a time, from the lowest, leaving out bits
/// that are the same in all rows.
void SortByRanks(std::vector<int32_t>& ARows, std::vector<uint64_t> ARanks, int32_t AFirst, bool AAscending) {
  struct TRanked {
    uint64_t Rank;
    int32_t Row;
  };
  uint64_t common = ~uint64_t{0};
  uint64_t any = 0;
  std::vector<TRanked> ranked;
  ranked.reserve(ARows.size());
  for (const int32_t row : ARows) {
    const uint64_t rank =
        AAscending ? ARanks[static_cast<size_t>(row - AFirst)] : ~ARanks[static_cast<size_t>(row - AFirst)];
    common &= rank;
    any |= rank;
    ranked.push_back({rank, row});
  }
  const uint64_t differing = common ^ any;
  std::vector<TRanked> target(ranked.size());
  constexpr int kBits = 11;
  constexpr size_t kBuckets = size_t{1} << kBits;
  for (int shift = 0; shift < 64; shift += kBits) {
    if ((differing >> shift & (kBuckets - 1)) == 0) continue;
    std::vector<size_t> starts(kBuckets + 1);
    for (const TRanked& item : ranked) ++starts[(item.Rank >> shift & (kBuckets - 1)) + 1];
    std::partial_sum(starts.begin(), starts.end(), starts.begin());
    for (const TRanked& item : ranked) target[starts[item.Rank >> shift & (kBuckets - 1)]++] = item;
    ranked.swap(target);
  }
  std::transform(ranked.begin(), ranked.end(), ARows.begin(), [](const TRanked& AItem) { return AItem.Row; });
}

}  // namespace

std::vector<int32_t> SortedRowsPlain(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, int32_t AFirst,
                                     int32_t ALast, std::span<const TSheetSortKey> AKeys) {
  std::vector<int32_t> rows = RowsFrom(AFirst, ALast);
  MergeSort(rows, [&](int32_t ALeft, int32_t ARight) {
    for (const TSheetSortKey& key : AKeys) {
      const int order =
          CompareItems(ItemAt(ASheet, AStyleSheet, {key.Col, ALeft}), ItemAt(ASheet, AStyleSheet, {key.Col, ARight}));
      if (order != 0) return (order < 0) == key.Ascending;
    }
    return false;
  });
  return rows;
}

std::vector<int32_t> SortedRows(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, int32_t AFirst,
                                int32_t ALast, std::span<const TSheetSortKey> AKeys) {
  std::vector<TKeyColumn> columns;
  std::vector<std::vector<uint64_t>> ranks;
  for (const TSheetSortKey& key : AKeys) {
    columns.emplace_back(ASheet, AStyleSheet, key.Col, AFirst, ALast);
    if (ranks.size() + 1 != columns.size()) continue;
    if (std::optional<std::vector<uint64_t>> found = columns.back().TryRanks()) ranks.push_back(std::move(*found));
  }
  std::vector<int32_t> rows = RowsFrom(AFirst, ALast);
  if (ranks.size() == AKeys.size()) {  // true orders: any stable sort gives the same rows
    for (size_t key = AKeys.size(); key-- > 0;) SortByRanks(rows, std::move(ranks[key]), AFirst, AKeys[key].Ascending);
    return rows;
  }
  for (TKeyColumn& column : columns) column.ReadItems();
  MergeSort(rows, [&](int32_t ALeft, int32_t ARight) {
    for (size_t key = 0; key < AKeys.size(); ++key) {
      const int order = CompareItems(columns[key].Item(ALeft), columns[key].Item(ARight));
      if (order != 0) return (order < 0) == AKeys[key].Ascending;
    }
    return false;
  });
  return rows;
}

}  // namespace tessarine::detail
