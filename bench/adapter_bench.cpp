// Loading a large CSV file and walking it through the record adapter:
// one full pass, then the sorted record file, in memory and spilled to
// disk. Prints the time of each step and the process's memory.
//
//   glmix_adapter_bench [--cases N] [--csv PATH] [--keep] [--spill-mib M]
//
// Without --csv the file is generated (10 variables, N cases, 1,000,000 by
// default) in the system's temporary folder and removed at the end unless
// --keep is given.

#include <sys/resource.h>
#include <unistd.h>

#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <random>
#include <string>
#include <vector>

#include "bench_memory.h"
#include "host/adapter/ACADataFileIter.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ZORV_Dataset.h"
#include "host/io/DataFileError.h"
#include "host/io/DataFileLoader.h"

namespace {

using Clock = std::chrono::steady_clock;

double Seconds(Clock::time_point since) {
  return std::chrono::duration<double>(Clock::now() - since).count();
}

void Report(const std::string& step, double seconds) {
  std::printf("%-44s %7.2f s   resident %8.1f MiB   peak %8.1f MiB\n", step.c_str(), seconds, bench::CurrentMiB(),
              bench::PeakMiB());
  std::fflush(stdout);
}

// id, subject, center, time, treat, y, x1, x2, x3, w. Half a percent of y
// is empty; one case in a hundred has weight 0.
void WriteCsv(const std::string& path, long cases) {
  std::FILE* out = std::fopen(path.c_str(), "w");
  if (out == nullptr) {
    std::perror(path.c_str());
    std::exit(1);
  }
  std::mt19937_64 random(20240501);
  std::normal_distribution<double> normal(0.0, 1.0);
  std::uniform_int_distribution<int> percent(0, 199);
  std::fputs("id,subject,center,time,treat,y,x1,x2,x3,w\n", out);
  for (long i = 0; i < cases; ++i) {
    long subject = i / 8 + 1;
    int time = static_cast<int>(i % 8) + 1;
    int center = static_cast<int>(subject % 12) + 1;
    int treat = static_cast<int>(subject % 2);
    double x1 = normal(random);
    double x2 = normal(random);
    double x3 = std::fabs(normal(random)) * 10.0;
    int w = percent(random) < 2 ? 0 : 1 + static_cast<int>(i % 3);
    std::fprintf(out, "%ld,%ld,C%02d,%d,%d,", i + 1, subject, center, time, treat);
    bool missingY = percent(random) == 0;
    if (!missingY) std::fprintf(out, "%.4f", 2.0 + 0.5 * treat + 0.1 * time + x1 + 0.3 * normal(random));
    std::fprintf(out, ",%.6f,%.6f,%.3f,%d\n", x1, x2, x3, w);
  }
  std::fclose(out);
}

struct Layout {
  int fY, fSubject, fCenter, fTime, fTreat, fWeight;
};

Layout Register(ZORV_Dataset& data, ACAVarValidSpecs& specs) {
  auto column = [&data](const char* name) {
    int index = data.FindVarIndex(name, 0);
    if (index < 0) {
      std::fprintf(stderr, "the file has no variable %s\n", name);
      std::exit(1);
    }
    return index;
  };
  data.SetWeightVar(column("w"));
  Layout layout{};
  layout.fY = specs.AddVariable(column("y"), false, false, true, true);
  std::vector<int> factors;
  specs.AddVariables({column("subject"), column("center"), column("time"), column("treat")}, factors, true, false,
                     true, true);
  layout.fSubject = factors[0];
  layout.fCenter = factors[1];
  layout.fTime = factors[2];
  layout.fTreat = factors[3];
  std::vector<int> covariates;
  specs.AddVariables({column("x1"), column("x2"), column("x3")}, covariates, false, false, true, true);
  layout.fWeight = specs.SetWeightVar();
  return layout;
}

// Builds the sorted file of the iterator's next split and reads it once.
void SortedFile(ACAInputAdapter& adapter, ACAProcDataSourceIter& it, const Layout& layout, std::size_t memoryLimit,
                const std::string& step) {
  Clock::time_point start = Clock::now();
  it.Rewind();
  if (!it.NewSplit()) {
    std::fprintf(stderr, "no split to sort\n");
    std::exit(1);
  }
  ACADataFileIter file(adapter, {layout.fSubject, layout.fTime}, adapter.GetNRecords());
  file.SetMemoryLimit(memoryLimit);
  if (!file.FillDataFile(it)) {
    std::fprintf(stderr, "%s: the sorted file could not be built\n", step.c_str());
    std::exit(1);
  }
  long n = 0;
  double previous = -1.0;
  bool ordered = true;
  for (file.Rewind(); file.HasRecord(); file.Next(), ++n) {
    double subject = file.Current()[layout.fSubject];
    ordered = ordered && subject >= previous;
    previous = subject;
  }
  Report(step + (file.GetSpilled() ? " (spilled)" : " (in memory)"), Seconds(start));
  if (!ordered || n != adapter.GetNRecords()) {
    std::fprintf(stderr, "%s: %ld records, %s\n", step.c_str(), n, ordered ? "ordered" : "NOT ordered");
    std::exit(1);
  }
}

}  // namespace

