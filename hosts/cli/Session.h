#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include <hosts/cli/Cli.h>
#include <hosts/cli/FileFormats.h>
#include <hosts/cli/ProgressLine.h>
#include <tessarine/core/values/CellValue.h>
#include <tessarine/io/FileReport.h>
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
  /// Whether some formula has no result, as in a file that no program has computed.
  bool LacksResults() const;

  TWorkbook& Workbook() { return *FWorkbook; }
  TFormulaEvaluator& Evaluator() { return *FEvaluator; }
  /// "XLSX", "CSV"; empty without a file.
  const std::string& FormatName() const { return FFormatName; }

  /// The sheet of the arguments, or the active one. Throws ECli when there is no such sheet.
  int32_t SheetIndex(const TArguments& AArguments) const;
  /// The sheet of a name or of a number from 1. Throws ECli when there is none.
  int32_t SheetIndexOf(const std::string& ASheet) const;

  /// What reading and writing made of the workbook; filled in any case.
  TFileReport& Report() { return FReport; }

  // ---- output
  const TTerminal& Terminal() const { return FStreams.Terminal; }
  /// The buffer of results; Drain writes it once it is large.
  std::string& Out() { return FOut; }
  void Drain();
  void Flush();
  IWriteStream& OutputStream() { return FStreams.Out; }
  /// Writes a text for the person, apart from the results.
  void Tell(std::string_view AText);
  TCliStreams& Streams() { return FStreams; }

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
  TFileReport FReport;
  std::string FOut;
};

}  // namespace tessarine::cli
