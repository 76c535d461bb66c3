#include <algorithm>
#include <optional>
#include <utility>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/CellJson.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Ranges.h>
#include <hosts/cli/Session.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/FileLayer.h>
#include <tessarine/platform/JsonReader.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

/// What a formula cell would take: a text without "=" is one all the same.
TText FormulaOf(std::string_view AText) { return TCellValue::FromFormula(Utf8ToUtf16(AText)).Text; }

TValueView ValueAt(const TFormulaArg& AResult, int64_t AIndex) {
  return AResult.IsRange ? AResult.ViewAt(AIndex) : AResult.FirstView();
}

int64_t RowsOf(const TFormulaArg& AResult) { return AResult.IsRange ? AResult.RowCount : 1; }
int64_t ColsOf(const TFormulaArg& AResult) { return AResult.IsRange ? AResult.ColCount : 1; }

std::string TextOf(const TValueView& AValue) {
  std::u16string text;
  AppendDisplayString(AValue, text);
  return Utf16ToUtf8(text);
}

void PutResult(const TFormulaArg& AResult, TSession& ASession) {
  for (int64_t row = 0; row < RowsOf(AResult); ++row) {
    for (int64_t col = 0; col < ColsOf(AResult); ++col) {
      if (col > 0) ASession.Out() += '\t';
      ASession.Out() += TextOf(ValueAt(AResult, row * ColsOf(AResult) + col));
    }
    ASession.Out() += '\n';
    ASession.Drain();
  }
}

// ---- questions in a file

struct TQuestion {
  std::string Formula;
  std::vector<std::pair<TCellAddress, TCellValue>> Cells;
  std::optional<TCellAddress> At;
};

TCellValue ContentOf(const TJsonReader& AJson) {
  switch (AJson.Event()) {
    case jeNumber: return TCellValue::FromNumber(AJson.Number());
    case jeBoolean: return TCellValue::FromBoolean(AJson.Boolean());
    case jeText:
      if (AJson.Text().starts_with('=') && AJson.Text().size() > 1)
        return TCellValue::FromFormula(FormulaOf(AJson.Text()));
      return TCellValue::FromText(TText::FromUtf8(AJson.Text()));
    case jeNull: return {};
    default: AJson.Fail("a cell holds a number, a text, true, false or null");
  }
}

TCellAddress AddressOf(const TJsonReader& AJson) {
  const TCellAddress address = TCellAddress::FromA1(Utf8ToUtf16(AJson.Text()));
  if (!address.IsValid()) AJson.Fail("\"" + std::string(AJson.Text()) + "\" is no cell");
  return address;
}

void ReadCells(TJsonReader& AJson, TQuestion& AQuestion) {
  if (AJson.Next() != jeBeginObject) AJson.Fail("\"cells\" is an object of addresses and values");
  while (AJson.Next() == jeName) {
    const TCellAddress address = AddressOf(AJson);
    AJson.Next();
    AQuestion.Cells.emplace_back(address, ContentOf(AJson));
  }
}

TQuestion ReadQuestion(TJsonReader& AJson) {
  TQuestion question;
  bool hasFormula = false;
  if (AJson.Next() != jeBeginObject) AJson.Fail("a line holds one JSON object");
  while (AJson.Next() == jeName) {
    if (AJson.Text() == "f") {
      if (AJson.Next() != jeText) AJson.Fail("\"f\" is the text of a formula");
      question.Formula = AJson.Text();
      hasFormula = true;
    } else if (AJson.Text() == "cells") {
      ReadCells(AJson, question);
    } else if (AJson.Text() == "at") {
      if (AJson.Next() != jeText) AJson.Fail("\"at\" is the text of a cell's address");
      question.At = AddressOf(AJson);
    } else {
      AJson.Skip();
    }
  }
  if (!hasFormula) AJson.Fail("the object has no \"f\", the formula");
  AJson.Next();
  return question;
}

/// A cell that the question does not fill: A1, or else one in the first row, right of all that it fills.
TCellAddress FreeCell(const TQuestion& AQuestion) {
  int32_t lastCol = 0;
  for (const auto& [address, value] : AQuestion.Cells) lastCol = std::max(lastCol, address.Col);
  return {std::min(lastCol + 1, kMaxCol), 1};
}

