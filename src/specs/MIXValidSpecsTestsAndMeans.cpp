#include "specs/MIXValidSpecs.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "base/MIXAssert.h"
#include "base/MIXCommandLayout.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Variable.h"

using MCGLMM_850::CustomTest;
using MCGLMM_850::LMatrixRow;
using MCMath_850::MCEmmeansSpec;
namespace MCConst = MCMath_850::MCConst;

namespace {

namespace L = MIXCommandLayout;

// A word of a record is a double; as a count, code or position it is
// truncated. Values no integer can hold give 0.
INTEGER Truncated(double value) {
  if (!std::isfinite(value) || std::fabs(value) >= 9.0e18) return 0;
  return static_cast<INTEGER>(value);
}

int TruncatedInt(double value) {
  const INTEGER word = Truncated(value);
  if (word > std::numeric_limits<int>::max() || word < std::numeric_limits<int>::min()) return 0;
  return static_cast<int>(word);
}

}  // namespace

// ---------------------------------------------------------------------------
// Custom tests and marginal means

// Rows name a random effect by its place in the flat list of random effects.
// The place is the same in host and component terms, so the two forms of a
// test differ only in the list those places refer to, and the flag that
// chooses the form changes nothing in the reading.
bool MIXValidSpecs::FillCustomTest(const LR* record, CustomTest& test, bool /*useCompEffects*/) {

  test.Reset();
  const int nFixEffExt = CmnInt(L::N_FIXED_TERMS);
  MIX_ASSERT(nFixEffExt > 0, "nFixEffExt > 0");
  const int nRandEff = std::max(CmnInt(L::N_RANDOM_TERMS), 0);
  const int nFixEff = InterceptInModel ? nFixEffExt - 1 : nFixEffExt;

  const bool allValues = record[L::CONTRAST_ALL_VALUES] == 1.0;
  const int nRows = TruncatedInt(record[L::CONTRAST_N_ROWS]);
  std::vector<int> fixCounts;
  std::vector<int> randCounts;
  int fixTotal = 0;
  int randTotal = 0;
  if (allValues) {
    fixTotal = std::max(TruncatedInt(record[L::CONTRAST_FIXED]), 0);
    randTotal = std::max(TruncatedInt(record[L::CONTRAST_RANDOM]), 0);
  } else {
    const INTEGER fixPosition = Truncated(record[L::CONTRAST_FIXED]);
    for (int i = 0; i < nFixEffExt; ++i) {
      fixCounts.push_back(static_cast<int>(WordAt(fixPosition, i)));
      fixTotal += std::max(fixCounts.back(), 0);
    }
    if (nRandEff > 0) {
      const INTEGER randPosition = Truncated(record[L::CONTRAST_RANDOM]);
      for (int i = 0; i < nRandEff; ++i) {
        randCounts.push_back(static_cast<int>(WordAt(randPosition, i)));
        randTotal += std::max(randCounts.back(), 0);
      }
    }
  }

  const int labelLength = TruncatedInt(record[L::CONTRAST_LABEL_LENGTH]);
  if (labelLength >= 1) {
    const INTEGER intLabPtr = Truncated(record[L::CONTRAST_LABEL]);
    MIX_ASSERT(intLabPtr > 0, "intLabPtr > 0");
    test.SetLabel(std::string(reinterpret_cast<const char*>(CommandInteger + (intLabPtr - 1)),
                              static_cast<std::size_t>(labelLength)));
  }

  // The values of all rows follow one another.
  INTEGER valuePosition = Truncated(record[L::CONTRAST_VALUES]);
  auto nextValues = [this, &valuePosition](int n) {
    std::vector<double> values;
    for (int k = 0; k < n; ++k) values.push_back(CommandLR[valuePosition - 1 + k]);
    valuePosition += n;
    return values;
  };

  for (int r = 0; r < nRows; ++r) {
    LMatrixRow fixedRow;
    if (allValues) {
      fixedRow.Setup(GLMMConst_850::LROW_ALL_VALUES, nFixEffExt);
      fixedRow.SetAllValues(nextValues(fixTotal));
    } else {
      std::size_t firstEffectCount = 0;
      if (InterceptInModel) {
        const int nEffCols = fixCounts[0];
        if (nEffCols < 1) {
          fixedRow.Setup(GLMMConst_850::LROW_FIXED, nFixEff);
        } else {
          MIX_ASSERT(nEffCols == 1, "nEffCols == 1");
          fixedRow.Setup(GLMMConst_850::LROW_FIXED_WITH_INTERCEPT, nFixEff);
          fixedRow.SetFirstValue(nextValues(1)[0]);
        }
        firstEffectCount = 1;
      } else {
        fixedRow.Setup(GLMMConst_850::LROW_FIXED, nFixEff);
      }
      for (int i = 0; i < nFixEff; ++i) {
        const int n = fixCounts[firstEffectCount + static_cast<std::size_t>(i)];
        if (n > 0) fixedRow.AddNewPair(i, nextValues(n));
      }
    }

    if (randTotal == 0) {
      test.AddFixedRow(fixedRow);
      continue;
    }
    LMatrixRow randomRow;
    if (allValues) {
      randomRow.Setup(GLMMConst_850::LROW_ALL_VALUES, nRandEff);
      randomRow.SetAllValues(nextValues(randTotal));
    } else {
      randomRow.Setup(GLMMConst_850::LROW_RANDOM, nRandEff);
      for (int i = 0; i < nRandEff; ++i) {
        const int n = randCounts[static_cast<std::size_t>(i)];
        if (n > 0) randomRow.AddNewPair(i, nextValues(n));
      }
    }
    test.AddMixedRow(fixedRow, randomRow);
  }

  const INTEGER kPosition = Truncated(record[L::CONTRAST_K]);
  if (kPosition > 0) {
    std::vector<double> kValues;
    for (int r = 0; r < nRows; ++r) kValues.push_back(CommandLR[kPosition - 1 + r]);
    test.SetKMatrix(kValues);
  }
  return true;
}

