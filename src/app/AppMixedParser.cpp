#include "app/AppMixedParser.h"

#include <algorithm>
#include <cmath>
#include <filesystem>

#include "app/AppCommandReader.h"
#include "app/AppHostCommands.h"
#include "base/MIXCommandLayout.h"
#include "host/data/ZORV_Dataset.h"

namespace {

const long kMaxInt = 2147483647L;
// The longest file name and the longest name of a saved variable, in bytes.
const std::size_t kMaxFileName = MIXCommandLayout::FILE_NAME_BYTES;
const std::size_t kMaxSaveName = MIXCommandLayout::SAVE_NAME_BYTES;

const char* const kSubcommands[] = {"FIXED",   "RANDOM",   "RESIDUAL", "ESTIMATION", "MISSING",
                                    "TESTS",   "DISPLAY",  "FORMAT",   "CONTRAST",   "MEANS",
                                    "SAVE",    "EXPORT",   "SCALEWEIGHT"};
const char* const kSubcommandList =
    "a subcommand (/FIXED, /RANDOM, /RESIDUAL, /ESTIMATION, /MISSING, /TESTS, /DISPLAY, /FORMAT, /CONTRAST, "
    "/MEANS, /SAVE, /EXPORT or /SCALEWEIGHT)";

bool Repeatable(const std::string& name) { return name == "RANDOM" || name == "CONTRAST" || name == "MEANS"; }

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

struct SaveKind {
  const char* fKeyword;
  int fKind;
  const char* fDefaultName;
};
const SaveKind kSaveKinds[] = {{"FIXEDPREDICTED", 0, "FixedPredicted"},   {"PREDICTED", 1, "Predicted"},
                               {"RESIDUAL", 2, "Residual"},               {"FIXEDPREDICTEDSE", 3, "FixedPredictedSE"},
                               {"PREDICTEDSE", 4, "PredictedSE"},         {"FIXEDPREDICTEDDF", 5, "FixedPredictedDF"},
                               {"PREDICTEDDF", 6, "PredictedDF"}};

std::string Join(const std::vector<std::string>& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += i + 1 == items.size() ? " or " : ", ";
    text += items[i];
  }
  return text;
}

bool Contains(const std::vector<int>& list, int value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

std::string Plural(std::size_t n, const char* one, const char* many) {
  return std::to_string(n) + " " + (n == 1 ? one : many);
}

}  // namespace

AppMixedParser::AppMixedParser(const ZORV_Dataset& data, const std::string& baseDir, const std::string& outputDir,
                               int commandNumber)
    : fData(data), fBaseDir(baseDir), fOutputDir(outputDir), fCommandNumber(commandNumber) {}

// ---------------------------------------------------------------- variables

int AppMixedParser::FactorPlace(int column) const {
  auto it = std::find(fCommand.fvFactors.begin(), fCommand.fvFactors.end(), column);
  return it == fCommand.fvFactors.end() ? -1 : static_cast<int>(it - fCommand.fvFactors.begin());
}

int AppMixedParser::CovariatePlace(int column) const {
  auto it = std::find(fCommand.fvCovariates.begin(), fCommand.fvCovariates.end(), column);
  return it == fCommand.fvCovariates.end() ? -1 : static_cast<int>(it - fCommand.fvCovariates.begin());
}

bool AppMixedParser::IsNumeric(int column) const {
  const ZORV_Variable* variable = fData.GetVariable(column);
  return variable != nullptr && variable->GetType() == 0;
}

std::string AppMixedParser::VariableName(int column) const {
  const ZORV_Variable* variable = fData.GetVariable(column);
  return variable ? variable->GetName() : std::string();
}

int AppMixedParser::ReadVariable(AppCommandReader& reader, const std::string& expected) {
  const AppToken& token = reader.Peek();
  if (token.fKind != AppToken::WORD) reader.Fail(token, expected);
  int column = fData.FindVarIndex(token.fText.c_str(), 0);
  if (column < 0) {
    reader.FailAt(token, "expected " + expected + ", found '" + token.fText +
                             "' (the data have no variable of that name)");
  }
  reader.Next();
  return column;
}

