#pragma once

#include <charconv>
#include <concepts>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include <tessarine/platform/Unicode.h>

namespace tessarine::test {

/// One line of a table of examples in tests/data: fields separated by tabs. Lines that begin with "#" tell what the
/// lines below are for, empty ones separate groups. In a field \t \n \r \\ \xHH \uHHHH (UTF-8) stand for characters,
/// \s for a blank at an edge, \e for nothing and \# for "#".
class TCase {
 public:
  TCase(std::string APlace, size_t ABlock, std::vector<std::string> AFields)
      : FPlace(std::move(APlace)), FBlock(ABlock), FFields(std::move(AFields)) {}

  /// "tests/data/core/tokens.tsv:12", for messages.
  const std::string& Place() const { return FPlace; }
  size_t Count() const { return FFields.size(); }
  /// Changes behind each empty line.
  size_t Block() const { return FBlock; }

  /// A field, 0-based. One that is missing is empty; a number that does not read is a failure and 0.
  const std::string& operator[](size_t AField) const;
  std::u16string Text(size_t AField) const { return Utf8ToUtf16((*this)[AField]); }
  double Number(size_t AField) const;
  int64_t Integer(size_t AField) const;
  int32_t Int(size_t AField) const { return static_cast<int32_t>(Integer(AField)); }
  /// "TRUE" or nothing else.
  bool Flag(size_t AField) const { return (*this)[AField] == "TRUE"; }

 private:
  std::string FPlace;
  size_t FBlock;
  std::vector<std::string> FFields;
};

/// The lines of a table, its path relative to tests/data. A file that is missing, has no lines, a wrong escape or a
/// line with less than ALeastFields or more than AMostFields fields (0: as many as the least) fails the test.
std::vector<TCase> CasesOf(const std::string& APath, size_t ALeastFields, size_t AMostFields = 0);

/// Results as text: TRUE and FALSE, numbers in their shortest form, "none" for an empty optional, lists with blanks.
inline std::string Shown(const char* AText) { return AText; }
inline std::string Shown(std::string_view AText) { return std::string(AText); }
inline std::string Shown(std::u16string_view AText) { return Utf16ToUtf8(AText); }
template <typename TNumber>
std::string Shown(TNumber ANumber) requires(std::integral<TNumber> || std::floating_point<TNumber>) {
  if constexpr (std::same_as<TNumber, bool>) {
    return ANumber ? "TRUE" : "FALSE";
  } else {
    char text[32];
    return std::string(text, std::to_chars(text, text + sizeof text, ANumber).ptr);
  }
}
template <typename TValue>
std::string Shown(const TValue& AValue) requires requires {
  AValue.ToUtf8();
}
{ return AValue.ToUtf8(); }
template <typename TValue>
std::string Shown(const std::optional<TValue>& AValue) {
  return AValue ? Shown(*AValue) : "none";
}
template <typename TValue>
std::string Shown(const std::vector<TValue>& AValues) {
  std::string text;
  for (const TValue& value : AValues) text += (text.empty() ? "" : " ") + Shown(value);
  return text;
}

/// "FF4472C4".
std::string ShownColor(uint32_t AColor);

/// The parts of a field; an empty one has one, which is empty.
std::vector<std::string> SplitAt(std::string_view AText, char ASeparator);

/// What a line's words give, as the text that stands in its last field. Any function that takes a case and gives what
/// Shown knows is one.
class TCaseWork {
 public:
  template <typename TFunction>
  TCaseWork(TFunction AFunction)  // NOLINT: tables of works are lists of lambdas
      : FRun([AFunction](const TCase& ACase) { return Shown(AFunction(ACase)); }) {}
  std::string operator()(const TCase& ACase) const { return FRun(ACase); }

