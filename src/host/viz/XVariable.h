#pragma once

#include <string>
#include <vector>

#include "host/data/ZORV_Format.h"
#include "host/viz/ChartString.h"

class ZORV_Variable;

// One variable of a chart document, as the chart code adjusts it before the
// document goes out: its axis or legend label, how its values are shown,
// and labels that replace single values (relabels).
class XVariable {
 public:
  // A label for one value: a number, or a text identifier.
  struct Relabel {
    bool fbNumeric = false;
    double fNumber = 0.0;
    ChartString fValue;
    ChartString fLabel;
  };

  // A variable of that name in that data source.
  XVariable(const ChartString& name, const ChartString& source);

  const ChartString& getName() const { return fName; }
  const ChartString& getSource() const { return fSource; }

  void setLabel(const ChartString& label) { fLabel = label; }
  const ChartString& getLabel() const { return fLabel; }
  void setCategorical(bool bCategorical) {
    fbCategorical = bCategorical;
    fbCategoricalSet = true;
  }
  bool isCategorical() const { return fbCategorical; }
  // Whether categorical was set (by the chart code or the document).
  bool hasCategorical() const { return fbCategoricalSet; }

  // The host variable the values come from; it must outlive this object.
  void setZORVVariable(const ZORV_Variable& variable) { fpZORVVariable = &variable; }
  const ZORV_Variable* getZORVVariable() const { return fpZORVVariable; }
  // Adds a relabel for every value label of the host variable, numbers for
  // a numeric variable and texts for a string one. Nothing without a host
  // variable.
  void addRelabels();
  void addRelabel(double value, const ChartString& label);
  void addRelabel(const ChartString& value, const ChartString& label);
  const std::vector<Relabel>& getRelabels() const { return fvRelabels; }

  // The display format of the values. Setting it from a host variable takes
  // that variable's display format.
  void setFormat(const ZORV_Format& format);
  void setFormatBasedOnZORVVariable(const ZORV_Variable& variable);
  bool hasFormat() const { return fbHasFormat; }
  const ZORV_Format& getFormat() const { return fFormat; }
  // A text shown before each formatted value, such as "Group = ".
  void SetFormatPrefix(const ChartString& prefix) { fFormatPrefix = prefix; }
  const ChartString& GetFormatPrefix() const { return fFormatPrefix; }

 private:
  ChartString fName;
  ChartString fSource;
  ChartString fLabel;
  bool fbCategorical = false;
  bool fbCategoricalSet = false;
  const ZORV_Variable* fpZORVVariable = nullptr;
  std::vector<Relabel> fvRelabels;
  bool fbHasFormat = false;
  ZORV_Format fFormat;
  ChartString fFormatPrefix;
};
