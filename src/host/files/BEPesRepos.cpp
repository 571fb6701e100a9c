#include "host/files/BEPesRepos.h"

#include <algorithm>
#include <fstream>
#include <sstream>

#include "host/files/ExtNameStr.h"
#include "host/output/BpComposite.h"
#include "host/output/BpError.h"
#include "host/output/BpString.h"

std::vector<BEPesRepos::FileData>& BEPesRepos::Files() {
  static std::vector<FileData> files;
  return files;
}

bool BEPesRepos::Read(const std::string& name, std::string* content) {
  if (name.empty()) return false;
  std::ifstream in(ExtNameStr(name).GetPath(), std::ios::binary);
  if (!in.is_open()) return false;
  if (content != nullptr) {
    std::ostringstream buffer;
    buffer << in.rdbuf();
    *content = buffer.str();
  }
  return !in.bad();
}

void BEPesRepos::BEPesClear() { Files().clear(); }

bool BEPesRepos::Store(const char* name, int kind, int flag) {
  std::string fileName = name ? name : "";
  if (fileName.empty()) return false;
  FileData file;
  file.fName = fileName;
  file.fKind = kind;
  file.fbDeliver = flag != 0;
  file.fbReadable = Read(fileName, &file.fContent);
  file.fvSplit = ZORV_Session::Current().GetCurrentSplit();
  Files().push_back(std::move(file));
  return Files().back().fbReadable;
}

std::vector<std::string> BEPesRepos::FindUnreadable() {
  std::vector<std::string> seen;
  std::vector<std::string> bad;
  for (const auto& file : Files()) {
    if (std::find(seen.begin(), seen.end(), file.fName) != seen.end()) continue;
    seen.push_back(file.fName);
    if (!Read(file.fName, nullptr)) bad.push_back(file.fName);
  }
  return bad;
}

int BEPesRepos::BEPesCheckError() {
  std::vector<std::string> bad = FindUnreadable();
  for (const std::string& name : bad) {
    BpComposite text("The output file ^1 is missing or cannot be read.", false);
    text.Add(BpString(name, false, false));
    text.Finish();
    BpError(text, BpErrorShowOutput, BpErrorLevelError);
  }
  return static_cast<int>(bad.size());
}

const std::vector<BEPesRepos::FileData>& BEPesRepos::GetFiles() { return Files(); }

std::vector<const BEPesRepos::FileData*> BEPesRepos::GetDeliveries(int kind) {
  std::vector<const FileData*> out;
  for (const auto& file : Files()) {
    if (file.fKind == kind && file.fbDeliver && file.fbReadable) out.push_back(&file);
  }
  return out;
}

bool TestAndStoreToPes(const char* name, int kind, int flag) { return BEPesRepos::Store(name, kind, flag); }
