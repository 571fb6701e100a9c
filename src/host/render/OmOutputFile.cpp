#include "host/render/OmOutputFile.h"

#include "host/files/AtomicFileWriter.h"

bool OmOutputFile::Write(const std::string& path, const std::string& content, std::string& error) {
  error.clear();
  if (path.empty()) {
    error = "cannot write output file: no file name given";
    return false;
  }
  AtomicFileWriter writer(path);
  if (writer.IsOpen()) {
    writer.Stream().write(content.data(), static_cast<std::streamsize>(content.size()));
    if (writer.Commit()) return true;
  }
  error = "cannot write output file '" + path + "': " + writer.GetReason();
  return false;
}
