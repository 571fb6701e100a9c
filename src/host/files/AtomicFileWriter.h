#pragma once

#include <fstream>
#include <string>

// Writes a file under a temporary name in its own folder and renames it into
// place once it is complete, so that the file is never seen half written
// and a write that fails or is abandoned leaves the old file as it was.
class AtomicFileWriter {
 public:
  // Creates the temporary file beside `path`. IsOpen() says whether that
  // worked, GetError() why not. A name that stands for anything but a
  // regular file (a device, a pipe, a folder) is refused.
  explicit AtomicFileWriter(const std::string& path);
  // Removes the temporary file unless it was committed.
  ~AtomicFileWriter();
  AtomicFileWriter(const AtomicFileWriter&) = delete;
  AtomicFileWriter& operator=(const AtomicFileWriter&) = delete;

  bool IsOpen() const { return fStream.is_open(); }
  const std::string& GetError() const { return fError; }
  // The reason alone, without the file's name.
  const std::string& GetReason() const { return fReason; }
  std::ostream& Stream() { return fStream; }

  // Closes the temporary file and renames it to the path. False, with the
  // reason in GetError(), when writing or renaming failed; the temporary
  // file is then gone.
  bool Commit();

 private:
  void Fail(const std::string& reason);

  std::string fPath;
  std::string fTemporary;
  std::ofstream fStream;
  std::string fError;
  std::string fReason;
  bool fbCommitted = false;
};
