#include "numeric/glmm/GLMMPredictor.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <limits>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/common/RecordIterator.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineProbability.h"
#include "numeric/engine/MCEngineResult.h"
#include "numeric/glmm/GLMMDesignBuilder.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCMV;
using MCCommon_850::MCStatus;
using MCEngine_850::MCEnginePrediction;
using MCEngine_850::MCEngineRandomEntry;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

const double kNaN = std::numeric_limits<double>::quiet_NaN();

// One record as a record iterator, so that the design builder lays out the
// record's design rows exactly as it did for the fit.
class SingleRecord : public MCCommon_850::RecordIterator {
 public:
  explicit SingleRecord(const double* record) : fpRecord(record) {}
  bool HasRecord() const override { return !fbDone; }
  void Next() override { fbDone = true; }
  int GetState() const override { return fbDone ? 2 : 0; }
  void Rewind() override { fbDone = false; }
  const double* Current() const override { return fbDone ? nullptr : fpRecord; }

 private:
  const double* fpRecord;
  bool fbDone = false;
};

double FromEngine(double value) { return MCEngine_850::MCEngineMissing::Is(value) ? MCMV::Missing() : value; }

}  // namespace

GLMMPredictor::GLMMPredictor(const GLMMSettings& settings, const MCXML_850::MCVarList& varList)
    : fpSettings(&settings), fpVarList(&varList), fNFixedColumns(0), fbReady(false) {}

double GLMMPredictor::Value(const double* record, int var) const {
  const MCXML_850::IMCVariable* pVar = fpVarList->GetVarAt(var);
  if (pVar == nullptr || pVar->GetRecordIndex() < 0) return kNaN;
  const double v = record[pVar->GetRecordIndex()];
  if (MCMV::IsMissing(v) || !std::isfinite(v)) return kNaN;
  return v;
}

int GLMMPredictor::Code(const double* record, int var) const {
  const double v = Value(record, var);
  int n = fpSettings->GetFactorNCategoriesOf(var);
  if (n <= 0) {
    const MCXML_850::IMCVariable* pVar = fpVarList->GetVarAt(var);
    n = pVar == nullptr ? 0 : pVar->GetNCategories();
  }
  if (std::isnan(v) || v < 0.0 || v != std::floor(v) || v >= static_cast<double>(n)) return -1;
  return static_cast<int>(v);
}

bool GLMMPredictor::EffectsValid(const double* record, const std::vector<MCMath_850::MCModelEffect>& effects) const {
  for (const MCMath_850::MCModelEffect& effect : effects) {
    for (int f : effect.GetFactors()) {
      if (Code(record, f) < 0) return false;
    }
    for (int c : effect.GetCovariates()) {
      if (std::isnan(Value(record, c))) return false;
    }
  }
  return true;
}

bool GLMMPredictor::SubjectKey(const double* record, int block, std::vector<double>& key) const {
  const std::vector<int>& vars = fpSettings->GetRandomSpecs()[U(block)].GetSubjectVars();
  key.resize(vars.size());
  for (std::size_t i = 0; i < vars.size(); ++i) {
    key[i] = Value(record, vars[i]);
    if (std::isnan(key[i])) return false;
  }
  return true;
}

