#include <hosts/cli/Arguments.h>

#include <algorithm>
#include <array>
#include <utility>

#include <CLI/App.hpp>
#include <CLI/Config.hpp>
#include <CLI/Formatter.hpp>

#include <hosts/cli/Cli.h>
#include <hosts/cli/EditScript.h>
#include <hosts/cli/FileFormats.h>
#include <tessarine/Version.h>

namespace tessarine::cli {

namespace {

constexpr const char* kExamples = R"TEXT(Tessarine opens, computes and converts spreadsheets.

Examples:
  tessarine info budget.xlsx                       what the workbook holds
  tessarine show budget.xlsx --range A1:H20        a sheet as a table
  tessarine cells budget.xlsx --json               every cell, one JSON object a line
  tessarine eval "=SUM(1,2,3)" "=SEQUENCE(3)"      formulas without a workbook
  tessarine eval budget.xlsx "=SUM(B:B)"           formulas on a workbook
  tessarine recalc budget.xlsx -o budget.csv       compute anew and save
  tessarine convert data.xlsx -                    to standard output
  tessarine edit budget.xlsx --script edits.jsonl -o new.xlsx
  tessarine pivot sales.xlsx --source A1:F5000 --rows Region --values Amount:sum -o report.xlsx
  tessarine diff old.xlsx new.xlsx                 what differs between two workbooks
  tessarine functions                              what formulas may call

)TEXT";

struct TCommandText {
  TCommand Command;
  const char* Name;
  const char* Description;
  const char* Examples;
};

constexpr std::array<TCommandText, 12> kCommands = {{
    {cmInfo, "info", "Sheets, used ranges, counts of cells, formulas and errors, and all that lives on the sheets",
     "  tessarine info budget.xlsx\n  tessarine info --json budget.xlsx\n"},
    {cmShow, "show", "A sheet as a table, as its formats show it",
     "  tessarine show budget.xlsx\n  tessarine show budget.xlsx --sheet Costs --range A1:H20\n"
     "  tessarine show budget.xlsx --formulas\n"},
    {cmCells, "cells", "Every cell, a line each, in the order of sheets and rows",
     "  tessarine cells budget.xlsx --json\n  tessarine cells budget.xlsx --sheet 2 --range B2:B100\n"},
    {cmEval, "eval", "The results of formulas",
     "  tessarine eval \"=1+2\"\n  tessarine eval budget.xlsx \"=SUM(Costs!B:B)\" \"=MAX(Costs!B:B)\"\n"
     "  tessarine eval --batch questions.jsonl\n"},
    {cmRecalc, "recalc", "Compute a workbook anew and save the result",
     "  tessarine recalc budget.xlsx -o budget.csv\n  tessarine recalc budget.xlsx --to csv -o -\n"},
    {cmConvert, "convert", "Save a workbook in another format",
     "  tessarine convert budget.xlsx budget.csv\n  tessarine convert data.csv out.csv --delimiter \";\" --no-bom\n"},
    {cmEdit, "edit", "Carry out a script of edits, all of them or none, and save the result",
     "  tessarine edit budget.xlsx --script edits.jsonl -o new.xlsx\n"
     "  echo '{\"op\":\"set\",\"cell\":\"B2\",\"value\":12}' | tessarine edit budget.xlsx --script - -o new.xlsx\n"},
    {cmSort, "sort", "Sort the rows of a range and save the result",
     "  tessarine sort sales.csv --range A1:F5000 --by C --by A:desc --header -o sorted.csv\n"},
    {cmFilter, "filter", "Set a filter, hide the rows that it rejects, and save the result",
     "  tessarine filter sales.xlsx --range A1:F5000 --column B --values North --values South -o north.xlsx\n"
     "  tessarine filter sales.xlsx --range A1:F5000 --column D --contains apple -o apples.xlsx\n"},
    {cmPivot, "pivot", "Add a pivot table and save the result",
     "  tessarine pivot sales.csv --source A1:F5000 --rows Region --columns Year --values Amount:sum -o report.xlsx\n"
     "  tessarine pivot sales.xlsx --source Data!A:F --rows Region --rows City --values Amount:average "
     "--values Amount:max\n      --filters Year=2024 --dest Report!B3 -o report.xlsx\n"},
    {cmDiff, "diff", "What differs between two workbooks, a line each",
     "  tessarine diff old.xlsx new.xlsx\n  tessarine diff old.xlsx new.xlsx --json --max 100\n"},
    {cmFunctions, "functions", "The functions that formulas may call",
     "  tessarine functions\n  tessarine functions --json\n  tessarine functions --markdown > functions.md\n"},
}};

constexpr const char* kFooter = R"(
Exit codes: 0 done, 1 a negative answer, 2 wrong usage, 3 the input cannot be read, 4 a limit was hit,
5 the output cannot be written, 130 interrupted. "-" stands for standard input and output.
)";

