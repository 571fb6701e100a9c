#include "app/AppSession.h"

#include <filesystem>
#include <new>
#include <fstream>
#include <iostream>
#include <sstream>
#include <system_error>

#include "app/AppCommandError.h"
#include "app/AppCommandReader.h"
#include "app/AppDataCommands.h"
#include "app/AppHostCommands.h"
#include "app/AppLexer.h"
#include "app/AppMixedCommand.h"
#include "app/AppMixedMemory.h"
#include "app/AppMixedParser.h"
#include "app/AppModelViewer.h"
#include "app/AppProcedureHook.h"
#include "app/AppScoringPass.h"
#include "base/MixExports.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Progress.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/files/BEPesRepos.h"
#include "host/output/BP_ToFront.h"
#include "host/output/BpError.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/OmSplitLayering.h"
#include "host/render/OmHtmlRenderer.h"
#include "host/render/OmJsonRenderer.h"
#include "host/render/OmTextRenderer.h"

namespace {

std::string Title(const std::string& name) {
  if (name == "LOAD") return "Load";
  if (name == "SET") return "Set";
  if (name == "SPLIT") return "Split File";
  if (name == "WEIGHT") return "Weight";
  if (name == "DEBUG") return "Debug";
  if (name == "GLMIXFIT") return "Mixed Model";
  if (const char* title = AppDataCommands::Title(name)) return title;
  return name.empty() ? std::string("Command") : name;
}

// The command's text as typed, line by line.
void Echo(const std::string& text) {
  std::istringstream lines(text);
  std::string line;
  while (std::getline(lines, line)) {
    if (!line.empty() && line.back() == '\r') line.pop_back();
    BP_ToFrontText(line);
  }
}

// The published blocks point into the session's memory only while the
// procedure runs.
struct Exposure {
  Exposure(std::intptr_t numeric, std::intptr_t character) { exposemix_(numeric, character); }
  ~Exposure() { exposemix_(0, 0); }
};

}  // namespace

AppSession::AppSession(const AppOptions& options) : fOptions(options) {
  // Names in a command file are taken from the file's own folder, so the
  // documents the program names in the output folder need its full path.
  if (!fOptions.fOutputDir.empty()) {
    std::error_code ec;
    const std::filesystem::path absolute = std::filesystem::absolute(fOptions.fOutputDir, ec);
    if (!ec) fOptions.fOutputDir = absolute.lexically_normal().string();
  }
  ZORV_Session& session = ZORV_Session::Current();
  session.SetVariableDisplay(ZORV_Session::LABELS, ZORV_Session::LABELS);
  session.SetValueDisplay(ZORV_Session::LABELS, ZORV_Session::LABELS);
  // Scratch and debug files of the procedure go beside the reports.
  session.SetWritableDir(fOptions.fOutputDir.empty() ? std::string(".") : fOptions.fOutputDir);
  AppHostCommands::ResetDebugSwitches();
  fDataContext.fOutputDir = fOptions.fOutputDir;
}

// The switches are the process's; a run leaves them as it found them.
AppSession::~AppSession() { AppHostCommands::ResetDebugSwitches(); }

namespace {

// Reads at most AppSession::kMaxCommandFileBytes and one byte more, so that
// a device or an endless pipe cannot fill the memory. False when the stream
// fails or an interrupt stops the reading (a read waiting on a terminal or
// a pipe returns when the interrupt comes).
bool ReadBounded(std::istream& in, std::string& text) {
  text.clear();
  char block[65536];
  while (text.size() <= AppSession::kMaxCommandFileBytes) {
    if (ZORV_StopFlag::IsRaised()) return false;
    in.read(block, sizeof block);
    text.append(block, static_cast<std::size_t>(in.gcount()));
    if (!in) return in.eof();
  }
  return true;
}

}  // namespace

