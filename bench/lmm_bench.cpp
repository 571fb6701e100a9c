// Linear mixed model fits through GLMMAlgorithm: simulated random-intercept-
// and-slope data of growing size, and the classic real datasets. Prints the
// time of each fit and the process's memory.
//
//   glmix_lmm_bench [--sizes 1000,10000,100000] [--dir DIR] [--data DIR]
//                   [--no-simulated] [--no-real] [--min-seconds S]
//                   [--crossed RECORDS:LEVELS,...] [--teaching] [--levels L,...]
//                   [--write-only] [--portable-kernels]
//
// The simulated data have 10 records per subject (x = 0..9) and a fixed
// seed; each size is written as DIR/lmm_<subjects>.csv (columns subject, x,
// y; DIR defaults to the system's temporary folder) and read back, so that
// bench/lmm_bench.R fits the very same files. The real datasets are read from
// --data (the example data of the repository by default).
//
// The time of a fit is that of GLMMAlgorithm::Execute on records in memory:
// reading the records into the engine's design, REML estimation, and every
// statistic (standard errors, Satterthwaite degrees of freedom, Type I and
// Type III tests). Small fits are repeated until --min-seconds (0.5 s by
// default) have passed, and the mean is shown, as elapsed and as processor
// time (user and system; the better measure on a shared machine). "before
// MiB" is the resident memory before the first fit (the records loaded),
// "peak MiB" the process's high-water mark of resident memory so far, so run
// one size per process (--sizes N --no-real) for the peak of that size alone.
//
// --crossed fits y ~ 1 + (1|a) + (1|b) on simulated records with two crossed
// factors of LEVELS levels each (file DIR/crossed_<records>_<levels>.csv,
// columns y, a, b). --teaching fits y ~ service + (1|s) + (1|d) + (1|dept) on
// 73,421 simulated ratings of 2,972 students by 1,128 lecturers in 14
// departments (DIR/teaching.csv): the shape of a teaching evaluation.
// --levels fits y ~ f + (1|g) with a fixed factor f of L levels on 100,000
// records of 2,000 subjects g (DIR/levels_<L>.csv). --write-only writes
// these simulated files without fitting them. --portable-kernels keeps the
// dense products off the AVX2 kernel: the figures of the portable path, in
// the same session.

#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <functional>
#include <set>
#include <sstream>
#include <string>
#include <unordered_map>
#include <vector>

#include "bench_memory.h"
#include "numeric/common/MCMV.h"
#include "numeric/common/RecordIterator.h"
#include "numeric/engine/detail/MCEngineGemm.h"
#include "numeric/glmm/GLMMAlgorithm.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace {

using Clock = std::chrono::steady_clock;
using MCGLMM_850::GLMMAlgorithm;
using MCGLMM_850::GLMMRandomSpec;
using MCGLMM_850::GLMMSettings;
using MCMath_850::MCModelEffect;

double Seconds(Clock::time_point since) { return std::chrono::duration<double>(Clock::now() - since).count(); }

// Processor time of the process, user and system.
double CpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  return static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
         1e-6 * static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec);
}

// Records in memory, one row of fWidth doubles each, in the order of the
// variable list, stored contiguously.
class Records : public MCCommon_850::RecordIterator {
 public:
  bool HasRecord() const override { return fCurrent < GetNRecords(); }
  void Next() override { ++fCurrent; }
  int GetState() const override { return HasRecord() ? 0 : 3; }
  void Rewind() override { fCurrent = 0; }
  const double* Current() const override { return HasRecord() ? &fvValues[fCurrent * fWidth] : nullptr; }

  std::size_t GetNRecords() const { return fWidth == 0 ? 0 : fvValues.size() / fWidth; }

  std::size_t fWidth = 0;
  std::vector<double> fvValues;
  MCXML_850::MCVarList fVarList;

 private:
  std::size_t fCurrent = 0;
};

std::string Unquote(const std::string& s) {
  if (s.size() >= 2 && s.front() == '"' && s.back() == '"') return s.substr(1, s.size() - 2);
  return s;
}

