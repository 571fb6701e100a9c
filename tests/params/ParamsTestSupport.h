#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/AssertText.h"
#include "host/adapter/ACADataFileIter.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/io/DataFileLoader.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "numeric/common/MCStatus.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMRandomSpec.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/math/MCRegrParameter.h"
#include "numeric/xml/MCVarList.h"
#include "params/MIXParameterAggregator.h"
#include "params/MIXParameterMap.h"
#include "specs/MIXValidSpecs.h"

namespace params_test {

using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCModelEffect;
using MCMath_850::MCRegrParameter;

using base_test::AssertText;

// An algorithm that does not fit: it hands out the parameters it is given,
// as a fit would.
class StubAlgorithm : public GLMMAlgorithm {
 public:
  StubAlgorithm(const GLMMSettings& settings, const MCXML_850::MCVarList& varList) : GLMMAlgorithm(settings, varList) {}
  void SetParameters(const std::vector<MCRegrParameter>& beta, const std::vector<std::vector<MCRegrParameter>>& gamma) {
    MutableOutputStats().SetBetaParameters(beta);
    MutableOutputStats().SetGammaBasicParameters(gamma);
    SetOutputAvailable(true);
  }
};

// The parameters of one effect as the numeric component lists them: every
// combination of the factors' categories in the split, the outermost factor
// varying slowest; one parameter for an effect without factors.
inline void AppendEffectParams(const MCModelEffect& effect, int effectIndex, const ACAInputAdapter& adapter,
                               std::vector<MCRegrParameter>& params) {
  if (effect.IsIntercept()) {
    params.emplace_back();
    return;
  }
  MCRegrParameter proto;
  proto.SetupFromEffect(effect, effectIndex);
  const std::vector<int> factors = proto.GetFactors();
  std::vector<int> sizes;
  int nCols = 1;
  for (int factor : factors) {
    sizes.push_back(adapter.GetRecordCatVarSize(factor));
    nCols *= sizes.back();
  }
  for (int c = 0; c < nCols; ++c) {
    MCRegrParameter param = proto;
    int rest = c;
    for (int i = static_cast<int>(factors.size()) - 1; i >= 0; --i) {
      param.GetCategories()[static_cast<std::size_t>(i)] = rest % sizes[static_cast<std::size_t>(i)];
      rest /= sizes[static_cast<std::size_t>(i)];
    }
    params.push_back(param);
  }
}

// The fixed parameters of a split's settings, intercept first.
inline std::vector<MCRegrParameter> BetaParams(const GLMMSettings& settings, const ACAInputAdapter& adapter) {
  std::vector<MCRegrParameter> params;
  if (settings.GetInterceptUse()) params.emplace_back();
  const std::vector<MCModelEffect>& effects = settings.GetModelEffects();
  for (int e = 0; e < static_cast<int>(effects.size()); ++e) {
    if (!effects[static_cast<std::size_t>(e)].IsIntercept()) {
      AppendEffectParams(effects[static_cast<std::size_t>(e)], e, adapter, params);
    }
  }
  return params;
}

// The parameters of each random block.
inline std::vector<std::vector<MCRegrParameter>> GammaParams(const GLMMSettings& settings,
                                                             const ACAInputAdapter& adapter) {
  std::vector<std::vector<MCRegrParameter>> blocks;
  for (const GLMMRandomSpec& spec : settings.GetRandomSpecs()) {
    std::vector<MCRegrParameter> params;
    const std::vector<MCModelEffect>& effects = spec.GetEffects();
    for (int e = 0; e < static_cast<int>(effects.size()); ++e) {
      AppendEffectParams(effects[static_cast<std::size_t>(e)], e, adapter, params);
    }
    blocks.push_back(params);
  }
  return blocks;
}

// What one split of a run left behind.
struct SplitRun {
  std::unique_ptr<GLMMSettings> fpSettings;
  std::unique_ptr<MCXML_850::MCVarList> fpVarList;
  std::unique_ptr<GLMMAlgorithm> fpAlgorithm;
  MCCommon_850::MCStatus fStatus;
  // The split's own labels, made while the split was current.
  std::vector<std::string> fvParamLabels;
  std::vector<std::string> fvEffectLabels;
  std::vector<std::vector<std::string>> fvRandomParamLabels;  // with the subject suffix
  std::vector<std::vector<std::string>> fvRandomEffectLabels;  // with the subject suffix
};

// A model on a dataset, specified through the record's setters as the
// command reader would fill it, and run split by split as the procedure
// does: settings per split, records sorted into a data file, the fit, and
// the parameters handed to the aggregators while the split is the latest.
class ModelRun {
 public:
  explicit ModelRun(ZORV_Dataset& data)
      : fData(data), fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed"), fSpecs(nullptr, data) {}
  ~ModelRun() {
    fvSplits.clear();
    fpAdapter.reset();
  }

