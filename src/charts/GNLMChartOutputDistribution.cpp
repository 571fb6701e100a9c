// The target's values: observed against predicted as a chart of its own,
// and the target's histogram with its fitted distribution, laid into the
// target node of the diagrams.
#include <algorithm>

#include "charts/GNLMChartDocument.h"
#include "charts/GNLMChartOutputData.h"
#include "charts/GNLMChartText.h"
#include "host/cf/CFField.h"
#include "host/cf/CFMetaData.h"
#include "host/strings/FacSTDictionary.h"
#include "host/viz/VarDataProcessor.h"
#include "host/viz/ViZEditor.h"
#include "host/viz/XDocument.h"
#include "host/viz/XGraph.h"
#include "host/viz/XUtility.h"
#include "host/viz/XViZTemplate.h"
#include "host/viz/ZorvJVM.h"

using Stats = GNLMOutputStats;
using GNLMChartText::formatNumber;
using GNLMChartText::replaceFirst;

namespace {

// How a fitted distribution is named in the histogram's markup, and the
// parameters it is drawn with; the normal curve needs none.
struct FittedDistribution {
  const char* fWord = nullptr;
  double fParameter = 0.0;
  bool fbSecondary = false;
  double fSecondary = 0.0;
};

FittedDistribution FittedOf(const GNLMChartOutput::Data& data, Stats::EnumDistTypes distribution) {
  switch (distribution) {
    case Stats::POISSON:
      return {"poisson", data.fDistMean, false, 0.0};
    case Stats::GAMMA:
      return {"gamma", data.fDistShape, true, data.fDistRate};
    case Stats::NEGBIN:
      return {"binomialnegative", data.fDistR, true, data.fDistP};
    case Stats::IGAUSS:
      return {"gaussianinverse", data.fDistMean, true, data.fDistShape};
    default:
      return FittedDistribution();
  }
}

// The histogram's bins and, for a distribution other than the normal, the
// curve's name and parameters.
void PatchHistogram(std::string& text, long bins, const FittedDistribution& fitted) {
  const std::size_t statistic = text.find("binStatistic");
  if (statistic == std::string::npos) return;
  text.insert(statistic + 12, " binCount=\"" + std::to_string(bins) + "\" ");
  const std::size_t word = text.find("normal", statistic);
  if (fitted.fWord == nullptr) return;
  if (word != std::string::npos) text.replace(word, 6, fitted.fWord);
  const std::size_t curve = text.find("<distributionStatistic");
  if (curve == std::string::npos) return;
  std::string parameters = " parameter=\"" + formatNumber(fitted.fParameter) + "\" ";
  if (fitted.fbSecondary) parameters += " secondaryParameter=\"" + formatNumber(fitted.fSecondary) + "\" ";
  text.insert(curve + 22, parameters);
}

// The chart editor, started on first need; false when it cannot start.
bool StartEditor() {
  ZorvJVM* platform = ZorvJVM::GetInstance();
  if (!platform->IsStarted()) platform->StartJVM();
  if (!platform->IsStarted()) return false;
  void* env = nullptr;
  platform->AttachCurrentThread(&env);
  ViZEditor* editor = ViZEditor::GetInstance();
  if (!editor->IsStartedHeadless()) editor->StartEditorHeadless(platform->GetEnv());
  return true;
}

}  // namespace

