#include "app/AppMixedParser.h"

#include <cmath>

#include "app/AppCommandReader.h"
#include "host/data/ZORV_Dataset.h"
#include "numeric/glmm/GLMMConst.h"
#include "specs/MIXValidSpecs.h"

// The generalized model (our extension): /TARGET, the FIT= and COVB=
// settings of /ESTIMATION, and the checks between them and the model.

namespace G = GLMMConst_850;

namespace {

const long kMaxInt = 2147483647L;
const int kMaxQuadraturePoints = 25;
const double kMaxLinkPower = 10.0;

const std::vector<std::string> kDistributions = {"NORMAL", "BINOMIAL", "POISSON",    "NEGBIN",
                                                 "GAMMA",  "IGAUSS",   "MULTINOMIAL"};
const std::vector<std::string> kLinks = {"IDENTITY", "LOG",   "LOGIT", "PROBIT", "CLOGLOG",
                                         "NLOGLOG",  "LOGC",  "POWER", "CAUCHIT"};
const std::vector<std::string> kFitMethods = {"PL", "LAPLACE", "QUADRATURE"};

std::string ListOf(const std::vector<std::string>& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += i + 1 == items.size() ? " or " : ", ";
    text += items[i];
  }
  return text;
}

// The links a distribution takes, as a list for a message.
std::string AllowedLinks(int distribution, bool ordered) {
  std::vector<std::string> links;
  for (std::size_t link = 0; link < kLinks.size(); ++link) {
    if (G::IsLinkAllowed(static_cast<G::TargetDistType>(distribution), static_cast<G::LinkType>(link), ordered)) {
      links.push_back(link == G::LINK_POWER ? "POWER(exponent)" : kLinks[link]);
    }
  }
  return ListOf(links);
}

}  // namespace

bool AppMixedParser::IsLinearTarget() const {
  return fCommand.fDistribution == G::DIST_NORMAL && (fCommand.fLink < 0 || fCommand.fLink == G::LINK_IDENTITY);
}

bool AppMixedParser::HasOrderedTarget() const {
  const ZORV_Variable* variable = fData.GetVariable(fCommand.fTarget);
  return variable != nullptr && variable->GetMeasurementLevel() == ZORV_Variable::ORDINAL;
}

void AppMixedParser::ParseTarget(AppCommandReader& reader) {
  std::vector<std::string> seen;
  const std::string allowed = "DISTRIBUTION=, LINK=, TRIALS=, REFERENCE= or OFFSET=";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), allowed);
  std::size_t distributionAt = 0, linkAt = 0, trialsAt = 0, referenceAt = 0;
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    const std::size_t valueAt = reader.GetIndex();
    if (name == "DISTRIBUTION") {
      distributionAt = valueAt;
      fCommand.fDistribution = ReadChoice(reader, kDistributions, "a distribution (" + ListOf(kDistributions) + ")");
    } else if (name == "LINK") {
      linkAt = valueAt;
      ReadLink(reader);
    } else if (name == "TRIALS") {
      trialsAt = valueAt;
      ReadTrials(reader);
    } else if (name == "REFERENCE") {
      referenceAt = valueAt;
      ReadTargetReference(reader);
    } else if (name == "OFFSET") {
      ReadOffset(reader);
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
  }
  CheckTarget(reader, distributionAt, linkAt, trialsAt, referenceAt);
}

void AppMixedParser::ReadLink(AppCommandReader& reader) {
  fCommand.fLink = ReadChoice(reader, kLinks, "a link (" + ListOf(kLinks) + ")");
  if (fCommand.fLink != G::LINK_POWER) return;
  reader.ExpectSymbol('(', "'(' and the exponent of POWER");
  const AppToken& t = reader.Peek();
  const std::string expected = "a non-zero exponent from -10 to 10 (LOG is the power 0)";
  double power = reader.ExpectNumber(expected);
  if (!(power != 0.0 && std::fabs(power) <= kMaxLinkPower)) reader.Fail(t, expected);
  fCommand.fLinkPower = power;
  reader.ExpectSymbol(')', "')'");
}

