#pragma once

#include <string>
#include <vector>

namespace tessarine::cli {

enum class TCommand { cmInfo, cmShow, cmCells, cmEval, cmRecalc, cmConvert, cmFunctions };
using enum TCommand;

/// What the user asked for. Fields that the command does not know stay as they are.
struct TArguments {
  TCommand Command = cmInfo;
  std::string Input;    // a file's name, "-" for standard input; empty: none
  std::string From;     // format of the input when its name does not tell
  std::string Decimal;  // decimal separator of a text input; empty: a point
  std::string Output;   // recalc, convert
  std::string To;       // format of the output when its name does not tell
  std::string Sheet;    // name or number
  std::string Range;    // show, cells
  std::string At;       // eval: the cell that the formulas stand for
  std::string Batch;    // eval: a file of questions, a JSON object a line
  std::string Delimiter = ",";
  bool NoBom = false;
  bool NoRecalc = false;
  bool AllowWeb = false;  // formulas may fetch from the network
  bool Json = false;
  bool Formulas = false;             // show
  bool Markdown = false;             // functions
  std::vector<std::string> Formula;  // eval; may begin with the input's name
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
