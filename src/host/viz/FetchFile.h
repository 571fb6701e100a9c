#pragma once

#include <string>

// Reads a file of the host's resources, such as a chart template, whole.
class FetchFile {
 public:
  // The file's bytes. With bText, CR LF and lone CR line ends become LF;
  // with bStripByteOrderMark, a leading UTF-8 byte order mark is dropped.
  // A file that cannot be read, or is not a regular file, raises
  // std::runtime_error naming the path.
  static std::string fetch(const std::string& path, bool bText, bool bStripByteOrderMark);
};
