#pragma once

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <vector>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>

namespace tessarine::fuzz {

inline void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

/// True when the package loaded.
inline bool LoadXlsx(TWorkbook& ABook, const std::vector<std::byte>& ABytes) {
  TXlsxReadOptions options;
  options.Limits = {.MaxEntries = 1000,
                    .MaxPartBytes = 1 << 20,
                    .MaxTotalBytes = 8 << 20,
                    .RatioFreeBytes = 1 << 16,
                    .MaxXmlDepth = 40,
                    .MaxXmlTreeNodes = 20'000};
  TMemoryReadStream stream(ABytes);
  try {
    TXlsxReader::LoadFromStream(ABook, stream, options);
    return true;
  } catch (const ETessarineError&) {
    return false;
  }
}

/// Whatever was loaded, or half loaded, can be read like any sheet.
inline void CheckSheet(const TWorkbook& ABook, const TWorksheet& ASheet) {
  size_t count = 0;
  ASheet.Store().ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    Require(ACol <= ASheet.UsedMaxCol() && ARow <= ASheet.UsedMaxRow());
    if (++count > 200) return;
    const TCell cell = ASheet.GetCellAt(ACol, ARow);
    Require(!cell.IsEmpty());
    if (cell.Value.Kind == cvkFormula) Require(!cell.Value.Text.IsEmpty() && cell.Value.Text.View().front() == u'=');
    static_cast<void>(ASheet.GetDisplayText({ACol, ARow}, &ABook.StyleSheet()));
    static_cast<void>(ASheet.ResolveFormat({ACol, ARow}, &ABook.StyleSheet()));
  });
  ASheet.Spills().ForEachSpill([&](const TSpillRange& ASpill) {
    Require(ASpill.Values.size() == static_cast<size_t>(ASpill.RowCount() * ASpill.ColCount()));
    Require(ASheet.GetCellAt(ASpill.AnchorCol, ASpill.AnchorRow).Value.Kind == cvkFormula);
  });
  static_cast<void>(ASheet.FindHyperlink(1, 1));
  static_cast<void>(ASheet.GetMergeSpan(1, 1));
}

}  // namespace tessarine::fuzz
