#include "numeric/engine/MCEngineTestDesign.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <sstream>

using MCEngine_850::MCEngineCovType;
using MCEngine_850::MCEngineInput;
using MCEngine_850::MCEngineRandomBlock;
using MCEngine_850::MCEngineResidualBlock;
using MCEngine_850::MCEngineTerm;

namespace {

std::vector<std::string> SplitTerm(const std::string& term) {
  std::vector<std::string> parts;
  std::stringstream ss(term);
  std::string part;
  while (std::getline(ss, part, '*')) parts.push_back(part);
  return parts;
}

}  // namespace

MCEngineTestDesign::MCEngineTestDesign(const MCEngineTestCsv& csv, const std::set<std::string>& factors)
    : fCsv(csv), fFactors(factors) {}

void MCEngineTestDesign::AddRandomBlock(const std::vector<std::string>& effects, const std::string& subject,
                                        MCEngineCovType type) {
  fvBlocks.push_back(Block{effects, subject, type});
}

void MCEngineTestDesign::SetResidual(const std::string& subject, const std::string& repeated, MCEngineCovType type) {
  fResSubject = subject;
  fResRepeated = repeated;
  fResType = type;
}

int MCEngineTestDesign::VariableId(const std::string& name) {
  auto it = fIds.find(name);
  if (it != fIds.end()) return it->second;
  const int id = static_cast<int>(fIds.size());
  fIds[name] = id;
  return id;
}

const std::vector<std::string>& MCEngineTestDesign::GetLevels(const std::string& factor) {
  auto it = fLevels.find(factor);
  if (it != fLevels.end()) return it->second;
  const int col = fCsv.FindColumn(factor);
  std::vector<std::string> levels;
  for (int r = 0; r < fCsv.GetNRows(); ++r) {
    const std::string& s = fCsv.GetText(r, col);
    if (s.empty() || s == "NA") continue;
    if (std::find(levels.begin(), levels.end(), s) == levels.end()) levels.push_back(s);
  }
  if (fCsv.IsNumeric(col)) {
    std::sort(levels.begin(), levels.end(),
              [](const std::string& a, const std::string& b) { return std::stod(a) < std::stod(b); });
  } else {
    std::sort(levels.begin(), levels.end());
  }
  return fLevels[factor] = levels;
}

std::vector<int> MCEngineTestDesign::Codes(const std::string& crossing) {
  const std::vector<std::string> vars = SplitTerm(crossing);
  std::vector<int> codes(static_cast<std::size_t>(fCsv.GetNRows()), 0);
  for (const std::string& v : vars) {
    const std::vector<std::string>& levels = GetLevels(v);
    const int col = fCsv.FindColumn(v);
    for (int r = 0; r < fCsv.GetNRows(); ++r) {
      const auto pos = std::find(levels.begin(), levels.end(), fCsv.GetText(r, col)) - levels.begin();
      codes[static_cast<std::size_t>(r)] = codes[static_cast<std::size_t>(r)] * static_cast<int>(levels.size()) + static_cast<int>(pos);
    }
  }
  return codes;
}

int MCEngineTestDesign::TermColumns(const std::string& term, std::vector<double>& values,
                                    std::vector<std::string>& names) {
  const int n = fCsv.GetNRows();
  names.clear();
  if (term == "Intercept") {
    values.assign(static_cast<std::size_t>(n), 1.0);
    names.push_back("Intercept");
    return 1;
  }
  const std::vector<std::string> vars = SplitTerm(term);
  std::vector<int> sizes;
  for (const std::string& v : vars) sizes.push_back(fFactors.count(v) ? static_cast<int>(GetLevels(v).size()) : 1);
  int nCols = 1;
  for (int s : sizes) nCols *= s;
  values.assign(static_cast<std::size_t>(n) * static_cast<std::size_t>(nCols), 0.0);
  for (int c = 0; c < nCols; ++c) {
    // Mixed radix with the first variable varying slowest.
    std::vector<int> digit(vars.size());
    int rest = c;
    for (int i = static_cast<int>(vars.size()) - 1; i >= 0; --i) {
      digit[static_cast<std::size_t>(i)] = rest % sizes[static_cast<std::size_t>(i)];
      rest /= sizes[static_cast<std::size_t>(i)];
    }
    std::string name;
    for (std::size_t i = 0; i < vars.size(); ++i) {
      if (i > 0) name += "*";
      name += vars[i];
      if (fFactors.count(vars[i])) name += "=" + GetLevels(vars[i])[static_cast<std::size_t>(digit[i])];
    }
    names.push_back(name);
    for (int r = 0; r < n; ++r) {
      double v = 1.0;
      for (std::size_t i = 0; i < vars.size(); ++i) {
        const int col = fCsv.FindColumn(vars[i]);
        if (fFactors.count(vars[i])) {
          if (fCsv.GetText(r, col) != GetLevels(vars[i])[static_cast<std::size_t>(digit[i])]) v = 0.0;
        } else {
          v *= fCsv.GetNumber(r, col);
        }
      }
      values[static_cast<std::size_t>(r) * static_cast<std::size_t>(nCols) + static_cast<std::size_t>(c)] = v;
    }
  }
  return nCols;
}

