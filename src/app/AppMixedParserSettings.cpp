#include "app/AppMixedParser.h"

#include <algorithm>

#include "app/AppCommandReader.h"

// The settings: /ESTIMATION, /MISSING, /TESTS, /DISPLAY, /FORMAT and /SCALEWEIGHT.

namespace {

const long kMaxInt = 2147483647L;
const double kMinConfidence = 1e-6;

}  // namespace

void AppMixedParser::ParseEstimation(AppCommandReader& reader) {
  std::vector<std::string> seen;
  const std::string allowed =
      "METHOD=, CONFIDENCE=, ITERATIONS=, HALVING=, SCORING=, SINGULAR=, CONVERGENCE=, FIT= or COVB=";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), allowed);
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name == "METHOD") {
      fCommand.fbReml = ReadChoice(reader, {"ML", "REML"}, "REML or ML") == 1;
    } else if (name == "CONFIDENCE") {
      const AppToken& t = reader.Peek();
      // The level is handed on as a fraction: a level that vanishes there
      // (a subnormal number) is no level at all.
      const std::string expected = "a confidence level in percent, from 0.000001 to below 100";
      double value = reader.ExpectNumber(expected);
      if (!(value >= kMinConfidence && value < 100.0)) reader.Fail(t, expected);
      fCommand.fConfidence = value;
    } else if (name == "ITERATIONS") {
      fCommand.fIterations = static_cast<int>(reader.ExpectWhole("a whole number of iterations from 1 to 2147483647", 1, kMaxInt));
    } else if (name == "HALVING") {
      fCommand.fHalving = static_cast<int>(reader.ExpectWhole("a whole number of step-halvings from 1 to 2147483647", 1, kMaxInt));
    } else if (name == "SCORING") {
      fCommand.fScoring = static_cast<int>(reader.ExpectWhole("a whole number of scoring steps from 0 to 2147483647", 0, kMaxInt));
    } else if (name == "SINGULAR") {
      const AppToken& t = reader.Peek();
      double value = reader.ExpectNumber("a singularity tolerance above 0 and below 1");
      if (!(value > 0.0 && value < 1.0)) reader.Fail(t, "a singularity tolerance above 0 and below 1");
      fCommand.fSingular = value;
    } else if (name == "CONVERGENCE") {
      std::vector<std::string> items;
      const std::string expectedItem = "PARAMETERS(...), LOGLIKELIHOOD(...) or HESSIAN(...)";
      do {
        const AppToken& t = reader.Peek();
        int which = ReadChoice(reader, {"PARAMETERS", "LOGLIKELIHOOD", "HESSIAN"}, expectedItem);
        std::string upper = AppCommandReader::Upper(t.fText);
        if (std::find(items.begin(), items.end(), upper) != items.end()) {
          reader.FailAt(t, "expected each criterion once, found " + upper + " again");
        }
        items.push_back(upper);
        reader.ExpectSymbol('(', "'(' and the criterion of " + upper);
        const AppToken& v = reader.Peek();
        double value = reader.ExpectNumber("a criterion of 0 or more");
        if (!(value >= 0.0)) reader.Fail(v, "a criterion of 0 or more");
        // Parameters change relatively by default, the others absolutely.
        int kind = which == 0 ? 1 : 2;
        if (!reader.IsSymbol(')')) kind = 1 + ReadChoice(reader, {"RELATIVE", "ABSOLUTE"}, "RELATIVE, ABSOLUTE or ')'");
        reader.ExpectSymbol(')', "')'");
        if (which == 0) {
          fCommand.fParameterConvergence = value;
          fCommand.fParameterKind = kind;
        } else if (which == 1) {
          fCommand.fLogLikelihoodConvergence = value;
          fCommand.fLogLikelihoodKind = kind;
        } else {
          fCommand.fHessianConvergence = value;
          fCommand.fHessianKind = kind;
        }
      } while (reader.IsWord() && !reader.IsSetting());
    } else if (name == "FIT") {
      ReadFit(reader);
    } else if (name == "COVB") {
      fCommand.fbRobust = ReadChoice(reader, {"MODEL", "ROBUST"}, "MODEL or ROBUST") == 1;
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
  }
}

