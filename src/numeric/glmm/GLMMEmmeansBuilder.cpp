#include "numeric/glmm/GLMMEmmeansBuilder.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/common/RecordIterator.h"
#include "numeric/engine/MCEngineEmmeans.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineInput.h"
#include "numeric/glmm/GLMMEmmeansStat.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/math/MCEmmeansSpec.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;
using MCEngine_850::MCEngineMeansRequest;
using MCEngine_850::MCEngineMeansTable;
namespace MCConst = MCMath_850::MCConst;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

MCEngineMeansRequest::Contrast EngineContrast(MCConst::MCContrastType type) {
  switch (type) {
    case MCConst::CONTRAST_SIMPLE:
      return MCEngineMeansRequest::kSimple;
    case MCConst::CONTRAST_DEVIATION:
      return MCEngineMeansRequest::kDeviation;
    case MCConst::CONTRAST_DIFFERENCE:
      return MCEngineMeansRequest::kDifference;
    case MCConst::CONTRAST_HELMERT:
      return MCEngineMeansRequest::kHelmert;
    case MCConst::CONTRAST_REPEATED:
      return MCEngineMeansRequest::kRepeated;
    case MCConst::CONTRAST_POLYNOMIAL:
      return MCEngineMeansRequest::kPolynomial;
    case MCConst::CONTRAST_PAIRWISE:
      return MCEngineMeansRequest::kPairwise;
    case MCConst::CONTRAST_NONE:
      break;
  }
  return MCEngineMeansRequest::kNone;
}

MCEngineMeansRequest::Adjustment EngineAdjustment(MCConst::MCPAdjustMethod method) {
  switch (method) {
    case MCConst::PADJUST_SEQ_BONFERRONI:
      return MCEngineMeansRequest::kSequentialBonferroni;
    case MCConst::PADJUST_BONFERRONI:
      return MCEngineMeansRequest::kBonferroni;
    case MCConst::PADJUST_SEQ_SIDAK:
      return MCEngineMeansRequest::kSequentialSidak;
    case MCConst::PADJUST_SIDAK:
      return MCEngineMeansRequest::kSidak;
    case MCConst::PADJUST_LSD:
      break;
  }
  return MCEngineMeansRequest::kNoAdjustment;
}

GLMMEmmeansMean ToMean(const MCEngine_850::MCEngineMeansCell& cell) {
  GLMMEmmeansMean mean;
  mean.SetCategories(cell.GetLevels());
  mean.SetEstimable(cell.IsEstimable());
  mean.SetMean(cell.GetEstimate());
  mean.SetStdError(cell.GetStdError());
  mean.SetDF(cell.GetDF());
  mean.SetLowerBound(cell.GetLower());
  mean.SetUpperBound(cell.GetUpper());
  mean.SetDataScale(cell.HasDataScale());
  mean.SetDataMean(cell.GetDataEstimate());
  mean.SetDataStdError(cell.GetDataStdError());
  mean.SetDataLowerBound(cell.GetDataLower());
  mean.SetDataUpperBound(cell.GetDataUpper());
  return mean;
}

// The table's numbers into the record, which already names the request.
void Fill(const MCEngineMeansTable& table, GLMMEmmeansStat& stat) {
  for (std::size_t i = 0; i < table.GetCovariates().size(); ++i) {
    stat.AddCovariate(table.GetCovariates()[i], table.GetCovariateValues()[i]);
  }
  stat.SetValid(table.GetState() != MCEngineMeansTable::kInvalid);
  stat.SetRefCateg(table.GetReferenceLevel());
  for (const MCEngine_850::MCEngineMeansCell& cell : table.GetCells()) stat.AddMean(ToMean(cell));
  for (const MCEngine_850::MCEngineMeansContrast& c : table.GetContrasts()) {
    GLMMEmmeansContrast contrast;
    contrast.SetCategories(c.GetByLevels());
    contrast.SetCategory(c.GetLevel());
    contrast.SetReference(c.GetReference());
    contrast.SetCoefficients(c.GetCoefficients());
    contrast.SetEstimable(c.IsEstimable());
    contrast.SetEstimate(c.GetEstimate());
    contrast.SetStdError(c.GetStdError());
    contrast.SetTStat(c.GetT());
    contrast.SetDF(c.GetDF());
    contrast.SetSig(c.GetSig());
    contrast.SetAdjustedSig(c.GetAdjustedSig());
    contrast.SetLowerBound(c.GetLower());
    contrast.SetUpperBound(c.GetUpper());
    stat.AddContrast(contrast);
  }
  for (const MCEngine_850::MCEngineMeansSlice& s : table.GetSlices()) {
    GLMMEmmeansTest test;
    test.SetCategories(s.GetByLevels());
    test.SetValid(s.IsValid());
    test.SetF(s.GetF());
    test.SetDF1(s.GetNumDF());
    test.SetDF2(s.GetDenDF());
    test.SetSig(s.GetSig());
    stat.AddTest(test);
  }
}

}  // namespace

