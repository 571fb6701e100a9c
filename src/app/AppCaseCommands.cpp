#include "app/AppCaseCommands.h"

#include <vector>

#include "app/AppCommandReader.h"
#include "app/AppDataCommands.h"
#include "app/AppExprEvaluator.h"
#include "app/AppExprParser.h"
#include "app/AppVariableReader.h"
#include "host/data/ZORV_Dataset.h"

void AppCaseCommands::Select(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("SELECT", "SELECT");
  reader.ExpectKeyword("IF", "IF and a condition");
  AppVariableReader::NeedData(reader, data);
  AppExprParser parser(*data);
  std::unique_ptr<AppExprNode> condition = parser.ParseNumeric(reader, "a condition (a numeric expression)");
  reader.ExpectEnd("an operator or the end of the command");

  const long cases = data->GetCaseCount();
  std::vector<bool> keep(static_cast<std::size_t>(cases), false);
  AppExprEvaluator evaluator(*data);
  long kept = 0;
  for (long row = 0; row < cases; ++row) {
    if (row % 65536 == 0) AppDataCommands::StopIfInterrupted(reader);
    const bool passes = AppExprEvaluator::IsTrue(evaluator.Evaluate(*condition, row));
    keep[static_cast<std::size_t>(row)] = passes;
    if (passes) ++kept;
  }
  data->KeepCases(keep);
  AppDataCommands::Say(AppDataCommands::Count(kept, "case", "cases") + " of " + std::to_string(cases) + " kept, " +
                       std::to_string(cases - kept) + " removed.");
  AppDataCommands::WarnFailures(evaluator.GetFailures(), "; a case whose condition is missing is removed");
  if (kept == 0 && cases > 0) AppDataCommands::Warn("No case is left in the data.");
}

void AppCaseCommands::Filter(AppCommandReader& reader, ZORV_Dataset* data) {
  reader.ExpectKeyword("FILTER", "FILTER");
  if (reader.AcceptKeyword("OFF")) {
    reader.ExpectEnd("the end of the command");
    if (data != nullptr) data->SetFilterVar(-1);
    AppDataCommands::Say("The filter is off: the analyses use every case.");
    return;
  }
  reader.ExpectKeyword("BY", "BY or OFF");
  AppVariableReader::NeedData(reader, data);
  const AppToken& at = reader.Peek();
  const int column = AppVariableReader::Read(reader, *data, "a numeric filter variable");
  reader.ExpectEnd("the end of the command (one filter variable)");
  if (data->GetVariable(column)->IsString()) {
    reader.FailAt(at, "expected a numeric filter variable, found the string variable '" + at.fText + "'");
  }
  data->SetFilterVar(column);
  long passing = 0;
  for (long row = 0; row < data->GetCaseCount(); ++row) {
    if (data->PassesFilter(row)) ++passing;
  }
  AppDataCommands::Say("The analyses use the " + AppDataCommands::Count(passing, "case", "cases") + " of " +
                       std::to_string(data->GetCaseCount()) + " whose " + data->GetVariable(column)->GetName() +
                       " is neither missing nor 0.");
}
