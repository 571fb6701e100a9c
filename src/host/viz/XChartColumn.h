#pragma once

#include <string>
#include <vector>

#include "host/data/ZORV_Format.h"
#include "host/viz/XChartValue.h"
#include "host/viz/XMarkupNode.h"

// One variable of a chart as the drawing uses it: its declaration in the
// markup (source, name, role, label, format, relabels, ordering) and its
// values by row, from the chart's data and from values written inline.
class XChartColumn {
 public:
  struct Relabel {
    std::string fValue;
    std::string fLabel;
  };

  // The declaration of a <variable> element.
  explicit XChartColumn(const XMarkupNode& declaration);

  const std::string& GetSource() const { return fSource; }
  const std::string& GetName() const { return fName; }
  const std::string& GetRole() const { return fRole; }
  // The label to show for the variable: its label, or else its name.
  std::string GetTitle() const;
  const std::string& GetPrefix() const { return fPrefix; }

  // Categorical when declared so, when its measurement level is nominal or
  // ordinal, or when a value is a text; continuous otherwise.
  bool IsCategorical() const;
  bool HasFormat() const { return fbHasFormat; }
  const ZORV_Format& GetFormat() const { return fFormat; }

  void Resize(long rows) { fvValues.resize(static_cast<std::size_t>(rows < 0 ? 0 : rows)); }
  void Set(long row, const XChartValue& value);
  long GetRowCount() const { return static_cast<long>(fvValues.size()); }
  // An empty value outside the rows.
  const XChartValue& At(long row) const;

  // What a value shows: its relabel, else the number in the variable's
  // format (six significant digits without one), else the text.
  std::string Display(const XChartValue& value) const;
  // The distinct values of its rows, empty ones aside, in the variable's
  // order: as the rows first show them, or by value (XChartValue::Before)
  // when it sorts by value.
  std::vector<XChartValue> Categories() const;
  // Whether some row is empty.
  bool HasEmpty() const;

 private:
  std::string fSource;
  std::string fName;
  std::string fRole;
  std::string fLabel;
  std::string fPrefix;
  bool fbCategoricalSet = false;
  bool fbCategorical = false;
  int fLevel = 0;
  bool fbSortByValue = false;
  bool fbHasFormat = false;
  ZORV_Format fFormat;
  std::vector<Relabel> fvRelabels;
  std::vector<XChartValue> fvValues;
};
