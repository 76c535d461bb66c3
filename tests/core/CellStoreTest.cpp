#include <tessarine/core/sheet/detail/CellStore.h>

#include <algorithm>
#include <limits>
#include <map>
#include <memory>
#include <random>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/sheet/detail/StoreHistory.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {
namespace {

constexpr TCellRange kWholeSheet{1, 1, kMaxCol, kMaxRow};

TCell CellOf(const TCellValue& AValue, int32_t AStyleIndex = 0) {
  TCell cell;
  cell.Value = AValue;
  cell.StyleIndex = AStyleIndex;
  return cell;
}

/// Every tile's counts and every flag, held against what the slots say.
void ExpectSound(const TCellStore& AStore) {
  size_t cells = 0;
  size_t formulas = 0;
  size_t uncached = 0;
  for (int32_t col = 1; col <= AStore.ColumnLimit(); ++col) {
    int32_t last = -1;
    AStore.ForEachTile(col, [&](const TTile& ATile, int32_t AIndex) {
      ASSERT_EQ(AStore.FindTile(col, AIndex), &ATile);
      last = AIndex;
      uint32_t rank = 0;
      uint32_t numbers = 0;
      uint32_t records = 0;
      for (uint32_t row = 0; row < kTileRows; ++row) {
        if (!ATile.Has(row)) continue;
        ASSERT_EQ(ATile.Rank(row), rank);
        const TCellSlot& slot = ATile.Slots()[rank++];
        numbers += slot.Kind == cvkNumber;
        records += slot.Kind == cvkFormula;
        const TCellExtras* extras = AStore.FindExtras(col, AIndex * kTileRows + static_cast<int32_t>(row) + 1);
        ASSERT_EQ(slot.HasExtras(), extras != nullptr);
        if (slot.Kind != cvkFormula) continue;
        const TFormulaRecord& record = AStore.Record(slot.Record);
        EXPECT_GT(record.Template->RefCount(), 0u);
        uncached += record.HasCached() ? 0 : 1;
        EXPECT_EQ((record.Flags & TFormulaRecord::frSparkline) != 0, extras && extras->Sparkline);
      }
      ASSERT_EQ(ATile.Count, rank);
      ASSERT_GT(rank, 0u);
      ASSERT_LE(rank, ATile.Capacity);
      ASSERT_EQ(ATile.NumberCount, numbers);
      ASSERT_EQ(ATile.FormulaCount, records);
      cells += rank;
      formulas += records;
    });
    ASSERT_EQ(AStore.TileLimit(col), last + 1);
  }
  EXPECT_EQ(AStore.CellCount(), cells);
  EXPECT_EQ(AStore.FormulaCount(), formulas);
  EXPECT_EQ(AStore.UncachedCount(), uncached);
}

/// Random cells of every kind, with and without what stands in the side table.
class TRandomCells {
 public:
  explicit TRandomCells(unsigned ASeed) : FRandom(ASeed) {}

  uint32_t Below(uint32_t ALimit) { return static_cast<uint32_t>(FRandom() % ALimit); }

  std::pair<int32_t, int32_t> Place() {
    static constexpr int32_t cols[] = {1, 2, 3, 27, 703, kMaxCol};
    const auto col = cols[Below(std::size(cols))];
    switch (Below(4)) {
      case 0: return {col, kMaxRow - static_cast<int32_t>(Below(300))};
      case 1: return {col, 8000 + static_cast<int32_t>(Below(700))};
      case 2: return {col, 1 + static_cast<int32_t>(Below(kMaxRow))};
      default: return {col, 1 + static_cast<int32_t>(Below(600))};
    }
  }

  TCellValue Value(bool AFormulas) {
    static const char16_t* const formulas[] = {u"", u"=A1", u"=$B$2*2", u"=SUM(A1:B9)", u"= a1 ", u"no sign"};
    switch (Below(AFormulas ? 7 : 6)) {
      case 0: return TCellValue::Empty();
      case 1: return TCellValue::FromNumber(static_cast<double>(Below(1000)) / 8);
      case 2: return TCellValue::FromText(Below(3) == 0 ? u"" : u"text " + Utf8ToUtf16(std::to_string(Below(50))));
      case 3: return TCellValue::FromBoolean(Below(2) == 0);
      case 4: return TCellValue::FromError(static_cast<TCellErrorCode>(Below(10)));
      case 5: return TCellValue::FromNumber(-1e300);
      default: {
        TCellValue value;
        value.Kind = cvkFormula;
        value.Text = formulas[Below(std::size(formulas))];
        return value;
      }
    }
  }

