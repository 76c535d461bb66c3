#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XPath.h>

using namespace tessarine;

namespace {

constexpr TXPathLimits kLimits{.MaxNodes = 1000, .MaxTextBytes = 100'000};

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

}  // namespace

/// The first line is the expression, the rest the document.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  const std::u16string text = Utf8ToUtf16({reinterpret_cast<const char*>(AData), ASize});
  const std::u16string_view xpath = std::u16string_view(text).substr(0, text.find(u'\n'));
  const auto select = [&](std::u16string_view AXml) {
    const auto document = TXPathDocument::TryLoad(AXml);
    if (!document) return;
    const TXPathSelection selection = document->Select(xpath, kLimits);
    Require(selection.Outcome == xoDone || selection.Texts.empty());
    Require(selection.Texts.size() <= kLimits.MaxNodes);
  };
  select(text.size() > xpath.size() ? std::u16string_view(text).substr(xpath.size() + 1) : std::u16string_view());
  select(u"<a x='1'><b>t<c/><c y='2'>u</c></b><n:b>v</n:b><b><b><b/></b></b></a>");
  return 0;
}
