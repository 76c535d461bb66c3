#include <tessarine/platform/detail/JsonText.h>

#include <algorithm>
#include <cstring>
#include <iterator>
#include <limits>
#include <optional>
#include <random>
#include <span>
#include <string>

#include <gtest/gtest.h>

#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/JsonReader.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"

namespace tessarine {
namespace {

using detail::TJsonPlace;
using detail::TJsonText;

bool IsSound(const std::string& AText) { return TJsonText::FromBytes(AText).IsSound(); }

/// What the reader that walks from front to end thinks of a text.
bool ReaderAccepts(const std::string& AText) {
  try {
    TJsonReader reader(AText);
    while (reader.Next() != jeEnd) {}
    return true;
  } catch (const ETessarineError&) {
    return false;
  }
}

/// A value written again from its places.
std::string Again(const TJsonText& AText, TJsonPlace AValue) {
  std::string out;
  if (TJsonText::KindOf(AValue) == detail::jkObject) {
    AText.ForEachMember(AValue, [&](std::string_view AName, TJsonPlace AMember) -> TJsonPlace {
      out += (out.empty() ? "{" : ",") + std::string(AName) + ":" + Again(AText, AMember);
      return nullptr;
    });
    return out.empty() ? "{}" : out + "}";
  }
  if (TJsonText::KindOf(AValue) == detail::jkArray) {
    AText.ForEachElement(AValue,
                         [&](TJsonPlace AElement) { out += (out.empty() ? "[" : ",") + Again(AText, AElement); });
    return out.empty() ? "[]" : out + "]";
  }
  return AText.SpellingOf(AValue);
}

std::string Again(const std::string& ABytes) {
  TJsonText text = TJsonText::FromBytes(ABytes);
  return text.IsSound() ? Again(text, text.Root()) : "unsound";
}

TEST(JsonText, ReadsByPlaces) {
  const std::string large = "[" + std::string(5000, ' ') + "1]";
  EXPECT_EQ(Again("{\"n\":" + large + ",\"m\":" + large + "}"), "{n:[1],m:[1]}");
  test::ExpectCases("platform/json_texts.tsv", [](const test::TCase& ACase) { return Again(ACase[0]); });
  EXPECT_EQ(TJsonText::Number("1e400,"), std::numeric_limits<double>::max());
  EXPECT_EQ(TJsonText::Number("-1e400]"), -std::numeric_limits<double>::max());
  std::string deep(100'000, '[');
  deep += std::string(100'000, ']');
  EXPECT_TRUE(IsSound(deep));
  EXPECT_FALSE(IsSound(deep + "]"));
}

TEST(JsonText, TellsWhereAPlaceIs) {
  TJsonText text = TJsonText::FromBytes("{\"a\":[0,\n {\"b c\":true}],\"d\":1}");
  ASSERT_TRUE(text.IsSound());
  EXPECT_EQ(text.Describe(text.Text().data() + text.Text().find("true")), "a[1].b c (line 2, column 9)");
  EXPECT_EQ(text.Describe(text.Root()), "line 1, column 1");
}

TEST(JsonText, AStreamMayTellAnySize) {
  class TStream final : public IReadStream {
   public:
    TStream(std::string AText, uint64_t ATold) : FText(std::move(AText)), FTold(ATold) {}
    size_t Read(std::span<std::byte> ABuffer) override {
      const size_t count = std::min<size_t>({ABuffer.size(), FText.size() - FAt, 3});
      std::memcpy(ABuffer.data(), FText.data() + FAt, count);
      FAt += count;
      return count;
    }
    std::optional<uint64_t> Size() const override { return FTold; }

   private:
    std::string FText;
    uint64_t FTold;
    size_t FAt = 0;
  };
  for (const uint64_t told : {0, 5, 10, 11, 30}) {
    TStream stream("[1,22,333]", told);
    TJsonText text = TJsonText::FromStream(stream, 100);
    ASSERT_TRUE(text.IsSound()) << told;
    EXPECT_EQ(Again(text, text.Root()), "[1,22,333]") << told;
  }
  for (const uint64_t told : {2, 10}) {
    TStream stream("[1,22,333]", told);
    EXPECT_THROW(static_cast<void>(TJsonText::FromStream(stream, 9)), ELimit) << told;
  }
}

TEST(JsonText, AgreesWithTheReaderOnDamagedTexts) {
  const std::string seeds[] = {
      R"({"kind":2,"text":"a\tb\u00e9","list":[1,-0.5,1e-7,{"x":null,"y":[]}],"t":true,"f":false})",
      R"([[[]],{"":{}},"\\\"",0,-1,12.5E+3,"\ud83d\ude00"])"};
  const std::string bits = "{}[]\",:\\0-+.eEu1a tfn\n\x01";
  std::mt19937 random(11);
  int sound = 0;
  for (int round = 0; round < 20'000; ++round) {
    std::string text = seeds[random() % std::size(seeds)];
    for (size_t edits = 1 + random() % 2; edits > 0; --edits) {
      const size_t at = random() % text.size();
      switch (random() % 3) {
        case 0: text[at] = bits[random() % bits.size()]; break;
        case 1: text.erase(at, 1); break;
        default: text.insert(at, 1, bits[random() % bits.size()]); break;
      }
    }
    const bool expected = ReaderAccepts(text);
    sound += expected ? 1 : 0;
    ASSERT_EQ(IsSound(text), expected) << text;
  }
  EXPECT_GT(sound, 1000);
  EXPECT_LT(sound, 19'000);
}

}  // namespace
}  // namespace tessarine
