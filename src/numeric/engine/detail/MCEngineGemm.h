#pragma once

namespace MCEngine_850 {

// A cache-blocked double-precision matrix product, C += alpha op(A) op(B)
// on column-major blocks with leading dimensions, whose register kernel
// uses 256-bit fused multiply-adds. It is chosen at run time: on a
// processor without AVX2 and FMA, or for a product too small to repay the
// packing of its operands, AddProduct declines and the caller runs its
// portable code.
class MCEngineGemm {
 public:
  // C (m by n) += alpha op(A) op(B), op(A) m by k and op(B) k by n, each
  // transposed when its flag is set. False, and C untouched, where the
  // product is left to the caller.
  static bool AddProduct(bool transA, bool transB, int m, int n, int k, double alpha, const double* a, int lda,
                         const double* b, int ldb, double* c, int ldc);
  // Whether AddProduct would take a product of these dimensions.
  static bool Takes(int m, int n, int k);
  // Tests force the portable path to compare the two.
  static void SetPortable(bool portable);
};

}  // namespace MCEngine_850
