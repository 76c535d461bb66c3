#include <tessarine/io/ods/detail/OdsFormula.h>

#include <algorithm>
#include <cstddef>

#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/formula/FormulaDialect.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kRefError = u"#REF!";

/// What names of sheets and functions may be made of without quotes, "." apart.
constexpr bool IsWordUnit(char16_t AUnit) {
  return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_' || AUnit == u'$' || AUnit >= 0x80;
}

constexpr bool StartsName(char16_t AUnit) { return IsWordUnit(AUnit) && !IsAsciiDigit(AUnit); }

char16_t UnitAt(std::u16string_view AText, size_t AAt) { return AAt < AText.size() ? AText[AAt] : u'\0'; }

/// The position behind the literal or name that begins with a quote at AAt; the end of the text when it has no end.
size_t BehindQuoted(std::u16string_view AText, size_t AAt) {
  const char16_t quote = AText[AAt];
  for (size_t at = AAt + 1; at < AText.size(); ++at) {
    if (AText[at] != quote) continue;
    if (UnitAt(AText, at + 1) != quote) return at + 1;
    ++at;
  }
  return AText.size();
}

/// The position behind the bracket that closes the one at AAt, npos when none does.
size_t FindBehindBrackets(std::u16string_view AText, size_t AAt) {
  size_t depth = 0;
  for (size_t at = AAt; at < AText.size(); ++at) {
    if (AText[at] == u'\'' || AText[at] == u'"') at = BehindQuoted(AText, at) - 1;
    if (AText[at] == u'[') ++depth;
    if (AText[at] == u']' && --depth == 0) return at + 1;
  }
  return AText.npos;
}

/// Finds the ends of groups in brackets from left to right. Once a bracket is not closed, later ones are not looked at
/// any more, so that a text of nothing but brackets costs no more than another.
class TBracketGroups {
 public:
  /// The position behind the group that begins at AAt; AAt + 1 for a bracket that begins none.
  size_t BehindGroup(std::u16string_view AText, size_t AAt) {
    if (FIsBroken) return AAt + 1;
    const size_t end = FindBehindBrackets(AText, AAt);
    FIsBroken = end == AText.npos;
    return FIsBroken ? AAt + 1 : end;
  }

 private:
  bool FIsBroken = false;
};

size_t BehindWord(std::u16string_view AText, size_t AAt) {
  while (AAt < AText.size() && IsWordUnit(AText[AAt])) ++AAt;
  return AAt;
}

// ---- corners

enum class TCornerKind : uint8_t { ckNone, ckCell, ckColumn, ckRow };

/// "$A$1", "A", "7": one corner of a reference as it is written.
struct TCorner {
  TCornerKind Kind = TCornerKind::ckNone;
  std::u16string_view Text;
  size_t Letters = 0;
};

/// The corner that stands at AAt; it may be longer than any address of a sheet.
TCorner ReadCorner(std::u16string_view AText, size_t AAt) {
  size_t at = AAt;
  const auto skip = [&](auto&& AIsPart) {
    const size_t start = at;
    while (at < AText.size() && AIsPart(AText[at])) ++at;
    return at - start;
  };
  if (UnitAt(AText, at) == u'$') ++at;
  TCorner corner;
  corner.Letters = skip(IsAsciiLetter);
  const size_t behindLetters = at;
  if (corner.Letters > 0 && UnitAt(AText, at) == u'$') ++at;
  const size_t digits = skip(IsAsciiDigit);
  if (corner.Letters > 0 && digits > 0) {
    corner.Kind = TCornerKind::ckCell;
  } else if (corner.Letters > 0) {
    corner.Kind = TCornerKind::ckColumn;
    at = behindLetters;
  } else if (digits > 0) {
    corner.Kind = TCornerKind::ckRow;
  }
  corner.Text = AText.substr(AAt, at - AAt);
  return corner;
}

/// Whether a corner lies on a sheet.
bool IsOnSheet(const TCorner& ACorner) {
  std::u16string_view text = ACorner.Text;
  if (text.size() > 14) return false;
  int32_t row = 0;
  std::u16string letters;
  for (const char16_t unit : text) {
    if (IsAsciiLetter(unit)) letters += unit;
    if (!IsAsciiDigit(unit)) continue;
    row = row * 10 + (unit - u'0');
    if (row > kMaxRow) return false;
  }
  const bool needsCol = ACorner.Kind != TCornerKind::ckRow;
  const bool needsRow = ACorner.Kind != TCornerKind::ckColumn;
  return (!needsCol || LettersToCol(letters) >= 1) && (!needsRow || row >= 1);
}

