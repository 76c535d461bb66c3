#pragma once

#include <algorithm>
#include <array>
#include <map>
#include <optional>
#include <random>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/core/sheet/detail/LineMap.h>
#include <tessarine/core/undo/StructureCommands.h>
#include <tessarine/core/undo/UndoManager.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::testing {

/// "insert rows 3 2", "delete columns 1 1", "move rows 3 2 9", on a sheet.
struct TNamedEdit {
  std::string Verb;
  bool Rows = true;
  int32_t Start = 1;
  int32_t Count = 1;
  int32_t Dest = 1;
  int32_t Sheet = 0;

  static TNamedEdit Parse(const std::string& AText) {
    TNamedEdit edit;
    std::istringstream words(AText);
    std::string axis;
    words >> edit.Verb >> axis >> edit.Start >> edit.Count >> edit.Dest;
    edit.Rows = axis == "rows";
    return edit;
  }
  std::string Text() const {
    return Verb + (Rows ? " rows " : " columns ") + std::to_string(Start) + " " + std::to_string(Count) + " " +
           std::to_string(Dest) + " on " + std::to_string(Sheet);
  }
  std::optional<detail::TLineEdit> Lines() const {
    const TShiftAxis axis = Rows ? saRows : saColumns;
    return Verb == "move" ? detail::MakeMove(axis, Start, Count, Dest)
                          : detail::MakeShift(axis, Start, Count, Verb == "delete");
  }
  void Apply(TWorkbook& ABook) const {
    if (Verb == "move")
      return (ABook.*(Rows ? &TWorkbook::MoveRows : &TWorkbook::MoveColumns))(Sheet, Start, Count, Dest);
    const auto rows = Verb == "delete" ? &TWorkbook::DeleteRows : &TWorkbook::InsertRows;
    const auto cols = Verb == "delete" ? &TWorkbook::DeleteColumns : &TWorkbook::InsertColumns;
    (ABook.*(Rows ? rows : cols))(Sheet, Start, Count);
  }
  void Execute(TWorkbook& ABook) const {
    std::shared_ptr<IUndoCommand> command;
    if (Verb == "move")
      command = std::make_shared<TRowColMoveCommand>(ABook, Sheet, Rows, Start, Count, Dest);
    else
      command = std::make_shared<TRowColShiftCommand>(ABook, Sheet, Rows, Verb == "delete", Start, Count);
    ABook.UndoManager().ExecuteCommand(std::move(command));
  }
};

inline TNamedEdit RandomEdit(std::mt19937& ARandom, int32_t ASheets) {
  const auto below = [&](uint32_t ALimit) { return static_cast<int32_t>(ARandom() % ALimit); };
  TNamedEdit edit;
  edit.Verb = std::array{"insert", "delete", "move"}[static_cast<size_t>(below(3))];
  edit.Rows = below(3) != 0;
  edit.Sheet = below(static_cast<uint32_t>(ASheets));
  const int32_t limit = edit.Rows ? kMaxRow : kMaxCol;
  const auto line = [&] { return below(8) == 0 ? limit - below(20) : 1 + below(edit.Rows ? 700 : 6); };
  edit.Start = line();
  edit.Count = std::array{1, 1, 2, 3, 256, 512, 90, limit}[static_cast<size_t>(below(8))];
  if (!edit.Rows && edit.Count < limit) edit.Count = 1 + below(3);
  edit.Dest = line();
  return edit;
}

inline TCell RandomCell(std::mt19937& ARandom, int32_t ACol, int32_t ARow) {
  const auto below = [&](uint32_t ALimit) { return static_cast<int32_t>(ARandom() % ALimit); };
  const auto text = [](int32_t ANumber) { return Utf8ToUtf16(std::to_string(ANumber)); };
  const auto ref = [&](int32_t AFrom) {
    std::u16string cell = below(4) == 0 ? u"$" : u"";
    cell += static_cast<char16_t>(u'A' + below(6));
    if (below(4) == 0) cell += u'$';
    return cell + text(below(30) == 0 ? kMaxRow - below(3) : std::clamp(AFrom + below(5) - 2, 1, kMaxRow));
  };
  static const std::array<std::u16string, 12> odd = {
      u"=1+1",       u"= sum( a1 , B2)", u"=SUM(A:A)+$2:$3",    u"=T[Price]*2", u"=\"A1\"&A3",        u"",
      u"=LOG10(B5)", u"=true",           u"='My Sheet'!B$4+C3", u"=sheet1!A9",  u"=Sheet1!A2:B300+1", u"=#REF!+A2",
  };
  TCell cell;
  switch (below(9)) {
    case 0: cell.Value = TCellValue::FromText(u"text " + text(below(9))); break;
    case 1:
    case 2: cell.Value = TCellValue::FromNumber(below(1000)); break;
    case 3: cell.Value = TCellValue::FromFormula(u"=" + ref(ARow) + u"+" + ref(10)); break;
    case 4: cell.Value = TCellValue::FromFormula(u"=SUM(A$1:A" + text(ARow) + u")+Sheet2!" + ref(ARow)); break;
    case 5: cell.Value = TCellValue::FromFormula(u"='My Sheet'!$B$3*B" + text(ARow)); break;
    case 6: cell.Value = TCellValue::FromFormula(odd[static_cast<size_t>(below(12))]); break;
    default: cell.Value = TCellValue::FromFormula(u"=A" + text(ARow) + u"*$F$1"); break;
  }
  if (below(3) == 0) cell.SetCachedResult(below(2) == 0 ? TCellValue::FromText(u"result") : TCellValue::FromNumber(5));
  if (below(6) == 0) cell.StyleIndex = below(5);
  if (below(9) == 0) {
    cell.HasFormatOverride = true;
    cell.FormatOverride.Font.Bold = true;
  }
  if (below(12) == 0) cell.RichText = {{u"run", {}}};
  if (below(12) == 0) {
    cell.Sparkline.Kind = below(2) == 0 ? spkLine : spkNone;
    cell.Sparkline.Values = {1.0 * ACol};
    cell.Sparkline.Color = below(2) == 0 ? 7 : 0;
  }
  return cell;
}

