#include <tessarine/formula/library/detail/WebBodies.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <span>
#include <utility>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/formula/StockHistory.h>
#include <tessarine/formula/library/detail/WebReading.h>
#include <tessarine/platform/Dates.h>
#include <tessarine/platform/Http.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

using TBarField = double TStockHistoryBar::*;

struct TProperty {
  std::u16string_view Name;
  TBarField Field;
};

constexpr std::array<TProperty, 6> kProperties = {{
    {u"Date", &TStockHistoryBar::Date},
    {u"Close", &TStockHistoryBar::Close},
    {u"Open", &TStockHistoryBar::Open},
    {u"High", &TStockHistoryBar::High},
    {u"Low", &TStockHistoryBar::Low},
    {u"Volume", &TStockHistoryBar::Volume},
}};
constexpr size_t kDateProperty = 0;
constexpr size_t kCloseProperty = 1;

TCellValue NameOf(size_t AProperty) { return TextOf(TText(kProperties[AProperty].Name)); }

/// The bars of the workbook's provider, or else of the service on the network if that is allowed. Empty for a failure.
std::vector<TStockHistoryBar> FetchHistory(const TFormulaContext& AContext, const TText& ASymbol, double AStart,
                                           double AEnd, int32_t AInterval) {
  std::vector<TStockHistoryBar> bars;
  if (!AContext.Workbook) return bars;
  std::shared_ptr<ITessarineStockHistoryProvider> provider = AContext.Workbook->StockHistoryProvider;
  if (!provider && AContext.Workbook->NetworkAllowed())
    provider = std::make_shared<TYahooStockHistoryProvider>(AContext.Workbook->HttpClient);
  if (!provider) return bars;
  if (!AskProvider([&] { return provider->GetHistory(ASymbol, AStart, AEnd, AInterval, bars); })) bars.clear();
  return bars;
}

/// The columns of some properties with ABars below what ARows holds already.
TFormulaArg HistoryTable(TValueRows ARows, const std::vector<TStockHistoryBar>& ABars,
                         std::span<const size_t> AProperties) {
  if (ABars.size() > static_cast<size_t>(kMaxGeneratedCells) / AProperties.size()) return TFormulaArg::FromError(ceNum);
  for (const TStockHistoryBar& bar : ABars) {
    auto& row = ARows.emplace_back();
    for (const size_t property : AProperties) row.push_back(NumberOrError(bar.*kProperties[property].Field));
  }
  return RectangleOf(std::move(ARows));
}

std::vector<TCellValue> NamesOf(std::span<const size_t> AProperties) {
  std::vector<TCellValue> names;
  for (const size_t property : AProperties) names.push_back(NameOf(property));
  return names;
}

/// The properties of STOCKHISTORY's arguments from AFirst on; empty when one is none.
std::vector<size_t> PropertiesOf(TFormulaArgs AArgs, size_t AFirst) {
  std::vector<size_t> properties;
  for (size_t i = AFirst; i < AArgs.size(); ++i) {
    int64_t property = 0;
    if (!ArgAsInt64(AArgs[i], property) || property < 0 || property >= int64_t{kProperties.size()}) return {};
    properties.push_back(static_cast<size_t>(property));
  }
  if (properties.empty()) properties = {kDateProperty, kCloseProperty};
  return properties;
}

/// A number that may be left out; false for what is no number.
bool ReadOptionalNumber(TFormulaArgs AArgs, size_t AIndex, std::optional<double>& ANumber) {
  if (!IsGiven(AArgs, AIndex)) return true;
  double number = 0;
  if (!ArgAsNumber(AArgs[AIndex], number)) return false;
  ANumber = number;
  return true;
}

// GOOGLEFINANCE without a provider of its own -------------------------------------------------------------------------

constexpr double kDaysToLastBar = 10;  // holidays included

struct TAttribute {
  std::u16string_view Name;
  size_t Property;
};

constexpr TAttribute kAttributes[] = {
    {u"price", kCloseProperty},
    {u"close", kCloseProperty},
    {u"priceclose", kCloseProperty},
    {u"priceopen", 2},
    {u"open", 2},
    {u"high", 3},
    {u"low", 4},
    {u"volume", 5},
};

