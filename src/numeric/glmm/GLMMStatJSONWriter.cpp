#include "numeric/glmm/GLMMStatJSONWriter.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <ostream>
#include <vector>

#include "numeric/common/MCMV.h"
#include "numeric/common/MCStatusCode.h"
#include "numeric/glmm/GLMMDocumentLabels.h"
#include "numeric/glmm/GLMMOutputStats.h"
#include "numeric/glmm/GLMMSettings.h"
#include "numeric/math/MCModelEffect.h"
#include "numeric/xml/IMCVariable.h"
#include "numeric/xml/MCVarList.h"

namespace MCGLMM_850 {

using MCCommon_850::MCStatus;
using Json = nlohmann::ordered_json;

namespace {

std::size_t U(int i) { return static_cast<std::size_t>(i); }

std::string NumberText(double value) {
  char buffer[64];
  std::snprintf(buffer, sizeof buffer, "%.12g", value);
  return buffer;
}

std::string VarName(const MCXML_850::MCVarList& varList, int var) {
  const MCXML_850::IMCVariable* pVar = varList.GetVarAt(var);
  return pVar != nullptr ? pVar->GetName() : "#" + std::to_string(var);
}

std::string Join(const std::vector<std::string>& parts, const std::string& separator) {
  std::string text;
  for (std::size_t i = 0; i < parts.size(); ++i) text += (i > 0 ? separator : "") + parts[i];
  return text;
}

Json Leaf(const std::string& label) {
  Json leaf;
  leaf["label"] = label;
  return leaf;
}

Json Group(const std::string& label, Json categories) {
  Json group;
  group["label"] = label;
  group["categories"] = std::move(categories);
  return group;
}

// The subjects [first, last) share their values before `depth`; one level of
// groups per subject variable, the last variable's values as leaves.
Json SubjectCategories(const std::vector<std::vector<double>>& subjects, std::size_t first, std::size_t last,
                       std::size_t depth, const std::vector<int>& vars, const MCXML_850::MCVarList& varList) {
  Json categories = Json::array();
  std::size_t i = first;
  while (i < last) {
    const double value = subjects[i][depth];
    std::size_t j = i + 1;
    while (j < last && subjects[j][depth] == value) ++j;
    const std::string label = GLMMStatJSONWriter::ValueText(varList, vars[depth], value);
    if (depth + 1 == vars.size()) {
      for (std::size_t k = i; k < j; ++k) categories.push_back(Leaf(label));
    } else {
      categories.push_back(Group(label, SubjectCategories(subjects, i, j, depth + 1, vars, varList)));
    }
    i = j;
  }
  return categories;
}

// A number, or null when missing.
Json Number(double value) {
  if (MCCommon_850::MCMV::IsMissing(value) || !std::isfinite(value)) return nullptr;
  return value;
}

Json Cell(int subject, int column, int statistic, bool withSubject, double value, const char* format) {
  Json cell;
  Json at = Json::array();
  if (withSubject) at.push_back(subject);
  at.push_back(column);
  at.push_back(statistic);
  cell["at"] = std::move(at);
  cell["value"] = Number(value);
  cell["format"] = format;
  return cell;
}

// Our extension: the custom tests, each with its rows and joint test.
Json CustomTests(const std::vector<GLMMCustomTestStat>& tests) {
  Json list = Json::array();
  for (const GLMMCustomTestStat& test : tests) {
    Json item;
    item["label"] = test.GetLabel();
    Json rows = Json::array();
    for (const GLMMCustomTestStat::RowData& r : test.GetRows()) {
      Json row;
      row["state"] = static_cast<int>(r.fState);
      row["randomPart"] = r.fbRandomPart;
      row["coefficients"] = r.fvFixedCoefficients;
      row["testValue"] = r.fK;
      row["estimate"] = Number(r.fEstimate);
      row["stdErr"] = Number(r.fStdError);
      row["df"] = Number(r.fDF);
      row["t"] = Number(r.fT);
      row["sig"] = Number(r.fSig);
      row["lower"] = Number(r.fLowerBound);
      row["upper"] = Number(r.fUpperBound);
      rows.push_back(std::move(row));
    }
    item["rows"] = std::move(rows);
    Json joint;
    joint["state"] = static_cast<int>(test.GetJointState());
    joint["F"] = Number(test.GetJoint().GetWald());
    joint["numDF"] = Number(test.GetJoint().GetDF());
    joint["denDF"] = Number(test.GetJoint().GetDF2());
    joint["sig"] = Number(test.GetJoint().GetSig());
    item["joint"] = std::move(joint);
    list.push_back(std::move(item));
  }
  return list;
}

// An ordinal target's thresholds, each under the highest category it closes.
Json Thresholds(const GLMMSettings& s, const MCXML_850::MCVarList& varList, const GLMMOutputStats& stats) {
  const std::vector<MCMath_850::BetaParamStat>& thresholds = stats.GetThresholdStats();
  const std::vector<double>& categories = stats.GetTargetCategories();
  Json list = Json::array();
  for (std::size_t j = 0; j < thresholds.size() && j < categories.size(); ++j) {
    const MCMath_850::BetaParamStat& st = thresholds[j];
    Json item;
    item["category"] = GLMMStatJSONWriter::ValueText(varList, s.GetDependent(), categories[j]);
    item["estimate"] = Number(st.GetEstimate());
    item["stdError"] = Number(st.GetStdError());
    item["df"] = Number(st.GetDF());
    item["t"] = Number(st.GetTStat());
    item["sig"] = Number(st.GetSig());
    item["lower"] = Number(st.GetLowerBound());
    item["upper"] = Number(st.GetUpperBound());
    list.push_back(std::move(item));
  }
  return list;
}

// Our extension: a generalized model's target (distribution, link, trials),
// an ordinal target's thresholds and the classification table, rows
// observed and columns predicted.
Json Target(const GLMMSettings& s, const MCXML_850::MCVarList& varList, const GLMMOutputStats& stats) {
  const GLMMClassification& table = stats.GetClassification();
  const GLMMTargetSpec& spec = s.GetTargetSpec();
  Json target;
  target["field"] = VarName(varList, s.GetDependent());
  target["distribution"] = GLMMDocumentLabels::DistributionToken(spec);
  target["link"] = GLMMDocumentLabels::LinkToken(spec);
  if (spec.GetLink() == GLMMConst_850::LINK_POWER) target["linkParameter"] = spec.GetLinkPower();
  if (spec.GetTrialsType() == GLMMConst_850::TRIALS_VARIABLE) {
    target["trialsField"] = VarName(varList, spec.GetTrialsVariable());
  } else if (spec.GetTrialsType() == GLMMConst_850::TRIALS_VALUE) {
    target["trialsValue"] = spec.GetTrialsValue();
  }
  if (!stats.GetThresholdStats().empty()) target["thresholds"] = Thresholds(s, varList, stats);
  if (table.IsEmpty()) return target;
  Json classification;
  Json categories = Json::array();
  for (double category : table.GetCategories()) {
    categories.push_back(table.GetUsesTrials() ? (category == 0.0 ? "Non-Event" : "Event")
                                               : GLMMStatJSONWriter::ValueText(varList, s.GetDependent(), category));
  }
  classification["categories"] = std::move(categories);
  Json rows = Json::array();
  for (int i = 0; i < table.GetNCategories(); ++i) {
    Json row = Json::array();
    for (int j = 0; j < table.GetNCategories(); ++j) row.push_back(table.GetCount(i, j));
    rows.push_back(std::move(row));
  }
  classification["counts"] = std::move(rows);
  classification["accuracy"] = Number(table.GetAccuracy());
  target["classification"] = std::move(classification);
  return target;
}

}  // namespace

GLMMStatJSONWriter::GLMMStatJSONWriter(const GLMMSettings& settings, const MCXML_850::MCVarList& varList,
                                       const GLMMOutputStats& stats)
    : fpSettings(&settings), fpVarList(&varList), fpStats(&stats) {}

std::string GLMMStatJSONWriter::ValueText(const MCXML_850::MCVarList& varList, int var, double value) {
  const MCXML_850::IMCVariable* pVar = varList.GetVarAt(var);
  if (pVar != nullptr && pVar->GetNCategories() > 0 && value >= 0.0 && value == std::floor(value) &&
      value < static_cast<double>(pVar->GetNCategories())) {
    return pVar->GetCategoryTexts()[static_cast<std::size_t>(value)];
  }
  return NumberText(value);
}

std::string GLMMStatJSONWriter::EffectName(const MCMath_850::MCModelEffect& effect,
                                           const MCXML_850::MCVarList& varList) {
  if (effect.IsIntercept()) return "Intercept";
  const std::vector<int> factors = effect.GetFactors();
  const std::vector<int>& levels = effect.GetFactorLevels();
  std::vector<int> written = effect.GetVarsIndicesForTheEffectInSetting();
  if (written.empty()) {
    written = factors;
    const std::vector<int> covariates = effect.GetCovariates();
    for (std::size_t i = 0; i < covariates.size(); ++i) {
      const int mult = i < effect.GetCovMultiplicities().size() ? std::max(effect.GetCovMultiplicities()[i], 1) : 1;
      written.insert(written.end(), U(mult), covariates[i]);
    }
  }
  auto levelOf = [&](int var) {
    const auto it = std::find(factors.begin(), factors.end(), var);
    if (it == factors.end()) return -1;
    const std::size_t i = static_cast<std::size_t>(it - factors.begin());
    return i < levels.size() ? levels[i] : 0;
  };
  int maxLevel = 0;
  for (int var : written) maxLevel = std::max(maxLevel, levelOf(var));
  if (maxLevel == 0 && !effect.GetFactorsInParens()) {
    std::vector<std::string> names;
    for (int var : written) names.push_back(VarName(varList, var));
    return Join(names, "*");
  }
  // Innermost factors first: B(A) has B on the deeper level.
  std::vector<std::string> covariates;
  std::vector<std::vector<std::string>> byLevel(U(maxLevel + 1));
  for (int var : written) {
    const int level = levelOf(var);
    if (level < 0) {
      covariates.push_back(VarName(varList, var));
    } else {
      byLevel[U(level)].push_back(VarName(varList, var));
    }
  }
  std::string text;
  int open = 0;
  for (int level = maxLevel; level >= 0; --level) {
    if (byLevel[U(level)].empty()) continue;
    if (!text.empty()) {
      text += "(";
      ++open;
    }
    text += Join(byLevel[U(level)], "*");
  }
  text += std::string(U(open), ')');
  if (covariates.empty()) return text;
  if (effect.GetFactorsInParens()) return Join(covariates, "*") + "(" + text + ")";
  return text + "*" + Join(covariates, "*");
}

MCStatus GLMMStatJSONWriter::Write(std::ostream& os) const {
  const GLMMSettings& s = *fpSettings;
  const MCXML_850::MCVarList& varList = *fpVarList;
  const std::vector<GLMMEBLUPStat>& stats = fpStats->GetEBLUPStats();
  const std::vector<GLMMRandomSpec>& specs = s.GetRandomSpecs();
  const auto& gamma = fpStats->GetGammaBasicParameters();
  const std::string level = NumberText(100.0 * s.GetConfidenceLevel());

  Json tables = Json::array();
  for (int b = 0; b < static_cast<int>(specs.size()); ++b) {
    const GLMMRandomSpec& spec = specs[U(b)];
    if (!spec.GetComputeEBLUPs() || b >= static_cast<int>(gamma.size())) continue;
    const std::vector<int>& subjectVars = spec.GetSubjectVars();
    const bool withSubject = !subjectVars.empty();

    std::vector<const GLMMEBLUPStat*> rows;
    std::vector<std::vector<double>> subjects;
    for (const GLMMEBLUPStat& stat : stats) {
      if (stat.GetBlock() != b) continue;
      rows.push_back(&stat);
      if (subjects.empty() || subjects.back() != stat.GetSubjectValues()) subjects.push_back(stat.GetSubjectValues());
    }
    // A table without rows would be refused by the reader.
    if (rows.empty()) continue;

    Json table;
    table["name"] = "Empirical Best Linear Unbiased Predictions";
    std::vector<std::string> subjectNames;
    for (int var : subjectVars) subjectNames.push_back(VarName(varList, var));
    std::string caption = "Random Effect Block " + std::to_string(b + 1);
    if (withSubject) caption += ", Subject: " + Join(subjectNames, " * ");
    table["captions"] = Json::array({caption});
    table["notes"] = Json::array();

    Json dimensions = Json::array();
    bool subjectsValid = true;
    for (const std::vector<double>& subject : subjects) subjectsValid = subjectsValid && subject.size() == subjectVars.size();
    if (withSubject) {
      Json dim;
      dim["name"] = Join(subjectNames, " * ");
      dim["place"] = "row";
      dim["categories"] = subjectsValid ? SubjectCategories(subjects, 0, subjects.size(), 0, subjectVars, varList)
                                        : Json::array();
      dimensions.push_back(std::move(dim));
    }
    // The block's columns, effect by effect.
    const std::vector<MCMath_850::MCRegrParameter>& params = gamma[U(b)];
    Json effects = Json::array();
    std::size_t j = 0;
    while (j < params.size()) {
      const int effectIndex = params[j].GetEffectIndex();
      std::size_t end = j + 1;
      while (end < params.size() && params[end].GetEffectIndex() == effectIndex) ++end;
      std::string name = "Intercept";
      if (effectIndex >= 0 && effectIndex < spec.GetNEffects()) name = EffectName(spec.GetEffects()[U(effectIndex)], varList);
      if (params[j].GetNFactors() == 0) {
        for (std::size_t k = j; k < end; ++k) effects.push_back(Leaf(name));
      } else {
        Json leaves = Json::array();
        for (std::size_t k = j; k < end; ++k) {
          std::vector<std::string> texts;
          for (int f = 0; f < params[k].GetNFactors(); ++f) {
            texts.push_back(ValueText(varList, params[k].GetFactors()[U(f)], params[k].GetCategories()[U(f)]));
          }
          leaves.push_back(Leaf(Join(texts, ", ")));
        }
        effects.push_back(Group(name, std::move(leaves)));
      }
      j = end;
    }
    Json effectDim;
    effectDim["name"] = "Effect";
    effectDim["place"] = "row";
    effectDim["categories"] = std::move(effects);
    dimensions.push_back(std::move(effectDim));

    Json statDim;
    statDim["name"] = "Statistics";
    statDim["place"] = "column";
    statDim["showName"] = false;
    statDim["categories"] =
        Json::array({Leaf("Prediction"), Leaf("Std. Error"), Leaf("t"), Leaf("df"), Leaf("Sig."),
                     Group(level + "% Confidence Interval", Json::array({Leaf("Lower Bound"), Leaf("Upper Bound")}))});
    dimensions.push_back(std::move(statDim));
    table["dimensions"] = std::move(dimensions);

    Json cells = Json::array();
    if (subjectsValid) {
      std::size_t subject = 0;
      for (const GLMMEBLUPStat* pStat : rows) {
        while (subject < subjects.size() && subjects[subject] != pStat->GetSubjectValues()) ++subject;
        const int si = static_cast<int>(subject);
        const int col = pStat->GetColumn();
        if (subject >= subjects.size() || col < 0 || col >= static_cast<int>(params.size())) continue;
        cells.push_back(Cell(si, col, 0, withSubject, pStat->GetPrediction(), "Coefficient"));
        cells.push_back(Cell(si, col, 1, withSubject, pStat->GetStdError(), "CoefficientSE"));
        cells.push_back(Cell(si, col, 2, withSubject, pStat->GetTStat(), "GeneralStat"));
        cells.push_back(Cell(si, col, 3, withSubject, pStat->GetDF(), "GeneralStat"));
        cells.push_back(Cell(si, col, 4, withSubject, pStat->GetSig(), "Significance"));
        cells.push_back(Cell(si, col, 5, withSubject, pStat->GetLowerBound(), "Coefficient"));
        cells.push_back(Cell(si, col, 6, withSubject, pStat->GetUpperBound(), "Coefficient"));
      }
    }
    table["cells"] = std::move(cells);
    tables.push_back(std::move(table));
  }

  Json document;
  document["glmm"]["RandomEffectsParameters"]["tables"] = std::move(tables);
  if (!fpStats->GetCustomTestStats().empty()) document["glmm"]["CustomTests"] = CustomTests(fpStats->GetCustomTestStats());
  if (!s.GetTargetSpec().IsLinear()) document["glmm"]["Target"] = Target(s, varList, *fpStats);
  os << document.dump(1) << '\n';
  if (!os) return MCStatus(MCCommon_850::MC_OUTPUT_FILE_ERROR, false);
  return MCStatus();
}

}  // namespace MCGLMM_850