void GNLMChartOutput::createPredictedByObservedChart() {
  Data& data = *fpData;
  const Stats::ModelDiagnosticsData* diagnostics = data.fStats->GetModelDiagnostics();
  // The block is there when it has a description.
  if (diagnostics == nullptr || diagnostics->fPredByObserv.fDescription.empty()) return;
  const Stats::PredByObservData& points = diagnostics->fPredByObserv;
  const std::size_t n =
      std::min({points.fvObserved.size(), points.fvPredicted.size(), points.fvFrequency.size()});

  XViZTemplate chart;
  chart.setTemplateInternalName("GLMMPredictedByObserved");
  const std::string frequency = data.translate("E60352");
  const std::string predicted = data.translate("E61604");
  const ChartString title = XUtility::ChartStringFromOLANG(data.fDictionary->LookUp("Predicted by Observed"));
  const std::string& source = data.fSourceName;
  chart.addVariable("X", "X", false, "", source, nullptr, data.fTargetLabel.c_str());
  chart.addVariable("Y", "Y", false, "", source, nullptr, predicted.c_str());
  chart.addVariable("Transparency", "Frequency", false, "", source, nullptr, frequency.c_str());
  chart.addLabel(0, title.toUTF8());
  VarDataProcessor proc;
  GNLMChartDocument::Declare(proc, source, {"X", "Y", "Frequency"}, static_cast<long>(n));
  for (std::size_t i = 0; i < n; ++i) {
    const long row = static_cast<long>(i);
    GNLMChartDocument::SetNumber(proc, source, "X", row, points.fvObserved[i]);
    GNLMChartDocument::SetNumber(proc, source, "Y", row, points.fvPredicted[i]);
    GNLMChartDocument::SetNumber(proc, source, "Frequency", row, points.fvFrequency[i]);
  }
  std::string text;
  std::string unused;
  chart.convert(text, unused);

  // Both axes run over the observed and the predicted values together.
  replaceFirst(text, "98.8", formatNumber(points.fMaxValue));
  replaceFirst(text, "33.667", formatNumber(points.fMinValue));
  // Few records need no legend for how many each point stands for.
  if (points.fTotalFreq < 100) {
    const std::size_t legend = text.find("id=\"legendStyle");
    if (legend != std::string::npos) text.insert(legend, " visible=\"false\" ");
  }
  XDocument document(text);
  GNLMChartDocument::Open(document);
  // The predictions are shown in the target's format.
  XGraph* graph = document.getExternalGraph();
  for (const char16_t* axis : {u"X", u"Y"}) {
    if (XVariable* variable = graph->getVariable(ChartString(axis), 0)) variable->setFormat(data.fTargetFormat);
  }
  GNLMChartDocument::Send(document, title, proc);
}

void GNLMChartOutput::Data::embedHistogramInChart(std::string& chartText) {
  const Stats::BuildSettingsData* settings = fStats->GetBuildSettings();
  const Stats::ModelDiagnosticsData* diagnostics = fStats->GetModelDiagnostics();
  if (settings == nullptr || diagnostics == nullptr) return;
  const Stats::TargetDistData& target = diagnostics->fTargetDist;

  XViZTemplate histogram;
  histogram.setTemplateInternalName("GLMMHistogram");
  VarDataProcessor proc;
  histogram.addVariable("X", "X", false, "", fSourceName, &fTargetFormat, fTargetLabel.c_str());
  histogram.addVariable("Y", "Y", false, "", fSourceName, nullptr, nullptr);
  GNLMChartDocument::Declare(proc, fSourceName, {"X", "Y"});
  const std::size_t n = std::min(target.fvFrequency.size(), target.fvObserved.size());
  for (std::size_t i = 0; i < n; ++i) {
    GNLMChartDocument::SetNumber(proc, fSourceName, "X", static_cast<long>(i), target.fvObserved[i]);
    GNLMChartDocument::SetNumber(proc, fSourceName, "Y", static_cast<long>(i), target.fvFrequency[i]);
  }
  std::string histogramText;
  std::string unused;
  histogram.convert(histogramText, unused);
  PatchHistogram(histogramText, static_cast<long>(n), FittedOf(*this, settings->fDistribution));
  {
    XDocument styled(histogramText);
    styled.applyStyleTemplate();
    histogramText = styled.AsUTF8();
  }

  // The editor labels the bins of a whole-number target in whole numbers.
  const CFMetaData* metadata = fStats->GetDictMetadata();
  const CFField* field = metadata != nullptr ? metadata->GetField(fTargetIndex) : nullptr;
  if (field == nullptr) return;
  const int fieldType = std::min(field->GetType(), 6);
  if (!StartEditor()) return;
  long length = 0;
  char* bytes = proc.GetDataStream(length);
  try {
    const std::string result =
        ViZEditor::GetInstance()->EmbedHistogramInGraph(chartText, histogramText, bytes, length, fieldType);
    if (!result.empty()) chartText = result;
  } catch (...) {
    // The diagram goes out without its histogram.
  }
  delete[] bytes;
}
