#include <hosts/cli/Session.h>

#include <algorithm>
#include <span>
#include <vector>

#include <hosts/cli/Arguments.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/io/csv/Csv.h>
#include <tessarine/io/xlsx/XlsxReader.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/FileLayer.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

constexpr size_t kOutBuffer = size_t{64} * 1024;

std::string InLowerCase(std::string AText) {
  for (char& byte : AText) byte = byte >= 'A' && byte <= 'Z' ? static_cast<char>(byte + 32) : byte;
  return AText;
}

TTessarineFileFormat FormatOfName(const std::string& AName) {
  const std::string name = InLowerCase(AName);
  if (name == "xlsx") return ffXlsx;
  if (name == "csv") return ffCsv;
  if (name == "ods") return ffOds;
  if (name == "tsr") return ffTsr;
  throw ECli(ecUsage, "there is no format \"" + AName + "\"; formats are: xlsx, csv");
}

bool IsTextExtension(const std::string& AFileName) {
  const std::string name = InLowerCase(AFileName);
  return name.ends_with(".txt") || name.ends_with(".tsv") || name.ends_with(".tab");
}

/// The format by the first bytes: packages begin as ZIP archives do, all else is taken for text.
TTessarineFileFormat FormatOfBytes(std::string_view ABytes) {
  return ABytes.starts_with("PK\x03\x04") ? ffXlsx : ffCsv;
}

/// Throws unless a file of that name can be there to be read.
void CheckIsFile(const std::string& AFileName) {
  TFileStatus status;
  if (CurrentFileLayer().GetStatus(AFileName, status) != 0)
    throw ECli(ecInput, AFileName + ": there is no such file; check its name and folder");
  if (status.IsFolder) throw ECli(ecInput, AFileName + ": this is a folder; name a file in it");
}

char16_t DecimalSeparatorOf(const TArguments& AArguments) {
  if (AArguments.Decimal.empty()) return 0;
  if (AArguments.Decimal == "." || AArguments.Decimal == ",") return static_cast<char16_t>(AArguments.Decimal[0]);
  throw ECli(ecUsage, "\"" + AArguments.Decimal + "\" is no decimal separator; give a point or a comma");
}

/// AMessage with the file's name in front, unless it names it already.
std::string Naming(const std::string& AFileName, const std::string& AMessage) {
  return AMessage.find(AFileName) == std::string::npos ? AFileName + ": " + AMessage : AMessage;
}

}  // namespace

void WriteText(IWriteStream& AStream, std::string_view AText) {
  AStream.Write(std::as_bytes(std::span<const char>(AText.data(), AText.size())));
}

TSession::TSession(TCliStreams& AStreams)
    : FStreams(AStreams), FProgress(AStreams.Messages, AStreams.Terminal.IsMessages) {
  FControl.Stop = AStreams.Stop;
  FControl.Progress = [this](const TTessarineProgressEvent& AEvent) { FProgress.Report(AEvent); };
  FWorkbook = std::make_unique<TWorkbook>();
  FWorkbook->SetNetworkAllowed(false);
  FEvaluator = std::make_unique<TFormulaEvaluator>(*FWorkbook);
}

TSession::~TSession() {
  try {
    FProgress.Clear();
    if (!FOut.empty()) Flush();
  } catch (const ETessarineError&) {
    FOut.clear();  // a failure is on its way already, and this one is its consequence
  }
}

// ---- input

