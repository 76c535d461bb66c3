#include <gtest/gtest.h>

#include <initializer_list>
#include <limits>
#include <map>
#include <memory>
#include <string>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/undo/DrawingCommands.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

std::unique_ptr<TSheetDrawing> Named(const char* AName) {
  auto drawing = std::make_unique<TSheetDrawing>();
  drawing->Name = TText::FromUtf8(AName);
  return drawing;
}

std::string NamesOf(const TSheetDrawingList& ADrawings) {
  std::string names;
  for (int32_t i = 0; i < ADrawings.Count(); ++i) names += ADrawings.GetItem(i)->Name.ToUtf8();
  return names;
}

TEST(Drawings, PixelsAndEmuConvertAndStayInBounds) {
  EXPECT_EQ(EmuToPixels(914400, 96), 96.0f);
  EXPECT_EQ(EmuToPixels(914400, 0), 96.0f);
  EXPECT_EQ(EmuToPixels(-9525, 96), -1.0f);
  EXPECT_EQ(PixelsToEmu(1, 96), 9525);
  EXPECT_EQ(PixelsToEmu(1, -3), 9525);
  EXPECT_EQ(PixelsToEmu(1, 7), 130629);
  EXPECT_EQ(PixelsToEmu(std::numeric_limits<float>::infinity(), 96), std::numeric_limits<int64_t>::max());
  EXPECT_EQ(PixelsToEmu(-3e38f, 96), std::numeric_limits<int64_t>::min());
  EXPECT_EQ(PixelsToEmu(std::numeric_limits<float>::quiet_NaN(), 96), 0);
}

/// The lines of a drawing after an edit, which is that of rows or of columns.
std::string EditedLines(const test::TCase& ACase, bool ARows) {
  const std::map<std::string, TDrawingAnchorKind> kinds = {
      {"two cells", dakTwoCell}, {"one cell", dakOneCell}, {"none", dakAbsolute}};
  const int32_t from = ACase.Int(2), to = ACase.Int(3);
  const int64_t start = ACase.Integer(4), count = ACase.Integer(5);
  TSheetDrawingList drawings;
  drawings.Add(Named("a"));
  drawings.GetItem(0)->Anchor = {kinds.at(ACase[1]), from, from, 7, 7, to, to, 8, 8, 0, 0, 0, 0};
  if (ACase[0] == "shift") {
    ARows ? drawings.ShiftRows(start, count) : drawings.ShiftColumns(start, count);
  } else {
    const int64_t dest = ACase.Integer(6);
    ARows ? drawings.MoveRows(start, count, dest) : drawings.MoveColumns(start, count, dest);
  }
  const TSheetDrawing* left = drawings.GetItem(0);
  if (!left) return "gone";
  const TDrawingAnchor& now = left->Anchor;
  EXPECT_EQ(ARows ? now.FromCol : now.FromRow, from) << ACase.Place();
  EXPECT_EQ(now.FromRowOffEmu + now.ToColOffEmu, 15) << ACase.Place();
  return std::to_string(ARows ? now.FromRow : now.FromCol) + "-" + std::to_string(ARows ? now.ToRow : now.ToCol);
}

TEST(Drawings, AnchorsFollowInsertedDeletedAndMovedLines) {
  const auto edited = [](const test::TCase& ACase) {
    EXPECT_EQ(EditedLines(ACase, false), EditedLines(ACase, true)) << ACase.Place();
    return EditedLines(ACase, true);
  };
  test::ExpectCases("core/drawing_anchors.tsv", {{"shift", edited}, {"move", edited}});
}

TEST(Drawings, TheBagGoesWithTheLastDeletedDrawingOnly) {
  const std::byte part[] = {std::byte{1}};
  TSheetDrawingList drawings;
  drawings.Bag().SetDrawingPart(u"xl/drawings/drawing1.xml", part);
  drawings.Bag().AddPart(u"", part);
  EXPECT_TRUE(drawings.Bag().Parts().empty());
  for (const char* name : {"b", "c"}) drawings.Add(Named(name));
  drawings.Add(nullptr);
  drawings.Insert(-4, Named("a"));
  drawings.Insert(99, Named("d"));
  drawings.Insert(1, nullptr);
  EXPECT_EQ(NamesOf(drawings), "abcd");
  drawings.Delete(4);
  drawings.Delete(-1);
  EXPECT_EQ(drawings.Extract(7), nullptr);
  drawings.Delete(1);
  EXPECT_EQ(NamesOf(drawings), "acd");
  drawings.ShiftRows(1, -5);
  EXPECT_EQ(drawings.Count(), 0);
  EXPECT_TRUE(drawings.Bag().HasDrawing());
  drawings.Add(Named("e"));
  drawings.Extract(0);
  EXPECT_TRUE(drawings.Bag().HasDrawing());
  drawings.Add(Named("f"));
  drawings.Delete(0);
  EXPECT_FALSE(drawings.Bag().HasDrawing());
}

