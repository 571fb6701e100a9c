#pragma once

#include <string>

// The process-wide chart editor, run without a window inside the virtual
// machine of ZorvJVM, which combines chart documents.
class ViZEditor {
 public:
  static ViZEditor* GetInstance();
  ViZEditor(const ViZEditor&) = delete;
  ViZEditor& operator=(const ViZEditor&) = delete;

  bool IsStartedHeadless() const { return fbStartedHeadless; }
  // Starts the editor in the environment of an attached thread; true when
  // it runs afterwards.
  bool StartEditorHeadless(void* env);

  // The chart document with the histogram document, and its serialized data
  // of `length` bytes, laid into the chart's target node. `fieldType` is the
  // target field's storage code (CFField). Empty when they cannot be
  // combined. Texts are UTF-8.
  std::string EmbedHistogramInGraph(const std::string& chart, const std::string& histogram, const char* data,
                                    long length, int fieldType);

 private:
  ViZEditor() = default;

  bool fbStartedHeadless = false;
};
