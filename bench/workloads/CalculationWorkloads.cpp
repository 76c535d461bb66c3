#include <chrono>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>

#include "Workload.h"
#include "WorkloadData.h"

namespace tessarine::bench {

namespace {

std::u16string Digits(int64_t ANumber) {
  const std::string text = std::to_string(ANumber);
  return {text.begin(), text.end()};
}

void SetNumber(TWorksheet& ASheet, int32_t ACol, int32_t ARow, double ANumber) {
  ASheet.SetValue({ACol, ARow}, TCellValue::FromNumber(ANumber));
}

void SetText(TWorksheet& ASheet, int32_t ACol, int32_t ARow, std::u16string_view AText) {
  ASheet.SetValue({ACol, ARow}, TCellValue::FromText(AText));
}

void SetFormula(TWorksheet& ASheet, int32_t ACol, int32_t ARow, std::u16string_view AText) {
  ASheet.SetValue({ACol, ARow}, TCellValue::FromFormula(AText));
}

double NumberAt(const TWorksheet& ASheet, int32_t ACol, int32_t ARow) {
  const TCellValue value = ASheet.GetEffectiveValue({ACol, ARow});
  return value.Kind == cvkNumber ? value.Number : -1;
}

bool Near(double ALeft, double ARight) {
  const double size = ARight < 0 ? -ARight : ARight;
  const double distance = ALeft < ARight ? ARight - ALeft : ALeft - ARight;
  return distance <= 1e-9 * (size < 1 ? 1 : size);
}

void Report(TRun& ARun, const char* AOperation, int64_t ASize, double AMilliseconds, bool ACheck) {
  ARun.Results.push_back({AOperation, ASize, AMilliseconds, {}, PeakMegabytes(), ACheck});
}

/// Measures a full recalculation and an edit of one cell that alternates between two numbers.
void MeasureFullAndEdit(TRun& ARun, TWorkbook& ABook, int64_t ASize, TCellAddress AEdited, double AFirst,
                        double ASecond, const std::function<bool(double)>& ACheck) {
  TWorksheet& sheet = *ABook.GetSheet(0);
  TFormulaEvaluator evaluator(ABook);
  const double full = MedianMilliseconds([&] { evaluator.RecalculateAll(); });
  Report(ARun, "full", ASize, full, ACheck(AFirst));
  bool flip = false;
  const double edit = MedianMilliseconds([&] { evaluator.NotifyCellChanged(0, AEdited.Col, AEdited.Row); },
                                         [&] {
                                           flip = !flip;
                                           SetNumber(sheet, AEdited.Col, AEdited.Row, flip ? ASecond : AFirst);
                                         });
  Report(ARun, "edit", ASize, edit, ACheck(flip ? ASecond : AFirst));
}

}  // namespace

void MeasureChain(TRun& ARun) {
  const int32_t rows = ARun.Rows(500000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  double expected = 0;
  for (int32_t i = 1; i <= rows; ++i) {
    SetNumber(sheet, 1, i, ColumnA(i));
    SetFormula(sheet, 2, i, i == 1 ? u"=A1" : u"=B" + Digits(i - 1) + u"+A" + Digits(i) + u"*2");
    if (i > 1) expected += 2 * ColumnA(i);
  }
  MeasureFullAndEdit(ARun, book, rows, {1, 1}, ColumnA(1), 1234.5,
                     [&](double AFirst) { return Near(NumberAt(sheet, 2, rows), AFirst + expected); });
}

void MeasureRunningSums(TRun& ARun) {
  const int32_t rows = ARun.Rows(10000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  double expected = 0;
  for (int32_t i = 1; i <= rows; ++i) {
    SetNumber(sheet, 1, i, ColumnA(i));
    SetFormula(sheet, 2, i, u"=SUM(A$1:A" + Digits(i) + u")");
    if (i > 1) expected += ColumnA(i);
  }
  MeasureFullAndEdit(ARun, book, rows, {1, 1}, ColumnA(1), 1234.5,
                     [&](double AFirst) { return Near(NumberAt(sheet, 2, rows), AFirst + expected); });
}

void MeasureLookups(TRun& ARun) {
  const int32_t rows = ARun.Rows(50000);
  for (const bool texts : {false, true}) {
    TWorkbook book;
    TWorksheet& sheet = *book.GetSheet(0);
    double expected = 0;
    const auto setKey = [&](int32_t ACol, int32_t ARow, int32_t AIndex) {
      if (texts)
        SetText(sheet, ACol, ARow, LookupTextKey(AIndex));
      else
        SetNumber(sheet, ACol, ARow, LookupKey(AIndex));
    };
    for (int32_t i = 1; i <= rows; ++i) {
      setKey(1, i, i);
      SetNumber(sheet, 2, i, i);
      setKey(4, i, LookupHit(i, rows));
      SetFormula(sheet, 5, i, u"=VLOOKUP(D" + Digits(i) + u",A$1:B$" + Digits(rows) + u",2,FALSE)");
      expected += LookupHit(i, rows);
    }
    SetFormula(sheet, 7, 1, u"=SUM(E1:E" + Digits(rows) + u")");
    TFormulaEvaluator evaluator(book);
    const double full = MedianMilliseconds([&] { evaluator.RecalculateAll(); });
    Report(ARun, texts ? "text" : "full", rows, full, Near(NumberAt(sheet, 7, 1), expected));
    if (texts) continue;
    int32_t hits = 0;
    for (int32_t i = 1; i <= rows; ++i) hits += LookupHit(i, rows) == 1;
    bool flip = false;
    const double edit = MedianMilliseconds([&] { evaluator.NotifyCellChanged(0, 2, 1); },
                                           [&] {
                                             flip = !flip;
                                             SetNumber(sheet, 2, 1, flip ? 1001 : 1);
                                           });
    Report(ARun, "edit", rows, edit, Near(NumberAt(sheet, 7, 1), expected + (flip ? 1000.0 * hits : 0)));
  }
}

void MeasureConditionalSums(TRun& ARun) {
  const int32_t rows = ARun.Rows(100000);
  const int32_t questions = ARun.Rows(20000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t i = 1; i <= rows; ++i) {
    const TSumRow row = SumRow(i);
    SetText(sheet, 1, i, Category(row.Category));
    SetNumber(sheet, 2, i, row.Level);
    SetNumber(sheet, 3, i, row.Amount);
  }
  const std::u16string end = Digits(rows);
  for (int32_t i = 1; i <= questions; ++i) {
    const TSumRow question = SumQuestion(i);
    SetText(sheet, 5, i, Category(question.Category));
    SetNumber(sheet, 6, i, question.Level);
    SetFormula(sheet, 7, i,
               u"=SUMIFS(C$1:C$" + end + u",A$1:A$" + end + u",E" + Digits(i) + u",B$1:B$" + end + u",\">\"&F" +
                   Digits(i) + u")");
  }
  const auto expected = [&](int32_t AQuestion, double AFirstAmount) {
    const TSumRow question = SumQuestion(AQuestion);
    double sum = 0;
    for (int32_t i = 1; i <= rows; ++i) {
      const TSumRow row = SumRow(i);
      if (row.Category == question.Category && row.Level > question.Level) sum += i == 1 ? AFirstAmount : row.Amount;
    }
    return sum;
  };
  const auto check = [&](double AFirstAmount) {
    for (int32_t i = 1; i <= questions; i += 1 + questions / 50) {
      if (!Near(NumberAt(sheet, 7, i), expected(i, AFirstAmount))) return false;
    }
    return true;
  };
  MeasureFullAndEdit(ARun, book, questions, {3, 1}, SumRow(1).Amount, 77.25, check);
}

void MeasureFilledDown(TRun& ARun) {
  const int32_t rows = ARun.Rows(1000000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  double expected = 0;
  std::vector<std::u16string> texts;
  for (int32_t i = 1; i <= rows; ++i) {
    SetNumber(sheet, 1, i, ColumnA(i));
    texts.push_back(u"=A" + Digits(i) + u"*2+1");
    expected += ColumnA(i) * 2 + 1;
  }
  const double parse = MedianMilliseconds(
      [&] {
        for (int32_t i = 1; i <= rows; ++i) SetFormula(sheet, 2, i, texts[static_cast<size_t>(i - 1)]);
      },
      [&] {
        for (int32_t i = 1; i <= rows; ++i) sheet.ClearCell({2, i});
      });
  TFormulaEvaluator evaluator(book);
  const double full = MedianMilliseconds([&] { evaluator.RecalculateAll(); });
  double sum = 0;
  for (int32_t i = 1; i <= rows; ++i) sum += NumberAt(sheet, 2, i);
  Report(ARun, "parse", rows, parse, Near(sum, expected));
  Report(ARun, "full", rows, full, Near(sum, expected));
}

void MeasureSmallEdit(TRun& ARun) {
  constexpr int kEdits = 1000;
  const int32_t rows = ARun.Rows(1000000);
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  for (int32_t i = 1; i <= rows; ++i) {
    SetNumber(sheet, 1, i, ColumnA(i));
    SetFormula(sheet, 2, i, u"=A" + Digits(i) + u"*2+1");
  }
  for (int32_t i = 1; i <= 10; ++i) SetFormula(sheet, 4, i, u"=$A$1+" + Digits(i));
  TFormulaEvaluator evaluator(book);
  evaluator.RecalculateAll();
  double last = 0;
  const double edits = MedianMilliseconds([&] {
    for (int i = 0; i < kEdits; ++i) {
      last = i + 0.5;
      SetNumber(sheet, 1, 1, last);
      evaluator.NotifyCellChanged(0, 1, 1);
    }
  });
  Report(ARun, "edit", rows, edits / kEdits,
         NumberAt(sheet, 4, 10) == last + 10 && NumberAt(sheet, 2, 1) == last * 2 + 1);
}

}  // namespace tessarine::bench
