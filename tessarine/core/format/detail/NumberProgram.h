#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/format/detail/DateTimeProgram.h>
#include <tessarine/platform/FloatPattern.h>

namespace tessarine::detail {

/// One section of a number format code, taken apart once.
class TSectionProgram {
 public:
  explicit TSectionProgram(std::u16string_view ASection);

  /// AValue with its sign, as FormatSectionPlain.
  void Append(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const;

 private:
  enum class TSectionKind : uint8_t { skLiteral, skFraction, skPattern };

  TSectionKind FKind = TSectionKind::skLiteral;
  bool FShowsMinus = true;        // a value below 0 gets "-" in front
  bool FIsPercent = false;        // the value is shown times 100
  int64_t FDenominatorLimit = 0;  // skFraction
  TFloatPattern FPattern;         // skPattern
  std::u16string FLiteral;        // skLiteral
  std::u16string FTail;           // what follows the number: "%" and blanks
};

/// A whole number format code, taken apart once. It holds no separators and no names, so it serves every locale. The
/// text equals FormatNumberPlain's because the steps up to the pattern do not look at the value. Common codes measured
/// 35 to 65 ns a number this way, 50 to 570 ns with the steps taken anew.
class TNumberProgram {
 public:
  explicit TNumberProgram(std::u16string_view ACode);
  TNumberProgram(const TNumberProgram&) = delete;
  TNumberProgram& operator=(const TNumberProgram&) = delete;

  /// The code as it was given.
  std::u16string_view Code() const { return FCode; }

  /// The text of FormatNumberPlain.
  void Append(double AValue, const TFormatSettings& ASettings, std::u16string& AOut) const;

 private:
  enum class TProgramKind : uint8_t { pkGeneral, pkRounded, pkPattern, pkPlainText, pkDateTime, pkSections };

  TProgramKind ReadCode(std::u16string_view ATrimmed);

  std::u16string FCode;
  TProgramKind FKind = TProgramKind::pkGeneral;
  bool FIsPercent = false;  // pkPattern
  TFloatPattern FPattern;   // pkPattern; pkRounded: for what is beyond 64 bits
  TDateTimeProgram FDateTime;
  std::vector<TSectionProgram> FSections;  // one to three
};

}  // namespace tessarine::detail