// ---- references of files

/// "$Sheet.A1:.B2" taken apart; sheets are unquoted.
struct TFileReference {
  bool HasSheet = false;
  std::u16string Sheet;
  std::u16string EndSheet;  // Sheet again unless the reference names another one
  TCorner First;
  TCorner Second;  // ckNone for a reference to one cell

  bool IsRange() const { return Second.Kind != TCornerKind::ckNone; }
};

/// Reads the sheet in front of a corner with its ".", or nothing, and goes behind it. False when there is a sheet
/// without a corner behind it.
bool ReadSheet(std::u16string_view AText, size_t& AAt, bool& AHasSheet, std::u16string& ASheet) {
  AHasSheet = false;
  if (UnitAt(AText, AAt) == u'.') {
    ++AAt;
    return true;
  }
  size_t at = AAt;
  if (UnitAt(AText, at) == u'$') ++at;
  size_t end = at;
  if (UnitAt(AText, at) == u'\'') {
    end = BehindQuoted(AText, at);
    if (UnitAt(AText, end) != u'.') return false;
  } else {
    // A name without quotes may hold dots and nearly everything else: the last "." in front of a ":" or the end counts.
    const size_t stop = std::min(AText.find(u':', at), AText.size());
    const size_t dot = AText.substr(0, stop).rfind(u'.');
    if (dot == AText.npos || dot <= at) return true;
    end = dot;
    if (AText.substr(at, end - at).find_first_of(u"'\"[]#") != AText.npos) return false;
  }
  AHasSheet = true;
  ASheet = OdsUnquoteSheetName(AText.substr(at, end - at));
  AAt = end + 1;
  return true;
}

/// Takes the whole of AText as a reference. The views in the result are into AText.
bool ReadFileReference(std::u16string_view AText, TFileReference& AReference) {
  size_t at = 0;
  if (!ReadSheet(AText, at, AReference.HasSheet, AReference.Sheet)) return false;
  AReference.EndSheet = AReference.Sheet;
  AReference.First = ReadCorner(AText, at);
  if (AReference.First.Kind == TCornerKind::ckNone) return false;
  at += AReference.First.Text.size();
  if (at == AText.size()) return AReference.First.Kind == TCornerKind::ckCell;
  if (AText[at++] != u':') return false;
  bool hasEndSheet = false;
  std::u16string endSheet;
  if (!ReadSheet(AText, at, hasEndSheet, endSheet)) return false;
  if (hasEndSheet) {
    if (!AReference.HasSheet) return false;
    AReference.EndSheet = std::move(endSheet);
  }
  AReference.Second = ReadCorner(AText, at);
  return AReference.Second.Kind == AReference.First.Kind && at + AReference.Second.Text.size() == AText.size();
}

/// Whether an address attribute is a list of several.
bool IsAddressList(std::u16string_view AText) {
  for (size_t at = 0; at < AText.size(); ++at) {
    if (AText[at] == u' ') return true;
    if (AText[at] == u'\'') at = BehindQuoted(AText, at) - 1;
  }
  return false;
}

/// "Sheet!A1:B2"; over several sheets "First:Last!A1:B2".
void AppendReference(const TFileReference& AReference, std::u16string& AOut) {
  if (AReference.HasSheet) {
    const bool isOneSheet = AReference.EndSheet == AReference.Sheet;
    if (isOneSheet) {
      AOut += OdsExcelQuoteSheetName(AReference.Sheet);
    } else if (SheetNameNeedsQuotes(AReference.Sheet) || SheetNameNeedsQuotes(AReference.EndSheet)) {
      AOut += OdsExcelQuoteSheetName(AReference.Sheet + u":" + AReference.EndSheet);
    } else {
      ((AOut += AReference.Sheet) += u':') += AReference.EndSheet;
    }
    AOut += u'!';
  }
  AOut += AReference.First.Text;
  if (AReference.IsRange()) (AOut += u':') += AReference.Second.Text;
}

