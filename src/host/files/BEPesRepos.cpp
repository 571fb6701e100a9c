#include "host/files/BEPesRepos.h"

#include <fstream>

#include "host/output/BpComposite.h"
#include "host/output/BpError.h"
#include "host/output/BpString.h"

std::vector<BEPesRepos::FileData>& BEPesRepos::Files() {
  static std::vector<FileData> files;
  return files;
}

bool BEPesRepos::IsReadable(const std::string& name) {
  if (name.empty()) return false;
  std::ifstream in(name, std::ios::binary);
  return in.is_open();
}

void BEPesRepos::BEPesClear() { Files().clear(); }

bool BEPesRepos::Store(const char* name, int kind, int flag) {
  std::string fileName = name ? name : "";
  if (fileName.empty()) return false;
  bool readable = IsReadable(fileName);
  auto& files = Files();
  for (auto& file : files) {
    if (file.fName == fileName) {
      file.fKind = kind;
      file.fbDeliver = flag != 0;
      file.fbReadable = readable;
      return readable;
    }
  }
  FileData file;
  file.fName = fileName;
  file.fKind = kind;
  file.fbDeliver = flag != 0;
  file.fbReadable = readable;
  files.push_back(file);
  return readable;
}

std::vector<BEPesRepos::FileData> BEPesRepos::FindUnreadable() {
  std::vector<FileData> bad;
  for (auto& file : Files()) {
    file.fbReadable = IsReadable(file.fName);
    if (!file.fbReadable) bad.push_back(file);
  }
  return bad;
}

int BEPesRepos::BEPesCheckError() {
  std::vector<FileData> bad = FindUnreadable();
  for (const FileData& file : bad) {
    BpComposite text("The output file ^1 is missing or cannot be read.", false);
    text.Add(BpString(file.fName, false, false));
    text.Finish();
    BpError(text, BpErrorShowOutput, BpErrorLevelError);
  }
  return static_cast<int>(bad.size());
}

const std::vector<BEPesRepos::FileData>& BEPesRepos::GetFiles() { return Files(); }

std::vector<std::string> BEPesRepos::GetDeliveries(int kind) {
  std::vector<std::string> names;
  for (const auto& file : Files()) {
    if (file.fKind == kind && file.fbDeliver && IsReadable(file.fName)) names.push_back(file.fName);
  }
  return names;
}

bool TestAndStoreToPes(const char* name, int kind, int flag) { return BEPesRepos::Store(name, kind, flag); }
