#pragma once

namespace tessarine {
class TTessarineTheme;
struct TSheetDrawing;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

/// Turning and mirroring of any object.
void ReadXlsxTransform(const TXmlNode* ATransform, TSheetDrawing& ADrawing);

/// A shape, a text box or a connector (ECMA-376-1 §20.5.2.29, §20.5.2.13): geometry, fill, line and text.
void ReadXlsxShape(const TXmlNode* AShape, const TTessarineTheme& ATheme, TSheetDrawing& ADrawing);

}  // namespace tessarine::detail