void SplitLine(const std::string& line, std::vector<std::string>& cells) {
  cells.clear();
  std::size_t begin = 0;
  for (;;) {
    std::size_t end = line.find(',', begin);
    std::string cell = line.substr(begin, end == std::string::npos ? std::string::npos : end - begin);
    if (!cell.empty() && cell.back() == '\r') cell.pop_back();
    cells.push_back(Unquote(cell));
    if (end == std::string::npos) break;
    begin = end + 1;
  }
}

bool IsNumber(const std::string& s) {
  if (s.empty()) return false;
  char* end = nullptr;
  std::strtod(s.c_str(), &end);
  return end == s.c_str() + s.size();
}

// Reads the chosen columns of a CSV file in two passes (levels, then
// values), keeping no text per cell: the first column is the target; a
// factor is coded by its levels sorted ascending (numerically when all are
// numbers).
bool LoadCsv(const std::string& path, const std::vector<std::string>& columns, const std::set<std::string>& factors,
             Records& records) {
  std::vector<int> col;
  std::vector<std::set<std::string>> distinct(columns.size());
  std::size_t nRows = 0;
  std::string line;
  std::vector<std::string> cells;
  {
    std::ifstream in(path);
    if (!in || !std::getline(in, line)) return false;
    SplitLine(line, cells);
    for (const std::string& name : columns) {
      const auto it = std::find(cells.begin(), cells.end(), name);
      if (it == cells.end()) return false;
      col.push_back(static_cast<int>(it - cells.begin()));
    }
    while (std::getline(in, line)) {
      if (line.empty() || line == "\r") continue;
      ++nRows;
      SplitLine(line, cells);
      for (std::size_t v = 0; v < columns.size(); ++v) {
        const std::size_t c = static_cast<std::size_t>(col[v]);
        if (factors.count(columns[v]) > 0 && c < cells.size() && !cells[c].empty() && cells[c] != "NA") {
          distinct[v].insert(cells[c]);
        }
      }
    }
  }
  using namespace MCMath_850::MCConst;
  records.fWidth = columns.size();
  records.fvValues.assign(nRows * columns.size(), MCCommon_850::MCMV::Missing());
  records.fVarList.Clear();
  std::vector<std::unordered_map<std::string, int>> code(columns.size());
  for (std::size_t v = 0; v < columns.size(); ++v) {
    const bool factor = factors.count(columns[v]) > 0;
    MCXML_850::IMCVariable var(columns[v], v == 0 ? ROLE_TARGET : ROLE_PREDICTOR,
                               factor ? MEASURE_NOMINAL : MEASURE_CONTINUOUS);
    var.SetRecordIndex(static_cast<int>(v));
    if (factor) {
      std::vector<std::string> levels(distinct[v].begin(), distinct[v].end());
      bool numeric = true;
      for (const std::string& level : levels) numeric = numeric && IsNumber(level);
      if (numeric) {
        std::sort(levels.begin(), levels.end(),
                  [](const std::string& a, const std::string& b) { return std::stod(a) < std::stod(b); });
      }
      for (const std::string& level : levels) {
        code[v][level] = var.AddCategory(numeric ? std::stod(level) : MCCommon_850::MCMV::Missing(), level);
      }
    }
    records.fVarList.AddVariable(var);
  }
  std::ifstream in(path);
  std::getline(in, line);
  std::size_t r = 0;
  while (r < nRows && std::getline(in, line)) {
    if (line.empty() || line == "\r") continue;
    SplitLine(line, cells);
    double* row = &records.fvValues[r * columns.size()];
    for (std::size_t v = 0; v < columns.size(); ++v) {
      const std::size_t c = static_cast<std::size_t>(col[v]);
      if (c >= cells.size()) continue;
      if (factors.count(columns[v]) > 0) {
        const auto it = code[v].find(cells[c]);
        if (it != code[v].end()) row[v] = it->second;
      } else if (IsNumber(cells[c])) {
        row[v] = std::strtod(cells[c].c_str(), nullptr);
      }
    }
    ++r;
  }
  return r == nRows;
}

