#pragma once

#include <memory>
#include <string>

#include "host/viz/ChartString.h"
#include "host/viz/XMarkupError.h"

class VarDataProcessor;
class XGraph;
struct XMarkupNode;

// A chart document in the host's chart markup, from its finished text to
// the output: the chart code makes one on the text, adjusts its variables
// through the external graph, gives it its data and sends it. The text is
// read when first needed; a text that is not markup keeps its reason, and
// sending it gives a warning instead of a chart.
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
  // Takes the session's output language for the document's texts: the
  // chart's lang attribute.
  void setLanguage();

  // The graph of the document's variables, one per <variable> declaration
  // (by name and source), each with what the declaration says; owned by
  // the document. What the chart code sets on them goes into the markup
  // when the document is sent or its text is asked for.
  XGraph* getExternalGraph();

  // The text by which the output lists the chart.
  void SetDescription(const char16_t* description) { fDescription = ChartString(description); }
  const ChartString& GetDescription() const { return fDescription; }
  // The chart's data; borrowed, and it must outlive the document.
  void SetChartData(VarDataProcessor* data) { fpChartData = data; }
  VarDataProcessor* GetChartData() const { return fpChartData; }

  // Applies the session's chart look (XChartLook): size, font and colours;
  // the document's own settings stay unless bForce.
  void applyCTemplate(bool bForce);
  // Applies the session's font and colours alone, for a chart that another
  // will hold; the document's own settings stay.
  void applyStyleTemplate();

  // The document text as it stands, UTF-8.
  const std::string& AsUTF8() const;
  // Why the text is not chart markup; empty when it is.
  const XMarkupError& GetReadError() const { return fReadError; }

  // Sends the chart to the output, under the innermost open heading: its
  // description, markup and data (unless bWithData is false), and its
  // drawing. A static image keeps only the drawing; a hidden chart stays in
  // the output without being shown. A document that cannot be drawn gives
  // a warning that names the chart and the place of the problem. An empty
  // text sends nothing.
  void SendChart(bool bWithData, bool bStaticImage, bool bHidden);

 private:
  XMarkupNode* Root();
  void SetRootAttribute(const char* name, const std::string& value, bool bForce);
  void Sync() const;

  mutable std::string fText;
  bool fbRead = false;
  std::unique_ptr<XMarkupNode> fpRoot;
  XMarkupError fReadError;
  mutable bool fbEdited = false;
  int fEditor = 0;
  ChartString fDescription;
  VarDataProcessor* fpChartData = nullptr;
  std::unique_ptr<XGraph> fpGraph;
};
