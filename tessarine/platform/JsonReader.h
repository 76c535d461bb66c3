#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

enum class TJsonEvent : uint8_t {
  jeBeginObject,
  jeEndObject,
  jeBeginArray,
  jeEndArray,
  jeName,  // of the member whose value follows
  jeText,
  jeNumber,
  jeBoolean,
  jeNull,
  jeEnd,  // the document is complete, and nothing but blanks follows
};
using enum TJsonEvent;

/// Reads one JSON document (RFC 8259), event by event, from bytes that the caller keeps alive. Strict in its grammar
/// but for three things that documents of other programs need: a byte-order mark at the start is skipped, a number
/// beyond the range of a double is the largest of its sign (1e400), and half of a surrogate pair in an escape is
/// U+FFFD. Ill-formed UTF-8 reads as U+FFFD as well.
///
///   while (json.Next() != jeEnd) ...
///
/// Every failure throws EFileFormat with line and column; a reader that has thrown is of no further use. The depth is
/// limited (ELimit), and nothing is recursive.
class TESSARINE_API TJsonReader {
 public:
  static constexpr size_t kMaxDepth = 256;

  /// ASource begins the messages of errors ("data.json"); it may be empty.
  explicit TJsonReader(std::string_view AText, std::string ASource = {}, size_t AMaxDepth = kMaxDepth);

  TJsonEvent Next();
  TJsonEvent Event() const { return FEvent; }

  /// Of jeName and jeText: UTF-8, valid until the next call of Next.
  std::string_view Text() const { return FText; }
  double Number() const { return FNumber; }
  bool Boolean() const { return FBoolean; }

  /// Passes over the value whose event is the present one, all that it holds included: at jeBeginObject and
  /// jeBeginArray goes on to the matching end, at a jeName to the end of the member's value.
  void Skip();

  /// The objects and arrays that are open.
  size_t Depth() const { return FOpen.size(); }

  /// Throws EFileFormat for the present place: "data.json, line 3, column 7: AWhat".
  [[noreturn]] void Fail(std::string_view AWhat) const;

 private:
  enum class TExpect : uint8_t { exValue, exFirstValue, exFirstName, exName, exAfterValue };

  TJsonEvent ReadEvent();
  TJsonEvent Open(char ABracket);
  TJsonEvent Close(char ABracket);
  TJsonEvent ReadValue();
  TJsonEvent ReadName();
  TJsonEvent Word(std::string_view AWord, TJsonEvent AEvent);
  TJsonEvent ReadNumber();
  void ReadString();
  void AppendEscape();
  uint32_t ReadHex4();
  void SkipBlanks();
  std::string Where() const;
  std::string FoundText() const;

  std::string_view FInput;
  std::string FSource;
  size_t FMaxDepth;
  size_t FAt = 0;
  TJsonEvent FEvent = jeNull;
  TExpect FExpect = TExpect::exValue;
  std::vector<char> FOpen;  // the opening brackets
  std::string_view FText;
  std::string FScratch;  // a string that does not stand in the input as it is
  double FNumber = 0;
  bool FBoolean = false;
};

}  // namespace tessarine