TEST(Drawings, ChartReferencesAreRewrittenInAllGroups) {
  TSheetDrawingList drawings;
  drawings.Add(Named("chart"));
  TSheetChartSeries series;
  series.ValuesFormula = u"Data!$B$2:$B$10";
  series.CategoriesFormula = u"='Other one'!A2:A4";
  series.XValuesFormula = u"(Data!$A$1,Data!$A$5)";
  TSheetDrawing& chart = *drawings.GetItem(0);
  chart.SetSeries({series});
  chart.SetSubplots({{sctLine, false, false, {series}}});
  const std::unique_ptr<TSheetDrawing> copy = chart.Clone();
  EXPECT_EQ(*copy, chart);
  drawings.AdjustFormulas(u"data", false, true, 3, 2);
  drawings.AdjustFormulasForMove(u"Other one", false, false, 1, 1, 3);
  for (const TSheetChartSeries& now : {chart.Series[0], chart.Subplots[0].Series[0]}) {
    EXPECT_EQ(now.ValuesFormula.ToUtf8(), "data!$B$2:$B$12");
    EXPECT_EQ(now.CategoriesFormula.ToUtf8(), "='Other one'!C2:C4");
    EXPECT_EQ(now.XValuesFormula.ToUtf8(), "(data!$A$1,data!$A$7)");
    EXPECT_TRUE(now.SizesFormula.IsEmpty());
  }
  EXPECT_EQ(copy->Series[0], series);
}

TEST(DrawingCommands, DoAndTakeBackAndFindTheirDrawing) {
  TWorkbook workbook;
  TSheetDrawingList& drawings = workbook.GetSheet(0)->Drawings();
  TDrawingAddCommand add(workbook, 0, Named("a"));
  add.Execute();
  EXPECT_TRUE(workbook.IsModified());
  drawings.Insert(0, Named("b"));
  TDrawingDeleteCommand remove(workbook, 0, 0);
  TDrawingTitleCommand title(workbook, 0, 1, u"", u"Sales", u"a", u"x");
  TDrawingLegendCommand legend(workbook, 0, 1, clpBottom, clpLeft, true, true);
  TDrawingAnchor moved;
  moved.FromCol = 9;
  TDrawingAnchorCommand anchor(workbook, 0, 1, {}, moved, false);
  for (IUndoCommand* command : std::initializer_list<IUndoCommand*>{&title, &legend, &anchor, &remove})
    command->Execute();
  EXPECT_EQ(NamesOf(drawings), "x");
  const TSheetDrawing& drawing = *drawings.GetItem(0);
  EXPECT_EQ(drawing.Title, u"Sales");
  EXPECT_EQ(drawing.LegendPos, clpLeft);
  EXPECT_EQ(drawing.Anchor, moved);
  for (IUndoCommand* command : std::initializer_list<IUndoCommand*>{&remove, &anchor, &legend, &title}) command->Undo();
  EXPECT_EQ(drawing, *Named("a"));
  EXPECT_EQ(NamesOf(drawings), "ba");
  add.Undo();  // it stands behind another one meanwhile
  EXPECT_EQ(NamesOf(drawings), "b");
  drawings.Add(Named("c"));
  add.Execute();
  EXPECT_EQ(NamesOf(drawings), "bac");
  EXPECT_EQ(legend.Description(), u"Move legend");
  EXPECT_EQ(TDrawingLegendCommand(workbook, 0, 0, clpTop, clpLeft, true, false).Description(), u"Toggle legend");

  workbook.ClearModified();
  TDrawingDeleteCommand none(workbook, 0, 7);
  TDrawingAddCommand nowhere(workbook, 5, Named("d"));
  for (IUndoCommand* command : std::initializer_list<IUndoCommand*>{&none, &nowhere}) {
    command->Execute();
    command->Undo();
  }
  EXPECT_FALSE(workbook.IsModified());
}

}  // namespace
}  // namespace tessarine
