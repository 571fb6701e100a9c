#include "host/files/ExtNameStr.h"

#include <unistd.h>

#include <cstdio>
#include <filesystem>

#include "host/data/ZORV_Session.h"

void ExtNameStr::SetGeneric(const std::string& name) {
  const char* blanks = " \t\r\n";
  std::size_t first = name.find_first_not_of(blanks);
  if (first == std::string::npos) {
    fGeneric.clear();
    return;
  }
  std::size_t last = name.find_last_not_of(blanks);
  fGeneric = name.substr(first, last - first + 1);
}

void ExtNameStr::SetGeneric(const char* name) { SetGeneric(std::string(name ? name : "")); }

std::string ExtNameStr::GetPath() const {
  if (fGeneric.empty()) return fGeneric;
  std::filesystem::path path(fGeneric);
  const std::string& base = ZORV_Session::Current().GetCommandDir();
  if (path.is_absolute() || base.empty()) return fGeneric;
  return (std::filesystem::path(base) / path).lexically_normal().string();
}

bool ExtNameStr::Open(std::ofstream& stream, std::ios_base::openmode mode) const {
  if (stream.is_open()) stream.close();
  stream.clear();
  if (fGeneric.empty()) return false;
  stream.open(GetPath(), mode | std::ios_base::out);
  return stream.is_open();
}

int ExtNameStr::Access(int mode) const {
  if (fGeneric.empty()) return ACCESS_ABSENT;
  const std::string path = GetPath();
  if (::access(path.c_str(), F_OK) != 0) return ACCESS_ABSENT;
  int bits = 0;
  if (mode & MODE_WRITE) bits |= W_OK;
  if (mode & MODE_READ) bits |= R_OK;
  if (bits == 0) return ACCESS_OK;
  return ::access(path.c_str(), bits) == 0 ? ACCESS_OK : ACCESS_DENIED;
}

bool ExtNameStr::remove() const {
  if (fGeneric.empty()) return false;
  return std::remove(GetPath().c_str()) == 0;
}
