#include <tessarine/core/reference/ReferenceRewrite.h>

#include <algorithm>

#include <tessarine/core/reference/FormulaTokenizer.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr std::u16string_view kRefError = u"#REF!";

/// Far beyond any distance on a sheet, and safe to add.
constexpr int64_t kFarDelta = int64_t{1} << 40;

/// AText with every AQuote doubled, between two of them.
void AppendQuoted(std::u16string_view AText, char16_t AQuote, std::u16string& AOut) {
  AOut += AQuote;
  for (const char16_t unit : AText) AOut.append(unit == AQuote ? 2 : 1, unit);
  AOut += AQuote;
}

void AppendColumn(int64_t ACol, std::u16string& AOut) {
  char16_t letters[16];
  size_t at = std::size(letters);
  for (; ACol > 0; ACol = (ACol - 1) / 26) letters[--at] = static_cast<char16_t>(u'A' + (ACol - 1) % 26);
  AOut.append(letters + at, std::size(letters) - at);
}

void AppendRowNumber(int64_t ARow, std::u16string& AOut) {
  char16_t digits[20];
  size_t at = std::size(digits);
  for (; ARow > 0; ARow /= 10) digits[--at] = static_cast<char16_t>(u'0' + ARow % 10);
  AOut.append(digits + at, std::size(digits) - at);
}

/// A column or row number of a reference as it is written.
struct TRefPart {
  int64_t Index = 0;
  bool IsPresent = false;
  bool IsAbsolute = false;  // "$" in front

  bool operator==(const TRefPart&) const = default;
};

/// One corner of a reference; a whole column has no row and the other way round.
struct TRefCorner {
  TRefPart Col;
  TRefPart Row;

  bool operator==(const TRefCorner&) const = default;
};

/// Reads the "$" marks of one corner; its numbers are those that the token found.
TRefCorner ReadCorner(std::u16string_view AText, int32_t ACol, int32_t ARow) {
  TRefCorner corner;
  bool pendingDollar = false;
  for (const char16_t unit : AText) {
    if (unit == u'$') {
      pendingDollar = true;
      continue;
    }
    TRefPart& part = IsAsciiDigit(unit) ? corner.Row : corner.Col;
    if (!part.IsPresent) part.IsAbsolute = pendingDollar;
    part.IsPresent = true;
    pendingDollar = false;
  }
  if (corner.Col.IsPresent) corner.Col.Index = ACol;
  if (corner.Row.IsPresent) corner.Row.Index = ARow;
  return corner;
}

void AppendCorner(const TRefCorner& ACorner, std::u16string& AOut) {
  if (ACorner.Col.IsAbsolute) AOut += u'$';
  if (ACorner.Col.IsPresent) AppendColumn(ACorner.Col.Index, AOut);
  if (ACorner.Row.IsAbsolute) AOut += u'$';
  if (ACorner.Row.IsPresent) AppendRowNumber(ACorner.Row.Index, AOut);
}

/// What happens to the numbers of a reference.
class IReferenceMove {
 public:
  virtual ~IReferenceMove() = default;

  /// The new index on an axis; nothing when the reference cannot stay.
  virtual std::optional<int64_t> NewIndex(const TRefPart& APart, TShiftAxis AAxis) const = 0;
};

class TShiftMove final : public IReferenceMove {
 public:
  TShiftMove(TShiftAxis AAxis, int64_t AStart, int64_t ADelta) : FAxis(AAxis), FStart(AStart), FDelta(ADelta) {}

  std::optional<int64_t> NewIndex(const TRefPart& APart, TShiftAxis AAxis) const override {
    if (AAxis != FAxis) return APart.Index;
    const auto index = ShiftIndex(APart.Index, FStart, FDelta);
    return index && *index >= 1 ? index : std::nullopt;
  }

 private:
  TShiftAxis FAxis;
  int64_t FStart;
  int64_t FDelta;
};

std::optional<int64_t> OnSheetOrNothing(int64_t AIndex, TShiftAxis AAxis) {
  return AIndex >= 1 && AIndex <= (AAxis == saColumns ? kMaxCol : kMaxRow) ? std::optional(AIndex) : std::nullopt;
}

class TBlockMove final : public IReferenceMove {
 public:
  TBlockMove(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest)
      : FAxis(AAxis), FStart(AStart), FCount(ACount), FDest(ADest) {}