  TCell Cell() {
    static constexpr int32_t styles[] = {0, 0, 0, 1, -7, 1000000, std::numeric_limits<int32_t>::min()};
    TCell cell = CellOf(Value(true), styles[Below(std::size(styles))]);
    if (cell.Value.Kind == cvkFormula ? Below(2) == 0 : Below(12) == 0) {
      cell.HasCachedValue = true;
      cell.CachedValue = Value(true);
    }
    if (Below(12) == 0) {
      cell.HasFormatOverride = true;
      cell.FormatOverride.Font.Bold = Below(2) == 0;
      cell.FormatOverride.Fill.PatternType = static_cast<int32_t>(Below(3));
    }
    if (Below(15) == 0) cell.RichText = {{u"bold", {}}, {u" plain", {}}};
    if (Below(15) == 0) {
      cell.Sparkline.Kind = Below(2) == 0 ? spkLine : spkNone;
      cell.Sparkline.Color = 0xFF0000FF;
      cell.Sparkline.Values = {1, 2, 3};
    }
    return cell;
  }

 private:
  std::mt19937_64 FRandom;
};

TEST(CellStore, BehavesAsADictionaryOfCells) {
  TFormulaPool pool;
  {
    TCellStore store(pool);
    std::map<std::pair<int32_t, int32_t>, TCell> judge;
    TRandomCells random(7);
    for (int step = 0; step < 60000; ++step) {
      const auto place = random.Place();
      const auto [col, row] = place;
      switch (random.Below(10)) {
        case 0:
        case 1:
        case 2:
          store.Remove(col, row);
          judge.erase(place);
          break;
        case 3: {
          const TCellValue value = random.Value(true);
          const auto style = static_cast<int32_t>(random.Below(3));
          store.SetValue(col, row, value, style);
          judge.erase(place);
          if (!CellOf(value, style).IsEmpty()) judge[place] = CellOf(value, style);
          break;
        }
        case 4: {
          TFormulaRecord* record = store.FindRecord(col, row);
          const auto found = judge.find(place);
          ASSERT_EQ(record != nullptr, found != judge.end() && found->second.Value.Kind == cvkFormula);
          if (!record) break;
          const TCellValue result = random.Value(true);
          store.SetCached(col, *record, result);
          found->second.SetCachedResult(result);
          break;
        }
        case 5: {
          const int32_t end = std::min(row + static_cast<int32_t>(random.Below(3)), kMaxRow);
          const auto edit = [](TCellFormat& AFormat) { AFormat.Font.Italic = !AFormat.Font.Italic; };
          store.EditOverrides({col, row, col, end}, edit);
          for (int32_t each = row; each <= end; ++each) {
            TCell& cell = judge[{col, each}];
            cell.HasFormatOverride = true;
            edit(cell.FormatOverride);
          }
          break;
        }
        default: {
          const TCell cell = random.Cell();
          store.Set(col, row, cell);
          judge.erase(place);
          if (!cell.IsEmpty()) judge[place] = cell;
          break;
        }
      }
      const auto asked = random.Below(2) == 0 ? place : random.Place();
      const auto found = judge.find(asked);
      ASSERT_EQ(store.Get(asked.first, asked.second) == (found == judge.end() ? TCell() : found->second), true)
          << "step " << step << " at " << asked.first << ", " << asked.second;
      if (step % 20000 == 19999) {
        ExpectSound(store);
        store.Clear();
        judge.clear();
        ExpectSound(store);
      } else if (step % 3000 == 0) {
        ExpectSound(store);
        ASSERT_EQ(store.CellCount(), judge.size());
        auto next = judge.begin();
        store.ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
          ASSERT_NE(next, judge.end());
          ASSERT_EQ(next->first, std::make_pair(ACol, ARow));
          ASSERT_EQ(ASlot.Kind, next->second.Value.Kind);
          ++next;
        });
        ASSERT_EQ(next, judge.end());
      }
    }
  }
  EXPECT_EQ(pool.Count(), 0u);
}