bool AppSession::RunFile(const std::string& path) {
  const std::string origin = path == "-" ? std::string("<stdin>") : path;
  std::string text;
  std::string baseDir;
  auto refuse = [&](const std::string& why) {
    fDocument.fRoot.AddMessage(OmMessage::ERROR, origin + ": " + why);
    fbAnyError = true;
    return false;
  };
  bool read = false;
  if (path == "-") {
    read = ReadBounded(std::cin, text);
  } else {
    std::error_code ec;
    if (std::filesystem::is_directory(path, ec)) return refuse("the command file is a folder.");
    const std::filesystem::file_status status = std::filesystem::status(path, ec);
    if (!ec && (std::filesystem::is_character_file(status) || std::filesystem::is_block_file(status))) {
      return refuse("the command file is a device, not a file of commands.");
    }
    std::ifstream in(path, std::ios::binary);
    if (!in) return refuse("the command file cannot be read.");
    read = ReadBounded(in, text);
    // Absolute, so that names taken from it are not taken from it twice
    // when the host resolves them again.
    const std::filesystem::path folder = std::filesystem::path(path).parent_path();
    const std::filesystem::path absolute = std::filesystem::absolute(folder.empty() ? "." : folder, ec);
    baseDir = ec ? folder.string() : absolute.lexically_normal().string();
  }
  if (ZORV_StopFlag::IsRaised()) {
    fbStopped = true;
    return refuse("the reading of the command file was interrupted; no command was run.");
  }
  if (!read) return refuse("the command file cannot be read.");
  if (text.size() > kMaxCommandFileBytes) {
    return refuse("the command file is larger than " + std::to_string(kMaxCommandFileBytes / (1024 * 1024)) +
                  " MB, the most a command file may hold.");
  }
  if (path != "-") fDataContext.fvReadFiles.push_back(path);
  RunText(text, origin, baseDir);
  return true;
}

void AppSession::RunText(const std::string& text, const std::string& origin, const std::string& baseDir) {
  std::vector<AppCommandText> commands = AppLexer::Split(text);
  for (std::size_t i = 0; i < commands.size(); ++i) {
    if (ZORV_StopFlag::IsRaised()) fbStopped = true;
    if (fbStopped) {
      std::size_t left = commands.size() - i;
      fDocument.fRoot.AddMessage(OmMessage::ERROR, "The run was interrupted; " + std::to_string(left) +
                                                       (left == 1 ? " command was" : " commands were") + " not run.");
      fbAnyError = true;
      return;
    }
    RunCommand(commands[i], origin, baseDir);
  }
}

void AppSession::RunCommand(const AppCommandText& command, const std::string& origin, const std::string& baseDir) {
  ZORV_Session::Current().BeginCommand();
  // Files that the host opens for the command (ExtNameStr) are found where
  // the names the parser resolved are.
  ZORV_Session::Current().SetCommandDir(baseDir);
  std::string title = Title(command.fName);
  OmHeading& heading = fDocument.fRoot.AddHeading(title);
  ZORV_Progress::Begin(title);
  std::size_t echoed = 0;
  {
    BpProcedure procedure(heading, title, command.fName == "GLMIXFIT" ? "Mixed" : "Global");
    Echo(command.fText + ".");
    echoed = heading.fvItems.size();
    AppCommandReader reader(command, origin);
    try {
      Dispatch(reader, procedure, baseDir);
    } catch (const AppCommandError& e) {
      BpError(BpString(e.what(), false), BpErrorShowOutput, BpErrorLevelError);
    } catch (const std::bad_alloc&) {
      AppCommandError failure(origin, command.fLine, command.fColumn,
                              "the command needs more memory than there is; it was not run to its end");
      BpError(BpString(failure.what(), false), BpErrorShowOutput, BpErrorLevelError);
    } catch (const std::exception& e) {
      AppCommandError failure(origin, command.fLine, command.fColumn, std::string("the command failed: ") + e.what());
      BpError(BpString(failure.what(), false), BpErrorShowOutput, BpErrorLevelError);
    }
  }
  // The command's tables are complete once its procedure is gone: the
  // tables of its splits can now be shown together.
  OmSplitLayering().Layer(heading);
  ZORV_Progress::End();
  if (ZORV_Session::Current().IsFatal()) fbAnyError = true;
  if (ZORV_StopFlag::IsRaised()) ShowInterrupted(heading, echoed);
}

// What an interrupted command made is incomplete: of its output only the
// echo of its text stays, followed by the reason.
void AppSession::ShowInterrupted(OmHeading& heading, std::size_t echoed) {
  fbStopped = true;
  fbAnyError = true;
  if (heading.fvItems.size() > echoed) {
    heading.fvItems.erase(heading.fvItems.begin() + static_cast<std::ptrdiff_t>(echoed), heading.fvItems.end());
  }
  heading.AddMessage(OmMessage::ERROR, kInterruptedCommand);
}

