#pragma once

#include <memory>
#include <string>
#include <vector>

#include "results/GNLMOutputStats.h"

class BpCategory;
class BpCellText;
class BpComposite;
class BpDimension;
class BpHeading;
class BpPivotTable;
class BpProcedure;
class ZORV_DataSource;

// The model viewer's tables of estimates: the tests of the fixed effects,
// the fixed coefficients, the covariance matrices of the random effects and
// the covariance parameters. Where the model says that covariance
// parameters were not estimated (the messages kGLMM_C8 and kGLMM_C9), they
// are shown as the constants they were fixed at, without the columns that
// have no meaning for a constant.
class GNLMParamEstimatesOutput {
 public:
  GNLMParamEstimatesOutput(BpProcedure* pProcedure, ZORV_DataSource* pDataSource, const GNLMOutputStats* pOutputStats);

  // Tests of the corrected model and of each fixed effect.
  void DisplayFixedEffectsTable();
  // The fixed coefficients: one set, or a set per category of a nominal
  // target.
  void DisplayParamEstimTable();
  void displayFixedParamEstimTable(BpHeading* pHeading, const GNLMOutputStats::ParamEstimData& set);
  void displayFixedParamEstimTable(BpHeading* pHeading, const std::vector<GNLMOutputStats::ParamEstimData>& sets);
  // The covariance matrix of each random block, under a heading of their
  // own.
  void DisplayRandomEffectCovarTables();
  void DisplayRandomEffectCovarTable(BpHeading* pHeading, const GNLMOutputStats::RandEffCovarMatData& matrices,
                                     int block);
  // The summary of the covariance parameters, then the residual's and each
  // random block's, then a warning for each estimated covariance matrix
  // that is not positive definite.
  void DisplayCovarParamTable();
  void ShowIndefiniteMatrices() const;
  void DisplayResidualParamEstimTable(BpHeading* pHeading, const std::vector<GNLMOutputStats::ParamEstimData>& sets);
  void DisplayRandomParamEstimTable(BpHeading* pHeading, const std::vector<GNLMOutputStats::ParamEstimData>& sets,
                                    int block, int nBlocks);
  // The rows of one set of covariance parameters; `block` is -1 for the
  // residual.
  void DisplayRandomParamEstimCommon(BpDimension& rows, BpDimension& cols, const GNLMOutputStats::ParamEstimData& set,
                                     int block);
  // The labels of effects: the fields' variable names joined as a term is
  // written; an effect without fields is the intercept. Fills `labels`
  // only when it is empty.
  void CreateEffectMap(const std::vector<GNLMOutputStats::ModelEffectData>& effects,
                       std::vector<std::string>& labels) const;
  // The table of effect estimates has nothing to show in this version.
  void DisplayEffectEstimTable();

 private:
  // How a set of covariance parameters is shown, by the model's messages.
  enum ConstantCase { ESTIMATED, FIXED_SCALE, FIXED_AT_ZERO };

  const GNLMOutputStats::RandomSpecsData& RandomBlock(int block) const;
  BpPivotTable FixedCoefficientsTable(BpHeading* pHeading) const;
  void AddModelTerm(BpDimension& terms, const GNLMOutputStats::ParamStatsData& param, bool thresholds) const;
  void AddCoefficientCells(BpDimension& statistics, const GNLMOutputStats::ParamStatsData& param) const;
  void AddDistributionCaption(BpPivotTable& table) const;
  BpComposite CovarianceCaption(GNLMOutputStats::EnumCovarianceType type,
                                const GNLMOutputStats::ModelEffectData& subjects, bool notes) const;
  void AddCovarianceNotes(BpComposite& caption) const;
  BpComposite GroupLabel(const GNLMOutputStats::SimpleSubjectData& group) const;
  std::unique_ptr<BpCellText> SegmentsName(const GNLMOutputStats::RandomSpecsData& spec) const;
  ConstantCase ConstantCaseOf(int block) const;
  void AddCovarianceCells(BpDimension& cols, const GNLMOutputStats::ParamStatsData& param, ConstantCase constant) const;

  double fSysmis;
  BpProcedure* fpProcedure;
  ZORV_DataSource* fpDataSource;
  const GNLMOutputStats* fpOutputStats;
  const GNLMOutputStats::BuildSettingsData* fpBuildSettings;
  std::vector<std::string> fvEffectLabels;
};
