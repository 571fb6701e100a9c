#include "numeric/engine/MCEngineTestSimulation.h"

#include <cmath>

#include "numeric/engine/MCEngineTestDraws.h"

using namespace MCEngine_850;

MCEngineTestSimulation::MCEngineTestSimulation(int nSubjects, unsigned seed) {
  MCEngineTestDraws g(seed);
  for (int s = 0; s < nSubjects; ++s) {
    const int group = s % 2;
    const double b0 = 2.0 * g.Normal(), b1 = 0.5 * g.Normal();
    double e = g.Normal();
    for (int pos = 0; pos < 4; ++pos) {
      e = 0.5 * e + g.Normal();
      if (s % 3 == 0 && pos == s % 4) continue;  // a missing visit
      const double x = pos + 0.3 * g.Uniform();
      fvY.push_back(10.0 + 2.0 * x + 1.5 * group + b0 + b1 * x + e + g.Normal() * 0.5 * pos);
      fvX.push_back(x);
      fvSubject.push_back(s);
      fvPosition.push_back(pos);
      fvGroup.push_back(group);
    }
  }
}

MCEngineInput MCEngineTestSimulation::BaseInput() const {
  MCEngineInput in;
  in.SetY(fvY);
  std::vector<double> X;
  for (std::size_t r = 0; r < fvY.size(); ++r) {
    X.insert(X.end(), {1.0, fvX[r], fvGroup[r] == 0 ? 1.0 : 0.0, fvGroup[r] == 1 ? 1.0 : 0.0});
  }
  in.SetX(4, X);
  in.AddTerm(MCEngineTerm::Intercept(0));
  in.AddTerm(MCEngineTerm(1, 1, {}, {0}));
  in.AddTerm(MCEngineTerm(2, 2, {1}, {}));
  return in;
}

MCEngineRandomBlock MCEngineTestSimulation::InterceptSlope(MCEngineCovType type) const {
  std::vector<double> Z;
  for (std::size_t r = 0; r < fvY.size(); ++r) Z.insert(Z.end(), {1.0, fvX[r]});
  MCEngineRandomBlock b;
  b.SetCovType(type);
  b.SetDenseColumns(2, Z);
  b.SetColumnEffects({0, 1});
  b.SetSubjects(fvSubject);
  return b;
}

MCEngineRandomBlock MCEngineTestSimulation::Positions(MCEngineCovType type) const {
  std::vector<double> Z(fvY.size() * 4, 0.0);
  for (std::size_t r = 0; r < fvY.size(); ++r) Z[r * 4 + static_cast<std::size_t>(fvPosition[r])] = 1.0;
  MCEngineRandomBlock b;
  b.SetCovType(type);
  b.SetDenseColumns(4, Z);
  b.SetSubjects(fvSubject);
  return b;
}

MCEngineRandomBlock MCEngineTestSimulation::Intercept() const {
  MCEngineRandomBlock b;
  b.SetCovType(MCEngineCovType::VC);
  b.SetDenseColumns(1, std::vector<double>(fvY.size(), 1.0));
  b.SetSubjects(fvSubject);
  return b;
}

MCEngineRandomBlock MCEngineTestSimulation::ByPosition() const {
  MCEngineRandomBlock b;
  b.SetCovType(MCEngineCovType::VC);
  b.SetDenseColumns(1, std::vector<double>(fvY.size(), 1.0));
  b.SetSubjects(fvPosition);
  return b;
}

MCEngineResidualBlock MCEngineTestSimulation::Residual(MCEngineCovType type) const {
  MCEngineResidualBlock r;
  r.SetCovType(type);
  r.SetSubjects(fvSubject);
  r.SetPositions(fvPosition);
  return r;
}
