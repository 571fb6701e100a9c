#include "numeric/engine/MCEngineTestCrossed.h"

#include "numeric/engine/MCEngineTestDraws.h"

using namespace MCEngine_850;

namespace MCEngineTestCrossed {

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

}  // namespace

MCEngineRandomBlock InterceptBy(const std::vector<int>& subjects) {
  MCEngineRandomBlock b;
  b.SetCovType(MCEngineCovType::VC);
  b.SetDenseColumns(1, std::vector<double>(subjects.size(), 1.0));
  b.SetSubjects(subjects);
  return b;
}

MCEngineInput Crossed(int n, int levelsA, int levelsB, double sdB, unsigned seed) {
  MCEngineTestDraws d(seed);
  std::vector<double> a(U(levelsA)), b(U(levelsB));
  for (double& v : a) v = 1.5 * d.Normal();
  for (double& v : b) v = sdB * d.Normal();
  std::vector<int> sa, sb;
  std::vector<double> y, X;
  for (int r = 0; r < n; ++r) {
    const int i = r < levelsA ? r : static_cast<int>(d.Uniform() * levelsA);
    const int j = r < levelsB ? r : static_cast<int>(d.Uniform() * levelsB);
    const double x = d.Normal();
    sa.push_back(i);
    sb.push_back(j);
    X.insert(X.end(), {1.0, x});
    y.push_back(10.0 + x + a[U(i)] + b[U(j)] + d.Normal());
  }
  MCEngineInput input;
  input.SetY(y);
  input.SetX(2, X);
  input.AddRandomBlock(InterceptBy(sa));
  input.AddRandomBlock(InterceptBy(sb));
  return input;
}

}  // namespace MCEngineTestCrossed
