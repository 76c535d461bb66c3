#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/io/native/Native.h>
#include <tessarine/io/ods/OdsReader.h>
#include <tessarine/io/ods/OdsWriter.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/io/xlsx/XlsxWriter.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>

#include "../support/FailingFileLayer.h"
#include "../support/TemporaryFolder.h"
#include "../support/WorkbookDump.h"

namespace tessarine::test {
namespace {

/// A way of saving, and of reading the first of its files back.
struct TWay {
  const char* Name;
  std::vector<std::string> Files;  // in the order in which they are replaced
  void (*Save)(TWorkbook& ABook, const std::string& AFile, const TWorkControl& AControl);
  void (*Load)(TWorkbook& ABook, const std::string& AFile, const TWorkControl& AControl);
  bool ClearsModified = true;
};

void SaveText(TWorkbook& ABook, const std::string& AFile, const TWorkControl&) { TCsvIO::SaveToFile(ABook, AFile, 0); }

void ExportText(TWorkbook& ABook, const std::string& AFile, const TWorkControl& AControl) {
  TCsvExportOptions options;
  options.What = pwEntireWorkbook;
  options.Control = AControl;
  TCsvIO::ExportWithOptions(ABook, AFile, options, 0);
}

void LoadText(TWorkbook& ABook, const std::string& AFile, const TWorkControl& AControl) {
  const auto stream = OpenFileForReading(AFile);
  TCsvImportOptions options;
  options.Delimiter = u',';
  options.Control = AControl;
  TCsvIO::ImportWithOptions(ABook, *stream, 0, options);
}

template <class TFormat, class TOptions>
void SaveBy(TWorkbook& ABook, const std::string& AFile, const TWorkControl& AControl) {
  TOptions options;
  options.Control = AControl;
  if constexpr (requires { options.Time; }) options.Time = 45000;
  TFormat::SaveToFile(ABook, AFile, options);
}

template <class TFormat, class TOptions>
void LoadBy(TWorkbook& ABook, const std::string& AFile, const TWorkControl& AControl) {
  TOptions options;
  options.Control = AControl;
  TFormat::LoadFromFile(ABook, AFile, options);
}

const TWay kWays[] = {
    {"native", {"book.tsr"}, SaveBy<TTsrIO, TTsrWriteOptions>, LoadBy<TTsrIO, TTsrReadOptions>},
    {"xlsx", {"book.xlsx"}, SaveBy<TXlsxWriter, TXlsxWriteOptions>, LoadBy<TXlsxReader, TXlsxReadOptions>},
    {"ods", {"book.ods"}, SaveBy<TOdsWriter, TOdsWriteOptions>, LoadBy<TOdsReader, TOdsReadOptions>},
    {"text", {"book.csv"}, SaveText, LoadText},
    {"texts", {"book.csv", "book_Second.csv"}, ExportText, LoadText, false},
};

/// Two sheets of numbers, texts that hardly pack, formulas and formats. Every salt makes other cells.
void FillBook(TWorkbook& ABook, int32_t ARows, uint32_t ASalt) {
  std::mt19937 random(ASalt);
  ABook.AddSheet(u"Second");
  for (int32_t index = 0; index < 2; ++index) {
    TWorksheet& sheet = *ABook.GetSheet(index);
    for (int32_t row = 1; row <= ARows; ++row) {
      std::u16string text;
      while (text.size() < 12) text += static_cast<char16_t>(u'a' + random() % 26);
      sheet.SetValue({1, row}, TCellValue::FromText(TText(text)));
      sheet.SetValue({2, row}, TCellValue::FromNumber(static_cast<double>(random() % 100000) / 16));
      if (row % 8 == 0) sheet.SetValue({3, row}, TCellValue::FromFormula(row % 16 == 0 ? u"A1&2" : u"B8*2"));
    }
    TCell cell = sheet.GetCell({1, 1});
    cell.HasFormatOverride = true;
    cell.FormatOverride.Font.Bold = true;
    sheet.SetCell({1, 1}, cell);
    sheet.MergeRange({5, 1, 6, 2});
  }
}

/// One way in a folder of its own: a workbook, its files as saved, and the files of an older state.
class TSaves {
 public:
  TSaves(const TWay& AWay, int32_t ARows) : FWay(AWay) {
    TWorkbook older;
    FillBook(older, 5, 1);
    FOld = SavedBy(older);
    FillBook(FBook, ARows, 2);
    FNew = SavedBy(FBook);  // saving once settles what saving changes
    FDump = DumpWorkbook(FBook);
    TWorkbook read;
    FWay.Load(read, Target(), {});
    FReadDump = DumpWorkbook(read);
  }

