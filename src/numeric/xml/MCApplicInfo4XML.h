#pragma once

#include <iosfwd>
#include <string>

namespace MCXML_850 {

// What a written document says about the application that wrote it: its
// name, its version and a copyright text, and whether the document carries
// the time it was written (off by default, so that documents of equal runs
// are equal).
class MCApplicInfo4XML {
 public:
  MCApplicInfo4XML();
  MCApplicInfo4XML(const std::string& name, const std::string& version, const std::string& copyright);

  const std::string& GetApplicationName() const { return fApplicationName; }
  void SetApplicationName(const std::string& name) { fApplicationName = name; }
  const std::string& GetApplicationVersion() const { return fApplicationVersion; }
  void SetApplicationVersion(const std::string& version) { fApplicationVersion = version; }
  const std::string& GetCopyright() const { return fCopyright; }
  void SetCopyright(const std::string& copyright) { fCopyright = copyright; }
  bool GetIncludeTimestamp() const { return fbIncludeTimestamp; }
  void SetIncludeTimestamp(bool include) { fbIncludeTimestamp = include; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  bool fbIncludeTimestamp;
  std::string fApplicationName;
  std::string fApplicationVersion;
  std::string fCopyright;
};

}  // namespace MCXML_850
