#include <algorithm>
#include <cstdio>
#include <functional>
#include <map>
#include <string>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

void SetCellNumber(TWorksheet& ASheet, int32_t ACol, int32_t ARow, double ANumber) {
  ASheet.SetValue({ACol, ARow}, TCellValue::FromNumber(ANumber));
}

void SetCellText(TWorksheet& ASheet, int32_t ACol, int32_t ARow, const std::string& AText) {
  ASheet.SetValue({ACol, ARow}, TCellValue::FromText(TText::FromUtf8(AText)));
}

void SetCellFormula(TWorksheet& ASheet, int32_t ACol, int32_t ARow, const std::string& AText) {
  ASheet.SetValue({ACol, ARow}, TCellValue::FromFormula(TText::FromUtf8(AText)));
}

std::string ShownAt(const TWorksheet& ASheet, int32_t ACol, int32_t ARow) {
  return ASheet.GetEffectiveValue({ACol, ARow}).ToDisplayString().ToUtf8();
}

void AddResult(TRun& ARun, const char* AOperation, int64_t ASize, double AMilliseconds, bool ACheck) {
  ARun.Results.push_back({AOperation, ASize, AMilliseconds, {}, PeakMegabytes(), ACheck});
}

/// A number of at most seven digits before its point under "#,##0.00".
std::string Grouped(double ANumber) {
  char buffer[40];
  std::snprintf(buffer, sizeof buffer, "%.2f", ANumber);
  std::string text = buffer;
  for (size_t place = text.size() - 3; place > 3; place -= 3) text.insert(place - 3, 1, ',');
  return text;
}

/// The formula of a row and what it must show.
struct TTextCase {
  std::string Formula;
  std::string Shown;
};

/// The sheet's five blocks of rows have one function each.
TTextCase TextCaseOf(int32_t ARow, int32_t ARows) {
  const TMixedRow row = MixedRow(ARow);
  const std::string number = std::to_string(ARow);
  std::string slashes = row.F;
  std::replace(slashes.begin(), slashes.end(), '-', '/');
  switch (int64_t{ARow - 1} * 5 / ARows) {
    case 0: return {"=LEFT(F" + number + ",3)", row.F.substr(0, 3)};
    case 1: return {"=SUBSTITUTE(F" + number + ",\"-\",\"/\")", slashes};
    case 2: return {"=TEXT(B" + number + ",\"#,##0.00\")", Grouped(row.B)};
    case 3: return {"=SEARCH(\"-\",F" + number + ")", std::to_string(row.F.find('-') + 1)};
    default: return {"=REGEXEXTRACT(F" + number + ",\"[0-9]+$\")", number};
  }
}

}  // namespace

void MeasureQuery(TRun& ARun) {
  const int32_t rows = ARun.Rows(100000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  std::map<std::string, std::pair<double, int>, std::greater<>> groups;
  for (int32_t i = 1; i <= rows; ++i) {
    const TMixedRow row = MixedRow(i);
    const double numbers[] = {row.A, row.B, row.C};
    const std::string* const texts[] = {&row.D, &row.E, &row.F};
    for (int32_t k = 0; k < 3; ++k) {
      SetCellNumber(sheet, 1 + k, i, numbers[k]);
      SetCellText(sheet, 4 + k, i, *texts[k]);
    }
    SetCellNumber(sheet, 7, i, row.G);
    SetCellNumber(sheet, 8, i, row.K);
    if (row.C <= 50) continue;
    groups[row.D].first += row.B;
    ++groups[row.D].second;
  }
  SetCellFormula(sheet, 12, 1,
                 "=QUERY(A1:H" + std::to_string(rows) +
                     ",\"select D, sum(B), count(A) where C > 50 group by D order by D desc\",0)");
  TFormulaEvaluator evaluator(book);
  const double time = MedianMilliseconds([&] { evaluator.RecalculateAll(); });
  bool isRight = true;
  int32_t line = 1;
  for (const auto& [name, group] : groups) {
    isRight = isRight && ShownAt(sheet, 12, line) == name &&
              sheet.GetEffectiveValue({13, line}) == TCellValue::FromNumber(group.first) &&
              sheet.GetEffectiveValue({14, line}) == TCellValue::FromNumber(group.second);
    ++line;
  }
  AddResult(ARun, "query", rows, time, isRight && ShownAt(sheet, 12, line).empty());
}

void MeasureTextFunctions(TRun& ARun) {
  const int32_t rows = ARun.Rows(500000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t i = 1; i <= rows; ++i) {
    const TMixedRow row = MixedRow(i);
    SetCellNumber(sheet, 2, i, row.B);
    SetCellText(sheet, 6, i, row.F);
    SetCellFormula(sheet, 8, i, TextCaseOf(i, rows).Formula);
  }
  TFormulaEvaluator evaluator(book);
  const double time = MedianMilliseconds([&] { evaluator.RecalculateAll(); });
  bool isRight = true;
  for (int32_t i = 1; i <= rows; ++i) isRight = isRight && ShownAt(sheet, 8, i) == TextCaseOf(i, rows).Shown;
  AddResult(ARun, "full", rows, time, isRight);
}

}  // namespace tessarine::bench
