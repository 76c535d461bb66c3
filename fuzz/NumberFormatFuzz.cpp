#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/format/detail/NumberFormatPlain.h>
#include <tessarine/platform/Locale.h>

/// Eight bytes of a number, then a format code in UTF-16. The compiled code must give the text of the steps taken anew.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  using namespace tessarine;
  double value = 0;
  if (ASize < sizeof value) return 0;
  std::memcpy(&value, AData, sizeof value);
  std::u16string code((ASize - sizeof value) / sizeof(char16_t), u'\0');
  std::memcpy(code.data(), AData + sizeof value, code.size() * sizeof(char16_t));

  for (const double number : {value, -value, 0.0}) {
    std::u16string text;
    AppendFormattedNumber(number, code, text);
    if (text != detail::FormatNumberPlain(number, code, CurrentFormatSettings())) std::abort();
    NumberFormatColor(number, code);
    (void)TryFormatNumberFillSplit(number, code);
  }
  return 0;
}
