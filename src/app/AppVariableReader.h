#pragma once

#include <cstddef>
#include <functional>
#include <string>
#include <vector>

class AppCommandReader;
class ZORV_Dataset;

// Reads the variables that host commands name, and says where a name is not
// a variable of the active data.
class AppVariableReader {
 public:
  // Fails, at the command's first word, when there are no data to work on.
  static void NeedData(AppCommandReader& reader, const ZORV_Dataset* data);
  // One variable: its column. `expected` describes it in messages ("a
  // weight variable").
  static int Read(AppCommandReader& reader, const ZORV_Dataset& data, const std::string& expected);
  // Variables up to the first token that is not a word, or that `ends`
  // says ends the list (a keyword), each named once; at least one.
  static std::vector<int> ReadList(AppCommandReader& reader, const ZORV_Dataset& data, const std::string& expected,
                                   const std::function<bool(const AppCommandReader&)>& ends = nullptr);
  // Fails unless the variables of a list read from token `first` on are all
  // of the first one's type; the result is whether they are strings.
  static bool OneType(const AppCommandReader& reader, const ZORV_Dataset& data, std::size_t first,
                      const std::vector<int>& columns);
};
