#pragma once

/// Everything that a host needs, in one inclusion. Programs that care for their compile time include the headers of
/// what they use instead, and Fwd.h where a name is enough.

#include <tessarine/Export.h>
#include <tessarine/Fwd.h>
#include <tessarine/Version.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/format/Theme.h>
#include <tessarine/core/lists/Hyperlinks.h>
#include <tessarine/core/lists/MergedCells.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/lists/SavedView.h>
#include <tessarine/core/lists/SheetTables.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Cell.h>
#include <tessarine/core/sheet/Providers.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/core/values/Text.h>
#include <tessarine/formula/DependencyGraph.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/formula/FormulaAssist.h>
#include <tessarine/formula/FunctionTable.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/io/xlsx/SharedStrings.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Progress.h>
#include <tessarine/platform/ReadLimits.h>
