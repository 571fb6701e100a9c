#include "app/AppExprParser.h"

#include <algorithm>

#include "app/AppCommandError.h"
#include "app/AppCommandReader.h"
#include "app/AppExprFunction.h"
#include "host/data/ZORV_Dataset.h"

namespace {

const char* const kOperand = "a variable, number, text, function or '('";

std::unique_ptr<AppExprNode> NewNode(AppExprNode::Kind kind, const AppToken& at) {
  auto node = std::make_unique<AppExprNode>();
  node->fKind = kind;
  node->fLine = at.fLine;
  node->fColumnInLine = at.fColumn;
  return node;
}

// The token after `at` follows it with nothing between: "<" and "=" make "<=".
bool Joined(const AppCommandReader& reader, std::size_t ahead) {
  const AppToken& first = reader.Peek(ahead);
  const AppToken& second = reader.Peek(ahead + 1);
  return second.fKind == AppToken::SYMBOL && second.fOffset == first.fOffset + 1;
}

// The comparison at the reader and the number of its tokens; 0 when none.
int Comparison(const AppCommandReader& reader, AppExprNode::Operator& op, std::string& symbol) {
  const bool joined = Joined(reader, 0);
  const AppToken& second = reader.Peek(1);
  if (reader.IsSymbol('=')) {
    op = AppExprNode::EQUAL;
    symbol = "=";
    return 1;
  }
  if (reader.IsSymbol('<') || reader.IsSymbol('>')) {
    const bool less = reader.IsSymbol('<');
    if (joined && second.IsSymbol('=')) {
      op = less ? AppExprNode::LESS_EQUAL : AppExprNode::GREATER_EQUAL;
      symbol = less ? "<=" : ">=";
      return 2;
    }
    if (less && joined && second.IsSymbol('>')) {
      op = AppExprNode::NOT_EQUAL;
      symbol = "<>";
      return 2;
    }
    op = less ? AppExprNode::LESS : AppExprNode::GREATER;
    symbol = less ? "<" : ">";
    return 1;
  }
  if (reader.IsSymbol('~') && joined && second.IsSymbol('=')) {
    op = AppExprNode::NOT_EQUAL;
    symbol = "~=";
    return 2;
  }
  return 0;
}

std::string TypeWord(char type) { return type == 'S' ? "a text" : "a number"; }

const std::string kTooDeep = "expected an expression nested at most " + std::to_string(AppExprParser::kMaxDepth) +
                             " levels deep, found a deeper one (split it over several commands)";

}  // namespace

AppExprParser::AppExprParser(const ZORV_Dataset& data) : fData(data) {}

AppExprParser::Nesting::Nesting(AppExprParser& parser, const AppCommandReader& reader) : fParser(parser) {
  if (++fParser.fNesting > kMaxDepth) {
    --fParser.fNesting;
    reader.FailAt(reader.Peek(), kTooDeep);
  }
}

void AppExprParser::SetDepth(const AppCommandReader& reader, AppExprNode& node) const {
  for (const auto& arg : node.fvArgs) node.fDepth = std::max(node.fDepth, arg->fDepth + 1);
  if (node.fDepth > kMaxDepth) FailAt(reader, node, kTooDeep);
}

// A node of one operand, placed where its operator stands.
std::unique_ptr<AppExprNode> AppExprParser::Unary(const AppCommandReader& reader, AppExprNode::Operator op,
                                                  const AppToken& at, Node operand) const {
  Node node = NewNode(AppExprNode::UNARY, at);
  node->fOperator = op;
  node->fvArgs.push_back(std::move(operand));
  SetDepth(reader, *node);
  return node;
}

std::unique_ptr<AppExprNode> AppExprParser::Parse(AppCommandReader& reader) {
  fbSignTaken = false;
  fNesting = 0;
  return ParseOr(reader);
}

std::unique_ptr<AppExprNode> AppExprParser::ParseNumeric(AppCommandReader& reader, const std::string& what) {
  Node node = Parse(reader);
  if (node->fType != AppExprNode::NUMERIC) FailAt(reader, *node, "expected " + what + ", found " + node->Describe());
  return node;
}

