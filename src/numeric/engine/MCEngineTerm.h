#pragma once

#include <vector>

namespace MCEngine_850 {

// One fixed-effect term and the columns it occupies in the overparameterized
// design. Factors and covariates are identified by any integers the caller
// chooses; the same integer means the same variable in every term. A nested
// effect B(A) lists both A and B as factors.
class MCEngineTerm {
 public:
  MCEngineTerm() = default;
  MCEngineTerm(int firstColumn, int nColumns, std::vector<int> factors, std::vector<int> covariates);
  static MCEngineTerm Intercept(int column);

  int GetFirstColumn() const { return fFirstColumn; }
  void SetFirstColumn(int column) { fFirstColumn = column; }
  int GetNColumns() const { return fNColumns; }
  void SetNColumns(int n) { fNColumns = n; }
  bool IsIntercept() const { return fbIntercept; }
  void SetIntercept(bool intercept) { fbIntercept = intercept; }
  const std::vector<int>& GetFactors() const { return fvFactors; }
  void SetFactors(const std::vector<int>& factors) { fvFactors = factors; }
  // Covariates with multiplicity: x*x lists x twice.
  const std::vector<int>& GetCovariates() const { return fvCovariates; }
  void SetCovariates(const std::vector<int>& covariates) { fvCovariates = covariates; }

  // True when this term contains `other`: it is a different, non-intercept
  // term with every factor of `other` and exactly the same covariates.
  bool Contains(const MCEngineTerm& other) const;

 private:
  int fFirstColumn = 0;
  int fNColumns = 0;
  bool fbIntercept = false;
  std::vector<int> fvFactors;
  std::vector<int> fvCovariates;
};

}  // namespace MCEngine_850