bool MIXValidSpecs::FillEMMeansSpec(const LR* record, MCEmmeansSpec& spec, const OBS*& refValue, ZORV_Format& format,
                                    std::string& refText, RefCatTypes& refCatType, bool& tooLong,
                                    std::vector<std::string>& fixCovStrings) {
  spec.Reset();
  refValue = nullptr;
  format = ZORV_Format(0, 0, 0);
  refText.clear();
  refCatType = REFCAT_NONE;
  tooLong = false;
  fixCovStrings.clear();

  auto factorAt = [this](INTEGER place) {
    return place >= 0 && place < static_cast<INTEGER>(FactorList.size()) ? FactorList[static_cast<std::size_t>(place)]
                                                                          : -1;
  };

  const int nTabFacts = std::max(TruncatedInt(record[L::MEANS_N_FACTORS]), 0);
  const INTEGER factorPosition = Truncated(record[L::MEANS_FACTORS]);
  std::vector<INTEGER> tablePlaces;
  for (int k = 0; k < nTabFacts; ++k) {
    tablePlaces.push_back(WordAt(factorPosition, k) - 1);
    spec.AddFactor(factorAt(tablePlaces.back()), 0);
  }

  int compareFactInd = -1;
  const int comparePlace = TruncatedInt(record[L::MEANS_COMPARE]);
  if (comparePlace >= 1) {
    const int locComprFactInd = comparePlace - 1;
    MIX_ASSERT(locComprFactInd < nTabFacts, "locComprFactInd < nTabFacts");
    const INTEGER tabComprFactInd = tablePlaces[static_cast<std::size_t>(locComprFactInd)];
    MIX_ASSERT(tabComprFactInd >= 0, "tabComprFactInd >= 0");
    compareFactInd = factorAt(tabComprFactInd);
    MIX_ASSERT(compareFactInd >= 0, "compareFactInd >= 0");
    spec.AddCompareFactor(compareFactInd);
    if (const ZORV_Variable* variable = DataSource->GetVariable(compareFactInd)) {
      int type = 0;
      int width = 0;
      int decimals = 0;
      variable->GetFormatEx(type, width, decimals);
      format = ZORV_Format(static_cast<std::uint8_t>(type), static_cast<std::uint16_t>(width),
                           static_cast<std::uint8_t>(decimals));
    }
  }

  // Four words per covariate: fixed or not, the value, and the value as
  // written (length and position of its characters).
  const INTEGER covariatePosition = Truncated(record[L::MEANS_COVARIATES]);
  for (std::size_t j = 0; j < CovariateList.size(); ++j) {
    double value = MissingValue;
    std::string text;
    if (covariatePosition > 0) {
      const LR* block = CommandLR + (covariatePosition - 1) + L::COVARIATE_WORDS * static_cast<long>(j);
      if (block[L::COVARIATE_HELD] < 0.0) value = block[L::COVARIATE_VALUE];
      const int length = TruncatedInt(block[L::COVARIATE_TEXT_LENGTH]);
      const INTEGER textPosition = Truncated(block[L::COVARIATE_TEXT]);
      if (length > 0 && textPosition > 0) {
        text.assign(reinterpret_cast<const char*>(CommandLR + (textPosition - 1)), static_cast<std::size_t>(length));
      }
    }
    fixCovStrings.push_back(text);
    spec.AddCovariate(CovariateList[j], value);
  }

  const int adjustment = TruncatedInt(record[L::MEANS_ADJUST]);
  spec.SetPAdjust(adjustment == 2   ? MCConst::PADJUST_SEQ_BONFERRONI
                  : adjustment == 3 ? MCConst::PADJUST_SEQ_SIDAK
                                    : MCConst::PADJUST_LSD);

  refCatType = static_cast<RefCatTypes>(TruncatedInt(record[L::MEANS_REFERENCE_KIND]));
  spec.SetReferenceType(refCatType == REFCAT_LAST ? MCConst::REFERENCE_LAST : MCConst::REFERENCE_CATEGORY);
  if (refCatType == REFCAT_VALUE) {
    refValue = reinterpret_cast<const OBS*>(record + L::MEANS_REFERENCE);
  } else if (refCatType == REFCAT_TEXT) {
    MIX_ASSERT(compareFactInd >= 0, "compareFactInd >= 0");
    const int length = std::max(TruncatedInt(record[L::MEANS_REFERENCE]), 0);
    const INTEGER textPosition = Truncated(record[L::MEANS_REFERENCE_TEXT]);
    refValue = reinterpret_cast<const OBS*>(CommandLR + (textPosition - 1));
    refText.assign(reinterpret_cast<const char*>(refValue), static_cast<std::size_t>(length));
    tooLong = length > static_cast<int>(format.fWidth);
  }
  spec.SetContrastType(refCatType == REFCAT_NONE   ? MCConst::CONTRAST_PAIRWISE
                       : refCatType == REFCAT_MEAN ? MCConst::CONTRAST_DEVIATION
                                                   : MCConst::CONTRAST_SIMPLE);
  return true;
}

