#include <gtest/gtest.h>

#include <random>

#include <tessarine/formula/DependencyGraph.h>
#include <tessarine/formula/detail/AffectedRuns.h>
#include <tessarine/formula/detail/DependencyRuns.h>
#include <tessarine/formula/detail/GraphAccess.h>

#include <tests/support/PlainGraph.h>

namespace tessarine {
namespace {

using detail::TDependencyRuns;
using detail::TPrecedentPattern;
using detail::TPrecedentPatterns;
using detail::TRowSpan;

TEST(CellKeys, ReadBackWhatTheyPrint) {
  EXPECT_EQ(TFormulaDependencyGraph::CellKey(0, 3, 7), u"0!3,7");
  EXPECT_EQ(ParseCellKey(u"2!16384,1048576"), TCellId::Of(2, 16384, 1048576));
  for (const auto* text : {u"3!0,1", u"3!1,0", u"!1,1", u"-1!2,2", u"", u"1!2", u"1,2"})
    EXPECT_FALSE(ParseCellKey(text).has_value()) << TText(text).ToUtf8();
}

TEST(DependencyGraph, AnswersInTheOrderOfRegistration) {
  TFormulaDependencyGraph graph;
  const TCellId a1 = TCellId::Of(0, 1, 1);
  const TCellId b1 = TCellId::Of(0, 2, 1);
  const TCellId c1 = TCellId::Of(0, 3, 1);
  const TCellId twice[] = {a1, a1};
  graph.SetDependencies(b1, twice);
  graph.SetDependencies(c1, {&a1, 1});
  std::vector<TCellId> list;
  graph.GetDependents(a1, list);
  EXPECT_EQ(list, (std::vector{b1, c1}));
  graph.SetDependencies(b1, {&a1, 1});  // registered again: now the last
  list.clear();
  graph.GetDependents(a1, list);
  EXPECT_EQ(list, (std::vector{c1, b1}));
  graph.ClearCell(c1);
  list.clear();
  graph.GetDependents(a1, list);
  EXPECT_EQ(list, (std::vector{b1}));
}

/// A random run, entered into both graphs.
void AddRandomRun(std::mt19937& ARandom, TDependencyRuns& ARuns, test::TPlainGraph& APlain) {
  const auto pick = [&](int ALow, int AHigh) { return std::uniform_int_distribution<int>(ALow, AHigh)(ARandom); };
  const int32_t sheet = pick(0, 1);
  const int32_t col = pick(1, 6);
  const int32_t first = pick(8, 24);
  const TRowSpan rows{first, first + pick(0, pick(0, 1) ? 0 : 8)};
  auto patterns = std::make_shared<TPrecedentPatterns>();
  for (int i = pick(0, 3); i > 0; --i) {
    TPrecedentPattern pattern;
    pattern.Sheet = pick(0, 1);
    pattern.Col = pick(1, 6);
    pattern.Col2 = std::min(6, pattern.Col + pick(0, 2));
    pattern.RowRelative = pick(0, 1) != 0;
    pattern.Row2Relative = pick(0, 1) != 0;
    pattern.Row = pattern.RowRelative ? pick(-6, 6) : pick(1, 30);
    pattern.Row2 = pattern.Row2Relative ? pick(-6, 6) : pick(1, 30);
    patterns->push_back(pattern);
  }
  ARuns.Add(sheet, col, rows, patterns);
  for (int32_t row = rows.First; row <= rows.Last; ++row) {
    std::vector<TCellId> precedents;
    for (const TPrecedentPattern& pattern : *patterns) {
      for (int32_t r = pattern.Top(row); r <= pattern.Bottom(row); ++r) {
        for (int32_t c = pattern.Col; c <= pattern.Col2; ++c) precedents.push_back(TCellId::Of(pattern.Sheet, c, r));
      }
    }
    APlain.SetDependencies(TCellId::Of(sheet, col, row), precedents);
  }
}

TEST(DependencyGraph, RunsEqualSingleEdges) {
  std::mt19937 random(20240501);
  for (int round = 0; round < 120; ++round) {
    TFormulaDependencyGraph graph;
    test::TPlainGraph plain;
    for (int step = 0; step < 25; ++step) {
      AddRandomRun(random, detail::RunsOf(graph), plain);
      if (step % 4 == 3) {
        const TCellId gone = TCellId::Of(static_cast<int32_t>(random() % 2), static_cast<int32_t>(random() % 6) + 1,
                                         static_cast<int32_t>(random() % 24) + 8);
        graph.ClearCell(gone);
        plain.ClearCell(gone);
      }
    }
    for (int question = 0; question < 20; ++question) {
      const TCellId cell = TCellId::Of(static_cast<int32_t>(random() % 2), static_cast<int32_t>(random() % 6) + 1,
                                       static_cast<int32_t>(random() % 34) + 1);
      std::vector<TCellId> direct;
      graph.GetDependents(cell, direct);
      ASSERT_EQ(direct, plain.GetDependents(cell)) << "round " << round;
      std::vector<TCellId> keys{cell};
      graph.CollectTransitiveDependents(cell, keys);
      std::vector<TCellId> expected = plain.CollectTransitiveDependents(cell);
      expected.insert(expected.begin(), cell);
      ASSERT_EQ(keys, expected);
      std::vector<TCellId> order;
      std::vector<TCellId> cycles;
      std::vector<TCellId> plainCycles;
      graph.TopologicalOrder(keys, &cycles, order);
      ASSERT_EQ(order, plain.TopologicalOrder(keys, plainCycles));
      ASSERT_EQ(cycles, plainCycles);
    }
  }
}

TEST(AffectedRuns, ReachExactlyWhatDependsOnACell) {
  std::mt19937 random(77);
  int ordered = 0;
  for (int round = 0; round < 400; ++round) {
    TDependencyRuns runs;
    test::TPlainGraph plain;
    for (int step = 0; step < 8; ++step) AddRandomRun(random, runs, plain);
    const TCellId cell =
        TCellId::Of(0, static_cast<int32_t>(random() % 6) + 1, static_cast<int32_t>(random() % 30) + 1);
    detail::TAffectedRuns affected(runs);
    const uint32_t run = runs.FindRun(cell.Sheet(), cell.Col(), cell.Row());
    ASSERT_TRUE(run == TDependencyRuns::kNone ? affected.AddReaders(cell)
                                              : affected.Add(run, {cell.Row(), cell.Row()}));
    std::set<TCellId> reached;
    affected.ForEachRun([&](uint32_t AIndex) {
      for (const TRowSpan& span : affected.RowsOf(AIndex)) {
        for (int32_t row = span.First; row <= span.Last; ++row)
          reached.insert(TCellId::Of(runs.Run(AIndex).Sheet, runs.Run(AIndex).Col, row));
      }
    });
    const std::vector<TCellId> list = plain.CollectTransitiveDependents(cell);
    std::set<TCellId> expected(list.begin(), list.end());
    if (run != TDependencyRuns::kNone) expected.insert(cell);
    ASSERT_EQ(reached, expected) << "round " << round;

    // Where groups can be ordered there is no cycle, and every cell comes behind what it reads.
    std::vector<detail::TRunGroup> groups;
    if (!affected.Order(groups)) continue;
    ++ordered;
    std::vector<TCellId> keys(expected.begin(), expected.end());
    std::vector<TCellId> cycles;
    plain.TopologicalOrder(keys, cycles);
    EXPECT_TRUE(cycles.empty()) << "round " << round;
    std::map<TCellId, int> position;
    for (const detail::TRunGroup& group : groups) {
      const bool upward = group.Direction == detail::TRunGroup::TDirection::diUp;
      for (int32_t i = 1; i <= 40; ++i) {
        const int32_t row = upward ? 41 - i : i;
        for (const uint32_t member : group.Runs) {
          const TCellId id = TCellId::Of(runs.Run(member).Sheet, runs.Run(member).Col, row);
          if (runs.FindRun(id.Sheet(), id.Col(), row) == member && reached.count(id))
            position.emplace(id, static_cast<int>(position.size()));
        }
      }
    }
    for (const TCellId id : keys) {
      for (const TCellId reader : plain.GetDependents(id)) {
        if (!position.count(reader)) continue;
        EXPECT_LT(position[id], position[reader]) << "round " << round;
      }
    }
  }
  EXPECT_GT(ordered, 100);  // the test must see both outcomes
}

/// The groups in their order, with the rows of their runs.
std::string DumpOrder(const TDependencyRuns& ARuns, const detail::TAffectedRuns& AAffected) {
  std::vector<detail::TRunGroup> groups;
  if (!AAffected.Order(groups)) return "none";
  std::string text;
  for (const detail::TRunGroup& group : groups) {
    text += "direction " + std::to_string(static_cast<int>(group.Direction));
    for (const uint32_t run : group.Runs) {
      text += ", column " + std::to_string(ARuns.Run(run).Col);
      for (const TRowSpan& span : AAffected.RowsOf(run))
        text += " " + std::to_string(span.First) + "-" + std::to_string(span.Last);
    }
    text += "\n";
  }
  return text;
}

TEST(AffectedRuns, AllAtOnceAreThoseAddedOneByOne) {
  std::mt19937 random(78);
  int unlinked = 0;
  for (int round = 0; round < 600; ++round) {
    TDependencyRuns runs;
    test::TPlainGraph plain;
    for (int step = round % 8; step >= 0; --step) AddRandomRun(random, runs, plain);
    detail::TAffectedRuns all(runs);
    detail::TAffectedRuns each(runs);
    ASSERT_TRUE(all.AddAll());
    for (uint32_t run = 0; run < runs.RunLimit(); ++run) {
      if (runs.Run(run).Rows.IsEmpty()) continue;
      ASSERT_TRUE(each.Add(run, runs.Run(run).Rows));
    }
    const std::string expected = DumpOrder(runs, each);
    ASSERT_EQ(DumpOrder(runs, all), expected) << "round " << round;
    unlinked += expected.find("direction 1") == expected.npos && expected.find("direction 2") == expected.npos;
  }
  EXPECT_GT(unlinked, 100);
}

}  // namespace
}  // namespace tessarine
