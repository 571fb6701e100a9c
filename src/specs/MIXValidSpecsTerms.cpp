#include "specs/MIXValidSpecs.h"

#include <algorithm>

#include "base/MIXAssert.h"
#include "base/MIXCommandLayout.h"
#include "host/adapter/ACAVarValidSpecs.h"

using MCGLMM_850::GLMMRandomSpec;
using MCMath_850::MCModelEffect;

namespace {

namespace L = MIXCommandLayout;

}  // namespace

// ---------------------------------------------------------------------------
// Model terms

bool MIXValidSpecs::FillModelEffect(INTEGER*& cursor, MCModelEffect& effect, std::vector<bool>& nestedFlags) {
  const int nFactors = static_cast<int>(FactorList.size());
  const int nCovariates = static_cast<int>(CovariateList.size());
  effect.Reset();
  effect.Setup(nFactors, nCovariates, &ModelVarList);
  nestedFlags.clear();

  std::vector<std::pair<INTEGER, int>> levels;
  for (int i = 0; i < nFactors; ++i) levels.emplace_back(cursor[i], i);
  std::sort(levels.begin(), levels.end());
  INTEGER oldFactLev = 0;
  for (const auto& pair : levels) {
    const INTEGER factLev = pair.first;
    MIX_ASSERT(factLev >= oldFactLev, "factLev >= oldFactLev");
    if (factLev > 0) {
      effect.AddNewFactor(FactorList[static_cast<std::size_t>(pair.second)], oldFactLev < factLev);
      if (oldFactLev < factLev) {
        MIX_ASSERT(factLev == oldFactLev + 1, "factLev == oldFactLev + 1");
        oldFactLev = factLev;
      }
    }
  }

  for (int j = 0; j < nCovariates; ++j) {
    const INTEGER word = cursor[nFactors + j];
    nestedFlags.push_back(word < 0);
    const INTEGER times = word < 0 ? -word : word;
    for (INTEGER k = 0; k < times; ++k) effect.AddCovariate(CovariateList[static_cast<std::size_t>(j)]);
  }

  std::vector<int> ordered;
  if (!effect.IsIntercept()) {
    const std::vector<int> factors = effect.GetFactors();
    const std::vector<int>& factorLevels = effect.GetFactorLevels();
    std::vector<int> factorList;
    if (!factorLevels.empty()) {
      const int highest = *std::max_element(factorLevels.begin(), factorLevels.end());
      for (int level = highest; level >= 0; --level) {
        std::vector<int> ofLevel;
        for (std::size_t f = 0; f < factors.size(); ++f) {
          if (factorLevels[f] == level) ofLevel.push_back(factors[f]);
        }
        factorList.insert(factorList.begin(), ofLevel.begin(), ofLevel.end());
      }
    }
    std::vector<int> covariateList;
    for (int covariate : effect.GetCovariates()) {
      const int mult = effect.GetCovariateMult(covariate);
      for (int k = 0; k < std::max(mult, 1); ++k) covariateList.push_back(covariate);
    }
    if (factorList.empty()) {
      ordered = covariateList;
    } else if (effect.GetFactorsInParens()) {
      ordered = covariateList;
      ordered.insert(ordered.end(), factorList.begin(), factorList.end());
    } else {
      ordered = factorList;
      ordered.insert(ordered.end(), covariateList.begin(), covariateList.end());
    }
  }
  effect.SetVarsIndicesForTheEffectInSetting(ordered);

  cursor += ModelVarList.size();
  return true;
}