bool GLMMPredictor::Setup(const GLMMDesignBuilder& builder, const MCEngine_850::MCEngineFitter& fitter,
                          MCCommon_850::RecordIterator* pRecords) {
  fbReady = false;
  fvSubjects.clear();
  fvBlockColumns.clear();
  const MCEngine_850::MCEngineInput& input = builder.GetInput();
  fNFixedColumns = input.GetNColumns();
  fvFittedCells = builder.GetPresentCells();
  fPredictor.SetResidualDF(fpSettings->GetDegreesFreedomType() == GLMMConst_850::DF_RESIDUAL);
  const MCEngine_850::MCEngineResult& result = fitter.GetResult();
  fResponse = MCEngine_850::MCEngineResponse(fTarget, result);
  fvOrdinalBeta.clear();
  fvOrdinalModes.clear();
  if (fResponse.IsOrdinal()) {
    // The thresholds have no place in the linear model's mixed-model
    // equations: an ordinal fit is predicted from its own estimates.
    for (const MCEngine_850::MCEngineBetaStat& b : result.GetBeta()) {
      fvOrdinalBeta.push_back(b.IsRedundant() || MCEngine_850::MCEngineMissing::Is(b.GetEstimate()) ? 0.0
                                                                                                 : b.GetEstimate());
    }
    fvOrdinalModes = result.GetConditionalModes();
    if (static_cast<int>(fvOrdinalBeta.size()) != fNFixedColumns) return false;
  } else if (!fPredictor.Setup(fitter, input)) {
    return false;
  }

  // The fit numbers each block's subjects; the records give their values.
  const int nBlocks = fpSettings->GetNRandomSpecs();
  if (static_cast<int>(input.GetRandomBlocks().size()) != nBlocks) return false;
  fvSubjects.resize(U(nBlocks));
  for (const MCEngine_850::MCEngineRandomBlock& block : input.GetRandomBlocks()) {
    fvBlockColumns.push_back(block.GetNColumns());
  }
  if (nBlocks == 0) {
    fbReady = true;
    return true;
  }
  if (pRecords == nullptr) return false;
  int r = 0;
  std::vector<double> key;
  pRecords->Rewind();
  for (; pRecords->HasRecord(); pRecords->Next()) {
    const double* record = pRecords->Current();
    if (record == nullptr) continue;
    if (r >= builder.GetNRecordsRead()) return false;
    for (int b = 0; b < nBlocks; ++b) {
      const std::vector<int>& subjects = input.GetRandomBlocks()[U(b)].GetSubjects();
      const int code = subjects.empty() ? 0 : subjects[U(r)];
      if (code >= 0 && SubjectKey(record, b, key)) fvSubjects[U(b)].emplace(key, code);
    }
    ++r;
  }
  fbReady = r == builder.GetNRecordsRead();
  return fbReady;
}

int GLMMPredictor::GetNSubjects(int block) const {
  if (block < 0 || block >= static_cast<int>(fvSubjects.size())) return 0;
  return static_cast<int>(fvSubjects[U(block)].size());
}

int GLMMPredictor::GetSubjectNumber(int block, int k) const {
  if (k < 0 || k >= GetNSubjects(block)) return -1;
  return std::next(fvSubjects[U(block)].begin(), k)->second;
}

MCEnginePrediction GLMMPredictor::PredictOrdinal(const std::vector<double>& x,
                                                 const std::vector<MCEngineRandomEntry>& z) const {
  MCEnginePrediction prediction;
  if (x.size() != fvOrdinalBeta.size()) return prediction;
  double eta = 0.0;
  for (std::size_t i = 0; i < x.size(); ++i) {
    if (x[i] != 0.0) eta += x[i] * fvOrdinalBeta[i];
  }
  for (const MCEngineRandomEntry& entry : z) {
    // A subject the fit did not see has the random effect 0.
    const int subject = entry.GetSubject();
    if (entry.GetBlock() != 0 || entry.GetColumn() != 0) return prediction;
    if (subject >= 0 && U(subject) < fvOrdinalModes.size()) eta += entry.GetValue() * fvOrdinalModes[U(subject)];
  }
  prediction.SetEstimate(eta);
  return prediction;
}

MCEnginePrediction GLMMPredictor::PredictFitted(const std::vector<double>& x,
                                                const std::vector<MCEngineRandomEntry>& z) const {
  return fResponse.IsOrdinal() ? PredictOrdinal(x, z) : fPredictor.Predict(x, z);
}

bool GLMMPredictor::HasSubject(int block, int subject) const {
  if (!fResponse.IsOrdinal()) return fPredictor.HasSubject(block, subject);
  return block == 0 && subject >= 0 && U(subject) < fvOrdinalModes.size();
}

