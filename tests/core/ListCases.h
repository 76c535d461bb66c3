#pragma once

#include <cstdio>
#include <string>

#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/values/Address.h>

#include "../support/CaseTable.h"

// What tables of examples say of the things of a sheet.

namespace tessarine {

/// "B2:C9" or, for what may lie outside the sheet, columns before rows: "0,1..3,3".
inline TCellRange ReadCaseArgument(const test::TCase& ACase, size_t AField, const TCellRange*) {
  TCellRange range;
  const int count = std::sscanf(ACase[AField].c_str(), "%d,%d..%d,%d", &range.StartCol, &range.StartRow, &range.EndCol,
                                &range.EndRow);
  return count == 4 ? range : TCellRange::FromA1(ACase.Text(AField));
}
inline std::string Shown(const TCellRange& ARange) { return Utf16ToUtf8(ARange.ToA1()); }

inline TCellAddress ReadCaseArgument(const test::TCase& ACase, size_t AField, const TCellAddress*) {
  TCellAddress address;
  const int count = std::sscanf(ACase[AField].c_str(), "%d,%d", &address.Col, &address.Row);
  return count == 2 ? address : TCellAddress::FromA1(ACase.Text(AField));
}
inline std::string Shown(const TCellAddress& AAddress) { return Utf16ToUtf8(AAddress.ToA1()); }

inline std::string Shown(const TOutlineGroup& AGroup) {
  return std::to_string(AGroup.First) + ".." + std::to_string(AGroup.Last);
}

}  // namespace tessarine
