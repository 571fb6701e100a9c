#include <gtest/gtest.h>

#include "AppTestSupport.h"

using namespace apptest;

namespace {

const ZORV_Dataset& Data() {
  static std::unique_ptr<ZORV_Dataset> data = LoadTrial();
  return *data;
}

struct ErrorCase {
  const char* fText;
  const char* fMarker;  // where the error points; "" the end of the text
  int fOccurrence;
  const char* fMessage;
};

const char* const kH = "GLMIXFIT y BY a b WITH x z";

std::string WithHeader(const char* rest) { return std::string(kH) + " " + rest; }

void Check(const std::vector<ErrorCase>& cases, bool withHeader) {
  for (const ErrorCase& c : cases) {
    std::string text = withHeader ? WithHeader(c.fText) : std::string(c.fText);
    AppMixedCommand command;
    std::string error = ParseMixed(Data(), text, command);
    EXPECT_EQ(error, Where(text, c.fMarker, c.fOccurrence) + c.fMessage + ".") << "command: " << text;
  }
}

}  // namespace

TEST(AppMixedParserErrors, Header) {
  Check({
            {"GLMIXFIT", "", 1, "expected the target variable, found the end of the command"},
            {"GLMIXFIT nosuch", "nosuch", 1,
             "expected the target variable, found 'nosuch' (the data have no variable of that name)"},
            {"GLMIXFIT name", "name", 1, "expected a numeric target variable, found the string variable 'name'"},
            {"GLMIXFIT 'y'", "'y'", 1, "expected the target variable, found the text 'y'"},
            {"GLMIXFIT y BY y", "y", 2, "expected a factor, found the target 'y'"},
            {"GLMIXFIT y BY a A", "A", 1, "expected each factor once, found 'A' again"},
            {"GLMIXFIT y WITH x BY x", "x", 2, "expected a factor, found 'x', which is a covariate already"},
            {"GLMIXFIT y BY b WITH b", "b", 2, "expected a covariate, found 'b', which is a factor already"},
            {"GLMIXFIT y WITH name", "name", 1, "expected a numeric covariate, found the string variable 'name'"},
            {"GLMIXFIT y WITH y", "y", 2, "expected a covariate, found the target 'y'"},
            {"GLMIXFIT y BY /FIXED", "/", 1, "expected a factor after BY, found '/FIXED'"},
            {"GLMIXFIT y WITH", "", 1, "expected a covariate after WITH, found the end of the command"},
            {"GLMIXFIT y BY a WITH x BY b", "BY", 2, "expected BY only once, found it again"},
            {"GLMIXFIT y 5", "5", 1, "expected BY, WITH, a subcommand or the end of the command, found 5"},
            {"GLMIXFIT y BY a 5", "5", 1, "expected WITH, a subcommand or the end of the command, found 5"},
            {"GLMIXFIT y BY a WITH x 'q'", "'q'", 1,
             "expected a subcommand or the end of the command, found the text 'q'"},
            {"GLMIXFIT y BY a qq", "qq", 1,
             "expected a factor, found 'qq' (the data have no variable of that name)"},
        },
        false);
}

TEST(AppMixedParserErrors, Subcommands) {
  Check({
            {"/FOO", "FOO", 1,
             "expected a subcommand (/FIXED, /RANDOM, /RESIDUAL, /ESTIMATION, /MISSING, /TESTS, /DISPLAY, "
             "/FORMAT, /CONTRAST, /MEANS, /SAVE, /EXPORT, /SCALEWEIGHT or /TARGET), found 'FOO'"},
            {"/ 5", "5", 1,
             "expected a subcommand (/FIXED, /RANDOM, /RESIDUAL, /ESTIMATION, /MISSING, /TESTS, /DISPLAY, "
             "/FORMAT, /CONTRAST, /MEANS, /SAVE, /EXPORT, /SCALEWEIGHT or /TARGET), found 5"},
            {"/FIXED x /fixed z", "fixed", 1, "expected /FIXED only once, found it again"},
            {"/TESTS TYPE=1 /TESTS TYPE=3", "TESTS", 2, "expected /TESTS only once, found it again"},
            {"/SCALEWEIGHT w /SCALEWEIGHT w", "SCALEWEIGHT", 2, "expected /SCALEWEIGHT only once, found it again"},
        },
        true);
}

TEST(AppMixedParserErrors, Terms) {
  Check({
            {"/FIXED t", "t", 1,
             "expected a factor or covariate of the model, found 't', which is not named after BY or WITH"},
            {"/FIXED nosuch", "nosuch", 1,
             "expected a factor or covariate of the model, found 'nosuch' (the data have no variable of that "
             "name)"},
            {"/FIXED a*A", "A", 1, "expected each factor once in a term, found 'A' again"},
            {"/FIXED a(b(a))", "a", 3, "expected each factor once in a term, found 'a' again"},
            {"/FIXED a(x)", "x", 2,
             "expected a factor within the parentheses, found the covariate 'x' (a term can be nested within "
             "factors only)"},
            {"/FIXED a(b", "", 1, "expected ')' or '*', found the end of the command"},
            {"/FIXED a*", "", 1, "expected a factor or covariate of the model, found the end of the command"},
            {"/FIXED a*5", "5", 1, "expected a factor or covariate of the model, found 5"},
            {"/FIXED a*b b*a", "b*a", 1, "expected each term once, found b*a again"},
            {"/FIXED x*a a*X", "a*X", 1, "expected each term once, found a*x again"},
            {"/FIXED INTERCEPT", "INTERCEPT", 1,
             "expected a term of factors and covariates, found 'INTERCEPT' (the fixed intercept is there unless "
             "INTERCEPT=NO says otherwise)"},
            {"/FIXED a FOO=1", "FOO", 1, "expected INTERCEPT= or the end of /FIXED (after the terms), found 'FOO'"},
            {"/FIXED a 5", "5", 1, "expected INTERCEPT= or the end of /FIXED (after the terms), found 5"},
            {"/FIXED INTERCEPT=NO a", "a", 2,
             "expected INTERCEPT= or the end of /FIXED (after the terms), found 'a'"},
            {"/FIXED INTERCEPT=MAYBE", "MAYBE", 1, "expected YES or NO, found 'MAYBE'"},
            {"/FIXED INTERCEPT=NO INTERCEPT=YES", "INTERCEPT", 2, "expected each setting once, found INTERCEPT= again"},
            {"/FIXED a(b)(x)", "(", 2,
             "expected INTERCEPT= or the end of /FIXED (after the terms), found '('"},
        },
        true);
}

