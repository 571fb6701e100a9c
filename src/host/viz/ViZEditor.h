#pragma once

#include <string>

// The process-wide chart editor, run without a window on the chart
// platform (ZorvJVM), which combines chart documents: it lays a histogram
// into the target node of a diagram.
class ViZEditor {
 public:
  static ViZEditor* GetInstance();
  ViZEditor(const ViZEditor&) = delete;
  ViZEditor& operator=(const ViZEditor&) = delete;

  bool IsStartedHeadless() const { return fbStartedHeadless; }
  // Starts the editor in the environment of the calling thread, which must
  // be attached to the platform; true when it runs afterwards.
  bool StartEditorHeadless(void* env);
  // Stops the editor, for tests that start it again.
  void Stop() { fbStartedHeadless = false; }

  // The chart document with the histogram document, and its serialized data
  // of `length` bytes (VarDataProcessor::GetDataStream), laid into the
  // chart's node that has chartSlot="true": an <embeddedChart> holding the
  // histogram with its data inline, which replaces one laid there before.
  // The rest of the chart's text stays as it was. `fieldType` is the target
  // field's storage code (CFField); an integer field's histogram is labelled
  // in whole numbers. Empty when the chart has no such node. Texts are
  // UTF-8. Raises JNIException when the editor is not started or a document
  // or the data cannot be read.
  std::string EmbedHistogramInGraph(const std::string& chart, const std::string& histogram, const char* data,
                                    long length, int fieldType);

 private:
  ViZEditor() = default;

  bool fbStartedHeadless = false;
};
