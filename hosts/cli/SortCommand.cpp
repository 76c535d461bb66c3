#include <algorithm>
#include <vector>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Output.h>
#include <hosts/cli/Ranges.h>
#include <hosts/cli/Session.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/features/AutoFiltering.h>
#include <tessarine/features/Sorting.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

TSheetSortKey SortKeyOf(const std::string& AText, const TCellRange& ARange) {
  const size_t colon = AText.find(':');
  const std::u16string order = ToAsciiLower(Utf8ToUtf16(colon == AText.npos ? "asc" : AText.substr(colon + 1)));
  if (order != u"asc" && order != u"desc")
    throw ECli(ecUsage, "\"" + AText + "\" is no order; write for example C, C:asc or C:desc");
  return {ColumnIn(ARange, AText.substr(0, colon)), order == u"asc"};
}

}  // namespace

int RunSort(const TArguments& AArguments, TSession& ASession) {
  const TOutputPlan plan = PlanOutput(AArguments);
  const TCellRange asked = ParseRange(AArguments.Range);
  std::vector<TSheetSortKey> keys;
  for (const std::string& by : AArguments.By) keys.push_back(SortKeyOf(by, asked));
  ASession.Load(AArguments);
  const int32_t index = ASession.SheetIndex(AArguments);
  TWorksheet& sheet = *ASession.Workbook().GetSheet(index);
  const TCellRange range = UsedPartOf(asked, sheet);
  if (range.Height() > 1) TessarineSortRange(&ASession.Workbook(), &sheet, range.ToA1(), AArguments.Header, keys);
  FinishChange(AArguments, plan, ASession, index);
  return ecDone;
}

int RunFilter(const TArguments& AArguments, TSession& ASession) {
  const TOutputPlan plan = PlanOutput(AArguments);
  const TCellRange asked = ParseRange(AArguments.Range);
  const int32_t col = ColumnIn(asked, AArguments.Column);
  if (AArguments.Values.empty() && AArguments.Contains.empty())
    throw ECli(ecUsage,
               "say what stays: --values with a text (it may be repeated), or --contains with a piece of text");
  ASession.Load(AArguments);
  const int32_t index = ASession.SheetIndex(AArguments);
  TWorksheet& sheet = *ASession.Workbook().GetSheet(index);
  const TCellRange range = UsedPartOf(asked, sheet);
  if (!(sheet.AutoFilter().IsEnabled() && sheet.AutoFilter().Range() == range)) {
    DisableAutoFilter(sheet);
    sheet.AutoFilter().Enable(range);
  }
  if (AArguments.Contains.empty()) {
    std::vector<TText> values;
    for (const std::string& value : AArguments.Values) values.push_back(TText::FromUtf8(value));
    sheet.AutoFilter().SetColumnValues(col, std::move(values), AArguments.MatchCase);
  } else {
    sheet.AutoFilter().SetColumnContains(col, TText::FromUtf8(AArguments.Contains), AArguments.MatchCase);
  }
  ApplyAutoFilter(sheet, &ASession.Workbook().StyleSheet());
  FinishChange(AArguments, plan, ASession, index);
  return ecDone;
}

}  // namespace tessarine::cli
