#pragma once

// Broken invariants of the procedure. A failed check writes
// "glmixfit: assertion failed: <text> (<file>:<line>)" to standard error and
// aborts the process, in every build type: the checks guard conditions that
// the command parser and the procedure itself guarantee, so a failure is a
// defect and must never pass silently. The text is a literal, usually the
// condition as written, so that a report can be traced to its check.
//
//   MIX_ASSERT(maxIter >= 0, "maxIter >= 0");
[[noreturn]] void MIXAssertFailed(const char* text, const char* file, int line);

#define MIX_ASSERT(condition, text) \
  ((condition) ? static_cast<void>(0) : MIXAssertFailed((text), __FILE__, __LINE__))
