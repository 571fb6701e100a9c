#include "app/AppCommandReader.h"

#include <cassert>
#include <cctype>
#include <cmath>

#include "app/AppCommandError.h"

AppCommandReader::AppCommandReader(const AppCommandText& command, const std::string& origin)
    : fCommand(command), fOrigin(origin) {
  assert(!command.fvTokens.empty() && command.fvTokens.back().fKind == AppToken::END && "a command ends with END");
}

void AppCommandReader::SetIndex(std::size_t index) {
  fIndex = index < fCommand.fvTokens.size() ? index : fCommand.fvTokens.size() - 1;
}

const AppToken& AppCommandReader::Peek(std::size_t ahead) const {
  std::size_t at = fIndex + ahead;
  if (at >= fCommand.fvTokens.size()) at = fCommand.fvTokens.size() - 1;
  return fCommand.fvTokens[at];
}

const AppToken& AppCommandReader::Next() {
  const AppToken& token = Peek();
  if (token.fKind != AppToken::END) ++fIndex;
  return token;
}

std::string AppCommandReader::Upper(const std::string& text) {
  std::string upper(text);
  for (char& c : upper) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
  return upper;
}

bool AppCommandReader::IsKeyword(const char* keyword, std::size_t ahead) const {
  return IsWord(ahead) && Upper(Peek(ahead).fText) == keyword;
}

bool AppCommandReader::AcceptKeyword(const char* keyword) {
  if (!IsKeyword(keyword)) return false;
  Next();
  return true;
}

bool AppCommandReader::AcceptSymbol(char c) {
  if (!IsSymbol(c)) return false;
  Next();
  return true;
}

const AppToken& AppCommandReader::ExpectWord(const std::string& expected) {
  if (!IsWord()) Fail(Peek(), expected);
  return Next();
}

void AppCommandReader::ExpectKeyword(const char* keyword, const std::string& expected) {
  if (!IsKeyword(keyword)) Fail(Peek(), expected);
  Next();
}

void AppCommandReader::ExpectSymbol(char c, const std::string& expected) {
  if (!IsSymbol(c)) Fail(Peek(), expected);
  Next();
}

double AppCommandReader::ExpectNumber(const std::string& expected) {
  if (!IsNumber()) Fail(Peek(), expected);
  return Next().fNumber;
}

long AppCommandReader::ExpectWhole(const std::string& expected, long low, long high) {
  const AppToken& token = Peek();
  if (token.fKind != AppToken::NUMBER || token.fNumber != std::floor(token.fNumber) ||
      token.fNumber < static_cast<double>(low) || token.fNumber > static_cast<double>(high)) {
    Fail(token, expected);
  }
  Next();
  return static_cast<long>(token.fNumber);
}

std::string AppCommandReader::ExpectString(const std::string& expected) {
  if (!IsString()) Fail(Peek(), expected);
  return Next().fText;
}

void AppCommandReader::ExpectEnd(const std::string& expected) {
  if (!AtEnd()) Fail(Peek(), expected);
}

std::string AppCommandReader::Describe(const AppToken& token) const {
  switch (token.fKind) {
    case AppToken::WORD:
      return "'" + token.fText + "'";
    case AppToken::NUMBER:
      return token.fText;
    case AppToken::STRING:
      return "the text '" + token.fText + "'";
    case AppToken::SYMBOL: {
      if (token.fText == "/") {
        // The "/" of a subcommand is named with the subcommand.
        for (std::size_t i = 0; i + 1 < fCommand.fvTokens.size(); ++i) {
          if (&fCommand.fvTokens[i] == &token && fCommand.fvTokens[i + 1].fKind == AppToken::WORD &&
              fCommand.fvTokens[i + 1].fOffset == token.fOffset + 1) {
            return "'/" + Upper(fCommand.fvTokens[i + 1].fText) + "'";
          }
        }
      }
      return "'" + token.fText + "'";
    }
    case AppToken::END:
      return "the end of the command";
    case AppToken::ERROR:
      return token.fText;
  }
  return std::string();
}

void AppCommandReader::Fail(const AppToken& at, const std::string& expected) const {
  if (at.fKind == AppToken::ERROR) FailAt(at, at.fText);
  FailAt(at, "expected " + expected + ", found " + Describe(at));
}

void AppCommandReader::FailAt(const AppToken& at, const std::string& text) const {
  throw AppCommandError(fOrigin, at.fLine, at.fColumn, text);
}
