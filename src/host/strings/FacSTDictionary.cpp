#include "host/strings/FacSTDictionary.h"

#include <filesystem>
#include <system_error>

#include "host/data/ZORV_Session.h"
#include "host/strings/FacSTDirectory.h"

namespace {

std::set<std::string>& MissingKeys() {
  static std::set<std::string> keys;
  return keys;
}

}  // namespace

const char* const FacSTDictionary::kGlobalTable = "Global";

FacSTDictionary::FacSTDictionary(const std::string& directory)
    : fpDirectory(FacSTDirectory::Get(directory)), fpGlobalDirectory(fpDirectory), fGlobal(kGlobalTable) {}

FacSTDictionary::~FacSTDictionary() = default;
FacSTDictionary::FacSTDictionary(const FacSTDictionary&) = default;
FacSTDictionary& FacSTDictionary::operator=(const FacSTDictionary&) = default;

std::string FacSTDictionary::SessionDirectory() {
  std::string directory = ZORV_Session::Current().GetResourceDir();
  if (!directory.empty() && directory.back() != '/') directory += '/';
  return directory + "strings";
}

void FacSTDictionary::SetProcedure(const std::string& name) { fProcedure = name; }

void FacSTDictionary::SetGlobalStringTable(const std::string& tableOrDirectory) {
  if (fpDirectory->GetTable(tableOrDirectory) != nullptr) {
    fpGlobalDirectory = fpDirectory;
    fGlobal = tableOrDirectory;
    return;
  }
  std::error_code error;
  if (std::filesystem::is_directory(tableOrDirectory, error)) {
    fpGlobalDirectory = FacSTDirectory::Get(tableOrDirectory);
    fGlobal = kGlobalTable;
    return;
  }
  // A name that is neither: kept, so that the global table is simply absent.
  fpGlobalDirectory = fpDirectory;
  fGlobal = tableOrDirectory;
}

const std::string* FacSTDictionary::Find(const std::string& key) const {
  const FacSTTable* procedure = fProcedure.empty() ? nullptr : fpDirectory->GetTable(fProcedure);
  if (procedure != nullptr) {
    if (const std::string* text = procedure->Find(key)) return text;
  }
  const FacSTTable* global = fpGlobalDirectory->GetTable(fGlobal);
  if (global != nullptr) {
    if (const std::string* text = global->Find(key)) return text;
  }
  for (const auto& entry : fpDirectory->GetTables()) {
    const FacSTTable* table = &entry.second;
    if (table == procedure || table == global) continue;
    if (const std::string* text = table->Find(key)) return text;
  }
  return nullptr;
}

std::string FacSTDictionary::LookUp(const std::string& key, unsigned long& missing) const {
  if (key.empty()) return key;
  if (const std::string* text = Find(key)) return *text;
  ++missing;
  MissingKeys().insert(key);
  return key;
}

std::string FacSTDictionary::LookUp(const std::string& key) const {
  unsigned long missing = 0;
  return LookUp(key, missing);
}

bool FacSTDictionary::Contains(const std::string& key) const { return Find(key) != nullptr; }

const std::string& FacSTDictionary::GetDirectory() const { return fpDirectory->GetDirectory(); }

std::vector<std::string> FacSTDictionary::GetProblems() const {
  std::vector<std::string> problems = fpDirectory->GetProblems();
  if (fpGlobalDirectory != fpDirectory) {
    problems.insert(problems.end(), fpGlobalDirectory->GetProblems().begin(),
                    fpGlobalDirectory->GetProblems().end());
  }
  return problems;
}

const std::set<std::string>& FacSTDictionary::GetMissingKeys() { return MissingKeys(); }

void FacSTDictionary::ClearMissingKeys() { MissingKeys().clear(); }