TEST(CellStore, WalksARangeRowByRow) {
  TFormulaPool pool;
  TCellStore store(pool);
  TRandomCells random(11);
  std::set<std::pair<int32_t, int32_t>> judge;  // row, column
  for (int i = 0; i < 4000; ++i) {
    const auto [col, row] = random.Place();
    store.SetNumber(col, row, row, 0);
    judge.insert({row, col});
  }
  for (int32_t row = 200; row < 900; ++row) {
    store.SetNumber(5, row, row, 0);
    judge.insert({row, 5});
  }
  std::vector<TCellRange> ranges = {
      kWholeSheet, {1, 1, 1, 1}, {5, 256, 5, 257}, {1, 64, 6, 65}, {1, kMaxRow, kMaxCol, kMaxRow}};
  for (int i = 0; i < 300; ++i) {
    const auto [col, row] = random.Place();
    const auto [otherCol, otherRow] = random.Place();
    ranges.push_back(TCellRange{col, row, otherCol, otherRow}.Normalize());
  }
  for (const TCellRange& range : ranges) {
    std::vector<std::pair<int32_t, int32_t>> expected;
    for (const auto& [row, col] : judge) {
      if (range.Contains(col, row)) expected.emplace_back(row, col);
    }
    std::vector<std::pair<int32_t, int32_t>> visited;
    store.ForEachByRow(range, [&](int32_t ACol, int32_t ARow, const TCellSlot& ASlot) {
      EXPECT_EQ(ASlot.Number, ARow);
      visited.emplace_back(ARow, ACol);
    });
    EXPECT_EQ(visited, expected) << Utf16ToUtf8(range.ToA1());
  }
}

TEST(CellStore, GivesBackTextsAndTemplates) {
  TFormulaPool pool;
  const TText constant(u"constant");
  const TText cached(u"cached");
  const auto counts = [&] {
    return std::make_tuple(constant.Block()->RefCount.load(), cached.Block()->RefCount.load(), pool.Count());
  };
  const struct {
    const char* What;
    void (*Do)(TCellStore&);
  } cases[] = {
      {"removed", [](TCellStore& AStore) { AStore.Remove(1, 1), AStore.Remove(1, 2), AStore.Remove(1, 3); }},
      {"overwritten by numbers",
       [](TCellStore& AStore) {
         for (int32_t row = 1; row <= 3; ++row) AStore.SetNumber(1, row, 1, 0);
       }},
      {"overwritten by empty cells",
       [](TCellStore& AStore) {
         for (int32_t row = 1; row <= 3; ++row) AStore.Set(1, row, TCell());
       }},
      {"cleared", [](TCellStore& AStore) { AStore.Clear(); }},
  };
  for (const auto& row : cases) {
    TCellStore store(pool);
    store.SetText(1, 1, constant, 0);
    TCell formula = CellOf(TCellValue::FromFormula(u"=B1"));
    formula.SetCachedResult(TCellValue::FromText(cached));
    store.Set(1, 2, formula);
    TCell odd = CellOf(TCellValue::FromText(constant));
    odd.SetCachedResult(TCellValue::FromText(cached));
    store.Set(1, 3, odd);
    formula = odd = TCell();
    EXPECT_EQ(counts(), std::make_tuple(3u, 3u, size_t{1})) << row.What;
    row.Do(store);
    EXPECT_EQ(counts(), std::make_tuple(1u, 1u, size_t{0})) << row.What;
  }
  TCellStore store(pool);
  store.SetFormula(1, 1, u"=A9", 0);
  TFormulaRecord& record = *store.FindRecord(1, 1);
  store.SetCached(1, record, TCellValue::FromText(cached));
  store.SetCached(1, record, TCellValue::FromText(cached));
  EXPECT_EQ(cached.Block()->RefCount.load(), 2u);
  store.SetCachedNumber(1, record, 1);
  EXPECT_EQ(cached.Block()->RefCount.load(), 1u);
  store.SetCached(1, record, TCellValue::FromText(cached));
  store.ClearCached(1, record);
  EXPECT_EQ(cached.Block()->RefCount.load(), 1u);
  EXPECT_FALSE(store.Get(1, 1).HasCachedValue);
}