// ---- formulas of files

/// AText behind "of:=", "of:" or another prefix of letters and ":=".
std::u16string_view WithoutPrefix(std::u16string_view AText) {
  size_t letters = 0;
  while (letters < AText.size() && IsAsciiLetter(AText[letters])) ++letters;
  if (letters == 0 || UnitAt(AText, letters) != u':') return AText;
  if (UnitAt(AText, letters + 1) == u'=') return AText.substr(letters + 2);
  return AText.substr(0, letters) == u"of" ? AText.substr(letters + 1) : AText;
}

/// Functions that are no standard ones are written behind a reversed domain name: "ORG.EXAMPLE.NAME("; old forms of
/// distributions behind "LEGACY.".
std::u16string_view WithoutVendor(std::u16string_view AFunction) {
  constexpr std::u16string_view kLegacy = u"LEGACY.";
  if (AFunction.starts_with(kLegacy)) return AFunction.substr(kLegacy.size());
  const size_t first = AFunction.find(u'.');
  const size_t second = first == AFunction.npos ? first : AFunction.find(u'.', first + 1);
  if (second == AFunction.npos) return AFunction;
  const std::u16string_view domain = AFunction.substr(0, first);
  return domain == u"COM" || domain == u"ORG" ? AFunction.substr(second + 1) : AFunction;
}

/// Rewrites the references of a formula of a file.
class TFormulaOfFile {
 public:
  TFormulaOfFile(std::u16string_view AText, bool AStandardArrays, std::u16string& AOut)
      : FText(AText), FStandardArrays(AStandardArrays), FOut(AOut) {}

  void Rewrite() {
    while (FAt < FText.size()) {
      const char16_t unit = FText[FAt];
      if (unit == u'"') {
        CopyTo(BehindQuoted(FText, FAt));
      } else if (unit == u'[') {
        RewriteBrackets();
      } else if (unit == u'{') {
        RewriteBraces();
      } else if (unit == u'\'' || unit == u'$' || StartsName(unit)) {
        RewriteWord();
      } else if (IsAsciiDigit(unit)) {
        CopyNumber();
      } else {
        FOut += unit == u'~' ? u',' : unit;  // areas of one reference
        ++FAt;
      }
    }
  }

 private:
  void CopyTo(size_t AEnd) {
    FOut += FText.substr(FAt, AEnd - FAt);
    FAt = AEnd;
  }

  /// Where "|" separates the rows of an array, ";" separates its columns; else it stays what it is.
  void RewriteBraces() {
    size_t end = FAt;
    bool hasRows = FStandardArrays;
    while (end < FText.size() && FText[end] != u'}') {
      hasRows = hasRows || FText[end] == u'|';
      end = FText[end] == u'"' ? BehindQuoted(FText, end) : end + 1;
    }
    while (FAt < end) {
      if (FText[FAt] == u'"') {
        CopyTo(BehindQuoted(FText, FAt));
        continue;
      }
      const char16_t unit = FText[FAt++];
      FOut += hasRows && unit == u';' ? u',' : unit == u'|' ? u';' : unit;
    }
  }

  void CopyNumber() {
    size_t end = FAt;
    while (end < FText.size() && (IsWordUnit(FText[end]) || FText[end] == u'.')) ++end;
    CopyTo(end);
  }

  void RewriteBrackets() {
    const size_t end = FGroups.BehindGroup(FText, FAt);
    if (end == FAt + 1) return CopyTo(end);
    const std::u16string_view content = FText.substr(FAt + 1, end - FAt - 2);
    TFileReference reference;
    if (ReadFileReference(content, reference)) {
      AppendReference(reference, FOut);
      FAt = end;
    } else if (content.find(u"#REF!") != content.npos && content.find_first_of(u"'\"[") == content.npos) {
      FOut += kRefError;
      FAt = end;
    } else {
      CopyTo(end);
    }
  }

