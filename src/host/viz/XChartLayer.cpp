#include "host/viz/XChartLayer.h"

#include "host/viz/XChartSchema.h"
#include "host/viz/XChartText.h"

namespace {

const char* const kMarkNames[] = {"point", "line", "interval", "area", "edge", "node"};

// Whether the markup lets an aesthetic of that name stand inside the mark.
bool Accepts(const std::string& aesthetic, const std::string& mark) {
  const XChartSchema::ElementRule* rule = XChartSchema::Find(aesthetic);
  if (rule == nullptr) return false;
  for (const std::string& parent : rule->fvParents) {
    if (parent == mark) return true;
  }
  return false;
}

}  // namespace

bool XChartLayer::IsMark(const std::string& name) {
  for (const char* mark : kMarkNames) {
    if (name == mark) return true;
  }
  return false;
}

bool XChartLayer::Resolve(const XMarkupNode& holder, const std::string& attribute, const XChartTable& table,
                          const XChartColumn*& out, XMarkupError& error) const {
  out = nullptr;
  const std::string* reference = holder.FindAttribute(attribute);
  if (reference == nullptr) return true;
  out = table.Resolve(*reference, fSource);
  if (out != nullptr) return true;
  return XMarkupError::Fail(holder,
                            "<" + holder.fName + "> names the variable \"" + *reference + "\" in its " + attribute +
                                ", which the data source \"" + fSource + "\" does not declare",
                            error);
}

bool XChartLayer::ResolveAesthetic(const XMarkupNode* node, const XChartTable& table, bool fromGraph, Aesthetic& out,
                                   XMarkupError& error) const {
  if (node == nullptr) return true;
  const XChartColumn* column = table.Resolve(node->Attribute("variable"), fSource);
  if (column == nullptr) {
    // A mapping of the whole graph applies to the marks whose source has it.
    if (fromGraph) return true;
    return Resolve(*node, "variable", table, column, error);
  }
  out.fpNode = node;
  out.fpColumn = column;
  out.fbLegend = node->Attribute("legend", "true") == "true";
  return true;
}

bool XChartLayer::Build(const XMarkupNode& element, const XMarkupNode& graph, const XChartTable& table,
                        const std::vector<std::string>& facetNames, XMarkupError& error) {
  fpNode = &element;
  for (int k = 0; k < 6; ++k) {
    if (element.fName == kMarkNames[k]) fKind = static_cast<Kind>(k);
  }
  fSource = element.Attribute("source");
  if (fSource.empty()) {
    // Without a source of its own a mark draws the source of its first
    // position variable.
    for (const char* attribute : {"x", "y", "key", "from"}) {
      const XChartColumn* column = table.Resolve(element.Attribute(attribute), std::string());
      if (column != nullptr) {
        fSource = column->GetSource();
        break;
      }
    }
  }
  if (!Resolve(element, "x", table, fpX, error) || !Resolve(element, "y", table, fpY, error) ||
      !Resolve(element, "x2", table, fpX2, error) || !Resolve(element, "y2", table, fpY2, error) ||
      !Resolve(element, "from", table, fpFrom, error) || !Resolve(element, "to", table, fpTo, error) ||
      !Resolve(element, "key", table, fpKey, error))
    return false;

  struct Slot {
    const char* fName;
    Aesthetic* fpOut;
  };
  const Slot slots[] = {
      {"color", &fColor}, {"shape", &fShape}, {"size", &fSize}, {"transparency", &fTransparency}, {"width", &fWidth}};
  for (const Slot& slot : slots) {
    if (!ResolveAesthetic(element.FirstChild(slot.fName), table, false, *slot.fpOut, error)) return false;
    if (!slot.fpOut->IsSet() && Accepts(slot.fName, element.fName) &&
        !ResolveAesthetic(graph.FirstChild(slot.fName), table, true, *slot.fpOut, error))
      return false;
  }

  if ((fpLabel = element.FirstChild("label")) != nullptr) {
    if (!Resolve(*fpLabel, "variable", table, fpLabelText, error) || !Resolve(*fpLabel, "x", table, fpLabelX, error) ||
        !Resolve(*fpLabel, "y", table, fpLabelY, error))
      return false;
  }
  if (const XMarkupNode* tooltip = element.FirstChild("tooltip")) {
    if (!Resolve(*tooltip, "variable", table, fpTooltip, error)) return false;
    for (const XMarkupNode* field : tooltip->Children("field")) {
      const XChartColumn* column = nullptr;
      if (!Resolve(*field, "variable", table, column, error)) return false;
      // A field without a text of its own is labelled by its variable.
      const std::string label = XChartText::Of(field);
      fvTooltipFields.emplace_back(label.empty() ? column->GetTitle() : label, column);
    }
  }
  for (std::size_t k = 0; k < facetNames.size() && k < 2; ++k) fvpFacets[k] = table.Resolve(facetNames[k], fSource);

  fSummarize = element.Attribute("summarize");
  fbDodge = element.Attribute("dodge") == "true";
  fMark = element.Attribute("mark");
  fpBin = element.FirstChild("binStatistic");
  fpDistribution = element.FirstChild("distributionStatistic");
  fpStyle = element.FirstChild("style");
  return true;
}

std::string XChartLayer::Tooltip(long row) const {
  std::string text;
  if (fpTooltip != nullptr) text = fpTooltip->Display(fpTooltip->At(row));
  for (const auto& field : fvTooltipFields) {
    const std::string value = field.second->Display(field.second->At(row));
    if (!text.empty()) text += "\n";
    text += field.first.empty() ? value : field.first + ": " + value;
  }
  return text;
}

std::string XChartLayer::Label(long row) const {
  return fpLabelText != nullptr ? fpLabelText->Display(fpLabelText->At(row)) : std::string();
}
