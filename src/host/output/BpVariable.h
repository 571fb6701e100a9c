#pragma once

#include <string>

#include "host/output/BpCellText.h"

class ZORV_Variable;

// A variable by its name or label. The name and the label are copied when
// the text is made, so the text does not depend on the variable afterwards.
class BpVariable : public BpCellText {
 public:
  enum Show {
    NAME = 0,    // the name
    LABEL = 1,   // the label, or the name when there is none
    AS_SET = 2,  // as the host's display setting says: name, label, or both
  };

  BpVariable(const ZORV_Variable& variable, Show show);
  BpVariable(const ZORV_Variable& variable, int show) : BpVariable(variable, static_cast<Show>(show)) {}

  const std::string& GetName() const { return fName; }
  const std::string& GetLabel() const { return fLabel; }
  Show GetShow() const { return fShow; }
  void SetShow(Show show) { fShow = show; }

  BpCellText* Replicate() const override { return new BpVariable(*this); }
  using BpCellText::GetText;
  std::string GetText(const BpTextContext& context) const override;

  // A name and label as a display setting says (0 name, 1 label, 2 both).
  static std::string Compose(const std::string& name, const std::string& label, int display);

 private:
  std::string fName;
  std::string fLabel;
  Show fShow;
};