  /// A sheet's name with an address behind it but no brackets around, a function or any other word.
  void RewriteWord() {
    size_t end = FAt;
    size_t lastDot = FText.npos;
    if (UnitAt(FText, end) == u'$') ++end;
    const bool isQuoted = UnitAt(FText, end) == u'\'';
    end = isQuoted ? BehindQuoted(FText, end) : BehindWord(FText, end);
    while (UnitAt(FText, end) == u'.' && IsWordUnit(UnitAt(FText, end + 1))) {
      lastDot = end;
      end = BehindWord(FText, end + 1);
      if (isQuoted) break;
    }
    const std::u16string_view word = FText.substr(FAt, end - FAt);
    if (UnitAt(FText, end) == u'(') {
      FOut += isQuoted ? OdsUnquoteSheetName(word) : std::u16string(WithoutVendor(word));
      FAt = end;
    } else if (word.starts_with(u"$$") && lastDot == FText.npos) {
      FAt += 2;  // the mark of a defined name
      CopyTo(std::max(end, FAt));
    } else if (lastDot == FText.npos || !TryRewriteAddress(lastDot, end)) {
      CopyTo(std::max(end, FAt + 1));
    }
  }

  /// With "Sheet.A1" from here to AEnd: takes it and a ":B2" behind it.
  bool TryRewriteAddress(size_t ADot, size_t AEnd) {
    const TCorner first = ReadCorner(FText, ADot + 1);
    if (!IsAddressTo(first, ADot + 1, AEnd)) return false;
    TFileReference reference;
    reference.HasSheet = true;
    const size_t name = FText[FAt] == u'$' ? FAt + 1 : FAt;
    reference.Sheet = reference.EndSheet = OdsUnquoteSheetName(FText.substr(name, ADot - name));
    reference.First = first;
    if (UnitAt(FText, AEnd) == u':') {
      const size_t second = AEnd + (UnitAt(FText, AEnd + 1) == u'.' ? 2 : 1);
      const size_t secondEnd = BehindWord(FText, second);
      const TCorner corner = ReadCorner(FText, second);
      if (UnitAt(FText, secondEnd) != u'.' && IsAddressTo(corner, second, secondEnd)) {
        reference.Second = corner;
        AEnd = secondEnd;
      }
    }
    AppendReference(reference, FOut);
    FAt = AEnd;
    return true;
  }

  bool IsAddressTo(const TCorner& ACorner, size_t AStart, size_t AEnd) const {
    return ACorner.Kind == TCornerKind::ckCell && ACorner.Letters <= 3 && AStart + ACorner.Text.size() == AEnd &&
           UnitAt(FText, AEnd) != u'(';
  }

  std::u16string_view FText;
  bool FStandardArrays;
  std::u16string& FOut;
  TBracketGroups FGroups;
  size_t FAt = 0;
};

// ---- formulas of this system

/// Whether the mark of a newer function stands at AAt.
bool IsFunctionMark(std::u16string_view AText, size_t AAt) {
  if (AText[AAt] != u'_') return false;
  const std::u16string_view mark = AText.substr(AAt, 6);
  return EqualAsciiNoCase(mark, u"_xlfn.") || EqualAsciiNoCase(mark, u"_xlws.");
}
constexpr size_t kFunctionMarkLength = 6;

/// Rewrites the references and separators of a formula for a file.
class TFormulaForFile {
 public:
  TFormulaForFile(std::u16string_view AText, bool AIsLiteral, std::u16string& AOut)
      : FText(AText), FIsLiteral(AIsLiteral), FOut(AOut) {}

  void Rewrite() {
    while (FAt < FText.size()) {
      const char16_t unit = FText[FAt];
      if (unit == u'"') {
        CopyTo(BehindQuoted(FText, FAt));
      } else if (unit == u'[') {
        CopyTo(FGroups.BehindGroup(FText, FAt));
      } else if (unit == u'#') {
        CopyError();
      } else if (!FIsLiteral && IsFunctionMark(FText, FAt)) {
        FAt += kFunctionMarkLength;
      } else if (unit == u'\'' || IsWordUnit(unit) || unit == u'.') {
        RewriteWord();
      } else {
        if (unit == u'{') ++FBraces;
        if (unit == u'}' && FBraces > 0) --FBraces;
        FOut += SeparatorOf(unit);
        ++FAt;
      }
    }
  }

  /// Takes the whole text as one reference with a sheet, without brackets. False for anything else.
  bool TryAddress() {
    const size_t name = BehindName();
    if (name == FText.npos || !TryReference(name)) return false;
    return FAt == FText.size();
  }

