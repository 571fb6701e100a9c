#pragma once

#include <string>
#include <vector>

#include "host/data/OBS.h"

class ACAVarValidSpecs;
class ZORV_DataSource;
class ZORV_Variable;
namespace MCMath_850 {
class MCModelEffect;
}

// The labels of effects and parameters, shared by the parameter map of one
// fitted model and by the aggregator over all splits.
//
// A label joins the factors of one nesting level with " * " and puts each
// lower level in brackets after the level above it, so that the most deeply
// nested factors stand outermost: A at level 2 and B at level 1 give A(B).
// Levels without factors take no part. A parameter label writes each factor
// as [name=value]. Covariates follow the factors as " * " and the covariate
// text, or, for an effect whose factors stand in parentheses, come first:
// X(A).
class MIXLabelGrammar {
 public:
  // The text of the intercept, from the procedure's string table.
  static std::string InterceptText();
  // The word before a threshold of an ordinal target, from the same table.
  static std::string ThresholdText();

  // The variable of a component index, through its host index; null when
  // there is none.
  static const ZORV_Variable* Variable(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs,
                                       int compIndex);
  // Its name; empty when there is no such variable.
  static std::string VariableName(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs,
                                  int compIndex);

  // The text of a category value of a factor (a component index), in the
  // variable's format; empty for a null value or an unknown variable.
  static std::string ValueText(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs, int compIndex,
                               const OBS* value);
  // The names of the covariates, each repeated by its multiplicity.
  static std::vector<std::string> CovariateNames(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs,
                                                 const std::vector<int>& covariates,
                                                 const std::vector<int>& multiplicities);
  // The label of an effect; the intercept text for an intercept.
  static std::string EffectLabel(const ZORV_DataSource& dataSource, const ACAVarValidSpecs* pVarSpecs,
                                 const MCMath_850::MCModelEffect& effect);

  // The texts joined with " * ".
  static std::string JoinNames(const std::vector<std::string>& texts);
  // "[name=value]".
  static std::string FactorValueText(const std::string& name, const std::string& value);
  // The label of a term: `factorTexts` parallel to `levels`, `covariateTexts`
  // with each covariate repeated by its multiplicity.
  static std::string Compose(const std::vector<std::string>& factorTexts, const std::vector<int>& levels,
                             const std::vector<std::string>& covariateTexts, bool factorsInParens);

  // The suffixes for subject variables, empty without subjects. A parameter
  // label takes " | " and the subjects, an effect label "[subject = " and the
  // subjects, with no closing bracket.
  static std::string ParamSubjectSuffix(const std::string& subjects);
  static std::string EffectSubjectSuffix(const std::string& subjects);
};
