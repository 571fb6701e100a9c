#include "numeric/glmm/GLMMDesignBuilder.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/common/RecordIterator.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;
using MCEngine_850::MCEngineCovType;
using MCMath_850::MCModelEffect;
using MCMath_850::MCRegrParameter;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

const double kNaN = std::numeric_limits<double>::quiet_NaN();

MCStatus Cancelled() { return MCStatus(MCCommon_850::MC_CANCELLED, MCCommon_850::STATUS_ERROR); }

// Every variable an effect refers to.
void CollectEffectVars(const MCModelEffect& effect, std::vector<int>& factors, std::vector<int>& covariates) {
  for (int f : effect.GetFactors()) factors.push_back(f);
  for (int c : effect.GetCovariates()) covariates.push_back(c);
}

}  // namespace

GLMMDesignBuilder::GLMMDesignBuilder(const GLMMSettings& settings, const MCXML_850::MCVarList& varList)
    : fpSettings(&settings), fpVarList(&varList), fRecordLength(0), fNRecordsRead(0) {
  for (int i = 0; i < varList.Size(); ++i) {
    fRecordLength = std::max(fRecordLength, varList.GetVarAt(i)->GetRecordIndex() + 1);
  }
}

// The engine uses the component's type codes and fits every structure; the
// reserved code, and anything outside the enumeration, is none.
bool GLMMDesignBuilder::MapCovType(GLMMConst_850::CovarType type, MCEngineCovType& engineType) {
  if (type < GLMMConst_850::ARH1 || type > GLMMConst_850::SP_SPH || type == GLMMConst_850::COVAR_RESERVED) {
    return false;
  }
  engineType = type;
  return true;
}

double GLMMDesignBuilder::Value(int r, int var) const {
  const MCXML_850::IMCVariable* pVar = fpVarList->GetVarAt(var);
  if (pVar == nullptr || pVar->GetRecordIndex() < 0) return kNaN;
  const double v = fvRecords[U(r) * U(fRecordLength) + U(pVar->GetRecordIndex())];
  if (MCCommon_850::MCMV::IsMissing(v) || !std::isfinite(v)) return kNaN;
  return v;
}

int GLMMDesignBuilder::FrequencyWeightVar() const {
  const int listed = fpVarList->FindRole(MCMath_850::MCConst::ROLE_FREQUENCY_WEIGHT);
  return listed >= 0 ? listed : fpSettings->GetFrequencyWeightVar();
}

double GLMMDesignBuilder::FrequencyWeight(int r, int var) const {
  const double w = Value(r, var);
  const MCXML_850::IMCVariable* pVar = fpVarList->GetVarAt(var);
  const bool rounded = pVar != nullptr && pVar->GetWeightRounding() == 1;
  return rounded ? std::round(w) : w;
}

int GLMMDesignBuilder::NCategories(int var) const {
  const int n = fpSettings->GetFactorNCategoriesOf(var);
  if (n > 0) return n;
  const MCXML_850::IMCVariable* pVar = fpVarList->GetVarAt(var);
  return pVar == nullptr ? 0 : pVar->GetNCategories();
}

int GLMMDesignBuilder::Code(int r, int var) const {
  const double v = Value(r, var);
  if (std::isnan(v) || v < 0.0 || v != std::floor(v) || v >= static_cast<double>(NCategories(var))) return -1;
  return static_cast<int>(v);
}

std::vector<int> GLMMDesignBuilder::Subjects(const std::vector<int>& vars) const {
  std::vector<int> subjects(U(fNRecordsRead), -1);
  std::map<std::vector<double>, int> ids;
  std::vector<double> key(vars.size());
  for (int r = 0; r < fNRecordsRead; ++r) {
    if (fPoll.Step(vars.size() + 1.0)) break;
    bool ok = true;
    for (std::size_t i = 0; i < vars.size(); ++i) {
      key[i] = Value(r, vars[i]);
      if (std::isnan(key[i])) ok = false;
    }
    if (!ok) continue;
    auto it = ids.find(key);
    if (it == ids.end()) it = ids.emplace(key, static_cast<int>(ids.size())).first;
    subjects[U(r)] = it->second;
  }
  return subjects;
}

