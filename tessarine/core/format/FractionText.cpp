#include <tessarine/core/format/detail/FractionText.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <numeric>

#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>

namespace tessarine::detail {

namespace {

constexpr double kTwoTo63 = 9223372036854775808.0;

bool IsFractionPlace(char16_t AUnit) { return AUnit == u'#' || AUnit == u'0' || AUnit == u'?'; }
bool IsFractionDigit(char16_t AUnit) { return AUnit >= u'1' && AUnit <= u'9'; }

bool HasPlaceBefore(std::u16string_view ACode, size_t ASlash) {
  while (ASlash > 0 && ACode[ASlash - 1] == u' ') --ASlash;
  return ASlash > 0 && IsFractionPlace(ACode[ASlash - 1]);
}

bool HasPlaceBehind(std::u16string_view ACode, size_t ASlash) {
  const size_t next = ACode.find_first_not_of(u' ', ASlash + 1);
  return next != std::u16string_view::npos && (IsFractionPlace(ACode[next]) || IsFractionDigit(ACode[next]));
}

void AppendInt64(int64_t AValue, std::u16string& AOut) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, AValue).ptr;
  AOut.append(digits, end);
}

/// The numerator that ADenominator gets: the nearest one, at most the denominator itself.
int64_t NearestNumerator(double AFraction, int64_t ADenominator) {
  const double nearest = RoundToEven(static_cast<double>(ADenominator) * AFraction);
  return std::min(static_cast<int64_t>(nearest), ADenominator);
}

double FractionError(double AFraction, const TFraction& ACandidate) {
  return std::abs(AFraction - static_cast<double>(ACandidate.Numerator) / static_cast<double>(ACandidate.Denominator));
}

/// ADenominator times AFraction minus ANumerator, rounded once, so its sign is exact.
double Excess(double AFraction, const TFraction& AOther) {
  return std::fma(static_cast<double>(AOther.Denominator), AFraction, -static_cast<double>(AOther.Numerator));
}

TFraction Mediant(const TFraction& AFrom, const TFraction& AStep, int64_t ATimes) {
  return {AFrom.Numerator + ATimes * AStep.Numerator, AFrom.Denominator + ATimes * AStep.Denominator};
}

/// Walks the Stern-Brocot tree towards a fraction. The fractions that come nearest from below and from above are the
/// neighbours on this walk, met with rising denominators, so no other denominator can be the best.
class TFractionSearch {
 public:
  TFractionSearch(double AFraction, int64_t ALimit) : FFraction(AFraction), FLimit(ALimit) {}

  TFraction Run() {
    TFraction below{0, 1};
    TFraction above{1, 1};
    Consider(above);
    // Each round moves one side as far as it goes without passing the fraction.
    while (Advance(above, below, false) || Advance(below, above, true)) {}
    return FBest;
  }

 private:
  /// Moves ASide towards AStep. False when the walk is over or the other side's turn has come.
  bool Advance(TFraction& ASide, const TFraction& AStep, bool ABelow) {
    const int64_t times =
        std::min(StepsTowards(ASide, AStep, ABelow), (FLimit - ASide.Denominator) / AStep.Denominator);
    if (times < 1) return false;
    const TFraction last = Mediant(ASide, AStep, times);
    ConsiderRun(ASide, AStep, times);
    ASide = last;
    return true;
  }

  /// How often AStep may be added to ASide so that it stays on its side of the fraction (or on it).
  int64_t StepsTowards(const TFraction& ASide, const TFraction& AStep, bool ABelow) const {
    const double gap = std::abs(Excess(FFraction, ASide));
    const double shrink = std::abs(Excess(FFraction, AStep));
    if (gap == 0) return 0;
    const int64_t most = (FLimit - ASide.Denominator) / AStep.Denominator;
    if (shrink == 0) return most;
    int64_t times = gap / shrink < static_cast<double>(most) ? static_cast<int64_t>(gap / shrink) : most;
    const auto stays = [&](int64_t ATimes) {
      const double excess = Excess(FFraction, Mediant(ASide, AStep, ATimes));
      return ABelow ? excess >= 0 : excess <= 0;
    };
    while (times > 0 && !stays(times)) --times;
    while (times < most && stays(times + 1)) ++times;
    return times;
  }

