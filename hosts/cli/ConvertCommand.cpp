#include <algorithm>
#include <filesystem>

#include <hosts/cli/Arguments.h>
#include <hosts/cli/Commands.h>
#include <hosts/cli/Session.h>
#include <tessarine/core/lists/SpillMap.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
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

/// From A1 to the last cell that is there. The used bounds will not do: a file's empty cells count in them too, and one
/// in the last corner of the sheet would make a file of gigabytes.
TCellRange ContentRange(const TWorksheet& ASheet) {
  TCellRange range{1, 1, 1, 1};
  const auto take = [&](int32_t ACol, int32_t ARow) {
    range.EndCol = std::max(range.EndCol, std::min(ACol, kMaxCol));
    range.EndRow = std::max(range.EndRow, std::min(ARow, kMaxRow));
  };
  ASheet.Store().ForEachByColumn([&](int32_t ACol, int32_t ARow, const detail::TCellSlot&) { take(ACol, ARow); });
  for (const TSpillRange* block : ASheet.Spills().BlocksIn({1, 1, kMaxCol, kMaxRow}))
    take(block->EndCol, block->EndRow);
  return range;
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
    if (sheet) TCsvIO::ExportRange(ASession.Workbook(), sheet, AStream, ContentRange(*sheet), options);
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
