#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include <tessarine/formula/FormulaArg.h>

namespace tessarine::detail {

/// The names that formulas have bound to values for the time of an expression. One flat table: binding a name again
/// replaces its value, unbinding it removes the name altogether, and a name means what is bound when it is read, by
/// whichever formula. Names are compared trimmed, without "$" and in upper case.
class TLocalNames {
  struct TTable;

 public:
  /// What was bound at some moment. Costs a copy of the table only when a name is bound or unbound afterwards.
  using TSaved = std::shared_ptr<const TTable>;

  bool IsEmpty() const { return Count() == 0; }
  size_t Count() const { return FTable ? FTable->Bindings.size() : 0; }

  /// Binds a name. AIsMissing marks a parameter that got no argument. A view becomes an array of its own: what is bound
  /// does not change any more. True when an earlier binding of the name was replaced.
  bool Bind(std::u16string_view AName, TFormulaArg AArg, bool AIsMissing);
  void Unbind(std::u16string_view AName);
  void Clear() { FTable.reset(); }

  /// The value bound to a name, null when there is none. Valid until the next change.
  const TFormulaArg* Find(std::u16string_view AName) const { return IsEmpty() ? nullptr : FindBound(AName); }

  /// Whether the name is a parameter that got no argument.
  bool IsMissing(std::u16string_view AName) const;

  static bool AreSame(std::u16string_view ALeft, std::u16string_view ARight);

  /// Null when nothing is bound.
  TSaved Save() const { return IsEmpty() ? nullptr : FTable; }
  void Restore(const TSaved& ASaved);

  /// The names of ASaved that are bound no longer.
  std::vector<std::u16string> LostSince(const TSaved& ASaved) const;

  /// The memory that holding ASaved may take, in cells.
  static int64_t WeightOf(const TSaved& ASaved);

 private:
  struct TBinding {
    std::u16string Name;
    TFormulaArg Arg;
    bool IsMissing = false;
  };
  struct TTable {
    std::vector<TBinding> Bindings;  // a handful at most: found by comparing
  };

  const TFormulaArg* FindBound(std::u16string_view AName) const;
  size_t IndexOf(std::u16string_view AName) const;
  std::vector<TBinding>& Own();

  std::shared_ptr<TTable> FTable;  // null or shared with what was saved; changed only when it is not shared
};

}  // namespace tessarine::detail