std::vector<int> AppMixedParser::ReadCrossing(AppCommandReader& reader, const std::string& expected) {
  std::vector<int> columns;
  do {
    const AppToken& at = reader.Peek();
    int column = ReadVariable(reader, expected);
    if (Contains(columns, column)) {
      reader.FailAt(at, "expected each variable once, found '" + at.fText + "' again");
    }
    columns.push_back(column);
  } while (reader.AcceptSymbol('*'));
  return columns;
}

void AppMixedParser::CheckSubject(AppCommandReader& reader, const AppToken& at, int column) {
  if (column == fCommand.fTarget) {
    reader.FailAt(at, "expected a subject variable, found the target '" + at.fText + "'");
  }
  if (CovariatePlace(column) >= 0) {
    reader.FailAt(at, "expected a subject variable, found the covariate '" + at.fText +
                          "' (subjects are categories; a covariate cannot be one)");
  }
}

// ---------------------------------------------------------------- settings

std::string AppMixedParser::ReadSettingName(AppCommandReader& reader, std::vector<std::string>& seen,
                                            const std::string& allowed) {
  const AppToken& token = reader.Peek();
  if (!reader.IsSetting()) reader.Fail(token, allowed);
  std::string name = AppCommandReader::Upper(token.fText);
  if (std::find(seen.begin(), seen.end(), name) != seen.end()) {
    reader.FailAt(token, "expected each setting once, found " + name + "= again");
  }
  seen.push_back(name);
  reader.Next();
  reader.Next();  // the "="
  return name;
}

int AppMixedParser::ReadChoice(AppCommandReader& reader, const std::vector<std::string>& choices,
                               const std::string& expected) {
  const AppToken& token = reader.Peek();
  if (token.fKind == AppToken::WORD) {
    std::string upper = AppCommandReader::Upper(token.fText);
    for (std::size_t i = 0; i < choices.size(); ++i) {
      if (choices[i] == upper) {
        reader.Next();
        return static_cast<int>(i);
      }
    }
  }
  reader.Fail(token, expected.empty() ? Join(choices) : expected);
}

bool AppMixedParser::ReadYesNo(AppCommandReader& reader) { return ReadChoice(reader, {"NO", "YES"}, "YES or NO") == 1; }

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

std::string AppMixedParser::ReadFileName(AppCommandReader& reader) {
  const AppToken& token = reader.Peek();
  std::string name = reader.ExpectString("a file name in quotes");
  if (name.find_first_not_of(" \t") == std::string::npos) reader.Fail(token, "a file name in quotes");
  std::string resolved = AppHostCommands::ResolvePath(fBaseDir, name);
  if (resolved.size() > kMaxFileName) {
    reader.FailAt(token, "expected a file name of at most " + std::to_string(kMaxFileName) + " bytes, found one of " +
                             std::to_string(resolved.size()) + " bytes (" + resolved + ")");
  }
  return resolved;
}

std::string AppMixedParser::DefaultFile(const std::string& name) const {
  std::string file = name + "-" + std::to_string(fCommandNumber);
  if (fOutputDir.empty()) return file;
  return (std::filesystem::path(fOutputDir) / file).lexically_normal().string();
}

std::vector<double> AppMixedParser::ReadValues(AppCommandReader& reader, const std::string& expected) {
  std::vector<double> values;
  while (reader.IsNumber()) values.push_back(reader.Next().fNumber);
  if (values.empty()) reader.Fail(reader.Peek(), expected);
  return values;
}

// ---------------------------------------------------------------- the command

