#include "numeric/engine/detail/MCEngineDataBuilder.h"

#include <Eigen/Core>
#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <unordered_map>

#include "numeric/glmm/GLMMConst.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

MCEngineStatus Invalid() { return MCEngineStatus(MCEngineStatus::kInvalidSettings, MCEngineStatus::kError); }

// Residual structures over more positions than this are refused: their
// matrices would not fit in memory.
constexpr int kMaxResidualDimension = 2000;

class UnionFind {
 public:
  explicit UnionFind(int n) : fvParent(U(n)) {
    std::iota(fvParent.begin(), fvParent.end(), 0);
  }
  int Find(int x) {
    while (fvParent[U(x)] != x) {
      fvParent[U(x)] = fvParent[U(fvParent[U(x)])];
      x = fvParent[U(x)];
    }
    return x;
  }
  void Join(int a, int b) {
    a = Find(a);
    b = Find(b);
    if (a == b) return;
    if (a < b) std::swap(a, b);
    fvParent[U(a)] = b;
  }

 private:
  std::vector<int> fvParent;
};

bool ValidSubjects(const std::vector<int>& subjects, int n) {
  return subjects.empty() || static_cast<int>(subjects.size()) == n;
}

}  // namespace

bool MCEngineDataBuilder::IsDiagonalType(MCEngineCovType type) {
  return type == MCEngineCovType::ID || type == MCEngineCovType::VC || type == MCEngineCovType::DIAG;
}

std::vector<bool> MCEngineDataBuilder::FindAliased(const std::vector<double>& xtx, int P, double tol,
                                                   MCStopPoll* pPoll) {
  std::vector<double> a(xtx);
  std::vector<bool> aliased(U(P), false);
  auto at = [&](int i, int j) -> double& { return a[U(i) * U(P) + U(j)]; };
  for (int k = 0; k < P; ++k) {
    const double d0 = xtx[U(k) * U(P) + U(k)];
    const double pivot = at(k, k);
    if (!(d0 > 0.0) || !(pivot > tol * d0)) {
      aliased[U(k)] = true;
      continue;
    }
    if (pPoll != nullptr && pPoll->Step(static_cast<double>(P - k) * (P - k))) break;
    // Sweep on pivot k; only the not yet visited part matters for later
    // pivots. Each row's update is one vectorised pass (the same operations
    // on each entry as element by element).
    const auto rest = [&](int i) { return a.data() + U(i) * U(P) + U(k) + 1; };
    const Eigen::Map<const Eigen::VectorXd> rowK(rest(k), P - k - 1);
    for (int i = k + 1; i < P; ++i) {
      const double f = at(i, k) / pivot;
      if (f == 0.0) continue;
      Eigen::Map<Eigen::VectorXd>(rest(i), P - k - 1) -= f * rowK;
    }
  }
  return aliased;
}

MCEngineStatus MCEngineDataBuilder::Build(const MCEngineInput& input, double singularTolerance,
                                          MCEngineData& data, const MCCommon_850::MCQueryCancel* pCancel) {
  data = MCEngineData();
  const MCEngineStatus cancelled(MCEngineStatus::kCancelled, MCEngineStatus::kError);
  MCStopPoll poll(pCancel);
  if (!IsConsistent(input)) return Invalid();
  const std::vector<int> used = UsableRecords(input, poll);
  if (poll.Stopped()) return cancelled;
  if (used.empty()) return MCEngineStatus(MCEngineStatus::kNoValidCases, MCEngineStatus::kError);
  DecideAliasing(input, used, singularTolerance, data, poll);
  if (poll.Stopped()) return cancelled;
  const std::vector<int> groupOf = FindGroups(input, used, poll);
  if (poll.Stopped()) return cancelled;
  LayOutByGroup(used, groupOf, data);
  CopyRecords(input, data, poll);
  for (std::size_t b = 0; b < input.GetRandomBlocks().size() && !poll.Stopped(); ++b) {
    LayOutRandomBlock(input, static_cast<int>(b), data, poll);
  }
  if (poll.Stopped()) return cancelled;
  const MCEngineStatus residual = LayOutResidual(input.GetResidualBlock(), data);
  if (residual.IsError()) return residual;
  return AssignFrequencyWeights(input.GetFrequencyWeights(), data);
}

