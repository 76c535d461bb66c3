#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <boost/unordered/unordered_flat_set.hpp>

#include <tessarine/core/values/Text.h>

namespace tessarine {

/// What the formula engine keeps with a template once it has compiled it. Core only owns and frees it.
class TFormulaProgram {
 public:
  virtual ~TFormulaProgram() = default;
};

namespace detail {

/// One cell reference of a template, in the order of the text. A part without "$" is a distance from the formula's
/// cell, a part with "$" the 1-based column or row itself.
struct TReferenceSlot {
  size_t Offset = 0;  // 0-based offset of the reference in the text that the template was asked for
  size_t Length = 0;  // its length there, "$" counted
  int32_t Col = 0;
  int32_t Row = 0;
  bool ColAbsolute = false;
  bool RowAbsolute = false;
};

/// The text of a formula with its cell references cut out, shared by all cells whose formulas differ only as a copy
/// differs from its original. The text at any of these cells comes out byte for byte.
///
/// A reference becomes a slot only if it stands in canonical spelling (capital letters, no leading zeros) where the
/// scan sees a word of its own; every other character, other references included, is part of the template verbatim.
class TFormulaTemplate {
 public:
  /// The formula's source, "=" included, as it reads in the cell (ACol, ARow).
  TText TextAt(int32_t ACol, int32_t ARow) const;
  void AppendTextAt(int32_t ACol, int32_t ARow, std::u16string& AText) const;

  /// The slots as they stand in TextAt(ACol, ARow).
  std::vector<TReferenceSlot> SlotsAt(int32_t ACol, int32_t ARow) const;
  bool HasSlots() const { return FHasSlots; }

  /// Set and read by the formula engine only; null until the first evaluation or registration.
  mutable std::unique_ptr<TFormulaProgram> Program;

  /// What the rewriting of references after structural edits has found out about the template.
  enum TRewriteKind : uint8_t {
    rkUnknown,
    rkPlain,   // all references are slots without a sheet, and the rewriting leaves the rest of the text as it is
    rkByText,  // only the whole text tells
  };
  mutable TRewriteKind RewriteKind = rkUnknown;

  uint32_t RefCount() const { return FRefCount; }

 private:
  friend class TFormulaPool;

  bool TryMatch(std::u16string_view AText, int32_t ACol, int32_t ARow) const;

  std::u16string FKey;
  uint64_t FHash = 0;
  uint32_t FRefCount = 0;
  bool FHasSlots = false;
};

/// The templates of one workbook, found by their relative form. Counted by the formula records that use them.
class TFormulaPool {
 public:
  TFormulaPool() = default;
  TFormulaPool(const TFormulaPool&) = delete;
  TFormulaPool& operator=(const TFormulaPool&) = delete;
  ~TFormulaPool();

  /// The template of a formula text standing in the cell (ACol, ARow), with one reference taken for the caller.
  TFormulaTemplate* Intern(std::u16string_view AText, int32_t ACol, int32_t ARow);

  /// The same without the look at templates of late: always by the key.
  TFormulaTemplate* InternPlain(std::u16string_view AText, int32_t ACol, int32_t ARow);

  void Retain(TFormulaTemplate* ATemplate) { ++ATemplate->FRefCount; }
  void Release(TFormulaTemplate* ATemplate);

  size_t Count() const { return FTemplates.size(); }

 private:
  struct TLookup {
    std::u16string_view Key;
    uint64_t Hash;
  };
  struct THash {
    using is_transparent = void;
    size_t operator()(const TFormulaTemplate* ATemplate) const { return ATemplate->FHash; }
    size_t operator()(const TLookup& ALookup) const { return ALookup.Hash; }
  };
  struct TEqual {
    using is_transparent = void;
    bool operator()(const TFormulaTemplate* ALeft, const TFormulaTemplate* ARight) const { return ALeft == ARight; }
    bool operator()(const TLookup& ALeft, const TFormulaTemplate* ARight) const { return ALeft.Key == ARight->FKey; }
    bool operator()(const TFormulaTemplate* ALeft, const TLookup& ARight) const { return ALeft->FKey == ARight.Key; }
  };

  static constexpr size_t kRecentCount = 64;

  boost::unordered_flat_set<TFormulaTemplate*, THash, TEqual> FTemplates;
  std::array<TFormulaTemplate*, kRecentCount> FRecent{};  // by column: blocks filled down ask for the same again
};

}  // namespace detail
}  // namespace tessarine