int main(int argc, char** argv) {
  long cases = 1000000;
  std::string csv;
  bool keep = false;
  std::size_t spillMiB = 16;
  for (int i = 1; i < argc; ++i) {
    std::string arg = argv[i];
    if (arg == "--cases" && i + 1 < argc) cases = std::atol(argv[++i]);
    else if (arg == "--csv" && i + 1 < argc) csv = argv[++i];
    else if (arg == "--keep") keep = true;
    else if (arg == "--spill-mib" && i + 1 < argc) spillMiB = static_cast<std::size_t>(std::atol(argv[++i]));
    else {
      std::fprintf(stderr, "usage: %s [--cases N] [--csv PATH] [--keep] [--spill-mib M]\n", argv[0]);
      return 2;
    }
  }
  bool generated = csv.empty();
  if (generated) {
    csv = (std::filesystem::temp_directory_path() / ("glmixfit-bench-" + std::to_string(::getpid()) + ".csv")).string();
    Clock::time_point start = Clock::now();
    WriteCsv(csv, cases);
    Report("generate " + std::to_string(cases) + " cases", Seconds(start));
  }
  std::printf("file %s, %.1f MiB\n", csv.c_str(),
              static_cast<double>(std::filesystem::file_size(csv)) / (1024.0 * 1024.0));

  ZORV_Dataset data;
  Clock::time_point start = Clock::now();
  try {
    DataFileLoader::Load(csv, "", data);
  } catch (const DataFileError& error) {
    std::fprintf(stderr, "%s\n", error.what());
    return 1;
  }
  Report("load CSV", Seconds(start));
  std::printf("%ld cases, %d variables, store %.1f MiB\n", data.GetCaseCount(), data.ColumnCount(),
              static_cast<double>(data.GetCaseCount()) * data.GetCaseWordCount() * 8.0 / (1024.0 * 1024.0));

  ACAVarValidSpecs specs(true, true, true);
  Layout layout = Register(data, specs);
  ACAInputAdapter adapter(&specs, data);

  start = Clock::now();
  ACAProcDataSourceIter it(adapter, true);
  if (it.GetState() == ACA_ITER_FAILED || it.GetState() == ACA_ITER_NO_VALID_CASE || !it.NewSplit()) {
    std::fprintf(stderr, "no valid records (state %d)\n", it.GetState());
    return 1;
  }
  Report("open the split (categories)", Seconds(start));

  start = Clock::now();
  long records = 0;
  double sum = 0.0;
  for (; it.HasRecord(); it.Next(), ++records) sum += it.Current()[layout.fY];
  Report("one pass over the records", Seconds(start));
  std::printf("%ld records, %d dropped, weighted %.0f; %d subjects, %d centers; mean y %.4f\n", records,
              adapter.GetDroppedCount(), adapter.GetWeightedCount(), adapter.GetRecordCatVarSize(layout.fSubject),
              adapter.GetRecordCatVarSize(layout.fCenter), sum / static_cast<double>(records));

  SortedFile(adapter, it, layout, spillMiB << 20, "sorted file, " + std::to_string(spillMiB) + " MiB limit");
  SortedFile(adapter, it, layout, ACADataFileIter::GetDefaultMemoryLimit(), "sorted file, default limit");

  if (generated && !keep) std::filesystem::remove(csv);
  return 0;
}
