#include <tessarine/formula/library/detail/QuerySyntax.h>

#include <algorithm>
#include <array>
#include <unordered_map>
#include <unordered_set>

#include <tessarine/formula/library/detail/ArgReading.h>
#include <tessarine/formula/library/detail/QueryTokens.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::detail {

namespace {

struct TNamedAggregate {
  std::u16string_view Name;
  TQueryAggregate Aggregate;
  std::u16string_view LabelStart;
};

constexpr TNamedAggregate kAggregates[] = {
    {u"SUM", qaSum, u"sum "}, {u"AVG", qaAvg, u"avg "}, {u"COUNT", qaCount, u"count "},
    {u"MIN", qaMin, u"min "}, {u"MAX", qaMax, u"max "},
};

/// Words that never read as a column. The names of aggregates do where no parenthesis follows.
constexpr std::u16string_view kReservedWords[] = {
    u"SELECT", u"WHERE", u"ORDER", u"BY",    u"ASC", u"DESC", u"LIMIT", u"OFFSET",
    u"GROUP",  u"AND",   u"OR",    u"LABEL", u"AS",  u"TRUE", u"FALSE",
};

const TNamedAggregate* FindAggregate(std::u16string_view AUpperName) {
  const auto* found = std::find_if(std::begin(kAggregates), std::end(kAggregates),
                                   [AUpperName](const auto& ARow) { return ARow.Name == AUpperName; });
  return found == std::end(kAggregates) ? nullptr : found;
}

std::optional<TQueryOperator> OperatorOf(TQueryTokenKind AKind) {
  switch (AKind) {
    case qtEqual: return qoEqual;
    case qtNotEqual: return qoNotEqual;
    case qtLess: return qoLess;
    case qtGreater: return qoGreater;
    case qtLessEqual: return qoLessEqual;
    case qtGreaterEqual: return qoGreaterEqual;
    default: return std::nullopt;
  }
}

/// Which columns names stand for.
class TQueryColumns {
 public:
  explicit TQueryColumns(std::span<const TText> AHeaders) : FHeaders(AHeaders) {}

  int32_t Count() const { return static_cast<int32_t>(FHeaders.size()); }

  /// "Col2", else the letters of a column that exists, else a header.
  std::optional<int32_t> Find(std::u16string_view AUpperName) {
    int32_t number = 0;
    if (AUpperName.starts_with(u"COL") && TryParseInt32(AUpperName.substr(3), number) && number >= 1) return number - 1;
    const int32_t lettered = LettersAsColumn(AUpperName);
    if (lettered >= 1 && lettered <= Count()) return lettered - 1;
    if (FByHeader.empty()) ReadHeaders();
    const auto found = FByHeader.find(std::u16string(AUpperName));
    return found == FByHeader.end() ? std::nullopt : std::optional<int32_t>(found->second);
  }

  /// The label of an item; labels of the same kind share their text. Empty when all labels together are too long.
  TText LabelOf(int32_t ACol, TQueryAggregate AAggregate) {
    const TText header = ACol < Count() ? FHeaders[static_cast<size_t>(ACol)] : TText();
    if (AAggregate == qaNone) return header;
    TText& label = FLabels[static_cast<size_t>(AAggregate)][ACol];
    if (label.IsEmpty()) {
      const auto* row = std::find_if(std::begin(kAggregates), std::end(kAggregates),
                                     [AAggregate](const auto& ARow) { return ARow.Aggregate == AAggregate; });
      FLabelUnits += row->LabelStart.size() + header.Length();
      if (FLabelUnits <= kMostLabelUnits) label = TText(std::u16string(row->LabelStart) += header.View());
    }
    return label;
  }

  bool HasLongLabels() const { return FLabelUnits > kMostLabelUnits; }

 private:
  /// The 1-based column of one to three letters, else 0.
  static int32_t LettersAsColumn(std::u16string_view AUpperName) {
    if (AUpperName.empty() || AUpperName.size() > 3) return 0;
    int32_t number = 0;
    for (const char16_t unit : AUpperName) {
      if (unit < u'A' || unit > u'Z') return 0;
      number = number * 26 + (unit - u'A' + 1);
    }
    return number;
  }

  /// Headers that share a text are read once.
  void ReadHeaders() {
    std::unordered_set<const TTextBlock*> read;
    for (int32_t col = 0; col < Count(); ++col) {
      const TText& header = FHeaders[static_cast<size_t>(col)];
      if (read.insert(header.Block()).second) FByHeader.emplace(ToAsciiUpper(header), col);
    }
  }

  static constexpr size_t kMostLabelUnits = size_t{1} << 26;

  std::span<const TText> FHeaders;
  size_t FLabelUnits = 0;                                 // of the labels that were made
  std::unordered_map<std::u16string, int32_t> FByHeader;  // the first column of each header; made when first needed
  std::array<std::unordered_map<int32_t, TText>, 6> FLabels;
};

/// Reads the clauses one by one, with one token of sight.
class TQueryParser {
 public:
  TQueryParser(std::u16string_view AText, std::span<const TText> AHeaders) : FTokens(AText), FColumns(AHeaders) {
    Advance();
  }

  std::optional<TQuery> Parse() {
    const bool isQuery = ReadSelect() && ReadWhere() && ReadGroupBy() && ReadOrderBy() &&
                         ReadCount(u"LIMIT", FQuery.Limit) && ReadCount(u"OFFSET", FQuery.Offset) && ReadLabels() &&
                         FToken.Kind == qtEnd && !FColumns.HasLongLabels();
    if (!isQuery) return std::nullopt;
    ApplyLabels();
    return std::move(FQuery);
  }

