// Says what may be entered into cells, and lets values colour them.

#include <cstdio>

#include <tessarine/tessarine.h>

int main() {
  try {
    tessarine::TWorkbook workbook;
    const tessarine::TAuthoringSheet sheet = tessarine::TAuthoringWorkbook(workbook).UseActiveSheet();
    sheet.Range("A1:B4").SetValues({{"State", "Score"}, {"open", 35}, {"done", 92}, {"open", 71}});

    // What may be entered. A host asks before it stores what a person has typed.
    sheet.AddListValidation("A2:A100", "open,done", "Choose one", "Only open or done");
    sheet.AddWholeValidation("B2:B100", tessarine::dvoBetween, "0", "100");
    const struct {
      const char* Cell;
      const char16_t* Entry;
    } entries[] = {{"A2", u"done"}, {"A2", u"late"}, {"B2", u"88"}, {"B2", u"101"}, {"B2", u"4.5"}};
    int refused = 0;
    for (const auto& [cell, entry] : entries) {
      const tessarine::TCellAddress place = sheet.GetCellRef(cell).Address();
      const auto verdict = sheet.Sheet().Validations().ValidateValue(place.Col, place.Row, entry);
      refused += verdict.IsAccepted ? 0 : 1;
      std::printf("%s <- %-5s %s\n", cell, tessarine::TText(entry).ToUtf8().c_str(),
                  verdict.IsAccepted ? "accepted" : verdict.Message.ToUtf8().c_str());
    }

    // How values look. Later rules lie over earlier ones; the cells' own formats stay as they are.
    sheet.AddConditionalFormat("B2:B100", tessarine::cfoGreaterEqual, "90", "", 0xFFC6EFCE, 0xFF006100, true);
    sheet.AddConditionalFormat("B2:B100", tessarine::cfoLessThan, "50", "", 0xFFFFC7CE, 0xFF9C0006);
    for (const char* cell : {"B2", "B3", "B4"}) {
      const tessarine::TSheetCellRef score = sheet.GetCellRef(cell);
      const tessarine::TCellFormat shown = sheet.Sheet().ResolveFormat(score.Address(), &workbook.StyleSheet());
      std::printf("%s is %s: fill %08X%s\n", cell, score.DisplayText().ToUtf8().c_str(),
                  shown.Fill.PatternType == 0 ? 0 : shown.Fill.ForegroundColor.ARGB, shown.Font.Bold ? ", bold" : "");
    }
    return refused == 3 ? 0 : 1;
  } catch (const tessarine::ETessarineError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
}
