#include <gtest/gtest.h>

#include <random>
#include <stop_token>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

#include "../support/FailingFileLayer.h"
#include "../support/TemporaryFolder.h"
#include "../support/Thrown.h"
#include "CsvSupport.h"

using namespace tessarine;
using namespace tessarine::test;

namespace {

const TCsvExportOptions kNoMark{.Utf8Bom = false};

std::string Exported(const TWorkbook& ABook, const TCellRange& ARange, const TCsvExportOptions& AOptions = kNoMark) {
  TMemoryWriteStream stream;
  TCsvIO::ExportRange(ABook, ABook.GetSheet(0), stream, ARange, AOptions);
  return TextOf(stream);
}

/// The file cell by cell, by the display texts alone.
std::string ExportedPlain(const TWorkbook& ABook, const TCellRange& ARange, char16_t ADelimiter) {
  std::u16string text;
  for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) {
    for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) {
      if (col > ARange.StartCol) text += ADelimiter;
      text += TCsvIO::EscapeCsvField(ABook.GetSheet(0)->GetDisplayText({col, row}, &ABook.StyleSheet()), ADelimiter);
    }
    text += u'\n';
  }
  return Utf16ToUtf8(text);
}

void SetText(TWorkbook& ABook, TCellAddress AAddress, std::u16string_view AText) {
  ABook.GetSheet(0)->SetValue(AAddress, TCellValue::FromText(TText(AText)));
}

}  // namespace

TEST(CsvExport, QuotesWhatNeedsQuotes) {
  const struct {
    const char16_t* Value;
    char16_t Delimiter;
    const char16_t* Field;
  } cases[] = {
      {u"", u',', u""},
      {u"a b", u',', u"a b"},
      {u"a,b", u',', u"\"a,b\""},
      {u"a,b", u';', u"a,b"},
      {u"a;b", u';', u"\"a;b\""},
      {u"a\"b", u',', u"\"a\"\"b\""},
      {u"\"", u',', u"\"\"\"\""},
      {u"a\nb", u',', u"\"a\nb\""},
      {u"a\rb", u',', u"\"a\rb\""},
      {u"a\tb", u',', u"a\tb"},
      {u"\u00E9\"", u',', u"\"\u00E9\"\"\""},
  };
  for (const auto& row : cases) EXPECT_EQ(TCsvIO::EscapeCsvField(row.Value, row.Delimiter), row.Field);
}

TEST(CsvExport, FileNamePartsKeepLettersDigitsAndBlanks) {
  const struct {
    const char16_t* Text;
    const char16_t* Part;
  } cases[] = {
      {u"Q1/Q2", u"Q1_Q2"},
      {u"  a-b_c 9 ", u"a-b_c 9"},
      {u"", u"Sheet"},
      {u"   ", u"Sheet"},
      {u"../x", u"___x"},
      {u"Gr\u00F6\u00DFe", u"Gr\u00F6\u00DFe"},
      {u"\u65E5\u672C", u"\u65E5\u672C"},
      {u"a\u2013b", u"a_b"},
      {u"\U0001F600", u"__"},
      {u"a\u00A0b\u00D7c", u"a_b_c"},
      {u"\u0416\u0437", u"\u0416\u0437"},
  };
  for (const auto& row : cases) EXPECT_EQ(TCsvIO::SanitizeFileNamePart(row.Text), row.Part) << Utf16ToUtf8(row.Text);
}

TEST(CsvExport, WritesWhatTheCellsShow) {
  TWorkbook book;
  TWorksheet& sheet = *book.GetSheet(0);
  TCellFormat percent;
  percent.NumberFormat = u"0.0%";
  TCell cell;
  cell.Value = TCellValue::FromNumber(0.125);
  cell.StyleIndex = book.StyleSheet().AddCellXf(percent);
  sheet.SetCell({1, 1}, cell);
  SetText(book, {2, 1}, u"a\"b,\nc");
  sheet.SetValue({3, 1}, TCellValue::FromBoolean(true));
  sheet.SetValue({1, 3}, TCellValue::FromFormula(u"A1*2"));
  sheet.SetValue({2, 3}, TCellValue::FromError(ceDiv0));
  sheet.SetValue({3, 3}, TCellValue::FromNumber(1.2e20));
  EXPECT_EQ(Exported(book, {1, 1, 3, 3}), "12.5%,\"a\"\"b,\nc\",TRUE\n,,\n=A1*2,#DIV/0!,1.2E+0020\n");
  EXPECT_EQ(Exported(book, {3, 3, 2, 2}), ",\n#DIV/0!,1.2E+0020\n") << "corners in any order";
  EXPECT_EQ(Exported(book, {1, 1, 1, 1}, {}),
            "\xEF\xBB\xBF"
            "12.5%\n");
  EXPECT_EQ(Exported(book, {0, 1, 1, 1}), "");
  EXPECT_EQ(Exported(book, {1, 1, 1, kMaxRow + 1}), "");
  TMemoryWriteStream stream;
  TCsvIO::ExportRange(book, nullptr, stream, {1, 1, 1, 1}, {});
  TCsvIO::ExportSheet(book, stream, 5);
  EXPECT_TRUE(stream.Bytes().empty());
  TCsvIO::ExportSheet(book, stream, 0);
  EXPECT_EQ(TextOf(stream), "\xEF\xBB\xBF" + Exported(book, {1, 1, 3, 3}));
}

