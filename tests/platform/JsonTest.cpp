#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <random>
#include <string>

#include <nlohmann/json.hpp>

#include <tessarine/platform/JsonReader.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

#include "../support/CaseTable.h"
#include "../support/Thrown.h"

using namespace tessarine;
using tessarine::test::Thrown;

namespace {

/// The events of a document as a text: {"a": [1, true]} is {a:[1 T]}.
std::string Events(std::string_view AText, size_t AMaxDepth = TJsonReader::kMaxDepth) {
  TJsonReader json(AText, "t.json", AMaxDepth);
  std::string shown;
  for (;;) {
    switch (json.Next()) {
      case jeBeginObject: shown += "{"; break;
      case jeEndObject: shown += "}"; break;
      case jeBeginArray: shown += "["; break;
      case jeEndArray: shown += "]"; break;
      case jeName: shown += std::string(json.Text()) + ":"; break;
      case jeText: shown += "'" + std::string(json.Text()) + "' "; break;
      case jeNumber: {
        char text[32];
        std::snprintf(text, sizeof text, "%.17g ", json.Number());
        shown += text;
        break;
      }
      case jeBoolean: shown += json.Boolean() ? "T " : "F "; break;
      case jeNull: shown += "N "; break;
      case jeEnd: return shown;
    }
  }
}

/// The document that the reader's events make, for a comparison with another parser's.
nlohmann::json TreeOf(TJsonReader& AJson) {
  switch (AJson.Event()) {
    case jeBeginObject: {
      auto object = nlohmann::json::object();
      while (AJson.Next() == jeName) {
        const std::string name(AJson.Text());
        AJson.Next();
        object[name] = TreeOf(AJson);
      }
      return object;
    }
    case jeBeginArray: {
      auto array = nlohmann::json::array();
      while (AJson.Next() != jeEndArray) array.push_back(TreeOf(AJson));
      return array;
    }
    case jeText: return std::string(AJson.Text());
    case jeNumber: return AJson.Number();
    case jeBoolean: return AJson.Boolean();
    default: return nullptr;
  }
}

void PutRandomValue(std::mt19937& ARandom, int ADepth, TJsonWriter& AJson) {
  switch (ARandom() % (ADepth > 0 ? 7 : 5)) {
    case 0: AJson.Null(); return;
    case 1: AJson.Boolean(ARandom() % 2 == 0); return;
    case 2: {
      uint64_t bits = uint64_t{ARandom()} << 32 | ARandom();
      double number = 0;
      std::memcpy(&number, &bits, sizeof number);
      AJson.Number(std::isfinite(number) ? number : 1.5);
      return;
    }
    case 3: AJson.Integer(static_cast<int32_t>(ARandom())); return;
    case 4: {
      std::u16string text(ARandom() % 12, u' ');
      for (char16_t& unit : text) unit = static_cast<char16_t>(ARandom() % 3 == 0 ? ARandom() : ARandom() % 128);
      AJson.Text(std::u16string_view(text));
      return;
    }
    case 5:
      AJson.BeginArray();
      for (uint32_t i = ARandom() % 5; i > 0; --i) PutRandomValue(ARandom, ADepth - 1, AJson);
      AJson.EndArray();
      return;
    default:
      AJson.BeginObject();
      for (uint32_t i = ARandom() % 5; i > 0; --i) {
        AJson.Name("k" + std::to_string(i) + "\"\n");
        PutRandomValue(ARandom, ADepth - 1, AJson);
      }
      AJson.EndObject();
      return;
  }
}

}  // namespace

TEST(Json, ReaderGivesTheEventsOfADocumentOrTellsThePlaceOfAFault) {
  test::ExpectCases("platform/json.tsv", [](const test::TCase& ACase) {
    std::string events;
    const std::string thrown = Thrown([&] { events = Events(ACase[0]); });
    return thrown == "nothing" ? events : thrown;
  });
}

