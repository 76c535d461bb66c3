#pragma once

#include <tessarine/formula/library/detail/ArgReading.h>

/// Functions whose computing parts stand in files of their own; the table is in Web.cpp.
namespace tessarine::detail {

TFormulaArg CallImportHtml(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallImportData(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallImportFeed(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallStockHistory(TFormulaArgs AArgs, const TFormulaContext& AContext);
TFormulaArg CallGoogleFinance(TFormulaArgs AArgs, const TFormulaContext& AContext);

}  // namespace tessarine::detail
