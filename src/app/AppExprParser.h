#pragma once

#include <memory>
#include <string>

#include "app/AppExprNode.h"

class AppCommandReader;
class ZORV_Dataset;
struct AppToken;

// Reads an expression of a command and checks it against the active data:
// every name is a variable or a function, operands and arguments have the
// types their operators and functions need, parentheses balance, and each
// function gets as many arguments as it takes. A mistake throws an
// AppCommandError at the place it stands.
//
// Operators, loosest first: OR (also |); AND (also &); NOT (also ~); the
// comparisons = <> ~= < <= > >=, one between two operands; + and -; * and
// /; a sign; ** (from the right). Arithmetic takes numbers, the logical
// operators take numbers as truth values, and a comparison takes two
// numbers or two texts.
class AppExprParser {
 public:
  explicit AppExprParser(const ZORV_Dataset& data);

  // Expressions nest at most this deep, in the tree and while they are read,
  // so that neither reading nor computing them can run out of stack.
  enum { kMaxDepth = 1000 };

  // Reads from the reader's token up to the first token that cannot go on
  // with the expression, and leaves the reader there.
  std::unique_ptr<AppExprNode> Parse(AppCommandReader& reader);
  // The same, for an expression that must be numeric; `what` names it in
  // the message ("a condition").
  std::unique_ptr<AppExprNode> ParseNumeric(AppCommandReader& reader, const std::string& what);

 private:
  using Node = std::unique_ptr<AppExprNode>;

  using Level = Node (AppExprParser::*)(AppCommandReader& reader);

  Node ParseOr(AppCommandReader& reader);
  Node ParseAnd(AppCommandReader& reader);
  // Operands read by `next`, joined by the operator (its keyword or symbol).
  Node ParseLogical(AppCommandReader& reader, AppExprNode::Operator op, const char* keyword, char symbol, Level next);
  Node ParseNot(AppCommandReader& reader);
  Node ParseComparison(AppCommandReader& reader);
  Node ParseAdditive(AppCommandReader& reader);
  Node ParseMultiplicative(AppCommandReader& reader);
  Node ParseSign(AppCommandReader& reader);
  Node ParsePower(AppCommandReader& reader);
  Node ParsePrimary(AppCommandReader& reader);
  Node ParseName(AppCommandReader& reader);
  Node ParseCall(AppCommandReader& reader, const AppToken& name);

  // One level deeper while reading; fails past kMaxDepth.
  class Nesting {
   public:
    Nesting(AppExprParser& parser, const AppCommandReader& reader);
    ~Nesting() { --fParser.fNesting; }
    Nesting(const Nesting&) = delete;
    Nesting& operator=(const Nesting&) = delete;

   private:
    AppExprParser& fParser;
  };
  // Sets the depth of a node from its operands; fails past kMaxDepth.
  void SetDepth(const AppCommandReader& reader, AppExprNode& node) const;
  Node Unary(const AppCommandReader& reader, AppExprNode::Operator op, const AppToken& at, Node operand) const;

  // A node of two operands, checked for the operator.
  Node Binary(AppCommandReader& reader, AppExprNode::Operator op, const std::string& symbol, Node left, Node right);
  void RequireNumeric(const AppCommandReader& reader, const AppExprNode& operand, const std::string& symbol) const;
  void CheckArguments(const AppCommandReader& reader, const AppToken& name, AppExprNode& call) const;
  [[noreturn]] void FailAt(const AppCommandReader& reader, const AppExprNode& node, const std::string& text) const;

  const ZORV_Dataset& fData;
  // The sign of the number at the reader was read as + or -: the number
  // stands for its magnitude.
  bool fbSignTaken = false;
  int fNesting = 0;
};
