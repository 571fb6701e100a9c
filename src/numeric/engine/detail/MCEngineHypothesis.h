#pragma once

#include <Eigen/Dense>
#include <vector>

#include "numeric/engine/MCEngineMissing.h"
#include "numeric/engine/MCEngineTerm.h"
#include "numeric/engine/MCEngineTest.h"
#include "numeric/engine/detail/MCEngineMostlyZero.h"

namespace MCEngine_850 {

// Hypothesis matrices over the overparameterized columns and their tests.
// The estimable functions come from X'X (Hermite form of its g2-inverse); the
// tests use the estimates' covariance C, and Satterthwaite's approximation
// uses the derivatives of C in the free covariance parameters,
// dC_k = C A_k C with A_k = X'V^-1 V_k V^-1 X, together with their asymptotic
// covariance. The A_k are held rather than the dC_k: l dC_k l' is
// (l C) A_k (l C)', so a test's rows take one product with C, which they
// need for l C l' anyway, and then products with the A_k, which for a fixed
// factor of many levels are mostly zero where every dC_k is dense.
class MCEngineHypothesis {
 public:
  MCEngineHypothesis(const Eigen::MatrixXd& xtx, const std::vector<bool>& aliased);

  // The estimates, their covariance, for the free covariance parameters
  // either dC/dtheta_k or the A_k of dC/dtheta_k = C A_k C (the other empty),
  // and the parameters' asymptotic covariance (empty when it could not be
  // computed), all over the P columns.
  void SetEstimates(const Eigen::VectorXd& beta, const Eigen::MatrixXd& C, std::vector<Eigen::MatrixXd> dC,
                    std::vector<MCEngineMostlyZero> A, const Eigen::MatrixXd& asyCov);
  // One denominator degrees of freedom for every test instead of
  // Satterthwaite's; missing (the default) restores Satterthwaite's.
  void SetFixedDF(double df) {
    fFixedDF = df;
    ForgetLastTest();
  }
  double GetFixedDF() const { return fFixedDF; }

  const Eigen::MatrixXd& GetHermite() const { return fH; }
  // The estimates over the P columns.
  const Eigen::VectorXd& GetBeta() const { return fBeta; }
  bool IsEstimable(const Eigen::RowVectorXd& l) const;

  // Sequential hypotheses: the forward Doolittle rows of X'X that belong to
  // the term's non-aliased columns.
  Eigen::MatrixXd TypeI(const MCEngineTerm& term) const;
  // Hypotheses about the term adjusted for every term that does not contain
  // it, orthogonal to the terms that do contain it.
  Eigen::MatrixXd TypeIII(const std::vector<MCEngineTerm>& terms, int t) const;

  // F test of L beta = 0 (t test when L has one row).
  MCEngineTest Test(const Eigen::MatrixXd& L) const;
  // F test of L beta = k, one k value per row of L. The estimate of a
  // single-row L is l beta itself, not its distance from k.
  MCEngineTest Test(const Eigen::MatrixXd& L, const Eigen::VectorXd& k) const;
  // Single-row tests of l beta = k for every row l of L at once, each the
  // same as Test of that row alone: the products with H, C and dC_k are
  // formed over all rows together.
  std::vector<MCEngineTest> TestRows(const Eigen::MatrixXd& L, const Eigen::VectorXd& k) const;
  // How many times the tests formed their products with C, whatever the
  // number of rows each time: tests of many single rows taken together count
  // once.
  long GetCovarianceProducts() const { return fCovarianceProducts; }
  // Multiplications spent on the derivatives of C since the estimates were
  // set: the fixed estimates' df and the tests' (a work count; each row
  // costs the nonzero entries of every A_k).
  double GetDerivativeWork() const { return fDerivativeWork; }
  // The degrees of freedom of fixed estimate j: the fixed ones when set, else
  // Satterthwaite's (missing when not available).
  double DFOfColumn(int j, double variance) const;

 private:
  // DF of each row l of a hypothesis at its variance, from the rows l with
  // the dC_k, or from the rows l C with the A_k (the one the estimates hold;
  // the other may be empty): one product per covariance parameter over all
  // rows.
  std::vector<double> DFs(const Eigen::MatrixXd& rows, const Eigen::MatrixXd& rowsTimesC,
                          const Eigen::VectorXd& variances) const;
  // Whether L and k are the last test's, L to kSameRows of its largest
  // entry.
  bool IsLastTest(const Eigen::MatrixXd& L, const Eigen::VectorXd& k) const;
  void ForgetLastTest();
  // The F test of several rows L, all estimable, into `test`.
  MCEngineTest TestOfRows(const Eigen::MatrixXd& L, const Eigen::VectorXd& k, MCEngineTest test) const;
  // Satterthwaite's df from g_k = l dC_k l'.
  double SatterthwaiteFromGradient(const Eigen::VectorXd& g, double variance) const;
  // Estimable when l less its projection l H is zero to 1e-4 of l's size.
  static bool IsEstimableGiven(const Eigen::RowVectorXd& l, const Eigen::RowVectorXd& lessProjection);

  // Entries of H within this share of its largest are rounding.
  static constexpr double kNegligible = 1e-12;
  // Hypothesis rows this close (relative to their largest entry) are the
  // same rows.
  static constexpr double kSameRows = 1e-13;

  Eigen::MatrixXd fXtX;
  std::vector<bool> fvAliased;
  Eigen::MatrixXd fH;
  // H again, for the products of the estimability checks: mostly zero when
  // the columns are a factor's.
  MCEngineMostlyZero fHermiteProducts;
  Eigen::MatrixXd fDoolittle;
  Eigen::VectorXd fBeta;
  Eigen::MatrixXd fC;
  std::vector<Eigen::MatrixXd> fvDC;
  std::vector<MCEngineMostlyZero> fvA;
  // c_j A_k c_j' for each column j of C (rows) and parameter k (columns).
  // Formed at the first df asked of a column.
  mutable Eigen::MatrixXd fColumnForms;
  Eigen::MatrixXd fAsyCov;
  double fFixedDF = MCEngineMissing::Value();
  mutable long fCovarianceProducts = 0;
  // The last test of several rows, its L, k and result: a test of the same
  // rows and values (the Type I and Type III tests of a model's one factor
  // without an intercept) takes that test's result rather than decomposing
  // L C L' again.
  mutable Eigen::MatrixXd fLastL;
  mutable Eigen::VectorXd fLastK;
  mutable MCEngineTest fLastTest;
  mutable double fDerivativeWork = 0.0;
};

}  // namespace MCEngine_850
