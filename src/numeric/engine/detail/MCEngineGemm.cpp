#include "numeric/engine/detail/MCEngineGemm.h"

#include <immintrin.h>

#include <cstdlib>

// This file holds no template and includes no container or Eigen header:
// a template instantiated inside a function compiled for AVX2 could be
// the copy the linker keeps for callers on a processor without it. The
// kernel is plain loops on raw pointers.

namespace MCEngine_850 {

namespace {

// The register tile (rows of A by columns of B) and the cache blocks: a
// packed kMc x kKc panel of A stays in L2, a kKc x kNr sliver of B in L1.
constexpr int kMr = 8;
constexpr int kNr = 6;
constexpr int kMc = 96;
constexpr int kKc = 256;
constexpr int kNc = 1536;

// Products below this many multiply-adds stay on the portable code, which
// does not pack its operands.
constexpr double kMinimumWork = 24.0 * 24.0 * 24.0;

bool gPortable = false;

bool ProcessorHasKernel() {
  static const bool has = __builtin_cpu_supports("avx2") && __builtin_cpu_supports("fma");
  return has;
}

double ElementOfA(bool trans, const double* a, long lda, long i, long p) {
  return trans ? a[i * lda + p] : a[p * lda + i];
}

double ElementOfB(bool trans, const double* b, long ldb, long p, long j) {
  return trans ? b[p * ldb + j] : b[j * ldb + p];
}

// op(A)(i0.., p0..) as strips of kMr rows, each stored k-major, the last
// strip padded with zeros.
void PackA(bool trans, const double* a, long lda, int i0, int mc, int p0, int kc, double* out) {
  for (int i = 0; i < mc; i += kMr) {
    const int rows = mc - i < kMr ? mc - i : kMr;
    for (int p = 0; p < kc; ++p) {
      for (int r = 0; r < kMr; ++r) *out++ = r < rows ? ElementOfA(trans, a, lda, i0 + i + r, p0 + p) : 0.0;
    }
  }
}

// op(B)(p0.., j0..) as slivers of kNr columns, each stored k-major, the
// last sliver padded with zeros.
void PackB(bool trans, const double* b, long ldb, int p0, int kc, int j0, int nc, double* out) {
  for (int j = 0; j < nc; j += kNr) {
    const int cols = nc - j < kNr ? nc - j : kNr;
    for (int p = 0; p < kc; ++p) {
      for (int s = 0; s < kNr; ++s) *out++ = s < cols ? ElementOfB(trans, b, ldb, p0 + p, j0 + j + s) : 0.0;
    }
  }
}

// C (rows x cols, at most kMr x kNr) += alpha times the product of a
// packed strip and a packed sliver of depth kc.
__attribute__((target("avx2,fma"))) void Kernel(int kc, const double* pa, const double* pb, double alpha, double* c,
                                                  long ldc, int rows, int cols) {
  __m256d c00 = _mm256_setzero_pd(), c01 = c00, c02 = c00, c03 = c00, c04 = c00, c05 = c00;
  __m256d c10 = c00, c11 = c00, c12 = c00, c13 = c00, c14 = c00, c15 = c00;
  for (int p = 0; p < kc; ++p) {
    const __m256d a0 = _mm256_load_pd(pa);
    const __m256d a1 = _mm256_load_pd(pa + 4);
    __m256d b = _mm256_broadcast_sd(pb);
    c00 = _mm256_fmadd_pd(a0, b, c00);
    c10 = _mm256_fmadd_pd(a1, b, c10);
    b = _mm256_broadcast_sd(pb + 1);
    c01 = _mm256_fmadd_pd(a0, b, c01);
    c11 = _mm256_fmadd_pd(a1, b, c11);
    b = _mm256_broadcast_sd(pb + 2);
    c02 = _mm256_fmadd_pd(a0, b, c02);
    c12 = _mm256_fmadd_pd(a1, b, c12);
    b = _mm256_broadcast_sd(pb + 3);
    c03 = _mm256_fmadd_pd(a0, b, c03);
    c13 = _mm256_fmadd_pd(a1, b, c13);
    b = _mm256_broadcast_sd(pb + 4);
    c04 = _mm256_fmadd_pd(a0, b, c04);
    c14 = _mm256_fmadd_pd(a1, b, c14);
    b = _mm256_broadcast_sd(pb + 5);
    c05 = _mm256_fmadd_pd(a0, b, c05);
    c15 = _mm256_fmadd_pd(a1, b, c15);
    pa += kMr;
    pb += kNr;
  }
  const __m256d scale = _mm256_set1_pd(alpha);
  const __m256d top[kNr] = {c00, c01, c02, c03, c04, c05};
  const __m256d bottom[kNr] = {c10, c11, c12, c13, c14, c15};
  if (rows == kMr && cols == kNr) {
    for (int j = 0; j < kNr; ++j) {
      double* cj = c + j * ldc;
      _mm256_storeu_pd(cj, _mm256_fmadd_pd(scale, top[j], _mm256_loadu_pd(cj)));
      _mm256_storeu_pd(cj + 4, _mm256_fmadd_pd(scale, bottom[j], _mm256_loadu_pd(cj + 4)));
    }
    return;
  }
  alignas(32) double tile[kMr * kNr];
  for (int j = 0; j < kNr; ++j) {
    _mm256_store_pd(tile + j * kMr, top[j]);
    _mm256_store_pd(tile + j * kMr + 4, bottom[j]);
  }
  for (int j = 0; j < cols; ++j) {
    for (int i = 0; i < rows; ++i) c[j * ldc + i] += alpha * tile[j * kMr + i];
  }
}

// Every tile of a packed kMc x kKc block of A times a packed kKc x kNc
// block of B.
void MultiplyPackedBlocks(int mc, int nc, int kc, const double* pa, const double* pb, double alpha, double* c,
                          long ldc) {
  for (int j = 0; j < nc; j += kNr) {
    const int cols = nc - j < kNr ? nc - j : kNr;
    for (int i = 0; i < mc; i += kMr) {
      const int rows = mc - i < kMr ? mc - i : kMr;
      Kernel(kc, pa + static_cast<long>(i) * kc, pb + static_cast<long>(j) * kc, alpha, c + j * ldc + i, ldc, rows,
             cols);
    }
  }
}

double* AllocatePanel(long elements) {
  const long bytes = ((elements * static_cast<long>(sizeof(double)) + 63) / 64) * 64;
  return static_cast<double*>(std::aligned_alloc(64, static_cast<std::size_t>(bytes)));
}

}  // namespace

bool MCEngineGemm::Takes(int m, int n, int k) {
  if (gPortable || !ProcessorHasKernel()) return false;
  if (m < kMr || n < kNr || k < 4) return false;
  return static_cast<double>(m) * n * k >= kMinimumWork;
}

bool MCEngineGemm::AddProduct(bool transA, bool transB, int m, int n, int k, double alpha, const double* a, int lda,
                              const double* b, int ldb, double* c, int ldc) {
  if (!Takes(m, n, k)) return false;
  if (alpha == 0.0) return true;
  const long depth = k < kKc ? k : kKc;
  double* packedA = AllocatePanel(static_cast<long>((m < kMc ? m : kMc) + kMr) * depth);
  double* packedB = AllocatePanel(static_cast<long>((n < kNc ? n : kNc) + kNr) * depth);
  if (packedA == nullptr || packedB == nullptr) {
    std::free(packedA);
    std::free(packedB);
    return false;
  }
  for (int j0 = 0; j0 < n; j0 += kNc) {
    const int nc = n - j0 < kNc ? n - j0 : kNc;
    for (int p0 = 0; p0 < k; p0 += kKc) {
      const int kc = k - p0 < kKc ? k - p0 : kKc;
      PackB(transB, b, ldb, p0, kc, j0, nc, packedB);
      for (int i0 = 0; i0 < m; i0 += kMc) {
        const int mc = m - i0 < kMc ? m - i0 : kMc;
        PackA(transA, a, lda, i0, mc, p0, kc, packedA);
        MultiplyPackedBlocks(mc, nc, kc, packedA, packedB, alpha, c + static_cast<long>(j0) * ldc + i0, ldc);
      }
    }
  }
  std::free(packedA);
  std::free(packedB);
  return true;
}

void MCEngineGemm::SetPortable(bool portable) { gPortable = portable; }

}  // namespace MCEngine_850
