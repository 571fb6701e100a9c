#include "numeric/engine/MCEngineTestCopies.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <string>

#include "numeric/engine/MCEngineMissing.h"

using namespace MCEngine_850;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

// Subject codes of the copies; an input without subjects has one subject, 0.
std::vector<int> CopySubjects(const std::vector<int>& subjects, int nRecords, const std::vector<int>& copies,
                              bool newSubjects) {
  if (subjects.empty() && !newSubjects) return {};
  const int stride = subjects.empty() ? 1 : *std::max_element(subjects.begin(), subjects.end()) + 1;
  std::vector<int> out;
  for (int r = 0; r < nRecords; ++r) {
    const int s = subjects.empty() ? 0 : subjects[U(r)];
    for (int j = 0; j < copies[U(r)]; ++j) out.push_back(newSubjects ? s + j * stride : s);
  }
  return out;
}

template <typename T>
std::vector<T> CopyRows(const std::vector<T>& values, int width, const std::vector<int>& copies) {
  std::vector<T> out;
  if (values.empty()) return out;
  for (std::size_t r = 0; r < copies.size(); ++r) {
    for (int j = 0; j < copies[r]; ++j) {
      out.insert(out.end(), values.begin() + static_cast<long>(r * U(width)),
                 values.begin() + static_cast<long>((r + 1) * U(width)));
    }
  }
  return out;
}

::testing::AssertionResult Same(double a, double b, double tol) {
  if (MCEngineMissing::Is(a) || MCEngineMissing::Is(b)) {
    if (a == b) return ::testing::AssertionSuccess();
    return ::testing::AssertionFailure() << a << " vs " << b << " (one missing)";
  }
  if (std::fabs(a - b) <= tol * std::max(std::fabs(b), 1e-12)) return ::testing::AssertionSuccess();
  return ::testing::AssertionFailure() << a << " vs " << b;
}

void ExpectSameTests(const std::vector<MCEngineTest>& a, const std::vector<MCEngineTest>& b, double tol) {
  ASSERT_EQ(a.size(), b.size());
  for (std::size_t t = 0; t < a.size(); ++t) {
    SCOPED_TRACE("test " + std::to_string(t));
    EXPECT_TRUE(Same(a[t].GetF(), b[t].GetF(), tol));
    EXPECT_TRUE(Same(a[t].GetNumDF(), b[t].GetNumDF(), tol));
    EXPECT_TRUE(Same(a[t].GetDenDF(), b[t].GetDenDF(), tol));
    EXPECT_TRUE(Same(a[t].GetSig(), b[t].GetSig(), tol));
  }
}

}  // namespace

MCEngineInput MCEngineTestCopies::Write(const MCEngineInput& input, const std::vector<int>& copies,
                                        bool newSubjects) {
  const int n = input.GetNRecords();
  MCEngineInput out;
  out.SetY(CopyRows(input.GetY(), 1, copies));
  out.SetX(input.GetNColumns(), CopyRows(input.GetX(), input.GetNColumns(), copies));
  out.SetTerms(input.GetTerms());
  out.SetScaleWeights(CopyRows(input.GetScaleWeights(), 1, copies));
  for (const MCEngineRandomBlock& block : input.GetRandomBlocks()) {
    std::vector<int> rowStart(1, 0), colIndex;
    std::vector<double> values;
    for (int r = 0; r < n; ++r) {
      const int e0 = block.GetRowStart()[U(r)], e1 = block.GetRowStart()[U(r) + 1];
      for (int j = 0; j < copies[U(r)]; ++j) {
        colIndex.insert(colIndex.end(), block.GetColIndex().begin() + e0, block.GetColIndex().begin() + e1);
        values.insert(values.end(), block.GetValues().begin() + e0, block.GetValues().begin() + e1);
        rowStart.push_back(static_cast<int>(colIndex.size()));
      }
    }
    MCEngineRandomBlock copy = block;
    copy.SetColumns(block.GetNColumns(), rowStart, colIndex, values);
    copy.SetSubjects(CopySubjects(block.GetSubjects(), n, copies, newSubjects));
    out.AddRandomBlock(copy);
  }
  MCEngineResidualBlock residual = input.GetResidualBlock();
  residual.SetSubjects(CopySubjects(residual.GetSubjects(), n, copies, newSubjects));
  residual.SetPositions(CopyRows(residual.GetPositions(), 1, copies));
  residual.SetCoordinates(residual.GetNCoordinates(),
                          CopyRows(residual.GetCoordinates(), residual.GetNCoordinates(), copies));
  out.SetResidualBlock(residual);
  return out;
}

