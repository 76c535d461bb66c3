#pragma once

#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/lists/PivotCache.h>
#include <tessarine/core/lists/PivotTables.h>
#include <tessarine/features/pivot/PivotEngine.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {

/// A workbook with records on its first sheet, from A1 on, and one pivot table on the sheet "Out", at B6.
/// Records are lines of contents (see TSheetFixture) separated by commas, lines by ";".
class TPivotFixture : public TSheetFixture {
 public:
  explicit TPivotFixture(std::string_view ARecords) {
    Workbook.AddSheet(u"Out");
    int32_t row = 1;
    int32_t col = 1;
    int32_t width = 1;
    std::string content;
    const auto put = [&] {
      Set(TText(TCellAddress{col, row}.ToA1()).ToUtf8(), content);
      width = std::max(width, col);
      content.clear();
    };
    for (const char unit : ARecords) {
      if (unit != ',' && unit != ';') {
        content += unit;
        continue;
      }
      put();
      row += unit == ';' ? 1 : 0;
      col = unit == ';' ? 1 : col + 1;
    }
    put();
    Cache = &Workbook.PivotCaches().AddNew();
    Cache->SourceSheet = u"Sheet1";
    Cache->SourceRange = {1, 1, width, row};
    Pivot = &Out().Pivots().Add(u"P", Cache->Id(), {2, 6});
  }

  TWorksheet& Out() { return *Workbook.GetSheet(1); }

  TPivotFieldRef& Add(TPivotFieldRole ARole, int32_t AField, TPivotAgg AAgg = paSum) {
    Pivot->AddField(TPivotFieldRef::Create(AField, ARole, AAgg));
    return Pivot->Fields.back();
  }

  /// Refreshes and shows the output, rows separated by " / ", cells by "|", indents as ">".
  std::string Refreshed() {
    TPivotEngine::Refresh(Workbook, Out(), *Pivot);
    return Grid(Pivot->LastBody);
  }

  std::string Grid(const TCellRange& ARange) {
    std::string text;
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) {
      if (row > ARange.StartRow) text += " / ";
      for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) {
        const TCell cell = Out().GetCell({col, row});
        if (col > ARange.StartCol) text += "|";
        text += std::string(static_cast<size_t>(cell.FormatOverride.Alignment.Indent), '>');
        text += cell.Value.ToDisplayString().ToUtf8();
      }
    }
    return text;
  }

  TPivotCache* Cache = nullptr;
  TPivotTable* Pivot = nullptr;
};

}  // namespace tessarine::testing
