#include <gtest/gtest.h>

#include <map>
#include <random>
#include <string>

#include <tessarine/features/pivot/detail/PivotCube.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {
namespace {

using detail::BuildPivotCube;
using detail::BuildPivotCubePlain;
using detail::TPivotCube;
using detail::TPivotKeys;

/// Keys with their parts renumbered in order of first sight, so that only what is seen counts.
std::u16string Dump(const TPivotKeys& AKeys) {
  std::u16string text;
  std::vector<std::map<uint32_t, size_t>> numbers(AKeys.FieldCount);
  for (size_t key = 0; key < AKeys.Count; ++key) {
    for (size_t field = 0; field < AKeys.FieldCount; ++field) {
      auto& known = numbers[field];
      const size_t number = known.try_emplace(AKeys.PartOf(key, field), known.size()).first->second;
      text += AKeys.LabelOf(key, field).ToString() + u"#" + GeneralNumberText(static_cast<double>(number)) + u",";
    }
    text += u";";
  }
  return text;
}

std::string Dump(const TPivotCube& ACube) {
  std::u16string text = Dump(ACube.Rows) + u"\n" + Dump(ACube.Columns) + u"\n";
  for (size_t place = 0; place < ACube.Places.size(); ++place) {
    text += GeneralNumberText(ACube.Places[place].Row) + u":" + GeneralNumberText(ACube.Places[place].Column) + u"=";
    for (const double value : ACube.AggregatesOf(place)) {
      char exact[40];
      std::snprintf(exact, sizeof exact, "%a ", value);
      text += Utf8ToUtf16(exact);
    }
  }
  return Utf16ToUtf8(text);
}

class TRandomPivot {
 public:
  explicit TRandomPivot(uint32_t ASeed) : FRandom(ASeed), Cache(1), Table(u"P", 1, {1, 1}) {
    const size_t fields = 1 + Below(5);
    std::vector<TText> names;
    for (size_t i = 0; i < fields; ++i) names.push_back(u"f" + GeneralNumberText(static_cast<double>(i)));
    Cache.SetFieldNames(names);
    const size_t spread = 1 + Below(12);
    for (size_t record = Below(60); record > 0; --record) {
      std::vector<TCellValue> values;
      for (size_t i = Below(2) ? fields : Below(fields + 2); i > 0; --i) values.push_back(Value(spread));
      Cache.AddRecord(values);
    }
    for (size_t i = Below(3); i > 0; --i) Table.CalcFields.push_back({u"c", Formula()});
    for (size_t i = Below(4); i > 0; --i) Table.Groups.push_back(Group());
    for (size_t i = Below(7); i > 0; --i) {
      const auto role = static_cast<TPivotFieldRole>(Below(5));
      Table.AddField(TPivotFieldRef::Create(Field(), role, static_cast<TPivotAgg>(Below(12))));
    }
    for (size_t i = Below(3); i > 0; --i) Table.SetFilterSelection(Field(), Items(spread));
    for (size_t i = Below(3) / 2; i > 0; --i) Cache.SetSlicerFilter(Field(), Items(spread));
  }

 private:
  size_t Below(size_t ALimit) { return FRandom() % ALimit; }
  int32_t Field() { return static_cast<int32_t>(Below(Cache.FieldCount() + 3)) - (Below(9) ? 0 : 1); }

  TCellValue Value(size_t ASpread) {
    static const char16_t* const texts[] = {u"a", u"A", u"", u"5", u" 7 ", u"x1", u"1999-12-24", u"TRUE", u"(blank)"};
    const auto number = static_cast<double>(Below(ASpread));
    switch (Below(9)) {
      case 0: return TCellValue::Empty();
      case 1: return TCellValue::FromBoolean(Below(2) == 1);
      case 2: return TCellValue::FromError(static_cast<TCellErrorCode>(1 + Below(3)));
      case 3:
      case 4: return TCellValue::FromText(texts[Below(9)]);
      case 5: return TCellValue::FromNumber(number * 0.1 + (Below(2) ? 0.2 : 1e-17));
      case 6: return TCellValue::FromNumber(Below(3) ? -number * 1e9 : -0.0);
      default: return TCellValue::FromNumber(number + (Below(3) ? 0 : 45000));
    }
  }

  TText Formula() {
    static const char16_t* const formulas[] = {u"f0*f1", u"f0 - 2.5", u"f1/f0", u"f1", u"3*f0", u"", u"f0+none"};
    return formulas[Below(7)];
  }

  std::vector<TText> Items(size_t ASpread) {
    std::vector<TText> items;
    for (size_t i = Below(6); i > 0; --i)
      items.push_back(Below(4) ? Value(ASpread).ToDisplayString() : TText(u"(BLANK)"));
    return items;
  }

  TPivotGroupDef Group() {
    TPivotGroupDef group;
    group.FieldIndex = Field();
    if (Below(3) == 0) group.DateGroup = static_cast<TPivotDateGroup>(Below(7));
    if (Below(2)) group.NumBy = static_cast<double>(Below(3));
    group.NumStart = static_cast<double>(Below(4)) - 1.5;
    group.ManualItems = {Items(4), Items(8)};
    if (Below(2)) group.GroupNames = {u"", u"A"};
    return group;
  }

  std::mt19937 FRandom;

 public:
  TPivotCache Cache;
  TPivotTable Table;
};

TEST(PivotCube, IsThatOfThePlainWalkOverTheRecords) {
  size_t places = 0;
  for (uint32_t seed = 1; seed <= 3000; ++seed) {
    const TRandomPivot pivot(seed);
    const TPivotCube fast = BuildPivotCube(pivot.Cache, pivot.Table);
    ASSERT_EQ(Dump(fast), Dump(BuildPivotCubePlain(pivot.Cache, pivot.Table))) << seed;
    places += fast.Places.size();
  }
  EXPECT_GT(places, 10000u);
}

/// More fields and items than one array or one word of codes can hold.
TEST(PivotCube, ManyFieldsOfManyItems) {
  TPivotCache cache(1);
  std::vector<TText> names(9, u"f");
  cache.SetFieldNames(names);
  std::mt19937 random(7);
  for (int record = 0; record < 3000; ++record) {
    std::vector<TCellValue> values;
    for (size_t i = 0; i < names.size(); ++i)
      values.push_back(TCellValue::FromNumber(record % 2 ? record : static_cast<double>(random() % 5000) * 7));
    cache.AddRecord(values);
  }
  TPivotTable table(u"P", 1, {1, 1});
  for (int32_t i = 0; i < 9; ++i) table.AddField(TPivotFieldRef::Create(i, i < 7 ? pfrRow : pfrColumn, paSum));
  table.AddField(TPivotFieldRef::Create(3, pfrRow, paSum));
  table.AddField(TPivotFieldRef::Create(3, pfrValue, paVarp));
  EXPECT_EQ(Dump(BuildPivotCube(cache, table)), Dump(BuildPivotCubePlain(cache, table)));
}

}  // namespace
}  // namespace tessarine
