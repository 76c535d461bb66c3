#include <tessarine/formula/LambdaClosure.h>

#include <utility>

#include <tessarine/formula/Ast.h>

namespace tessarine {

ILambdaClosure::~ILambdaClosure() = default;

TLambdaClosure::TLambdaClosure(std::vector<std::u16string> AParamNames, std::unique_ptr<TAstNode> ABody)
    : FParamNames(std::move(AParamNames)), FBody(std::move(ABody)) {}

TLambdaClosure::~TLambdaClosure() = default;

int32_t TLambdaClosure::GetParamCount() const { return static_cast<int32_t>(FParamNames.size()); }

const std::u16string& TLambdaClosure::GetParamName(int32_t AIndex) const {
  static const std::u16string none;
  return AIndex >= 0 && AIndex < GetParamCount() ? FParamNames[static_cast<size_t>(AIndex)] : none;
}

}  // namespace tessarine
