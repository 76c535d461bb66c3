#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include <tessarine/Export.h>

namespace tessarine {

class TAstNode;

/// A function value: what LAMBDA makes. It captures nothing; its body's names mean what is bound when it is called.
class TESSARINE_API ILambdaClosure {
 public:
  virtual ~ILambdaClosure();

  virtual int32_t GetParamCount() const = 0;
  /// The name of a parameter, trimmed, without "$" and in upper case; empty for an index outside 0 to count - 1.
  virtual const std::u16string& GetParamName(int32_t AIndex) const = 0;
  /// The body's tree, owned by the closure; null when it was made without one.
  virtual const TAstNode* GetBody() const = 0;
};

/// A closure that owns its body's tree.
class TESSARINE_API TLambdaClosure : public ILambdaClosure {
 public:
  TLambdaClosure(std::vector<std::u16string> AParamNames, std::unique_ptr<TAstNode> ABody);
  ~TLambdaClosure() override;
  TLambdaClosure(const TLambdaClosure&) = delete;
  TLambdaClosure& operator=(const TLambdaClosure&) = delete;

  int32_t GetParamCount() const override;
  const std::u16string& GetParamName(int32_t AIndex) const override;
  const TAstNode* GetBody() const override { return FBody.get(); }

 private:
  std::vector<std::u16string> FParamNames;
  std::unique_ptr<TAstNode> FBody;
};

}  // namespace tessarine