constexpr const char* kInputText = "Workbook (.tsr, .xlsx, .ods, .csv, .tsv, .txt), or - for standard input";

void AddInput(CLI::App& AApp, TArguments& AArguments, bool AIsRequired) {
  auto* option = AApp.add_option("FILE", AArguments.Input, kInputText);
  if (AIsRequired) option->required();
}

void AddFrom(CLI::App& AApp, TArguments& AArguments) {
  AApp.add_option("--from", AArguments.From, "Format of the input when its name does not tell: " + FormatNames(","));
  AApp.add_option("--decimal", AArguments.Decimal, "Decimal separator of the numbers in a CSV input (.)");
}

void AddSheet(CLI::App& AApp, TArguments& AArguments) {
  AApp.add_option("-s,--sheet", AArguments.Sheet, "Name of a sheet, or its number from 1");
}

CLI::Option* AddRange(CLI::App& AApp, TArguments& AArguments) {
  return AApp.add_option("-r,--range", AArguments.Range, "Cells, for example A1:H20, B:D or 2:5");
}

void AddNoRecalc(CLI::App& AApp, TArguments& AArguments) {
  AApp.add_flag("--no-recalc", AArguments.NoRecalc, "Take the results that the file holds");
}

void AddAllowWeb(CLI::App& AApp, TArguments& AArguments) {
  AApp.add_flag("--allow-web", AArguments.AllowWeb, "Let formulas such as WEBSERVICE fetch from the network");
}

void AddOutputOptions(CLI::App& AApp, TArguments& AArguments) {
  AddFrom(AApp, AArguments);
  AApp.add_option("--to", AArguments.To, "Format of the output when its name does not tell: " + FormatNames(","));
  AddSheet(AApp, AArguments);
  AApp.add_option("-d,--delimiter", AArguments.Delimiter, "Between the fields of a CSV output; \"tab\" is one, too");
  AApp.add_flag("--no-bom", AArguments.NoBom, "No byte-order mark at the start of a CSV output");
  AApp.add_flag("--defuse", AArguments.Defuse,
                "Put an apostrophe before text of a CSV output that a spreadsheet would take for a formula");
  AApp.add_flag("--report", AArguments.Report, "Tell what was rewritten or dropped by reading and writing");
  AApp.add_flag("--json", AArguments.Json, "The report as JSON, an object a line");
  AddAllowWeb(AApp, AArguments);
}

void AddOutput(CLI::App& AApp, TArguments& AArguments) {
  AApp.add_option("-o,--output", AArguments.Output, "File to write, or - for standard output")->required();
  AddOutputOptions(AApp, AArguments);
}

/// An option that may be given several times, with one value each time.
CLI::Option* AddList(CLI::App& AApp, const char* AName, std::vector<std::string>& AList, const char* AText) {
  return AApp.add_option(AName, AList, AText)->allow_extra_args(false);
}