double GLMMPredictor::Trials(const double* record) const {
  const GLMMTargetSpec& target = fpSettings->GetTargetSpec();
  if (target.GetDistribution() != GLMMConst_850::DIST_BINOMIAL) return 1.0;
  if (target.GetTrialsType() == GLMMConst_850::TRIALS_VARIABLE) return Value(record, target.GetTrialsVariable());
  if (target.GetTrialsType() == GLMMConst_850::TRIALS_VALUE) return target.GetTrialsValue();
  return 1.0;
}

double GLMMPredictor::ScaleWeight(const double* record) const {
  return fpSettings->GetRegrWeightVar() >= 0 ? Value(record, fpSettings->GetRegrWeightVar()) : 1.0;
}

std::vector<GLMMEBLUPStat> GLMMPredictor::ComputeEBLUPs() const {
  std::vector<GLMMEBLUPStat> stats;
  if (!IsReady()) return stats;
  const double alpha = 1.0 - fpSettings->GetConfidenceLevel();
  const std::vector<GLMMRandomSpec>& specs = fpSettings->GetRandomSpecs();
  const std::vector<double> x(U(fNFixedColumns), 0.0);
  for (int b = 0; b < static_cast<int>(specs.size()) && b < static_cast<int>(fvSubjects.size()); ++b) {
    if (!specs[U(b)].GetComputeEBLUPs()) continue;
    const int nColumns = fvBlockColumns[U(b)];
    for (const auto& subject : fvSubjects[U(b)]) {
      if (!HasSubject(b, subject.second)) continue;
      for (int col = 0; col < nColumns; ++col) {
        const MCEnginePrediction pred = PredictFitted(x, {MCEngineRandomEntry(b, subject.second, col, 1.0)});
        GLMMEBLUPStat stat;
        stat.SetBlock(b);
        stat.SetSubjectValues(subject.first);
        stat.SetColumn(col);
        stat.SetPrediction(FromEngine(pred.GetEstimate()));
        stat.SetStdError(FromEngine(pred.GetStdError()));
        stat.SetDF(FromEngine(pred.GetDF()));
        const double est = pred.GetEstimate();
        const double se = pred.GetStdError();
        const double df = pred.GetDF();
        if (!MCEngine_850::MCEngineMissing::Is(se) && se > 0.0) {
          const double t = est / se;
          stat.SetTStat(t);
          if (!MCEngine_850::MCEngineMissing::Is(df) && df > 0.0) {
            stat.SetSig(MCEngine_850::MCEngineProbability::TTwoSided(t, df));
            const double tq = MCEngine_850::MCEngineProbability::TQuantile(1.0 - alpha / 2.0, df);
            stat.SetLowerBound(est - tq * se);
            stat.SetUpperBound(est + tq * se);
          }
        }
        stats.push_back(stat);
      }
    }
  }
  return stats;
}