TFormulaArg Answer(const TQuestion& AQuestion, const std::optional<TCellAddress>& AAt, bool AAllowWeb,
                   const TWorkControl& AControl) {
  TWorkbook workbook;
  workbook.SetNetworkAllowed(AAllowWeb);
  TFormulaEvaluator evaluator(workbook);
  bool hasFormulas = false;
  for (const auto& [address, value] : AQuestion.Cells) {
    workbook.GetSheet(0)->SetValue(address, value);
    hasFormulas = hasFormulas || value.Kind == cvkFormula;
  }
  if (hasFormulas) evaluator.RecalculateAll(AControl);
  const TCellAddress at = AQuestion.At ? *AQuestion.At : AAt.value_or(FreeCell(AQuestion));
  return evaluator.EvaluateAt(FormulaOf(AQuestion.Formula), 0, at.Col, at.Row, AControl);
}

void PutAnswer(const TFormulaArg& AResult, std::string& AOut) {
  TJsonWriter json(AOut);
  const TValueView first = AResult.FirstView();
  json.BeginObject();
  json.Name("type");
  json.Text(std::string_view(TypeName(first)));
  json.Name("value");
  PutJsonValue(json, first);
  json.Name("text");
  json.Text(std::string_view(TextOf(first)));
  json.Name("rows");
  json.Integer(RowsOf(AResult));
  json.Name("cols");
  json.Integer(ColsOf(AResult));
  json.Name("values");
  json.BeginArray();
  for (int64_t row = 0; row < RowsOf(AResult); ++row) {
    json.BeginArray();
    for (int64_t col = 0; col < ColsOf(AResult); ++col)
      PutJsonValue(json, ValueAt(AResult, row * ColsOf(AResult) + col));
    json.EndArray();
  }
  json.EndArray();
  json.EndObject();
  AOut += '\n';
}

int RunBatch(const TArguments& AArguments, const std::optional<TCellAddress>& AAt, TSession& ASession) {
  const std::string name = AArguments.Batch == "-" ? "standard input" : AArguments.Batch;
  const std::string text = ASession.ReadFile(AArguments.Batch);
  std::string_view rest = text;
  for (int64_t line = 1; !rest.empty(); ++line) {
    const std::string_view content = rest.substr(0, rest.find('\n'));
    rest.remove_prefix(std::min(content.size() + 1, rest.size()));
    if (content.find_first_not_of(" \t\r") == std::string_view::npos) continue;
    ASession.Control().CheckStop();
    TQuestion question;
    try {
      TJsonReader json(content, name + ", question " + std::to_string(line));
      question = ReadQuestion(json);
    } catch (const EFileFormat& error) {
      throw ECli(ecInput, error.what());
    }
    PutAnswer(Answer(question, AAt, AArguments.AllowWeb, ASession.Control()), ASession.Out());
    ASession.Drain();
  }
  return ecDone;
}

/// Whether the first word of a call names a workbook: a formula begins with "=", or it is no file's name.
bool NamesWorkbook(const std::string& AWord) {
  if (AWord.starts_with('=')) return false;
  TFileStatus status;
  return AWord == "-" || FormatOfFile(AWord) != ffAuto || CurrentFileLayer().GetStatus(AWord, status) == 0;
}

}  // namespace

int RunEval(const TArguments& AArguments, TSession& ASession) {
  std::optional<TCellAddress> at;
  if (!AArguments.At.empty()) at = ParseCell(AArguments.At);
  ASession.Workbook().SetNetworkAllowed(AArguments.AllowWeb);
  std::vector<std::string> formulas = AArguments.Formula;
  if (!AArguments.Batch.empty()) {
    if (!formulas.empty()) throw ECli(ecUsage, "--batch takes its formulas from the file; give no others");
    return RunBatch(AArguments, at, ASession);
  }
  TArguments arguments = AArguments;
  if (!formulas.empty() && NamesWorkbook(formulas.front())) {
    arguments.Input = formulas.front();
    formulas.erase(formulas.begin());
    ASession.Load(arguments);
  }
  if (formulas.empty()) throw ECli(ecUsage, "give a formula, for example: tessarine eval \"=1+2\"");
  const int32_t sheet = ASession.SheetIndex(arguments);
  const TCellAddress place = at.value_or(TCellAddress{1, 1});
  for (const std::string& formula : formulas)
    PutResult(ASession.Evaluator().EvaluateAt(FormulaOf(formula), sheet, place.Col, place.Row, ASession.Control()),
              ASession);
  return ecDone;
}

}  // namespace tessarine::cli