  std::string Target(size_t AFile = 0) const { return FFolder.Path(FWay.Files[AFile]); }
  std::string Temporary(size_t AFile) const { return Target(AFile) + ".tessarine.tmp"; }
  size_t FileCount() const { return FWay.Files.size(); }
  const std::string& New(size_t AFile) const { return FNew[AFile]; }
  TWorkbook& Book() { return FBook; }
  const std::string& ReadDump() const { return FReadDump; }

  void PutOldFiles() {
    for (size_t file = 0; file < FileCount(); ++file) {
      WriteFile(Target(file), FOld[file]);
      WriteFile(Temporary(file), "from before");
    }
    FBook.MarkModified();
  }

  /// What saving throws, "EFileAccess: ..." or "ECancelled: ...".
  std::string Save(const TWorkControl& AControl = {}) {
    return Told([&] { FWay.Save(FBook, Target(), AControl); });
  }
  std::string Load(TWorkbook& ABook, const TWorkControl& AControl = {}) {
    return Told([&] { FWay.Load(ABook, Target(), AControl); });
  }

  /// How many files were replaced; those before are new and those behind old, each of them whole.
  size_t ReplacedCount() {
    size_t count = 0;
    for (size_t file = 0; file < FileCount(); ++file) {
      const std::string content = ContentOf(Target(file));
      count += content == FNew[file] && count == file ? 1 : 0;
      EXPECT_TRUE(content == (count > file ? FNew : FOld)[file]) << FWay.Files[file] << " is neither";
    }
    return count;
  }

  /// The workbook is as it was before a save that failed, and the next save succeeds.
  void ExpectUsable() {
    EXPECT_TRUE(FBook.IsModified());
    EXPECT_EQ(DumpDifference(DumpWorkbook(FBook), FDump), "");
    EXPECT_EQ(Save(), "");
    EXPECT_EQ(ReplacedCount(), FileCount());
    EXPECT_EQ(FBook.IsModified(), !FWay.ClearsModified);
  }

 private:
  std::vector<std::string> SavedBy(TWorkbook& ABook) {
    FWay.Save(ABook, Target(), {});
    std::vector<std::string> contents;
    for (size_t file = 0; file < FileCount(); ++file) {
      contents.push_back(ContentOf(Target(file)));
      EXPECT_EQ(ContentOf(Temporary(file)), "(missing)");
    }
    return contents;
  }
  static std::string Told(const std::function<void()>& AWork) {
    try {
      AWork();
    } catch (const EFileAccess& error) {
      return std::string("EFileAccess: ") + error.what();
    } catch (const ECancelled& error) {
      return std::string("ECancelled: ") + error.what();
    }
    return "";
  }