MCEngineInput MCEngineTestDesign::Build() {
  const int n = fCsv.GetNRows();
  MCEngineInput input;
  std::vector<double> y(static_cast<std::size_t>(n));
  const int ycol = fCsv.FindColumn(fResponse);
  for (int r = 0; r < n; ++r) y[static_cast<std::size_t>(r)] = fCsv.GetNumber(r, ycol);
  input.SetY(y);

  // Fixed design.
  std::vector<std::vector<double>> termValues;
  std::vector<int> termCols;
  fvColumnNames.clear();
  int P = 0;
  for (const std::string& term : fvFixedTerms) {
    std::vector<double> values;
    std::vector<std::string> names;
    const int nc = TermColumns(term, values, names);
    if (term == "Intercept") {
      input.AddTerm(MCEngineTerm::Intercept(P));
    } else {
      std::vector<int> factors, covariates;
      for (const std::string& v : SplitTerm(term)) {
        (fFactors.count(v) ? factors : covariates).push_back(VariableId(v));
      }
      input.AddTerm(MCEngineTerm(P, nc, factors, covariates));
    }
    termValues.push_back(std::move(values));
    termCols.push_back(nc);
    fvColumnNames.insert(fvColumnNames.end(), names.begin(), names.end());
    P += nc;
  }
  std::vector<double> X(static_cast<std::size_t>(n) * static_cast<std::size_t>(P));
  for (int r = 0; r < n; ++r) {
    int offset = 0;
    for (std::size_t t = 0; t < termValues.size(); ++t) {
      for (int c = 0; c < termCols[t]; ++c) {
        X[static_cast<std::size_t>(r) * static_cast<std::size_t>(P) + static_cast<std::size_t>(offset + c)] =
            termValues[t][static_cast<std::size_t>(r) * static_cast<std::size_t>(termCols[t]) + static_cast<std::size_t>(c)];
      }
      offset += termCols[t];
    }
  }
  input.SetX(P, X);

  for (const Block& block : fvBlocks) {
    std::vector<std::vector<double>> effValues;
    std::vector<int> effCols;
    std::vector<int> columnEffects;
    int q = 0;
    for (std::size_t e = 0; e < block.fvEffects.size(); ++e) {
      std::vector<double> values;
      std::vector<std::string> names;
      const int nc = TermColumns(block.fvEffects[e], values, names);
      effValues.push_back(std::move(values));
      effCols.push_back(nc);
      for (int c = 0; c < nc; ++c) columnEffects.push_back(static_cast<int>(e));
      q += nc;
    }
    std::vector<double> Z(static_cast<std::size_t>(n) * static_cast<std::size_t>(q));
    for (int r = 0; r < n; ++r) {
      int offset = 0;
      for (std::size_t e = 0; e < effValues.size(); ++e) {
        for (int c = 0; c < effCols[e]; ++c) {
          Z[static_cast<std::size_t>(r) * static_cast<std::size_t>(q) + static_cast<std::size_t>(offset + c)] =
              effValues[e][static_cast<std::size_t>(r) * static_cast<std::size_t>(effCols[e]) + static_cast<std::size_t>(c)];
        }
        offset += effCols[e];
      }
    }
    MCEngineRandomBlock rb;
    rb.SetCovType(block.fType);
    rb.SetDenseColumns(q, Z);
    rb.SetColumnEffects(columnEffects);
    if (!block.fSubject.empty()) rb.SetSubjects(Codes(block.fSubject));
    input.AddRandomBlock(rb);
  }

  MCEngineResidualBlock res;
  res.SetCovType(fResType);
  if (!fResSubject.empty()) res.SetSubjects(Codes(fResSubject));
  if (!fResRepeated.empty()) res.SetPositions(Codes(fResRepeated));
  input.SetResidualBlock(res);
  return input;
}

int MCEngineTestDesign::FindColumnName(const std::string& name) const {
  for (std::size_t i = 0; i < fvColumnNames.size(); ++i) {
    if (fvColumnNames[i] == name) return static_cast<int>(i);
  }
  return -1;
}
