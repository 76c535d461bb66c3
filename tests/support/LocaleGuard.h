#pragma once

#include <utility>

#include <tessarine/platform/Locale.h>

namespace tessarine::test {

/// Keeps the process's locale for the length of a test; Set changes it meanwhile.
class TLocaleGuard {
 public:
  TLocaleGuard() : FBefore(CurrentFormatSettings()) {}
  explicit TLocaleGuard(char16_t ADecimalSeparator) : TLocaleGuard() { SetDecimal(ADecimalSeparator); }
  ~TLocaleGuard() { SetDefaultFormatSettings(FBefore); }
  TLocaleGuard(const TLocaleGuard&) = delete;
  TLocaleGuard& operator=(const TLocaleGuard&) = delete;

  void SetDecimal(char16_t ASeparator) {
    TFormatSettings settings = FBefore;
    settings.DecimalSeparator = ASeparator;
    SetDefaultFormatSettings(std::move(settings));
  }

 private:
  TFormatSettings FBefore;
};

}  // namespace tessarine::test
