#pragma once

#include <string>

// Translated texts by key for a command: the key is looked up in the string
// table named by the procedure's title (then the global table), and the
// markers "^1" to "^5" of the text take the arguments. A key that is not
// found is its own text.
class ParserMessage {
 public:
  ParserMessage() = default;

  void SetCommandName(const std::string& name) { fCommandName = name; }
  const std::string& GetCommandName() const { return fCommandName; }
  void SetProcedureTitle(const std::string& title) { fProcedureTitle = title; }
  const std::string& GetProcedureTitle() const { return fProcedureTitle; }

  // The text of `key` with up to five arguments; a null argument counts as
  // absent, and its marker stays as written. A null key gives "".
  std::string GetTranslatedText(const char* key, const char* a1 = nullptr, const char* a2 = nullptr,
                                const char* a3 = nullptr, const char* a4 = nullptr,
                                const char* a5 = nullptr) const;

 private:
  std::string fCommandName;
  std::string fProcedureTitle;
};
