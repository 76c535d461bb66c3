#pragma once

#include <stdexcept>
#include <string>

#include <tessarine/Export.h>

namespace tessarine {

/// Root of everything that the library throws. The text is UTF-8 and says what happened, where, and what to do about
/// it. A failing formula is a value and never throws.
class TESSARINE_API ETessarineError : public std::runtime_error {
 public:
  explicit ETessarineError(const std::string& AMessage) : std::runtime_error(AMessage) {}
  ETessarineError(const ETessarineError&) = default;
  ETessarineError& operator=(const ETessarineError&) = default;
  ~ETessarineError() override;
};

/// An argument that the operation cannot accept.
class TESSARINE_API EArgument : public ETessarineError {
 public:
  using ETessarineError::ETessarineError;
  ~EArgument() override;
};

/// The operation is not possible in the object's present state.
class TESSARINE_API EState : public ETessarineError {
 public:
  using ETessarineError::ETessarineError;
  ~EState() override;
};

/// The operating system refused to create, open, read, write, flush or replace a file.
class TESSARINE_API EFileAccess : public ETessarineError {
 public:
  using ETessarineError::ETessarineError;
  ~EFileAccess() override;
};

/// The content of a file is not what its format demands.
class TESSARINE_API EFileFormat : public ETessarineError {
 public:
  using ETessarineError::ETessarineError;
  ~EFileFormat() override;
};

/// A size, count or depth beyond what was allowed.
class TESSARINE_API ELimit : public ETessarineError {
 public:
  using ETessarineError::ETessarineError;
  ~ELimit() override;
};

/// A transfer over the network failed, or the host forbids it.
class TESSARINE_API ENetwork : public ETessarineError {
 public:
  using ETessarineError::ETessarineError;
  ~ENetwork() override;
};

/// Long work was stopped through its stop token.
class TESSARINE_API ECancelled : public ETessarineError {
 public:
  using ETessarineError::ETessarineError;
  ~ECancelled() override;
};

}  // namespace tessarine
