#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/reference/detail/FormulaTemplate.h>
#include <tessarine/core/sheet/detail/LineMap.h>

namespace tessarine::detail {

/// Decides what becomes of a formula when cells move. A template keeps distances, so a formula that moves without what
/// it refers to needs another one.
class IFormulaMover {
 public:
  virtual ~IFormulaMover() = default;

  /// The template of the formula that stood at (ACol, ARow) and stands at (ANewCol, ANewRow): ATemplate itself, or
  /// another one with a reference taken for the caller.
  virtual TFormulaTemplate* Moved(TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow, int32_t ANewCol,
                                  int32_t ANewRow) = 0;
};

/// Rewrites formulas after an edit of lines as TLineEdit::Rewritten does it text by text, or keeps their texts.
///
/// A template whose references all are slots, and whose text the rewriting leaves as it is where no reference moves,
/// is looked at once: all its cells whose references lie in the same regions of the edit share the new template.
class TFormulaMover final : public IFormulaMover {
 public:
  /// The formulas of a sheet whose cells move along AAxis keep their texts.
  TFormulaMover(TFormulaPool& APool, TShiftAxis AAxis);
  /// They follow an edit of the sheet ASheetName; AOnSheet: references without a sheet mean it.
  TFormulaMover(TFormulaPool& APool, const TLineEdit& AEdit, std::u16string_view ASheetName, bool AOnSheet);
  ~TFormulaMover() override;
  TFormulaMover(const TFormulaMover&) = delete;
  TFormulaMover& operator=(const TFormulaMover&) = delete;

  TFormulaTemplate* Moved(TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow, int32_t ANewCol,
                          int32_t ANewRow) override;

  /// The same from the text, always.
  TFormulaTemplate* MovedPlain(TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow, int32_t ANewCol,
                               int32_t ANewRow);

 private:
  struct TPlannedSlot {
    int32_t Index = 0;  // distance from the formula's line, or the line itself
    bool IsAbsolute = false;
    bool IsAffected = false;
  };
  struct TOutcome {
    uint64_t Regions = 0;
    int64_t Distance = 0;
    TFormulaTemplate* Template = nullptr;  // one reference held
  };
  struct TPlan {
    TFormulaTemplate* Template = nullptr;  // one reference held by plans in the dictionary
    bool ByText = false;
    std::vector<TPlannedSlot> Slots;
    std::vector<TOutcome> Outcomes;  // the last one used first
    int32_t KeptFirst = 1;  // formulas of the lines KeptFirst to KeptLast that go KeptDistance keep the template
    int32_t KeptLast = 0;
    int32_t KeptDistance = 0;
  };
  struct TReading;

  void MakePlan(TPlan& APlan, TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow) const;
  TPlan& PlanOf(TFormulaTemplate* ATemplate, int32_t ACol, int32_t ARow);
  TReading Read(const TPlan& APlan, int32_t ALine, int32_t ANewLine) const;

  TFormulaPool& FPool;
  bool FKeepsText;
  TLineEdit FEdit;
  std::u16string FSheetName;
  std::u16string FPrefix;  // the sheet's name as it stands before a reference, "!" included
  bool FOnSheet;
  boost::unordered_flat_map<const TFormulaTemplate*, std::unique_ptr<TPlan>> FPlans;
  TPlan* FLast = nullptr;
  TPlan FSingle;  // of a template that one cell has
};

}  // namespace tessarine::detail
