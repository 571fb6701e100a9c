#pragma once

#include <memory>
#include <string>

#include "host/viz/ChartString.h"

class VarDataProcessor;
class XGraph;

// A chart document in the host's visualization markup, from its finished
// text to the output: the chart code makes one on the text, adjusts its
// variables through the external graph, gives it its data and sends it.
class XDocument {
 public:
  // The document text, UTF-8.
  explicit XDocument(const std::string& text);
  ~XDocument();
  XDocument(const XDocument&) = delete;
  XDocument& operator=(const XDocument&) = delete;

  // The editor that opens the chart in the output (2: the chart editor).
  void setEditor(int editor) { fEditor = editor; }
  int getEditor() const { return fEditor; }
  // Takes the output language of the session for the document's texts.
  void setLanguage();

  // The graph of the document's variables; owned by the document.
  XGraph* getExternalGraph();

  // The text by which the output lists the chart.
  void SetDescription(const char16_t* description) { fDescription = ChartString(description); }
  const ChartString& GetDescription() const { return fDescription; }
  // The chart's data; borrowed, and it must outlive the document.
  void SetChartData(VarDataProcessor* data) { fpChartData = data; }
  VarDataProcessor* GetChartData() const { return fpChartData; }

  // Applies the session's chart template to the document; with bForce its
  // settings win over the document's own.
  void applyCTemplate(bool bForce);
  // Applies the session's chart style to the document.
  void applyStyleTemplate();

  // The document text as it stands.
  const std::string& AsUTF8() const { return fText; }

  // Sends the chart to the output: with its data, as an editable chart
  // rather than a static picture, and visible, unless told otherwise.
  void SendChart(bool bWithData, bool bStaticImage, bool bHidden);

 private:
  std::string fText;
  int fEditor = 0;
  ChartString fDescription;
  VarDataProcessor* fpChartData = nullptr;
  std::unique_ptr<XGraph> fpGraph;
};
