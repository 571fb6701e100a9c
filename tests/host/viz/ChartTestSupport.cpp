#include "ChartTestSupport.h"

#include <gtest/gtest.h>

#include "host/files/PathFactory.h"
#include "host/viz/FetchFile.h"
#include "host/viz/XChartRenderer.h"

namespace ChartTestSupport {

std::string TemplateText(const std::string& name) {
  return FetchFile::fetch(PathFactory::getPathInstance(3)->GetResourcePath() + "template/" + name + ".viztemplate",
                          true, true);
}

int Count(const std::string& text, const std::string& part) {
  int count = 0;
  for (std::size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + part.size())) ++count;
  return count;
}

std::string Drawn(const std::string& markup, const OmChartData& data) {
  std::string svg;
  XMarkupError error;
  const bool drawn = XChartRenderer::Render(markup, data, svg, error);
  EXPECT_TRUE(drawn) << error.ToText();
  return drawn ? svg : std::string();
}

OmChartData::Variable& DataBuilder::Variable(const std::string& source, const std::string& name, long row) {
  OmChartData::Source* found = nullptr;
  for (OmChartData::Source& candidate : fData.fvSources) {
    if (candidate.fName == source) found = &candidate;
  }
  if (found == nullptr) {
    fData.fvSources.emplace_back();
    found = &fData.fvSources.back();
    found->fName = source;
  }
  found->fRowCount = std::max(found->fRowCount, row + 1);
  for (OmChartData::Variable& variable : found->fvVariables) {
    if (variable.fName == name) return variable;
  }
  found->fvVariables.emplace_back();
  found->fvVariables.back().fName = name;
  return found->fvVariables.back();
}

DataBuilder& DataBuilder::Number(const std::string& source, const std::string& name, long row, double value) {
  OmChartData::Cell cell;
  cell.fNumber = value;
  Variable(source, name, row).fCells[row] = cell;
  return *this;
}

DataBuilder& DataBuilder::Text(const std::string& source, const std::string& name, long row, const std::string& value) {
  OmChartData::Cell cell;
  cell.fbText = true;
  cell.fText = value;
  Variable(source, name, row).fCells[row] = cell;
  return *this;
}

}  // namespace ChartTestSupport
