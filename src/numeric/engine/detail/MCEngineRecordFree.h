#pragma once

namespace MCEngine_850 {

// What tests read of the sparse evaluation under a residual of one variance
// shared by the records (MCEngineSparseEvaluator): the passes over the
// records made so far in the process.
class MCEngineRecordFree {
 public:
  static long GetRecordPasses();
  static void CountRecordPass();
};

}  // namespace MCEngine_850
