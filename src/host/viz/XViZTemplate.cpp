#include "host/viz/XViZTemplate.h"

#include <stdexcept>

void XViZTemplate::addVariable(const std::string& role, const std::string& column, bool bCategorical,
                               const std::string& text, const std::string& source, const ZORV_Format* format,
                               const char* label, int measurementLevel, const ZORV_ValueLabelMap* pValueLabels,
                               bool bSortByValue) {
  Binding binding;
  binding.fRole = role;
  binding.fColumn = column;
  binding.fbCategorical = bCategorical;
  binding.fText = text;
  binding.fSource = source;
  if (format != nullptr) {
    binding.fbHasFormat = true;
    binding.fFormat = *format;
  }
  if (label != nullptr) {
    binding.fbHasLabel = true;
    binding.fLabel = label;
  }
  binding.fMeasurementLevel = measurementLevel;
  binding.fpValueLabels = pValueLabels;
  binding.fbSortByValue = bSortByValue;
  fvBindings.push_back(binding);
}

void XViZTemplate::addLabel(int position, const std::string& text) {
  Label label;
  label.fPosition = position;
  label.fText = text;
  fvLabels.push_back(label);
}

bool XViZTemplate::convert(std::string&, std::string&) {
  throw std::logic_error("XViZTemplate::convert: not implemented yet");
}
