#include "CaseTable.h"

#include <gtest/gtest.h>

#include <cstdio>
#include <exception>
#include <fstream>
#include <initializer_list>

#include <tessarine/platform/Errors.h>

namespace tessarine::test {

namespace {

constexpr size_t kMostFields = 64;

/// The character behind a backslash at AText[APos], past which APos moves; nothing for an unknown escape.
std::optional<std::string> Escaped(std::string_view AText, size_t& APos) {
  static const std::map<char, std::string> kPlain = {{'t', "\t"},  {'n', "\n"}, {'r', "\r"}, {'s', " "},
                                                     {'\\', "\\"}, {'e', ""},   {'#', "#"}};
  if (APos + 1 >= AText.size()) return std::nullopt;
  const char kind = AText[APos + 1];
  APos += 2;
  if (const auto plain = kPlain.find(kind); plain != kPlain.end()) return plain->second;
  const size_t digits = kind == 'x' ? 2 : kind == 'u' ? 4 : 0;
  unsigned code = 0;
  if (digits == 0 || APos + digits > AText.size()) return std::nullopt;
  const char* end = AText.data() + APos + digits;
  if (std::from_chars(AText.data() + APos, end, code, 16).ptr != end) return std::nullopt;
  APos += digits;
  return kind == 'x' ? std::string(1, static_cast<char>(code)) : Utf16ToUtf8(std::u16string(1, char16_t(code)));
}

std::optional<std::vector<std::string>> FieldsOf(std::string_view ALine) {
  std::vector<std::string> fields(1);
  for (size_t i = 0; i < ALine.size();) {
    if (ALine[i] == '\\') {
      const auto escaped = Escaped(ALine, i);
      if (!escaped) return std::nullopt;
      fields.back() += *escaped;
    } else if (ALine[i] == '\t') {
      fields.emplace_back();
      ++i;
    } else {
      fields.back() += ALine[i++];
    }
  }
  return fields;
}

template <typename TNumber>
TNumber NumberOf(const TCase& ACase, size_t AField) {
  const std::string& text = ACase[AField];
  TNumber number = 0;
  const char* end = text.data() + text.size();
  const auto read = std::from_chars(text.data(), end, number);
  if (read.ec == std::errc{} && read.ptr == end) return number;
  ADD_FAILURE() << ACase.Place() << ": field " << AField << " is not a number: " << text;
  return 0;
}

template <typename... TErrors>
const char* ClassOf(const std::exception& AError, std::initializer_list<const char*> ANames) {
  const char* const* name = ANames.begin();
  const char* found = "other";
  const auto look = [&](bool AIsThat) { found = AIsThat ? *name : found, ++name; };
  (look(dynamic_cast<const TErrors*>(&AError) != nullptr), ...);
  return found;
}

std::string ResultOf(const TCase& ACase, const TCaseWork& AWork) {
  try {
    return AWork(ACase);
  } catch (const std::exception& error) {
    const char* const kind = ClassOf<EArgument, EState, EFileAccess, EFileFormat, ELimit>(
        error, {"argument", "state", "file", "format", "limit"});
    return std::string("throws ") + kind + ": " + error.what();
  }
}

void Expect(const TCase& ACase, const TCaseWork& AWork) {
  EXPECT_EQ(ResultOf(ACase, AWork), ACase[ACase.Count() - 1]) << ACase.Place();
}

/// Calls AUse for each case whose name is known. Other names fail, and so do names without a case.
void ForEachNamed(const std::string& APath, std::set<std::string> ANames, size_t ALeastFields,
                  const std::function<void(const TCase&)>& AUse) {
  const std::set<std::string> known = ANames;
  for (const TCase& row : CasesOf(APath, ALeastFields, kMostFields)) {
    ANames.erase(row[0]);
    if (known.contains(row[0])) {
      AUse(row);
    } else {
      ADD_FAILURE() << row.Place() << ": nothing is called " << row[0];
    }
  }
  for (const std::string& name : ANames) ADD_FAILURE() << "tests/data/" << APath << " has no line of " << name;
}

}  // namespace

const std::string& TCase::operator[](size_t AField) const {
  static const std::string kNothing;
  return AField < FFields.size() ? FFields[AField] : kNothing;
}
double TCase::Number(size_t AField) const { return NumberOf<double>(*this, AField); }
int64_t TCase::Integer(size_t AField) const { return NumberOf<int64_t>(*this, AField); }

std::string ShownColor(uint32_t AColor) {
  char text[16];
  std::snprintf(text, sizeof text, "%08X", static_cast<unsigned>(AColor));
  return text;
}

std::vector<std::string> SplitAt(std::string_view AText, char ASeparator) {
  std::vector<std::string> parts(1);
  for (const char unit : AText) {
    if (unit == ASeparator) {
      parts.emplace_back();
    } else {
      parts.back() += unit;
    }
  }
  return parts;
}

std::vector<TCase> CasesOf(const std::string& APath, size_t ALeastFields, size_t AMostFields) {
  const std::string path = "tests/data/" + APath;
  std::ifstream file(std::string(TESS_SOURCE_DIR) + "/" + path, std::ios::binary);
  std::vector<TCase> cases;
  size_t number = 0;
  size_t block = 0;
  for (std::string line; std::getline(file, line);) {
    const std::string place = path + ":" + std::to_string(++number);
    if (line.empty()) ++block;
    if (line.empty() || line[0] == '#') continue;
    auto fields = FieldsOf(line);
    const size_t count = fields ? fields->size() : 0;
    if (count < ALeastFields || count > std::max(ALeastFields, AMostFields)) {
      ADD_FAILURE() << place << ": " << (fields ? "wrong count of fields" : "unknown escape");
    } else {
      cases.emplace_back(place, block, std::move(*fields));
    }
  }
  if (cases.empty()) ADD_FAILURE() << path << " is missing or has no cases";
  return cases;
}

void ExpectCases(const std::string& APath, const std::map<std::string, TCaseWork>& AWorks) {
  std::set<std::string> names;
  for (const auto& [name, work] : AWorks) names.insert(name);
  ForEachNamed(APath, names, 2, [&](const TCase& ACase) { Expect(ACase, AWorks.at(ACase[0])); });
}

void ExpectCases(const std::string& APath, const TCaseWork& AWork) {
  for (const TCase& row : CasesOf(APath, 2, kMostFields)) Expect(row, AWork);
}

void RunDialogues(const std::string& APath, const std::set<std::string>& ANames, const std::function<void()>& ABegin,
                  const TCaseWork& ARun) {
  std::optional<size_t> block;
  ForEachNamed(APath, ANames, 1, [&](const TCase& ACase) {
    if (std::exchange(block, ACase.Block()) != ACase.Block()) ABegin();
    if (ACase.Count() > 2 && ACase[ACase.Count() - 2] == "=") return Expect(ACase, ARun);
    const std::string result = ResultOf(ACase, ARun);
    EXPECT_FALSE(result.starts_with("throws ")) << ACase.Place() << " " << result;
  });
}

}  // namespace tessarine::test
