#include <tessarine/io/xlsx/detail/XlsxLinksWriter.h>

#include <algorithm>
#include <iterator>
#include <tuple>
#include <utility>

#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/io/xlsx/detail/XlsxMarkupWriter.h>
#include <tessarine/io/xlsx/detail/XlsxRelationshipsWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

/// Links of single cells, and links as this writer leaves them, are joined after one round: side by side first, then
/// runs of the same columns one below the other. Ranges of other shapes may need another, and such that lie around one
/// another like a spiral as many as there are, which no file is worth.
constexpr int kJoinRounds = 16;

/// The same range with rows and columns exchanged.
TCellRange Turned(const TCellRange& ARange) { return {ARange.StartRow, ARange.StartCol, ARange.EndRow, ARange.EndCol}; }

void TurnAll(std::vector<TXlsxLink>& ALinks) {
  for (TXlsxLink& link : ALinks) link.Range = Turned(link.Range);
}

/// Joins ranges of the same rows that stand side by side.
void JoinAlongRows(std::vector<TXlsxLink>& ALinks) {
  std::sort(ALinks.begin(), ALinks.end(), [](const TXlsxLink& ALeft, const TXlsxLink& ARight) {
    const TCellRange& left = ALeft.Range;
    const TCellRange& right = ARight.Range;
    return std::tie(left.StartRow, left.EndRow, left.StartCol) < std::tie(right.StartRow, right.EndRow, right.StartCol);
  });
  size_t count = 0;
  for (TXlsxLink& link : ALinks) {
    if (count > 0) {
      TXlsxLink& last = ALinks[count - 1];
      const bool isNeighbour = last.Range.StartRow == link.Range.StartRow && last.Range.EndRow == link.Range.EndRow &&
                               last.Range.EndCol + 1 == link.Range.StartCol;
      if (isNeighbour && last.Target == link.Target) {
        last.Range.EndCol = link.Range.EndCol;
        continue;
      }
    }
    if (&ALinks[count] != &link) ALinks[count] = std::move(link);
    ++count;
  }
  ALinks.erase(ALinks.begin() + static_cast<std::ptrdiff_t>(count), ALinks.end());
}

}  // namespace

std::vector<TXlsxLink> XlsxSheetLinks(const THyperlinkList& ALinks) {
  std::vector<TXlsxLink> links;
  ALinks.ForEach([&](const TCellRange& ARange, const TText& ATarget) {
    const TCellRange range = XlsxInsideSheet(ARange);
    if (range.StartCol > 0) links.push_back({range, ATarget});
  });
  size_t count = links.size() + 1;
  for (int round = 0; round < kJoinRounds && links.size() < count; ++round) {
    count = links.size();
    JoinAlongRows(links);
    TurnAll(links);
    JoinAlongRows(links);
    TurnAll(links);
  }
  std::sort(links.begin(), links.end(), [](const TXlsxLink& ALeft, const TXlsxLink& ARight) {
    return std::tie(ALeft.Range.StartRow, ALeft.Range.StartCol) <
           std::tie(ARight.Range.StartRow, ARight.Range.StartCol);
  });
  return links;
}

bool IsExternalXlsxTarget(std::u16string_view ATarget) {
  constexpr std::u16string_view kBegins[] = {u"http://", u"https://", u"mailto:", u"ftp://", u"file://", u"\\\\"};
  const std::u16string target = ToAsciiLower(TrimSpaces(ATarget).substr(0, 8));
  return std::any_of(std::begin(kBegins), std::end(kBegins),
                     [&](std::u16string_view ABegin) { return target.starts_with(ABegin); });
}

void AppendXlsxLinks(const std::vector<TXlsxLink>& ALinks, const TXlsxSheetRelationships& ARelationships,
                     std::string& AOut) {
  if (ALinks.empty()) return;
  AOut += "<hyperlinks>";
  for (const TXlsxLink& link : ALinks) {
    AOut += "<hyperlink";
    AppendXlsxRef("ref", link.Range, AOut);
    if (IsExternalXlsxTarget(link.Target)) {
      AppendXlsxWord("r:id", ARelationships.LinkId(link.Target), AOut);
    } else {
      AppendXlsxTextAttr("location", link.Target, AOut);
    }
    AOut += "/>";
  }
  AOut += "</hyperlinks>";
}

}  // namespace tessarine::detail
