#include "ChartGallery.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <string>
#include <vector>

#include "ChartTemplatePatches.h"
#include "host/data/ZORV_Format.h"
#include "host/files/PathFactory.h"
#include "host/output/BpProcedure.h"
#include "host/viz/FetchFile.h"
#include "host/viz/JNIException.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/ViZEditor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XGraph.h"
#include "host/viz/XUtility.h"
#include "host/viz/XVariable.h"
#include "host/viz/XViZTemplate.h"
#include "host/viz/ZorvJVM.h"

namespace ChartGallery {

const char* const kKinds[7] = {
    "GLMMPredictedByObserved", "GLMMFixedCoefficients", "GLMMFixedCoefficients", "GLMMEmMeans",
    "GLMMCustomEffects",       "GLMMSimpleContrasts",   "GLMMPairwiseContrasts"};

namespace {

namespace P = ChartTemplatePatches;

const char* const kSource = "source0";
const char* const kTargetLabel = "Reaction time (ms)";

// A fixed sequence of numbers in [0, 1), the same on every run.
class Sequence {
 public:
  double Next() {
    fState = fState * 6364136223846793005ULL + 1442695040888963407ULL;
    return static_cast<double>(fState >> 11) / 9007199254740992.0;
  }
  // Roughly normal, from twelve uniforms.
  double Normal() {
    double sum = 0.0;
    for (int i = 0; i < 12; ++i) sum += Next();
    return sum - 6.0;
  }

