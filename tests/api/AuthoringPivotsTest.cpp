#include <gtest/gtest.h>

#include <functional>
#include <string>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/OlapConnections.h>
#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/features/pivot/PivotCharts.h>
#include <tessarine/features/pivot/PivotEngine.h>
#include <tessarine/platform/Unicode.h>

#include "ApiFixture.h"

namespace tessarine {
namespace {

using testing::FailureOf;
using testing::TApiFixture;

/// Records on the first sheet, and a second one for the reports.
class TSalesFixture : public TApiFixture {
 public:
  TSalesFixture() {
    Cells("A1:D5").SetValues({{"Region", "Product", "Sales", "Cost"},
                              {"North", "Tea", 1, 10},
                              {"South", "Tea", 2, 20},
                              {"North", "Milk", 4, 40},
                              {"West", "Milk", 8, 80}});
    Book().AddWorksheet("Out");
  }

  TAuthoringSheet Out() { return Api(1); }

  TPivotTable& AddPivot(std::initializer_list<std::pair<const char*, TPivotFieldRole>> AFields) {
    TPivotTable& table = Out().AddPivotTable("P", "Sheet1!A1:D5", "B3");
    for (const auto& [name, role] : AFields) Out().AddPivotField("P", name, role);
    Out().RefreshPivotTable("p");
    return table;
  }
};

/// "title: category=value ..." of each series.
std::string Plot(const TSheetDrawing& AChart) {
  std::string text;
  for (const TSheetChartSeries& series : AChart.Series) {
    text += (text.empty() ? "" : "; ") + series.Title.ToUtf8() + ":";
    for (size_t point = 0; point < series.Values.size(); ++point)
      text += " " + series.Categories[point].ToUtf8() + "=" +
              TCellValue::FromNumber(series.Values[point]).ToDisplayString().ToUtf8();
  }
  return text;
}

TEST(AuthoringPivots, MistakesRaiseTheirMessageAndChangeNothing) {
  TSalesFixture book;
  const TAuthoringSheet sheet = book.Out();
  sheet.AddPivotTable("Known", "Sheet1!A1:D5", "A1");
  TPivotTable& orphan = sheet.AddPivotTable("Orphan", "Sheet1!A1:D5", "A1");
  orphan.CacheId = 99;
  sheet.AddPivotField("Known", "Sales", pfrValue);
  book.Workbook.ClearModified();
  const struct {
    std::function<void()> Work;
    const char* Message;
  } cases[] = {
      {[&] { sheet.AddPivotTable("", "A1:x", "A1"); }, "argument: Invalid range: A1:x"},
      {[&] { sheet.AddPivotTable("", "Sheet1!A1:x", "A1"); }, "argument: Invalid range: Sheet1!A1:x"},
      {[&] { sheet.AddPivotTable("", "No!A1:B2", "A1"); }, "argument: Sheet not found: No"},
      {[&] { sheet.AddPivotTable("", "A1:B2", "A0"); }, "argument: Invalid cell address: A0"},
      {[&] { sheet.AddPivotTable("KNOWN", "A1:B2", "A1"); }, "argument: PivotTable name already exists: KNOWN"},
      {[&] { sheet.AddPivotTableMulti("", {}, "A1"); }, "argument: Invalid range: "},
      {[&] {
         sheet.AddPivotTableMulti("", {u"A1:B2", u"?"}, "A1");
       },
       "argument: Invalid range: ?"},
      {[&] { sheet.AddPivotTableOlap("", "cube", "A1"); }, "argument: OLAP connection not found: cube"},
      {[&] { sheet.AddPivotField("X", "Sales", pfrRow); }, "argument: PivotTable not found: X"},
      {[&] { sheet.AddPivotField("Known", "Salez", pfrRow); }, "argument: Field not found: Salez"},
      {[&] { sheet.AddPivotField("Orphan", "Sales", pfrRow); }, "state: Pivot cache missing"},
      {[&] { sheet.RefreshPivotTable("X"); }, "argument: PivotTable not found: X"},
      {[&] { sheet.DeletePivotTable("X"); }, "argument: PivotTable not found: X"},
      {[&] { sheet.AddPivotChart("X"); }, "argument: PivotTable not found: X"},
      {[&] { sheet.AddPivotChart("Known"); }, "state: Refresh the PivotTable before adding a PivotChart"},
      {[&] { sheet.SetPivotFieldShowAs("Known", 1, psaRank); }, "argument: Value field index out of range"},
      {[&] { sheet.SetPivotFieldShowAs("Known", -1, psaRank); }, "argument: Value field index out of range"},
      {[&] { sheet.AddPivotCalculatedField("Orphan", "F", "Sales*2"); }, "state: Pivot cache missing"},
      {[&] { sheet.AddSlicer("", "Known", "Region", "x"); }, "argument: Invalid cell address: x"},
      {[&] { sheet.AddSlicer("", "Known", "x", "A1"); }, "argument: Field not found: x"},
      {[&] { sheet.AddTimeline("", "Orphan", "x", "A1"); }, "state: Pivot cache missing"},
      {[&] { sheet.SetSlicerSelection("S", {}); }, "argument: Slicer not found: S"},
      {[&] { sheet.ToggleSlicerItem("S", "x"); }, "argument: Slicer not found: S"},
      {[&] { sheet.ClearSlicerSelection("S"); }, "argument: Slicer not found: S"},
  };
  for (const auto& row : cases) EXPECT_EQ(FailureOf(row.Work), row.Message);
  EXPECT_FALSE(book.Workbook.IsModified());
  EXPECT_EQ(book.Workbook.PivotCaches().Count(), 2U);
  EXPECT_EQ(book.Sheet(1).Pivots().Count(), 2U);
}

TEST(AuthoringPivots, AreDefinedFirstAndWriteWhenRefreshed) {
  TSalesFixture book;
  const TAuthoringSheet sheet = book.Out();
  TPivotTable& table = sheet.AddPivotTable("", "'Sheet1'!$A$1:$D$5", "B3");
  EXPECT_EQ(table.Name, u"PivotTable1");
  sheet.AddPivotField("pivottable1", "REGION", pfrRow);
  sheet.AddPivotField("PivotTable1", "Sales", pfrValue, paMax);
  sheet.AddPivotCalculatedField("PivotTable1", "Margin", "Cost-Sales");
  sheet.SetPivotFieldShowAs("PivotTable1", 1, psaPercentOfGrand);
  EXPECT_EQ(book.Show("Out!B3"), "_") << "not refreshed";
  sheet.RefreshPivotTable("PivotTable1");
  EXPECT_EQ(book.Show("Out!B3 Out!C3 Out!D3"), "'Row Labels' 'Max of Sales' 'Sum of Margin'");
  EXPECT_EQ(book.Show("Out!B4 Out!C4 Out!C7"), "'North' 4 14");
  EXPECT_EQ(book.Show("Out!D7"), "1");
  EXPECT_EQ(sheet.AddPivotTable("", "A1:B2", "Z1").Name, u"PivotTable2");

  sheet.DeletePivotTable("PivotTable1");
  EXPECT_EQ(book.Show("Out!B3 Out!C4 Out!D7"), "_ _ _");
  EXPECT_FALSE(book.Sheet(1).HasCell({2, 3}));
  EXPECT_EQ(book.Workbook.PivotCaches().Count(), 1U) << "its cache went along";
}

TEST(AuthoringPivots, ConsolidateRangesAndReadConnections) {
  TSalesFixture book;
  const TAuthoringSheet sheet = book.Out();
  const TPivotTable& multi = sheet.AddPivotTableMulti("M", {u"Sheet1!B1:C3", u"Sheet1!$B$1:$C$2"}, "A1");
  const TPivotCache& cache = *book.Workbook.PivotCaches().FindById(multi.CacheId);
  EXPECT_EQ(cache.RecordCount(), 3U);
  EXPECT_EQ(cache.FieldNames().back(), u"Value");
  TOlapConnection& cube = sheet.AddOlapConnection("Cube");
  EXPECT_EQ(&sheet.AddOlapConnection("CUBE"), &cube);
  cube.SetMockMembers(u"Set", {u"a", u"b"});
  cube.SetMockMeasure(u"a", 5);
  EXPECT_EQ(book.Workbook.PivotCaches().FindById(sheet.AddPivotTableOlap("O", "cube", "A9").CacheId)->RecordCount(),
            2U);
}

TEST(AuthoringPivots, SlicersNarrowTheTablesTheyDrive) {
  TSalesFixture book;
  const TPivotTable& table = book.AddPivot({{"Product", pfrRow}, {"Sales", pfrValue}});
  const TAuthoringSheet sheet = book.Out();
  const TSheetSlicer& slicer = sheet.AddSlicer(" ", "P", "region", "G2");
  EXPECT_EQ(slicer.Name, u"Region");
  EXPECT_EQ(slicer.PivotNames, std::vector<TText>{table.Name});
  EXPECT_EQ(sheet.AddTimeline("When", "P", "Cost", "H2", stlYears).Kind, skTimeline);
  const auto total = [&] { return book.Show("Out!C4"); };  // of tea
  EXPECT_EQ(total(), "3");
  sheet.SetSlicerSelection("REGION", {u"north"});
  EXPECT_EQ(total(), "1");
  sheet.ToggleSlicerItem("Region", "South");
  EXPECT_EQ(total(), "3");
  sheet.ToggleSlicerItem("Region", "North");
  EXPECT_EQ(total(), "2");
  sheet.ClearSlicerSelection("Region");
  EXPECT_EQ(total(), "3");
  sheet.DeletePivotTable("P");
  EXPECT_TRUE(slicer.PivotNames.empty());
  EXPECT_EQ(book.Workbook.PivotCaches().Count(), 1U) << "the slicers still read it";
}

TEST(AuthoringPivots, ChartsShowValuesWithoutTotalsAndFollowTheTable) {
  const struct {
    std::initializer_list<std::pair<const char*, TPivotFieldRole>> Fields;
    TPivotLayoutForm Form;
    const char* Plot;
  } cases[] = {
      {{{"Region", pfrRow}, {"Sales", pfrValue}}, plfCompact, "Sum of Sales: North=5 South=2 West=8"},
      {{{"Sales", pfrValue}}, plfCompact, "Sum of Sales: =15"},
      {{{"Region", pfrRow}, {"Product", pfrColumn}, {"Sales", pfrValue}},
       plfCompact,
       "Tea: North=1 South=2 West=0; Milk: North=4 South=0 West=8"},
      {{{"Product", pfrColumn}, {"Sales", pfrValue}, {"Cost", pfrValue}},
       plfCompact,
       "Tea - Sum of Sales: =3; Tea - Sum of Cost: =30; Milk - Sum of Sales: =12; Milk - Sum of Cost: =120"},
      {{{"Product", pfrRow}, {"Region", pfrRow}, {"Sales", pfrValue}},
       plfCompact,
       "Sum of Sales: North=1 South=2 North=4 West=8"},
      {{{"Product", pfrRow}, {"Region", pfrRow}, {"Sales", pfrValue}},
       plfTabular,
       "Sum of Sales: Tea North=1 Tea South=2 Milk North=4 Milk West=8"},
  };
  for (const auto& row : cases) {
    TSalesFixture book;
    book.AddPivot(row.Fields).LayoutForm = row.Form;
    book.Out().RefreshPivotTable("P");
    TSheetDrawing& chart = book.Out().AddPivotChart("P", "J2");
    EXPECT_EQ(Plot(chart), row.Plot);
    EXPECT_EQ(chart.LinkedPivotName, u"P");
  }

  TSalesFixture book;
  book.AddPivot({{"Region", pfrRow}, {"Sales", pfrValue}});
  TSheetDrawing& chart = book.Out().AddPivotChart("P");
  chart.Series[0].Style.Smooth = true;
  TSheetDrawing& elsewhere = book.Api(0).AddChart("", sctBar, std::vector<TSheetChartSeries>());
  elsewhere.LinkedPivotName = u"p";
  book.Cell("C5").SetValue(100);
  book.Out().RefreshPivotTable("P");
  EXPECT_EQ(Plot(chart), "Sum of Sales: North=5 South=2 West=100");
  EXPECT_EQ(Plot(elsewhere), Plot(chart)) << "linked from a sheet without a table of that name";
  EXPECT_TRUE(chart.Series[0].Style.Smooth);
  TPivotEngine::SetChartSync(nullptr);
  book.Cell("C5").SetValue(1);
  book.Out().RefreshPivotTable("P");
  EXPECT_EQ(chart.Series[0].Values.back(), 100);
  TPivotEngine::SetChartSync(&RebuildPivotCharts);
}

}  // namespace
}  // namespace tessarine
