#include "numeric/engine/detail/MCEnginePredictorImpl.h"

#include <algorithm>
#include <cmath>
#include <memory>

#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/detail/MCEngineDataBuilder.h"
#include "numeric/engine/detail/MCEngineFitterImpl.h"
#include "numeric/engine/detail/MCEngineMostlyZero.h"
#include "numeric/engine/detail/MCEngineTriangular.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

// Element (i, j), records in engine order, of a residual matrix over
// positions, scaled by the records' scale weights.
double ResidualEntry(const MCEngineData& data, const Eigen::MatrixXd& S, int i, int j) {
  const int pi = data.fvResPosition[U(i)];
  const int pj = data.fvResPosition[U(j)];
  const double wi = data.fvScaleWeight[U(i)];
  const double wj = data.fvScaleWeight[U(j)];
  return i == j ? S(pi, pi) / wi : S(pi, pj) / std::sqrt(wi * wj);
}

// The rows and columns of M at those indices.
Eigen::MatrixXd Restrict(const Eigen::MatrixXd& M, const std::vector<int>& index) {
  const int n = static_cast<int>(index.size());
  Eigen::MatrixXd out(n, n);
  for (int a = 0; a < n; ++a) {
    for (int b = 0; b < n; ++b) out(a, b) = M(index[U(a)], index[U(b)]);
  }
  return out;
}

// Adds M' A M over the index set to the symmetric matrix T.
void AddAt(Eigen::MatrixXd& T, const std::vector<int>& index, const Eigen::MatrixXd& product) {
  const int n = static_cast<int>(index.size());
  for (int a = 0; a < n; ++a) {
    for (int b = 0; b < n; ++b) T(index[U(a)], index[U(b)]) += product(a, b);
  }
}

// Adds c v v' to T at the index set (an index may repeat).
void AddOuter(Eigen::MatrixXd& T, const std::vector<int>& index, const std::vector<double>& v, double c) {
  const std::size_t n = index.size();
  for (std::size_t a = 0; a < n; ++a) {
    const double cva = c * v[a];
    for (std::size_t b = 0; b < n; ++b) T(index[a], index[b]) += cva * v[b];
  }
}

// A group's product over its own fixed columns placed among all p of them.
Eigen::MatrixXd ToAllColumns(const Eigen::MatrixXd& local, const std::vector<int>& fixed, int p) {
  Eigen::MatrixXd out = Eigen::MatrixXd::Zero(local.rows(), p);
  for (std::size_t j = 0; j < fixed.size(); ++j) out.col(fixed[j]) = local.col(static_cast<Eigen::Index>(j));
  return out;
}

// The fixed columns not zero on records k0 .. k0 + m - 1.
std::vector<int> FixedColumnsOf(const MCEngineData& data, int k0, int m) {
  const int p = data.fRank;
  std::vector<int> fixed;
  for (int j = 0; j < p; ++j) {
    for (int k = k0; k < k0 + m; ++k) {
      if (data.fvXr[U(k) * U(p) + U(j)] != 0.0) {
        fixed.push_back(j);
        break;
      }
    }
  }
  return fixed;
}

}  // namespace

bool MCEnginePredictorImpl::Setup(const MCEngineFitterImpl& fitter, const MCEngineInput& input) {
  const bool residualDF = fbResidualDF;
  const int maxGroupRecords = fMaxGroupRecords;
  const MCEnginePredictor::SetupSpace space = fSetupSpace;
  *this = MCEnginePredictorImpl();
  fbResidualDF = residualDF;
  fMaxGroupRecords = maxGroupRecords;
  fSetupSpace = space;
  const MCEngineData& data = fitter.GetData();
  fbSparse = UseSparseFactor(fitter);
  for (int comp = 0; comp < data.GetNComponents() && !fbSparse; ++comp) {
    if (data.fvComponentStart[U(comp) + 1] - data.fvComponentStart[U(comp)] > fMaxGroupRecords) return false;
  }
  const MCEnginePredictorImpl::Estimates fit = ReadEstimates(fitter, input);
  if (!fit.fbOK) return false;
  Eigen::MatrixXd SR;
  BuildStructures(fitter.GetModel(), data, fit, SR);
  if (!LinkInputBlocks(input, data)) return false;
  Eigen::VectorXd given;
  const Eigen::VectorXd* pGiven = GivenEstimates(fitter, given) ? &given : nullptr;
  if (fbSparse) {
    const bool derivatives = !fbResidualDF && fbHaveAsy;
    auto* pEvaluator = dynamic_cast<MCEngineSparseEvaluator*>(fitter.GetEvaluator());
    std::unique_ptr<MCEngineSparseEvaluator> pOwn;
    if (pEvaluator == nullptr) {
      const bool crossProducts = MCEngineSettings().GetCrossProducts();
      pOwn = std::make_unique<MCEngineSparseEvaluator>(data, fitter.GetModel(), crossProducts);
      pEvaluator = pOwn.get();
    }
    if (!fSparse.Setup(*pEvaluator, fitter.GetModel(), fit.fTheta, fit.fvFree, derivatives, pGiven,
                       fitter.GetCancel())) {
      return false;
    }
    fBeta = fSparse.GetBeta();
    fC = fSparse.GetC();
    fSetupWork = fSparse.GetSetupWork();
    fLargestMatrix = fSparse.GetLargestMatrix();
  } else if (!SetupGroups(fitter, SR, pGiven)) {
    return false;
  }

  const int p = data.fRank;
  fResidualDF = data.fTotalWeight - p;
  fNColumns = data.fNColumns;
  fvKept = data.fvKept;
  fvAliased = data.fvAliased;
  fHermite = fitter.GetHypothesis()->GetHermite();
  fbReady = true;
  return true;
}

