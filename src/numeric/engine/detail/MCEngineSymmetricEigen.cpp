#include "numeric/engine/detail/MCEngineSymmetricEigen.h"

#include <Eigen/Dense>
#include <atomic>
#include <vector>

#include "numeric/engine/detail/MCEngineMostlyZero.h"

extern "C" void dsyevr_(const char* jobz, const char* range, const char* uplo, const int* n, double* a,
                        const int* lda, const double* vl, const double* vu, const int* il, const int* iu,
                        const double* abstol, int* m, double* w, double* z, const int* ldz, int* isuppz,
                        double* work, const int* lwork, int* iwork, const int* liwork, int* info);

namespace MCEngine_850 {

namespace {

std::atomic<long> gDecompositions{0};

}  // namespace

void MCEngineSymmetricEigen::Decompose(const double* a, int n, double* values, double* vectors) {
  gDecompositions.fetch_add(1, std::memory_order_relaxed);
  if (n <= 0) return;
  if (MCEngineMostlyZero::PaysOver(n) && ByRepresentations(a, n, values, vectors)) return;
  const Eigen::SelfAdjointEigenSolver<Eigen::MatrixXd> es(Eigen::Map<const Eigen::MatrixXd>(a, n, n));
  Eigen::Map<Eigen::VectorXd>(values, n) = es.eigenvalues();
  Eigen::Map<Eigen::MatrixXd>(vectors, n, n) = es.eigenvectors();
}

long MCEngineSymmetricEigen::GetDecompositions() { return gDecompositions.load(std::memory_order_relaxed); }

bool MCEngineSymmetricEigen::ByRepresentations(const double* a, int n, double* values, double* vectors) {
  std::vector<double> lower(a, a + static_cast<std::size_t>(n) * static_cast<std::size_t>(n));
  std::vector<int> support(2 * static_cast<std::size_t>(n));
  const double bound = 0.0, tolerance = 0.0;
  const int first = 0, last = 0;
  int found = 0, info = 0;
  // The first call asks for the sizes of the work areas.
  int lwork = -1, liwork = -1, iworkSize = 0;
  double workSize = 0.0;
  dsyevr_("V", "A", "L", &n, lower.data(), &n, &bound, &bound, &first, &last, &tolerance, &found, values, vectors,
          &n, support.data(), &workSize, &lwork, &iworkSize, &liwork, &info);
  if (info != 0) return false;
  lwork = static_cast<int>(workSize);
  liwork = iworkSize;
  std::vector<double> work(static_cast<std::size_t>(lwork));
  std::vector<int> iwork(static_cast<std::size_t>(liwork));
  dsyevr_("V", "A", "L", &n, lower.data(), &n, &bound, &bound, &first, &last, &tolerance, &found, values, vectors,
          &n, support.data(), work.data(), &lwork, iwork.data(), &liwork, &info);
  return info == 0 && found == n;
}

}  // namespace MCEngine_850
