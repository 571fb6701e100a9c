#include "app/CommandText.h"

#include <cctype>

namespace {

bool IsBlank(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }

std::string FirstWordUpper(const std::string& text) {
  std::string word;
  for (char c : text) {
    if (IsBlank(c) || c == '/' || c == '\'' || c == '"') {
      if (!word.empty()) break;
      continue;
    }
    word += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  }
  return word;
}

void Finish(CommandText& current, std::vector<CommandText>& commands) {
  std::size_t end = current.fText.find_last_not_of(" \t\r\n\f\v");
  current.fText = end == std::string::npos ? std::string() : current.fText.substr(0, end + 1);
  if (!current.fText.empty()) {
    current.fName = FirstWordUpper(current.fText);
    commands.push_back(current);
  }
  current = CommandText();
}

}  // namespace

bool CommandSplitter::Split(const std::string& text, std::vector<CommandText>& commands,
                            std::vector<CommandTextError>& errors) {
  CommandText current;
  int line = 1;
  int column = 1;
  char quote = 0;
  int quoteLine = 0;
  int quoteColumn = 0;
  bool ok = true;

  for (std::size_t i = 0; i < text.size(); ++i) {
    char c = text[i];
    if (quote == 0 && c == '#') {
      while (i + 1 < text.size() && text[i + 1] != '\n') ++i;
      continue;
    }
    if (current.fText.empty() && IsBlank(c)) {
      // Leading white space is not part of a command.
    } else {
      if (current.fText.empty()) {
        current.fLine = line;
        current.fColumn = column;
      }
      if (quote != 0) {
        if (c == '\n') {
          errors.push_back({std::string("the quoted text opened here is not closed before the end of the line"),
                            quoteLine, quoteColumn});
          ok = false;
          quote = 0;
        } else if (c == quote) {
          quote = 0;
        }
        current.fText += c;
      } else if (c == '\'' || c == '"') {
        quote = c;
        quoteLine = line;
        quoteColumn = column;
        current.fText += c;
      } else if (c == '.' && (i + 1 == text.size() || IsBlank(text[i + 1]))) {
        Finish(current, commands);
      } else {
        current.fText += c;
      }
    }
    if (c == '\n') {
      ++line;
      column = 1;
    } else if ((static_cast<unsigned char>(c) & 0xC0) != 0x80) {
      ++column;  // count characters, not UTF-8 continuation bytes
    }
  }
  if (quote != 0) {
    errors.push_back({"the quoted text opened here is not closed", quoteLine, quoteColumn});
    ok = false;
  }
  Finish(current, commands);
  return ok;
}