bool MCEngineDataBuilder::IsConsistent(const MCEngineInput& input) {
  const int n = input.GetNRecords();
  const int P = input.GetNColumns();
  if (P < 0 || input.GetX().size() != U(n) * U(P)) return false;
  const std::vector<double>& fw = input.GetFrequencyWeights();
  const std::vector<double>& sw = input.GetScaleWeights();
  if (!fw.empty() && static_cast<int>(fw.size()) != n) return false;
  if (!sw.empty() && static_cast<int>(sw.size()) != n) return false;
  for (const MCEngineTerm& term : input.GetTerms()) {
    if (term.GetFirstColumn() < 0 || term.GetNColumns() < 0 || term.GetFirstColumn() + term.GetNColumns() > P) {
      return false;
    }
  }
  for (const MCEngineRandomBlock& block : input.GetRandomBlocks()) {
    if (!IsConsistent(block, n)) return false;
  }
  const MCEngineResidualBlock& res = input.GetResidualBlock();
  if (!ValidSubjects(res.GetSubjects(), n) || !ValidSubjects(res.GetPositions(), n)) return false;
  const int nCoord = IsSpatial(res) ? res.GetNCoordinates() : 0;
  return !IsSpatial(res) || (nCoord >= 1 && res.GetCoordinates().size() == U(n) * U(nCoord));
}

bool MCEngineDataBuilder::IsConsistent(const MCEngineRandomBlock& block, int n) {
  const int q = block.GetNColumns();
  if (q < 1) return false;
  const std::vector<int>& rs = block.GetRowStart();
  if (static_cast<int>(rs.size()) != n + 1 || rs[0] != 0) return false;
  for (int r = 0; r < n; ++r) {
    if (rs[U(r) + 1] < rs[U(r)]) return false;
  }
  if (U(rs.back()) != block.GetColIndex().size() || block.GetColIndex().size() != block.GetValues().size()) {
    return false;
  }
  for (int c : block.GetColIndex()) {
    if (c < 0 || c >= q) return false;
  }
  if (!ValidSubjects(block.GetSubjects(), n)) return false;
  const std::vector<int>& eff = block.GetColumnEffects();
  if (eff.empty()) return true;
  if (static_cast<int>(eff.size()) != q) return false;
  std::vector<bool> seen(U(q), false);
  for (int e : eff) {
    if (e < 0 || e >= q) return false;
    seen[U(e)] = true;
  }
  // Effects are numbered without gaps.
  const int maxEffect = *std::max_element(eff.begin(), eff.end());
  for (int e = 0; e <= maxEffect; ++e) {
    if (!seen[U(e)]) return false;
  }
  return true;
}

bool MCEngineDataBuilder::IsSpatial(const MCEngineResidualBlock& res) {
  return GLMMConst_850::IsSpatial(res.GetCovType());
}

bool MCEngineDataBuilder::PositionsGiven(const MCEngineResidualBlock& res) {
  return !res.GetPositions().empty() && !IsSpatial(res);
}

std::vector<int> MCEngineDataBuilder::UsableRecords(const MCEngineInput& input, MCStopPoll& poll) {
  const int n = input.GetNRecords();
  const int P = input.GetNColumns();
  const std::vector<double>& fw = input.GetFrequencyWeights();
  const std::vector<double>& sw = input.GetScaleWeights();
  const std::vector<double>& y = input.GetY();
  const std::vector<double>& X = input.GetX();
  const std::vector<MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
  const MCEngineResidualBlock& res = input.GetResidualBlock();
  const bool positionsGiven = PositionsGiven(res);
  const int nCoord = IsSpatial(res) ? res.GetNCoordinates() : 0;
  std::vector<int> used;
  used.reserve(U(n));
  for (int r = 0; r < n; ++r) {
    if (poll.Step(P + 1.0)) break;
    bool ok = std::isfinite(y[U(r)]);
    for (int c = 0; ok && c < P; ++c) ok = std::isfinite(X[U(r) * U(P) + U(c)]);
    if (ok && !fw.empty()) ok = std::isfinite(fw[U(r)]) && fw[U(r)] > 0.0;
    if (ok && !sw.empty()) ok = std::isfinite(sw[U(r)]) && sw[U(r)] > 0.0;
    for (std::size_t b = 0; ok && b < blocks.size(); ++b) {
      const MCEngineRandomBlock& block = blocks[b];
      if (!block.GetSubjects().empty() && block.GetSubjects()[U(r)] < 0) ok = false;
      for (int e = block.GetRowStart()[U(r)]; ok && e < block.GetRowStart()[U(r) + 1]; ++e) {
        ok = std::isfinite(block.GetValues()[U(e)]);
      }
    }
    if (ok && !res.GetSubjects().empty() && res.GetSubjects()[U(r)] < 0) ok = false;
    if (ok && positionsGiven && res.GetPositions()[U(r)] < 0) ok = false;
    for (int c = 0; ok && c < nCoord; ++c) ok = std::isfinite(res.GetCoordinates()[U(r) * U(nCoord) + U(c)]);
    if (ok) used.push_back(r);
  }
  return used;
}

