#include <algorithm>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Numbers.h>

#include "../support/Thrown.h"

namespace tessarine {
namespace {

namespace fs = std::filesystem;

/// A folder of the corpus that some checkouts have beside them; empty when it is not there.
fs::path CorpusFolder(const char* AName) {
  const fs::path folder = fs::path(TESS_SOURCE_DIR) / ".." / "shared" / "corpus" / AName;
  return fs::is_directory(folder) ? folder : fs::path();
}

std::vector<fs::path> FilesOf(const fs::path& AFolder, const char* AExtension) {
  std::vector<fs::path> files;
  for (const auto& entry : fs::directory_iterator(AFolder)) {
    if (entry.path().extension() == AExtension) files.push_back(entry.path());
  }
  std::sort(files.begin(), files.end());
  return files;
}

size_t CellsOf(const TWorkbook& ABook) {
  size_t count = 0;
  for (int32_t index = 0; index < ABook.SheetCount(); ++index) count += ABook.GetSheet(index)->Store().CellCount();
  return count;
}

/// Reads all that a painter would; nothing may go wrong whatever the file held.
size_t TouchAll(const TWorkbook& ABook) {
  size_t units = 0;
  for (int32_t index = 0; index < ABook.SheetCount(); ++index) {
    const TWorksheet& sheet = *ABook.GetSheet(index);
    sheet.Store().ForEachByColumn([&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
      units += sheet.GetDisplayText({ACol, ARow}, &ABook.StyleSheet()).Length();
      units += sheet.ResolveFormat({ACol, ARow}, &ABook.StyleSheet()).NumberFormat.Length();
    });
  }
  return units;
}

TEST(XlsxFiles, SamplesOfOurOwnHaveTheirCells) {
  const struct {
    const char* Name;
    int32_t Sheets;
    size_t Cells;
    size_t FormulasOfFirst;
    const char* FirstCell;
  } cases[] = {
      {"ironcalc_CHOOSE.xlsx", 1, 22, 6, "A1"},
      {"openspout_sheet_with_all_cell_types.xlsx", 1, 11, 0, ""},
      {"packt_Loan.xlsx", 1, 140, 96, ""},
  };
  for (const auto& row : cases) {
    TWorkbook book;
    TXlsxReader::LoadFromFile(book, std::string(TESS_SOURCE_DIR) + "/tests/data/" + row.Name);
    EXPECT_EQ(book.SheetCount(), row.Sheets) << row.Name;
    EXPECT_EQ(CellsOf(book), row.Cells) << row.Name;
    EXPECT_EQ(book.GetSheet(0)->Store().FormulaCount(), row.FormulasOfFirst) << row.Name;
    EXPECT_GT(TouchAll(book), 0u) << row.Name;
  }
}

TEST(XlsxFiles, EveryFileOfTheCorpusOpens) {
  const fs::path folder = CorpusFolder("xlsx");
  if (folder.empty()) GTEST_SKIP() << "the corpus is not here";
  for (const fs::path& file : FilesOf(folder, ".xlsx")) {
    TWorkbook book;
    EXPECT_EQ(test::Thrown([&] { TXlsxReader::LoadFromFile(book, file.string()); }), "nothing") << file;
    EXPECT_FALSE(book.IsModified());
    EXPECT_GE(book.SheetCount(), 1) << file;
    TouchAll(book);
  }
}

TEST(XlsxFiles, BrokenOnesAreToldOrOpenSensibly) {
  const fs::path folder = CorpusFolder("broken");
  if (folder.empty()) GTEST_SKIP() << "the corpus is not here";
  const struct {
    const char* Name;
    int32_t Sheets;
    const char* Error;
  } cases[] = {
      {"derived_bitrot.xlsx", 1,
       "format: ZIP archive: entry 2 of the directory is damaged; get or save the file again"},
      {"derived_deep_nesting.xlsx", 4,
       "limit: xl/worksheets/sheet3.xml, line 1: elements are nested deeper than the limit of 256"},
      {"derived_dup_entries.xlsx", 11, "nothing"},
      {"derived_empty.xlsx", 1, "format: not a ZIP archive: the file is empty"},
      {"derived_huge_refs.xlsx", 11, "nothing"},
      {"derived_traversal.xlsx", 11, "nothing"},
      {"derived_trunc50.xlsx", 1, "format: not a ZIP archive, or one that was cut off: its end record is missing"},
      {"derived_xxe.xlsx", 4,
       "format: xl/worksheets/sheet3.xml, line 1: a document type with declarations of its own is not accepted, for "
       "safety"},
      {"derived_zipbomb_200M.xlsx", 4,
       "limit: xl/worksheets/sheet3.xml: the part inflates 1028-fold to 209715333 bytes, the limit is 300-fold for "
       "parts above 67108864 bytes"},
  };
  EXPECT_EQ(FilesOf(folder, ".xlsx").size(), std::size(cases));
  for (const auto& row : cases) {
    TWorkbook book;
    EXPECT_EQ(test::Thrown([&] { TXlsxReader::LoadFromFile(book, (folder / row.Name).string()); }), row.Error)
        << row.Name;
    EXPECT_EQ(book.SheetCount(), row.Sheets) << row.Name;
    TouchAll(book);
  }
}

// ---- display texts as another program exported them

using TGrid = std::vector<std::vector<std::string>>;

TGrid ReadCsv(const fs::path& AFile) {
  std::ifstream stream(AFile, std::ios::binary);
  std::string text((std::istreambuf_iterator<char>(stream)), {});
  TGrid grid(1, std::vector<std::string>(1));
  bool isQuoted = false;
  for (size_t at = 0; at < text.size(); ++at) {
    std::string& field = grid.back().back();
    const char unit = text[at];
    if (isQuoted) {
      if (unit != '"') {
        field += unit;
      } else if (at + 1 < text.size() && text[at + 1] == '"') {
        field += text[++at];
      } else {
        isQuoted = false;
      }
    } else if (unit == '"') {
      isQuoted = true;
    } else if (unit == ',') {
      grid.back().emplace_back();
    } else if (unit == '\r' || unit == '\n') {
      if (unit == '\r' && at + 1 < text.size() && text[at + 1] == '\n') ++at;
      grid.emplace_back(1);
    } else {
      field += unit;
    }
  }
  return grid;
}

/// The reference was exported in an encoding of one byte a letter: what lies beyond ASCII is "_" in it.
std::string AsExported(const TText& AText) {
  std::string text;
  for (const char16_t unit : AText.View()) {
    if (unit != u'\r' && unit != u'\n') text += unit > 126 ? '_' : static_cast<char>(unit);
  }
  return text;
}

/// Whether two texts say the same in spite of these differences of rules: general numbers have 15 digits here and 9 to
/// 11 in the reference, short dates four digits of the year and two.
bool IsSameText(const std::string& AShown, const std::string& AExpected) {
  if (AShown == AExpected) return true;
  double shown = 0;
  double expected = 0;
  if (TryParseFileNumber(AShown, shown) && TryParseFileNumber(AExpected, expected))
    return std::abs(shown - expected) <= 1e-8 * std::abs(expected);
  const size_t slash = AShown.rfind('/');
  return slash != std::string::npos && AShown.size() >= slash + 5 &&
         AShown.substr(0, slash + 1) + AShown.substr(slash + 3) == AExpected;
}

/// Compares the sheets of one file and returns how many fields are equal and how many are not.
std::pair<size_t, size_t> CompareFile(const std::string& AName) {
  TWorkbook book;
  TXlsxReader::LoadFromFile(book, (CorpusFolder("xlsx") / AName).string());
  std::pair<size_t, size_t> counts;
  for (int32_t index = 0; index < book.SheetCount(); ++index) {
    const fs::path file = CorpusFolder("csv_expected") / (AName + "." + std::to_string(index) + ".csv");
    if (!fs::exists(file)) continue;
    const TGrid grid = ReadCsv(file);
    for (size_t row = 0; row < grid.size(); ++row) {
      for (size_t col = 0; col < grid[row].size(); ++col) {
        const TCellAddress address{static_cast<int32_t>(col) + 1, static_cast<int32_t>(row) + 1};
        const TText shown = book.GetSheet(index)->GetDisplayText(address, &book.StyleSheet());
        std::string expected = grid[row][col];
        std::erase_if(expected, [](char AUnit) { return AUnit == '\r' || AUnit == '\n'; });
        for (char& unit : expected) unit = static_cast<unsigned char>(unit) > 126 ? '_' : unit;
        const bool isEqual = IsSameText(AsExported(shown), expected);
        ++(isEqual ? counts.first : counts.second);
        if (!isEqual && std::getenv("TESS_SHOW_DIFFERENCES"))
          std::printf("%s.%d %s: [%s] [%s]\n", AName.c_str(), index, TText(address.ToA1()).ToUtf8().c_str(),
                      AsExported(shown).c_str(), expected.c_str());
      }
    }
  }
  return counts;
}

TEST(XlsxFiles, DisplayTextsAreThoseOfTheReferenceButForKnownOnes) {
  if (CorpusFolder("csv_expected").empty()) GTEST_SKIP() << "the corpus is not here";
  // At most so many fields differ in another way: results of errors (not kept), volatile functions, dates before 1900,
  // names of full-width letters, and in the last file formats made of letters that mean something else here.
  const struct {
    const char* Name;
    size_t Different;
  } cases[] = {
      {"sheetjs_formula_stress_test.xlsx", 20},
      {"poi_48539.xlsx", 0},
      {"roo_x000D.xlsx", 0},
      {"poi_styles.xlsx", 0},
      {"poi_picture.xlsx", 0},
      {"poi_atp.xlsx", 0},
      {"sheetjs_AutoFilter.xlsx", 0},
      {"sheetjs_RkNumber.xlsx", 0},
      {"sheetjs_merge_cells.xlsx", 0},
      {"sheetjs_LONumbers.xlsx", 217},
  };
  for (const auto& row : cases) {
    const auto [equal, different] = CompareFile(row.Name);
    EXPECT_LE(different, row.Different) << row.Name << ", equal: " << equal;
    EXPECT_GT(equal, 0u) << row.Name;
  }
}

}  // namespace
}  // namespace tessarine
