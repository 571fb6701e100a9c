#include "host/adapter/ACADataFileIter.h"

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <numeric>
#include <queue>
#include <system_error>

#include "host/adapter/ACAInputAdapter.h"
#include "host/adapter/ACAIterState.h"
#include "host/adapter/ACAVarValidSpecs.h"
#include "host/data/ProcedureDataSource.h"
#include "host/files/AtomicFileWriter.h"

namespace {

std::size_t gDefaultMemoryLimit = std::size_t(256) << 20;

// Runs merged at once; each takes a share of the memory limit.
const std::size_t kMergeFanIn = 16;

// Shortest text that reads back as the same double.
std::string RoundTripText(double value) {
  char buffer[64];
  for (int precision = 15; precision <= 17; ++precision) {
    std::snprintf(buffer, sizeof buffer, "%.*g", precision, value);
    if (std::strtod(buffer, nullptr) == value) break;
  }
  return buffer;
}

// Ascending, with not-a-number values last.
int CompareValues(double a, double b) {
  bool aNaN = std::isnan(a);
  bool bNaN = std::isnan(b);
  if (aNaN || bNaN) return aNaN == bNaN ? 0 : (aNaN ? 1 : -1);
  return a < b ? -1 : (b < a ? 1 : 0);
}

bool WriteAll(int fd, const double* data, std::size_t count) {
  const char* bytes = reinterpret_cast<const char*>(data);
  std::size_t left = count * sizeof(double);
  while (left > 0) {
    ssize_t written = ::write(fd, bytes, left);
    if (written < 0 && errno == EINTR) continue;
    if (written <= 0) return false;
    bytes += written;
    left -= static_cast<std::size_t>(written);
  }
  return true;
}

bool ReadAt(int fd, double* data, std::size_t count, std::size_t offsetValues) {
  char* bytes = reinterpret_cast<char*>(data);
  std::size_t left = count * sizeof(double);
  off_t offset = static_cast<off_t>(offsetValues * sizeof(double));
  while (left > 0) {
    ssize_t got = ::pread(fd, bytes, left, offset);
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    bytes += got;
    offset += got;
    left -= static_cast<std::size_t>(got);
  }
  return true;
}

}  // namespace

void ACADataFileIter::SetDefaultMemoryLimit(std::size_t bytes) { gDefaultMemoryLimit = bytes; }

std::size_t ACADataFileIter::GetDefaultMemoryLimit() { return gDefaultMemoryLimit; }

ACADataFileIter::ACADataFileIter(const ACAInputAdapter& adapter, const std::vector<int>& sortVars, int nRecords)
    : fpAdapter(&adapter), fvSortVars(sortVars), fNRecordVars(0), fExpectedRecords(nRecords),
      fMemoryLimit(gDefaultMemoryLimit), fState(ACA_ITER_READY) {
  const ACAVarValidSpecs* specs = adapter.GetVarValidSpecs();
  fNRecordVars = specs ? specs->GetNRecordVars() : 0;
  bool sortVarsValid = std::all_of(fvSortVars.begin(), fvSortVars.end(),
                                   [this](int v) { return v >= 0 && v < fNRecordVars; });
  if (fNRecordVars <= 0 || !sortVarsValid || nRecords < 0) {
    fState = ACA_ITER_FAILED;
    return;
  }
  std::size_t reserve = std::min(static_cast<std::size_t>(nRecords), RecordsInMemory());
  fvValues.reserve(reserve * static_cast<std::size_t>(fNRecordVars));
}

ACADataFileIter::~ACADataFileIter() { RemoveTempFiles(); }

std::size_t ACADataFileIter::RecordsInMemory() const {
  std::size_t recordBytes = static_cast<std::size_t>(std::max(fNRecordVars, 1)) * sizeof(double);
  return std::max<std::size_t>(1, fMemoryLimit / recordBytes);
}