TEST(CellStore, KeepsTheRecordOfAFormulaThatTakesTheOldOnesPlace) {
  TFormulaPool pool;
  TCellStore store(pool);
  for (int32_t row = 1; row <= 10000; ++row) store.SetFormula(1, row, u"=B1", 0);
  TFormulaRecord& record = *store.FindRecord(1, 700);
  record.Flags |= TFormulaRecord::frVisiting;
  store.SetCachedNumber(1, record, 5);
  store.SetFormula(1, 700, u"=C1", 0);
  EXPECT_EQ(store.FindRecord(1, 700), &record);
  EXPECT_TRUE(record.IsVisiting());
  EXPECT_FALSE(record.HasCached());
  store.Remove(1, 700);
  store.SetFormula(2, 1, u"=C1", 0);
  EXPECT_EQ(store.FindRecord(2, 1), &record);  // a free record is used again
  EXPECT_FALSE(record.IsVisiting());
}

TEST(CellStore, TellsChangesByItsVersions) {
  TFormulaPool pool;
  TCellStore store(pool);
  store.SetFormula(1, 1, u"=B1", 0);
  TFormulaRecord& record = *store.FindRecord(1, 1);
  const TCell sameFormula = store.Get(1, 1);
  const struct {
    const char* What;
    void (*Do)(TCellStore&, TFormulaRecord&, const TCell&);
    bool Changes;
    bool FormulasChange;
  } cases[] = {
      {"number", [](auto& AStore, auto&, auto&) { AStore.SetNumber(2, 1, 1, 0); }, true, false},
      {"result", [](auto& AStore, auto& ARecord, auto&) { AStore.SetCachedNumber(1, ARecord, 1); }, true, false},
      {"no result", [](auto& AStore, auto& ARecord, auto&) { AStore.ClearCached(1, ARecord); }, true, false},
      {"the same formula", [](auto& AStore, auto&, auto& ACell) { AStore.Set(1, 1, ACell); }, true, true},
      {"another formula", [](auto& AStore, auto&, auto&) { AStore.SetFormula(1, 1, u"=B2", 0); }, true, true},
      {"a number instead", [](auto& AStore, auto&, auto&) { AStore.SetNumber(1, 1, 1, 0); }, true, true},
      {"a formula instead", [](auto& AStore, auto&, auto&) { AStore.SetFormula(1, 1, u"=B1", 0); }, true, true},
      {"nothing to remove", [](auto& AStore, auto&, auto&) { AStore.Remove(9, 9); }, false, false},
      {"removal of a number", [](auto& AStore, auto&, auto&) { AStore.Remove(2, 1); }, true, false},
      {"removal of a formula", [](auto& AStore, auto&, auto&) { AStore.Remove(1, 1); }, true, true},
      {"clearing", [](auto& AStore, auto&, auto&) { AStore.Clear(); }, true, false},
  };
  for (const auto& row : cases) {
    const uint64_t version = store.Version();
    const uint64_t formulaVersion = store.FormulaVersion();
    const uint64_t columns = store.ColumnVersion(1) + store.ColumnVersion(2);
    row.Do(store, record, sameFormula);
    EXPECT_EQ(store.ColumnVersion(1) + store.ColumnVersion(2) > columns, row.Changes) << row.What;
    EXPECT_EQ(store.Version() != version, row.Changes) << row.What;
    EXPECT_EQ(store.FormulaVersion() != formulaVersion, row.FormulasChange) << row.What;
  }
}