int GLMMDesignBuilder::EffectColumns(const MCModelEffect& effect, int effectIndex, std::vector<int>& cols,
                                     std::vector<double>& vals, std::vector<MCRegrParameter>& params) const {
  const int n = fNRecordsRead;
  cols.assign(U(n), -1);
  vals.assign(U(n), 0.0);
  if (effect.IsIntercept()) {
    cols.assign(U(n), 0);
    vals.assign(U(n), 1.0);
    // Only a random block lists the intercept among its effects; its
    // parameter keeps the position so that labels find their effect.
    params.emplace_back();
    params.back().SetEffectIndex(effectIndex);
    return 1;
  }
  MCRegrParameter proto;
  proto.SetupFromEffect(effect, effectIndex);
  // The parameter keeps the factors by nesting level: the outermost varies slowest.
  const std::vector<int> factors = proto.GetFactors();
  std::vector<int> sizes;
  double cells = 1.0;
  for (int f : factors) {
    sizes.push_back(std::max(NCategories(f), 0));
    cells *= sizes.back();
  }
  if (cells > kMaxListedCells) return PresentCells(effect, proto, cols, vals, params);

  const int nCols = static_cast<int>(cells);
  for (int c = 0; c < nCols; ++c) {
    MCRegrParameter param = proto;
    int rest = c;
    for (int i = static_cast<int>(factors.size()) - 1; i >= 0; --i) {
      param.GetCategories()[U(i)] = rest % sizes[U(i)];
      rest /= sizes[U(i)];
    }
    params.push_back(param);
  }
  std::vector<int> codes;
  for (int r = 0; r < n && nCols > 0; ++r) {
    if (fPoll.Step(factors.size() + effect.GetCovariates().size() + 1.0)) break;
    if (!CellCodes(factors, r, codes)) continue;
    int col = 0;
    for (std::size_t i = 0; i < factors.size(); ++i) col = col * sizes[i] + codes[i];
    cols[U(r)] = col;
    vals[U(r)] = CovariateProduct(effect, r);
  }
  return nCols;
}

bool GLMMDesignBuilder::CellCodes(const std::vector<int>& factors, int r, std::vector<int>& codes) const {
  codes.resize(factors.size());
  for (std::size_t i = 0; i < factors.size(); ++i) {
    codes[i] = Code(r, factors[i]);
    if (codes[i] < 0) return false;
  }
  return true;
}

double GLMMDesignBuilder::CovariateProduct(const MCModelEffect& effect, int r) const {
  const std::vector<int> covariates = effect.GetCovariates();
  const std::vector<int>& mult = effect.GetCovMultiplicities();
  double v = 1.0;
  for (std::size_t i = 0; i < covariates.size(); ++i) {
    const int m = i < mult.size() ? std::max(mult[i], 1) : 1;
    v *= std::pow(Value(r, covariates[i]), m);
  }
  return v;
}

int GLMMDesignBuilder::PresentCells(const MCModelEffect& effect, const MCRegrParameter& proto, std::vector<int>& cols,
                                    std::vector<double>& vals, std::vector<MCRegrParameter>& params) const {
  const std::vector<int>& factors = proto.GetFactors();
  const std::vector<double>& y = fInput.GetY();
  const std::size_t which = fvPresentCells.size();
  const bool fitted = fbUseFittedCells && which < fvFittedCells.size();
  // The cells of the records the fit can use; the map orders them as the
  // full listing would, the outermost factor slowest.
  std::map<std::vector<int>, int> present = fitted ? fvFittedCells[which] : std::map<std::vector<int>, int>();
  std::vector<std::vector<int>> cellOf(U(fNRecordsRead));
  for (int r = 0; r < fNRecordsRead; ++r) {
    if (fPoll.Step(factors.size() + 1.0)) return 0;
    // A record to score need not have a response.
    if (!fitted && r < static_cast<int>(y.size()) && std::isnan(y[U(r)])) continue;
    if (!CellCodes(factors, r, cellOf[U(r)]) || (fitted && present.count(cellOf[U(r)]) == 0)) {
      cellOf[U(r)].clear();
      continue;
    }
    present.emplace(cellOf[U(r)], 0);
  }
  int column = 0;
  for (auto& entry : present) {
    entry.second = column++;
    MCRegrParameter param = proto;
    param.GetCategories() = entry.first;
    params.push_back(param);
  }
  for (int r = 0; r < fNRecordsRead; ++r) {
    if (cellOf[U(r)].empty()) continue;
    cols[U(r)] = present[cellOf[U(r)]];
    vals[U(r)] = CovariateProduct(effect, r);
  }
  fvPresentCells.push_back(std::move(present));
  return column;
}