TEST(AppMixedParserErrors, Random) {
  Check({
            {"/RANDOM SUBJECTS=s", "SUBJECTS", 1,
             "expected a random term (INTERCEPT, or a term of factors and covariates), found 'SUBJECTS'"},
            {"/RANDOM", "", 1,
             "expected a random term (INTERCEPT, or a term of factors and covariates), found the end of the command"},
            {"/RANDOM INTERCEPT intercept", "intercept", 1, "expected each term once, found INTERCEPT again"},
            {"/RANDOM a a", "a", 3, "expected each term once, found a again"},
            {"/RANDOM INTERCEPT STRUCTURE=POWER", "POWER", 1,
             "expected a covariance structure (AD1, AR1, ARH1, ARMA11, CS, CSH, CSR, DIAG, FA1, FAH1, HF, ID, TP, "
             "TPH, UN, UNR or VC), found the spatial structure POWER, which only /RESIDUAL can have"},
            {"/RANDOM INTERCEPT STRUCTURE=XYZ", "XYZ", 1,
             "expected a covariance structure (AD1, AR1, ARH1, ARMA11, CS, CSH, CSR, DIAG, FA1, FAH1, HF, ID, TP, "
             "TPH, UN, UNR or VC), found 'XYZ'"},
            {"/RANDOM INTERCEPT SUBJECTS=y", "y", 2, "expected a subject variable, found the target 'y'"},
            {"/RANDOM INTERCEPT SUBJECTS=s*x", "x", 2,
             "expected a subject variable, found the covariate 'x' (subjects are categories; a covariate cannot "
             "be one)"},
            {"/RANDOM INTERCEPT SUBJECTS=s*S", "S", 3, "expected each variable once, found 'S' again"},
            {"/RANDOM INTERCEPT SUBJECTS=nosuch", "nosuch", 1,
             "expected a subject variable, found 'nosuch' (the data have no variable of that name)"},
            {"/RANDOM INTERCEPT SUBJECTS=", "", 1, "expected a subject variable, found the end of the command"},
            {"/RANDOM INTERCEPT PREDICT=2", "2", 1, "expected YES or NO, found 2"},
            {"/RANDOM INTERCEPT FOO=1", "FOO", 1,
             "expected SUBJECTS=, STRUCTURE= or PREDICT= (after the terms), found 'FOO'"},
            {"/RANDOM INTERCEPT SUBJECTS=s a", "a", 2,
             "expected SUBJECTS=, STRUCTURE= or PREDICT= (after the terms), found 'a'"},
            {"/RANDOM INTERCEPT STRUCTURE=UN STRUCTURE=VC", "STRUCTURE", 2,
             "expected each setting once, found STRUCTURE= again"},
        },
        true);
}

TEST(AppMixedParserErrors, Residual) {
  Check({
            {"/RESIDUAL", "", 1,
             "expected INDEX=, SUBJECTS=, STRUCTURE= or COORDINATES=, found the end of the command"},
            {"/RESIDUAL INDEX=y", "y", 2, "expected a repeated measures variable, found the target 'y'"},
            {"/RESIDUAL INDEX=t*t", "t", 2, "expected each variable once, found 't' again"},
            {"/RESIDUAL SUBJECTS=z", "z", 2,
             "expected a subject variable, found the covariate 'z' (subjects are categories; a covariate cannot "
             "be one)"},
            {"/RESIDUAL STRUCTURE=POWER", "POWER", 1,
             "expected COORDINATES= with the spatial structure POWER, found none"},
            {"/RESIDUAL STRUCTURE=AR1 COORDINATES=x z", "COORDINATES", 1,
             "expected a spatial STRUCTURE= (POWER, EXPONENTIAL, GAUSSIAN, LINEAR, LINEARLOG or SPHERICAL) with "
             "COORDINATES=, found none"},
            {"/RESIDUAL STRUCTURE=GAUSSIAN COORDINATES=x X", "X", 2,
             "expected each coordinate once, found 'X' again"},
            {"/RESIDUAL STRUCTURE=LINEAR COORDINATES=", "", 1,
             "expected a coordinate variable, found the end of the command"},
            {"/RESIDUAL STRUCTURE=SOMETHING", "SOMETHING", 1,
             "expected a covariance structure (AD1, AR1, ARH1, ARMA11, CS, CSH, CSR, DIAG, FA1, FAH1, HF, ID, TP, "
             "TPH, UN, UNR, VC, or a spatial structure: POWER, EXPONENTIAL, GAUSSIAN, LINEAR, LINEARLOG, "
             "SPHERICAL), found 'SOMETHING'"},
            {"/RESIDUAL INDEX=t FOO=1", "FOO", 1,
             "expected INDEX=, SUBJECTS=, STRUCTURE= or COORDINATES=, found 'FOO'"},
            {"/RESIDUAL INDEX=t t", "t", 2, "expected INDEX=, SUBJECTS=, STRUCTURE= or COORDINATES=, found 't'"},
        },
        true);
}