// An effect over the predictor set of the settings (factors first); with
// nested, each factor after the first is nested in those before it.
MCModelEffect Effect(const std::vector<int>& set, int nFactors, const std::vector<int>& factors,
                     const std::vector<int>& covariates, bool nested = false) {
  MCModelEffect effect;
  effect.Setup(nFactors, static_cast<int>(set.size()) - nFactors, &set);
  for (std::size_t i = 0; i < factors.size(); ++i) effect.AddNewFactor(factors[i], nested && i > 0);
  for (int c : covariates) effect.AddCovariate(c);
  std::vector<int> written = factors;
  written.insert(written.end(), covariates.begin(), covariates.end());
  effect.SetVarsIndicesForTheEffectInSetting(written);
  return effect;
}

GLMMRandomSpec Block(const std::vector<MCModelEffect>& effects, const std::vector<int>& subjects,
                     GLMMConst_850::CovarType type, int index) {
  GLMMRandomSpec block;
  for (const MCModelEffect& effect : effects) block.AddEffect(effect);
  for (int subject : subjects) block.AddSubjectVar(subject);
  block.SetCovarianceType(type);
  block.SetIndex(index);
  return block;
}

void AddFactors(GLMMSettings& settings, const Records& records, const std::vector<int>& factors) {
  for (int f : factors) settings.AddFactor(f, records.fVarList.GetVarAt(f)->GetNCategories());
}

// The records in the order of the settings' sort variables.
void Sort(const GLMMSettings& settings, Records& records) {
  std::vector<int> vars;
  if (settings.GetSortDataVariables(vars) == 0) return;
  const std::size_t w = records.fWidth;
  const std::vector<double>& values = records.fvValues;
  std::vector<std::size_t> order(records.GetNRecords());
  for (std::size_t i = 0; i < order.size(); ++i) order[i] = i;
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    for (int v : vars) {
      const double x = values[a * w + static_cast<std::size_t>(v)], y = values[b * w + static_cast<std::size_t>(v)];
      if (x != y) return x < y;
    }
    return false;
  });
  std::vector<double> sorted(values.size());
  for (std::size_t i = 0; i < order.size(); ++i) {
    std::copy(values.begin() + static_cast<std::ptrdiff_t>(order[i] * w),
              values.begin() + static_cast<std::ptrdiff_t>((order[i] + 1) * w),
              sorted.begin() + static_cast<std::ptrdiff_t>(i * w));
  }
  records.fvValues.swap(sorted);
}

struct Timing {
  double fSeconds = 0.0;     // per fit, elapsed
  double fCpuSeconds = 0.0;  // per fit, processor
  double fResidentBefore = 0.0;  // MiB resident before the first fit
  int fRepeats = 0;
  double fMinus2LogLik = 0.0;
  long fStatus = 0;
};

Timing TimeFits(const GLMMSettings& settings, Records& records, double minSeconds) {
  Timing t;
  t.fResidentBefore = bench::CurrentMiB();
  const Clock::time_point start = Clock::now();
  const double cpuStart = CpuSeconds();
  do {
    GLMMAlgorithm algorithm(settings, records.fVarList);
    records.Rewind();
    const MCCommon_850::MCStatus status = algorithm.Execute(&records, 0);
    t.fStatus = status.GetErrorCode();
    t.fMinus2LogLik = algorithm.GetOutputStats() ? algorithm.GetOutputStats()->GetLogLikehood() : 0.0;
    ++t.fRepeats;
    if (status.IsError()) break;
  } while (Seconds(start) < minSeconds);
  t.fSeconds = Seconds(start) / t.fRepeats;
  t.fCpuSeconds = (CpuSeconds() - cpuStart) / t.fRepeats;
  return t;
}

// A small portable generator, so that every build writes the same data.
class Generator {
 public:
  explicit Generator(unsigned long long seed) : fState(seed) {}
  double Uniform() {
    fState = fState * 6364136223846793005ULL + 1442695040888963407ULL;
    return (static_cast<double>(fState >> 11) + 0.5) / 9007199254740992.0;
  }
  double Normal() {
    const double u = Uniform(), v = Uniform();
    return std::sqrt(-2.0 * std::log(u)) * std::cos(6.283185307179586 * v);
  }

 private:
  unsigned long long fState;
};