bool MCEnginePredictorImpl::UseSparseFactor(const MCEngineFitterImpl& fitter) const {
  if (fSetupSpace != MCEnginePredictor::kAutomaticSpace) return fSetupSpace == MCEnginePredictor::kSparseFactor;
  return fitter.GetResult().GetSolverPath() == MCEngineSettings::kSparseEquations;
}

bool MCEnginePredictorImpl::GivenEstimates(const MCEngineFitterImpl& fitter, Eigen::VectorXd& given) {
  // A model fitted by its likelihood keeps its own fixed estimates: the
  // random effects' predictions are then its conditional modes.
  if (!fitter.HasReplacedEstimates()) return false;
  const MCEngineData& data = fitter.GetData();
  given.resize(data.fRank);
  for (int i = 0; i < data.fRank; ++i) given[i] = fitter.GetHypothesis()->GetBeta()[data.fvKept[U(i)]];
  return true;
}

bool MCEnginePredictorImpl::SetupGroups(const MCEngineFitterImpl& fitter, const Eigen::MatrixXd& SR,
                                        const Eigen::VectorXd* given) {
  const MCEngineData& data = fitter.GetData();
  const int p = data.fRank;
  Eigen::MatrixXd XVX = Eigen::MatrixXd::Zero(p, p);
  Eigen::VectorXd XVy = Eigen::VectorXd::Zero(p);
  const MCCommon_850::MCQueryCancel* pCancel = fitter.GetCancel();
  for (int comp = 0; comp < data.GetNComponents(); ++comp) {
    if (pCancel != nullptr && pCancel->IsCancelled()) return false;
    if (!AddGroup(data, comp, SR, XVX, XVy)) return false;
  }
  return SolveFixed(XVX, XVy, given);
}

MCEnginePredictorImpl::Estimates MCEnginePredictorImpl::ReadEstimates(const MCEngineFitterImpl& fitter,
                                                          const MCEngineInput& input) {
  Estimates fit;
  const MCEngineResult& result = fitter.GetResult();
  const MCEngineData& data = fitter.GetData();
  const MCEngineModel& model = fitter.GetModel();
  if (result.GetStatus().IsError() || fitter.GetHypothesis() == nullptr || data.fNRecords == 0) return fit;
  const int K = model.GetNParams();
  const std::vector<MCEngineCovParam>& params = result.GetCovParams();
  if (static_cast<int>(params.size()) != K || input.GetNRecords() <= 0) return fit;

  // Everything is computed on the engine's scaled response, as the fit was.
  fYScale = data.fYScale;
  const double c2 = fYScale * fYScale;
  Eigen::VectorXd factor(K);
  fit.fTheta.resize(K);
  for (int k = 0; k < K; ++k) {
    factor[k] = model.IsScaleLike(k) ? c2 : 1.0;
    fit.fTheta[k] = params[U(k)].GetEstimate() / factor[k];
  }
  const std::vector<double>& asy = result.GetCovParamsCov();
  if (asy.size() == U(K) * U(K)) {
    for (int k = 0; k < K; ++k) {
      if (!MCEngineMissing::Is(asy[U(k) * U(K) + U(k)])) fit.fvFree.push_back(k);
    }
  }
  const int nf = static_cast<int>(fit.fvFree.size());
  fAsy.resize(nf, nf);
  fbHaveAsy = nf > 0;
  for (int a = 0; a < nf; ++a) {
    for (int b = 0; b < nf; ++b) {
      const double v = asy[U(fit.fvFree[U(a)]) * U(K) + U(fit.fvFree[U(b)])];
      if (MCEngineMissing::Is(v) || !std::isfinite(v)) fbHaveAsy = false;
      fAsy(a, b) = v / (factor[fit.fvFree[U(a)]] * factor[fit.fvFree[U(b)]]);
    }
  }
  fit.fbOK = true;
  return fit;
}

void MCEnginePredictorImpl::BuildStructures(const MCEngineModel& model, const MCEngineData& data, const Estimates& fit,
                                            Eigen::MatrixXd& SR) {
  const int nb = model.GetNBlocks();
  const int nf = static_cast<int>(fit.fvFree.size());
  fvG.resize(U(nb));
  fvEngineBlockDiagonal.resize(U(nb));
  for (int e = 0; e < nb; ++e) {
    model.GetBlock(e).Build(model.Segment(fit.fTheta, e), fvG[U(e)]);
    fvEngineBlockDiagonal[U(e)] = MCEngineDataBuilder::IsDiagonalType(data.fvBlocks[U(e)].fType) ? 1 : 0;
  }
  model.GetResidual().Build(model.Segment(fit.fTheta, -1), SR);
  fvFreeBlock.resize(U(nf));
  fvFreeDG.resize(U(nf));
  fvA.assign(U(nf), Eigen::MatrixXd::Zero(data.fRank, data.fRank));
  for (int a = 0; a < nf; ++a) {
    const int k = fit.fvFree[U(a)];
    const int e = model.GetBlockOf(k);
    const MCCovStructure& s = e < 0 ? model.GetResidual() : model.GetBlock(e);
    s.Derivative(model.Segment(fit.fTheta, e), model.GetLocalIndex(k), fvFreeDG[U(a)]);
    fvFreeBlock[U(a)] = e;
  }
}

