#pragma once

#include <vector>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineResult.h"

// Test-only: records written out as many times as their frequency weight
// says, the independent check of what the weights mean, and the comparison
// of two fits.
class MCEngineTestCopies {
 public:
  // The input without frequency weights, each record followed by its
  // copies, copies[r] records in all. With newSubjects, copy j of a record
  // gets subject codes of its own in every block and in the residual
  // (s + j (largest code + 1)), so that the copies of a group of records are
  // groups of their own; without, the copies keep the record's subjects.
  static MCEngine_850::MCEngineInput Write(const MCEngine_850::MCEngineInput& input, const std::vector<int>& copies,
                                           bool newSubjects);
  // Frequency weights that vary within subjects: 1, 2 or 3 by record.
  static std::vector<int> ByRecord(int nRecords);
  // Frequency weights that are equal within a subject: 1, 2 or 3 by subject.
  static std::vector<int> BySubject(const std::vector<int>& subjects);
  static std::vector<double> AsWeights(const std::vector<int>& copies);
  // The input with these copies as its frequency weights.
  static MCEngine_850::MCEngineInput Weighted(const MCEngine_850::MCEngineInput& input, const std::vector<int>& copies);

  // Both fits give the same numbers to tol, relative: -2 log L and the
  // information criteria, the counts, the fixed estimates with their
  // statistics, the covariance parameters with theirs, and the Type I and
  // III tests.
  static void ExpectSameFit(const MCEngine_850::MCEngineResult& a, const MCEngine_850::MCEngineResult& b,
                            double tol);
};
