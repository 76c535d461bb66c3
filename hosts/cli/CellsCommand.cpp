#include <hosts/cli/Arguments.h>
#include <hosts/cli/CellJson.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Ranges.h>
#include <hosts/cli/Session.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

struct TShownCell {
  const TWorksheet& Sheet;
  TCellAddress Address;
  TValueView Value;     // what formulas see
  std::string Formula;  // empty for a cell without one
  std::string Anchor;   // of the block that lays a value over the cell, empty without one
  std::string Text;     // what is shown
};

TShownCell DescribeCell(const TWorkbook& AWorkbook, const TWorksheet& ASheet, TCellAddress AAddress) {
  TShownCell shown{.Sheet = ASheet,
                   .Address = AAddress,
                   .Value = ASheet.EffectiveView(AAddress.Col, AAddress.Row),
                   .Formula = {},
                   .Anchor = {},
                   .Text = ASheet.GetDisplayText(AAddress, &AWorkbook.StyleSheet()).ToUtf8()};
  const TCell cell = ASheet.GetCell(AAddress);
  if (cell.Value.Kind == cvkFormula) shown.Formula = cell.Value.Formula().ToUtf8();
  if (cell.Value.Kind == cvkEmpty) {
    if (const TSpillRange* block = ASheet.Spills().FindChildBlock(AAddress.Col, AAddress.Row))
      shown.Anchor = Utf16ToUtf8(TCellAddress{block->AnchorCol, block->AnchorRow}.ToA1());
  }
  return shown;
}

void PutJsonLine(const TShownCell& ACell, std::string& AOut) {
  TJsonWriter json(AOut);
  const auto member = [&](std::string_view AName, std::string_view AText) {
    json.Name(AName);
    json.Text(AText);
  };
  json.BeginObject();
  member("sheet", ACell.Sheet.Name().ToUtf8());
  member("cell", Utf16ToUtf8(ACell.Address.ToA1()));
  if (!ACell.Formula.empty()) member("formula", ACell.Formula);
  member("type", TypeName(ACell.Value));
  json.Name("value");
  PutJsonValue(json, ACell.Value);
  member("text", ACell.Text);
  if (!ACell.Anchor.empty()) member("spill", ACell.Anchor);
  json.EndObject();
  AOut += '\n';
}

/// A text between tabs: what would divide fields or lines becomes a blank.
void PutTabbed(std::string_view AText, std::string& AOut) {
  for (const char byte : AText) AOut += static_cast<unsigned char>(byte) < 0x20 ? ' ' : byte;
}

void PutPlainLine(const TShownCell& ACell, std::string& AOut) {
  PutTabbed(ACell.Sheet.Name().ToUtf8(), AOut);
  AOut += '\t' + Utf16ToUtf8(ACell.Address.ToA1()) + '\t' + TypeName(ACell.Value) + '\t';
  PutTabbed(ACell.Text, AOut);
  if (!ACell.Formula.empty()) {
    AOut += '\t';
    PutTabbed(ACell.Formula, AOut);
  }
  AOut += '\n';
}

}  // namespace

int RunCells(const TArguments& AArguments, TSession& ASession) {
  TCellRange range{1, 1, kMaxCol, kMaxRow};
  if (!AArguments.Range.empty()) range = ParseRange(AArguments.Range);
  ASession.Load(AArguments);
  const TWorkbook& workbook = ASession.Workbook();
  const bool isOneSheet = !AArguments.Sheet.empty();
  const int32_t first = isOneSheet ? ASession.SheetIndex(AArguments) : 0;
  const int32_t last = isOneSheet ? first : workbook.SheetCount() - 1;
  for (int32_t index = first; index <= last; ++index) {
    const TWorksheet& sheet = *workbook.GetSheet(index);
    ForEachShownCell(sheet, range, [&](TCellAddress AAddress) {
      const TShownCell cell = DescribeCell(workbook, sheet, AAddress);
      (AArguments.Json ? PutJsonLine : PutPlainLine)(cell, ASession.Out());
      ASession.Control().CheckStop();
      ASession.Drain();
    });
  }
  return ecDone;
}

}  // namespace tessarine::cli
