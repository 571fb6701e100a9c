#pragma once

#include <string>

// Writes a rendered document to a file, under a temporary name renamed into
// place once complete.
class OmOutputFile {
 public:
  // Writes `content` to `path`, replacing the file. On failure returns false
  // and sets `error` to a message that names the path and the reason.
  static bool Write(const std::string& path, const std::string& content, std::string& error);
};
