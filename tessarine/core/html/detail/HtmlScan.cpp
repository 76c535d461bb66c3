#include <tessarine/core/html/detail/HtmlScan.h>

#include <algorithm>

#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

constexpr std::u16string_view kBlanks = u" \t\r\n\f";

bool IsHtmlBlank(char16_t AUnit) { return kBlanks.find(AUnit) != std::u16string_view::npos; }

bool IsAnyName(std::span<const std::u16string_view> ANames, std::u16string_view AName) {
  return std::any_of(ANames.begin(), ANames.end(),
                     [&](std::u16string_view ACandidate) { return EqualAsciiNoCase(ACandidate, AName); });
}

/// Whether AText, which begins behind a "<", goes on with the name of one of the elements, closing or not.
bool BeginsTagOf(std::span<const std::u16string_view> ANames, std::u16string_view AText) {
  if (AText.starts_with(u'/')) AText.remove_prefix(1);
  return std::any_of(ANames.begin(), ANames.end(), [&](std::u16string_view AName) {
    if (!EqualAsciiNoCase(AText.substr(0, AName.size()), AName)) return false;
    if (AText.size() == AName.size()) return true;
    const char16_t next = AText[AName.size()];
    return IsHtmlBlank(next) || next == u'>' || next == u'/';
  });
}

/// Takes one attribute off AText, which begins with no blank.
void TakeAttribute(std::u16string_view& AText, std::u16string_view& AName, std::u16string_view& AValue) {
  AName = AText.substr(0, AText.find_first_of(u" \t\r\n\f=", 1));
  AText.remove_prefix(AName.size());
  AText.remove_prefix(std::min(AText.find_first_not_of(kBlanks), AText.size()));
  AValue = {};
  if (!AText.starts_with(u'=')) return;
  AText.remove_prefix(1);
  AText.remove_prefix(std::min(AText.find_first_not_of(kBlanks), AText.size()));
  if (AText.empty()) return;
  const char16_t quote = AText.front();
  if (quote == u'"' || quote == u'\'') {
    AText.remove_prefix(1);
    AValue = AText.substr(0, AText.find(quote));
    AText.remove_prefix(std::min(AValue.size() + 1, AText.size()));
  } else {
    AValue = AText.substr(0, AText.find_first_of(kBlanks));
    AText.remove_prefix(AValue.size());
  }
}

}  // namespace

bool THtmlScanner::NameIs(std::u16string_view AName) const { return EqualAsciiNoCase(FName, AName); }

bool THtmlScanner::NameIsAnyOf(std::span<const std::u16string_view> ANames) const { return IsAnyName(ANames, FName); }

std::u16string_view THtmlScanner::Attribute(std::u16string_view AName) const {
  std::u16string_view rest = FAttributes;
  while (true) {
    rest.remove_prefix(std::min(rest.find_first_not_of(kBlanks), rest.size()));
    if (rest.empty()) return {};
    std::u16string_view name;
    std::u16string_view value;
    TakeAttribute(rest, name, value);
    if (EqualAsciiNoCase(name, AName)) return value;
  }
}

THtmlPiece THtmlScanner::Next() {
  while (FAt < FHtml.size()) {
    const size_t open = FSkipDepth > 0 ? FindSkippedTag() : FHtml.find(u'<', FAt);
    const bool isMarkup = open < FHtml.size() && open + 1 < FHtml.size();
    if (FSkipDepth == 0 && (!isMarkup || open > FAt)) {
      FText = FHtml.substr(FAt, isMarkup ? open - FAt : FHtml.size());
      FAt += FText.size();
      return hpText;
    }
    if (!isMarkup) break;
    FAt = open;
    const bool isComment = FHtml.substr(open).starts_with(u"<!--");
    if (!(isComment ? SkipComment() : ReadTag())) break;
    if (isComment) continue;
    if (!NameIsAnyOf(FSkipped)) return hpTag;
    if (FIsClosing) {
      FSkipDepth -= FSkipDepth > 0 ? 1 : 0;
    } else if (!FIsSelfClosing) {
      ++FSkipDepth;
    }
  }
  FAt = FHtml.size();
  return hpEnd;
}

/// Inside of a skipped element: the next comment or tag of such elements. Another "<" there, as a script has it where
/// it compares, must not hide the end.
size_t THtmlScanner::FindSkippedTag() const {
  size_t at = FHtml.find(u'<', FAt);
  while (at != std::u16string_view::npos) {
    const std::u16string_view rest = FHtml.substr(at + 1);
    if (rest.starts_with(u"!--") || BeginsTagOf(FSkipped, rest)) return at;
    at = FHtml.find(u'<', at + 1);
  }
  return at;
}

bool THtmlScanner::SkipComment() {
  const size_t end = FHtml.find(u"-->", FAt + 4);
  if (end == std::u16string_view::npos) return false;
  FAt = end + 3;
  return true;
}

/// Reads the tag whose "<" stands at FAt; false when it has no end.
bool THtmlScanner::ReadTag() {
  const size_t end = FHtml.find(u'>', FAt + 1);
  if (end == std::u16string_view::npos) return false;
  std::u16string_view tag = FHtml.substr(FAt + 1, end - FAt - 1);
  FBegin = FAt;
  FAt = end + 1;
  FIsClosing = tag.starts_with(u'/');
  if (FIsClosing) tag.remove_prefix(1);
  FIsSelfClosing = tag.ends_with(u'/');
  if (FIsSelfClosing) tag.remove_suffix(1);
  FName = tag.substr(0, tag.find_first_of(kBlanks));
  FAttributes = tag.substr(FName.size());
  return true;
}

}  // namespace tessarine::detail