 private:
  /// What stands for a separator in files; any other unit for itself.
  char16_t SeparatorOf(char16_t AUnit) const {
    if (FBraces > 0 && FIsLiteral) return AUnit;
    if (AUnit == u',') return u';';
    return AUnit == u';' && FBraces > 0 ? u'|' : AUnit;
  }

  void CopyTo(size_t AEnd) {
    FOut += FText.substr(FAt, AEnd - FAt);
    FAt = AEnd;
  }

  /// "#REF!", "#DIV/0!", "#NAME?", and the "#" behind the address of a block.
  void CopyError() {
    size_t end = FAt + 1;
    while (end < FText.size() && (IsAsciiLetter(FText[end]) || IsAsciiDigit(FText[end]) || FText[end] == u'/')) ++end;
    const char16_t mark = UnitAt(FText, end);
    CopyTo(end + (mark == u'!' || mark == u'?' ? 1 : 0));
  }

  /// The position behind the sheet's name that stands here and has a "!" behind it; npos without one.
  size_t BehindName() const {
    size_t end = FAt;
    if (UnitAt(FText, end) == u'\'') {
      end = BehindQuoted(FText, end);
    } else {
      while (end < FText.size() && (IsWordUnit(FText[end]) || FText[end] == u'.')) ++end;
    }
    return end > FAt && UnitAt(FText, end) == u'!' ? end : FText.npos;
  }

  void RewriteWord() {
    const size_t name = BehindName();
    const size_t before = FOut.size();
    FOut += u'[';
    if (TryReference(name)) {
      FOut += u']';
      return;
    }
    FOut.resize(before);
    size_t end = FAt;
    if (FText[FAt] == u'\'') {
      end = BehindQuoted(FText, FAt);
    } else {
      while (end < FText.size() && (IsWordUnit(FText[end]) || FText[end] == u'.')) ++end;
    }
    CopyTo(std::max(end, FAt + 1));
  }

  /// A corner that ends where the word does and lies on the sheet.
  TCorner CornerAt(size_t AAt) const {
    TCorner corner = ReadCorner(FText, AAt);
    const char16_t next = UnitAt(FText, AAt + corner.Text.size());
    const bool isWhole = !IsWordUnit(next) && next != u'.' && next != u'!' && next != u'(' && next != u'[';
    if (!isWhole || !IsOnSheet(corner)) corner.Kind = TCornerKind::ckNone;
    return corner;
  }

  /// The reference that stands here, its sheet ending at AName (npos: it has none), appended without brackets.
  bool TryReference(size_t AName) {
    const bool hasSheet = AName != FText.npos;
    size_t at = hasSheet ? AName + 1 : FAt;
    const TCorner first = CornerAt(at);
    if (first.Kind == TCornerKind::ckNone) return false;
    at += first.Text.size();
    TCorner second;
    if (UnitAt(FText, at) == u':') {
      second = CornerAt(at + 1);
      if (second.Kind != first.Kind) second.Kind = TCornerKind::ckNone;
    }
    const bool isRange = second.Kind != TCornerKind::ckNone;
    if (!isRange && first.Kind != TCornerKind::ckCell) return false;
    if (hasSheet) {
      std::u16string_view name = FText.substr(FAt, AName - FAt);
      if (name.starts_with(u'$')) name.remove_prefix(1);
      (FOut += u'$') += OdsQuoteSheetName(OdsUnquoteSheetName(name));
    }
    (FOut += u'.') += first.Text;
    if (isRange) (FOut += u":.") += second.Text;
    FAt = at + (isRange ? 1 + second.Text.size() : 0);
    return true;
  }

  std::u16string_view FText;
  bool FIsLiteral;
  std::u16string& FOut;
  TBracketGroups FGroups;
  size_t FAt = 0;
  size_t FBraces = 0;
};

std::u16string_view WithoutEquals(std::u16string_view AFormula) {
  return AFormula.starts_with(u'=') ? AFormula.substr(1) : AFormula;
}

}  // namespace

std::u16string OdsFormulaToExcel(std::u16string_view AFormula, bool AStandardArrays) {
  const std::u16string_view text = WithoutPrefix(TrimSpaces(AFormula));
  std::u16string result;
  result.reserve(text.size() + 1);
  TFormulaOfFile(text, AStandardArrays, result).Rewrite();
  if (result.find(u';') != result.npos) result = OdsSeparatorsToExcel(result);
  // Every placeholder call has this in its name.
  if (result.find(u'_') != result.npos) result = UnwrapXlUdfDummyFunction(result);
  return result;
}

