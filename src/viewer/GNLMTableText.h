#pragma once

#include <memory>
#include <string>

#include "host/output/BpComposite.h"
#include "host/output/BpDimension.h"
#include "host/output/BpGroup.h"
#include "results/GNLMOutputStats.h"

class BpCellText;
class BpPivotTable;
class CFStatVariableValue;
class ZORV_DataSource;
class ZORV_Variable;

// What the model viewer's tables share: fields and their values as cells,
// the note that names the target, dimensions, and the column group of a
// confidence interval.
class GNLMTableText {
 public:
  // The variable of a field index; null for an index the data do not have.
  static const ZORV_Variable* Variable(const ZORV_DataSource* pDataSource, int index);
  // A field as its variable shows it (BpVariable's show value); the given
  // name, as it stands, for a field the data do not have.
  static std::unique_ptr<BpCellText> VariableText(const ZORV_DataSource* pDataSource, int index,
                                                  const std::string& name, int show);
  // A value of a field as a data value of its variable (BpDataValue's
  // preference); the value's text, as it stands, when it was not coded for
  // a variable of the data.
  static std::unique_ptr<BpCellText> ValueText(const ZORV_DataSource* pDataSource, int index,
                                               const CFStatVariableValue& value, int preference);

  // "Target: y", or "Target: events/trials" with the trials' field or
  // their fixed number.
  static BpComposite TargetNote(const GNLMOutputStats::BuildSettingsData& settings, const ZORV_DataSource* pDataSource);
  static void AddTargetNote(BpPivotTable& table, const GNLMOutputStats::BuildSettingsData& settings,
                            const ZORV_DataSource* pDataSource);

  // A dimension of the table at its place (0 rows, 1 columns) and order,
  // its name or its labels hidden as asked; its categories come as made.
  static BpDimension Dimension(BpPivotTable& table, const BpCellText& name, int place, int order, bool hideName,
                               bool hideLabels);

  // The bounds of an interval in the coefficient format, "Lower" and
  // "Upper" under the group "95% Confidence Interval" (the level from a
  // proportion), or under another title with the level as its argument.
  static void AddInterval(BpGroup& parent, double confidence, double lower, double upper,
                          const std::string& pattern = "^1% Confidence Interval");
};