MCStatus GLMMPredictor::ScoreRecord(const double* record, const std::vector<GLMMConst_850::ScoreType>& types,
                                    std::vector<double>& scores) const {
  scores.assign(types.size(), MCMV::Missing());
  if (record == nullptr || !IsReady()) return MCStatus(MCCommon_850::MC_SETTINGS_INVALID, false);
  const GLMMSettings& s = *fpSettings;

  // The fixed part needs every variable of the fixed effects and the offset.
  bool fixedOK = EffectsValid(record, s.GetModelEffects());
  double offset = 0.0;
  if (s.GetOffsetType() == MCMath_850::MCConst::OFFSET_VARIABLE && s.GetOffset() >= 0) {
    offset = Value(record, s.GetOffset());
    fixedOK = fixedOK && !std::isnan(offset);
  } else if (s.GetOffsetType() == MCMath_850::MCConst::OFFSET_VALUE) {
    offset = s.GetOffsetValue();
  }
  if (!fixedOK) return MCStatus();

  GLMMDesignBuilder builder(s, *fpVarList);
  builder.UseCells(fvFittedCells);
  SingleRecord single(record);
  const MCStatus built = builder.Build(&single);
  const MCEngine_850::MCEngineInput& input = builder.GetInput();
  if (built.IsError() || input.GetNRecords() != 1 || input.GetNColumns() != fNFixedColumns) {
    return MCStatus(MCCommon_850::MC_SETTINGS_INVALID, false);
  }
  const std::vector<double>& x = input.GetX();

  // The random part: each block's row, for the record's subject.
  bool randomOK = true;
  std::vector<MCEngineRandomEntry> z;
  std::vector<double> key;
  const std::vector<GLMMRandomSpec>& specs = s.GetRandomSpecs();
  for (int b = 0; b < static_cast<int>(specs.size()) && randomOK; ++b) {
    if (!EffectsValid(record, specs[U(b)].GetEffects()) || !SubjectKey(record, b, key)) {
      randomOK = false;
      break;
    }
    const auto it = fvSubjects[U(b)].find(key);
    const int subject = it == fvSubjects[U(b)].end() ? -1 : it->second;
    const MCEngine_850::MCEngineRandomBlock& block = input.GetRandomBlocks()[U(b)];
    for (int i = block.GetRowStart()[0]; i < block.GetRowStart()[1]; ++i) {
      z.emplace_back(b, subject, block.GetColIndex()[U(i)], block.GetValues()[U(i)]);
    }
  }

  const MCEnginePrediction fixed = PredictFitted(x, {});
  MCEnginePrediction conditional;
  if (randomOK) conditional = PredictFitted(x, z);
  auto shifted = [offset](double v) { return MCEngine_850::MCEngineMissing::Is(v) ? v : v + offset; };
  const double fixedEta = shifted(fixed.GetEstimate());
  const double eta = shifted(conditional.GetEstimate());
  const double mean = fResponse.Mean(eta);
  // The response on the scale of the mean: a binomial target's proportion.
  const double trials = Trials(record);
  const double y = Value(record, s.GetDependent()) / trials;
  const double weight = trials * ScaleWeight(record);
  for (std::size_t i = 0; i < types.size(); ++i) {
    double& score = scores[i];
    switch (types[i]) {
      case GLMMConst_850::SCORE_FIXED_PREDICTED:
        score = FromEngine(fResponse.Mean(fixedEta));
        break;
      case GLMMConst_850::SCORE_FIXED_PREDICTED_SE:
        score = FromEngine(fResponse.MeanStdError(fixedEta, fixed.GetStdError()));
        break;
      case GLMMConst_850::SCORE_FIXED_PREDICTED_DF:
        score = FromEngine(fixed.GetDF());
        break;
      case GLMMConst_850::SCORE_PREDICTED:
        score = FromEngine(mean);
        break;
      case GLMMConst_850::SCORE_PREDICTED_SE:
        score = FromEngine(fResponse.MeanStdError(eta, conditional.GetStdError()));
        break;
      case GLMMConst_850::SCORE_PREDICTED_DF:
        score = FromEngine(conditional.GetDF());
        break;
      case GLMMConst_850::SCORE_RESIDUAL:
        if (!std::isnan(y) && !MCEngine_850::MCEngineMissing::Is(mean)) score = y - mean;
        break;
      case GLMMConst_850::SCORE_LINEAR_PREDICTOR:
        score = FromEngine(eta);
        break;
      case GLMMConst_850::SCORE_PEARSON_RESIDUAL:
        if (!std::isnan(y) && !fResponse.IsLinear()) score = FromEngine(fResponse.PearsonResidual(y, mean, weight));
        break;
      case GLMMConst_850::SCORE_PREDICTED_CATEGORY:
        score = FromEngine(fResponse.PredictedCategory(eta));
        break;
      case GLMMConst_850::SCORE_INVALID:
        break;
    }
  }
  return MCStatus();
}

}  // namespace MCGLMM_850
