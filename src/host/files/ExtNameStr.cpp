#include "host/files/ExtNameStr.h"

#include <cstdio>
#include <unistd.h>

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

bool ExtNameStr::Open(std::ofstream& stream, std::ios_base::openmode mode) const {
  if (stream.is_open()) stream.close();
  stream.clear();
  if (fGeneric.empty()) return false;
  stream.open(fGeneric, mode | std::ios_base::out);
  return stream.is_open();
}

int ExtNameStr::Access(int mode) const {
  if (fGeneric.empty()) return ACCESS_ABSENT;
  if (::access(fGeneric.c_str(), F_OK) != 0) return ACCESS_ABSENT;
  int bits = 0;
  if (mode & MODE_WRITE) bits |= W_OK;
  if (mode & MODE_READ) bits |= R_OK;
  if (bits == 0) return ACCESS_OK;
  return ::access(fGeneric.c_str(), bits) == 0 ? ACCESS_OK : ACCESS_DENIED;
}

bool ExtNameStr::remove() const {
  if (fGeneric.empty()) return false;
  return std::remove(fGeneric.c_str()) == 0;
}
