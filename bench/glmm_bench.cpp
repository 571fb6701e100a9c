// Generalized linear mixed model fits through the engine: simulated binary
// records of growing size with a random intercept per subject, fitted by
// residual pseudo-likelihood and by the Laplace approximation. Prints the
// processor time of each fit, -2 log likelihood and the estimates.
//
//   glmix_glmm_bench [--sizes 10000,100000] [--dir DIR]
//
// The data have 10 records per subject, x uniform on (0, 1) and
// logit P(y = 1) = -0.5 + 1.0 x + b, b ~ N(0, 1), a fixed seed; each size is
// written as DIR/glmm_<records>.csv (columns subject, x, y) so that
// bench/glmm_bench.R fits the very same files with lme4::glmer.

#include <ctime>
#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>
#include <string>
#include <vector>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineSettings.h"
#include "numeric/engine/MCEngineTerm.h"

namespace {

using namespace MCEngine_850;

struct Data {
  std::vector<int> subject;
  std::vector<double> x;
  std::vector<double> y;
};

Data Simulate(int records) {
  std::mt19937_64 random(20261126);
  std::normal_distribution<double> normal(0.0, 1.0);
  std::uniform_real_distribution<double> uniform(0.0, 1.0);
  Data d;
  double b = 0.0;
  for (int r = 0; r < records; ++r) {
    if (r % 10 == 0) b = normal(random);
    const double x = uniform(random);
    const double p = 1.0 / (1.0 + std::exp(-(-0.5 + x + b)));
    d.subject.push_back(r / 10);
    d.x.push_back(x);
    d.y.push_back(uniform(random) < p ? 1.0 : 0.0);
  }
  return d;
}

void Write(const Data& d, const std::string& path) {
  std::ofstream out(path);
  out << "subject,x,y\n";
  out.precision(17);
  for (std::size_t r = 0; r < d.y.size(); ++r) out << d.subject[r] << ',' << d.x[r] << ',' << d.y[r] << '\n';
}

MCEngineInput Input(const Data& d) {
  const int n = static_cast<int>(d.y.size());
  MCEngineInput input;
  input.SetY(d.y);
  std::vector<double> X;
  for (int r = 0; r < n; ++r) {
    X.push_back(1.0);
    X.push_back(d.x[static_cast<std::size_t>(r)]);
  }
  input.SetX(2, X);
  MCEngineTerm intercept(0, 1, {}, {});
  intercept.SetIntercept(true);
  input.SetTerms({intercept, MCEngineTerm(1, 1, {}, {0})});
  MCEngineRandomBlock block;
  block.SetCovType(MCEngineCovType::VC);
  block.SetDenseColumns(1, std::vector<double>(static_cast<std::size_t>(n), 1.0));
  block.SetSubjects(d.subject);
  input.SetRandomBlocks({block});
  return input;
}

void Fit(const MCEngineInput& input, GLMMConst_850::GeneralizedFitMethod method, const char* name) {
  MCEngineSettings settings;
  MCEngineTarget target;
  target.SetDistribution(GLMMConst_850::DIST_BINOMIAL);
  target.SetLink(GLMMConst_850::LINK_LOGIT);
  target.SetFitMethod(method);
  settings.SetTarget(target);
  MCEngineFitter fitter;
  const std::clock_t start = std::clock();
  const MCEngineStatus status = fitter.Fit(input, settings);
  const double seconds = static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC;
  const MCEngineResult& result = fitter.GetResult();
  std::printf("%-10s records %7d  cpu %8.3f s  status %ld  -2LL %.4f", name, input.GetNRecords(), seconds,
              status.GetCode(), result.GetMinus2LogLik());
  for (const MCEngineBetaStat& b : result.GetBeta()) std::printf("  b %.5f", b.GetEstimate());
  for (const MCEngineCovParam& c : result.GetCovParams()) std::printf("  var %.5f", c.GetEstimate());
  std::printf("\n");
}

}  // namespace

int main(int argc, char** argv) {
  std::vector<int> sizes{10000, 100000};
  std::string dir = (std::filesystem::temp_directory_path() / "glmix_glmm_bench").string();
  for (int i = 1; i + 1 < argc; i += 2) {
    if (std::strcmp(argv[i], "--sizes") == 0) {
      sizes.clear();
      std::stringstream list(argv[i + 1]);
      std::string item;
      while (std::getline(list, item, ',')) sizes.push_back(std::atoi(item.c_str()));
    } else if (std::strcmp(argv[i], "--dir") == 0) {
      dir = argv[i + 1];
    }
  }
  std::filesystem::create_directories(dir);
  for (int records : sizes) {
    const Data d = Simulate(records);
    Write(d, dir + "/glmm_" + std::to_string(records) + ".csv");
    const MCEngineInput input = Input(d);
    Fit(input, GLMMConst_850::FIT_PSEUDO_LIKELIHOOD, "PL (REML)");
    Fit(input, GLMMConst_850::FIT_LAPLACE, "Laplace");
  }
  return 0;
}
