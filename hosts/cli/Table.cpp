#include <hosts/cli/Table.h>

#include <algorithm>
#include <utility>

#include <hosts/cli/TextWidth.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

constexpr int kNarrow = 8;   // columns are narrowed to this before the last ones are left out
constexpr int kWidest = 60;  // of a column, whatever stands in it

void AppendBlanks(int ACount, std::string& AOut) {
  if (ACount > 0) AOut.append(static_cast<size_t>(ACount), ' ');
}

}  // namespace

TTextTable::TTextTable(std::vector<TTableColumn> AColumns) : FColumns(std::move(AColumns)) {
  for (const TTableColumn& column : FColumns) FWidths.push_back(DisplayWidth(Utf8ToUtf16(column.Title)));
}

void TTextTable::AddRow(const std::vector<std::string>& ATexts) {
  std::vector<TTableCell> cells;
  for (size_t i = 0; i < ATexts.size() && i < FColumns.size(); ++i)
    cells.push_back({.Text = Utf8ToUtf16(ATexts[i]), .Align = FColumns[i].Align, .Style = {}});
  AddCells(std::move(cells));
}

void TTextTable::AddCells(std::vector<TTableCell> ACells) {
  ACells.resize(FColumns.size());
  for (size_t i = 0; i < ACells.size(); ++i) {
    ACells[i].Text = WithoutControls(ACells[i].Text);
    if (ACells[i].Span == 1) FWidths[i] = std::max(FWidths[i], std::min(DisplayWidth(ACells[i].Text), kWidest));
  }
  FRows.push_back(std::move(ACells));
}

size_t TTextTable::FitTo(int AWidth) {
  const auto widthOf = [this](size_t ACount, int AMost) {
    int width = GapWidth() * (static_cast<int>(ACount) - 1);
    for (size_t i = 0; i < ACount; ++i) width += i == 0 ? FWidths[i] : std::min(FWidths[i], AMost);
    return width;
  };
  size_t count = FColumns.size();
  while (count > 2 && widthOf(count, kNarrow) > AWidth) --count;
  int most = kWidest;
  while (most > 1 && widthOf(count, most) > AWidth) --most;
  FColumns.resize(count);
  FWidths.resize(count);
  for (size_t i = 1; i < count; ++i) FWidths[i] = std::min(FWidths[i], most);
  for (auto& row : FRows) row.resize(count);
  return count;
}

void TTextTable::AppendCell(const TTableCell& ACell, int AWidth, bool AIsLast, std::string& AOut) const {
  const std::u16string text = CutToWidth(ACell.Text, AWidth);
  const int blanks = AWidth - DisplayWidth(text);
  const int before = ACell.Align == alRight ? blanks : ACell.Align == alCenter ? blanks / 2 : 0;
  if (!ACell.Style.empty()) AOut += "\x1b[" + ACell.Style + "m";
  AppendBlanks(before, AOut);
  AppendUtf16AsUtf8(text, AOut);
  if (!AIsLast || !ACell.Style.empty()) AppendBlanks(blanks - before, AOut);
  if (!ACell.Style.empty()) AOut += "\x1b[0m";
}

void TTextTable::AppendRow(const std::vector<TTableCell>& ACells, std::string& AOut) const {
  for (size_t i = 0; i < FWidths.size();) {
    const size_t end = std::min(i + static_cast<size_t>(std::max(ACells[i].Span, 1)), FWidths.size());
    int width = GapWidth() * static_cast<int>(end - i - 1);
    for (size_t k = i; k < end; ++k) width += FWidths[k];
    if (i > 0) AOut += FHasRules ? " \u2502 " : "  ";
    AppendCell(ACells[i], width, end == FWidths.size(), AOut);
    i = end;
  }
  while (!AOut.empty() && AOut.back() == ' ') AOut.pop_back();
  AOut += '\n';
}

void TTextTable::Append(std::string& AOut) const {
  std::vector<TTableCell> titles;
  for (const TTableColumn& column : FColumns)
    titles.push_back({.Text = Utf8ToUtf16(column.Title), .Align = column.Align, .Style = {}});
  AppendRow(titles, AOut);
  if (FHasRules) {
    for (size_t i = 0; i < FWidths.size(); ++i) {
      if (i > 0) AOut += "\u2500\u253C\u2500";
      for (int k = 0; k < FWidths[i]; ++k) AOut += "\u2500";
    }
    AOut += '\n';
  }
  for (const auto& row : FRows) AppendRow(row, AOut);
}

}  // namespace tessarine::cli