TEST(AppMixedParserErrors, Estimation) {
  const char* allowed =
      "METHOD=, CONFIDENCE=, ITERATIONS=, HALVING=, SCORING=, SINGULAR=, CONVERGENCE=, FIT= or COVB=";
  Check({
            {"/ESTIMATION", "", 1, (std::string("expected ") + allowed + ", found the end of the command").c_str()},
        },
        true);
  std::string unknown = std::string("expected ") + allowed + ", found 'FOO'";
  Check({
            {"/ESTIMATION FOO=1", "FOO", 1, unknown.c_str()},
            {"/ESTIMATION METHOD=XX", "XX", 1, "expected REML or ML, found 'XX'"},
            {"/ESTIMATION CONFIDENCE=100", "100", 1,
             "expected a confidence level in percent, from 0.000001 to below 100, found 100"},
            {"/ESTIMATION CONFIDENCE=0", "0", 1,
             "expected a confidence level in percent, from 0.000001 to below 100, found 0"},
            {"/ESTIMATION CONFIDENCE=4.9e-324", "4.9e-324", 1,
             "expected a confidence level in percent, from 0.000001 to below 100, found 4.9e-324"},
            {"/ESTIMATION CONFIDENCE=high", "high", 1,
             "expected a confidence level in percent, from 0.000001 to below 100, found 'high'"},
            {"/ESTIMATION ITERATIONS=0", "0", 1, "expected a whole number of iterations from 1 to 2147483647, found 0"},
            {"/ESTIMATION ITERATIONS=2.5", "2.5", 1,
             "expected a whole number of iterations from 1 to 2147483647, found 2.5"},
            {"/ESTIMATION ITERATIONS=3000000000", "3000000000", 1,
             "expected a whole number of iterations from 1 to 2147483647, found 3000000000"},
            {"/ESTIMATION HALVING=0", "0", 1, "expected a whole number of step-halvings from 1 to 2147483647, found 0"},
            {"/ESTIMATION SCORING=-1", "-1", 1, "expected a whole number of scoring steps from 0 to 2147483647, found -1"},
            {"/ESTIMATION SINGULAR=0", "0", 1, "expected a singularity tolerance above 0 and below 1, found 0"},
            {"/ESTIMATION SINGULAR=1", "1", 1, "expected a singularity tolerance above 0 and below 1, found 1"},
            {"/ESTIMATION CONVERGENCE=FOO(1)", "FOO", 1,
             "expected PARAMETERS(...), LOGLIKELIHOOD(...) or HESSIAN(...), found 'FOO'"},
            {"/ESTIMATION CONVERGENCE=PARAMETERS 1", "1", 1, "expected '(' and the criterion of PARAMETERS, found 1"},
            {"/ESTIMATION CONVERGENCE=HESSIAN(-1)", "-1", 1, "expected a criterion of 0 or more, found -1"},
            {"/ESTIMATION CONVERGENCE=HESSIAN()", ")", 1, "expected a criterion of 0 or more, found ')'"},
            {"/ESTIMATION CONVERGENCE=PARAMETERS(1 SOMETIMES)", "SOMETIMES", 1,
             "expected RELATIVE, ABSOLUTE or ')', found 'SOMETIMES'"},
            {"/ESTIMATION CONVERGENCE=PARAMETERS(1 RELATIVE", "", 1, "expected ')', found the end of the command"},
            {"/ESTIMATION CONVERGENCE=HESSIAN(1) hessian(2)", "hessian", 1,
             "expected each criterion once, found HESSIAN again"},
            {"/ESTIMATION METHOD=ML METHOD=REML", "METHOD", 2, "expected each setting once, found METHOD= again"},
        },
        true);
}

TEST(AppMixedParserErrors, MissingTestsDisplayFormat) {
  Check({
            {"/MISSING", "", 1, "expected USERMISSING=, found the end of the command"},
            {"/MISSING FACTORS=INCLUDE", "FACTORS", 1, "expected USERMISSING=, found 'FACTORS'"},
            {"/MISSING USERMISSING=YES", "YES", 1, "expected EXCLUDE or INCLUDE, found 'YES'"},
            {"/TESTS", "", 1, "expected TYPE=, found the end of the command"},
            {"/TESTS TYPE=2", "2", 1, "expected 1 or 3, found 2"},
            {"/TESTS TYPE=III", "III", 1, "expected 1 or 3, found 'III'"},
            {"/TESTS KIND=1", "KIND", 1, "expected TYPE=, found 'KIND'"},
            {"/DISPLAY", "", 1,
             "expected a display item (ESTIMATES, ESTIMATECOVARIANCES, ESTIMATECORRELATIONS, CASES, "
             "COVARIANCETESTS, GMATRIX, RMATRIX, LMATRIX, VARIABLES or HISTORY), found the end of the command"},
            {"/DISPLAY COVARIANCES", "COVARIANCES", 1,
             "expected a display item (ESTIMATES, ESTIMATECOVARIANCES, ESTIMATECORRELATIONS, CASES, "
             "COVARIANCETESTS, GMATRIX, RMATRIX, LMATRIX, VARIABLES or HISTORY), found 'COVARIANCES'"},
            {"/DISPLAY CASES cases", "cases", 1, "expected each display item once, found CASES again"},
            {"/DISPLAY HISTORY(0)", "0", 1,
             "expected a whole number of iterations from 1 to 2147483647 between history lines, found 0"},
            {"/DISPLAY HISTORY(2", "", 1, "expected ')', found the end of the command"},
            {"/FORMAT", "", 1, "expected CRITERIA= or ESTIMATES=, found the end of the command"},
            {"/FORMAT TABLES=F8.2", "TABLES", 1, "expected CRITERIA= or ESTIMATES=, found 'TABLES'"},
            {"/FORMAT CRITERIA=A8", "A8", 1,
             "expected a numeric format such as F12.3 (F, E, COMMA, DOLLAR, DOT or PCT; width 1 to 40, fewer "
             "decimals than the width, at most 16), found 'A8'"},
            {"/FORMAT ESTIMATES=F41.2", "F41.2", 1,
             "expected a numeric format such as F12.3 (F, E, COMMA, DOLLAR, DOT or PCT; width 1 to 40, fewer "
             "decimals than the width, at most 16), found 'F41.2'"},
            {"/FORMAT ESTIMATES=F5.5", "F5.5", 1,
             "expected a numeric format such as F12.3 (F, E, COMMA, DOLLAR, DOT or PCT; width 1 to 40, fewer "
             "decimals than the width, at most 16), found 'F5.5'"},
            {"/FORMAT ESTIMATES=12", "12", 1,
             "expected a numeric format such as F12.3 (F, E, COMMA, DOLLAR, DOT or PCT; width 1 to 40, fewer "
             "decimals than the width, at most 16), found 12"},
        },
        true);
}

