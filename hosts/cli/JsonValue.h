#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace tessarine {
class TJsonReader;
}

namespace tessarine::cli {

enum class TJsonKind : uint8_t { jkNull, jkBoolean, jkNumber, jkText, jkArray, jkObject };
using enum TJsonKind;

/// A JSON value that is held whole; for small texts such as a line of a script.
struct TJsonValue {
  TJsonKind Kind = jkNull;
  bool Boolean = false;
  double Number = 0;
  std::string Text;                // UTF-8
  std::vector<TJsonValue> Items;   // of an array, and the members' values of an object
  std::vector<std::string> Names;  // of an object: Names[i] belongs to Items[i]

  /// The first member of that name, or null.
  const TJsonValue* Find(std::string_view AName) const;
};

/// Reads one whole document. Throws what the reader throws; nesting is limited to a few levels.
TJsonValue ReadJsonValue(std::string_view AText);

}  // namespace tessarine::cli
