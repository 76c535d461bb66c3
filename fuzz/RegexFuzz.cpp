// A pattern, a text and a replacement, UTF-16 units of any kind between line ends: a search must end, and what it
// answers must lie within the text.

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include <tessarine/platform/Regex.h>

namespace {

void Require(bool ACondition) {
  if (!ACondition) std::abort();
}

std::u16string_view TakeLine(std::u16string_view& AInput) {
  const size_t end = AInput.find(u'\n');
  const std::u16string_view line = AInput.substr(0, end);
  AInput = end == AInput.npos ? std::u16string_view() : AInput.substr(end + 1);
  return line;
}

bool IsInside(std::u16string_view APart, std::u16string_view AWhole) {
  return APart.empty() ||
         (APart.data() >= AWhole.data() && APart.data() + APart.size() <= AWhole.data() + AWhole.size());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace tessarine;
  constexpr size_t kMostUnits = 1000;
  std::u16string units(ASize / sizeof(char16_t), u'\0');
  std::memcpy(units.data(), AData, units.size() * sizeof(char16_t));
  std::u16string_view input = units;
  const std::u16string_view pattern = TakeLine(input);
  const std::u16string_view text = TakeLine(input);
  const auto start = std::chrono::steady_clock::now();

  const TRegexMatch match = FindRegex(pattern, text);
  Require(match.Outcome == roMatched || (match.Whole.empty() && match.FirstGroup.empty()));
  Require(IsInside(match.Whole, text) && IsInside(match.FirstGroup, text));
  std::u16string replaced;
  const TRegexOutcome outcome = ReplaceRegex(pattern, text, input, kMostUnits, replaced);
  Require(outcome == roFailed || replaced.size() <= kMostUnits);
  Require(outcome != roNoMatch || (replaced == text && match.Outcome != roMatched));
  Require(std::chrono::steady_clock::now() - start < std::chrono::seconds(20));
  return 0;
}