TEST(Json, DepthIsLimitedAndNothingIsRecursive) {
  EXPECT_EQ(Events("[[[]]]", 3), "[[[]]]");
  EXPECT_EQ(Thrown([] { Events("[[[[]]]]", 3); }),
            "limit: t.json, line 1, column 4: nested deeper than the limit of 3 levels");
  std::string deep(1'000'000, '[');
  deep += std::string(1'000'000, ']');
  EXPECT_EQ(Events(deep, 1'000'000).size(), deep.size());
}

TEST(Json, SkipPassesOverWholeValues) {
  TJsonReader json("{\"a\":{\"x\":[1,{\"y\":2}]},\"b\":[[]],\"c\":7}");
  json.Next();
  std::string names;
  while (json.Next() == jeName) {
    names += json.Text();
    if (json.Text() == "c") {
      json.Next();
      EXPECT_EQ(json.Number(), 7);
    } else {
      json.Skip();
    }
  }
  EXPECT_EQ(names, "abc");
  EXPECT_EQ(json.Event(), jeEndObject);
  EXPECT_EQ(json.Next(), jeEnd);
}

TEST(Json, WriterEscapesAndSeparates) {
  std::string out;
  TJsonWriter json(out);
  json.BeginObject();
  json.Name("a\"b");
  json.BeginArray();
  json.Number(0.1);
  json.Number(-0.0);
  json.Number(std::numeric_limits<double>::infinity());
  json.Integer(std::numeric_limits<int64_t>::min());
  json.BeginObject();
  json.EndObject();
  json.EndArray();
  json.Name("t");
  json.Text(std::u16string_view(u"\"\\\b\f\n\r\t\x01\u00E9\xD800"));
  json.Name("u");
  json.Text(std::string_view("a\xFF"));
  json.Name("n");
  json.Null();
  json.EndObject();
  EXPECT_EQ(out,
            "{\"a\\\"b\":[0.1,0,null,-9223372036854775808,{}],"
            "\"t\":\"\\\"\\\\\\b\\f\\n\\r\\t\\u0001\u00E9\uFFFD\",\"u\":\"a\uFFFD\",\"n\":null}");
}

TEST(Json, WhatTheWriterWritesBothReadersReadAlike) {
  std::mt19937 random(6);
  for (int round = 0; round < 500; ++round) {
    std::string out;
    TJsonWriter json(out);
    PutRandomValue(random, 5, json);
    TJsonReader reader(out);
    reader.Next();
    const nlohmann::json tree = TreeOf(reader);
    ASSERT_EQ(reader.Next(), jeEnd);
    ASSERT_EQ(tree, nlohmann::json::parse(out)) << out;
  }
}

TEST(Json, TheVerdictOnDamagedDocumentsIsAnotherReadersToo) {
  std::mt19937 random(7);
  constexpr std::string_view kBytes = "{}[]:,\"\\u0123456789eE+-.truefalsn \n";
  for (int round = 0; round < 4000; ++round) {
    std::string text;
    TJsonWriter json(text);
    PutRandomValue(random, 3, json);
    if (text.find('\\') != std::string::npos) continue;  // halves of pairs are judged differently on purpose
    for (uint32_t i = random() % 3; i > 0 && !text.empty(); --i) {
      const size_t at = random() % text.size();
      const char byte = kBytes[random() % kBytes.size()];
      if (byte == '\\') continue;
      if (random() % 2 == 0) {
        text[at] = byte;
      } else {
        text.insert(at, 1, byte);
      }
    }
    if (!IsValidUtf8(text)) continue;
    const std::string ours = Thrown([&] { Events(text); });
    bool isOverflow = false;
    bool accepts = true;
    try {
      const auto tree = nlohmann::json::parse(text);
    } catch (const nlohmann::json::out_of_range&) {
      isOverflow = true;
    } catch (const nlohmann::json::parse_error&) {
      accepts = false;
    }
    if (isOverflow) continue;
    ASSERT_EQ(ours == "nothing", accepts) << text << "\n" << ours;
  }
}
