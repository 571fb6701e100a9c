#include "host/render/OmOutputFile.h"

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace {

std::string Reason(int code) {
  if (code == 0) return "unknown error";
  return std::strerror(code);
}

}  // namespace

bool OmOutputFile::Write(const std::string& path, const std::string& content, std::string& error) {
  error.clear();
  if (path.empty()) {
    error = "cannot write output file: no file name given";
    return false;
  }
  errno = 0;
  std::FILE* file = std::fopen(path.c_str(), "wb");
  if (file == nullptr) {
    error = "cannot write output file '" + path + "': " + Reason(errno);
    return false;
  }
  errno = 0;
  const std::size_t written = std::fwrite(content.data(), 1, content.size(), file);
  const int writeErrno = errno;
  const bool writeFailed = written != content.size() || std::ferror(file) != 0;
  errno = 0;
  const bool closeFailed = std::fclose(file) != 0;
  const int closeErrno = errno;
  if (writeFailed || closeFailed) {
    error = "cannot write output file '" + path + "': " + Reason(writeFailed ? writeErrno : closeErrno);
    return false;
  }
  return true;
}