  const TWay& FWay;
  TTemporaryFolder FFolder;
  TWorkbook FBook;
  std::vector<std::string> FOld;
  std::vector<std::string> FNew;
  std::string FDump;
  std::string FReadDump;
};

constexpr size_t kMostBytes = 10'000;

/// A control that requests the stop in report number AReport; ACount counts the reports.
TWorkControl StopInReport(std::stop_source& ASource, size_t AReport, size_t& ACount) {
  return {ASource.get_token(), [&ASource, &ACount, AReport](const TTessarineProgressEvent&) {
            if (ACount++ == AReport) ASource.request_stop();
          }};
}

TEST(FailingSaves, EveryFileIsWholeWhicheverCallFails) {
  for (const TWay& way : kWays) {
    TSaves saves(way, 1200);
    size_t files = 0;  // replaced before the call that fails
    for (size_t failing = 0;; ++failing) {
      SCOPED_TRACE(std::string(way.Name) + ", call " + std::to_string(failing));
      saves.PutOldFiles();
      std::string told;
      std::string call;
      {
        TFailingFileLayer layer(failing, kMostBytes);
        told = saves.Save();
        EXPECT_EQ(layer.OpenHandles(), 0);
        if (layer.Calls().size() > failing) call = layer.Calls()[failing];
      }
      if (call.empty() || call == "sync folder") {  // the file stands by then
        EXPECT_EQ(told, "");
        EXPECT_EQ(saves.ReplacedCount(), saves.FileCount());
        ++files;
        if (call.empty()) break;
        continue;
      }
      EXPECT_EQ(saves.ReplacedCount(), files);
      const std::string temporary = saves.Temporary(files);
      const std::string rescue = ContentOf(temporary);
      EXPECT_NE(told.find(temporary), told.npos) << told;
      EXPECT_EQ(told.find(call == "rename" ? "EFileAccess: Cannot save to" : "EFileAccess: Cannot "), 0u) << told;
      EXPECT_EQ(told.find("No space left on device") != told.npos, call != "rename") << told;
      const std::string& whole = saves.New(files);
      EXPECT_TRUE(call == "remove"             ? rescue == "from before"
                  : call == "open for writing" ? rescue == "(missing)"
                  : call == "write"            ? whole.starts_with(rescue) && rescue.size() < whole.size()
                                               : rescue == whole)
          << call;
      saves.ExpectUsable();
    }
    EXPECT_EQ(files, saves.FileCount() + 1) << way.Name;
  }
}

TEST(FailingSaves, AFileThatCannotBeReadLeavesAUsableWorkbook) {
  for (const TWay& way : kWays) {
    TSaves saves(way, 300);
    for (size_t failing = 1;; ++failing) {  // the first call opens the file: a copy would be made
      SCOPED_TRACE(std::string(way.Name) + ", call " + std::to_string(failing));
      TWorkbook book;
      FillBook(book, 3, 3);
      bool isReached;
      std::string told;
      {
        TFailingFileLayer layer(failing);
        told = saves.Load(book);
        isReached = layer.Calls().size() > failing;
        EXPECT_EQ(layer.OpenHandles(), 0);
        const bool isRead = isReached && layer.Calls()[failing] == "read";
        EXPECT_EQ(told.find("EFileAccess: Cannot read") == 0, isRead) << told;
      }
      EXPECT_GE(book.SheetCount(), 1);
      TWorkbook fresh;
      EXPECT_EQ(saves.Load(fresh), "");
      EXPECT_EQ(DumpDifference(DumpWorkbook(fresh), saves.ReadDump()), "");
      if (!isReached) break;
    }
  }
}

TEST(FailingSaves, AStopLeavesTheOldFiles) {
  for (const TWay& way : kWays) {
    if (std::string_view(way.Name) == "text") continue;  // takes no control
    TSaves saves(way, 4500);
    for (size_t report = 0;; ++report) {
      SCOPED_TRACE(std::string(way.Name) + ", report " + std::to_string(report));
      saves.PutOldFiles();
      std::stop_source source;
      size_t count = 0;
      const std::string told = saves.Save(StopInReport(source, report, count));
      if (told.empty()) {
        EXPECT_EQ(saves.ReplacedCount(), saves.FileCount());
        EXPECT_GT(report, 0u);
        if (count <= report) break;
        continue;
      }
      EXPECT_EQ(told.find("ECancelled: "), 0u) << told;
      EXPECT_LT(saves.ReplacedCount(), saves.FileCount());
      saves.ExpectUsable();
    }
    saves.PutOldFiles();
    std::stop_source source;
    source.request_stop();
    EXPECT_EQ(saves.Save({source.get_token(), {}}).find("ECancelled: "), 0u) << way.Name;
    EXPECT_EQ(saves.ReplacedCount(), 0u);
    saves.ExpectUsable();
  }
}

TEST(FailingSaves, AStopInLoadingLeavesAWorkbookThatCanBeSaved) {
  for (const TWay& way : kWays) {
    TSaves saves(way, 2500);
    for (size_t report = 0;; ++report) {
      SCOPED_TRACE(std::string(way.Name) + ", report " + std::to_string(report));
      TWorkbook book;
      FillBook(book, 3, 3);
      std::stop_source source;
      size_t count = 0;
      const std::string told = saves.Load(book, StopInReport(source, report, count));
      EXPECT_TRUE(told.empty() || told.find("ECancelled: ") == 0) << told;
      EXPECT_TRUE(book.GetSheet(book.ActiveSheetIndex()) != nullptr);
      TMemoryWriteStream saved;
      TTsrIO::SaveToStream(book, saved);
      TMemoryReadStream source2(saved.Bytes());
      TWorkbook again;
      TTsrIO::LoadFromStream(again, source2);
      EXPECT_EQ(DumpDifference(DumpWorkbook(again), DumpWorkbook(book)), "");
      EXPECT_TRUE(told.empty() || saves.Load(book).empty());
      if (std::string_view(way.Name).substr(0, 4) != "text") {
        EXPECT_EQ(DumpDifference(DumpWorkbook(book), saves.ReadDump()), "");
      }
      if (told.empty() && count <= report) {
        EXPECT_GT(report, 0u);
        break;
      }
    }
  }
}

}  // namespace
}  // namespace tessarine::test
