#include "numeric/engine/MCEngineEmmeans.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numeric>

#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEngineInput.h"
#include "numeric/engine/MCEngineProbability.h"
#include "numeric/engine/detail/MCEngineDataBuilder.h"
#include "numeric/engine/detail/MCEngineLink.h"

namespace MCEngine_850 {

namespace {

inline std::size_t U(int i) { return static_cast<std::size_t>(i); }

using Row = std::vector<double>;

const double kNaN = std::numeric_limits<double>::quiet_NaN();

bool Present(double v) { return !MCEngineMissing::Is(v) && std::isfinite(v); }

bool Finite(const Row& row) {
  for (double v : row) {
    if (!std::isfinite(v)) return false;
  }
  return true;
}

// Rows tested together at most, which bounds the matrices of a test of many
// rows.
constexpr std::size_t kRowsTestedTogether = 512;

// The single-row test of each row with finite coefficients, formed together
// in chunks; a row with a coefficient that is not finite keeps an invalid
// test.
std::vector<MCEngineTest> TestFiniteRows(const MCEngineFitter& fitter, const std::vector<Row>& rows) {
  std::vector<MCEngineTest> tests(rows.size());
  std::vector<std::size_t> at;
  std::vector<Row> finite;
  auto testChunk = [&]() {
    const std::vector<MCEngineTest> tested = fitter.TestContrastRows(finite);
    for (std::size_t f = 0; f < at.size(); ++f) tests[at[f]] = tested[f];
    at.clear();
    finite.clear();
  };
  for (std::size_t i = 0; i < rows.size(); ++i) {
    if (!Finite(rows[i])) continue;
    at.push_back(i);
    finite.push_back(rows[i]);
    if (finite.size() == kRowsTestedTogether) testChunk();
  }
  if (!finite.empty()) testChunk();
  return tests;
}

// The mean on the data's scale: the inverse link of the estimate, its
// standard error by the delta method, |d mu / d eta| times that of the
// estimate, and the inverse link of the bounds, in increasing order since a
// link may decrease.
void SetDataScale(const MCEngineLink& link, MCEngineMeansCell& cell) {
  const double eta = cell.GetEstimate();
  const double mu = link.Mu(eta);
  if (!Present(mu)) return;
  cell.SetDataEstimate(mu);
  const double se = std::fabs(link.DMuDEta(eta)) * cell.GetStdError();
  if (Present(cell.GetStdError()) && Present(se)) cell.SetDataStdError(se);
  if (Present(cell.GetLower()) && Present(cell.GetUpper())) {
    const double a = link.Mu(cell.GetLower());
    const double b = link.Mu(cell.GetUpper());
    if (!Present(a) || !Present(b)) return;
    cell.SetDataLower(std::min(a, b));
    cell.SetDataUpper(std::max(a, b));
  }
}

// The levels of combination `index`, the first factor varying slowest.
std::vector<int> Decode(long index, const std::vector<int>& sizes) {
  std::vector<int> levels(sizes.size(), 0);
  for (int i = static_cast<int>(sizes.size()) - 1; i >= 0; --i) {
    levels[U(i)] = static_cast<int>(index % sizes[U(i)]);
    index /= sizes[U(i)];
  }
  return levels;
}

long Encode(const std::vector<int>& levels, const std::vector<int>& sizes) {
  long index = 0;
  for (std::size_t i = 0; i < sizes.size(); ++i) index = index * sizes[i] + levels[i];
  return index;
}

// One row of a contrast among the k levels of the compare factor.
struct ContrastRow {
  int fLevel;
  int fReference;
  Row fCoefficients;
};

// Orthonormal polynomial contrasts of degree 1 to k - 1 over x.
std::vector<ContrastRow> PolynomialRows(std::vector<double> x) {
  const int k = static_cast<int>(x.size());
  const double mean = std::accumulate(x.begin(), x.end(), 0.0) / k;
  double spread = 0.0;
  for (double& v : x) {
    v -= mean;
    spread = std::max(spread, std::fabs(v));
  }
  for (double& v : x) v /= spread;
  std::vector<Row> basis;
  basis.emplace_back(U(k), 1.0 / std::sqrt(static_cast<double>(k)));
  std::vector<ContrastRow> rows;
  for (int d = 1; d < k; ++d) {
    Row v(U(k));
    for (int i = 0; i < k; ++i) v[U(i)] = std::pow(x[U(i)], d);
    // Twice, for orthogonality to rounding error.
    for (int pass = 0; pass < 2; ++pass) {
      for (const Row& q : basis) {
        double dot = 0.0;
        for (int i = 0; i < k; ++i) dot += v[U(i)] * q[U(i)];
        for (int i = 0; i < k; ++i) v[U(i)] -= dot * q[U(i)];
      }
    }
    double norm = 0.0;
    for (double c : v) norm += c * c;
    norm = std::sqrt(norm);
    if (!(norm > 1e-10)) break;
    for (double& c : v) c /= norm;
    basis.push_back(v);
    rows.push_back({-1, -1, v});
  }
  return rows;
}

std::vector<ContrastRow> ContrastRows(MCEngineMeansRequest::Contrast type, int k, int reference,
                                      const std::vector<double>& metric) {
  std::vector<ContrastRow> rows;
  auto unit = [k](int i) {
    Row r(U(k), 0.0);
    r[U(i)] = 1.0;
    return r;
  };
  switch (type) {
    case MCEngineMeansRequest::kPairwise:
      for (int i = 0; i < k; ++i) {
        for (int j = i + 1; j < k; ++j) {
          Row r = unit(i);
          r[U(j)] = -1.0;
          rows.push_back({i, j, r});
        }
      }
      break;
    case MCEngineMeansRequest::kSimple:
      for (int i = 0; i < k; ++i) {
        if (i == reference) continue;
        Row r = unit(i);
        r[U(reference)] = -1.0;
        rows.push_back({i, reference, r});
      }
      break;
    case MCEngineMeansRequest::kDeviation:
      for (int i = 0; i < k; ++i) {
        Row r(U(k), -1.0 / k);
        r[U(i)] += 1.0;
        rows.push_back({i, -1, r});
      }
      break;
    case MCEngineMeansRequest::kDifference:
      for (int i = 1; i < k; ++i) {
        Row r = unit(i);
        for (int j = 0; j < i; ++j) r[U(j)] = -1.0 / i;
        rows.push_back({i, -1, r});
      }
      break;
    case MCEngineMeansRequest::kHelmert:
      for (int i = 0; i + 1 < k; ++i) {
        Row r = unit(i);
        for (int j = i + 1; j < k; ++j) r[U(j)] = -1.0 / (k - 1 - i);
        rows.push_back({i, -1, r});
      }
      break;
    case MCEngineMeansRequest::kRepeated:
      for (int i = 0; i + 1 < k; ++i) {
        Row r = unit(i);
        r[U(i) + 1] = -1.0;
        rows.push_back({i, i + 1, r});
      }
      break;
    case MCEngineMeansRequest::kPolynomial: {
      std::vector<double> x(U(k));
      bool useMetric = static_cast<int>(metric.size()) == k;
      for (int i = 0; useMetric && i < k; ++i) {
        useMetric = std::isfinite(metric[U(i)]);
        for (int j = 0; useMetric && j < i; ++j) useMetric = metric[U(j)] != metric[U(i)];
      }
      for (int i = 0; i < k; ++i) x[U(i)] = useMetric ? metric[U(i)] : i;
      rows = PolynomialRows(x);
      break;
    }
    case MCEngineMeansRequest::kNone:
      break;
  }
  return rows;
}

// p adjusted for a family of m tests, and the two-sided probability of the
// t quantile of the family's confidence intervals.
void AdjustFamily(const std::vector<MCEngineMeansContrast*>& family, MCEngineMeansRequest::Adjustment method,
                  double alpha) {
  std::vector<MCEngineMeansContrast*> tested;
  for (MCEngineMeansContrast* c : family) {
    if (Present(c->GetSig())) tested.push_back(c);
  }
  const int m = static_cast<int>(tested.size());
  if (m == 0) return;
  std::vector<int> order(U(m));
  std::iota(order.begin(), order.end(), 0);
  std::stable_sort(order.begin(), order.end(),
                   [&](int a, int b) { return tested[U(a)]->GetSig() < tested[U(b)]->GetSig(); });
  // 1 - (1 - p)^n without the loss of digits near p = 0.
  auto sidak = [](double p, double n) { return p >= 1.0 ? 1.0 : -std::expm1(n * std::log1p(-p)); };
  double running = 0.0;
  for (int j = 0; j < m; ++j) {
    MCEngineMeansContrast* c = tested[U(order[U(j)])];
    const double p = c->GetSig();
    double adjusted = p;
    switch (method) {
      case MCEngineMeansRequest::kNoAdjustment:
        adjusted = p;
        break;
      case MCEngineMeansRequest::kBonferroni:
        adjusted = std::min(1.0, m * p);
        break;
      case MCEngineMeansRequest::kSidak:
        adjusted = sidak(p, m);
        break;
      case MCEngineMeansRequest::kSequentialBonferroni:
        running = std::max(running, std::min(1.0, (m - j) * p));
        adjusted = running;
        break;
      case MCEngineMeansRequest::kSequentialSidak:
        running = std::max(running, sidak(p, m - j));
        adjusted = running;
        break;
    }
    c->SetAdjustedSig(std::min(1.0, adjusted));
  }
  double coverage = 1.0 - alpha / 2.0;
  switch (method) {
    case MCEngineMeansRequest::kNoAdjustment:
      break;
    case MCEngineMeansRequest::kBonferroni:
    case MCEngineMeansRequest::kSequentialBonferroni:
      coverage = 1.0 - alpha / (2.0 * m);
      break;
    case MCEngineMeansRequest::kSidak:
    case MCEngineMeansRequest::kSequentialSidak:
      coverage = 0.5 * (1.0 + std::pow(1.0 - alpha, 1.0 / m));
      break;
  }
  for (MCEngineMeansContrast* c : family) {
    if (!Present(c->GetStdError()) || !Present(c->GetDF()) || !(c->GetDF() > 0.0)) continue;
    const double q = MCEngineProbability::TQuantile(coverage, c->GetDF());
    if (!std::isfinite(q)) continue;
    c->SetLower(c->GetEstimate() - q * c->GetStdError());
    c->SetUpper(c->GetEstimate() + q * c->GetStdError());
  }
}

}  // namespace

MCEngineEmmeans::MCEngineEmmeans(const MCEngineFitter& fitter, const MCEngineInput& input,
                                 const std::vector<MCEngineMeansColumn>& columns, double confidenceLevel)
    : fpFitter(&fitter),
      fvColumns(columns),
      fbColumnsValid(static_cast<int>(columns.size()) == input.GetNColumns()),
      fConfidenceLevel(confidenceLevel) {
  for (const MCEngineMeansColumn& column : fvColumns) {
    if (column.GetFactors().size() != column.GetLevels().size()) {
      fbColumnsValid = false;
      continue;
    }
    for (std::size_t i = 0; i < column.GetFactors().size(); ++i) {
      const int level = column.GetLevels()[i];
      if (level < 0) fbColumnsValid = false;
      int& n = fmFactorLevels[column.GetFactors()[i]];
      n = std::max(n, level + 1);
    }
  }
  // The records the fit used are those the engine's data preparation keeps.
  MCEngineData data;
  if (!MCEngineDataBuilder::Build(input, 0.0, data).IsError()) {
    const std::vector<double>& fw = input.GetFrequencyWeights();
    fvUsedRecords = data.fvOriginalIndex;
    std::sort(fvUsedRecords.begin(), fvUsedRecords.end());
    for (int r : fvUsedRecords) fvUsedWeights.push_back(fw.empty() ? 1.0 : fw[U(r)]);
  }
}

int MCEngineEmmeans::GetFactorLevels(int factor) const {
  const auto it = fmFactorLevels.find(factor);
  return it == fmFactorLevels.end() ? 0 : it->second;
}

void MCEngineEmmeans::SetCovariateRecords(int covariate, const std::vector<double>& values) {
  double sum = 0.0, weight = 0.0;
  for (std::size_t i = 0; i < fvUsedRecords.size(); ++i) {
    const int r = fvUsedRecords[i];
    if (U(r) >= values.size() || !std::isfinite(values[U(r)])) continue;
    sum += fvUsedWeights[i] * values[U(r)];
    weight += fvUsedWeights[i];
  }
  if (std::find(fvCovariateOrder.begin(), fvCovariateOrder.end(), covariate) == fvCovariateOrder.end()) {
    fvCovariateOrder.push_back(covariate);
  }
  fmCovariateMeans[covariate] = weight > 0.0 ? sum / weight : MCEngineMissing::Value();
}

double MCEngineEmmeans::GetCovariateMean(int covariate) const {
  const auto it = fmCovariateMeans.find(covariate);
  return it == fmCovariateMeans.end() ? MCEngineMissing::Value() : it->second;
}

MCEngineMeansTable MCEngineEmmeans::Compute(const MCEngineMeansRequest& request) const {
  MCEngineMeansTable table;
  const std::vector<int>& factors = request.GetFactors();
  const int nf = static_cast<int>(factors.size());
  std::vector<int> sizes;
  long nCells = 1;
  bool valid = fbColumnsValid;
  for (int i = 0; i < nf && valid; ++i) {
    const int k = GetFactorLevels(factors[U(i)]);
    valid = k > 0 && std::count(factors.begin(), factors.end(), factors[U(i)]) == 1;
    sizes.push_back(k);
    nCells *= k;
    valid = valid && nCells <= kMaxCells;
  }
  int compare = -1;
  if (valid && request.GetCompareFactor() >= 0) {
    const auto it = std::find(factors.begin(), factors.end(), request.GetCompareFactor());
    if (it == factors.end()) {
      valid = false;
    } else {
      compare = static_cast<int>(it - factors.begin());
    }
  }

  // Covariates: at their means unless the request gives a value.
  std::map<int, double> at(fmCovariateMeans);
  std::vector<int> covariateOrder(fvCovariateOrder);
  for (std::size_t i = 0; i < request.GetCovariates().size(); ++i) {
    const int c = request.GetCovariates()[i];
    const double v = i < request.GetCovariateValues().size() ? request.GetCovariateValues()[i] : kNaN;
    if (!Present(v)) continue;
    if (at.find(c) == at.end()) covariateOrder.push_back(c);
    at[c] = v;
  }
  for (int c : covariateOrder) table.AddCovariate(c, at[c]);
  if (!valid) {
    table.SetState(MCEngineMeansTable::kInvalid);
    return table;
  }

  const double alpha = 1.0 - fConfidenceLevel / 100.0;
  auto row = [&](const std::vector<int>& levels) {
    Row l(fvColumns.size(), 1.0);
    for (std::size_t c = 0; c < fvColumns.size(); ++c) {
      const MCEngineMeansColumn& column = fvColumns[c];
      double w = 1.0;
      for (std::size_t j = 0; j < column.GetFactors().size() && w != 0.0; ++j) {
        const int f = column.GetFactors()[j];
        const auto it = std::find(factors.begin(), factors.end(), f);
        if (it != factors.end()) {
          if (levels[U(static_cast<int>(it - factors.begin()))] != column.GetLevels()[j]) w = 0.0;
        } else {
          const int kf = GetFactorLevels(f);
          w = kf > 0 ? w / kf : kNaN;
        }
      }
      for (int cov : column.GetCovariates()) {
        if (w == 0.0) break;
        const auto it = at.find(cov);
        w *= (it != at.end() && Present(it->second)) ? it->second : kNaN;
      }
      l[c] = w;
    }
    return l;
  };

  // The means. An ordinal fit's (a fit with thresholds) are on the latent
  // scale, which has no inverse link to the data's.
  const bool dataScale = !fTarget.IsLinear() && fpFitter->GetResult().GetThresholds().empty();
  std::vector<Row> rows(U(static_cast<int>(nCells)));
  std::vector<bool> estimable(rows.size(), false);
  for (long index = 0; index < nCells; ++index) rows[U(static_cast<int>(index))] = row(Decode(index, sizes));
  const std::vector<MCEngineTest> cellTests = TestFiniteRows(*fpFitter, rows);
  for (long index = 0; index < nCells; ++index) {
    MCEngineMeansCell cell;
    cell.SetLevels(Decode(index, sizes));
    cell.SetDataScale(dataScale);
    const Row& l = rows[U(static_cast<int>(index))];
    if (Finite(l)) {
      const MCEngineTest& test = cellTests[U(static_cast<int>(index))];
      if (test.IsValid() && Present(test.GetEstimate())) {
        estimable[U(static_cast<int>(index))] = true;
        cell.SetEstimable(true);
        cell.SetEstimate(test.GetEstimate());
        cell.SetStdError(test.GetStdError());
        cell.SetDF(test.GetDenDF());
        if (Present(test.GetStdError()) && Present(test.GetDenDF()) && test.GetDenDF() > 0.0) {
          const double q = MCEngineProbability::TQuantile(1.0 - alpha / 2.0, test.GetDenDF());
          cell.SetLower(test.GetEstimate() - q * test.GetStdError());
          cell.SetUpper(test.GetEstimate() + q * test.GetStdError());
        }
        if (cell.HasDataScale()) SetDataScale(MCEngineLink(fTarget.GetLink(), fTarget.GetLinkPower()), cell);
      }
    }
    table.AddCell(cell);
  }
  if (compare < 0) return table;
  const int k = sizes[U(compare)];
  if (k <= 1) {
    table.SetState(MCEngineMeansTable::kCompareOneLevel);
    return table;
  }

  int reference = -1;
  if (request.GetContrast() == MCEngineMeansRequest::kSimple) {
    reference = request.GetReferenceLevel();
    if (reference < 0 || reference >= k) reference = k - 1;
    table.SetReferenceLevel(reference);
  }
  const std::vector<ContrastRow> contrastRows =
      ContrastRows(request.GetContrast(), k, reference, request.GetMetricValues());

  // The other factors of the table, in order.
  std::vector<int> bySizes;
  for (int i = 0; i < nf; ++i) {
    if (i != compare) bySizes.push_back(sizes[U(i)]);
  }
  long nBy = 1;
  for (int s : bySizes) nBy *= s;
  for (long b = 0; b < nBy; ++b) {
    const std::vector<int> byLevels = Decode(b, bySizes);
    std::vector<int> cellOf(U(k));
    for (int j = 0; j < k; ++j) {
      std::vector<int> levels;
      for (int i = 0, o = 0; i < nf; ++i) levels.push_back(i == compare ? j : byLevels[U(o++)]);
      cellOf[U(j)] = static_cast<int>(Encode(levels, sizes));
    }

    const std::size_t first = table.GetContrasts().size();
    // In chunks, so that the pairs of many levels never hold all their rows
    // at once.
    for (std::size_t from = 0; from < contrastRows.size(); from += kRowsTestedTogether) {
      const std::size_t to = std::min(contrastRows.size(), from + kRowsTestedTogether);
      std::vector<Row> contrastLs;
      for (std::size_t r = from; r < to; ++r) {
        const ContrastRow& cr = contrastRows[r];
        Row l(fvColumns.size(), 0.0);
        bool finite = true;
        for (int j = 0; j < k; ++j) {
          const double a = cr.fCoefficients[U(j)];
          if (a == 0.0) continue;
          const Row& m = rows[U(cellOf[U(j)])];
          finite = finite && Finite(m);
          for (std::size_t c = 0; c < l.size(); ++c) l[c] += a * m[c];
        }
        // A contrast of a mean that is not finite is not tested.
        if (!finite) l.assign(fvColumns.size(), kNaN);
        contrastLs.push_back(std::move(l));
      }
      const std::vector<MCEngineTest> contrastTests = TestFiniteRows(*fpFitter, contrastLs);
      for (std::size_t r = from; r < to; ++r) {
        const ContrastRow& cr = contrastRows[r];
        MCEngineMeansContrast contrast;
        contrast.SetByLevels(byLevels);
        contrast.SetLevel(cr.fLevel);
        contrast.SetReference(cr.fReference);
        contrast.SetCoefficients(cr.fCoefficients);
        if (Finite(contrastLs[r - from])) {
          const MCEngineTest& test = contrastTests[r - from];
          if (test.IsValid() && Present(test.GetEstimate())) {
            contrast.SetEstimable(true);
            contrast.SetEstimate(test.GetEstimate());
            contrast.SetStdError(test.GetStdError());
            contrast.SetDF(test.GetDenDF());
            if (Present(test.GetStdError())) {
              const double t = test.GetEstimate() / test.GetStdError();
              contrast.SetT(t);
              if (Present(test.GetDenDF()) && test.GetDenDF() > 0.0) {
                contrast.SetSig(MCEngineProbability::TTwoSided(t, test.GetDenDF()));
              }
            }
          }
        }
        table.AddContrast(contrast);
      }
    }
    std::vector<MCEngineMeansContrast*> family;
    for (std::size_t i = first; i < table.GetContrasts().size(); ++i) family.push_back(&table.GetContrasts()[i]);
    AdjustFamily(family, request.GetAdjustment(), alpha);

    // The joint test: each estimable level against the last estimable one.
    MCEngineMeansSlice slice;
    slice.SetByLevels(byLevels);
    std::vector<int> usable;
    for (int j = 0; j < k; ++j) {
      if (estimable[U(cellOf[U(j)])]) usable.push_back(cellOf[U(j)]);
    }
    if (usable.size() >= 2) {
      const Row& last = rows[U(usable.back())];
      std::vector<Row> L;
      for (std::size_t j = 0; j + 1 < usable.size(); ++j) {
        Row d = rows[U(usable[j])];
        for (std::size_t c = 0; c < d.size(); ++c) d[c] -= last[c];
        L.push_back(std::move(d));
      }
      const MCEngineTest test = fpFitter->TestContrast(L);
      if (test.IsValid()) {
        slice.SetValid(true);
        slice.SetF(test.GetF());
        slice.SetNumDF(test.GetNumDF());
        slice.SetDenDF(test.GetDenDF());
        slice.SetSig(test.GetSig());
      }
    }
    table.AddSlice(slice);
  }
  return table;
}

}  // namespace MCEngine_850
