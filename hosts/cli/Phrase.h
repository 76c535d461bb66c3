#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {
struct TCellFormat;
struct TColorRef;
}  // namespace tessarine

namespace tessarine::cli {

/// Builds a description for people out of pieces with commas between: what is not said is as it is by default.
class TPhrase {
 public:
  /// The word itself, when it applies.
  TPhrase& Word(bool AApplies, std::string_view AWord);
  /// The word with a value behind it, unless that is empty.
  TPhrase& Put(std::string_view AWord, std::string_view AValue);
  TPhrase& Put(std::string_view AWord, const TText& AValue) { return Put(AWord, std::string_view(AValue.ToUtf8())); }
  /// The word with a number behind it, unless that is the default.
  TPhrase& Number(std::string_view AWord, double AValue, double ADefault);

  const std::string& Text() const { return FText; }

 private:
  void Begin();

  std::string FText;
};

std::string A1Text(const TCellRange& ARange);
std::string A1Text(TCellAddress AAddress);
std::string RangesText(const std::vector<TCellRange>& ARanges);
/// The fewest digits that give the number back.
std::string NumberText(double AValue);
/// "#1F77B4", with the alpha in front where it is not opaque; "theme 4", with its tint.
std::string ColorText(const TColorRef& AColor);
/// All in which a format differs from the default one; "default" for nothing.
std::string FormatText(const TCellFormat& AFormat);

}  // namespace tessarine::cli
