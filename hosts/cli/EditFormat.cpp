#include <algorithm>
#include <unordered_map>
#include <vector>

#include <hosts/cli/EditLine.h>
#include <hosts/cli/Ranges.h>
#include <tessarine/core/format/CellFormat.h>
#include <tessarine/core/format/StyleSheet.h>
#include <tessarine/core/lists/RowColSizing.h>
#include <tessarine/core/sheet/Workbook.h>
#include <tessarine/core/sheet/Worksheet.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine::cli {

namespace {

constexpr int64_t kMaxFormattedCells = 1'000'000;

/// "#RRGGBB".
TColorRef ColorOf(const TJsonValue& AValue, std::string_view AKey) {
  const std::string text = JsonTextOf(AValue, AKey);
  uint32_t color = 0;
  bool isColor = text.size() == 7 && text[0] == '#';
  for (size_t i = 1; isColor && i < text.size(); ++i) {
    const char digit = static_cast<char>(text[i] | 0x20);
    isColor = (digit >= '0' && digit <= '9') || (digit >= 'a' && digit <= 'f');
    color = color * 16 + static_cast<uint32_t>(digit <= '9' ? digit - '0' : digit - 'a' + 10);
  }
  if (!isColor) FailEdit("\"" + std::string(AKey) + "\" is a colour such as \"#1F77B4\"");
  return TColorRef::FromARGB(0xFF000000u | color);
}

TBorderLineStyle LineStyleOf(const TJsonValue& AValue, std::string_view AKey) {
  return WordOf<TBorderLineStyle>({{"none", blsNone},
                                   {"thin", blsThin},
                                   {"medium", blsMedium},
                                   {"thick", blsThick},
                                   {"dashed", blsDashed},
                                   {"dotted", blsDotted},
                                   {"double", blsDouble},
                                   {"hair", blsHair}},
                                  JsonTextOf(AValue, AKey), AKey);
}

/// One word for all four sides, or an object with a word for some of them.
void SetBorder(const TJsonValue& AValue, TCellFormat& AFormat) {
  TCellBorderInfo& border = AFormat.Border;
  if (AValue.Kind != jkObject) {
    for (TBorderSide* side : {&border.Left, &border.Top, &border.Right, &border.Bottom})
      side->Style = LineStyleOf(AValue, "border");
    return;
  }
  for (size_t i = 0; i < AValue.Names.size(); ++i) {
    TBorderSide* side = WordOf<TBorderSide*>(
        {{"left", &border.Left}, {"top", &border.Top}, {"right", &border.Right}, {"bottom", &border.Bottom}},
        AValue.Names[i], "border");
    side->Style = LineStyleOf(AValue.Items[i], "border");
  }
}

void SetBorderColor(const TJsonValue& AValue, TCellFormat& AFormat) {
  TCellBorderInfo& border = AFormat.Border;
  for (TBorderSide* side : {&border.Left, &border.Top, &border.Right, &border.Bottom})
    side->Color = ColorOf(AValue, "borderColor");
}

void SetFill(const TJsonValue& AValue, TCellFormat& AFormat) {
  AFormat.Fill = AValue.Kind == jkNull ? TCellFillInfo::None() : TCellFillInfo::Solid(ColorOf(AValue, "fill"));
}

void SetUnderline(const TJsonValue& AValue, TCellFormat& AFormat) {
  if (AValue.Kind == jkBoolean) {
    AFormat.Font.Underline = AValue.Boolean ? usSingle : usNone;
    return;
  }
  AFormat.Font.Underline = WordOf<TUnderlineStyle>({{"none", usNone}, {"single", usSingle}, {"double", usDouble}},
                                                   JsonTextOf(AValue, "underline"), "underline");
}

void SetHorizontal(const TJsonValue& AValue, TCellFormat& AFormat) {
  AFormat.Alignment.Horizontal = WordOf<THorizontalAlignment>({{"general", haGeneral},
                                                               {"left", haLeft},
                                                               {"center", haCenter},
                                                               {"right", haRight},
                                                               {"fill", haFill},
                                                               {"justify", haJustify}},
                                                              JsonTextOf(AValue, "horizontal"), "horizontal");
}

void SetVertical(const TJsonValue& AValue, TCellFormat& AFormat) {
  AFormat.Alignment.Vertical = WordOf<TVerticalAlignment>({{"top", vaTop}, {"center", vaCenter}, {"bottom", vaBottom}},
                                                          JsonTextOf(AValue, "vertical"), "vertical");
}

/// What a key sets. Rows are in the order of the alphabet.
struct TFormatKey {
  const char* Name;
  void (*Set)(const TJsonValue& AValue, TCellFormat& AFormat);
};

constexpr TFormatKey kFormatKeys[] = {
    {"bold", [](const TJsonValue& AValue, TCellFormat& AFormat) { AFormat.Font.Bold = JsonFlagOf(AValue, "bold"); }},
    {"border", SetBorder},
    {"borderColor", SetBorderColor},
    {"color", [](const TJsonValue& AValue, TCellFormat& AFormat) { AFormat.Font.Color = ColorOf(AValue, "color"); }},
    {"fill", SetFill},
    {"font", [](const TJsonValue& AValue,
                TCellFormat& AFormat) { AFormat.Font.Name = TText::FromUtf8(JsonTextOf(AValue, "font")); }},
    {"hidden", [](const TJsonValue& AValue, TCellFormat& AFormat) { AFormat.Hidden = JsonFlagOf(AValue, "hidden"); }},
    {"horizontal", SetHorizontal},
    {"indent", [](const TJsonValue& AValue,
                  TCellFormat& AFormat) { AFormat.Alignment.Indent = JsonIntegerOf(AValue, "indent", 0, 250); }},
    {"italic",
     [](const TJsonValue& AValue, TCellFormat& AFormat) { AFormat.Font.Italic = JsonFlagOf(AValue, "italic"); }},
    {"locked", [](const TJsonValue& AValue, TCellFormat& AFormat) { AFormat.Locked = JsonFlagOf(AValue, "locked"); }},
    {"number", [](const TJsonValue& AValue,
                  TCellFormat& AFormat) { AFormat.NumberFormat = TText::FromUtf8(JsonTextOf(AValue, "number")); }},
    {"rotation",
     [](const TJsonValue& AValue, TCellFormat& AFormat) {
       AFormat.Alignment.TextRotation = JsonIntegerOf(AValue, "rotation", -90, 90);
     }},
    {"size",
     [](const TJsonValue& AValue, TCellFormat& AFormat) {
       const double size = JsonNumberOf(AValue, "size");
       if (!(size >= 1 && size <= 409)) FailEdit("\"size\" is a number of points from 1 to 409");
       AFormat.Font.Size = static_cast<float>(size);
     }},
    {"strike",
     [](const TJsonValue& AValue, TCellFormat& AFormat) { AFormat.Font.Strikethrough = JsonFlagOf(AValue, "strike"); }},
    {"underline", SetUnderline},
    {"vertical", SetVertical},
    {"wrap",
     [](const TJsonValue& AValue, TCellFormat& AFormat) { AFormat.Alignment.WrapText = JsonFlagOf(AValue, "wrap"); }},
};

/// Gives cells their changed formats; cells of one look before have one style after.
class TFormatter {
 public:
  explicit TFormatter(const TEditLine& ALine) : FSheet(ALine.Sheet()), FStyles(ALine.Workbook().StyleSheet()) {
    for (const TFormatKey& key : kFormatKeys)
      if (const TJsonValue* value = ALine.Find(key.Name)) FChanges.push_back({key.Set, value});
  }

