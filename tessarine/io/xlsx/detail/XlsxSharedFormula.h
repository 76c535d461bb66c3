#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include <tessarine/core/values/Address.h>

namespace tessarine::detail {

class TFormulaPool;
class TFormulaTemplate;

/// A formula that several cells of a sheet part share: its text in the first cell, from which the others derive theirs
/// as OffsetSharedFormula tells.
class TXlsxSharedFormula {
 public:
  TXlsxSharedFormula() = default;
  TXlsxSharedFormula(std::u16string_view AText, TCellAddress AAddress) : FText(AText), FAddress(AAddress) {}

  /// Replaces AOut by the text in the cell AAddress. APool lends templates and outlives the object. True when a
  /// template gave the text, which then costs little.
  bool TextAt(TCellAddress AAddress, TFormulaPool& APool, std::u16string& AOut);

  /// The definition of TextAt.
  void TextAtPlain(TCellAddress AAddress, std::u16string& AOut) const;

  /// The length of the first cell's text in UTF-16 units.
  size_t Length() const { return FText.size(); }

 private:
  enum class TState : uint8_t { tsUnused, tsUsed, tsPlain, tsTemplate };

  bool TryTextAt(TCellAddress AAddress, std::u16string& AOut) const;
  void Prepare(TCellAddress AAddress, std::u16string_view AText, TFormulaPool& APool);
  bool BoundArea();
  bool AgreesAt(TCellAddress AAddress) const;

  std::u16string FText;
  TCellAddress FAddress;
  TState FState = TState::tsUnused;
  const TFormulaTemplate* FTemplate = nullptr;  // of the texts in FArea, where no reference leaves the sheet
  TCellRange FArea;
};

}  // namespace tessarine::detail
