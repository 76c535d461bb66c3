#include <tessarine/formula/library/detail/ArrayBodies.h>

#include <algorithm>
#include <bit>
#include <cfloat>
#include <cmath>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include <tessarine/core/values/Coercion.h>
#include <tessarine/formula/library/detail/ExchangeSort.h>
#include <tessarine/formula/library/detail/LongTexts.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

/// The rows or columns of a rectangle.
struct TLines {
  const TFormulaArg& Rectangle;
  bool ByCol;

  int32_t Count() const { return ByCol ? Rectangle.ColCount : Rectangle.RowCount; }
  int32_t Length() const { return ByCol ? Rectangle.RowCount : Rectangle.ColCount; }
  TValueView At(uint32_t ALine, int32_t AIndex) const {
    const auto line = static_cast<int32_t>(ALine);
    return ByCol ? Rectangle.ViewAt(AIndex, line) : Rectangle.ViewAt(line, AIndex);
  }
};

TFormulaArg PickLines(const TLines& ALines, std::span<const uint32_t> ANumbers) {
  return ALines.ByCol ? PickCols(ALines.Rectangle, ANumbers) : PickRows(ALines.Rectangle, ANumbers);
}

// UNIQUE -------------------------------------------------------------------------------------------------------------

constexpr char16_t kPieceSeparator = u'\u0001';

void AppendPiece(const TValueView& AValue, std::u16string& AKey) {
  switch (AValue.Kind) {
    case cvkEmpty: AKey += u"Emt"; break;
    case cvkText:
    case cvkFormula: AKey.append(u"T:").append(AValue.Text()); break;
    case cvkNumber: AppendGeneralNumber(AValue.Number, AKey.append(u"N:")); break;
    case cvkBoolean: AKey += AValue.BooleanValue ? u"B:TRUE" : u"B:FALSE"; break;
    case cvkError: AppendGeneralNumber(static_cast<int>(AValue.ErrorCode), AKey.append(u"E:")); break;
  }
}

/// One number for all that have the same text of 15 digits.
double NumberOfText(double ANumber) {
  constexpr double kExactDigits = 1e15;
  if (std::fabs(ANumber) < kExactDigits) {
    if (std::trunc(ANumber) == ANumber) return ANumber == 0 ? 0.0 : ANumber;
    // The nearest double to a decimal of at most 15 digits has that decimal as its text, which reads back to it.
    const double scaled = std::nearbyint(ANumber * 1e4);
    if (std::fabs(scaled) < kExactDigits && scaled / 1e4 == ANumber) return ANumber;
  }
  if (!std::isfinite(ANumber)) return ANumber;
  char16_t text[kNumberTextSize];
  double read = 0;
  const size_t length = WriteGeneralNumber(ANumber, text);
  if (TryParseFileNumber(std::u16string_view(text, length), read)) return read;
  return std::copysign(DBL_MAX, ANumber);  // rounded up beyond the largest double, which has that text too
}

uint64_t Mix(uint64_t AHash, uint64_t AWord) {
  const uint64_t product = (AHash ^ AWord) * 0x9E3779B97F4A7C15u;  // 2^64 over the golden ratio
  return product ^ (product >> 29);
}

/// A line's cells, all of them ahead of the next line's; equal long texts share their block.
struct TLineValues {
  std::vector<TValueView> Values;
  size_t Length = 0;
  bool HasSeparator = false;  // in a text beside others: joined keys of different lines might be the same

  std::span<const TValueView> Line(size_t ALine) const { return std::span(Values).subspan(ALine * Length, Length); }
};

TLineValues ReadLines(const TLines& ALines) {
  TLineValues lines;
  const auto count = static_cast<size_t>(ALines.Count());
  lines.Length = static_cast<size_t>(ALines.Length());
  lines.Values.resize(count * lines.Length);
  TLongTextBlocks blocks;
  TLongTextMemo<bool> separators;
  const auto hasSeparator = [](const TValueView& AText) {
    return AText.Text().find(kPieceSeparator) != AText.Text().npos;
  };
  const auto take = [&](size_t APlace, TValueView AValue) {
    if (IsLongText(AValue)) AValue.Block = blocks.BlockOf(AValue);
    if (lines.Length > 1 && !lines.HasSeparator && IsTextKind(AValue)) {
      lines.HasSeparator =
          IsLongText(AValue) ? separators.Of(AValue, [&] { return hasSeparator(AValue); }) : hasSeparator(AValue);
    }
    lines.Values[APlace] = AValue;
  };
  for (int32_t col = 0; col < ALines.Rectangle.ColCount; ++col) {
    const std::vector<TValueView> column = ReadColumn(ALines.Rectangle, col);
    const size_t step = ALines.ByCol ? 1 : lines.Length;
    const size_t first = static_cast<size_t>(col) * (ALines.ByCol ? lines.Length : 1);
    for (size_t row = 0; row < column.size(); ++row) take(first + row * step, column[row]);
  }
  return lines;
}

