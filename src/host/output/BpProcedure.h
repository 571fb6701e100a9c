#pragma once

#include <string>

#include "host/output/BpFormatSpec.h"
#include "host/output/BpHeading.h"

class ZORV_DataSource;
struct OmDocument;
struct OmHeading;

// The output of one command, made by the host over the command's node of
// the output document. It is a heading, and it supplies the number formats
// of the procedure's tables.
//
// The procedure's fixed texts are translated with the string table named
// when it is made (e.g. "Mixed"), from the session's string tables.
// Messages (BpError), notes (AddNotes) and front-end text (BP_ToFront) go to
// the current procedure: the most recently made one whose handles are not
// all gone. With none, they go to the host document.
class BpProcedure : public BpHeading {
 public:
  BpProcedure() = default;
  // The heading takes the translated title when it has no text yet.
  BpProcedure(OmHeading& heading, const std::string& title, const std::string& stringTable);

  const std::string& GetTitle() const;
  const std::string& GetStringTable() const;
  // The dataset the procedure reads, for the formats of means; may be null.
  ZORV_DataSource* GetDataSource() const;
  void SetDataSource(ZORV_DataSource* pDataSource);

  // Number formats. Widths are the largest a number may take; cells are
  // trimmed.
  // Whole numbers: counts, whole degrees of freedom.
  static BpFormatSpec Count();
  // Statistics and fractional degrees of freedom: 3 decimals.
  static BpFormatSpec GeneralStat();
  // Significance values: 3 decimals, written as computed (.000 included).
  static BpFormatSpec Significance();
  // Correlations: 3 decimals.
  static BpFormatSpec Correlation();
  // Coefficients and their standard errors: 3 decimals, and a value that
  // would show as zero in E notation.
  static BpFormatSpec Coefficient();
  static BpFormatSpec CoefficientSE();
  // The mean of the dataset's variable at `variableIndex`: its format with
  // two more decimals (at most 16); 3 decimals without such a numeric
  // variable.
  BpFormatSpec Mean(int variableIndex) const;
  // Percentages: 1 decimal and a percent sign.
  static BpFormatSpec Percent();
  // As many decimals as `value` has, up to ten significant digits (95 gives
  // 0 decimals, 97.5 gives 1).
  static BpFormatSpec SigDigit(double value);

  // The current procedure; an unbound handle when there is none.
  static BpProcedure Current();
  // Where output goes when no procedure is current.
  static OmDocument& HostDocument();

 private:
  explicit BpProcedure(BpHeadingState* pState);
};
