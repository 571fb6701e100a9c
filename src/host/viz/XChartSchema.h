#pragma once

#include <string>
#include <vector>

#include "host/viz/XMarkupError.h"
#include "host/viz/XMarkupNode.h"

// The grammar of the chart markup: which elements exist, where each may
// stand, which attributes it takes and what their values must look like.
// This table is the one description of the markup that the program checks
// documents against; docs/charts.md describes the same elements for readers.
class XChartSchema {
 public:
  enum ValueType {
    TEXT,        // any text
    NUMBER,      // a decimal number, as 2, -0.5 or 1e+06
    INTEGER,     // a whole number
    LENGTH,      // a number of pixels, "px" optional
    PERCENT,     // a number followed by "%"
    BOOLEAN,     // true or false
    COLOR,       // #rgb, #rrggbb, or a name of XChartLook's colour table
    COLOR_LIST,  // colours separated by commas
    FORMAT,      // a display format such as F8.2
    CHOICE,      // one of the words listed
    REFERENCE,   // a variable of the element's source, by role or name
    EXPRESSION   // a condition, see XExpression
  };

  struct AttributeRule {
    std::string fName;
    ValueType fType = TEXT;
    bool fbRequired = false;
    std::vector<std::string> fvChoices;
  };

  struct ElementRule {
    std::string fName;
    std::vector<std::string> fvParents;  // empty for the root
    std::vector<AttributeRule> fvAttributes;
    bool fbText = false;  // may hold text
  };

  // Every element of the markup.
  static const std::vector<ElementRule>& Elements();
  // Null for an element the markup does not have.
  static const ElementRule* Find(const std::string& name);

  // True when the document follows the grammar; otherwise false with the
  // first problem, placed at its element.
  static bool Check(const XMarkupNode& root, XMarkupError& error);
  // Whether a text is a value of the type (choices from the rule).
  static bool IsValid(const AttributeRule& rule, const std::string& value);
};