TEST(AppMixedParserErrors, Contrast) {
  const char* row = "expected a term followed by its values, ALL followed by values, or '|'";
  std::string rowEnd = std::string(row) + ", found the end of the command";
  std::string rowNumber = std::string(row) + ", found 1";
  Check({
            {"/FIXED INTERCEPT=NO /CONTRAST 'c' a 1", "'c'", 1,
             "expected a model with fixed effects for /CONTRAST, found neither an intercept nor a fixed term"},
            {"/FIXED a /CONTRAST 'c'", "", 1, rowEnd.c_str()},
            {"/FIXED a /CONTRAST 1", "1", 1, rowNumber.c_str()},
            {"/FIXED a /CONTRAST b 1", "b", 2, "expected a term of /FIXED, found b, which is not one"},
            {"/FIXED a INTERCEPT=NO /CONTRAST INTERCEPT 1", "INTERCEPT", 2,
             "expected a fixed term, found INTERCEPT, but the model has none (INTERCEPT=NO)"},
            {"/FIXED a /CONTRAST INTERCEPT 1 2", "INTERCEPT", 1, "expected one value for INTERCEPT, found 2"},
            {"/FIXED a /CONTRAST a ; a 1", ";", 1, "expected the values of a, found ';'"},
            {"/FIXED a /CONTRAST a 1 a 2", "a", 4, "expected each term once in a row, found a again"},
            {"/FIXED a /CONTRAST a 1 -1 0 ; a 1 -1", "a", 4, "expected 3 values as in the earlier rows, found 2"},
            {"/FIXED a /CONTRAST ALL 1 0 ; a 1", "a", 3,
             "expected ALL as in the rest of the test, found a term (a test is written either by terms or by ALL "
             "values throughout)"},
            {"/FIXED a /CONTRAST a 1 ; ALL 1", "ALL", 1,
             "expected a term as in the rest of the test, found ALL (a test is written either by terms or by ALL "
             "values throughout)"},
            {"/FIXED a /CONTRAST ALL 1 ALL 2", "ALL", 2, "expected ALL once in each part of a row, found it again"},
            {"/FIXED a /CONTRAST a 1 | INTERCEPT 1", "|", 1,
             "expected a term followed by its values or ALL followed by values, found '|', but the model has no "
             "/RANDOM block"},
            {"/FIXED a /RANDOM INTERCEPT /CONTRAST a 1 | INTERCEPT 1 | INTERCEPT 1", "|", 2,
             "expected at most 1 '|', one for each /RANDOM block, found another"},
            {"/FIXED a /RANDOM INTERCEPT /CONTRAST a 1 | b 1", "b", 2,
             "expected a term of /RANDOM block 1, found b, which is not one"},
            {"/FIXED a /RANDOM INTERCEPT /CONTRAST a 1 | INTERCEPT 1 INTERCEPT 2", "INTERCEPT", 3,
             "expected each term once in a row, found INTERCEPT again"},
            {"/FIXED a /RANDOM INTERCEPT /CONTRAST | ALL 1", "|", 1,
             "expected ALL and the values of the fixed part first in each row of the all-values form"},
            {"/FIXED a /RANDOM INTERCEPT b /CONTRAST ALL 1 | ALL 1 | ALL 2", "|", 2,
             "expected one '|' in the all-values form, found another"},
            {"/FIXED a /RANDOM INTERCEPT /CONTRAST ALL 1 | ALL 1 ; ALL 1", "ALL", 3,
             "expected the random part in every row, as in the first, found a row without it"},
            {"/FIXED a /RANDOM INTERCEPT /CONTRAST ALL 1 ; ALL 1 | ALL 1", "ALL", 3,
             "expected no random part, as in the first row, found one"},
            {"/FIXED a /CONTRAST ALL 1 0 ; ALL 1", "ALL", 2, "expected 2 values as in the earlier rows, found 1"},
            {"/FIXED a /CONTRAST ALL", "", 1, "expected the values of ALL, found the end of the command"},
            {"/FIXED a /CONTRAST a 1 ; a -1 K=0", "0", 1, "expected 2 K values, one for each row, found 1"},
            {"/FIXED a /CONTRAST a 1 K=", "", 1, "expected one K value for each row, found the end of the command"},
            {"/FIXED a /CONTRAST a 1 FOO=1", "FOO", 1, "expected ';', K= or the end of /CONTRAST, found 'FOO'"},
            {"/FIXED a /CONTRAST a 1 K=1 K=2", "K", 2, "expected each setting once, found K= again"},
        },
        true);
}

