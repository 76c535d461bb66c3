#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {
class THyperlinkList;
}

namespace tessarine::detail {

class TXlsxSheetRelationships;

struct TXlsxLink {
  TCellRange Range;
  TText Target;
};

/// The links of a sheet by their first cell, rows before columns. Links of neighbours with one target are joined.
std::vector<TXlsxLink> XlsxSheetLinks(const THyperlinkList& ALinks);

/// Whether a target leads out of the workbook; all others are places in it.
bool IsExternalXlsxTarget(std::u16string_view ATarget);

/// Appends the element with all links; nothing when there are none.
void AppendXlsxLinks(const std::vector<TXlsxLink>& ALinks, const TXlsxSheetRelationships& ARelationships,
                     std::string& AOut);

}  // namespace tessarine::detail
