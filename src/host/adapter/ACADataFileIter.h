#pragma once

#include <cstddef>
#include <string>
#include <vector>

#include "numeric/common/RecordIterator.h"

class ACAInputAdapter;

// The records of one split, read from another iterator and sorted by the
// given record variables: ascending, not-a-number last, ties in the order
// read. Its states are those of ACAIterState; it fails (state 3) at
// construction when the record layout is empty, a sort variable lies outside
// it, or the record count is negative.
//
// Records are kept in memory up to a limit in bytes. Past it they go to a
// temporary file in the system's temporary folder: each memory load is
// sorted and written as a run, and the runs are merged, a few at a time,
// into one sorted file, which is then read back one memory load at a time.
// The temporary files are removed by CloseDataFile, by a new FillDataFile
// and by the destructor.
class ACADataFileIter : public MCCommon_850::RecordIterator {
 public:
  // `sortVars` are record positions; `nRecords` the expected number of
  // records, which sizes the storage.
  ACADataFileIter(const ACAInputAdapter& adapter, const std::vector<int>& sortVars, int nRecords);
  ~ACADataFileIter() override;

  ACADataFileIter(const ACADataFileIter&) = delete;
  ACADataFileIter& operator=(const ACADataFileIter&) = delete;

  bool HasRecord() const override;
  void Next() override;
  int GetState() const override { return fState; }
  void Rewind() override;
  // Non-null while HasRecord is true; valid until the next move.
  const double* Current() const override;

  // Reads the source's records up to the end of its split, replacing what
  // the file held, sorts them and stands at the first. False, with the file
  // failed, when the source delivers a null record or fails itself, or a
  // temporary file cannot be written or read.
  bool FillDataFile(MCCommon_850::RecordIterator& source);
  // Writes the records as tab-separated text, one line a record under a line
  // of the variable names. False when the file is failed or closed or the
  // text cannot be written.
  bool GetTextFile(const std::string& path) const;
  // Releases the records and removes the temporary files; reading ends.
  void CloseDataFile();

  // The memory limit of new files, in bytes; 256 MiB to start with.
  static void SetDefaultMemoryLimit(std::size_t bytes);
  static std::size_t GetDefaultMemoryLimit();
  // This file's memory limit; it holds at least one record. Takes effect at
  // the next FillDataFile.
  void SetMemoryLimit(std::size_t bytes) { fMemoryLimit = bytes; }
  std::size_t GetMemoryLimit() const { return fMemoryLimit; }
  // Whether the records went to a temporary file.
  bool GetSpilled() const { return fbSpilled; }
  // The temporary files that exist now.
  std::vector<std::string> GetTempFiles() const;

  int GetNRecordVars() const { return fNRecordVars; }
  int GetNRecords() const { return static_cast<int>(fNRecords); }
  const std::vector<int>& GetSortVars() const { return fvSortVars; }
  int GetExpectedRecords() const { return fExpectedRecords; }

 private:
  struct TempFileData {
    std::string fPath;
    int fFd = -1;
  };
  struct RunData {
    long fStart = 0;  // in records
    long fCount = 0;
  };

  std::size_t RecordsInMemory() const;
  void SortRecords(std::vector<double>& values) const;
  int CompareRecords(const double* a, const double* b) const;
  // A new temporary file, open for reading and writing; -1 when it cannot
  // be made.
  int CreateTempFile();
  void DropTempFile(int fd);
  void RemoveTempFiles();
  bool MergeRuns(int& fd, std::vector<RunData>& runs);
  bool MergeGroup(int in, const RunData* runs, std::size_t nRuns, int out);
  bool LoadBlock(long first);
  void FailFile();

  const ACAInputAdapter* fpAdapter;
  std::vector<int> fvSortVars;
  int fNRecordVars;
  int fExpectedRecords;
  std::size_t fMemoryLimit;
  std::vector<double> fvValues;  // record after record: all of them, or the block read back
  long fNRecords = 0;
  long fPosition = 0;
  long fBlockStart = 0;  // record number of the first record in fvValues
  bool fbSpilled = false;
  int fSortedFd = -1;  // the sorted records, once spilled
  std::vector<TempFileData> fvTempFiles;  // every temporary file that exists
  bool fbClosed = false;
  int fState;
};
