#include "host/strings/FacSTDirectory.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

namespace {

std::map<std::string, std::shared_ptr<const FacSTDirectory>>& Cache() {
  static std::map<std::string, std::shared_ptr<const FacSTDirectory>> cache;
  return cache;
}

}  // namespace

std::shared_ptr<const FacSTDirectory> FacSTDirectory::Get(const std::string& directory) {
  auto& cache = Cache();
  auto it = cache.find(directory);
  if (it != cache.end()) return it->second;
  auto loaded = std::make_shared<const FacSTDirectory>(directory);
  cache[directory] = loaded;
  return loaded;
}

void FacSTDirectory::ClearCache() { Cache().clear(); }

FacSTDirectory::FacSTDirectory(const std::string& directory) : fDirectory(directory) {
  namespace fs = std::filesystem;
  std::error_code error;
  if (!fs::is_directory(directory, error)) {
    fvProblems.push_back(directory + ": no such directory of string tables");
    return;
  }
  std::vector<std::string> files;
  for (fs::directory_iterator it(directory, error), end; !error && it != end; it.increment(error)) {
    if (it->path().extension() == ".strings" && it->is_regular_file(error)) files.push_back(it->path().string());
  }
  if (error) fvProblems.push_back(directory + ": " + error.message());
  std::sort(files.begin(), files.end());
  for (const std::string& file : files) FacSTTable::LoadFile(file, fTables, fvProblems);
}

const FacSTTable* FacSTDirectory::GetTable(const std::string& name) const {
  auto it = fTables.find(name);
  return it == fTables.end() ? nullptr : &it->second;
}
