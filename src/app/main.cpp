#include <iostream>

#include "app/AppOptions.h"
#include "app/AppSession.h"

int main(int argc, char** argv) {
  AppOptions options;
  std::string error;
  if (!AppOptions::Parse(argc, argv, options, error)) {
    std::cerr << "glmixfit: " << error << "\n\n" << AppOptions::Usage();
    return 2;
  }
  if (options.fbHelp) {
    std::cout << AppOptions::Usage();
    return 0;
  }
  if (options.fbVersion) {
    std::cout << "glmixfit " << GLMIX_VERSION << "\n";
    return 0;
  }
  AppSession session(options);
  bool read = session.RunFile(options.fCommandFile);
  if (!session.WriteReports(std::cout, error)) {
    std::cerr << "glmixfit: " << error << "\n";
    return 2;
  }
  if (!read) return 2;
  return session.ExitStatus();
}
