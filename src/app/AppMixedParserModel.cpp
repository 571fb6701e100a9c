#include "app/AppMixedParser.h"

#include <utility>

#include "app/AppCommandReader.h"
#include "host/data/ZORV_Dataset.h"

// The model: terms, /FIXED, /RANDOM and /RESIDUAL.

namespace {

// Covariance structures by keyword code; the spatial ones (codes 20 to 25)
// belong to the residual block.
struct Structure {
  const char* fKeyword;
  int fCode;
};
const Structure kStructures[] = {
    {"AD1", 1},        {"AR1", 2},          {"ARH1", 3},       {"ARMA11", 4},     {"CS", 5},
    {"CSH", 6},        {"CSR", 7},          {"DIAG", 8},       {"FA1", 9},        {"FAH1", 10},
    {"HF", 11},        {"ID", 12},          {"TP", 13},        {"TPH", 14},       {"UN", 15},
    {"UNR", 16},       {"VC", 17},          {"POWER", 20},     {"EXPONENTIAL", 21}, {"GAUSSIAN", 22},
    {"LINEAR", 23},    {"LINEARLOG", 24},   {"SPHERICAL", 25}};
const int kFirstSpatial = 20;
const int kVarianceComponents = 17;

}  // namespace

AppMixedCommand::TermData AppMixedParser::InterceptTerm() const {
  AppMixedCommand::TermData term;
  term.fvWords.assign(fCommand.fvFactors.size() + fCommand.fvCovariates.size(), 0);
  term.fText = "INTERCEPT";
  return term;
}

bool AppMixedParser::IsTermStart(AppCommandReader& reader) const { return reader.IsWord() && !reader.IsSetting(); }

int AppMixedParser::FindTerm(const std::vector<AppMixedCommand::TermData>& terms,
                             const AppMixedCommand::TermData& term) {
  for (std::size_t i = 0; i < terms.size(); ++i) {
    if (terms[i].fvWords == term.fvWords) return static_cast<int>(i);
  }
  return -1;
}

AppMixedCommand::TermData AppMixedParser::ParseTerm(AppCommandReader& reader) {
  const std::string expected = "a factor or covariate of the model";
  AppMixedCommand::TermData term = InterceptTerm();
  term.fText.clear();
  // The products of the term, from the outermost: A*B(C(D)) is [A B] [C] [D].
  std::vector<std::vector<std::pair<const AppToken*, int>>> products;
  std::vector<int> seenFactors;
  std::size_t open = 0;
  while (true) {
    std::vector<std::pair<const AppToken*, int>> product;
    do {
      const AppToken& at = reader.Peek();
      if (at.fKind != AppToken::WORD) reader.Fail(at, expected);
      int column = fData.FindVarIndex(at.fText.c_str(), 0);
      if (column < 0) {
        reader.FailAt(at, "expected " + expected + ", found '" + at.fText +
                              "' (the data have no variable of that name)");
      }
      if (FactorPlace(column) < 0 && CovariatePlace(column) < 0) {
        reader.FailAt(at, "expected " + expected + ", found '" + at.fText +
                              "', which is not named after BY or WITH");
      }
      if (FactorPlace(column) >= 0) {
        if (Contains(seenFactors, column)) {
          reader.FailAt(at, "expected each factor once in a term, found '" + at.fText + "' again");
        }
        seenFactors.push_back(column);
      } else if (!products.empty()) {
        reader.FailAt(at, "expected a factor within the parentheses, found the covariate '" + at.fText +
                              "' (a term can be nested within factors only)");
      }
      if (!term.fText.empty() && term.fText.back() != '(') term.fText += '*';
      term.fText += VariableName(column);
      product.push_back({&at, column});
      reader.Next();
    } while (reader.AcceptSymbol('*'));
    products.push_back(product);
    if (!reader.AcceptSymbol('(')) break;
    term.fText += '(';
    ++open;
  }
  for (std::size_t i = 0; i < open; ++i) {
    reader.ExpectSymbol(')', "')' or '*'");
    term.fText += ')';
  }

  const std::size_t nFactors = fCommand.fvFactors.size();
  const bool nested = products.size() > 1;
  for (std::size_t p = 0; p < products.size(); ++p) {
    INTEGER level = static_cast<INTEGER>(products.size() - p);
    for (const auto& item : products[p]) {
      int place = FactorPlace(item.second);
      if (place >= 0) {
        term.fvWords[static_cast<std::size_t>(place)] = level;
      } else {
        INTEGER& word = term.fvWords[nFactors + static_cast<std::size_t>(CovariatePlace(item.second))];
        word += nested ? -1 : 1;
      }
    }
  }
  return term;
}