TEST(AppMixedParserErrors, Means) {
  Check({
            {"/MEANS", "", 1, "expected a factor, a crossing of factors (A*B) or OVERALL, found the end of the command"},
            {"/MEANS COMPARE=a", "COMPARE", 1,
             "expected a factor, a crossing of factors (A*B) or OVERALL, found 'COMPARE'"},
            {"/MEANS x", "x", 2, "expected a factor, found 'x', which is not named after BY"},
            {"/MEANS a*A", "A", 2, "expected each factor once, found 'A' again"},
            {"/MEANS a COMPARE=b", "b", 2, "expected a factor of the table, found 'b', which is not one"},
            {"/MEANS a REFERENCE=FIRST", "REFERENCE", 1, "expected COMPARE= with REFERENCE=, found none"},
            {"/MEANS a ADJUST=LSD", "ADJUST", 1, "expected COMPARE= with ADJUST=, found none"},
            {"/MEANS a COMPARE=a REFERENCE=MIDDLE", "MIDDLE", 1, "expected FIRST, LAST, MEAN, a number or a quoted text, found 'MIDDLE'"},
            {"/MEANS a COMPARE=a REFERENCE=2", "2", 1, "expected a quoted text for the string factor 'a', found 2"},
            {"/MEANS b COMPARE=b REFERENCE='x'", "'x'", 1,
             "expected a number for the numeric factor 'b', found the text 'x'"},
            {"/MEANS a COMPARE=a ADJUST=BONFERRONI", "BONFERRONI", 1,
             "expected LSD, SEQUENTIALBONFERRONI or SEQUENTIALSIDAK, found 'BONFERRONI'"},
            {"/MEANS a AT=a(1)", "a", 3, "expected a covariate, found 'a', which is not named after WITH"},
            {"/MEANS a AT=x(1) x(2)", "x", 3, "expected each covariate once, found 'x' again"},
            {"/MEANS a AT=x 2", "2", 1, "expected '(' and the value of x, found 2"},
            {"/MEANS a AT=x(q)", "q", 1, "expected a number, found 'q'"},
            {"/MEANS a AT=x(1", "", 1, "expected ')', found the end of the command"},
            {"/MEANS a WHERE=x", "WHERE", 1, "expected COMPARE=, REFERENCE=, ADJUST= or AT=, found 'WHERE'"},
            {"/MEANS a b", "b", 2, "expected COMPARE=, REFERENCE=, ADJUST= or AT=, found 'b'"},
        },
        true);
}

TEST(AppMixedParserErrors, SaveExportScaleWeight) {
  const char* saves =
      "expected a value to save (PREDICTED, PREDICTEDSE, PREDICTEDDF, FIXEDPREDICTED, FIXEDPREDICTEDSE, "
      "FIXEDPREDICTEDDF, RESIDUAL, LINEARPREDICTOR, PEARSONRESIDUAL or PREDICTEDCATEGORY)";
  std::string savesEnd = std::string(saves) + ", found the end of the command";
  std::string savesFit = std::string(saves) + ", found 'FIT'";
  std::string longName(65, 'n');
  std::string longSave = "/SAVE RESIDUAL(" + longName + ")";
  std::string longFile = "/EXPORT STATXML='" + std::string(260, 'f') + ".xml'";
  Check({
            {"/SAVE", "", 1, savesEnd.c_str()},
            {"/SAVE FIT", "FIT", 2, savesFit.c_str()},
            {"/SAVE PREDICTED predicted(p2)", "predicted", 1, "expected each value to save once, found PREDICTED again"},
            {"/SAVE PREDICTED(x)", "x", 2, "expected a new variable name, found 'x', which the data have already"},
            {"/SAVE PREDICTED(p1) RESIDUAL(P1)", "P1", 1, "expected a new variable name, found 'P1' again"},
            {"/SAVE PREDICTED(5)", "5", 1, "expected a name for the new variable, found 5"},
            {"/SAVE PREDICTED(p1", "", 1, "expected ')', found the end of the command"},
            {longSave.c_str(), "nnn", 1, "expected a name of at most 64 bytes, found one of 65"},
            {"/EXPORT", "", 1, "expected MODEL=, PARAMETERS=, STATXML= or STATJSON=, found the end of the command"},
            {"/EXPORT PMML='a'", "PMML", 1, "expected MODEL=, PARAMETERS=, STATXML= or STATJSON=, found 'PMML'"},
            {"/EXPORT MODEL='m.xml' PARAMETERS='p.xml'", "PARAMETERS", 1,
             "expected one of MODEL= and PARAMETERS=, found both"},
            {"/EXPORT MODEL=m", "m", 1, "expected a file name in quotes, found 'm'"},
            {"/EXPORT STATJSON=' '", "' '", 1, "expected a file name in quotes, found the text ' '"},
            {longFile.c_str(), "'", 1,
             ("expected a file name of at most 255 bytes, found one of 268 bytes (cmd/" + std::string(260, 'f') +
              ".xml)")
                 .c_str()},
            {"/SCALEWEIGHT name", "name", 1, "expected a numeric scale weight, found the string variable 'name'"},
            {"/SCALEWEIGHT y", "y", 2, "expected a scale weight, found the target 'y'"},
            {"/SCALEWEIGHT b", "b", 2, "expected a scale weight, found the factor 'b'"},
            {"/SCALEWEIGHT w z", "z", 2, "expected the end of /SCALEWEIGHT (one variable), found 'z'"},
            {"/SCALEWEIGHT", "", 1, "expected the scale weight variable, found the end of the command"},
        },
        true);
}

TEST(AppMixedParserErrors, PointsIntoLaterLines) {
  std::string text = "GLMIXFIT y BY a\n  /FIXED a\n  /RANDOM INTERCEPT SUBJECTS=s STRUCTURE=CSX\n";
  AppMixedCommand command;
  EXPECT_EQ(ParseMixed(Data(), text, command),
            "t.gmx:3:42: expected a covariance structure (AD1, AR1, ARH1, ARMA11, CS, CSH, CSR, DIAG, FA1, FAH1, "
            "HF, ID, TP, TPH, UN, UNR or VC), found 'CSX'.");
}

TEST(AppMixedParserErrors, ATooLongOutputFolderIsReported) {
  AppMixedCommand command;
  std::string folder(250, 'o');
  EXPECT_EQ(ParseMixed(Data(), "GLMIXFIT y", command, "cmd", folder),
            "t.gmx:1:1: the output folder's name is too long for the documents of the command: " + folder +
                "/model-1.xml has more than 255 bytes.");
}