std::vector<int> MCEngineTestCopies::ByRecord(int nRecords) {
  std::vector<int> copies;
  for (int r = 0; r < nRecords; ++r) copies.push_back(1 + (r * 7 + r / 3) % 3);
  return copies;
}

std::vector<int> MCEngineTestCopies::BySubject(const std::vector<int>& subjects) {
  std::vector<int> copies;
  for (int s : subjects) copies.push_back(1 + (s * 5) % 3);
  return copies;
}

std::vector<double> MCEngineTestCopies::AsWeights(const std::vector<int>& copies) {
  return std::vector<double>(copies.begin(), copies.end());
}

MCEngineInput MCEngineTestCopies::Weighted(const MCEngineInput& input, const std::vector<int>& copies) {
  MCEngineInput out = input;
  out.SetFrequencyWeights(AsWeights(copies));
  return out;
}

void MCEngineTestCopies::ExpectSameFit(const MCEngineResult& a, const MCEngineResult& b, double tol) {
  EXPECT_TRUE(Same(a.GetMinus2LogLik(), b.GetMinus2LogLik(), tol)) << "-2 log L";
  EXPECT_TRUE(Same(a.GetAIC(), b.GetAIC(), tol)) << "AIC";
  EXPECT_TRUE(Same(a.GetAICC(), b.GetAICC(), tol)) << "AICC";
  EXPECT_TRUE(Same(a.GetBIC(), b.GetBIC(), tol)) << "BIC";
  EXPECT_TRUE(Same(a.GetCAIC(), b.GetCAIC(), tol)) << "CAIC";
  EXPECT_TRUE(Same(a.GetHQIC(), b.GetHQIC(), tol)) << "HQIC";
  EXPECT_EQ(a.GetTotalFreqWeight(), b.GetTotalFreqWeight());
  EXPECT_EQ(a.GetNGroups(), b.GetNGroups());
  EXPECT_EQ(a.GetNSubjects(), b.GetNSubjects());
  EXPECT_TRUE(Same(a.GetFixedDF(), b.GetFixedDF(), tol)) << "fixed df";
  ASSERT_EQ(a.GetBeta().size(), b.GetBeta().size());
  for (std::size_t j = 0; j < a.GetBeta().size(); ++j) {
    SCOPED_TRACE("fixed parameter " + std::to_string(j));
    const MCEngineBetaStat &x = a.GetBeta()[j], &y = b.GetBeta()[j];
    EXPECT_EQ(x.IsRedundant(), y.IsRedundant());
    EXPECT_TRUE(Same(x.GetEstimate(), y.GetEstimate(), tol));
    EXPECT_TRUE(Same(x.GetStdError(), y.GetStdError(), tol));
    EXPECT_TRUE(Same(x.GetDF(), y.GetDF(), tol));
    EXPECT_TRUE(Same(x.GetT(), y.GetT(), tol));
    EXPECT_TRUE(Same(x.GetSig(), y.GetSig(), tol));
  }
  ASSERT_EQ(a.GetCovParams().size(), b.GetCovParams().size());
  for (std::size_t k = 0; k < a.GetCovParams().size(); ++k) {
    SCOPED_TRACE("covariance parameter " + std::to_string(k));
    const MCEngineCovParam &x = a.GetCovParams()[k], &y = b.GetCovParams()[k];
    EXPECT_TRUE(Same(x.GetEstimate(), y.GetEstimate(), tol));
    EXPECT_TRUE(Same(x.GetStdError(), y.GetStdError(), tol));
    EXPECT_TRUE(Same(x.GetWaldZ(), y.GetWaldZ(), tol));
    EXPECT_TRUE(Same(x.GetSig(), y.GetSig(), tol));
  }
  ExpectSameTests(a.GetTypeITests(), b.GetTypeITests(), tol);
  ExpectSameTests(a.GetTypeIIITests(), b.GetTypeIIITests(), tol);
}
