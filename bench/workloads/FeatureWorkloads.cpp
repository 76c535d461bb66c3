#include <algorithm>
#include <string>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/features/AutoFiltering.h>
#include <tessarine/features/Fill.h>
#include <tessarine/features/Sorting.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

constexpr int32_t kRows = 1000000;

std::string GroupName(uint32_t ANumber) {
  std::string name = "group 00";
  name[6] = static_cast<char>('0' + ANumber / 10);
  name[7] = static_cast<char>('0' + ANumber % 10);
  return name;
}

bool ContainsAl(std::string AText) {
  std::transform(AText.begin(), AText.end(), AText.begin(),
                 [](char AUnit) { return AUnit >= 'A' && AUnit <= 'Z' ? static_cast<char>(AUnit + 32) : AUnit; });
  return AText.find("al") != std::string::npos;
}

}  // namespace

void MeasureAutoFilter(TRun& ARun) {
  const int32_t rows = ARun.Rows(kRows);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  std::vector<TText> groups;
  for (uint32_t i = 0; i < 5; ++i) groups.push_back(TText::FromUtf8(GroupName(i)));
  std::vector<TText> amounts;
  for (int i = 0; i < 100; ++i) amounts.push_back(TCellValue::FromNumber(i / 8.0).ToDisplayString());
  for (int32_t col = 3; col <= 6; ++col) sheet.SetValue({col, 1}, TCellValue::FromText(u"Head"));
  int32_t expected = 0;
  for (int32_t i = 1; i <= rows; ++i) {
    const TMixedRow row = MixedRow(i);
    sheet.SetValue({3, i + 1}, TCellValue::FromNumber(row.C));
    sheet.SetValue({4, i + 1}, TCellValue::FromText(TText::FromUtf8(row.D)));
    sheet.SetValue({5, i + 1}, TCellValue::FromText(TText::FromUtf8(row.E)));
    sheet.SetValue({6, i + 1}, TCellValue::FromText(TText::FromUtf8(row.F)));
    expected += row.C < 12.5 && row.D < "group 05" && ContainsAl(row.F) ? 1 : 0;
  }
  sheet.AutoFilter().Enable({1, 1, 10, rows + 1});
  sheet.AutoFilter().SetColumnValues(4, groups, false);
  sheet.AutoFilter().SetColumnValues(3, amounts, false);
  sheet.AutoFilter().SetColumnContains(6, u"al", false);
  const double time = MedianMilliseconds([&] { ApplyAutoFilter(sheet, &book.StyleSheet()); },
                                         [&] {
                                           for (int32_t row = 2; row <= rows + 1; ++row)
                                             sheet.Sizing().SetRowHidden(row, false);
                                         });
  int32_t shown = 0;
  for (int32_t row = 2; row <= rows + 1; ++row) shown += sheet.Sizing().IsRowHidden(row) ? 0 : 1;
  ARun.Results.push_back({"apply", rows, time, {}, PeakMegabytes(), shown == expected});
}

