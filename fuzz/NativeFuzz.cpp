#include <cstdint>
#include <cstdlib>
#include <span>
#include <string>
#include <string_view>

#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/AutoFilter.h>
#include <tessarine/core/lists/ConditionalFormats.h>
#include <tessarine/core/lists/DataValidations.h>
#include <tessarine/core/lists/Drawings.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/PageSetup.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/io/native/Native.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>

using namespace tessarine;

namespace {

void Require(bool AHolds) {
  if (!AHolds) std::abort();
}

bool Load(TWorkbook& ABook, std::string_view AText) {
  TTsrReadOptions options;
  options.Limits.MaxEntries = 50;
  options.Limits.MaxTotalBytes = 1 << 20;
  TMemoryReadStream stream(std::as_bytes(std::span(AText)));
  try {
    TTsrIO::LoadFromStream(ABook, stream, options);
    return true;
  } catch (const ETessarineError&) {
    return false;
  }
}

std::string Saved(const TWorkbook& ABook) {
  TMemoryWriteStream stream;
  TTsrIO::SaveToStream(ABook, stream);
  return {reinterpret_cast<const char*>(stream.Bytes().data()), stream.Bytes().size()};
}

/// Whatever was loaded, or half loaded, can be asked like any sheet.
void UseSheet(const TWorkbook& ABook, TWorksheet& ASheet) {
  size_t count = 0;
  ASheet.Store().ForEachByRow({1, 1, kMaxCol, kMaxRow}, [&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) {
    Require(ACol <= ASheet.UsedMaxCol() && ARow <= ASheet.UsedMaxRow());
    if (++count > 100) return;
    Require(!ASheet.GetCellAt(ACol, ARow).IsEmpty());
    static_cast<void>(ASheet.GetDisplayText({ACol, ARow}, &ABook.StyleSheet()));
  });
  static_cast<void>(ASheet.ResolveFormat({2, 2}, &ABook.StyleSheet()));
  static_cast<void>(ASheet.GetMergeSpan(1, 1));
  static_cast<void>(ASheet.FindHyperlink(2, 2));
  static_cast<void>(ASheet.Tables().FindContaining(2, 2));
  static_cast<void>(ASheet.Validations().FindRuleAt(2, 2));
  static_cast<void>(ASheet.Sizing().GetCumulativeRowHeightBefore(100, 96));
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  TWorkbook book;
  const bool isLoaded = Load(book, {reinterpret_cast<const char*>(AData), ASize});
  for (int32_t index = 0; index < book.SheetCount(); ++index) UseSheet(book, *book.GetSheet(index));
  if (!isLoaded) return 0;
  const std::string text = Saved(book);
  if (text.size() > size_t{1} << 19) return 0;
  TWorkbook again;
  Require(Load(again, text));
  Require(again.SheetCount() == book.SheetCount());
  for (int32_t index = 0; index < book.SheetCount(); ++index) {
    Require(again.GetSheet(index)->Drawings().Count() == book.GetSheet(index)->Drawings().Count());
    Require(again.GetSheet(index)->Merges().Count() == book.GetSheet(index)->Merges().Count());
  }
  return 0;
}