  /// Of the fractions on a run the last is the best; the first one with an error just as small is meant.
  void ConsiderRun(const TFraction& ASide, const TFraction& AStep, int64_t ATimes) {
    const double least = FractionError(FFraction, Mediant(ASide, AStep, ATimes));
    int64_t low = 1;
    int64_t high = ATimes;
    while (low < high) {
      const int64_t middle = low + (high - low) / 2;
      if (FractionError(FFraction, Mediant(ASide, AStep, middle)) <= least) {
        high = middle;
      } else {
        low = middle + 1;
      }
    }
    Consider(Mediant(ASide, AStep, low));
  }

  void Consider(const TFraction& ACandidate) {
    if (ACandidate.Numerator <= 0 || ACandidate.Numerator != NearestNumerator(FFraction, ACandidate.Denominator))
      return;
    const double error = FractionError(FFraction, ACandidate);
    if (error >= FBestError) return;
    FBestError = error;
    FBest = ACandidate;
  }

  const double FFraction;
  const int64_t FLimit;
  TFraction FBest;
  double FBestError = 1e100;
};

}  // namespace

std::optional<size_t> FindFractionSlash(std::u16string_view ACode) {
  bool quoted = false;
  for (size_t i = 0; i < ACode.size(); ++i) {
    if (ACode[i] == u'"') quoted = !quoted;
    if (ACode[i] == u'/' && !quoted && HasPlaceBefore(ACode, i) && HasPlaceBehind(ACode, i)) return i;
  }
  return std::nullopt;
}

int64_t DenominatorLimit(std::u16string_view AMask) {
  int64_t fixed = 0;
  int64_t limit = 9;
  int places = 0;
  bool quoted = false;
  for (const char16_t unit : AMask) {
    if (unit == u'"') quoted = !quoted;
    if (quoted) continue;
    if (IsFractionDigit(unit)) fixed = std::min(fixed * 10 + (unit - u'0'), kMaxDenominator);
    if (IsFractionPlace(unit) && ++places > 1) limit = std::min(limit * 10 + 9, kMaxDenominator);
  }
  return fixed > 0 ? fixed : limit;
}

TFraction BestFraction(double AFraction, int64_t ALimit) { return TFractionSearch(AFraction, ALimit).Run(); }

TFraction BestFractionPlain(double AFraction, int64_t ALimit) {
  TFraction best;
  double bestError = 1e100;
  for (int64_t denominator = 1; denominator <= ALimit; ++denominator) {
    const TFraction candidate{NearestNumerator(AFraction, denominator), denominator};
    const double error = FractionError(AFraction, candidate);
    if (candidate.Numerator <= 0 || error >= bestError) continue;
    bestError = error;
    best = candidate;
  }
  const int64_t divisor = std::gcd(best.Numerator, best.Denominator);
  return {best.Numerator / divisor, best.Denominator / divisor};
}

void AppendWhole(double AWhole, const TFormatSettings& ASettings, std::u16string& AOut) {
  if (std::abs(AWhole) < kTwoTo63) {
    AppendInt64(static_cast<int64_t>(AWhole), AOut);
  } else {
    AOut += FloatToStr(AWhole, ASettings);
  }
}

void AppendFraction(double AValue, int64_t ALimit, TBestFraction ABest, const TFormatSettings& ASettings,
                    std::u16string& AOut) {
  if (!std::isfinite(AValue)) {
    AOut += FloatToStr(AValue, ASettings);
    return;
  }
  double whole = std::trunc(std::abs(AValue));
  double rest = std::abs(AValue) - whole;
  if (rest >= 0.9999999999) {
    whole += 1;
    rest = 0;
  }
  TFraction fraction = rest < 1e-10 ? TFraction() : ABest(rest, ALimit);
  const auto carried = fraction.Numerator / fraction.Denominator;
  whole += static_cast<double>(carried);
  fraction.Numerator %= fraction.Denominator;

  const bool isZero = whole < 1 && fraction.Numerator == 0;
  if (AValue < 0 && !isZero) AOut += u'-';
  if (fraction.Numerator == 0 || whole >= 1) AppendWhole(whole, ASettings, AOut);
  if (fraction.Numerator == 0) return;
  if (whole >= 1) AOut += u' ';
  AppendInt64(fraction.Numerator, AOut);
  AOut += u'/';
  AppendInt64(fraction.Denominator, AOut);
}

}  // namespace tessarine::detail