uint64_t HashPiece(uint64_t AHash, const TValueView& AValue) {
  const uint64_t hash = Mix(AHash, static_cast<uint64_t>(AValue.Kind == cvkFormula ? cvkText : AValue.Kind) + 1);
  switch (AValue.Kind) {
    case cvkEmpty: return hash;
    case cvkText:
    case cvkFormula:
      if (IsLongText(AValue)) return Mix(hash, reinterpret_cast<uintptr_t>(AValue.Block));
      return Mix(hash, std::hash<std::u16string_view>()(AValue.Text()));
    case cvkNumber: return Mix(hash, std::bit_cast<uint64_t>(NumberOfText(AValue.Number)));
    case cvkBoolean: return Mix(hash, AValue.BooleanValue ? 1 : 0);
    case cvkError: return Mix(hash, static_cast<uint64_t>(AValue.ErrorCode));
  }
  return hash;
}

bool SamePiece(const TValueView& ALeft, const TValueView& ARight) {
  if (IsTextKind(ALeft) && IsTextKind(ARight)) {
    if (ALeft.Block == ARight.Block) return true;
    return !IsLongText(ALeft) && ALeft.Text() == ARight.Text();
  }
  if (ALeft.Kind != ARight.Kind) return false;
  switch (ALeft.Kind) {
    case cvkNumber:
      return ALeft.Number == ARight.Number || std::bit_cast<uint64_t>(NumberOfText(ALeft.Number)) ==
                                                  std::bit_cast<uint64_t>(NumberOfText(ARight.Number));
    case cvkBoolean: return ALeft.BooleanValue == ARight.BooleanValue;
    case cvkError: return ALeft.ErrorCode == ARight.ErrorCode;
    default: return true;
  }
}

/// The first line like each line, found by a hash with open addressing.
class TFirstLines {
 public:
  explicit TFirstLines(const TLineValues& ALines) : FLines(ALines) {}

  uint32_t FirstLike(uint32_t ALine) {
    if (FCount * 2 >= FSlots.size()) Grow();
    uint64_t hash = 0;
    for (const TValueView& value : FLines.Line(ALine)) hash = HashPiece(hash, value);
    hash *= 0x9E3779B97F4A7C15u;
    for (size_t at = hash >> FShift;; at = (at + 1) & (FSlots.size() - 1)) {
      TSlot& slot = FSlots[at];
      if (slot.Line == kNone) {
        slot = {hash, ALine};
        ++FCount;
        return ALine;
      }
      if (slot.Hash == hash && IsSame(slot.Line, ALine)) return slot.Line;
    }
  }

 private:
  static constexpr uint32_t kNone = UINT32_MAX;
  struct TSlot {
    uint64_t Hash = 0;
    uint32_t Line = kNone;
  };

  bool IsSame(uint32_t ALeft, uint32_t ARight) const {
    const auto left = FLines.Line(ALeft);
    return std::equal(left.begin(), left.end(), FLines.Line(ARight).begin(), SamePiece);
  }

  void Grow() {
    const std::vector<TSlot> old = std::exchange(FSlots, std::vector<TSlot>(FSlots.size() * 4));
    FShift -= 2;
    for (const TSlot& slot : old) {
      if (slot.Line == kNone) continue;
      size_t at = slot.Hash >> FShift;
      while (FSlots[at].Line != kNone) at = (at + 1) & (FSlots.size() - 1);
      FSlots[at] = slot;
    }
  }

  const TLineValues& FLines;
  std::vector<TSlot> FSlots = std::vector<TSlot>(size_t{1} << 10);  // at most half full
  int FShift = 64 - 10;
  size_t FCount = 0;
};

/// Whether the keys of all lines, joined, are short enough to be made.
bool CanJoin(const TLineValues& ALines) {
  constexpr size_t kMaxJoinedUnits = size_t{1} << 27;
  size_t units = 0;
  for (const TValueView& value : ALines.Values) units += IsTextKind(value) ? value.Text().size() : 0;
  return units <= kMaxJoinedUnits;
}

/// How often each line occurs is counted at its first one; the others have 0.
std::vector<uint32_t> LinesOfCounts(std::span<const uint32_t> ACounts, bool AExactlyOnce) {
  std::vector<uint32_t> lines;
  for (size_t line = 0; line < ACounts.size(); ++line) {
    if (AExactlyOnce ? ACounts[line] == 1 : ACounts[line] > 0) lines.push_back(static_cast<uint32_t>(line));
  }
  return lines;
}

/// The numbers given in the arguments from AFirst on, as 0-based places on an axis; negative ones count from its end.
TCellErrorCode ReadPlaces(TFormulaArgs AArgs, int64_t ALength, int64_t AOther, std::vector<uint32_t>& APlaces) {
  TCellErrorCode error = ceNone;
  ForEachValue(AArgs, [&](const TValueView& AValue) {
    double number = 0;
    if (!AsNumber(AValue, number)) return error = ceValue, false;
    int64_t place = TruncateToInt64(number);
    if (place < 0) place += ALength + 1;
    if (place < 1 || place > ALength) return error = ceValue, false;
    if (!FitsArranged(static_cast<int64_t>(APlaces.size()) + 1, AOther)) return error = ceNum, false;
    APlaces.push_back(static_cast<uint32_t>(place - 1));
    return true;
  });
  return error;
}