void MCEngineDataBuilder::DecideAliasing(const MCEngineInput& input, const std::vector<int>& used, double tol,
                                         MCEngineData& data, MCStopPoll& poll) {
  const int P = input.GetNColumns();
  const std::vector<double>& fw = input.GetFrequencyWeights();
  const std::vector<double>& sw = input.GetScaleWeights();
  const std::vector<double>& X = input.GetX();
  // Weighted X'X over the nonzero entries of each row.
  data.fNColumns = P;
  data.fvXtX.assign(U(P) * U(P), 0.0);
  std::vector<int> nz;
  for (int r : used) {
    const double w = (fw.empty() ? 1.0 : fw[U(r)]) * (sw.empty() ? 1.0 : sw[U(r)]);
    const double* row = X.data() + U(r) * U(P);
    nz.clear();
    for (int c = 0; c < P; ++c) {
      if (row[c] != 0.0) nz.push_back(c);
    }
    for (int i : nz) {
      const double wi = w * row[i];
      for (int j : nz) data.fvXtX[U(i) * U(P) + U(j)] += wi * row[j];
    }
    if (poll.Step(P + static_cast<double>(nz.size()) * nz.size())) return;
  }
  data.fvAliased = FindAliased(data.fvXtX, P, tol, &poll);
  if (poll.Stopped()) return;
  for (int c = 0; c < P; ++c) {
    if (!data.fvAliased[U(c)]) data.fvKept.push_back(c);
  }
  data.fRank = static_cast<int>(data.fvKept.size());
}

std::vector<int> MCEngineDataBuilder::FindGroups(const MCEngineInput& input, const std::vector<int>& used,
                                                 MCStopPoll& poll) {
  const int nu = static_cast<int>(used.size());
  // Records coupled by a random block or by the residual join one group.
  UnionFind uf(nu);
  for (const MCEngineRandomBlock& block : input.GetRandomBlocks()) {
    const bool diagonal = IsDiagonalType(block.GetCovType());
    std::unordered_map<long long, int> first;
    for (int i = 0; i < nu; ++i) {
      const int r = used[U(i)];
      const long long s = block.GetSubjects().empty() ? 0 : block.GetSubjects()[U(r)];
      const int e0 = block.GetRowStart()[U(r)];
      const int e1 = block.GetRowStart()[U(r) + 1];
      if (poll.Step(1.0 + e1 - e0)) return {};
      for (int e = e0; e < e1; ++e) {
        if (block.GetValues()[U(e)] == 0.0) continue;
        const long long key = diagonal ? s * static_cast<long long>(block.GetNColumns()) + block.GetColIndex()[U(e)] : s;
        auto it = first.find(key);
        if (it == first.end()) {
          first.emplace(key, i);
        } else {
          uf.Join(i, it->second);
        }
        if (!diagonal) break;
      }
    }
  }
  const MCEngineResidualBlock& res = input.GetResidualBlock();
  if (!IsDiagonalType(res.GetCovType())) {
    std::unordered_map<int, int> first;
    for (int i = 0; i < nu; ++i) {
      const int r = used[U(i)];
      const int s = res.GetSubjects().empty() ? 0 : res.GetSubjects()[U(r)];
      auto it = first.find(s);
      if (it == first.end()) {
        first.emplace(s, i);
      } else {
        uf.Join(i, it->second);
      }
    }
  }
  // Groups in order of their first record.
  std::vector<int> groupOf(U(nu));
  std::vector<int> rootToGroup(U(nu), -1);
  int nGroups = 0;
  for (int i = 0; i < nu; ++i) {
    const int root = uf.Find(i);
    if (rootToGroup[U(root)] < 0) rootToGroup[U(root)] = nGroups++;
    groupOf[U(i)] = rootToGroup[U(root)];
  }
  return groupOf;
}

