#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

/// Whole numbers as texts of other number systems.
namespace tessarine::detail {

/// The value of a digit 0 to 9, A to Z or a to z; 36 for any other unit.
unsigned DigitValue(char16_t AUnit);

/// The digits of ANumber in radix 2 to 36, with zeros ahead up to ALength of them.
std::u16string DigitsOf(uint64_t ANumber, unsigned ARadix, size_t ALength);

/// The number that digits in radix 2 to 36 stand for, rounded above 2^53; 0 for "", NaN when a unit is no digit.
double NumberOfDigits(std::u16string_view ADigits, unsigned ARadix);

/// The Roman numeral of a whole number from 1 to 3999; "" for any other.
std::u16string RomanNumeral(double ANumber);

/// Reads a Roman numeral in letters of any case, blanks at both ends, "-" ahead of a negative one; "" is 0. A letter of
/// less value than the one behind it counts down. False for any other unit.
bool TryParseRoman(std::u16string_view AText, double& ANumber);

}  // namespace tessarine::detail