void AppSession::Dispatch(AppCommandReader& reader, BpProcedure& procedure, const std::string& baseDir) {
  const AppToken& first = reader.Peek();
  const std::string name = reader.GetCommand().fName;
  if (name == "LOAD") {
    std::string summary;
    std::vector<std::string> files;
    std::unique_ptr<ZORV_Dataset> data = AppHostCommands::Load(reader, baseDir, summary, files);
    fpData = std::move(data);
    fDataContext.fvReadFiles.insert(fDataContext.fvReadFiles.end(), files.begin(), files.end());
    BP_ToFront(1, BP_Character(summary));
  } else if (name == "SET") {
    AppHostCommands::Set(reader);
  } else if (name == "SPLIT") {
    AppHostCommands::Split(reader, fpData.get());
  } else if (name == "WEIGHT") {
    AppHostCommands::Weight(reader, fpData.get());
  } else if (name == "DEBUG") {
    std::string summary;
    AppHostCommands::Debug(reader, summary);
    BP_ToFront(1, BP_Character(summary));
  } else if (name == "GLMIXFIT") {
    RunMixed(reader, procedure, baseDir);
  } else if (AppDataCommands::Title(name) != nullptr) {
    fDataContext.fpData = fpData.get();
    fDataContext.fBaseDir = baseDir;
    AppDataCommands::Run(reader, fDataContext);
  } else {
    reader.Fail(first, "a command (LOAD, SET, SPLIT, WEIGHT, DEBUG, " + AppDataCommands::Names() + " or GLMIXFIT)");
  }
}

void AppSession::RunMixed(AppCommandReader& reader, BpProcedure& procedure, const std::string& baseDir) {
  const int number = ++fMixedCount;
  if (!fpData) {
    reader.FailAt(reader.GetCommand().fvTokens.front(),
                  "expected data to work on, found none: LOAD a data file before GLMIXFIT");
  }
  AppMixedParser parser(*fpData, baseDir, fOptions.fOutputDir, number);
  parser.SetReadFiles(fDataContext.fvReadFiles);
  AppMixedCommand command = parser.Parse(reader);
  AppMixedMemory::Write(command, *fpData, fMemory);
  procedure.SetDataSource(fpData.get());

  Exposure exposure(fMemory.GetNumericAddress(), fMemory.GetCharacterAddress());
  AppProcedureHook::Procedure hook = AppProcedureHook::Get();
  if (hook == nullptr) {
    BpError(BpString("The command was read and checked, but model fitting is not available in this version of "
                     "glmixfit: no model was fitted.",
                     false),
            BpErrorShowOutput, BpErrorLevelNote);
    return;
  }
  // The documents the command names by default go to the output folder.
  std::error_code ec;
  if (!fOptions.fOutputDir.empty()) std::filesystem::create_directories(fOptions.fOutputDir, ec);
  if (ec) {
    reader.FailAt(reader.GetCommand().fvTokens.front(),
                  "the output folder '" + fOptions.fOutputDir + "' cannot be created: " + ec.message());
  }
  // The repository then holds only what this command's fits hand over.
  BEPesRepos::BEPesClear();
  {
    // The fit's saved variables join the data (the host's pass after the run).
    AppScoringPass::Installed scoring;
    hook(fMemory.GetCommand(), procedure, *fpData);
  }
  if (ZORV_StopFlag::IsRaised()) return;
  AppModelViewer::Run(procedure, *fpData);
}

bool AppSession::WriteReports(std::ostream& terminal, std::string& error) const {
  if (fOptions.fbText) terminal << OmTextRenderer(fOptions.fWidth).Render(fDocument) << std::flush;
  if (!fOptions.fbHtml && !fOptions.fbJson) return true;

  std::error_code ec;
  std::filesystem::create_directories(fOptions.fOutputDir, ec);
  if (ec) {
    error = "cannot create the output folder '" + fOptions.fOutputDir + "': " + ec.message();
    return false;
  }
  const std::filesystem::path dir(fOptions.fOutputDir);
  if (fOptions.fbHtml && !OmHtmlRenderer().WriteFile(fDocument, (dir / "report.html").string(), error)) return false;
  if (fOptions.fbJson && !OmJsonRenderer().WriteFile(fDocument, (dir / "report.json").string(), error)) return false;
  return true;
}
