#include "numeric/engine/detail/MCEngineDataBuilder.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>
#include <unordered_map>

#include "numeric/glmm/GLMMConst.h"

namespace MCEngine_850 {

namespace {

MCEngineStatus Invalid() { return MCEngineStatus(MCEngineStatus::kInvalidSettings, MCEngineStatus::kError); }

// Residual structures over more positions than this are refused: their
// matrices would not fit in memory.
constexpr int kMaxResidualDimension = 2000;

class UnionFind {
 public:
  explicit UnionFind(int n) : fvParent(static_cast<std::size_t>(n)) {
    std::iota(fvParent.begin(), fvParent.end(), 0);
  }
  int Find(int x) {
    while (fvParent[static_cast<std::size_t>(x)] != x) {
      fvParent[static_cast<std::size_t>(x)] = fvParent[static_cast<std::size_t>(fvParent[static_cast<std::size_t>(x)])];
      x = fvParent[static_cast<std::size_t>(x)];
    }
    return x;
  }
  void Join(int a, int b) {
    a = Find(a);
    b = Find(b);
    if (a == b) return;
    if (a < b) std::swap(a, b);
    fvParent[static_cast<std::size_t>(a)] = b;
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

std::vector<bool> MCEngineDataBuilder::FindAliased(const std::vector<double>& xtx, int P, double tol) {
  std::vector<double> a(xtx);
  std::vector<bool> aliased(static_cast<std::size_t>(P), false);
  auto at = [&](int i, int j) -> double& { return a[static_cast<std::size_t>(i) * static_cast<std::size_t>(P) + static_cast<std::size_t>(j)]; };
  for (int k = 0; k < P; ++k) {
    const double d0 = xtx[static_cast<std::size_t>(k) * static_cast<std::size_t>(P) + static_cast<std::size_t>(k)];
    const double pivot = at(k, k);
    if (!(d0 > 0.0) || !(pivot > tol * d0)) {
      aliased[static_cast<std::size_t>(k)] = true;
      continue;
    }
    // Sweep on pivot k; only the not yet visited part matters for later pivots.
    for (int i = k + 1; i < P; ++i) {
      const double f = at(i, k) / pivot;
      if (f == 0.0) continue;
      for (int j = k + 1; j < P; ++j) at(i, j) -= f * at(k, j);
    }
  }
  return aliased;
}

MCEngineStatus MCEngineDataBuilder::Build(const MCEngineInput& input, double singularTolerance,
                                          MCEngineData& data) {
  data = MCEngineData();
  const int n = input.GetNRecords();
  const int P = input.GetNColumns();
  if (P < 0 || input.GetX().size() != static_cast<std::size_t>(n) * static_cast<std::size_t>(P)) return Invalid();
  const std::vector<double>& fw = input.GetFrequencyWeights();
  const std::vector<double>& sw = input.GetScaleWeights();
  if (!fw.empty() && static_cast<int>(fw.size()) != n) return Invalid();
  if (!sw.empty() && static_cast<int>(sw.size()) != n) return Invalid();
  for (const MCEngineTerm& term : input.GetTerms()) {
    if (term.GetFirstColumn() < 0 || term.GetNColumns() < 0 || term.GetFirstColumn() + term.GetNColumns() > P) {
      return Invalid();
    }
  }
  const std::vector<MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
  for (const MCEngineRandomBlock& block : blocks) {
    const int q = block.GetNColumns();
    if (q < 1) return Invalid();
    const std::vector<int>& rs = block.GetRowStart();
    if (static_cast<int>(rs.size()) != n + 1 || rs[0] != 0) return Invalid();
    for (int r = 0; r < n; ++r) {
      if (rs[static_cast<std::size_t>(r) + 1] < rs[static_cast<std::size_t>(r)]) return Invalid();
    }
    if (static_cast<std::size_t>(rs.back()) != block.GetColIndex().size() ||
        block.GetColIndex().size() != block.GetValues().size()) {
      return Invalid();
    }
    for (int c : block.GetColIndex()) {
      if (c < 0 || c >= q) return Invalid();
    }
    if (!ValidSubjects(block.GetSubjects(), n)) return Invalid();
    const std::vector<int>& eff = block.GetColumnEffects();
    if (!eff.empty()) {
      if (static_cast<int>(eff.size()) != q) return Invalid();
      std::vector<bool> seen(static_cast<std::size_t>(q), false);
      for (int e : eff) {
        if (e < 0 || e >= q) return Invalid();
        seen[static_cast<std::size_t>(e)] = true;
      }
      // Effects are numbered without gaps.
      const int maxEffect = *std::max_element(eff.begin(), eff.end());
      for (int e = 0; e <= maxEffect; ++e) {
        if (!seen[static_cast<std::size_t>(e)]) return Invalid();
      }
    }
  }
  const MCEngineResidualBlock& res = input.GetResidualBlock();
  if (!ValidSubjects(res.GetSubjects(), n) || !ValidSubjects(res.GetPositions(), n)) return Invalid();
  const bool spatial = GLMMConst_850::IsSpatial(res.GetCovType());
  const int nCoord = spatial ? res.GetNCoordinates() : 0;
  if (spatial && (nCoord < 1 || res.GetCoordinates().size() != static_cast<std::size_t>(n) * static_cast<std::size_t>(nCoord))) {
    return Invalid();
  }
  const bool positionsGiven = !res.GetPositions().empty() && !spatial;

  // Usable records.
  const std::vector<double>& y = input.GetY();
  const std::vector<double>& X = input.GetX();
  std::vector<int> used;
  used.reserve(static_cast<std::size_t>(n));
  for (int r = 0; r < n; ++r) {
    bool ok = std::isfinite(y[static_cast<std::size_t>(r)]);
    for (int c = 0; ok && c < P; ++c) ok = std::isfinite(X[static_cast<std::size_t>(r) * static_cast<std::size_t>(P) + static_cast<std::size_t>(c)]);
    if (ok && !fw.empty()) ok = std::isfinite(fw[static_cast<std::size_t>(r)]) && fw[static_cast<std::size_t>(r)] > 0.0;
    if (ok && !sw.empty()) ok = std::isfinite(sw[static_cast<std::size_t>(r)]) && sw[static_cast<std::size_t>(r)] > 0.0;
    for (std::size_t b = 0; ok && b < blocks.size(); ++b) {
      const MCEngineRandomBlock& block = blocks[b];
      if (!block.GetSubjects().empty() && block.GetSubjects()[static_cast<std::size_t>(r)] < 0) ok = false;
      for (int e = block.GetRowStart()[static_cast<std::size_t>(r)]; ok && e < block.GetRowStart()[static_cast<std::size_t>(r) + 1]; ++e) {
        ok = std::isfinite(block.GetValues()[static_cast<std::size_t>(e)]);
      }
    }
    if (ok && !res.GetSubjects().empty() && res.GetSubjects()[static_cast<std::size_t>(r)] < 0) ok = false;
    if (ok && positionsGiven && res.GetPositions()[static_cast<std::size_t>(r)] < 0) ok = false;
    for (int c = 0; ok && c < nCoord; ++c) ok = std::isfinite(res.GetCoordinates()[static_cast<std::size_t>(r) * static_cast<std::size_t>(nCoord) + static_cast<std::size_t>(c)]);
    if (ok) used.push_back(r);
  }
  if (used.empty()) return MCEngineStatus(MCEngineStatus::kNoValidCases, MCEngineStatus::kError);
  const int nu = static_cast<int>(used.size());

  // Weighted X'X over the nonzero entries of each row.
  data.fNColumns = P;
  data.fvXtX.assign(static_cast<std::size_t>(P) * static_cast<std::size_t>(P), 0.0);
  {
    std::vector<int> nz;
    for (int r : used) {
      const double w = (fw.empty() ? 1.0 : fw[static_cast<std::size_t>(r)]) * (sw.empty() ? 1.0 : sw[static_cast<std::size_t>(r)]);
      const double* row = &X[static_cast<std::size_t>(r) * static_cast<std::size_t>(P)];
      nz.clear();
      for (int c = 0; c < P; ++c) {
        if (row[c] != 0.0) nz.push_back(c);
      }
      for (int i : nz) {
        const double wi = w * row[i];
        for (int j : nz) data.fvXtX[static_cast<std::size_t>(i) * static_cast<std::size_t>(P) + static_cast<std::size_t>(j)] += wi * row[j];
      }
    }
  }
  data.fvAliased = FindAliased(data.fvXtX, P, singularTolerance);
  for (int c = 0; c < P; ++c) {
    if (!data.fvAliased[static_cast<std::size_t>(c)]) data.fvKept.push_back(c);
  }
  data.fRank = static_cast<int>(data.fvKept.size());

  // Independent groups: records coupled by a random block or by the residual.
  UnionFind uf(nu);
  {
    for (std::size_t b = 0; b < blocks.size(); ++b) {
      const MCEngineRandomBlock& block = blocks[b];
      const bool diagonal = IsDiagonalType(block.GetCovType());
      std::unordered_map<long long, int> first;
      for (int i = 0; i < nu; ++i) {
        const int r = used[static_cast<std::size_t>(i)];
        const long long s = block.GetSubjects().empty() ? 0 : block.GetSubjects()[static_cast<std::size_t>(r)];
        const int e0 = block.GetRowStart()[static_cast<std::size_t>(r)];
        const int e1 = block.GetRowStart()[static_cast<std::size_t>(r) + 1];
        for (int e = e0; e < e1; ++e) {
          if (block.GetValues()[static_cast<std::size_t>(e)] == 0.0) continue;
          const long long key = diagonal ? s * static_cast<long long>(block.GetNColumns()) + block.GetColIndex()[static_cast<std::size_t>(e)] : s;
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
    if (!IsDiagonalType(res.GetCovType())) {
      std::unordered_map<int, int> first;
      for (int i = 0; i < nu; ++i) {
        const int r = used[static_cast<std::size_t>(i)];
        const int s = res.GetSubjects().empty() ? 0 : res.GetSubjects()[static_cast<std::size_t>(r)];
        auto it = first.find(s);
        if (it == first.end()) {
          first.emplace(s, i);
        } else {
          uf.Join(i, it->second);
        }
      }
    }
  }
  // Components in order of their first record; records keep their order.
  std::vector<int> compOf(static_cast<std::size_t>(nu));
  std::vector<int> rootToComp(static_cast<std::size_t>(nu), -1);
  int nComp = 0;
  for (int i = 0; i < nu; ++i) {
    const int root = uf.Find(i);
    if (rootToComp[static_cast<std::size_t>(root)] < 0) rootToComp[static_cast<std::size_t>(root)] = nComp++;
    compOf[static_cast<std::size_t>(i)] = rootToComp[static_cast<std::size_t>(root)];
  }
  std::vector<int> order(static_cast<std::size_t>(nu));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return compOf[static_cast<std::size_t>(a)] < compOf[static_cast<std::size_t>(b)]; });

  data.fNRecords = nu;
  data.fvOriginalIndex.resize(static_cast<std::size_t>(nu));
  data.fvComponentStart.assign(1, 0);
  for (int k = 0; k < nu; ++k) {
    const int i = order[static_cast<std::size_t>(k)];
    data.fvOriginalIndex[static_cast<std::size_t>(k)] = used[static_cast<std::size_t>(i)];
    if (k > 0 && compOf[static_cast<std::size_t>(i)] != compOf[static_cast<std::size_t>(order[static_cast<std::size_t>(k) - 1])]) {
      data.fvComponentStart.push_back(k);
    }
  }
  data.fvComponentStart.push_back(nu);

  // Records in engine order.
  double maxAbsY = 0.0;
  for (int r : used) maxAbsY = std::max(maxAbsY, std::fabs(y[static_cast<std::size_t>(r)]));
  data.fYScale = 1.0;
  if (maxAbsY > 0.0) {
    int exponent = 0;
    std::frexp(maxAbsY, &exponent);
    data.fYScale = std::ldexp(1.0, exponent);
  }
  data.fvY.resize(static_cast<std::size_t>(nu));
  data.fvXr.resize(static_cast<std::size_t>(nu) * static_cast<std::size_t>(data.fRank));
  data.fvScaleWeight.resize(static_cast<std::size_t>(nu));
  for (int k = 0; k < nu; ++k) {
    const int r = data.fvOriginalIndex[static_cast<std::size_t>(k)];
    data.fvY[static_cast<std::size_t>(k)] = y[static_cast<std::size_t>(r)] / data.fYScale;
    data.fvScaleWeight[static_cast<std::size_t>(k)] = sw.empty() ? 1.0 : sw[static_cast<std::size_t>(r)];
    for (int j = 0; j < data.fRank; ++j) {
      data.fvXr[static_cast<std::size_t>(k) * static_cast<std::size_t>(data.fRank) + static_cast<std::size_t>(j)] =
          X[static_cast<std::size_t>(r) * static_cast<std::size_t>(P) + static_cast<std::size_t>(data.fvKept[static_cast<std::size_t>(j)])];
    }
  }

  // Random blocks in engine order. A VC or ID block whose records have at
  // most one nonzero column per effect is split into one-column blocks, one
  // per effect, whose subjects are the (subject, column) pairs: the same
  // model, without a dense matrix over all of its columns.
  for (std::size_t b = 0; b < blocks.size(); ++b) {
    const MCEngineRandomBlock& block = blocks[b];
    const MCEngineCovType type = block.GetCovType();
    const int q = block.GetNColumns();
    std::vector<int> effectOf(static_cast<std::size_t>(q), 0);
    int nEffects = 1;
    if (type == MCEngineCovType::VC) {
      for (int j = 0; j < q; ++j) {
        effectOf[static_cast<std::size_t>(j)] = block.GetColumnEffects().empty() ? j : block.GetColumnEffects()[static_cast<std::size_t>(j)];
        nEffects = std::max(nEffects, effectOf[static_cast<std::size_t>(j)] + 1);
      }
    }
    bool split = (type == MCEngineCovType::VC || type == MCEngineCovType::ID) && q > 1;
    for (int k = 0; split && k < nu; ++k) {
      const int r = data.fvOriginalIndex[static_cast<std::size_t>(k)];
      std::vector<char> seen(static_cast<std::size_t>(nEffects), 0);
      for (int e = block.GetRowStart()[static_cast<std::size_t>(r)]; e < block.GetRowStart()[static_cast<std::size_t>(r) + 1]; ++e) {
        if (block.GetValues()[static_cast<std::size_t>(e)] == 0.0) continue;
        char& flag = seen[static_cast<std::size_t>(effectOf[static_cast<std::size_t>(block.GetColIndex()[static_cast<std::size_t>(e)])])];
        if (flag) split = false;
        flag = 1;
      }
    }
    const int nParts = split ? nEffects : 1;
    for (int part = 0; part < nParts; ++part) {
      MCEngineBlockData bd;
      bd.fType = type;
      bd.fNColumns = split ? 1 : q;
      if (!split) bd.fvColumnEffects = block.GetColumnEffects();
      bd.fOrigin = static_cast<int>(b);
      bd.fEffect = split && type == MCEngineCovType::VC ? part : -1;
      bd.fvSubject.resize(static_cast<std::size_t>(nu));
      std::unordered_map<long long, int> subjectCode;
      bd.fvRowStart.assign(1, 0);
      for (int k = 0; k < nu; ++k) {
        const int r = data.fvOriginalIndex[static_cast<std::size_t>(k)];
        const long long s = block.GetSubjects().empty() ? 0 : block.GetSubjects()[static_cast<std::size_t>(r)];
        long long key = s;
        for (int e = block.GetRowStart()[static_cast<std::size_t>(r)]; e < block.GetRowStart()[static_cast<std::size_t>(r) + 1]; ++e) {
          const double v = block.GetValues()[static_cast<std::size_t>(e)];
          const int col = block.GetColIndex()[static_cast<std::size_t>(e)];
          if (v == 0.0) continue;
          if (split) {
            if (effectOf[static_cast<std::size_t>(col)] != part) continue;
            key = s * static_cast<long long>(q) + col;
            bd.fvColIndex.push_back(0);
          } else {
            bd.fvColIndex.push_back(col);
          }
          bd.fvValues.push_back(v);
        }
        auto it = subjectCode.find(key);
        if (it == subjectCode.end()) it = subjectCode.emplace(key, static_cast<int>(subjectCode.size())).first;
        bd.fvSubject[static_cast<std::size_t>(k)] = it->second;
        bd.fvRowStart.push_back(static_cast<int>(bd.fvColIndex.size()));
      }
      bd.fNSubjects = static_cast<int>(subjectCode.size());
      data.fvBlocks.push_back(std::move(bd));
    }
  }

  // Residual subjects, positions and the dimension of the residual structure.
  data.fResidualType = res.GetCovType();
  data.fvResSubject.resize(static_cast<std::size_t>(nu));
  data.fvResPosition.resize(static_cast<std::size_t>(nu));
  {
    std::unordered_map<int, int> subjectCode;
    std::vector<int> counts;
    for (int k = 0; k < nu; ++k) {
      const int r = data.fvOriginalIndex[static_cast<std::size_t>(k)];
      const int s = res.GetSubjects().empty() ? 0 : res.GetSubjects()[static_cast<std::size_t>(r)];
      auto it = subjectCode.find(s);
      if (it == subjectCode.end()) {
        it = subjectCode.emplace(s, static_cast<int>(subjectCode.size())).first;
        counts.push_back(0);
      }
      const int code = it->second;
      data.fvResSubject[static_cast<std::size_t>(k)] = code;
      data.fvResPosition[static_cast<std::size_t>(k)] =
          positionsGiven ? res.GetPositions()[static_cast<std::size_t>(r)] : counts[static_cast<std::size_t>(code)];
      ++counts[static_cast<std::size_t>(code)];
    }
    data.fNResSubjects = static_cast<int>(subjectCode.size());
    if (spatial) {
      // The distinct points, in ascending order, are the positions.
      auto point = [&](int k) {
        const double* c = &res.GetCoordinates()[static_cast<std::size_t>(data.fvOriginalIndex[static_cast<std::size_t>(k)]) * static_cast<std::size_t>(nCoord)];
        return std::vector<double>(c, c + nCoord);
      };
      std::map<std::vector<double>, int> points;
      for (int k = 0; k < nu; ++k) points.emplace(point(k), 0);
      int index = 0;
      for (auto& entry : points) {
        entry.second = index++;
        data.fvResPoints.insert(data.fvResPoints.end(), entry.first.begin(), entry.first.end());
      }
      for (int k = 0; k < nu; ++k) data.fvResPosition[static_cast<std::size_t>(k)] = points[point(k)];
    }
    int dim = 1;
    for (int k = 0; k < nu; ++k) dim = std::max(dim, data.fvResPosition[static_cast<std::size_t>(k)] + 1);
    data.fResDimension = spatial ? dim : std::max(dim, res.GetDimension());
    if (positionsGiven || spatial) {
      std::vector<std::pair<int, int>> seen;
      seen.reserve(static_cast<std::size_t>(nu));
      for (int k = 0; k < nu; ++k) seen.emplace_back(data.fvResSubject[static_cast<std::size_t>(k)], data.fvResPosition[static_cast<std::size_t>(k)]);
      std::sort(seen.begin(), seen.end());
      if (std::adjacent_find(seen.begin(), seen.end()) != seen.end()) {
        return MCEngineStatus(MCEngineStatus::kDuplicateRepeated, MCEngineStatus::kError);
      }
    }
    // A common variance needs no positions.
    if (res.GetCovType() == MCEngineCovType::ID || res.GetCovType() == MCEngineCovType::VC) {
      std::fill(data.fvResPosition.begin(), data.fvResPosition.end(), 0);
      data.fResDimension = 1;
    } else if (data.fResDimension > kMaxResidualDimension) {
      return MCEngineStatus(MCEngineStatus::kBuildModel, MCEngineStatus::kError);
    }
  }
  return AssignFrequencyWeights(fw, data);
}

MCEngineStatus MCEngineDataBuilder::AssignFrequencyWeights(const std::vector<double>& fw, MCEngineData& data) {
  const int nu = data.fNRecords;
  const bool recordCopies = IsDiagonalType(data.fResidualType);
  data.fvRecordWeight.assign(static_cast<std::size_t>(nu), 1.0);
  data.fvComponentWeight.assign(static_cast<std::size_t>(data.GetNComponents()), 1.0);
  data.fTotalWeight = 0.0;
  auto weightOf = [&](int k) {
    return fw.empty() ? 1.0 : fw[static_cast<std::size_t>(data.fvOriginalIndex[static_cast<std::size_t>(k)])];
  };
  auto reachedByRandomEffect = [&](int k) {
    for (const MCEngineBlockData& bd : data.fvBlocks) {
      if (bd.fvRowStart[static_cast<std::size_t>(k) + 1] > bd.fvRowStart[static_cast<std::size_t>(k)]) return true;
    }
    return false;
  };
  for (int c = 0; c < data.GetNComponents(); ++c) {
    const int k0 = data.fvComponentStart[static_cast<std::size_t>(c)];
    const int k1 = data.fvComponentStart[static_cast<std::size_t>(c) + 1];
    // A record no random effect reaches is a group of its own, and its
    // copies are groups of their own too.
    if (recordCopies && (k1 - k0 > 1 || reachedByRandomEffect(k0))) {
      for (int k = k0; k < k1; ++k) {
        data.fvRecordWeight[static_cast<std::size_t>(k)] = weightOf(k);
        data.fvScaleWeight[static_cast<std::size_t>(k)] *= weightOf(k);
        data.fTotalWeight += weightOf(k);
      }
      continue;
    }
    const double w = weightOf(k0);
    for (int k = k0; k < k1; ++k) {
      if (weightOf(k) != w) return MCEngineStatus(MCEngineStatus::kDifferentWeightsInSubject, MCEngineStatus::kError);
    }
    data.fvComponentWeight[static_cast<std::size_t>(c)] = w;
    data.fTotalWeight += w * (k1 - k0);
  }
  return MCEngineStatus();
}

}  // namespace MCEngine_850