bool MCEnginePredictorImpl::LinkInputBlocks(const MCEngineInput& input, const MCEngineData& data) {
  const int nb = static_cast<int>(data.fvBlocks.size());
  const std::vector<MCEngineRandomBlock>& inBlocks = input.GetRandomBlocks();
  fvInputBlocks.resize(inBlocks.size());
  for (std::size_t b = 0; b < inBlocks.size(); ++b) {
    InputBlock& ib = fvInputBlocks[b];
    const MCEngineRandomBlock& block = inBlocks[b];
    ib.fNColumns = block.GetNColumns();
    ib.fvColumnEffects.assign(U(ib.fNColumns), 0);
    if (block.GetCovType() == MCEngineCovType::VC) {
      for (int j = 0; j < ib.fNColumns; ++j) {
        ib.fvColumnEffects[U(j)] = block.GetColumnEffects().empty() ? j : block.GetColumnEffects()[U(j)];
      }
    }
  }
  for (int e = 0; e < nb; ++e) {
    const int origin = data.fvBlocks[U(e)].fOrigin;
    if (origin < 0 || origin >= static_cast<int>(fvInputBlocks.size())) return false;
    fvInputBlocks[U(origin)].fvEngineBlocks.push_back(e);
  }
  for (InputBlock& ib : fvInputBlocks) {
    if (ib.fvEngineBlocks.empty()) return false;
    ib.fbSplit = data.fvBlocks[U(ib.fvEngineBlocks.front())].fNColumns != ib.fNColumns;
    for (int effect : ib.fvColumnEffects) {
      if (ib.fbSplit && (effect < 0 || effect >= static_cast<int>(ib.fvEngineBlocks.size()))) return false;
    }
  }
  for (int k = 0; k < data.fNRecords; ++k) MapSubjects(input, data, k);
  return true;
}

void MCEnginePredictorImpl::MapSubjects(const MCEngineInput& input, const MCEngineData& data, int k) {
  const std::vector<MCEngineRandomBlock>& inBlocks = input.GetRandomBlocks();
  const int r = data.fvOriginalIndex[U(k)];
  for (std::size_t b = 0; b < inBlocks.size(); ++b) {
    const std::vector<int>& subjects = inBlocks[b].GetSubjects();
    fvInputBlocks[b].fsSeen.insert(subjects.empty() ? 0 : subjects[U(r)]);
  }
  for (int e = 0; e < static_cast<int>(data.fvBlocks.size()); ++e) {
    const MCEngineBlockData& bd = data.fvBlocks[U(e)];
    if (bd.fvRowStart[U(k) + 1] == bd.fvRowStart[U(k)]) continue;
    const MCEngineRandomBlock& block = inBlocks[U(bd.fOrigin)];
    InputBlock& ib = fvInputBlocks[U(bd.fOrigin)];
    const int subject = block.GetSubjects().empty() ? 0 : block.GetSubjects()[U(r)];
    if (!ib.fbSplit) {
      ib.fmSubjects[subject] = bd.fvSubject[U(k)];
      continue;
    }
    const int part = static_cast<int>(std::find(ib.fvEngineBlocks.begin(), ib.fvEngineBlocks.end(), e) -
                                      ib.fvEngineBlocks.begin());
    for (int i = block.GetRowStart()[U(r)]; i < block.GetRowStart()[U(r) + 1]; ++i) {
      const int col = block.GetColIndex()[U(i)];
      if (block.GetValues()[U(i)] != 0.0 && ib.fvColumnEffects[U(col)] == part) {
        ib.fmSplitSubjects[std::make_pair(subject, col)] = bd.fvSubject[U(k)];
      }
    }
  }
}

bool MCEnginePredictorImpl::AddGroup(const MCEngineData& data, int comp, const Eigen::MatrixXd& SR,
                                     Eigen::MatrixXd& XVX, Eigen::VectorXd& XVy) {
  const int p = data.fRank;
  const int nf = static_cast<int>(fvFreeBlock.size());
  const int k0 = data.fvComponentStart[U(comp)];
  const int m = data.fvComponentStart[U(comp) + 1] - k0;
  const double weight = data.fvComponentWeight[U(comp)];
  Group group;
  const int q = LayOutSegments(data, k0, m, static_cast<int>(fvGroups.size()), group);
  group.fvFixed = FixedColumnsOf(data, k0, m);
  const std::vector<int>& fixed = group.fvFixed;
  const int pg = static_cast<int>(fixed.size());
  // N = W'V^-1 W and, per residual parameter, W'V^-1 R_k V^-1 W, over the
  // group's own fixed columns.
  Eigen::MatrixXd N;
  std::vector<Eigen::MatrixXd> T(U(nf));
  if (UseRecordSpace(m, q)) {
    if (!RecordSpaceProducts(data, SR, k0, m, group, N, T)) return false;
  } else if (!ColumnSpaceProducts(data, SR, k0, m, group, N, T)) {
    return false;
  }
  AddAt(XVX, fixed, weight * N.block(q, q, pg, pg));
  for (int j = 0; j < pg; ++j) XVy[fixed[U(j)]] += weight * N(q + j, q + pg);
  group.fZVZ = N.topLeftCorner(q, q);
  group.fZVX = ToAllColumns(N.block(0, q, q, pg), fixed, p);
  group.fZVr = N.block(0, q + pg, q, 1);
  group.fvZVkZ.resize(U(nf));
  group.fvZVkX.resize(U(nf));
  for (int a = 0; a < nf; ++a) {
    const int e = fvFreeBlock[U(a)];
    if (e >= 0) {
      // A_k = X'V^-1 Z G_k Z'V^-1 X; the random parameters' other terms
      // come from Z'V^-1 Z when predicting.
      for (const Segment& sg : SegmentsOf(group, e)) {
        const int n = static_cast<int>(sg.fvColumns.size());
        const Eigen::MatrixXd ZVXs = N.block(sg.fOffset, q, n, pg);
        AddAt(fvA[U(a)], fixed, weight * (ZVXs.transpose() * Restrict(fvFreeDG[U(a)], sg.fvColumns) * ZVXs));
      }
    } else {
      group.fvZVkZ[U(a)] = T[U(a)].topLeftCorner(q, q);
      group.fvZVkX[U(a)] = ToAllColumns(T[U(a)].block(0, q, q, pg), fixed, p);
      AddAt(fvA[U(a)], fixed, weight * T[U(a)].block(q, q, pg, pg));
    }
  }
  if (q > 0) fvGroups.push_back(std::move(group));
  return true;
}

