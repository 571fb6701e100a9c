#pragma once

#include <memory>
#include <string>
#include <vector>

struct AppExprFunction;


// One node of a checked expression. Every node knows its type, so the
// evaluator never meets a number where it expects a text.
struct AppExprNode {
  enum Kind { NUMBER, TEXT, VARIABLE, UNARY, BINARY, FUNCTION };
  enum Type { NUMERIC, STRING };
  enum Operator {
    NEGATE,  // unary -
    NOT,
    ADD,
    SUBTRACT,
    MULTIPLY,
    DIVIDE,
    POWER,
    EQUAL,
    NOT_EQUAL,
    LESS,
    LESS_EQUAL,
    GREATER,
    GREATER_EQUAL,
    AND,
    OR
  };

  Kind fKind = NUMBER;
  Type fType = NUMERIC;
  double fNumber = 0.0;                 // NUMBER
  std::string fText;                    // TEXT; the name of a VARIABLE as typed
  int fColumn = -1;                     // VARIABLE
  Operator fOperator = ADD;             // UNARY, BINARY
  const AppExprFunction* fpFunction = nullptr;  // FUNCTION
  std::vector<std::unique_ptr<AppExprNode>> fvArgs;  // operands, arguments
  int fLine = 0;                        // where the node starts
  int fColumnInLine = 0;
  int fDepth = 1;                       // levels of nodes from this one down

  // The dataset columns the expression reads, each once, in order of first use.
  std::vector<int> UsedColumns() const;
  // The node as a message names it: "the text 'abc'", "the string variable
  // 'name'", "the text function UPPER", "a numeric expression".
  std::string Describe() const;
};
