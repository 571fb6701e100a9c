#include "app/AppExprEvaluator.h"

#include <cmath>

#include "app/AppExprFunction.h"
#include "host/data/ZORV_Dataset.h"

namespace {

AppExprValue Truth(bool value) { return AppExprValue::Number(value ? 1.0 : 0.0); }

bool IsMissing(const AppExprNode& node, const AppExprValue& value) {
  return node.fType == AppExprNode::NUMERIC ? value.IsMissingNumber() : value.fbMissingText;
}

AppExprValue Missing(const AppExprNode& node) {
  return node.fType == AppExprNode::NUMERIC ? AppExprValue::MissingNumber() : AppExprValue::MissingText();
}

std::size_t TrimmedLength(const std::string& text) {
  const std::size_t last = text.find_last_not_of(' ');
  return last == std::string::npos ? 0 : last + 1;
}

// -1, 0 or 1, as a compares with b. Texts compare by their bytes, trailing
// blanks aside.
int Compare(const AppExprNode& operand, const AppExprValue& a, const AppExprValue& b) {
  if (operand.fType == AppExprNode::STRING) {
    const int c = a.fText.compare(0, TrimmedLength(a.fText), b.fText, 0, TrimmedLength(b.fText));
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
  }
  return a.fNumber < b.fNumber ? -1 : (a.fNumber > b.fNumber ? 1 : 0);
}

}  // namespace

AppExprEvaluator::AppExprEvaluator(const ZORV_Dataset& data) : fData(data) {}

AppExprValue AppExprEvaluator::Evaluate(const AppExprNode& node, long row) {
  switch (node.fKind) {
    case AppExprNode::NUMBER:
      return AppExprValue::Number(node.fNumber);
    case AppExprNode::TEXT:
      return AppExprValue::Text(node.fText);
    case AppExprNode::VARIABLE:
      return Variable(node, row);
    case AppExprNode::UNARY:
      return Unary(node, row);
    case AppExprNode::BINARY:
      return node.fOperator == AppExprNode::AND || node.fOperator == AppExprNode::OR ? Logical(node, row)
                                                                                       : Binary(node, row);
    case AppExprNode::FUNCTION:
      return Call(node, row);
  }
  return AppExprValue::MissingNumber();
}

AppExprValue AppExprEvaluator::Result(double value) {
  if (std::isfinite(value)) return AppExprValue::Number(value);
  ++fFailures;
  return AppExprValue::MissingNumber();
}

AppExprValue AppExprEvaluator::Variable(const AppExprNode& node, long row) const {
  if (node.fType == AppExprNode::STRING) {
    AppExprValue value = AppExprValue::Text(fData.GetString(row, node.fColumn));
    value.fbMissingText = fData.IsUserMissing(row, node.fColumn);
    return value;
  }
  if (fData.IsMissing(row, node.fColumn)) return AppExprValue::MissingNumber();
  return AppExprValue::Number(fData.GetNum(row, node.fColumn));
}

AppExprValue AppExprEvaluator::Unary(const AppExprNode& node, long row) {
  const AppExprValue operand = Evaluate(*node.fvArgs[0], row);
  if (operand.IsMissingNumber()) return operand;
  if (node.fOperator == AppExprNode::NOT) return Truth(operand.fNumber == 0.0);
  return AppExprValue::Number(-operand.fNumber);
}

AppExprValue AppExprEvaluator::Binary(const AppExprNode& node, long row) {
  const AppExprNode& leftNode = *node.fvArgs[0];
  const AppExprValue left = Evaluate(leftNode, row);
  const AppExprValue right = Evaluate(*node.fvArgs[1], row);
  if (IsMissing(leftNode, left) || IsMissing(*node.fvArgs[1], right)) return AppExprValue::MissingNumber();
  const double a = left.fNumber;
  const double b = right.fNumber;
  switch (node.fOperator) {
    case AppExprNode::ADD:
      return Result(a + b);
    case AppExprNode::SUBTRACT:
      return Result(a - b);
    case AppExprNode::MULTIPLY:
      return Result(a * b);
    case AppExprNode::DIVIDE:
      return Result(a / b);
    case AppExprNode::POWER:
      return Result(std::pow(a, b));
    case AppExprNode::EQUAL:
      return Truth(Compare(leftNode, left, right) == 0);
    case AppExprNode::NOT_EQUAL:
      return Truth(Compare(leftNode, left, right) != 0);
    case AppExprNode::LESS:
      return Truth(Compare(leftNode, left, right) < 0);
    case AppExprNode::LESS_EQUAL:
      return Truth(Compare(leftNode, left, right) <= 0);
    case AppExprNode::GREATER:
      return Truth(Compare(leftNode, left, right) > 0);
    case AppExprNode::GREATER_EQUAL:
      return Truth(Compare(leftNode, left, right) >= 0);
    default:
      return AppExprValue::MissingNumber();
  }
}

// AND and OR: a false (true) side decides whatever the other holds.
AppExprValue AppExprEvaluator::Logical(const AppExprNode& node, long row) {
  const AppExprValue left = Evaluate(*node.fvArgs[0], row);
  const AppExprValue right = Evaluate(*node.fvArgs[1], row);
  const bool deciding = node.fOperator == AppExprNode::OR;
  const bool leftDecides = !left.IsMissingNumber() && (left.fNumber != 0.0) == deciding;
  const bool rightDecides = !right.IsMissingNumber() && (right.fNumber != 0.0) == deciding;
  if (leftDecides || rightDecides) return Truth(deciding);
  if (left.IsMissingNumber() || right.IsMissingNumber()) return AppExprValue::MissingNumber();
  return Truth(!deciding);
}

AppExprValue AppExprEvaluator::Call(const AppExprNode& node, long row) {
  const AppExprFunction& function = *node.fpFunction;
  if (function.fKind == AppExprFunction::ROW) return AppExprValue::Number(static_cast<double>(row + 1));
  if (function.fKind == AppExprFunction::CONDITIONAL) {
    const AppExprValue condition = Evaluate(*node.fvArgs[0], row);
    if (condition.IsMissingNumber()) return Missing(node);
    if (IsTrue(condition)) return Evaluate(*node.fvArgs[1], row);
    return node.fvArgs.size() > 2 ? Evaluate(*node.fvArgs[2], row) : Missing(node);
  }
  std::vector<AppExprValue> args;
  args.reserve(node.fvArgs.size());
  for (const auto& arg : node.fvArgs) {
    args.push_back(Evaluate(*arg, row));
    if (function.fMissing == AppExprFunction::PROPAGATE && IsMissing(*arg, args.back())) return Missing(node);
  }
  AppExprValue out;
  if (!function.fEvaluate(node, args, out)) {
    ++fFailures;
    return Missing(node);
  }
  return out;
}
