#pragma once

#include <cstddef>
#include <string>

// One token of a command file, with where it starts.
struct AppToken {
  enum Kind {
    WORD,    // a name or keyword, as typed
    NUMBER,  // a decimal number with its sign; fText as typed
    STRING,  // a quoted text; fText without the quotes, doubled quotes undone
    SYMBOL,  // one of / = ( ) * ; | , + - < > ~ &
    END,     // the end of the command: its period, or the end of the file
    ERROR    // text that is no token; fText says why
  };

  Kind fKind = END;
  std::string fText;
  double fNumber = 0.0;
  int fLine = 0;    // 1-based
  int fColumn = 0;  // 1-based, in characters
  std::size_t fOffset = 0;  // byte offset of the first character in the file

  bool IsSymbol(char c) const { return fKind == SYMBOL && fText.size() == 1 && fText[0] == c; }
};