std::vector<std::string> ACADataFileIter::GetTempFiles() const {
  std::vector<std::string> paths;
  for (const TempFileData& file : fvTempFiles) paths.push_back(file.fPath);
  return paths;
}

// ---- reading ----

bool ACADataFileIter::HasRecord() const { return !fbClosed && fState != ACA_ITER_FAILED && fPosition < fNRecords; }

void ACADataFileIter::Next() {
  if (!HasRecord()) return;
  ++fPosition;
  if (fbSpilled && fPosition < fNRecords &&
      fPosition >= fBlockStart + static_cast<long>(fvValues.size() / static_cast<std::size_t>(fNRecordVars))) {
    if (!LoadBlock(fPosition)) return;
  }
  if (!HasRecord() && fState == ACA_ITER_READY) fState = ACA_ITER_END;
}

void ACADataFileIter::Rewind() {
  if (fbClosed || fState == ACA_ITER_FAILED) return;
  fPosition = 0;
  if (fbSpilled && fBlockStart != 0 && !LoadBlock(0)) return;
  fState = ACA_ITER_READY;
}

const double* ACADataFileIter::Current() const {
  if (!HasRecord()) return nullptr;
  return fvValues.data() + static_cast<std::size_t>(fPosition - fBlockStart) * static_cast<std::size_t>(fNRecordVars);
}

bool ACADataFileIter::LoadBlock(long first) {
  std::size_t width = static_cast<std::size_t>(fNRecordVars);
  std::size_t count = std::min(RecordsInMemory(), static_cast<std::size_t>(fNRecords - first));
  fvValues.resize(count * width);
  if (!ReadAt(fSortedFd, fvValues.data(), count * width, static_cast<std::size_t>(first) * width)) {
    FailFile();
    return false;
  }
  fBlockStart = first;
  return true;
}

void ACADataFileIter::FailFile() {
  fState = ACA_ITER_FAILED;
  std::vector<double>().swap(fvValues);
  fNRecords = 0;
  fPosition = 0;
  fBlockStart = 0;
  fbSpilled = false;
  RemoveTempFiles();
}

// ---- filling ----

int ACADataFileIter::CompareRecords(const double* a, const double* b) const {
  for (int v : fvSortVars) {
    int c = CompareValues(a[v], b[v]);
    if (c != 0) return c;
  }
  return 0;
}

void ACADataFileIter::SortRecords(std::vector<double>& values) const {
  if (fvSortVars.empty()) return;
  std::size_t width = static_cast<std::size_t>(fNRecordVars);
  std::size_t count = values.size() / width;
  std::vector<std::size_t> order(count);
  std::iota(order.begin(), order.end(), std::size_t(0));
  std::stable_sort(order.begin(), order.end(), [&](std::size_t a, std::size_t b) {
    return CompareRecords(values.data() + a * width, values.data() + b * width) < 0;
  });
  // Records move in place along the cycles of the permutation, so that
  // sorting needs one record beside the records, not a second copy.
  std::vector<double> held(width);
  for (std::size_t start = 0; start < count; ++start) {
    if (order[start] == start) continue;
    std::copy_n(values.data() + start * width, width, held.data());
    std::size_t to = start;
    while (order[to] != start) {
      std::size_t from = order[to];
      std::copy_n(values.data() + from * width, width, values.data() + to * width);
      order[to] = to;
      to = from;
    }
    std::copy_n(held.data(), width, values.data() + to * width);
    order[to] = to;
  }
}

