#pragma once

#include <cstdint>
#include <string_view>

namespace tessarine::detail {

/// How a shape is written.
struct TXlsxPreset {
  std::string_view Name;
  bool IsConnector = false;
  std::string_view Adjustment = "adj1";  // name of its first adjustment
};

/// The preset shape that a name means, whatever the case of its letters (ECMA-376-1 §20.1.10.56); a rectangle for no
/// name and for one that the format does not have.
TXlsxPreset XlsxPresetOf(std::u16string_view AName);

}  // namespace tessarine::detail
