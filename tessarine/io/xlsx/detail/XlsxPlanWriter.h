#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/io/xlsx/SharedStrings.h>

namespace tessarine {
class TWorkbook;
class TWorksheet;
struct TWorkControl;
}  // namespace tessarine

namespace tessarine::detail {

struct TCellExtras;
struct TCellSlot;
struct TTextBlock;

/// A row where the cells of a sheet may be parted, to be written in pieces.
struct TXlsxRowCut {
  int32_t Row = 0;
  size_t Cells = 0;    // above the row
  size_t Strings = 0;  // cells with text above the row
};

/// What one pass over a sheet's cells finds out before anything is written.
struct TXlsxSheetPlan {
  std::vector<int32_t> Strings;   // indexes into the string table of the cells with text, row by row
  std::vector<TXlsxRowCut> Cuts;  // ascending, some 16,000 cells apart
  int64_t LostErrors = 0;         // constant errors
  int64_t LostNumbers = 0;        // that are not finite
  int64_t LostSparklines = 0;
};

/// Goes over the cells of a workbook once, sheet by sheet and row by row: numbers their texts, moves format overrides
/// into the style sheet, and finds style indexes that the style sheet does not have. Equal overrides share one new
/// format; formats that were there before are left alone.
class TXlsxPlanWriter {
 public:
  /// The arguments outlive the object. ATable is filled.
  TXlsxPlanWriter(TWorkbook& AWorkbook, TSharedStringTable& ATable, bool AIsLiteral)
      : FWorkbook(AWorkbook), FTable(ATable), FIsLiteral(AIsLiteral) {}

  TXlsxSheetPlan Run(TWorksheet& ASheet, const TWorkControl& AControl);

  /// Whether a cell of a sheet so far has a style index out of range.
  bool HasStrayStyle() const { return FHasStrayStyle; }

 private:
  struct TRecent {
    const TTextBlock* Block = nullptr;
    int32_t Index = 0;
  };
  struct TFormatHash {
    size_t operator()(const TCellFormat* AFormat) const { return HashOf(*AFormat); }
  };
  struct TFormatEqual {
    bool operator()(const TCellFormat* ALeft, const TCellFormat* ARight) const { return *ALeft == *ARight; }
  };
  struct TFolded {
    int32_t Col;
    int32_t Row;
    int32_t StyleIndex;
  };

  int32_t PlainIndex(const TTextBlock* ABlock);
  int32_t RichIndex(const TRichTextRuns& ARuns, const TTextBlock* ABlock, const TCellFontInfo& ABase);
  int32_t FoldedIndex(const TCellFormat& AOverride);
  void VisitExtras(int32_t ACol, int32_t ARow, const TCellSlot& ASlot, const TCellExtras& AExtras);

  TWorkbook& FWorkbook;
  TSharedStringTable& FTable;
  bool FIsLiteral;
  bool FHasStrayStyle = false;
  std::array<TRecent, 8192> FRecent{};  // by address: texts that cells share are found without a look at their units
  boost::unordered_flat_map<const TCellFormat*, int32_t, TFormatHash, TFormatEqual> FNewFormats;
  std::vector<TFolded> FFolded;  // of the sheet that is visited
  TXlsxSheetPlan FPlan;
};

}  // namespace tessarine::detail
