#include <hosts/cli/Session.h>

#include <algorithm>
#include <span>
#include <vector>

#include <hosts/cli/Arguments.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/core/sheet/detail/CellStore.h>
#include <tessarine/formula/Evaluator.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/FileLayer.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/ReadLimits.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

constexpr size_t kOutBuffer = size_t{64} * 1024;

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
  const TFileFormatRow* format = FindFormat(AFormat);
  if (!format) {
    const std::string names = FormatNames("or");
    throw ECli(ecUsage, name + ": the name does not tell the format; add --from with " + names);
  }
  FFormatName = format->Title;
  format->Read({.Workbook = *FWorkbook,
                .Stream = open(),
                .SourceName = name,
                .DecimalSeparator = ADecimalSeparator,
                .Control = FControl,
                .Report = &FReport});
}

void TSession::Load(const TArguments& AArguments) {
  const TTessarineFileFormat format = AArguments.From.empty() ? ffAuto : FormatOfName(AArguments.From).Format;
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

bool TSession::LacksResults() const {
  for (int32_t i = 0; i < FWorkbook->SheetCount(); ++i) {
    if (FWorkbook->GetSheet(i)->Store().UncachedCount() > 0) return true;
  }
  return false;
}

int32_t TSession::SheetIndex(const TArguments& AArguments) const {
  return AArguments.Sheet.empty() ? std::max(FWorkbook->ActiveSheetIndex(), 0) : SheetIndexOf(AArguments.Sheet);
}

int32_t TSession::SheetIndexOf(const std::string& ASheet) const {
  const int32_t byName = FWorkbook->FindSheetIndex(Utf8ToUtf16(ASheet));
  if (byName >= 0) return byName;
  int32_t number = 0;
  if (TryParseInt32(std::string_view(ASheet), number) && number >= 1 && number <= FWorkbook->SheetCount())
    return number - 1;
  std::string names;
  constexpr int32_t kMostNames = 20;
  for (int32_t i = 0; i < std::min(FWorkbook->SheetCount(), kMostNames); ++i)
    names += (i > 0 ? ", " : "") + FWorkbook->GetSheet(i)->Name().ToUtf8();
  if (FWorkbook->SheetCount() > kMostNames) names += ", ...";
  throw ECli(ecUsage, "there is no sheet \"" + ASheet + "\"; the sheets are: " + names);
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

void TSession::Tell(std::string_view AText) {
  FProgress.Clear();
  WriteText(FStreams.Messages, AText);
}

}  // namespace tessarine::cli
