#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include <tessarine/core/format/CellFormat.h>
#include <tessarine/io/ods/detail/OdsPropertyReader.h>
#include <tessarine/platform/ReadLimits.h>

namespace tessarine {
class TTessarineTheme;
class TXmlReader;
struct TXmlNode;
}  // namespace tessarine

namespace tessarine::detail {

/// What a style is for. The names that files use are in the same order in the source.
enum class TOdsFamily : uint8_t { ofCell, ofColumn, ofRow, ofTable, ofText, ofGraphic, ofChart, ofCount };
using enum TOdsFamily;

/// The property elements of a style.
enum class TOdsGroup : uint8_t { ogText, ogParagraph, ogCell, ogColumn, ogRow, ogTable, ogGraphic, ogChart, ogCount };
using enum TOdsGroup;

/// How a shape is filled and drawn.
struct TOdsGraphicStyle {
  bool HasFill = true;
  bool HasStroke = true;
  std::optional<uint32_t> FillColor;  // ARGB
  std::optional<uint32_t> StrokeColor;
  double StrokeWidthCm = 0;  // 0: not stated
};

/// The named styles of a document, common and automatic ones together; of two with one name and purpose the later one
/// counts. Everything is read first and asked afterwards.
class TOdsStyleReader {
 public:
  /// ATheme is what colours by slot refer to, or null; it outlives the reader.
  TOdsStyleReader(const TReadLimits& ALimits, TOdsFontInstalled AFontInstalled, const TTessarineTheme* ATheme = nullptr)
      : FLimits(ALimits), FProperties(std::move(AFontInstalled), ATheme) {}

  /// Reads a part that holds nothing else of interest, to its end.
  void LoadPart(std::string_view ABytes, std::string_view APartName);

  /// Called at the start event of an element below a document's root: reads it if it holds styles or font faces, and
  /// goes on to its end event in every case.
  void ReadSection(TXmlReader& AReader);

  /// The format of a cell style; of the style "Default" for a name that does not exist. Valid as long as the reader.
  const TCellFormat& GetCellFormat(std::string_view AName);

  /// ABase with what a text style says of fonts.
  TCellFontInfo GetTextFont(std::string_view AName, const TCellFontInfo& ABase) const;

  /// The code of a data style, "General" for a name that does not exist.
  TText GetNumberFormat(std::string_view AName) const;

  /// Centimetres; nothing when the style does not exist or says nothing.
  std::optional<double> GetColWidthCm(std::string_view AName) const;
  std::optional<double> GetRowHeightCm(std::string_view AName) const;

  /// How wide or high lines of a style are. For the default size of a sheet there is nothing to set.
  struct TLineSize {
    double Size = 0;  // characters or points
    bool IsDefault = false;
  };
  std::optional<TLineSize> GetColWidth(std::string_view AName) const;
  std::optional<TLineSize> GetRowHeight(std::string_view AName) const;

  std::optional<TOdsGraphicStyle> TryGetGraphicStyle(std::string_view AName, TOdsFamily AFamily = ofGraphic) const;

  bool Has(TOdsFamily AFamily, std::string_view AName) const;

  /// What the style, or the nearest of those that it inherits from, says; empty when none does.
  std::string_view Property(TOdsFamily AFamily, std::string_view AName, TOdsGroup AGroup,
                            std::string_view AProperty) const;

  /// Conditions of cell styles, which mean conditional formats.
  size_t ConditionCount() const { return FConditions; }

 private:
  struct TStyle {
    std::string Parent;
    std::string DataStyle;
    std::optional<std::string> Code;  // of a format that needs no data style
    TOdsProperties Groups[static_cast<size_t>(ogCount)];
    std::optional<TCellFormat> Format;  // of a cell style, once it was asked for
    bool IsResolving = false;

    const TOdsProperties& Group(TOdsGroup AGroup) const { return Groups[static_cast<size_t>(AGroup)]; }
  };
  struct TCondition {
    std::string Text;
    std::string DataStyle;
  };
  struct TNumberStyle {
    std::u16string Code;
    std::u16string ExactCode;  // in its own spelling; empty when the file does not say
    bool IsText = false;
    std::vector<TCondition> Conditions;
    mutable TText Joined;  // with its conditions, shared by all styles that use it; empty until one asks
  };
  using TStyles = TOdsByName<TStyle>;

  TText JoinedCode(const TNumberStyle& AStyle) const;

  TStyles& Styles(TOdsFamily AFamily) { return FStyles[static_cast<size_t>(AFamily)]; }
  const TStyles& Styles(TOdsFamily AFamily) const { return FStyles[static_cast<size_t>(AFamily)]; }
  const TStyle* Find(TOdsFamily AFamily, std::string_view AName) const;

  void ReadStyle(const TXmlNode* ANode, bool AIsDefault);
  void ReadNumberStyle(const TXmlNode* ANode);
  const TCellFormat& Resolve(TStyle& AStyle);
  void Apply(const TStyle& AStyle, TCellFormat& AFormat) const;

  const TReadLimits FLimits;
  TOdsPropertyReader FProperties;
  TStyles FStyles[static_cast<size_t>(ofCount)];
  TStyle FCellDefaults;  // what all cell styles begin with
  TOdsByName<TNumberStyle> FNumberStyles;
  size_t FConditions = 0;
};

}  // namespace tessarine::detail
