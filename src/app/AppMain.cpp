#include "app/AppMain.h"

#include <ostream>

#include "app/AppHelp.h"
#include "app/AppOptions.h"
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
  AppSession session(options);
  bool read = session.RunFile(options.fCommandFile);
  if (!session.WriteReports(out, error)) {
    err << "glmixfit: " << error << "\n";
    return 2;
  }
  if (!read) {
    if (!options.fbText) err << "glmixfit: " << options.fCommandFile << ": the command file cannot be read\n";
    return 2;
  }
  return session.ExitStatus();
}
