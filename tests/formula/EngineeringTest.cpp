#include <gtest/gtest.h>

#include <tessarine/formula/library/detail/SpecialFunctions.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(EngineeringFunctions, NumberBases) {
  // clang-format off
  ExpectCalls({
      {"BIN2DEC", "1110010101", "-107"}, {"BIN2DEC", "'0000000010'", "2"}, {"BIN2DEC", "''", "0"},
      {"BIN2DEC", "_", "0"}, {"BIN2DEC", "'10000000000'", "#NUM!"}, {"BIN2DEC", "2", "#NUM!"},
      {"BIN2DEC", "TRUE", "#VALUE!"}, {"BIN2DEC", "#N/A", "#VALUE!"}, {"BIN2DEC", "", "#VALUE!"},
      {"BIN2HEX", "1000000000", "'FFFFFFFE00'"}, {"BIN2HEX", "10001 3.9", "'011'"},
      {"BIN2OCT", "'1100100' 2", "#NUM!"}, {"BIN2OCT", "1111111111", "'7777777777'"},
      {"DEC2BIN", "-512", "'1000000000'"}, {"DEC2BIN", "512", "#NUM!"}, {"DEC2BIN", "-513", "#NUM!"},
      {"DEC2BIN", "9 8", "'00001001'"}, {"DEC2BIN", "9 3", "#NUM!"}, {"DEC2BIN", "9 0", "#NUM!"},
      {"DEC2BIN", "9 11", "#NUM!"}, {"DEC2BIN", "-9 3", "'1111110111'"}, {"DEC2BIN", "9 'x'", "#VALUE!"},
      {"DEC2BIN", "1e300", "#NUM!"}, {"DEC2OCT", "-536870912", "'4000000000'"}, {"DEC2OCT", "536870912", "#NUM!"},
      {"DEC2HEX", "-549755813888", "'8000000000'"}, {"DEC2HEX", "549755813887", "'7FFFFFFFFF'"},
      {"DEC2HEX", "549755813888", "#NUM!"}, {"DEC2HEX", "-0.9", "'0'"}, {"HEX2DEC", "'ffffffff5b'", "-165"},
      {"HEX2DEC", "'7FFFFFFFFF'", "549755813887"}, {"HEX2DEC", "'G'", "#NUM!"},
      {"HEX2BIN", "'FFFFFFFE00'", "'1000000000'"}, {"HEX2BIN", "'200'", "#NUM!"},
      {"HEX2OCT", "'FFEF' 9", "'000177757'"}, {"HEX2OCT", "'20000000'", "#NUM!"},
      {"OCT2BIN", "7777777000", "'1000000000'"}, {"OCT2BIN", "7777776777", "#NUM!"},
      {"OCT2DEC", "'7777777533'", "-165"}, {"OCT2DEC", "8", "#NUM!"}, {"OCT2HEX", "100 4", "'0040'"},
  });
  // clang-format on
}

TEST(EngineeringFunctions, BitsOf48) {
  // clang-format off
  ExpectCalls({
      {"BITAND", "13.9 25", "9"}, {"BITOR", "23 10", "31"}, {"BITXOR", "281474976710655 1", "281474976710654"},
      {"BITAND", "-1 1", "#NUM!"}, {"BITOR", "1 281474976710656", "#NUM!"}, {"BITXOR", "1 'x'", "#VALUE!"},
      {"BITLSHIFT", "1 47", "140737488355328"}, {"BITLSHIFT", "1 48", "#NUM!"}, {"BITLSHIFT", "5 -1", "2"},
      {"BITLSHIFT", "0 54", "#NUM!"}, {"BITLSHIFT", "0 53", "0"}, {"BITLSHIFT", "1 1e300", "#NUM!"},
      {"BITRSHIFT", "13 2", "3"}, {"BITRSHIFT", "1 -4", "16"}, {"BITRSHIFT", "4 2.9", "1"},
      {"BITRSHIFT", "4 -54", "#NUM!"}, {"DELTA", "5", "0"}, {"DELTA", "_", "1"}, {"DELTA", "5 '5'", "1"},
      {"DELTA", "5 'x'", "#VALUE!"}, {"GESTEP", "5 4", "1"}, {"GESTEP", "-1", "0"}, {"GESTEP", "4 4", "1"},
      {"GESTEP", "'x'", "#VALUE!"},
  });
  // clang-format on
}

