#pragma once

#include <sys/wait.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <string>

// Opening a page in a real browser (headless Chromium) from a test, for the
// tests of the HTML report. CI installs Chromium (scripts/install-deps.sh);
// without it the tests that need it fail.
namespace browser_support {

const int kTimeoutSeconds = 90;

// A scratch folder of this process's own, empty.
inline std::string Scratch(const std::string& name = "glmix-browser-test") {
  const std::filesystem::path path =
      std::filesystem::temp_directory_path() / (name + "-" + std::to_string(static_cast<long>(::getpid())));
  std::filesystem::remove_all(path);
  std::filesystem::create_directories(path);
  return path.string();
}

inline std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

// The browser's path, or empty when there is none.
inline std::string Browser() {
  for (const char* name : {"chromium", "chromium-browser"}) {
    const std::string command = std::string("command -v ") + name + " 2>/dev/null";
    FILE* pipe = ::popen(command.c_str(), "r");
    if (pipe == nullptr) continue;
    char buffer[512] = {0};
    const bool found = std::fgets(buffer, sizeof buffer, pipe) != nullptr;
    ::pclose(pipe);
    if (!found) continue;
    std::string path = buffer;
    while (!path.empty() && (path.back() == '\n' || path.back() == '\r')) path.pop_back();
    if (!path.empty()) return path;
  }
  return std::string();
}

// Runs the browser headless on a file; its exit status, or -1.
inline int RunBrowser(const std::string& browser, const std::string& scratch, const std::string& arguments,
               const std::string& output) {
  // Without the background-network switches the browser's own connections
  // would be refused on a closed network and slow it down.
  const std::string command = "timeout " + std::to_string(kTimeoutSeconds) + " '" + browser +
                              "' --headless --no-sandbox --disable-gpu --disable-quic --no-first-run "
                              "--disable-background-networking --disable-component-update --disable-sync "
                              "--hide-scrollbars --user-data-dir='" +
                              scratch + "/profile' " + arguments + " > '" + output + "' 2> '" + scratch +
                              "/browser.log'";
  const int status = std::system(command.c_str());
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

inline std::string Unescaped(const std::string& html) {
  std::string out;
  for (std::size_t i = 0; i < html.size(); ++i) {
    if (html.compare(i, 4, "&lt;") == 0) {
      out += '<';
      i += 3;
    } else if (html.compare(i, 4, "&gt;") == 0) {
      out += '>';
      i += 3;
    } else if (html.compare(i, 6, "&quot;") == 0) {
      out += '"';
      i += 5;
    } else if (html.compare(i, 5, "&amp;") == 0) {
      out += '&';
      i += 4;
    } else {
      out += html[i];
    }
  }
  return out;
}

// The text of the element with that id in a page the browser dumped, with
// the HTML escapes undone; empty when there is none.
inline std::string ElementText(const std::string& dom, const std::string& id) {
  const std::string open = "<pre id=\"" + id + "\">";
  const std::size_t start = dom.find(open);
  if (start == std::string::npos) return std::string();
  const std::size_t end = dom.find("</pre>", start);
  return Unescaped(dom.substr(start + open.size(), end - start - open.size()));
}

}  // namespace browser_support
