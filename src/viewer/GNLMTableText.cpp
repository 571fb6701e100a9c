#include "viewer/GNLMTableText.h"

#include <cfloat>

#include "host/cf/CFStatVariableValue.h"
#include "host/data/ZORV_DataSource.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpDataValue.h"
#include "host/output/BpNumber.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpString.h"
#include "host/output/BpVariable.h"

const ZORV_Variable* GNLMTableText::Variable(const ZORV_DataSource* pDataSource, int index) {
  if (pDataSource == nullptr || index < 0 || index >= pDataSource->ColumnCount()) return nullptr;
  return pDataSource->GetVariable(index);
}

std::unique_ptr<BpCellText> GNLMTableText::VariableText(const ZORV_DataSource* pDataSource, int index,
                                                        const std::string& name, int show) {
  const ZORV_Variable* pVariable = Variable(pDataSource, index);
  if (pVariable == nullptr) return std::unique_ptr<BpCellText>(new BpString(name, false));
  return std::unique_ptr<BpCellText>(new BpVariable(*pVariable, show));
}

std::unique_ptr<BpCellText> GNLMTableText::ValueText(const ZORV_DataSource* pDataSource, int index,
                                                     const CFStatVariableValue& value, int preference) {
  const ZORV_Variable* pVariable = Variable(pDataSource, index);
  if (pVariable == nullptr || value.GetObsValue() == nullptr) {
    return std::unique_ptr<BpCellText>(new BpString(value.GetStringValue(), false));
  }
  return std::unique_ptr<BpCellText>(new BpDataValue(*pVariable, value.GetObsValue(), preference));
}

BpComposite GNLMTableText::TargetNote(const GNLMOutputStats::BuildSettingsData& settings,
                                      const ZORV_DataSource* pDataSource) {
  BpComposite note(settings.fUseTrials ? "Target ^1/^2" : "Target ^1", true);
  note.Add(*VariableText(pDataSource, settings.fTargetIndex, settings.fTargetField, BpVariable::LABEL));
  if (settings.fUseTrials) {
    if (settings.fTrialsIndex < 0) {
      note.Add(BpNumber(settings.fTrialsValue, BpProcedure::Count()));
    } else {
      note.Add(*VariableText(pDataSource, settings.fTrialsIndex, settings.fTrialsField, BpVariable::LABEL));
    }
  }
  note.Finish();
  return note;
}

void GNLMTableText::AddTargetNote(BpPivotTable& table, const GNLMOutputStats::BuildSettingsData& settings,
                                  const ZORV_DataSource* pDataSource) {
  table.Note(BpAnnotation(TargetNote(settings, pDataSource).Replicate(), -1, false));
}

BpDimension GNLMTableText::Dimension(BpPivotTable& table, const BpCellText& name, int place, int order, bool hideName,
                                     bool hideLabels) {
  BpDimension dimension = table.Dimension(name, BpPivotTable::AS_CREATED);
  dimension.Position(place, order, hideName, hideLabels);
  return dimension;
}

void GNLMTableText::AddInterval(BpGroup& parent, double confidence, double lower, double upper,
                                const std::string& pattern) {
  // A level the document left empty stays missing.
  const double level = confidence == -DBL_MAX ? confidence : 100.0 * confidence;
  BpComposite title(pattern, true);
  title.Add(BpNumber(level, BpProcedure::SigDigit(level)));
  title.Finish();
  BpGroup interval = parent.Group(title, true, BpGroup::AS_CREATED);
  interval.Category(BpString("Lower", true)).Cell(BpNumber(lower, BpProcedure::Coefficient()));
  interval.Category(BpString("Upper", true)).Cell(BpNumber(upper, BpProcedure::Coefficient()));
}
