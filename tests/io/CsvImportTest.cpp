#include <gtest/gtest.h>

#include <iterator>
#include <random>
#include <stop_token>
#include <string>

#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/values/DelimitedText.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Unicode.h>

#include "../support/TemporaryFolder.h"
#include "../support/Thrown.h"
#include "CsvSupport.h"

using namespace tessarine;
using namespace tessarine::test;

namespace {

std::string Imported(std::string_view AText) {
  TWorkbook book;
  TTrickleStream stream(AText, 5);
  TCsvIO::ImportSheet(book, stream, 0);
  return Dump(*book.GetSheet(0));
}

std::string ImportedWith(std::string_view AText, const TCsvImportOptions& AOptions) {
  TWorkbook book;
  TTrickleStream stream(AText, 5);
  TCsvIO::ImportWithOptions(book, stream, 0, AOptions);
  return Dump(*book.GetSheet(0));
}

std::string Joined(const std::vector<TText>& AFields) {
  std::string joined;
  for (const TText& field : AFields) joined += "[" + field.ToUtf8() + "]";
  return joined;
}

/// A text in UTF-16 with or without a mark.
std::string Utf16Bytes(std::u16string_view AText, bool AIsBigEndian) {
  std::string bytes;
  for (const char16_t unit : AText) {
    const char pair[2] = {static_cast<char>(unit >> 8), static_cast<char>(unit & 0xFF)};
    bytes += pair[AIsBigEndian ? 0 : 1];
    bytes += pair[AIsBigEndian ? 1 : 0];
  }
  return bytes;
}

}  // namespace

TEST(CsvLines, QuotesSwitchAndAreNeverKept) {
  const struct {
    const char16_t* Line;
    const char* Fields;
  } cases[] = {
      {u"a,\"b,c\",d", "[a][b,c][d]"},
      {u"\"a\"\"b\"", "[ab]"},
      {u"", "[]"},
      {u",", "[][]"},
      {u"a\"b,c\"d,e", "[ab,cd][e]"},
      {u"\"a,b", "[a,b]"},
      {u"a;b\t,c", "[a;b\t][c]"},
      {u"\u00E9,\"\"", "[\u00E9][]"},
  };
  for (const auto& row : cases) EXPECT_EQ(Joined(ParseCsvLine(row.Line)), row.Fields) << row.Fields;
  EXPECT_EQ(Joined(ParseDelimitedLine(u"a\u00A6b,c", u'\u00A6')), "[a][b,c]");
}

TEST(CsvLines, DelimiterIsATabOnlyWithMoreTabsThanCommas) {
  EXPECT_EQ(DetectTextDelimiter(u"a\tb\tc,d"), u'\t');
  EXPECT_EQ(DetectTextDelimiter(u"a\tb,c"), u',');
  EXPECT_EQ(DetectTextDelimiter(u"a;b;c"), u',');
  EXPECT_EQ(DetectTextDelimiter(u""), u',');
  EXPECT_EQ(DetectTextDelimiter(std::u16string(4096, u'x') + u"\t\t\t"), u',');
  EXPECT_EQ(DetectTextDelimiter(std::u16string(4095, u'x') + u"\t,,"), u'\t');
}

TEST(CsvLines, BodyEndsLinesAtEveryKindOfBreak) {
  const struct {
    const char16_t* Text;
    const char* Rows;
  } cases[] = {
      {u"", "none"},
      {u"a", "[a];"},
      {u"a\n", "[a];"},
      {u"a\r\nb\rc\nd", "[a];[b];[c];[d];"},
      {u"\n", "[];"},
      {u"\n\n", "[];[];"},
      {u"a\n\r\nb", "[a];[];[b];"},
      {u"\"a\nb\",c", "[a];[b,c];"},
  };
  for (const auto& row : cases) {
    const auto body = ParseDelimitedBody(row.Text, u',');
    std::string shown = body ? "" : "none";
    if (body) {
      for (const auto& line : *body) shown += Joined(line) + ";";
    }
    EXPECT_EQ(shown, row.Rows) << Utf16ToUtf8(row.Text);
  }
}