MCEnginePredictorImpl::SegmentRange MCEnginePredictorImpl::SegmentsOf(const Group& group, int block) {
  const auto range = std::equal_range(group.fvSegments.begin(), group.fvSegments.end(), block, BlockOrder());
  return SegmentRange{range.first, range.second};
}

bool MCEnginePredictorImpl::UseRecordSpace(int m, int q) const {
  if (fSetupSpace != MCEnginePredictor::kAutomaticSpace) return fSetupSpace == MCEnginePredictor::kRecordSpace;
  return m < q;
}

// With K = G (I + Z'R^-1 Z G)^-1 Z'R^-1 W: W'V^-1 W = Q - Z'R^-1 W' K, and
// W'V^-1 R_k V^-1 W = S_k - K'S_k(Z, .) - S_k(., Z)K + K'S_k(Z, Z)K.
bool MCEnginePredictorImpl::ColumnSpaceProducts(const MCEngineData& data, const Eigen::MatrixXd& SR, int k0, int m,
                                                const Group& group, Eigen::MatrixXd& N,
                                                std::vector<Eigen::MatrixXd>& T) {
  const int q = group.fNColumns;
  const int nw = q + static_cast<int>(group.fvFixed.size()) + 1;
  Eigen::MatrixXd Q;
  if (!ResidualCrossProducts(data, SR, k0, m, group, Q, T)) return false;
  fSetupWork += static_cast<double>(q) * q * q + static_cast<double>(q) * nw * nw;
  fLargestMatrix = std::max({fLargestMatrix, static_cast<double>(q) * q, static_cast<double>(nw) * nw});
  Eigen::MatrixXd K;
  N = Q;
  if (q > 0) RemoveRandomEffects(group, Q, N, K);
  for (std::size_t a = 0; a < T.size(); ++a) {
    if (fvFreeBlock[a] >= 0 || q == 0) continue;
    const Eigen::MatrixXd KtSZ = K.transpose() * T[a].topRows(q);
    const Eigen::MatrixXd SZZ = T[a].topLeftCorner(q, q);
    T[a] -= KtSZ + KtSZ.transpose();
    T[a].noalias() += K.transpose() * SZZ * K;
  }
  return true;
}

// A group of fewer records than random columns (many blocks on the same
// subjects) solves with V = R + Z G Z' over its records: the work is then
// m^2 q + m (q + p)^2 instead of the cube of its random columns.
bool MCEnginePredictorImpl::RecordSpaceProducts(const MCEngineData& data, const Eigen::MatrixXd& SR, int k0, int m,
                                                const Group& group, Eigen::MatrixXd& N,
                                                std::vector<Eigen::MatrixXd>& T) {
  const int q = group.fNColumns;
  const int nw = q + static_cast<int>(group.fvFixed.size()) + 1;
  Eigen::MatrixXd Wm = Eigen::MatrixXd::Zero(m, nw);
  std::vector<int> rows(U(m));
  for (int i = 0; i < m; ++i) rows[U(i)] = k0 + i;
  RecordDesign(data, rows, group, Wm);
  Eigen::MatrixXd V = Eigen::MatrixXd::Zero(m, m);
  const std::vector<std::vector<int>> blocks = ResidualBlocks(data, k0, m);
  auto addResidual = [&](const Eigen::MatrixXd& S, Eigen::MatrixXd& out) {
    for (const std::vector<int>& b : blocks) {
      for (int i : b) {
        for (int j : b) out(i - k0, j - k0) += ResidualEntry(data, S, i, j);
      }
    }
  };
  addResidual(SR, V);
  for (const Segment& sg : group.fvSegments) {
    const int n = static_cast<int>(sg.fvColumns.size());
    const auto Zs = Wm.middleCols(sg.fOffset, n);
    V.noalias() += Zs * Restrict(fvG[U(sg.fBlock)], sg.fvColumns) * Zs.transpose();
  }
  const Eigen::LLT<Eigen::MatrixXd> llt(V);
  if (llt.info() != Eigen::Success) return false;
  const Eigen::MatrixXd Y = llt.solve(Wm);
  N.noalias() = Wm.transpose() * Y;
  fSetupWork += static_cast<double>(m) * m * m + static_cast<double>(m) * m * nw + static_cast<double>(m) * nw * nw;
  fLargestMatrix = std::max({fLargestMatrix, static_cast<double>(m) * m, static_cast<double>(m) * nw});
  for (std::size_t a = 0; a < T.size(); ++a) {
    if (fvFreeBlock[a] >= 0) continue;
    Eigen::MatrixXd dR = Eigen::MatrixXd::Zero(m, m);
    addResidual(fvFreeDG[a], dR);
    T[a].noalias() = Y.transpose() * dR * Y;
  }
  return true;
}

template <typename Visit>
void MCEnginePredictorImpl::ForRandomEntries(const MCEngineData& data, const Group& group, int k, Visit visit) const {
  if (group.fNColumns == 0) return;
  for (int e = 0; e < static_cast<int>(data.fvBlocks.size()); ++e) {
    const MCEngineBlockData& bd = data.fvBlocks[U(e)];
    for (int j = bd.fvRowStart[U(k)]; j < bd.fvRowStart[U(k) + 1]; ++j) {
      if (bd.fvValues[U(j)] != 0.0) visit(LocalColumn(group, e, bd.fvSubject[U(k)], bd.fvColIndex[U(j)]), bd.fvValues[U(j)]);
    }
  }
}

