#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/Export.h>

namespace tessarine {

/// Appends JSON (RFC 8259) to a text in UTF-8. Commas come by themselves; that names and values alternate in objects
/// and that what is begun is ended is for the caller.
///
///   TJsonWriter json(line);
///   json.BeginObject();
///   json.Name("sheet");
///   json.Text(u"Data");
///   json.EndObject();
class TESSARINE_API TJsonWriter {
 public:
  explicit TJsonWriter(std::string& AOut) : FOut(AOut) {}

  void BeginObject() { Begin('{'); }
  void EndObject() { End('}'); }
  void BeginArray() { Begin('['); }
  void EndArray() { End(']'); }

  /// The name of the next value; UTF-8.
  void Name(std::string_view AName);

  /// A lone surrogate becomes U+FFFD; so does each piece of ill-formed UTF-8.
  void Text(std::u16string_view AText);
  void Text(std::string_view AText);

  /// The fewest digits that read back to the same double. What is not finite is null, because JSON has no word for it.
  void Number(double AValue);
  void Integer(int64_t AValue);
  void Boolean(bool AValue) { Word(AValue ? "true" : "false"); }
  void Null() { Word("null"); }

 private:
  void Begin(char ABracket);
  void End(char ABracket);
  void Word(std::string_view AWord);
  void Separate();

  std::string& FOut;
  bool FNeedsComma = false;  // a value stands before, on the same level
};

/// AText in UTF-8 with what JSON does not allow in a string escaped, without the quotes around it.
TESSARINE_API void AppendJsonEscaped(std::string_view AText, std::string& AOut);

}  // namespace tessarine
