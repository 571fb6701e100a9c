#include "charts/GNLMChartDocument.h"

#include <stdexcept>

#include "charts/GNLMChartText.h"
#include "host/viz/FetchFile.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XViZTemplate.h"

namespace GNLMChartDocument {

namespace {

VarDataProcessor::VarInfo Find(const VarDataProcessor& proc, const std::string& source, const std::string& name) {
  VarDataProcessor::VarInfo info;
  proc.FindVariable(source, name, &info);
  return info;
}

}  // namespace

void Declare(VarDataProcessor& proc, const std::string& source, std::initializer_list<const char*> names,
             long rowCount) {
  proc.AddDataSource(source, rowCount);
  VarDataProcessor::VarInfo info;
  for (const char* name : names) proc.AddVariable(source, name, &info);
}

void SetNumber(VarDataProcessor& proc, const std::string& source, const std::string& name, long row, double value) {
  proc.SetVariableValue(Find(proc, source, name), row, value);
}

void SetText(VarDataProcessor& proc, const std::string& source, const std::string& name, long row,
             const std::string& value) {
  proc.SetStringVariableValue(Find(proc, source, name), row, value);
}

bool SetNumberOrText(VarDataProcessor& proc, const std::string& source, const std::string& name, long row,
                     const std::string& value) {
  bool ok = false;
  const double number = GNLMChartText::parseNumber(value, ok);
  if (ok) {
    SetNumber(proc, source, name, row, number);
  } else {
    SetText(proc, source, name, row, value);
  }
  return ok;
}

bool FetchTemplate(const std::string& fileName, std::string& text) {
  try {
    text = FetchFile::fetch(XViZTemplate::TemplateDirectory() + fileName, true, true);
    return true;
  } catch (const std::exception& e) {
    XViZTemplate::ReportUnusable(fileName, e.what());
    text.clear();
    return false;
  }
}

void Open(XDocument& document) {
  document.setEditor(2);
  document.setLanguage();
}

void Send(XDocument& document, const ChartString& title, VarDataProcessor& proc) {
  document.SetDescription(title.xc_str());
  document.SetChartData(&proc);
  document.applyCTemplate(false);
  document.SendChart(true, false, false);
}

}  // namespace GNLMChartDocument
