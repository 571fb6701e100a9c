#pragma once

#include <string>
#include <vector>

#include "host/data/ZORV_Format.h"
#include "host/parser/ParserWords.h"

// A GLMIXFIT command as read and checked, before it is laid out in the
// parser's memory. Variables are dataset columns (0-based); defaults are
// those of a command without the setting.
struct AppMixedCommand {
  // A model term: one word per predictor, the factors first (in the order
  // of fvFactors) then the covariates. A factor's word is its nesting level
  // (0 absent, 1 outermost); a covariate's word is how often it occurs,
  // negative when it stands in a term nested within factors. All zeros is
  // the intercept.
  struct TermData {
    std::vector<INTEGER> fvWords;
    std::string fText;  // as the user wrote it, for messages
  };

  struct RandomBlockData {
    std::vector<TermData> fvTerms;    // at least one
    std::vector<int> fvSubjects;      // crossed subject variables
    int fCovariance = 0;              // covariance keyword code, 0 not given
    bool fbPredict = false;           // compute the predicted random effects
  };

  // A custom test. In the per-effect form the counts say how many values a
  // row gives each fixed term (the intercept's first when the model has
  // one) and each random term of all blocks; in the all-values form they
  // hold one number each, the values of a row's fixed and random part.
  struct ContrastData {
    bool fbAllValues = false;
    std::string fLabel;  // empty: no label
    std::vector<int> fvFixedCounts;
    std::vector<int> fvRandomCounts;
    std::vector<std::vector<double>> fvRows;  // each: fixed values, then random values
    std::vector<double> fvK;                  // empty, or one per row
  };

  // The reference of a comparison in a marginal means request.
  enum Reference {
    REFERENCE_NONE = 0,    // every pair of levels (or no comparison)
    REFERENCE_NUMBER = 1,  // a value of a numeric factor
    REFERENCE_TEXT = 2,    // a value of a string factor
    REFERENCE_FIRST = 3,
    REFERENCE_LAST = 4,
    REFERENCE_MEAN = 5  // the mean of all levels: deviation contrasts
  };

  struct MeansData {
    std::vector<int> fvFactors;  // places in fvFactors (0-based); empty: the overall mean
    int fCompare = 0;            // 1-based place in the table's factors; 0 none
    int fAdjust = 1;             // 1 none (LSD), 2 sequential Bonferroni, 3 sequential Sidak
    Reference fReference = REFERENCE_NONE;
    double fReferenceNumber = 0.0;
    std::string fReferenceText;
    // Per covariate of the model: held at a value, or (not held) at its mean.
    std::vector<bool> fvbHeld;
    std::vector<double> fvHeldValue;
    std::vector<std::string> fvHeldText;  // the value as written
  };

  // A variable to save: its kind (0 fixed predicted value, 1 predicted
  // value, 2 residual, 3 standard error of the fixed prediction, 4 that of
  // the prediction, 5 degrees of freedom of the fixed prediction, 6 those of
  // the prediction) and the new variable's name.
  struct SaveData {
    int fKind = 0;
    std::string fName;
  };

  // Kinds of the first output file: which file it is and who named it.
  enum FileKind { FILE_PARAMETERS_USER = 1, FILE_MODEL_USER = 2, FILE_PARAMETERS_HOST = 3, FILE_MODEL_HOST = 4 };

  int fTarget = -1;
  std::vector<int> fvFactors;
  std::vector<int> fvCovariates;

  std::vector<TermData> fvFixedTerms;  // without the intercept
  bool fbIntercept = true;

  std::vector<RandomBlockData> fvRandomBlocks;

  std::vector<int> fvRepeated;          // crossed repeated measures variables
  std::vector<int> fvRepeatedSubjects;  // crossed subject variables
  std::vector<int> fvCoordinates;       // spatial coordinates
  int fRepeatedCovariance = 0;

  bool fbReml = true;
  double fConfidence = 95.0;
  int fIterations = 100;
  int fHalving = 5;
  int fScoring = 1;
  double fSingular = 1e-12;
  double fParameterConvergence = 1e-6;
  double fLogLikelihoodConvergence = 0.0;
  double fHessianConvergence = 0.0;
  // 1 relative, 2 absolute.
  int fParameterKind = 1;
  int fLogLikelihoodKind = 2;
  int fHessianKind = 2;

  bool fbIncludeUserMissing = false;
  int fTestType = 3;  // 1 or 3

  bool fbShowEstimates = false;
  bool fbShowEstimateCovariances = false;
  bool fbShowEstimateCorrelations = false;
  bool fbShowCases = false;
  bool fbShowCovarianceTests = false;
  bool fbShowG = false;
  bool fbShowR = false;
  bool fbShowL = false;
  bool fbShowVariables = false;
  bool fbShowHistory = false;
  int fHistoryStep = 1;

  ZORV_Format fCriteriaFormat = ZORV_Format(ZORV_Format::F, 40, 3);
  ZORV_Format fEstimatesFormat = ZORV_Format(ZORV_Format::F, 40, 4);

  int fScaleWeight = -1;

  // The target's distribution and link and how a generalized model is
  // fitted (our extension), in the codes of GLMMConst_850: a normal target
  // with the identity link, the default, is the linear mixed model.
  int fDistribution = 0;      // TargetDistType
  int fLink = -1;             // LinkType; -1 the distribution's default
  double fLinkPower = 0.0;    // the exponent of the POWER link
  int fTrials = -1;           // the trials variable, -1 none
  double fTrialsValue = 0.0;  // a fixed number of trials, 0 none
  int fReferenceKind = 0;     // ReferenceCategoryType: 0 last, 1 first, 2 a value
  double fReferenceValue = 0.0;
  int fOffset = -1;           // the offset variable, -1 none
  int fFitMethod = 0;         // GeneralizedFitMethod
  int fQuadraturePoints = 0;  // with the quadrature method
  bool fbRobust = false;      // robust covariance of the fixed effects

  std::vector<ContrastData> fvContrasts;
  std::vector<MeansData> fvMeans;
  std::vector<SaveData> fvSaves;

  FileKind fFileKind = FILE_MODEL_HOST;
  std::string fModelFile;  // the model or parameter file
  std::string fStatXmlFile;
  std::string fStatJsonFile;

  // Random terms of all blocks, one after the other.
  int CountRandomTerms() const;
};