AppMixedCommand AppMixedParser::Parse(AppCommandReader& reader) {
  fCommand = AppMixedCommand();
  fvSaveNames.clear();
  reader.SetIndex(0);
  reader.ExpectKeyword("GLMIXFIT", "GLMIXFIT");
  ParseHeader(reader);
  std::vector<Subcommand> subs = FindSubcommands(reader);

  // The model's terms first: tests refer to them wherever they stand.
  for (const Subcommand& sub : subs) {
    if (sub.fName == "FIXED" || sub.fName == "RANDOM") ParseSubcommand(reader, sub);
  }
  for (const Subcommand& sub : subs) {
    if (sub.fName != "FIXED" && sub.fName != "RANDOM") ParseSubcommand(reader, sub);
  }

  if (fCommand.fFileKind == AppMixedCommand::FILE_MODEL_HOST) fCommand.fModelFile = DefaultFile("model") + ".xml";
  if (fCommand.fStatXmlFile.empty()) fCommand.fStatXmlFile = DefaultFile("statxml") + ".xml";
  if (fCommand.fStatJsonFile.empty()) fCommand.fStatJsonFile = DefaultFile("statjson") + ".json";
  for (const std::string* name : {&fCommand.fModelFile, &fCommand.fStatXmlFile, &fCommand.fStatJsonFile}) {
    if (name->size() > kMaxFileName) {
      reader.FailAt(reader.GetCommand().fvTokens.front(),
                    "the output folder's name is too long for the documents of the command: " + *name +
                        " has more than " + std::to_string(kMaxFileName) + " bytes");
    }
  }
  return fCommand;
}

void AppMixedParser::ParseHeader(AppCommandReader& reader) {
  const AppToken& targetToken = reader.Peek();
  fCommand.fTarget = ReadVariable(reader, "the target variable");
  if (!IsNumeric(fCommand.fTarget)) {
    reader.FailAt(targetToken, "expected a numeric target variable, found the string variable '" +
                                   targetToken.fText + "'");
  }
  bool haveBy = false;
  bool haveWith = false;
  while (!reader.AtSubcommandEnd()) {
    const AppToken& keyword = reader.Peek();
    if (reader.IsKeyword("BY") && !haveBy) {
      reader.Next();
      haveBy = true;
      fCommand.fvFactors = ParseVariableList(reader, "factor");
    } else if (reader.IsKeyword("WITH") && !haveWith) {
      reader.Next();
      haveWith = true;
      fCommand.fvCovariates = ParseVariableList(reader, "covariate");
    } else if (reader.IsKeyword("BY") || reader.IsKeyword("WITH")) {
      reader.FailAt(keyword, "expected " + AppCommandReader::Upper(keyword.fText) + " only once, found it again");
    } else {
      std::string expected = haveBy && haveWith ? "a subcommand or the end of the command"
                             : haveBy           ? "WITH, a subcommand or the end of the command"
                             : haveWith         ? "BY, a subcommand or the end of the command"
                                                : "BY, WITH, a subcommand or the end of the command";
      reader.Fail(keyword, expected);
    }
  }
}

std::vector<int> AppMixedParser::ParseVariableList(AppCommandReader& reader, const std::string& what) {
  std::vector<int> columns;
  while (reader.IsWord() && !reader.IsKeyword("BY") && !reader.IsKeyword("WITH")) {
    const AppToken& at = reader.Peek();
    int column = ReadVariable(reader, "a " + what);
    if (column == fCommand.fTarget) {
      reader.FailAt(at, "expected a " + what + ", found the target '" + at.fText + "'");
    }
    if (Contains(columns, column)) reader.FailAt(at, "expected each " + what + " once, found '" + at.fText + "' again");
    if (what == "factor" && CovariatePlace(column) >= 0) {
      reader.FailAt(at, "expected a factor, found '" + at.fText + "', which is a covariate already");
    }
    if (what == "covariate") {
      if (FactorPlace(column) >= 0) {
        reader.FailAt(at, "expected a covariate, found '" + at.fText + "', which is a factor already");
      }
      if (!IsNumeric(column)) {
        reader.FailAt(at, "expected a numeric covariate, found the string variable '" + at.fText + "'");
      }
    }
    columns.push_back(column);
  }
  if (columns.empty()) reader.Fail(reader.Peek(), "a " + what + " after " + (what == "factor" ? "BY" : "WITH"));
  return columns;
}

std::vector<AppMixedParser::Subcommand> AppMixedParser::FindSubcommands(AppCommandReader& reader) {
  std::vector<Subcommand> subs;
  while (!reader.AtEnd()) {
    reader.ExpectSymbol('/', "'/' and a subcommand, or the end of the command");
    const AppToken& nameToken = reader.Peek();
    std::string name = reader.IsWord() ? AppCommandReader::Upper(nameToken.fText) : std::string();
    bool known = false;
    for (const char* s : kSubcommands) known = known || name == s;
    if (!known) reader.Fail(nameToken, kSubcommandList);
    if (!Repeatable(name)) {
      for (const Subcommand& earlier : subs) {
        if (earlier.fName == name) reader.FailAt(nameToken, "expected /" + name + " only once, found it again");
      }
    }
    Subcommand sub;
    sub.fName = name;
    sub.fNameIndex = reader.GetIndex();
    reader.Next();
    while (!reader.AtSubcommandEnd()) reader.Next();
    subs.push_back(sub);
  }
  return subs;
}

