#include <tessarine/formula/detail/Precedents.h>

#include <algorithm>
#include <tuple>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/detail/Interpreter.h>

namespace tessarine::detail {

namespace {

bool SpansAllRows(int32_t ATop, int32_t ABottom) { return ATop <= 1 && ABottom >= kMaxRow; }

/// Walks one program at one cell.
class TCollector {
 public:
  TCollector(const TProgram& AProgram, const TWorkbook& AWorkbook, const TInterpreter& AInterpreter, int32_t ASheet,
             int32_t ACol, int32_t ARow)
      : FProgram(AProgram), FWorkbook(AWorkbook), FInterpreter(AInterpreter), FSheet(ASheet), FCol(ACol), FRow(ARow) {}

  TPrecedentPatterns Run() {
    std::vector<const TProgramNode*> pending{&FProgram.Root()};
    while (!pending.empty()) {
      const TProgramNode& node = *pending.back();
      pending.pop_back();
      Visit(node);
      if (node.Kind == ankArrayLit) continue;  // references in braces make no edges
      for (uint32_t i = node.ChildCount; i > 0; --i) pending.push_back(&FProgram.Child(node, i - 1));
    }
    return std::move(FPatterns);
  }

 private:
  void Visit(const TProgramNode& ANode) {
    switch (ANode.Kind) {
      case ankCellRef: AddCell(ANode, FSheet); break;
      case ankSheetRef:
        if (const int32_t sheet = FInterpreter.ResolveSheetIndex(FSheet, ANode.SheetName); sheet >= 0)
          AddCell(ANode, sheet);
        break;
      case ankRange: AddRange(ANode); break;
      case ankTableRef: AddTable(ANode.Text, ANode.ColumnName); break;
      case ankFunc:
        if (ANode.IsIdentifier) AddTable(ANode.Text, {});
        break;
      default: break;
    }
  }

  int32_t ColumnAt(int32_t ACol, bool ARelative) const { return ARelative ? ACol + FCol : ACol; }

  void AddCell(const TProgramNode& ANode, int32_t ASheet) {
    const int32_t col = ColumnAt(ANode.Col, (ANode.Relative & TProgramNode::rlCol) != 0);
    const bool relative = (ANode.Relative & TProgramNode::rlRow) != 0;
    FPatterns.push_back({ASheet, col, col, ANode.Row, ANode.Row, relative, relative});
  }

  /// A range on an unknown sheet is registered against the current one.
  void AddRange(const TProgramNode& ANode) {
    const int32_t resolved = FInterpreter.ResolveSheetIndex(FSheet, ANode.SheetName);
    TPrecedentPattern pattern;
    pattern.Sheet = resolved < 0 ? FSheet : resolved;
    std::tie(pattern.Col, pattern.Col2) =
        std::minmax(ColumnAt(ANode.Col, (ANode.Relative & TProgramNode::rlCol) != 0),
                    ColumnAt(ANode.Col2, (ANode.Relative & TProgramNode::rlCol2) != 0));
    pattern.Row = ANode.Row;
    pattern.Row2 = ANode.Row2;
    pattern.RowRelative = (ANode.Relative & TProgramNode::rlRow) != 0;
    pattern.Row2Relative = (ANode.Relative & TProgramNode::rlRow2) != 0;
    Cut(pattern);
    FPatterns.push_back(pattern);
  }

  void Cut(TPrecedentPattern& APattern) const {
    const TWorksheet* sheet = FWorkbook.GetSheet(APattern.Sheet);
    if (!sheet) return;
    if (SpansAllRows(APattern.Top(FRow), APattern.Bottom(FRow))) {
      APattern.Row = APattern.Top(FRow);
      APattern.Row2 = std::max(1, sheet->UsedMaxRow());
      APattern.RowRelative = APattern.Row2Relative = false;
    }
    if (APattern.Col <= 1 && APattern.Col2 >= kMaxCol) APattern.Col2 = std::max(1, sheet->UsedMaxCol());
  }

  void AddTable(std::u16string_view ATable, std::u16string_view AColumn) {
    const TInterpreter::TTableArea area = FInterpreter.ResolveTableColumn(FSheet, ATable, AColumn);
    if (!area.Found) return;
    const TCellRange& range = area.Range;
    FPatterns.push_back({area.SheetIndex, range.StartCol, range.EndCol, range.StartRow, range.EndRow, false, false});
  }

  const TProgram& FProgram;
  const TWorkbook& FWorkbook;
  const TInterpreter& FInterpreter;
  int32_t FSheet;
  int32_t FCol;
  int32_t FRow;
  TPrecedentPatterns FPatterns;
};

}  // namespace

TPrecedentPatterns CollectPrecedents(const TProgram& AProgram, const TWorkbook& AWorkbook,
                                     const TInterpreter& AInterpreter, int32_t ASheet, int32_t ACol, int32_t ARow) {
  return TCollector(AProgram, AWorkbook, AInterpreter, ASheet, ACol, ARow).Run();
}

bool HoldsInRow(const TPrecedentPatterns& APatterns, int32_t ARow) {
  return std::none_of(APatterns.begin(), APatterns.end(), [ARow](const TPrecedentPattern& APattern) {
    return (APattern.RowRelative || APattern.Row2Relative) && SpansAllRows(APattern.Top(ARow), APattern.Bottom(ARow));
  });
}

}  // namespace tessarine::detail
