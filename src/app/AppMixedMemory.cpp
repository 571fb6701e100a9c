#include "app/AppMixedMemory.h"

#include <algorithm>

#include "app/AppMixedCommand.h"
#include "app/AppMixedLayout.h"
#include "host/data/ZORV_DataSource.h"
#include "host/parser/ParserMemory.h"

namespace {

typedef AppMixedLayout L;

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

  std::vector<double> record(8, 0.0);
  record[0] = test.fbAllValues ? 1.0 : 0.0;
  record[1] = static_cast<double>(test.fvRows.size());
  if (test.fbAllValues) {
    record[2] = test.fvFixedCounts.empty() ? 0.0 : test.fvFixedCounts[0];
    record[3] = test.fvRandomCounts.empty() ? 0.0 : test.fvRandomCounts[0];
  } else {
    record[2] = static_cast<double>(fixedCounts);
    record[3] = static_cast<double>(randomCounts);
  }
  record[4] = static_cast<double>(valuesAt);
  record[5] = static_cast<double>(test.fLabel.size());
  record[6] = static_cast<double>(labelAt);
  record[7] = static_cast<double>(kAt);
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
    block.push_back(means.fvbHeld[c] ? -1.0 : 0.0);
    block.push_back(means.fvbHeld[c] ? means.fvHeldValue[c] : 0.0);
    block.push_back(means.fvbHeld[c] ? static_cast<double>(means.fvHeldText[c].size()) : 0.0);
    block.push_back(static_cast<double>(textAt[c]));
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

  std::vector<double> record(9, 0.0);
  record[1] = static_cast<double>(means.fvFactors.size());
  record[2] = static_cast<double>(factorsAt);
  record[3] = static_cast<double>(means.fCompare);
  record[4] = static_cast<double>(blockAt);
  record[5] = static_cast<double>(means.fAdjust);
  record[6] = static_cast<double>(means.fReference);
  if (means.fReference == AppMixedCommand::REFERENCE_NUMBER) record[7] = means.fReferenceNumber;
  if (means.fReference == AppMixedCommand::REFERENCE_TEXT) {
    record[7] = static_cast<double>(means.fReferenceText.size());
    record[8] = static_cast<double>(referenceAt);
  }
  return memory.AddReals(record);
}

}  // namespace