TEST(CellStore, SharesEqualFormatsAndNoOthers) {
  TFormulaPool pool;
  TCellStore store(pool);
  TCell cell;
  cell.HasFormatOverride = true;
  const auto overrideOf = [&](int32_t ARow) { return store.FindExtras(1, ARow)->Override; };
  for (int32_t row = 1; row <= 3; ++row) {
    cell.FormatOverride.Border.Left.Style = row == 3 ? blsThin : blsNone;  // no part of the quick comparison
    store.Set(1, row, cell);
  }
  EXPECT_EQ(overrideOf(1), overrideOf(2));
  EXPECT_NE(overrideOf(1), overrideOf(3));
  const std::weak_ptr<const TCellFormat> plain = overrideOf(1);
  store.Remove(1, 1);
  EXPECT_FALSE(plain.expired());
  store.SetNumber(1, 2, 1, 0);
  EXPECT_TRUE(plain.expired());
  EXPECT_EQ(store.Get(1, 3).FormatOverride.Border.Left.Style, blsThin);

  const std::weak_ptr<const TCellFormat> thin = overrideOf(3);
  const TStoreSnapshot before = store.Capture();
  store.EditOverrides({1, 2, 1, 4}, [](TCellFormat& AFormat) { AFormat.Border = {}; });
  EXPECT_TRUE(thin.expired());
  EXPECT_EQ(overrideOf(2), overrideOf(3));
  EXPECT_EQ(overrideOf(3), overrideOf(4));
  ASSERT_TRUE(store.ReturnTo(before));
  EXPECT_EQ(store.Get(1, 3).FormatOverride.Border.Left.Style, blsThin);
  EXPECT_EQ(store.CellCount(), 2u);
  EXPECT_FALSE(store.Get(1, 2).HasFormatOverride);
}

TEST(CellStore, NumbersTakeSixteenBytesAndAFraction) {
  TFormulaPool pool;
  {
    TCellStore dense(pool);
    for (int32_t row = 1; row <= 1'000'000; ++row) {
      for (int32_t col = 1; col <= 5; ++col) dense.SetNumber(col, row, row, 0);
    }
    EXPECT_LE(dense.BytesUsed(), dense.CellCount() * 17);
  }
  {
    TCellStore scattered(pool);
    std::mt19937 random(3);
    while (scattered.CellCount() < 1'000'000) {
      scattered.SetNumber(static_cast<int32_t>(random() % 1000 + 1), static_cast<int32_t>(random() % kMaxRow + 1), 1,
                          0);
    }
    EXPECT_LE(scattered.BytesUsed(), scattered.CellCount() * 110);
    // Emptied and filled anew, it lives in the memory that it has.
    const size_t before = scattered.BytesUsed();
    std::vector<std::pair<int32_t, int32_t>> places;
    scattered.ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot&) { places.emplace_back(ACol, ARow); });
    for (const auto& [col, row] : places) scattered.Remove(col, row);
    EXPECT_EQ(scattered.CellCount(), 0u);
    for (int32_t row = 1; row <= 200'000; ++row) {
      for (int32_t col = 1; col <= 5; ++col) scattered.SetNumber(col, row, row, 0);
    }
    EXPECT_LE(scattered.BytesUsed(), before + before / 3);
  }
}

TEST(CellStore, FewCellsTakeFewBytes) {
  TFormulaPool pool;
  TCellStore small(pool);
  small.SetNumber(1, 1, 1, 0);
  small.SetText(2, 1, u"x", 0);
  small.SetFormula(3, 1, u"=A1", 0);
  EXPECT_LE(small.BytesUsed(), 6000u);
  // A cell at the end of every column, and one at its start: nothing is paid for the million rows between.
  TCellStore corners(pool);
  for (int32_t col = 1; col <= kMaxCol; ++col) {
    corners.SetNumber(col, 1, 1, 0);
    corners.SetNumber(col, kMaxRow, 1, 0);
  }
  EXPECT_LE(corners.BytesUsed(), size_t{kMaxCol} * 2500);
  size_t visited = 0;
  corners.ForEachByRow(kWholeSheet, [&](int32_t, int32_t, const TCellSlot&) { ++visited; });
  EXPECT_EQ(visited, size_t{2} * kMaxCol);
}

