#pragma once

#include <sys/resource.h>
#include <unistd.h>

#include <fstream>

// The process's memory, for the benchmarks' reports.
namespace bench {

// The most the process has held resident so far, in MiB.
inline double PeakMiB() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_maxrss) / 1024.0;  // kilobytes on Linux
}

// What the process holds resident now, in MiB.
inline double CurrentMiB() {
  std::ifstream statm("/proc/self/statm");
  long pages = 0;
  long resident = 0;
  statm >> pages >> resident;
  return static_cast<double>(resident) * static_cast<double>(sysconf(_SC_PAGESIZE)) / (1024.0 * 1024.0);
}

}  // namespace bench
