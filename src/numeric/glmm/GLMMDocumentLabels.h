#pragma once

#include <string>
#include <vector>

#include "numeric/glmm/GLMMConst.h"
#include "numeric/glmm/GLMMTargetSpec.h"

namespace MCMath_850 {
class MCModelEffect;
class MCRegrParameter;
}  // namespace MCMath_850

namespace MCXML_850 {
class MCVarList;
}

namespace MCGLMM_850 {

// How the model and result documents name variables, categories, effects,
// parameters and covariance structures.
class GLMMDocumentLabels {
 public:
  // One field of an effect as the documents list it: the variable and its
  // nesting depth, where a rise from one field to the next opens a nested
  // part, as in B(A).
  struct EffectField {
    int fVar;
    int fNestingLevel;
  };

  // The name of the data field the variable reads, which is the name a
  // reader finds in the data; "#<position>" for a position outside the list.
  static std::string VarName(const MCXML_850::MCVarList& varList, int var);
  // Whether the variable stands as a field of its own in the model file: a
  // repeated-measures copy of a field that another variable of the list
  // reads already does not, since a field is described once.
  static bool IsOwnField(const MCXML_850::MCVarList& varList, int var);
  // A category as a value that reads back into the variable: the number for
  // a numeric variable, the text for a string variable. Empty when the code
  // is not a category of the variable.
  static std::string CategoryValue(const MCXML_850::MCVarList& varList, int var, int code);
  // The category's text as it is displayed.
  static std::string CategoryText(const MCXML_850::MCVarList& varList, int var, int code);
  // The fields of an effect in display order. A crossed effect keeps the
  // order in which it was written; in a nested one the innermost factors
  // come first and each enclosing level is one deeper, and covariates that
  // stand before their factors open the list.
  static std::vector<EffectField> EffectFields(const MCMath_850::MCModelEffect& effect);
  // The display label of a parameter: "Intercept"; covariates joined by
  // "*", each as often as its power; then its factors as [name=category],
  // joined by "*", a nested factor in parentheses.
  static std::string ParameterLabel(const MCMath_850::MCRegrParameter& param,
                                    const MCXML_850::MCVarList& varList);
  // The token of a covariance structure: VC, AR1, ARMA11, CS, DIAG, ID, TP,
  // UNSTRUCTURED, SPPOW, SPEXP, SPGAU, SPLIN, SPLINLOG, SPSPH, and for the
  // other structures their own names (ARH1, AD1, CSH, CSR, FA1, FAH1, HF,
  // TPH, UNR).
  static std::string CovarianceToken(GLMMConst_850::CovarType type);
  // The target's distribution as the results document names it: NORMAL,
  // BINOMIAL, POISSON, NEGBIN, GAMMA, IGAUSS, and a multinomial target as
  // ORDINAL or NOMINAL after the order of its categories.
  static std::string DistributionToken(const GLMMTargetSpec& spec);
  // The link in force, by the same tokens as the command: IDENTITY, LOG,
  // LOGIT, PROBIT, CLOGLOG, NLOGLOG, LOGC, POWER, CAUCHIT.
  static std::string LinkToken(const GLMMTargetSpec& spec);
  // The model file's names of the same: lower case, with "loglog" for the
  // negative log-log link.
  static std::string ModelDistributionToken(const GLMMTargetSpec& spec);
  static std::string ModelLinkToken(const GLMMTargetSpec& spec);
};

}  // namespace MCGLMM_850
