#include <tessarine/formula/library/detail/UnitTable.h>

#include <cmath>
#include <cstdint>
#include <limits>
#include <numbers>

namespace tessarine::detail {

namespace {

enum class TQuantity : uint8_t {
  quMass,
  quLength,
  quTime,
  quPressure,
  quForce,
  quEnergy,
  quPower,
  quMagnetism,
  quTemperature,
  quVolume,
  quArea,
  quInformation,
  quSpeed,
};
using enum TQuantity;

enum class TPrefixing : uint8_t { pxNone, pxMetric, pxBinary };  // pxBinary: metric ones too
using enum TPrefixing;

struct TUnit {
  std::u16string_view Names;  // separated by blanks
  TQuantity Quantity;
  long double Factor;  // base units in one of this unit; long so that products of two factors stay exact for doubles
  TPrefixing Prefixing = pxNone;
  int8_t Power = 1;        // of a prefix
  long double Offset = 0;  // added to a temperature before the factor
};

constexpr long double Square(long double A) { return A * A; }
constexpr long double Cube(long double A) { return A * A * A; }

// International units, exact: yard and pound agreement of 1959; SI brochure, 9th edition; NIST SP 811, appendix B.
constexpr long double kInch = 0.0254L;
constexpr long double kFoot = 12 * kInch;
constexpr long double kYard = 3 * kFoot;
constexpr long double kMile = 5280 * kFoot;
constexpr long double kNauticalMile = 1852;
constexpr long double kSurveyMile = 5280 * 1200 / 3937.0L;
constexpr long double kPoint = kInch / 72;
constexpr long double kLightYear = 299792458.0L * 31557600;
constexpr long double kParsec = 149597870700.0L * 648000 / std::numbers::pi_v<long double>;
constexpr long double kAngstrom = 1e-10L;
constexpr long double kPound = 453.59237L;  // grams
constexpr long double kGravity = 9.80665L;
constexpr long double kPoundForce = kPound / 1000 * kGravity;
constexpr long double kHorsepower = 550 * kFoot * kPoundForce;
constexpr long double kLitre = 1000;  // litres in a cubic metre
constexpr long double kGallon = 231 * Cube(kInch) * kLitre;
constexpr long double kImperialGallon = 4.54609L;
constexpr long double kDegreeFahrenheit = 5 / 9.0L;

// clang-format off
constexpr TUnit kUnits[] = {
    {u"g", quMass, 1, pxMetric},
    {u"sg", quMass, 1000 * kPoundForce / kFoot},
    {u"lbm", quMass, kPound},
    {u"u", quMass, 1.66053906660e-24L, pxMetric},  // CODATA 2018
    {u"ozm", quMass, kPound / 16},
    {u"grain", quMass, kPound / 7000},
    {u"cwt shweight", quMass, 100 * kPound},
    {u"uk_cwt lcwt hweight", quMass, 112 * kPound},
    {u"stone", quMass, 14 * kPound},
    {u"ton", quMass, 2000 * kPound},
    {u"uk_ton LTON brton", quMass, 2240 * kPound},

    {u"m", quLength, 1, pxMetric},
    {u"mi", quLength, kMile},
    {u"Nmi", quLength, kNauticalMile},
    {u"in", quLength, kInch},
    {u"ft", quLength, kFoot},
    {u"yd", quLength, kYard},
    {u"ang", quLength, kAngstrom, pxMetric},
    {u"ell", quLength, 45 * kInch},
    {u"ly", quLength, kLightYear, pxMetric},
    {u"parsec pc", quLength, kParsec, pxMetric},
    {u"Picapt Pica", quLength, kPoint},
    {u"pica", quLength, 12 * kPoint},
    {u"survey_mi", quLength, kSurveyMile},

    {u"yr", quTime, 31557600},
    {u"day d", quTime, 86400},
    {u"hr", quTime, 3600},
    {u"mn min", quTime, 60},
    {u"sec s", quTime, 1, pxMetric},

    {u"Pa p", quPressure, 1, pxMetric},
    {u"atm at", quPressure, 101325, pxMetric},
    {u"mmHg", quPressure, 133.322L, pxMetric},
    {u"psi", quPressure, kPoundForce / Square(kInch)},
    {u"Torr", quPressure, 101325 / 760.0L},

    {u"N", quForce, 1, pxMetric},
    {u"dyn dy", quForce, 1e-5L, pxMetric},
    {u"lbf", quForce, kPoundForce},
    {u"pond", quForce, kGravity / 1000, pxMetric},

    {u"J", quEnergy, 1, pxMetric},
    {u"e", quEnergy, 1e-7L, pxMetric},
    {u"c", quEnergy, 4.184L, pxMetric},    // thermochemical
    {u"cal", quEnergy, 4.1868L, pxMetric},  // International Table
    {u"eV ev", quEnergy, 1.602176634e-19L, pxMetric},
    {u"HPh hh", quEnergy, 3600 * kHorsepower},
    {u"Wh wh", quEnergy, 3600, pxMetric},
    {u"flb", quEnergy, kFoot * kPoundForce},
    {u"BTU btu", quEnergy, 4.1868L * kPound * kDegreeFahrenheit},

    {u"HP h", quPower, kHorsepower},
    {u"PS", quPower, 75 * kGravity},
    {u"W w", quPower, 1, pxMetric},

    {u"T", quMagnetism, 1, pxMetric},
    {u"ga", quMagnetism, 1e-4L, pxMetric},

    {u"C cel", quTemperature, 1, pxNone, 1, 273.15L},
    {u"F fah", quTemperature, kDegreeFahrenheit, pxNone, 1, 459.67L},
    {u"K kel", quTemperature, 1, pxMetric},
    {u"Rank", quTemperature, kDegreeFahrenheit},
    {u"Reau", quTemperature, 1.25L, pxNone, 1, 218.52L},

    {u"tsp", quVolume, kGallon / 768},
    {u"tspm", quVolume, 0.005L},
    {u"tbs", quVolume, kGallon / 256},
    {u"oz", quVolume, kGallon / 128},
    {u"cup", quVolume, kGallon / 16},
    {u"pt us_pt", quVolume, kGallon / 8},
    {u"uk_pt", quVolume, kImperialGallon / 8},
    {u"qt", quVolume, kGallon / 4},
    {u"uk_qt", quVolume, kImperialGallon / 4},
    {u"gal", quVolume, kGallon},
    {u"uk_gal", quVolume, kImperialGallon},
    {u"l L lt", quVolume, 1, pxMetric},
    {u"barrel", quVolume, 42 * kGallon},
    {u"bushel", quVolume, 2150.42L * Cube(kInch) * kLitre},
    {u"GRT regton", quVolume, 100 * Cube(kFoot) * kLitre},
    {u"MTON", quVolume, 40 * Cube(kFoot) * kLitre},
    {u"m3 m^3", quVolume, kLitre, pxMetric, 3},
    {u"ang3 ang^3", quVolume, Cube(kAngstrom) * kLitre, pxMetric, 3},
    {u"in3 in^3", quVolume, Cube(kInch) * kLitre},
    {u"ft3 ft^3", quVolume, Cube(kFoot) * kLitre},
    {u"yd3 yd^3", quVolume, Cube(kYard) * kLitre},
    {u"mi3 mi^3", quVolume, Cube(kMile) * kLitre},
    {u"Nmi3 Nmi^3", quVolume, Cube(kNauticalMile) * kLitre},
    {u"ly3 ly^3", quVolume, Cube(kLightYear) * kLitre},
    {u"Picapt3 Picapt^3 Pica3 Pica^3", quVolume, Cube(kPoint) * kLitre},

    {u"ar", quArea, 100, pxMetric},
    {u"ha", quArea, 10000},
    {u"uk_acre", quArea, 4840 * Square(kYard)},
    {u"us_acre", quArea, Square(kSurveyMile) / 640},
    {u"Morgen", quArea, 2500},
    {u"m2 m^2", quArea, 1, pxMetric, 2},
    {u"ang2 ang^2", quArea, Square(kAngstrom), pxMetric, 2},
    {u"in2 in^2", quArea, Square(kInch)},
    {u"ft2 ft^2", quArea, Square(kFoot)},
    {u"yd2 yd^2", quArea, Square(kYard)},
    {u"mi2 mi^2", quArea, Square(kMile)},
    {u"Nmi2 Nmi^2", quArea, Square(kNauticalMile)},
    {u"ly2 ly^2", quArea, Square(kLightYear)},
    {u"Picapt2 Picapt^2 Pica2 Pica^2", quArea, Square(kPoint)},

    {u"bit", quInformation, 1, pxBinary},
    {u"byte", quInformation, 8, pxBinary},

    {u"m/s m/sec", quSpeed, 1, pxMetric},
    {u"m/h m/hr", quSpeed, 1 / 3600.0L, pxMetric},
    {u"mph", quSpeed, kMile / 3600},
    {u"kn", quSpeed, kNauticalMile / 3600},
    {u"admkn", quSpeed, 6080 * kFoot / 3600},
};

struct TUnitPrefix {
  std::u16string_view Name;
  long double Factor;
  bool IsBinary = false;
};
constexpr TUnitPrefix kPrefixes[] = {
    {u"Y", 1e24L}, {u"Z", 1e21L}, {u"E", 1e18L}, {u"P", 1e15L}, {u"T", 1e12L}, {u"G", 1e9L}, {u"M", 1e6L},
    {u"k", 1e3L}, {u"h", 1e2L}, {u"da", 1e1L}, {u"e", 1e1L}, {u"d", 1e-1L}, {u"c", 1e-2L}, {u"m", 1e-3L},
    {u"u", 1e-6L}, {u"n", 1e-9L}, {u"p", 1e-12L}, {u"f", 1e-15L}, {u"a", 1e-18L}, {u"z", 1e-21L}, {u"y", 1e-24L},
    {u"Yi", 0x1p80L, true}, {u"Zi", 0x1p70L, true}, {u"Ei", 0x1p60L, true}, {u"Pi", 0x1p50L, true},
    {u"Ti", 0x1p40L, true}, {u"Gi", 0x1p30L, true}, {u"Mi", 0x1p20L, true}, {u"ki", 0x1p10L, true},
};
// clang-format on

bool HasName(std::u16string_view ANames, std::u16string_view AName) {
  for (size_t at = ANames.find(AName); at != ANames.npos; at = ANames.find(AName, at + 1)) {
    const size_t end = at + AName.size();
    if ((at == 0 || ANames[at - 1] == u' ') && (end == ANames.size() || ANames[end] == u' ')) return true;
  }
  return false;
}

const TUnit* FindUnit(std::u16string_view AName) {
  if (AName.empty() || AName.find(u' ') != AName.npos) return nullptr;
  for (const TUnit& unit : kUnits) {
    if (HasName(unit.Names, AName)) return &unit;
  }
  return nullptr;
}

/// The unit with the prefix worked into its factor. A name that stands in the table is that unit: "cal" is no centi-al.
std::optional<TUnit> PrefixedUnit(std::u16string_view AName) {
  if (const TUnit* unit = FindUnit(AName)) return *unit;
  for (const TUnitPrefix& prefix : kPrefixes) {
    if (!AName.starts_with(prefix.Name)) continue;
    const TUnit* unit = FindUnit(AName.substr(prefix.Name.size()));
    if (!unit || unit->Prefixing < (prefix.IsBinary ? pxBinary : pxMetric)) continue;
    TUnit result = *unit;
    for (int i = 0; i < unit->Power; ++i) result.Factor *= prefix.Factor;
    return result;
  }
  return std::nullopt;
}

}  // namespace

std::optional<double> ConvertUnit(double A, std::u16string_view AFrom, std::u16string_view ATo) {
  const std::optional<TUnit> from = PrefixedUnit(AFrom);
  const std::optional<TUnit> to = PrefixedUnit(ATo);
  if (!from || !to || from->Quantity != to->Quantity) return std::nullopt;
  const long double ratio = from->Factor / to->Factor;
  // The offsets meet first, so that what they leave behind is not lost beside them; what is then below the last digit
  // of A is the rounding of A and not a temperature.
  const long double scaled = A * ratio;
  const long double result = scaled + (from->Offset * ratio - to->Offset);
  const bool isResidue = std::fabs(result) < std::fabs(scaled) * std::numeric_limits<double>::epsilon();
  return isResidue ? 0 : static_cast<double>(result);
}

}  // namespace tessarine::detail
