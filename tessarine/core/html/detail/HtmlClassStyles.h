#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <unordered_map>

#include <tessarine/core/values/Text.h>

namespace tessarine::detail {

class THtmlScanner;

/// The style texts of classes, from all "style" blocks of a document.
class THtmlClassStyles {
 public:
  explicit THtmlClassStyles(std::u16string_view ADocument);

  /// The CSS of a tag's classes, then of its style attribute. Every element may repeat the style of its class, so that
  /// the styles together could outgrow the document by far: beyond 16 million units the classes are left out.
  TText StyleOf(const THtmlScanner& ATag);

 private:
  void ReadRules(std::u16string_view ACss);
  void AddRule(std::u16string_view AHeads, const TText& AStyle);

  std::unordered_map<std::u16string, TText> FStyles;  // by names in lower case
  size_t FStyleTexts = 0;
};

}  // namespace tessarine::detail
