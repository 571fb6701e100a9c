#pragma once

#include <string>

// What `glmixfit --help` shows: how to run the program, and the command
// language in brief. docs/syntax.md is the full reference.
class AppHelp {
 public:
  static std::string Text();
};