void AppExprParser::FailAt(const AppCommandReader& reader, const AppExprNode& node, const std::string& text) const {
  throw AppCommandError(reader.GetOrigin(), node.fLine, node.fColumnInLine, text);
}

void AppExprParser::RequireNumeric(const AppCommandReader& reader, const AppExprNode& operand,
                                   const std::string& symbol) const {
  if (operand.fType != AppExprNode::NUMERIC) {
    FailAt(reader, operand, "expected a numeric operand of " + symbol + ", found " + operand.Describe());
  }
}

std::unique_ptr<AppExprNode> AppExprParser::Binary(AppCommandReader& reader, AppExprNode::Operator op,
                                                   const std::string& symbol, Node left, Node right) {
  const bool comparison = op >= AppExprNode::EQUAL && op <= AppExprNode::GREATER_EQUAL;
  if (comparison) {
    if (right->fType != left->fType) {
      const std::string type = left->fType == AppExprNode::NUMERIC ? "number" : "text";
      FailAt(reader, *right, "expected a " + type + " to compare with the " + type + " before " + symbol + ", found " +
                                 right->Describe());
    }
  } else {
    RequireNumeric(reader, *left, symbol);
    RequireNumeric(reader, *right, symbol);
  }
  auto node = std::make_unique<AppExprNode>();
  node->fKind = AppExprNode::BINARY;
  node->fType = AppExprNode::NUMERIC;
  node->fOperator = op;
  node->fLine = left->fLine;
  node->fColumnInLine = left->fColumnInLine;
  node->fvArgs.push_back(std::move(left));
  node->fvArgs.push_back(std::move(right));
  SetDepth(reader, *node);
  return node;
}

std::unique_ptr<AppExprNode> AppExprParser::ParseOr(AppCommandReader& reader) {
  const Nesting nesting(*this, reader);
  return ParseLogical(reader, AppExprNode::OR, "OR", '|', &AppExprParser::ParseAnd);
}

std::unique_ptr<AppExprNode> AppExprParser::ParseAnd(AppCommandReader& reader) {
  return ParseLogical(reader, AppExprNode::AND, "AND", '&', &AppExprParser::ParseNot);
}

std::unique_ptr<AppExprNode> AppExprParser::ParseLogical(AppCommandReader& reader, AppExprNode::Operator op,
                                                         const char* keyword, char symbol, Level next) {
  Node left = (this->*next)(reader);
  while (reader.IsKeyword(keyword) || reader.IsSymbol(symbol)) {
    const std::string name = reader.IsSymbol(symbol) ? std::string("'") + symbol + "'" : std::string(keyword);
    reader.Next();
    Node right = (this->*next)(reader);
    left = Binary(reader, op, name, std::move(left), std::move(right));
  }
  return left;
}

std::unique_ptr<AppExprNode> AppExprParser::ParseNot(AppCommandReader& reader) {
  const bool tilde = reader.IsSymbol('~') && !(Joined(reader, 0) && reader.IsSymbol('=', 1));
  if (!reader.IsKeyword("NOT") && !tilde) return ParseComparison(reader);
  const Nesting nesting(*this, reader);
  const AppToken& at = reader.Next();
  Node operand = ParseNot(reader);
  RequireNumeric(reader, *operand, tilde ? "'~'" : "NOT");
  return Unary(reader, AppExprNode::NOT, at, std::move(operand));
}

std::unique_ptr<AppExprNode> AppExprParser::ParseComparison(AppCommandReader& reader) {
  Node left = ParseAdditive(reader);
  AppExprNode::Operator op = AppExprNode::EQUAL;
  std::string symbol;
  const int tokens = Comparison(reader, op, symbol);
  if (tokens == 0) return left;
  for (int i = 0; i < tokens; ++i) reader.Next();
  Node right = ParseAdditive(reader);
  Node node = Binary(reader, op, "'" + symbol + "'", std::move(left), std::move(right));
  std::string again;
  if (Comparison(reader, op, again) > 0) {
    reader.FailAt(reader.Peek(), "expected AND or OR between two comparisons, found '" + again + "'");
  }
  return node;
}