TEST(CsvExport, AgreesWithTheDisplayTextsCellByCell) {
  std::mt19937 random(11);
  constexpr std::u16string_view kTexts[] = {u"plain",        u"a,b",        u"say \"x\"", u"",
                                            u"\u00E9\u00E8", u"two\nlines", u"1;2"};
  for (int round = 0; round < 60; ++round) {
    TWorkbook book;
    TWorksheet& sheet = *book.GetSheet(0);
    TCellFormat format;
    format.NumberFormat = round % 2 == 0 ? u"#,##0.00" : u"General";
    const int32_t style = book.StyleSheet().AddCellXf(format);
    for (int i = 0; i < 120; ++i) {
      TCell cell;
      switch (random() % 5) {
        case 0: cell.Value = TCellValue::FromNumber((static_cast<double>(random()) - 2e9) / 128); break;
        case 1: cell.Value = TCellValue::FromNumber(static_cast<double>(random()) * 1e-17); break;
        case 2: cell.Value = TCellValue::FromText(TText(kTexts[random() % std::size(kTexts)])); break;
        case 3: cell.Value = TCellValue::FromNumber(random() % 3); break;
        default: cell.StyleIndex = style; break;  // a blank that has a format
      }
      if (random() % 2 == 0) cell.StyleIndex = random() % 4 == 0 ? 99 : style;
      sheet.SetCell({static_cast<int32_t>(1 + random() % 12), static_cast<int32_t>(1 + random() % 300)}, cell);
    }
    for (int i = 0; i < round % 4; ++i) {
      std::vector<TCellValue> values(12);
      for (TCellValue& value : values) value = TCellValue::FromNumber(random() % 100 / 8.0);
      sheet.Spills().SetSpill(static_cast<int32_t>(1 + random() % 12), static_cast<int32_t>(1 + random() % 300), 4, 3,
                              std::move(values));
    }
    TSheetViewOptions view;
    view.ShowZeros = round % 3 != 0;
    sheet.SetView(view);
    const TCellRange range{static_cast<int32_t>(1 + random() % 3), static_cast<int32_t>(1 + random() % 9), 14, 305};
    const char16_t delimiter = u",;.-1"[random() % 5];
    ASSERT_EQ(Exported(book, range, {.Delimiter = delimiter, .Utf8Bom = false}), ExportedPlain(book, range, delimiter))
        << round;
  }
}

TEST(CsvExport, FollowsTheHostsLocale) {
  TWorkbook book;
  book.GetSheet(0)->SetValue({1, 1}, TCellValue::FromNumber(1.5));
  TFormatSettings settings;
  settings.DecimalSeparator = u',';
  SetDefaultFormatSettings(settings);
  const std::string text = Exported(book, {1, 1, 2, 1});
  SetDefaultFormatSettings({});
  EXPECT_EQ(text, "\"1,5\",\n");
}

TEST(CsvExport, ASparseSheetIsWrittenWithItsEmptyRows) {
  TWorkbook book;
  SetText(book, {3, kMaxRow}, u"end");
  const std::string text = Exported(book, {1, 1, 3, kMaxRow});
  EXPECT_EQ(text.size(), static_cast<size_t>(kMaxRow) * 3 + 3);
  EXPECT_EQ(text.substr(text.size() - 9), ",,\n,,end\n");
}