  std::optional<int64_t> NewIndex(const TRefPart& APart, TShiftAxis AAxis) const override {
    if (AAxis != FAxis) return APart.Index;
    return OnSheetOrNothing(MoveIndex(APart.Index, FStart, FCount, FDest), AAxis);
  }

 private:
  TShiftAxis FAxis;
  int64_t FStart;
  int64_t FCount;
  int64_t FDest;
};

class TOffsetMove final : public IReferenceMove {
 public:
  TOffsetMove(int64_t ADeltaCol, int64_t ADeltaRow)
      : FDeltaCol(std::clamp(ADeltaCol, -kFarDelta, kFarDelta)),
        FDeltaRow(std::clamp(ADeltaRow, -kFarDelta, kFarDelta)) {}

  std::optional<int64_t> NewIndex(const TRefPart& APart, TShiftAxis AAxis) const override {
    const int64_t delta = AAxis == saColumns ? FDeltaCol : FDeltaRow;
    return OnSheetOrNothing(APart.Index + (APart.IsAbsolute ? 0 : delta), AAxis);
  }

 private:
  int64_t FDeltaCol;
  int64_t FDeltaRow;
};

/// Rebuilds a formula from its tokens with its references moved.
class TReferenceRewriter {
 public:
  /// Touches the references of one sheet.
  TReferenceRewriter(const IReferenceMove& AMove, std::u16string_view ASheetName, bool AOnSheet)
      : FMove(AMove), FSheetName(ASheetName), FOnSheet(AOnSheet), FAnySheet(false) {}

  /// Touches every reference.
  explicit TReferenceRewriter(const IReferenceMove& AMove) : FMove(AMove), FOnSheet(true), FAnySheet(true) {}

  std::u16string Rewrite(std::u16string_view AFormula) {
    FFormula = AFormula;
    FOut.clear();
    FOut.reserve(AFormula.size() + 8);
    TFormulaTokenizer tokenizer(AFormula);
    TFormulaToken token;
    for (tokenizer.NextToken(token); token.Kind != ftEnd; tokenizer.NextToken(token)) AppendToken(token);
    if (AFormula.starts_with(u'=') && !FOut.starts_with(u'=')) FOut.insert(FOut.begin(), u'=');
    return std::move(FOut);
  }

 private:
  void AppendToken(const TFormulaToken& AToken) {
    switch (AToken.Kind) {
      case ftString: AppendQuoted(AToken.Text, u'"', FOut); break;
      case ftCellRef:
      case ftRangeRef:
      case ftSheetRef: AppendReference(AToken); break;
      case ftTableRef: AppendTableRef(AToken); break;
      // A token's text has lost quotes and brackets that were read over; what nobody understands must not be damaged.
      case ftError: AppendSource(AToken); break;
      case ftEnd:
      case ftNumber:
      case ftBoolean:
      case ftFunction:
      case ftOperator:
      case ftLParen:
      case ftRParen:
      case ftComma:
      case ftColon:
      case ftLBrace:
      case ftRBrace:
      case ftSemicolon: FOut += AToken.Text; break;
    }
  }

  void AppendSource(const TFormulaToken& AToken) {
    FOut += FFormula.substr(static_cast<size_t>(AToken.StartIndex), static_cast<size_t>(AToken.Length));
  }

  void AppendTableRef(const TFormulaToken& AToken) {
    FOut += AToken.Text;
    if (AToken.ColumnName.empty()) return;
    FOut += u'[';
    if (AToken.ColumnName.find_first_of(u" '[]") == std::u16string::npos) {
      FOut += AToken.ColumnName;
    } else {
      AppendQuoted(AToken.ColumnName, u'\'', FOut);
    }
    FOut += u']';
  }

  bool IsAffected(const TFormulaToken& AToken) const {
    if (FAnySheet) return true;
    return AToken.SheetName.empty() ? FOnSheet : EqualAsciiNoCase(AToken.SheetName, FSheetName);
  }

  std::optional<TRefCorner> Moved(TRefCorner ACorner) const {
    if (ACorner.Col.IsPresent) {
      const auto col = FMove.NewIndex(ACorner.Col, saColumns);
      if (!col) return std::nullopt;
      ACorner.Col.Index = *col;
    }
    if (ACorner.Row.IsPresent) {
      const auto row = FMove.NewIndex(ACorner.Row, saRows);
      if (!row) return std::nullopt;
      ACorner.Row.Index = *row;
    }
    return ACorner;
  }

