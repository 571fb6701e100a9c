#include "host/viz/FetchFile.h"

#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>

std::string FetchFile::fetch(const std::string& path, bool bText, bool bStripByteOrderMark) {
  // A folder, a device or a pipe of that name would never give a template
  // (and a pipe could keep the reader waiting).
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(path, error);
  if (std::filesystem::exists(status) && !std::filesystem::is_regular_file(status)) {
    throw std::runtime_error("the file \"" + path + "\" is not a regular file");
  }
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error("cannot open the file \"" + path + "\"");
  std::string bytes((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) throw std::runtime_error("cannot read the file \"" + path + "\"");

  if (bStripByteOrderMark && bytes.compare(0, 3, "\xEF\xBB\xBF") == 0) bytes.erase(0, 3);
  if (!bText) return bytes;

  std::string text;
  text.reserve(bytes.size());
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (bytes[i] == '\r') {
      text += '\n';
      if (i + 1 < bytes.size() && bytes[i + 1] == '\n') ++i;
    } else {
      text += bytes[i];
    }
  }
  return text;
}