std::string TSession::ReadFile(const std::string& AFileName) {
  const uint64_t limit = TReadLimits().MaxPartBytes;
  const auto read = [&](IReadStream& AStream) {
    const std::vector<std::byte> bytes = ReadAllBytes(AStream, limit);
    return std::string(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  };
  const bool isStandard = AFileName == "-";
  const std::string name = isStandard ? "standard input" : AFileName;
  if (!isStandard) CheckIsFile(AFileName);
  try {
    return isStandard ? read(FStreams.In) : read(*OpenSharedReadStream(AFileName).Stream);
  } catch (const ELimit& error) {
    throw ECli(ecLimit, Naming(name, error.what()));
  } catch (const EFileAccess& error) {
    throw ECli(ecInput, Naming(name, error.what()));
  }
}

void TSession::LoadFrom(const std::string& AFileName, TTessarineFileFormat AFormat, char16_t ADecimalSeparator) {
  std::string bytes;
  if (AFileName == "-") {
    bytes = ReadFile(AFileName);
    if (AFormat == ffAuto) AFormat = FormatOfBytes(bytes);
  } else {
    CheckIsFile(AFileName);
    if (AFormat == ffAuto) AFormat = FormatOfFile(AFileName);
  }
  const std::string name = AFileName == "-" ? "standard input" : AFileName;
  TSharedReadStream file;
  std::unique_ptr<IReadStream> memory;
  const auto open = [&]() -> IReadStream& {
    if (AFileName != "-") return *(file = OpenSharedReadStream(AFileName)).Stream;
    memory = std::make_unique<TMemoryReadStream>(std::as_bytes(std::span<const char>(bytes)));
    return *memory;
  };
  switch (AFormat) {
    case ffXlsx:
      FFormatName = "XLSX";
      TXlsxReader::LoadFromStream(*FWorkbook, open(), {.Limits = {}, .Control = FControl});
      return;
    case ffCsv: {
      FFormatName = "CSV";
      TCsvImportOptions options;
      options.SourceName = name;
      options.DecimalSeparator = ADecimalSeparator;
      options.Control = FControl;
      TCsvIO::ImportWithOptions(*FWorkbook, open(), 0, options);
      return;
    }
    case ffOds:
    case ffTsr:
      throw ECli(ecInput, name + ": this version does not read " +
                              (AFormat == ffOds ? "OpenDocument sheets (.ods)" : "Tessarine documents (.tsr)") +
                              "; save it as .xlsx or .csv and take that");
    case ffAuto: break;
  }
  throw ECli(ecUsage, name + ": the name does not tell the format; add --from xlsx or --from csv");
}

void TSession::Load(const TArguments& AArguments) {
  const TTessarineFileFormat format = AArguments.From.empty() ? ffAuto : FormatOfName(AArguments.From);
  const std::string name = AArguments.Input == "-" ? "standard input" : AArguments.Input;
  const char16_t decimalSeparator = DecimalSeparatorOf(AArguments);
  FWorkbook->SetNetworkAllowed(AArguments.AllowWeb);
  try {
    LoadFrom(AArguments.Input, format, decimalSeparator);
  } catch (const ELimit& error) {
    throw ECli(ecLimit, Naming(name, error.what()));
  } catch (const ECancelled&) {
    throw;
  } catch (const ETessarineError& error) {
    throw ECli(ecInput, Naming(name, error.what()));
  }
  if (!AArguments.NoRecalc) Recalculate();
}

void TSession::Recalculate() { FEvaluator->RecalculateAll(FControl); }

int32_t TSession::SheetIndex(const TArguments& AArguments) const {
  if (AArguments.Sheet.empty()) return std::max(FWorkbook->ActiveSheetIndex(), 0);
  const int32_t byName = FWorkbook->FindSheetIndex(Utf8ToUtf16(AArguments.Sheet));
  if (byName >= 0) return byName;
  int32_t number = 0;
  if (TryParseInt32(std::string_view(AArguments.Sheet), number) && number >= 1 && number <= FWorkbook->SheetCount())
    return number - 1;
  std::string names;
  constexpr int32_t kMostNames = 20;
  for (int32_t i = 0; i < std::min(FWorkbook->SheetCount(), kMostNames); ++i)
    names += (i > 0 ? ", " : "") + FWorkbook->GetSheet(i)->Name().ToUtf8();
  if (FWorkbook->SheetCount() > kMostNames) names += ", ...";
  throw ECli(ecUsage, "there is no sheet \"" + AArguments.Sheet + "\"; the sheets are: " + names);
}

// ---- output

void TSession::Drain() {
  if (FOut.size() >= kOutBuffer) Flush();
}

void TSession::Flush() {
  FProgress.Clear();
  const std::string out = std::move(FOut);
  FOut.clear();
  if (!out.empty()) WriteText(FStreams.Out, out);
}

// ---- names and addresses

TTessarineFileFormat FormatOfFile(const std::string& AFileName) {
  const TTessarineFileFormat format = FileFormatFromExtension(AFileName);
  return format == ffAuto && IsTextExtension(AFileName) ? ffCsv : format;
}

namespace {

/// "B:D" and "2:5": whole columns or rows; a range that is not valid for anything else.
TCellRange ParseLines(std::u16string_view AText) {
  const size_t colon = AText.find(u':');
  if (colon == AText.npos) return {0, 0, 0, 0};
  const std::u16string_view first = AText.substr(0, colon);
  const std::u16string_view last = AText.substr(colon + 1);
  const auto areAll = [&](bool (*AIsPart)(char16_t)) {
    return !first.empty() && !last.empty() && std::all_of(first.begin(), first.end(), AIsPart) &&
           std::all_of(last.begin(), last.end(), AIsPart);
  };
  if (areAll(IsAsciiLetter)) return TCellRange{LettersToCol(first), 1, LettersToCol(last), kMaxRow}.Normalize();
  if (areAll(IsAsciiDigit)) {
    const auto rowOf = [](std::u16string_view ADigits) {
      return TCellAddress::FromA1(u"A" + std::u16string(ADigits)).Row;
    };
    return TCellRange{1, rowOf(first), kMaxCol, rowOf(last)}.Normalize();
  }
  return {0, 0, 0, 0};
}

}  // namespace

TCellRange ParseRange(const std::string& AText) {
  std::u16string text = ToAsciiUpper(Utf8ToUtf16(AText));
  std::erase(text, u'$');
  const auto isValid = [](const TCellRange& ARange) {
    return TCellAddress{ARange.StartCol, ARange.StartRow}.IsValid() &&
           TCellAddress{ARange.EndCol, ARange.EndRow}.IsValid();
  };
  const TCellRange lines = ParseLines(text);
  if (isValid(lines)) return lines;
  const TCellRange range = TCellRange::FromA1(text);
  const bool isPlain = std::all_of(text.begin(), text.end(), [](char16_t AUnit) {
    return IsAsciiLetter(AUnit) || IsAsciiDigit(AUnit) || AUnit == u':';
  });
  if (!isPlain || !isValid(range))
    throw ECli(ecUsage, "\"" + AText + "\" is no range of cells; write for example A1:H20, B:D or 2:5");
  return range;
}

TCellAddress ParseCell(const std::string& AText) {
  const TCellRange range = ParseRange(AText);
  if (range.Width() != 1 || range.Height() != 1)
    throw ECli(ecUsage, "\"" + AText + "\" is more than one cell; write for example B2");
  return {range.StartCol, range.StartRow};
}

}  // namespace tessarine::cli