  int Column(const std::string& name) const { return fData.FindVarIndex(name.c_str(), 0); }

  // The predictors: the factors, then the covariates. Subject variables of
  // random blocks go with the factors, so that they are in the record.
  void SetPredictors(const std::vector<int>& factors, const std::vector<int>& covariates) {
    fvFactors = factors;
    fvCovariates = covariates;
    fvPredictors = factors;
    fvPredictors.insert(fvPredictors.end(), covariates.begin(), covariates.end());
  }

  // An effect over the predictors: factors with the flag that opens a new
  // nesting level, covariates repeated by their multiplicity.
  MCModelEffect Effect(const std::vector<std::pair<int, bool>>& factors, const std::vector<int>& covariates,
                       bool factorsInParens = false) const {
    MCModelEffect effect;
    effect.Setup(static_cast<int>(fvFactors.size()), static_cast<int>(fvCovariates.size()), &fvPredictors);
    std::vector<int> vars;
    for (const auto& factor : factors) {
      EXPECT_GE(effect.AddNewFactor(factor.first, factor.second), 0) << factor.first;
      vars.push_back(factor.first);
    }
    for (int covariate : covariates) {
      EXPECT_GE(effect.AddCovariate(covariate), 1) << covariate;
      vars.push_back(covariate);
    }
    effect.SetVarsIndicesForTheEffectInSetting(vars);
    effect.SetFactorsInParens(factorsInParens);
    return effect;
  }
  MCModelEffect Intercept() const { return Effect({}, {}); }

  void SetTarget(int column) { fSpecs.SetDependVar(column); }
  void SetIntercept(bool intercept) { fSpecs.SetInterceptInModel(intercept); }
  void SetSortOrder(MCMath_850::MCConst::MCCategOrder order) { fSpecs.SetFactorSortOrder(order); }
  void AddFixed(const MCModelEffect& effect) { fvFixed.push_back(effect); }
  void AddRandom(const std::vector<MCModelEffect>& effects, const std::vector<int>& subjects,
                 GLMMConst_850::CovarType type = GLMMConst_850::VC) {
    GLMMRandomSpec block;
    for (const MCModelEffect& effect : effects) block.AddEffect(effect);
    for (int subject : subjects) block.AddSubjectVar(subject);
    block.SetCovarianceType(type);
    block.SetIndex(static_cast<int>(fvRandom.size()));
    fvRandom.push_back(block);
  }

  // Completes the record and opens the adapter on the data.
  void Complete() {
    fSpecs.SetFactorList(fvFactors);
    fSpecs.SetCovariateList(fvCovariates);
    std::vector<std::vector<bool>> nested;
    for (std::size_t e = 0; e < fvFixed.size(); ++e) nested.emplace_back(fvCovariates.size(), false);
    fSpecs.SetModelEffectList(fvFixed, nested);
    std::vector<int> counts;
    std::vector<std::vector<bool>> randomNested;
    for (const GLMMRandomSpec& block : fvRandom) {
      counts.push_back(block.GetNEffects());
      for (int e = 0; e < block.GetNEffects(); ++e) randomNested.emplace_back(fvCovariates.size(), false);
    }
    fSpecs.SetRandomSpec(fvRandom, counts, randomNested);
    fSpecs.CompleteSpecs();
    fpAdapter = std::make_unique<ACAInputAdapter>(fSpecs.GetVarValidSpecsPtr(), fData);
    fpAdapter->SetSplitFile(fProcedure, true, true, true);
  }

  int NSplits() const { return fpAdapter->GetSplitFile() ? static_cast<int>(fData.GetSplitCount()) : 1; }

  std::unique_ptr<MIXParameterAggregator> MakeAggregator(int randomIndex) const {
    return std::make_unique<MIXParameterAggregator>(fSpecs, fpAdapter.get(), fData, randomIndex, NSplits());
  }

  // May change a split's parameters before they are handed over; false
  // keeps them from the aggregators, as for a split whose fit failed.
  using Edit = std::function<bool(int split, std::vector<MCRegrParameter>& beta,
                                  std::vector<std::vector<MCRegrParameter>>& gamma)>;