void AppMixedParser::ReadTrials(AppCommandReader& reader) {
  const std::string expected = "the trials: a numeric variable or a whole number from 1 to 2147483647";
  if (reader.IsNumber()) {
    fCommand.fTrialsValue = static_cast<double>(reader.ExpectWhole(expected, 1, kMaxInt));
    return;
  }
  const AppToken& t = reader.Peek();
  if (!reader.IsWord()) reader.Fail(t, expected);
  int column = ReadVariable(reader, "the trials variable");
  if (!IsNumeric(column)) reader.FailAt(t, "expected a numeric trials variable, found the string variable '" + t.fText + "'");
  if (column == fCommand.fTarget) reader.FailAt(t, "expected a trials variable, found the target '" + t.fText + "'");
  fCommand.fTrials = column;
}

void AppMixedParser::ReadTargetReference(AppCommandReader& reader) {
  const std::string expected = "FIRST, LAST or a value of the target";
  if (reader.IsNumber()) {
    fCommand.fReferenceKind = G::REFERENCE_VALUE;
    fCommand.fReferenceValue = reader.Next().fNumber;
    return;
  }
  fCommand.fReferenceKind = ReadChoice(reader, {"LAST", "FIRST"}, expected) == 1 ? G::REFERENCE_FIRST : G::REFERENCE_LAST;
}

void AppMixedParser::ReadOffset(AppCommandReader& reader) {
  const AppToken& t = reader.Peek();
  int column = ReadVariable(reader, "the offset variable");
  if (!IsNumeric(column)) reader.FailAt(t, "expected a numeric offset, found the string variable '" + t.fText + "'");
  if (column == fCommand.fTarget) reader.FailAt(t, "expected an offset, found the target '" + t.fText + "'");
  if (FactorPlace(column) >= 0) reader.FailAt(t, "expected an offset, found the factor '" + t.fText + "'");
  fCommand.fOffset = column;
}

// The settings of /TARGET that only make sense together. An index of 0 is a
// setting not given (a value never stands first in a command).
void AppMixedParser::CheckTarget(AppCommandReader& reader, std::size_t distributionAt, std::size_t linkAt,
                                 std::size_t trialsAt, std::size_t referenceAt) {
  const std::vector<AppToken>& tokens = reader.GetCommand().fvTokens;
  const std::string distribution = kDistributions[static_cast<std::size_t>(fCommand.fDistribution)];
  const bool ordered = HasOrderedTarget();
  if (fCommand.fDistribution == G::DIST_MULTINOMIAL) {
    const ZORV_Variable* variable = fData.GetVariable(fCommand.fTarget);
    if (variable != nullptr && variable->GetMeasurementLevel() == ZORV_Variable::SCALE) {
      reader.FailAt(tokens[distributionAt], "expected a distribution for the scale target '" + std::string(variable->GetName()) +
                                                "', found MULTINOMIAL (give the target the level ORDINAL or NOMINAL "
                                                "with LEVEL)");
    }
  }
  if (linkAt > 0 && !G::IsLinkAllowed(static_cast<G::TargetDistType>(fCommand.fDistribution),
                                      static_cast<G::LinkType>(fCommand.fLink), ordered)) {
    const std::string what = fCommand.fDistribution == G::DIST_MULTINOMIAL
                                 ? std::string(ordered ? "an ordinal" : "a nominal") + " MULTINOMIAL target"
                                 : distribution;
    reader.FailAt(tokens[linkAt], "expected a link for " + what + " (" +
                                      AllowedLinks(fCommand.fDistribution, ordered) + "), found " +
                                      kLinks[static_cast<std::size_t>(fCommand.fLink)]);
  }
  if (trialsAt > 0 && fCommand.fDistribution != G::DIST_BINOMIAL) {
    reader.FailAt(tokens[trialsAt], "expected TRIALS= only with DISTRIBUTION=BINOMIAL, found it with " + distribution);
  }
  if (referenceAt > 0 && fCommand.fDistribution != G::DIST_BINOMIAL && fCommand.fDistribution != G::DIST_MULTINOMIAL) {
    reader.FailAt(tokens[referenceAt],
                  "expected REFERENCE= only with a categorical target (BINOMIAL or MULTINOMIAL), found it with " +
                      distribution);
  }
  if (referenceAt > 0 && trialsAt > 0) {
    reader.FailAt(tokens[referenceAt],
                  "expected REFERENCE= only for a target of categories, found it with TRIALS= (events out of trials)");
  }
}

