#pragma once

#include <Eigen/Dense>
#include <Eigen/SparseCore>
#include <vector>

namespace MCEngine_850 {

// A matrix held as its nonzero entries when they are few, densely otherwise,
// so that its products with dense matrices cost what it holds. The
// derivative products X'V^-1 V_k V^-1 X of a fixed factor of many levels join
// only the levels that share a group of records (a thousand levels in groups
// of thirty leave some nine entries in a hundred nonzero), and a factor's
// hypothesis rows hold a few entries each.
class MCEngineMostlyZero {
 public:
  // Whether products over this many columns are worth taking through their
  // entries: over fewer, dense products cost little, and keeping them keeps
  // the rounding of small models' results as it was.
  static bool PaysOver(Eigen::Index columns) { return columns > kManyColumns; }

  MCEngineMostlyZero() = default;
  // The matrix `a`, its entries of at most `negligible` in size taken as
  // zero.
  explicit MCEngineMostlyZero(const Eigen::MatrixXd& a, double negligible = 0.0);
  // The square matrix `a` placed at rows and columns place[i] of an n x n
  // matrix that is zero elsewhere.
  MCEngineMostlyZero(const Eigen::MatrixXd& a, const std::vector<int>& place, Eigen::Index n);

  Eigen::Index GetRows() const { return fRows; }
  Eigen::Index GetCols() const { return fCols; }
  bool IsSparse() const { return fbSparse; }
  // R A.
  Eigen::MatrixXd LeftProduct(const Eigen::MatrixXd& R) const;
  // A R.
  Eigen::MatrixXd RightProduct(const Eigen::MatrixXd& R) const;
  // r A r' for each row r of R (A square).
  Eigen::VectorXd RowForms(const Eigen::MatrixXd& R) const;
  // Multiplications a product with one row or column takes: the nonzero
  // entries, or all entries when the matrix is held densely.
  double GetRowWork() const;

 private:
  // Held densely from this share of nonzero entries on: past it a sparse
  // product is no faster than a dense one.
  static constexpr double kSparseShare = 0.25;
  static constexpr Eigen::Index kManyColumns = 200;

  // Holds the entries of `a` of more than `negligible` in size, at rows
  // rowAt(i) and columns colAt(j) of a rows x cols matrix.
  template <typename At>
  void Hold(const Eigen::MatrixXd& a, double negligible, Eigen::Index rows, Eigen::Index cols, const At& at);

  Eigen::Index fRows = 0;
  Eigen::Index fCols = 0;
  bool fbSparse = false;
  Eigen::MatrixXd fDense;
  Eigen::SparseMatrix<double> fSparse;
};

}  // namespace MCEngine_850
