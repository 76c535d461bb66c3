#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <initializer_list>
#include <string>

#include <tessarine/platform/Dates.h>

#include "CallNotation.h"

namespace tessarine::testing {

/// AArgs in the notation of calls with dates such as 2024-02-29 (four digits first) outside texts as serial numbers.
inline std::string WithSerials(std::string AArgs) {
  const auto isDigit = [&](size_t AAt) { return AArgs[AAt] >= '0' && AArgs[AAt] <= '9'; };
  bool isInText = false;
  for (size_t at = 0; at + 10 <= AArgs.size(); ++at) {
    if (AArgs[at] == '\'') isInText = !isInText;
    if (isInText || !isDigit(at) || !isDigit(at + 3) || AArgs[at + 4] != '-' || AArgs[at + 7] != '-') continue;
    double serial = 0;
    const auto part = [&](size_t AFrom, size_t ACount) { return std::atoi(AArgs.substr(AFrom, ACount).c_str()); };
    if (!TryEncodeDate(part(at, 4), part(at + 5, 2), part(at + 8, 2), serial)) continue;
    AArgs.replace(at, 10, std::to_string(static_cast<int>(serial)));
  }
  return AArgs;
}

inline std::string DatedCall(const char* AName, const std::string& AArgs) { return Called(AName, WithSerials(AArgs)); }

/// A call, and its result in notation with dates; numbers may differ in the tolerance, relative above 1.
struct TDatedCase {
  const char* Name;
  const char* Args;
  const char* Result;
  double Tolerance = 1e-11;
};

inline void ExpectDatedCalls(std::initializer_list<TDatedCase> ACases) {
  for (const TDatedCase& row : ACases) {
    const std::string got = DatedCall(row.Name, row.Args);
    const std::string want = WithSerials(row.Result);
    char* gotEnd = nullptr;
    char* wantEnd = nullptr;
    const double gotNumber = std::strtod(got.c_str(), &gotEnd);
    const double wantNumber = std::strtod(want.c_str(), &wantEnd);
    if (*gotEnd != '\0' || *wantEnd != '\0') {
      EXPECT_EQ(got, want) << row.Name << "(" << row.Args << ")";
    } else {
      EXPECT_NEAR(gotNumber, wantNumber, row.Tolerance * std::max(1.0, std::fabs(wantNumber)))
          << row.Name << "(" << row.Args << ")";
    }
  }
}

}  // namespace tessarine::testing
