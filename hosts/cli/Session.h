#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <hosts/cli/Cli.h>
#include <hosts/cli/ProgressLine.h>
#include <tessarine/core/values/Address.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/platform/Progress.h>

namespace tessarine {
class TFormulaEvaluator;
class TWorkbook;
class TWorksheet;
}  // namespace tessarine

namespace tessarine::cli {

struct TArguments;

void WriteText(IWriteStream& AStream, std::string_view AText);

/// One run of a command: its workbook, its output, its progress. Results wait in a buffer until Flush or until there
/// are enough of them, so that a failing command tells what it had.
class TSession {
 public:
  explicit TSession(TCliStreams& AStreams);
  ~TSession();
  TSession(const TSession&) = delete;
  TSession& operator=(const TSession&) = delete;

  // ---- input
  /// Reads the input of the arguments and computes it unless that was declined. Throws ECli and what means a limit or
  /// a stop.
  void Load(const TArguments& AArguments);
  void Recalculate();

  TWorkbook& Workbook() { return *FWorkbook; }
  TFormulaEvaluator& Evaluator() { return *FEvaluator; }
  /// "XLSX", "CSV"; empty without a file.
  const std::string& FormatName() const { return FFormatName; }

  /// The sheet of the arguments, or the active one. Throws ECli when there is no such sheet.
  int32_t SheetIndex(const TArguments& AArguments) const;

  // ---- output
  const TTerminal& Terminal() const { return FStreams.Terminal; }
  /// The buffer of results; Drain writes it once it is large.
  std::string& Out() { return FOut; }
  void Drain();
  void Flush();
  IWriteStream& OutputStream() { return FStreams.Out; }

  const TWorkControl& Control() const { return FControl; }
  /// All of a file, "-" being standard input. Throws ECli.
  std::string ReadFile(const std::string& AFileName);

 private:
  void LoadFrom(const std::string& AFileName, TTessarineFileFormat AFormat, char16_t ADecimalSeparator);

  TCliStreams& FStreams;
  TProgressLine FProgress;
  TWorkControl FControl;
  std::unique_ptr<TWorkbook> FWorkbook;
  std::unique_ptr<TFormulaEvaluator> FEvaluator;
  std::string FFormatName;
  std::string FOut;
};

/// The format that a file's name stands for; other text files (.txt, .tsv, .tab) are read as CSV is.
TTessarineFileFormat FormatOfFile(const std::string& AFileName);

/// A range such as "B2:D10", "C3", "B:D" (whole columns) or "2:5" (whole rows); throws ECli for what is none.
TCellRange ParseRange(const std::string& AText);

/// A cell such as "B2"; throws ECli for what is none.
TCellAddress ParseCell(const std::string& AText);

}  // namespace tessarine::cli
