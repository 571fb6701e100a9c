#pragma once

#include <cstring>
#include <memory>
#include <string>

#include "app/AppCommandError.h"
#include "app/AppCommandReader.h"
#include "app/AppLexer.h"
#include "app/AppMixedCommand.h"
#include "app/AppMixedParser.h"
#include "base/MIXCommandLayout.h"
#include "host/data/ZORV_Dataset.h"
#include "host/io/DataFileLoader.h"
#include "host/output/OmDocument.h"
#include "host/parser/ParserMemory.h"

// Shared by the tests of the command language.
namespace apptest {

inline std::string DataPath(const std::string& name) { return std::string(GLMIX_TEST_DATA_DIR) + "/app/" + name; }

// trial.csv: y x z w a b s t name (columns 0 to 8); a, s and name are
// strings; b holds numeric codes.
inline std::unique_ptr<ZORV_Dataset> LoadTrial() {
  std::unique_ptr<ZORV_Dataset> data(new ZORV_Dataset());
  DataFileLoader::Load(DataPath("trial.csv"), *data);
  return data;
}

// Parses one GLMIXFIT command; the error message, or "" when it is valid.
inline std::string ParseMixed(const ZORV_Dataset& data, const std::string& text, AppMixedCommand& out,
                              const std::string& baseDir = "cmd", const std::string& outputDir = "out") {
  std::vector<AppCommandText> commands = AppLexer::Split(text);
  if (commands.size() != 1) return "not one command";
  AppCommandReader reader(commands[0], "t.gmx");
  AppMixedParser parser(data, baseDir, outputDir, 1);
  try {
    out = parser.Parse(reader);
  } catch (const AppCommandError& e) {
    return e.what();
  }
  return std::string();
}

// "t.gmx:L:C: " for the place where `marker` first occurs in `text` (its
// `occurrence`-th time, from 1), or for the end of the text when the marker
// is empty.
inline std::string Where(const std::string& text, const std::string& marker, int occurrence = 1) {
  std::size_t at = marker.empty() ? text.size() : std::string::npos;
  if (!marker.empty()) {
    std::size_t from = 0;
    for (int i = 0; i < occurrence; ++i) {
      at = text.find(marker, from);
      if (at == std::string::npos) return "marker not found";
      from = at + 1;
    }
  }
  int line = 1;
  int column = 1;
  for (std::size_t i = 0; i < at; ++i) {
    if (text[i] == '\n') {
      ++line;
      column = 1;
    } else {
      ++column;
    }
  }
  return "t.gmx:" + std::to_string(line) + ":" + std::to_string(column) + ": ";
}

// The messages of a command's heading, as "ERROR text", "WARNING text",
// "NOTE text".
inline std::vector<std::string> MessagesOf(const OmHeading& heading) {
  std::vector<std::string> messages;
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind != OmItem::MESSAGE) continue;
    const char* level = item.fpMessage->fLevel == OmMessage::ERROR     ? "ERROR "
                        : item.fpMessage->fLevel == OmMessage::WARNING ? "WARNING "
                                                                       : "NOTE ";
    messages.push_back(level + item.fpMessage->fText);
  }
  return messages;
}

// The lines a command's heading holds as text: its echo, then what it said.
inline std::vector<std::string> LinesOf(const OmHeading& heading) {
  std::vector<std::string> lines;
  for (const OmItem& item : heading.fvItems) {
    if (item.fKind == OmItem::TEXT) lines.insert(lines.end(), item.fpText->fvLines.begin(), item.fpText->fvLines.end());
  }
  return lines;
}

// Reading the parser's memory by offsets and positions, as the procedure
// does, independently of the code that wrote it.
inline INTEGER N(const ParserMemory& memory, int offset) {
  INTEGER word = 0;
  std::memcpy(&word, static_cast<const char*>(memory.GetNumericBlock()) + offset, sizeof word);
  return word;
}
inline double R(const ParserMemory& memory, int offset) {
  double value = 0.0;
  std::memcpy(&value, static_cast<const char*>(memory.GetNumericBlock()) + offset, sizeof value);
  return value;
}
inline INTEGER W(ParserMemory& memory, INTEGER position) { return memory.GetIntegerWords()[position - 1]; }
inline double D(ParserMemory& memory, INTEGER position) { return memory.GetRealWords()[position - 1]; }
inline std::string Chars(ParserMemory& memory, INTEGER position, std::size_t bytes) {
  return std::string(reinterpret_cast<const char*>(memory.GetIntegerWords() + position - 1), bytes);
}
inline std::string Field(const ParserMemory& memory, MIXCommandLayout::Text field) {
  std::string text(memory.GetCharacterBlock() + field.fOffset, static_cast<std::size_t>(field.fBytes));
  text = text.c_str();
  std::size_t end = text.find_last_not_of(' ');
  return end == std::string::npos ? std::string() : text.substr(0, end + 1);
}

}  // namespace apptest
