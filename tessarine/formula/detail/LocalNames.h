#pragma once

#include <string>
#include <string_view>
#include <vector>

#include <tessarine/formula/FormulaArg.h>

namespace tessarine::detail {

/// The names that formulas have bound to values for the time of an expression. One flat table: binding a name again
/// replaces its value, unbinding it removes the name altogether, and a name means what is bound when it is read, by
/// whichever formula. Names are compared trimmed, without "$" and in upper case.
class TLocalNames {
 public:
  bool IsEmpty() const { return FBindings.empty(); }

  /// Binds a name. AIsMissing marks a parameter that got no argument. A view becomes an array of its own: what is bound
  /// does not change any more. True when an earlier binding of the name was replaced.
  bool Bind(std::u16string_view AName, TFormulaArg AArg, bool AIsMissing);
  void Unbind(std::u16string_view AName);
  void Clear() { FBindings.clear(); }

  /// The value bound to a name, null when there is none. Valid until the next change.
  const TFormulaArg* Find(std::u16string_view AName) const { return FBindings.empty() ? nullptr : FindBound(AName); }

  /// Whether the name is a parameter that got no argument.
  bool IsMissing(std::u16string_view AName) const;

 private:
  struct TBinding {
    std::u16string Name;
    TFormulaArg Arg;
    bool IsMissing = false;
  };

  const TFormulaArg* FindBound(std::u16string_view AName) const;
  size_t IndexOf(std::u16string_view AName) const;

  std::vector<TBinding> FBindings;  // a handful at most: found by comparing
};

}  // namespace tessarine::detail
