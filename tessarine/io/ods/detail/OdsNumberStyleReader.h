#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace tessarine {
struct TXmlNode;
}

namespace tessarine::detail {

/// Whether a local name is that of an element that defines a data style.
bool OdsIsNumberStyle(std::string_view ALocalName);

/// The format code of such an element, without its conditions. An element that says nothing gives "General".
std::u16string OdsNumberFormatCode(const TXmlNode* ANode);

/// A code that applies under a condition.
struct TOdsConditionalCode {
  std::string Condition;  // "value()>=0"
  std::u16string Code;
};

/// Joins the codes of a data style and of its conditions with ";". AIsText: ACode is for texts.
std::u16string OdsJoinConditionalCodes(const std::u16string& ACode, bool AIsText,
                                       const std::vector<TOdsConditionalCode>& ASections);

}  // namespace tessarine::detail