TEST(AppMixedParserErrors, LexicalMistakesAreReportedWhereTheyStand) {
  AppMixedCommand command;
  std::string text = "GLMIXFIT y BY a /FIXED a /CONTRAST 'open";
  EXPECT_EQ(ParseMixed(Data(), text, command),
            Where(text, "'open") + "the quoted text is not closed before the end of the line.");
  text = "GLMIXFIT y WITH x /FIXED x /ESTIMATION CONFIDENCE=9x5";
  EXPECT_EQ(ParseMixed(Data(), text, command), Where(text, "9x5") + "'9x5' is not a number.");
  text = "GLMIXFIT y WITH x /FIXED x ! x";
  EXPECT_EQ(ParseMixed(Data(), text, command), Where(text, "!") + "the character '!' has no meaning here.");
  text = std::string("GLMIXFIT y WITH x /FIXED x ") + '\0' + " x";
  EXPECT_EQ(ParseMixed(Data(), text, command),
            Where(text, std::string(1, '\0')) + "the control character 0x00 has no meaning here.");
  text = "GLMIXFIT y WITH x \x01";
  EXPECT_EQ(ParseMixed(Data(), text, command), Where(text, "\x01") + "the control character 0x01 has no meaning here.");
}

TEST(AppMixedParserErrors, ADoubledSlashSaysSo) {
  AppMixedCommand command;
  const std::string text = "GLMIXFIT y WITH x //FIXED x";
  EXPECT_EQ(ParseMixed(Data(), text, command),
            Where(text, "/FIXED") + "expected a subcommand name after '/', found a second '/'.");
}

// An unstructured matrix over many levels is refused before anything is
// built, with its level and parameter counts: 300 levels have
// 300 * 301 / 2 = 45150 parameters.
TEST(AppMixedParserErrors, AnUnstructuredMatrixTooLargeToFitIsRefusedWithItsSize) {
  ZORV_Dataset data;
  const int y = data.AddVariable("y", 0);
  const int s = data.AddVariable("s", 0);
  const int t = data.AddVariable("t", 0);
  data.AppendCases(600);
  for (long row = 0; row < 600; ++row) {
    data.SetNum(row, y, static_cast<double>(row % 7));
    data.SetNum(row, s, static_cast<double>(row / 300));
    data.SetNum(row, t, static_cast<double>(row % 300));
  }
  AppMixedCommand command;
  std::string text = "GLMIXFIT y /RESIDUAL INDEX=t SUBJECTS=s STRUCTURE=UN";
  EXPECT_EQ(ParseMixed(data, text, command),
            Where(text, "UN") +
                "STRUCTURE=UN over 300 levels of t has 45150 covariance parameters and would need about 190 GB of "
                "memory to fit, more than the 2.0 GB a covariance structure may use; use fewer levels or a structure "
                "with fewer parameters.");
  text = "GLMIXFIT y BY t /RANDOM INTERCEPT t SUBJECTS=s STRUCTURE=UNR";
  const std::string prefix = Where(text, "UNR") + "STRUCTURE=UNR over 301 levels of the random effects has 45451 ";
  const std::string message = ParseMixed(data, text, command);
  EXPECT_EQ(message.substr(0, prefix.size()), prefix);
  // Other structures grow linearly and are left to the fit; 50 levels of an
  // unstructured matrix (1275 parameters) are fitted.
  text = "GLMIXFIT y /RESIDUAL INDEX=t SUBJECTS=s STRUCTURE=AR1";
  EXPECT_EQ(ParseMixed(data, text, command), "");
  for (long row = 0; row < 600; ++row) data.SetNum(row, t, static_cast<double>(row % 50));
  text = "GLMIXFIT y /RESIDUAL INDEX=t SUBJECTS=s STRUCTURE=UN";
  EXPECT_EQ(ParseMixed(data, text, command), "");
}

// The values a target has to save: a linear model has no Pearson residual,
// only binomial and multinomial targets have categories, and a multinomial
// target has no single mean; seven values at most, the slots of the memory.
TEST(AppMixedParserErrors, SavesOfTheTarget) {
  Check({
            {"/SAVE PEARSONRESIDUAL", "PEARSONRESIDUAL", 1,
             "expected PEARSONRESIDUAL only with a generalized target (/TARGET with a distribution other than "
             "NORMAL or a link other than IDENTITY), found it with the linear model, whose residual is RESIDUAL"},
            {"/SAVE PredictedCategory /TARGET DISTRIBUTION=POISSON", "PredictedCategory", 1,
             "expected PREDICTEDCATEGORY only with a BINOMIAL or MULTINOMIAL target, found it with the distribution "
             "POISSON"},
            {"/SAVE PREDICTEDCATEGORY", "PREDICTEDCATEGORY", 1,
             "expected PREDICTEDCATEGORY only with a BINOMIAL or MULTINOMIAL target, found it with the distribution "
             "NORMAL"},
            {"/SAVE PREDICTED PREDICTEDSE PREDICTEDDF FIXEDPREDICTED FIXEDPREDICTEDSE FIXEDPREDICTEDDF RESIDUAL "
             "LINEARPREDICTOR",
             "LINEARPREDICTOR", 1,
             "expected at most 7 values to save in one command, found LINEARPREDICTOR beyond them"},
        },
        true);
}

TEST(AppMixedParserErrors, AnOrdinalTargetSavesItsLinearPredictorAndCategoryOnly) {
  std::unique_ptr<ZORV_Dataset> data = LoadTrial();
  data->GetVariable(0)->SetMeasurementLevel(ZORV_Variable::ORDINAL);
  AppMixedCommand command;
  std::string text = "GLMIXFIT y /TARGET DISTRIBUTION=MULTINOMIAL /SAVE PREDICTEDCATEGORY residual";
  EXPECT_EQ(ParseMixed(*data, text, command),
            Where(text, "residual") +
                "expected LINEARPREDICTOR or PREDICTEDCATEGORY with a MULTINOMIAL target, which has no single mean, "
                "found RESIDUAL.");
  text = "GLMIXFIT y /TARGET DISTRIBUTION=MULTINOMIAL /SAVE PREDICTEDCATEGORY LINEARPREDICTOR";
  EXPECT_EQ(ParseMixed(*data, text, command), "");
}