TEST(CellStore, MillionFormattedCellsShareOneFormat) {
  TFormulaPool pool;
  TCellStore store(pool);
  TCell cell = CellOf(TCellValue::FromNumber(1));
  cell.HasFormatOverride = true;
  cell.FormatOverride.Font.Bold = true;
  for (int32_t row = 1; row <= 200'000; ++row) store.Set(1, row, cell);
  EXPECT_LE(store.BytesUsed(), store.CellCount() * 160);
}

TEST(CellStore, ColumnEndsWithItsLastCellHoweverFarTheOthersAre) {
  TFormulaPool pool;
  TCellStore store(pool);
  const int32_t rows[] = {1, 300, 8192, 8193, 500000, 524289, 1048320, kMaxRow};
  for (const int32_t row : rows) store.SetNumber(3, row, row, 0);
  const size_t bytes = store.BytesUsed();
  for (int round = 0; round < 100; ++round) {
    for (size_t left = std::size(rows); left > 0; --left) {
      EXPECT_EQ(store.TileLimit(3), (rows[left - 1] - 1) / kTileRows + 1);
      ExpectSound(store);
      store.Remove(3, rows[left - 1]);
    }
    EXPECT_EQ(store.TileLimit(3), 0);
    for (const int32_t row : rows) store.SetNumber(3, row + (row == 300 ? round : 0), row, 0);
    store.Remove(3, 300 + round);
    store.SetNumber(3, 300, 300, 0);
  }
  EXPECT_EQ(store.BytesUsed(), bytes);  // directory and tiles are used again
}

/// Cells written downward are appended, those written upward never are.
TEST(CellStore, HoldsTheSameInWhateverOrderItIsFilled) {
  TFormulaPool pool;
  for (unsigned seed = 1; seed <= 20; ++seed) {
    TRandomCells random(seed);
    std::map<std::pair<int32_t, int32_t>, TCellValue> cells;
    const uint32_t gap = 1 + random.Below(6);
    for (int32_t col = 1; col <= 3; ++col) {
      for (int32_t row = 1; row <= 1100; row += 1 + static_cast<int32_t>(random.Below(gap)))
        cells[{col, row}] = random.Value(true);
    }
    TCellStore down(pool), up(pool);
    for (const auto& [place, value] : cells) down.SetValue(place.first, place.second, value, 1);
    for (auto cell = cells.rbegin(); cell != cells.rend(); ++cell)
      up.SetValue(cell->first.first, cell->first.second, cell->second, 1);
    for (int i = 0; i < 100; ++i) {  // among and over the others, in both
      const auto row = static_cast<int32_t>(1 + random.Below(1200));
      const TCellValue value = random.Value(true);
      for (TCellStore* store : {&down, &up}) store->SetValue(2, row, value, 1);
      cells[{2, row}] = value;
    }
    for (TCellStore* store : {&down, &up}) {
      ExpectSound(*store);
      ASSERT_EQ(store->CellCount(), cells.size());
      for (const auto& [place, value] : cells)
        ASSERT_EQ(store->Get(place.first, place.second), CellOf(value, 1)) << seed << ": " << place.second;
    }
  }
}

TEST(CellStore, EmptiedTilesShrinkAndTakeCellsAgain) {
  TFormulaPool pool;
  TCellStore store(pool);
  std::vector<int32_t> rows(256);
  for (int32_t i = 0; i < 256; ++i) rows[static_cast<size_t>(i)] = i + 1;
  std::mt19937 random(5);
  for (int round = 0; round < 20; ++round) {
    std::shuffle(rows.begin(), rows.end(), random);
    for (const int32_t row : rows) store.SetNumber(1, row, row, 0);
    ExpectSound(store);
    std::shuffle(rows.begin(), rows.end(), random);
    const size_t kept = static_cast<size_t>(round) % 5;
    for (size_t i = kept; i < rows.size(); ++i) {
      store.Remove(1, rows[i]);
      if (i % 16 == 0) ExpectSound(store);
    }
    for (size_t i = 0; i < kept; ++i) EXPECT_EQ(store.Find(1, rows[i])->Number, rows[i]);
    EXPECT_EQ(store.CellCount(), kept);
    EXPECT_EQ(store.TileLimit(1), kept == 0 ? 0 : 1);
    if (kept != 0) {
      EXPECT_LE(store.FindTile(1, 0)->Capacity, 16);
    }
    for (const int32_t row : rows) store.Remove(1, row);
  }
}

}  // namespace
}  // namespace tessarine::detail