void MCEngineDataBuilder::LayOutByGroup(const std::vector<int>& used, const std::vector<int>& groupOf,
                                        MCEngineData& data) {
  const int nu = static_cast<int>(used.size());
  // Records keep their order within a group.
  std::vector<int> order(U(nu));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return groupOf[U(a)] < groupOf[U(b)]; });
  data.fNRecords = nu;
  data.fvOriginalIndex.resize(U(nu));
  data.fvComponentStart.assign(1, 0);
  for (int k = 0; k < nu; ++k) {
    const int i = order[U(k)];
    data.fvOriginalIndex[U(k)] = used[U(i)];
    if (k > 0 && groupOf[U(i)] != groupOf[U(order[U(k) - 1])]) data.fvComponentStart.push_back(k);
  }
  data.fvComponentStart.push_back(nu);
}

void MCEngineDataBuilder::CopyRecords(const MCEngineInput& input, MCEngineData& data, MCStopPoll& poll) {
  const int nu = data.fNRecords;
  const int P = input.GetNColumns();
  const std::vector<double>& y = input.GetY();
  const std::vector<double>& X = input.GetX();
  const std::vector<double>& sw = input.GetScaleWeights();
  double maxAbsY = 0.0;
  for (int r : data.fvOriginalIndex) maxAbsY = std::max(maxAbsY, std::fabs(y[U(r)]));
  data.fYScale = 1.0;
  if (maxAbsY > 0.0) {
    int exponent = 0;
    std::frexp(maxAbsY, &exponent);
    data.fYScale = std::ldexp(1.0, exponent);
  }
  data.fvY.resize(U(nu));
  data.fvXr.resize(U(nu) * U(data.fRank));
  data.fvScaleWeight.resize(U(nu));
  for (int k = 0; k < nu; ++k) {
    if (poll.Step(data.fRank + 1.0)) return;
    const int r = data.fvOriginalIndex[U(k)];
    data.fvY[U(k)] = y[U(r)] / data.fYScale;
    data.fvScaleWeight[U(k)] = sw.empty() ? 1.0 : sw[U(r)];
    for (int j = 0; j < data.fRank; ++j) data.fvXr[U(k) * U(data.fRank) + U(j)] = X[U(r) * U(P) + U(data.fvKept[U(j)])];
  }
}

int MCEngineDataBuilder::EffectsOfColumns(const MCEngineRandomBlock& block, std::vector<int>& effectOf) {
  const int q = block.GetNColumns();
  effectOf.assign(U(q), 0);
  int nEffects = 1;
  if (block.GetCovType() != MCEngineCovType::VC) return nEffects;
  for (int j = 0; j < q; ++j) {
    effectOf[U(j)] = block.GetColumnEffects().empty() ? j : block.GetColumnEffects()[U(j)];
    nEffects = std::max(nEffects, effectOf[U(j)] + 1);
  }
  return nEffects;
}

bool MCEngineDataBuilder::SplitsByEffect(const MCEngineRandomBlock& block, const std::vector<int>& effectOf,
                                         int nEffects, const MCEngineData& data, MCStopPoll& poll) {
  const MCEngineCovType type = block.GetCovType();
  if (!((type == MCEngineCovType::VC || type == MCEngineCovType::ID) && block.GetNColumns() > 1)) return false;
  // The record each effect was last seen on: no clearing per record.
  std::vector<int> seenOn(U(nEffects), -1);
  for (int k = 0; k < data.fNRecords; ++k) {
    const int r = data.fvOriginalIndex[U(k)];
    const int e0 = block.GetRowStart()[U(r)];
    const int e1 = block.GetRowStart()[U(r) + 1];
    if (poll.Step(1.0 + e1 - e0)) return false;
    for (int e = e0; e < e1; ++e) {
      if (block.GetValues()[U(e)] == 0.0) continue;
      int& last = seenOn[U(effectOf[U(block.GetColIndex()[U(e)])])];
      if (last == k) return false;
      last = k;
    }
  }
  return true;
}