void MCEnginePredictorImpl::RecordDesign(const MCEngineData& data, const std::vector<int>& rows, const Group& group,
                                         Eigen::MatrixXd& Wm) const {
  const int p = data.fRank;
  const int q = group.fNColumns;
  const std::vector<int>& fixed = group.fvFixed;
  const int pg = static_cast<int>(fixed.size());
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const int k = rows[i];
    const Eigen::Index r = static_cast<Eigen::Index>(i);
    ForRandomEntries(data, group, k, [&](int col, double v) { Wm(r, col) += v; });
    for (int j = 0; j < pg; ++j) Wm(r, q + j) = data.fvXr[U(k) * U(p) + U(fixed[U(j)])];
    Wm(r, q + pg) = data.fvY[U(k)];
  }
}

int MCEnginePredictorImpl::GroupOf(int block, int subject) const {
  if (block < 0 || block >= static_cast<int>(fvPlaces.size())) return -1;
  const std::vector<std::pair<int, int>>& places = fvPlaces[U(block)];
  if (subject < 0 || subject >= static_cast<int>(places.size())) return -1;
  return places[U(subject)].first;
}

int MCEnginePredictorImpl::LocalColumn(const Group& group, int block, int subject, int column) const {
  if (GroupOf(block, subject) < 0) return -1;
  const Segment& sg = group.fvSegments[U(fvPlaces[U(block)][U(subject)].second)];
  const std::vector<int>& columns = sg.fvColumns;
  const auto it = std::lower_bound(columns.begin(), columns.end(), column);
  if (it == columns.end() || *it != column) return -1;
  return sg.fOffset + static_cast<int>(it - columns.begin());
}

int MCEnginePredictorImpl::LayOutSegments(const MCEngineData& data, int k0, int m, int groupIndex, Group& group) {
  int q = 0;
  for (int e = 0; e < static_cast<int>(data.fvBlocks.size()); ++e) {
    const MCEngineBlockData& bd = data.fvBlocks[U(e)];
    std::map<int, std::set<int>> columns;
    for (int k = k0; k < k0 + m; ++k) {
      for (int i = bd.fvRowStart[U(k)]; i < bd.fvRowStart[U(k) + 1]; ++i) {
        if (bd.fvValues[U(i)] == 0.0) continue;
        std::set<int>& cols = columns[bd.fvSubject[U(k)]];
        if (fvEngineBlockDiagonal[U(e)]) {
          cols.insert(bd.fvColIndex[U(i)]);
        } else {
          for (int j = 0; j < bd.fNColumns; ++j) cols.insert(j);
        }
      }
    }
    if (fvPlaces.size() < data.fvBlocks.size()) fvPlaces.resize(data.fvBlocks.size());
    std::vector<std::pair<int, int>>& places = fvPlaces[U(e)];
    if (places.size() < U(bd.fNSubjects)) places.resize(U(bd.fNSubjects), std::make_pair(-1, -1));
    for (const auto& entry : columns) {
      Segment segment;
      segment.fBlock = e;
      segment.fOffset = q;
      segment.fvColumns.assign(entry.second.begin(), entry.second.end());
      places[U(entry.first)] = std::make_pair(groupIndex, static_cast<int>(group.fvSegments.size()));
      q += static_cast<int>(segment.fvColumns.size());
      group.fvSegments.push_back(std::move(segment));
    }
  }
  group.fNColumns = q;
  return q;
}

bool MCEnginePredictorImpl::ResidualCrossProducts(const MCEngineData& data, const Eigen::MatrixXd& SR, int k0, int m,
                                                  const Group& group, Eigen::MatrixXd& Q,
                                                  std::vector<Eigen::MatrixXd>& Sk) const {
  const int nf = static_cast<int>(fvFreeBlock.size());
  const int nw = group.fNColumns + static_cast<int>(group.fvFixed.size()) + 1;
  Q = Eigen::MatrixXd::Zero(nw, nw);
  for (int a = 0; a < nf; ++a) {
    if (fvFreeBlock[U(a)] < 0) Sk[U(a)] = Eigen::MatrixXd::Zero(nw, nw);
  }
  if (MCEngineDataBuilder::IsDiagonalType(data.fResidualType)) return DiagonalCrossProducts(data, SR, k0, m, group, Q, Sk);
  for (const std::vector<int>& rows : ResidualBlocks(data, k0, m)) {
    const int mr = static_cast<int>(rows.size());
    std::vector<int> index;
    Eigen::MatrixXd Wr;
    ResidualBlockDesign(data, rows, group, index, Wr);
    Eigen::MatrixXd R(mr, mr);
    for (int i = 0; i < mr; ++i) {
      for (int j = 0; j < mr; ++j) R(i, j) = ResidualEntry(data, SR, rows[U(i)], rows[U(j)]);
    }
    const Eigen::LLT<Eigen::MatrixXd> llt(R);
    if (llt.info() != Eigen::Success) return false;
    const Eigen::MatrixXd RiW = llt.solve(Wr);
    AddAt(Q, index, Wr.transpose() * RiW);
    for (int a = 0; a < nf; ++a) {
      if (fvFreeBlock[U(a)] >= 0) continue;
      Eigen::MatrixXd dR(mr, mr);
      for (int i = 0; i < mr; ++i) {
        for (int j = 0; j < mr; ++j) dR(i, j) = ResidualEntry(data, fvFreeDG[U(a)], rows[U(i)], rows[U(j)]);
      }
      AddAt(Sk[U(a)], index, RiW.transpose() * dR * RiW);
    }
  }
  return true;
}

