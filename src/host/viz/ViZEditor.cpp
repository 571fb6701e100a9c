#include "host/viz/ViZEditor.h"

#include <stdexcept>

ViZEditor* ViZEditor::GetInstance() {
  static ViZEditor instance;
  return &instance;
}

bool ViZEditor::StartEditorHeadless(void*) {
  throw std::logic_error("ViZEditor::StartEditorHeadless: not implemented yet");
}

std::string ViZEditor::EmbedHistogramInGraph(const std::string&, const std::string&, const char*, long, int) {
  throw std::logic_error("ViZEditor::EmbedHistogramInGraph: not implemented yet");
}
