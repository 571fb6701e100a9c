// A whole run: the input is one GLMIXFIT command. The run loads the fixed
// dataset, reads, checks and fits the command with the procedure, shows
// the model viewer, and writes the terminal text, the HTML report and the
// JSON report, all inside a temporary folder of its own.
//
// Limits keep each input small and quick: the input's size; one command,
// and no file name that could lead out of the folder; and a time limit
// after which the run is interrupted the way the user interrupts it, so an
// input that is merely slow ends, and only one that ignores the interrupt
// meets libFuzzer's own -timeout.
#include <stdlib.h>

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <mutex>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "FuzzData.h"
#include "app/AppLexer.h"
#include "app/AppOptions.h"
#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "host/data/ZORV_StopFlag.h"
#include "run/MixDriver.h"

namespace fs = std::filesystem;

namespace {

const std::size_t kMaxInput = 2048;
const std::chrono::seconds kTimeLimit(5);

const fs::path& Folder();

void RemoveFolder() {
  std::error_code ec;
  fs::remove_all(Folder(), ec);
}

// The folder of the run, made once with the data file in it and removed
// when the process ends; the procedure is handed to the session then too.
const fs::path& Folder() {
  // Never destroyed, so that it outlives RemoveFolder.
  static const fs::path* folder = [] {
    std::string pattern = (fs::temp_directory_path() / "glmixfit-fuzz-XXXXXX").string();
    if (mkdtemp(&pattern[0]) == nullptr) abort();
    std::ofstream(fs::path(pattern) / "fuzz.csv") << fuzzdata::CsvText();
    AppProcedureHook::Set(MixDriver);
    atexit(RemoveFolder);
    return new fs::path(pattern);
  }();
  return *folder;
}

// One GLMIXFIT command whose texts are plain file names, if anything.
bool IsOneContainedCommand(const std::string& text) {
  const std::vector<AppCommandText> commands = AppLexer::Split(text);
  if (commands.size() != 1 || commands[0].fName != "GLMIXFIT") return false;
  for (const AppToken& token : commands[0].fvTokens) {
    if (token.fKind != AppToken::STRING) continue;
    if (token.fText.find_first_of("/\\") != std::string::npos || token.fText == "." || token.fText == "..") {
      return false;
    }
  }
  return true;
}

// Everything but the data file goes after each input.
void Empty(const fs::path& folder) {
  std::error_code ec;
  for (const fs::directory_entry& entry : fs::directory_iterator(folder, ec)) {
    if (entry.path().filename() != "fuzz.csv") fs::remove_all(entry.path(), ec);
  }
}

// Raises the stop flag when the time limit passes before it is destroyed,
// and clears it then.
class Watchdog {
 public:
  Watchdog() : fThread([this] { Watch(); }) {}
  ~Watchdog() {
    {
      std::lock_guard<std::mutex> lock(fMutex);
      fbFinished = true;
    }
    fWake.notify_one();
    fThread.join();
    ZORV_StopFlag::Clear();
  }

 private:
  void Watch() {
    std::unique_lock<std::mutex> lock(fMutex);
    if (!fWake.wait_for(lock, kTimeLimit, [this] { return fbFinished; })) ZORV_StopFlag::Raise();
  }

  std::mutex fMutex;
  std::condition_variable fWake;
  bool fbFinished = false;
  std::thread fThread;
};

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size > kMaxInput) return -1;
  const std::string command(reinterpret_cast<const char*>(bytes), size);
  if (!IsOneContainedCommand(command)) return -1;
  const fs::path& folder = Folder();
  AppOptions options;
  options.fOutputDir = (folder / "out").string();
  options.fbHtml = true;
  options.fbJson = true;
  options.fbQuiet = true;
  options.fProgressDelay = 1e9;
  {
    Watchdog watchdog;
    AppSession session(options);
    session.RunText("LOAD 'fuzz.csv'.\n" + command, "fuzz.gmx", folder.string());
    std::ostringstream terminal;
    std::string error;
    session.WriteReports(terminal, error);
  }
  Empty(folder);
  return 0;
}
