#include "app/AppComputeCommand.h"

#include <algorithm>

#include "app/AppColumnValues.h"
#include "app/AppCommandReader.h"
#include "app/AppDataCommands.h"
#include "app/AppExprEvaluator.h"
#include "app/AppExprParser.h"
#include "app/AppVariableReader.h"
#include "host/data/ZORV_Dataset.h"

namespace {

// The most decimals among the numeric variables an expression reads: what
// its results are shown with, at least.
int OperandDecimals(const ZORV_Dataset& data, const AppExprNode& expression) {
  int decimals = 0;
  for (int column : expression.UsedColumns()) {
    const ZORV_Variable& variable = *data.GetVariable(column);
    if (!variable.IsString()) decimals = std::max(decimals, static_cast<int>(variable.GetFormat().fDecimals));
  }
  return decimals;
}

const char* TypeName(bool isString) { return isString ? "text" : "numeric"; }

}  // namespace

void AppComputeCommand::CheckNewName(const AppCommandReader& reader, const AppToken& name) {
  const std::string upper = AppCommandReader::Upper(name.fText);
  if (upper == "AND" || upper == "OR" || upper == "NOT") {
    reader.FailAt(name, "expected a name for the new variable, found '" + name.fText +
                            "', which is an operator of expressions");
  }
  if (name.fText.size() > static_cast<std::size_t>(kMaxName)) {
    reader.FailAt(name, "expected a name of at most " + std::to_string(kMaxName) + " bytes, found '" + name.fText +
                            "' (" + std::to_string(name.fText.size()) + " bytes)");
  }
}

void AppComputeCommand::Run(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("COMPUTE", "COMPUTE");
  AppVariableReader::NeedData(reader, data);
  const AppToken& target = reader.ExpectWord("the name of the variable to compute");
  const int column = data->FindVarIndex(target.fText.c_str(), 0);
  if (column < 0) CheckNewName(reader, target);
  reader.ExpectSymbol('=', "'=' after the variable's name");
  const AppToken& start = reader.Peek();
  AppExprParser parser(*data);
  std::unique_ptr<AppExprNode> expression = parser.Parse(reader);
  reader.ExpectEnd("an operator or the end of the command");
  const bool isString = expression->fType == AppExprNode::STRING;
  if (column >= 0 && data->GetVariable(column)->IsString() != isString) {
    reader.FailAt(start, std::string("expected a ") + TypeName(!isString) + " expression for the " +
                             (isString ? "numeric" : "string") + " variable '" + target.fText + "', found " +
                             expression->Describe());
  }

  const long cases = data->GetCaseCount();
  AppColumnValues values(isString, cases);
  AppExprEvaluator evaluator(*data);
  for (long row = 0; row < cases; ++row) {
    if (row % 65536 == 0) AppDataCommands::StopIfInterrupted(reader);
    AppExprValue value = evaluator.Evaluate(*expression, row);
    if (isString)
      values.SetText(row, value.fbMissingText ? std::string() : std::move(value.fText));
    else
      values.SetNumber(row, value.fNumber);
  }

  std::string name = target.fText;
  long cut = 0;
  if (column >= 0) {
    name = data->GetVariable(column)->GetName();
    cut = values.StoreInto(*data, column);
  } else {
    values.MakeVariable(*data, name, OperandDecimals(*data, *expression),
                        isString ? ZORV_Variable::NOMINAL : ZORV_Variable::SCALE);
  }
  const long missing = cases - values.CountValid();
  std::string summary = (column >= 0 ? "The variable " : "The new variable ") + name + " holds " +
                        AppDataCommands::Count(cases, "computed value", "computed values");
  if (!isString) summary += ", " + AppDataCommands::Count(missing, "missing", "missing");
  AppDataCommands::Say(summary + ".");
  AppDataCommands::WarnFailures(evaluator.GetFailures());
  if (column >= 0) AppDataCommands::WarnCut(cut, name, data->GetVariable(column)->GetType());
}
