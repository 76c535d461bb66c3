#include <gtest/gtest.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/csv/detail/CsvCellQueue.h>
#include <tessarine/io/csv/detail/CsvFieldReader.h>
#include <tessarine/io/csv/detail/CsvScan.h>
#include <tessarine/io/csv/detail/CsvValues.h>
#include <tessarine/io/csv/detail/CsvWriter.h>
#include <tessarine/platform/Unicode.h>

#include "CsvSupport.h"

using namespace tessarine;
using namespace tessarine::detail;
using namespace tessarine::test;

namespace {

std::string RandomText(std::mt19937& ARandom, std::string_view AAlphabet, size_t AMost) {
  std::string text(ARandom() % (AMost + 1), ' ');
  for (char& byte : text) byte = AAlphabet[ARandom() % AAlphabet.size()];
  return text;
}

/// Divides a text as the reader has to, one byte at a time.
std::string DividePlain(std::string_view AText, TCsvQuoting AQuoting) {
  std::string shown;
  std::string field;
  bool inQuotes = false;
  bool isStart = true;  // of a field
  bool hasRow = false;
  for (size_t at = 0; at < AText.size(); ++at) {
    const char byte = AText[at];
    const bool isBreak = byte == '\n' || byte == '\r';
    hasRow = true;
    if (AQuoting == cqLines && byte == '"') {
      inQuotes = !inQuotes;
    } else if (AQuoting == cqFields && byte == '"' && (isStart || inQuotes)) {
      if (inQuotes && at + 1 < AText.size() && AText[at + 1] == '"') {
        field += '"';
        ++at;
      } else {
        inQuotes = !inQuotes;
      }
      isStart = false;
    } else if ((byte == ',' && !inQuotes) || (isBreak && (!inQuotes || AQuoting == cqLines))) {
      shown += "[" + field + (isBreak ? "]\n" : "]");
      field.clear();
      inQuotes = false;
      isStart = true;
      hasRow = !isBreak;
      if (byte == '\r' && at + 1 < AText.size() && AText[at + 1] == '\n') ++at;
    } else {
      field += byte;
      isStart = false;
    }
  }
  if (hasRow) shown += "[" + field + "]\n";
  return shown;
}

std::string DivideFast(std::string_view AText, TCsvQuoting AQuoting, size_t APiece) {
  TTrickleStream stream(AText, APiece);
  const TWorkControl control;
  TCsvSource source(stream, 1 << 30, false, {}, control);
  TCsvFieldReader reader(source, ',', AQuoting, false);
  TCsvField field;
  std::string shown;
  while (reader.Next(field)) shown += "[" + std::string(field.Text) + (field.EndsRow ? "]\n" : "]");
  return shown;
}

}  // namespace

TEST(CsvFastPaths, FindTheSameSpecialBytesAsThePlainScan) {
  std::mt19937 random(1);
  for (int round = 0; round < 2000; ++round) {
    char block[kCsvBlock];
    for (char& byte : block) byte = round % 2 == 0 ? ",\"\r\n;ab\x80"[random() % 8] : static_cast<char>(random());
    const char delimiter = ",;\t|x"[random() % 5];
    ASSERT_EQ(CsvSpecials(block, delimiter), CsvSpecialsPlain(block, delimiter)) << round;
  }
}

TEST(CsvFastPaths, DivideTextsAsAPlainReaderDoes) {
  std::mt19937 random(2);
  for (int round = 0; round < 3000; ++round) {
    std::string text = RandomText(random, round % 3 == 0 ? "a,\"\r\n" : "abcdefgh,\"\n", 700);
    if (text.starts_with("\xEF")) continue;
    const size_t piece = 1 + random() % 80;
    for (const TCsvQuoting quoting : {cqLines, cqFields})
      ASSERT_EQ(DivideFast(text, quoting, piece), DividePlain(text, quoting)) << round << "\n" << text;
  }
}