  bool IsEmpty() const { return FChanges.empty(); }

  void Format(TCellAddress AAddress) {
    TCell cell = FSheet.GetCell(AAddress);
    cell.StyleIndex = cell.HasFormatOverride ? StyleOf(cell.FormatOverride) : ChangedStyle(cell.StyleIndex);
    cell.HasFormatOverride = false;
    cell.FormatOverride = {};
    FSheet.SetCell(AAddress, cell);
  }

 private:
  struct TChange {
    void (*Set)(const TJsonValue& AValue, TCellFormat& AFormat);
    const TJsonValue* Value;
  };

  int32_t ChangedStyle(int32_t AStyle) {
    const auto [place, isNew] = FNewStyles.try_emplace(AStyle, 0);
    if (isNew) place->second = StyleOf(FStyles.GetCellXf(AStyle));
    return place->second;
  }

  /// The style of a format after the change: one that is there, or a new one.
  int32_t StyleOf(TCellFormat AFormat) {
    for (const TChange& change : FChanges) change.Set(*change.Value, AFormat);
    const auto& styles = FStyles.CellXfs();
    const auto found = std::find(styles.begin(), styles.end(), AFormat);
    if (found != styles.end()) return static_cast<int32_t>(found - styles.begin());
    return FStyles.AddCellXf(std::move(AFormat));
  }

