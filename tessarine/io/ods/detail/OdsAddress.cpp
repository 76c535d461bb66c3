#include <tessarine/io/ods/detail/OdsAddress.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include <tessarine/core/reference/ReferenceRewrite.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// Reads the sheet in front of a corner with its ".", or nothing, and goes behind it. False when there is a sheet
/// without a corner behind it.
bool ReadSheet(std::u16string_view AText, size_t& AAt, bool& AHasSheet, std::u16string& ASheet) {
  AHasSheet = false;
  if (OdsUnitAt(AText, AAt) == u'.') {
    ++AAt;
    return true;
  }
  size_t at = AAt;
  if (OdsUnitAt(AText, at) == u'$') ++at;
  size_t end = at;
  if (OdsUnitAt(AText, at) == u'\'') {
    end = OdsBehindQuoted(AText, at);
    if (OdsUnitAt(AText, end) != u'.') return false;
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

/// Whether an address attribute is a list of several.
bool IsAddressList(std::u16string_view AText) {
  for (size_t at = 0; at < AText.size(); ++at) {
    if (AText[at] == u' ') return true;
    if (AText[at] == u'\'') at = OdsBehindQuoted(AText, at) - 1;
  }
  return false;
}

}  // namespace

// ---- names of sheets

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

// ---- references

bool OdsReadReference(std::u16string_view AText, TOdsReference& AReference) {
  size_t at = 0;
  if (!ReadSheet(AText, at, AReference.HasSheet, AReference.Sheet)) return false;
  AReference.EndSheet = AReference.Sheet;
  AReference.First = OdsReadCorner(AText, at);
  if (AReference.First.Kind == ckNone) return false;
  at += AReference.First.Text.size();
  if (at == AText.size()) return AReference.First.Kind == ckCell;
  if (AText[at++] != u':') return false;
  bool hasEndSheet = false;
  std::u16string endSheet;
  if (!ReadSheet(AText, at, hasEndSheet, endSheet)) return false;
  if (hasEndSheet) {
    if (!AReference.HasSheet) return false;
    AReference.EndSheet = std::move(endSheet);
  }
  AReference.Second = OdsReadCorner(AText, at);
  return AReference.Second.Kind == AReference.First.Kind && at + AReference.Second.Text.size() == AText.size();
}

void OdsAppendReference(const TOdsReference& AReference, std::u16string& AOut) {
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

// ---- address attributes

std::optional<TOdsSheetRange> OdsParseSheetRangeAddress(std::u16string_view AText) {
  TOdsReference reference;
  const std::u16string_view text = TrimSpaces(AText);
  if (IsAddressList(text) || !OdsReadReference(text, reference)) return std::nullopt;
  if (reference.EndSheet != reference.Sheet) return std::nullopt;
  if (!reference.IsRange()) reference.Second = reference.First;
  if (!OdsIsOnSheet(reference.First) || !OdsIsOnSheet(reference.Second)) return std::nullopt;
  TOdsSheetRange result{std::move(reference.Sheet), {}};
  const auto corner = [&](const TOdsCorner& ACorner, const TCellAddress& AWhole) {
    if (ACorner.Kind == ckCell) return TCellAddress::FromA1(ACorner.Text);
    std::u16string line(ACorner.Text);
    std::erase(line, u'$');
    if (ACorner.Kind == ckColumn) return TCellAddress{LettersToCol(line), AWhole.Row};
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
  TOdsReference reference;
  const std::u16string_view address = TrimSpaces(AText);
  if (IsAddressList(address) || !OdsReadReference(address, reference)) return std::nullopt;
  std::u16string text;
  OdsAppendReference(reference, text);
  return text;
}

}  // namespace tessarine::detail
