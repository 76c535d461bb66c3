#include <tessarine/io/ods/detail/OdsNumberStyleWriter.h>

#include <algorithm>
#include <cstddef>
#include <cstdio>
#include <vector>

#include <tessarine/core/format/NumberFormat.h>
#include <tessarine/core/format/detail/FractionText.h>
#include <tessarine/core/format/detail/NumberFormatCode.h>
#include <tessarine/io/ods/detail/OdsFormatPieces.h>
#include <tessarine/io/ods/detail/OdsStyleReader.h>
#include <tessarine/platform/Unicode.h>
#include <tessarine/platform/XmlText.h>

namespace tessarine::detail {

namespace {

void AppendAttribute(const char* AName, int64_t AValue, std::string& AOut) {
  AOut.append(" ").append(AName).append("=\"").append(std::to_string(AValue)).append("\"");
}

void AppendColor(const TOdsFormatSection& ASection, std::string& AOut) {
  if (!ASection.HasColor) return;
  constexpr uint32_t kGreen = 0xFF008000u;  // the green of format codes is the full one in files
  const uint32_t color = ASection.ARGB == kGreen ? 0xFF00FF00u : ASection.ARGB;
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "<style:text-properties fo:color=\"#%.6x\"/>", color & 0xFFFFFFu);
  AOut += buffer;
}

/// The children of a style, texts beside each other joined into one element.
class TChildren {
 public:
  explicit TChildren(std::string& AOut) : FOut(AOut) {}
  ~TChildren() { Flush(); }
  TChildren(const TChildren&) = delete;
  TChildren& operator=(const TChildren&) = delete;

  void Text(std::u16string_view AText) { FText += AText; }
  std::string& Element() {
    Flush();
    return FOut;
  }
  void Wrapped(const char* AElement, std::u16string_view AText) {
    Flush();
    FOut.append("<").append(AElement).append(">");
    AppendXmlText(AText, FOut);
    FOut.append("</").append(AElement).append(">");
  }
  /// What is no number: literals, fills, currencies.
  void Piece(const TOdsFormatPiece& APiece) {
    switch (APiece.Kind) {
      case opkFill: Wrapped("number:fill-character", APiece.Text); break;
      case opkCurrency: Wrapped("number:currency-symbol", APiece.Text); break;
      case opkLiteral:
      case opkUnits: Text(APiece.Text); break;
      case opkGeneral: Element() += "<number:number number:min-integer-digits=\"1\"/>"; break;
      case opkElapsed: break;
    }
  }

 private:
  void Flush() {
    if (FText.empty()) return;
    std::u16string text;
    text.swap(FText);
    Wrapped("number:text", text);
  }

  std::string& FOut;
  std::u16string FText;
};

// ---- numbers

bool IsDigitUnit(char16_t AUnit) { return AUnit == u'0' || AUnit == u'#' || AUnit == u'?'; }

/// What the placeholders of a section ask for.
struct TPattern {
  int IntegerPlaces = 0;
  int IntegerZeros = 0;
  int DecimalPlaces = 0;
  int DecimalZeros = 0;
  int ExponentDigits = 0;
  int Thousands = 0;  // commas behind the last place of the integer or decimal part
  bool Grouping = false;
  bool HasPoint = false;
  bool HasDigit = false;
  bool InExponent = false;
  bool IsExact = true;
  struct TEmbedded {
    int PlacesBefore;
    std::u16string Text;
  };
  std::vector<TEmbedded> Embedded;  // literals between integer places

  void AddUnit(char16_t AUnit) {
    if (AUnit == u'.') {
      HasPoint = true;
    } else if (AUnit == u',') {
      ++Thousands;
    } else if (IsDigitUnit(AUnit)) {
      AddDigit(AUnit);
    }
  }