/// Three sheets of cells in and around their first and last rows, in blocks that share formulas, and some names.
inline void FillRandomBook(TWorkbook& ABook, unsigned ASeed, bool ASmall) {
  std::mt19937 random(ASeed * 7919);
  ABook.AddSheet(u"Sheet2");
  ABook.AddSheet(u"My Sheet");
  for (int32_t index = 0; index < 3; ++index) {
    TWorksheet& sheet = *ABook.GetSheet(index);
    for (int32_t i = 0; i < (ASmall ? 60 : 250); ++i) {
      const auto col = static_cast<int32_t>(random() % 8 == 0 ? kMaxCol - random() % 3 : 1 + random() % 7);
      const auto row = static_cast<int32_t>(random() % 6 == 0 ? kMaxRow - random() % 300 : 1 + random() % 900);
      sheet.SetCell({col, row}, RandomCell(random, col, row));
    }
    const int32_t first = 1 + static_cast<int32_t>(random() % 300);
    for (int32_t row = first; row < first + (ASmall ? 40 : 600); ++row)
      sheet.SetValue({3, row}, TCellValue::FromFormula(u"=B" + Utf8ToUtf16(std::to_string(row)) + u"+$A$5"));
  }
  ABook.SetNamedFormula(u"First", u"=A5+Sheet2!$A$7");
  ABook.SetNamedFormula(u"Odd", u"= sum( a1 )");
}

inline std::map<std::pair<int32_t, int32_t>, TCell> MapOf(const TWorksheet& ASheet) {
  std::map<std::pair<int32_t, int32_t>, TCell> cells;
  ASheet.Store().ForEachByColumn([&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    cells[{ACol, ARow}] = ASheet.GetCellAt(ACol, ARow);
  });
  return cells;
}

/// All that a sheet's cells hold, as text.
inline std::string CellsOf(const TWorksheet& ASheet) {
  std::string text;
  for (const auto& [place, cell] : MapOf(ASheet)) {
    text += std::to_string(place.first) + "," + std::to_string(place.second) + " ";
    text += Utf16ToUtf8(cell.Value.ToDisplayString()) + " style " + std::to_string(cell.StyleIndex);
    if (cell.HasFormatOverride) text += cell.FormatOverride.Font.Bold ? " bold" : " override";
    if (cell.HasCachedValue) text += " = " + Utf16ToUtf8(cell.CachedValue.ToDisplayString());
    if (!cell.RichText.empty()) text += " runs";
    if (cell.Sparkline != TSparklineData{})
      text += " chart " + std::to_string(cell.Sparkline.Kind == spkLine) + std::to_string(cell.Sparkline.Color) +
              std::to_string(cell.Sparkline.Values.size());
    text += "\n";
  }
  return text;
}

/// The first line in which the cells of two sheets differ; empty for the same cells.
inline std::string FirstDifference(const TWorksheet& ALeft, const TWorksheet& ARight) {
  std::istringstream left(CellsOf(ALeft));
  std::istringstream right(CellsOf(ARight));
  std::string leftLine;
  std::string rightLine;
  for (;;) {
    const bool hasLeft = static_cast<bool>(std::getline(left, leftLine));
    const bool hasRight = static_cast<bool>(std::getline(right, rightLine));
    if (!hasLeft && !hasRight) return {};
    if (!hasLeft) leftLine = "nothing";
    if (!hasRight) rightLine = "nothing";
    if (leftLine != rightLine) return leftLine + " | " + rightLine;
  }
}

}  // namespace tessarine::testing
