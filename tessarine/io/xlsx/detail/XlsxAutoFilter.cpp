#include <tessarine/io/xlsx/detail/XlsxAutoFilter.h>

#include <algorithm>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/io/xlsx/detail/XlsxCommon.h>
#include <tessarine/io/xlsx/detail/XlsxReport.h>
#include <tessarine/platform/Errors.h>

namespace tessarine::detail {

namespace {

/// APattern as the text that it stands for, "~" in front of a wildcard undone; nothing when a wildcard is left.
std::optional<std::string> PlainPattern(std::string_view APattern) {
  std::string text;
  for (size_t at = 0; at < APattern.size(); ++at) {
    constexpr std::string_view kMarks = "*?~";
    if (APattern[at] == '*' || APattern[at] == '?') return std::nullopt;
    if (APattern[at] == '~' && at + 1 < APattern.size() && kMarks.find(APattern[at + 1]) != kMarks.npos) ++at;
    text += APattern[at];
  }
  return text;
}

/// The "x" of "*x*".
std::optional<std::string> ContainedPattern(std::string_view APattern) {
  if (APattern.size() < 3 || APattern.front() != '*' || APattern.back() != '*') return std::nullopt;
  APattern = APattern.substr(1, APattern.size() - 2);
  // An odd number of "~" at the end makes the last "*" a letter.
  const size_t last = APattern.find_last_not_of('~');
  const size_t tildes = APattern.size() - (last == APattern.npos ? 0 : last + 1);
  return tildes % 2 != 0 ? std::nullopt : PlainPattern(APattern);
}

class TXlsxFilterReader {
 public:
  TXlsxFilterReader(TXmlReader& AReader, size_t AMaxRecords) : FReader(AReader), FMaxRecords(AMaxRecords) {}

  TXlsxAutoFilter Read(const TXlsxReport& AReport) {
    TXlsxAutoFilter filter;
    filter.Range = XlsxRange(XlsxAttr(FReader.Attributes(), "ref"));
    ForEachXlsxChild(FReader, "filterColumn", [&] {
      Count();
      TXlsxAutoFilter::TColumn column;
      column.Index = XlsxAttrInt(FReader.Attributes(), "colId", -1);
      const TCriterion criterion = ReadColumn(column);
      if (criterion == TCriterion::crKnown && column.Index >= 0) filter.Columns.push_back(std::move(column));
      if (criterion == TCriterion::crUnknown) AReport.Drop("filter criterion", 1, FUnknown);
    });
    return filter;
  }

 private:
  enum class TCriterion : uint8_t { crNone, crKnown, crUnknown };
  using enum TCriterion;

  void Count() {
    if (++FRecords <= FMaxRecords) return;
    throw ELimit(FReader.PartName() + ": the filter has more criteria than the limit of " +
                 std::to_string(FMaxRecords));
  }

  TCriterion ReadColumn(TXlsxAutoFilter::TColumn& AColumn) {
    TCriterion criterion = crNone;
    for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
      if (event != xeStartElement) continue;
      if (criterion != crNone || FReader.LocalNameIs("extLst")) {
        FReader.SkipElement();
      } else if (FReader.LocalNameIs("filters")) {
        criterion = ReadValues(AColumn.Values);
      } else if (FReader.LocalNameIs("customFilters")) {
        criterion = ReadCustom(AColumn);
      } else {
        criterion = crUnknown;
        FUnknown = FReader.LocalName();
        FReader.SkipElement();
      }
    }
    return criterion;
  }

  /// Texts to be kept, the empty one for blanks. Groups of dates cannot be told by texts.
  TCriterion ReadValues(std::vector<TText>& AValues) {
    if (XlsxAttrIsOn(FReader.Attributes(), "blank")) AValues.emplace_back();
    TCriterion criterion = crKnown;
    for (TXmlEvent event = FReader.Next(); event != xeEndElement && event != xeEnd; event = FReader.Next()) {
      if (event != xeStartElement) continue;
      Count();
      if (FReader.LocalNameIs("filter")) {
        AValues.push_back(XlsxText(XlsxAttr(FReader.Attributes(), "val")));
      } else {
        criterion = crUnknown;
        FUnknown = FReader.LocalName();
      }
      FReader.SkipElement();
    }
    return criterion;
  }

  /// One text to be contained, or texts of which one is to be met.
  TCriterion ReadCustom(TXlsxAutoFilter::TColumn& AColumn) {
    const bool isAnd = XlsxAttrIsOn(FReader.Attributes(), "and");
    size_t contained = 0;
    bool isKnown = true;
    FUnknown = "no condition";
    ForEachXlsxChild(FReader, "customFilter", [&] {
      Count();
      const std::string_view word = XlsxAttr(FReader.Attributes(), "operator", "equal");
      const std::string_view value = XlsxAttr(FReader.Attributes(), "val");
      std::optional<std::string> piece;
      if (EqualXmlNames(word, "contains")) piece = value;
      if (EqualXmlNames(word, "equal")) piece = ContainedPattern(value);
      if (piece && !piece->empty()) {
        ++contained;
        AColumn.Contains = XlsxText(*piece);
      } else if (const auto plain = PlainPattern(value); plain && EqualXmlNames(word, "equal")) {
        AColumn.Values.push_back(XlsxText(*plain));
      } else {
        isKnown = false;
        FUnknown = word;
      }
      FReader.SkipElement();
    });
    const size_t conditions = contained + AColumn.Values.size();
    if (isKnown && conditions > 1 && (isAnd || contained > 0)) {
      isKnown = false;
      FUnknown = "several conditions";
    }
    return isKnown && conditions > 0 ? crKnown : crUnknown;
  }

  TXmlReader& FReader;
  const size_t FMaxRecords;
  size_t FRecords = 0;
  std::string FUnknown;  // what the model lacks, for the report
};

}  // namespace

void TXlsxAutoFilter::ApplyTo(const TCellRange& ARange, TSheetAutoFilter& AFilter) const {
  if (!XlsxIsRange(ARange)) return;
  AFilter.Enable(ARange);
  for (const TColumn& column : Columns) {
    const int64_t col = int64_t{AFilter.Range().StartCol} + column.Index;
    if (col > kMaxCol) continue;
    const auto sheetCol = static_cast<int32_t>(col);
    if (column.Contains.IsEmpty())
      AFilter.SetColumnValues(sheetCol, column.Values, false);
    else
      AFilter.SetColumnContains(sheetCol, column.Contains, false);
  }
}

TXlsxAutoFilter ReadXlsxAutoFilter(TXmlReader& AReader, size_t AMaxRecords, const TXlsxReport& AReport) {
  return TXlsxFilterReader(AReader, AMaxRecords).Read(AReport);
}

}  // namespace tessarine::detail
