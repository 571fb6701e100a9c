// The PMML readers: the input is a model file. The engine's reader parses
// it and lists its variables (all of them, and the targets only); the
// viewer reads it beside the poisson fixture's StatXML and shows the model.
#include <cstddef>
#include <cstdint>
#include <sstream>
#include <string>
#include <vector>

#include "FuzzViewer.h"
#include "numeric/xml/MCPMMLParser.h"
#include "numeric/xml/MCVarList.h"

namespace {

const std::size_t kMaxInput = 65536;

void ReadOnTheEngineSide(const std::string& text) {
  MCXML_850::MCPMMLParser parser;
  std::istringstream in(text);
  parser.ParseToDOM(in);
  MCXML_850::MCVarList all;
  parser.FillVarList(all, std::vector<std::string>(), false);
  MCXML_850::MCVarList targets;
  parser.FillVarList(targets, std::vector<std::string>{"count", "cost"}, true);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size > kMaxInput) return -1;
  const std::string text(reinterpret_cast<const char*>(bytes), size);
  ReadOnTheEngineSide(text);
  return fuzzviewer::Show(text, fuzzviewer::Fixture("poisson.statxml.xml")) ? 0 : -1;
}