TEST(AppMixedParserErrors, Target) {
  const std::string allowed = "DISTRIBUTION=, LINK=, TRIALS=, REFERENCE= or OFFSET=";
  Check({
            {"/TARGET", "", 1, ("expected " + allowed + ", found the end of the command").c_str()},
            {"/TARGET FAMILY=POISSON", "FAMILY", 1, ("expected " + allowed + ", found 'FAMILY'").c_str()},
            {"/TARGET DISTRIBUTION=POISON", "POISON", 1,
             "expected a distribution (NORMAL, BINOMIAL, POISSON, NEGBIN, GAMMA, IGAUSS or MULTINOMIAL), found "
             "'POISON'"},
            {"/TARGET LINK=INVERSE", "INVERSE", 1,
             "expected a link (IDENTITY, LOG, LOGIT, PROBIT, CLOGLOG, NLOGLOG, LOGC, POWER or CAUCHIT), found "
             "'INVERSE'"},
            {"/TARGET DISTRIBUTION=POISSON LINK=LOGIT", "LOGIT", 1,
             "expected a link for POISSON (IDENTITY, LOG or POWER(exponent)), found LOGIT"},
            {"/TARGET LINK=LOGIT DISTRIBUTION=GAMMA", "LOGIT", 1,
             "expected a link for GAMMA (IDENTITY, LOG or POWER(exponent)), found LOGIT"},
            {"/TARGET DISTRIBUTION=BINOMIAL LINK=IDENTITY", "IDENTITY", 1,
             "expected a link for BINOMIAL (LOG, LOGIT, PROBIT, CLOGLOG, NLOGLOG, LOGC or CAUCHIT), found IDENTITY"},
            {"/TARGET LINK=PROBIT", "PROBIT", 1,
             "expected a link for NORMAL (IDENTITY, LOG or POWER(exponent)), found PROBIT"},
            {"/TARGET DISTRIBUTION=GAMMA LINK=POWER", "", 1,
             "expected '(' and the exponent of POWER, found the end of the command"},
            {"/TARGET DISTRIBUTION=GAMMA LINK=POWER(0)", "0", 1,
             "expected a non-zero exponent from -10 to 10 (LOG is the power 0), found 0"},
            {"/TARGET DISTRIBUTION=GAMMA LINK=POWER(11)", "11", 1,
             "expected a non-zero exponent from -10 to 10 (LOG is the power 0), found 11"},
            {"/TARGET DISTRIBUTION=GAMMA LINK=POWER(-1", "", 1, "expected ')', found the end of the command"},
            {"/TARGET DISTRIBUTION=POISSON TRIALS=w", "w", 1,
             "expected TRIALS= only with DISTRIBUTION=BINOMIAL, found it with POISSON"},
            {"/TARGET TRIALS=10", "10", 1, "expected TRIALS= only with DISTRIBUTION=BINOMIAL, found it with NORMAL"},
            {"/TARGET DISTRIBUTION=BINOMIAL TRIALS=0", "0", 1,
             "expected the trials: a numeric variable or a whole number from 1 to 2147483647, found 0"},
            {"/TARGET DISTRIBUTION=BINOMIAL TRIALS=2.5", "2.5", 1,
             "expected the trials: a numeric variable or a whole number from 1 to 2147483647, found 2.5"},
            {"/TARGET DISTRIBUTION=BINOMIAL TRIALS=name", "name", 1,
             "expected a numeric trials variable, found the string variable 'name'"},
            {"/TARGET DISTRIBUTION=BINOMIAL TRIALS=Y", "Y", 2, "expected a trials variable, found the target 'Y'"},
            {"/TARGET DISTRIBUTION=BINOMIAL TRIALS=nosuch", "nosuch", 1,
             "expected the trials variable, found 'nosuch' (the data have no variable of that name)"},
            {"/TARGET DISTRIBUTION=POISSON REFERENCE=FIRST", "FIRST", 1,
             "expected REFERENCE= only with a categorical target (BINOMIAL or MULTINOMIAL), found it with POISSON"},
            {"/TARGET DISTRIBUTION=BINOMIAL TRIALS=w REFERENCE=1", "1", 1,
             "expected REFERENCE= only for a target of categories, found it with TRIALS= (events out of trials)"},
            {"/TARGET DISTRIBUTION=BINOMIAL REFERENCE=MIDDLE", "MIDDLE", 1,
             "expected FIRST, LAST or a value of the target, found 'MIDDLE'"},
            {"/TARGET DISTRIBUTION=MULTINOMIAL", "MULTINOMIAL", 1,
             "expected a distribution for the scale target 'y', found MULTINOMIAL (give the target the level "
             "ORDINAL or NOMINAL with LEVEL)"},
            {"/TARGET OFFSET=name", "name", 1, "expected a numeric offset, found the string variable 'name'"},
            {"/TARGET OFFSET=y", "y", 2, "expected an offset, found the target 'y'"},
            {"/TARGET OFFSET=b", "b", 2, "expected an offset, found the factor 'b'"},
            {"/TARGET OFFSET=w OFFSET=z", "OFFSET", 2, "expected each setting once, found OFFSET= again"},
            {"/TARGET DISTRIBUTION=POISSON /TARGET LINK=LOG", "TARGET", 2, "expected /TARGET only once, found it again"},
        },
        true);
}

TEST(AppMixedParserErrors, MultinomialLinksFollowTheTargetsLevel) {
  std::unique_ptr<ZORV_Dataset> data = LoadTrial();
  data->GetVariable(0)->SetMeasurementLevel(ZORV_Variable::NOMINAL);
  AppMixedCommand command;
  std::string text = "GLMIXFIT y /TARGET DISTRIBUTION=MULTINOMIAL LINK=PROBIT";
  EXPECT_EQ(ParseMixed(*data, text, command),
            Where(text, "PROBIT") + "expected a link for a nominal MULTINOMIAL target (LOGIT), found PROBIT.");
  data->GetVariable(0)->SetMeasurementLevel(ZORV_Variable::ORDINAL);
  EXPECT_EQ(ParseMixed(*data, text, command), "");
  text = "GLMIXFIT y /TARGET DISTRIBUTION=MULTINOMIAL LINK=LOG";
  EXPECT_EQ(ParseMixed(*data, text, command),
            Where(text, "LOG") +
                "expected a link for an ordinal MULTINOMIAL target (LOGIT, PROBIT, CLOGLOG, NLOGLOG or CAUCHIT), "
                "found LOG.");
}

