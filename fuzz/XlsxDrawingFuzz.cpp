#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/core/lists/Drawings.h>
#include <tessarine/io/FileReport.h>
#include <tessarine/io/xlsx/detail/XlsxDrawings.h>
#include <tessarine/io/xlsx/detail/XlsxPackage.h>

#include "detail/StoredZip.h"
#include "detail/XlsxCheck.h"

using namespace tessarine;

namespace {

/// Small, so that the points of a chart that is written again stay few.
constexpr TReadLimits kLimits = {.MaxEntries = 1000,
                                 .MaxPartBytes = 1 << 20,
                                 .MaxTotalBytes = 2 << 20,
                                 .RatioFreeBytes = 1 << 16,
                                 .MaxXmlDepth = 40,
                                 .MaxXmlTreeNodes = 20'000};

/// A drawing part with whatever it may refer to. The parts stand in the input, divided by lines of "====": drawing,
/// chart, style, colours, ink.
std::vector<std::byte> PackageAround(std::string_view AInput) {
  constexpr std::string_view kMark = "\n====\n";
  constexpr const char* kNames[] = {"d.xml", "c.xml", "style.xml", "colors.xml", "ink.xml"};
  fuzz::TStoredZip zip;
  zip.Add("_rels/s.xml.rels", "<r><Relationship Id='d' Type='/drawing' Target='d.xml'/></r>");
  zip.Add("_rels/d.xml.rels",
          "<r><Relationship Id='c' Target='c.xml'/><Relationship Id='p' Target='p.jpg'/>"
          "<Relationship Id='i' Target='ink.xml'/></r>");
  zip.Add("_rels/c.xml.rels", "<r><Relationship Target='style.xml'/><Relationship Target='colors.xml'/></r>");
  zip.Add("p.jpg", "picture");
  for (const char* name : kNames) {
    const size_t end = std::min(AInput.find(kMark), AInput.size());
    zip.Add(name, AInput.substr(0, end));
    AInput.remove_prefix(std::min(end + kMark.size(), AInput.size()));
  }
  return zip.Finish();
}

std::string_view TextOf(const TDrawingBytes& ABytes) {
  return {reinterpret_cast<const char*>(ABytes.data()), ABytes.size()};
}

void Load(const std::vector<std::byte>& AZip, const char* ASheetPart, const TReadLimits& ALimits, TWorkbook& ABook) {
  const detail::TXlsxPackage package(AZip, ALimits);
  TFileReport report;
  detail::LoadSheetDrawings(package, ASheetPart, package.ReadRelationships(ASheetPart), *ABook.GetSheet(0),
                            ABook.Theme(), &report);
}

/// What the bag of a sheet holds, as a package.
std::vector<std::byte> Written(const TSheetDrawingBag& ABag) {
  fuzz::TStoredZip zip;
  zip.Add("xl/_rels/s.xml.rels",
          "<r><Relationship Id='d' Type='/drawing' Target='/" + ABag.DrawingPartPath().ToUtf8() + "'/></r>");
  zip.Add(ABag.DrawingPartPath().ToUtf8(), TextOf(ABag.DrawingXml()));
  zip.Add(ABag.DrawingRelsPath().ToUtf8(), TextOf(ABag.DrawingRelsXml()));
  for (const auto& [path, bytes] : ABag.Parts()) zip.Add(path.ToUtf8(), TextOf(bytes));
  return zip.Finish();
}

bool IsWritten(const TSheetDrawing& ADrawing) {
  return !ADrawing.Hidden && ADrawing.Kind != sdkUnknown &&
         (ADrawing.Kind != sdkPicture || !ADrawing.ImageBytes.empty());
}

}  // namespace

/// Whatever was read can be written; what is written reads without a complaint, as many drawings as went in, and once
/// more written it is the same.
extern "C" int LLVMFuzzerTestOneInput(const uint8_t* AData, size_t ASize) {
  if (ASize > 1 << 18) return 0;
  TWorkbook book;
  try {
    Load(PackageAround({reinterpret_cast<const char*>(AData), ASize}), "s.xml", kLimits, book);
  } catch (const ETessarineError&) {
    return 0;
  }
  TSheetDrawingList& drawings = book.GetSheet(0)->Drawings();
  int32_t written = 0;
  for (int32_t i = 0; i < drawings.Count(); ++i) {
    TSheetDrawing& drawing = *drawings.GetItem(i);
    written += IsWritten(drawing) ? 1 : 0;
    if (i % 2 == 1) drawing.ChartSpaceXml.clear();  // so that charts are built from what was read, too
  }
  detail::EnsureWorkbookDrawingBagsFromOverlays(book, nullptr);
  if (!drawings.Bag().HasDrawing()) {
    fuzz::Require(written == 0);
    return 0;
  }
  TWorkbook again;
  Load(Written(drawings.Bag()), "xl/s.xml", {}, again);
  fuzz::Require(again.GetSheet(0)->Drawings().Count() == written);
  const TDrawingBytes first = drawings.Bag().DrawingXml();
  detail::EnsureWorkbookDrawingBagsFromOverlays(again, nullptr);
  fuzz::Require(again.GetSheet(0)->Drawings().Bag().DrawingXml() == first);
  return 0;
}
