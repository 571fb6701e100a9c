#pragma once

#include <string>
#include <vector>

// One command of a command file: its text (without the ending period) and
// where it starts, for messages that point at it.
struct CommandText {
  std::string fText;
  std::string fName;  // the first word, upper-cased
  int fLine = 0;      // 1-based
  int fColumn = 0;    // 1-based
};

// A problem found while splitting a command file.
struct CommandTextError {
  std::string fMessage;
  int fLine = 0;
  int fColumn = 0;
};

// Splits a command file into commands. A command ends with a period that is
// followed by white space or the end of the file, outside quotes; "#" starts
// a comment that runs to the end of the line. A last command without its
// period is taken as it is.
class CommandSplitter {
 public:
  static bool Split(const std::string& text, std::vector<CommandText>& commands,
                    std::vector<CommandTextError>& errors);
};
