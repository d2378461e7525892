// The exceptions that the library raises. Each carries one message that says what is wrong.
#pragma once

#include <stdexcept>
#include <string>

namespace System {

/// Base of every exception of the library; raised as such by the estimator and the painter.
class EGeneralError : public std::runtime_error {
 public:
  using std::runtime_error::runtime_error;
};

/// An invalid argument or state of a component, an option set or a collection item.
class EComponentError : public EGeneralError {
 public:
  using EGeneralError::EGeneralError;
};

/// A text that does not hold the value it should.
class EConvertError : public EGeneralError {
 public:
  using EGeneralError::EGeneralError;
};

/// A file that cannot be opened, read, written or understood; the message names file and place.
class EFileError : public EGeneralError {
 public:
  using EGeneralError::EGeneralError;
};

/// Prints one line to standard error and ends the process: for misuse that would otherwise hang
/// or corrupt memory. Any thread.
[[noreturn]] void FatalError(const std::string& AMessage) noexcept;

}  // namespace System
