#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>
#include <utility>

#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/reference/IndexShift.h>

namespace tessarine {
namespace {

std::string LinkAt(const THyperlinkList& ALinks, int32_t ACol, int32_t ARow) {
  const auto target = ALinks.FindHyperlink(ACol, ARow);
  return target ? target->ToUtf8() : "-";
}

using TPlainLinks = std::map<std::pair<int32_t, int32_t>, std::string>;

TPlainLinks Expanded(const THyperlinkList& ALinks) {
  TPlainLinks cells;
  ALinks.ForEach([&](const TCellRange& ARange, const TText& ATarget) {
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row)
      for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col)
        EXPECT_TRUE(cells.emplace(std::pair(col, row), ATarget.ToUtf8()).second) << "records overlap";
  });
  return cells;
}

TEST(Hyperlinks, ActAsOneEntryPerCell) {
  std::mt19937 random(23);
  const auto pick = [&](uint64_t ALimit) { return static_cast<int32_t>(random() % ALimit) + 1; };
  for (int round = 0; round < 60; ++round) {
    THyperlinkList links;
    TPlainLinks plain;
    for (int step = 0; step < 40; ++step) {
      const int32_t col = pick(12), row = pick(12);
      const TCellRange range = {col, row, col + pick(random() % 3 ? 2 : 12) - 1, row + pick(random() % 3 ? 2 : 12) - 1};
      const std::string target = random() % 4 ? std::to_string(step) : "";
      if (random() % 6 == 0) {
        const bool byRow = random() % 2 == 0;
        const int32_t start = pick(14), count = pick(5), dest = pick(14);
        byRow ? links.MoveRows(start, count, dest) : links.MoveColumns(start, count, dest);
        TPlainLinks moved;
        for (const auto& [place, text] : plain) {
          const int64_t line = MoveIndex(byRow ? place.second : place.first, start, count, dest);
          moved[byRow ? std::pair(place.first, static_cast<int32_t>(line))
                      : std::pair(static_cast<int32_t>(line), place.second)] = text;
        }
        plain = moved;
      } else {
        links.SetHyperlinkRange(range, TText::FromUtf8(target));
        for (int32_t r = range.StartRow; r <= range.EndRow; ++r)
          for (int32_t c = range.StartCol; c <= range.EndCol; ++c) {
            plain.erase({c, r});
            if (!target.empty()) plain[{c, r}] = target;
          }
      }
      ASSERT_EQ(links.Count(), static_cast<int64_t>(plain.size()));
      for (int probe = 0; probe < 5; ++probe) {
        const int32_t c = pick(30), r = pick(30);
        const auto expected = plain.find({c, r});
        ASSERT_EQ(LinkAt(links, c, r), expected != plain.end() ? expected->second : "-");
      }
    }
    ASSERT_EQ(Expanded(THyperlinkList(links)), plain);
  }
}

}  // namespace
}  // namespace tessarine
