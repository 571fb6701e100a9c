#include "numeric/engine/detail/MCEngineRelativeIndex.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(long i) { return static_cast<std::size_t>(i); }

}  // namespace

bool MCEngineRelativeIndex::Build(int nsuper, const int* super, const int* pi, const int* px, const int* s,
                                  long maxKept) {
  const std::size_t ns1 = U(nsuper) + 1;
  fvSuper.assign(super, super + ns1);
  fvPi.assign(pi, pi + ns1);
  fvPx.assign(px, px + ns1);
  fvS.assign(s, s + fvPi.back());
  fvColumnSuper.assign(U(fvSuper.back()), 0);
  for (int k = 0; k < nsuper; ++k) {
    for (int j = super[k]; j < super[k + 1]; ++j) fvColumnSuper[U(j)] = k;
  }
  fvBelowCount.assign(U(nsuper), 0);
  fvRun0.assign(ns1, 0);
  fvRuns.clear();
  long total = 0;
  for (int k = 0; k < nsuper; ++k) {
    fvRun0[U(k)] = static_cast<long>(fvRuns.size());
    if (!FindRuns(k)) return false;
    for (std::size_t r = U(fvRun0[U(k)]); r < fvRuns.size(); ++r) {
      fvRuns[r].fRelative0 = total;
      total += fvBelowCount[U(k)] - fvRuns[r].fB0;
    }
  }
  fvRun0[U(nsuper)] = static_cast<long>(fvRuns.size());
  fbKept = total <= maxKept;
  fvRelative.assign(fbKept ? U(total) : 0, 0);
  fvScratch.clear();
  for (int k = 0; k < nsuper; ++k) {
    for (long r = fvRun0[U(k)]; r < fvRun0[U(k) + 1]; ++r) {
      const Run& run = fvRuns[U(r)];
      fvScratch.resize(U(fvBelowCount[U(k)] - run.fB0));
      int* out = fbKept ? &fvRelative[U(run.fRelative0)] : fvScratch.data();
      if (!Merge(k, run, out)) return false;
    }
  }
  return true;
}

bool MCEngineRelativeIndex::FindRuns(int k) {
  const int nj = fvSuper[U(k) + 1] - fvSuper[U(k)];
  const int ns = fvPi[U(k) + 1] - fvPi[U(k)] - nj;
  if (ns < 0) return false;
  fvBelowCount[U(k)] = ns;
  const int* below = Below(k);
  for (int b = 0; b < ns;) {
    if (below[b] < fvSuper[U(k) + 1] || below[b] >= fvSuper.back()) return false;
    Run run;
    run.fAncestor = fvColumnSuper[U(below[b])];
    run.fB0 = b;
    while (b < ns && below[b] < fvSuper[U(run.fAncestor) + 1]) ++b;
    run.fB1 = b;
    fvRuns.push_back(run);
  }
  return true;
}

bool MCEngineRelativeIndex::Merge(int k, const Run& run, int* out) const {
  const int a = run.fAncestor;
  const int* list = &fvS[U(fvPi[U(a)])];
  const int length = fvPi[U(a) + 1] - fvPi[U(a)];
  const int* below = Below(k);
  int i = below[run.fB0] - fvSuper[U(a)];
  for (int t = run.fB0; t < fvBelowCount[U(k)]; ++t) {
    while (i < length && list[i] < below[t]) ++i;
    if (i == length || list[i] != below[t]) return false;
    out[t - run.fB0] = i;
  }
  return true;
}

const int* MCEngineRelativeIndex::Relative(int k, const Run& run) const {
  if (fbKept) return &fvRelative[U(run.fRelative0)];
  fvScratch.resize(U(fvBelowCount[U(k)] - run.fB0));
  Merge(k, run, fvScratch.data());
  return fvScratch.data();
}

const int* MCEngineRelativeIndex::Below(int k) const {
  return fvS.data() + fvPi[U(k)] + (fvSuper[U(k) + 1] - fvSuper[U(k)]);
}

long MCEngineRelativeIndex::Position(int k, int b, int t) const {
  long r = fvRun0[U(k)];
  while (fvRuns[U(r)].fB1 <= b) ++r;
  const Run& run = fvRuns[U(r)];
  const int a = run.fAncestor;
  const long nrow = fvPi[U(a) + 1] - fvPi[U(a)];
  return fvPx[U(a)] + (Below(k)[b] - fvSuper[U(a)]) * nrow + Relative(k, run)[t - run.fB0];
}

void MCEngineRelativeIndex::Gather(int k, const double* values, double* zss) const {
  const int ns = fvBelowCount[U(k)];
  const int* below = Below(k);
  for (long r = fvRun0[U(k)]; r < fvRun0[U(k) + 1]; ++r) {
    const Run& run = fvRuns[U(r)];
    const int a = run.fAncestor;
    const long nrow = fvPi[U(a) + 1] - fvPi[U(a)];
    const int* relative = Relative(k, run);
    for (int b = run.fB0; b < run.fB1; ++b) {
      const double* column = values + fvPx[U(a)] + (below[b] - fvSuper[U(a)]) * nrow;
      double* out = zss + static_cast<long>(b) * ns;
      for (int t = b; t < ns; ++t) out[t] = column[relative[t - run.fB0]];
    }
  }
}

}  // namespace MCEngine_850