// y = 250 + 10 x + b0 + b1 x + e: intercept SD 25, slope SD 6, their
// correlation 0.2, residual SD 25; x = 0..9 for every subject.
bool Simulate(int subjects, const std::string& path) {
  std::ofstream out(path);
  if (!out) return false;
  Generator g(20240611ULL + static_cast<unsigned long long>(subjects));
  out << "subject,x,y\n";
  char buffer[96];
  for (int s = 1; s <= subjects; ++s) {
    const double z0 = g.Normal(), z1 = g.Normal();
    const double b0 = 25.0 * z0;
    const double b1 = 6.0 * (0.2 * z0 + std::sqrt(1.0 - 0.04) * z1);
    for (int x = 0; x < 10; ++x) {
      const double y = 250.0 + 10.0 * x + b0 + b1 * x + 25.0 * g.Normal();
      std::snprintf(buffer, sizeof buffer, "%d,%d,%.6f\n", s, x, y);
      out << buffer;
    }
  }
  return static_cast<bool>(out);
}

// y = 10 + a_i + b_j + e with SDs 1, 0.7 and 1; every level appears, the
// rest of the records take levels at random.
bool SimulateCrossed(int records, int levels, const std::string& path) {
  std::ofstream out(path);
  if (!out) return false;
  Generator g(777ULL + static_cast<unsigned long long>(records) * 31ULL + static_cast<unsigned long long>(levels));
  std::vector<double> a(static_cast<std::size_t>(levels)), b(static_cast<std::size_t>(levels));
  for (double& v : a) v = g.Normal();
  for (double& v : b) v = 0.7 * g.Normal();
  out << "y,a,b\n";
  char buffer[96];
  for (int r = 0; r < records; ++r) {
    const int i = r < levels ? r : static_cast<int>(g.Uniform() * levels);
    const int j = r < levels ? (r * 7 + 3) % levels : static_cast<int>(g.Uniform() * levels);
    const double y = 10.0 + a[static_cast<std::size_t>(i)] + b[static_cast<std::size_t>(j)] + g.Normal();
    std::snprintf(buffer, sizeof buffer, "%.6f,%d,%d\n", y, i + 1, j + 1);
    out << buffer;
  }
  return static_cast<bool>(out);
}

// Ratings y of lecturers d by students s, each lecturer in one of 14
// departments, with a binary fixed factor service: y = 3 + 0.1 service +
// s_i + d_j + dept_k + e with SDs 0.32, 0.51, 0.08 and 1.18.
constexpr int kRatings = 73421, kStudents = 2972, kLecturers = 1128, kDepartments = 14;

bool SimulateTeaching(const std::string& path) {
  std::ofstream out(path);
  if (!out) return false;
  Generator g(19790101ULL);
  std::vector<double> se(kStudents), de(kLecturers), ke(kDepartments);
  std::vector<int> deptOf(kLecturers);
  for (double& v : se) v = 0.32 * g.Normal();
  for (double& v : de) v = 0.51 * g.Normal();
  for (double& v : ke) v = 0.08 * g.Normal();
  for (int j = 0; j < kLecturers; ++j) deptOf[static_cast<std::size_t>(j)] = j < kDepartments ? j : static_cast<int>(g.Uniform() * kDepartments);
  out << "y,service,s,d,dept\n";
  char buffer[128];
  for (int r = 0; r < kRatings; ++r) {
    const int i = r < kStudents ? r : static_cast<int>(g.Uniform() * kStudents);
    const int j = r < kLecturers ? r : static_cast<int>(g.Uniform() * kLecturers);
    const int k = deptOf[static_cast<std::size_t>(j)];
    const int service = g.Uniform() < 0.4 ? 1 : 0;
    const double y = 3.0 + 0.1 * service + se[static_cast<std::size_t>(i)] + de[static_cast<std::size_t>(j)] +
                     ke[static_cast<std::size_t>(k)] + 1.18 * g.Normal();
    std::snprintf(buffer, sizeof buffer, "%.6f,%d,%d,%d,%d\n", y, service, i + 1, j + 1, k + 1);
    out << buffer;
  }
  return static_cast<bool>(out);
}

// y = 10 + f_l + g_s + e with SDs 1, 1 and 1: a fixed factor f of LEVELS
// levels and 2,000 subjects g, 50 records each; every level appears, the
// rest of the records take levels at random.
constexpr int kLevelsRecords = 100000, kLevelsSubjects = 2000;