void MCEngineDataBuilder::LayOutRandomBlock(const MCEngineInput& input, int b, MCEngineData& data,
                                            MCStopPoll& poll) {
  const MCEngineRandomBlock& block = input.GetRandomBlocks()[U(b)];
  const MCEngineCovType type = block.GetCovType();
  const int q = block.GetNColumns();
  std::vector<int> effectOf;
  const int nEffects = EffectsOfColumns(block, effectOf);
  const bool split = SplitsByEffect(block, effectOf, nEffects, data, poll);
  if (poll.Stopped()) return;
  const int nParts = split ? nEffects : 1;
  for (int part = 0; part < nParts; ++part) {
    MCEngineBlockData bd;
    bd.fType = type;
    bd.fNColumns = split ? 1 : q;
    if (!split) bd.fvColumnEffects = block.GetColumnEffects();
    bd.fOrigin = b;
    bd.fEffect = split && type == MCEngineCovType::VC ? part : -1;
    bd.fvSubject.resize(U(data.fNRecords));
    std::unordered_map<long long, int> subjectCode;
    bd.fvRowStart.assign(1, 0);
    for (int k = 0; k < data.fNRecords; ++k) {
      const int r = data.fvOriginalIndex[U(k)];
      if (poll.Step(1.0 + block.GetRowStart()[U(r) + 1] - block.GetRowStart()[U(r)])) return;
      const long long s = block.GetSubjects().empty() ? 0 : block.GetSubjects()[U(r)];
      long long key = s;
      for (int e = block.GetRowStart()[U(r)]; e < block.GetRowStart()[U(r) + 1]; ++e) {
        const double v = block.GetValues()[U(e)];
        const int col = block.GetColIndex()[U(e)];
        if (v == 0.0) continue;
        if (split) {
          if (effectOf[U(col)] != part) continue;
          key = s * static_cast<long long>(q) + col;
          bd.fvColIndex.push_back(0);
        } else {
          bd.fvColIndex.push_back(col);
        }
        bd.fvValues.push_back(v);
      }
      auto it = subjectCode.find(key);
      if (it == subjectCode.end()) it = subjectCode.emplace(key, static_cast<int>(subjectCode.size())).first;
      bd.fvSubject[U(k)] = it->second;
      bd.fvRowStart.push_back(static_cast<int>(bd.fvColIndex.size()));
    }
    bd.fNSubjects = static_cast<int>(subjectCode.size());
    data.fvBlocks.push_back(std::move(bd));
  }
}

MCEngineStatus MCEngineDataBuilder::LayOutResidual(const MCEngineResidualBlock& res, MCEngineData& data) {
  const int nu = data.fNRecords;
  const bool spatial = IsSpatial(res);
  const bool positionsGiven = PositionsGiven(res);
  data.fResidualType = res.GetCovType();
  data.fvResSubject.resize(U(nu));
  data.fvResPosition.resize(U(nu));
  std::unordered_map<int, int> subjectCode;
  std::vector<int> counts;
  for (int k = 0; k < nu; ++k) {
    const int r = data.fvOriginalIndex[U(k)];
    const int s = res.GetSubjects().empty() ? 0 : res.GetSubjects()[U(r)];
    auto it = subjectCode.find(s);
    if (it == subjectCode.end()) {
      it = subjectCode.emplace(s, static_cast<int>(subjectCode.size())).first;
      counts.push_back(0);
    }
    const int code = it->second;
    data.fvResSubject[U(k)] = code;
    data.fvResPosition[U(k)] = positionsGiven ? res.GetPositions()[U(r)] : counts[U(code)];
    ++counts[U(code)];
  }
  data.fNResSubjects = static_cast<int>(subjectCode.size());
  if (spatial) PlaceOnPoints(res, data);
  int dim = 1;
  for (int k = 0; k < nu; ++k) dim = std::max(dim, data.fvResPosition[U(k)] + 1);
  data.fResDimension = spatial ? dim : std::max(dim, res.GetDimension());
  if ((positionsGiven || spatial) && HasDuplicatePosition(data)) {
    return MCEngineStatus(MCEngineStatus::kDuplicateRepeated, MCEngineStatus::kError);
  }
  // A common variance needs no positions.
  if (res.GetCovType() == MCEngineCovType::ID || res.GetCovType() == MCEngineCovType::VC) {
    std::fill(data.fvResPosition.begin(), data.fvResPosition.end(), 0);
    data.fResDimension = 1;
  } else if (data.fResDimension > kMaxResidualDimension) {
    return MCEngineStatus(MCEngineStatus::kBuildModel, MCEngineStatus::kError);
  }
  return MCEngineStatus();
}

