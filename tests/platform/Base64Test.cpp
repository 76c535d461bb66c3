#include <tessarine/platform/Base64.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

std::string Encoded(std::string_view ABytes) {
  std::string text = ">";
  AppendBase64(std::as_bytes(std::span(ABytes)), text);
  return text.substr(1);
}

std::string Decoded(std::string_view AText) {
  const std::vector<std::byte> bytes = DecodeBase64(AText);
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

TEST(Base64, ExamplesHold) {
  const auto both = [](const test::TCase& ACase) {
    EXPECT_EQ(Encoded(ACase[2]), ACase[1]) << ACase.Place();
    return Decoded(ACase[1]);
  };
  test::ExpectCases("platform/base64.tsv",
                    {{"both", both}, {"read", [](const test::TCase& ACase) { return Decoded(ACase[1]); }}});
  const std::string many(100, 'x');
  EXPECT_EQ(Decoded(Encoded(many)), many);
  EXPECT_EQ(Encoded(many).find('\n'), std::string::npos);
}

}  // namespace
}  // namespace tessarine
