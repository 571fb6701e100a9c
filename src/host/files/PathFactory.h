#pragma once

#include <string>

// Where the host keeps things on disk. Every path is a directory and ends
// with '/', so that a file name can follow directly.
class PathFactory {
 public:
  // The kinds of path object; each kind has one instance for the process.
  enum Kind {
    PROCEDURE = 0,    // what a procedure's run reads and writes
    PRESENTATION = 3  // what tables and charts read: string tables, templates
  };

  // The instance of the procedure, or of the given kind. An unknown kind
  // gives the procedure's instance.
  static PathFactory* getPathInstance();
  static PathFactory* getPathInstance(int kind);

  virtual ~PathFactory() = default;

  // Where debug and scratch files may be written: the session's writable
  // directory.
  virtual std::string GetWritablePath() const;
  // The resource directory, which holds the "template" directory of chart
  // templates.
  virtual std::string GetResourcePath() const;
  // The directory of the string tables: "strings" in the resource directory.
  virtual std::string GetStringTablePath() const;

  int GetKind() const { return fKind; }

 protected:
  explicit PathFactory(int kind) : fKind(kind) {}

 private:
  int fKind;
};
