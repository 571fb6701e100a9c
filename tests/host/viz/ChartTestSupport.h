#pragma once

#include <string>

#include "host/output/OmChartData.h"

// Small helpers of the chart tests.
namespace ChartTestSupport {

// The text of a template file of the resources.
std::string TemplateText(const std::string& name);
// How often a text occurs in another.
int Count(const std::string& text, const std::string& part);
// Draws markup with data; fails the test, and gives an empty text, when the
// chart library refuses it.
std::string Drawn(const std::string& markup, const OmChartData& data = OmChartData());

// Builds chart data by hand.
class DataBuilder {
 public:
  DataBuilder& Number(const std::string& source, const std::string& name, long row, double value);
  DataBuilder& Text(const std::string& source, const std::string& name, long row, const std::string& value);
  const OmChartData& Get() const { return fData; }

 private:
  OmChartData::Variable& Variable(const std::string& source, const std::string& name, long row);
  OmChartData fData;
};

}  // namespace ChartTestSupport
