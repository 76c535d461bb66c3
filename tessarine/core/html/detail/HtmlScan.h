#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>

/// The walk over HTML that everything here shares: texts and tags, one after another, in time linear in the document.
namespace tessarine::detail {

enum class THtmlPiece : uint8_t { hpText, hpTag, hpEnd };
using enum THtmlPiece;

/// Elements whose content is no text for readers.
inline constexpr std::u16string_view kHtmlUnreadable[] = {u"script", u"style", u"head", u"title", u"noscript"};
/// Of these, the ones that hold another language, so that what looks like a tag there is none.
inline constexpr std::u16string_view kHtmlForeign[] = {u"script", u"style"};

/// Finds tags by "<" and ">". Comments are passed over, and so are the elements of ASkipped with all that they hold.
/// A comment or tag without an end ends the walk. A "<" at the very end is text.
class THtmlScanner {
 public:
  THtmlScanner(std::u16string_view AHtml, std::span<const std::u16string_view> ASkipped)
      : FHtml(AHtml), FSkipped(ASkipped) {}

  THtmlPiece Next();

  /// Goes on at a later place.
  void GoOnAt(size_t APlace) { FAt = APlace; }

  /// Of a text: as it stands, with entities.
  std::u16string_view Text() const { return FText; }

  // Of a tag.
  /// As written; compare without regard to case.
  std::u16string_view Name() const { return FName; }
  bool NameIs(std::u16string_view AName) const;
  bool NameIsAnyOf(std::span<const std::u16string_view> ANames) const;
  bool IsClosing() const { return FIsClosing; }
  bool IsSelfClosing() const { return FIsSelfClosing; }
  bool IsOpening() const { return !FIsClosing && !FIsSelfClosing; }
  /// Where its "<" stands, and the place behind its ">".
  size_t Begin() const { return FBegin; }
  size_t End() const { return FAt; }
  /// The value of an attribute as it stands; empty without it.
  std::u16string_view Attribute(std::u16string_view AName) const;

 private:
  bool ReadTag();
  bool SkipComment();
  size_t FindSkippedTag() const;

  std::u16string_view FHtml;
  std::span<const std::u16string_view> FSkipped;
  size_t FAt = 0;
  size_t FBegin = 0;
  size_t FSkipDepth = 0;
  std::u16string_view FText;
  std::u16string_view FName;
  std::u16string_view FAttributes;
  bool FIsClosing = false;
  bool FIsSelfClosing = false;
};

}  // namespace tessarine::detail
