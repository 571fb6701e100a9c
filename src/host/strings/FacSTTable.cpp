#include "host/strings/FacSTTable.h"

#include <fstream>
#include <sstream>

#include "numeric/common/MCUtf8.h"

namespace {

bool IsValidUtf8(const std::string& text) {
  std::size_t bad = 0;
  return MCCommon_850::MCUtf8::Validate(text.data(), text.size(), bad);
}

std::string StemOf(const std::string& path) {
  std::size_t slash = path.find_last_of("/\\");
  std::string file = slash == std::string::npos ? path : path.substr(slash + 1);
  std::size_t dot = file.rfind('.');
  return dot == std::string::npos || dot == 0 ? file : file.substr(0, dot);
}

}  // namespace

const std::string* FacSTTable::Find(const std::string& key) const {
  auto it = fEntries.find(key);
  return it == fEntries.end() ? nullptr : &it->second;
}

bool FacSTTable::Add(const std::string& key, const std::string& text) {
  return fEntries.emplace(key, text).second;
}

std::string FacSTTable::Unescape(const std::string& text) {
  std::string out;
  out.reserve(text.size());
  for (std::size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '\\' && i + 1 < text.size()) {
      char next = text[i + 1];
      if (next == 't') {
        out += '\t';
        ++i;
        continue;
      }
      if (next == 'n') {
        out += '\n';
        ++i;
        continue;
      }
      if (next == '\\' || next == '#') {
        out += next;
        ++i;
        continue;
      }
    }
    out += text[i];
  }
  return out;
}

bool FacSTTable::LoadFile(const std::string& path, std::map<std::string, FacSTTable>& tables,
                          std::vector<std::string>& problems) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    problems.push_back(path + ": the file cannot be read");
    return false;
  }
  auto report = [&](long line, const std::string& what) {
    std::ostringstream message;
    message << path << ':' << line << ": " << what;
    problems.push_back(message.str());
  };

  std::string tableName = StemOf(path);
  bool bNamed = false;
  bool bHadEntry = false;
  // Entries are kept aside until the file is read, since "@table" names
  // the table for all of them.
  std::vector<std::pair<long, std::pair<std::string, std::string>>> entries;

  std::string line;
  long number = 0;
  while (std::getline(in, line)) {
    ++number;
    if (number == 1 && line.compare(0, 3, "\xEF\xBB\xBF") == 0) line.erase(0, 3);
    if (!line.empty() && line.back() == '\r') line.pop_back();
    if (line.empty() || line[0] == '#') continue;
    if (line.find_first_not_of(" \t") == std::string::npos) continue;
    if (!IsValidUtf8(line)) {
      report(number, "the line is not valid UTF-8");
      continue;
    }
    if (line.compare(0, 6, "@table") == 0 && (line.size() == 6 || line[6] == ' ' || line[6] == '\t')) {
      std::string name = line.substr(6);
      std::size_t first = name.find_first_not_of(" \t");
      std::size_t last = name.find_last_not_of(" \t");
      name = first == std::string::npos ? std::string() : name.substr(first, last - first + 1);
      if (name.empty()) {
        report(number, "\"@table\" without a table name");
      } else if (bNamed) {
        report(number, "a second \"@table\" line; a file holds one table");
      } else if (bHadEntry) {
        report(number, "\"@table\" must come before the entries");
      } else {
        tableName = name;
        bNamed = true;
      }
      continue;
    }
    std::size_t tab = line.find('\t');
    if (tab == std::string::npos) {
      report(number, "no tab between the key and the text");
      continue;
    }
    std::string key = Unescape(line.substr(0, tab));
    if (key.empty()) {
      report(number, "the key is empty");
      continue;
    }
    bHadEntry = true;
    entries.push_back({number, {key, Unescape(line.substr(tab + 1))}});
  }

  FacSTTable& table = tables[tableName];
  table.SetName(tableName);
  for (const auto& entry : entries) {
    if (!table.Add(entry.second.first, entry.second.second)) {
      report(entry.first, "the key \"" + entry.second.first + "\" is defined twice; the first entry is kept");
    }
  }
  return true;
}
