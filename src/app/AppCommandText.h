#pragma once

#include <string>
#include <vector>

#include "app/AppToken.h"

// One command of a command file: its tokens (the last is always END), its
// text as typed (without the ending period), and where it starts.
struct AppCommandText {
  std::vector<AppToken> fvTokens;
  std::string fText;
  std::string fName;  // the first word, upper-cased; empty when it is no word
  int fLine = 0;
  int fColumn = 0;
};
