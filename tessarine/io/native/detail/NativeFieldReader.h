#pragma once

#include <concepts>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <boost/unordered/unordered_flat_map.hpp>

#include <tessarine/core/values/Text.h>
#include <tessarine/io/native/detail/NativeFields.h>
#include <tessarine/platform/detail/JsonText.h>

namespace tessarine::detail {

/// The text of a document that is being read, and what may still be made of it.
class TNativeDocument {
 public:
  /// AText is sound and outlives this.
  explicit TNativeDocument(const TJsonText& AText);

  const TJsonText& Json() const { return FText; }

  /// Takes ABytes of what the document may still fill with records. Records are larger than the shortest text that
  /// makes one, so their memory is held to a multiple of the text. Throws ELimit.
  void Take(size_t ABytes, TJsonPlace AWhere);

  /// Throws EFileFormat "PATH (line 1, column 2): expected AWanted, found a text".
  [[noreturn]] void FailType(TJsonPlace AValue, std::string_view AWanted) const;

  // The value at a place that is not null. Each throws for a value of another type.
  bool ReadBoolean(TJsonPlace AValue) const;
  double ReadNumber(TJsonPlace AValue) const;
  /// A number without a fraction from ALeast to AMost.
  int64_t ReadInteger(TJsonPlace AValue, int64_t ALeast, int64_t AMost) const;
  int32_t ReadInt32(TJsonPlace AValue) const;
  TText ReadText(TJsonPlace AValue) const;

  /// An unsigned number of 32 bits by its spelling, as a number or in quotes; nothing for any other value.
  std::optional<uint32_t> ReadColor(TJsonPlace AValue) const;

  /// What a spelling between quotes means.
  static TText DecodeText(std::string_view ARaw);

 private:
  const TJsonText& FText;
  size_t FAllowance;
};

/// The members of one object. Of several under one name the first counts; null counts as missing.
class TNativeObject {
 public:
  /// AObject may be null or no object: then there are no members.
  TNativeObject(const TNativeDocument& ADocument, TJsonPlace AObject);

  bool Exists() const { return FPlace != nullptr; }
  TJsonPlace Place() const { return FPlace; }

  /// The member's value; null when it is missing.
  TJsonPlace Find(std::string_view AName);
  /// The same for a value of one kind: any other counts as missing.
  TJsonPlace FindObject(std::string_view AName) { return Only(Find(AName), jkObject); }
  TJsonPlace FindArray(std::string_view AName) { return Only(Find(AName), jkArray); }

 private:
  static constexpr size_t kFew = 24;  // up to this many members a walk finds a name as quickly as a dictionary

  struct TMember {
    std::string_view Name;
    TJsonPlace Value;
  };

  static TJsonPlace Only(TJsonPlace AValue, TJsonKind AKind) {
    return AValue && TJsonText::KindOf(AValue) == AKind ? AValue : nullptr;
  }

  TJsonPlace FPlace;
  std::vector<TMember> FMembers;
  std::vector<std::string> FDecodedNames;  // of names that are spelled with escapes; reserved, so views stay valid
  boost::unordered_flat_map<std::string_view, size_t> FByName;  // when there are many
};

/// Reads the fields of records out of objects: the visitor of VisitNativeFields for reading.
class TNativeFieldReader {
 public:
  TNativeFieldReader(TNativeDocument& ADocument, TNativeObject& AObject) : FDocument(ADocument), FObject(AObject) {}

  template <class TValue>
  void operator()(std::string_view AName, TValue& AValue) {
    const TJsonPlace place = FObject.Find(AName);
    if constexpr (std::same_as<TValue, TCellRange>) AValue = NewNativeRecord<TCellRange>();
    if (place) Read(place, AValue);
  }
  template <class TValue>
  void When(bool, std::string_view AName, TValue& AValue) {
    (*this)(AName, AValue);
  }
  void Color(std::string_view AName, uint32_t& AValue);
  void Bytes(std::string_view AName, std::vector<std::byte>& AValue);
  void AllBytes(std::string_view AName, std::vector<std::byte>& AValue) { Bytes(AName, AValue); }

  /// Reads the value at a place into what holds the defaults.
  void Read(TJsonPlace APlace, bool& AValue) { AValue = FDocument.ReadBoolean(APlace); }
  void Read(TJsonPlace APlace, double& AValue) { AValue = FDocument.ReadNumber(APlace); }
  void Read(TJsonPlace APlace, float& AValue);
  void Read(TJsonPlace APlace, int32_t& AValue) { AValue = FDocument.ReadInt32(APlace); }
  void Read(TJsonPlace APlace, uint32_t& AValue);
  void Read(TJsonPlace APlace, uint8_t& AValue);
  /// EMU: any number, cut to a whole one.
  void Read(TJsonPlace APlace, int64_t& AValue);
  void Read(TJsonPlace APlace, TText& AValue) { AValue = FDocument.ReadText(APlace); }
  void Read(TJsonPlace APlace, TCellFormat& AValue);

  template <class TEnum>
  requires std::is_enum_v<TEnum>
  void Read(TJsonPlace APlace, TEnum& AValue) {
    const int32_t ordinal = FDocument.ReadInt32(APlace);
    if (ordinal >= 0 && ordinal <= static_cast<int32_t>(kLastNative<TEnum>)) AValue = static_cast<TEnum>(ordinal);
  }

  /// A list: objects make records and everything else is passed over; among plain values null is the default.
  template <class TItem>
  void Read(TJsonPlace APlace, std::vector<TItem>& AValue) {
    if (TJsonText::KindOf(APlace) != jkArray) return;
    AValue.clear();
    FDocument.Json().ForEachElement(APlace, [&](TJsonPlace AElement) {
      const TJsonKind kind = TJsonText::KindOf(AElement);
      if constexpr (kIsRecord<TItem>) {
        if (kind != jkObject) return;
        FDocument.Take(sizeof(TItem), AElement);
        TItem item = NewNativeRecord<TItem>();
        Read(AElement, item);
        AValue.push_back(std::move(item));
      } else {
        AValue.emplace_back();
        if (kind != jkNull) Read(AElement, AValue.back());
      }
    });
  }

  /// A record; a value that is no object counts as missing.
  template <class TRecord>
  requires std::is_class_v<TRecord>
  void Read(TJsonPlace APlace, TRecord& AValue) {
    if (TJsonText::KindOf(APlace) != jkObject) return;
    if constexpr (std::same_as<TRecord, TColorRef>) AValue = NewNativeRecord<TColorRef>();
    TNativeObject object(FDocument, APlace);
    TNativeFieldReader reader(FDocument, object);
    VisitNativeFields(reader, AValue);
  }

 private:
  template <class TItem>
  static constexpr bool kIsRecord = std::is_class_v<TItem> && !std::same_as<TItem, TText>;

  TNativeDocument& FDocument;
  TNativeObject& FObject;
};

}  // namespace tessarine::detail