void AppMixedParser::ParseSubcommand(AppCommandReader& reader, const Subcommand& sub) {
  reader.SetIndex(sub.fNameIndex + 1);
  const std::string& n = sub.fName;
  if (n == "FIXED") ParseFixed(reader);
  else if (n == "RANDOM") ParseRandom(reader);
  else if (n == "RESIDUAL") ParseResidual(reader);
  else if (n == "ESTIMATION") ParseEstimation(reader);
  else if (n == "MISSING") ParseMissing(reader);
  else if (n == "TESTS") ParseTests(reader);
  else if (n == "DISPLAY") ParseDisplay(reader);
  else if (n == "FORMAT") ParseFormat(reader);
  else if (n == "CONTRAST") ParseContrast(reader);
  else if (n == "MEANS") ParseMeans(reader);
  else if (n == "SAVE") ParseSave(reader);
  else if (n == "EXPORT") ParseExport(reader);
  else if (n == "SCALEWEIGHT") ParseScaleWeight(reader);
}

// ---------------------------------------------------------------- terms

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

// ---------------------------------------------------------------- subcommands

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
      block.fCovariance = ReadCovariance(reader, false);
    } else if (name == "PREDICT") {
      block.fbPredict = ReadYesNo(reader);
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
  }
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
}

void AppMixedParser::ParseEstimation(AppCommandReader& reader) {
  std::vector<std::string> seen;
  const std::string allowed =
      "METHOD=, CONFIDENCE=, ITERATIONS=, HALVING=, SCORING=, SINGULAR= or CONVERGENCE=";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), allowed);
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name == "METHOD") {
      fCommand.fbReml = ReadChoice(reader, {"ML", "REML"}, "REML or ML") == 1;
    } else if (name == "CONFIDENCE") {
      const AppToken& t = reader.Peek();
      double value = reader.ExpectNumber("a confidence level in percent, above 0 and below 100");
      if (!(value > 0.0 && value < 100.0)) reader.Fail(t, "a confidence level in percent, above 0 and below 100");
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

void AppMixedParser::ParseContrast(AppCommandReader& reader) {
  AppMixedCommand::ContrastData test;
  const AppToken& start = reader.Peek();
  if (reader.IsString()) test.fLabel = reader.Next().fText;

  const std::size_t nBlocks = fCommand.fvRandomBlocks.size();
  const std::size_t nFixedExt = fCommand.fvFixedTerms.size() + (fCommand.fbIntercept ? 1 : 0);
  const std::size_t nRandom = static_cast<std::size_t>(fCommand.CountRandomTerms());
  if (nFixedExt == 0) {
    reader.FailAt(start, "expected a model with fixed effects for /CONTRAST, found neither an intercept nor a "
                         "fixed term");
  }
  std::vector<std::size_t> blockStart;
  for (std::size_t b = 0, sum = 0; b < nBlocks; ++b) {
    blockStart.push_back(sum);
    sum += fCommand.fvRandomBlocks[b].fvTerms.size();
  }

  // Per row: the values of each fixed and random term (per-effect form), or
  // of the two parts (all-values form). Missing terms are given no values.
  struct Row {
    std::vector<std::vector<double>> fvFixed;
    std::vector<std::vector<double>> fvRandom;
    std::vector<const AppToken*> fvFixedAt;
    std::vector<const AppToken*> fvRandomAt;
    const AppToken* fpAt = nullptr;
  };
  std::vector<Row> rows;
  int form = -1;  // 0 per effect, 1 all values
  const std::string rowExpected = "a term followed by its values, ALL followed by values, or '|'";

  do {
    Row row;
    row.fpAt = &reader.Peek();
    row.fvFixed.assign(form == 1 ? 1 : nFixedExt, {});
    row.fvRandom.assign(form == 1 ? 1 : nRandom, {});
    row.fvFixedAt.assign(row.fvFixed.size(), nullptr);
    row.fvRandomAt.assign(row.fvRandom.size(), nullptr);
    std::size_t part = 0;  // 0 the fixed part, then one part per random block
    bool any = false;
    while (!reader.AtSubcommandEnd() && !reader.IsSymbol(';') && !reader.IsSetting()) {
      const AppToken& at = reader.Peek();
      if (reader.AcceptSymbol('|')) {
        ++part;
        if (nBlocks == 0) {
          reader.FailAt(at, "expected a term followed by its values or ALL followed by values, found '|', but the "
                            "model has no /RANDOM block");
        }
        if (form == 1 && part > 1) reader.FailAt(at, "expected one '|' in the all-values form, found another");
        if (part > nBlocks) {
          reader.FailAt(at, "expected at most " + std::to_string(nBlocks) +
                                " '|', one for each /RANDOM block, found another");
        }
        continue;
      }
      if (reader.IsKeyword("ALL")) {
        if (form == 0) reader.FailAt(at, "expected a term as in the rest of the test, found ALL (a test is written "
                                         "either by terms or by ALL values throughout)");
        if (form == -1) {
          form = 1;
          row.fvFixed.assign(1, {});
          row.fvRandom.assign(1, {});
          row.fvFixedAt.assign(1, nullptr);
          row.fvRandomAt.assign(1, nullptr);
        }
        reader.Next();
        std::vector<std::vector<double>>& target = part == 0 ? row.fvFixed : row.fvRandom;
        std::vector<const AppToken*>& targetAt = part == 0 ? row.fvFixedAt : row.fvRandomAt;
        if (!target[0].empty()) reader.FailAt(at, "expected ALL once in each part of a row, found it again");
        target[0] = ReadValues(reader, "the values of ALL");
        targetAt[0] = &at;
        any = true;
        continue;
      }
      if (!IsTermStart(reader)) reader.Fail(at, rowExpected);
      if (form == 1) reader.FailAt(at, "expected ALL as in the rest of the test, found a term (a test is written "
                                       "either by terms or by ALL values throughout)");
      form = 0;
      AppMixedCommand::TermData term;
      if (reader.AcceptKeyword("INTERCEPT")) {
        term = InterceptTerm();
      } else {
        term = ParseTerm(reader);
      }
      std::size_t slot = 0;
      if (part == 0) {
        bool isIntercept = std::all_of(term.fvWords.begin(), term.fvWords.end(), [](INTEGER w) { return w == 0; });
        int found = -1;
        if (isIntercept) {
          if (!fCommand.fbIntercept) reader.FailAt(at, "expected a fixed term, found INTERCEPT, but the model has none (INTERCEPT=NO)");
          found = 0;
        } else {
          found = FindTerm(fCommand.fvFixedTerms, term);
          if (found < 0) reader.FailAt(at, "expected a term of /FIXED, found " + term.fText + ", which is not one");
          if (fCommand.fbIntercept) ++found;
        }
        slot = static_cast<std::size_t>(found);
        if (row.fvFixedAt[slot] != nullptr) reader.FailAt(at, "expected each term once in a row, found " + term.fText + " again");
        row.fvFixed[slot] = ReadValues(reader, "the values of " + term.fText);
        row.fvFixedAt[slot] = &at;
        if (isIntercept && row.fvFixed[slot].size() != 1) {
          reader.FailAt(at, "expected one value for INTERCEPT, found " + std::to_string(row.fvFixed[slot].size()));
        }
      } else {
        const AppMixedCommand::RandomBlockData& block = fCommand.fvRandomBlocks[part - 1];
        int found = FindTerm(block.fvTerms, term);
        if (found < 0) {
          reader.FailAt(at, "expected a term of /RANDOM block " + std::to_string(part) + ", found " + term.fText +
                                ", which is not one");
        }
        slot = blockStart[part - 1] + static_cast<std::size_t>(found);
        if (row.fvRandomAt[slot] != nullptr) reader.FailAt(at, "expected each term once in a row, found " + term.fText + " again");
        row.fvRandom[slot] = ReadValues(reader, "the values of " + term.fText);
        row.fvRandomAt[slot] = &at;
      }
      any = true;
    }
    if (!any) reader.Fail(reader.Peek(), rowExpected);
    if (form == 1 && row.fvFixed[0].empty()) {
      reader.FailAt(*row.fpAt, "expected ALL and the values of the fixed part first in each row of the all-values form");
    }
    rows.push_back(row);
  } while (reader.AcceptSymbol(';'));

  // The counts hold for every row: a term a row leaves out gets zeros; a
  // term with values must have as many in each row that gives it.
  std::size_t nFixedSlots = rows.front().fvFixed.size();
  std::size_t nRandomSlots = rows.front().fvRandom.size();
  std::vector<int> fixedCounts(nFixedSlots, 0), randomCounts(nRandomSlots, 0);
  auto settle = [&](std::vector<int>& counts, bool fixed) {
    for (std::size_t s = 0; s < counts.size(); ++s) {
      const Row* first = nullptr;
      for (const Row& row : rows) {
        const std::vector<double>& values = fixed ? row.fvFixed[s] : row.fvRandom[s];
        const AppToken* at = fixed ? row.fvFixedAt[s] : row.fvRandomAt[s];
        if (at == nullptr) {
          if (form == 1 && first != nullptr) {
            reader.FailAt(*row.fpAt, std::string("expected the ") + (fixed ? "fixed" : "random") +
                                         " part in every row, as in the first, found a row without it");
          }
          continue;
        }
        if (first == nullptr) {
          first = &row;
          counts[s] = static_cast<int>(values.size());
          if (form == 1 && &row != &rows.front()) {
            reader.FailAt(*at, std::string("expected no ") + (fixed ? "fixed" : "random") +
                                   " part, as in the first row, found one");
          }
        } else if (static_cast<int>(values.size()) != counts[s]) {
          reader.FailAt(*at, "expected " + Plural(static_cast<std::size_t>(counts[s]), "value", "values") +
                                 " as in the earlier rows, found " + std::to_string(values.size()));
        }
      }
    }
  };
  settle(fixedCounts, true);
  settle(randomCounts, false);

  test.fbAllValues = form == 1;
  test.fvFixedCounts = fixedCounts;
  test.fvRandomCounts = randomCounts;
  for (const Row& row : rows) {
    std::vector<double> values;
    for (std::size_t s = 0; s < nFixedSlots; ++s) {
      if (row.fvFixedAt[s] != nullptr) values.insert(values.end(), row.fvFixed[s].begin(), row.fvFixed[s].end());
      else values.insert(values.end(), static_cast<std::size_t>(fixedCounts[s]), 0.0);
    }
    for (std::size_t s = 0; s < nRandomSlots; ++s) {
      if (row.fvRandomAt[s] != nullptr) values.insert(values.end(), row.fvRandom[s].begin(), row.fvRandom[s].end());
      else values.insert(values.end(), static_cast<std::size_t>(randomCounts[s]), 0.0);
    }
    test.fvRows.push_back(values);
  }

  std::vector<std::string> seen;
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, "';', K= or the end of /CONTRAST");
    if (name != "K") {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), "';', K= or the end of /CONTRAST");
    }
    const AppToken& t = reader.Peek();
    test.fvK = ReadValues(reader, "one K value for each row");
    if (test.fvK.size() != rows.size()) {
      reader.FailAt(t, "expected " + Plural(rows.size(), "K value", "K values") + ", one for each row, found " +
                           std::to_string(test.fvK.size()));
    }
  }
  fCommand.fvContrasts.push_back(test);
}

