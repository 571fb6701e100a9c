#include "host/viz/XMarkupData.h"

#include <cmath>
#include <memory>

#include "host/viz/XMarkupReader.h"
#include "host/viz/XMarkupWriter.h"
#include "host/viz/XNumber.h"

namespace {

void AddValues(XMarkupNode& declaration, const OmChartData::Variable& variable) {
  for (const auto& entry : variable.fCells) {
    const OmChartData::Cell& cell = entry.second;
    if (!cell.fbText && !std::isfinite(cell.fNumber)) continue;
    XMarkupNode& value = declaration.AddElement(cell.fbText ? "t" : "n");
    value.SetAttribute("row", std::to_string(entry.first));
    value.AddText(cell.fbText ? cell.fText : XNumber::Exact(cell.fNumber));
  }
}

}  // namespace

std::string XMarkupData::Write(const OmChartData& data) {
  XMarkupNode root;
  root.fName = "data";
  for (const OmChartData::Source& source : data.fvSources) {
    XMarkupNode& node = root.AddElement("source");
    node.SetAttribute("name", source.fName);
    node.SetAttribute("rows", std::to_string(source.fRowCount));
  }
  for (const OmChartData::Source& source : data.fvSources) {
    for (const OmChartData::Variable& variable : source.fvVariables) {
      XMarkupNode& node = root.AddElement("variable");
      node.SetAttribute("source", source.fName);
      node.SetAttribute("name", variable.fName);
      AddValues(node, variable);
    }
  }
  return XMarkupWriter::Write(root);
}

bool XMarkupData::Read(const std::string& text, OmChartData& data, XMarkupError& error) {
  data = OmChartData();
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  if (!root) return false;
  if (root->fName != "data")
    return XMarkupError::Fail(*root, "chart data begin with <data>, not <" + root->fName + ">", error);
  auto sourceNamed = [&](const std::string& name) -> OmChartData::Source& {
    for (OmChartData::Source& source : data.fvSources) {
      if (source.fName == name) return source;
    }
    data.fvSources.emplace_back();
    data.fvSources.back().fName = name;
    return data.fvSources.back();
  };
  for (const XMarkupNode* node : root->Children()) {
    double number = 0.0;
    if (node->fName == "source") {
      OmChartData::Source& source = sourceNamed(node->Attribute("name"));
      if (XNumber::Parse(node->Attribute("rows"), number) && number > source.fRowCount)
        source.fRowCount = static_cast<long>(number);
      continue;
    }
    if (node->fName != "variable") return XMarkupError::Fail(*node, "<data> cannot hold <" + node->fName + ">", error);
    OmChartData::Source& source = sourceNamed(node->Attribute("source"));
    source.fvVariables.emplace_back();
    OmChartData::Variable& variable = source.fvVariables.back();
    variable.fName = node->Attribute("name");
    for (const XMarkupNode* value : node->Children()) {
      double row = 0.0;
      if ((value->fName != "n" && value->fName != "t") || !XNumber::Parse(value->Attribute("row"), row) || row < 0 ||
          row > 1e8) {
        return XMarkupError::Fail(*value, "a value of <variable> is <n row=\"i\"> or <t row=\"i\">", error);
      }
      OmChartData::Cell cell;
      cell.fbText = value->fName == "t";
      cell.fText = value->OwnText();
      if (!cell.fbText && !XNumber::Parse(cell.fText, cell.fNumber)) {
        return XMarkupError::Fail(*value, "\"" + cell.fText + "\" is not a number", error);
      }
      variable.fCells[static_cast<long>(row)] = cell;
      if (static_cast<long>(row) + 1 > source.fRowCount) source.fRowCount = static_cast<long>(row) + 1;
    }
  }
  return true;
}

void XMarkupData::Inline(XMarkupNode& chart, const OmChartData& data) {
  XMarkupNode* declarations = chart.FirstChild("data");
  if (declarations == nullptr) return;
  for (const auto& child : declarations->fvChildren) {
    if (child->fName != "variable") continue;
    const OmChartData::Source* source = data.FindSource(child->Attribute("source"));
    if (source == nullptr) continue;
    const OmChartData::Variable* variable = source->FindVariable(child->Attribute("name"));
    if (variable != nullptr) AddValues(*child, *variable);
  }
  for (const OmChartData::Source& source : data.fvSources) {
    bool declared = false;
    for (const auto& child : declarations->fvChildren) {
      if (child->fName == "source" && child->Attribute("name") == source.fName) {
        child->SetAttribute("rows", std::to_string(source.fRowCount));
        declared = true;
      }
    }
    if (!declared) {
      XMarkupNode& node = declarations->AddElement("source");
      node.SetAttribute("name", source.fName);
      node.SetAttribute("rows", std::to_string(source.fRowCount));
    }
  }
}
