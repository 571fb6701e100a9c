#pragma once

#include <vector>

#include "app/AppExprNode.h"
#include "app/AppExprValue.h"

class ZORV_Dataset;

// Computes a checked expression for the cases of the active data.
//
// Missing values: a system-missing or user-missing value of a variable is
// missing, and an operation on a missing value gives a missing value. The
// exceptions: AND is false when either side is false, OR is true when
// either side is true, and otherwise missing when a side is missing; IF
// looks only at the branch it chooses; MISSING tests for a missing value;
// MIN, MAX, MEAN and SUM take the arguments that are not missing.
//
// A value that cannot be computed (a division by zero, a logarithm of a
// number that is not positive, a result beyond the range of a double, a
// text that is no number) is missing, and counted.
class AppExprEvaluator {
 public:
  explicit AppExprEvaluator(const ZORV_Dataset& data);

  AppExprValue Evaluate(const AppExprNode& node, long row);
  // Whether the value of a numeric expression counts as true: a number
  // other than 0. A missing value is neither true nor false.
  static bool IsTrue(const AppExprValue& value) { return !value.IsMissingNumber() && value.fNumber != 0.0; }

  // The values that could not be computed so far.
  long GetFailures() const { return fFailures; }

 private:
  AppExprValue Variable(const AppExprNode& node, long row) const;
  AppExprValue Unary(const AppExprNode& node, long row);
  AppExprValue Binary(const AppExprNode& node, long row);
  AppExprValue Logical(const AppExprNode& node, long row);
  AppExprValue Call(const AppExprNode& node, long row);
  // A numeric result from operands that are not missing: counted when it is
  // not a finite number.
  AppExprValue Result(double value);

  const ZORV_Dataset& fData;
  long fFailures = 0;
};
