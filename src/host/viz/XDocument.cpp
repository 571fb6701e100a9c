#include "host/viz/XDocument.h"

#include <stdexcept>

#include "host/viz/XGraph.h"

XDocument::XDocument(const std::string& text) : fText(text) {}

XDocument::~XDocument() = default;

void XDocument::setLanguage() { throw std::logic_error("XDocument::setLanguage: not implemented yet"); }

XGraph* XDocument::getExternalGraph() {
  throw std::logic_error("XDocument::getExternalGraph: not implemented yet");
}

void XDocument::applyCTemplate(bool) { throw std::logic_error("XDocument::applyCTemplate: not implemented yet"); }

void XDocument::applyStyleTemplate() {
  throw std::logic_error("XDocument::applyStyleTemplate: not implemented yet");
}

void XDocument::SendChart(bool, bool, bool) { throw std::logic_error("XDocument::SendChart: not implemented yet"); }