TEST(CsvFastPaths, AFieldMayBeLargerThanTheWindow) {
  const std::string large(3'000'000, 'x');
  const std::string text = "a,\"" + large + "\n\"\"\",b\n" + large + ",c";
  EXPECT_EQ(DivideFast(text, cqFields, 100'000), DividePlain(text, cqFields));
  EXPECT_EQ(DivideFast(text, cqLines, 100'000), DividePlain(text, cqLines));
}

TEST(CsvFastPaths, TellNumbersAsTheGeneralReadingDoes) {
  std::mt19937 random(3);
  TFormatSettings comma;
  comma.DecimalSeparator = u',';
  TFormatSettings odd;
  odd.DecimalSeparator = u'\u066B';
  for (const TFormatSettings& settings : {TFormatSettings(), comma, odd}) {
    TCsvNumberReader reader(settings);
    for (int round = 0; round < 20'000; ++round) {
      const std::string text = RandomText(random, round % 2 == 0 ? "0123456789.,-" : "012.,eE+- x\t\xC3\xA9", 20);
      double fast = -7;
      double plain = -7;
      const bool isNumber = reader.Read(text, fast);
      ASSERT_EQ(isNumber, reader.ReadPlain(text, plain)) << text;
      if (!isNumber) continue;
      ASSERT_EQ(fast, plain) << text;
    }
  }
}

TEST(CsvFastPaths, TheTextCacheGivesTheTextsThatWereAsked) {
  std::mt19937 random(4);
  std::vector<TText> kept;
  std::vector<std::string> asked;
  {
    TCsvTextCache cache(10'000);  // few places, so that texts are driven out
    for (int round = 0; round < 60'000; ++round) {
      std::string text = RandomText(random, round % 7 == 0 ? "a\xC3\xA9" : "abcdefghij", round % 5 == 0 ? 30 : 4);
      kept.push_back(cache.TextOf(text, static_cast<size_t>(round % 3)));
      asked.push_back(std::move(text));
    }
  }
  for (size_t i = 0; i < kept.size(); ++i) ASSERT_EQ(kept[i].View(), Utf8ToUtf16(asked[i])) << asked[i];
}

TEST(CsvFastPaths, TheQueueStoresWhatThePlainWayDoes) {
  std::mt19937 random(6);
  for (const bool onTwoThreads : {false, true}) {
    TWorkbook book;
    TCellStore& fast = book.GetSheet(0)->Store();
    TCellStore& plain = book.AddSheet(u"Plain").Store();
    TCsvTextCache fastCache(10'000);
    TCsvTextCache plainCache(10'000);
    TCsvCellQueue queue(fastCache, fast, onTwoThreads);
    for (int32_t cell = 0; cell < 60'000; ++cell) {
      const int32_t col = cell % 5 + 1;
      const int32_t row = cell / 5 + 1;
      if (random() % 3 == 0) {
        queue.AddNumber(col, row, cell);
        plain.SetNumber(col, row, cell, 0);
      } else {
        const std::string text = RandomText(random, "abc\xC3\xA9",
                                            cell % 20'000 == 7 ? 200'000
                                            : random() % 2     ? 3
                                                               : 40);
        queue.AddText(col, row, text);
        plain.SetText(col, row, plainCache.TextOf(text, static_cast<size_t>(col - 1)), 0);
      }
      ASSERT_EQ(queue.Count(), static_cast<size_t>(cell) + 1);
      if (random() % 9000 != 0) continue;
      queue.Settle();
      ASSERT_EQ(fast.CellCount(), queue.Count());
    }
    queue.Settle();
    ASSERT_EQ(fast.CellCount(), plain.CellCount());
    plain.ForEachByColumn([&](int32_t ACol, int32_t ARow, const TCellSlot&) {
      ASSERT_EQ(fast.Get(ACol, ARow).Value, plain.Get(ACol, ARow).Value) << ACol << ' ' << ARow;
    });
  }
}

TEST(CsvFastPaths, WriteFieldsAsTheyAreDefined) {
  std::mt19937 random(5);
  constexpr std::u16string_view kUnits = u"abcdefghijklmnop,;\"\n\r\u00E9\u2C22\xD83D\xDE00";
  for (int round = 0; round < 5000; ++round) {
    std::u16string text(random() % 20, u' ');
    for (char16_t& unit : text) unit = kUnits[random() % (round % 2 == 0 ? 16 : kUnits.size())];
    const char16_t delimiter = u",;\u2C22"[random() % 3];
    TMemoryWriteStream fast;
    TMemoryWriteStream plain;
    TCsvWriter fastWriter(fast, delimiter);
    TCsvWriter plainWriter(plain, delimiter);
    fastWriter.PutField(text);
    fastWriter.Flush();
    plainWriter.PutEscapedField(text);
    plainWriter.Flush();
    ASSERT_EQ(TextOf(fast), TextOf(plain));
  }
}