void AddPivotOptions(CLI::App& AApp, TArguments& AArguments) {
  AApp.add_option("--source", AArguments.Source, "Records with their headers: A1:F5000, Sales!A:F, or a table's name")
      ->required();
  AddList(AApp, "--rows", AArguments.Rows, "Field whose items make the rows; may be repeated, as the next three");
  AddList(AApp, "--columns", AArguments.Columns, "Field whose items make the columns");
  AddList(AApp, "--values", AArguments.Values, "Field to aggregate, as FIELD or FIELD:AGGREGATE (sum, count, ...)")
      ->required();
  AddList(AApp, "--filters", AArguments.Filters, "Field to filter by, as FIELD, or FIELD=ITEM for an item that stays");
  AApp.add_option("--dest", AArguments.Dest,
                  "Top left cell: B3, or Report!B3, which may be a new sheet; a new sheet without it");
  AApp.add_option("--name", AArguments.Name, "Name of the pivot table");
  AApp.add_option("--layout", AArguments.Layout, "compact, outline or tabular (compact)");
  AApp.add_flag("--no-totals", AArguments.NoTotals, "No grand totals");
}

void AddOptions(CLI::App& AApp, TCommand ACommand, TArguments& AArguments) {
  switch (ACommand) {
    case cmInfo:
      AddInput(AApp, AArguments, true);
      AApp.add_flag("--json", AArguments.Json, "One JSON object");
      AddNoRecalc(AApp, AArguments);
      AddFrom(AApp, AArguments);
      return;
    case cmShow:
      AddInput(AApp, AArguments, true);
      AddSheet(AApp, AArguments);
      AddRange(AApp, AArguments);
      AApp.add_flag("--formulas", AArguments.Formulas, "Formulas instead of their results");
      AddNoRecalc(AApp, AArguments);
      AddAllowWeb(AApp, AArguments);
      AddFrom(AApp, AArguments);
      return;
    case cmCells:
      AddInput(AApp, AArguments, true);
      AApp.add_flag("--json", AArguments.Json, "One JSON object a line");
      AddSheet(AApp, AArguments);
      AddRange(AApp, AArguments);
      AddNoRecalc(AApp, AArguments);
      AddAllowWeb(AApp, AArguments);
      AddFrom(AApp, AArguments);
      return;
    case cmEval:
      AApp.add_option("FORMULA", AArguments.Formula, "A workbook's file first, if there is one, then formulas");
      AddSheet(AApp, AArguments);
      AApp.add_option("--at", AArguments.At, "The cell in which the formulas would stand (A1)");
      AApp.add_option("--batch", AArguments.Batch,
                      "A file of questions, a JSON object a line: {\"f\": \"=A1*2\", \"cells\": {\"A1\": 21}}");
      AddNoRecalc(AApp, AArguments);
      AddAllowWeb(AApp, AArguments);
      AddFrom(AApp, AArguments);
      return;
    case cmRecalc:
      AddInput(AApp, AArguments, true);
      AddOutput(AApp, AArguments);
      return;
    case cmConvert:
      AApp.add_option("IN", AArguments.Input, kInputText)->required();
      AApp.add_option("OUT", AArguments.Output, "File to write, or - for standard output")->required();
      AddOutputOptions(AApp, AArguments);
      AddNoRecalc(AApp, AArguments);
      return;
    case cmEdit:
      AddInput(AApp, AArguments, true);
      AApp.add_option("--script", AArguments.Script, "File of edits, a JSON object a line, or - for standard input")
          ->required();
      AddOutput(AApp, AArguments);
      AddNoRecalc(AApp, AArguments);
      AApp.footer(EditScriptHelp());
      return;
    case cmSort:
      AddInput(AApp, AArguments, true);
      AddRange(AApp, AArguments)->required();
      AddList(AApp, "--by", AArguments.By,
              "Column to sort by, as C or C:desc; may be repeated, the first one counts most")
          ->required();
      AApp.add_flag("--header", AArguments.Header, "The first row of the range is a header and stays");
      AddOutput(AApp, AArguments);
      AddNoRecalc(AApp, AArguments);
      return;
    case cmFilter:
      AddInput(AApp, AArguments, true);
      AddRange(AApp, AArguments)->required();
      AApp.add_option("--column", AArguments.Column, "Column to filter by: its letters")->required();
      AddList(AApp, "--values", AArguments.Values, "Text that stays, as the cells show it; may be repeated");
      AApp.add_option("--contains", AArguments.Contains, "Piece of text; rows that show it stay")->excludes("--values");
      AApp.add_flag("--match-case", AArguments.MatchCase, "--contains minds upper and lower case");
      AddOutput(AApp, AArguments);
      AddNoRecalc(AApp, AArguments);
      return;
    case cmPivot:
      AddInput(AApp, AArguments, true);
      AddPivotOptions(AApp, AArguments);
      AddOutput(AApp, AArguments);
      AddNoRecalc(AApp, AArguments);
      return;
    case cmDiff:
      AApp.add_option("A", AArguments.Input, kInputText)->required();
      AApp.add_option("B", AArguments.Other, "Workbook to compare it with")->required();
      AApp.add_flag("--json", AArguments.Json, "One JSON object a line");
      AApp.add_option("--max", AArguments.Max, "The most differences to tell, 0 for all; the summary counts all");
      AddNoRecalc(AApp, AArguments);
      AddAllowWeb(AApp, AArguments);
      AddFrom(AApp, AArguments);
      return;
    case cmFunctions:
      AApp.add_flag("--markdown", AArguments.Markdown, "A document of all functions by family")
          ->excludes(AApp.add_flag("--json", AArguments.Json, "One JSON object a line"));
      return;
  }
}

