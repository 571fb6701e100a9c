#pragma once

#include <vector>

#include "numeric/engine/detail/MCEngineData.h"

namespace MCEngine_850 {

// The layout the sparse mixed-model equations work on, made once per fit.
//
// Random columns run block by block and, within a block, subject by subject:
// a node is one subject of one block, with the block's columns. Two nodes are
// neighbours when a residual group's records reach both; only neighbours
// have a block of Z'R^-1 Z, held densely as a pair (row node >= column node,
// column-major). The residual groups are the blocks of R: single records
// under a structure that couples none, else the residual subjects; each keeps
// its records' rows of Z and X over the columns they reach.
class MCEngineSparseDesign {
 public:
  struct Pair {
    int fRow = 0;  // the later node
    int fCol = 0;
    long fOffset = 0;  // into the pair values
  };
  struct Group {
    double fWeight = 1.0;  // its copies
    int fRow0 = 0, fNRows = 0;
    int fZ0 = 0, fNZ = 0;   // into GetGroupZColumns
    int fX0 = 0, fNX = 0;   // into GetGroupXColumns
    long fSlot0 = 0;        // fNZ x fNZ pair value positions (-1: held by the transposed entry)
    long fZValue0 = 0;      // fNRows x fNZ, column-major
    long fXValue0 = 0;      // fNRows x fNX, column-major
  };

  MCEngineSparseDesign(const MCEngineData& data, bool residualDiagonal);

  int GetNColumns() const { return fNColumns; }
  int GetNNodes() const { return static_cast<int>(fvNodeStart.size()); }
  int GetNodeBlock(int a) const { return fvNodeBlock[static_cast<std::size_t>(a)]; }
  int GetNodeStart(int a) const { return fvNodeStart[static_cast<std::size_t>(a)]; }
  int GetNodeSize(int a) const { return fvNodeSize[static_cast<std::size_t>(a)]; }
  int GetColumnNode(int col) const { return fvColumnNode[static_cast<std::size_t>(col)]; }

  const std::vector<Pair>& GetPairs() const { return fvPairs; }
  // The first node of a block: its subjects' nodes follow in their order.
  int GetBlockFirstNode(int b) const { return fvBlockFirstNode[static_cast<std::size_t>(b)]; }
  // The pair of nodes a >= b, or null when they are not neighbours.
  const Pair* FindPair(int a, int b) const;
  long GetNPairValues() const { return fNPairValues; }

  const std::vector<Group>& GetGroups() const { return fvGroups; }
  const std::vector<int>& GetGroupRows() const { return fvGroupRows; }
  const std::vector<int>& GetGroupZColumns() const { return fvGroupZ; }
  const std::vector<int>& GetGroupXColumns() const { return fvGroupX; }
  const std::vector<long>& GetGroupSlots() const { return fvGroupSlots; }
  const std::vector<double>& GetGroupZValues() const { return fvGroupZValues; }
  const std::vector<double>& GetGroupXValues() const { return fvGroupXValues; }

  // The lower triangle of the equations' random part, by columns, and for
  // each entry the pair value it takes.
  const std::vector<int>& GetColStart() const { return fvColStart; }
  const std::vector<int>& GetRowIndex() const { return fvRowIndex; }
  const std::vector<long>& GetEntrySource() const { return fvEntrySource; }
  // For each column, the rank of its block among the blocks by their
  // numbers of subjects, most first.
  std::vector<int> BlocksBySubjects() const;

 private:
  void LayOutNodes(const MCEngineData& data);
  void LayOutGroups(const MCEngineData& data, bool residualDiagonal);
  void AddGroup(const MCEngineData& data, const std::vector<int>& rows, double weight);
  void FindPairs();
  long PairSlot(int gi, int gj) const;
  void LayOutPattern();

  int fNColumns = 0;
  std::vector<int> fvNodeBlock, fvNodeStart, fvNodeSize, fvColumnNode;
  std::vector<int> fvBlockFirstNode;
  std::vector<Pair> fvPairs;
  std::vector<long> fvPairIndexKeys;  // sorted keys row * nodes + col, parallel to fvPairs
  long fNPairValues = 0;
  std::vector<Group> fvGroups;
  std::vector<int> fvGroupRows, fvGroupZ, fvGroupX;
  std::vector<long> fvGroupSlots;
  std::vector<double> fvGroupZValues, fvGroupXValues;
  std::vector<int> fvColStart, fvRowIndex;
  std::vector<long> fvEntrySource;
};

}  // namespace MCEngine_850