  // Walks the splits. With `fit` the component fits the model; otherwise
  // the algorithm gives the parameters the component would list.
  void Run(bool fit, const std::vector<MIXParameterAggregator*>& aggregators, const Edit& edit = Edit()) {
    ACAProcDataSourceIter iter(*fpAdapter, true);
    int iSplit = 0;
    while (iter.NewSplit()) {
      SplitRun split;
      bool handOver = true;
      split.fpSettings = std::make_unique<GLMMSettings>();
      fSpecs.CompleteSettings(split.fpSettings.get(), fpAdapter.get(), iSplit);
      split.fpVarList = std::make_unique<MCXML_850::MCVarList>();
      EXPECT_TRUE(fSpecs.CompleteVarList(split.fpVarList.get(), fpAdapter.get()));
      if (fit) {
        std::vector<int> sortVars;
        fSpecs.GetCompSettingsPtr()->GetSortDataVariables(sortVars);
        ACADataFileIter file(*fpAdapter, sortVars, fpAdapter->GetNRecords());
        EXPECT_TRUE(file.FillDataFile(iter));
        file.Rewind();
        split.fpAlgorithm = std::make_unique<GLMMAlgorithm>(*split.fpSettings, *split.fpVarList);
        split.fStatus = split.fpAlgorithm->Execute(&file, 0);
      } else {
        auto stub = std::make_unique<StubAlgorithm>(*split.fpSettings, *split.fpVarList);
        std::vector<MCRegrParameter> beta = BetaParams(*split.fpSettings, *fpAdapter);
        std::vector<std::vector<MCRegrParameter>> gamma = GammaParams(*split.fpSettings, *fpAdapter);
        if (edit) handOver = edit(iSplit, beta, gamma);
        stub->SetParameters(beta, gamma);
        split.fpAlgorithm = std::move(stub);
      }
      const MCGLMM_850::GLMMOutputStats* stats = split.fpAlgorithm->GetOutputStats();
      if (stats != nullptr) {
        for (MIXParameterAggregator* aggregator : aggregators) {
          if (!handOver) break;
          EXPECT_TRUE(aggregator->AddSplitParams(split.fpAlgorithm.get())) << "split " << iSplit;
        }
        MIXParameterMap map(&fSpecs, fData, fpAdapter.get());
        map.CreateParameterMap(stats->GetBetaParameters(), split.fpSettings->GetModelEffects());
        map.CreateEffectMap(split.fpSettings->GetModelEffects());
        split.fvParamLabels = map.GetParameterMap(false);
        split.fvEffectLabels = map.GetEffectMap(false);
        for (int b = 0; b < split.fpSettings->GetNRandomSpecs(); ++b) {
          const GLMMRandomSpec& spec = split.fpSettings->GetRandomSpecs()[static_cast<std::size_t>(b)];
          MIXParameterMap randomMap(&fSpecs, fData, fpAdapter.get());
          randomMap.CreateParameterMap(stats->GetGammaBasicParameters()[static_cast<std::size_t>(b)],
                                       spec.GetEffects(), spec.GetSubjectVars());
          randomMap.CreateEffectMap(spec.GetEffects(), spec.GetSubjectVars());
          split.fvRandomParamLabels.push_back(randomMap.GetParameterMap(true));
          split.fvRandomEffectLabels.push_back(randomMap.GetEffectMap(true));
        }
      }
      fvSplits.push_back(std::move(split));
      ++iSplit;
    }
  }

  ZORV_Dataset& fData;
  OmDocument fDocument;
  BpProcedure fProcedure;
  MIXValidSpecs fSpecs;
  std::vector<int> fvFactors;
  std::vector<int> fvCovariates;
  std::vector<int> fvPredictors;
  std::vector<MCModelEffect> fvFixed;
  std::vector<GLMMRandomSpec> fvRandom;
  std::unique_ptr<ACAInputAdapter> fpAdapter;
  std::vector<SplitRun> fvSplits;
};

// Every split's own labels agree with the global labels through the maps.
inline void ExpectLocalLabelsMatch(const ModelRun& run, const MIXParameterAggregator& aggregator) {
  for (std::size_t s = 0; s < run.fvSplits.size(); ++s) {
    const std::vector<std::string>& local = run.fvSplits[s].fvParamLabels;
    for (std::size_t i = 0; i < local.size(); ++i) {
      const int global = aggregator.GetGlobalParamIndex(static_cast<int>(s), static_cast<int>(i));
      ASSERT_GE(global, 0) << "split " << s << " parameter " << i;
      EXPECT_EQ(aggregator.GetAllParamLabels(false)[static_cast<std::size_t>(global)], local[i]);
      EXPECT_EQ(aggregator.GetLocalParamIndex(static_cast<int>(s), global), static_cast<int>(i));
    }
  }
}

// A data file of the examples folder, with its dictionary.
inline void LoadExample(const std::string& file, ZORV_Dataset& data) {
  DataFileLoader::Load(std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + file, data);
}

// Starts and ends a command of the host around each test.
class ParamsTest : public ::testing::Test {
 protected:
  ParamsTest() { ZORV_Session::Current().BeginCommand(); }
  ~ParamsTest() override { ZORV_Session::Current().BeginCommand(); }
};

}  // namespace params_test
