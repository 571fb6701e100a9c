#include "host/output/OmChartData.h"

const OmChartData::Variable* OmChartData::Source::FindVariable(const std::string& name) const {
  for (const Variable& variable : fvVariables) {
    if (variable.fName == name) return &variable;
  }
  return nullptr;
}

const OmChartData::Source* OmChartData::FindSource(const std::string& name) const {
  for (const Source& source : fvSources) {
    if (source.fName == name) return &source;
  }
  return nullptr;
}
