#pragma once

#include <vector>

namespace MCEngine_850 {
class MCEngineInput;
class MCEngineResult;
class MCEngineTarget;
}  // namespace MCEngine_850

namespace MCGLMM_850 {

class GLMMSettings;

// Observed by predicted categories of a categorical target's fit, each
// category predicted where its fitted probability is the highest (for two
// categories, the event where its probability exceeds one half). A square
// table over K categories, rows observed and columns predicted, with the
// frequency-weighted counts of the records the fit used.
//
// A binary binomial target (values 0 and 1) classifies its records, its
// categories the target's values 0 and 1. An events/trials target
// classifies its trials: each record's events and non-events go to the
// column its probability predicts, the categories non-event and event.
// An ordinal target classifies its records under its categories, each
// record predicted as its most probable category given its linear
// predictor. Other targets, and a binomial target without trials that holds
// other values than 0 and 1, have no table.
class GLMMClassification {
 public:
  // Empty when the fit has no table.
  static GLMMClassification Compute(const GLMMSettings& settings, const MCEngine_850::MCEngineInput& input,
                                    const MCEngine_850::MCEngineResult& result,
                                    const MCEngine_850::MCEngineTarget& target);

  bool IsEmpty() const { return fvCategories.empty(); }
  int GetNCategories() const { return static_cast<int>(fvCategories.size()); }
  // The target's value of each category; for trials 0 non-event, 1 event.
  const std::vector<double>& GetCategories() const { return fvCategories; }
  bool GetUsesTrials() const { return fbTrials; }
  // Row-major counts, rows observed, columns predicted.
  const std::vector<double>& GetCounts() const { return fvCounts; }
  double GetCount(int observed, int predicted) const;
  // The proportion classified correctly; missing without counts.
  double GetAccuracy() const;

 private:
  static GLMMClassification Ordinal(const MCEngine_850::MCEngineInput& input, const MCEngine_850::MCEngineResult& result,
                                    const MCEngine_850::MCEngineTarget& target);

  std::vector<double> fvCategories;
  std::vector<double> fvCounts;
  bool fbTrials = false;
};

}  // namespace MCGLMM_850
