#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tessarine::cli {

enum class TCommand {
  cmInfo,
  cmShow,
  cmCells,
  cmEval,
  cmRecalc,
  cmConvert,
  cmEdit,
  cmSort,
  cmFilter,
  cmPivot,
  cmDiff,
  cmFunctions,
};
using enum TCommand;

/// What the user asked for. Fields that the command does not know stay as they are.
struct TArguments {
  TCommand Command = cmInfo;
  std::string Input;    // a file's name, "-" for standard input; empty: none
  std::string From;     // format of the input when its name does not tell
  std::string Decimal;  // decimal separator of a text input; empty: a point
  std::string Output;   // all that save a workbook
  std::string To;       // format of the output when its name does not tell
  std::string Sheet;    // name or number
  std::string Range;    // show, cells, sort, filter
  std::string At;       // eval: the cell that the formulas stand for
  std::string Batch;    // eval: a file of questions, a JSON object a line
  std::string Delimiter = ",";
  bool NoBom = false;
  bool Defuse = false;  // CSV: text that reads as a formula gets an apostrophe
  bool Report = false;  // tell what reading and writing changed
  bool NoRecalc = false;
  bool AllowWeb = false;  // formulas may fetch from the network
  bool Json = false;
  bool Formulas = false;             // show
  bool Markdown = false;             // functions
  std::vector<std::string> Formula;  // eval; may begin with the input's name
  std::string Script;                // edit: a file of edits, a JSON object a line
  std::vector<std::string> By;       // sort: columns, "C" or "C:desc"
  bool Header = false;               // sort: the first row stays
  std::string Column;                // filter
  std::vector<std::string> Values;   // filter: texts that stay; pivot: fields, "Amount" or "Amount:average"
  std::string Contains;              // filter
  bool MatchCase = false;            // filter
  std::string Source;                // pivot, as the next ones
  std::string Dest;
  std::string Name;
  std::string Layout = "compact";
  bool NoTotals = false;
  std::vector<std::string> Rows;
  std::vector<std::string> Columns;
  std::vector<std::string> Filters;  // fields, "Region" or "Region=North"
  std::string Other;                 // diff: the second file
  int64_t Max = 0;                   // diff: the most differences that are told; 0: all
};

/// The arguments, or a text and an exit code to end with at once.
struct TParsedArguments {
  bool IsReady = false;
  TArguments Arguments;
  int ExitCode = 0;
  std::string Output;  // help and version
  std::string Error;   // what is wrong with the usage
};

TParsedArguments ParseArguments(const std::vector<std::string>& AArgs);

}  // namespace tessarine::cli
