#include <tessarine/formula/library/detail/ExternalAnswers.h>

namespace tessarine::detail {

namespace {

/// The first values of the arguments as one text; different values give different texts.
std::u16string KeyOf(TFormulaArgs AArgs) {
  std::u16string key;
  std::u16string buffer;
  for (const TFormulaArg& arg : AArgs) {
    const TValueView value = arg.FirstView();
    const std::u16string_view text = DisplayView(value, buffer);
    key += static_cast<char16_t>(value.Kind);
    key += static_cast<char16_t>(text.size() >> 16);
    key += static_cast<char16_t>(text.size());
    key += text;
    buffer.clear();
  }
  return key;
}

}  // namespace

thread_local constinit TExternalAnswers* TExternalAnswers::FCurrent = nullptr;

TFormulaArg TExternalAnswers::Ask(TArrayBody ABody, TFormulaArgs AArgs, const TFormulaContext& AContext) {
  TExternalAnswers* scope = FCurrent;
  if (!scope) return ABody(AArgs, AContext);
  if (!scope->FAnswers) scope->FAnswers = std::make_unique<TAnswers>();
  auto key = std::make_pair(ABody, KeyOf(AArgs));
  const auto known = scope->FAnswers->find(key);
  if (known != scope->FAnswers->end()) return known->second;
  TFormulaArg answer = ABody(AArgs, AContext);
  scope->FAnswers->emplace(std::move(key), answer);
  return answer;
}

}  // namespace tessarine::detail
