#pragma once

#include <string>
#include <vector>

#include "host/output/OmDocument.h"

// Documents shared by the renderer tests.
class OmRenderSample {
 public:
  // A whole run: front-end text, tables with nested row and column groups,
  // a layer dimension, footnotes on a title, a category and cells, a long
  // label, captions and notes, a missing cell, a message of each level, a
  // wide table and a chart.
  static OmDocument Build();

  static OmDimensionNode Category(const std::string& label, std::vector<int> footnotes = {});
  static OmDimensionNode Group(const std::string& label, std::vector<OmDimensionNode> children);
  static OmCell Number(double value, const std::string& text, const std::string& format = "F8.3");
  static OmCell Missing(const std::string& format = "F8.3");
  static OmCell Text(const std::string& text);
};
