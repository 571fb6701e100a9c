#pragma once

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineStatus.h"
#include "numeric/engine/detail/MCEngineData.h"
#include "numeric/common/MCStopPoll.h"

namespace MCEngine_850 {

using MCCommon_850::MCStopPoll;

// Checks the input, drops unusable records, decides aliasing once from X'X,
// finds the independent groups of records and lays the data out by group.
// Every pass over the records, and the sweep that decides aliasing, polls
// the cancel query; a stop ends the building with kCancelled.
class MCEngineDataBuilder {
 public:
  static MCEngineStatus Build(const MCEngineInput& input, double singularTolerance, MCEngineData& data,
                              const MCCommon_850::MCQueryCancel* pCancel = nullptr);

  // Sweeps the P x P matrix (row-major) in column order; a column is aliased
  // when its pivot falls to tol times its original diagonal, or the diagonal
  // is 0. With a poll that says stop, what it returns is meaningless.
  static std::vector<bool> FindAliased(const std::vector<double>& xtx, int P, double tol,
                                       MCStopPoll* pPoll = nullptr);

  // True for structures whose matrix is diagonal whatever the parameters.
  static bool IsDiagonalType(MCEngineCovType type);

 private:
  // The sizes and indices of the input agree with one another.
  static bool IsConsistent(const MCEngineInput& input);
  static bool IsConsistent(const MCEngineRandomBlock& block, int n);
  static bool IsSpatial(const MCEngineResidualBlock& res);
  // Positions place the records (a spatial structure ignores them).
  static bool PositionsGiven(const MCEngineResidualBlock& res);
  // The input records whose values, weights, subjects and positions can all
  // be used, in input order.
  static std::vector<int> UsableRecords(const MCEngineInput& input, MCStopPoll& poll);
  // X'X weighted by frequency times scale weights over the usable records,
  // and the aliased columns it shows; aliasing is decided once, here.
  static void DecideAliasing(const MCEngineInput& input, const std::vector<int>& used, double tol, MCEngineData& data,
                             MCStopPoll& poll);
  // The independent group of each usable record: records coupled by a random
  // block or by the residual share one. Groups are numbered in the order of
  // their first record.
  static std::vector<int> FindGroups(const MCEngineInput& input, const std::vector<int>& used, MCStopPoll& poll);
  // The records laid out group after group, in their order within a group.
  static void LayOutByGroup(const std::vector<int>& used, const std::vector<int>& groupOf, MCEngineData& data);
  // The response (scaled), the kept columns and the scale weights in engine
  // order.
  static void CopyRecords(const MCEngineInput& input, MCEngineData& data, MCStopPoll& poll);
  // Input block b in engine order. A VC or ID block whose records have at
  // most one nonzero column per effect is split into one-column blocks, one
  // per effect, whose subjects are the (subject, column) pairs: the same
  // model, without a dense matrix over all of its columns.
  static void LayOutRandomBlock(const MCEngineInput& input, int b, MCEngineData& data, MCStopPoll& poll);
  // The effect of each column of a VC block (0 for any other block); the
  // number of effects.
  static int EffectsOfColumns(const MCEngineRandomBlock& block, std::vector<int>& effectOf);
  static bool SplitsByEffect(const MCEngineRandomBlock& block, const std::vector<int>& effectOf, int nEffects,
                             const MCEngineData& data, MCStopPoll& poll);
  // Residual subjects, positions and the dimension of the residual
  // structure; an error for a position twice in a subject or too many
  // positions.
  static MCEngineStatus LayOutResidual(const MCEngineResidualBlock& res, MCEngineData& data);
  // A spatial structure's positions: the distinct points, in ascending order.
  static void PlaceOnPoints(const MCEngineResidualBlock& res, MCEngineData& data);
  static bool HasDuplicatePosition(const MCEngineData& data);
  // Frequency weights, on records laid out by group with their blocks and
  // residual positions. Where the residual structure couples no records, a
  // record's weight copies the record within its subjects; where it couples
  // them, two copies of a record would share its position, so the weight
  // copies the whole independent group and must be equal within it.
  static MCEngineStatus AssignFrequencyWeights(const std::vector<double>& fw, MCEngineData& data);
};

}  // namespace MCEngine_850