/// The argument parser divides a word in brackets where it expects several. A blank in front, which no formula minds,
/// makes it a word like any other.
std::vector<std::string> WithoutLists(std::vector<std::string> AArgs) {
  for (std::string& arg : AArgs) {
    if (arg.starts_with('[') && arg.ends_with(']')) arg.insert(0, 1, ' ');
  }
  return AArgs;
}

std::string HelpText(const CLI::App& AApp, const CLI::App* ASub) {
  if (!ASub) return kExamples + AApp.help() + kFooter;
  const auto* const text = std::find_if(kCommands.begin(), kCommands.end(), [&](const TCommandText& ACommand) {
    return ACommand.Name == ASub->get_name();
  });
  return std::string("Examples:\n") + text->Examples + "\n" + ASub->help("tessarine");
}

}  // namespace

TParsedArguments ParseArguments(const std::vector<std::string>& AArgs) {
  TParsedArguments parsed;
  CLI::App app("", "tessarine");
  bool wantsVersion = false;
  app.add_flag("--version", wantsVersion, "Print the version");
  app.require_subcommand(0, 1);
  std::vector<CLI::App*> subs;
  for (const TCommandText& text : kCommands) {
    CLI::App* sub = app.add_subcommand(text.Name, text.Description);
    AddOptions(*sub, text.Command, parsed.Arguments);
    subs.push_back(sub);
  }
  const auto chosen = [&]() -> CLI::App* {
    const auto found = std::find_if(subs.begin(), subs.end(), [](const CLI::App* ASub) { return ASub->parsed(); });
    return found == subs.end() ? nullptr : *found;
  };
  try {
    std::vector<std::string> words = AArgs;
    if (!AArgs.empty() && AArgs.front() == "eval") words = WithoutLists(std::move(words));
    std::reverse(words.begin(), words.end());  // the parser takes them from the back
    app.parse(std::move(words));
  } catch (const CLI::CallForHelp&) {
    parsed.Output = HelpText(app, chosen());
    return parsed;
  } catch (const CLI::ParseError& error) {
    const CLI::App* sub = chosen();
    parsed.ExitCode = ecUsage;
    parsed.Error = std::string(error.what()) + "\nSee: tessarine " + (sub ? sub->get_name() + " " : "") + "--help";
    return parsed;
  }
  if (wantsVersion) {
    parsed.Output = "tessarine " + std::string(Version()) + "\n";
    return parsed;
  }
  const CLI::App* sub = chosen();
  if (!sub) {
    parsed.ExitCode = ecUsage;
    parsed.Error = "say what to do, for example: tessarine show budget.xlsx\nSee: tessarine --help";
    return parsed;
  }
  parsed.Arguments.Command =
      kCommands[static_cast<size_t>(std::find(subs.begin(), subs.end(), sub) - subs.begin())].Command;
  parsed.IsReady = true;
  return parsed;
}

}  // namespace tessarine::cli
