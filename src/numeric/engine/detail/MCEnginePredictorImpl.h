#pragma once

// Private to the engine's implementation files: includes Eigen.
#include <Eigen/Dense>
#include <limits>
#include <map>
#include <set>
#include <tuple>
#include <utility>
#include <vector>

#include "numeric/engine/MCEnginePrediction.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/engine/MCEngineRandomEntry.h"
#include "numeric/engine/detail/MCEngineSparsePredictor.h"

namespace MCEngine_850 {

class MCEngineFitterImpl;
class MCEngineInput;
class MCEngineModel;
struct MCEngineData;

// The state behind MCEnginePredictor.
//
// A predictable function x'beta + z'u is predicted by k'beta + m'V^-1 y with
// m = Z G z and k = x - X'V^-1 m; its prediction error variance is
//   PEV = z'Gz - m'V^-1 m + k'C k,      C = (X'V^-1 X)^-1,
// which equals l C_mme l' for l = [x, z] and the inverse C_mme of the
// mixed-model equations, without needing G^-1. With V_k = dV/dtheta_k,
// G_k = dG/dtheta_k, m_k = Z G_k z and A_k = X'V^-1 V_k V^-1 X:
//   dPEV/dtheta_k = z'G_k z - 2 m_k'V^-1 m + m'V^-1 V_k V^-1 m
//                   + 2 (X'V^-1 V_k V^-1 m - X'V^-1 m_k)'C k + k'C A_k C k.
// V is block diagonal over the independent groups of records, and m lives on
// the groups of z's subjects, so every term is a sum over groups of products
// with Z'V^-1 Z, Z'V^-1 X and, for the residual's parameters,
// Z'V^-1 R_k V^-1 [Z X] over the group's random columns (for a random
// block's parameters V_k = Z G_k Z'). These are computed once per group from
// W'R^-1 W and W'R^-1 R_k R^-1 W, W = [Z X y], through
// V^-1 = R^-1 - R^-1 Z G (I + Z'R^-1 Z G)^-1 Z'R^-1: no matrix over all of a
// group's records is formed, only those of R's blocks.
//
// A fit that went through the sparse equations is predicted from their
// factor instead (MCEngineSparsePredictor): crossed random effects make all
// records one group, whose dense set-up would grow with the cube of all
// random columns.
class MCEnginePredictorImpl {
 public:
  bool Setup(const MCEngineFitterImpl& fitter, const MCEngineInput& input);
  bool IsReady() const { return fbReady; }
  void SetResidualDF(bool residual) { fbResidualDF = residual; }
  bool GetResidualDF() const { return fbResidualDF; }
  void SetMaxGroupRecords(int records) { fMaxGroupRecords = records; }
  void SetSetupSpace(MCEnginePredictor::SetupSpace space) { fSetupSpace = space; }
  double GetSetupWork() const { return fSetupWork; }
  double GetLargestSetupMatrix() const { return fLargestMatrix; }
  bool HasSubject(int block, int subject) const;
  MCEnginePrediction Predict(const std::vector<double>& x, const std::vector<MCEngineRandomEntry>& z) const;

 private:
  // The columns of one random subject of one engine block within a group.
  struct Segment {
    int fBlock = 0;
    int fOffset = 0;
    std::vector<int> fvColumns;
  };
  // Segments compared by their block, for a search by block.
  struct BlockOrder {
    bool operator()(const Segment& s, int block) const { return s.fBlock < block; }
    bool operator()(int block, const Segment& s) const { return block < s.fBlock; }
  };
  // What a group of records contributes; only groups with random columns
  // are kept. Its segments come block after block.
  struct Group {
    std::vector<Segment> fvSegments;
    int fNColumns = 0;
    // The fixed columns not zero on the group's records, in order: the
    // products over the fixed columns are formed over these alone, so that
    // a fixed factor of many levels costs a group the levels it holds.
    std::vector<int> fvFixed;
    Eigen::MatrixXd fZVZ;
    Eigen::MatrixXd fZVX;
    Eigen::VectorXd fZVr;
    // Per free covariance parameter of the residual: Z'V^-1 R_k V^-1 [Z X];
    // empty for the random blocks' parameters.
    std::vector<Eigen::MatrixXd> fvZVkZ;
    std::vector<Eigen::MatrixXd> fvZVkX;
  };
  // An input block's link to the engine's blocks: one engine block, or one
  // per effect when the engine split the block.
  struct InputBlock {
    int fNColumns = 0;
    std::vector<int> fvColumnEffects;
    std::vector<int> fvEngineBlocks;
    bool fbSplit = false;
    std::map<int, int> fmSubjects;                     // input subject -> engine subject
    std::map<std::pair<int, int>, int> fmSplitSubjects;  // (input subject, column) -> engine subject
    std::set<int> fsSeen;
  };
  using VirtualKey = std::tuple<int, int, long long>;
  // The fit's covariance parameters on the engine's scaled response, and
  // those with an asymptotic covariance (the free ones).
  struct Estimates {
    bool fbOK = false;
    Eigen::VectorXd fTheta;
    std::vector<int> fvFree;
  };

