#include <tessarine/core/format/CellFormat.h>

#include <bit>
#include <string_view>

namespace tessarine {

namespace detail {

const TText& DefaultFontName() {
  static const TText name = TText::Immortal(u"Calibri");
  return name;
}

const TText& GeneralFormatCode() {
  static const TText code = TText::Immortal(u"General");
  return code;
}

}  // namespace detail

namespace {

/// Gathers fields into one hash; every step is a multiply and a fold of the high half (the constants are the
/// 64-bit golden ratio and an odd multiplier of the splitmix64 generator).
class TFieldHash {
 public:
  void Add(uint64_t AField) {
    FState = (FState ^ AField) * 0x9E3779B97F4A7C15u;
    FState ^= FState >> 32;
  }
  void Add(int32_t AField) { Add(static_cast<uint64_t>(static_cast<uint32_t>(AField))); }
  void Add(double AField) { Add(std::bit_cast<uint64_t>(AField + 0.0)); }  // -0.0 becomes 0.0
  void Add(std::u16string_view AText) { Add(static_cast<uint64_t>(std::hash<std::u16string_view>()(AText))); }
  void Add(const TColorRef& AColor) {
    Add((static_cast<uint64_t>(AColor.ARGB) << 32) | static_cast<uint32_t>(AColor.ThemeIndex));
    Add(AColor.Tint);
  }
  void Add(const TBorderSide& ASide) {
    Add(static_cast<uint64_t>(ASide.Style));
    Add(ASide.Color);
  }

  /// Small enumerations and Booleans share one word.
  template <class... TFields>
  void AddSmall(TFields... AFields) {
    uint64_t word = 0;
    ((word = (word << 8) | static_cast<uint8_t>(AFields)), ...);
    Add(word);
  }

  size_t Result() const { return static_cast<size_t>((FState ^ (FState >> 29)) * 0xBF58476D1CE4E5B9u); }

 private:
  uint64_t FState = 0;
};

}  // namespace

const TCellFormat& TCellFormat::Default() {
  static const TCellFormat format;
  return format;
}

bool TCellFormat::Equals(const TCellFormat& AOther) const {
  return Font.Name == AOther.Font.Name && Font.Size == AOther.Font.Size && Font.Bold == AOther.Font.Bold &&
         Font.Italic == AOther.Font.Italic && NumberFormat == AOther.NumberFormat;
}

size_t HashOf(const TCellFormat& AFormat) {
  TFieldHash hash;
  const TCellFontInfo& font = AFormat.Font;
  hash.Add(font.Name.View());
  hash.Add(static_cast<double>(font.Size));
  hash.AddSmall(font.Bold, font.Italic, font.Underline, font.Strikethrough, font.Script, AFormat.Locked,
                AFormat.Hidden);
  hash.Add(font.Color);

  const TCellFillInfo& fill = AFormat.Fill;
  hash.Add(fill.PatternType);
  hash.Add(fill.ForegroundColor);
  hash.Add(fill.BackgroundColor);
  hash.Add(fill.GradientAngle);

  const TCellBorderInfo& border = AFormat.Border;
  for (const TBorderSide* side : {&border.Left, &border.Top, &border.Right, &border.Bottom, &border.Diagonal})
    hash.Add(*side);

  const TCellAlignmentInfo& alignment = AFormat.Alignment;
  hash.AddSmall(border.DiagonalUp, border.DiagonalDown, alignment.Horizontal, alignment.Vertical, alignment.WrapText,
                alignment.ShrinkToFit, alignment.ReadingOrder);
  hash.Add(alignment.Indent);
  hash.Add(alignment.TextRotation);
  for (const double length :
       {alignment.MarginLeftCm, alignment.MarginRightCm, alignment.PaddingLeftCm, alignment.PaddingRightCm})
    hash.Add(length);
  hash.Add(AFormat.NumberFormat.View());
  return hash.Result();
}

}  // namespace tessarine