bool SimulateManyLevels(int levels, const std::string& path) {
  std::ofstream out(path);
  if (!out) return false;
  Generator g(4242ULL + static_cast<unsigned long long>(levels));
  std::vector<double> fe(static_cast<std::size_t>(levels)), ge(kLevelsSubjects);
  for (double& v : fe) v = g.Normal();
  for (double& v : ge) v = g.Normal();
  out << "y,f,g\n";
  char buffer[96];
  const int perSubject = kLevelsRecords / kLevelsSubjects;
  for (int r = 0; r < kLevelsRecords; ++r) {
    const int l = r < levels ? r : static_cast<int>(g.Uniform() * levels);
    const int s = r / perSubject;
    const double y = 10.0 + fe[static_cast<std::size_t>(l)] + ge[static_cast<std::size_t>(s)] + g.Normal();
    std::snprintf(buffer, sizeof buffer, "%.6f,%d,%d\n", y, l + 1, s + 1);
    out << buffer;
  }
  return static_cast<bool>(out);
}

struct CrossedCase {
  int fRecords = 0;
  int fLevels = 0;
};

std::vector<CrossedCase> ParseCrossed(const std::string& text) {
  std::vector<CrossedCase> cases;
  std::istringstream in(text);
  std::string item;
  while (std::getline(in, item, ',')) {
    const std::size_t colon = item.find(':');
    if (colon == std::string::npos) continue;
    cases.push_back({std::atoi(item.substr(0, colon).c_str()), std::atoi(item.substr(colon + 1).c_str())});
  }
  return cases;
}

// --write-only: the simulated files are written and not fitted (for the R
// side to fit first).
bool gWriteOnly = false;

// Writes, reads back and fits one simulated file; false when it cannot be
// written or read.
bool RunSimulatedFile(const char* name, const std::string& label, const std::string& path,
                      const std::vector<std::string>& columns, const std::set<std::string>& factors,
                      void (*setup)(GLMMSettings&, const Records&), const std::function<bool(const std::string&)>& write,
                      double minSeconds) {
  Clock::time_point start = Clock::now();
  if (!write(path)) {
    std::fprintf(stderr, "cannot write %s\n", path.c_str());
    return false;
  }
  const double writeSeconds = Seconds(start);
  if (gWriteOnly) return true;
  start = Clock::now();
  Records records;
  if (!LoadCsv(path, columns, factors, records)) {
    std::fprintf(stderr, "cannot read %s\n", path.c_str());
    return false;
  }
  const double readSeconds = Seconds(start);
  GLMMSettings settings;
  settings.SetSingleDependent(0);
  setup(settings, records);
  Sort(settings, records);
  const Timing t = TimeFits(settings, records, minSeconds);
  std::printf("%-12s %9s %9zu %8.3f %8.3f %6d %12.5f %12.5f %14.4f %10.1f %9.1f%s\n", name, label.c_str(),
              records.GetNRecords(), writeSeconds, readSeconds, t.fRepeats, t.fSeconds, t.fCpuSeconds,
              t.fMinus2LogLik, t.fResidentBefore, bench::PeakMiB(), t.fStatus != 0 ? "  (status not OK)" : "");
  std::fflush(stdout);
  return true;
}

void SetupCrossed(GLMMSettings& s, const Records&) {
  // y 0, a 1, b 2: an intercept by a and one by b.
  s.AddRandomSpec(Block({MCModelEffect()}, {1}, GLMMConst_850::VC, 0));
  s.AddRandomSpec(Block({MCModelEffect()}, {2}, GLMMConst_850::VC, 1));
}

void SetupManyLevels(GLMMSettings& s, const Records& r) {
  // y 0, f 1, g 2: the fixed factor f and an intercept by g.
  AddFactors(s, r, {1});
  const std::vector<int> set = {1};
  s.AddModelEffect(Effect(set, 1, {1}, {}));
  s.AddRandomSpec(Block({MCModelEffect()}, {2}, GLMMConst_850::VC, 0));
}

