#include <tessarine/platform/Base64.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

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

TEST(Base64, BothWaysInOneLine) {
  const struct {
    std::string Bytes;
    std::string Text;
  } cases[] = {{"", ""},
               {"f", "Zg=="},
               {"fo", "Zm8="},
               {"foo", "Zm9v"},
               {"foobar", "Zm9vYmFy"},
               {std::string("\0\xFF\xFE", 3), "AP/+"},
               {std::string(100, 'x'), Encoded(std::string(100, 'x'))}};
  for (const auto& row : cases) {
    EXPECT_EQ(Encoded(row.Bytes), row.Text);
    EXPECT_EQ(Decoded(row.Text), row.Bytes) << row.Text;
    EXPECT_EQ(row.Text.find('\n'), std::string::npos);
  }
}

TEST(Base64, BlanksAndMissingPaddingAreFineAnythingElseIsNothing) {
  const struct {
    const char* Text;
    const char* Bytes;
  } cases[] = {{" Zm9v\r\n\tYmFy ", "foobar"},
               {"Z m 8", "fo"},
               {"Zg", "f"},
               {"Zg=", "f"},
               {"Zm9v=", ""},
               {"Z", ""},
               {"Zm9vY", ""},
               {"Zm9v!", ""},
               {"=Zg", ""},
               {"Zg==Zg==", ""},
               {"Zm-_", ""}};
  for (const auto& row : cases) EXPECT_EQ(Decoded(row.Text), row.Bytes) << row.Text;
}

}  // namespace
}  // namespace tessarine
