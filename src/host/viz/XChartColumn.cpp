#include "host/viz/XChartColumn.h"

#include <algorithm>
#include <set>

#include "host/data/OBS.h"
#include "host/output/ToString.h"
#include "host/viz/XChartText.h"
#include "host/viz/XNumber.h"

XChartColumn::XChartColumn(const XMarkupNode& declaration)
    : fSource(declaration.Attribute("source")),
      fName(declaration.Attribute("name")),
      fRole(declaration.Attribute("role")),
      fLabel(XChartText::Decode(declaration.Attribute("label"))),
      fPrefix(XChartText::Decode(declaration.Attribute("prefix"))) {
  if (const std::string* categorical = declaration.FindAttribute("categorical")) {
    fbCategoricalSet = true;
    fbCategorical = *categorical == "true";
  }
  double level = 0.0;
  if (XNumber::Parse(declaration.Attribute("level"), level)) fLevel = static_cast<int>(level);
  fbSortByValue = declaration.Attribute("sort") == "value";
  if (const std::string* format = declaration.FindAttribute("format")) {
    fbHasFormat = ZORV_Format::Parse(*format, fFormat);
  }
  for (const XMarkupNode* relabel : declaration.Children("relabel")) {
    fvRelabels.push_back({relabel->Attribute("value"), XChartText::Decode(relabel->Attribute("label"))});
  }
}

std::string XChartColumn::GetTitle() const { return fLabel.empty() ? fName : fLabel; }

bool XChartColumn::IsCategorical() const {
  if (fbCategoricalSet && fbCategorical) return true;
  for (const XChartValue& value : fvValues) {
    double number = 0.0;
    if (value.fKind == XChartValue::TEXT && !value.AsNumber(number)) return true;
  }
  if (fbCategoricalSet) return false;
  return fLevel == 1 || fLevel == 2;
}

void XChartColumn::Set(long row, const XChartValue& value) {
  if (row < 0) return;
  if (row >= GetRowCount()) Resize(row + 1);
  fvValues[static_cast<std::size_t>(row)] = value;
}

const XChartValue& XChartColumn::At(long row) const {
  static const XChartValue kEmpty;
  if (row < 0 || row >= GetRowCount()) return kEmpty;
  return fvValues[static_cast<std::size_t>(row)];
}

std::string XChartColumn::Display(const XChartValue& value) const {
  if (value.IsEmpty()) return std::string();
  double number = 0.0;
  const bool numeric = value.AsNumber(number);
  for (const Relabel& relabel : fvRelabels) {
    double key = 0.0;
    const bool same = (numeric && XNumber::Parse(relabel.fValue, key))
                          ? key == number
                          : XChartValue::Text(relabel.fValue).fText == value.fText;
    if (same) return relabel.fLabel;
  }
  if (value.fKind == XChartValue::TEXT) return XChartText::Decode(value.fText);
  if (fbHasFormat && !fFormat.IsString()) {
    OBS cell;
    cell.fNum = value.fNumber;
    const std::string text = ToString(&cell, fFormat);
    if (!text.empty() && text.find('*') == std::string::npos) return text;
  }
  return XNumber::General(value.fNumber);
}

std::vector<XChartValue> XChartColumn::Categories() const {
  std::vector<XChartValue> out;
  std::set<std::string> seen;
  for (const XChartValue& value : fvValues) {
    if (value.IsEmpty() || !seen.insert(value.Key()).second) continue;
    out.push_back(value);
  }
  if (fbSortByValue) std::stable_sort(out.begin(), out.end(), XChartValue::Before);
  return out;
}

bool XChartColumn::HasEmpty() const {
  for (const XChartValue& value : fvValues) {
    if (value.IsEmpty()) return true;
  }
  return false;
}
