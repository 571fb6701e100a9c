#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "app/AppMixedCommand.h"

class AppCommandReader;
class ZORV_Dataset;
struct AppToken;

// Reads and checks a GLMIXFIT command against the active dataset.
//
// It checks what the command language can know: the form of the command,
// keyword values and their ranges, that variables exist, that the terms use
// only factors (BY) and covariates (WITH), that the target and covariates
// are numeric, that no variable is both a factor and a covariate, and that a
// subcommand that may stand once does. What only the fit can tell is left to
// the procedure.
//
// The implementation is in one file per family of subcommands:
// AppMixedParser.cpp (the command, its variables and the readers of values),
// AppMixedParserModel.cpp (terms, /FIXED, /RANDOM, /RESIDUAL),
// AppMixedParserSettings.cpp (/ESTIMATION, /MISSING, /TESTS, /DISPLAY,
// /FORMAT, /SCALEWEIGHT), AppMixedParserContrastsAndMeans.cpp (/CONTRAST,
// /MEANS), AppMixedParserOutputs.cpp (/SAVE, /EXPORT) and
// AppMixedParserTarget.cpp (/TARGET and the fitting of a generalized model).
class AppMixedParser {
 public:
  // `baseDir` is the folder that relative file names are taken from;
  // `outputDir` the folder that gets the documents the command does not
  // name; `commandNumber` numbers the GLMIXFIT commands of a run from 1 and
  // keeps their documents apart.
  AppMixedParser(const ZORV_Dataset& data, const std::string& baseDir, const std::string& outputDir,
                 int commandNumber);

  // The files that no document of the command may overwrite: the command
  // file and the data and dictionary files loaded.
  void SetReadFiles(const std::vector<std::string>& files) { fvReadFiles = files; }

  // Reads the whole command; throws AppCommandError at the first mistake.
  AppMixedCommand Parse(AppCommandReader& reader);

 private:
  struct Subcommand {
    std::string fName;        // upper case
    std::size_t fNameIndex;   // token index of the name
  };

  void ParseHeader(AppCommandReader& reader);
  std::vector<int> ParseVariableList(AppCommandReader& reader, const std::string& what);
  std::vector<Subcommand> FindSubcommands(AppCommandReader& reader);
  void ParseSubcommand(AppCommandReader& reader, const Subcommand& sub);

  void ParseFixed(AppCommandReader& reader);
  void ParseRandom(AppCommandReader& reader);
  void ParseResidual(AppCommandReader& reader);
  void ParseEstimation(AppCommandReader& reader);
  void ParseMissing(AppCommandReader& reader);
  void ParseTests(AppCommandReader& reader);
  void ParseDisplay(AppCommandReader& reader);
  void ParseFormat(AppCommandReader& reader);
  void ParseContrast(AppCommandReader& reader);
  void ParseMeans(AppCommandReader& reader);
  void ParseSave(AppCommandReader& reader);
  void ParseExport(AppCommandReader& reader);
  void ParseScaleWeight(AppCommandReader& reader);
  void ParseTarget(AppCommandReader& reader);

  // The generalized model: the parts of /TARGET and FIT= of /ESTIMATION,
  // and the checks between them and the rest of the command.
  void ReadLink(AppCommandReader& reader);
  void ReadTrials(AppCommandReader& reader);
  void ReadTargetReference(AppCommandReader& reader);
  void ReadOffset(AppCommandReader& reader);
  void CheckTarget(AppCommandReader& reader, std::size_t distributionAt, std::size_t linkAt, std::size_t trialsAt,
                   std::size_t referenceAt);
  void ReadFit(AppCommandReader& reader);
  void CheckFit(AppCommandReader& reader);
  // The values to save that the target has: no Pearson residual of a linear
  // model, categories of binomial and multinomial targets only, and of a
  // multinomial target no single mean.
  void CheckSaves(AppCommandReader& reader);
  bool IsLinearTarget() const;
  bool HasOrderedTarget() const;

  // A term of factors and covariates: A, A*B, A(B), X*X, X(A), A*B(C(D)).
  AppMixedCommand::TermData ParseTerm(AppCommandReader& reader);
  AppMixedCommand::TermData InterceptTerm() const;
  bool IsTermStart(AppCommandReader& reader) const;
  // The position of a term in a list, -1 when it is not there.
  static int FindTerm(const std::vector<AppMixedCommand::TermData>& terms, const AppMixedCommand::TermData& term);

  // Reads a setting's "KEYWORD =" and returns the keyword, upper case;
  // fails when the subcommand had it already.
  std::string ReadSettingName(AppCommandReader& reader, std::vector<std::string>& seen, const std::string& allowed);
  // One of `choices` (upper case), as its index.
  int ReadChoice(AppCommandReader& reader, const std::vector<std::string>& choices, const std::string& expected);
  bool ReadYesNo(AppCommandReader& reader);
  int ReadCovariance(AppCommandReader& reader, bool residual);
  // Any variable of the dataset, as its column.
  int ReadVariable(AppCommandReader& reader, const std::string& expected);
  // var*var*...; each variable once.
  std::vector<int> ReadCrossing(AppCommandReader& reader, const std::string& expected);
  void CheckSubject(AppCommandReader& reader, const AppToken& at, int column);
  std::string ReadFileName(AppCommandReader& reader);
  // A file name to write a document to: not a folder, pipe or device, not a
  // file the run read, not another document of the command.
  std::string ReadDocumentName(AppCommandReader& reader);
  std::string DefaultFile(const std::string& name) const;
  std::vector<double> ReadValues(AppCommandReader& reader, const std::string& expected);

  // The memory an unstructured covariance matrix may take, in bytes, and
  // the most levels counted for one.
  static constexpr double kMaxStructureBytes = 2.0 * 1024.0 * 1024.0 * 1024.0;
  static constexpr long kMaxStructureLevels = 100000;
  // The most covariance parameters the random blocks may have: the fit keeps
  // matrices over every pair of the parameters and decomposes one at an
  // iteration.
  static constexpr long kMaxRandomParameters = 2000;
  // Refuses, at `at`, random blocks with at least `parameters` covariance
  // parameters.
  [[noreturn]] static void RefuseRandomParameters(AppCommandReader& reader, const AppToken& at, long parameters);
  // The combinations of values of `columns` present in the data, cases with
  // a missing value left out.
  long DistinctCombinations(const std::vector<int>& columns) const;
  // The columns of a random block's design: for each term, the product of
  // its factors' levels (at least kMaxStructureLevels + 1 once past it).
  long RandomBlockLevels(const AppMixedCommand::RandomBlockData& block) const;
  // Refuses, at `at`, an unstructured matrix over `levels` levels of `over`
  // whose fit would not fit in kMaxStructureBytes.
  void CheckStructureSize(AppCommandReader& reader, const AppToken& at, int structure, long levels,
                          const std::string& over) const;

  static bool Contains(const std::vector<int>& list, int value);
  int FactorPlace(int column) const;
  int CovariatePlace(int column) const;
  bool IsNumeric(int column) const;
  std::string VariableName(int column) const;

  const ZORV_Dataset& fData;
  std::vector<std::string> fvReadFiles;
  std::string fBaseDir;
  std::string fOutputDir;
  int fCommandNumber;
  AppMixedCommand fCommand;
  std::vector<std::string> fvSaveNames;
  std::vector<std::size_t> fvSaveAt;  // token index of each value to save
  long fRandomParameters = 0;  // of the random blocks read, at least
  std::size_t fFitAt = 0;  // token index of the FIT= value, 0 none
  bool fbResidualGiven = false;
};