std::unique_ptr<AppExprNode> AppExprParser::ParseAdditive(AppCommandReader& reader) {
  Node left = ParseMultiplicative(reader);
  for (;;) {
    const AppToken& at = reader.Peek();
    char sign = 0;
    if (at.IsSymbol('+') || at.IsSymbol('-')) {
      sign = at.fText[0];
      reader.Next();
    } else if (at.fKind == AppToken::NUMBER && (at.fText[0] == '+' || at.fText[0] == '-')) {
      // "x -1": the lexer kept the sign with the number; here it is the operator.
      sign = at.fText[0];
      fbSignTaken = true;
    } else {
      return left;
    }
    Node right = ParseMultiplicative(reader);
    left = Binary(reader, sign == '+' ? AppExprNode::ADD : AppExprNode::SUBTRACT, std::string("'") + sign + "'",
                  std::move(left), std::move(right));
  }
}

std::unique_ptr<AppExprNode> AppExprParser::ParseMultiplicative(AppCommandReader& reader) {
  Node left = ParseSign(reader);
  for (;;) {
    const bool power = reader.IsSymbol('*') && Joined(reader, 0) && reader.IsSymbol('*', 1);
    if (power || !(reader.IsSymbol('*') || reader.IsSymbol('/'))) return left;
    const char symbol = reader.Peek().fText[0];
    reader.Next();
    Node right = ParseSign(reader);
    left = Binary(reader, symbol == '*' ? AppExprNode::MULTIPLY : AppExprNode::DIVIDE, std::string("'") + symbol + "'",
                  std::move(left), std::move(right));
  }
}

std::unique_ptr<AppExprNode> AppExprParser::ParseSign(AppCommandReader& reader) {
  const Nesting nesting(*this, reader);
  // A sign binds looser than **, also the sign the lexer kept with a
  // number: -2 ** 2 is -(2 ** 2).
  const AppToken& first = reader.Peek();
  if (!fbSignTaken && first.fKind == AppToken::NUMBER && (first.fText[0] == '-' || first.fText[0] == '+') &&
      reader.IsSymbol('*', 1) && Joined(reader, 1) && reader.IsSymbol('*', 2)) {
    fbSignTaken = true;
    Node power = ParsePower(reader);
    if (first.fText[0] == '+') return power;
    return Unary(reader, AppExprNode::NEGATE, first, std::move(power));
  }
  if (!reader.IsSymbol('-') && !reader.IsSymbol('+')) return ParsePower(reader);
  const AppToken& at = reader.Next();
  Node operand = ParseSign(reader);
  RequireNumeric(reader, *operand, "'" + at.fText + "'");
  if (at.fText == "+") return operand;
  return Unary(reader, AppExprNode::NEGATE, at, std::move(operand));
}

std::unique_ptr<AppExprNode> AppExprParser::ParsePower(AppCommandReader& reader) {
  Node base = ParsePrimary(reader);
  if (!(reader.IsSymbol('*') && Joined(reader, 0) && reader.IsSymbol('*', 1))) return base;
  reader.Next();
  reader.Next();
  // The exponent may carry a sign and is itself a power: 2 ** -1, 2 ** 3 ** 2.
  Node exponent = ParseSign(reader);
  return Binary(reader, AppExprNode::POWER, "'**'", std::move(base), std::move(exponent));
}

std::unique_ptr<AppExprNode> AppExprParser::ParsePrimary(AppCommandReader& reader) {
  const AppToken& at = reader.Peek();
  if (at.fKind == AppToken::NUMBER) {
    Node node = NewNode(AppExprNode::NUMBER, at);
    node->fNumber = fbSignTaken && at.fText[0] == '-' ? -at.fNumber : at.fNumber;
    if (fbSignTaken) ++node->fColumnInLine;
    fbSignTaken = false;
    reader.Next();
    return node;
  }
  if (at.fKind == AppToken::STRING) {
    Node node = NewNode(AppExprNode::TEXT, at);
    node->fType = AppExprNode::STRING;
    node->fText = at.fText;
    reader.Next();
    return node;
  }
  if (at.IsSymbol('(')) {
    reader.Next();
    Node inner = ParseOr(reader);
    if (!reader.IsSymbol(')')) {
      reader.Fail(reader.Peek(), "')' to close the '(' at " + std::to_string(at.fLine) + ":" +
                                     std::to_string(at.fColumn));
    }
    reader.Next();
    return inner;
  }
  if (at.fKind == AppToken::WORD && !reader.IsKeyword("AND") && !reader.IsKeyword("OR") && !reader.IsKeyword("NOT")) {
    return ParseName(reader);
  }
  reader.Fail(at, kOperand);
}

