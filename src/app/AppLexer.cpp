#include "app/AppLexer.h"

#include <cctype>

#include "host/io/NumberText.h"
#include "numeric/common/MCUtf8.h"

namespace {

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\r' || c == '\n' || c == '\f' || c == '\v'; }

bool IsDigit(char c) { return c >= '0' && c <= '9'; }

bool IsNameStart(char c) {
  unsigned char u = static_cast<unsigned char>(c);
  return std::isalpha(u) || c == '_' || c == '@' || c == '$' || u >= 0x80;
}

bool IsNamePart(char c) { return IsNameStart(c) || IsDigit(c); }

// The punctuation of commands and of expressions. A sign directly before a
// digit belongs to the number; a reader of expressions takes it back as an
// operator where an operand has just ended.
bool IsSymbolChar(char c) {
  return c == '/' || c == '=' || c == '(' || c == ')' || c == '*' || c == ';' || c == '|' || c == ',' ||
         c == '+' || c == '-' || c == '<' || c == '>' || c == '~' || c == '&';
}

class Scanner {
 public:
  explicit Scanner(const std::string& text) : fText(text) {}

  std::vector<AppCommandText> Run() {
    // A byte order mark is no part of the text.
    if (fText.compare(0, 3, "\xEF\xBB\xBF") == 0) fPos = 3;
    while (fPos < fText.size()) {
      char c = fText[fPos];
      if (IsSpace(c)) {
        Advance();
      } else if (c == '#') {
        while (fPos < fText.size() && fText[fPos] != '\n') Advance();
      } else if (c == '.' && (fPos + 1 == fText.size() || IsSpace(fText[fPos + 1]))) {
        AppToken end = Start(AppToken::END);
        std::size_t at = fPos;
        Advance();
        Finish(end, at);
      } else if (c == '\'' || c == '"') {
        String();
      } else if (StartsNumber()) {
        Number();
      } else if (IsNameStart(c)) {
        Word();
      } else if (IsSymbolChar(c)) {
        AppToken token = Start(AppToken::SYMBOL);
        token.fText = std::string(1, c);
        Advance();
        fvCurrent.push_back(token);
      } else {
        AppToken token = Start(AppToken::ERROR);
        token.fText = UnexpectedCharacter(static_cast<unsigned char>(c)) + " has no meaning here";
        Advance();
        fvCurrent.push_back(token);
      }
    }
    if (!fvCurrent.empty()) Finish(Start(AppToken::END), fText.size());
    return fvCommands;
  }

 private:
  // "the character '!'", or for a byte that does not print, its code:
  // "the control character 0x00".
  static std::string UnexpectedCharacter(unsigned char c) {
    if (std::isprint(c)) return std::string("the character '") + static_cast<char>(c) + "'";
    const char* digits = "0123456789ABCDEF";
    return std::string("the control character 0x") + digits[c >> 4] + digits[c & 15];
  }

  AppToken Start(AppToken::Kind kind) const {
    AppToken token;
    token.fKind = kind;
    token.fLine = fLine;
    token.fColumn = fColumn;
    token.fOffset = fPos;
    return token;
  }

  void Advance() {
    char c = fText[fPos++];
    if (c == '\n') {
      ++fLine;
      fColumn = 1;
    } else if (!MCCommon_850::MCUtf8::IsContinuation(c)) {
      ++fColumn;
    }
  }

  char At(std::size_t pos) const { return pos < fText.size() ? fText[pos] : '\0'; }

  bool StartsNumber() const {
    std::size_t p = fPos;
    if (At(p) == '+' || At(p) == '-') ++p;
    return IsDigit(At(p)) || (At(p) == '.' && IsDigit(At(p + 1)));
  }

  // A period that ends the command, or the end of the text.
  bool EndsHere(std::size_t pos) const { return pos >= fText.size() || (At(pos) == '.' && (pos + 1 >= fText.size() || IsSpace(At(pos + 1)))); }

  void Number() {
    AppToken token = Start(AppToken::NUMBER);
    std::size_t p = fPos;
    if (At(p) == '+' || At(p) == '-') ++p;
    while (IsDigit(At(p))) ++p;
    if (At(p) == '.' && !EndsHere(p)) {
      ++p;
      while (IsDigit(At(p))) ++p;
    }
    if (At(p) == 'e' || At(p) == 'E') {
      std::size_t q = p + 1;
      if (At(q) == '+' || At(q) == '-') ++q;
      if (IsDigit(At(q))) {
        while (IsDigit(At(q))) ++q;
        p = q;
      }
    }
    // A number runs straight into a name or another number: one bad token.
    bool bad = false;
    while (p < fText.size() && (IsNamePart(At(p)) || (At(p) == '.' && !EndsHere(p)))) {
      ++p;
      bad = true;
    }
    token.fText = fText.substr(fPos, p - fPos);
    while (fPos < p) Advance();
    if (bad || !NumberText::Parse(token.fText, token.fNumber)) {
      token.fKind = AppToken::ERROR;
      token.fText = "'" + token.fText + "' is not a number" +
                    (bad ? std::string() : std::string(" that fits the range of a double"));
    }
    fvCurrent.push_back(token);
  }

  void Word() {
    AppToken token = Start(AppToken::WORD);
    std::size_t p = fPos;
    while (p < fText.size() && (IsNamePart(At(p)) || (At(p) == '.' && IsNamePart(At(p + 1))))) ++p;
    token.fText = fText.substr(fPos, p - fPos);
    while (fPos < p) Advance();
    fvCurrent.push_back(token);
  }

  void String() {
    AppToken token = Start(AppToken::STRING);
    char quote = fText[fPos];
    Advance();
    std::string value;
    while (true) {
      if (fPos >= fText.size() || fText[fPos] == '\n') {
        token.fKind = AppToken::ERROR;
        token.fText = "the quoted text is not closed before the end of the line";
        break;
      }
      char c = fText[fPos];
      Advance();
      if (c == quote) {
        if (At(fPos) == quote) {
          value += quote;
          Advance();
          continue;
        }
        token.fText = value;
        break;
      }
      value += c;
    }
    fvCurrent.push_back(token);
  }

  void Finish(AppToken end, std::size_t endOffset) {
    if (fvCurrent.empty()) return;
    AppCommandText command;
    std::size_t begin = fvCurrent.front().fOffset;
    command.fText = fText.substr(begin, endOffset - begin);
    std::size_t last = command.fText.find_last_not_of(" \t\r\n\f\v");
    command.fText.resize(last == std::string::npos ? 0 : last + 1);
    command.fLine = fvCurrent.front().fLine;
    command.fColumn = fvCurrent.front().fColumn;
    if (fvCurrent.front().fKind == AppToken::WORD) {
      for (char c : fvCurrent.front().fText) command.fName += static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
    }
    end.fKind = AppToken::END;
    end.fText.clear();
    fvCurrent.push_back(end);
    command.fvTokens.swap(fvCurrent);
    fvCommands.push_back(std::move(command));
    fvCurrent.clear();
  }

  const std::string& fText;
  std::size_t fPos = 0;
  int fLine = 1;
  int fColumn = 1;
  std::vector<AppToken> fvCurrent;
  std::vector<AppCommandText> fvCommands;
};

}  // namespace

std::vector<AppCommandText> AppLexer::Split(const std::string& text) { return Scanner(text).Run(); }
