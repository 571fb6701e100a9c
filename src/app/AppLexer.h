#pragma once

#include <string>
#include <vector>

#include "app/AppCommandText.h"

// Cuts a command file into commands and tokens.
//
// A command ends with a period followed by white space or the end of the
// file; a last command may lack it. "#" starts a comment that runs to the end
// of the line. Texts are quoted with ' or " and end on the same line; the
// quote doubled stands for itself. Names begin with a letter, "_", "@", "$"
// or any non-ASCII character, and go on with these, digits, and periods that
// are followed by another character of a name. Numbers are decimal, with an
// optional sign directly before them and an optional exponent. The
// punctuation is one character per token: / = ( ) * ; | , + - < > ~ &.
//
// Text that makes no token becomes an ERROR token in its command, so that
// the command can report it and the following commands still run.
class AppLexer {
 public:
  static std::vector<AppCommandText> Split(const std::string& text);
};
