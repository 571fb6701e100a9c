#pragma once

namespace MCEngine_850 {

// What tests read of the sparse evaluation under a residual of one variance
// shared by the records (MCEngineSparseEvaluator): the passes over the
// records made so far, and a switch that sends evaluators made while it is
// off down the general path, which visits the records in every evaluation.
class MCEngineRecordFree {
 public:
  static long GetRecordPasses();
  static void CountRecordPass();
  static bool IsAllowed();
  static void Allow(bool allow);
};

}  // namespace MCEngine_850