bool MIXValidSpecs::CreateCompEMMeans(const MCEmmeansSpec& spec, MCEmmeansSpec& compSpec) {
  compSpec.Reset();
  auto recIndex = [this](int hostIndex) {
    return VarValidSpecsPtr != nullptr ? VarValidSpecsPtr->GetRecVarIndex(hostIndex) : -1;
  };

  const std::vector<int>& factors = spec.GetFactors();
  const std::vector<int>& nestLevels = spec.GetFactorsNestLevel();
  const bool withLevels = nestLevels.size() == factors.size();
  for (std::size_t f = 0; f < factors.size(); ++f) {
    const int index = recIndex(factors[f]);
    if (index < 0) return false;
    if (compSpec.AddFactor(index, withLevels ? nestLevels[f] : 0) < 0) return false;
  }

  const std::vector<int>& covariates = spec.GetCovariates();
  const std::vector<double>& values = spec.GetCovariateValues();
  for (std::size_t c = 0; c < covariates.size(); ++c) {
    const int index = recIndex(covariates[c]);
    if (index < 0) return false;
    const double value = c < values.size() ? values[c] : MissingValue;
    if (compSpec.AddCovariate(index, value) < 0) return false;
  }

  compSpec.SetEmmScaleType(spec.GetEmmScaleType());

  for (int factor : spec.GetCompareFactors()) {
    const int index = recIndex(factor);
    if (index < 0) return false;
    if (compSpec.AddCompareFactor(index) < 0) return false;
  }

  compSpec.SetContrastType(spec.GetContrastType());
  if (spec.GetContrastType() == MCConst::CONTRAST_SIMPLE) compSpec.SetRefCateg(spec.GetRefCateg());
  if (spec.GetContrastType() == MCConst::CONTRAST_POLYNOMIAL) {
    if (!compSpec.SetMetricValueList(spec.GetMetricValueList())) return false;
  }
  compSpec.SetPAdjust(spec.GetPAdjust());
  return true;
}

std::string MIXValidSpecs::GetContrastString(int emmeansIndex) const {
  MIX_ASSERT((emmeansIndex >= 0) && (emmeansIndex < GetNEMMeans()),
             "(emmeansIndex >= 0) && (emmeansIndex < GetNEMMeans())");
  const std::size_t index = static_cast<std::size_t>(emmeansIndex);
  return index < ContrastStringList.size() ? ContrastStringList[index] : std::string();
}
