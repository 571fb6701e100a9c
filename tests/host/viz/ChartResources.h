#pragma once

#include <filesystem>
#include <string>

// A resource folder of the test's own, with a "template" folder, which the
// session uses while the object lives; the session's own folder comes back
// after it.
class ChartResources {
 public:
  explicit ChartResources(bool withTemplateFolder = true);
  ~ChartResources();
  ChartResources(const ChartResources&) = delete;
  ChartResources& operator=(const ChartResources&) = delete;

  // Writes a template file.
  void Template(const std::string& name, const std::string& text) const;
  std::string Path() const { return fPath.string(); }

 private:
  std::filesystem::path fPath;
  std::string fSaved;
};
