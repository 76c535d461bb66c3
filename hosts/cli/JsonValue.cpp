#include <hosts/cli/JsonValue.h>

#include <algorithm>

#include <tessarine/platform/JsonReader.h>

namespace tessarine::cli {

namespace {

constexpr size_t kMaxDepth = 8;

/// The value whose event is the present one; the depth is the reader's to limit.
TJsonValue ValueAt(TJsonReader& AReader) {
  TJsonValue value;
  switch (AReader.Event()) {
    case jeBoolean:
      value.Kind = jkBoolean;
      value.Boolean = AReader.Boolean();
      return value;
    case jeNumber:
      value.Kind = jkNumber;
      value.Number = AReader.Number();
      return value;
    case jeText:
      value.Kind = jkText;
      value.Text = AReader.Text();
      return value;
    case jeBeginArray:
      value.Kind = jkArray;
      while (AReader.Next() != jeEndArray) value.Items.push_back(ValueAt(AReader));
      return value;
    case jeBeginObject:
      value.Kind = jkObject;
      while (AReader.Next() == jeName) {
        value.Names.emplace_back(AReader.Text());
        AReader.Next();
        value.Items.push_back(ValueAt(AReader));
      }
      return value;
    default: return value;
  }
}

}  // namespace

const TJsonValue* TJsonValue::Find(std::string_view AName) const {
  const auto found = std::find(Names.begin(), Names.end(), AName);
  return found == Names.end() ? nullptr : &Items[static_cast<size_t>(found - Names.begin())];
}

TJsonValue ReadJsonValue(std::string_view AText) {
  TJsonReader reader(AText, {}, kMaxDepth);
  reader.Next();
  TJsonValue value = ValueAt(reader);
  reader.Next();
  return value;
}

}  // namespace tessarine::cli