void AppMixedParser::ReadFit(AppCommandReader& reader) {
  fFitAt = reader.GetIndex();
  fCommand.fFitMethod = ReadChoice(reader, kFitMethods, "a fitting method (PL, LAPLACE or QUADRATURE(points))");
  if (fCommand.fFitMethod != G::FIT_QUADRATURE) return;
  reader.ExpectSymbol('(', "'(' and the number of quadrature points");
  fCommand.fQuadraturePoints = static_cast<int>(
      reader.ExpectWhole("a whole number of quadrature points from 1 to " + std::to_string(kMaxQuadraturePoints), 1,
                         kMaxQuadraturePoints));
  reader.ExpectSymbol(')', "')'");
}

// What FIT= asks of the rest of the command, once every subcommand is read.
void AppMixedParser::CheckFit(AppCommandReader& reader) {
  if (fFitAt == 0) return;
  const AppToken& at = reader.GetCommand().fvTokens[fFitAt];
  const std::string method = kFitMethods[static_cast<std::size_t>(fCommand.fFitMethod)];
  if (IsLinearTarget()) {
    reader.FailAt(at, "expected FIT= only with a generalized target (/TARGET with a distribution other than NORMAL "
                      "or a link other than IDENTITY), found it with the linear model");
  }
  if (fCommand.fFitMethod == G::FIT_PSEUDO_LIKELIHOOD) return;
  if (fbResidualGiven) {
    reader.FailAt(at, "expected FIT=PL with /RESIDUAL (the likelihood methods take the records of a subject as "
                      "independent given its random effects), found FIT=" + method);
  }
  if (fCommand.fFitMethod != G::FIT_QUADRATURE) return;
  bool scalar = fCommand.fvRandomBlocks.size() == 1 && fCommand.fvRandomBlocks[0].fvTerms.size() == 1 &&
                !fCommand.fvRandomBlocks[0].fvSubjects.empty();
  if (scalar) {
    const std::vector<INTEGER>& words = fCommand.fvRandomBlocks[0].fvTerms[0].fvWords;
    for (std::size_t f = 0; f < fCommand.fvFactors.size() && f < words.size(); ++f) scalar = scalar && words[f] == 0;
  }
  if (!scalar) {
    reader.FailAt(at, "expected FIT=QUADRATURE only with one /RANDOM block of one effect per subject (INTERCEPT or "
                      "a covariate, with SUBJECTS=), found another random part; use FIT=LAPLACE or FIT=PL");
  }
}

void AppMixedParser::CheckSaves(AppCommandReader& reader) {
  const bool multinomial = fCommand.fDistribution == G::DIST_MULTINOMIAL;
  const bool categorical = multinomial || fCommand.fDistribution == G::DIST_BINOMIAL;
  const std::string distribution = kDistributions[static_cast<std::size_t>(fCommand.fDistribution)];
  for (std::size_t i = 0; i < fCommand.fvSaves.size() && i < fvSaveAt.size(); ++i) {
    const int kind = fCommand.fvSaves[i].fKind;
    const AppToken& at = reader.GetCommand().fvTokens[fvSaveAt[i]];
    const std::string keyword = AppCommandReader::Upper(at.fText);
    if (kind == MIXValidSpecs::SAVE_PEARSON_RESIDUAL && IsLinearTarget()) {
      reader.FailAt(at, "expected PEARSONRESIDUAL only with a generalized target (/TARGET with a distribution other "
                        "than NORMAL or a link other than IDENTITY), found it with the linear model, whose residual "
                        "is RESIDUAL");
    }
    if (kind == MIXValidSpecs::SAVE_PREDICTED_CATEGORY && !categorical) {
      reader.FailAt(at, "expected PREDICTEDCATEGORY only with a BINOMIAL or MULTINOMIAL target, found it with the "
                        "distribution " + distribution);
    }
    if (multinomial && kind != MIXValidSpecs::SAVE_LINEAR_PREDICTOR && kind != MIXValidSpecs::SAVE_PREDICTED_CATEGORY) {
      reader.FailAt(at, "expected LINEARPREDICTOR or PREDICTEDCATEGORY with a MULTINOMIAL target, which has no "
                        "single mean, found " + keyword);
    }
  }
}
