#include "base/MIXAssert.h"

#include <cstdio>
#include <cstdlib>

void MIXAssertFailed(const char* text, const char* file, int line) {
  std::fprintf(stderr, "glmixfit: assertion failed: %s (%s:%d)\n", text ? text : "", file ? file : "", line);
  std::fflush(stderr);
  std::abort();
}
