#include "host/viz/XDocument.h"

#include <algorithm>
#include <vector>

#include "host/data/ZORV_Variable.h"
#include "host/output/BpComposite.h"
#include "host/output/BpError.h"
#include "host/output/BpHeadingState.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/OmDocument.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/XChartLook.h"
#include "host/viz/XChartRenderer.h"
#include "host/viz/XChartText.h"
#include "host/viz/XGraph.h"
#include "host/viz/XMarkupReader.h"
#include "host/viz/XMarkupWriter.h"
#include "host/viz/XNumber.h"
#include "host/viz/XUtility.h"
#include "host/viz/XVariable.h"

namespace {

std::vector<XMarkupNode*> Declarations(XMarkupNode& root) {
  std::vector<XMarkupNode*> out;
  if (XMarkupNode* data = root.FirstChild("data")) {
    for (const auto& child : data->fvChildren) {
      if (child->fName == "variable") out.push_back(child.get());
    }
  }
  return out;
}

// What a declaration says of its variable, for the chart code to see.
void ReadDeclaration(const XMarkupNode& declaration, XVariable& variable) {
  if (const std::string* label = declaration.FindAttribute("label")) variable.setLabel(ChartString::fromUTF8(*label));
  if (const std::string* categorical = declaration.FindAttribute("categorical")) {
    variable.setCategorical(*categorical == "true");
  }
  ZORV_Format format;
  if (ZORV_Format::Parse(declaration.Attribute("format"), format)) variable.setFormat(format);
  if (const std::string* prefix = declaration.FindAttribute("prefix"))
    variable.SetFormatPrefix(ChartString::fromUTF8(*prefix));
  for (const XMarkupNode* relabel : declaration.Children("relabel")) {
    variable.addRelabel(ChartString::fromUTF8(relabel->Attribute("value")),
                        ChartString::fromUTF8(relabel->Attribute("label")));
  }
}

// What the chart code set on a variable, into its declaration.
void WriteDeclaration(const XVariable& variable, XMarkupNode& declaration) {
  if (!variable.getLabel().empty()) declaration.SetAttribute("label", variable.getLabel().toUTF8());
  if (variable.hasCategorical()) declaration.SetAttribute("categorical", variable.isCategorical() ? "true" : "false");
  if (variable.hasFormat()) declaration.SetAttribute("format", variable.getFormat().ToText());
  if (!variable.GetFormatPrefix().empty()) declaration.SetAttribute("prefix", variable.GetFormatPrefix().toUTF8());
  if (const ZORV_Variable* host = variable.getZORVVariable()) {
    declaration.SetAttribute("level", std::to_string(host->GetMeasurementLevel()));
  }
  auto& children = declaration.fvChildren;
  children.erase(std::remove_if(children.begin(), children.end(),
                                [](const std::unique_ptr<XMarkupNode>& child) { return child->fName == "relabel"; }),
                 children.end());
  for (const XVariable::Relabel& relabel : variable.getRelabels()) {
    XMarkupNode& node = declaration.AddElement("relabel");
    node.SetAttribute("value", relabel.fbNumeric ? XNumber::Exact(relabel.fNumber) : relabel.fValue.toUTF8());
    node.SetAttribute("label", relabel.fLabel.toUTF8());
  }
}

OmHeading& OutputHeading() {
  if (BpHeadingState* heading = BpHeadingState::Innermost()) return *heading->GetHeading();
  return BpProcedure::HostDocument().fRoot;
}

}  // namespace

XDocument::XDocument(const std::string& text) : fText(text) {}

XDocument::~XDocument() = default;

XMarkupNode* XDocument::Root() {
  if (!fbRead) {
    fbRead = true;
    fpRoot = XMarkupReader::Read(fText, fReadError);
  }
  return fpRoot.get();
}

void XDocument::SetRootAttribute(const char* name, const std::string& value, bool bForce) {
  XMarkupNode* root = Root();
  if (root == nullptr || (!bForce && root->HasAttribute(name))) return;
  root->SetAttribute(name, value);
  fbEdited = true;
}

void XDocument::setLanguage() { SetRootAttribute("lang", XUtility::OutputLanguage(), true); }

XGraph* XDocument::getExternalGraph() {
  if (fpGraph) return fpGraph.get();
  fpGraph = std::make_unique<XGraph>();
  if (XMarkupNode* root = Root()) {
    for (XMarkupNode* declaration : Declarations(*root)) {
      XVariable* variable = fpGraph->addVariable(ChartString::fromUTF8(declaration->Attribute("name")),
                                                 ChartString::fromUTF8(declaration->Attribute("source")));
      ReadDeclaration(*declaration, *variable);
    }
  }
  return fpGraph.get();
}

void XDocument::applyStyleTemplate() {
  SetRootAttribute("font-family", XChartLook::kFontFamily, false);
  SetRootAttribute("font-size", std::to_string(XChartLook::kFontSize), false);
  SetRootAttribute("background", XChartLook::kBackground, false);
  std::string palette;
  for (const std::string& color : XChartLook::Palette()) palette += (palette.empty() ? "" : ",") + color;
  SetRootAttribute("palette", palette, false);
}

void XDocument::applyCTemplate(bool bForce) {
  SetRootAttribute("width", std::to_string(XChartLook::kWidth), bForce);
  SetRootAttribute("height", std::to_string(XChartLook::kHeight), bForce);
  SetRootAttribute("font-family", XChartLook::kFontFamily, bForce);
  SetRootAttribute("font-size", std::to_string(XChartLook::kFontSize), bForce);
}

void XDocument::Sync() const {
  if (!fpRoot) return;
  if (fpGraph) {
    const std::vector<XMarkupNode*> declarations = Declarations(*fpRoot);
    for (int i = 0; i < fpGraph->getVariableCount() && i < static_cast<int>(declarations.size()); ++i) {
      WriteDeclaration(*fpGraph->getVariableAt(i), *declarations[static_cast<std::size_t>(i)]);
    }
  }
  if (fpGraph || fbEdited) fText = XMarkupWriter::Write(*fpRoot);
}

const std::string& XDocument::AsUTF8() const {
  Sync();
  return fText;
}

void XDocument::SendChart(bool bWithData, bool bStaticImage, bool bHidden) {
  Root();
  const std::string& text = AsUTF8();
  // An empty document is what a template that could not be read leaves;
  // that was reported when it happened.
  if (text.find_first_not_of(" \t\r\n") == std::string::npos) return;
  OmChartData data;
  if (bWithData && fpChartData != nullptr) data = fpChartData->GetData();
  std::string svg;
  XMarkupError error;
  std::string name = fDescription.toUTF8();
  if (!XChartRenderer::Render(text, data, svg, error)) {
    BpComposite message("The chart ^1 cannot be drawn: ^2", true);
    message.Add(BpString(name.empty() ? std::string("(untitled)") : name, false));
    message.Add(BpString(error.ToText(), false));
    message.Finish();
    BpError(message, BpErrorShowOutput, BpErrorLevelWarning);
    return;
  }
  OmChart& chart = OutputHeading().AddChart();
  if (name.empty() && fpRoot) name = XChartText::Of(fpRoot->FirstChild("title"));
  chart.fTitle = name;
  chart.fKind = fpRoot ? fpRoot->Attribute("kind") : std::string();
  chart.fSvg = svg;
  chart.fbHidden = bHidden;
  if (!bStaticImage) {
    chart.fMarkup = text;
    chart.fData = data;
  }
}
