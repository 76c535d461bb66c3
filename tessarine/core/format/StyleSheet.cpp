#include <tessarine/core/format/StyleSheet.h>

#include <array>
#include <string_view>
#include <utility>

namespace tessarine {

namespace {

constexpr int32_t kBuiltInFormatCount = 50;

constexpr std::u16string_view BuiltInCode(int32_t AId) {
  switch (AId) {
    case 1: return u"0";
    case 2: return u"0.00";
    case 3: return u"#,##0";
    case 4: return u"#,##0.00";
    case 5: return u"$#,##0_);($#,##0)";
    case 6: return u"$#,##0_);[Red]($#,##0)";
    case 7: return u"$#,##0.00_);($#,##0.00)";
    case 8: return u"$#,##0.00_);[Red]($#,##0.00)";
    case 9: return u"0%";
    case 10: return u"0.00%";
    case 11: return u"0.00E+00";
    case 12: return u"# ?/?";
    case 13:
      return u"# ?"
             u"?/?"
             u"?";  // in pieces: two question marks and a slash are a trigraph
    case 14: return u"m/d/yyyy";
    case 15: return u"d-mmm-yy";
    case 16: return u"d-mmm";
    case 17: return u"mmm-yy";
    case 18: return u"h:mm AM/PM";
    case 19: return u"h:mm:ss AM/PM";
    case 20: return u"h:mm";
    case 21: return u"h:mm:ss";
    case 22: return u"m/d/yyyy h:mm";
    case 37: return u"#,##0 ;(#,##0)";
    case 38: return u"#,##0 ;[Red](#,##0)";
    case 39: return u"#,##0.00;(#,##0.00)";
    case 40: return u"#,##0.00;[Red](#,##0.00)";
    case 41: return u"_(* #,##0_);_(* (#,##0);_(* \"-\"_);_(@_)";
    case 42: return u"_($* #,##0_);_($* (#,##0);_($* \"-\"_);_(@_)";
    case 43:
      return u"_(* #,##0.00_);_(* (#,##0.00);_(* \"-\"?"
             u"?_);_(@_)";
    case 44:
      return u"_($* #,##0.00_);_($* (#,##0.00);_($* \"-\"?"
             u"?_);_(@_)";
    case 45: return u"mm:ss";
    case 46: return u"[h]:mm:ss";
    case 47: return u"mmss.0";
    case 48: return u"##0.0E+0";
    case 49: return u"@";
    default: return {};
  }
}

std::array<TText, kBuiltInFormatCount> MakeBuiltInFormats() {
  std::array<TText, kBuiltInFormatCount> codes;
  for (int32_t id = 0; id < kBuiltInFormatCount; ++id) {
    const std::u16string_view code = BuiltInCode(id);
    codes[static_cast<size_t>(id)] = code.empty() ? detail::GeneralFormatCode() : TText::Immortal(code);
  }
  return codes;
}

}  // namespace

void TTessarineStyleSheet::Clear() {
  FFonts.assign(1, TCellFontInfo::Default());
  FFills.assign(1, TCellFillInfo::None());
  FBorders.assign(1, TCellBorderInfo::None());
  FNumFmts.clear();
  FCellXfs.assign(1, TCellFormat::Default());
  FCellStyleXfs.clear();
  ++FVersion;
}

int32_t TTessarineStyleSheet::AddFont(TCellFontInfo AFont) {
  FFonts.push_back(std::move(AFont));
  ++FVersion;
  return static_cast<int32_t>(FFonts.size() - 1);
}

int32_t TTessarineStyleSheet::AddFill(const TCellFillInfo& AFill) {
  FFills.push_back(AFill);
  ++FVersion;
  return static_cast<int32_t>(FFills.size() - 1);
}

int32_t TTessarineStyleSheet::AddBorder(const TCellBorderInfo& ABorder) {
  FBorders.push_back(ABorder);
  ++FVersion;
  return static_cast<int32_t>(FBorders.size() - 1);
}

int32_t TTessarineStyleSheet::AddCellXf(TCellFormat AFormat) {
  FCellXfs.push_back(std::move(AFormat));
  ++FVersion;
  return static_cast<int32_t>(FCellXfs.size() - 1);
}

int32_t TTessarineStyleSheet::AddCellStyleXf(TCellFormat AFormat) {
  FCellStyleXfs.push_back(std::move(AFormat));
  ++FVersion;
  return static_cast<int32_t>(FCellStyleXfs.size() - 1);
}

void TTessarineStyleSheet::ClearFonts() {
  FFonts.clear();
  ++FVersion;
}

void TTessarineStyleSheet::ClearFills() {
  FFills.clear();
  ++FVersion;
}

void TTessarineStyleSheet::ClearBorders() {
  FBorders.clear();
  ++FVersion;
}

void TTessarineStyleSheet::ClearCellXfs() {
  FCellXfs.clear();
  ++FVersion;
}

void TTessarineStyleSheet::ClearCellStyleXfs() {
  FCellStyleXfs.clear();
  ++FVersion;
}

void TTessarineStyleSheet::ClearNumFmts() {
  FNumFmts.clear();
  ++FVersion;
}

void TTessarineStyleSheet::RegisterNumFmt(int32_t AId, TText ACode) {
  FNumFmts.insert_or_assign(AId, std::move(ACode));
  ++FVersion;
}

const TText& TTessarineStyleSheet::GetNumFmt(int32_t AId) const {
  const auto found = FNumFmts.find(AId);
  return found != FNumFmts.end() ? found->second : BuiltInExcelNumberFormat(AId);
}

const TText& BuiltInExcelNumberFormat(int32_t AId) {
  static const std::array<TText, kBuiltInFormatCount> codes = MakeBuiltInFormats();
  return AId >= 0 && AId < kBuiltInFormatCount ? codes[static_cast<size_t>(AId)] : detail::GeneralFormatCode();
}

}  // namespace tessarine
