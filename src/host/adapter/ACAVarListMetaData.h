#pragma once

#include <string>

#include "numeric/math/MCConst.h"

namespace MCXML_850 {
class MCVarList;
}
class ACAInputAdapter;
class ACAVarValidSpecs;
class ProcedureDataSource;
class ZORV_Variable;

// Fills the numeric component's variable list from the record variables:
// one entry per call, with its role, its name and label from the host
// dictionary and its record position. A categorical variable is ordinal when
// the host says so and nominal otherwise, and takes its categories, in code
// order, from the adapter; any other variable is continuous.
class ACAVarListMetaData {
 public:
  // With `withCategories` the categories of categorical variables are
  // entered too.
  ACAVarListMetaData(MCXML_850::MCVarList& varList, const ACAVarValidSpecs* varSpecs,
                     const ProcedureDataSource& dataSource, const ACAInputAdapter* adapter, bool withCategories);

  // Adds the record variable at that position. `label` replaces the host
  // label when not null; `name`, when not empty, replaces the host name (a
  // variable entered twice under another coding needs a name of its own).
  // False when the position or its host variable does not exist, or a
  // category code has no value.
  bool AddRecVariable(int recIndex, bool categorical, MCMath_850::MCConst::MCVarRole role, const char* label,
                      const std::string& name);
  // Adds the frequency weight at that position, named as above. `rounding`
  // says how fractional weights are taken: 0 as they are, 1 rounded to the
  // nearest whole number.
  bool AddRecWeightVar(int recIndex, MCMath_850::MCConst::MCVarRole role, int rounding, const std::string& name);

  MCXML_850::MCVarList& GetVarList() const { return *fpVarList; }
  const ACAVarValidSpecs* GetVarValidSpecs() const { return fpVarSpecs; }
  const ProcedureDataSource& GetDataSource() const { return *fpDataSource; }
  const ACAInputAdapter* GetInputAdapter() const { return fpAdapter; }
  bool GetWithCategories() const { return fbWithCategories; }

 private:
  const ZORV_Variable* HostVariable(int recIndex) const;

  MCXML_850::MCVarList* fpVarList;
  const ACAVarValidSpecs* fpVarSpecs;
  const ProcedureDataSource* fpDataSource;
  const ACAInputAdapter* fpAdapter;
  bool fbWithCategories;
};