void MCEngineDataBuilder::PlaceOnPoints(const MCEngineResidualBlock& res, MCEngineData& data) {
  const int nu = data.fNRecords;
  const int nCoord = res.GetNCoordinates();
  // The distinct points, in ascending order, are the positions.
  auto point = [&](int k) {
    const double* c = &res.GetCoordinates()[U(data.fvOriginalIndex[U(k)]) * U(nCoord)];
    return std::vector<double>(c, c + nCoord);
  };
  std::map<std::vector<double>, int> points;
  for (int k = 0; k < nu; ++k) points.emplace(point(k), 0);
  int index = 0;
  for (auto& entry : points) {
    entry.second = index++;
    data.fvResPoints.insert(data.fvResPoints.end(), entry.first.begin(), entry.first.end());
  }
  for (int k = 0; k < nu; ++k) data.fvResPosition[U(k)] = points[point(k)];
}

bool MCEngineDataBuilder::HasDuplicatePosition(const MCEngineData& data) {
  std::vector<std::pair<int, int>> seen;
  seen.reserve(U(data.fNRecords));
  for (int k = 0; k < data.fNRecords; ++k) seen.emplace_back(data.fvResSubject[U(k)], data.fvResPosition[U(k)]);
  std::sort(seen.begin(), seen.end());
  return std::adjacent_find(seen.begin(), seen.end()) != seen.end();
}

MCEngineStatus MCEngineDataBuilder::AssignFrequencyWeights(const std::vector<double>& fw, MCEngineData& data) {
  const int nu = data.fNRecords;
  const bool recordCopies = IsDiagonalType(data.fResidualType);
  data.fvRecordWeight.assign(U(nu), 1.0);
  data.fvComponentWeight.assign(U(data.GetNComponents()), 1.0);
  data.fTotalWeight = 0.0;
  auto weightOf = [&](int k) {
    return fw.empty() ? 1.0 : fw[U(data.fvOriginalIndex[U(k)])];
  };
  auto reachedByRandomEffect = [&](int k) {
    for (const MCEngineBlockData& bd : data.fvBlocks) {
      if (bd.fvRowStart[U(k) + 1] > bd.fvRowStart[U(k)]) return true;
    }
    return false;
  };
  for (int c = 0; c < data.GetNComponents(); ++c) {
    const int k0 = data.fvComponentStart[U(c)];
    const int k1 = data.fvComponentStart[U(c) + 1];
    // A record no random effect reaches is a group of its own, and its
    // copies are groups of their own too.
    if (recordCopies && (k1 - k0 > 1 || reachedByRandomEffect(k0))) {
      for (int k = k0; k < k1; ++k) {
        data.fvRecordWeight[U(k)] = weightOf(k);
        data.fvScaleWeight[U(k)] *= weightOf(k);
        data.fTotalWeight += weightOf(k);
      }
      continue;
    }
    const double w = weightOf(k0);
    for (int k = k0; k < k1; ++k) {
      if (weightOf(k) != w) return MCEngineStatus(MCEngineStatus::kDifferentWeightsInSubject, MCEngineStatus::kError);
    }
    data.fvComponentWeight[U(c)] = w;
    data.fTotalWeight += w * (k1 - k0);
  }
  return MCEngineStatus();
}

}  // namespace MCEngine_850
