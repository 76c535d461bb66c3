#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/platform/ByteBuffer.h>

namespace tessarine {
class IReadStream;
}

namespace tessarine::detail {

/// Where a value or a name begins in a text that TJsonText has found sound.
using TJsonPlace = const char*;

enum class TJsonKind : uint8_t { jkObject, jkArray, jkText, jkNumber, jkTrue, jkFalse, jkNull };
using enum TJsonKind;

/// A whole JSON text (RFC 8259) in memory that is read by places, in any order: for documents whose members count in
/// another order than that in which they may stand. TJsonReader is for a walk from front to end.
///
/// Tolerant where that reader is: byte-order marks (UTF-16 too), ill-formed UTF-8 and lone surrogates (U+FFFD), numbers
/// beyond a double. Objects and arrays may nest to any depth.
///
/// Invariants:
/// 1. Behind the text stand kPadding bytes of 0, so scans need no end: no blank, text, number or word goes past them.
/// 2. The text is well-formed UTF-8.
/// 3. FEnds has the ends of the objects and arrays of the outer kIndexedDepth levels that are kIndexedSize or longer.
class TJsonText {
 public:
  static constexpr size_t kPadding = 64;

  /// Passes over an object that it knows by its spelling, or gives null and leaves it to the walk over every character.
  /// It must take nothing that is not sound. Comparing up to kPadding bytes at a time is safe.
  using TShortcut = TJsonPlace (*)(TJsonPlace AObject);

  /// Decodes a text by its byte-order mark, UTF-8 without one.
  static TJsonText FromBytes(std::string_view ABytes);
  /// The same of all that a stream still gives. Throws ELimit when that is more than ALimit bytes.
  static TJsonText FromStream(IReadStream& AStream, uint64_t ALimit);

  /// Whether this is one JSON value and nothing else. To be asked once, before anything below.
  bool IsSound(TShortcut AShortcut = nullptr);

  TJsonPlace Root() const { return SkipBlanks(Begin()); }
  std::string_view Text() const { return FText; }
  size_t OffsetOf(TJsonPlace APlace) const { return static_cast<size_t>(APlace - FText.data()); }

  static TJsonKind KindOf(TJsonPlace AValue);

  /// Behind a value.
  TJsonPlace EndOf(TJsonPlace AValue) const;

  /// AVisit(std::string_view ARawName, TJsonPlace AValue) for each member of an object, the name as it is spelled
  /// between its quotes. AVisit returns where the value ends, or null to have that found.
  template <class TVisit>
  void ForEachMember(TJsonPlace AObject, TVisit&& AVisit) const {
    TJsonPlace at = SkipBlanks(AObject + 1);
    while (*at != '}') {
      const TJsonPlace name = at + 1;
      const TJsonPlace quote = QuoteBehind(name);
      const TJsonPlace value = SkipBlanks(SkipBlanks(quote + 1) + 1);
      const TJsonPlace end = AVisit(std::string_view(name, static_cast<size_t>(quote - name)), value);
      at = NextItem(end ? end : EndOf(value));
    }
  }

  /// AVisit(TJsonPlace AElement) for each element of an array.
  template <class TVisit>
  void ForEachElement(TJsonPlace AArray, TVisit&& AVisit) const {
    TJsonPlace at = SkipBlanks(AArray + 1);
    while (*at != ']') {
      AVisit(at);
      at = NextItem(EndOf(at));
    }
  }

  /// A text between its quotes, as it is spelled.
  static std::string_view RawText(TJsonPlace AText) {
    return {AText + 1, static_cast<size_t>(QuoteBehind(AText + 1) - AText - 1)};
  }
  /// A number or a word as it is spelled; a text without its quotes, decoded; empty for objects and arrays.
  std::string SpellingOf(TJsonPlace AValue) const;
  /// What a spelling between quotes means.
  static void AppendDecoded(std::string_view ARaw, std::u16string& AOut);
  static double Number(TJsonPlace ANumber);

  /// Where a place is, for messages: "sheets[0].zoom (line 1, column 87)".
  std::string Describe(TJsonPlace APlace) const;

  static TJsonPlace SkipBlanks(TJsonPlace AAt) {
    while (*AAt == ' ' || *AAt == '\n' || *AAt == '\r' || *AAt == '\t') ++AAt;
    return AAt;
  }
  /// The closing quote of a text whose first character is at AAt.
  static TJsonPlace QuoteBehind(TJsonPlace AAt) {
    for (;; ++AAt) {
      if (*AAt == '"') return AAt;
      if (*AAt == '\\') ++AAt;
    }
  }

 private:
  static constexpr size_t kIndexedDepth = 6;
  static constexpr size_t kIndexedSize = 4096;

  explicit TJsonText(TByteBuffer ABuffer, std::string_view AText) : FBuffer(std::move(ABuffer)), FText(AText) {}
  static TJsonText FromPadded(TByteBuffer ABuffer, size_t ASize);

  TJsonPlace Begin() const { return FText.data(); }
  static TJsonPlace NextItem(TJsonPlace ABehindItem) {
    const TJsonPlace at = SkipBlanks(ABehindItem);
    return *at == ',' ? SkipBlanks(at + 1) : at;
  }

  TByteBuffer FBuffer;     // the text and its padding
  std::string_view FText;  // without a byte-order mark
  boost::unordered_flat_map<TJsonPlace, TJsonPlace> FEnds;
};

/// The end of a number of JSON's grammar at AAt, or null.
TJsonPlace JsonNumberEnd(TJsonPlace AAt);

/// The closing quote of a text without escapes whose first character is at AAt, or null when it is not one.
TJsonPlace PlainJsonTextEnd(TJsonPlace AAt);

}  // namespace tessarine::detail
