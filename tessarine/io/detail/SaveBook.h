#pragma once

#include <string>

#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/platform/Files.h>

namespace tessarine::detail {

/// SaveToFileViaTemp for a writer that clears the modified flag when its stream is complete: a workbook whose file does
/// not come to stand all the same, because the medium is full or the old file cannot be replaced, stays modified.
template <class TWrite>
void SaveBookViaTemp(TWorkbook& AWorkbook, const std::string& AFileName, TWrite&& AWrite) {
  const bool wasModified = AWorkbook.IsModified();
  try {
    SaveToFileViaTemp(AFileName, AWrite);
  } catch (...) {
    if (wasModified && !AWorkbook.IsModified()) AWorkbook.MarkModified();
    throw;
  }
}

}  // namespace tessarine::detail
