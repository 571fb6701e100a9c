#include "host/files/AtomicFileWriter.h"

#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <vector>

namespace {

std::string Reason(int code) { return code == 0 ? std::string("unknown error") : std::strerror(code); }

// The permissions a new file gets from the process's mask.
mode_t NewFileMode() {
  const mode_t mask = ::umask(0);
  ::umask(mask);
  return static_cast<mode_t>(0666 & ~mask);
}

}  // namespace

AtomicFileWriter::AtomicFileWriter(const std::string& path) : fPath(path) {
  // Renaming over a device, a pipe or a folder would replace it: only a
  // regular file, or nothing, may stand under the name.
  struct stat existing {};
  if (::stat(path.c_str(), &existing) == 0 && !S_ISREG(existing.st_mode)) {
    Fail("it is not a regular file");
    return;
  }
  const std::filesystem::path target(path);
  const std::filesystem::path folder = target.has_parent_path() ? target.parent_path() : std::filesystem::path(".");
  std::string pattern = (folder / ("." + target.filename().string() + ".tmp-XXXXXX")).string();
  std::vector<char> name(pattern.begin(), pattern.end());
  name.push_back('\0');
  errno = 0;
  const int descriptor = ::mkstemp(name.data());
  if (descriptor < 0) {
    Fail(Reason(errno));
    return;
  }
  ::fchmod(descriptor, NewFileMode());
  ::close(descriptor);
  fTemporary = name.data();
  fStream.open(fTemporary, std::ios::binary | std::ios::trunc);
  if (!fStream.is_open()) {
    Fail(Reason(errno));
    std::remove(fTemporary.c_str());
    fTemporary.clear();
  }
}

void AtomicFileWriter::Fail(const std::string& reason) {
  fReason = reason;
  fError = "cannot write '" + fPath + "': " + reason;
}

AtomicFileWriter::~AtomicFileWriter() {
  if (fStream.is_open()) fStream.close();
  if (!fbCommitted && !fTemporary.empty()) std::remove(fTemporary.c_str());
}

bool AtomicFileWriter::Commit() {
  if (!fStream.is_open()) return false;
  fStream.flush();
  const bool written = fStream.good();
  fStream.close();
  if (!written || fStream.fail()) {
    Fail(Reason(errno));
    std::remove(fTemporary.c_str());
    fTemporary.clear();
    return false;
  }
  errno = 0;
  if (std::rename(fTemporary.c_str(), fPath.c_str()) != 0) {
    Fail(Reason(errno));
    std::remove(fTemporary.c_str());
    fTemporary.clear();
    return false;
  }
  fbCommitted = true;
  return true;
}
