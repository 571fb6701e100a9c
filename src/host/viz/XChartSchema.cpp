#include "host/viz/XChartSchema.h"

#include <algorithm>

#include "host/data/ZORV_Format.h"
#include "host/viz/XChartLook.h"
#include "host/viz/XExpression.h"
#include "host/viz/XNumber.h"

namespace {

using Rule = XChartSchema::ElementRule;
using Attr = XChartSchema::AttributeRule;
using Type = XChartSchema::ValueType;

Attr A(const std::string& name, Type type, bool required = false, std::vector<std::string> choices = {}) {
  Attr rule;
  rule.fName = name;
  rule.fType = type;
  rule.fbRequired = required;
  rule.fvChoices = std::move(choices);
  return rule;
}

Rule E(const std::string& name, std::vector<std::string> parents, std::vector<Attr> attributes, bool text = false) {
  Rule rule;
  rule.fName = name;
  rule.fvParents = std::move(parents);
  rule.fvAttributes = std::move(attributes);
  rule.fbText = text;
  return rule;
}

const std::vector<std::string> kMarks = {"point", "line", "interval", "area", "edge", "node"};

std::vector<std::string> With(std::vector<std::string> a, const std::vector<std::string>& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

std::vector<Attr> MarkAttributes(std::vector<Attr> own) {
  std::vector<Attr> attributes = {A("source", XChartSchema::TEXT), A("x", XChartSchema::REFERENCE),
                                  A("y", XChartSchema::REFERENCE)};
  attributes.insert(attributes.end(), own.begin(), own.end());
  return attributes;
}

std::vector<Rule> MakeElements() {
  using S = XChartSchema;
  const std::vector<std::string> texts = {"title", "subtitle", "caption", "footnote", "field"};
  const std::vector<std::string> styled =
      With({"chart", "graph", "legend", "lineGuide", "title", "subtitle", "caption", "footnote", "axis", "facetLevel"},
           kMarks);
  const Attr legendFlag = A("legend", S::BOOLEAN);
  return {
      E("chart", {"embeddedChart"},
        {A("version", S::NUMBER), A("kind", S::TEXT), A("lang", S::TEXT), A("width", S::LENGTH), A("height", S::LENGTH),
         A("font-family", S::TEXT), A("font-size", S::LENGTH), A("palette", S::COLOR_LIST), A("background", S::COLOR)}),
      E("data", {"chart"}, {}),
      E("source", {"data"}, {A("name", S::TEXT, true), A("rows", S::INTEGER)}),
      E("variable", {"data"},
        {A("source", S::TEXT, true), A("name", S::TEXT, true), A("role", S::TEXT), A("label", S::TEXT),
         A("categorical", S::BOOLEAN), A("format", S::FORMAT), A("prefix", S::TEXT),
         A("level", S::CHOICE, false, {"0", "1", "2", "3"}), A("sort", S::CHOICE, false, {"data", "value"})}),
      E("relabel", {"variable"}, {A("value", S::TEXT, true), A("label", S::TEXT, true)}),
      E("n", {"variable"}, {A("row", S::INTEGER, true)}, true),
      E("t", {"variable"}, {A("row", S::INTEGER, true)}, true),
      E("role", {"data"}, {A("name", S::TEXT, true)}),
      E("title", {"chart", "axis", "legend"}, {}),
      E("subtitle", {"chart"}, {}),
      E("caption", {"chart"}, {}),
      E("footnote", {"chart"}, {}),
      E("text", texts, {}, true),
      E("BR", {"text"}, {}),
      E("br", {"text"}, {}),
      E("slot", {"text"}, {A("position", S::INTEGER), A("name", S::TEXT)}),
      E("style", styled,
        {A("id", S::TEXT), A("visible", S::BOOLEAN), A("color", S::COLOR), A("fill", S::COLOR), A("stroke", S::COLOR),
         A("stroke-width", S::LENGTH), A("font-size", S::LENGTH),
         A("font-weight", S::CHOICE, false, {"regular", "bold"}), A("alpha", S::NUMBER), A("dash", S::TEXT),
         A("margin-top", S::LENGTH), A("margin-right", S::LENGTH), A("margin-bottom", S::LENGTH),
         A("margin-left", S::LENGTH), A("width", S::PERCENT)}),
      E("graph", {"chart"}, {}),
      E("coordinates", {"graph"}, {}),
      E("axis", {"coordinates"},
        {A("dimension", S::CHOICE, true, {"x", "y"}), A("min", S::NUMBER), A("max", S::NUMBER), A("pad", S::NUMBER),
         A("visible", S::BOOLEAN), A("grid", S::BOOLEAN), A("ticks", S::CHOICE, false, {"auto", "none"}),
         A("labelAngle", S::CHOICE, false, {"auto", "0", "45", "90"}), A("sameAs", S::CHOICE, false, {"x", "y"}),
         A("margin", S::LENGTH)}),
      E("faceting", {"graph"}, {}),
      E("variableReference", {"faceting"}, {A("variable", S::TEXT, true)}),
      E("facetLayout", {"graph"}, {}),
      E("facetLevel", {"facetLayout"},
        {A("level", S::CHOICE, true, {"1", "2"}), A("wrap", S::INTEGER), A("gap", S::LENGTH)}),
      E("point", {"graph"},
        MarkAttributes({A("summarize", S::CHOICE, false, {"range", "mean", "sum"}), A("dodge", S::BOOLEAN),
                        A("mark", S::CHOICE, false, {"circle", "square", "triangle", "diamond"}),
                        A("size", S::LENGTH)})),
      E("line", {"graph"},
        MarkAttributes({A("summarize", S::CHOICE, false, {"range", "mean", "sum"}), A("dodge", S::BOOLEAN)})),
      E("interval", {"graph"},
        MarkAttributes({A("summarize", S::CHOICE, false, {"range", "mean", "sum"}), A("dodge", S::BOOLEAN),
                        A("mark", S::CHOICE, false, {"bar", "errorbar"}), A("barWidth", S::NUMBER)})),
      E("area", {"graph"}, MarkAttributes({A("summarize", S::CHOICE, false, {"range", "mean", "sum"})})),
      E("edge", {"graph"},
        MarkAttributes({A("x2", S::REFERENCE), A("y2", S::REFERENCE), A("from", S::REFERENCE), A("to", S::REFERENCE),
                        A("nodes", S::TEXT)})),
      E("node", {"graph"},
        MarkAttributes({A("key", S::REFERENCE), A("layout", S::CHOICE, false, {"data", "circle"}),
                        A("mark", S::CHOICE, false, {"circle", "box"}), A("width", S::LENGTH), A("height", S::LENGTH),
                        A("chartSlot", S::BOOLEAN)})),
      E("embeddedChart", {"node"}, {A("fieldType", S::INTEGER)}),
      E("color", With({"graph"}, kMarks), {A("variable", S::REFERENCE, true), legendFlag}),
      E("map", {"color"}, {A("value", S::TEXT, true), A("color", S::COLOR, true)}),
      E("shape", {"graph", "point"}, {A("variable", S::REFERENCE, true), legendFlag}),
      E("size", {"graph", "point", "node"},
        {A("variable", S::REFERENCE, true), A("min", S::LENGTH), A("max", S::LENGTH), legendFlag}),
      E("transparency", {"graph", "point", "line", "interval", "area", "edge"},
        {A("variable", S::REFERENCE, true), legendFlag}),
      E("width", {"edge", "line"},
        {A("variable", S::REFERENCE, true), A("high", S::NUMBER), A("low", S::NUMBER), A("widthFrom", S::LENGTH),
         A("widthTo", S::LENGTH), A("scale", S::CHOICE, false, {"linear", "log"}), legendFlag}),
      E("label", {"point", "interval", "node"},
        {A("variable", S::REFERENCE, true), A("x", S::REFERENCE), A("y", S::REFERENCE),
         A("anchor", S::CHOICE, false, {"start", "middle", "end"}),
         A("position", S::CHOICE, false, {"right", "left", "above", "below", "center"})}),
      E("tooltip", kMarks, {A("variable", S::REFERENCE)}),
      E("field", {"tooltip"}, {A("variable", S::REFERENCE, true)}),
      E("binStatistic", {"interval"}, {A("binCount", S::INTEGER)}),
      E("distributionStatistic", {"line", "area"},
        {A("distribution", S::CHOICE, false, {"normal", "poisson", "gamma", "binomialnegative", "gaussianinverse"}),
         A("parameter", S::NUMBER), A("secondaryParameter", S::NUMBER)}),
      E("lineGuide", {"graph"},
        {A("axis", S::CHOICE, false, {"x", "y"}), A("x", S::NUMBER), A("y", S::NUMBER), A("slope", S::NUMBER),
         A("intercept", S::NUMBER), A("hideWhen", S::EXPRESSION)}),
      E("legend", {"chart"}, {A("id", S::TEXT), A("position", S::CHOICE, false, {"right", "bottom"})}),
  };
}

bool IsBlank(const std::string& text) { return text.find_first_not_of(" \t\r\n") == std::string::npos; }

std::string Quoted(const std::string& text) { return "\"" + text + "\""; }

bool CheckNode(const XMarkupNode& node, const XMarkupNode* parent, XMarkupError& error) {
  const Rule* rule = XChartSchema::Find(node.fName);
  if (rule == nullptr) return XMarkupError::Fail(node, "the chart markup has no element <" + node.fName + ">", error);
  const std::string parentName = parent != nullptr ? parent->fName : std::string();
  const bool placed = parent == nullptr ? node.fName == "chart"
                                        : std::find(rule->fvParents.begin(), rule->fvParents.end(), parentName) !=
                                              rule->fvParents.end();
  if (!placed) {
    if (parent == nullptr)
      return XMarkupError::Fail(node, "a chart document begins with <chart>, not <" + node.fName + ">", error);
    return XMarkupError::Fail(node, "<" + node.fName + "> cannot stand inside <" + parentName + ">", error);
  }
  for (const auto& attribute : node.fvAttributes) {
    auto found = std::find_if(rule->fvAttributes.begin(), rule->fvAttributes.end(),
                              [&](const Attr& a) { return a.fName == attribute.first; });
    if (found == rule->fvAttributes.end()) {
      return XMarkupError::Fail(node, "<" + node.fName + "> has no attribute " + attribute.first, error);
    }
    if (!XChartSchema::IsValid(*found, attribute.second)) {
      std::string message =
          "the attribute " + attribute.first + " of <" + node.fName + "> cannot be " + Quoted(attribute.second);
      if (!found->fvChoices.empty()) {
        message += " (it is one of:";
        for (const std::string& choice : found->fvChoices) message += " " + choice;
        message += ")";
      }
      return XMarkupError::Fail(node, message, error);
    }
  }
  for (const Attr& attribute : rule->fvAttributes) {
    if (attribute.fbRequired && !node.HasAttribute(attribute.fName)) {
      return XMarkupError::Fail(node, "<" + node.fName + "> needs the attribute " + attribute.fName, error);
    }
  }
  for (const auto& child : node.fvChildren) {
    if (child->IsText()) {
      if (!rule->fbText && !IsBlank(child->fText))
        return XMarkupError::Fail(node, "<" + node.fName + "> cannot hold text", error);
      continue;
    }
    if (!CheckNode(*child, &node, error)) return false;
  }
  return true;
}

}  // namespace

const std::vector<XChartSchema::ElementRule>& XChartSchema::Elements() {
  static const std::vector<ElementRule> elements = MakeElements();
  return elements;
}

const XChartSchema::ElementRule* XChartSchema::Find(const std::string& name) {
  for (const ElementRule& rule : Elements()) {
    if (rule.fName == name) return &rule;
  }
  return nullptr;
}

bool XChartSchema::IsValid(const AttributeRule& rule, const std::string& value) {
  double number = 0.0;
  switch (rule.fType) {
    case TEXT:
    case REFERENCE:
      return true;
    case NUMBER:
      return XNumber::Parse(value, number);
    case INTEGER:
      return XNumber::Parse(value, number) && number == static_cast<double>(static_cast<long>(number)) &&
             value.find_first_of(".eE") == std::string::npos;
    case LENGTH:
      return XNumber::ParseLength(value, number);
    case PERCENT:
      return value.size() > 1 && value.back() == '%' && XNumber::Parse(value.substr(0, value.size() - 1), number) &&
             number >= 0 && number <= 100;
    case BOOLEAN:
      return value == "true" || value == "false";
    case COLOR:
      return !XChartLook::ColorValue(value).empty();
    case COLOR_LIST: {
      std::size_t start = 0;
      while (true) {
        const std::size_t comma = value.find(',', start);
        std::string item = value.substr(start, comma == std::string::npos ? std::string::npos : comma - start);
        const std::size_t a = item.find_first_not_of(' ');
        const std::size_t b = item.find_last_not_of(' ');
        item = a == std::string::npos ? std::string() : item.substr(a, b - a + 1);
        if (XChartLook::ColorValue(item).empty()) return false;
        if (comma == std::string::npos) return true;
        start = comma + 1;
      }
    }
    case FORMAT: {
      ZORV_Format format;
      return ZORV_Format::Parse(value, format);
    }
    case CHOICE:
      return std::find(rule.fvChoices.begin(), rule.fvChoices.end(), value) != rule.fvChoices.end();
    case EXPRESSION: {
      XExpression expression;
      std::string problem;
      return XExpression::Parse(value, expression, problem);
    }
  }
  return false;
}

bool XChartSchema::Check(const XMarkupNode& root, XMarkupError& error) {
  error = XMarkupError();
  return CheckNode(root, nullptr, error);
}
