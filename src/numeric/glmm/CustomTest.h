#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "numeric/glmm/LMatrixRow.h"

namespace MCGLMM_850 {

// A user's linear hypothesis L b = K: a label, the rows of L, and the K
// values (one per row; none means all zero). A row has a fixed part and,
// when the test involves random effects, a random part.
class CustomTest {
 public:
  CustomTest() = default;

  void Reset();

  void SetLabel(const std::string& label) { fLabel = label; }
  const std::string& GetLabel() const { return fLabel; }

  void AddFixedRow(const LMatrixRow& fixedRow);
  void AddMixedRow(const LMatrixRow& fixedRow, const LMatrixRow& randomRow);
  int GetNRows() const { return static_cast<int>(fvFixedRows.size()); }
  const std::vector<LMatrixRow>& GetFixedRows() const { return fvFixedRows; }
  // Parallel to the fixed rows; an entry of a row with no random part is an
  // empty random row.
  const std::vector<LMatrixRow>& GetRandomRows() const { return fvRandomRows; }
  // Whether row i has a random part; false for a row that does not exist.
  bool HasRandomPart(int i) const;

  void SetKMatrix(const std::vector<double>& kValues) { fvKValues = kValues; }
  const std::vector<double>& GetKMatrix() const { return fvKValues; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::string fLabel;
  std::vector<LMatrixRow> fvFixedRows;
  std::vector<LMatrixRow> fvRandomRows;
  std::vector<bool> fvbRandomPart;
  std::vector<double> fvKValues;
};

}  // namespace MCGLMM_850