  // The steps of Setup: the fit's estimates and their asymptotic covariance;
  // G and the derivatives of the free parameters' structures (and R's
  // structure SR); the input blocks' link to the engine blocks; then group by
  // group the cross products that predictions need, and finally the fixed
  // estimates.
  Estimates ReadEstimates(const MCEngineFitterImpl& fitter, const MCEngineInput& input);
  void BuildStructures(const MCEngineModel& model, const MCEngineData& data, const Estimates& fit, Eigen::MatrixXd& SR);
  bool LinkInputBlocks(const MCEngineInput& input, const MCEngineData& data);
  // Whether the set-up goes through the sparse factor.
  bool UseSparseFactor(const MCEngineFitterImpl& fitter) const;
  // The fixed estimates of a model fitted by its likelihood, which stand
  // for the GLS ones; false for a fit that keeps the GLS ones.
  static bool GivenEstimates(const MCEngineFitterImpl& fitter, Eigen::VectorXd& given);
  // The set-up group by group.
  bool SetupGroups(const MCEngineFitterImpl& fitter, const Eigen::MatrixXd& SR, const Eigen::VectorXd* given);
  // The input subjects of record k (engine order) and their engine subjects.
  void MapSubjects(const MCEngineInput& input, const MCEngineData& data, int k);
  // Independent group comp: its Z'V^-1 [Z X y] and residual terms, kept when
  // random columns reach it, and its share of X'V^-1 [X y] and of the A_k.
  bool AddGroup(const MCEngineData& data, int comp, const Eigen::MatrixXd& SR, Eigen::MatrixXd& XVX,
                Eigen::VectorXd& XVy);
  // The group's random columns: a segment per engine block and subject.
  // Returns their number.
  int LayOutSegments(const MCEngineData& data, int k0, int m, int groupIndex, Group& group);
  // A group's segments of one block, found by search rather than by a pass
  // over all of them: with many blocks, a pass per parameter would grow
  // with their square.
  struct SegmentRange {
    std::vector<Segment>::const_iterator fBegin, fEnd;
    std::vector<Segment>::const_iterator begin() const { return fBegin; }
    std::vector<Segment>::const_iterator end() const { return fEnd; }
  };
  static SegmentRange SegmentsOf(const Group& group, int block);
  // Which of the two forms below sets a group up: the smaller of its records
  // and its random columns, unless the tests name one.
  bool UseRecordSpace(int m, int q) const;
  // N = W'V^-1 W and, per residual parameter, T_k = W'V^-1 R_k V^-1 W, from
  // R's blocks and (I + Z'R^-1 Z G) over the group's random columns ...
  bool ColumnSpaceProducts(const MCEngineData& data, const Eigen::MatrixXd& SR, int k0, int m, const Group& group,
                           Eigen::MatrixXd& N, std::vector<Eigen::MatrixXd>& T);
  // ... or from V over the group's records.
  bool RecordSpaceProducts(const MCEngineData& data, const Eigen::MatrixXd& SR, int k0, int m, const Group& group,
                           Eigen::MatrixXd& N, std::vector<Eigen::MatrixXd>& T);
  // visit(column in the group, value) for each random entry of record k
  // that is not zero.
  template <typename Visit>
  void ForRandomEntries(const MCEngineData& data, const Group& group, int k, Visit visit) const;
  // The rows of W = [Z X y] of those records over all of the group's columns.
  void RecordDesign(const MCEngineData& data, const std::vector<int>& rows, const Group& group, Eigen::MatrixXd& Wm) const;
  // The group's column of a block's subject's column, or -1 when no record
  // of the group reaches it.
  int LocalColumn(const Group& group, int block, int subject, int column) const;
  // The group holding a block's subject's columns, or -1.
  int GroupOf(int block, int subject) const;
  // Q = W'R^-1 W and, per residual parameter, S_k = W'R^-1 R_k R^-1 W for
  // W = [Z X y], summed over the residual's blocks of records, each with only
  // the random columns its records reach. False when an R is not positive
  // definite.
  bool ResidualCrossProducts(const MCEngineData& data, const Eigen::MatrixXd& SR, int k0, int m, const Group& group,
                             Eigen::MatrixXd& Q, std::vector<Eigen::MatrixXd>& Sk) const;
  // The same when R is diagonal: a record's row of W added to Q as an outer
  // product over the entries it holds, with no matrix per record.
  bool DiagonalCrossProducts(const MCEngineData& data, const Eigen::MatrixXd& SR, int k0, int m, const Group& group,
                             Eigen::MatrixXd& Q, std::vector<Eigen::MatrixXd>& Sk) const;
  // The residual's blocks of records within records k0 .. k0 + m - 1.
  static std::vector<std::vector<int>> ResidualBlocks(const MCEngineData& data, int k0, int m);
  // One residual block's rows of W over the columns it reaches (index).
  void ResidualBlockDesign(const MCEngineData& data, const std::vector<int>& rows, const Group& group, std::vector<int>& index,
                           Eigen::MatrixXd& Wr) const;
  // N = W'V^-1 W from Q, and K = G (I + Z'R^-1 Z G)^-1 Z'R^-1 W.
  void RemoveRandomEffects(const Group& group, const Eigen::MatrixXd& Q, Eigen::MatrixXd& N, Eigen::MatrixXd& K) const;
  // C, beta, and Z'V^-1 r = Z'V^-1 (y - X beta) of every group.
  // The GLS estimates and their covariance; `given` estimates, when not
  // null, stand for the GLS ones.
  bool SolveFixed(const Eigen::MatrixXd& XVX, const Eigen::VectorXd& XVy, const Eigen::VectorXd* given = nullptr);