 private:
  std::function<std::string(const TCase&)> FRun;
};

/// Runs the table whose lines are: the name of a work, its arguments, the result. A name without a work and a work
/// without a line fail. An exception is the result "throws ", its class ("argument", "state",
/// "file", "format", "limit" or "other") and its text.
void ExpectCases(const std::string& APath, const std::map<std::string, TCaseWork>& AWorks);

/// The same for lines that are the arguments of one work and the result.
void ExpectCases(const std::string& APath, const TCaseWork& AWork);

/// How an argument of some type is read from a field: numbers, flags and texts here, others where they are needed.
template <typename TValue>
TValue CaseArgument(const TCase& ACase, size_t AField) {
  if constexpr (std::same_as<TValue, bool>) {
    return ACase.Flag(AField);
  } else if constexpr (std::floating_point<TValue>) {
    return ACase.Number(AField);
  } else if constexpr (std::integral<TValue>) {
    return static_cast<TValue>(ACase.Integer(AField));
  } else if constexpr (std::same_as<TValue, std::string>) {
    return ACase[AField];
  } else if constexpr (std::is_constructible_v<TValue, std::u16string>) {
    return TValue(ACase.Text(AField));
  } else {
    return ReadCaseArgument(ACase, AField, static_cast<const TValue*>(nullptr));
  }
}

/// What is held while an argument of a function is made from a field.
template <typename TParameter>
using TCaseHeld = std::conditional_t<std::same_as<std::remove_cvref_t<TParameter>, std::u16string_view>, std::u16string,
                                     std::remove_cvref_t<TParameter>>;

/// Calls AFunction with the arguments that stand behind the first field.
template <typename... TParameters, typename TFunction, size_t... Is>
auto CallWithFields(const TFunction& AFunction, const TCase& ACase, std::index_sequence<Is...>) {
  return AFunction(static_cast<TParameters>(CaseArgument<TCaseHeld<TParameters>>(ACase, Is + 1))...);
}

/// A step of a dialogue with an object. It may give nothing. Methods get their arguments from the fields.
template <typename TObject>
class TStepWork {
 public:
  template <typename TFunction>
  TStepWork(TFunction AFunction)  // NOLINT: as above
      : FRun([AFunction](TObject& AObject, const TCase& ACase) {
          if constexpr (std::is_void_v<decltype(AFunction(AObject, ACase))>) {
            AFunction(AObject, ACase);
            return std::string();
          } else {
            return Shown(AFunction(AObject, ACase));
          }
        }) {}
  template <typename TResult, typename TClass, typename... TParameters>
  TStepWork(TResult (TClass::*AMethod)(TParameters...))
      : TStepWork([AMethod](TObject& AObject, const TCase& ACase) {
          const auto call = [&](TParameters... A) { return (AObject.*AMethod)(std::forward<TParameters>(A)...); };
          return CallWithFields<TParameters...>(call, ACase, std::index_sequence_for<TParameters...>());
        }) {}
  template <typename TResult, typename TClass, typename... TParameters>
  TStepWork(TResult (TClass::*AMethod)(TParameters...) const)
      : TStepWork([AMethod](TObject& AObject, const TCase& ACase) {
          const auto call = [&](TParameters... A) { return (AObject.*AMethod)(std::forward<TParameters>(A)...); };
          return CallWithFields<TParameters...>(call, ACase, std::index_sequence_for<TParameters...>());
        }) {}
  template <typename TResult, typename... TParameters>
  TStepWork(TResult (*AFunction)(TParameters...))
      : TStepWork([AFunction](TObject&, const TCase& ACase) {
          return CallWithFields<TParameters...>(*AFunction, ACase, std::index_sequence_for<TParameters...>());
        }) {}
  std::string operator()(TObject& AObject, const TCase& ACase) const { return FRun(AObject, ACase); }

 private:
  std::function<std::string(TObject&, const TCase&)> FRun;
};

/// ExpectDialogues without the object's type: ABegin makes a new one, ARun takes a step.
void RunDialogues(const std::string& APath, const std::set<std::string>& ANames, const std::function<void()>& ABegin,
                  const TCaseWork& ARun);

/// Runs dialogues with objects, each a block of lines behind an empty one: a line is the name of a step, its arguments
/// and, behind a field "=", what the step gives. Names are checked and exceptions shown as ExpectCases does.
template <typename TObject>
void ExpectDialogues(const std::string& APath, const std::map<std::string, TStepWork<TObject>>& ASteps) {
  std::unique_ptr<TObject> object;
  std::set<std::string> names;
  for (const auto& [name, step] : ASteps) names.insert(name);
  RunDialogues(
      APath, names, [&] { object = std::make_unique<TObject>(); },
      [&](const TCase& ACase) { return ASteps.at(ACase[0])(*object, ACase); });
}

}  // namespace tessarine::test
