#pragma once

#include <string>
#include <utility>

#include <tessarine/api/AuthoringSheet.h>
#include <tessarine/api/AuthoringWorkbook.h>
#include <tessarine/platform/Errors.h>

#include "../support/SheetFixture.h"

namespace tessarine::testing {

/// A fixture whose first sheet is written through the facade.
class TApiFixture : public TSheetFixture {
 public:
  using TSheetFixture::TSheetFixture;

  TAuthoringWorkbook Book() { return TAuthoringWorkbook(Workbook); }
  TAuthoringSheet Api(int32_t AIndex = 0) { return Book().UseSheet(AIndex); }
  TSheetCellRef Cell(const char* AA1) { return TSheetCellRef(Sheet(), AA1); }
  TSheetRangeRef Cells(const char* AA1) { return TSheetRangeRef(Sheet(), AA1); }
};

/// "argument: TEXT", "state: TEXT", "file: TEXT", "limit: TEXT", or "nothing".
template <class TWork>
std::string FailureOf(TWork&& AWork) {
  try {
    std::forward<TWork>(AWork)();
  } catch (const EArgument& error) {
    return std::string("argument: ") + error.what();
  } catch (const EState& error) {
    return std::string("state: ") + error.what();
  } catch (const EFileAccess& error) {
    return std::string("file: ") + error.what();
  } catch (const ELimit& error) {
    return std::string("limit: ") + error.what();
  }
  return "nothing";
}

}  // namespace tessarine::testing