bool MCEnginePredictorImpl::DiagonalCrossProducts(const MCEngineData& data, const Eigen::MatrixXd& SR, int k0, int m,
                                                  const Group& group, Eigen::MatrixXd& Q,
                                                  std::vector<Eigen::MatrixXd>& Sk) const {
  const int p = data.fRank;
  const int q = group.fNColumns;
  const std::vector<int>& fixed = group.fvFixed;
  const int pg = static_cast<int>(fixed.size());
  const int nf = static_cast<int>(fvFreeBlock.size());
  // A record's entries of W: where they go among the group's columns (a
  // column may come twice; the outer product adds both) and their values.
  std::vector<int> index;
  std::vector<double> value;
  for (int k = k0; k < k0 + m; ++k) {
    index.clear();
    value.clear();
    ForRandomEntries(data, group, k, [&](int col, double v) {
      index.push_back(col);
      value.push_back(v);
    });
    for (int j = 0; j < pg; ++j) {
      const double x = data.fvXr[U(k) * U(p) + U(fixed[U(j)])];
      if (x == 0.0) continue;
      index.push_back(q + j);
      value.push_back(x);
    }
    index.push_back(q + pg);
    value.push_back(data.fvY[U(k)]);
    const double r = ResidualEntry(data, SR, k, k);
    if (!(r > 0.0)) return false;
    AddOuter(Q, index, value, 1.0 / r);
    for (int a = 0; a < nf; ++a) {
      if (fvFreeBlock[U(a)] < 0) AddOuter(Sk[U(a)], index, value, ResidualEntry(data, fvFreeDG[U(a)], k, k) / (r * r));
    }
  }
  return true;
}

std::vector<std::vector<int>> MCEnginePredictorImpl::ResidualBlocks(const MCEngineData& data, int k0, int m) {
  std::vector<std::vector<int>> blocks;
  if (MCEngineDataBuilder::IsDiagonalType(data.fResidualType)) {
    for (int k = k0; k < k0 + m; ++k) blocks.push_back(std::vector<int>(1, k));
    return blocks;
  }
  std::map<int, std::vector<int>> bySubject;
  for (int k = k0; k < k0 + m; ++k) bySubject[data.fvResSubject[U(k)]].push_back(k);
  for (auto& entry : bySubject) blocks.push_back(std::move(entry.second));
  return blocks;
}

void MCEnginePredictorImpl::ResidualBlockDesign(const MCEngineData& data, const std::vector<int>& rows,
                                                const Group& group, std::vector<int>& index, Eigen::MatrixXd& Wr) const {
  const int p = data.fRank;
  const int q = group.fNColumns;
  const std::vector<int>& groupFixed = group.fvFixed;
  const int pg = static_cast<int>(groupFixed.size());
  const int mr = static_cast<int>(rows.size());
  index.clear();
  for (int k : rows) ForRandomEntries(data, group, k, [&](int col, double) { index.push_back(col); });
  std::sort(index.begin(), index.end());
  index.erase(std::unique(index.begin(), index.end()), index.end());
  const int nz = static_cast<int>(index.size());
  // Only the fixed columns not zero on these records: a fixed factor of many
  // levels then costs what the records hold.
  // Places among the group's fixed columns.
  std::vector<int> fixed;
  for (int j = 0; j < pg; ++j) {
    for (int k : rows) {
      if (data.fvXr[U(k) * U(p) + U(groupFixed[U(j)])] != 0.0) {
        fixed.push_back(j);
        break;
      }
    }
  }
  const int nx = static_cast<int>(fixed.size());
  for (int j : fixed) index.push_back(q + j);
  index.push_back(q + pg);
  Wr = Eigen::MatrixXd::Zero(mr, nz + nx + 1);
  for (int i = 0; i < mr; ++i) {
    const int k = rows[U(i)];
    ForRandomEntries(data, group, k, [&](int col, double v) {
      Wr(i, std::lower_bound(index.begin(), index.begin() + nz, col) - index.begin()) += v;
    });
    for (int j = 0; j < nx; ++j) Wr(i, nz + j) = data.fvXr[U(k) * U(p) + U(groupFixed[U(fixed[U(j)])])];
    Wr(i, nz + nx) = data.fvY[U(k)];
  }
}

void MCEnginePredictorImpl::RemoveRandomEffects(const Group& group, const Eigen::MatrixXd& Q, Eigen::MatrixXd& N,
                                                Eigen::MatrixXd& K) const {
  const int q = group.fNColumns;
  const int nw = static_cast<int>(Q.rows());
  // G is block diagonal over the segments.
  Eigen::MatrixXd H = Eigen::MatrixXd::Identity(q, q);
  for (const Segment& sg : group.fvSegments) {
    const int n = static_cast<int>(sg.fvColumns.size());
    H.middleCols(sg.fOffset, n).noalias() += Q.topLeftCorner(q, q).middleCols(sg.fOffset, n) * Restrict(fvG[U(sg.fBlock)], sg.fvColumns);
  }
  const Eigen::PartialPivLU<Eigen::MatrixXd> lu(H);
  const Eigen::MatrixXd Y = lu.solve(Q.topRows(q));
  K.resize(q, nw);
  for (const Segment& sg : group.fvSegments) {
    const int n = static_cast<int>(sg.fvColumns.size());
    K.middleRows(sg.fOffset, n).noalias() = Restrict(fvG[U(sg.fBlock)], sg.fvColumns) * Y.middleRows(sg.fOffset, n);
  }
  N.noalias() -= Q.topRows(q).transpose() * K;
}

bool MCEnginePredictorImpl::SolveFixed(const Eigen::MatrixXd& XVX, const Eigen::VectorXd& XVy,
                                       const Eigen::VectorXd* given) {
  const int p = static_cast<int>(XVX.rows());
  fC = Eigen::MatrixXd::Zero(p, p);
  fBeta = Eigen::VectorXd::Zero(p);
  if (p > 0) {
    const Eigen::LLT<Eigen::MatrixXd> llt(XVX);
    if (llt.info() != Eigen::Success) return false;
    if (MCEngineMostlyZero::PaysOver(p)) {
      // A factor of many levels: from the triangle, a third of the work.
      fC = llt.matrixL();
      MCEngineTriangular::InvertFromFactor(fC.data(), p, p);
    } else {
      fC = llt.solve(Eigen::MatrixXd::Identity(p, p));
    }
    fBeta = given ? *given : Eigen::VectorXd(fC * XVy);
  }
  for (Group& group : fvGroups) group.fZVr -= group.fZVX * fBeta;
  return true;
}

