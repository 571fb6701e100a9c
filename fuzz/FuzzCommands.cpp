// The command language: the lexer cuts the input into commands; each
// GLMIXFIT command is read and checked against the fixed dataset and laid
// out in the parser's memory; every other command has its tokens described
// and an expression read from it, which is then computed on every record. Mistakes are the language's own errors, never a crash.
#include <cstddef>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "FuzzData.h"
#include "app/AppCommandError.h"
#include "app/AppCommandReader.h"
#include "app/AppExprEvaluator.h"
#include "app/AppExprParser.h"
#include "app/AppLexer.h"
#include "app/AppMixedMemory.h"
#include "app/AppMixedParser.h"
#include "host/data/ZORV_Dataset.h"
#include "host/parser/ParserMemory.h"

namespace {

// Longer inputs only repeat what shorter ones reach.
const std::size_t kMaxInput = 8192;

void ReadMixed(AppCommandReader& reader, const ZORV_Dataset& data) {
  // Folders that do not exist: the reading never writes.
  AppMixedParser parser(data, "/nonexistent/fuzz-base", "/nonexistent/fuzz-out", 1);
  AppMixedCommand command = parser.Parse(reader);
  ParserMemory memory;
  AppMixedMemory::Write(command, data, memory);
}

// The expression starts after the first "=" (COMPUTE's form), or after the
// command's name when there is none.
void ReadOther(AppCommandReader& reader, const ZORV_Dataset& data) {
  const std::vector<AppToken>& tokens = reader.GetCommand().fvTokens;
  std::size_t start = 1;
  for (std::size_t i = 0; i < tokens.size(); ++i) {
    reader.Describe(tokens[i]);
    if (start == 1 && tokens[i].IsSymbol('=')) start = i + 1;
  }
  reader.SetIndex(start);
  std::unique_ptr<AppExprNode> node = AppExprParser(data).Parse(reader);
  AppExprEvaluator evaluator(data);
  for (long row = 0; row < data.GetCaseCount(); ++row) evaluator.Evaluate(*node, row);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size > kMaxInput) return -1;
  const ZORV_Dataset& data = fuzzdata::Dataset();
  const std::vector<AppCommandText> commands = AppLexer::Split(std::string(reinterpret_cast<const char*>(bytes), size));
  for (const AppCommandText& command : commands) {
    AppCommandReader reader(command, "fuzz.gmx");
    try {
      if (command.fName == "GLMIXFIT") {
        ReadMixed(reader, data);
      } else {
        ReadOther(reader, data);
      }
    } catch (const AppCommandError&) {
      // The language's answer to a mistake.
    }
  }
  return 0;
}
