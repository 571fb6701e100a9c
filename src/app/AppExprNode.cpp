#include "app/AppExprNode.h"

#include <algorithm>

#include "app/AppExprFunction.h"
#include "host/io/NumberText.h"

namespace {

void Collect(const AppExprNode& node, std::vector<int>& columns) {
  if (node.fKind == AppExprNode::VARIABLE &&
      std::find(columns.begin(), columns.end(), node.fColumn) == columns.end()) {
    columns.push_back(node.fColumn);
  }
  for (const auto& arg : node.fvArgs) Collect(*arg, columns);
}

}  // namespace

std::vector<int> AppExprNode::UsedColumns() const {
  std::vector<int> columns;
  Collect(*this, columns);
  return columns;
}

std::string AppExprNode::Describe() const {
  const std::string type = fType == NUMERIC ? "numeric" : "text";
  switch (fKind) {
    case NUMBER:
      return "the number " + NumberText::Shortest(fNumber);
    case TEXT:
      return "the text '" + fText + "'";
    case VARIABLE:
      return std::string(fType == NUMERIC ? "the numeric" : "the string") + " variable '" + fText + "'";
    case FUNCTION:
      return "the " + type + " function " + fpFunction->fName;
    default:
      return "a " + type + " expression";
  }
}