TEST(EngineeringFunctions, ErrorAndBesselFunctions) {
  // clang-format off
  ExpectCalls({
      {"ERF", "0.5", "0.520499877813047"}, {"ERF.PRECISE", "-0.5", "-0.520499877813047"},
      {"ERF", "1 -1", "-1.68540158589943"}, {"ERF", "5 6", "1.53743827469132E-12"},
      {"ERF", "-6 -5", "1.53743827469132E-12"}, {"ERF", "0 'x'", "#VALUE!"}, {"ERFC", "2", "0.00467773498104727"},
      {"ERFC.PRECISE", "1e300", "0"}, {"BESSELJ", "7.25 3.9", "-0.219245333401508"},
      {"BESSELJ", "-1.9 2", "0.329925727692387"}, {"BESSELJ", "3 40", "1.28279265108068E-41"},
      {"BESSELJ", "1 1e9", "0"}, {"BESSELJ", "1 -1", "#NUM!"}, {"BESSELJ", "12345 0", "-0.00448042229522067"},
      {"BESSELJ", "'x' 1", "#VALUE!"}, {"BESSELY", "7.25 3", "0.218593419744858"},
      {"BESSELY", "0.1 0", "-1.53423865135037"}, {"BESSELY", "0 1", "#NUM!"}, {"BESSELY", "1 1e9", "#NUM!"},
      {"BESSELY", "-1 1", "#NUM!"}, {"BESSELI", "0 1e300", "0"}, {"BESSELI", "7.25 3", "110.057249731588"},
      {"BESSELI", "-1.5 1", "-0.981666428577908"}, {"BESSELI", "0 0", "1"}, {"BESSELI", "1000 0", "#NUM!"},
      {"BESSELK", "7.25 3", "0.000579264613668533"}, {"BESSELK", "0 1", "#NUM!"}, {"BESSELK", "1e300 5", "0"},
      {"BESSELK", "1 1e9", "#NUM!"}, {"BESSELK", "1 -0.5", "0.421024438240708"},
  });
  // clang-format on
  const struct {
    double Got;
    double Wanted;
  } large[] = {
      {detail::BesselI(1000, 1000), 2.72345364691084e229}, {detail::BesselK(1000, 800), 2.18730665802409e-103},
      {detail::BesselI(5, 590), 2.75493630133481e254},     {detail::BesselI(5, 610), 1.31541091881987e263},
      {detail::BesselK(2, 599), 3.70092402080745e-262},    {detail::BesselK(2, 601), 5.00026319104782e-263},
  };
  for (const auto& [got, wanted] : large) EXPECT_NEAR(got / wanted, 1, 1e-11) << wanted;
}

TEST(EngineeringFunctions, Units) {
  // clang-format off
  ExpectCalls({
      {"CONVERT", "1 'lbm' 'kg'", "0.45359237"}, {"CONVERT", "1 'stone' 'lbm'", "14"},
      {"CONVERT", "1 'sg' 'g'", "14593.9029372064"}, {"CONVERT", "1 'mi' 'km'", "1.609344"},
      {"CONVERT", "1 'parsec' 'ly'", "3.26156377716743"}, {"CONVERT", "72 'Pica' 'in'", "1"},
      {"CONVERT", "6 'pica' 'in'", "1"}, {"CONVERT", "1 'yr' 'day'", "365.25"}, {"CONVERT", "1 'mn' 'ms'", "60000"},
      {"CONVERT", "1 'psi' 'Pa'", "6894.75729316836"}, {"CONVERT", "1 'lbf' 'dyn'", "444822.16152605"},
      {"CONVERT", "1 'BTU' 'J'", "1055.05585262"}, {"CONVERT", "1 'HPh' 'Wh'", "745.69987158227"},
      {"CONVERT", "1 'PS' 'W'", "735.49875"}, {"CONVERT", "1 'flb' 'J'", "1.3558179483314"},
      {"CONVERT", "1 'T' 'ga'", "10000"}, {"CONVERT", "20 'C' 'F'", "68"}, {"CONVERT", "-459.67 'F' 'K'", "0"},
      {"CONVERT", "100 'cel' 'Reau'", "80"}, {"CONVERT", "491.67 'Rank' 'C'", "0"},
      {"CONVERT", "300 'mK' 'K'", "0.3"}, {"CONVERT", "1 'mC' 'K'", "#N/A"},
      {"CONVERT", "1 'gal' 'l'", "3.785411784"}, {"CONVERT", "1 'uk_pt' 'ml'", "568.26125"},
      {"CONVERT", "1 'cm3' 'ml'", "1"}, {"CONVERT", "1 'm^3' 'cm3'", "1000000"}, {"CONVERT", "1 'MTON' 'ft3'", "40"},
      {"CONVERT", "1 'tbs' 'tsp'", "3"}, {"CONVERT", "1 'bushel' 'in^3'", "2150.42"},
      {"CONVERT", "1 'us_acre' 'm2'", "4046.87260987425"}, {"CONVERT", "1 'uk_acre' 'yd2'", "4840"},
      {"CONVERT", "1 'km2' 'ha'", "100"}, {"CONVERT", "1 'kibyte' 'bit'", "8192"},
      {"CONVERT", "1 'Mbit' 'byte'", "125000"}, {"CONVERT", "1 'kim' 'm'", "#N/A"},
      {"CONVERT", "36 'km/h' 'm/s'", "10"}, {"CONVERT", "1 'kn' 'm/hr'", "1852"}, {"CONVERT", "1 'mph' 'ft'", "#N/A"},
      {"CONVERT", "1 'dam' 'em'", "1"}, {"CONVERT", "1 'kft' 'ft'", "#N/A"}, {"CONVERT", "1 'M' 'm'", "#N/A"},
      {"CONVERT", "1 'LBM' 'g'", "#N/A"}, {"CONVERT", "1 '' 'g'", "#N/A"}, {"CONVERT", "1 'mn min' 's'", "#N/A"},
      {"CONVERT", "'x' 'q' 'q'", "#VALUE!"}, {"CONVERT", "1 'm'", "#VALUE!"}, {"CONVERT", "1e300 'Ym' 'ym'", "#NUM!"},
  });
  // clang-format on
}

}  // namespace

}  // namespace tessarine