int AppMixedParser::ReadCovariance(AppCommandReader& reader, bool residual) {
  const AppToken& token = reader.Peek();
  std::string expected = residual ? "a covariance structure (AD1, AR1, ARH1, ARMA11, CS, CSH, CSR, DIAG, FA1, FAH1, "
                                    "HF, ID, TP, TPH, UN, UNR, VC, or a spatial structure: POWER, EXPONENTIAL, "
                                    "GAUSSIAN, LINEAR, LINEARLOG, SPHERICAL)"
                                  : "a covariance structure (AD1, AR1, ARH1, ARMA11, CS, CSH, CSR, DIAG, FA1, FAH1, "
                                    "HF, ID, TP, TPH, UN, UNR or VC)";
  if (token.fKind == AppToken::WORD) {
    std::string upper = AppCommandReader::Upper(token.fText);
    for (const Structure& s : kStructures) {
      if (upper != s.fKeyword) continue;
      if (!residual && s.fCode >= kFirstSpatial) {
        reader.FailAt(token, "expected " + expected + ", found the spatial structure " + upper +
                                 ", which only /RESIDUAL can have");
      }
      reader.Next();
      return s.fCode;
    }
  }
  reader.Fail(token, expected);
}

void AppMixedParser::ParseFixed(AppCommandReader& reader) {
  while (IsTermStart(reader)) {
    const AppToken& at = reader.Peek();
    if (reader.IsKeyword("INTERCEPT")) {
      reader.FailAt(at, "expected a term of factors and covariates, found 'INTERCEPT' (the fixed intercept is "
                        "there unless INTERCEPT=NO says otherwise)");
    }
    AppMixedCommand::TermData term = ParseTerm(reader);
    if (FindTerm(fCommand.fvFixedTerms, term) >= 0) {
      reader.FailAt(at, "expected each term once, found " + term.fText + " again");
    }
    fCommand.fvFixedTerms.push_back(term);
  }
  std::vector<std::string> seen;
  while (!reader.AtSubcommandEnd()) {
    const std::string allowed = "INTERCEPT= or the end of /FIXED (after the terms)";
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name != "INTERCEPT") {
      reader.SetIndex(reader.GetIndex() - 2);
      reader.Fail(reader.Peek(), allowed);
    }
    fCommand.fbIntercept = ReadYesNo(reader);
  }
}

void AppMixedParser::ParseRandom(AppCommandReader& reader) {
  AppMixedCommand::RandomBlockData block;
  const AppToken& blockStart = reader.Peek();
  const AppToken* structureToken = nullptr;
  while (IsTermStart(reader)) {
    const AppToken& at = reader.Peek();
    AppMixedCommand::TermData term;
    if (reader.AcceptKeyword("INTERCEPT")) {
      term = InterceptTerm();
    } else {
      term = ParseTerm(reader);
    }
    if (FindTerm(block.fvTerms, term) >= 0) reader.FailAt(at, "expected each term once, found " + term.fText + " again");
    block.fvTerms.push_back(term);
  }
  if (block.fvTerms.empty()) reader.Fail(reader.Peek(), "a random term (INTERCEPT, or a term of factors and covariates)");
  std::vector<std::string> seen;
  const std::string allowed = "SUBJECTS=, STRUCTURE= or PREDICT= (after the terms)";
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name == "SUBJECTS") {
      std::size_t first = reader.GetIndex();
      block.fvSubjects = ReadCrossing(reader, "a subject variable");
      for (std::size_t i = 0; i < block.fvSubjects.size(); ++i) {
        CheckSubject(reader, reader.GetCommand().fvTokens[first + 2 * i], block.fvSubjects[i]);
      }
    } else if (name == "STRUCTURE") {
      structureToken = &reader.Peek();
      block.fCovariance = ReadCovariance(reader, false);
    } else if (name == "PREDICT") {
      block.fbPredict = ReadYesNo(reader);
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
  }
  if (structureToken != nullptr) {
    CheckStructureSize(reader, *structureToken, block.fCovariance, RandomBlockLevels(block), "the random effects");
  }
  // Variance components give each term a variance; the other structures
  // have at least one parameter.
  const bool components = block.fCovariance == 0 || block.fCovariance == kVarianceComponents;
  fRandomParameters += components ? static_cast<long>(block.fvTerms.size()) : 1L;
  if (fRandomParameters > kMaxRandomParameters) RefuseRandomParameters(reader, blockStart, fRandomParameters);
  fCommand.fvRandomBlocks.push_back(block);
}

