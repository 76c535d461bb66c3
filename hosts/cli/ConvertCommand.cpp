#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Session.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/FileLayer.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

void CheckFormat(const TArguments& AArguments) {
  const bool isCsv = AArguments.To.empty()
                         ? AArguments.Output == "-" || FileFormatFromExtension(AArguments.Output) == ffCsv
                         : EqualAsciiNoCase(Utf8ToUtf16(AArguments.To), u"csv");
  if (isCsv) return;
  const std::string asked = AArguments.To.empty() ? AArguments.Output : "the format \"" + AArguments.To + "\"";
  throw ECli(ecUsage, asked + ": this version writes CSV only; name the output .csv or add --to csv");
}

char16_t DelimiterOf(const TArguments& AArguments) {
  if (AArguments.Delimiter == "tab" || AArguments.Delimiter == "\\t") return u'\t';
  const std::u16string text = Utf8ToUtf16(AArguments.Delimiter);
  const bool isOne = text.size() == 1 && (text[0] & 0xF800) != 0xD800;
  if (isOne && text[0] != u'"' && text[0] != u'\r' && text[0] != u'\n' && text[0] != u'\0') return text[0];
  throw ECli(ecUsage, "\"" + AArguments.Delimiter + "\" is no delimiter; give one character, or the word tab");
}

/// Saves to a file beside the target first. What an interrupted run left of that is removed: it is not whole.
void SaveFile(const std::string& AFileName, const std::function<void(IWriteStream&)>& AWrite) {
  TFileStatus status;
  if (CurrentFileLayer().GetStatus(AFileName, status) == 0 && status.IsFolder)
    throw ECli(ecOutput, AFileName + ": this is a folder; name a file in it");
  try {
    SaveToFileViaTemp(AFileName, AWrite);
  } catch (const ECancelled&) {
    CurrentFileLayer().Remove(AFileName + ".tessarine.tmp");
    throw;
  } catch (const EFileAccess& error) {
    const std::string message = error.what();
    throw ECli(ecOutput, message.find(AFileName) == std::string::npos ? AFileName + ": " + message : message);
  }
}

int Convert(const TArguments& AArguments, TSession& ASession) {
  CheckFormat(AArguments);
  TCsvExportOptions options;
  options.Delimiter = DelimiterOf(AArguments);
  options.Utf8Bom = !AArguments.NoBom && AArguments.Output != "-";
  options.Control = ASession.Control();
  ASession.Load(AArguments);
  const TWorksheet* sheet = ASession.Workbook().GetSheet(ASession.SheetIndex(AArguments));
  const auto write = [&](IWriteStream& AStream) {
    if (sheet)
      TCsvIO::ExportRange(ASession.Workbook(), sheet, AStream, {1, 1, sheet->UsedMaxCol(), sheet->UsedMaxRow()},
                          options);
  };
  if (AArguments.Output == "-") {
    write(ASession.OutputStream());
  } else {
    SaveFile(AArguments.Output, write);
  }
  return ecDone;
}

}  // namespace

int RunConvert(const TArguments& AArguments, TSession& ASession) { return Convert(AArguments, ASession); }

int RunRecalc(const TArguments& AArguments, TSession& ASession) { return Convert(AArguments, ASession); }

}  // namespace tessarine::cli
