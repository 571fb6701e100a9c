#pragma once

#include <vector>

#include "numeric/engine/MCEngineRandomBlock.h"
#include "numeric/engine/MCEngineResidualBlock.h"
#include "numeric/engine/MCEngineTerm.h"

namespace MCEngine_850 {

// Everything the engine fits: the response, the overparameterized fixed
// design (row-major, one row per record) with its terms, the weights, the
// random blocks and the residual block. Records with a non-finite value or a
// non-positive weight are left out of the fit.
class MCEngineInput {
 public:
  MCEngineInput() = default;

  int GetNRecords() const { return static_cast<int>(fvY.size()); }

  const std::vector<double>& GetY() const { return fvY; }
  void SetY(const std::vector<double>& y) { fvY = y; }

  int GetNColumns() const { return fNColumns; }
  const std::vector<double>& GetX() const { return fvX; }
  void SetX(int nColumns, const std::vector<double>& rowMajor) {
    fNColumns = nColumns;
    fvX = rowMajor;
  }

  // Terms of the fixed design in column order; they may be left empty when
  // no effect tests are wanted.
  const std::vector<MCEngineTerm>& GetTerms() const { return fvTerms; }
  void SetTerms(const std::vector<MCEngineTerm>& terms) { fvTerms = terms; }
  void AddTerm(const MCEngineTerm& term) { fvTerms.push_back(term); }

  // Frequency weights: a record of weight k counts as k copies of itself,
  // sharing its random effects, when the residual structure couples no
  // records. Under one that does, two copies of a record would share its
  // position, so the weight copies the whole independent group of records
  // it belongs to, with random effects of its own, and must be equal within
  // it. Empty means 1.
  const std::vector<double>& GetFrequencyWeights() const { return fvFrequencyWeights; }
  void SetFrequencyWeights(const std::vector<double>& w) { fvFrequencyWeights = w; }
  // Scale (regression) weights divide a record's residual variance; empty means 1.
  const std::vector<double>& GetScaleWeights() const { return fvScaleWeights; }
  void SetScaleWeights(const std::vector<double>& w) { fvScaleWeights = w; }

  // Of a generalized model: the offset added to each record's linear
  // predictor (empty means 0), and the trials of a binomial target, whose
  // response is then the proportion of events (empty means 1 trial).
  const std::vector<double>& GetOffset() const { return fvOffset; }
  void SetOffset(const std::vector<double>& offset) { fvOffset = offset; }
  const std::vector<double>& GetTrials() const { return fvTrials; }
  void SetTrials(const std::vector<double>& trials) { fvTrials = trials; }

  const std::vector<MCEngineRandomBlock>& GetRandomBlocks() const { return fvRandomBlocks; }
  void SetRandomBlocks(const std::vector<MCEngineRandomBlock>& blocks) { fvRandomBlocks = blocks; }
  void AddRandomBlock(const MCEngineRandomBlock& block) { fvRandomBlocks.push_back(block); }

  const MCEngineResidualBlock& GetResidualBlock() const { return fResidualBlock; }
  void SetResidualBlock(const MCEngineResidualBlock& block) { fResidualBlock = block; }

 private:
  std::vector<double> fvY;
  int fNColumns = 0;
  std::vector<double> fvX;
  std::vector<MCEngineTerm> fvTerms;
  std::vector<double> fvFrequencyWeights;
  std::vector<double> fvScaleWeights;
  std::vector<double> fvOffset;
  std::vector<double> fvTrials;
  std::vector<MCEngineRandomBlock> fvRandomBlocks;
  MCEngineResidualBlock fResidualBlock;
};

}  // namespace MCEngine_850
