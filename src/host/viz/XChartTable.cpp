#include "host/viz/XChartTable.h"

#include <algorithm>
#include <cmath>
#include <limits>

#include "host/viz/XNumber.h"

namespace {

const long kMaxRows = XChartTable::kMaxRows;

// The host's system-missing value (the lowest double) and numbers that are
// not finite leave their cell empty.
bool IsValue(double number) { return std::isfinite(number) && number != std::numeric_limits<double>::lowest(); }

void LoadExternal(XChartColumn& column, const OmChartData& data) {
  const OmChartData::Source* source = data.FindSource(column.GetSource());
  if (source == nullptr) return;
  column.Resize(source->fRowCount);
  const OmChartData::Variable* variable = source->FindVariable(column.GetName());
  if (variable == nullptr) return;
  for (const auto& entry : variable->fCells) {
    const OmChartData::Cell& cell = entry.second;
    if (cell.fbText) {
      column.Set(entry.first, XChartValue::Text(cell.fText));
    } else if (IsValue(cell.fNumber)) {
      column.Set(entry.first, XChartValue::Number(cell.fNumber));
    }
  }
}

bool LoadInline(XChartColumn& column, const XMarkupNode& declaration, XMarkupError& error) {
  for (const XMarkupNode* cell : declaration.Children()) {
    if (cell->fName != "n" && cell->fName != "t") continue;
    double row = 0.0;
    XNumber::Parse(cell->Attribute("row"), row);
    if (row < 0 || row >= kMaxRows)
      return XMarkupError::Fail(*cell, "the row " + cell->Attribute("row") + " is out of range", error);
    const std::string text = cell->OwnText();
    if (cell->fName == "t") {
      column.Set(static_cast<long>(row), XChartValue::Text(text));
      continue;
    }
    double number = 0.0;
    if (!XNumber::Parse(text, number)) return XMarkupError::Fail(*cell, "\"" + text + "\" is not a number", error);
    column.Set(static_cast<long>(row), XChartValue::Number(number));
  }
  return true;
}

}  // namespace

bool XChartTable::Build(const XMarkupNode& chart, const OmChartData& data, XMarkupError& error) {
  fvColumns.clear();
  fRowCounts.clear();
  for (const OmChartData::Source& source : data.fvSources) {
    if (source.fRowCount > kMaxRows) {
      error = XMarkupError();
      error.fMessage = "the data source " + source.fName + " has " + std::to_string(source.fRowCount) +
                       " rows; a chart draws at most " + std::to_string(kMaxRows);
      return false;
    }
  }
  const XMarkupNode* declarations = chart.FirstChild("data");
  if (declarations == nullptr) return true;
  for (const XMarkupNode* source : declarations->Children("source")) {
    double rows = 0.0;
    XNumber::Parse(source->Attribute("rows"), rows);
    long& count = fRowCounts[source->Attribute("name")];
    count = std::max(count, static_cast<long>(std::min(std::max(rows, 0.0), static_cast<double>(kMaxRows))));
  }
  for (const XMarkupNode* declaration : declarations->Children("variable")) {
    fvColumns.emplace_back(*declaration);
    XChartColumn& column = fvColumns.back();
    LoadExternal(column, data);
    if (!LoadInline(column, *declaration, error)) return false;
    long& count = fRowCounts[column.GetSource()];
    count = std::max(count, column.GetRowCount());
  }
  for (XChartColumn& column : fvColumns) column.Resize(fRowCounts[column.GetSource()]);
  return true;
}

long XChartTable::GetRowCount(const std::string& source) const {
  auto found = fRowCounts.find(source);
  return found == fRowCounts.end() ? 0 : found->second;
}

const XChartColumn* XChartTable::Resolve(const std::string& reference, const std::string& source) const {
  if (reference.empty()) return nullptr;
  for (const XChartColumn& column : fvColumns) {
    if ((source.empty() || column.GetSource() == source) && column.GetRole() == reference) return &column;
  }
  for (const XChartColumn& column : fvColumns) {
    if ((source.empty() || column.GetSource() == source) && column.GetName() == reference) return &column;
  }
  return nullptr;
}