 private:
  void AddDigit(char16_t AUnit) {
    HasDigit = true;
    IsExact = IsExact && AUnit != u'?';
    if (HasPoint) {
      ++DecimalPlaces;
      if (AUnit == u'0') DecimalZeros = DecimalPlaces;
      return;
    }
    Grouping = Grouping || Thousands > 0;
    Thousands = 0;
    ++IntegerPlaces;
    // Zeros count from the first one on: all places behind it are shown.
    if (AUnit == u'0' || IntegerZeros > 0) ++IntegerZeros;
  }
};

void AppendNumber(const TPattern& APattern, std::string& AOut) {
  const bool isScientific = APattern.ExponentDigits > 0;
  AOut += isScientific ? "<number:scientific-number" : "<number:number";
  AppendAttribute("number:decimal-places", APattern.DecimalPlaces, AOut);
  if (!isScientific || APattern.DecimalZeros != APattern.DecimalPlaces)
    AppendAttribute("number:min-decimal-places", APattern.DecimalZeros, AOut);
  AppendAttribute("number:min-integer-digits", APattern.IntegerZeros, AOut);
  if (isScientific) AppendAttribute("number:min-exponent-digits", APattern.ExponentDigits, AOut);
  if (APattern.Grouping) AOut += " number:grouping=\"true\"";
  if (APattern.Thousands > 0)
    AOut.append(" number:display-factor=\"1").append(size_t(APattern.Thousands) * 3, '0') += '"';
  if (isScientific || APattern.Embedded.empty()) {
    AOut += "/>";
    return;
  }
  AOut += '>';
  for (const auto& embedded : APattern.Embedded) {
    AOut += "<number:embedded-text";
    AppendAttribute("number:position", APattern.IntegerPlaces - embedded.PlacesBefore, AOut);
    AOut += '>';
    AppendXmlText(embedded.Text, AOut);
    AOut += "</number:embedded-text>";
  }
  AOut += "</number:number>";
}

/// One section of a code for numbers, as pieces and as the stretch of them that is the number.
class TNumberSection {
 public:
  explicit TNumberSection(std::u16string_view ACode) : FSection(CutOdsFormatSection(ACode, u"0#?.,%/@e")) {
    JoinDenominator();
    const auto& pieces = FSection.Pieces;
    FFirst = pieces.size();
    for (size_t i = 0; i < pieces.size(); ++i) {
      if (pieces[i].Kind == opkUnits && std::any_of(pieces[i].Text.begin(), pieces[i].Text.end(), IsDigitUnit)) {
        FFirst = std::min(FFirst, i);
        FLast = i;
      }
      FHasPercent = FHasPercent || (pieces[i].Kind == opkUnits && pieces[i].Text.find(u'%') != std::u16string::npos);
      FHasCurrency = FHasCurrency || pieces[i].Kind == opkCurrency;
    }
  }

  const char* Element() const {
    return FHasPercent ? "number:percentage-style" : FHasCurrency ? "number:currency-style" : "number:number-style";
  }

  /// False when the style cannot say all that the section does.
  bool Append(std::string& AOut) {
    AppendColor(FSection, AOut);
    TChildren children(AOut);
    // An empty section shows nothing, an empty style anything.
    if (FSection.Pieces.empty()) children.Element() += "<number:text/>";
    for (size_t i = 0; i < FSection.Pieces.size(); ++i) {
      if (i == FFirst) {
        AppendDigits(children);
        i = FLast;
      } else {
        children.Piece(FSection.Pieces[i]);
      }
    }
    return FSection.IsExact;
  }

 private:
  /// The digits behind a "/" are no placeholders and belong to the number all the same.
  void JoinDenominator() {
    auto& pieces = FSection.Pieces;
    for (size_t i = 0; i + 1 < pieces.size(); ++i) {
      if (pieces[i].Kind != opkUnits || !pieces[i].Text.ends_with(u'/') || pieces[i + 1].Kind != opkLiteral) continue;
      std::u16string& literal = pieces[i + 1].Text;
      const size_t end = std::min(literal.find_first_not_of(u"0123456789"), literal.size());
      pieces[i].Text += literal.substr(0, end);
      literal.erase(0, end);
    }
  }

  /// The pieces from the first placeholder to the last.
  void AppendDigits(TChildren& AChildren) {
    std::u16string before;  // units in front of the first placeholder and behind the last are texts
    std::u16string behind;
    std::u16string plain;
    TPattern pattern;
    for (size_t i = FFirst; i <= FLast; ++i) {
      const TOdsFormatPiece& piece = FSection.Pieces[i];
      if (piece.Kind != opkUnits) {
        const bool isSign = piece.Text == u"+" || piece.Text == u"-";
        if (pattern.InExponent && isSign) continue;
        if (pattern.HasPoint || pattern.InExponent) {
          FSection.IsExact = false;
        } else if (piece.Kind == opkLiteral && !piece.Text.empty()) {
          pattern.Embedded.push_back({pattern.IntegerPlaces, piece.Text});
        }
        plain += piece.Kind == opkLiteral ? piece.Text : std::u16string();
        continue;
      }
      plain += piece.Text;
      AddUnits(piece.Text, pattern, before, behind);
    }
    AChildren.Text(before);
    const auto slash = FindFractionSlash(plain);
    if (slash) {
      AppendFractionElement(plain, *slash, AChildren);
    } else {
      AppendNumber(pattern, AChildren.Element());
    }
    FSection.IsExact = FSection.IsExact && pattern.IsExact && !slash;
    AChildren.Text(behind);
  }

