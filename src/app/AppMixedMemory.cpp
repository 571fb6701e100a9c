#include "app/AppMixedMemory.h"

#include <algorithm>

#include "app/AppMixedCommand.h"
#include "base/MIXCommandLayout.h"
#include "host/data/ZORV_DataSource.h"
#include "host/parser/ParserMemory.h"

namespace {

namespace L = MIXCommandLayout;

// A slot written as the kind it holds: a double only into a REAL slot.
void Put(ParserMemory& memory, L::Slot<L::REAL> slot, double value) { memory.SetNumericReal(slot, value); }

template <L::Kind K>
void Put(ParserMemory& memory, L::Slot<K> slot, INTEGER value) {
  static_assert(K != L::REAL, "a REAL slot holds a double");
  memory.SetNumericInteger(slot, value);
}

void Put(ParserMemory& memory, L::Text field, const std::string& text) {
  memory.SetCharacterText(field.fOffset, field.fBytes, text);
}

// The reserved first word, for lists whose rows have no words.
const INTEGER kReserved = 1;

std::vector<INTEGER> Positions(const std::vector<int>& columns) {
  std::vector<INTEGER> positions;
  for (int column : columns) positions.push_back(static_cast<INTEGER>(column) + 1);
  return positions;
}

INTEGER Rows(ParserMemory& memory, const std::vector<const AppMixedCommand::TermData*>& terms) {
  if (terms.empty()) return 0;
  std::vector<INTEGER> words;
  for (const AppMixedCommand::TermData* term : terms) words.insert(words.end(), term->fvWords.begin(), term->fvWords.end());
  return words.empty() ? kReserved : memory.AddIntegers(words);
}

INTEGER WriteContrast(const AppMixedCommand::ContrastData& test, ParserMemory& memory) {
  INTEGER fixedCounts = 0;
  INTEGER randomCounts = 0;
  if (!test.fbAllValues) {
    std::vector<INTEGER> counts(test.fvFixedCounts.begin(), test.fvFixedCounts.end());
    fixedCounts = memory.AddIntegers(counts);
    counts.assign(test.fvRandomCounts.begin(), test.fvRandomCounts.end());
    randomCounts = memory.AddIntegers(counts);
  }
  std::vector<double> values;
  for (const std::vector<double>& row : test.fvRows) values.insert(values.end(), row.begin(), row.end());
  INTEGER valuesAt = values.empty() ? kReserved : memory.AddReals(values);
  INTEGER labelAt = memory.AddText(test.fLabel);
  INTEGER kAt = memory.AddReals(test.fvK);

  std::vector<double> record(L::CONTRAST_WORDS, 0.0);
  record[L::CONTRAST_ALL_VALUES] = test.fbAllValues ? 1.0 : 0.0;
  record[L::CONTRAST_N_ROWS] = static_cast<double>(test.fvRows.size());
  if (test.fbAllValues) {
    record[L::CONTRAST_FIXED] = test.fvFixedCounts.empty() ? 0.0 : test.fvFixedCounts[0];
    record[L::CONTRAST_RANDOM] = test.fvRandomCounts.empty() ? 0.0 : test.fvRandomCounts[0];
  } else {
    record[L::CONTRAST_FIXED] = static_cast<double>(fixedCounts);
    record[L::CONTRAST_RANDOM] = static_cast<double>(randomCounts);
  }
  record[L::CONTRAST_VALUES] = static_cast<double>(valuesAt);
  record[L::CONTRAST_LABEL_LENGTH] = static_cast<double>(test.fLabel.size());
  record[L::CONTRAST_LABEL] = static_cast<double>(labelAt);
  record[L::CONTRAST_K] = static_cast<double>(kAt);
  return memory.AddReals(record);
}

INTEGER WriteMeans(const AppMixedCommand::MeansData& means, const AppMixedCommand& command,
                   const ZORV_DataSource& data, ParserMemory& memory) {
  std::vector<INTEGER> factors;
  for (int place : means.fvFactors) factors.push_back(static_cast<INTEGER>(place) + 1);
  INTEGER factorsAt = memory.AddIntegers(factors);

  std::vector<INTEGER> textAt(means.fvbHeld.size(), 0);
  for (std::size_t c = 0; c < means.fvbHeld.size(); ++c) {
    if (means.fvbHeld[c]) textAt[c] = memory.AddText(means.fvHeldText[c]);
  }
  std::vector<double> block;
  for (std::size_t c = 0; c < means.fvbHeld.size(); ++c) {
    double words[L::COVARIATE_WORDS] = {};
    words[L::COVARIATE_HELD] = means.fvbHeld[c] ? -1.0 : 0.0;
    words[L::COVARIATE_VALUE] = means.fvbHeld[c] ? means.fvHeldValue[c] : 0.0;
    words[L::COVARIATE_TEXT_LENGTH] = means.fvbHeld[c] ? static_cast<double>(means.fvHeldText[c].size()) : 0.0;
    words[L::COVARIATE_TEXT] = static_cast<double>(textAt[c]);
    block.insert(block.end(), words, words + L::COVARIATE_WORDS);
  }
  INTEGER blockAt = memory.AddReals(block);

  INTEGER referenceAt = 0;
  if (means.fReference == AppMixedCommand::REFERENCE_TEXT) {
    // The text is read as a value of the factor: it is blank padded to at
    // least the factor's width.
    std::size_t width = 0;
    if (means.fCompare > 0) {
      int factor = command.fvFactors[static_cast<std::size_t>(means.fvFactors[static_cast<std::size_t>(means.fCompare - 1)])];
      const ZORV_Variable* variable = data.GetVariable(factor);
      if (variable != nullptr && variable->GetType() > 0) width = static_cast<std::size_t>(variable->GetType());
    }
    referenceAt = memory.AddText(means.fReferenceText, std::max<std::size_t>(width, 8));
  }

  std::vector<double> record(L::MEANS_WORDS, 0.0);
  record[L::MEANS_N_FACTORS] = static_cast<double>(means.fvFactors.size());
  record[L::MEANS_FACTORS] = static_cast<double>(factorsAt);
  record[L::MEANS_COMPARE] = static_cast<double>(means.fCompare);
  record[L::MEANS_COVARIATES] = static_cast<double>(blockAt);
  record[L::MEANS_ADJUST] = static_cast<double>(means.fAdjust);
  record[L::MEANS_REFERENCE_KIND] = static_cast<double>(means.fReference);
  if (means.fReference == AppMixedCommand::REFERENCE_NUMBER) record[L::MEANS_REFERENCE] = means.fReferenceNumber;
  if (means.fReference == AppMixedCommand::REFERENCE_TEXT) {
    record[L::MEANS_REFERENCE] = static_cast<double>(means.fReferenceText.size());
    record[L::MEANS_REFERENCE_TEXT] = static_cast<double>(referenceAt);
  }
  return memory.AddReals(record);
}

}  // namespace

