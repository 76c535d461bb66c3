#include <gtest/gtest.h>

#include "CallNotation.h"

namespace tessarine {

namespace {

using testing::ExpectCalls;

TEST(ComplexFunctions, ReadAndWriteTexts) {
  // clang-format off
  ExpectCalls({
      {"COMPLEX", "3 4", "'3+4i'"}, {"COMPLEX", "0 0", "'0'"}, {"COMPLEX", "0 -1 'j'", "'-j'"},
      {"COMPLEX", "-2.5 1", "'-2.5+i'"}, {"COMPLEX", "1 -0.5", "'1-0.5i'"}, {"COMPLEX", "3 0", "'3'"},
      {"COMPLEX", "1e20 -1e-20", "'1E+20-1E-20i'"}, {"COMPLEX", "1 2 'I'", "#VALUE!"},
      {"COMPLEX", "1 2 ''", "#VALUE!"}, {"COMPLEX", "1 'x'", "#VALUE!"}, {"COMPLEX", "1", "#VALUE!"},
      {"IMREAL", "'-1.5E-5+6E9i'", "-0.000015"}, {"IMAGINARY", "'-1.5E-5+6E+9i'", "6000000000"},
      {"IMAGINARY", "'2e-3j'", "0.002"}, {"IMAGINARY", "'-i'", "-1"}, {"IMAGINARY", "'+1+j'", "1"},
      {"IMREAL", "'i'", "0"}, {"IMREAL", "0.1", "0.1"}, {"IMREAL", "_", "0"}, {"IMREAL", "''", "#NUM!"},
      {"IMREAL", "'3 + 4i'", "#NUM!"}, {"IMREAL", "'3+4I'", "#NUM!"}, {"IMREAL", "'3+4k'", "#NUM!"},
      {"IMREAL", "'3++4i'", "#NUM!"}, {"IMREAL", "'x+i'", "#NUM!"}, {"IMREAL", "'3i+4'", "#NUM!"},
      {"IMREAL", "'1ii'", "#NUM!"}, {"IMREAL", "TRUE", "#VALUE!"}, {"IMREAL", "#N/A", "#VALUE!"},
      {"IMREAL", "", "#VALUE!"}, {"IMREAL", "['2+i' 5]", "2"}, {"IMABS", "'5+12i'", "13"},
      {"IMARGUMENT", "'-1'", "3.14159265358979"}, {"IMARGUMENT", "0", "#DIV/0!"}, {"IMCONJUGATE", "'3-4j'", "'3+4j'"},
  });
  // clang-format on
}

TEST(ComplexFunctions, Arithmetic) {
  // clang-format off
  ExpectCalls({
      {"IMSUM", "'3+4i' 5 ['-2i' _]", "'8+2i'"}, {"IMSUM", "[_ _]", "'0'"}, {"IMSUM", "'1+i' '1+j'", "#VALUE!"},
      {"IMSUM", "1 'x' '1+j'", "#NUM!"}, {"IMSUM", "'i' '-i'", "'0'"}, {"IMSUM", "", "#VALUE!"},
      {"IMSUB", "13 '5+3j'", "'8-3j'"}, {"IMSUB", "'i' 'j'", "#VALUE!"}, {"IMSUB", "1", "#VALUE!"},
      {"IMPRODUCT", "'3+4i' '5-3i'", "'27+11i'"}, {"IMPRODUCT", "[1 4 _]", "'4'"},
      {"IMPRODUCT", "'1e300i' 1e300", "#NUM!"}, {"IMDIV", "'-238+240i' '10+24i'", "'5+12i'"},
      {"IMDIV", "1 0", "#DIV/0!"}, {"IMDIV", "'i' 'x'", "#NUM!"}, {"IMPOWER", "'2+3i' 3", "'-46+9i'"},
      {"IMPOWER", "'2+4i' -2", "'-0.03-0.04i'"}, {"IMPOWER", "-2 2", "'4'"}, {"IMPOWER", "'j' 0", "'1'"},
      {"IMPOWER", "0 0", "#NUM!"}, {"IMPOWER", "0 -1", "#NUM!"}, {"IMPOWER", "0 0.5", "'0'"},
      {"IMPOWER", "'1+i' 'x'", "#VALUE!"}, {"IMPOWER", "'1+i' 1e300", "#NUM!"}, {"IMSQRT", "-4", "'2i'"},
  });
  // clang-format on
}

TEST(ComplexFunctions, Transcendental) {
  // clang-format off
  ExpectCalls({
      {"IMSIN", "'1.5-0.75j'", "'1.29144008570522-0.0581683845016712j'"},
      {"IMCOSH", "'1.5-0.75i'", "'1.72123193050523-1.45139940751399i'"},
      {"IMSEC", "'1.5-0.75i'", "'0.13444087181644-1.20411995163968i'"},
      {"IMCSCH", "'1.5-0.75i'", "'0.311689866254172+0.320797366435349i'"},
      {"IMCOT", "'1.5-0.75i'", "'0.0422211341836499+0.637050655141039i'"},
      {"IMLOG2", "'1.5-0.75i'", "'0.745926548164837-0.668902106225488i'"}, {"IMCOS", "0", "'1'"},
      {"IMTAN", "'1000i'", "'i'"}, {"IMEXP", "1000", "#NUM!"}, {"IMLN", "0", "#NUM!"}, {"IMLOG10", "1000", "'3'"},
      {"IMCSC", "0", "#DIV/0!"}, {"IMCOT", "0", "#DIV/0!"}, {"IMCSCH", "0", "#DIV/0!"}, {"IMSECH", "0", "'1'"},
      {"IMSINH", "'x'", "#NUM!"}, {"IMLN", "-1", "'3.14159265358979i'"},
  });
  // clang-format on
}

}  // namespace

}  // namespace tessarine
