#pragma once

#include <algorithm>
#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>

namespace tessarine::detail {

/// A mark for each row of a band, in words of 64 rows that begin where those of the store's tiles do.
class TRowMarks {
 public:
  /// All rows from AFirst to ALast (rows of the sheet) marked.
  TRowMarks(int32_t AFirst, int32_t ALast) : FFirst(AFirst), FLast(ALast), FBase((AFirst - 1) / 64) {
    const int32_t words = (ALast - 1) / 64 - FBase + 1;
    FWords.assign(static_cast<size_t>(words), ~uint64_t{0});
    FWords.front() &= ~uint64_t{0} << ((AFirst - 1) % 64);
    FWords.back() &= ~uint64_t{0} >> (63 - (ALast - 1) % 64);
  }

  int32_t First() const { return FFirst; }
  int32_t Last() const { return FLast; }
  void DropAll() { std::fill(FWords.begin(), FWords.end(), uint64_t{0}); }
  bool Has(int32_t ARow) const { return (Word((ARow - 1) / 64) >> ((ARow - 1) % 64) & 1) != 0; }

  /// Words are counted from row 1 of the sheet.
  int32_t FirstWord() const { return FBase; }
  int32_t WordLimit() const { return FBase + static_cast<int32_t>(FWords.size()); }
  uint64_t& Word(int32_t AIndex) { return FWords[static_cast<size_t>(AIndex - FBase)]; }
  uint64_t Word(int32_t AIndex) const { return FWords[static_cast<size_t>(AIndex - FBase)]; }

 private:
  int32_t FFirst;
  int32_t FLast;
  int32_t FBase;
  std::vector<uint64_t> FWords;
};

/// Takes the mark from every row whose shown text in a column AJudge(std::u16string_view) -> bool rejects. AJudge must
/// give the same answer for the same text: it is asked once for numbers of one format that come again soon, and once
/// for all the cells that show nothing because they are not stored.
template <class TJudge>
class TShownColumn {
 public:
  TShownColumn(const TWorksheet& ASheet, const TTessarineStyleSheet* AStyleSheet, int32_t ACol, TJudge& AJudge)
      : FSheet(ASheet), FStyles(AStyleSheet), FCol(ACol), FJudge(AJudge), FSpills(!ASheet.Spills().IsEmpty()) {}

  void Judge(TRowMarks& AMarks) {
    const TCellStore& store = FSheet.Store();
    for (int32_t word = AMarks.FirstWord(); word < AMarks.WordLimit(); ++word) {
      const uint64_t marked = AMarks.Word(word);
      if (marked == 0) continue;
      const TTile* tile = store.FindTile(FCol, word / 4);
      const uint64_t stored = tile ? tile->Occupied[word % 4] & marked : 0;
      uint64_t kept = JudgeAbsent(marked & ~stored, word);
      for (uint64_t bits = stored; bits != 0; bits &= bits - 1) {
        const auto bit = static_cast<uint32_t>(std::countr_zero(bits));
        const TCellSlot& slot = tile->Slots()[tile->Rank(static_cast<uint32_t>(word % 4) * 64 + bit)];
        if (Accepts(slot, word * 64 + static_cast<int32_t>(bit) + 1)) kept |= uint64_t{1} << bit;
      }
      AMarks.Word(word) = kept;
    }
  }

 private:
  enum TAnswer : uint8_t { anUnknown, anNo, anYes };

  struct TKnownNumber {
    uint64_t Bits = 0;
    int32_t StyleIndex = 0;
    TAnswer Answer = anUnknown;
  };

  uint64_t JudgeAbsent(uint64_t ABits, int32_t AWord) {
    if (ABits == 0) return 0;
    if (!FSpills) {
      if (FBlank == anUnknown) FBlank = FJudge(std::u16string_view()) ? anYes : anNo;
      return FBlank == anYes ? ABits : 0;
    }
    uint64_t kept = 0;
    for (uint64_t bits = ABits; bits != 0; bits &= bits - 1) {
      const int32_t bit = std::countr_zero(bits);
      if (AcceptsShown(AWord * 64 + bit + 1)) kept |= uint64_t{1} << bit;
    }
    return kept;
  }

  bool AcceptsShown(int32_t ARow) {
    FText.clear();
    FSheet.AppendDisplayText({FCol, ARow}, FStyles, FText);
    return FJudge(std::u16string_view(FText));
  }

  bool Accepts(const TCellSlot& ASlot, int32_t ARow) {
    if (!ASlot.HasExtras()) {
      if (ASlot.Kind == cvkText) return FJudge(ASlot.ConstantView().Text());
      if (ASlot.Kind == cvkNumber) return AcceptsNumber(ASlot.Number, ASlot.StyleIndex, ARow);
      if (ASlot.Kind == cvkFormula && !FSheet.View().ShowFormulas) {
        const TValueView result = FSheet.Store().Record(ASlot.Record).CachedView();
        if (result.Kind == cvkNumber) return AcceptsNumber(result.Number, ASlot.StyleIndex, ARow);
      }
    }
    return AcceptsShown(ARow);
  }

  /// The text of a number depends on nothing but the number and the cell's style.
  bool AcceptsNumber(double ANumber, int32_t AStyleIndex, int32_t ARow) {
    const auto bits = std::bit_cast<uint64_t>(ANumber);
    const uint64_t mixed = (bits ^ static_cast<uint32_t>(AStyleIndex)) * 0x9E3779B97F4A7C15u;
    TKnownNumber& known = FKnown[mixed >> 52];
    if (known.Answer == anUnknown || known.Bits != bits || known.StyleIndex != AStyleIndex)
      known = {bits, AStyleIndex, AcceptsShown(ARow) ? anYes : anNo};
    return known.Answer == anYes;
  }

  const TWorksheet& FSheet;
  const TTessarineStyleSheet* FStyles;
  int32_t FCol;
  TJudge& FJudge;
  bool FSpills;
  TAnswer FBlank = anUnknown;
  std::u16string FText;
  std::vector<TKnownNumber> FKnown = std::vector<TKnownNumber>(4096);  // by the hash's highest 12 bits
};

}  // namespace tessarine::detail
