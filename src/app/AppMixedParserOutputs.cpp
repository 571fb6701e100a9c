#include "app/AppMixedParser.h"

#include <filesystem>

#include "app/AppCommandReader.h"
#include "app/AppHostCommands.h"
#include "base/MIXCommandLayout.h"
#include "host/data/ZORV_Dataset.h"

// What a fit leaves behind: /SAVE and /EXPORT.

namespace {

// The longest name of a saved variable, in bytes.
const std::size_t kMaxSaveName = MIXCommandLayout::SAVE_NAME_BYTES;
// The most values one command saves: the slots of the parser's memory.
const std::size_t kMaxSaves = MIXCommandLayout::SAVE_SLOTS;

struct SaveKind {
  const char* fKeyword;
  int fKind;
  const char* fDefaultName;
};
const SaveKind kSaveKinds[] = {{"FIXEDPREDICTED", 0, "FixedPredicted"},   {"PREDICTED", 1, "Predicted"},
                               {"RESIDUAL", 2, "Residual"},               {"FIXEDPREDICTEDSE", 3, "FixedPredictedSE"},
                               {"PREDICTEDSE", 4, "PredictedSE"},         {"FIXEDPREDICTEDDF", 5, "FixedPredictedDF"},
                               {"PREDICTEDDF", 6, "PredictedDF"},         {"LINEARPREDICTOR", 7, "LinearPredictor"},
                               {"PEARSONRESIDUAL", 8, "PearsonResidual"}, {"PREDICTEDCATEGORY", 9, "PredictedCategory"}};

}  // namespace

void AppMixedParser::ParseSave(AppCommandReader& reader) {
  std::vector<std::string> keywords;
  for (const SaveKind& k : kSaveKinds) keywords.push_back(k.fKeyword);
  const std::string expected = "a value to save (PREDICTED, PREDICTEDSE, PREDICTEDDF, FIXEDPREDICTED, "
                               "FIXEDPREDICTEDSE, FIXEDPREDICTEDDF, RESIDUAL, LINEARPREDICTOR, PEARSONRESIDUAL or "
                               "PREDICTEDCATEGORY)";
  if (reader.AtSubcommandEnd()) reader.Fail(reader.Peek(), expected);
  while (!reader.AtSubcommandEnd()) {
    const AppToken& t = reader.Peek();
    if (fCommand.fvSaves.size() == kMaxSaves) {
      reader.FailAt(t, "expected at most " + std::to_string(kMaxSaves) + " values to save in one command, found " +
                           t.fText + " beyond them");
    }
    fvSaveAt.push_back(reader.GetIndex());
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

namespace {

// Whether two names stand for the same file: the same text once resolved,
// or, when both exist, the same file under two names.
bool SameFile(const std::string& a, const std::string& b) {
  if (std::filesystem::path(a).lexically_normal() == std::filesystem::path(b).lexically_normal()) return true;
  std::error_code ec;
  return std::filesystem::equivalent(a, b, ec) && !ec;
}

}  // namespace

std::string AppMixedParser::ReadDocumentName(AppCommandReader& reader) {
  const AppToken& token = reader.Peek();
  const std::string name = ReadFileName(reader);
  const std::string what = AppHostCommands::NotRegularFile(name);
  if (!what.empty()) reader.FailAt(token, "expected a file to write the document to, found " + name + ", " + what);
  for (const std::string& read : fvReadFiles) {
    if (SameFile(name, read)) {
      reader.FailAt(token, "the document would overwrite " + read + ", which the run reads; give another name");
    }
  }
  for (const std::string* other : {&fCommand.fModelFile, &fCommand.fStatXmlFile, &fCommand.fStatJsonFile}) {
    if (!other->empty() && SameFile(name, *other)) {
      reader.FailAt(token, "the document would overwrite " + *other +
                               ", another document of the command; give each its own name");
    }
  }
  return name;
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
      fCommand.fModelFile = ReadDocumentName(reader);
      fCommand.fFileKind = name == "MODEL" ? AppMixedCommand::FILE_MODEL_USER : AppMixedCommand::FILE_PARAMETERS_USER;
    } else if (name == "STATXML") {
      fCommand.fStatXmlFile = ReadDocumentName(reader);
    } else if (name == "STATJSON") {
      fCommand.fStatJsonFile = ReadDocumentName(reader);
    } else {
      reader.SetIndex(at);
      reader.Fail(reader.Peek(), allowed);
    }
  }
}
