#include <tessarine/formula/StockHistory.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <utility>

#include <tessarine/formula/library/detail/WebReading.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Http.h>
#include <tessarine/platform/JsonReader.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

constexpr int32_t kHistoryTimeoutMs = 15'000;
constexpr double kUnixEpoch = 25569;  // 1970-01-01
constexpr double kSecondsOfDay = 86400;
constexpr double kFirstDate = -693593;
constexpr double kLastDate = 2958465;
constexpr double kMissing = std::numeric_limits<double>::quiet_NaN();

/// The arrays of an answer, NaN for what is no number.
struct TChart {
  std::vector<double> Times;
  std::vector<double> Open;
  std::vector<double> High;
  std::vector<double> Low;
  std::vector<double> Close;
  std::vector<double> Volume;
};

/// At the beginning of an object: calls AMember(name) at the value of each member. What is no object is passed over.
template <class F>
void ForEachMember(TJsonReader& AJson, F&& AMember) {
  if (AJson.Event() != jeBeginObject) return AJson.Skip();
  while (AJson.Next() == jeName) {
    const std::string name(AJson.Text());
    AJson.Next();
    AMember(std::string_view(name));
  }
}

/// At the beginning of an array: calls AFirst at its first element and passes over the others.
template <class F>
void ReadFirstElement(TJsonReader& AJson, F&& AFirst) {
  if (AJson.Event() != jeBeginArray) return AJson.Skip();
  bool isFirst = true;
  while (AJson.Next() != jeEndArray) {
    if (std::exchange(isFirst, false)) {
      AFirst();
    } else {
      AJson.Skip();
    }
  }
}

void ReadNumbers(TJsonReader& AJson, std::vector<double>& ANumbers) {
  ANumbers.clear();
  if (AJson.Event() != jeBeginArray) return AJson.Skip();
  while (AJson.Next() != jeEndArray) {
    ANumbers.push_back(AJson.Event() == jeNumber ? AJson.Number() : kMissing);
    AJson.Skip();
  }
}

void ReadQuote(TJsonReader& AJson, TChart& AChart) {
  const struct {
    std::string_view Name;
    std::vector<double>& Numbers;
  } arrays[] = {{"open", AChart.Open},
                {"high", AChart.High},
                {"low", AChart.Low},
                {"close", AChart.Close},
                {"volume", AChart.Volume}};
  ForEachMember(AJson, [&](std::string_view AName) {
    for (const auto& array : arrays) {
      if (array.Name == AName) return ReadNumbers(AJson, array.Numbers);
    }
    AJson.Skip();
  });
}

void ReadResult(TJsonReader& AJson, TChart& AChart) {
  ForEachMember(AJson, [&](std::string_view AName) {
    if (AName == "timestamp") return ReadNumbers(AJson, AChart.Times);
    if (AName != "indicators") return AJson.Skip();
    ForEachMember(AJson, [&](std::string_view AIndicator) {
      if (AIndicator != "quote") return AJson.Skip();
      ReadFirstElement(AJson, [&] { ReadQuote(AJson, AChart); });
    });
  });
}

/// Throws EFileFormat and ELimit for what is no JSON.
TChart ReadChart(std::string_view AJsonText) {
  TChart chart;
  TJsonReader json(AJsonText, "chart");
  json.Next();
  ForEachMember(json, [&](std::string_view AName) {
    if (AName != "chart") return json.Skip();
    ForEachMember(json, [&](std::string_view AMember) {
      if (AMember != "result") return json.Skip();
      ReadFirstElement(json, [&] { ReadResult(json, chart); });
    });
  });
  return chart;
}

double At(const std::vector<double>& ANumbers, size_t AIndex) {
  return AIndex < ANumbers.size() && !std::isnan(ANumbers[AIndex]) ? ANumbers[AIndex] : 0;
}

std::vector<TStockHistoryBar> BarsOf(const TChart& AChart) {
  std::vector<TStockHistoryBar> bars;
  for (size_t i = 0; i < AChart.Times.size(); ++i) {
    if (std::isnan(AChart.Times[i])) continue;
    bars.push_back({.Date = AChart.Times[i] / kSecondsOfDay + kUnixEpoch,
                    .Open = At(AChart.Open, i),
                    .High = At(AChart.High, i),
                    .Low = At(AChart.Low, i),
                    .Close = At(AChart.Close, i),
                    .Volume = At(AChart.Volume, i)});
  }
  return bars;
}

bool IsDate(double ASerial) { return ASerial >= kFirstDate && ASerial <= kLastDate; }

int64_t UnixSeconds(double ASerial) { return std::llround((ASerial - kUnixEpoch) * kSecondsOfDay); }

}  // namespace

std::u16string NormalizeStockSymbol(std::u16string_view ASymbol) {
  const std::u16string_view symbol = TrimSpaces(ASymbol);
  const size_t colon = symbol.find(u':');
  return std::u16string(colon == std::u16string_view::npos ? symbol : symbol.substr(colon + 1));
}

TYahooStockHistoryProvider::TYahooStockHistoryProvider(std::shared_ptr<IHttpClient> AClient)
    : FClient(std::move(AClient)) {}
TYahooStockHistoryProvider::~TYahooStockHistoryProvider() = default;

bool TYahooStockHistoryProvider::GetHistory(const TText& ASymbol, double AStart, double AEnd, int32_t AInterval,
                                            std::vector<TStockHistoryBar>& ABars) {
  constexpr const char* kIntervals[] = {"1d", "1wk", "1mo"};
  ABars.clear();
  if (!IsDate(AStart) || !IsDate(AEnd) || AInterval < 0 || AInterval > 2) return false;
  const int64_t start = UnixSeconds(AStart);
  int64_t end = UnixSeconds(AEnd + 1);
  if (end <= start) end = start + static_cast<int64_t>(kSecondsOfDay);
  const std::string url = WebSettings().FinanceHost + "/v8/finance/chart/" +
                          detail::PercentEncoded(NormalizeStockSymbol(ASymbol)) + "?period1=" + std::to_string(start) +
                          "&period2=" + std::to_string(end) + "&interval=" + kIntervals[AInterval];
  const THttpText answer =
      TTessarineHttp::GetText(Utf8ToUtf16(url), kHistoryTimeoutMs, detail::kMaxFetchedText, FClient.get());
  if (!answer.IsGood) return false;
  try {
    ABars = BarsOf(ReadChart(Utf16ToUtf8(answer.Text)));
  } catch (const ETessarineError&) {
    return false;
  }
  return true;
}

}  // namespace tessarine
