#include "host/viz/ViZEditor.h"

#include <memory>

#include "host/viz/JNIException.h"
#include "host/viz/XChartSchema.h"
#include "host/viz/XMarkupData.h"
#include "host/viz/XMarkupReader.h"
#include "host/viz/XMarkupWriter.h"
#include "host/viz/ZorvJVM.h"

namespace {

std::unique_ptr<XMarkupNode> ReadOrRaise(const std::string& text, const std::string& what) {
  XMarkupError error;
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(text, error);
  if (!root) throw JNIException("the " + what + " cannot be read: " + error.ToText());
  return root;
}

const XMarkupNode* FindSlot(const XMarkupNode& node) {
  for (const auto& child : node.fvChildren) {
    if (child->IsText()) continue;
    if (child->fName == "node" && child->Attribute("chartSlot") == "true") return child.get();
    if (const XMarkupNode* found = FindSlot(*child)) return found;
  }
  return nullptr;
}

}  // namespace

ViZEditor* ViZEditor::GetInstance() {
  static ViZEditor instance;
  return &instance;
}

bool ViZEditor::StartEditorHeadless(void* env) {
  if (env != nullptr && env == ZorvJVM::GetInstance()->GetEnv()) fbStartedHeadless = true;
  return fbStartedHeadless;
}

std::string ViZEditor::EmbedHistogramInGraph(const std::string& chart, const std::string& histogram, const char* data,
                                             long length, int fieldType) {
  if (!fbStartedHeadless) throw JNIException("the chart editor is not started");
  if (length < 0 || (length > 0 && data == nullptr)) throw JNIException("the chart data are missing");
  OmChartData values;
  XMarkupError error;
  if (!XMarkupData::Read(std::string(data != nullptr ? data : "", static_cast<std::size_t>(length)), values, error)) {
    throw JNIException("the chart data cannot be read: " + error.ToText());
  }
  std::unique_ptr<XMarkupNode> inner = ReadOrRaise(histogram, "histogram");
  if (!XChartSchema::Check(*inner, error)) throw JNIException("the histogram is not chart markup: " + error.ToText());
  XMarkupData::Inline(*inner, values);
  std::unique_ptr<XMarkupNode> outer = ReadOrRaise(chart, "chart");

  const XMarkupNode* slot = FindSlot(*outer);
  if (slot == nullptr) return std::string();
  const std::string embedded = "<embeddedChart fieldType=\"" + std::to_string(fieldType) + "\">" +
                               XMarkupWriter::Write(*inner) + "</embeddedChart>";
  std::string out = chart;
  if (const XMarkupNode* before = slot->FirstChild("embeddedChart")) {
    out.replace(before->fStart, before->fEnd - before->fStart, embedded);
  } else if (slot->fbEmptyTag) {
    // <node .../> becomes <node ...>...</node>.
    const std::size_t close = out.rfind("/>", slot->fStartTagEnd - 1);
    out.replace(close, slot->fStartTagEnd - close, ">" + embedded + "</node>");
  } else {
    out.insert(out.rfind("</", slot->fEnd - 1), embedded);
  }
  return out;
}
