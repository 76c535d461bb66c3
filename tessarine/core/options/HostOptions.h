#pragma once

#include <cstdint>
#include <functional>
#include <type_traits>
#include <utility>

namespace tessarine {

enum class TTessarineEnterMoves : uint8_t { emDown, emRight, emNone };
using enum TTessarineEnterMoves;

enum class TTessarineTabKey : uint8_t { tkNextCell, tkNextControl };
using enum TTessarineTabKey;

/// Settings of a host with a notification: a record of plain fields that is read through "->" and changed by Set.
template <class TSettings>
class THostOptions {
 public:
  /// AOwner is kept for the host, it is never looked at.
  explicit THostOptions(void* AOwner = nullptr) : FOwner(AOwner) {}

  void* Owner() const { return FOwner; }
  void SetOnChanged(std::function<void(THostOptions& ASender)> AHandler) { FOnChanged = std::move(AHandler); }

  const TSettings* operator->() const { return &FSettings; }
  const TSettings& Settings() const { return FSettings; }

  /// Changes one field: Set(&TBehaviorSettings::AllowEdit, false). Tells so when the value is another one.
  template <class TValue>
  void Set(TValue TSettings::*AField, std::type_identity_t<TValue> AValue) {
    if (FSettings.*AField == AValue) return;
    FSettings.*AField = std::move(AValue);
    if (FOnChanged) FOnChanged(*this);
  }
  /// Changes all fields at once and tells so once.
  void Assign(const TSettings& ASettings) {
    if (FSettings == ASettings) return;
    FSettings = ASettings;
    if (FOnChanged) FOnChanged(*this);
  }
  void AssignTo(THostOptions& ATarget) const { ATarget.Assign(FSettings); }

 private:
  void* FOwner;
  std::function<void(THostOptions&)> FOnChanged;
  TSettings FSettings;
};

/// What users may do in a grid.
struct TBehaviorSettings {
  bool AllowEdit = true;
  bool AllowDelete = true;
  bool AllowInsert = true;
  bool AllowFormat = true;
  bool AllowCopy = true;
  bool AllowPaste = true;
  bool AllowRichTextEdit = true;
  bool AllowDragFill = true;
  bool AllowDragMove = true;
  bool FormulaAutoComplete = true;
  bool AutoCalculate = true;
  bool HistoryEnabled = true;
  int32_t HistoryLimit = 100;  // undo levels
  TTessarineEnterMoves EnterMoves = emDown;
  TTessarineTabKey TabKey = tkNextCell;

  friend bool operator==(const TBehaviorSettings&, const TBehaviorSettings&) = default;
};
using TTessarineBehaviorOptions = THostOptions<TBehaviorSettings>;

/// What a grid shows. Colours are 0x00BBGGRR, sizes pixels.
struct TViewSettings {
  bool GridLines = true;
  bool Headers = true;
  bool ShowFormulas = false;
  bool ShowZeros = true;
  bool R1C1 = false;
  bool HorzScrollBar = true;
  bool VertScrollBar = true;
  bool CapsuleScrollBar = true;
  uint32_t GridLineColor = 0xD0D0D0;
  bool AutoRowHeight = true;
  uint32_t FreezeLineColor = 0x808080;
  bool SmoothDrawing = true;
  bool LiveRowColResize = true;
  int32_t RowHeaderWidth = 40;
  bool AutoRowHeaderWidth = true;
  int32_t ColHeaderHeight = 22;

  friend bool operator==(const TViewSettings&, const TViewSettings&) = default;
};
using TTessarineViewOptions = THostOptions<TViewSettings>;

/// What protection of a workbook and its sheets leaves open.
struct TProtectionSettings {
  bool ProtectStructure = false;
  bool AllowSelectLocked = true;
  bool AllowSelectUnlocked = true;
  bool AllowFormatCells = false;

  friend bool operator==(const TProtectionSettings&, const TProtectionSettings&) = default;
};
using TTessarineProtectionOptions = THostOptions<TProtectionSettings>;

struct TTabBarSettings {
  bool Visible = true;
  bool ShowNewButton = true;
  bool ShowHiddenSheets = false;

  friend bool operator==(const TTabBarSettings&, const TTabBarSettings&) = default;
};
using TTessarineTabBarOptions = THostOptions<TTabBarSettings>;

}  // namespace tessarine
