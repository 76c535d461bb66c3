#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

/// One bar of a security's history. Dates are serial numbers (days from 30 December 1899).
struct TStockHistoryBar {
  double Date = 0;
  double Open = 0;
  double High = 0;
  double Low = 0;
  double Close = 0;
  double Volume = 0;
};

/// A block of values, row by row.
struct TProviderBlock {
  int32_t Rows = 0;
  int32_t Cols = 0;
  std::vector<TCellValue> Values;
};

/// Daily, weekly or monthly bars of a symbol. The answer tells whether there are data.
class TESSARINE_API ITessarineStockHistoryProvider {
 public:
  virtual ~ITessarineStockHistoryProvider() = default;
  virtual bool GetHistory(const TText& ASymbol, double AStart, double AEnd, int32_t AInterval,
                          std::vector<TStockHistoryBar>& ABars) = 0;
};

/// Real-time topics.
class TESSARINE_API ITessarineRtdProvider {
 public:
  virtual ~ITessarineRtdProvider() = default;
  /// The current value of a topic, if there is one.
  virtual bool TryGetValue(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics,
                           TCellValue& AValue) = 0;
  /// Called once for each topic key.
  virtual void Connect(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics) = 0;
  /// For hosts that count their topics; nothing in the library calls it.
  virtual void Disconnect(const TText& AProgId, const TText& AServer, std::span<const TText> ATopics) = 0;
};

/// A scalar (1 x 1) or a block of a security's data. AStart and AEnd are null when not given.
class TESSARINE_API ITessarineGoogleFinanceProvider {
 public:
  virtual ~ITessarineGoogleFinanceProvider() = default;
  virtual bool GetFinanceData(const TText& ATicker, const TText& AAttribute, const double* AStart, const double* AEnd,
                              int32_t AInterval, TProviderBlock& ABlock) = 0;
};

/// Translation and detection of languages.
class TESSARINE_API ITessarineTranslateProvider {
 public:
  virtual ~ITessarineTranslateProvider() = default;
  virtual bool Translate(const TText& AText, const TText& ASource, const TText& ATarget, TText& AResult) = 0;
  virtual bool DetectLanguage(const TText& AText, TText& ALanguage) = 0;
};

/// A block of another document's values.
class TESSARINE_API ITessarineImportRangeProvider {
 public:
  virtual ~ITessarineImportRangeProvider() = default;
  virtual bool ImportRange(const TText& AUrl, const TText& ARange, TProviderBlock& ABlock) = 0;
};

}  // namespace tessarine