void SetupTeaching(GLMMSettings& s, const Records& r) {
  // y 0, service 1, s 2, d 3, dept 4.
  AddFactors(s, r, {1});
  const std::vector<int> set = {1};
  s.AddModelEffect(Effect(set, 1, {1}, {}));
  s.AddRandomSpec(Block({MCModelEffect()}, {2}, GLMMConst_850::VC, 0));
  s.AddRandomSpec(Block({MCModelEffect()}, {3}, GLMMConst_850::VC, 1));
  s.AddRandomSpec(Block({MCModelEffect()}, {4}, GLMMConst_850::VC, 2));
}

struct RealModel {
  std::string fName;
  std::string fFile;
  std::vector<std::string> fColumns;
  std::set<std::string> fFactors;
  // Fills the settings for records loaded with fColumns.
  void (*fSetup)(GLMMSettings&, const Records&);
};

void SetupSleepstudy(GLMMSettings& s, const Records&) {
  // Reaction 0, Days 1, Subject 2.
  s.AddCovariate(1);
  const std::vector<int> set = {1};
  s.AddModelEffect(Effect(set, 0, {}, {1}));
  s.AddRandomSpec(Block({MCModelEffect(), Effect(set, 0, {}, {1})}, {2}, GLMMConst_850::UN, 0));
}

void SetupOrthodont(GLMMSettings& s, const Records& r) {
  // distance 0, age 1, Subject 2, Sex 3.
  AddFactors(s, r, {3});
  s.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  s.AddModelEffect(Effect(set, 1, {}, {1}));
  s.AddModelEffect(Effect(set, 1, {3}, {}));
  s.AddModelEffect(Effect(set, 1, {3}, {1}));
  s.AddRandomSpec(Block({MCModelEffect(), Effect(set, 1, {}, {1})}, {2}, GLMMConst_850::UN, 0));
}

void SetupOats(GLMMSettings& s, const Records& r) {
  // yield 0, Block 1, Variety 2, nitro 3.
  AddFactors(s, r, {1, 2, 3});
  const std::vector<int> set = {1, 2, 3};
  s.AddModelEffect(Effect(set, 3, {2}, {}));
  s.AddModelEffect(Effect(set, 3, {3}, {}));
  s.AddModelEffect(Effect(set, 3, {2, 3}, {}));
  s.AddRandomSpec(Block({Effect(set, 3, {1}, {}), Effect(set, 3, {1, 2}, {})}, {}, GLMMConst_850::VC, 0));
}

void SetupMachines(GLMMSettings& s, const Records& r) {
  // score 0, Worker 1, Machine 2.
  AddFactors(s, r, {1, 2});
  const std::vector<int> set = {1, 2};
  s.AddModelEffect(Effect(set, 2, {2}, {}));
  s.AddRandomSpec(Block({Effect(set, 2, {1}, {}), Effect(set, 2, {1, 2}, {})}, {}, GLMMConst_850::VC, 0));
}

void SetupPastes(GLMMSettings& s, const Records& r) {
  // strength 0, batch 1, cask 2.
  AddFactors(s, r, {1, 2});
  const std::vector<int> set = {1, 2};
  s.AddRandomSpec(Block({Effect(set, 2, {1}, {}), Effect(set, 2, {1, 2}, {}, true)}, {}, GLMMConst_850::VC, 0));
}

void SetupPenicillin(GLMMSettings& s, const Records& r) {
  // diameter 0, plate 1, sample 2.
  AddFactors(s, r, {1, 2});
  const std::vector<int> set = {1, 2};
  s.AddRandomSpec(Block({Effect(set, 2, {1}, {})}, {}, GLMMConst_850::VC, 0));
  s.AddRandomSpec(Block({Effect(set, 2, {2}, {})}, {}, GLMMConst_850::VC, 1));
}

void SetupDyestuff(GLMMSettings& s, const Records& r) {
  // Yield 0, Batch 1.
  AddFactors(s, r, {1});
  const std::vector<int> set = {1};
  s.AddRandomSpec(Block({Effect(set, 1, {1}, {})}, {}, GLMMConst_850::VC, 0));
}

