#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/values/CellValue.h>

/// The text of a query:
///   SELECT * | item, ... [WHERE condition] [GROUP BY column, ...] [ORDER BY column [ASC | DESC], ...]
///   [LIMIT number] [OFFSET number] [LABEL column 'text', ...]
/// in this order. An item is a column or an aggregate of one, "sum(B)". A condition joins comparisons of a column with
/// a literal by AND and OR, of which AND binds tighter; there are no parentheses. Texts stand in single quotes.
namespace tessarine::detail {

enum class TQueryAggregate : uint8_t { qaNone, qaSum, qaAvg, qaCount, qaMin, qaMax };
using enum TQueryAggregate;

enum class TQueryOperator : uint8_t { qoEqual, qoNotEqual, qoLess, qoGreater, qoLessEqual, qoGreaterEqual };
using enum TQueryOperator;

/// Columns are 0-based and may lie behind the last one of the data.
struct TQueryItem {
  int32_t Col = 0;
  TQueryAggregate Aggregate = qaNone;
  TText Label;
};

struct TQueryComparison {
  int32_t Col = 0;
  TQueryOperator Operator = qoEqual;
  TCellValue Literal;
};

struct TQueryOrderKey {
  int32_t Col = 0;
  bool Descending = false;
};

struct TQuery {
  std::vector<TQueryItem> Items;
  /// A row is kept when, of any of these, all comparisons hold; empty: every row.
  std::vector<std::vector<TQueryComparison>> AnyOf;
  std::vector<int32_t> GroupCols;
  std::vector<TQueryOrderKey> OrderKeys;
  std::optional<int64_t> Limit;
  std::optional<int64_t> Offset;

  /// Whether rows are put together: by columns, or all of them for an aggregate.
  bool IsGrouped() const;
};

/// Reads a query over columns with these headers; nothing when the text is no query.
std::optional<TQuery> ParseQuery(std::u16string_view AText, std::span<const TText> AHeaders);

}  // namespace tessarine::detail
