#include "numeric/engine/detail/MCEngineMostlyZero.h"

#include "numeric/engine/detail/MCEngineProduct.h"

#include <cmath>

namespace MCEngine_850 {

template <typename At>
void MCEngineMostlyZero::Hold(const Eigen::MatrixXd& a, double negligible, Eigen::Index rows, Eigen::Index cols,
                              const At& at) {
  fRows = rows;
  fCols = cols;
  const Eigen::Index held = (a.array().abs() > negligible).count();
  fbSparse = static_cast<double>(held) < kSparseShare * static_cast<double>(rows) * static_cast<double>(cols);
  if (!fbSparse) {
    fDense = Eigen::MatrixXd::Zero(rows, cols);
    for (Eigen::Index j = 0; j < a.cols(); ++j) {
      for (Eigen::Index i = 0; i < a.rows(); ++i) {
        if (std::fabs(a(i, j)) > negligible) fDense(at(i), at(j)) = a(i, j);
      }
    }
    return;
  }
  std::vector<Eigen::Triplet<double>> entries;
  entries.reserve(static_cast<std::size_t>(held));
  for (Eigen::Index j = 0; j < a.cols(); ++j) {
    for (Eigen::Index i = 0; i < a.rows(); ++i) {
      if (std::fabs(a(i, j)) > negligible) entries.emplace_back(at(i), at(j), a(i, j));
    }
  }
  fSparse.resize(rows, cols);
  fSparse.setFromTriplets(entries.begin(), entries.end());
}

MCEngineMostlyZero::MCEngineMostlyZero(const Eigen::MatrixXd& a, double negligible) {
  Hold(a, negligible, a.rows(), a.cols(), [](Eigen::Index i) { return i; });
}

MCEngineMostlyZero::MCEngineMostlyZero(const Eigen::MatrixXd& a, const std::vector<int>& place, Eigen::Index n) {
  Hold(a, 0.0, n, n, [&place](Eigen::Index i) { return static_cast<Eigen::Index>(place[static_cast<std::size_t>(i)]); });
}

// Column by column of A: each of R's columns a held entry reaches is read
// whole, where a product taken as (A'R')' walks R across its rows.
Eigen::MatrixXd MCEngineMostlyZero::LeftProduct(const Eigen::MatrixXd& R) const {
  if (!fbSparse) return MCEngineProduct::Of(R, fDense);
  Eigen::MatrixXd out = Eigen::MatrixXd::Zero(R.rows(), fCols);
  for (Eigen::Index j = 0; j < fSparse.outerSize(); ++j) {
    for (Eigen::SparseMatrix<double>::InnerIterator it(fSparse, j); it; ++it) {
      out.col(j).noalias() += it.value() * R.col(it.row());
    }
  }
  return out;
}

Eigen::MatrixXd MCEngineMostlyZero::RightProduct(const Eigen::MatrixXd& R) const {
  if (fbSparse) return fSparse * R;
  return MCEngineProduct::Of(fDense, R);
}

Eigen::VectorXd MCEngineMostlyZero::RowForms(const Eigen::MatrixXd& R) const {
  if (!fbSparse) return LeftProduct(R).cwiseProduct(R).rowwise().sum();
  Eigen::VectorXd out = Eigen::VectorXd::Zero(R.rows());
  for (Eigen::Index j = 0; j < fSparse.outerSize(); ++j) {
    for (Eigen::SparseMatrix<double>::InnerIterator it(fSparse, j); it; ++it) {
      out.noalias() += it.value() * R.col(it.row()).cwiseProduct(R.col(j));
    }
  }
  return out;
}

double MCEngineMostlyZero::GetRowWork() const {
  return fbSparse ? static_cast<double>(fSparse.nonZeros()) : static_cast<double>(fRows) * static_cast<double>(fCols);
}

}  // namespace MCEngine_850
