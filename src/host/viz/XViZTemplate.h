#pragma once

#include <string>
#include <vector>

#include "host/data/ZORV_Format.h"

class ZORV_ValueLabelMap;

// A built-in chart template of the host, named by its internal name: the
// file <name>.viztemplate of the template folder. The chart code binds the
// template's roles to data columns, may give it labels, and has it
// converted into a chart document: each <role> of the template becomes the
// declarations of the variables bound to it, and each <slot> the label it
// names (see docs/charts.md).
class XViZTemplate {
 public:
  // One role of the template bound to a column of a data source.
  struct Binding {
    std::string fRole;
    std::string fColumn;
    bool fbCategorical = false;
    std::string fText;  // a further name the template asks of some roles
    std::string fSource;
    bool fbHasFormat = false;
    ZORV_Format fFormat;
    bool fbHasLabel = false;
    std::string fLabel;
    int fMeasurementLevel = 0;
    const ZORV_ValueLabelMap* fpValueLabels = nullptr;
    bool fbSortByValue = false;
  };
  struct Label {
    int fPosition = 0;
    std::string fText;
  };

  XViZTemplate() = default;

  void setTemplateInternalName(const std::string& name) { fInternalName = name; }
  const std::string& getTemplateInternalName() const { return fInternalName; }

  // Binds a role. The format and the label (UTF-8) may be null. The last
  // three are the column's measurement level (0 when the template decides),
  // value labels to show for its values, and whether categories are
  // ordered by value rather than as the data give them.
  void addVariable(const std::string& role, const std::string& column, bool bCategorical, const std::string& text,
                   const std::string& source, const ZORV_Format* format, const char* label, int measurementLevel = 0,
                   const ZORV_ValueLabelMap* pValueLabels = nullptr, bool bSortByValue = false);
  const std::vector<Binding>& getVariables() const { return fvBindings; }

  // A text of the template by position: 0 is the title. UTF-8.
  void addLabel(int position, const std::string& text);
  const std::vector<Label>& getLabels() const { return fvLabels; }

  // Makes the chart document (UTF-8) into `document`. `other` is left as it
  // is. True when a document was made; otherwise the document is empty and
  // a warning names the template and the problem.
  bool convert(std::string& document, std::string& other);

  // The folder of the templates: "template" in the presentation resources.
  static std::string TemplateDirectory();
  // The file of a template by its internal name.
  static std::string TemplatePath(const std::string& name);
  // The warning that a template, by its name, cannot be used, and why.
  static void ReportUnusable(const std::string& name, const std::string& problem);

 private:
  std::string fInternalName;
  std::vector<Binding> fvBindings;
  std::vector<Label> fvLabels;
};
