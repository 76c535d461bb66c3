#pragma once

#include <cstdint>
#include <string>

namespace tessarine::cli {

struct TArguments;
class TSession;
struct TFileFormatRow;

/// Where a command saves its workbook and how; found and tested before any work is done.
struct TOutputPlan {
  const TFileFormatRow* Format = nullptr;  // never null in a plan that was made
  std::string FileName;                    // "-" for standard output
  char16_t Delimiter = u',';
  bool Utf8Bom = true;
  bool DefuseFormulas = false;
};

/// Throws ECli for a format that cannot be written and for options that mean nothing.
TOutputPlan PlanOutput(const TArguments& AArguments);

/// Saves the session's workbook: all of it, or the sheet of that index where the format holds only one. A file is
/// replaced as a whole. Throws ECli.
void SaveWorkbook(const TOutputPlan& APlan, TSession& ASession, int32_t ASheetIndex);

/// Prints what reading and writing made of the workbook among the messages, if the arguments ask for it: a table, or
/// one JSON object a line.
void PrintReport(const TArguments& AArguments, TSession& ASession);

/// The end of every command that changes a workbook: computes it unless that was declined, saves it, and reports.
void FinishChange(const TArguments& AArguments, const TOutputPlan& APlan, TSession& ASession, int32_t ASheetIndex);

}  // namespace tessarine::cli
