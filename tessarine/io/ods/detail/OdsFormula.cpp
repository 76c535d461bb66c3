#include <tessarine/io/ods/detail/OdsFormula.h>

#include <algorithm>
#include <cstddef>

#include <tessarine/formula/FormulaDialect.h>
#include <tessarine/io/ods/detail/OdsAddress.h>
#include <tessarine/io/ods/detail/OdsFormulaScan.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kRefError = u"#REF!";

// ---- formulas of files

constexpr bool StartsName(char16_t AUnit) { return OdsIsWordUnit(AUnit) && !IsAsciiDigit(AUnit); }

/// AText behind "of:=", "of:" or another prefix of letters and ":=".
std::u16string_view WithoutPrefix(std::u16string_view AText) {
  size_t letters = 0;
  while (letters < AText.size() && IsAsciiLetter(AText[letters])) ++letters;
  if (letters == 0 || OdsUnitAt(AText, letters) != u':') return AText;
  if (OdsUnitAt(AText, letters + 1) == u'=') return AText.substr(letters + 2);
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
        CopyTo(OdsBehindQuoted(FText, FAt));
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
      end = FText[end] == u'"' ? OdsBehindQuoted(FText, end) : end + 1;
    }
    while (FAt < end) {
      if (FText[FAt] == u'"') {
        CopyTo(OdsBehindQuoted(FText, FAt));
        continue;
      }
      const char16_t unit = FText[FAt++];
      FOut += hasRows && unit == u';' ? u',' : unit == u'|' ? u';' : unit;
    }
  }

  void CopyNumber() {
    size_t end = FAt;
    while (end < FText.size() && (OdsIsWordUnit(FText[end]) || FText[end] == u'.')) ++end;
    CopyTo(end);
  }

  void RewriteBrackets() {
    const size_t end = FGroups.BehindGroup(FText, FAt);
    if (end == FAt + 1) return CopyTo(end);
    const std::u16string_view content = FText.substr(FAt + 1, end - FAt - 2);
    TOdsReference reference;
    if (OdsReadReference(content, reference)) {
      OdsAppendReference(reference, FOut);
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
    if (OdsUnitAt(FText, end) == u'$') ++end;
    const bool isQuoted = OdsUnitAt(FText, end) == u'\'';
    end = isQuoted ? OdsBehindQuoted(FText, end) : OdsBehindWord(FText, end);
    while (OdsUnitAt(FText, end) == u'.' && OdsIsWordUnit(OdsUnitAt(FText, end + 1))) {
      lastDot = end;
      end = OdsBehindWord(FText, end + 1);
      if (isQuoted) break;
    }
    const std::u16string_view word = FText.substr(FAt, end - FAt);
    if (OdsUnitAt(FText, end) == u'(') {
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
    const TOdsCorner first = OdsReadCorner(FText, ADot + 1);
    if (!IsAddressTo(first, ADot + 1, AEnd)) return false;
    TOdsReference reference;
    reference.HasSheet = true;
    const size_t name = FText[FAt] == u'$' ? FAt + 1 : FAt;
    reference.Sheet = reference.EndSheet = OdsUnquoteSheetName(FText.substr(name, ADot - name));
    reference.First = first;
    if (OdsUnitAt(FText, AEnd) == u':') {
      const size_t second = AEnd + (OdsUnitAt(FText, AEnd + 1) == u'.' ? 2 : 1);
      const size_t secondEnd = OdsBehindWord(FText, second);
      const TOdsCorner corner = OdsReadCorner(FText, second);
      if (OdsUnitAt(FText, secondEnd) != u'.' && IsAddressTo(corner, second, secondEnd)) {
        reference.Second = corner;
        AEnd = secondEnd;
      }
    }
    OdsAppendReference(reference, FOut);
    FAt = AEnd;
    return true;
  }

  bool IsAddressTo(const TOdsCorner& ACorner, size_t AStart, size_t AEnd) const {
    return ACorner.Kind == ckCell && ACorner.Letters <= 3 && AStart + ACorner.Text.size() == AEnd &&
           OdsUnitAt(FText, AEnd) != u'(';
  }

  std::u16string_view FText;
  bool FStandardArrays;
  std::u16string& FOut;
  TOdsBracketGroups FGroups;
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
        CopyTo(OdsBehindQuoted(FText, FAt));
      } else if (unit == u'[') {
        CopyTo(FGroups.BehindGroup(FText, FAt));
      } else if (unit == u'#') {
        CopyError();
      } else if (!FIsLiteral && IsFunctionMark(FText, FAt)) {
        FAt += kFunctionMarkLength;
      } else if (unit == u'\'' || OdsIsWordUnit(unit) || unit == u'.') {
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
    const char16_t mark = OdsUnitAt(FText, end);
    CopyTo(end + (mark == u'!' || mark == u'?' ? 1 : 0));
  }

  /// The position behind the sheet's name that stands here and has a "!" behind it; npos without one.
  size_t BehindName() const {
    size_t end = FAt;
    if (OdsUnitAt(FText, end) == u'\'') {
      end = OdsBehindQuoted(FText, end);
    } else {
      while (end < FText.size() && (OdsIsWordUnit(FText[end]) || FText[end] == u'.')) ++end;
    }
    return end > FAt && OdsUnitAt(FText, end) == u'!' ? end : FText.npos;
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
      end = OdsBehindQuoted(FText, FAt);
    } else {
      while (end < FText.size() && (OdsIsWordUnit(FText[end]) || FText[end] == u'.')) ++end;
    }
    CopyTo(std::max(end, FAt + 1));
  }

  /// A corner that ends where the word does and lies on the sheet.
  TOdsCorner CornerAt(size_t AAt) const {
    TOdsCorner corner = OdsReadCorner(FText, AAt);
    const char16_t next = OdsUnitAt(FText, AAt + corner.Text.size());
    const bool isWhole = !OdsIsWordUnit(next) && next != u'.' && next != u'!' && next != u'(' && next != u'[';
    if (!isWhole || !OdsIsOnSheet(corner)) corner.Kind = ckNone;
    return corner;
  }

  /// The reference that stands here, its sheet ending at AName (npos: it has none), appended without brackets.
  bool TryReference(size_t AName) {
    const bool hasSheet = AName != FText.npos;
    size_t at = hasSheet ? AName + 1 : FAt;
    const TOdsCorner first = CornerAt(at);
    if (first.Kind == ckNone) return false;
    at += first.Text.size();
    TOdsCorner second;
    if (OdsUnitAt(FText, at) == u':') {
      second = CornerAt(at + 1);
      if (second.Kind != first.Kind) second.Kind = ckNone;
    }
    const bool isRange = second.Kind != ckNone;
    if (!isRange && first.Kind != ckCell) return false;
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
  TOdsBracketGroups FGroups;
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

std::optional<std::u16string> OdsAddressFromExcel(std::u16string_view AFormula) {
  std::u16string text;
  if (!TFormulaForFile(WithoutEquals(TrimSpaces(AFormula)), true, text).TryAddress()) return std::nullopt;
  return text;
}

}  // namespace tessarine::detail
