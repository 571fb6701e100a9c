#include "app/AppMain.h"

#include <unistd.h>

#include <ostream>

#include "app/AppHelp.h"
#include "app/AppOptions.h"
#include "app/AppProgressLine.h"
#include "app/AppSession.h"

int AppMain::Run(int argc, const char* const* argv, std::ostream& out, std::ostream& err) {
  AppOptions options;
  std::string error;
  if (!AppOptions::Parse(argc, argv, options, error)) {
    err << "glmixfit: " << error << "\n\n" << AppOptions::Usage();
    return 2;
  }
  if (options.fbHelp) {
    out << AppHelp::Text();
    return 0;
  }
  if (options.fbVersion) {
    out << "glmixfit " << GLMIX_VERSION << "\n";
    return 0;
  }
  return Run(options, out, err);
}

namespace {

// The status line observes the host's progress while the session runs.
class ProgressShown {
 public:
  ProgressShown(const AppOptions& options, std::ostream& err)
      : fLine(err, options.fProgressDelay, AppProgressLine::TerminalWidth(STDERR_FILENO)) {
    if (AppProgressLine::Wanted(STDERR_FILENO, options.fbQuiet)) ZORV_Progress::SetObserver(&fLine);
  }
  ~ProgressShown() { ZORV_Progress::SetObserver(nullptr); }
  ProgressShown(const ProgressShown&) = delete;
  ProgressShown& operator=(const ProgressShown&) = delete;

 private:
  AppProgressLine fLine;
};

}  // namespace

int AppMain::Run(const AppOptions& options, std::ostream& out, std::ostream& err) {
  std::string error;
  ProgressShown progress(options, err);
  AppSession session(options);
  bool read = session.RunFile(options.fCommandFile);
  if (!session.WriteReports(out, error)) {
    err << "glmixfit: " << error << "\n";
    return 2;
  }
  if (session.WasInterrupted()) return session.ExitStatus();
  if (!read) {
    if (!options.fbText) err << "glmixfit: " << options.fCommandFile << ": the command file cannot be read\n";
    return 2;
  }
  return session.ExitStatus();
}
