#pragma once

#include <cfloat>
#include <cmath>
#include <memory>
#include <string>

#include "app/AppCommandError.h"
#include "app/AppCommandReader.h"
#include "app/AppExprEvaluator.h"
#include "app/AppExprParser.h"
#include "app/AppLexer.h"
#include "host/data/ZORV_Dataset.h"

// A small file for expressions, five cases:
//   row  x     y     s (A8)   n (A6)
//   0    4     2     abc      12.5
//   1    -1    0     " Hi "   x
//   2    sys   3     ""       " "
//   3    0     sys   xyz      3
//   4    99    1     NA       1e3
// 99 is a user-missing value of x, and "NA" of s.
namespace exprtest {

inline void MakeFile(ZORV_Dataset& data) {
  data.AddVariable("x", 0);
  data.AddVariable("y", 0);
  data.AddVariable("s", 8);
  data.AddVariable("n", 6);
  data.GetVariable(0)->AddMissingValue(99);
  data.GetVariable(2)->AddMissingString("NA");
  data.AppendCases(5);
  const double xs[] = {4, -1, -DBL_MAX, 0, 99};
  const double ys[] = {2, 0, 3, -DBL_MAX, 1};
  const char* ss[] = {"abc", " Hi ", "", "xyz", "NA"};
  const char* ns[] = {"12.5", "x", " ", "3", "1e3"};
  for (long r = 0; r < 5; ++r) {
    data.SetNum(r, 0, xs[r]);
    data.SetNum(r, 1, ys[r]);
    data.SetString(r, 2, ss[r]);
    data.SetString(r, 3, ns[r]);
  }
}

// Reads `expression` as the whole text of a command.
struct Parsed {
  std::vector<AppCommandText> fvCommands;
  std::unique_ptr<AppExprNode> fpNode;
  std::string fError;
};

inline std::unique_ptr<Parsed> Parse(const ZORV_Dataset& data, const std::string& expression) {
  auto parsed = std::make_unique<Parsed>();
  parsed->fvCommands = AppLexer::Split(expression + ".");
  AppCommandReader reader(parsed->fvCommands.at(0), "t.gmx");
  try {
    AppExprParser parser(data);
    parsed->fpNode = parser.Parse(reader);
    reader.ExpectEnd("an operator or the end of the command");
  } catch (const AppCommandError& e) {
    parsed->fError = e.what();
  }
  return parsed;
}

}  // namespace exprtest
