#include "app/AppProgressLine.h"

#include <sys/ioctl.h>
#include <unistd.h>

#include <cstdio>
#include <ostream>

namespace {

// Between two drawings of the line, at least.
const double kRedrawSeconds = 0.1;

std::string Elapsed(double seconds) {
  const long total = static_cast<long>(seconds);
  char text[32];
  if (total >= 3600)
    std::snprintf(text, sizeof text, "%ld:%02ld:%02ld", total / 3600, total / 60 % 60, total % 60);
  else
    std::snprintf(text, sizeof text, "%ld:%02ld", total / 60, total % 60);
  return text;
}

// At most `width` characters, never cutting one in two.
std::string Cut(const std::string& text, int width) {
  std::size_t at = 0;
  for (int characters = 0; at < text.size() && characters < width; ++characters) {
    ++at;
    while (at < text.size() && (static_cast<unsigned char>(text[at]) & 0xC0) == 0x80) ++at;
  }
  return text.substr(0, at);
}

}  // namespace

AppProgressLine::AppProgressLine(std::ostream& out, double delaySeconds, int width)
    : fOut(out), fDelay(delaySeconds), fWidth(width) {}

AppProgressLine::~AppProgressLine() { Finish(); }

std::string AppProgressLine::Describe(const ZORV_Progress::State& state, double elapsedSeconds) {
  std::string text = "glmixfit: " + state.fTask;
  if (state.fSplits > 0) text += ", split " + std::to_string(state.fSplit) + " of " + std::to_string(state.fSplits);
  if (state.fIteration >= 0) {
    char criterion[64];
    std::snprintf(criterion, sizeof criterion, "%.3f", state.fCriterion);
    text += ", iteration " + std::to_string(state.fIteration) + ", -2LL " + criterion;
  } else if (state.fFraction >= 0.0) {
    text += ", " + std::to_string(static_cast<int>(state.fFraction * 100.0)) + "%";
  }
  return text + " (" + Elapsed(elapsedSeconds) + ")";
}

void AppProgressLine::Update(const ZORV_Progress::State& state) {
  const Clock::time_point now = Clock::now();
  if (!fbActive) {
    fbActive = true;
    fStart = now;
  }
  const double running = std::chrono::duration<double>(now - fStart).count();
  if (running < fDelay) return;
  if (fbShown && std::chrono::duration<double>(now - fLastDraw).count() < kRedrawSeconds) return;
  // The last column stays free, so that the terminal never wraps the line.
  fOut << '\r' << Cut(Describe(state, running), fWidth - 1) << "\033[K" << std::flush;
  fbShown = true;
  fLastDraw = now;
}

void AppProgressLine::Finish() {
  if (fbShown) fOut << "\r\033[K" << std::flush;
  fbShown = false;
  fbActive = false;
}

bool AppProgressLine::Wanted(int fileDescriptor, bool quiet) { return !quiet && ::isatty(fileDescriptor) == 1; }

int AppProgressLine::TerminalWidth(int fileDescriptor) {
  struct winsize size {};
  if (::ioctl(fileDescriptor, TIOCGWINSZ, &size) == 0 && size.ws_col > 0) return size.ws_col;
  return 80;
}
