#pragma once

#include <cstdint>
#include <vector>

#include <tessarine/Export.h>
#include <tessarine/core/values/Text.h>

namespace tessarine {

class TWorkbook;

/// A host's view of the defined names of a workbook, which may be missing: then there are none, and nothing is stored.
/// Names count trimmed, without "$" and without regard to ASCII case.
class TESSARINE_API TTessarineNamedRanges {
 public:
  /// The workbook outlives this view or is taken away by SetWorkbook(nullptr).
  explicit TTessarineNamedRanges(TWorkbook* AWorkbook = nullptr) : FWorkbook(AWorkbook) {}

  TWorkbook* Workbook() const { return FWorkbook; }
  void SetWorkbook(TWorkbook* AWorkbook) { FWorkbook = AWorkbook; }

  void AddOrSet(TTextArg AName, TTextArg AFormula);
  void Remove(TTextArg AName);
  bool Contains(TTextArg AName) const;
  /// The empty text for a name that does not exist.
  TText GetFormula(TTextArg AName) const;
  int32_t Count() const;
  void Clear();
  /// All names, sorted.
  std::vector<TText> Names() const;

 private:
  TWorkbook* FWorkbook;
};

}  // namespace tessarine
