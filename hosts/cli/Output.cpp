#include <hosts/cli/Output.h>

#include <filesystem>
#include <functional>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/FileFormats.h>
#include <hosts/cli/Session.h>
#include <hosts/cli/Table.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/FileLayer.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/JsonWriter.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

/// The format of the output; standard output takes CSV unless the arguments tell another.
const TFileFormatRow& OutputFormat(const TArguments& AArguments) {
  if (!AArguments.To.empty()) return FormatOfName(AArguments.To);
  const auto* const format = FindFormat(AArguments.Output == "-" ? ffCsv : FileFormatFromExtension(AArguments.Output));
  if (format) return *format;
  throw ECli(ecUsage, AArguments.Output + ": the name does not tell a format; add --to with " + FormatNames("or"));
}

char16_t DelimiterOf(const TArguments& AArguments) {
  if (AArguments.Delimiter == "tab" || AArguments.Delimiter == "\\t") return u'\t';
  const std::u16string text = Utf8ToUtf16(AArguments.Delimiter);
  const bool isOne = text.size() == 1 && (text[0] & 0xF800) != 0xD800;
  if (isOne && text[0] != u'"' && text[0] != u'\r' && text[0] != u'\n' && text[0] != u'\0') return text[0];
  throw ECli(ecUsage, "\"" + AArguments.Delimiter + "\" is no delimiter; give one character, or the word tab");
}

std::filesystem::path PathOf(const std::string& AFileName) {
  return std::filesystem::path(std::u8string(AFileName.begin(), AFileName.end()));
}

/// Throws unless there is a folder to which AFileName can be written.
void CheckTarget(const std::string& AFileName) {
  TFileStatus status;
  if (CurrentFileLayer().GetStatus(AFileName, status) == 0 && status.IsFolder)
    throw ECli(ecOutput, AFileName + ": this is a folder; name a file in it");
  std::error_code ignored;
  const std::filesystem::path folder = PathOf(AFileName).parent_path();
  if (!folder.empty() && std::filesystem::status(folder, ignored).type() == std::filesystem::file_type::not_found)
    throw ECli(ecOutput, AFileName + ": its folder does not exist; create it, or name a file elsewhere");
}

/// Devices and pipes are written to as they are: a file put in their place would be the end of them.
bool IsDevice(const std::string& AFileName) {
  std::error_code ignored;
  const auto status = std::filesystem::status(PathOf(AFileName), ignored);
  return std::filesystem::exists(status) && !std::filesystem::is_regular_file(status);
}

/// The file to which a link leads, so that the link stays; a name that is no link, or leads nowhere, stays as it is.
std::string LinkTarget(const std::string& AFileName) {
  std::error_code error;
  if (!std::filesystem::is_symlink(PathOf(AFileName), error)) return AFileName;
  const std::u8string target = std::filesystem::canonical(PathOf(AFileName), error).u8string();
  return error ? AFileName : std::string(target.begin(), target.end());
}

/// Saves to a file beside the target first. What an interrupted run left of that is removed: it is not whole.
void SaveFile(const std::string& AFileName, const std::function<void(IWriteStream&)>& AWrite) {
  CheckTarget(AFileName);
  const bool isDevice = IsDevice(AFileName);
  const std::string target = isDevice ? AFileName : LinkTarget(AFileName);
  try {
    if (!isDevice) return SaveToFileViaTemp(target, AWrite);
    TFileWriteStream stream(target);
    AWrite(stream);
    stream.Close();
  } catch (const ECancelled&) {
    if (!isDevice) CurrentFileLayer().Remove(target + ".tessarine.tmp");
    throw;
  } catch (const EFileAccess& error) {
    const std::string message = error.what();
    throw ECli(ecOutput, message.find(AFileName) == std::string::npos ? AFileName + ": " + message : message);
  }
}

void PutReportTable(const TFileReport& AReport, std::string& AOut) {
  TTextTable table({{"Fate", alLeft}, {"Count", alRight}, {"What", alLeft}, {"Where", alLeft}, {"Note", alLeft}});
  for (const TFileReportItem& item : AReport.Items())
    table.AddRow(
        {std::string(FileFateName(item.Fate)), std::to_string(item.Count), item.Feature, item.Where, item.Note});
  table.Append(AOut);
}

void PutReportJson(const TFileReport& AReport, std::string& AOut) {
  for (const TFileReportItem& item : AReport.Items()) {
    TJsonWriter json(AOut);
    json.BeginObject();
    json.Name("fate");
    json.Text(FileFateName(item.Fate));
    json.Name("count");
    json.Integer(static_cast<int64_t>(item.Count));
    const std::pair<const char*, const std::string&> texts[] = {
        {"what", item.Feature}, {"where", item.Where}, {"note", item.Note}};
    for (const auto& [name, text] : texts) {
      json.Name(name);
      json.Text(std::string_view(text));
    }
    json.EndObject();
    AOut += '\n';
  }
}

}  // namespace

TOutputPlan PlanOutput(const TArguments& AArguments) {
  TOutputPlan plan;
  plan.Format = &OutputFormat(AArguments);
  plan.FileName = AArguments.Output;
  plan.Delimiter = DelimiterOf(AArguments);
  plan.Utf8Bom = !AArguments.NoBom && AArguments.Output != "-";
  plan.DefuseFormulas = AArguments.Defuse;
  return plan;
}

void SaveWorkbook(const TOutputPlan& APlan, TSession& ASession, int32_t ASheetIndex) {
  TWorkbook& book = ASession.Workbook();
  const auto write = [&](IWriteStream& AStream) {
    APlan.Format->Write({.Workbook = book,
                         .Stream = AStream,
                         .SheetIndex = ASheetIndex,
                         .Delimiter = APlan.Delimiter,
                         .Utf8Bom = APlan.Utf8Bom,
                         .DefuseFormulas = APlan.DefuseFormulas,
                         .Control = ASession.Control(),
                         .Report = &ASession.Report()});
  };
  if (APlan.Format->HoldsOneSheet) {
    for (int32_t i = 0; i < book.SheetCount(); ++i) {
      if (i == ASheetIndex) continue;
      ASession.Report().Add("sheet", ffDropped, book.GetSheet(i)->Name().ToUtf8(), 1, "the format holds one sheet");
    }
  }
  if (APlan.FileName == "-") {
    write(ASession.OutputStream());
  } else {
    SaveFile(APlan.FileName, write);
  }
}

void PrintReport(const TArguments& AArguments, TSession& ASession) {
  if (!AArguments.Report) return;
  std::string text;
  (AArguments.Json ? PutReportJson : PutReportTable)(ASession.Report(), text);
  if (ASession.Report().IsEmpty() && !AArguments.Json) text = "everything came through unchanged\n";
  ASession.Tell(text);
}

void FinishChange(const TArguments& AArguments, const TOutputPlan& APlan, TSession& ASession, int32_t ASheetIndex) {
  if (!AArguments.NoRecalc) ASession.Recalculate();
  SaveWorkbook(APlan, ASession, ASheetIndex);
  PrintReport(AArguments, ASession);
}

}  // namespace tessarine::cli
