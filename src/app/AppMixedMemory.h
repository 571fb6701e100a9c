#pragma once

class ParserMemory;
class ZORV_DataSource;
struct AppMixedCommand;

// Lays a checked GLMIXFIT command out in the parser's memory, as the
// procedure reads it.
//
// Variables go in as 1-based dictionary positions (column + 1). The word at
// position 1 is reserved and zero, so the command handle is never null and a
// list of empty rows has somewhere to point. Records for custom tests and
// marginal means are rows of doubles reached through `tmcget_` lists.
class AppMixedMemory {
 public:
  static void Write(const AppMixedCommand& command, const ZORV_DataSource& data, ParserMemory& memory);
};
