#pragma once

#include <cstddef>
#include <string>

#include "app/AppCommandText.h"

// Walks the tokens of one command and reports mistakes where they stand.
// Keywords compare without regard to case. Every failure throws an
// AppCommandError that names the file, the line and the column.
class AppCommandReader {
 public:
  AppCommandReader(const AppCommandText& command, const std::string& origin);

  const std::string& GetOrigin() const { return fOrigin; }
  const AppCommandText& GetCommand() const { return fCommand; }
  std::size_t GetIndex() const { return fIndex; }
  void SetIndex(std::size_t index);

  // The token `ahead` places on; the END token past the end.
  const AppToken& Peek(std::size_t ahead = 0) const;
  const AppToken& Next();

  bool AtEnd() const { return Peek().fKind == AppToken::END; }
  // The end of the command, or the "/" of the next subcommand.
  bool AtSubcommandEnd() const { return AtEnd() || Peek().IsSymbol('/'); }
  bool IsWord(std::size_t ahead = 0) const { return Peek(ahead).fKind == AppToken::WORD; }
  bool IsKeyword(const char* keyword, std::size_t ahead = 0) const;
  bool IsSymbol(char c, std::size_t ahead = 0) const { return Peek(ahead).IsSymbol(c); }
  bool IsNumber(std::size_t ahead = 0) const { return Peek(ahead).fKind == AppToken::NUMBER; }
  bool IsString(std::size_t ahead = 0) const { return Peek(ahead).fKind == AppToken::STRING; }
  // A word followed by "=": a keyword setting.
  bool IsSetting(std::size_t ahead = 0) const { return IsWord(ahead) && IsSymbol('=', ahead + 1); }

  bool AcceptKeyword(const char* keyword);
  bool AcceptSymbol(char c);

  // Each Expect takes the next token when it is what `expected` describes
  // and fails with "expected <expected>, found <token>" otherwise.
  const AppToken& ExpectWord(const std::string& expected);
  void ExpectKeyword(const char* keyword, const std::string& expected);
  void ExpectSymbol(char c, const std::string& expected);
  double ExpectNumber(const std::string& expected);
  // A whole number from `low` to `high`.
  long ExpectWhole(const std::string& expected, long low, long high);
  std::string ExpectString(const std::string& expected);
  void ExpectEnd(const std::string& expected);

  // "expected <expected>, found <the token>", at the token. A token that is
  // itself a lexical mistake reports that mistake instead.
  [[noreturn]] void Fail(const AppToken& at, const std::string& expected) const;
  // Any text, at the token.
  [[noreturn]] void FailAt(const AppToken& at, const std::string& text) const;
  // How a token is named in a message: 'Days', 5, the text 'a.csv', '/MEANS',
  // the end of the command.
  std::string Describe(const AppToken& token) const;

  static std::string Upper(const std::string& text);

 private:
  const AppCommandText& fCommand;
  std::string fOrigin;
  std::size_t fIndex = 0;
};
