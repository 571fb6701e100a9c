#pragma once

#include <vector>

namespace MCEngine_850 {

// The Gauss-Hermite rule of n points: the integral of exp(-x^2) g(x) over
// the line is sum_k w_k g(x_k), exact for polynomials g of degree below 2n.
// Nodes ascend; one point is x = 0 with weight sqrt(pi).
class MCEngineGaussHermite {
 public:
  explicit MCEngineGaussHermite(int n);

  int GetSize() const { return static_cast<int>(fvNodes.size()); }
  const std::vector<double>& GetNodes() const { return fvNodes; }
  const std::vector<double>& GetWeights() const { return fvWeights; }

 private:
  std::vector<double> fvNodes;
  std::vector<double> fvWeights;
};

}  // namespace MCEngine_850
