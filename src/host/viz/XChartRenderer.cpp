#include "host/viz/XChartRenderer.h"

#include "host/viz/XChartPainter.h"
#include "host/viz/XChartSchema.h"
#include "host/viz/XMarkupReader.h"

bool XChartRenderer::Render(const std::string& markup, const OmChartData& data, std::string& svg, XMarkupError& error) {
  std::unique_ptr<XMarkupNode> root = XMarkupReader::Read(markup, error);
  if (!root) return false;
  if (!XChartSchema::Check(*root, error)) return false;
  return XChartPainter::Paint(*root, data, svg, error);
}