bool ACADataFileIter::FillDataFile(MCCommon_850::RecordIterator& source) {
  if (fbClosed || fState == ACA_ITER_FAILED) return false;
  RemoveTempFiles();
  fbSpilled = false;
  fvValues.clear();
  fNRecords = 0;
  fPosition = 0;
  fBlockStart = 0;

  std::size_t width = static_cast<std::size_t>(fNRecordVars);
  std::size_t capacity = RecordsInMemory();
  int runFd = -1;
  long fileRecords = 0;
  std::vector<RunData> runs;
  auto writeRun = [&]() {
    SortRecords(fvValues);
    long count = static_cast<long>(fvValues.size() / width);
    if (!WriteAll(runFd, fvValues.data(), fvValues.size())) return false;
    runs.push_back(RunData{fileRecords, count});
    fileRecords += count;
    fvValues.clear();
    return true;
  };

  while (source.HasRecord()) {
    const double* record = source.Current();
    if (record == nullptr) {
      FailFile();
      return false;
    }
    if (fvValues.size() / width >= capacity) {
      if (runFd < 0) {
        runFd = CreateTempFile();
        fbSpilled = true;
      }
      if (runFd < 0 || !writeRun()) {
        FailFile();
        return false;
      }
    }
    fvValues.insert(fvValues.end(), record, record + fNRecordVars);
    ++fNRecords;
    source.Next();
    if (source.GetState() == ACA_ITER_FAILED) {
      FailFile();
      return false;
    }
  }

  if (!fbSpilled) {
    SortRecords(fvValues);
    fState = ACA_ITER_READY;
    return true;
  }

  long total = fNRecords;
  if (!writeRun()) {
    FailFile();
    return false;
  }
  std::vector<double>().swap(fvValues);
  // Unsorted runs follow each other in the order read already.
  if (!fvSortVars.empty() && !MergeRuns(runFd, runs)) {
    FailFile();
    return false;
  }
  fSortedFd = runFd;
  fNRecords = total;
  if (fNRecords > 0 && !LoadBlock(0)) return false;
  fState = ACA_ITER_READY;
  return true;
}

bool ACADataFileIter::MergeRuns(int& fd, std::vector<RunData>& runs) {
  while (runs.size() > 1) {
    int out = CreateTempFile();
    if (out < 0) return false;
    std::vector<RunData> merged;
    long outRecords = 0;
    for (std::size_t first = 0; first < runs.size(); first += kMergeFanIn) {
      std::size_t n = std::min(kMergeFanIn, runs.size() - first);
      if (!MergeGroup(fd, runs.data() + first, n, out)) return false;
      long count = 0;
      for (std::size_t r = first; r < first + n; ++r) count += runs[r].fCount;
      merged.push_back(RunData{outRecords, count});
      outRecords += count;
    }
    DropTempFile(fd);
    fd = out;
    runs.swap(merged);
  }
  return true;
}

// Merges consecutive runs of one file onto the end of another. Equal
// records come from the earlier run first, which keeps the sort stable.
bool ACADataFileIter::MergeGroup(int in, const RunData* runs, std::size_t nRuns, int out) {
  std::size_t width = static_cast<std::size_t>(fNRecordVars);
  std::size_t share = std::max<std::size_t>(1, RecordsInMemory() / (nRuns + 1));

  struct Reader {
    long fNext = 0;  // next record of the run to load
    long fEnd = 0;
    std::vector<double> fvBlock;
    std::size_t fPos = 0;  // in records, within the block
  };
  std::vector<Reader> readers(nRuns);
  auto refill = [&](Reader& reader) {
    std::size_t count = std::min(share, static_cast<std::size_t>(reader.fEnd - reader.fNext));
    reader.fvBlock.resize(count * width);
    reader.fPos = 0;
    if (count == 0) return true;
    if (!ReadAt(in, reader.fvBlock.data(), count * width, static_cast<std::size_t>(reader.fNext) * width))
      return false;
    reader.fNext += static_cast<long>(count);
    return true;
  };
  auto head = [&](std::size_t r) { return readers[r].fvBlock.data() + readers[r].fPos * width; };
  auto later = [&](std::size_t a, std::size_t b) {
    int c = CompareRecords(head(a), head(b));
    return c != 0 ? c > 0 : a > b;
  };
  std::priority_queue<std::size_t, std::vector<std::size_t>, decltype(later)> heap(later);
  for (std::size_t r = 0; r < nRuns; ++r) {
    readers[r].fNext = runs[r].fStart;
    readers[r].fEnd = runs[r].fStart + runs[r].fCount;
    if (!refill(readers[r])) return false;
    if (!readers[r].fvBlock.empty()) heap.push(r);
  }

  std::vector<double> output;
  output.reserve(share * width);
  while (!heap.empty()) {
    std::size_t r = heap.top();
    heap.pop();
    const double* record = head(r);
    output.insert(output.end(), record, record + width);
    if (output.size() >= share * width) {
      if (!WriteAll(out, output.data(), output.size())) return false;
      output.clear();
    }
    Reader& reader = readers[r];
    if (++reader.fPos * width >= reader.fvBlock.size() && !refill(reader)) return false;
    if (!reader.fvBlock.empty()) heap.push(r);
  }
  return WriteAll(out, output.data(), output.size());
}

