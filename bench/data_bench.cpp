// The data commands on a large file: COMPUTE, RECODE, SELECT IF, FILTER and
// WRITE, each run as a command of a session, with the time of each and the
// process's memory.
//
//   glmix_data_bench [--cases N] [--keep]
//
// The file (N cases, 1,000,000 by default; an id, a subject, a time, a
// group, a response and a text) is generated in the system's temporary
// folder, with what WRITE writes beside it, and removed at the end unless
// --keep is given.

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <string>

#include "bench_memory.h"
#include "app/AppSession.h"
#include "host/data/ZORV_Dataset.h"

namespace {

using Clock = std::chrono::steady_clock;

void WriteCsv(const std::string& path, long cases) {
  std::FILE* out = std::fopen(path.c_str(), "w");
  if (out == nullptr) {
    std::perror(path.c_str());
    std::exit(1);
  }
  std::mt19937_64 random(20240601);
  std::normal_distribution<double> normal(0.0, 1.0);
  std::fputs("id,subject,time,group,y,label\n", out);
  for (long i = 0; i < cases; ++i) {
    const long subject = i / 12 + 1;
    const int time = static_cast<int>(i % 12) + 1;
    std::fprintf(out, "%ld,%ld,%d,%d,%.4f,S%ld\n", i + 1, subject, time, static_cast<int>(subject % 5),
                 10.0 + 2.0 * normal(random), subject % 1000);
  }
  std::fclose(out);
}

}  // namespace

int main(int argc, char** argv) {
  long cases = 1000000;
  bool keep = false;
  for (int i = 1; i < argc; ++i) {
    if (std::strcmp(argv[i], "--cases") == 0 && i + 1 < argc) cases = std::atol(argv[++i]);
    else if (std::strcmp(argv[i], "--keep") == 0) keep = true;
  }
  const std::filesystem::path dir =
      std::filesystem::temp_directory_path() / ("glmix_data_bench-" + std::to_string(::getpid()));
  std::filesystem::create_directories(dir);
  WriteCsv((dir / "data.csv").string(), cases);

  AppOptions options;
  options.fOutputDir = (dir / "out").string();
  AppSession session(options);
  const char* commands[] = {
      "LOAD 'data.csv'.",
      "COMPUTE season = SIN(2 * PI() * time / 12).",
      "COMPUTE logy = LN(y) - MEAN(y, 10) / 2 + IF(group > 2, 1, 0).",
      "COMPUTE tag = CONCAT(label, '-', STRING(time)).",
      "RECODE time (1 THRU 3 = 1) (4 THRU 6 = 2) (7 THRU 9 = 3) (ELSE = 4) INTO quarter.",
      "SELECT IF y > 5.",
      "FILTER BY group.",
      "WRITE 'written.csv'.",
  };
  std::printf("%ld cases\n", cases);
  for (const char* command : commands) {
    const Clock::time_point start = Clock::now();
    session.RunText(command, "bench.gmx", dir.string());
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    std::printf("%-86s %6.2f s   resident %7.1f MiB   peak %7.1f MiB\n", command, seconds, bench::CurrentMiB(), bench::PeakMiB());
    std::fflush(stdout);
  }
  const int status = session.ExitStatus();
  if (status != 0) std::fprintf(stderr, "a command failed\n");
  if (!keep) std::filesystem::remove_all(dir);
  return status;
}
