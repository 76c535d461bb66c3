#include <tessarine/io/ods/detail/OdsFormatPieces.h>

#include <algorithm>
#include <cstddef>

#include <tessarine/core/format/detail/NumberFormatCode.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

bool IsElapsedTag(std::u16string_view ATag) {
  if (ATag.empty() || ATag.size() > 2 || ATag.find_first_not_of(ATag[0]) != ATag.npos) return false;
  return ATag[0] == u'h' || ATag[0] == u'm' || ATag[0] == u's';
}

class TSectionCutter {
 public:
  TSectionCutter(std::u16string_view ASection, std::u16string_view AMeaning) : FCode(ASection), FMeaning(AMeaning) {}

  TOdsFormatSection Run() {
    const TStrippedSection stripped = StripTags(FCode);
    FSection.HasColor = stripped.ColorFound;
    FSection.ARGB = stripped.ARGB;
    while (FAt < FCode.size()) CutOne();
    return std::move(FSection);
  }

 private:
  void Add(TOdsPieceKind AKind, std::u16string_view AText, bool AJoins = true) {
    auto& pieces = FSection.Pieces;
    if (AJoins && !pieces.empty() && pieces.back().Kind == AKind) {
      pieces.back().Text += AText;
    } else {
      pieces.push_back({AKind, std::u16string(AText)});
    }
  }

  void CutOne() {
    const char16_t unit = FCode[FAt];
    if (unit == u'"') return CutQuoted();
    if (unit == u'[' && FCode.find(u']', FAt) != FCode.npos) return CutTag();
    if ((unit == u'\\' || unit == u'*' || unit == u'_') && FAt + 1 < FCode.size()) return CutEscape();
    if (FMeaning.find(u'a') != FMeaning.npos && (CutWord(u"am/pm") || CutWord(u"a/p"))) return;
    if (unit == u'g' || unit == u'G')
      if (CutGeneral()) return;
    if (unit == u'$') {
      Add(opkCurrency, u"$", false);
    } else {
      const bool means = AsciiLower(unit) != u'a' && FMeaning.find(AsciiLower(unit)) != FMeaning.npos;
      Add(means ? opkUnits : opkLiteral, FCode.substr(FAt, 1));
    }
    ++FAt;
  }

  bool CutWord(std::u16string_view AWord) {
    if (!EqualAsciiNoCase(FCode.substr(FAt, AWord.size()), AWord)) return false;
    Add(opkUnits, AWord, false);
    Add(opkLiteral, {}, false);  // the next letters make a piece of their own
    FAt += AWord.size();
    return true;
  }

  bool CutGeneral() {
    constexpr std::u16string_view kGeneral = u"general";
    if (FMeaning.find(u'#') == FMeaning.npos || !EqualAsciiNoCase(FCode.substr(FAt, kGeneral.size()), kGeneral))
      return false;
    Add(opkGeneral, {}, false);
    FAt += kGeneral.size();
    return true;
  }

  void CutQuoted() {
    const size_t close = std::min(FCode.find(u'"', FAt + 1), FCode.size());
    Add(opkLiteral, FCode.substr(FAt + 1, close - FAt - 1));
    FAt = close + 1;
  }

  void CutEscape() {
    const std::u16string_view next = FCode.substr(FAt + 1, 1);
    switch (FCode[FAt]) {
      case u'*': Add(opkFill, next, false); break;
      case u'_':
        FSection.IsExact = false;
        Add(opkLiteral, u" ");
        break;
      default: Add(opkLiteral, next);
    }
    FAt += 2;
  }

  void CutTag() {
    const size_t close = FCode.find(u']', FAt);
    const std::u16string_view tag = FCode.substr(FAt + 1, close - FAt - 1);
    const std::u16string lower = ToAsciiLower(tag);
    FAt = close + 1;
    if (IsElapsedTag(lower)) {
      Add(opkElapsed, lower, false);
    } else if (tag.starts_with(u'$')) {
      const std::u16string_view symbol = tag.substr(1, std::min(tag.find(u'-'), tag.size()) - 1);
      if (!symbol.empty()) Add(opkCurrency, symbol, false);
    } else if (!FSection.HasColor || lower.find_first_of(u"<=>") != lower.npos || lower.starts_with(u"color")) {
      FSection.IsExact = false;
    }
  }

  std::u16string_view FCode;
  std::u16string_view FMeaning;
  size_t FAt = 0;
  TOdsFormatSection FSection;
};

}  // namespace

TOdsFormatSection CutOdsFormatSection(std::u16string_view ASection, std::u16string_view AMeaning) {
  return TSectionCutter(ASection, AMeaning).Run();
}

}  // namespace tessarine::detail
