#include <tessarine/core/values/DelimitedText.h>

#include <algorithm>
#include <cstddef>
#include <string>

namespace tessarine {

std::vector<TText> ParseDelimitedLine(std::u16string_view ALine, char16_t ADelimiter) {
  std::vector<TText> fields;
  std::u16string field;
  bool inQuotes = false;
  for (const char16_t unit : ALine) {
    if (unit == u'"') {
      inQuotes = !inQuotes;
    } else if (unit == ADelimiter && !inQuotes) {
      fields.emplace_back(field);
      field.clear();
    } else {
      field.push_back(unit);
    }
  }
  fields.emplace_back(field);
  return fields;
}

std::vector<TText> ParseCsvLine(std::u16string_view ALine) { return ParseDelimitedLine(ALine, u','); }

char16_t DetectTextDelimiter(std::u16string_view AText) {
  constexpr size_t kSample = 4096;
  const std::u16string_view sample = AText.substr(0, kSample);
  return std::count(sample.begin(), sample.end(), u'\t') > std::count(sample.begin(), sample.end(), u',') ? u'\t'
                                                                                                          : u',';
}

std::optional<std::vector<std::vector<TText>>> ParseDelimitedBody(std::u16string_view AText, char16_t ADelimiter) {
  std::vector<std::vector<TText>> rows;
  while (!AText.empty()) {
    const size_t end = std::min(AText.find_first_of(u"\r\n"), AText.size());
    rows.push_back(ParseDelimitedLine(AText.substr(0, end), ADelimiter));
    const bool isPair = AText.substr(end, 2) == u"\r\n";
    AText.remove_prefix(std::min(end + (isPair ? 2 : 1), AText.size()));
  }
  if (rows.empty()) return std::nullopt;
  return rows;
}

}  // namespace tessarine