TEST(CsvImport, LinesBecomeRowsOfNumbersAndTexts) {
  const struct {
    std::string Text;
    const char* Dump;
  } cases[] = {
      {"1,a\n2.5,b\n", "1 'a'; 2.5 'b'"},
      {"a,\"b,c\",d", "'a' 'b,c' 'd'"},
      {"\"a\"\"b\"", "'ab'"},
      {"a\n\nb", "'a'; ''; 'b'"},
      {"a,,b", "'a' '' 'b'"},
      {"a\tb\tc", "'a\tb\tc'"},
      {"\"x\ny\",1", "'x'; 'y,1'"},
      {"1,5\r2\r\n3", "1 5; 2 _; 3 _"},
      {" 7 ,-1e3,+4,1E5x,0x10,TRUE,2020-01-02", "7 -1000 4 '1E5x' '0x10' 'TRUE' '2020-01-02'"},
      {"\xEF\xBB\xBF"
       "a,1",
       "'a' 1"},
      {"\xEF\xBB\xBF", "_"},
      {"\xFF\xFE" + Utf16Bytes(u"\u00E9,\U0001F600\r\n2", false), "'\u00E9' '\U0001F600'; 2 _"},
      {"\xFE\xFF" + Utf16Bytes(u"a,1", true) + "x", "'a' '1\uFFFD'"},
      {"a\xFF"
       "b,\xC3",
       "'a\uFFFD"
       "b' '\uFFFD'"},
      {"", "_"},
  };
  for (const auto& row : cases) EXPECT_EQ(Imported(row.Text), row.Dump) << row.Text;
}

TEST(CsvImport, ReplacesTheCellsOfOneSheetAndCountsAsAChange) {
  TWorkbook book;
  TWorksheet& first = *book.GetSheet(0);
  TWorksheet& second = book.AddSheet("Other");
  first.SetValue({7, 90}, TCellValue::FromNumber(1));
  second.SetValue({1, 1}, TCellValue::FromNumber(2));
  int modified = 0;
  book.SetOnModified([&](TWorkbook&) { ++modified; });
  book.ClearModified();
  TTrickleStream text("a,b\nc,d", 100);
  TCsvIO::ImportSheet(book, text, 0);
  EXPECT_EQ(first.GetCellAt(2, 2).Value.Text, u"d");
  EXPECT_FALSE(first.HasCell({7, 90}));
  EXPECT_EQ(Dump(first), "'a' 'b'; 'c' 'd'") << "what was beyond is gone from the used area too";
  EXPECT_EQ(Dump(second), "2");
  EXPECT_TRUE(book.IsModified());
  EXPECT_EQ(modified, 1);

  TTrickleStream again("a,b\nc,d", 100);
  TCsvIO::ImportWithOptions(book, again, 0, {});
  EXPECT_EQ(Dump(first), "'a' 'b'; 'c' 'd'");

  TTrickleStream more("x", 100);
  TCsvIO::ImportSheet(book, more, 9);
  ASSERT_EQ(book.SheetCount(), 3);
  EXPECT_EQ(book.GetSheet(2)->Name(), u"Sheet1");
  EXPECT_EQ(Dump(*book.GetSheet(2)), "'x'");
}

TEST(CsvImport, AHostsOwnHandlerSeesEveryCell) {
  TWorkbook book;
  std::string seen;
  book.GetSheet(0)->SetOnChange([&](TWorksheet&, TCellAddress AAddress, const TCell&, const TCell& ANew) {
    seen += Utf16ToUtf8(AAddress.ToA1()) + "=" + ANew.Value.ToDisplayString().ToUtf8() + " ";
  });
  TTrickleStream text("1,a\n2", 100);
  TCsvIO::ImportSheet(book, text, 0);
  EXPECT_EQ(seen, "A1=1 B1=a A2=2 ");
}

