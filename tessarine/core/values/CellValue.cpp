#include <tessarine/core/values/CellValue.h>

#include <array>

#include <tessarine/platform/Numbers.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

const TText& ErrorText(TCellErrorCode ACode) {
  static const std::array<TText, 10> texts = {
      TText::Immortal(u"#ERROR!"), TText::Immortal(u"#DIV/0!"), TText::Immortal(u"#N/A"),  TText::Immortal(u"#NAME?"),
      TText::Immortal(u"#NULL!"),  TText::Immortal(u"#NUM!"),   TText::Immortal(u"#REF!"), TText::Immortal(u"#VALUE!"),
      TText::Immortal(u"#CIRC!"),  TText::Immortal(u"#SPILL!"),
  };
  const auto index = static_cast<size_t>(ACode);
  return texts[index < texts.size() ? index : 0];
}

std::u16string_view BooleanText(bool AValue) { return AValue ? u"TRUE" : u"FALSE"; }

/// The general number text with the zeros cut that stand at its very end behind a ".".
size_t WriteDisplayNumber(double ANumber, char16_t* ABuffer) {
  size_t length = WriteGeneralNumber(ANumber, ABuffer);
  if (std::u16string_view(ABuffer, length).find(u'.') == std::u16string_view::npos) return length;
  while (length > 0 && ABuffer[length - 1] == u'0') --length;
  if (length > 0 && ABuffer[length - 1] == u'.') --length;
  return length;
}

}  // namespace

TText ErrorCodeToString(TCellErrorCode ACode) { return ErrorText(ACode); }

TTessarineFileFormat FileFormatFromExtension(std::string_view APath) {
  const size_t separator = APath.find_last_of("/\\");
  const size_t dot = APath.rfind('.');
  if (dot == APath.npos || (separator != APath.npos && dot < separator)) return ffAuto;
  std::string extension;
  for (const char unit : APath.substr(dot))
    extension += unit >= 'A' && unit <= 'Z' ? static_cast<char>(unit + 32) : unit;
  if (extension == ".tsr") return ffTsr;
  if (extension == ".xlsx" || extension == ".xlsm") return ffXlsx;
  if (extension == ".ods") return ffOds;
  if (extension == ".csv") return ffCsv;
  return ffAuto;
}

TCellValue TCellValue::FromFormula(std::u16string_view AFormula) {
  TCellValue value;
  value.Kind = cvkFormula;
  if (AFormula.empty() || AFormula.front() == u'=') {
    value.Text = TText(AFormula);
  } else {
    value.Text = TText::Build(AFormula.size() + 1, [&](char16_t* AData) {
      AData[0] = u'=';
      AFormula.copy(AData + 1, AFormula.size());
    });
  }
  return value;
}

TCellValue TCellValue::FromView(const TValueView& AView) {
  TCellValue value;
  value.Kind = AView.Kind;
  switch (AView.Kind) {
    case cvkNumber: value.Number = AView.Number; break;
    case cvkText:
    case cvkFormula: value.Text = TText::Share(AView.Block); break;
    case cvkBoolean: value.BooleanValue = AView.BooleanValue; break;
    case cvkError: value.ErrorCode = AView.ErrorCode; break;
    case cvkEmpty: break;
  }
  return value;
}

TText TCellValue::ToDisplayString() const {
  switch (Kind) {
    case cvkText:
    case cvkFormula: return Text;
    case cvkError: return ErrorText(ErrorCode);
    case cvkNumber: {
      char16_t buffer[40];
      return TText(std::u16string_view(buffer, WriteDisplayNumber(Number, buffer)));
    }
    case cvkBoolean: {
      static const TText texts[] = {TText::Immortal(u"FALSE"), TText::Immortal(u"TRUE")};
      return texts[BooleanValue ? 1 : 0];
    }
    case cvkEmpty: break;
  }
  return {};
}

void AppendDisplayString(const TValueView& AValue, std::u16string& AText) {
  if (AValue.Kind == cvkNumber) {
    char16_t buffer[40];
    AText.append(buffer, WriteDisplayNumber(AValue.Number, buffer));
  } else {
    AText += DisplayView(AValue, AText);
  }
}

std::u16string_view DisplayView(const TValueView& AValue, std::u16string& ABuffer) {
  switch (AValue.Kind) {
    case cvkText:
    case cvkFormula: return AValue.Text();
    case cvkError: return ErrorText(AValue.ErrorCode).View();
    case cvkBoolean: return BooleanText(AValue.BooleanValue);
    case cvkNumber: {
      ABuffer.resize(40);
      ABuffer.resize(WriteDisplayNumber(AValue.Number, ABuffer.data()));
      return ABuffer;
    }
    case cvkEmpty: break;
  }
  return {};
}

}  // namespace tessarine