  TWorksheet& FSheet;
  TTessarineStyleSheet& FStyles;
  std::vector<TChange> FChanges;
  std::unordered_map<int32_t, int32_t> FNewStyles;
};

/// Whole columns and rows reach as far as cells are used.
TCellRange CellsToFormat(const TCellRange& ARange, const TWorksheet& ASheet) {
  const TCellRange used = UsedPartOf(ARange, ASheet);
  TCellRange range = ARange;
  if (ARange.Height() == kMaxRow) range.EndRow = used.EndRow;
  if (ARange.Width() == kMaxCol) range.EndCol = used.EndCol;
  if (int64_t{range.Width()} * range.Height() > kMaxFormattedCells)
    FailEdit(Utf16ToUtf8(range.ToA1()) + " has more than " + std::to_string(kMaxFormattedCells) +
             " cells; format whole columns, or less at a time");
  return range;
}

double SizeOf(const TEditLine& ALine, std::string_view AKey, double AMost) {
  const double size = JsonNumberOf(ALine.Get(AKey), AKey);
  if (!(size >= 0 && size <= AMost))
    FailEdit("\"" + std::string(AKey) + "\" is a number from 0 to " + std::to_string(static_cast<int>(AMost)));
  return size;
}

/// Widths in characters, heights in points.
void SetSizes(const TEditLine& ALine, const TCellRange& ARange) {
  TRowColSizing& sizing = ALine.Sheet().Sizing();
  if (ALine.Find("width")) {
    const double width = SizeOf(ALine, "width", 255);
    for (int32_t col = ARange.StartCol; col <= ARange.EndCol; ++col) sizing.SetColWidthChars(col, width);
  }
  if (ALine.Find("height")) {
    const double height = SizeOf(ALine, "height", 409);
    for (int32_t row = ARange.StartRow; row <= ARange.EndRow; ++row) sizing.SetRowHeightPt(row, height);
  }
}

}  // namespace

std::string FormatKeys() {
  std::string keys;
  for (const TFormatKey& key : kFormatKeys) keys += std::string(key.Name) + " ";
  return keys + "height width";
}

void EditFormat(const TEditLine& ALine) {
  const TCellRange range = ALine.Range("range");
  TFormatter formatter(ALine);
  const bool hasSizes = ALine.Find("width") || ALine.Find("height");
  if (formatter.IsEmpty() && !hasSizes) FailEdit("say what to set; the keys are: " + FormatKeys());
  SetSizes(ALine, range);
  if (formatter.IsEmpty()) return;
  const TCellRange cells = CellsToFormat(range, ALine.Sheet());
  for (int32_t row = cells.StartRow; row <= cells.EndRow; ++row)
    for (int32_t col = cells.StartCol; col <= cells.EndCol; ++col) formatter.Format({col, row});
}

}  // namespace tessarine::cli
