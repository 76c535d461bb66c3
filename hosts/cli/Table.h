#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace tessarine::cli {

enum class TAlign { alLeft, alCenter, alRight };
using enum TAlign;

struct TTableColumn {
  std::string Title;  // UTF-8
  TAlign Align = alLeft;
};

struct TTableCell {
  std::u16string Text;
  TAlign Align = alLeft;
  std::string Style;  // parameters of the terminal's "select graphic rendition", such as "1;31"; empty for none
  int Span = 1;       // columns that the cell covers; as many follow less one, and are not looked at
};

/// Lays cells out in columns for a terminal or a file. Texts are cleaned of what would steer a terminal.
class TTextTable {
 public:
  explicit TTextTable(std::vector<TTableColumn> AColumns);

  /// A row of UTF-8 texts, aligned as their columns are.
  void AddRow(const std::vector<std::string>& ATexts);
  void AddCells(std::vector<TTableCell> ACells);
  size_t RowCount() const { return FRows.size(); }

  /// Rules between the columns and under the titles.
  void SetHasRules(bool AValue) { FHasRules = AValue; }

  /// Narrows the columns, and leaves the last ones out, until a row takes no more than AWidth columns of the terminal.
  /// Answers how many columns are left, at least two where there are as many.
  size_t FitTo(int AWidth);

  void Append(std::string& AOut) const;

 private:
  void AppendCell(const TTableCell& ACell, int AWidth, bool AIsLast, std::string& AOut) const;
  void AppendRow(const std::vector<TTableCell>& ACells, std::string& AOut) const;
  int GapWidth() const { return FHasRules ? 3 : 2; }

  std::vector<TTableColumn> FColumns;
  std::vector<std::vector<TTableCell>> FRows;
  std::vector<int> FWidths;
  bool FHasRules = false;
};

}  // namespace tessarine::cli