void SetupBodyWeight(GLMMSettings& s, const Records& r) {
  // weight 0, Time 1, Rat 2, Diet 3: residual AR1 by Rat over the times.
  AddFactors(s, r, {3});
  s.AddCovariate(1);
  const std::vector<int> set = {3, 1};
  s.AddModelEffect(Effect(set, 1, {3}, {}));
  s.AddModelEffect(Effect(set, 1, {}, {1}));
  s.AddModelEffect(Effect(set, 1, {3}, {1}));
  GLMMRandomSpec repeated;
  repeated.Reset(true);
  const std::vector<int> repeatedSet = {1};
  MCModelEffect position;
  position.Setup(1, 0, &repeatedSet);
  position.AddNewFactor(1, false);
  position.SetVarsIndicesForTheEffectInSetting(repeatedSet);
  repeated.AddEffect(position);
  repeated.AddSubjectVar(2);
  repeated.SetCovarianceType(GLMMConst_850::AR1);
  s.SetRepeated(repeated);
}

std::vector<int> ParseSizes(const std::string& text) {
  std::vector<int> sizes;
  std::istringstream in(text);
  std::string item;
  while (std::getline(in, item, ',')) {
    if (!item.empty()) sizes.push_back(std::atoi(item.c_str()));
  }
  return sizes;
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes = {1000, 10000, 100000};
  std::string dir = (std::filesystem::temp_directory_path() / "glmix_lmm_bench").string();
  std::string dataDir = std::string(GLMIX_SOURCE_DIR) + "/examples/data";
  bool simulated = true;
  bool real = true;
  double minSeconds = 0.5;
  std::vector<CrossedCase> crossed;
  bool teaching = false;
  std::vector<int> manyLevels;
  for (int i = 1; i < argc; ++i) {
    const std::string arg = argv[i];
    const bool hasValue = i + 1 < argc;
    if (arg == "--sizes" && hasValue) {
      sizes = ParseSizes(argv[++i]);
    } else if (arg == "--dir" && hasValue) {
      dir = argv[++i];
    } else if (arg == "--data" && hasValue) {
      dataDir = argv[++i];
    } else if (arg == "--min-seconds" && hasValue) {
      minSeconds = std::atof(argv[++i]);
    } else if (arg == "--crossed" && hasValue) {
      crossed = ParseCrossed(argv[++i]);
    } else if (arg == "--levels" && hasValue) {
      manyLevels = ParseSizes(argv[++i]);
    } else if (arg == "--write-only") {
      gWriteOnly = true;
    } else if (arg == "--teaching") {
      teaching = true;
    } else if (arg == "--no-simulated") {
      simulated = false;
    } else if (arg == "--no-real") {
      real = false;
    } else if (arg == "--portable-kernels") {
      MCEngine_850::MCEngineGemm::SetPortable(true);
    } else {
      std::fprintf(stderr,
                   "usage: %s [--sizes 1000,10000,100000] [--dir DIR] [--data DIR] [--no-simulated] [--no-real] "
                   "[--min-seconds S] [--crossed RECORDS:LEVELS,...] [--teaching] [--levels L,...] [--write-only] [--portable-kernels]\n",
                   argv[0]);
      return 2;
    }
  }

  std::printf("%-12s %9s %9s %8s %8s %6s %12s %12s %14s %10s %9s\n", "data", "subjects", "records", "write s",
              "read s", "fits", "fit s", "fit cpu s", "-2LL", "before MiB", "peak MiB");
  if (simulated) {
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
    for (int n : sizes) {
      const std::string path = dir + "/lmm_" + std::to_string(n) + ".csv";
      Clock::time_point start = Clock::now();
      if (!Simulate(n, path)) {
        std::fprintf(stderr, "cannot write %s\n", path.c_str());
        return 1;
      }
      const double writeSeconds = Seconds(start);
      if (gWriteOnly) continue;
      start = Clock::now();
      Records records;
      if (!LoadCsv(path, {"y", "x", "subject"}, {"subject"}, records)) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return 1;
      }
      const double readSeconds = Seconds(start);
      // y 0, x 1, subject 2: y = x, random intercept and slope by subject (UN).
      GLMMSettings settings;
      settings.SetSingleDependent(0);
      settings.AddCovariate(1);
      const std::vector<int> set = {1};
      settings.AddModelEffect(Effect(set, 0, {}, {1}));
      settings.AddRandomSpec(Block({MCModelEffect(), Effect(set, 0, {}, {1})}, {2}, GLMMConst_850::UN, 0));
      Sort(settings, records);
      const Timing t = TimeFits(settings, records, minSeconds);
      std::printf("%-12s %9d %9zu %8.3f %8.3f %6d %12.5f %12.5f %14.4f %10.1f %9.1f%s\n", "simulated", n,
                  records.GetNRecords(), writeSeconds, readSeconds, t.fRepeats, t.fSeconds, t.fCpuSeconds,
                  t.fMinus2LogLik, t.fResidentBefore, bench::PeakMiB(), t.fStatus != 0 ? "  (status not OK)" : "");
      std::fflush(stdout);
    }
    std::printf("simulated files in %s (resident now %.1f MiB)\n", dir.c_str(), bench::CurrentMiB());
  }
  if (!crossed.empty() || teaching || !manyLevels.empty()) {
    std::error_code ec;
    std::filesystem::create_directories(dir, ec);
  }
  for (const CrossedCase& c : crossed) {
    const int records = c.fRecords, levels = c.fLevels;
    const std::string path = dir + "/crossed_" + std::to_string(records) + "_" + std::to_string(levels) + ".csv";
    if (!RunSimulatedFile("crossed", std::to_string(levels), path, {"y", "a", "b"}, {}, SetupCrossed,
                          [&](const std::string& p) { return SimulateCrossed(records, levels, p); }, minSeconds)) {
      return 1;
    }
  }
  for (int levels : manyLevels) {
    if (!RunSimulatedFile("levels", std::to_string(levels), dir + "/levels_" + std::to_string(levels) + ".csv",
                          {"y", "f", "g"}, {"f"}, SetupManyLevels,
                          [&](const std::string& p) { return SimulateManyLevels(levels, p); }, minSeconds)) {
      return 1;
    }
  }
  if (teaching && !RunSimulatedFile("teaching", "-", dir + "/teaching.csv", {"y", "service", "s", "d", "dept"},
                                    {"service"}, SetupTeaching, SimulateTeaching, minSeconds)) {
    return 1;
  }
  if (real) {
    const std::vector<RealModel> models = {
        {"sleepstudy", "sleepstudy.csv", {"Reaction", "Days", "Subject"}, {"Subject"}, SetupSleepstudy},
        {"orthodont", "orthodont.csv", {"distance", "age", "Subject", "Sex"}, {"Subject", "Sex"}, SetupOrthodont},
        {"oats", "oats.csv", {"yield", "Block", "Variety", "nitro"}, {"Block", "Variety", "nitro"}, SetupOats},
        {"machines", "machines.csv", {"score", "Worker", "Machine"}, {"Worker", "Machine"}, SetupMachines},
        {"pastes", "pastes.csv", {"strength", "batch", "cask"}, {"batch", "cask"}, SetupPastes},
        {"penicillin", "penicillin.csv", {"diameter", "plate", "sample"}, {"plate", "sample"}, SetupPenicillin},
        {"dyestuff", "dyestuff.csv", {"Yield", "Batch"}, {"Batch"}, SetupDyestuff},
        {"bodyweight", "bodyweight.csv", {"weight", "Time", "Rat", "Diet"}, {"Rat", "Diet"}, SetupBodyWeight},
    };
    for (const RealModel& m : models) {
      const std::string path = dataDir + "/" + m.fFile;
      const Clock::time_point start = Clock::now();
      Records records;
      if (!LoadCsv(path, m.fColumns, m.fFactors, records)) {
        std::fprintf(stderr, "cannot read %s\n", path.c_str());
        return 1;
      }
      const double readSeconds = Seconds(start);
      GLMMSettings settings;
      settings.SetSingleDependent(0);
      m.fSetup(settings, records);
      Sort(settings, records);
      const Timing t = TimeFits(settings, records, minSeconds);
      std::printf("%-12s %9s %9zu %8s %8.4f %6d %12.5f %12.5f %14.4f %10.1f %9.1f%s\n", m.fName.c_str(), "-",
                  records.GetNRecords(), "-", readSeconds, t.fRepeats, t.fSeconds, t.fCpuSeconds, t.fMinus2LogLik,
                  t.fResidentBefore, bench::PeakMiB(), t.fStatus != 0 ? "  (status not OK)" : "");
      std::fflush(stdout);
    }
  }
  return 0;
}
