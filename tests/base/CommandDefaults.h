#pragma once

#include "base/MIXCommandLayout.h"
#include "host/data/ZORV_Format.h"
#include "host/parser/ParserMemory.h"

namespace base_test {

// The settings of a GLMIXFIT command that gives no optional keyword, as the
// program lays them out: a model of the target with an intercept, REML,
// Fisher scoring for one step, 100 iterations, Type III tests, formats
// F40.3 for the criteria and F40.4 for the estimates. A test changes what it
// needs afterwards.
inline void WriteDefaultSettings(ParserMemory& memory, int targetColumn) {
  namespace L = MIXCommandLayout;
  memory.SetNumericReal(L::CONFIDENCE, 95.0);
  memory.SetNumericReal(L::PARAMETER_CRITERION, 1e-6);
  memory.SetNumericReal(L::SINGULAR, 1e-12);
  memory.SetNumericInteger(L::TARGET, targetColumn + 1);
  memory.SetNumericInteger(L::CRITERIA_FORMAT, ZORV_Format(ZORV_Format::F, 40, 3).Packed());
  memory.SetNumericInteger(L::ESTIMATES_FORMAT, ZORV_Format(ZORV_Format::F, 40, 4).Packed());
  memory.SetNumericInteger(L::HESSIAN_KIND, 2);
  memory.SetNumericInteger(L::HISTORY_STEP, 1);
  memory.SetNumericInteger(L::SCORING, 1);
  memory.SetNumericInteger(L::LOGLIKELIHOOD_KIND, 2);
  memory.SetNumericInteger(L::METHOD, 2);
  memory.SetNumericInteger(L::ITERATIONS, 100);
  memory.SetNumericInteger(L::HALVING, 5);
  memory.SetNumericInteger(L::PARAMETER_KIND, 1);
  memory.SetNumericInteger(L::TEST_TYPE, 3);
  memory.SetNumericInteger(L::INTERCEPT, 1);
}

}  // namespace base_test
