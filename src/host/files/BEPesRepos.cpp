#include "host/files/BEPesRepos.h"

#include <sys/stat.h>

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

std::vector<BEPesRepos::FailedWrite>& BEPesRepos::FailedWrites() {
  static std::vector<FailedWrite> failed;
  return failed;
}

// Only a regular file of a bounded size is read back: a name that stands for
// a device or a pipe would never end.
bool BEPesRepos::Read(const std::string& name, std::string* content) {
  if (name.empty()) return false;
  const std::string path = ExtNameStr(name).GetPath();
  struct stat info {};
  if (::stat(path.c_str(), &info) != 0 || !S_ISREG(info.st_mode)) return false;
  if (static_cast<unsigned long long>(info.st_size) > kMaxReadBytes) return false;
  std::ifstream in(path, std::ios::binary);
  if (!in.is_open()) return false;
  if (content != nullptr) {
    content->assign(static_cast<std::size_t>(info.st_size), '\0');
    in.read(&(*content)[0], static_cast<std::streamsize>(content->size()));
    content->resize(static_cast<std::size_t>(in.gcount()));
  }
  return !in.bad();
}

void BEPesRepos::BEPesClear() {
  Files().clear();
  FailedWrites().clear();
}

void BEPesRepos::NoteFailedWrite(const std::string& name, const std::string& reason) {
  FailedWrites().push_back(FailedWrite{name, reason});
}

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
  for (const FailedWrite& failed : FailedWrites()) {
    BpComposite text("The output file ^1 was not written: ^2.", false);
    text.Add(BpString(failed.fName, false, false));
    text.Add(BpString(failed.fReason, false, false));
    text.Finish();
    BpError(text, BpErrorShowOutput, BpErrorLevelError);
  }
  std::vector<std::string> bad = FindUnreadable();
  for (const std::string& name : bad) {
    BpComposite text("The output file ^1 is missing or cannot be read.", false);
    text.Add(BpString(name, false, false));
    text.Finish();
    BpError(text, BpErrorShowOutput, BpErrorLevelError);
  }
  return static_cast<int>(FailedWrites().size() + bad.size());
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