TFormulaArg LastValue(const TFormulaContext& AContext, const TText& ATicker, size_t AProperty) {
  const double today = std::floor(NowSerial());
  const auto bars = FetchHistory(AContext, ATicker, today - kDaysToLastBar, today, 0);
  const TBarField field = kProperties[AProperty].Field;
  // A day that has begun may have no value yet.
  const auto last =
      std::find_if(bars.rbegin(), bars.rend(), [&](const TStockHistoryBar& ABar) { return ABar.*field != 0; });
  return last == bars.rend() ? TFormulaArg::FromError(ceNA) : TFormulaArg::FromScalar(NumberOrError((*last).*field));
}

TFormulaArg FinanceFromHistory(const TFormulaContext& AContext, const TText& ATicker, std::u16string_view AAttribute,
                               const std::optional<double>& AStart, const std::optional<double>& AEnd) {
  const std::u16string name = ToAsciiLower(AAttribute);
  const auto* const attribute = std::find_if(std::begin(kAttributes), std::end(kAttributes),
                                             [&](const TAttribute& AKnown) { return AKnown.Name == name; });
  if (attribute == std::end(kAttributes)) return TFormulaArg::FromError(ceNA);
  if (!AStart) return LastValue(AContext, ATicker, attribute->Property);
  const auto bars = FetchHistory(AContext, ATicker, *AStart, AEnd.value_or(*AStart), 0);
  if (bars.empty()) return TFormulaArg::FromError(ceNA);
  const size_t columns[] = {kDateProperty, attribute->Property};
  return HistoryTable({NamesOf(columns)}, bars, columns);
}

}  // namespace

/// STOCKHISTORY(stock, start, [end], [interval], [headers], [property], ...)
TFormulaArg CallStockHistory(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 2)) return *error;
  const TText stock(TrimmedArg(AArgs, 0));
  double start = 0;
  std::optional<double> end;
  const bool hasDates = ArgAsNumber(AArgs[1], start) && ReadOptionalNumber(AArgs, 2, end);
  const auto interval = WholeArgOr(AArgs, 3, 0);
  const auto headers = WholeArgOr(AArgs, 4, 1);
  const std::vector<size_t> properties = PropertiesOf(AArgs, 5);
  const auto isChoice = [](const std::optional<int64_t>& AChoice) { return AChoice && *AChoice >= 0 && *AChoice <= 2; };
  if (stock.IsEmpty() || !hasDates || !isChoice(interval) || !isChoice(headers) || properties.empty())
    return TFormulaArg::FromError(ceValue);
  const auto bars = FetchHistory(AContext, stock, start, end.value_or(start), static_cast<int32_t>(*interval));
  if (bars.empty()) return TFormulaArg::FromError(ceNA);
  TValueRows rows;
  if (*headers == 2) {
    rows.emplace_back(properties.size());
    rows.back()[0] = TextOf(stock);
  }
  if (*headers >= 1) rows.push_back(NamesOf(properties));
  return HistoryTable(std::move(rows), bars, properties);
}

/// GOOGLEFINANCE(ticker, [attribute], [start], [end], [interval])
TFormulaArg CallGoogleFinance(TFormulaArgs AArgs, const TFormulaContext& AContext) {
  if (auto error = ErrorOfArgs(AArgs, 1)) return *error;
  const TText ticker(TrimmedArg(AArgs, 0));
  TText attribute(TrimmedArg(AArgs, 1));
  if (attribute.IsEmpty()) attribute = u"price";
  std::optional<double> start;
  std::optional<double> end;
  const auto interval = WholeArgOr(AArgs, 4, 0);
  const bool hasInterval = interval && *interval >= INT32_MIN && *interval <= INT32_MAX;
  if (ticker.IsEmpty() || !ReadOptionalNumber(AArgs, 2, start) || !ReadOptionalNumber(AArgs, 3, end) || !hasInterval)
    return TFormulaArg::FromError(ceValue);
  if (!AContext.Workbook) return TFormulaArg::FromError(ceNA);
  const auto provider = AContext.Workbook->GoogleFinanceProvider;
  if (!provider) return FinanceFromHistory(AContext, ticker, attribute, start, end);
  TProviderBlock block;
  const bool isGood = AskProvider([&] {
    return provider->GetFinanceData(ticker, attribute, start ? &*start : nullptr, end ? &*end : nullptr,
                                    static_cast<int32_t>(*interval), block);
  });
  return isGood ? BlockOf(std::move(block)) : TFormulaArg::FromError(ceNA);
}

}  // namespace tessarine::detail