/// With a handler every cell is set by itself; without one, texts wait for one another on their way into the cells.
TEST(CsvImport, GivesTheSameSheetWithAndWithoutAHandler) {
  static const char* const fields[] = {"north",
                                       "south-west",
                                       "Stra\xc3\x9f"
                                       "e",
                                       "12.5",
                                       "\"a, b\"",
                                       "",
                                       "x"};
  std::mt19937 random(3);
  for (int round = 0; round < 60; ++round) {
    std::string text;
    const uint32_t kinds = 1 + random() % 300;
    for (uint32_t rows = random() % 200; rows > 0; --rows) {
      for (uint32_t cols = random() % 5; cols > 0; --cols) {
        const uint32_t pick = random() % 12;
        if (pick < std::size(fields))
          text += fields[pick];
        else if (pick < 11)
          text += "kind " + std::to_string(random() % kinds);
        else
          text += std::string(120 + random() % 20, 'l');
        text += ",";
      }
      text += "end\n";
    }
    TCsvImportOptions options;
    options.Delimiter = u',';
    options.Limits.MaxTotalBytes = round % 3 == 0 ? 16 * (1 + random() % 400) : options.Limits.MaxTotalBytes;
    std::string dumps[2];
    for (const bool isObserved : {false, true}) {
      TWorkbook book;
      size_t events = 0;
      if (isObserved) book.GetSheet(0)->SetOnChange([&](const auto&...) { ++events; });
      TTrickleStream stream(text, 1 + random() % 40);
      const std::string error = Thrown([&] { TCsvIO::ImportWithOptions(book, stream, 0, options); });
      dumps[isObserved ? 1 : 0] = error + Dump(*book.GetSheet(0));
      EXPECT_EQ(events, isObserved ? book.GetSheet(0)->Store().CellCount() : 0u);
    }
    ASSERT_EQ(dumps[0], dumps[1]) << "round " << round;
  }
}

TEST(CsvImport, OptionsReadFilesAsTheyAreMet) {
  const struct {
    std::string Text;
    TCsvImportOptions Options;
    const char* Dump;
  } cases[] = {
      {"\"a\"\"b\",\"c\nd\",\"\",\"\"\"\"", {}, "'a\"b' 'c\nd' _ '\"'"},
      {"a\"b,c\"\n\"x\"y,1", {}, "'a\"b' 'c\"'; 'xy' 1"},
      {"\"open,1\n2", {.Delimiter = u','}, "'open,1\n2'"},
      {"a;b\n1,5;2,5\n", {}, "'a' 'b'; '1,5' '2,5'"},
      {"a;b\n1,5;2,5\n", {.DecimalSeparator = u','}, "'a' 'b'; 1.5 2.5"},
      {"a|b\n1|2", {}, "'a' 'b'; 1 2"},
      {"x\n\"a,b\"\t1\n\"c,d\"\t2", {}, "'x' _; 'a,b' 1; 'c,d' 2"},
      {"sep=;\r\nA,B;1\r\n2;3", {}, "'A,B' 1; 2 3"},
      {"sep=;\n1,2", {.Delimiter = u','}, "'sep=;' _; 1 2"},
      {"1;2\n\n3", {.Delimiter = u';', .SkipEmptyLines = true}, "1 2; 3 _"},
      {"h\n1\n2", {.FirstRow = 2}, "1; 2"},
      {" a , \"b \" ,\t1 \n", {.Delimiter = u',', .TrimBlanks = true}, "'a' 'b ' 1"},
      {" a , \"b\"", {.Delimiter = u','}, "' a ' ' \"b\"'"},
      {"007,\"5\",12345678901234567890", {.AllText = true}, "'007' '5' '12345678901234567890'"},
      {"007,\"5\",6", {.QuotedIsText = true}, "7 '5' 6"},
      {Utf16Bytes(u"\u00C5,1\r\n2,3\r\n", false), {}, "'\u00C5' 1; 2 3"},
      {"\"a\r\nb\"\r\n\"c\"\r", {}, "'a\r\nb'; 'c'"},
      {"a,\n,b", {}, "'a' _; _ 'b'"},
  };
  for (const auto& row : cases) EXPECT_EQ(ImportedWith(row.Text, row.Options), row.Dump) << row.Text;
}

TEST(CsvImport, ADelimiterThatCannotBeIsRefused) {
  for (const char16_t delimiter : {u'"', u'\n', u'\r', u'\u00A6'})
    EXPECT_THROW(ImportedWith("a", {.Delimiter = delimiter}), EArgument) << static_cast<int>(delimiter);
}

