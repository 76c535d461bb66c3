// Parts of the lowest floor: texts of numbers, XML, ZIP.

#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Xml.h>
#include <tessarine/platform/Zip.h>

#include "../tests/support/ZipBuilder.h"

namespace tessarine::bench {
namespace {

constexpr int32_t kRows = 10'000;

/// Numbers as sheets have them: integers, amounts, and a few with all digits.
std::vector<double> MakeNumbers(size_t ACount, unsigned ASeed) {
  std::mt19937 random(ASeed);
  std::vector<double> numbers;
  for (size_t i = 0; i < ACount; ++i) {
    const double whole = random() % 1'000'000;
    numbers.push_back(i % 3 == 0 ? whole : i % 10 == 1 ? whole / 7 : whole / 100);
  }
  return numbers;
}

bool ParseFast(std::u16string_view AText, double& ANumber) {
  return TryStrToFloat(AText, CurrentFormatSettings(), ANumber);
}
bool ParsePlain(std::u16string_view AText, double& ANumber) { return TryStrToFloatPlain(AText, u'.', ANumber); }

template <bool (*Parse)(std::u16string_view, double&)>
void ParseNumbers(benchmark::State& AState) {
  std::vector<std::u16string> texts;
  for (const double number : MakeNumbers(kRows, 1)) texts.push_back(GeneralNumberText(number));
  double one = 0;
  double other = 0;
  for (const std::u16string& text : texts) {
    if (!Parse(text, one) || !ParsePlain(text, other) || one != other) return AState.SkipWithError("a wrong number");
  }
  for (auto _ : AState) {
    for (const std::u16string& text : texts) benchmark::DoNotOptimize(Parse(text, one));
  }
  AState.SetItemsProcessed(AState.iterations() * kRows);
}
BENCHMARK(ParseNumbers<ParseFast>);
BENCHMARK(ParseNumbers<ParsePlain>);

template <size_t (*Write)(double, char16_t*)>
void WriteNumbers(benchmark::State& AState) {
  const std::vector<double> numbers = MakeNumbers(kRows, 2);
  char16_t one[kNumberTextSize];
  char16_t other[kNumberTextSize];
  for (const double number : numbers) {
    const std::u16string_view text(one, Write(number, one));
    if (text != std::u16string_view(other, WriteGeneralNumberPlain(number, other)))
      return AState.SkipWithError("a wrong text");
  }
  for (auto _ : AState) {
    for (const double number : numbers) benchmark::DoNotOptimize(Write(number, one));
  }
  AState.SetItemsProcessed(AState.iterations() * kRows);
}
BENCHMARK(WriteNumbers<WriteGeneralNumber>);
BENCHMARK(WriteNumbers<WriteGeneralNumberPlain>);

std::string MakeSheetPart() {
  std::string xml = "<worksheet><sheetData>";
  const std::vector<double> numbers = MakeNumbers(kRows, 3);
  for (int32_t row = 1; row <= kRows; ++row) {
    const std::string at = std::to_string(row);
    xml += "<row r=\"" + at + "\"><c r=\"A" + at + "\" s=\"1\"><v>";
    AppendFileNumber(numbers[static_cast<size_t>(row - 1)], xml);
    xml += "</v></c><c r=\"B" + at + "\" t=\"s\"><v>" + at + "</v></c></row>";
  }
  return xml + "</sheetData></worksheet>";
}

/// The bytes of all values.
template <bool Leaves>
size_t WalkSheet(const std::string& APart) {
  TXmlReader reader(APart, "sheet");
  size_t bytes = 0;
  for (std::string_view text;;) {
    if (Leaves && reader.TryReadLeaf("v", text)) {
      bytes += text.size();
      continue;
    }
    const TXmlEvent event = reader.Next();
    if (event == xeText) bytes += reader.Text().size();
    if (event == xeEnd) return bytes;
  }
}

template <bool Leaves>
void WalkXml(benchmark::State& AState) {
  const std::string part = MakeSheetPart();
  if (WalkSheet<true>(part) != WalkSheet<false>(part)) return AState.SkipWithError("the walks differ");
  for (auto _ : AState) benchmark::DoNotOptimize(WalkSheet<Leaves>(part));
  AState.SetBytesProcessed(AState.iterations() * static_cast<int64_t>(part.size()));
}
BENCHMARK(WalkXml<true>);
BENCHMARK(WalkXml<false>);

void InflatePart(benchmark::State& AState) {
  const std::string part = MakeSheetPart();
  test::TZipBuilder builder;
  builder.Add("sheet.xml", part);
  const std::vector<std::byte> bytes = builder.Finish();
  for (auto _ : AState) {
    const TZipReader zip(bytes);  // anew each time: what it gives out in all is limited
    const TByteBuffer content = zip.Read(0);
    if (content.Size() != part.size()) return AState.SkipWithError("a wrong size");
  }
  AState.SetBytesProcessed(AState.iterations() * static_cast<int64_t>(part.size()));
}
BENCHMARK(InflatePart);

}  // namespace
}  // namespace tessarine::bench
