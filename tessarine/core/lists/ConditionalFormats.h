#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string_view>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/reference/IndexShift.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>

namespace tessarine {

enum class TCfOperator : uint8_t {
  cfoCellValue,  // as cfoEqual
  cfoEqual,
  cfoNotEqual,
  cfoGreaterThan,
  cfoLessThan,
  cfoGreaterEqual,
  cfoLessEqual,
  cfoBetween,
  cfoNotBetween,
  cfoContainsText,
  cfoNotContainsText,
  cfoBeginsWith,
  cfoEndsWith,
};
using enum TCfOperator;

/// Reads an operator by one of its names in any case ("greaterThan", "gt", ">"); anything else is cfoCellValue.
TESSARINE_API TCfOperator ParseCfOperator(std::u16string_view AText);
/// The name for files ("greaterThan").
TESSARINE_API std::u16string_view CfOperatorName(TCfOperator AOperator);

/// Parts of a format that lie over the cells of some ranges where a comparison with constants holds.
struct TConditionalFormatRule {
  std::vector<TCellRange> Ranges;
  TCfOperator Operator = cfoCellValue;
  TText Formula1;  // operands as texts; never evaluated
  TText Formula2;
  bool StopIfTrue = false;  // no later rule applies to a cell that matches this one
  bool HasFill = false;
  TCellFillInfo Fill;
  bool HasFontColor = false;
  TColorRef FontColor;
  bool HasBold = false;
  bool Bold = false;
  bool HasItalic = false;
  bool Italic = false;

  friend bool operator==(const TConditionalFormatRule&, const TConditionalFormatRule&) = default;
};

/// The conditional formats of a sheet in order of priority: later rules override earlier ones in what both set.
class TESSARINE_API TConditionalFormatList {
 public:
  TConditionalFormatList();
  ~TConditionalFormatList();
  TConditionalFormatList(const TConditionalFormatList&) = delete;
  TConditionalFormatList& operator=(const TConditionalFormatList&) = delete;

  void Clear();
  void AddRule(TConditionalFormatRule ARule);
  /// An index out of range is ignored.
  void DeleteRule(size_t AIndex);
  /// Takes every range that meets ARange, even in part, away from its rule; rules without ranges go.
  void ClearOverlapping(const TCellRange& ARange);

  bool IsEmpty() const { return FRules.empty(); }
  size_t Count() const { return FRules.size(); }
  const TConditionalFormatRule& GetRule(size_t AIndex) const { return FRules[AIndex]; }
  auto begin() const { return FRules.begin(); }
  auto end() const { return FRules.end(); }

  /// Lays the rules that match over AFormat: numbers against numbers where both sides are, else texts without regard
  /// to ASCII case. True when a rule matched.
  bool Evaluate(int32_t ACol, int32_t ARow, std::u16string_view AText, bool AIsNumeric, double ANumber,
                TCellFormat& AFormat) const;
  /// The same for a cell's effective value, whose text is made only when a rule needs it.
  bool Evaluate(int32_t ACol, int32_t ARow, const TValueView& AValue, TCellFormat& AFormat) const;
  /// The same by a walk over all rules: the definition of the result.
  bool EvaluatePlain(int32_t ACol, int32_t ARow, std::u16string_view AText, bool AIsNumeric, double ANumber,
                     TCellFormat& AFormat) const;

  /// Both ends of a range that lie at or behind AStart move by ADelta, each on its own; nothing is deleted.
  void ShiftRows(int64_t AStart, int64_t ADelta) { Shift(saRows, AStart, ADelta); }
  void ShiftColumns(int64_t AStart, int64_t ADelta) { Shift(saColumns, AStart, ADelta); }
  /// ADest is the block's new first line.
  void MoveRows(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saRows, AStart, ACount, ADest); }
  void MoveColumns(int64_t AStart, int64_t ACount, int64_t ADest) { Move(saColumns, AStart, ACount, ADest); }

 private:
  struct TCompiled;

  void Shift(TShiftAxis AAxis, int64_t AStart, int64_t ADelta);
  void Move(TShiftAxis AAxis, int64_t AStart, int64_t ACount, int64_t ADest);
  const TCompiled& Compiled() const;
  template <class TSubject>
  bool Apply(int32_t ACol, int32_t ARow, TSubject& ASubject, TCellFormat& AFormat) const;

  std::vector<TConditionalFormatRule> FRules;
  /// Operands read under one locale and the rules by place; null until the next question after a change.
  mutable std::unique_ptr<TCompiled> FCompiled;
};

}  // namespace tessarine