TEST(CsvExport, WholeWorkbooksBecomeAFileForEveryVisibleSheet) {
  TTemporaryFolder folder;
  TWorkbook book;
  SetText(book, {1, 1}, u"one");
  const auto add = [&](const char* AName, const char16_t* AText) {
    TWorksheet& sheet = book.AddSheet(AName);
    sheet.SetValue({1, 1}, TCellValue::FromText(AText));
    return &sheet;
  };
  add("Q1/Q2", u"two");
  add("q1_q2", u"three");
  add("Secret", u"four")->SetVisibility(svHidden);
  TCsvExportOptions options = kNoMark;
  options.What = pwEntireWorkbook;
  TCsvIO::ExportWithOptions(book, folder.Path("out.v1.txt"), options, 0);
  EXPECT_EQ(ContentOf(folder.Path("out.v1.csv")), "one\n");
  EXPECT_EQ(ContentOf(folder.Path("out.v1_Q1_Q2.csv")), "two\n");
  EXPECT_EQ(ContentOf(folder.Path("out.v1_q1_q2_2.csv")), "three\n");
  EXPECT_EQ(ContentOf(folder.Path("out.v1_Secret.csv")), "(missing)");

  options.What = pwSelection;
  options.Selection = {1, 1, 2, 2};
  TCsvIO::ExportWithOptions(book, folder.Path("selected"), options, 1);
  EXPECT_EQ(ContentOf(folder.Path("selected.csv")), "two,\n,\n");
  EXPECT_THROW(TCsvIO::ExportWithOptions(book, folder.Path("none"), options, 9), EArgument);
}

TEST(CsvExport, SavingEndsTheModifiedStateAndAFailureKeepsTheOldFile) {
  TTemporaryFolder folder;
  const std::string file = folder.Path("t.csv");
  TWorkbook book;
  SetText(book, {1, 1}, u"new");
  ASSERT_TRUE(book.IsModified());
  TCsvIO::SaveToFile(book, file, 0);
  EXPECT_EQ(ContentOf(file), "\xEF\xBB\xBFnew\n");
  EXPECT_FALSE(book.IsModified());

  SetText(book, {1, 1}, u"newer");
  {
    TFailingFileLayer probe;
    TCsvIO::SaveToFile(book, folder.Path("probe.csv"), 0);
    for (size_t call = 0; call < probe.Calls().size(); ++call) {
      if (probe.Calls()[call] != "write") continue;
      book.MarkModified();
      TFailingFileLayer failing(call);
      EXPECT_THROW(TCsvIO::SaveToFile(book, file, 0), EFileAccess);
      EXPECT_TRUE(book.IsModified());
    }
  }
  EXPECT_EQ(ContentOf(file), "\xEF\xBB\xBFnew\n");
}

TEST(CsvExport, AStopEndsTheExport) {
  TWorkbook book;
  SetText(book, {1, 500'000}, u"end");
  std::stop_source stop;
  TCsvExportOptions options;
  options.Control.Stop = stop.get_token();
  options.Control.Progress = [&](const TTessarineProgressEvent& AEvent) {
    if (AEvent.Fraction > 0.5) stop.request_stop();
  };
  EXPECT_THROW(Exported(book, {1, 1, 1, 500'000}, options), ECancelled);
}

TEST(CsvExport, WhatWasWrittenReadsBackWithTheOptions) {
  TWorkbook book;
  const std::u16string_view texts[] = {u"a\"b", u"two\nlines", u"x,y", u"\"", u" blank ", u"\u00E9"};
  int32_t row = 0;
  for (const auto text : texts) SetText(book, {1, ++row}, text);
  TMemoryWriteStream stream;
  TCsvIO::ExportSheet(book, stream, 0);
  TWorkbook read;
  TMemoryReadStream source(stream.Bytes());
  TCsvIO::ImportWithOptions(read, source, 0, {.Delimiter = u','});
  EXPECT_EQ(Dump(*read.GetSheet(0)), Dump(*book.GetSheet(0)));
}

TEST(CsvExport, TextThatReadsAsAFormulaCanBeDefused) {
  const struct {
    TCellValue Value;
    const char* Field;
  } cases[] = {
      {TCellValue::FromText(u"=1+2"), "'=1+2"},
      {TCellValue::FromText(u"+4 apples"), "'+4 apples"},
      {TCellValue::FromText(u"-x"), "'-x"},
      {TCellValue::FromText(u"@SUM(1)"), "'@SUM(1)"},
      {TCellValue::FromText(u"\t=1"), "'\t=1"},
      {TCellValue::FromText(u"\r=1,2"), "\"'\r=1,2\""},
      {TCellValue::FromText(u"a=1"), "a=1"},
      {TCellValue::FromText(u""), ""},
      {TCellValue::FromNumber(-7), "-7"},
      {TCellValue::FromNumber(-1e300), "-1E+0300"},
      {TCellValue::FromFormula(u"=B1"), "'=B1"},
      {TCellValue::FromBoolean(true), "TRUE"},
      {TCellValue::FromText(u"=\"a\""), "\"'=\"\"a\"\"\""},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    book.GetSheet(0)->SetValue({1, 1}, row.Value);
    EXPECT_EQ(Exported(book, {1, 1, 1, 1}, {.Utf8Bom = false, .DefuseFormulas = true}), std::string(row.Field) + "\n");
    EXPECT_EQ(Exported(book, {1, 1, 1, 1}), ExportedPlain(book, {1, 1, 1, 1}, u','));
  }
}
