#include "numeric/glmm/GLMMDataSummary.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <map>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/RecordIterator.h"
#include "numeric/engine/MCEngineFitter.h"
#include "numeric/engine/MCEnginePredictor.h"
#include "numeric/glmm/GLMMDesignBuilder.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMPredictor.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

namespace {

// The records the documents show at most of the first subject, and the
// records up to which observed against predicted goes point by point;
// beyond that it is a grid of kGridCells by kGridCells cells.
const int kFirstSubjectRecords = 10;
const int kMaxPoints = 1000;
const int kGridCells = 50;
const int kMaxBins = 50;
// The largest independent group of records whose predictions the summary
// takes for observed against predicted when they are set up group by group.
const int kMaxPredictedGroupRecords = 5000;

void AppendUnique(std::vector<int>& list, const std::vector<int>& vars) {
  for (int v : vars) {
    if (std::find(list.begin(), list.end(), v) == list.end()) list.push_back(v);
  }
}

// Equal-width bins over [lo, hi], as many as the records with their copies
// (n) ask for: their midpoints and the frequencies.
void Histogram(const std::vector<double>& values, const std::vector<double>& weights, double n,
               std::vector<double>& mids, std::vector<double>& freqs) {
  mids.clear();
  freqs.clear();
  if (values.empty()) return;
  const double lo = *std::min_element(values.begin(), values.end());
  const double hi = *std::max_element(values.begin(), values.end());
  int k = static_cast<int>(std::ceil(std::log2(std::max(n, 1.0)))) + 1;
  k = std::min(std::max(k, 1), kMaxBins);
  if (!(hi > lo)) k = 1;
  const double width = k == 1 ? 0.0 : (hi - lo) / k;
  freqs.assign(static_cast<std::size_t>(k), 0.0);
  for (int b = 0; b < k; ++b) mids.push_back(k == 1 ? lo + (hi - lo) / 2.0 : lo + (b + 0.5) * width);
  for (std::size_t i = 0; i < values.size(); ++i) {
    int b = width > 0.0 ? static_cast<int>((values[i] - lo) / width) : 0;
    b = std::min(std::max(b, 0), k - 1);
    freqs[static_cast<std::size_t>(b)] += weights[i];
  }
}

// Observed against predicted: the points themselves while the records with
// their copies (n) are few, otherwise each occupied grid cell at the mean of
// its points.
void PredictedByObserved(const std::vector<double>& obs, const std::vector<double>& pred,
                         const std::vector<double>& weights, double n, GLMMOutputStats& out) {
  if (obs.empty()) return;
  if (n <= kMaxPoints) {
    out.SetPredictedByObserved(obs, pred, weights);
    return;
  }
  const auto [xlo, xhi] = std::minmax_element(obs.begin(), obs.end());
  const auto [ylo, yhi] = std::minmax_element(pred.begin(), pred.end());
  const double xw = (*xhi - *xlo) / kGridCells;
  const double yw = (*yhi - *ylo) / kGridCells;
  auto cell = [](double v, double lo, double w) {
    return w > 0.0 ? std::min(std::max(static_cast<int>((v - lo) / w), 0), kGridCells - 1) : 0;
  };
  std::map<std::pair<int, int>, std::vector<double>> cells;  // sum x, sum y, weight
  for (std::size_t i = 0; i < obs.size(); ++i) {
    std::vector<double>& c = cells[{cell(obs[i], *xlo, xw), cell(pred[i], *ylo, yw)}];
    if (c.empty()) c.assign(3, 0.0);
    c[0] += obs[i] * weights[i];
    c[1] += pred[i] * weights[i];
    c[2] += weights[i];
  }
  std::vector<double> x, y, f;
  for (const auto& entry : cells) {
    const std::vector<double>& c = entry.second;
    if (!(c[2] > 0.0)) continue;
    x.push_back(c[0] / c[2]);
    y.push_back(c[1] / c[2]);
    f.push_back(c[2]);
  }
  out.SetPredictedByObserved(x, y, f);
}

}  // namespace