void MeasureConditionalFormats(TRun& ARun) {
  constexpr int32_t kCols = 10;
  constexpr int32_t kRules = 200;
  const int32_t rows = ARun.Rows(100000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const auto numberAt = [](int32_t ACol, int32_t ARow) {
    return Hash(static_cast<uint32_t>(ARow), static_cast<uint32_t>(ACol)) % 1000;
  };
  for (int32_t row = 1; row <= rows; ++row)
    for (int32_t col = 1; col <= kCols; ++col) sheet.SetValue({col, row}, TCellValue::FromNumber(numberAt(col, row)));
  for (int32_t i = 0; i < kRules; ++i) {
    const int32_t first = i % kCols + 1;
    TConditionalFormatRule rule;
    rule.Ranges = {{first, 1 + i, std::min(kCols, first + 3), rows}};
    rule.Operator = i % 2 == 0 ? cfoGreaterThan : cfoBetween;
    rule.Formula1 = TCellValue::FromNumber(i * 5).ToDisplayString();
    rule.Formula2 = TCellValue::FromNumber(i * 5 + 50).ToDisplayString();
    rule.HasFill = true;
    rule.Fill = TCellFillInfo::Solid(TColorRef::FromARGB(kOpaqueBlack | static_cast<uint32_t>(i)));
    sheet.ConditionalFormats().AddRule(std::move(rule));
  }
  const int32_t top = rows / 2;
  const int32_t bottom = top + 5000 / kCols - 1;
  uint64_t colors = 0;
  const double time = MedianMilliseconds([&] {
    colors = 0;
    for (int32_t row = top; row <= bottom; ++row)
      for (int32_t col = 1; col <= kCols; ++col)
        colors += sheet.ResolveFormat({col, row}, &book.StyleSheet()).Fill.ForegroundColor.ARGB;
  });
  uint64_t expected = 0;
  for (int32_t row = top; row <= bottom; ++row) {
    for (int32_t col = 1; col <= kCols; ++col) {
      TCellFormat format = book.StyleSheet().GetCellXf(0);
      const double number = numberAt(col, row);
      sheet.ConditionalFormats().EvaluatePlain(col, row, {}, true, number, format);
      expected += format.Fill.ForegroundColor.ARGB;
    }
  }
  ARun.Results.push_back({"visible", 5000, time, {}, PeakMegabytes(), colors == expected});
}

void MeasureSort(TRun& ARun) {
  const int32_t rows = ARun.Rows(kRows);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  const auto groupOf = [](int32_t ARow) { return Hash(static_cast<uint32_t>(ARow), 53) % 50; };
  const auto numberOf = [](int32_t ARow) { return Hash(static_cast<uint32_t>(ARow), 211) % 1000; };
  std::vector<TText> groups;  // shared by their cells, as after a file was read
  for (uint32_t i = 0; i < 50; ++i) groups.push_back(TText::FromUtf8(GroupName(i)));
  for (int32_t row = 1; row <= rows; ++row) {
    sheet.SetValue({1, row}, TCellValue::FromText(groups[groupOf(row)]));
    sheet.SetValue({2, row}, TCellValue::FromNumber(numberOf(row)));
  }
  const TSheetSortKey keys[] = {{1, true}, {2, true}};
  const std::string range = "A1:B" + std::to_string(rows);
  const double time = MedianMilliseconds([&] { TessarineSortRange(&book, &sheet, range, false, keys); },
                                         [&] {
                                           book.UndoManager().Undo();
                                           book.UndoManager().Clear();
                                         });
  std::vector<uint32_t> order;
  for (int32_t row = 1; row <= rows; ++row) order.push_back(groupOf(row) * 1000 + numberOf(row));
  std::sort(order.begin(), order.end());
  bool check = true;
  for (int32_t row = 1; row <= rows; ++row) {
    const uint32_t wanted = order[static_cast<size_t>(row - 1)];
    check = check && sheet.EffectiveView(2, row).Number == wanted % 1000 &&
            sheet.GetEffectiveValue({1, row}).Text.ToUtf8() == GroupName(wanted / 1000);
  }
  ARun.Results.push_back({"sort", rows, time, {}, PeakMegabytes(), check});
}

void MeasureFill(TRun& ARun) {
  const int32_t cells = ARun.Rows(static_cast<int32_t>(kMaxFillCells));
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  sheet.SetValue({1, 1}, TCellValue::FromNumber(1));
  sheet.SetValue({1, 2}, TCellValue::FromNumber(1.5));
  const auto fill = [&] { TessarineApplyFill(&book, 0, &sheet, {1, 1, 1, 2}, {1, 1, 1, cells}, false, u"Fill"); };
  const auto undo = [&] { book.UndoManager().Undo(); };
  const double fillTime = MedianMilliseconds(fill, [&] {
    undo();
    book.UndoManager().Clear();
  });
  const bool filled = sheet.EffectiveView(1, cells).Number == 1 + (cells - 1) * 0.5;
  ARun.Results.push_back({"fill", cells, fillTime, {}, PeakMegabytes(), filled});
  undo();
  const double undoTime = MedianMilliseconds(undo, fill);
  ARun.Results.push_back({"undo", cells, undoTime, {}, PeakMegabytes(), !sheet.HasCell({1, 3})});
}

}  // namespace tessarine::bench