  void AppendReference(const TFormulaToken& AToken) {
    if (!IsAffected(AToken)) return AppendSource(AToken);
    std::u16string_view text = AToken.Text;
    if (!AToken.SheetName.empty()) text.remove_prefix(AToken.SheetName.size() + 1);
    const size_t colon = std::min(text.find(u':'), text.size());
    const bool isRange = colon < text.size();
    const TRefCorner first = ReadCorner(text.substr(0, colon), AToken.Col, AToken.Row);
    const TRefCorner second = isRange ? ReadCorner(text.substr(colon + 1), AToken.Col2, AToken.Row2) : first;
    const auto newFirst = Moved(first);
    const auto newSecond = Moved(second);
    if (!newFirst || !newSecond) {
      FOut += kRefError;
      return;
    }
    const bool isWhole = !first.Col.IsPresent || !first.Row.IsPresent;
    if (isWhole && *newFirst == first && *newSecond == second) return AppendSource(AToken);
    if (!AToken.SheetName.empty())
      FOut.append(QuoteSheetName(FAnySheet ? AToken.SheetName : FSheetName)).append(1, u'!');
    AppendCorner(*newFirst, FOut);
    if (!isRange) return;
    FOut += u':';
    AppendCorner(*newSecond, FOut);
  }

  const IReferenceMove& FMove;
  std::u16string_view FSheetName;
  bool FOnSheet;
  bool FAnySheet;
  std::u16string_view FFormula;
  std::u16string FOut;
};

bool IsIdentifierUnit(char16_t AUnit) { return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_'; }

}  // namespace

std::optional<TSheetRefParts> SplitSheetRefText(std::u16string_view AText) {
  const size_t mark = AText.find(u'!');
  if (mark == AText.npos) return std::nullopt;
  TSheetRefParts parts;
  std::u16string_view sheet = AText.substr(0, mark);
  if (sheet.size() >= 2 && sheet.front() == u'\'' && sheet.back() == u'\'') {
    sheet = sheet.substr(1, sheet.size() - 2);
    for (size_t i = 0; i < sheet.size(); ++i) {
      parts.Sheet += sheet[i];
      if (sheet[i] == u'\'' && i + 1 < sheet.size() && sheet[i + 1] == u'\'') ++i;
    }
  } else {
    parts.Sheet = sheet;
  }
  const std::u16string_view reference = AText.substr(mark + 1);
  const size_t colon = std::min(reference.find(u':'), reference.size());
  parts.First = reference.substr(0, colon);
  if (colon < reference.size()) parts.Second = reference.substr(colon + 1);
  if (parts.First.empty()) return std::nullopt;
  return parts;
}

bool SheetNameNeedsQuotes(std::u16string_view ASheetName) {
  return ASheetName.empty() || IsAsciiDigit(ASheetName.front()) ||
         !std::all_of(ASheetName.begin(), ASheetName.end(), IsIdentifierUnit);
}

std::u16string QuoteSheetName(std::u16string_view ASheetName) {
  if (!SheetNameNeedsQuotes(ASheetName)) return std::u16string(ASheetName);
  std::u16string quoted;
  AppendQuoted(ASheetName, u'\'', quoted);
  return quoted;
}

std::u16string AdjustFormula(std::u16string_view AFormula, std::u16string_view ASheetName, bool AOnSheet,
                             TShiftAxis AAxis, int64_t AStart, int64_t ADelta) {
  if (AFormula.empty() || ADelta == 0) return std::u16string(AFormula);
  return TReferenceRewriter(TShiftMove(AAxis, AStart, ADelta), ASheetName, AOnSheet).Rewrite(AFormula);
}

std::u16string AdjustFormulaForMove(std::u16string_view AFormula, std::u16string_view ASheetName, bool AOnSheet,
                                    TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest) {
  if (AFormula.empty() || ACount < 1 || AStart == ADest) return std::u16string(AFormula);
  return TReferenceRewriter(TBlockMove(AAxis, AStart, ACount, ADest), ASheetName, AOnSheet).Rewrite(AFormula);
}

std::u16string OffsetSharedFormula(std::u16string_view AFormula, int64_t ADeltaCol, int64_t ADeltaRow) {
  if (AFormula.empty() || (ADeltaCol == 0 && ADeltaRow == 0)) return std::u16string(AFormula);
  return TReferenceRewriter(TOffsetMove(ADeltaCol, ADeltaRow)).Rewrite(AFormula);
}

}  // namespace tessarine