  // out = M x over the segment's columns of M, x read from offset on.
  static void MultiplyRestricted(const Eigen::MatrixXd& M, const Segment& segment, const Eigen::VectorXd& x,
                                 int offset, Eigen::VectorXd& out);

  // A prediction from the sparse factor: its random columns there, with
  // z'G z and z'G_k z of the columns no record reaches.
  MCEnginePrediction PredictSparse(const Eigen::VectorXd& xk, const MCEngineSparsePredictor::Columns& z, double zGz,
                                   const std::vector<double>& zGkz) const;
  // The prediction with its standard error and df from the PEV and its
  // gradient over the free parameters (null when not known).
  MCEnginePrediction Answer(double estimate, double pev, const Eigen::VectorXd* gradient) const;

  bool fbReady = false;
  bool fbResidualDF = false;
  bool fbSparse = false;
  MCEngineSparsePredictor fSparse;
  double fLargestMatrix = 0.0;
  MCEnginePredictor::SetupSpace fSetupSpace = MCEnginePredictor::kAutomaticSpace;
  // The set-up's multiplications, counted as the cubes and products of the
  // sizes its dense steps take.
  double fSetupWork = 0.0;
  int fMaxGroupRecords = std::numeric_limits<int>::max();
  double fResidualDF = 0.0;
  double fYScale = 1.0;
  int fNColumns = 0;
  std::vector<int> fvKept;
  std::vector<bool> fvAliased;
  Eigen::MatrixXd fHermite;
  Eigen::VectorXd fBeta;
  Eigen::MatrixXd fC;
  // Free covariance parameters: their engine block (-1 residual), dG per
  // engine block parameter, A_k and their asymptotic covariance.
  std::vector<int> fvFreeBlock;
  std::vector<Eigen::MatrixXd> fvFreeDG;
  std::vector<Eigen::MatrixXd> fvA;
  Eigen::MatrixXd fAsy;
  bool fbHaveAsy = false;
  std::vector<Eigen::MatrixXd> fvG;  // per engine block
  std::vector<int> fvEngineBlockDiagonal;
  std::vector<Group> fvGroups;
  // Per engine block and engine subject: the group holding the subject's
  // segment and the segment's place in it, or (-1, -1). Looked up for every
  // entry of every record, so indexed rather than searched.
  std::vector<std::vector<std::pair<int, int>>> fvPlaces;
  std::vector<InputBlock> fvInputBlocks;
};

}  // namespace MCEngine_850