void AppMixedParser::ParseResidual(AppCommandReader& reader) {
  std::vector<std::string> seen;
  const std::string allowed = "INDEX=, SUBJECTS=, STRUCTURE= or COORDINATES=";
  const AppToken* structureToken = nullptr;
  const AppToken* coordinatesToken = nullptr;
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), allowed);
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name == "INDEX") {
      std::size_t first = reader.GetIndex();
      fCommand.fvRepeated = ReadCrossing(reader, "a repeated measures variable");
      for (std::size_t i = 0; i < fCommand.fvRepeated.size(); ++i) {
        if (fCommand.fvRepeated[i] == fCommand.fTarget) {
          const AppToken& t = reader.GetCommand().fvTokens[first + 2 * i];
          reader.FailAt(t, "expected a repeated measures variable, found the target '" + t.fText + "'");
        }
      }
    } else if (name == "SUBJECTS") {
      std::size_t first = reader.GetIndex();
      fCommand.fvRepeatedSubjects = ReadCrossing(reader, "a subject variable");
      for (std::size_t i = 0; i < fCommand.fvRepeatedSubjects.size(); ++i) {
        CheckSubject(reader, reader.GetCommand().fvTokens[first + 2 * i], fCommand.fvRepeatedSubjects[i]);
      }
    } else if (name == "STRUCTURE") {
      structureToken = &reader.Peek();
      fCommand.fRepeatedCovariance = ReadCovariance(reader, true);
    } else if (name == "COORDINATES") {
      coordinatesToken = &reader.GetCommand().fvTokens[at];
      do {
        const AppToken& t = reader.Peek();
        int column = ReadVariable(reader, "a coordinate variable");
        if (Contains(fCommand.fvCoordinates, column)) {
          reader.FailAt(t, "expected each coordinate once, found '" + t.fText + "' again");
        }
        fCommand.fvCoordinates.push_back(column);
      } while (reader.IsWord() && !reader.IsSetting());
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
  }
  bool spatial = fCommand.fRepeatedCovariance >= kFirstSpatial;
  if (spatial && fCommand.fvCoordinates.empty()) {
    reader.FailAt(*structureToken, "expected COORDINATES= with the spatial structure " +
                                       AppCommandReader::Upper(structureToken->fText) + ", found none");
  }
  if (!spatial && coordinatesToken != nullptr) {
    reader.FailAt(*coordinatesToken, "expected a spatial STRUCTURE= (POWER, EXPONENTIAL, GAUSSIAN, LINEAR, "
                                     "LINEARLOG or SPHERICAL) with COORDINATES=, found none");
  }
  if (structureToken != nullptr && !fCommand.fvRepeated.empty()) {
    std::string over;
    for (int column : fCommand.fvRepeated) over += (over.empty() ? "" : "*") + VariableName(column);
    CheckStructureSize(reader, *structureToken, fCommand.fRepeatedCovariance,
                       DistinctCombinations(fCommand.fvRepeated), over);
  }
}