void GLMMDataSummary::Fill(const GLMMSettings& s, const MCXML_850::MCVarList& varList, const GLMMDesignBuilder& builder,
                           const MCEngine_850::MCEngineFitter& fitter, MCCommon_850::RecordIterator* pRecords,
                           GLMMOutputStats& out) {
  const MCEngine_850::MCEngineInput& input = builder.GetInput();
  const int n = input.GetNRecords();
  const int P = input.GetNColumns();
  std::vector<int> subjectVars = s.GetRepeated().GetSubjectVars();
  for (const GLMMRandomSpec& spec : s.GetRandomSpecs()) AppendUnique(subjectVars, spec.GetSubjectVars());
  std::vector<int> repeatedVars;
  for (const MCMath_850::MCModelEffect& effect : s.GetRepeated().GetEffects()) {
    AppendUnique(repeatedVars, effect.GetVarsIndicesForTheEffectInSetting());
  }
  auto valueOf = [&varList](const double* record, int var) {
    const MCXML_850::IMCVariable* pVar = varList.GetVarAt(var);
    if (pVar == nullptr || pVar->GetRecordIndex() < 0) return MCCommon_850::MCMV::Missing();
    return record[pVar->GetRecordIndex()];
  };
  auto weightOK = [](const std::vector<double>& w, int r) {
    return w.empty() || (std::isfinite(w[static_cast<std::size_t>(r)]) && w[static_cast<std::size_t>(r)] > 0.0);
  };

  // The random effects' predictions, per block, subject and column. Not
  // for a group so large that its dense set-up would cost more than the
  // fit; a fit through the sparse equations (crossed random effects make
  // all records one group) is set up from their factor, at the cost of one
  // factorisation, since only the estimates are read here and no df.
  MCEngine_850::MCEnginePredictor predictor;
  predictor.SetMaxGroupRecords(kMaxPredictedGroupRecords);
  predictor.SetResidualDF(true);
  const bool predict = predictor.Setup(fitter, input);
  // Each subject's predictions are asked for once. A subject's records
  // mostly come together, so each block keeps its last subject's at hand
  // and searches the others only when the subject changes.
  const std::vector<MCEngine_850::MCEngineRandomBlock>& blocks = input.GetRandomBlocks();
  std::map<std::pair<int, int>, std::vector<double>> effects;
  std::vector<std::vector<double>*> last(blocks.size(), nullptr);
  std::vector<int> lastSubject(blocks.size(), -1);
  const std::vector<double> zero(static_cast<std::size_t>(P), 0.0);
  const double unknown = std::numeric_limits<double>::infinity();
  auto effect = [&](int b, int subject, int col) {
    const std::size_t B = static_cast<std::size_t>(b);
    if (last[B] == nullptr || lastSubject[B] != subject) {
      std::vector<double>& values = effects[std::make_pair(b, subject)];
      if (values.empty()) values.assign(static_cast<std::size_t>(blocks[B].GetNColumns()), unknown);
      last[B] = &values;
      lastSubject[B] = subject;
    }
    double& u = (*last[B])[static_cast<std::size_t>(col)];
    if (u == unknown) {
      const MCEngine_850::MCEngineRandomEntry entry(b, subject, col, 1.0);
      u = predictor.Predict(zero, {entry}).GetEstimate();
    }
    return u;
  };
  const std::vector<MCEngine_850::MCEngineBetaStat>& beta = fitter.GetResult().GetBeta();

  // A frequency weight copies records within their subjects, or whole
  // groups of records with their subjects.
  const bool copyGroups = fitter.GetResult().GetWeightsCopyGroups();
  std::vector<double> observed, predicted, weights, targets;
  std::vector<std::vector<double>> repeated(repeatedVars.size());
  std::map<std::vector<double>, double> subjects;
  std::vector<double> first, key(subjectVars.size()), lastKey;
  double firstCount = 0.0;
  int firstListed = 0;
  bool haveFirst = false;
  bool predictionsOK = predict && static_cast<int>(beta.size()) == P;
  int r = 0;
  pRecords->Rewind();
  for (; pRecords->HasRecord() && r < n; pRecords->Next()) {
    const double* record = pRecords->Current();
    if (record == nullptr) continue;
    const int row = r++;
    const std::size_t R = static_cast<std::size_t>(row);
    if (!std::isfinite(input.GetY()[R]) || !weightOK(input.GetFrequencyWeights(), row) ||
        !weightOK(input.GetScaleWeights(), row)) {
      continue;
    }
    const double y = valueOf(record, s.GetDependent());
    const double w = input.GetFrequencyWeights().empty() ? 1.0 : input.GetFrequencyWeights()[R];
    const double recordCopies = copyGroups ? 1.0 : w;
    for (std::size_t i = 0; i < subjectVars.size(); ++i) key[i] = valueOf(record, subjectVars[i]);
    // A subject's records mostly come together: the search is for a new one.
    if (!haveFirst || key != lastKey) {
      subjects.try_emplace(key, copyGroups ? w : 1.0);
      lastKey = key;
    }
    if (!haveFirst) first = key;
    haveFirst = true;
    if (key == first) {
      firstCount += recordCopies;
      for (long c = std::max(1L, std::lround(recordCopies)); c > 0 && firstListed < kFirstSubjectRecords; --c) {
        ++firstListed;
        targets.push_back(y);
        for (std::size_t v = 0; v < repeatedVars.size(); ++v) {
          repeated[v].push_back(valueOf(record, repeatedVars[v]));
        }
      }
    }
    observed.push_back(y);
    weights.push_back(w);
    if (!predictionsOK) continue;
    // The builder's response is the target less the offset.
    double p = y - input.GetY()[R];
    for (int j = 0; j < P; ++j) {
      const std::size_t J = static_cast<std::size_t>(j);
      p += input.GetX()[R * static_cast<std::size_t>(P) + J] * beta[J].GetEstimate();
    }
    for (int b = 0; b < static_cast<int>(blocks.size()) && predictionsOK; ++b) {
      const MCEngine_850::MCEngineRandomBlock& block = blocks[static_cast<std::size_t>(b)];
      const int subject = block.GetSubjects().empty() ? 0 : block.GetSubjects()[R];
      for (int i = block.GetRowStart()[R]; i < block.GetRowStart()[R + 1]; ++i) {
        const double u = effect(b, subject, block.GetColIndex()[static_cast<std::size_t>(i)]);
        if (MCEngine_850::MCEngineMissing::Is(u)) predictionsOK = false;
        p += block.GetValues()[static_cast<std::size_t>(i)] * u;
      }
    }
    predicted.push_back(p);
  }
  if (observed.empty()) return;

  double sw = 0.0, sum = 0.0;
  for (std::size_t i = 0; i < observed.size(); ++i) {
    sw += weights[i];
    sum += weights[i] * observed[i];
  }
  const double mean = sum / sw;
  double ss = 0.0;
  for (std::size_t i = 0; i < observed.size(); ++i) ss += weights[i] * (observed[i] - mean) * (observed[i] - mean);
  out.SetTargetMean(mean);
  out.SetTargetStdDeviation(sw > 1.0 ? std::sqrt(ss / (sw - 1.0)) : MCCommon_850::MCMV::Missing());
  std::vector<double> mids, freqs;
  Histogram(observed, weights, sw, mids, freqs);
  out.SetTargetBins(mids, freqs);
  if (predictionsOK && predicted.size() == observed.size()) PredictedByObserved(observed, predicted, weights, sw, out);

  if (subjectVars.empty()) {
    out.SetNCommonSubjects(1);
    return;
  }
  double nSubjects = 0.0;
  for (const auto& subject : subjects) nSubjects += subject.second;
  out.SetNCommonSubjects(static_cast<int>(std::lround(nSubjects)));
  out.SetFirstSubject(subjectVars, first);
  out.SetFirstSubjectNRecords(static_cast<int>(std::lround(firstCount)));
  out.SetFirstSubjectRepeated(repeatedVars, repeated);
  out.SetFirstSubjectTargets(targets);
}

}  // namespace MCGLMM_850
