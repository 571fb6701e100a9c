#pragma once

#include <cstddef>

// Facts about the running application. Documents that name their producer
// (a saved model file, for one) take the last three strings. The record is
// read by byte position as well as by name, so its layout is fixed: eight
// bytes a field on a 64-bit build.
struct AppParams {
  long fMajorVersion;
  long fMinorVersion;
  long fPatchVersion;
  long fPointerBits;
  const char* fpLocalCodePage;   // "UTF-8"
  const char* fpOutputLanguage;  // "English"
  const char* fpPlatform;        // operating system the build targets
  const char* fpCompiler;        // compiler and its version
  const char* fpBuildType;       // "debug" or "release"
  const char* fpApplicationName;     // "glmixfit"
  const char* fpApplicationVersion;  // "0.1.0"
  const char* fpCopyright;
};

static_assert(sizeof(void*) != 8 || offsetof(AppParams, fpApplicationName) == 72,
              "application name at byte 72");
static_assert(sizeof(void*) != 8 || offsetof(AppParams, fpApplicationVersion) == 80,
              "application version at byte 80");
static_assert(sizeof(void*) != 8 || offsetof(AppParams, fpCopyright) == 88, "copyright at byte 88");

// The application's record; it lives as long as the process.
const AppParams* GetAppParams();