void AppMixedParser::ParseMeans(AppCommandReader& reader) {
  AppMixedCommand::MeansData means;
  const std::size_t nCovariates = fCommand.fvCovariates.size();
  means.fvbHeld.assign(nCovariates, false);
  means.fvHeldValue.assign(nCovariates, 0.0);
  means.fvHeldText.assign(nCovariates, std::string());

  const std::string tableExpected = "a factor, a crossing of factors (A*B) or OVERALL";
  if (reader.IsKeyword("OVERALL") && !reader.IsSetting()) {
    reader.Next();
  } else {
    do {
      const AppToken& at = reader.Peek();
      if (at.fKind != AppToken::WORD || reader.IsSetting()) reader.Fail(at, tableExpected);
      int column = ReadVariable(reader, "a factor");
      int place = FactorPlace(column);
      if (place < 0) reader.FailAt(at, "expected a factor, found '" + at.fText + "', which is not named after BY");
      if (Contains(means.fvFactors, place)) reader.FailAt(at, "expected each factor once, found '" + at.fText + "' again");
      means.fvFactors.push_back(place);
    } while (reader.AcceptSymbol('*'));
  }

  std::vector<std::string> seen;
  const std::string allowed = "COMPARE=, REFERENCE=, ADJUST= or AT=";
  const AppToken* referenceAt = nullptr;
  const AppToken* adjustAt = nullptr;
  const AppToken* referenceValue = nullptr;
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name == "COMPARE") {
      const AppToken& t = reader.Peek();
      int column = ReadVariable(reader, "a factor of the table");
      int place = FactorPlace(column);
      auto it = std::find(means.fvFactors.begin(), means.fvFactors.end(), place);
      if (place < 0 || it == means.fvFactors.end()) {
        reader.FailAt(t, "expected a factor of the table, found '" + t.fText + "', which is not one");
      }
      means.fCompare = static_cast<int>(it - means.fvFactors.begin()) + 1;
    } else if (name == "REFERENCE") {
      referenceAt = &reader.GetCommand().fvTokens[at];
      const AppToken& t = reader.Peek();
      referenceValue = &t;
      if (reader.IsKeyword("FIRST")) {
        means.fReference = AppMixedCommand::REFERENCE_FIRST;
      } else if (reader.IsKeyword("LAST")) {
        means.fReference = AppMixedCommand::REFERENCE_LAST;
      } else if (reader.IsNumber()) {
        means.fReference = AppMixedCommand::REFERENCE_NUMBER;
        means.fReferenceNumber = t.fNumber;
      } else if (reader.IsString()) {
        means.fReference = AppMixedCommand::REFERENCE_TEXT;
        means.fReferenceText = t.fText;
      } else {
        reader.Fail(t, "FIRST, LAST, a number or a quoted text");
      }
      reader.Next();
    } else if (name == "ADJUST") {
      adjustAt = &reader.GetCommand().fvTokens[at];
      means.fAdjust = 1 + ReadChoice(reader, {"LSD", "SEQUENTIALBONFERRONI", "SEQUENTIALSIDAK"},
                                     "LSD, SEQUENTIALBONFERRONI or SEQUENTIALSIDAK");
    } else if (name == "AT") {
      do {
        const AppToken& t = reader.Peek();
        int column = ReadVariable(reader, "a covariate");
        int place = CovariatePlace(column);
        if (place < 0) reader.FailAt(t, "expected a covariate, found '" + t.fText + "', which is not named after WITH");
        std::size_t p = static_cast<std::size_t>(place);
        if (means.fvbHeld[p]) reader.FailAt(t, "expected each covariate once, found '" + t.fText + "' again");
        reader.ExpectSymbol('(', "'(' and the value of " + t.fText);
        const AppToken& v = reader.Peek();
        means.fvHeldValue[p] = reader.ExpectNumber("a number");
        means.fvHeldText[p] = v.fText;
        means.fvbHeld[p] = true;
        reader.ExpectSymbol(')', "')'");
      } while (reader.IsWord() && !reader.IsSetting());
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
  }
  if (means.fCompare == 0 && referenceAt != nullptr) {
    reader.FailAt(*referenceAt, "expected COMPARE= with REFERENCE=, found none");
  }
  if (means.fCompare == 0 && adjustAt != nullptr) reader.FailAt(*adjustAt, "expected COMPARE= with ADJUST=, found none");
  if (means.fCompare > 0 && referenceValue != nullptr) {
    int factor = fCommand.fvFactors[static_cast<std::size_t>(means.fvFactors[static_cast<std::size_t>(means.fCompare - 1)])];
    bool numeric = IsNumeric(factor);
    if (means.fReference == AppMixedCommand::REFERENCE_NUMBER && !numeric) {
      reader.FailAt(*referenceValue, "expected a quoted text for the string factor '" + VariableName(factor) +
                                         "', found " + referenceValue->fText);
    }
    if (means.fReference == AppMixedCommand::REFERENCE_TEXT && numeric) {
      reader.FailAt(*referenceValue, "expected a number for the numeric factor '" + VariableName(factor) +
                                         "', found the text '" + referenceValue->fText + "'");
    }
  }
  fCommand.fvMeans.push_back(means);
}