TEST(AppMixedParserErrors, FittingMethods) {
  const std::string quadrature =
      "expected FIT=QUADRATURE only with one /RANDOM block of one effect per subject (INTERCEPT or a covariate, "
      "with SUBJECTS=), found another random part; use FIT=LAPLACE or FIT=PL";
  const std::string binomial = "/TARGET DISTRIBUTION=BINOMIAL ";
  Check({
            {"/ESTIMATION FIT=NEWTON", "NEWTON", 1,
             "expected a fitting method (PL, LAPLACE or QUADRATURE(points)), found 'NEWTON'"},
            {"/ESTIMATION FIT=LAPLACE", "LAPLACE", 1,
             "expected FIT= only with a generalized target (/TARGET with a distribution other than NORMAL or a "
             "link other than IDENTITY), found it with the linear model"},
            {"/TARGET LINK=IDENTITY /ESTIMATION FIT=PL", "PL", 1,
             "expected FIT= only with a generalized target (/TARGET with a distribution other than NORMAL or a "
             "link other than IDENTITY), found it with the linear model"},
            {(binomial + "/ESTIMATION FIT=QUADRATURE").c_str(), "", 1,
             "expected '(' and the number of quadrature points, found the end of the command"},
            {(binomial + "/ESTIMATION FIT=QUADRATURE(0)").c_str(), "0", 1,
             "expected a whole number of quadrature points from 1 to 25, found 0"},
            {(binomial + "/ESTIMATION FIT=QUADRATURE(26)").c_str(), "26", 1,
             "expected a whole number of quadrature points from 1 to 25, found 26"},
            {(binomial + "/ESTIMATION FIT=QUADRATURE(7)").c_str(), "QUADRATURE", 1, quadrature.c_str()},
            {(binomial + "/RANDOM INTERCEPT x SUBJECTS=s /ESTIMATION FIT=QUADRATURE(7)").c_str(), "QUADRATURE", 1,
             quadrature.c_str()},
            {(binomial + "/RANDOM a SUBJECTS=s /ESTIMATION FIT=QUADRATURE(7)").c_str(), "QUADRATURE", 1,
             quadrature.c_str()},
            {(binomial + "/RANDOM INTERCEPT /ESTIMATION FIT=QUADRATURE(7)").c_str(), "QUADRATURE", 1,
             quadrature.c_str()},
            {(binomial + "/RANDOM INTERCEPT SUBJECTS=s /RANDOM INTERCEPT SUBJECTS=t /ESTIMATION FIT=QUADRATURE(5)")
                 .c_str(),
             "QUADRATURE", 1, quadrature.c_str()},
            {(binomial + "/ESTIMATION FIT=LAPLACE /RESIDUAL INDEX=t SUBJECTS=s STRUCTURE=AR1").c_str(), "LAPLACE", 1,
             "expected FIT=PL with /RESIDUAL (the likelihood methods take the records of a subject as independent "
             "given its random effects), found FIT=LAPLACE"},
            {"/ESTIMATION COVB=SANDWICH", "SANDWICH", 1, "expected MODEL or ROBUST, found 'SANDWICH'"},
        },
        true);
}

// Every random block has one covariance parameter at least, and the fit's
// memory grows with the square of the parameters: past 2000 the model is
// refused, with their count, before any block is read; variance components
// give each term a parameter of its own.
TEST(AppMixedParserErrors, RandomBlocksWithTooManyParametersAreRefusedWithTheirCount) {
  ZORV_Dataset data;
  const int y = data.AddVariable("y", 0);
  const int s = data.AddVariable("s", 0);
  const int a = data.AddVariable("a", 0);
  const int b = data.AddVariable("b", 0);
  data.AppendCases(8);
  for (long row = 0; row < 8; ++row) {
    data.SetNum(row, y, static_cast<double>(row % 3));
    data.SetNum(row, s, static_cast<double>(row / 2));
    data.SetNum(row, a, static_cast<double>(row));
    data.SetNum(row, b, static_cast<double>(row * row));
  }
  AppMixedCommand command;
  auto repeated = [](std::string text, const std::string& block, int times) {
    for (int i = 0; i < times; ++i) text += " /RANDOM " + block;
    return text;
  };
  std::string text = repeated("GLMIXFIT y", "INTERCEPT SUBJECTS=s", 10000);
  EXPECT_EQ(ParseMixed(data, text, command),
            Where(text, "RANDOM", 2001) +
                "the random blocks have at least 10000 covariance parameters, more than the 2000 a model may have: "
                "the fit's memory grows with the square of their number and its work with the cube; put effects of "
                "the same subjects in one block, or leave some out.");
  text = repeated("GLMIXFIT y", "INTERCEPT SUBJECTS=s", 2000);
  EXPECT_EQ(ParseMixed(data, text, command), "");
  EXPECT_EQ(command.fvRandomBlocks.size(), 2000u);

  // 1001 blocks of two covariates have 2002 variances, the last block
  // passing the limit; the same blocks with one common variance each pass.
  text = repeated("GLMIXFIT y WITH a b", "a b SUBJECTS=s", 1001);
  const std::string message = ParseMixed(data, text, command);
  const std::string prefix = Where(text, "a b SUBJECTS", 1001) + "the random blocks have at least 2002 covariance ";
  EXPECT_EQ(message.substr(0, prefix.size()), prefix);
  text = repeated("GLMIXFIT y WITH a b", "a b SUBJECTS=s STRUCTURE=ID", 1001);
  EXPECT_EQ(ParseMixed(data, text, command), "");
}
