#pragma once

#include <stdexcept>
#include <string>

// A failure inside the virtual machine that hosts the chart editor, raised
// to the code that called into it.
class JNIException : public std::runtime_error {
 public:
  explicit JNIException(const std::string& message) : std::runtime_error(message) {}
};