TFormulaArg Choose(TFormulaArgs AArgs, bool AByCol) {
  if (AArgs.size() < 2) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  const TLines lines{*array, AByCol};
  std::vector<uint32_t> places;
  const TCellErrorCode error = ReadPlaces(AArgs.subspan(1), lines.Count(), lines.Length(), places);
  if (error != ceNone) return ErrorArg(error);
  const bool fits = MayGenerate(static_cast<int64_t>(places.size()), lines.Length(), array->CellCount());
  return fits ? PickLines(lines, places) : ErrorArg(ceNum);
}

TFormulaArg SortLines(const TLines& ALines, const TLines& AKeys, int32_t AKeyIndex, bool ADescending) {
  if (!FitsArranged(ALines.Count(), ALines.Length())) return ErrorArg(ceNum);
  std::vector<TValueView> keys;
  if (AKeys.ByCol) {
    for (int32_t line = 0; line < ALines.Count(); ++line)
      keys.push_back(AKeys.At(static_cast<uint32_t>(line), AKeyIndex));
  } else {
    keys = ReadColumn(AKeys.Rectangle, AKeyIndex);
  }
  return PickLines(ALines, SortedOrder(keys, ADescending));
}

}  // namespace

std::vector<uint32_t> UniqueLines(const TFormulaArg& ARectangle, bool AByCol, bool AExactlyOnce) {
  const TLineValues lines = ReadLines({ARectangle, AByCol});
  if (lines.HasSeparator && CanJoin(lines)) return UniqueLinesPlain(ARectangle, AByCol, AExactlyOnce);
  TFirstLines firsts(lines);
  std::vector<uint32_t> countOf(static_cast<size_t>(TLines{ARectangle, AByCol}.Count()), 0);
  for (uint32_t line = 0; line < countOf.size(); ++line) ++countOf[firsts.FirstLike(line)];
  return LinesOfCounts(countOf, AExactlyOnce);
}

std::vector<uint32_t> UniqueLinesPlain(const TFormulaArg& ARectangle, bool AByCol, bool AExactlyOnce) {
  const TLines lines{ARectangle, AByCol};
  std::map<std::u16string, size_t> firsts;
  std::vector<uint32_t> countOf(static_cast<size_t>(lines.Count()), 0);
  for (uint32_t line = 0; line < countOf.size(); ++line) {
    std::u16string key;
    for (int32_t i = 0; i < lines.Length(); ++i) {
      if (i > 0) key += kPieceSeparator;
      AppendPiece(lines.At(line, i), key);
    }
    ++countOf[firsts.try_emplace(std::move(key), line).first->second];
  }
  return LinesOfCounts(countOf, AExactlyOnce);
}

TFormulaArg CallFilter(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  const TAsRectangle include(AArgs[1]);
  if (array->RowCount < 1 || include->RowCount != array->RowCount) return ErrorArg(ceValue);
  if (include->ColCount != 1 && include->ColCount != array->ColCount) return ErrorArg(ceValue);
  std::vector<uint32_t> kept;
  if (include->ColCount > 0) {
    const std::vector<TValueView> flags = ReadColumn(*include, 0);
    for (uint32_t row = 0; row < flags.size(); ++row) {
      if (ValueIsTruthy(flags[row])) kept.push_back(row);
    }
  }
  if (!kept.empty()) return PickRows(*array, kept);
  return AArgs.size() > 2 ? TFormulaArg::FromScalar(AArgs[2].First()) : ErrorArg(ceNA);
}

TFormulaArg CallUnique(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  if (!FitsArranged(array->RowCount, array->ColCount)) return ErrorArg(ceNum);
  const bool byCol = FlagOf(AArgs, 1);
  const std::vector<uint32_t> kept = UniqueLines(*array, byCol, FlagOf(AArgs, 2));
  return kept.empty() ? ErrorArg(ceNA) : PickLines({*array, byCol}, kept);
}

TFormulaArg CallSort(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.empty()) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  const TLines lines{*array, FlagOf(AArgs, 3)};
  const int64_t index = IntegerOr(AArgs, 1, 1);
  if (index < 1 || index > lines.Length()) return ErrorArg(ceValue);
  return SortLines(lines, lines, static_cast<int32_t>(index - 1), IntegerOr(AArgs, 2, 1) < 0);
}

TFormulaArg CallSortBy(TFormulaArgs AArgs, const TFormulaContext&) {
  if (AArgs.size() < 2) return ErrorArg(ceValue);
  const TAsRectangle array(AArgs[0]);
  const TAsRectangle by(AArgs[1]);
  if (by->RowCount != array->RowCount || by->ColCount < 1) return ErrorArg(ceValue);
  return SortLines({*array, false}, {*by, false}, 0, IntegerOr(AArgs, 2, 1) < 0);
}

TFormulaArg CallChooseRows(TFormulaArgs AArgs, const TFormulaContext&) { return Choose(AArgs, false); }
TFormulaArg CallChooseCols(TFormulaArgs AArgs, const TFormulaContext&) { return Choose(AArgs, true); }

}  // namespace tessarine::detail
