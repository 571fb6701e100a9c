#include "numeric/glmm/GLMMTestRows.h"

#include "numeric/xml/IMCVariable.h"

using namespace MCMath_850::MCConst;

MCXML_850::MCVarList GLMMTestRows::VarList(const std::vector<std::string>& names,
                                           const std::vector<int>& nCategories) {
  MCXML_850::MCVarList list;
  for (std::size_t i = 0; i < names.size(); ++i) {
    MCXML_850::IMCVariable var(names[i], i == 0 ? ROLE_TARGET : ROLE_PREDICTOR,
                               nCategories[i] > 0 ? MEASURE_NOMINAL : MEASURE_CONTINUOUS);
    var.SetRecordIndex(static_cast<int>(i));
    for (int c = 0; c < nCategories[i]; ++c) var.AddCategory(c + 1.0, std::to_string(c + 1));
    list.AddVariable(var);
  }
  return list;
}
