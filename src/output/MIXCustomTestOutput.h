#pragma once

#include <string>

class BpHeading;
class MIXComOutputData;
namespace MCGLMM_850 {
class GLMMCustomTestStat;
class GLMMOutputStats;
}  // namespace MCGLMM_850

// The tables of the custom hypothesis tests of one split (an extension of
// the classic tables). Under the heading "Custom Hypothesis Tests", each
// test has a heading of its own, named by its label or "Custom Hypothesis
// Test n", with the estimates of its rows, its joint test and, with
// /DISPLAY LMATRIX, its coefficients over the fixed parameters. A row or a
// joint test that could not be computed has empty cells and a note saying
// why.
class MIXCustomTestOutput {
 public:
  explicit MIXCustomTestOutput(const MIXComOutputData* pComOutputData);
  MIXCustomTestOutput(const MIXCustomTestOutput&) = delete;
  MIXCustomTestOutput& operator=(const MIXCustomTestOutput&) = delete;

  // The current split's tests; nothing without a fit.
  void DisplayCustomTests();
  void DisplayCustomTests(const MCGLMM_850::GLMMOutputStats* pStats);

  // The string-table key that explains a state other than computed.
  static const char* StateNote(int state);

 private:
  void DisplayEstimates(BpHeading& heading, const MCGLMM_850::GLMMCustomTestStat& test);
  void DisplayJointTest(BpHeading& heading, const MCGLMM_850::GLMMCustomTestStat& test, const std::string& name);
  void DisplayCoefficients(BpHeading& heading, const MCGLMM_850::GLMMCustomTestStat& test);

  const MIXComOutputData* fpComOutputData;
};