 private:
  unsigned long long fState = 20240611ULL;
};

VarDataProcessor::VarInfo Declare(VarDataProcessor& data, const std::string& source, const std::string& name) {
  VarDataProcessor::VarInfo info;
  data.AddVariable(source, name, &info);
  return info;
}

void Send(XDocument& document, const std::string& title, VarDataProcessor& data) {
  document.setEditor(2);
  document.setLanguage();
  document.getExternalGraph();
  const ChartString description = XUtility::ChartStringFromOLANG(title);
  document.SetDescription(description.xc_str());
  document.SetChartData(&data);
  document.applyCTemplate(false);
  document.SendChart(true, false, false);
}

std::string TemplateFile(const std::string& name) {
  return PathFactory::getPathInstance(3)->GetResourcePath() + "template/" + name;
}

void PredictedByObserved() {
  const std::string title = "Predicted by Observed";
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMPredictedByObserved");
  VarDataProcessor data;
  data.AddDataSource(kSource, 0);
  chart.addVariable("X", "X", false, "", kSource, nullptr, kTargetLabel);
  chart.addVariable("Y", "Y", false, "", kSource, nullptr, "Predicted Value");
  chart.addVariable("Transparency", "Frequency", false, "", kSource, nullptr, "Frequency");
  chart.addLabel(0, title);
  const VarDataProcessor::VarInfo x = Declare(data, kSource, "X");
  const VarDataProcessor::VarInfo y = Declare(data, kSource, "Y");
  const VarDataProcessor::VarInfo frequency = Declare(data, kSource, "Frequency");
  Sequence random;
  double low = 1e300;
  double high = -1e300;
  for (long i = 0; i < 160; ++i) {
    const double observed = 250.0 + 45.0 * random.Normal();
    const double predicted = 250.0 + 0.8 * (observed - 250.0) + 14.0 * random.Normal();
    data.SetVariableValue(x, i, observed);
    data.SetVariableValue(y, i, predicted);
    data.SetVariableValue(frequency, i, 1.0 + std::floor(random.Next() * 4.0));
    low = std::min({low, observed, predicted});
    high = std::max({high, observed, predicted});
  }
  std::string text;
  std::string other;
  chart.convert(text, other);
  P::PatchPredictedByObserved(text, low, high, 400.0);
  XDocument document(text);
  XGraph* graph = document.getExternalGraph();
  const ZORV_Format format(ZORV_Format::F, 8, 1);
  for (const char* name : {"X", "Y"}) {
    if (XVariable* variable = graph->getVariable(ChartString::fromUTF8(name), 0)) variable->setFormat(format);
  }
  Send(document, title, data);
}

// The histogram of the target, laid into the diagram's target node as the
// composer does it.
void EmbedHistogram(std::string& chartText) {
  XViZTemplate histogram;
  histogram.setTemplateInternalName("GLMMHistogram");
  VarDataProcessor data;
  data.AddDataSource(kSource, 0);
  const ZORV_Format format(ZORV_Format::F, 8, 0);
  histogram.addVariable("X", "X", false, "", kSource, &format, kTargetLabel);
  histogram.addVariable("Y", "Y", false, "", kSource, nullptr, nullptr);
  const VarDataProcessor::VarInfo x = Declare(data, kSource, "X");
  const VarDataProcessor::VarInfo y = Declare(data, kSource, "Y");
  const double frequencies[] = {2, 5, 11, 19, 27, 31, 24, 16, 9, 4, 2};
  const long bins = 11;
  for (long i = 0; i < bins; ++i) {
    data.SetVariableValue(x, i, 160.0 + 18.0 * static_cast<double>(i));
    data.SetVariableValue(y, i, frequencies[i]);
  }
  std::string text;
  std::string other;
  histogram.convert(text, other);
  P::PatchHistogram(text, bins, "normal", 0.0, 0.0, false);
  XDocument document(text);
  document.applyStyleTemplate();
  const std::string histogramText = document.AsUTF8();

  ZorvJVM* platform = ZorvJVM::GetInstance();
  if (!platform->IsStarted()) platform->StartJVM();
  if (!platform->IsStarted()) return;
  void* env = nullptr;
  platform->AttachCurrentThread(&env);
  ViZEditor* editor = ViZEditor::GetInstance();
  if (!editor->IsStartedHeadless()) editor->StartEditorHeadless(platform->GetEnv());
  long length = 0;
  char* bytes = data.GetDataStream(length);
  try {
    const std::string result = editor->EmbedHistogramInGraph(chartText, histogramText, bytes, length, 2);
    if (!result.empty()) chartText = result;
  } catch (const JNIException&) {
  }
  delete[] bytes;
}

struct Term {
  const char* fName;
  const char* fType;
  double fSig;
  double fEstimate;
};

// A diagram of terms around the target, as the fixed effects and fixed
// coefficients charts make it.
void Diagram(const std::string& title, const std::vector<Term>& terms, bool coefficients) {
  VarDataProcessor data;
  const unsigned long count = terms.size();
  // The target node.
  data.AddDataSource("targetPointSource", 0);
  const auto tx = Declare(data, "targetPointSource", "X");
  const auto ty = Declare(data, "targetPointSource", "Y");
  const auto ttype = Declare(data, "targetPointSource", "Type");
  const auto tnodes = Declare(data, "targetPointSource", "Nodes");
  const auto ttip = Declare(data, "targetPointSource", "PointTooltip");
  data.SetStringVariableValue(ttype, 0, "target");
  data.SetStringVariableValue(tnodes, 0, "Reaction");
  data.SetStringVariableValue(
      ttip, 0, "Reaction\nReaction time (ms)\nProbability distribution: Normal\nLink function: Identity");
  data.SetVariableValue(tx, 0, static_cast<double>(count));
  data.SetVariableValue(ty, 0, (count + 1) * 0.5);
  // The term nodes and their edges.
  data.AddDataSource("pointSource", 0);
  data.AddDataSource("edgeSource", 0);
  std::map<std::string, VarDataProcessor::VarInfo> v;
  for (const char* name : {"X", "Y", "Label_X", "Label_Y", "Type", "Nodes", "PointTooltip"})
    v[name] = Declare(data, "pointSource", name);
  for (const char* name : {"FromX", "FromY", "ToX", "ToY", "Weight", "Weight2", "LineTooltip"})
    v[name] = Declare(data, "edgeSource", name);
  const double outCount = count == 0 ? 1.0 : static_cast<double>(count);
  const double mid = (count + 1) * 0.5;
  const double offset = outCount == 1 ? -0.4 : outCount * -0.2;
  double minWeight = 9.0;
  double maxWeight = 1.0;
  for (unsigned long row = 0; row < count; ++row) {
    const double i = static_cast<double>(count - row);
    const double d = 2.0 * std::fabs(i - mid);
    const double x = outCount - std::sqrt(outCount * outCount - d * d);
    const Term& term = terms[row];
    const double sig = term.fSig;
    const double weight = sig < 0.0001   ? 9
                          : sig < 0.0005 ? 8
                          : sig < 0.001  ? 7
                          : sig < 0.005  ? 6
                          : sig < 0.01   ? 5
                          : sig < 0.05   ? 4
                          : sig < 0.1    ? 3
                          : sig < 0.2    ? 2
                                         : 1;
    minWeight = std::min(minWeight, weight);
    maxWeight = std::max(maxWeight, weight);
    const long r = static_cast<long>(row);
    data.SetVariableValue(v["X"], r, x);
    data.SetVariableValue(v["FromX"], r, x);
    data.SetVariableValue(v["Y"], r, i);
    data.SetVariableValue(v["FromY"], r, i);
    data.SetVariableValue(v["Label_X"], r, x + offset);
    data.SetVariableValue(v["Label_Y"], r, i);
    data.SetStringVariableValue(v["Type"], r, term.fType);
    data.SetStringVariableValue(v["Nodes"], r, term.fName);
    data.SetStringVariableValue(v["PointTooltip"], r, std::string(term.fName) + "\n" + term.fType);
    data.SetVariableValue(v["ToX"], r, outCount);
    data.SetVariableValue(v["ToY"], r, mid);
    data.SetVariableValue(v["Weight"], r, weight);
    if (coefficients) data.SetStringVariableValue(v["Weight2"], r, term.fEstimate >= 0 ? "Positive" : "Negative");
    data.SetStringVariableValue(v["LineTooltip"], r, "Sig. = " + P::FormatNumber(sig));
  }
  std::string text = FetchFile::fetch(TemplateFile("GLMMFixedCoefficients.viztemplate"), true, true);
  P::DiagramFrame(text, count, title);
  EmbedHistogram(text);
  P::DiagramLegend(text, !coefficients, true, minWeight, maxWeight, "Coefficient Estimate");
  XDocument document(text);
  Send(document, title, data);
}

void EmMeans() {
  const std::string title = "Reaction time (ms) by Treatment * Sleep condition";
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMEmMeans");
  const ZORV_Format means(ZORV_Format::F, 40, 2);
  chart.addLabel(0, title);
  chart.addVariable("effect1", "effect1", true, "effect1Label", kSource, nullptr, "Treatment");
  chart.addVariable("effect2", "effect2", true, "", kSource, nullptr, "Sleep condition");
  chart.addVariable("target", "target", false, "", kSource, &means, kTargetLabel);
  chart.addVariable("confMargin", "confMargin", false, "", kSource, &means, kTargetLabel);
  VarDataProcessor data;
  data.AddDataSource(kSource, 0);
  const auto e1 = Declare(data, kSource, "effect1");
  const auto e2 = Declare(data, kSource, "effect2");
  const auto target = Declare(data, kSource, "target");
  const auto margin = Declare(data, kSource, "confMargin");
  const char* treatments[] = {"Placebo", "Low dose of the active compound given twice daily",
                              "High dose of the active compound given once at bedtime"};
  const char* conditions[] = {"Rested", "Sleep deprived"};
  long r = 0;
  for (int a = 0; a < 3; ++a) {
    for (int b = 0; b < 2; ++b, ++r) {
      const double mean = 255.0 + 18.0 * a + 31.0 * b - 6.0 * a * b;
      for (long k = 0; k < 2; ++k) {
        data.SetStringVariableValue(e1, 2 * r + k, treatments[a]);
        data.SetStringVariableValue(e2, 2 * r + k, conditions[b]);
        data.SetVariableValue(target, 2 * r + k, mean);
      }
      data.SetVariableValue(margin, 2 * r, mean - 11.5);
      data.SetVariableValue(margin, 2 * r + 1, mean + 11.5);
    }
  }
  std::string text;
  std::string other;
  chart.convert(text, other);
  P::PatchEmMeans(text, kTargetLabel, true);
  XDocument document(text);
  Send(document, title, data);
}

void CustomEffects() {
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMCustomEffects");
  const ZORV_Format means(ZORV_Format::F, 40, 2);
  const char* source = "source_0";
  chart.addVariable("targetValue", "targetValue", false, "", source, &means, kTargetLabel);
  chart.addVariable("effect1", "effect1", true, "", source, nullptr, nullptr);
  chart.addVariable("effect2", "effect2", true, "", source, nullptr, nullptr);
  chart.addVariable("effect3", "effect3", true, "", source, nullptr, nullptr);
  chart.addVariable("confMargin", "confMargin", false, "", source, &means, kTargetLabel);
  VarDataProcessor data;
  data.AddDataSource(source, 0);
  const auto value = Declare(data, source, "targetValue");
  const auto e1 = Declare(data, source, "effect1");
  const auto e2 = Declare(data, source, "effect2");
  const auto e3 = Declare(data, source, "effect3");
  const auto margin = Declare(data, source, "confMargin");
  long r = 0;
  for (int c = 0; c < 2; ++c) {
    for (int b = 0; b < 2; ++b) {
      for (int a = 0; a < 4; ++a, ++r) {
        const double mean = 240.0 + 9.0 * a + 20.0 * b + 12.0 * c;
        for (long k = 0; k < 2; ++k) {
          data.SetVariableValue(value, 2 * r + k, mean);
          data.SetVariableValue(e1, 2 * r + k, a);
          data.SetStringVariableValue(e2, 2 * r + k, b == 0 ? "Rested" : "Deprived");
          data.SetStringVariableValue(e3, 2 * r + k, c == 0 ? "Female" : "Male");
        }
        data.SetVariableValue(margin, 2 * r, mean - 8.0);
        data.SetVariableValue(margin, 2 * r + 1, mean + 8.0);
      }
    }
  }
  std::string text;
  std::string other;
  chart.convert(text, other);
  P::PatchCustomEffects(text, "Continuous predictors fixed at Age = 34.50", "Days", "Estimated Mean", false, false);
  XDocument document(text);
  document.setEditor(2);
  document.setLanguage();
  document.applyCTemplate(false);
  document.SetChartData(&data);
  const ChartString description = XUtility::ChartStringFromOLANG("Estimated Means: Custom Effects");
  document.SetDescription(description.xc_str());
  XGraph* graph = document.getExternalGraph();
  if (XVariable* effect = graph->getVariable(ChartString(u"effect1"), 0)) {
    effect->setLabel(ChartString(u"Days of deprivation"));
    effect->setCategorical(true);
  }
  if (XVariable* effect = graph->getVariable(ChartString(u"effect2"), 0))
    effect->setLabel(ChartString(u"Sleep condition"));
  if (XVariable* effect = graph->getVariable(ChartString(u"effect3"), 0)) {
    effect->setLabel(ChartString(u"Sex"));
    effect->SetFormatPrefix(ChartString(u"Sex = "));
  }
  document.applyCTemplate(false);
  document.SendChart(true, false, false);
}

void SimpleContrasts() {
  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMSimpleContrasts");
  const char* source = "source";
  for (const char* name : {"value", "category", "type", "facet1", "facet2", "confMargin", "tooltip"}) {
    const bool categorical = std::string(name) != "value" && std::string(name) != "confMargin";
    chart.addVariable(name, name, categorical, "", source, nullptr, "");
  }
  VarDataProcessor data;
  data.AddDataSource(source, 0);
  std::map<std::string, VarDataProcessor::VarInfo> v;
  for (const char* name : {"value", "category", "type", "facet1", "facet2", "confMargin", "tooltip"})
    v[name] = Declare(data, source, name);
  std::map<std::string, P::Deviation> deviations;
  const char* sexes[] = {"Female", "Male"};
  const double means[2][4] = {{262.0, 249.5, 271.0, 258.0}, {270.0, 266.0, 290.5, 268.5}};
  long r = 0;
  for (int f = 0; f < 2; ++f) {
    const double reference = means[f][3];
    deviations[sexes[f]] = {sexes[f], "", reference};
    for (int level = 0; level < 3; ++level, ++r) {
      const double mean = means[f][level];
      const bool significant = std::fabs(mean - reference) > 10.0;
      for (long k = 0; k < 2; ++k) {
        data.SetVariableValue(v["category"], 2 * r + k, level + 1);
        data.SetVariableValue(v["type"], 2 * r + k, significant ? 1 : 0);
        data.SetStringVariableValue(v["facet1"], 2 * r + k, sexes[f]);
        data.SetStringVariableValue(v["tooltip"], 2 * r + k,
                                    std::string("Reaction time for level ") + std::to_string(level + 1) +
                                        (significant ? " differs from" : " does not differ from") + " level 4");
      }
      data.SetVariableValue(v["value"], 2 * r, reference);
      data.SetVariableValue(v["value"], 2 * r + 1, mean);
      data.SetVariableValue(v["confMargin"], 2 * r, mean - 7.5);
      data.SetVariableValue(v["confMargin"], 2 * r + 1, mean + 7.5);
    }
  }
  std::string text;
  std::string other;
  chart.convert(text, other);
  P::PatchContrastTexts(text, "Simple Contrasts",
                        "Reaction time (ms) of each level of Days compared with level 4 (the reference)",
                        "Sequential Bonferroni significance adjust .05\nConfidence interval bounds are approximate.");
  P::UpdateLineGuides(text, deviations);
  P::RemoveFacet2(text);
  XDocument document(text);
  document.setEditor(2);
  document.setLanguage();
  XGraph* graph = document.getExternalGraph();
  if (XVariable* category = graph->getVariable(ChartString(u"category"), 0)) {
    category->setLabel(ChartString(u"Days"));
    category->addRelabel(1, ChartString(u"Day 1"));
    category->addRelabel(2, ChartString(u"Day 2"));
    category->addRelabel(3, ChartString(u"Day 3"));
  }
  if (XVariable* facet = graph->getVariable(ChartString(u"facet1"), 0)) {
    facet->setLabel(ChartString(u"Sex"));
    facet->SetFormatPrefix(ChartString(u"Sex = "));
  }
  if (XVariable* type = graph->getVariable(ChartString(u"type"), 0)) {
    type->addRelabel(0, ChartString(u"Not Significant"));
    type->addRelabel(1, ChartString(u"Significant"));
    type->setLabel(ChartString(u"Adjusted significance"));
  }
  document.SetChartData(&data);
  const ChartString description = XUtility::ChartStringFromOLANG("Simple Contrasts");
  document.SetDescription(description.xc_str());
  document.applyCTemplate(false);
  document.SendChart(true, false, false);
}

void Pairwise() {
  VarDataProcessor data;
  data.AddDataSource("nodeSource_1", 0);
  data.AddDataSource("edgeSource_1", 0);
  std::map<std::string, VarDataProcessor::VarInfo> n;
  std::map<std::string, VarDataProcessor::VarInfo> e;
  for (const char* name : {"node", "facet1", "facet2"}) n[name] = Declare(data, "nodeSource_1", name);
  for (const char* name : {"from", "to", "weight", "weightInPopup", "type", "facet1", "facet2", "tooltip"}) {
    e[name] = Declare(data, "edgeSource_1", name);
  }
  const int levels = 5;
  for (int i = 0; i < levels; ++i) data.SetVariableValue(n["node"], i, i + 1);
  Sequence random;
  long row = 0;
  for (int i = 0; i < levels; ++i) {
    for (int j = i + 1; j < levels; ++j) {
      const double sig = std::pow(random.Next(), 2.5);
      data.SetVariableValue(e["from"], row, i + 1);
      data.SetVariableValue(e["to"], row, j + 1);
      data.SetVariableValue(e["weight"], row, 1.0 / ((1.0 - sig) * (1.0 - sig)));
      data.SetVariableValue(e["weightInPopup"], row, sig);
      data.SetVariableValue(e["type"], row, sig < 0.05 ? 1 : 0);
      data.SetStringVariableValue(e["tooltip"], row,
                                  "Level " + std::to_string(j + 1) + " against level " + std::to_string(i + 1) +
                                      ": adjusted Sig. " + P::FormatNumber(sig));
      ++row;
    }
  }
  std::string text = FetchFile::fetch(TemplateFile("GLMMPairwiseContrasts.viztemplate"), true, true);
  P::PatchPairwiseTexts(text, "Pairwise Contrasts", "Target: Reaction time (ms)",
                        "Sequential Sidak significance adjust .05\nConfidence interval bounds are approximate.");
  P::RemoveFaceting(text);
  XDocument document(text);
  XGraph* graph = document.getExternalGraph();
  if (XVariable* node = graph->getVariable(ChartString(u"node"), 0)) node->setLabel(ChartString(u"Days"));
  if (XVariable* type = graph->getVariable(ChartString(u"type"), 0)) {
    type->addRelabel(0, ChartString(u"Not Significant"));
    type->addRelabel(1, ChartString(u"Significant"));
  }
  for (const char* name : {"node", "from", "to"}) {
    if (XVariable* variable = graph->getVariable(ChartString::fromUTF8(name), 0)) {
      variable->addRelabel(ChartString(u"3"), ChartString(u"Day 3 (midpoint of the study)"));
    }
  }
  document.setEditor(2);
  document.setLanguage();
  const ChartString description = XUtility::ChartStringFromOLANG("Pairwise Contrasts");
  document.SetDescription(description.xc_str());
  document.SetChartData(&data);
  document.applyCTemplate(false);
  document.SendChart(true, false, false);
}

}  // namespace

void Build(OmDocument& document) {
  OmHeading& heading = document.fRoot.AddHeading("Generalized Linear Mixed Models");
  BpProcedure procedure(heading, "Generalized Linear Mixed Models", "Generalized Linear Mixed Models");
  PredictedByObserved();
  Diagram("Fixed Effects",
          {{"Days", "continuous", 0.00002, 10.4},
           {"Treatment", "categorical", 0.03, 0.0},
           {"Days*Treatment", "interaction", 0.31, 0.0}},
          false);
  Diagram("Fixed Coefficients",
          {{"Intercept", "intercept", 0.00001, 251.4},
           {"Days", "continuous", 0.00003, 10.5},
           {"Treatment=1", "categorical", 0.008, -12.3},
           {"Treatment=2", "categorical", 0.12, 4.1},
           {"Days*Treatment=1", "interaction", 0.4, -1.9}},
          true);
  EmMeans();
  CustomEffects();
  SimpleContrasts();
  Pairwise();
}

}  // namespace ChartGallery