std::unique_ptr<AppExprNode> AppExprParser::ParseName(AppCommandReader& reader) {
  const AppToken& at = reader.Next();
  const int column = fData.FindVarIndex(at.fText.c_str(), 0);
  const AppExprFunction* function = AppExprFunction::Find(at.fText);
  if (reader.IsSymbol('(')) {
    if (function != nullptr) return ParseCall(reader, at);
    reader.FailAt(at, "expected a function, found '" + at.fText + "'" +
                          (column >= 0 ? std::string(", which is a variable")
                                       : std::string(" (there is no function of that name)")));
  }
  if (column < 0) {
    if (function != nullptr) reader.Fail(reader.Peek(), "'(' after the function " + std::string(function->fName));
    reader.FailAt(at, std::string("expected ") + kOperand + ", found '" + at.fText +
                          "' (the data have no variable of that name)");
  }
  Node node = NewNode(AppExprNode::VARIABLE, at);
  node->fColumn = column;
  node->fText = fData.GetVariable(column)->GetName();
  node->fType = fData.GetVariable(column)->IsString() ? AppExprNode::STRING : AppExprNode::NUMERIC;
  return node;
}

std::unique_ptr<AppExprNode> AppExprParser::ParseCall(AppCommandReader& reader, const AppToken& name) {
  const AppToken& open = reader.Next();
  Node call = NewNode(AppExprNode::FUNCTION, name);
  call->fpFunction = AppExprFunction::Find(name.fText);
  if (!reader.IsSymbol(')')) {
    for (;;) {
      call->fvArgs.push_back(ParseOr(reader));
      if (!reader.AcceptSymbol(',')) break;
    }
  }
  if (!reader.IsSymbol(')')) {
    reader.Fail(reader.Peek(), "',' or ')' to close the '(' at " + std::to_string(open.fLine) + ":" +
                                   std::to_string(open.fColumn));
  }
  reader.Next();
  CheckArguments(reader, name, *call);
  SetDepth(reader, *call);
  return call;
}

void AppExprParser::CheckArguments(const AppCommandReader& reader, const AppToken& name, AppExprNode& call) const {
  const AppExprFunction& function = *call.fpFunction;
  const int count = static_cast<int>(call.fvArgs.size());
  if (count < function.fMinArgs || (function.fMaxArgs >= 0 && count > function.fMaxArgs)) {
    reader.FailAt(name, "the function " + std::string(function.fName) + " " + function.DescribeArity() + ", found " +
                            std::to_string(count));
  }
  for (int i = 0; i < count; ++i) {
    const AppExprNode& arg = *call.fvArgs[static_cast<std::size_t>(i)];
    char type = function.ArgType(i);
    // The branches of IF are alike: the second's type rules the third.
    if (function.fKind == AppExprFunction::CONDITIONAL && i == 2) type = call.fvArgs[1]->fType == AppExprNode::STRING ? 'S' : 'N';
    const char actual = arg.fType == AppExprNode::STRING ? 'S' : 'N';
    if (type != 'A' && type != actual) {
      FailAt(reader, arg, "expected " + TypeWord(type) + " as argument " + std::to_string(i + 1) + " of " +
                              function.fName + ", found " + arg.Describe());
    }
    std::string problem;
    if (!function.CheckLiteral(i, arg, problem)) FailAt(reader, arg, problem);
  }
  const char result = function.fResult == 'B' ? (call.fvArgs[1]->fType == AppExprNode::STRING ? 'S' : 'N')
                                              : function.fResult;
  call.fType = result == 'S' ? AppExprNode::STRING : AppExprNode::NUMERIC;
}
