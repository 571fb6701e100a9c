#pragma once

#include <string>
#include <vector>

#include "app/AppExprNode.h"
#include "app/AppExprValue.h"

// A function of the expression language: its name, what it takes and how it
// is computed. The table of all functions is the one place that knows them;
// the reader checks calls against it and the help lists it.
struct AppExprFunction {
  // How the evaluator runs a call.
  enum Kind {
    PLAIN,        // the arguments are computed, then the function
    CONDITIONAL,  // IF: the condition, then only the branch it chooses
    ROW           // the case's position, from the evaluator
  };
  // Whether a missing argument makes the result missing before the function
  // runs (PROPAGATE), or the function looks at missing arguments itself.
  enum Missing { PROPAGATE, OWN };

  const char* fName;
  // One letter per argument: N number, S text, A either; when fMaxArgs is
  // -1 the last letter stands for every further argument.
  const char* fArgTypes;
  int fMinArgs;
  int fMaxArgs;
  // N number, S text, or B the type of the branches (IF).
  char fResult;
  Kind fKind;
  Missing fMissing;
  // Computes a PLAIN call. False when the value cannot be computed (a value
  // outside the function's domain); `out` is then missing.
  bool (*fEvaluate)(const AppExprNode& call, const std::vector<AppExprValue>& args, AppExprValue& out);
  // For the help: how a call is written, and what it gives.
  const char* fUsage;
  const char* fSummary;

  // The type letter of argument `index` (0-based).
  char ArgType(int index) const;
  // "takes 1 argument", "takes 1 or 2 arguments", "takes at least 1 argument".
  std::string DescribeArity() const;
  // Whether a literal argument can be used; the reason when not.
  bool CheckLiteral(int index, const AppExprNode& arg, std::string& problem) const;

  // The function of that name, without regard to case; null when none.
  static const AppExprFunction* Find(const std::string& name);
  static const std::vector<AppExprFunction>& All();
};
