#pragma once

#include <cstdio>
#include <filesystem>
#include <string>
#include <vector>

#include <unistd.h>

#include "host/data/ProcedureDataSource.h"

namespace hostdata_test {

// A dictionary-only data source: variables, split variables and a weight.
class HostDataTestSource : public ProcedureDataSource {
 public:
  int Add(const std::string& name, int type) {
    fvVariables.emplace_back(name, type);
    return static_cast<int>(fvVariables.size()) - 1;
  }
  void SetSplitVars(const std::vector<int>& columns) { fvSplitVars = columns; }
  void SetWeight(int column) { fWeight = column; }

  int ColumnCount() const override { return static_cast<int>(fvVariables.size()); }
  const ZORV_Variable* GetVariable(int index) const override {
    return index >= 0 && index < ColumnCount() ? &fvVariables[static_cast<std::size_t>(index)] : nullptr;
  }
  ZORV_Variable* GetVariable(int index) override {
    return index >= 0 && index < ColumnCount() ? &fvVariables[static_cast<std::size_t>(index)] : nullptr;
  }
  int FindVarIndex(const char*, int) const override { return -1; }
  bool MakeVariable(int, unsigned int*) override { return false; }
  int VarIndex(long code) const override { return static_cast<int>(code); }
  int GetWeightVarIndex() const override { return fWeight; }
  int GetNSplitVars() const override { return static_cast<int>(fvSplitVars.size()); }
  int GetSplitVar(int i) const override { return fvSplitVars[static_cast<std::size_t>(i)]; }
  bool SplitsInOneTable() const override { return false; }

 private:
  std::vector<ZORV_Variable> fvVariables;
  std::vector<int> fvSplitVars;
  int fWeight = -1;
};

// A fresh directory for one test's files, removed with the object.
class ScratchDir {
 public:
  explicit ScratchDir(const std::string& tag) {
    fPath = std::filesystem::temp_directory_path() /
            ("glmix_hostdata_" + tag + "_" + std::to_string(static_cast<long>(::getpid())));
    std::filesystem::remove_all(fPath);
    std::filesystem::create_directories(fPath);
  }
  ~ScratchDir() {
    std::error_code ignored;
    std::filesystem::remove_all(fPath, ignored);
  }
  std::string File(const std::string& name) const { return (fPath / name).string(); }
  std::string Path() const { return fPath.string(); }

 private:
  std::filesystem::path fPath;
};

inline void WriteFile(const std::string& path, const std::string& text) {
  std::FILE* f = std::fopen(path.c_str(), "wb");
  if (f) {
    std::fwrite(text.data(), 1, text.size(), f);
    std::fclose(f);
  }
}

}  // namespace hostdata_test
