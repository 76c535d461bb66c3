#include <memory>
#include <utility>

#include <tessarine/api/AuthoringSheet.h>
#include <tessarine/api/detail/DrawingAnchors.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Errors.h>
#include <tessarine/platform/Files.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

std::u16string_view ContentTypeOf(const std::string& AFilePath) {
  const size_t dot = AFilePath.find_last_of("./\\");
  const bool hasExtension = dot != std::string::npos && AFilePath[dot] == '.';
  const std::u16string extension = hasExtension ? ToAsciiLower(Utf8ToUtf16(AFilePath.substr(dot))) : std::u16string();
  if (extension == u".jpg" || extension == u".jpeg") return u"image/jpeg";
  if (extension == u".gif") return u"image/gif";
  if (extension == u".bmp") return u"image/bmp";
  return u"image/png";
}

TSheetDrawing& AddDirectly(TWorksheet& ASheet, std::unique_ptr<TSheetDrawing> ADrawing) {
  return *ASheet.Drawings().GetItem(ASheet.Drawings().Add(std::move(ADrawing)));
}

/// The place in the sheet's list of the drawing that is the AIndex-th of its kind; -1 when there is none.
int32_t PlaceOfDrawing(const TSheetDrawingList& ADrawings, TSheetDrawingKind AKind, int32_t AIndex) {
  int32_t left = AIndex;
  for (int32_t place = 0; AIndex >= 0 && place < ADrawings.Count(); ++place) {
    if (ADrawings.GetItem(place)->Kind == AKind && left-- == 0) return place;
  }
  return -1;
}

}  // namespace

TSheetDrawing& TAuthoringSheet::AddChart(TTextArg ATitle, TSheetChartType AChartType,
                                         std::vector<TSheetChartSeries> ASeries, TTextArg AAnchorA1, int32_t AWidthCols,
                                         int32_t AHeightRows) const {
  return TessarineAddChart(FWorkbook, FSheet, ATitle.View(), AChartType, std::move(ASeries), AAnchorA1.View(),
                           AWidthCols, AHeightRows);
}

TSheetDrawing& TAuthoringSheet::AddChart(TTextArg ATitle, TSheetChartType AChartType, TTextArg AValuesFormula,
                                         TTextArg ACategoriesFormula, TTextArg AAnchorA1, int32_t AWidthCols,
                                         int32_t AHeightRows) const {
  return TessarineAddChart(FWorkbook, FSheet, ATitle.View(), AChartType, AValuesFormula.View(),
                           ACategoriesFormula.View(), AAnchorA1.View(), AWidthCols, AHeightRows);
}

TSheetDrawing& TAuthoringSheet::AddPictureFromFile(const std::string& AFilePath, TTextArg AAnchorA1, int32_t AWidthPx,
                                                   int32_t AHeightPx) const {
  const TSharedReadStream file = OpenSharedReadStream(AFilePath);
  const std::vector<std::byte> bytes = ReadAllBytes(*file.Stream, kMaxPictureBytes);
  return AddPictureFromBytes(bytes, ContentTypeOf(AFilePath), AAnchorA1.View(), AWidthPx, AHeightPx);
}

TSheetDrawing& TAuthoringSheet::AddPictureFromBytes(std::span<const std::byte> ABytes, TTextArg AContentType,
                                                    TTextArg AAnchorA1, int32_t AWidthPx, int32_t AHeightPx) const {
  return TessarineAddPictureBytes(FWorkbook, FSheet, ABytes, AContentType.View(), AAnchorA1.View(), AWidthPx,
                                  AHeightPx);
}

TSheetDrawing& TAuthoringSheet::AddShape(TTextArg APresetGeom, TTextArg AAnchorA1, int32_t AWidthPx, int32_t AHeightPx,
                                         TSheetColor AFill, TSheetColor ALine) const {
  auto shape = std::make_unique<TSheetDrawing>();
  shape->Anchor = detail::PixelAnchor(AAnchorA1, AWidthPx, AHeightPx);
  shape->Kind = sdkShape;
  shape->Name = detail::NextDrawingName(*FSheet, u"Shape", sdkShape);
  if (const auto geometry = TrimSpaces(APresetGeom); !geometry.empty()) shape->PresetGeom = TText(geometry);
  shape->HasFill = AFill != 0;
  if (shape->HasFill) shape->FillColor = SheetColorToBGR(AFill);
  shape->HasLine = ALine != 0;
  if (shape->HasLine) shape->LineColor = SheetColorToBGR(ALine);
  TSheetDrawing& drawing = AddDirectly(*FSheet, std::move(shape));
  Changed();
  return drawing;
}

TSheetDrawing& TAuthoringSheet::AddInkFromInkML(std::span<const std::byte> ABytes, TTextArg AAnchorA1, int32_t AWidthPx,
                                                int32_t AHeightPx) const {
  if (ABytes.empty()) throw EArgument("AddInk: empty ink data");
  auto ink = std::make_unique<TSheetDrawing>();
  ink->Anchor = detail::PixelAnchor(AAnchorA1, AWidthPx, AHeightPx);
  ink->Kind = sdkShape;
  ink->Name = detail::NextDrawingName(*FSheet, u"Ink", sdkShape);
  ink->HasFill = false;
  ink->HasLine = false;
  ink->SetInkMl(ABytes);
  TSheetDrawing& drawing = AddDirectly(*FSheet, std::move(ink));
  Changed();
  return drawing;
}

int32_t TAuthoringSheet::CountDrawings(TSheetDrawingKind AKind) const {
  int32_t count = 0;
  for (int32_t place = 0; place < FSheet->Drawings().Count(); ++place)
    count += FSheet->Drawings().GetItem(place)->Kind == AKind ? 1 : 0;
  return count;
}

TSheetDrawing* TAuthoringSheet::FindDrawing(TSheetDrawingKind AKind, int32_t AIndex) const {
  return FSheet->Drawings().GetItem(PlaceOfDrawing(FSheet->Drawings(), AKind, AIndex));
}

bool TAuthoringSheet::DeleteDrawing(TSheetDrawingKind AKind, int32_t AIndex) const {
  const int32_t place = PlaceOfDrawing(FSheet->Drawings(), AKind, AIndex);
  if (place < 0) return false;
  FSheet->Drawings().Delete(place);
  Changed();
  return true;
}

}  // namespace tessarine