bool MCEnginePredictorImpl::HasSubject(int block, int subject) const {
  if (!fbReady || block < 0 || block >= static_cast<int>(fvInputBlocks.size())) return false;
  return fvInputBlocks[U(block)].fsSeen.count(subject) > 0;
}

void MCEnginePredictorImpl::MultiplyRestricted(const Eigen::MatrixXd& M, const Segment& segment,
                                               const Eigen::VectorXd& x, int offset, Eigen::VectorXd& out) {
  const int n = static_cast<int>(segment.fvColumns.size());
  out.resize(n);
  for (int i = 0; i < n; ++i) {
    double sum = 0.0;
    for (int j = 0; j < n; ++j) sum += M(segment.fvColumns[U(i)], segment.fvColumns[U(j)]) * x[offset + j];
    out[i] = sum;
  }
}

MCEnginePrediction MCEnginePredictorImpl::Predict(const std::vector<double>& x,
                                                  const std::vector<MCEngineRandomEntry>& z) const {
  MCEnginePrediction out;
  if (!fbReady || static_cast<int>(x.size()) != fNColumns) return out;
  const int p = static_cast<int>(fvKept.size());
  const int nf = static_cast<int>(fvFreeBlock.size());
  bool onAliased = false;
  for (int j = 0; j < fNColumns; ++j) {
    if (!std::isfinite(x[U(j)])) return out;
    if (fvAliased[U(j)] && x[U(j)] != 0.0) onAliased = true;
  }
  if (onAliased) {
    // The same test of estimability as for the hypotheses.
    const Eigen::RowVectorXd l = Eigen::Map<const Eigen::RowVectorXd>(x.data(), fNColumns);
    const double c = l.cwiseAbs().maxCoeff();
    if ((l - l * fHermite).cwiseAbs().maxCoeff() > (c > 0.0 ? c : 1.0) * 1e-4) return out;
  }
  Eigen::VectorXd xk(p);
  for (int j = 0; j < p; ++j) xk[j] = x[U(fvKept[U(j)])];

  // The random part: columns of groups, and columns that no record reaches.
  std::map<int, Eigen::VectorXd> byGroup;
  std::map<VirtualKey, Eigen::VectorXd> unreached;
  MCEngineSparsePredictor::Columns sparseZ;
  for (const MCEngineRandomEntry& entry : z) {
    const int b = entry.GetBlock();
    if (b < 0 || b >= static_cast<int>(fvInputBlocks.size())) return out;
    const InputBlock& ib = fvInputBlocks[U(b)];
    const int col = entry.GetColumn();
    const double v = entry.GetValue();
    if (col < 0 || col >= ib.fNColumns || !std::isfinite(v)) return out;
    if (v == 0.0) continue;
    const int subject = entry.GetSubject();
    int e = ib.fvEngineBlocks.front();
    int engineColumn = col;
    int engineSubject = -1;
    if (!ib.fbSplit) {
      const auto it = ib.fmSubjects.find(subject);
      if (it != ib.fmSubjects.end()) engineSubject = it->second;
    } else {
      e = ib.fvEngineBlocks[U(ib.fvColumnEffects[U(col)])];
      engineColumn = 0;
      const auto it = ib.fmSplitSubjects.find(std::make_pair(subject, col));
      if (it != ib.fmSplitSubjects.end()) engineSubject = it->second;
    }
    VirtualKey key;
    if (engineSubject >= 0 && fbSparse) {
      sparseZ[fSparse.GetColumn(e, engineSubject, engineColumn)] += v;
      continue;
    }
    if (engineSubject >= 0) {
      const int g = GroupOf(e, engineSubject);
      const int local = g < 0 ? -1 : LocalColumn(fvGroups[U(g)], e, engineSubject, engineColumn);
      if (local >= 0) {
        Eigen::VectorXd& zg = byGroup[g];
        if (zg.size() == 0) zg = Eigen::VectorXd::Zero(fvGroups[U(g)].fNColumns);
        zg[local] += v;
        continue;
      }
      key = VirtualKey(e, 0, engineSubject);
    } else {
      const long long id = ib.fbSplit ? static_cast<long long>(subject) * ib.fNColumns + col : subject;
      key = VirtualKey(e, 1, id);
    }
    Eigen::VectorXd& zv = unreached[key];
    if (zv.size() == 0) zv = Eigen::VectorXd::Zero(fvG[U(e)].rows());
    zv[engineColumn] += v;
  }

  double estimate = xk.dot(fBeta);
  double zGz = 0.0, mVm = 0.0;
  Eigen::VectorXd XVm = Eigen::VectorXd::Zero(p);
  std::vector<double> zGkz(U(nf), 0.0), mkVm(U(nf), 0.0), mVkVm(U(nf), 0.0);
  std::vector<Eigen::VectorXd> XVkVm(U(nf), Eigen::VectorXd::Zero(p)), XVmk(U(nf), Eigen::VectorXd::Zero(p));
  Eigen::VectorXd zs, gs, w;
  for (const auto& entry : byGroup) {
    const Group& group = fvGroups[U(entry.first)];
    const Eigen::VectorXd& zg = entry.second;
    // G and its derivatives keep within a segment, so only the segments that
    // z reaches carry G z.
    std::vector<const Segment*> reached;
    for (const Segment& sg : group.fvSegments) {
      if (zg.segment(sg.fOffset, static_cast<int>(sg.fvColumns.size())).cwiseAbs().maxCoeff() > 0.0) {
        reached.push_back(&sg);
      }
    }
    Eigen::VectorXd ZVZgz = Eigen::VectorXd::Zero(group.fNColumns);
    std::vector<Eigen::VectorXd> gz(reached.size());
    for (std::size_t i = 0; i < reached.size(); ++i) {
      const Segment& sg = *reached[i];
      const int n = static_cast<int>(sg.fvColumns.size());
      MultiplyRestricted(fvG[U(sg.fBlock)], sg, zg, sg.fOffset, gz[i]);
      zGz += zg.segment(sg.fOffset, n).dot(gz[i]);
      ZVZgz.noalias() += group.fZVZ.middleCols(sg.fOffset, n) * gz[i];
      XVm.noalias() += group.fZVX.middleRows(sg.fOffset, n).transpose() * gz[i];
      estimate += gz[i].dot(group.fZVr.segment(sg.fOffset, n));
    }
    for (std::size_t i = 0; i < reached.size(); ++i) {
      mVm += gz[i].dot(ZVZgz.segment(reached[i]->fOffset, static_cast<int>(gz[i].size())));
    }
    for (int a = 0; a < nf; ++a) {
      const int e = fvFreeBlock[U(a)];
      if (e >= 0) {
        // The reached segments keep the group's order, block after block.
        const auto first = std::lower_bound(reached.begin(), reached.end(), e,
                                            [](const Segment* pSg, int b) { return pSg->fBlock < b; });
        for (auto it = first; it != reached.end() && (*it)->fBlock == e; ++it) {
          const Segment* pSg = *it;
          const int n = static_cast<int>(pSg->fvColumns.size());
          MultiplyRestricted(fvFreeDG[U(a)], *pSg, zg, pSg->fOffset, gs);
          zGkz[U(a)] += zg.segment(pSg->fOffset, n).dot(gs);
          mkVm[U(a)] += gs.dot(ZVZgz.segment(pSg->fOffset, n));
          XVmk[U(a)].noalias() += group.fZVX.middleRows(pSg->fOffset, n).transpose() * gs;
        }
        // m'V^-1 V_k V^-1 m = (Z'V^-1 m)' G_k (Z'V^-1 m) over the block's segments.
        for (const Segment& sg : SegmentsOf(group, e)) {
          const int n = static_cast<int>(sg.fvColumns.size());
          MultiplyRestricted(fvFreeDG[U(a)], sg, ZVZgz, sg.fOffset, w);
          mVkVm[U(a)] += ZVZgz.segment(sg.fOffset, n).dot(w);
          XVkVm[U(a)].noalias() += group.fZVX.middleRows(sg.fOffset, n).transpose() * w;
        }
      } else if (group.fvZVkZ[U(a)].size() > 0) {
        Eigen::VectorXd v = Eigen::VectorXd::Zero(group.fNColumns);
        for (std::size_t i = 0; i < reached.size(); ++i) {
          const int n = static_cast<int>(gz[i].size());
          v.noalias() += group.fvZVkZ[U(a)].middleCols(reached[i]->fOffset, n) * gz[i];
          XVkVm[U(a)].noalias() += group.fvZVkX[U(a)].middleRows(reached[i]->fOffset, n).transpose() * gz[i];
        }
        for (std::size_t i = 0; i < reached.size(); ++i) {
          mVkVm[U(a)] += gz[i].dot(v.segment(reached[i]->fOffset, static_cast<int>(gz[i].size())));
        }
      }
    }
  }
  for (const auto& entry : unreached) {
    const int e = std::get<0>(entry.first);
    const Eigen::VectorXd& zv = entry.second;
    zGz += zv.dot(fvG[U(e)] * zv);
    for (int a = 0; a < nf; ++a) {
      if (fvFreeBlock[U(a)] == e) zGkz[U(a)] += zv.dot(fvFreeDG[U(a)] * zv);
    }
  }
  if (fbSparse) return PredictSparse(xk, sparseZ, zGz, zGkz);

  const Eigen::VectorXd kvec = xk - XVm;
  const Eigen::VectorXd Ck = fC * kvec;
  Eigen::VectorXd g(nf);
  for (int a = 0; a < nf; ++a) {
    g[a] = zGkz[U(a)] - 2.0 * mkVm[U(a)] + mVkVm[U(a)] + 2.0 * (XVkVm[U(a)] - XVmk[U(a)]).dot(Ck) +
           Ck.dot(fvA[U(a)] * Ck);
  }
  return Answer(estimate, zGz - mVm + kvec.dot(Ck), &g);
}

