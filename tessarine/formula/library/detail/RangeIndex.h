#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/values/Text.h>
#include <tessarine/formula/FormulaArg.h>
#include <tessarine/formula/library/detail/Criteria.h>

namespace tessarine {
class TWorksheet;
}

namespace tessarine::detail {

/// Answers which cells of a range equal a key in the sense of TMatchKey. Positions are row-by-row indexes from 0.
///
/// Cells are filed by number (blanks apart, a negative zero as zero) and by display text with ASCII case folded, the
/// texts of cells that are no number apart from those of cells that are one. A key that is a number meets the number
/// file and the first text file, any other key meets both text files; so a Boolean answers to 1 and to the text TRUE.
class TEqualityIndex {
 public:
  /// AView has at most kMaxCells cells.
  explicit TEqualityIndex(const TFormulaArg& AView);

  /// The first cell that equals the key, blanks included; -1 when there is none.
  int64_t FirstMatch(const TMatchKey& AKey) const;
  /// The same for a key that is a number.
  int64_t FirstMatch(double ANumber) const;

  /// The cells that equal the key and are not blank, in order; nothing when they do not stand in one list.
  std::optional<std::span<const uint32_t>> Matches(const TMatchKey& AKey) const;

  int64_t BlankCount() const { return FBlankCount; }
  size_t BytesUsed() const;

  static constexpr int64_t kMaxCells = 0xFFFFFFF0;

 private:
  struct TGroup {
    uint32_t First = 0;   // position of the first member
    uint32_t Number = 0;  // counted from 1; 0 only while it is being made
  };
  /// A text with its hash, so that growing tables need not read their texts again.
  struct TTextKey {
    TText Text;
    uint64_t Hash;
  };
  struct TTextProbe {
    std::u16string_view Text;
    uint64_t Hash;
  };
  struct TTextHash {
    using is_transparent = void;
    using is_avalanching = void;
    size_t operator()(const TTextProbe& AProbe) const { return static_cast<size_t>(AProbe.Hash); }
    size_t operator()(const TTextKey& AKey) const { return static_cast<size_t>(AKey.Hash); }
  };
  struct TTextEqual {
    using is_transparent = void;
    bool operator()(const TTextKey& ALeft, const TTextKey& ARight) const;
    bool operator()(const TTextProbe& ALeft, const TTextKey& ARight) const;
    bool operator()(const TTextKey& ALeft, const TTextProbe& ARight) const { return (*this)(ARight, ALeft); }
  };
  using TTextGroups = boost::unordered_flat_map<TTextKey, TGroup, TTextHash, TTextEqual>;
  struct TFound {
    const TGroup* One = nullptr;
    const TGroup* Other = nullptr;
  };
  class TBuilder;

  TFound Find(const TMatchKey& AKey) const;

  boost::unordered_flat_map<uint64_t, TGroup> FNumbers;  // by the bits of the number
  TTextGroups FTexts;                                    // cells that are no number
  TTextGroups FNumberTexts;                              // cells that are one, but whose text does not read as one
  std::vector<uint32_t> FStarts;                         // group n is at FStarts[n - 1] to FStarts[n] in FPositions
  std::vector<uint32_t> FPositions;
  int64_t FFirstBlank = -1;
  int64_t FBlankCount = 0;
};

/// Answers which number of a range is nearest to a key, and how many there are on one side of it. Everything that
/// stands for a number counts, blanks as 0.
class TOrderIndex {
 public:
  explicit TOrderIndex(const TFormulaArg& AView);

  /// The position of the largest number not above (the smallest not below) ANumber, the last of equals; -1 when there
  /// is none. Infinite cells are never found.
  int64_t LastNotAbove(double ANumber) const;
  int64_t LastNotBelow(double ANumber) const;

  /// How many cells satisfy a criterion that is no (in)equality and has a number.
  int64_t CountOf(const TCriterion& ACriterion) const;

  size_t BytesUsed() const;

 private:
  std::vector<double> FValues;   // distinct, ascending
  std::vector<int64_t> FLast;    // the last position of each
  std::vector<int64_t> FBefore;  // cells with a smaller value; one element more than FValues, the last the total
};

/// The indexes over ranges of sheets that are searched again and again.
///
/// Invariants:
/// 1. An index is used only while nothing that decides its answers has changed since it was built: the columns of its
///    range, the sheet's spilled blocks, the locale and the workbook's list of sheets.
/// 2. It is built at the second search of a range in one such state, or at once when the one before it has paid.
/// 3. The indexes together stay below the limit of bytes, the largest one alone excepted; those used longest ago go.
class TRangeIndexCache {
 public:
  explicit TRangeIndexCache(size_t AMaxBytes = size_t{256} << 20) : FMaxBytes(AMaxBytes) {}
  TRangeIndexCache(const TRangeIndexCache&) = delete;
  TRangeIndexCache& operator=(const TRangeIndexCache&) = delete;

  /// The index over a view, or null when this search is to scan: the range is small, no view, or new.
  /// Valid until the next call.
  const TEqualityIndex* Equality(const TFormulaArg& AView);
  const TOrderIndex* Order(const TFormulaArg& AView);

  void Clear();
  size_t BytesUsed() const { return FBytes; }
  /// How many indexes were built so far; for tests and tuning.
  uint64_t BuildCount() const { return FBuilds; }

 private:
  struct TRange {
    const TWorksheet* Sheet = nullptr;  // only compared until the state was found unchanged
    int32_t Col = 0;
    int32_t Row = 0;
    int32_t Rows = 0;
    int32_t Cols = 0;

    friend bool operator==(const TRange&, const TRange&) = default;
  };
  struct TRangeHash {
    size_t operator()(const TRange& ARange) const;
  };
  /// What an index depends on.
  struct TState {
    const void* Store = nullptr;
    uint64_t Columns = 0;  // sum of the versions of the range's columns: none of them ever falls
    uint64_t Spills = 0;
    uint64_t Locale = 0;
    uint64_t Sheets = 0;

    friend bool operator==(const TState&, const TState&) = default;
  };
  template <class TIndex>
  struct TSlot {
    std::unique_ptr<TIndex> Index;
    uint32_t Searches = 0;  // in the present state
  };
  struct TEntry {
    TState State;
    uint64_t StoreVersion = 0;  // while this stands, so do the columns
    uint64_t LastUse = 0;
    TSlot<TEqualityIndex> Equality;
    TSlot<TOrderIndex> Order;

    bool HasIndex() const { return Equality.Index || Order.Index; }
    size_t BytesUsed() const;
  };

  TEntry* Touch(const TFormulaArg& AView);
  void Refresh(TEntry& AEntry, const TFormulaArg& AView);
  template <class TIndex>
  const TIndex* Use(TSlot<TIndex>& ASlot, const TFormulaArg& AView);
  void MakeRoom(const TEntry& AKeep);

  std::unordered_map<TRange, TEntry, TRangeHash> FEntries;
  TRange FLastRange;
  TEntry* FLastEntry = nullptr;  // the entry of FLastRange
  uint64_t FUses = 0;
  uint64_t FBuilds = 0;
  size_t FBytes = 0;
  size_t FMaxBytes;
};

}  // namespace tessarine::detail
