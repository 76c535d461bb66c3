#include <tessarine/formula/library/detail/SpecialFunctions.h>

#include <boost/math/special_functions/bessel.hpp>
#include <boost/math/special_functions/gamma.hpp>
#include <cmath>
#include <limits>
#include <numbers>

namespace tessarine::detail {

namespace {

namespace bp = boost::math::policies;

/// Failures come back as NaN or an infinity; all arithmetic is in double.
using TQuietPolicy =
    bp::policy<bp::domain_error<bp::ignore_error>, bp::pole_error<bp::ignore_error>,
               bp::overflow_error<bp::ignore_error>, bp::underflow_error<bp::ignore_error>,
               bp::denorm_error<bp::ignore_error>, bp::rounding_error<bp::ignore_error>,
               bp::evaluation_error<bp::ignore_error>, bp::indeterminate_result_error<bp::ignore_error>,
               bp::promote_float<false>, bp::promote_double<false>>;

constexpr double kNaN = std::numeric_limits<double>::quiet_NaN();
constexpr double kInfinity = std::numeric_limits<double>::infinity();

/// Recurrences run over the orders; above this one only what is 0 or infinite is told.
constexpr double kMaxOrder = 1e6;

bool IsOrder(double AOrder) { return AOrder >= 0 && AOrder == std::trunc(AOrder); }

bool IsPole(double A) { return A <= 0 && A == std::floor(A); }

/// 1 for even orders, -1 for odd ones: the factor between the function at A and at -A.
double ParityOf(double AOrder) { return std::fmod(AOrder, 2) == 0 ? 1 : -1; }

/// For an order beyond the limit: the function at numbers well below the order, where it has left the range of doubles;
/// for the rest, which would take too long to find, NaN.
double BeyondMaxOrder(double AOrder, double A, double AFarBelow) { return A < AOrder / 2 ? AFarBelow : kNaN; }

/// From this length of (order, argument) on the expansion below is exact to the last digits of a double.
constexpr double kUniformLength = 600;

/// I (ASign 1) or K (ASign -1) by Debye's expansion for large orders, which is uniform in the argument: DLMF 10.41.3
/// and 10.41.4, terms up to the third, written with the length s = sqrt(order^2 + A^2) so that it also holds for order
/// 0.
double UniformBessel(double AOrder, double A, int ASign) {
  const long double length = std::hypot(static_cast<long double>(AOrder), static_cast<long double>(A));
  const long double eta = length - AOrder * std::asinh(AOrder / static_cast<long double>(A));
  const auto s = static_cast<double>(length);
  const double q = (AOrder / s) * (AOrder / s);
  const double first = (3 - 5 * q) / (24 * s);
  const double second = (81 + q * (-462 + q * 385)) / 1152 / s / s;
  const double third = (30375 + q * (-369603 + q * (765765 - q * 425425))) / 414720 / s / s / s;
  const double series = 1 + second + ASign * (first + third);
  const double scale = ASign > 0 ? 1 / (2 * std::numbers::pi) : std::numbers::pi / 2;
  // The exponential is met in two halves, which alone stay within the range of doubles.
  const auto half = static_cast<double>(std::exp(ASign * eta / 2));
  return half * (std::sqrt(scale / s) * series) * half;
}

}  // namespace

double ErrorFunction(double A) { return std::erf(A); }

double ErrorFunctionComplement(double A) { return std::erfc(A); }

double GammaFunction(double A) { return IsPole(A) ? kNaN : std::tgamma(A); }

// Not std::lgamma, which writes the sign into a variable that all threads share.
double LogGamma(double A) { return IsPole(A) || std::isnan(A) ? kNaN : boost::math::lgamma(A, TQuietPolicy()); }

double BesselJ(double AOrder, double A) {
  if (!IsOrder(AOrder) || !std::isfinite(A)) return kNaN;
  if (A < 0) return ParityOf(AOrder) * BesselJ(AOrder, -A);
  if (AOrder > kMaxOrder) return BeyondMaxOrder(AOrder, A, 0);
  return boost::math::cyl_bessel_j(static_cast<int>(AOrder), A, TQuietPolicy());
}

double BesselY(double AOrder, double A) {
  if (!IsOrder(AOrder) || !std::isfinite(A) || A <= 0) return kNaN;
  if (AOrder > kMaxOrder) return BeyondMaxOrder(AOrder, A, -kInfinity);
  return boost::math::cyl_neumann(static_cast<int>(AOrder), A, TQuietPolicy());
}

double BesselI(double AOrder, double A) {
  if (!IsOrder(AOrder) || !std::isfinite(A)) return kNaN;
  if (A < 0) return ParityOf(AOrder) * BesselI(AOrder, -A);
  if (A == 0) return AOrder == 0 ? 1 : 0;
  if (std::hypot(AOrder, A) > kUniformLength) return UniformBessel(AOrder, A, 1);
  return boost::math::cyl_bessel_i(static_cast<int>(AOrder), A, TQuietPolicy());
}

double BesselK(double AOrder, double A) {
  if (!IsOrder(AOrder) || !std::isfinite(A) || A <= 0) return kNaN;
  if (std::hypot(AOrder, A) > kUniformLength) return UniformBessel(AOrder, A, -1);
  return boost::math::cyl_bessel_k(static_cast<int>(AOrder), A, TQuietPolicy());
}

}  // namespace tessarine::detail