void AppMixedParser::ParseSave(AppCommandReader& reader) {
  std::vector<std::string> keywords;
  for (const SaveKind& k : kSaveKinds) keywords.push_back(k.fKeyword);
  const std::string expected = "a value to save (PREDICTED, PREDICTEDSE, PREDICTEDDF, FIXEDPREDICTED, "
                               "FIXEDPREDICTEDSE, FIXEDPREDICTEDDF or RESIDUAL)";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), expected);
  std::vector<const AppToken*> unnamed;
  while (!reader.AtSubcommandEnd()) {
    const AppToken& t = reader.Peek();
    int which = ReadChoice(reader, keywords, expected);
    for (const AppMixedCommand::SaveData& earlier : fCommand.fvSaves) {
      if (earlier.fKind == kSaveKinds[which].fKind) {
        reader.FailAt(t, "expected each value to save once, found " + keywords[static_cast<std::size_t>(which)] + " again");
      }
    }
    AppMixedCommand::SaveData save;
    save.fKind = kSaveKinds[which].fKind;
    if (reader.AcceptSymbol('(')) {
      const AppToken& n = reader.Peek();
      save.fName = reader.ExpectWord("a name for the new variable").fText;
      if (save.fName.size() > kMaxSaveName) {
        reader.FailAt(n, "expected a name of at most " + std::to_string(kMaxSaveName) + " bytes, found one of " +
                             std::to_string(save.fName.size()));
      }
      if (fData.FindVarIndex(save.fName.c_str(), 0) >= 0) {
        reader.FailAt(n, "expected a new variable name, found '" + save.fName + "', which the data have already");
      }
      for (const std::string& other : fvSaveNames) {
        if (AppCommandReader::Upper(other) == AppCommandReader::Upper(save.fName)) {
          reader.FailAt(n, "expected a new variable name, found '" + save.fName + "' again");
        }
      }
      fvSaveNames.push_back(save.fName);
      reader.ExpectSymbol(')', "')'");
    }
    fCommand.fvSaves.push_back(save);
  }
  // Names not given are made from the kind, kept clear of the data's
  // variables and of the other names.
  for (AppMixedCommand::SaveData& save : fCommand.fvSaves) {
    if (!save.fName.empty()) continue;
    std::string base;
    for (const SaveKind& k : kSaveKinds) {
      if (k.fKind == save.fKind) base = k.fDefaultName;
    }
    std::string name = base;
    for (int n = 1;; ++n) {
      bool taken = fData.FindVarIndex(name.c_str(), 0) >= 0;
      for (const std::string& other : fvSaveNames) taken = taken || AppCommandReader::Upper(other) == AppCommandReader::Upper(name);
      if (!taken) break;
      name = base + "_" + std::to_string(n);
    }
    save.fName = name;
    fvSaveNames.push_back(name);
  }
}

void AppMixedParser::ParseExport(AppCommandReader& reader) {
  std::vector<std::string> seen;
  const std::string allowed = "MODEL=, PARAMETERS=, STATXML= or STATJSON=";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), allowed);
  while (!reader.AtSubcommandEnd()) {
    std::size_t at = reader.GetIndex();
    std::string name = ReadSettingName(reader, seen, allowed);
    if (name == "MODEL" || name == "PARAMETERS") {
      if (fCommand.fFileKind != AppMixedCommand::FILE_MODEL_HOST) {
        reader.FailAt(reader.GetCommand().fvTokens[at], "expected one of MODEL= and PARAMETERS=, found both");
      }
      fCommand.fModelFile = ReadFileName(reader);
      fCommand.fFileKind = name == "MODEL" ? AppMixedCommand::FILE_MODEL_USER : AppMixedCommand::FILE_PARAMETERS_USER;
    } else if (name == "STATXML") {
      fCommand.fStatXmlFile = ReadFileName(reader);
    } else if (name == "STATJSON") {
      fCommand.fStatJsonFile = ReadFileName(reader);
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
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