TEST(CsvImport, LimitsNameFileAndLineAndKeepWhatWasRead) {
  TWorkbook book;
  const std::string wide = "first\n\"a\nb\"\n" + std::string(kMaxCol, ',') + "\n";
  const auto load = [&](const std::string& AText, TCsvImportOptions AOptions) {
    return Thrown([&] {
      TTrickleStream stream(AText, 1 << 20);
      AOptions.SourceName = "data.csv";
      TCsvIO::ImportWithOptions(book, stream, 0, AOptions);
    });
  };
  EXPECT_EQ(load(wide, {.Delimiter = u','}),
            "limit: data.csv, line 4: the row has more than the 16384 columns of a sheet; what stands before that line "
            "has been read");
  EXPECT_EQ(Dump(*book.GetSheet(0)), "'first'; 'a\nb'");

  std::string tall(static_cast<size_t>(kMaxRow), '\n');
  tall += "x\ny";
  EXPECT_EQ(load(tall, {}).substr(0, 60), "limit: data.csv, line 1048577: a sheet has no more than 1048");

  TReadLimits limits;
  limits.MaxPartBytes = 10;
  EXPECT_EQ(load("12345678901", {.Limits = limits}), "limit: data.csv, the text is larger than the limit of 10 bytes");
  limits = {};
  limits.MaxTotalBytes = 32;
  EXPECT_EQ(load("1\n2\n3\n", {.Limits = limits}).substr(0, 28), "limit: data.csv, line 3: the");
  EXPECT_EQ(Dump(*book.GetSheet(0)), "1; 2");
}

TEST(CsvImport, AStopLeavesAValidWorkbook) {
  TWorkbook book;
  std::stop_source stop;
  std::string text;
  for (int i = 0; i < 100'000; ++i) text += "abc,1\n";
  TCsvImportOptions options;
  options.Control.Stop = stop.get_token();
  options.Control.Progress = [&](const TTessarineProgressEvent&) { stop.request_stop(); };
  TMemoryReadStream stream(std::as_bytes(std::span<const char>(text)));
  EXPECT_THROW(TCsvIO::ImportWithOptions(book, stream, 0, options), ECancelled);
  EXPECT_EQ(book.GetSheet(0)->GetCellAt(2, 1).Value.Number, 1);
  EXPECT_LT(book.GetSheet(0)->UsedMaxRow(), 100'000);
  EXPECT_FALSE(book.IsUpdating());
}

TEST(CsvImport, EqualTextsOfAColumnShareTheirMemory) {
  TWorkbook book;
  std::string text;
  for (int i = 0; i < 5000; ++i)
    text += i % 2 == 0 ? "alpha,\u00E9\u00E8\n" : "beta and more,unique" + std::to_string(i) + "\n";
  TMemoryReadStream stream(std::as_bytes(std::span<const char>(text)));
  TCsvIO::ImportWithOptions(book, stream, 0, {});
  const TWorksheet& sheet = *book.GetSheet(0);
  const auto block = [&](int32_t ACol, int32_t ARow) { return sheet.EffectiveView(ACol, ARow).Block; };
  EXPECT_EQ(block(1, 1), block(1, 4999));
  EXPECT_EQ(block(1, 2), block(1, 4800));
  EXPECT_EQ(block(2, 1), block(2, 3));
  EXPECT_EQ(sheet.GetCellAt(2, 5000).Value.Text, u"unique4999");
}

TEST(CsvImport, LoadFromFileKeepsOtherSheetsAndTellsAMissingFile) {
  TTemporaryFolder folder;
  WriteFile(folder.Path("t.csv"), "1,2\n");
  TWorkbook book;
  book.AddSheet("Kept");
  TCsvIO::LoadFromFile(book, folder.Path("t.csv"));
  EXPECT_EQ(Dump(*book.GetSheet(0)), "1 2");
  EXPECT_EQ(book.SheetCount(), 2);
  EXPECT_EQ(Thrown([&] { TCsvIO::LoadFromFile(book, folder.Path("no.csv")); }),
            "other: File not found: " + folder.Path("no.csv"));
  WriteFile(folder.Path("wide.csv"), std::string(kMaxCol, ','));
  const std::string message = Thrown([&] { TCsvIO::LoadFromFile(book, folder.Path("wide.csv")); });
  EXPECT_EQ(message.find("limit: " + folder.Path("wide.csv") + ", line 1: "), 0u) << message;
}
