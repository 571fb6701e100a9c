#include "app/AppWriteCommand.h"

#include <filesystem>

#include "app/AppCommandReader.h"
#include "app/AppDataCommands.h"
#include "app/AppDataContext.h"
#include "app/AppHostCommands.h"
#include "app/AppVariableReader.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Progress.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/files/AtomicFileWriter.h"
#include "host/io/CsvWriter.h"
#include "host/io/DataDictionary.h"
#include "host/io/DataFileLoader.h"
#include "host/io/StatFileReader.h"

namespace fs = std::filesystem;

namespace {

bool SameFile(const std::string& a, const std::string& b) {
  std::error_code ec;
  if (fs::exists(a, ec) && fs::exists(b, ec)) return fs::equivalent(a, b, ec);
  return fs::weakly_canonical(a, ec) == fs::weakly_canonical(b, ec);
}

}  // namespace

void AppWriteCommand::CheckTarget(const AppCommandReader& reader, const AppToken& at, const std::string& path,
                                  const AppDataContext& context) {
  for (const std::string& read : context.fvReadFiles) {
    if (SameFile(path, read)) {
      reader.FailAt(at, "expected a file that this run does not read, found " + path +
                            ", which is the command file or a loaded file");
    }
  }
  std::error_code ec;
  const fs::file_status status = fs::status(path, ec);
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    reader.FailAt(at, "expected a file to write, found " + path +
                          (fs::is_directory(status) ? ", which is a folder" : ", which is not a regular file"));
  }
}

void AppWriteCommand::Run(AppCommandReader& reader, AppDataContext& context) {
  const AppToken& command = reader.Peek();
  reader.ExpectKeyword("WRITE", "WRITE");
  const AppToken* fileToken = &command;
  std::string path;
  if (reader.IsString()) {
    fileToken = &reader.Peek();
    const std::string name = reader.ExpectString("the data file's name in quotes");
    if (name.empty()) reader.Fail(*fileToken, "the data file's name in quotes");
    path = AppHostCommands::ResolvePath(context.fBaseDir, name);
  }
  const AppToken* dictionaryToken = fileToken;
  std::string dictionary;
  if (!reader.AtEnd()) {
    if (!reader.IsKeyword("DICTIONARY") || !reader.IsSymbol('=', 1)) {
      reader.Fail(reader.Peek(), path.empty() ? "the file's name in quotes, DICTIONARY= or the end of the command"
                                              : "DICTIONARY= or the end of the command");
    }
    reader.Next();
    reader.Next();
    dictionaryToken = &reader.Peek();
    const std::string name = reader.ExpectString("the dictionary file's name in quotes");
    if (name.empty()) reader.Fail(*dictionaryToken, "the dictionary file's name in quotes");
    dictionary = AppHostCommands::ResolvePath(context.fBaseDir, name);
    reader.ExpectEnd("the end of the command");
  }
  AppVariableReader::NeedData(reader, context.fpData);

  StatFileReader::Kind kind = StatFileReader::DTA;
  if (!path.empty() && StatFileReader::KindFromPath(path, kind)) {
    reader.FailAt(*fileToken, "expected the name of a CSV file, found " + path + " (WRITE writes CSV files)");
  }
  if (path.empty()) {
    std::error_code ec;
    if (!context.fOutputDir.empty()) fs::create_directories(context.fOutputDir, ec);
    const std::string name = "data-" + std::to_string(++context.fUnnamedWrites) + ".csv";
    path = context.fOutputDir.empty() ? name : (fs::path(context.fOutputDir) / name).string();
  }
  if (dictionary.empty()) dictionary = DataFileLoader::DictionaryPathFor(path);
  if (SameFile(path, dictionary)) {
    reader.FailAt(*dictionaryToken, "expected a dictionary file apart from the data file, found " + dictionary);
  }
  CheckTarget(reader, *fileToken, path, context);
  CheckTarget(reader, *dictionaryToken, dictionary, context);

  const ZORV_Dataset& data = *context.fpData;
  AtomicFileWriter csv(path);
  AtomicFileWriter json(dictionary);
  if (!csv.IsOpen()) reader.FailAt(*fileToken, "the data cannot be written: " + csv.GetError());
  if (!json.IsOpen()) reader.FailAt(*dictionaryToken, "the dictionary cannot be written: " + json.GetError());
  const double cases = static_cast<double>(data.GetCaseCount());
  const bool complete = CsvWriter::Write(data, csv.Stream(), [cases](long written) {
    if (cases > 0) ZORV_Progress::Fraction(static_cast<double>(written) / cases);
    return !ZORV_StopFlag::IsRaised();
  });
  AppDataCommands::StopIfInterrupted(reader);
  if (!complete) reader.FailAt(*fileToken, "the data cannot be written to " + path);
  json.Stream() << DataDictionary::Describe(data);
  if (!csv.Commit()) reader.FailAt(*fileToken, "the data cannot be written: " + csv.GetError());
  if (!json.Commit()) reader.FailAt(*dictionaryToken, "the dictionary cannot be written: " + json.GetError());
  AppDataCommands::Say(AppDataCommands::Count(data.GetCaseCount(), "case", "cases") + " and " +
                       AppDataCommands::Count(data.ColumnCount(), "variable", "variables") + " written to " + path +
                       ", their dictionary to " + dictionary + ".");
}
