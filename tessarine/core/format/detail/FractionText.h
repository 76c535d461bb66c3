#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tessarine {
struct TFormatSettings;
}

namespace tessarine::detail {

/// The position of the "/" that makes a section a fraction: placeholders stand before it and placeholders or a digit
/// from 1 to 9 behind it, blanks apart. ACode carries no marks.
std::optional<size_t> FindFractionSlash(std::u16string_view ACode);

/// The largest denominator that the mask behind the "/" allows: the number that its digits from 1 to 9 make, else 9,
/// 99,
/// ... by the count of placeholders. At most kMaxDenominator.
int64_t DenominatorLimit(std::u16string_view AMask);
inline constexpr int64_t kMaxDenominator = 999'999'999'999'999;

struct TFraction {
  int64_t Numerator = 0;
  int64_t Denominator = 1;

  friend bool operator==(const TFraction&, const TFraction&) = default;
};

/// The best n/d for AFraction (from 1e-10 to below 1) with d from 1 to ALimit: of the n nearest to d times AFraction
/// that are not 0 the one with the smallest error, and among equal errors the smallest d. 0/1 when no d has such an n.
TFraction BestFraction(double AFraction, int64_t ALimit);

/// BestFraction by trying every denominator: the definition of the result.
TFraction BestFractionPlain(double AFraction, int64_t ALimit);

using TBestFraction = TFraction (*)(double, int64_t);

/// AValue with its sign as whole number and fraction ("1 1/2").
void AppendFraction(double AValue, int64_t ALimit, TBestFraction ABest, const TFormatSettings& ASettings,
                    std::u16string& AOut);

/// A whole number with all its digits; one of 2^63 or more as general text.
void AppendWhole(double AWhole, const TFormatSettings& ASettings, std::u16string& AOut);

}  // namespace tessarine::detail