  static void AddUnits(std::u16string_view AUnits, TPattern& APattern, std::u16string& ABefore,
                       std::u16string& ABehind) {
    for (size_t i = 0; i < AUnits.size(); ++i) {
      const char16_t unit = AUnits[i];
      if (APattern.InExponent && IsDigitUnit(unit)) {
        ++APattern.ExponentDigits;
      } else if (unit == u'%' || unit == u'@') {
        (APattern.HasDigit ? ABehind : ABefore) += unit;
      } else if (AsciiLower(unit) == u'e') {
        APattern.InExponent = APattern.HasDigit;
      } else if (unit != u'/') {
        APattern.AddUnit(unit);
      }
    }
  }

  static void AppendFractionElement(std::u16string_view APlain, size_t ASlash, TChildren& AChildren) {
    const std::u16string_view left = APlain.substr(0, ASlash);
    const std::u16string_view right = TrimSpaces(APlain.substr(ASlash + 1));
    const size_t blank = TrimSpaces(left).find(u' ');
    std::string& out = AChildren.Element();
    out += "<number:fraction";
    if (blank != left.npos) AppendAttribute("number:min-integer-digits", left.find(u'0') < blank ? 1 : 0, out);
    const std::u16string_view numerator = blank == left.npos ? left : left.substr(blank);
    AppendAttribute("number:min-numerator-digits", std::count_if(numerator.begin(), numerator.end(), IsDigitUnit), out);
    if (!right.empty() && right[0] >= u'1' && right[0] <= u'9') {
      AppendAttribute("number:denominator-value", DenominatorLimit(right), out);
    } else {
      AppendAttribute("number:min-denominator-digits", std::count_if(right.begin(), right.end(), IsDigitUnit), out);
    }
    out += "/>";
  }

  TOdsFormatSection FSection;
  size_t FFirst = 0;  // pieces with placeholders; FFirst is behind the end when there are none
  size_t FLast = 0;
  bool FHasPercent = false;
  bool FHasCurrency = false;
};

// ---- dates and times

/// A piece of a date: letters of one kind beside each other, or something that is written as it is.
class TDateSection {
 public:
  explicit TDateSection(std::u16string_view ACode) : FSection(CutOdsFormatSection(ACode, u"ymdhsa.0")) {
    for (const TOdsFormatPiece& piece : FSection.Pieces) SplitPiece(piece);
  }

  bool HasDate() const {
    for (size_t i = 0; i < FFields.size(); ++i) {
      const char16_t unit = FFields[i].Unit;
      if (unit == u'y' || unit == u'd' || (unit == u'm' && !IsMinute(i))) return true;
    }
    return false;
  }
  bool IsElapsed() const {
    return std::any_of(FFields.begin(), FFields.end(), [](const TField& AField) { return AField.IsElapsed; });
  }

  bool Append(std::string& AOut) {
    AppendColor(FSection, AOut);
    TChildren children(AOut);
    for (size_t i = 0; i < FFields.size(); ++i) {
      if (FFields[i].Unit == 0) {
        children.Piece(FFields[i].Piece);
      } else {
        AppendField(i, children.Element());
      }
    }
    return FSection.IsExact;
  }

 private:
  struct TField {
    char16_t Unit = 0;  // y, m, d, h, s, a; 0 for what is no field
    int Count = 0;
    int Decimals = 0;  // of seconds
    bool IsElapsed = false;
    TOdsFormatPiece Piece;  // Unit 0
  };

