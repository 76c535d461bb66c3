#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <string_view>

namespace tessarine::detail {

/// The data styles of a file that is written: number format codes as "number:number-style" and its kin, each once.
class TOdsNumberStyleWriter {
 public:
  /// AHasMarks: codes that the styles do not give back stand in them as well, in an attribute of our own.
  explicit TOdsNumberStyleWriter(bool AHasMarks) : FHasMarks(AHasMarks) {}

  /// The name of the data style for a code; empty for codes that need none ("General").
  const std::string& NameOf(std::u16string_view ACode);

  /// Whether the style of that code shows all that the code asks for. Blanks for "_x", digits for "?", fallen
  /// conditions and text sections make the difference.
  bool IsExact(std::u16string_view ACode);

  /// The styles so far, as children of "office:automatic-styles".
  const std::string& Xml() const { return FXml; }

 private:
  struct TEntry {
    std::string Name;
    bool IsExact = true;
  };
  const TEntry& EntryOf(std::u16string_view ACode);
  bool AppendStyles(std::u16string_view ACode, const std::string& AName);

  void MarkCode(std::u16string_view ACode, const std::string& AName, size_t AStart);

  bool FHasMarks;
  std::map<std::u16string, TEntry, std::less<>> FEntries;
  int32_t FCount = 0;
  std::string FXml;
};

}  // namespace tessarine::detail