 private:
  void Advance() {
    FToken = FTokens.Next();
    FUpperName = FToken.Kind == qtIdentifier ? ToAsciiUpper(FToken.Text) : std::u16string();
  }

  bool Skip(TQueryTokenKind AKind) {
    if (FToken.Kind != AKind) return false;
    Advance();
    return true;
  }

  bool SkipWord(std::u16string_view AWord) {
    if (FUpperName != AWord) return false;
    Advance();
    return true;
  }

  /// Calls AReadOne for each entry of a list; false when it fails for one.
  template <class F>
  bool ReadList(F&& AReadOne) {
    do {
      if (!AReadOne()) return false;
    } while (Skip(qtComma));
    return true;
  }

  bool ReadColumn(int32_t& ACol) {
    if (FToken.Kind != qtIdentifier) return false;
    const std::u16string name = std::move(FUpperName);
    Advance();
    return FindColumn(name, ACol);
  }

  bool FindColumn(std::u16string_view AUpperName, int32_t& ACol) {
    if (std::find(std::begin(kReservedWords), std::end(kReservedWords), AUpperName) != std::end(kReservedWords)) {
      return false;
    }
    const std::optional<int32_t> col = FColumns.Find(AUpperName);
    ACol = col.value_or(0);
    return col.has_value();
  }

  bool ReadSelect() {
    if (!SkipWord(u"SELECT") || !ReadList([this] { return ReadItem(); })) return false;
    if (!FSelectsAll) return true;
    FQuery.Items.clear();
    for (int32_t col = 0; col < FColumns.Count(); ++col) AddItem(col, qaNone);
    return true;
  }

  bool ReadItem() {
    if (Skip(qtStar)) return FSelectsAll = true;
    if (FToken.Kind != qtIdentifier) return false;
    const std::u16string name = std::move(FUpperName);
    const TNamedAggregate* aggregate = FindAggregate(name);
    Advance();
    int32_t col = 0;
    if (aggregate && Skip(qtLParen)) {
      if (!ReadColumn(col) || !Skip(qtRParen)) return false;
    } else {
      aggregate = nullptr;
      if (!FindColumn(name, col)) return false;
    }
    AddItem(col, aggregate ? aggregate->Aggregate : qaNone);
    return true;
  }

  void AddItem(int32_t ACol, TQueryAggregate AAggregate) {
    FQuery.Items.push_back({ACol, AAggregate, FColumns.LabelOf(ACol, AAggregate)});
  }

  bool ReadWhere() {
    if (!SkipWord(u"WHERE")) return true;
    do {
      auto& allOf = FQuery.AnyOf.emplace_back();
      do {
        if (!ReadComparison(allOf.emplace_back())) return false;
      } while (SkipWord(u"AND"));
    } while (SkipWord(u"OR"));
    return true;
  }

  bool ReadComparison(TQueryComparison& AComparison) {
    if (!ReadColumn(AComparison.Col)) return false;
    const std::optional<TQueryOperator> op = OperatorOf(FToken.Kind);
    if (!op) return false;
    AComparison.Operator = *op;
    Advance();
    switch (FToken.Kind) {
      case qtString: AComparison.Literal = TCellValue::FromText(FToken.Text); break;
      case qtNumber: AComparison.Literal = TCellValue::FromNumber(FToken.Number); break;
      default:
        if (FUpperName != u"TRUE" && FUpperName != u"FALSE") return false;
        AComparison.Literal = TCellValue::FromBoolean(FUpperName == u"TRUE");
    }
    Advance();
    return true;
  }

  bool ReadGroupBy() {
    if (!SkipWord(u"GROUP")) return true;
    return SkipWord(u"BY") && ReadList([this] { return ReadColumn(FQuery.GroupCols.emplace_back()); });
  }

  bool ReadOrderBy() {
    if (!SkipWord(u"ORDER")) return true;
    return SkipWord(u"BY") && ReadList([this] {
             TQueryOrderKey& key = FQuery.OrderKeys.emplace_back();
             if (!ReadColumn(key.Col)) return false;
             key.Descending = SkipWord(u"DESC");
             if (!key.Descending) SkipWord(u"ASC");
             return true;
           });
  }

  bool ReadCount(std::u16string_view AWord, std::optional<int64_t>& ACount) {
    if (!SkipWord(AWord)) return true;
    ACount = TruncateToInt64(FToken.Number);
    return Skip(qtNumber) && *ACount >= 0;
  }

  bool ReadLabels() {
    if (!SkipWord(u"LABEL")) return true;
    return ReadList([this] {
      int32_t col = 0;
      if (!ReadColumn(col) || FToken.Kind != qtString) return false;
      FLabels[col] = TText(FToken.Text);
      Advance();
      return true;
    });
  }

  void ApplyLabels() {
    if (FLabels.empty()) return;
    for (TQueryItem& item : FQuery.Items) {
      const auto label = FLabels.find(item.Col);
      if (item.Aggregate == qaNone && label != FLabels.end()) item.Label = label->second;
    }
  }

  TQueryTokenizer FTokens;
  TQueryColumns FColumns;
  TQueryToken FToken;
  std::u16string FUpperName;  // of an identifier; empty for other tokens
  bool FSelectsAll = false;
  std::unordered_map<int32_t, TText> FLabels;  // the last one of each column
  TQuery FQuery;
};

}  // namespace

bool TQuery::IsGrouped() const {
  return !GroupCols.empty() ||
         std::any_of(Items.begin(), Items.end(), [](const TQueryItem& AItem) { return AItem.Aggregate != qaNone; });
}

std::optional<TQuery> ParseQuery(std::u16string_view AText, std::span<const TText> AHeaders) {
  return TQueryParser(AText, AHeaders).Parse();
}

}  // namespace tessarine::detail