// ---- temporary files ----

int ACADataFileIter::CreateTempFile() {
  std::error_code error;
  std::filesystem::path folder = std::filesystem::temp_directory_path(error);
  if (error) folder = "/tmp";
  std::string pattern = (folder / "glmixfit-records-XXXXXX").string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  int fd = ::mkstemp(name.data());
  if (fd < 0) return -1;
  fvTempFiles.push_back(TempFileData{std::string(name.data()), fd});
  return fd;
}

void ACADataFileIter::DropTempFile(int fd) {
  for (auto it = fvTempFiles.begin(); it != fvTempFiles.end(); ++it) {
    if (it->fFd != fd) continue;
    ::close(it->fFd);
    ::unlink(it->fPath.c_str());
    fvTempFiles.erase(it);
    return;
  }
}

void ACADataFileIter::RemoveTempFiles() {
  for (TempFileData& file : fvTempFiles) {
    ::close(file.fFd);
    ::unlink(file.fPath.c_str());
  }
  fvTempFiles.clear();
  fSortedFd = -1;
}

// ---- text and closing ----

bool ACADataFileIter::GetTextFile(const std::string& path) const {
  if (fbClosed || fState == ACA_ITER_FAILED) return false;
  AtomicFileWriter writer(path);
  if (!writer.IsOpen()) return false;
  std::ostream& out = writer.Stream();
  const ACAVarValidSpecs* specs = fpAdapter->GetVarValidSpecs();
  const ProcedureDataSource& dataSource = fpAdapter->GetDataSource();
  for (int v = 0; v < fNRecordVars; ++v) {
    int hostIndex = specs->GetZORVVarIndex(v);
    const ZORV_Variable* variable = hostIndex >= 0 ? dataSource.GetVariable(hostIndex) : nullptr;
    out << (v ? "\t" : "") << (variable ? std::string(variable->GetName()) : "v" + std::to_string(v));
  }
  out << '\n';
  std::size_t width = static_cast<std::size_t>(fNRecordVars);
  auto writeRecords = [&out, width](const double* values, std::size_t count) {
    for (std::size_t i = 0; i < count * width; ++i)
      out << RoundTripText(values[i]) << ((i + 1) % width == 0 ? "\n" : "\t");
  };
  if (!fbSpilled) {
    writeRecords(fvValues.data(), fvValues.size() / width);
  } else {
    std::vector<double> block;
    for (long first = 0; first < fNRecords;) {
      std::size_t count = std::min(RecordsInMemory(), static_cast<std::size_t>(fNRecords - first));
      block.resize(count * width);
      if (!ReadAt(fSortedFd, block.data(), block.size(), static_cast<std::size_t>(first) * width)) return false;
      writeRecords(block.data(), count);
      first += static_cast<long>(count);
    }
  }
  return writer.Commit();
}

void ACADataFileIter::CloseDataFile() {
  fbClosed = true;
  std::vector<double>().swap(fvValues);
  RemoveTempFiles();
  fbSpilled = false;
  fNRecords = 0;
  fPosition = 0;
  fBlockStart = 0;
  if (fState != ACA_ITER_FAILED) fState = ACA_ITER_END;
}