GLMMEmmeansBuilder::GLMMEmmeansBuilder(const GLMMSettings& settings, const MCXML_850::MCVarList& varList)
    : fpSettings(&settings), fpVarList(&varList) {}

int GLMMEmmeansBuilder::NCategories(int var) const {
  const int n = fpSettings->GetFactorNCategoriesOf(var);
  if (n > 0) return n;
  const MCXML_850::IMCVariable* pVar = fpVarList->GetVarAt(var);
  return pVar == nullptr ? 0 : pVar->GetNCategories();
}

void GLMMEmmeansBuilder::Build(const MCEngine_850::MCEngineFitter& fitter, const MCEngine_850::MCEngineInput& input,
                               const std::vector<MCMath_850::MCRegrParameter>& betaParameters,
                               MCCommon_850::RecordIterator* pRecords, GLMMOutputStats& stats,
                               std::vector<MCStatus>& warnings) const {
  const GLMMSettings& s = *fpSettings;
  std::vector<MCEngine_850::MCEngineMeansColumn> columns;
  std::vector<int> covariates(s.GetCovariates());
  for (const MCMath_850::MCRegrParameter& param : betaParameters) {
    std::vector<int> columnCovariates;
    for (int i = 0; i < param.GetNCovariates(); ++i) {
      const int c = param.GetCovariates()[U(i)];
      const int m = std::max(param.GetCovMultiplicities()[U(i)], 1);
      columnCovariates.insert(columnCovariates.end(), U(m), c);
      if (std::find(covariates.begin(), covariates.end(), c) == covariates.end()) covariates.push_back(c);
    }
    columns.emplace_back(param.GetFactors(), param.GetCategories(), columnCovariates);
  }
  MCEngine_850::MCEngineEmmeans means(fitter, input, columns, 100.0 * s.GetConfidenceLevel());
  means.SetTarget(fTarget);
  for (int f : s.GetFactors()) {
    if (NCategories(f) > 0) means.SetFactorLevels(f, NCategories(f));
  }
  for (const MCMath_850::MCEmmeansSpec& spec : s.GetEmmeans()) {
    for (int f : spec.GetFactors()) {
      if (means.GetFactorLevels(f) <= 0 && NCategories(f) > 0) means.SetFactorLevels(f, NCategories(f));
    }
  }

  // The covariates' values in the records, in the order the fit read them.
  if (!covariates.empty() && pRecords != nullptr) {
    std::vector<std::vector<double>> values(covariates.size());
    pRecords->Rewind();
    for (; pRecords->HasRecord(); pRecords->Next()) {
      const double* record = pRecords->Current();
      if (record == nullptr) continue;
      for (std::size_t i = 0; i < covariates.size(); ++i) {
        const MCXML_850::IMCVariable* pVar = fpVarList->GetVarAt(covariates[i]);
        double v = std::numeric_limits<double>::quiet_NaN();
        if (pVar != nullptr && pVar->GetRecordIndex() >= 0) v = record[pVar->GetRecordIndex()];
        if (MCCommon_850::MCMV::IsMissing(v)) v = std::numeric_limits<double>::quiet_NaN();
        values[i].push_back(v);
      }
    }
    for (std::size_t i = 0; i < covariates.size(); ++i) {
      if (static_cast<int>(values[i].size()) == input.GetNRecords()) means.SetCovariateRecords(covariates[i], values[i]);
    }
  }

  std::vector<GLMMEmmeansStat> tables;
  const std::vector<MCMath_850::MCEmmeansSpec>& specs = s.GetEmmeans();
  for (int r = 0; r < static_cast<int>(specs.size()); ++r) {
    const MCMath_850::MCEmmeansSpec& spec = specs[U(r)];
    MCEngineMeansRequest request;
    request.SetFactors(spec.GetFactors());
    const int compare = spec.GetCompareFactors().empty() ? -1 : spec.GetCompareFactors().front();
    request.SetCompareFactor(compare);
    request.SetContrast(EngineContrast(spec.GetContrastType()));
    request.SetReferenceLevel(spec.GetReferenceType() == MCConst::REFERENCE_LAST ? -1 : spec.GetRefCateg());
    request.SetAdjustment(EngineAdjustment(spec.GetPAdjust()));
    request.SetMetricValues(spec.GetMetricValueList());
    for (std::size_t i = 0; i < spec.GetCovariates().size(); ++i) {
      request.SetCovariateValue(spec.GetCovariates()[i], spec.GetCovariateValues()[i]);
    }
    const MCEngineMeansTable table = means.Compute(request);

    GLMMEmmeansStat stat;
    stat.SetRequestIndex(r);
    stat.SetFactors(spec.GetFactors());
    stat.SetCompareFactor(compare);
    stat.SetContrastType(spec.GetContrastType());
    stat.SetPAdjust(spec.GetPAdjust());
    stat.SetConfidenceLevel(s.GetConfidenceLevel());
    Fill(table, stat);
    if (table.GetState() == MCEngineMeansTable::kCompareOneLevel) {
      MCStatus warning(MCCommon_850::MC_EMMEANS_ONE_LEVEL, false);
      warning.SetDiscreteDatum(0, r + 1);
      stat.AddWarning(warning);
      warnings.push_back(warning);
    }
    tables.push_back(stat);
  }

  // The component's own tables: the fixed effects made of factors, most
  // significant first. The design's terms are the intercept's, when there
  // is one, and those of the other effects in order.
  const std::vector<MCMath_850::MCModelEffect>& effects = s.GetModelEffects();
  const std::vector<MCEngine_850::MCEngineTerm>& terms = input.GetTerms();
  std::vector<int> termOfEffect(effects.size(), -1);
  {
    std::size_t t = 0;
    for (std::size_t e = 0; e < effects.size(); ++e) {
      if (effects[e].IsIntercept()) continue;
      while (t < terms.size() && terms[t].IsIntercept()) ++t;
      if (t < terms.size()) termOfEffect[e] = static_cast<int>(t++);
    }
  }
  std::vector<int> chosen;
  std::vector<double> sig(effects.size(), MCCommon_850::MCMV::Missing());
  for (std::size_t e = 0; e < effects.size(); ++e) {
    if (effects[e].IsIntercept() || effects[e].GetNCovariates() > 0) continue;
    chosen.push_back(static_cast<int>(e));
    for (const MCEngine_850::MCEngineTest& test : fitter.GetResult().GetTypeIIITests()) {
      if (test.GetTerm() == termOfEffect[e] && test.GetTerm() >= 0) sig[e] = test.GetSig();
    }
  }
  auto known = [](double p) { return !MCCommon_850::MCMV::IsMissing(p) && std::isfinite(p); };
  std::stable_sort(chosen.begin(), chosen.end(), [&](int a, int b) {
    const double pa = sig[U(a)], pb = sig[U(b)];
    if (known(pa) != known(pb)) return known(pa);
    return known(pa) && pa < pb;
  });
  for (int e : chosen) {
    MCEngineMeansRequest request;
    request.SetFactors(effects[U(e)].GetFactors());
    GLMMEmmeansStat stat;
    stat.SetEffectIndex(e);
    stat.SetFactors(request.GetFactors());
    stat.SetConfidenceLevel(s.GetConfidenceLevel());
    Fill(means.Compute(request), stat);
    tables.push_back(stat);
  }
  stats.SetEmmeansStats(tables);

  const MCEngineMeansTable grand = means.Compute(MCEngineMeansRequest());
  if (grand.GetState() != MCEngineMeansTable::kInvalid && grand.GetCells().size() == 1) {
    stats.SetGrandMean(ToMean(grand.GetCells().front()));
  }
}

}  // namespace MCGLMM_850
