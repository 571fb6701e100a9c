#pragma once

#include "numeric/common/MCStatus.h"

class ACAInputAdapter;
class MIXParameterAggregator;
namespace MCGLMM_850 {
class GLMMAlgorithm;
class GLMMOutputStats;
class GLMMSettings;
}  // namespace MCGLMM_850

// What the tables of the run side show of the split being shown: its fit,
// its settings, its status, the data adapter and the parameters aggregated
// over all splits. The run controller answers for its current split; the
// output side reads through this face and never reaches back into the
// controller.
class MIXSplitResults {
 public:
  // Null for a split without an algorithm or settings.
  virtual MCGLMM_850::GLMMAlgorithm* GetGLMMAlgorithm() const = 0;
  virtual MCGLMM_850::GLMMSettings* GetGLMMSettings() const = 0;
  virtual MCCommon_850::MCStatus GetStatus() const = 0;
  // The statistics of the split's fit. A broken invariant when the status is
  // an error or the split has no algorithm.
  virtual const MCGLMM_850::GLMMOutputStats* GetOutputStats() const = 0;
  virtual ACAInputAdapter* GetInputAdapter() const = 0;
  // The fixed parameters over all splits; null before the aggregation.
  virtual MIXParameterAggregator* GetFixParamAggr() const = 0;

 protected:
  MIXSplitResults() = default;
  MIXSplitResults(const MIXSplitResults&) = default;
  MIXSplitResults& operator=(const MIXSplitResults&) = default;
  // Never destroyed through this face.
  ~MIXSplitResults() = default;
};
