#include "host/viz/XVariable.h"

#include "host/data/ZORV_Variable.h"
#include "host/viz/XUtility.h"

XVariable::XVariable(const ChartString& name, const ChartString& source) : fName(name), fSource(source) {}

void XVariable::addRelabels() {
  if (fpZORVVariable == nullptr) return;
  const ZORV_ValueLabelMap& labels = fpZORVVariable->GetValueLabels();
  if (fpZORVVariable->IsString()) {
    for (const auto& entry : labels.StringLabels()) {
      addRelabel(XUtility::ChartStringFromLocalCodePage(entry.first),
                 XUtility::ChartStringFromLocalCodePage(entry.second));
    }
  } else {
    for (const auto& entry : labels.NumericLabels()) {
      addRelabel(entry.first, XUtility::ChartStringFromLocalCodePage(entry.second));
    }
  }
}

void XVariable::addRelabel(double value, const ChartString& label) {
  Relabel relabel;
  relabel.fbNumeric = true;
  relabel.fNumber = value;
  relabel.fLabel = label;
  fvRelabels.push_back(relabel);
}

void XVariable::addRelabel(const ChartString& value, const ChartString& label) {
  Relabel relabel;
  relabel.fValue = value;
  relabel.fLabel = label;
  fvRelabels.push_back(relabel);
}

void XVariable::setFormat(const ZORV_Format& format) {
  fFormat = format;
  fbHasFormat = true;
}

void XVariable::setFormatBasedOnZORVVariable(const ZORV_Variable& variable) { setFormat(variable.GetFormat()); }
