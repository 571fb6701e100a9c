#pragma once

#include <map>
#include <string>
#include <vector>

// One string table: translation keys and their texts.
//
// Files of string tables ("*.strings", UTF-8) are read line by line:
//   - a line that begins with '#' is a comment, a blank line is skipped;
//   - "@table NAME" names the table the file's entries belong to (without
//     it, the file's name without its extension is the table's name);
//   - any other line is an entry: the key, one TAB, the text.
// In keys and texts "\t" stands for a tab, "\n" for a line feed, "\\" for a
// backslash and "\#" for a '#' (so that a key may begin with one); any other
// backslash is kept as it stands. A line that breaks these rules is reported
// with its file and line number and skipped; the first entry of a key wins.
class FacSTTable {
 public:
  FacSTTable() = default;
  explicit FacSTTable(const std::string& name) : fName(name) {}

  const std::string& GetName() const { return fName; }
  void SetName(const std::string& name) { fName = name; }

  // Null when the key is not in the table.
  const std::string* Find(const std::string& key) const;
  // False, and the table unchanged, when the key is there already.
  bool Add(const std::string& key, const std::string& text);
  std::size_t Size() const { return fEntries.size(); }
  const std::map<std::string, std::string>& GetEntries() const { return fEntries; }

  // Reads a file of string tables. Its entries go to the table named in the
  // file (a file holds one table); `tables` gains that table or grows it.
  // Problems go to `problems`, one "file:line: what" each. False when the
  // file cannot be read at all.
  static bool LoadFile(const std::string& path, std::map<std::string, FacSTTable>& tables,
                       std::vector<std::string>& problems);
  // Undoes the escapes of a key or a text.
  static std::string Unescape(const std::string& text);

 private:
  std::string fName;
  std::map<std::string, std::string> fEntries;
};