void AppMixedMemory::Write(const AppMixedCommand& command, const ZORV_DataSource& data, ParserMemory& memory) {
  memory.Clear();
  memory.AddInteger(0);

  // Settings.
  memory.SetNumericReal(L::CONFIDENCE, command.fConfidence);
  memory.SetNumericReal(L::HESSIAN_CRITERION, command.fHessianConvergence);
  memory.SetNumericReal(L::LOGLIKELIHOOD_CRITERION, command.fLogLikelihoodConvergence);
  memory.SetNumericReal(L::PARAMETER_CRITERION, command.fParameterConvergence);
  memory.SetNumericReal(L::SINGULAR, command.fSingular);
  memory.SetNumericInteger(L::TARGET, command.fTarget + 1);
  memory.SetNumericInteger(L::CRITERIA_FORMAT, command.fCriteriaFormat.Packed());
  memory.SetNumericInteger(L::ESTIMATES_FORMAT, command.fEstimatesFormat.Packed());
  memory.SetNumericInteger(L::HESSIAN_KIND, command.fHessianKind);
  memory.SetNumericInteger(L::HISTORY_STEP, command.fHistoryStep);
  memory.SetNumericInteger(L::SCORING, command.fScoring);
  memory.SetNumericInteger(L::LOGLIKELIHOOD_KIND, command.fLogLikelihoodKind);
  memory.SetNumericInteger(L::METHOD, command.fbReml ? 2 : 1);
  memory.SetNumericInteger(L::ITERATIONS, command.fIterations);
  memory.SetNumericInteger(L::HALVING, command.fHalving);
  memory.SetNumericInteger(L::PARAMETER_KIND, command.fParameterKind);
  memory.SetNumericInteger(L::TEST_TYPE, command.fTestType);
  memory.SetNumericInteger(L::INTERCEPT, command.fbIntercept ? 1 : 0);
  memory.SetNumericInteger(L::INCLUDE_USER_MISSING, command.fbIncludeUserMissing ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_CASES, command.fbShowCases ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_ESTIMATE_CORRELATIONS, command.fbShowEstimateCorrelations ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_ESTIMATE_COVARIANCES, command.fbShowEstimateCovariances ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_COVARIANCE_TESTS, command.fbShowCovarianceTests ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_VARIABLES, command.fbShowVariables ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_G, command.fbShowG ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_HISTORY, command.fbShowHistory ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_L, command.fbShowL ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_R, command.fbShowR ? 1 : 0);
  memory.SetNumericInteger(L::SHOW_ESTIMATES, command.fbShowEstimates ? 1 : 0);
  memory.SetNumericInteger(L::SCALE_WEIGHT, command.fScaleWeight >= 0 ? command.fScaleWeight + 1 : 0);

  // Predictors.
  memory.SetNumericInteger(L::N_FACTORS, static_cast<INTEGER>(command.fvFactors.size()));
  memory.SetNumericInteger(L::FACTORS, memory.AddIntegers(Positions(command.fvFactors)));
  memory.SetNumericInteger(L::N_COVARIATES, static_cast<INTEGER>(command.fvCovariates.size()));
  memory.SetNumericInteger(L::COVARIATES, memory.AddIntegers(Positions(command.fvCovariates)));

  // Fixed terms, the intercept's row first when the model has one.
  AppMixedCommand::TermData intercept;
  intercept.fvWords.assign(command.fvFactors.size() + command.fvCovariates.size(), 0);
  std::vector<const AppMixedCommand::TermData*> fixed;
  if (command.fbIntercept) fixed.push_back(&intercept);
  for (const AppMixedCommand::TermData& term : command.fvFixedTerms) fixed.push_back(&term);
  memory.SetNumericInteger(L::N_FIXED_TERMS, static_cast<INTEGER>(fixed.size()));
  memory.SetNumericInteger(L::FIXED_TERMS, Rows(memory, fixed));

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
  memory.SetNumericInteger(L::N_RANDOM_BLOCKS, static_cast<INTEGER>(command.fvRandomBlocks.size()));
  memory.SetNumericInteger(L::N_RANDOM_TERMS, static_cast<INTEGER>(random.size()));
  memory.SetNumericInteger(L::RANDOM_TERMS, Rows(memory, random));
  memory.SetNumericInteger(L::BLOCK_TERM_COUNTS, memory.AddIntegers(termCounts));
  memory.SetNumericInteger(L::BLOCK_PREDICT, memory.AddIntegers(predict));
  memory.SetNumericInteger(L::BLOCK_COVARIANCES, memory.AddIntegers(covariances));
  memory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, memory.AddIntegers(subjectCounts));
  memory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, memory.AddIntegers(subjectLists));
  memory.SetNumericInteger(L::N_RANDOM_SUBJECTS, static_cast<INTEGER>(allSubjects.size()));
  memory.SetNumericInteger(L::RANDOM_SUBJECTS, memory.AddIntegers(Positions(allSubjects)));

  // The residual block.
  memory.SetNumericInteger(L::N_REPEATED, static_cast<INTEGER>(command.fvRepeated.size()));
  memory.SetNumericInteger(L::REPEATED, memory.AddIntegers(Positions(command.fvRepeated)));
  memory.SetNumericInteger(L::N_REPEATED_SUBJECTS, static_cast<INTEGER>(command.fvRepeatedSubjects.size()));
  memory.SetNumericInteger(L::REPEATED_SUBJECTS, memory.AddIntegers(Positions(command.fvRepeatedSubjects)));
  memory.SetNumericInteger(L::N_COORDINATES, static_cast<INTEGER>(command.fvCoordinates.size()));
  memory.SetNumericInteger(L::COORDINATES, memory.AddIntegers(Positions(command.fvCoordinates)));
  memory.SetNumericInteger(L::REPEATED_COVARIANCE, command.fRepeatedCovariance);

  // Saved variables.
  memory.SetNumericInteger(L::N_SAVES, static_cast<INTEGER>(command.fvSaves.size()));
  for (std::size_t i = 0; i < command.fvSaves.size() && i < L::SAVE_SLOTS; ++i) {
    const int slot = static_cast<int>(i) * 8;
    memory.SetNumericInteger(L::SAVE_KINDS + slot, command.fvSaves[i].fKind + 1);
    memory.SetNumericInteger(L::SAVE_NAMES + slot, memory.AddText(command.fvSaves[i].fName, L::SAVE_NAME_BYTES));
  }

  // Custom tests and marginal means, as lists of records.
  std::vector<INTEGER> records;
  for (const AppMixedCommand::ContrastData& test : command.fvContrasts) records.push_back(WriteContrast(test, memory));
  memory.SetNumericInteger(L::N_CONTRASTS, static_cast<INTEGER>(records.size()));
  memory.SetNumericInteger(L::CONTRAST_LIST, memory.AddList(records));
  records.clear();
  for (const AppMixedCommand::MeansData& means : command.fvMeans) records.push_back(WriteMeans(means, command, data, memory));
  memory.SetNumericInteger(L::N_MEANS, static_cast<INTEGER>(records.size()));
  memory.SetNumericInteger(L::MEANS_LIST, memory.AddList(records));

  // Documents.
  memory.SetNumericInteger(L::FILE_KIND, command.fFileKind);
  memory.SetCharacterText(L::MODEL_FILE, L::FILE_LENGTH, command.fModelFile);
  memory.SetCharacterText(L::STATJSON_FILE, L::FILE_LENGTH, command.fStatJsonFile);
  memory.SetCharacterText(L::STATXML_FILE, L::FILE_LENGTH, command.fStatXmlFile);
}
