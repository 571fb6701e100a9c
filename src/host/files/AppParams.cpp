#include "host/files/AppParams.h"

#include <cstdlib>

namespace {

// Part `index` (0 major, 1 minor, 2 patch) of a "major.minor.patch" text.
long VersionPart(const char* version, int index) {
  const char* p = version;
  for (int i = 0; i < index && p != nullptr; ++i) {
    while (*p != '\0' && *p != '.') ++p;
    p = (*p == '.') ? p + 1 : nullptr;
  }
  return p == nullptr ? 0 : std::strtol(p, nullptr, 10);
}

#if defined(__linux__)
const char kPlatform[] = "Linux";
#elif defined(__APPLE__)
const char kPlatform[] = "macOS";
#elif defined(_WIN32)
const char kPlatform[] = "Windows";
#else
const char kPlatform[] = "unknown";
#endif

#if defined(__clang__)
const char kCompiler[] = "clang " __clang_version__;
#elif defined(__GNUC__)
const char kCompiler[] = "g++ " __VERSION__;
#else
const char kCompiler[] = "unknown";
#endif

#ifdef NDEBUG
const char kBuildType[] = "release";
#else
const char kBuildType[] = "debug";
#endif

AppParams MakeAppParams() {
  AppParams params{};
  params.fMajorVersion = VersionPart(GLMIX_VERSION, 0);
  params.fMinorVersion = VersionPart(GLMIX_VERSION, 1);
  params.fPatchVersion = VersionPart(GLMIX_VERSION, 2);
  params.fPointerBits = static_cast<long>(sizeof(void*) * 8);
  params.fpLocalCodePage = "UTF-8";
  params.fpOutputLanguage = "English";
  params.fpPlatform = kPlatform;
  params.fpCompiler = kCompiler;
  params.fpBuildType = kBuildType;
  params.fpApplicationName = "glmixfit";
  params.fpApplicationVersion = GLMIX_VERSION;
  params.fpCopyright = "Copyright (c) the glmixfit authors";
  return params;
}

}  // namespace

const AppParams* GetAppParams() {
  static const AppParams params = MakeAppParams();
  return &params;
}