bool MIXValidSpecs::FillRandomSpec(int& blockIndex, int& firstEffect, GLMMRandomSpec& spec, int& nEffects,
                                   std::vector<std::vector<bool>>& nestedFlags) {
  spec.Reset(false);
  nestedFlags.clear();

  const INTEGER count = WordAt(CmnWord(L::BLOCK_TERM_COUNTS), blockIndex);
  nEffects = static_cast<int>(count < 0 ? -count : count);
  if (nEffects > 0) {
    const long rowLength = static_cast<long>(CmnInt(L::N_FACTORS)) + CmnInt(L::N_COVARIATES);
    INTEGER* cursor = WordPointer(CmnWord(L::RANDOM_TERMS)) + static_cast<long>(firstEffect) * rowLength;
    for (int e = 0; e < nEffects; ++e) {
      MCModelEffect effect;
      std::vector<bool> flags;
      FillModelEffect(cursor, effect, flags);
      spec.AddEffect(effect);
      nestedFlags.push_back(flags);
    }
  }

  // Per block: the effect count and the EBLUP flag. Per first effect of the
  // block: the covariance code and the subjects.
  spec.SetComputeEBLUPs(WordAt(CmnWord(L::BLOCK_PREDICT), blockIndex) == 1);
  spec.SetCovarianceType(GetCovarType(static_cast<long>(WordAt(CmnWord(L::BLOCK_COVARIANCES), firstEffect)), false));
  const INTEGER nSubjects = WordAt(CmnWord(L::BLOCK_SUBJECT_COUNTS), firstEffect);
  if (nSubjects > 0) {
    const INTEGER subjectList = WordAt(CmnWord(L::BLOCK_SUBJECT_LISTS), firstEffect);
    for (INTEGER s = 0; s < nSubjects; ++s) {
      const INTEGER zorvInd = WordAt(subjectList, static_cast<long>(s)) - 1;
      MIX_ASSERT(zorvInd >= 0, "zorvInd >= 0");
      spec.AddSubjectVar(static_cast<int>(zorvInd));
    }
  }

  spec.SetIndex(blockIndex);
  ++blockIndex;
  firstEffect += nEffects;
  return true;
}

bool MIXValidSpecs::CreateCompEffect(const MCModelEffect& effect, MCModelEffect& compEffect) {
  compEffect = effect;
  compEffect.SetVarIndices(&CompModelVarList);
  std::vector<int> compVars;
  for (int predInd : effect.GetVarsIndicesForTheEffectInSetting()) {
    MIX_ASSERT(predInd >= 0, "predInd >= 0");
    const int compPredInd = VarValidSpecsPtr != nullptr ? VarValidSpecsPtr->GetRecVarIndex(predInd) : -1;
    MIX_ASSERT(compPredInd >= 0, "compPredInd >= 0");
    compVars.push_back(compPredInd);
  }
  compEffect.SetVarsIndicesForTheEffectInSetting(compVars);
  return true;
}

bool MIXValidSpecs::CreateCompRandom(const GLMMRandomSpec& spec, GLMMRandomSpec& compSpec, bool isRepeated) {
  compSpec.Reset(false);
  for (const MCModelEffect& effect : spec.GetEffects()) {
    MCModelEffect compEffect;
    if (isRepeated) {
      compEffect = effect;
      compEffect.SetVarIndices(&CompRepeatedVarList);
      compEffect.SetVarsIndicesForTheEffectInSetting(CompRepeatedVarList);
    } else {
      CreateCompEffect(effect, compEffect);
    }
    compSpec.AddEffect(compEffect);
  }

  const std::vector<int>& subjects = spec.GetSubjectVars();
  for (std::size_t s = 0; s < subjects.size(); ++s) {
    const int zorvSubjVar = subjects[s];
    MIX_ASSERT(zorvSubjVar >= 0, "zorvSubjVar >= 0");
    int compSubjVar = -1;
    if (isRepeated) {
      if (s < CompRepeatedSubjVarList.size()) compSubjVar = CompRepeatedSubjVarList[s];
    } else if (VarValidSpecsPtr != nullptr) {
      compSubjVar = VarValidSpecsPtr->GetRecVarIndex(zorvSubjVar);
    }
    MIX_ASSERT(compSubjVar >= 0, "compSubjVar >= 0");
    compSpec.AddSubjectVar(compSubjVar);
  }

  compSpec.SetCovarianceType(spec.GetCovarianceType());
  compSpec.SetIndex(spec.GetIndex());
  compSpec.SetComputeEBLUPs(spec.GetComputeEBLUPs());
  return true;
}
