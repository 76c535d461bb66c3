#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tessarine {
struct TSheetDrawing;
}

namespace tessarine::detail {

/// Builds a drawing part (ECMA-376-1 §20.5.2.35), one anchor with one object after the other.
class TXlsxDrawingXml {
 public:
  TXlsxDrawingXml();

  /// A picture whose bytes stand in the part of the relationship AImageId.
  void AddPicture(const TSheetDrawing& ADrawing, std::string_view AImageId);
  /// A chart; AIsExtended for one of the types that came later, which has another namespace.
  void AddChart(const TSheetDrawing& ADrawing, std::string_view AChartId, bool AIsExtended);
  /// A shape, a text box or a line.
  void AddShape(const TSheetDrawing& ADrawing);

  bool IsEmpty() const { return FNextId == 1; }
  std::string Part() const { return FXml + "</xdr:wsDr>"; }

 private:
  void BeginAnchor(const TSheetDrawing& ADrawing);
  void EndAnchor(const TSheetDrawing& ADrawing);
  void Corner(const char* AElement, int32_t ACol, int64_t AColOffset, int32_t ARow, int64_t ARowOffset);
  void Names(const TSheetDrawing& ADrawing);
  void Transform(const TSheetDrawing& ADrawing);
  void ShapeProperties(const TSheetDrawing& ADrawing);
  void TextBody(const TSheetDrawing& ADrawing);
  void RunProperties(const char* AElement, const TSheetDrawing& ADrawing);
  void Paragraph(const TSheetDrawing& ADrawing, std::u16string_view AText);
  void Frame(const TSheetDrawing& ADrawing, std::string_view AUri, std::string_view AChartElement,
             std::string_view AChartId);

  std::string FXml;
  int64_t FNextId = 1;
};

}  // namespace tessarine::detail
