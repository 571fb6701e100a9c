#include "host/viz/XViZTemplate.h"

#include <algorithm>
#include <memory>
#include <stdexcept>

#include "host/data/ZORV_ValueLabelMap.h"
#include "host/files/PathFactory.h"
#include "host/output/BpComposite.h"
#include "host/output/BpError.h"
#include "host/output/BpString.h"
#include "host/viz/FetchFile.h"
#include "host/viz/XChartText.h"
#include "host/viz/XMarkupNode.h"
#include "host/viz/XMarkupReader.h"
#include "host/viz/XMarkupWriter.h"
#include "host/viz/XNumber.h"

namespace {

// A piece of the template's text to put in place of another.
struct Splice {
  std::size_t fStart = 0;
  std::size_t fEnd = 0;
  std::string fText;
};

std::string IndentBefore(const std::string& text, std::size_t offset) {
  const std::size_t newline = offset == 0 ? std::string::npos : text.rfind('\n', offset - 1);
  const std::size_t start = newline == std::string::npos ? 0 : newline + 1;
  const std::string indent = text.substr(start, offset - start);
  return indent.find_first_not_of(" \t") == std::string::npos ? indent : std::string();
}

std::string Declaration(const XViZTemplate::Binding& binding) {
  XMarkupNode node;
  node.fName = "variable";
  node.SetAttribute("source", binding.fSource);
  node.SetAttribute("name", binding.fColumn);
  node.SetAttribute("role", binding.fRole);
  node.SetAttribute("categorical", binding.fbCategorical ? "true" : "false");
  if (binding.fbHasLabel) node.SetAttribute("label", binding.fLabel);
  if (binding.fbHasFormat) node.SetAttribute("format", binding.fFormat.ToText());
  if (binding.fMeasurementLevel > 0) node.SetAttribute("level", std::to_string(binding.fMeasurementLevel));
  if (binding.fbSortByValue) node.SetAttribute("sort", "value");
  if (binding.fpValueLabels != nullptr) {
    for (const auto& entry : binding.fpValueLabels->NumericLabels()) {
      XMarkupNode& relabel = node.AddElement("relabel");
      relabel.SetAttribute("value", XNumber::Exact(entry.first));
      relabel.SetAttribute("label", entry.second);
    }
    for (const auto& entry : binding.fpValueLabels->StringLabels()) {
      XMarkupNode& relabel = node.AddElement("relabel");
      relabel.SetAttribute("value", entry.first);
      relabel.SetAttribute("label", entry.second);
    }
  }
  return XMarkupWriter::Write(node);
}

// A label as the content of a text: line breaks and references as the
// chart code writes them are read first, then written as markup.
std::string LabelContent(const std::string& label) {
  std::string out;
  for (const std::string& line : XChartText::Lines(XChartText::Decode(label))) {
    if (!out.empty()) out += "<BR/>";
    out += XMarkupWriter::Content(line);
  }
  return out;
}

void CollectSlots(const XMarkupNode& node, std::vector<const XMarkupNode*>& out) {
  for (const auto& child : node.fvChildren) {
    if (child->IsText()) continue;
    if (child->fName == "slot") out.push_back(child.get());
    CollectSlots(*child, out);
  }
}

}  // namespace

void XViZTemplate::ReportUnusable(const std::string& name, const std::string& problem) {
  BpComposite message("The chart template ^1 cannot be used: ^2", true);
  message.Add(BpString(name, false));
  message.Add(BpString(problem, false));
  message.Finish();
  BpError(message, BpErrorShowOutput, BpErrorLevelWarning);
}

std::string XViZTemplate::TemplateDirectory() {
  return PathFactory::getPathInstance(PathFactory::PRESENTATION)->GetResourcePath() + "template/";
}

std::string XViZTemplate::TemplatePath(const std::string& name) { return TemplateDirectory() + name + ".viztemplate"; }

void XViZTemplate::addVariable(const std::string& role, const std::string& column, bool bCategorical,
                               const std::string& text, const std::string& source, const ZORV_Format* format,
                               const char* label, int measurementLevel, const ZORV_ValueLabelMap* pValueLabels,
                               bool bSortByValue) {
  Binding binding;
  binding.fRole = role;
  binding.fColumn = column;
  binding.fbCategorical = bCategorical;
  binding.fText = text;
  binding.fSource = source;
  if (format != nullptr) {
    binding.fbHasFormat = true;
    binding.fFormat = *format;
  }
  if (label != nullptr) {
    binding.fbHasLabel = true;
    binding.fLabel = label;
  }
  binding.fMeasurementLevel = measurementLevel;
  binding.fpValueLabels = pValueLabels;
  binding.fbSortByValue = bSortByValue;
  fvBindings.push_back(binding);
}

void XViZTemplate::addLabel(int position, const std::string& text) {
  Label label;
  label.fPosition = position;
  label.fText = text;
  fvLabels.push_back(label);
}

bool XViZTemplate::convert(std::string& document, std::string&) {
  document.clear();
  const bool plainName = !fInternalName.empty() && fInternalName.find_first_of("/\\") == std::string::npos &&
                         fInternalName.find("..") == std::string::npos;
  if (!plainName) {
    ReportUnusable(fInternalName, "a built-in template is named by a plain name");
    return false;
  }
  const std::string path = TemplatePath(fInternalName);
  std::string text;
  try {
    text = FetchFile::fetch(path, true, true);
  } catch (const std::exception& e) {
    ReportUnusable(fInternalName, e.what());
    return false;
  }
  XMarkupError error;
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  if (!root) {
    ReportUnusable(fInternalName, path + ", " + error.ToText());
    return false;
  }

  std::vector<Splice> splices;
  std::vector<bool> placed(fvBindings.size(), false);
  const XMarkupNode* data = root->FirstChild("data");
  if (data != nullptr) {
    for (const XMarkupNode* role : data->Children("role")) {
      const std::string indent = IndentBefore(text, role->fStart);
      std::string declarations;
      for (std::size_t i = 0; i < fvBindings.size(); ++i) {
        if (fvBindings[i].fRole != role->Attribute("name")) continue;
        declarations += (declarations.empty() ? "" : "\n" + indent) + Declaration(fvBindings[i]);
        placed[i] = true;
      }
      splices.push_back({role->fStart, role->fEnd, declarations});
    }
    // Bindings of roles the template does not list are declared all the same.
    std::string rest;
    for (std::size_t i = 0; i < fvBindings.size(); ++i) {
      if (!placed[i]) rest += Declaration(fvBindings[i]);
    }
    if (!rest.empty() && !data->fbEmptyTag) {
      const std::size_t end = text.rfind("</", data->fEnd - 1);
      splices.push_back({end, end, rest});
    }
  }
  std::vector<const XMarkupNode*> slots;
  CollectSlots(*root, slots);
  for (const XMarkupNode* slot : slots) {
    std::string content;
    double position = 0.0;
    if (XNumber::Parse(slot->Attribute("position"), position)) {
      for (const Label& label : fvLabels) {
        if (label.fPosition == static_cast<int>(position)) content = LabelContent(label.fText);
      }
    } else {
      for (const Binding& binding : fvBindings) {
        if (!binding.fText.empty() && binding.fText == slot->Attribute("name")) content = LabelContent(binding.fLabel);
      }
    }
    splices.push_back({slot->fStart, slot->fEnd, content});
  }
  std::sort(splices.begin(), splices.end(), [](const Splice& a, const Splice& b) { return a.fStart > b.fStart; });
  for (const Splice& splice : splices) text.replace(splice.fStart, splice.fEnd - splice.fStart, splice.fText);
  document = text;
  return true;
}
