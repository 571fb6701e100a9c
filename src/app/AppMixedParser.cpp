#include "app/AppMixedParser.h"

#include <algorithm>
#include <filesystem>

#include "app/AppCommandReader.h"
#include "app/AppHostCommands.h"
#include "base/MIXCommandLayout.h"
#include "host/data/ZORV_Dataset.h"

namespace {

// The longest file name, in bytes.
const std::size_t kMaxFileName = MIXCommandLayout::FILE_NAME_BYTES;

const char* const kSubcommands[] = {"FIXED",   "RANDOM",   "RESIDUAL", "ESTIMATION", "MISSING",
                                    "TESTS",   "DISPLAY",  "FORMAT",   "CONTRAST",   "MEANS",
                                    "SAVE",    "EXPORT",   "SCALEWEIGHT", "TARGET"};
const char* const kSubcommandList =
    "a subcommand (/FIXED, /RANDOM, /RESIDUAL, /ESTIMATION, /MISSING, /TESTS, /DISPLAY, /FORMAT, /CONTRAST, "
    "/MEANS, /SAVE, /EXPORT, /SCALEWEIGHT or /TARGET)";

bool Repeatable(const std::string& name) { return name == "RANDOM" || name == "CONTRAST" || name == "MEANS"; }

std::string Join(const std::vector<std::string>& items) {
  std::string text;
  for (std::size_t i = 0; i < items.size(); ++i) {
    if (i > 0) text += i + 1 == items.size() ? " or " : ", ";
    text += items[i];
  }
  return text;
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
  fvSaveAt.clear();
  fFitAt = 0;
  fRandomParameters = 0;
  fbResidualGiven = false;
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
    if (sub.fName == "RESIDUAL") fbResidualGiven = true;
  }
  CheckFit(reader);
  CheckSaves(reader);

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
  long randomBlocks = 0;
  const AppToken* firstPastLimit = nullptr;
  while (!reader.AtEnd()) {
    reader.ExpectSymbol('/', "'/' and a subcommand, or the end of the command");
    const AppToken& nameToken = reader.Peek();
    std::string name = reader.IsWord() ? AppCommandReader::Upper(nameToken.fText) : std::string();
    bool known = false;
    for (const char* s : kSubcommands) known = known || name == s;
    if (!known && reader.IsSymbol('/')) {
      reader.FailAt(nameToken, "expected a subcommand name after '/', found a second '/'");
    }
    if (!known) reader.Fail(nameToken, kSubcommandList);
    if (!Repeatable(name)) {
      for (const Subcommand& earlier : subs) {
        if (earlier.fName == name) reader.FailAt(nameToken, "expected /" + name + " only once, found it again");
      }
    }
    if (name == "RANDOM" && ++randomBlocks == kMaxRandomParameters + 1) firstPastLimit = &nameToken;
    Subcommand sub;
    sub.fName = name;
    sub.fNameIndex = reader.GetIndex();
    reader.Next();
    while (!reader.AtSubcommandEnd()) reader.Next();
    subs.push_back(sub);
  }
  // Every block has a parameter at least: too many blocks are refused before
  // any is read.
  if (firstPastLimit != nullptr) RefuseRandomParameters(reader, *firstPastLimit, randomBlocks);
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
  else if (n == "TARGET") ParseTarget(reader);
}

bool AppMixedParser::Contains(const std::vector<int>& list, int value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}
