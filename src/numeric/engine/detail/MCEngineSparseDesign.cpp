#include "numeric/engine/detail/MCEngineSparseDesign.h"

#include <algorithm>
#include <tuple>

namespace MCEngine_850 {

namespace {

inline std::size_t U(long i) { return static_cast<std::size_t>(i); }

}  // namespace

MCEngineSparseDesign::MCEngineSparseDesign(const MCEngineData& data, bool residualDiagonal) {
  LayOutNodes(data);
  LayOutGroups(data, residualDiagonal);
  FindPairs();
  LayOutPattern();
}

void MCEngineSparseDesign::LayOutNodes(const MCEngineData& data) {
  for (std::size_t b = 0; b < data.fvBlocks.size(); ++b) {
    const MCEngineBlockData& bd = data.fvBlocks[b];
    fvBlockFirstNode.push_back(static_cast<int>(fvNodeStart.size()));
    for (int s = 0; s < bd.fNSubjects; ++s) {
      fvNodeBlock.push_back(static_cast<int>(b));
      fvNodeStart.push_back(fNColumns);
      fvNodeSize.push_back(bd.fNColumns);
      fvColumnNode.insert(fvColumnNode.end(), U(bd.fNColumns), static_cast<int>(fvNodeStart.size()) - 1);
      fNColumns += bd.fNColumns;
    }
  }
}

void MCEngineSparseDesign::LayOutGroups(const MCEngineData& data, bool residualDiagonal) {
  std::vector<double> componentWeight(U(data.fNRecords), 1.0);
  for (int c = 0; c < data.GetNComponents(); ++c) {
    for (int r = data.fvComponentStart[U(c)]; r < data.fvComponentStart[U(c) + 1]; ++r) {
      componentWeight[U(r)] = data.fvComponentWeight[U(c)];
    }
  }
  if (residualDiagonal) {
    std::vector<int> rows(1);
    for (int r = 0; r < data.fNRecords; ++r) {
      rows[0] = r;
      AddGroup(data, rows, componentWeight[U(r)]);
    }
    return;
  }
  std::vector<std::vector<int>> bySubject(U(data.fNResSubjects));
  for (int r = 0; r < data.fNRecords; ++r) bySubject[U(data.fvResSubject[U(r)])].push_back(r);
  for (const std::vector<int>& rows : bySubject) {
    if (!rows.empty()) AddGroup(data, rows, componentWeight[U(rows.front())]);
  }
}

void MCEngineSparseDesign::AddGroup(const MCEngineData& data, const std::vector<int>& rows, double weight) {
  const int p = data.fRank;
  Group g;
  g.fWeight = weight;
  g.fRow0 = static_cast<int>(fvGroupRows.size());
  g.fNRows = static_cast<int>(rows.size());
  fvGroupRows.insert(fvGroupRows.end(), rows.begin(), rows.end());
  // The columns the records reach.
  std::vector<int> zcols, xcols;
  for (int r : rows) {
    for (std::size_t b = 0; b < data.fvBlocks.size(); ++b) {
      const MCEngineBlockData& bd = data.fvBlocks[b];
      const int base = fvNodeStart[U(fvBlockFirstNode[b] + bd.fvSubject[U(r)])];
      for (int e = bd.fvRowStart[U(r)]; e < bd.fvRowStart[U(r) + 1]; ++e) zcols.push_back(base + bd.fvColIndex[U(e)]);
    }
    for (int j = 0; j < p; ++j) {
      if (data.fvXr[U(r) * U(p) + U(j)] != 0.0) xcols.push_back(j);
    }
  }
  std::sort(zcols.begin(), zcols.end());
  zcols.erase(std::unique(zcols.begin(), zcols.end()), zcols.end());
  std::sort(xcols.begin(), xcols.end());
  xcols.erase(std::unique(xcols.begin(), xcols.end()), xcols.end());
  g.fZ0 = static_cast<int>(fvGroupZ.size());
  g.fNZ = static_cast<int>(zcols.size());
  g.fX0 = static_cast<int>(fvGroupX.size());
  g.fNX = static_cast<int>(xcols.size());
  fvGroupZ.insert(fvGroupZ.end(), zcols.begin(), zcols.end());
  fvGroupX.insert(fvGroupX.end(), xcols.begin(), xcols.end());
  // Their values, column-major over the group's rows.
  const std::size_t m = rows.size();
  g.fZValue0 = static_cast<long>(fvGroupZValues.size());
  fvGroupZValues.resize(fvGroupZValues.size() + m * zcols.size(), 0.0);
  g.fXValue0 = static_cast<long>(fvGroupXValues.size());
  fvGroupXValues.resize(fvGroupXValues.size() + m * xcols.size(), 0.0);
  for (std::size_t a = 0; a < m; ++a) {
    const int r = rows[a];
    for (std::size_t b = 0; b < data.fvBlocks.size(); ++b) {
      const MCEngineBlockData& bd = data.fvBlocks[b];
      const int base = fvNodeStart[U(fvBlockFirstNode[b] + bd.fvSubject[U(r)])];
      for (int e = bd.fvRowStart[U(r)]; e < bd.fvRowStart[U(r) + 1]; ++e) {
        const std::size_t at = U(std::lower_bound(zcols.begin(), zcols.end(), base + bd.fvColIndex[U(e)]) - zcols.begin());
        fvGroupZValues[U(g.fZValue0) + at * m + a] += bd.fvValues[U(e)];
      }
    }
    for (std::size_t k = 0; k < xcols.size(); ++k) {
      fvGroupXValues[U(g.fXValue0) + k * m + a] = data.fvXr[U(r) * U(p) + U(xcols[k])];
    }
  }
  fvGroups.push_back(g);
}

void MCEngineSparseDesign::FindPairs() {
  const long nNodes = GetNNodes();
  std::vector<long> keys;
  for (int a = 0; a < nNodes; ++a) keys.push_back(a * nNodes + a);
  std::vector<int> nodes;
  for (const Group& g : fvGroups) {
    nodes.clear();
    for (int k = 0; k < g.fNZ; ++k) nodes.push_back(fvColumnNode[U(fvGroupZ[U(g.fZ0 + k)])]);
    nodes.erase(std::unique(nodes.begin(), nodes.end()), nodes.end());
    for (std::size_t i = 0; i < nodes.size(); ++i) {
      for (std::size_t j = 0; j < i; ++j) keys.push_back(nodes[i] * nNodes + nodes[j]);
    }
  }
  std::sort(keys.begin(), keys.end());
  keys.erase(std::unique(keys.begin(), keys.end()), keys.end());
  fvPairIndexKeys = keys;
  fvPairs.resize(keys.size());
  fNPairValues = 0;
  for (std::size_t k = 0; k < keys.size(); ++k) {
    Pair& pr = fvPairs[k];
    pr.fRow = static_cast<int>(keys[k] / nNodes);
    pr.fCol = static_cast<int>(keys[k] % nNodes);
    pr.fOffset = fNPairValues;
    fNPairValues += static_cast<long>(fvNodeSize[U(pr.fRow)]) * fvNodeSize[U(pr.fCol)];
  }
  // Each group's pairs of columns and where their products go.
  for (Group& g : fvGroups) {
    g.fSlot0 = static_cast<long>(fvGroupSlots.size());
    for (int cj = 0; cj < g.fNZ; ++cj) {
      for (int ci = 0; ci < g.fNZ; ++ci) fvGroupSlots.push_back(PairSlot(fvGroupZ[U(g.fZ0 + ci)], fvGroupZ[U(g.fZ0 + cj)]));
    }
  }
}

std::vector<int> MCEngineSparseDesign::BlocksBySubjects() const {
  const int blocks = static_cast<int>(fvBlockFirstNode.size());
  std::vector<int> subjects(U(blocks), 0);
  for (int block : fvNodeBlock) ++subjects[U(block)];
  std::vector<int> order(U(blocks));
  for (int b = 0; b < blocks; ++b) order[U(b)] = b;
  std::stable_sort(order.begin(), order.end(), [&](int a, int b) { return subjects[U(a)] > subjects[U(b)]; });
  std::vector<int> rank(U(blocks), 0);
  for (int r = 0; r < blocks; ++r) rank[U(order[U(r)])] = r;
  std::vector<int> sets(U(fNColumns), 0);
  for (int c = 0; c < fNColumns; ++c) sets[U(c)] = rank[U(GetNodeBlock(GetColumnNode(c)))];
  return sets;
}

const MCEngineSparseDesign::Pair* MCEngineSparseDesign::FindPair(int a, int b) const {
  const long key = static_cast<long>(a) * GetNNodes() + b;
  const auto it = std::lower_bound(fvPairIndexKeys.begin(), fvPairIndexKeys.end(), key);
  if (a < b || it == fvPairIndexKeys.end() || *it != key) return nullptr;
  return &fvPairs[U(it - fvPairIndexKeys.begin())];
}

long MCEngineSparseDesign::PairSlot(int gi, int gj) const {
  const int a = fvColumnNode[U(gi)];
  const int b = fvColumnNode[U(gj)];
  if (a < b) return -1;
  const long key = static_cast<long>(a) * GetNNodes() + b;
  const std::size_t k = U(std::lower_bound(fvPairIndexKeys.begin(), fvPairIndexKeys.end(), key) - fvPairIndexKeys.begin());
  return fvPairs[k].fOffset + (gi - fvNodeStart[U(a)]) + static_cast<long>(fvNodeSize[U(a)]) * (gj - fvNodeStart[U(b)]);
}

void MCEngineSparseDesign::LayOutPattern() {
  std::vector<std::tuple<int, int, long>> entries;  // column, row, source
  for (const Pair& pr : fvPairs) {
    const int qa = fvNodeSize[U(pr.fRow)];
    const int qb = fvNodeSize[U(pr.fCol)];
    for (int cb = 0; cb < qb; ++cb) {
      for (int ca = 0; ca < qa; ++ca) {
        const int i = fvNodeStart[U(pr.fRow)] + ca;
        const int j = fvNodeStart[U(pr.fCol)] + cb;
        if (i < j) continue;
        entries.emplace_back(j, i, pr.fOffset + ca + static_cast<long>(qa) * cb);
      }
    }
  }
  std::sort(entries.begin(), entries.end());
  fvColStart.assign(U(fNColumns) + 1, 0);
  fvRowIndex.reserve(entries.size());
  fvEntrySource.reserve(entries.size());
  for (const auto& entry : entries) {
    ++fvColStart[U(std::get<0>(entry)) + 1];
    fvRowIndex.push_back(std::get<1>(entry));
    fvEntrySource.push_back(std::get<2>(entry));
  }
  for (int j = 0; j < fNColumns; ++j) fvColStart[U(j) + 1] += fvColStart[U(j)];
}

}  // namespace MCEngine_850