  void SplitPiece(const TOdsFormatPiece& APiece) {
    if (APiece.Kind == opkElapsed) {
      FFields.push_back({APiece.Text[0], static_cast<int>(APiece.Text.size()), 0, true, {}});
      return;
    }
    if (APiece.Kind != opkUnits) {
      if (!APiece.Text.empty()) FFields.push_back({0, 0, 0, false, APiece});
      return;
    }
    if (APiece.Text == u"am/pm" || APiece.Text == u"a/p") {
      FFields.push_back({u'a', 1, 0, false, {}});
      return;
    }
    const std::u16string text = ToAsciiLower(APiece.Text);
    for (size_t i = 0; i < text.size();) {
      const size_t end = std::min(text.find_first_not_of(text[i], i), text.size());
      AddRun(text[i], end - i);
      i = end;
    }
  }

  /// Seconds take the decimals that follow them.
  void AddRun(char16_t AUnit, size_t ACount) {
    if (AUnit == u'.' || AUnit == u'0') {
      const bool behindSeconds = !FFields.empty() && FFields.back().Unit == u's';
      if (AUnit == u'0' && FPointPending) {
        FFields.back().Decimals = static_cast<int>(ACount);
      } else if (AUnit == u'.' && behindSeconds && ACount == 1) {
        FPointPending = true;
        return;
      } else {
        FFields.push_back({0, 0, 0, false, {opkLiteral, std::u16string(ACount, AUnit)}});
      }
    } else {
      if (FPointPending) FFields.push_back({0, 0, 0, false, {opkLiteral, u"."}});
      FFields.push_back({AUnit, static_cast<int>(std::min<size_t>(ACount, 9)), 0, false, {}});
    }
    FPointPending = false;
  }

  /// An "m" stands for minutes behind hours and before seconds.
  bool IsMinute(size_t AIndex) const {
    if (FFields[AIndex].IsElapsed) return true;
    if (FFields[AIndex].Count > 2) return false;
    for (size_t i = AIndex; i-- > 0;)
      if (FFields[i].Unit != 0) {
        if (FFields[i].Unit == u'h') return true;
        break;
      }
    for (size_t i = AIndex + 1; i < FFields.size(); ++i)
      if (FFields[i].Unit != 0) return FFields[i].Unit == u's';
    return false;
  }

  void AppendField(size_t AIndex, std::string& AOut) {
    const TField& field = FFields[AIndex];
    bool isLong = field.Count >= 2;
    const char* element = "number:am-pm";
    const char* more = "";
    switch (field.Unit) {
      case u'y':
        element = "number:year";
        isLong = field.Count > 2;
        break;
      case u'm':
        element = IsMinute(AIndex) ? "number:minutes" : "number:month";
        if (field.Count > 2) {
          more = " number:textual=\"true\"";
          isLong = field.Count == 4;
        }
        FSection.IsExact = FSection.IsExact && field.Count <= 4;
        break;
      case u'd':
        element = field.Count > 2 ? "number:day-of-week" : "number:day";
        isLong = field.Count == 2 || field.Count > 3;
        break;
      case u'h': element = "number:hours"; break;
      case u's': element = "number:seconds"; break;
      default: isLong = false;
    }
    AOut.append("<").append(element);
    if (isLong) AOut += " number:style=\"long\"";
    AOut += more;
    if (field.Decimals > 0) AppendAttribute("number:decimal-places", field.Decimals, AOut);
    AOut += "/>";
  }

  TOdsFormatSection FSection;
  std::vector<TField> FFields;
  bool FPointPending = false;
};

/// Dates and times, also those with decimals of seconds, which are numbers to the display engine.
bool IsDateCode(std::u16string_view ACode) {
  if (IsDateTimeCode(ACode)) return true;
  const TOdsFormatSection section = CutOdsFormatSection(SplitSections(ACode)[0], u"ymdhsa.0#?%");
  std::u16string units;
  for (const TOdsFormatPiece& piece : section.Pieces)
    if (piece.Kind == opkUnits || piece.Kind == opkElapsed) units += ToAsciiLower(piece.Text);
  return units.find_first_of(u"#?%") == units.npos && units.find(u"s.0") != units.npos;
}

bool IsTextSection(std::u16string_view ASection) {
  const TOdsFormatSection section = CutOdsFormatSection(ASection, u"@");
  return section.Pieces.size() == 1 && section.Pieces[0].Kind == opkUnits && section.Pieces[0].Text == u"@";
}

void OpenStyle(const char* AElement, const std::string& AName, const char* AMore, std::string& AOut) {
  AOut.append("<").append(AElement).append(" style:name=\"").append(AName).append("\"").append(AMore).append(">");
}

void CloseStyle(const char* AElement, std::string& AOut) { AOut.append("</").append(AElement).append(">"); }

bool AppendDateStyle(const std::vector<std::u16string_view>& ASections, const std::string& AName, std::string& AOut) {
  TDateSection section(ASections[0]);
  const char* element = section.HasDate() ? "number:date-style" : "number:time-style";
  const bool isElapsed = section.IsElapsed() && !section.HasDate();
  OpenStyle(element, AName, isElapsed ? " number:truncate-on-overflow=\"false\"" : "", AOut);
  const bool isExact = section.Append(AOut);
  CloseStyle(element, AOut);
  return isExact && (ASections.size() == 1 || (ASections.size() == 2 && IsTextSection(ASections[1])));
}

}  // namespace