std::u16string OdsFormulaFromExcel(std::u16string_view AFormula, bool AIsLiteral) {
  const std::u16string_view text = WithoutEquals(AFormula);
  std::u16string result = u"of:=";
  result.reserve(text.size() + 16);
  TFormulaForFile(text, AIsLiteral, result).Rewrite();
  return result;
}

std::u16string OdsUnquoteSheetName(std::u16string_view AName) {
  if (AName.starts_with(u'$')) AName.remove_prefix(1);
  if (AName.size() < 2 || AName.front() != u'\'' || AName.back() != u'\'') return std::u16string(AName);
  std::u16string name;
  for (size_t at = 1; at + 1 < AName.size(); ++at) {
    name += AName[at];
    if (AName[at] == u'\'' && AName[at + 1] == u'\'' && at + 2 < AName.size()) ++at;
  }
  return name;
}

std::u16string OdsExcelQuoteSheetName(std::u16string_view AName) { return QuoteSheetName(AName); }

std::u16string OdsQuoteSheetName(std::u16string_view AName) {
  const bool isPlain =
      !AName.empty() && !IsAsciiDigit(AName.front()) && std::all_of(AName.begin(), AName.end(), [](char16_t AUnit) {
        return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_';
      });
  if (isPlain) return std::u16string(AName);
  std::u16string quoted = u"'";
  for (const char16_t unit : AName) quoted.append(unit == u'\'' ? 2 : 1, unit);
  return quoted += u'\'';
}

std::optional<TOdsSheetRange> OdsParseSheetRangeAddress(std::u16string_view AText) {
  TFileReference reference;
  const std::u16string_view text = TrimSpaces(AText);
  if (IsAddressList(text) || !ReadFileReference(text, reference)) return std::nullopt;
  if (reference.EndSheet != reference.Sheet) return std::nullopt;
  if (!reference.IsRange()) reference.Second = reference.First;
  if (!IsOnSheet(reference.First) || !IsOnSheet(reference.Second)) return std::nullopt;
  TOdsSheetRange result{std::move(reference.Sheet), {}};
  const auto corner = [&](const TCorner& ACorner, const TCellAddress& AWhole) {
    if (ACorner.Kind == TCornerKind::ckCell) return TCellAddress::FromA1(ACorner.Text);
    std::u16string line(ACorner.Text);
    std::erase(line, u'$');
    if (ACorner.Kind == TCornerKind::ckColumn) return TCellAddress{LettersToCol(line), AWhole.Row};
    return TCellAddress{AWhole.Col, TCellAddress::FromA1(u"A" + line).Row};
  };
  const TCellAddress first = corner(reference.First, {1, 1});
  const TCellAddress last = corner(reference.Second, {kMaxCol, kMaxRow});
  result.Range = TCellRange{first.Col, first.Row, last.Col, last.Row}.Normalize();
  return result;
}

std::u16string OdsSheetRangeAddress(std::u16string_view ASheet, const TCellRange& ARange) {
  const std::u16string sheet = OdsQuoteSheetName(ASheet) + u".";
  const TCellRange range = ARange.Normalize();
  std::u16string text = sheet + TCellAddress{range.StartCol, range.StartRow}.ToA1();
  if (range.Width() == 1 && range.Height() == 1) return text;
  ((text += u':') += sheet) += TCellAddress{range.EndCol, range.EndRow}.ToA1();
  return text;
}

std::optional<std::u16string> OdsAddressToExcel(std::u16string_view AText) {
  TFileReference reference;
  const std::u16string_view address = TrimSpaces(AText);
  if (IsAddressList(address) || !ReadFileReference(address, reference)) return std::nullopt;
  std::u16string text;
  AppendReference(reference, text);
  return text;
}

std::optional<std::u16string> OdsAddressFromExcel(std::u16string_view AFormula) {
  std::u16string text;
  if (!TFormulaForFile(WithoutEquals(TrimSpaces(AFormula)), true, text).TryAddress()) return std::nullopt;
  return text;
}

}  // namespace tessarine::detail