MCStatus GLMMDesignBuilder::TooManyFixedParameters(int effect, int effectParameters, int parameters,
                                                   int records) const {
  const double p = parameters;
  const double bytes = 8.0 * (kPairMatrices * p * p + 3.0 * records * p);
  MCStatus refused(MCCommon_850::MC_FIXED_EFFECTS_TOO_LARGE, MCCommon_850::STATUS_ERROR);
  refused.SetDiscreteDatum(0, effect);
  refused.SetDiscreteDatum(1, effectParameters);
  refused.SetDiscreteDatum(2, parameters);
  refused.SetDiscreteDatum(3, std::lround(bytes / 1e6));
  return refused;
}

MCStatus GLMMDesignBuilder::Build(MCCommon_850::RecordIterator* pRecords) {
  const GLMMSettings& s = *fpSettings;
  fvRecords.clear();
  fNRecordsRead = 0;
  fvBetaParameters.clear();
  fvvGammaParameters.clear();
  fInput = MCEngine_850::MCEngineInput();
  fPoll = MCCommon_850::MCStopPoll(s.GetCancelPointer());
  fvPresentCells.clear();

  // Structures first, so an unavailable one costs no pass over the data.
  MCEngineCovType residualType = MCEngineCovType::ID;
  const GLMMRandomSpec& repeated = s.GetRepeated();
  const bool hasRepeatedEffect = repeated.GetNEffects() > 0;
  const bool spatial = GLMMConst_850::IsSpatial(repeated.GetCovarianceType()) && !s.GetSpatialVars().empty();
  if (hasRepeatedEffect || !repeated.GetSubjectVars().empty() || spatial) {
    if (!MapCovType(repeated.GetCovarianceType(), residualType)) {
      return MCStatus(MCCommon_850::MC_BUILD_MODEL, MCCommon_850::STATUS_ERROR);
    }
  }
  // Without a repeated index no record has a position of its own, so a
  // variance per position means one variance.
  if (!hasRepeatedEffect && (residualType == MCEngineCovType::DIAG || residualType == MCEngineCovType::VC)) {
    residualType = MCEngineCovType::ID;
  }
  std::vector<MCEngineCovType> blockTypes;
  for (const GLMMRandomSpec& spec : s.GetRandomSpecs()) {
    MCEngineCovType type = MCEngineCovType::VC;
    if (!MapCovType(spec.GetCovarianceType(), type) || GLMMConst_850::IsSpatial(type)) {
      return MCStatus(MCCommon_850::MC_BUILD_MODEL, MCCommon_850::STATUS_ERROR);
    }
    blockTypes.push_back(type);
  }

  if (pRecords != nullptr) {
    pRecords->Rewind();
    for (; pRecords->HasRecord(); pRecords->Next()) {
      const double* record = pRecords->Current();
      if (record == nullptr) continue;
      fvRecords.insert(fvRecords.end(), record, record + fRecordLength);
      ++fNRecordsRead;
    }
  }
  const int n = fNRecordsRead;

  // Every variable the model reads must be valid in a usable record.
  std::vector<int> factorVars, covariateVars;
  for (const MCModelEffect& effect : s.GetModelEffects()) CollectEffectVars(effect, factorVars, covariateVars);
  for (const GLMMRandomSpec& spec : s.GetRandomSpecs()) {
    for (const MCModelEffect& effect : spec.GetEffects()) CollectEffectVars(effect, factorVars, covariateVars);
    covariateVars.insert(covariateVars.end(), spec.GetSubjectVars().begin(), spec.GetSubjectVars().end());
  }
  // Repeated-measures variables need a value only; one without categories
  // is placed by the rank of its value.
  std::vector<int> repeatedVars;
  for (const MCModelEffect& effect : repeated.GetEffects()) CollectEffectVars(effect, repeatedVars, repeatedVars);
  for (int v : repeatedVars) (NCategories(v) > 0 ? factorVars : covariateVars).push_back(v);
  covariateVars.insert(covariateVars.end(), repeated.GetSubjectVars().begin(), repeated.GetSubjectVars().end());
  if (spatial) covariateVars.insert(covariateVars.end(), s.GetSpatialVars().begin(), s.GetSpatialVars().end());
  covariateVars.push_back(s.GetDependent());
  const int frequencyWeightVar = FrequencyWeightVar();
  if (frequencyWeightVar >= 0) covariateVars.push_back(frequencyWeightVar);
  if (s.GetRegrWeightVar() >= 0) covariateVars.push_back(s.GetRegrWeightVar());
  const bool offsetVar =
      s.GetOffsetType() == MCMath_850::MCConst::OFFSET_VARIABLE && s.GetOffset() >= 0;
  if (offsetVar) covariateVars.push_back(s.GetOffset());
  // A generalized model adds the offset to the linear predictor and takes
  // the trials of an events/trials target beside the response; a linear
  // one subtracts the offset from the response.
  const GLMMTargetSpec& target = s.GetTargetSpec();
  const bool generalized = !target.IsLinear();
  const bool trialsVar = generalized && target.GetTrialsType() == GLMMConst_850::TRIALS_VARIABLE;
  if (trialsVar) covariateVars.push_back(target.GetTrialsVariable());

  std::vector<double> y(U(n));
  std::vector<double> offset(generalized ? U(n) : 0, 0.0);
  std::vector<double> trials;
  for (int r = 0; r < n; ++r) {
    if (fPoll.Step(factorVars.size() + covariateVars.size() + 1.0)) return Cancelled();
    bool ok = true;
    for (int f : factorVars) ok = ok && Code(r, f) >= 0;
    for (int c : covariateVars) ok = ok && !std::isnan(Value(r, c));
    double v = ok ? Value(r, s.GetDependent()) : kNaN;
    double o = 0.0;
    if (offsetVar) {
      o = Value(r, s.GetOffset());
    } else if (s.GetOffsetType() == MCMath_850::MCConst::OFFSET_VALUE) {
      o = s.GetOffsetValue();
    }
    if (generalized) {
      offset[U(r)] = o;
    } else {
      v -= o;
    }
    y[U(r)] = v;
  }
  fInput.SetY(y);
  fInput.SetOffset(offset);
  if (trialsVar) {
    trials.resize(U(n));
    for (int r = 0; r < n; ++r) trials[U(r)] = Value(r, target.GetTrialsVariable());
  } else if (generalized && target.GetTrialsType() == GLMMConst_850::TRIALS_VALUE) {
    trials.assign(U(n), target.GetTrialsValue());
  }
  fInput.SetTrials(trials);

  // Fixed design, term by term.
  std::vector<std::vector<int>> termCol;
  std::vector<std::vector<double>> termVal;
  int P = 0;
  if (s.GetInterceptUse()) {
    termCol.emplace_back(U(n), 0);
    termVal.emplace_back(U(n), 1.0);
    fvBetaParameters.emplace_back();
    fInput.AddTerm(MCEngine_850::MCEngineTerm::Intercept(0));
    P = 1;
  }
  std::vector<int> termFirst(termCol.size(), 0);
  const std::vector<MCModelEffect>& effects = s.GetModelEffects();
  int largestEffect = -1, largestColumns = 0;
  for (int e = 0; e < static_cast<int>(effects.size()); ++e) {
    const MCModelEffect& effect = effects[U(e)];
    if (effect.IsIntercept()) continue;
    std::vector<int> cols;
    std::vector<double> vals;
    const int nc = EffectColumns(effect, e, cols, vals, fvBetaParameters);
    if (fPoll.Stopped()) return Cancelled();
    std::vector<int> covariates;
    const std::vector<int> distinct = effect.GetCovariates();
    for (std::size_t i = 0; i < distinct.size(); ++i) {
      const int m = i < effect.GetCovMultiplicities().size() ? std::max(effect.GetCovMultiplicities()[i], 1) : 1;
      covariates.insert(covariates.end(), U(m), distinct[i]);
    }
    fInput.AddTerm(MCEngine_850::MCEngineTerm(P, nc, effect.GetFactors(), covariates));
    termCol.push_back(std::move(cols));
    termVal.push_back(std::move(vals));
    termFirst.push_back(P);
    P += nc;
    if (nc > largestColumns) {
      largestEffect = e;
      largestColumns = nc;
    }
  }
  if (P > kMaxFixedParameters) return TooManyFixedParameters(largestEffect, largestColumns, P, n);
  std::vector<double> X(U(n) * U(P), 0.0);
  for (std::size_t t = 0; t < termCol.size(); ++t) {
    for (int r = 0; r < n; ++r) {
      if (fPoll.Step()) return Cancelled();
      const int c = termCol[t][U(r)];
      if (c >= 0) X[U(r) * U(P) + U(termFirst[t] + c)] = termVal[t][U(r)];
    }
  }
  fInput.SetX(P, X);

  if (frequencyWeightVar >= 0) {
    std::vector<double> w(U(n));
    for (int r = 0; r < n; ++r) w[U(r)] = FrequencyWeight(r, frequencyWeightVar);
    fInput.SetFrequencyWeights(w);
  }
  if (s.GetRegrWeightVar() >= 0) {
    std::vector<double> w(U(n));
    for (int r = 0; r < n; ++r) w[U(r)] = Value(r, s.GetRegrWeightVar());
    fInput.SetScaleWeights(w);
  }

  // Random blocks: the effects side by side, a crossing of the subject
  // variables as one subject.
  const std::vector<GLMMRandomSpec>& specs = s.GetRandomSpecs();
  for (std::size_t b = 0; b < specs.size(); ++b) {
    const GLMMRandomSpec& spec = specs[b];
    // Sparse rows: each effect puts at most one entry in a record's row.
    std::vector<std::vector<int>> effCol;
    std::vector<std::vector<double>> effVal;
    std::vector<int> effFirst;
    std::vector<int> columnEffects;
    std::vector<MCRegrParameter> params;
    int q = 0;
    for (int e = 0; e < spec.GetNEffects(); ++e) {
      std::vector<int> cols;
      std::vector<double> vals;
      const int nc = EffectColumns(spec.GetEffects()[U(e)], e, cols, vals, params);
      if (fPoll.Stopped()) return Cancelled();
      columnEffects.insert(columnEffects.end(), U(nc), e);
      effCol.push_back(std::move(cols));
      effVal.push_back(std::move(vals));
      effFirst.push_back(q);
      q += nc;
    }
    std::vector<int> rowStart(1, 0);
    std::vector<int> colIndex;
    std::vector<double> values;
    for (int r = 0; r < n; ++r) {
      if (fPoll.Step(effCol.size() + 1.0)) return Cancelled();
      for (std::size_t e = 0; e < effCol.size(); ++e) {
        const int c = effCol[e][U(r)];
        if (c < 0 || effVal[e][U(r)] == 0.0) continue;
        colIndex.push_back(effFirst[e] + c);
        values.push_back(effVal[e][U(r)]);
      }
      rowStart.push_back(static_cast<int>(colIndex.size()));
    }
    MCEngine_850::MCEngineRandomBlock block;
    block.SetCovType(blockTypes[b]);
    block.SetColumns(q, rowStart, colIndex, values);
    block.SetColumnEffects(columnEffects);
    if (!spec.GetSubjectVars().empty()) block.SetSubjects(Subjects(spec.GetSubjectVars()));
    if (fPoll.Stopped()) return Cancelled();
    fInput.AddRandomBlock(block);
    fvvGammaParameters.push_back(std::move(params));
  }

  // Residual block: the repeated effect's cell is the record's position.
  MCEngine_850::MCEngineResidualBlock residual;
  residual.SetCovType(residualType);
  if (!repeated.GetSubjectVars().empty()) residual.SetSubjects(Subjects(repeated.GetSubjectVars()));
  if (hasRepeatedEffect) {
    std::vector<int> positions(U(n), 0);
    int dimension = 1;
    for (int v : repeatedVars) {
      int size = NCategories(v);
      std::vector<double> levels;
      if (size <= 0) {
        for (int r = 0; r < n; ++r) {
          if (!std::isnan(Value(r, v))) levels.push_back(Value(r, v));
        }
        std::sort(levels.begin(), levels.end());
        levels.erase(std::unique(levels.begin(), levels.end()), levels.end());
        size = static_cast<int>(levels.size());
      }
      size = std::max(size, 1);
      dimension *= size;
      for (int r = 0; r < n; ++r) {
        int code = 0;
        if (levels.empty()) {
          code = std::max(Code(r, v), 0);
        } else if (!std::isnan(Value(r, v))) {
          code = static_cast<int>(std::lower_bound(levels.begin(), levels.end(), Value(r, v)) - levels.begin());
        }
        positions[U(r)] = positions[U(r)] * size + code;
      }
    }
    residual.SetPositions(positions);
    residual.SetDimension(dimension);
  }
  // A spatial structure places each record by its coordinates.
  if (spatial) {
    const std::vector<int>& coordinateVars = s.GetSpatialVars();
    std::vector<double> coordinates;
    coordinates.reserve(U(n) * coordinateVars.size());
    for (int r = 0; r < n; ++r) {
      for (int v : coordinateVars) coordinates.push_back(Value(r, v));
    }
    residual.SetCoordinates(static_cast<int>(coordinateVars.size()), coordinates);
  }
  fInput.SetResidualBlock(residual);
  return fPoll.Stopped() ? Cancelled() : MCStatus();
}

}  // namespace MCGLMM_850