void AppMixedMemory::Write(const AppMixedCommand& command, const ZORV_DataSource& data, ParserMemory& memory) {
  memory.Clear();
  memory.AddInteger(0);

  // Settings.
  Put(memory, L::CONFIDENCE, command.fConfidence);
  Put(memory, L::HESSIAN_CRITERION, command.fHessianConvergence);
  Put(memory, L::LOGLIKELIHOOD_CRITERION, command.fLogLikelihoodConvergence);
  Put(memory, L::PARAMETER_CRITERION, command.fParameterConvergence);
  Put(memory, L::SINGULAR, command.fSingular);
  Put(memory, L::TARGET, command.fTarget + 1);
  Put(memory, L::CRITERIA_FORMAT, command.fCriteriaFormat.Packed());
  Put(memory, L::ESTIMATES_FORMAT, command.fEstimatesFormat.Packed());
  Put(memory, L::HESSIAN_KIND, command.fHessianKind);
  Put(memory, L::HISTORY_STEP, command.fHistoryStep);
  Put(memory, L::SCORING, command.fScoring);
  Put(memory, L::LOGLIKELIHOOD_KIND, command.fLogLikelihoodKind);
  Put(memory, L::METHOD, command.fbReml ? 2 : 1);
  Put(memory, L::ITERATIONS, command.fIterations);
  Put(memory, L::HALVING, command.fHalving);
  Put(memory, L::PARAMETER_KIND, command.fParameterKind);
  Put(memory, L::TEST_TYPE, command.fTestType);
  Put(memory, L::INTERCEPT, command.fbIntercept ? 1 : 0);
  Put(memory, L::INCLUDE_USER_MISSING, command.fbIncludeUserMissing ? 1 : 0);
  Put(memory, L::SHOW_CASES, command.fbShowCases ? 1 : 0);
  Put(memory, L::SHOW_ESTIMATE_CORRELATIONS, command.fbShowEstimateCorrelations ? 1 : 0);
  Put(memory, L::SHOW_ESTIMATE_COVARIANCES, command.fbShowEstimateCovariances ? 1 : 0);
  Put(memory, L::SHOW_COVARIANCE_TESTS, command.fbShowCovarianceTests ? 1 : 0);
  Put(memory, L::SHOW_VARIABLES, command.fbShowVariables ? 1 : 0);
  Put(memory, L::SHOW_G, command.fbShowG ? 1 : 0);
  Put(memory, L::SHOW_HISTORY, command.fbShowHistory ? 1 : 0);
  Put(memory, L::SHOW_L, command.fbShowL ? 1 : 0);
  Put(memory, L::SHOW_R, command.fbShowR ? 1 : 0);
  Put(memory, L::SHOW_ESTIMATES, command.fbShowEstimates ? 1 : 0);
  Put(memory, L::SCALE_WEIGHT, command.fScaleWeight >= 0 ? command.fScaleWeight + 1 : 0);

  // The target's distribution and link; all zero for the linear model.
  Put(memory, L::DISTRIBUTION, command.fDistribution);
  Put(memory, L::LINK, command.fLink + 1);
  Put(memory, L::LINK_POWER, command.fLinkPower);
  Put(memory, L::TRIALS, command.fTrials >= 0 ? command.fTrials + 1 : 0);
  Put(memory, L::TRIALS_VALUE, command.fTrialsValue);
  Put(memory, L::REFERENCE_KIND, command.fReferenceKind);
  Put(memory, L::REFERENCE_VALUE, command.fReferenceValue);
  Put(memory, L::OFFSET, command.fOffset >= 0 ? command.fOffset + 1 : 0);
  Put(memory, L::FIT_METHOD, command.fFitMethod);
  Put(memory, L::QUADRATURE_POINTS, command.fQuadraturePoints);
  Put(memory, L::COVARIANCE_KIND, command.fbRobust ? 1 : 0);

  // Predictors.
  Put(memory, L::N_FACTORS, static_cast<INTEGER>(command.fvFactors.size()));
  Put(memory, L::FACTORS, memory.AddIntegers(Positions(command.fvFactors)));
  Put(memory, L::N_COVARIATES, static_cast<INTEGER>(command.fvCovariates.size()));
  Put(memory, L::COVARIATES, memory.AddIntegers(Positions(command.fvCovariates)));

  // Fixed terms, the intercept's row first when the model has one.
  AppMixedCommand::TermData intercept;
  intercept.fvWords.assign(command.fvFactors.size() + command.fvCovariates.size(), 0);
  std::vector<const AppMixedCommand::TermData*> fixed;
  if (command.fbIntercept) fixed.push_back(&intercept);
  for (const AppMixedCommand::TermData& term : command.fvFixedTerms) fixed.push_back(&term);
  Put(memory, L::N_FIXED_TERMS, static_cast<INTEGER>(fixed.size()));
  Put(memory, L::FIXED_TERMS, Rows(memory, fixed));

  // Random blocks. Term counts and the prediction flag are kept per block;
  // covariance codes and subjects at the place of each block's first term
  // in the list of all random terms (here at every term of the block).
  std::vector<const AppMixedCommand::TermData*> random;
  std::vector<INTEGER> termCounts, predict, covariances, subjectCounts, subjectLists;
  std::vector<int> allSubjects;
  for (const AppMixedCommand::RandomBlockData& block : command.fvRandomBlocks) {
    termCounts.push_back(static_cast<INTEGER>(block.fvTerms.size()));
    predict.push_back(block.fbPredict ? 1 : 0);
    INTEGER list = memory.AddIntegers(Positions(block.fvSubjects));
    for (const AppMixedCommand::TermData& term : block.fvTerms) {
      random.push_back(&term);
      covariances.push_back(block.fCovariance);
      subjectCounts.push_back(static_cast<INTEGER>(block.fvSubjects.size()));
      subjectLists.push_back(list);
    }
    for (int subject : block.fvSubjects) {
      if (std::find(allSubjects.begin(), allSubjects.end(), subject) == allSubjects.end()) allSubjects.push_back(subject);
    }
  }
  Put(memory, L::N_RANDOM_BLOCKS, static_cast<INTEGER>(command.fvRandomBlocks.size()));
  Put(memory, L::N_RANDOM_TERMS, static_cast<INTEGER>(random.size()));
  Put(memory, L::RANDOM_TERMS, Rows(memory, random));
  Put(memory, L::BLOCK_TERM_COUNTS, memory.AddIntegers(termCounts));
  Put(memory, L::BLOCK_PREDICT, memory.AddIntegers(predict));
  Put(memory, L::BLOCK_COVARIANCES, memory.AddIntegers(covariances));
  Put(memory, L::BLOCK_SUBJECT_COUNTS, memory.AddIntegers(subjectCounts));
  Put(memory, L::BLOCK_SUBJECT_LISTS, memory.AddIntegers(subjectLists));
  Put(memory, L::N_RANDOM_SUBJECTS, static_cast<INTEGER>(allSubjects.size()));
  Put(memory, L::RANDOM_SUBJECTS, memory.AddIntegers(Positions(allSubjects)));

  // The residual block.
  Put(memory, L::N_REPEATED, static_cast<INTEGER>(command.fvRepeated.size()));
  Put(memory, L::REPEATED, memory.AddIntegers(Positions(command.fvRepeated)));
  Put(memory, L::N_REPEATED_SUBJECTS, static_cast<INTEGER>(command.fvRepeatedSubjects.size()));
  Put(memory, L::REPEATED_SUBJECTS, memory.AddIntegers(Positions(command.fvRepeatedSubjects)));
  Put(memory, L::N_COORDINATES, static_cast<INTEGER>(command.fvCoordinates.size()));
  Put(memory, L::COORDINATES, memory.AddIntegers(Positions(command.fvCoordinates)));
  Put(memory, L::REPEATED_COVARIANCE, command.fRepeatedCovariance);

  // Saved variables.
  Put(memory, L::N_SAVES, static_cast<INTEGER>(command.fvSaves.size()));
  for (std::size_t i = 0; i < command.fvSaves.size() && i < L::SAVE_SLOTS; ++i) {
    const int slot = static_cast<int>(i);
    Put(memory, L::SAVE_KINDS.At(slot), command.fvSaves[i].fKind + 1);
    Put(memory, L::SAVE_NAMES.At(slot), memory.AddText(command.fvSaves[i].fName, L::SAVE_NAME_BYTES));
  }

  // Custom tests and marginal means, as lists of records.
  std::vector<INTEGER> records;
  for (const AppMixedCommand::ContrastData& test : command.fvContrasts) records.push_back(WriteContrast(test, memory));
  Put(memory, L::N_CONTRASTS, static_cast<INTEGER>(records.size()));
  Put(memory, L::CONTRAST_LIST, memory.AddList(records));
  records.clear();
  for (const AppMixedCommand::MeansData& means : command.fvMeans) records.push_back(WriteMeans(means, command, data, memory));
  Put(memory, L::N_MEANS, static_cast<INTEGER>(records.size()));
  Put(memory, L::MEANS_LIST, memory.AddList(records));

  // Documents.
  Put(memory, L::FILE_KIND, command.fFileKind);
  Put(memory, L::MODEL_FILE, command.fModelFile);
  Put(memory, L::STATJSON_FILE, command.fStatJsonFile);
  Put(memory, L::STATXML_FILE, command.fStatXmlFile);
}