const std::string& TOdsNumberStyleWriter::NameOf(std::u16string_view ACode) { return EntryOf(ACode).Name; }

bool TOdsNumberStyleWriter::IsExact(std::u16string_view ACode) { return EntryOf(ACode).IsExact; }

const TOdsNumberStyleWriter::TEntry& TOdsNumberStyleWriter::EntryOf(std::u16string_view ACode) {
  if (const auto found = FEntries.find(ACode); found != FEntries.end()) return found->second;
  TEntry entry;
  const std::u16string_view trimmed = TrimSpaces(ACode);
  if (!trimmed.empty() && !EqualAsciiNoCase(trimmed, u"general") && ACode.size() <= kMaxFormatCodeLength) {
    entry.Name = "N" + std::to_string(++FCount);
    const size_t start = FXml.size();
    entry.IsExact = AppendStyles(ACode, entry.Name);
    if (FHasMarks) MarkCode(ACode, entry.Name, start);
  }
  return FEntries.emplace(ACode, std::move(entry)).first->second;
}

/// Puts the code itself into a style that would be read as another one.
void TOdsNumberStyleWriter::MarkCode(std::u16string_view ACode, const std::string& AName, size_t AStart) {
  TOdsStyleReader reader(TReadLimits(), {});
  reader.LoadPart("<d><styles>" + FXml.substr(AStart) + "</styles></d>", "styles.xml");
  if (reader.GetNumberFormat(AName).View() == ACode) return;
  std::string mark = " tessarine:exact-code=\"";
  AppendXmlAttribute(ACode, mark);
  const std::string name = " style:name=\"" + AName + "\"";
  FXml.insert(FXml.find(name, AStart) + name.size(), mark += '"');
}

/// The sections for other signs are styles of their own, which the last one's conditions name.
bool TOdsNumberStyleWriter::AppendStyles(std::u16string_view ACode, const std::string& AName) {
  if (IsTextNumberFormat(ACode)) {
    OpenStyle("number:text-style", AName, "", FXml);
    FXml += "<number:text-content/></number:text-style>";
    return true;
  }
  std::vector<std::u16string_view> sections = SplitSections(ACode);
  if (IsDateCode(ACode)) return AppendDateStyle(sections, AName, FXml);
  bool isExact = sections.size() <= 3 || (sections.size() == 4 && IsTextSection(sections[3]));
  if (sections.size() == 2 && IsTextSection(sections[1])) sections.pop_back();
  if (sections.size() > 3) sections.resize(3);
  constexpr const char* kConditions[2][2] = {{"value()&gt;=0", ""}, {"value()&gt;0", "value()&lt;0"}};
  std::string maps;
  for (size_t i = 0; i < sections.size(); ++i) {
    const bool isLast = i + 1 == sections.size();
    const std::string name = isLast ? AName : AName + "P" + std::to_string(i);
    TNumberSection section(sections[i]);
    OpenStyle(section.Element(), name, isLast ? "" : " style:volatile=\"true\"", FXml);
    isExact = section.Append(FXml) && isExact;
    if (isLast) {
      FXml += maps;
    } else {
      maps.append("<style:map style:condition=\"").append(kConditions[sections.size() - 2][i]);
      maps.append("\" style:apply-style-name=\"").append(name).append("\"/>");
    }
    CloseStyle(section.Element(), FXml);
  }
  return isExact;
}

}  // namespace tessarine::detail
