#include <tessarine/io/xlsx/detail/XlsxFormulas.h>

#include <algorithm>
#include <utility>

#include <tessarine/formula/FormulaDialect.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/io/xlsx/detail/XlsxBudget.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlEscapes.h>
#include <tessarine/platform/detail/MessageText.h>

namespace tessarine::detail {

namespace {

/// The formula's text as characters, escapes undone; workbook indexes, prefixes of bound names and placeholder calls
/// are gone. The rare steps are behind tests for characters that they need.
void DecodeFormula(std::string_view ASource, std::u16string& AText) {
  AText.clear();
  AppendUtf8AsUtf16(ASource, AText);
  if (ASource.find('_') != ASource.npos) {
    AText = UnescapeXlsxText(AText);
    StripXlsxWorkbookIndexes(AText);
    StripXlsxParameterPrefixes(AText);
    AText = UnwrapXlUdfDummyFunction(AText);
  } else if (ASource.find('[') != ASource.npos) {
    StripXlsxWorkbookIndexes(AText);
  }
}

bool IsNameUnit(char16_t AUnit) {
  return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u'_' || AUnit == u'.' || AUnit >= 0x80;
}

/// Whether the name that a formula begins with could be that of a function which spills: names of such have letters,
/// "_" and "." only. Spares most formulas the lookup.
bool MayBeginWithSpill(std::u16string_view AText) {
  for (const char16_t unit : AText) {
    if (unit == u'(') break;
    const bool isName = IsAsciiLetter(unit) || unit == u'_' || unit == u'.' || unit == u'$';
    if (!isName && unit > u' ' && unit != u'=' && unit != u'+') return false;
  }
  return true;
}

}  // namespace

void StripXlsxWorkbookIndexes(std::u16string& AText) {
  size_t out = 0;
  for (size_t at = 0; at < AText.size();) {
    if (AText[at] == u'[' && (at == 0 || AText[at - 1] == u'\'')) {
      size_t end = at + 1;
      while (end < AText.size() && IsAsciiDigit(AText[end])) ++end;
      if (end > at + 1 && end < AText.size() && AText[end] == u']') {
        at = end + 1;
        continue;
      }
    }
    AText[out++] = AText[at++];
  }
  AText.resize(out);
}

void StripXlsxParameterPrefixes(std::u16string& AText) {
  constexpr std::u16string_view kPrefix = u"_xlpm.";
  if (AText.find(kPrefix) == AText.npos) return;
  std::u16string out;
  char16_t quote = 0;  // of the text or name that is open
  for (size_t at = 0; at < AText.size(); ++at) {
    const char16_t unit = AText[at];
    const bool isPrefix = quote == 0 && AText.compare(at, kPrefix.size(), kPrefix) == 0;
    if (isPrefix && (at == 0 || !IsNameUnit(AText[at - 1]))) {
      at += kPrefix.size() - 1;
      continue;
    }
    // A doubled quote closes and opens again at once.
    if (quote == 0 ? unit == u'"' || unit == u'\'' : unit == quote) quote = quote == 0 ? unit : u'\0';
    out += unit;
  }
  AText = std::move(out);
}

/// Texts of common length are free, or sheets filled with formulas to the last row would run into the limit. A text
/// that no template gives costs more: it is put together from tokens and mostly kept for this cell alone.
bool TXlsxFormulas::TakeShared(const TXlsxFormulaElement& AElement, TCellAddress AAddress, std::string_view APartName) {
  constexpr size_t kFreeUnits = 128;
  constexpr size_t kPlainCost = 4;
  const auto found = FShared.find(AElement.SharedIndex);
  if (found == FShared.end()) return false;
  const auto take = [&](size_t& ALeft, size_t AUnits, size_t ACost) {
    TXlsxBudget::Take(
        ALeft, (std::max(AUnits, kFreeUnits) - kFreeUnits) * ACost,
        [&] { return ForMessage(APartName) + ", cell " + Utf16ToUtf8(AAddress.ToA1()); },
        "the texts of shared formulas");
  };
  size_t left = FBudget.SharedFormulaUnits;
  take(left, found->second.Length(), 1);  // how long it gets here is known too late for the longest
  const bool isCheap = found->second.TextAt(AAddress, FTemplates, FText);
  take(FBudget.SharedFormulaUnits, FText.size(), isCheap ? 1 : kPlainCost);
  return true;
}

std::u16string_view TXlsxFormulas::Resolve(const TXlsxFormulaElement& AElement, TCellAddress AAddress,
                                           std::string_view APartName) {
  if (!AElement.Text.empty()) {
    DecodeFormula(AElement.Text, FText);
    if (AElement.IsShared && AElement.SharedIndex >= 0) FShared[AElement.SharedIndex] = {FText, AAddress};
  } else if (!AElement.IsShared || !TakeShared(AElement, AAddress, APartName)) {
    return {};
  }
  if (FText.empty()) return {};
  const bool hasSign = FText.front() == u'=';
  const bool intersects = !AElement.IsArray && !AElement.HasCellMeta && MayBeginWithSpill(FText) &&
                          FText.find(u'@') == FText.npos && IsDynamicArraySpillFormulaText(FText);
  if (!hasSign) FText.insert(FText.begin(), u'=');
  if (intersects) FText.insert(FText.begin() + 1, u'@');
  return FText;
}

}  // namespace tessarine::detail
