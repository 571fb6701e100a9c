#pragma once

namespace MCEngine_850 {

// The dense kernels that the sparse Cholesky factorisation calls by their
// Fortran names (dgemm, dsyrk, dtrsm, dgemv, dtrsv and dpotrf) are the
// program's own, on Eigen's blocked and vectorised products: the reference
// BLAS a plain Debian system provides runs them at about a third of that
// speed, and crossed random effects leave dense supernodes of thousands of
// columns whose factorisation is most of a fit. Defined in the executable,
// they take precedence over the shared library's for every caller.
class MCEngineBlas {
 public:
  // The number of kernel calls so far in this process: the sparse factor's
  // use of these kernels can be checked.
  static long GetCalls();
};

}  // namespace MCEngine_850
