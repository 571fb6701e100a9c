#include "app/AppHelp.h"

#include "app/AppExprFunction.h"
#include "app/AppOptions.h"

namespace {

// The functions of expressions, one line each, from their table.
std::string Functions() {
  std::string text;
  for (const AppExprFunction& function : AppExprFunction::All()) {
    std::string usage = std::string("    ") + function.fUsage;
    if (usage.size() < 32) usage.resize(32, ' ');
    text += usage + " " + function.fSummary + "\n";
  }
  return text;
}

}  // namespace

std::string AppHelp::Text() {
  return AppOptions::Usage() +
         "\n"
         "Command files\n"
         "  Commands end with a period followed by a blank or a line end. Keywords and\n"
         "  variable names may be written in any case. Texts are quoted with ' or \".\n"
         "  '#' starts a comment. File names are taken from the command file's folder.\n"
         "\n"
         "  LOAD 'file' [DICTIONARY='file'].          CSV, Stata (.dta) or SAS (.sas7bdat)\n"
         "  SET VARIABLES=NAMES|LABELS|BOTH VALUES=NAMES|LABELS|BOTH.\n"
         "      (TABLEVARIABLES=, TABLEVALUES=, CAPTIONVARIABLES=, CAPTIONVALUES= set\n"
         "       tables and captions apart)\n"
         "  SPLIT BY var... [LAYERED|SEPARATE].        SPLIT OFF.\n"
         "  WEIGHT BY var.                             WEIGHT OFF.\n"
         "  DEBUG switch... ON|OFF.                    DEBUG ALL ON|OFF.\n"
         "      (display_settings display_metadata display_component display_output\n"
         "       write_text_data aggreg_random: the procedure's developer output)\n"
         "\n"
         "Preparing the data\n"
         "  COMPUTE var = expression.                  a new variable, or new values\n"
         "  RECODE var... (value... = value)... [INTO var...] [/ ...].\n"
         "      values: number, 'text', low THRU high (LOWEST, HIGHEST), MISSING, ELSE;\n"
         "      results: number, 'text', MISSING, COPY\n"
         "  SELECT IF condition.                       keeps the cases where it is true\n"
         "  FILTER BY var.                             FILTER OFF.\n"
         "      (analyses use the cases whose var is neither missing nor 0)\n"
         "  LABEL var 'label' [var 'label']...\n"
         "  VALUES var... value 'label'... [/ ...].\n"
         "  MISSING var... value... [low THRU high] | NONE [/ ...].\n"
         "  LEVEL var... NOMINAL|ORDINAL|SCALE [/ ...].\n"
         "  FORMAT var... F8.2 [/ ...].\n"
         "  WRITE ['file.csv'] [DICTIONARY='file'].    the data as CSV with its dictionary\n"
         "      (without a name: data-N.csv in the output folder)\n"
         "\n"
         "  Expressions: numbers, 'texts', variables and functions with\n"
         "    **  * /  + -  = <> < <= > >=  NOT (~)  AND (&)  OR (|)\n"
         "  An operation on a missing value is missing; AND, OR, IF, MISSING, MIN,\n"
         "  MAX, MEAN and SUM look at missing values themselves. A value that cannot\n"
         "  be computed (division by zero, LN(0)) is missing and counted in a warning.\n" +
         Functions() +
         "\n"
         "  GLMIXFIT target [BY factor...] [WITH covariate...]\n"
         "    /FIXED term... [INTERCEPT=YES|NO]\n"
         "    /RANDOM term... [SUBJECTS=var*var] [STRUCTURE=code] [PREDICT=YES|NO]\n"
         "    /RESIDUAL [INDEX=var*var] [SUBJECTS=var*var] [STRUCTURE=code]\n"
         "              [COORDINATES=var...]\n"
         "    /ESTIMATION [METHOD=REML|ML] [CONFIDENCE=95] [ITERATIONS=100] [HALVING=5]\n"
         "              [SCORING=1] [SINGULAR=1E-12]\n"
         "              [CONVERGENCE=PARAMETERS(1E-6 [RELATIVE|ABSOLUTE])\n"
         "                           LOGLIKELIHOOD(0 [ABSOLUTE]) HESSIAN(0 [ABSOLUTE])]\n"
         "              [FIT=PL|LAPLACE|QUADRATURE(n)] [COVB=MODEL|ROBUST]\n"
         "    /MISSING USERMISSING=EXCLUDE|INCLUDE\n"
         "    /TESTS TYPE=3|1\n"
         "    /DISPLAY ESTIMATES ESTIMATECOVARIANCES ESTIMATECORRELATIONS CASES\n"
         "             COVARIANCETESTS GMATRIX RMATRIX LMATRIX VARIABLES HISTORY[(n)]\n"
         "    /FORMAT [CRITERIA=F40.3] [ESTIMATES=F40.4]\n"
         "    /CONTRAST ['label'] row [; row...] [K=value...]\n"
         "         row: term values... [| random block 1 terms and values [| block 2 ...]]\n"
         "           or ALL values... [| ALL values...]\n"
         "    /MEANS factor*factor|OVERALL [COMPARE=factor]\n"
         "           [REFERENCE=FIRST|LAST|MEAN|value] [ADJUST=LSD|SEQUENTIALBONFERRONI|\n"
         "           SEQUENTIALSIDAK] [AT=covariate(value)...]\n"
         "    /SAVE PREDICTED[(name)] PREDICTEDSE PREDICTEDDF FIXEDPREDICTED\n"
         "          FIXEDPREDICTEDSE FIXEDPREDICTEDDF RESIDUAL LINEARPREDICTOR\n"
         "          PEARSONRESIDUAL PREDICTEDCATEGORY (at most seven; new variables\n"
         "          in the data for the commands that follow; a generalized target's\n"
         "          predictions and residual are on the data's scale)\n"
         "    /EXPORT [MODEL='file' | PARAMETERS='file'] [STATXML='file']\n"
         "            [STATJSON='file']\n"
         "    /SCALEWEIGHT var\n"
         "    /TARGET [DISTRIBUTION=NORMAL|BINOMIAL|POISSON|NEGBIN|GAMMA|IGAUSS|\n"
         "            MULTINOMIAL] [LINK=IDENTITY|LOG|LOGIT|PROBIT|CLOGLOG|NLOGLOG|LOGC|\n"
         "            POWER(p)|CAUCHIT]\n"
         "            [TRIALS=var|n] [REFERENCE=FIRST|LAST|value] [OFFSET=var].\n"
         "\n"
         "  Terms: A  A*B  A(B)  A*B(C(D))  X  X*X  X*A  X(A); INTERCEPT in /RANDOM.\n"
         "  Covariance structures: AD1 AR1 ARH1 ARMA11 CS CSH CSR DIAG FA1 FAH1 HF ID TP\n"
         "  TPH UN UNR VC; in /RESIDUAL also POWER EXPONENTIAL GAUSSIAN LINEAR LINEARLOG\n"
         "  SPHERICAL (with COORDINATES=).\n"
         "\n"
         "The full reference is docs/syntax.md.\n";
}