void AppMixedParser::ParseMissing(AppCommandReader& reader) {
  std::vector<std::string> seen;
  const std::string allowed = "USERMISSING=";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), allowed);
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name != "USERMISSING") {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
    fCommand.fbIncludeUserMissing = ReadChoice(reader, {"EXCLUDE", "INCLUDE"}, "EXCLUDE or INCLUDE") == 1;
  }
}

void AppMixedParser::ParseTests(AppCommandReader& reader) {
  std::vector<std::string> seen;
  const std::string allowed = "TYPE=";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), allowed);
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name != "TYPE") {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
    const AppToken& t = reader.Peek();
    long type = reader.ExpectWhole("1 or 3", 1, 3);
    if (type == 2) reader.Fail(t, "1 or 3");
    fCommand.fTestType = static_cast<int>(type);
  }
}

void AppMixedParser::ParseDisplay(AppCommandReader& reader) {
  const std::vector<std::string> items = {"ESTIMATES", "ESTIMATECOVARIANCES", "ESTIMATECORRELATIONS",
                                          "CASES",     "COVARIANCETESTS",     "GMATRIX",
                                          "RMATRIX",   "LMATRIX",             "VARIABLES",
                                          "HISTORY"};
  const std::string expected =
      "a display item (ESTIMATES, ESTIMATECOVARIANCES, ESTIMATECORRELATIONS, CASES, COVARIANCETESTS, GMATRIX, "
      "RMATRIX, LMATRIX, VARIABLES or HISTORY)";
  std::vector<int> seen;
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), expected);
  while (!reader.AtSubcommandEnd()) {
    const AppToken& t = reader.Peek();
    int item = ReadChoice(reader, items, expected);
    if (Contains(seen, item)) reader.FailAt(t, "expected each display item once, found " + items[item] + " again");
    seen.push_back(item);
    switch (item) {
      case 0: fCommand.fbShowEstimates = true; break;
      case 1: fCommand.fbShowEstimateCovariances = true; break;
      case 2: fCommand.fbShowEstimateCorrelations = true; break;
      case 3: fCommand.fbShowCases = true; break;
      case 4: fCommand.fbShowCovarianceTests = true; break;
      case 5: fCommand.fbShowG = true; break;
      case 6: fCommand.fbShowR = true; break;
      case 7: fCommand.fbShowL = true; break;
      case 8: fCommand.fbShowVariables = true; break;
      default:
        fCommand.fbShowHistory = true;
        if (reader.AcceptSymbol('(')) {
          fCommand.fHistoryStep = static_cast<int>(
              reader.ExpectWhole("a whole number of iterations from 1 to 2147483647 between history lines", 1, kMaxInt));
          reader.ExpectSymbol(')', "')'");
        }
        break;
    }
  }
}

void AppMixedParser::ParseFormat(AppCommandReader& reader) {
  std::vector<std::string> seen;
  const std::string allowed = "CRITERIA= or ESTIMATES=";
  const std::string expected =
      "a numeric format such as F12.3 (F, E, COMMA, DOLLAR, DOT or PCT; width 1 to 40, fewer decimals than the "
      "width, at most 16)";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), allowed);
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name != "CRITERIA" && name != "ESTIMATES") {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
    const AppToken& t = reader.Peek();
    ZORV_Format format;
    if (t.fKind != AppToken::WORD || !ZORV_Format::Parse(t.fText, format) || format.IsString() ||
        format.fDecimals >= format.fWidth) {
      reader.Fail(t, expected);
    }
    reader.Next();
    (name == "CRITERIA" ? fCommand.fCriteriaFormat : fCommand.fEstimatesFormat) = format;
  }
}

void AppMixedParser::ParseScaleWeight(AppCommandReader& reader) {
  const AppToken& t = reader.Peek();
  int column = ReadVariable(reader, "the scale weight variable");
  if (!IsNumeric(column)) reader.FailAt(t, "expected a numeric scale weight, found the string variable '" + t.fText + "'");
  if (column == fCommand.fTarget) reader.FailAt(t, "expected a scale weight, found the target '" + t.fText + "'");
  if (FactorPlace(column) >= 0) reader.FailAt(t, "expected a scale weight, found the factor '" + t.fText + "'");
  fCommand.fScaleWeight = column;
  if (!reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), "the end of /SCALEWEIGHT (one variable)");
}
