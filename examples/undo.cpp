// Edits that can be taken back: a cell, inserted rows and a sort.

#include <cstdio>
#include <memory>
#include <string>

#include <tessarine/tessarine.h>

namespace {

void Print(const char* AWhat, const tessarine::TAuthoringSheet& ASheet) {
  std::printf("%-28s", AWhat);
  ASheet.Range("A1:A6").ForEachCell([](tessarine::TSheetCellRef ACell) {
    const tessarine::TText formula = ACell.Formula();
    std::printf(" [%s]", (formula.IsEmpty() ? ACell.Text() : formula).ToUtf8().c_str());
  });
  std::printf("\n");
}

}  // namespace

int main() {
  try {
    tessarine::TWorkbook workbook;
    tessarine::TUndoManager& undo = workbook.UndoManager();
    const tessarine::TAuthoringSheet sheet = tessarine::TAuthoringWorkbook(workbook).UseSheet(0);

    // The references write straight to the sheet: right for building a document, which nobody wants to take back.
    sheet.Range("A1:A3").SetValues({{30}, {10}, {20}});
    sheet.GetCellRef("A4").SetFormula("SUM(A1:A3)");
    Print("At first", sheet);

    // What a person does goes through commands.
    const tessarine::TCellAddress place = sheet.GetCellRef("A2").Address();
    const tessarine::TCell before = sheet.Sheet().GetCell(place);
    tessarine::TCell after = before;
    after.Value = tessarine::TCellValue::FromNumber(99);
    undo.ExecuteCommand(std::make_shared<tessarine::TCellEditCommand>(workbook, 0, place, before, after));
    sheet.Sort("A1:A3", 1);
    undo.ExecuteCommand(std::make_shared<tessarine::TRowColShiftCommand>(workbook, 0, /*AIsRows=*/true,
                                                                         /*AIsDelete=*/false, /*AStart=*/2,
                                                                         /*ACount=*/2));
    Print("Edited, sorted, rows added", sheet);

    while (undo.CanUndo()) {
      const std::string what = "Taken back: " + undo.NextUndo()->Description().ToUtf8();
      undo.Undo();
      Print(what.c_str(), sheet);
    }
    undo.Redo();
    Print("And the first edit again", sheet);
    return sheet.GetCellRef("A2").AsNumber() == 99 && undo.RedoCount() == 2 ? 0 : 1;
  } catch (const tessarine::ETessarineError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
