#pragma once

#include <memory>
#include <string>
#include <string_view>

#include <tessarine/Export.h>
#include <tessarine/core/sheet/Providers.h>

namespace tessarine {

class IHttpClient;

/// Histories from the chart service at WebSettings().FinanceHost; what workbooks without a provider of their own ask.
/// Every call goes to the network, for at most 15 seconds.
class TESSARINE_API TYahooStockHistoryProvider final : public ITessarineStockHistoryProvider {
 public:
  /// Null: the client of the process.
  explicit TYahooStockHistoryProvider(std::shared_ptr<IHttpClient> AClient = nullptr);
  ~TYahooStockHistoryProvider() override;

  /// The bars from the day of AStart to that of AEnd, both included; an end not after the start is one day. AInterval
  /// is 0 for days, 1 for weeks, 2 for months. What a bar lacks is 0. False for no answer or another one than expected.
  bool GetHistory(const TText& ASymbol, double AStart, double AEnd, int32_t AInterval,
                  std::vector<TStockHistoryBar>& ABars) override;

 private:
  std::shared_ptr<IHttpClient> FClient;
};

/// The symbol without its exchange: trimmed, and from behind the first ":" on ("NASDAQ:MSFT" is "MSFT").
TESSARINE_API std::u16string NormalizeStockSymbol(std::u16string_view ASymbol);

}  // namespace tessarine
