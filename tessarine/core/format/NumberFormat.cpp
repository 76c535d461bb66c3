#include <tessarine/core/format/NumberFormat.h>

#include <array>
#include <memory>
#include <unordered_map>

#include <tessarine/core/format/detail/NumberFormatCode.h>
#include <tessarine/core/format/detail/NumberProgram.h>
#include <tessarine/platform/Locale.h>
#include <tessarine/platform/Unicode.h>

namespace tessarine {

namespace {

using detail::TNumberProgram;

/// The compiled codes of a thread.
/// 1. FPrograms owns those of short codes, keyed by their own text; when it is full it starts anew.
/// 2. FRecent guesses a program by where the code stands in memory. A guess counts only if the texts are equal, so it
///    does not matter when that memory has been given to another text.
/// 3. Of long codes only the last one is kept, so hostile files cannot fill the memory.
class TNumberProgramCache {
 public:
  const TNumberProgram& Find(std::u16string_view ACode) {
    const TNumberProgram*& recent = FRecent[SlotOf(ACode)];
    if (!recent || recent->Code() != ACode) {
      if (ACode.size() > kMostUnits) return FindLong(ACode);
      if (FPrograms.size() >= kMostPrograms && !FPrograms.contains(ACode)) Clear();
      recent = &FindOrCompile(ACode);
    }
    return *recent;
  }

 private:
  static constexpr size_t kSlots = 128;
  static constexpr size_t kMostPrograms = 512;
  static constexpr size_t kMostUnits = 256;

  static size_t SlotOf(std::u16string_view ACode) {
    const auto place = reinterpret_cast<uintptr_t>(ACode.data());
    return ((place >> 4) ^ (place >> 11)) % kSlots;
  }

  void Clear() {
    FRecent.fill(nullptr);
    FPrograms.clear();
  }

  const TNumberProgram& FindOrCompile(std::u16string_view ACode) {
    const auto found = FPrograms.find(ACode);
    if (found != FPrograms.end()) return *found->second;
    auto program = std::make_unique<TNumberProgram>(ACode);
    const std::u16string_view key = program->Code();
    return *FPrograms.emplace(key, std::move(program)).first->second;
  }

  const TNumberProgram& FindLong(std::u16string_view ACode) {
    if (!FLong || FLong->Code() != ACode) FLong = std::make_unique<TNumberProgram>(ACode);
    return *FLong;
  }

  std::array<const TNumberProgram*, kSlots> FRecent{};
  std::unordered_map<std::u16string_view, std::unique_ptr<TNumberProgram>> FPrograms;
  std::unique_ptr<TNumberProgram> FLong;
};

const TNumberProgram& ProgramOf(std::u16string_view ACode) {
  thread_local TNumberProgramCache cache;
  return cache.Find(ACode);
}

constexpr size_t kMostUnitsKept = 4096;  // in a thread's buffer between two calls

/// The section that applies, with its tags carried out.
detail::TStrippedSection StrippedSectionFor(double AValue, std::u16string_view AFormat) {
  return detail::StripTags(detail::SelectSection(detail::SplitSections(TrimSpaces(AFormat)), AValue));
}

}  // namespace

void AppendFormattedNumber(double AValue, std::u16string_view AFormat, std::u16string& AOut) {
  const bool isTooLong = AFormat.size() > kMaxFormatCodeLength;
  ProgramOf(isTooLong ? std::u16string_view() : AFormat).Append(AValue, CurrentFormatSettings(), AOut);
}

TText FormatNumber(double AValue, std::u16string_view AFormat) {
  thread_local std::u16string buffer;
  buffer.clear();
  AppendFormattedNumber(AValue, AFormat, buffer);
  const TText text(buffer);
  if (buffer.capacity() > kMostUnitsKept) std::u16string().swap(buffer);
  return text;
}

void AppendFormattedValue(const TValueView& AValue, std::u16string_view AFormat, std::u16string& AOut) {
  switch (AValue.Kind) {
    case cvkEmpty: break;
    case cvkText:
    case cvkFormula: AOut += AValue.Text(); break;
    case cvkNumber: AppendFormattedNumber(AValue.Number, AFormat, AOut); break;
    case cvkBoolean: AOut += AValue.BooleanValue ? u"TRUE" : u"FALSE"; break;
    case cvkError: AOut += ErrorCodeToString(AValue.ErrorCode).View(); break;
  }
}

TText FormatCellValue(const TCellValue& AValue, std::u16string_view AFormat) {
  if (AValue.Kind == cvkText || AValue.Kind == cvkFormula) return AValue.Text;
  if (AValue.Kind == cvkError) return ErrorCodeToString(AValue.ErrorCode);
  std::u16string text;
  AppendFormattedValue(AValue.View(), AFormat, text);
  return text;
}

TNumberFormatColor NumberFormatColor(double AValue, std::u16string_view AFormat) {
  if (AFormat.size() > kMaxFormatCodeLength || AFormat.find(u'[') == std::u16string_view::npos) return {};
  const detail::TStrippedSection section = StrippedSectionFor(AValue, AFormat);
  return {section.ColorFound, section.ARGB};
}

std::optional<TNumberFillSplit> TryFormatNumberFillSplit(double AValue, std::u16string_view AFormat) {
  if (AFormat.size() > kMaxFormatCodeLength || AFormat.find(u'*') == std::u16string_view::npos) return std::nullopt;
  const std::u16string code = StrippedSectionFor(AValue, AFormat).Code;
  const std::u16string_view section = code;
  const size_t fill = detail::FindFill(section);
  if (fill == std::u16string_view::npos) return std::nullopt;
  const std::u16string left = detail::WithoutMarks(detail::MaskSection(section.substr(0, fill)));
  const std::u16string_view rightCode = fill + 2 < section.size() ? section.substr(fill + 2) : std::u16string_view();
  std::u16string right;
  detail::TSectionProgram(rightCode).Append(AValue == 0 ? 0 : AValue, CurrentFormatSettings(), right);
  return TNumberFillSplit{left, right};
}

bool IsTextNumberFormat(std::u16string_view AFormat) {
  const std::u16string_view code = TrimSpaces(AFormat);
  return code == u"@" || EqualAsciiNoCase(code, u"Text");
}

}  // namespace tessarine