MCEnginePrediction MCEnginePredictorImpl::PredictSparse(const Eigen::VectorXd& xk,
                                                        const MCEngineSparsePredictor::Columns& z, double zGz,
                                                        const std::vector<double>& zGkz) const {
  const MCEngineSparsePredictor::Answer a = fSparse.Predict(xk, z);
  if (!a.fbPEV) {
    MCEnginePrediction out;
    out.SetEstimate(a.fEstimate * fYScale);
    return out;
  }
  if (!a.fbGradient) return Answer(a.fEstimate, a.fPEV + zGz, nullptr);
  Eigen::VectorXd g = a.fGradient;
  for (int k = 0; k < g.size(); ++k) g[k] += zGkz[U(k)];
  return Answer(a.fEstimate, a.fPEV + zGz, &g);
}

MCEnginePrediction MCEnginePredictorImpl::Answer(double estimate, double pev, const Eigen::VectorXd* gradient) const {
  MCEnginePrediction out;
  // What rounding leaves of a prediction error that is exactly zero.
  if (pev < 0.0) pev = 0.0;
  out.SetEstimate(estimate * fYScale);
  out.SetStdError(std::sqrt(pev) * fYScale);
  if (fbResidualDF) {
    if (fResidualDF > 0.0) out.SetDF(fResidualDF);
  } else if (fbHaveAsy && pev > 0.0 && gradient != nullptr) {
    const double denom = gradient->dot(fAsy * *gradient);
    if (denom > 0.0 && std::isfinite(denom)) out.SetDF(2.0 * pev * pev / denom);
  }
  return out;
}

}  // namespace MCEngine_850
