#include "OutputFixture.h"

#include <algorithm>
#include <functional>

#include "base/CommandDefaults.h"
#include "base/MixExports.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"
#include "host/io/DataFileLoader.h"
#include "run/MixDriver.h"

namespace output_test {

namespace {

void Walk(const OmHeading& heading, const std::function<void(const OmItem&)>& visit) {
  for (const OmItem& item : heading.fvItems) {
    visit(item);
    if (item.fKind == OmItem::HEADING) Walk(*item.fpHeading, visit);
  }
}

}  // namespace

OutputFixture::OutputFixture() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed") {
  ZORV_Session::Current().BeginCommand();
  ZORV_Session::Current().SetVariableDisplay(ZORV_Session::LABELS, ZORV_Session::LABELS);
  ZORV_Session::Current().SetValueDisplay(ZORV_Session::LABELS, ZORV_Session::LABELS);
  fMemory.AddInteger(0);
}

OutputFixture::~OutputFixture() {
  fFactory.reset();
  fOutput.reset();
  fSpecs.reset();
  exposemix_(0, 0);
  ZORV_Session::Current().BeginCommand();
}

void OutputFixture::Load(const std::string& name) {
  DataFileLoader::Load(std::string(GLMIX_SOURCE_DIR) + "/examples/data/" + name + ".csv", fData);
}

int OutputFixture::Column(const std::string& name) const {
  const int column = fData.FindVarIndex(name.c_str(), static_cast<int>(name.size()));
  EXPECT_GE(column, 0) << name;
  return column;
}

void OutputFixture::Command(const std::string& target, const std::vector<std::string>& factors,
                            const std::vector<std::string>& covariates,
                            const std::vector<std::vector<INTEGER>>& fixedTerms,
                            const std::vector<RandomBlock>& blocks, bool intercept) {
  auto positions = [this](const std::vector<std::string>& names) {
    std::vector<INTEGER> words;
    for (const std::string& name : names) words.push_back(Column(name) + 1);
    return words;
  };
  const std::size_t rowLength = factors.size() + covariates.size();
  auto rows = [this, rowLength](const std::vector<std::vector<INTEGER>>& terms) -> INTEGER {
    std::vector<INTEGER> words;
    for (std::vector<INTEGER> row : terms) {
      row.resize(rowLength, 0);
      words.insert(words.end(), row.begin(), row.end());
    }
    if (terms.empty()) return 0;
    // Rows without words point at the reserved first word.
    return words.empty() ? 1 : fMemory.AddIntegers(words);
  };

  base_test::WriteDefaultSettings(fMemory, Column(target));
  fMemory.SetNumericInteger(L::INTERCEPT, intercept ? 1 : 0);

  fMemory.SetNumericInteger(L::N_FACTORS, static_cast<INTEGER>(factors.size()));
  fMemory.SetNumericInteger(L::FACTORS, fMemory.AddIntegers(positions(factors)));
  fMemory.SetNumericInteger(L::N_COVARIATES, static_cast<INTEGER>(covariates.size()));
  fMemory.SetNumericInteger(L::COVARIATES, fMemory.AddIntegers(positions(covariates)));

  std::vector<std::vector<INTEGER>> fixed;
  if (intercept) fixed.push_back({});
  fixed.insert(fixed.end(), fixedTerms.begin(), fixedTerms.end());
  fMemory.SetNumericInteger(L::N_FIXED_TERMS, static_cast<INTEGER>(fixed.size()));
  fMemory.SetNumericInteger(L::FIXED_TERMS, rows(fixed));

  std::vector<std::vector<INTEGER>> randomTerms;
  std::vector<INTEGER> termCounts, predict, covariances, subjectCounts, subjectLists;
  std::vector<std::string> allSubjects;
  for (const RandomBlock& block : blocks) {
    termCounts.push_back(static_cast<INTEGER>(block.fvTerms.size()));
    predict.push_back(block.fbPredict ? 1 : 0);
    const INTEGER list = fMemory.AddIntegers(positions(block.fvSubjects));
    for (const std::vector<INTEGER>& term : block.fvTerms) {
      randomTerms.push_back(term);
      covariances.push_back(0);
      subjectCounts.push_back(static_cast<INTEGER>(block.fvSubjects.size()));
      subjectLists.push_back(list);
    }
    for (const std::string& subject : block.fvSubjects) {
      if (std::find(allSubjects.begin(), allSubjects.end(), subject) == allSubjects.end()) {
        allSubjects.push_back(subject);
      }
    }
  }
  fMemory.SetNumericInteger(L::N_RANDOM_BLOCKS, static_cast<INTEGER>(blocks.size()));
  fMemory.SetNumericInteger(L::N_RANDOM_TERMS, static_cast<INTEGER>(randomTerms.size()));
  fMemory.SetNumericInteger(L::RANDOM_TERMS, rows(randomTerms));
  fMemory.SetNumericInteger(L::BLOCK_TERM_COUNTS, fMemory.AddIntegers(termCounts));
  fMemory.SetNumericInteger(L::BLOCK_PREDICT, fMemory.AddIntegers(predict));
  fMemory.SetNumericInteger(L::BLOCK_COVARIANCES, fMemory.AddIntegers(covariances));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, fMemory.AddIntegers(subjectCounts));
  fMemory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, fMemory.AddIntegers(subjectLists));
  fMemory.SetNumericInteger(L::N_RANDOM_SUBJECTS, static_cast<INTEGER>(allSubjects.size()));
  fMemory.SetNumericInteger(L::RANDOM_SUBJECTS, fMemory.AddIntegers(positions(allSubjects)));
}

void OutputFixture::RunDriver() {
  exposemix_(fMemory.GetNumericAddress(), fMemory.GetCharacterAddress());
  MixDriver(fMemory.GetCommand(), fProcedure, fData);
}

bool OutputFixture::Run() {
  exposemix_(fMemory.GetNumericAddress(), fMemory.GetCharacterAddress());
  fSpecs.emplace(fMemory.GetCommand(), fData);
  if (!fSpecs->SetMixedSpecs()) return false;
  fSpecs->CompleteSpecs();
  if (fSpecs->GetCompSettingsPtr() == nullptr) return false;
  fOutput.emplace(&*fSpecs, fData, &fProcedure, nullptr);
  fFactory.emplace(&*fSpecs, fData, &fProcedure);
  fOutput->SetFactory(&*fFactory);
  fOutput->AddToNotesTable();
  const bool splitFile = fFactory->GetInputAdapter()->GetSplitFile();

  while (fFactory->StartNewSplit(true)) {
    const bool pass = fFactory->ProcedureDataPass(true);
    if (pass) {
      if (!fFactory->CompleteMetaData() && !splitFile) return false;
    } else if (!splitFile) {
      return false;
    }
  }
  if (!fFactory->CreateParamAggregators()) return false;
  if (!fFactory->PrepareComponentRun(true)) return false;
  while (fFactory->StartNewSplit(true)) fFactory->RunGLMMComponent();
  if (!fFactory->AggregateParameters()) return false;
  if (fData.FatalError()) return false;
  if (!splitFile) return true;
  if (!fFactory->PrepareComponentRun(true)) return false;
  return NextSplit();
}

bool OutputFixture::NextSplit() {
  while (fFactory->StartNewSplit(true)) {
    if (fFactory->ProcedureDataPass(false)) return true;
  }
  return false;
}

std::vector<const OmTable*> OutputFixture::Tables() const {
  std::vector<const OmTable*> tables;
  Walk(fDocument.fRoot, [&tables](const OmItem& item) {
    if (item.fKind == OmItem::TABLE) tables.push_back(item.fpTable.get());
  });
  return tables;
}

std::vector<const OmTable*> OutputFixture::TablesOf(const std::string& subType) const {
  std::vector<const OmTable*> tables;
  for (const OmTable* table : Tables()) {
    if (table->fSubType == subType) tables.push_back(table);
  }
  return tables;
}

std::vector<std::string> OutputFixture::Headings() const {
  std::vector<std::string> texts;
  Walk(fDocument.fRoot.fvItems[0].fpHeading ? *fDocument.fRoot.fvItems[0].fpHeading : fDocument.fRoot,
       [&texts](const OmItem& item) {
         if (item.fKind == OmItem::HEADING) texts.push_back(item.fpHeading->fText);
       });
  return texts;
}

std::vector<std::string> OutputFixture::Messages() const {
  std::vector<std::string> texts;
  Walk(fDocument.fRoot, [&texts](const OmItem& item) {
    if (item.fKind == OmItem::MESSAGE) texts.push_back(item.fpMessage->fText);
  });
  return texts;
}

std::vector<std::string> OutputFixture::LeafLabels(const OmTable& table, int dimension) {
  std::vector<std::string> labels;
  for (const auto& path : table.fvDimensions[static_cast<std::size_t>(dimension)].LeafPaths()) {
    labels.push_back(path.back()->fLabel.fText);
  }
  return labels;
}

int OutputFixture::Leaf(const OmTable& table, int dimension, const std::string& label) {
  const std::vector<std::string> labels = LeafLabels(table, dimension);
  for (std::size_t i = 0; i < labels.size(); ++i) {
    if (labels[i] == label) return static_cast<int>(i);
  }
  return -1;
}

const OmCell* OutputFixture::Cell(const OmTable& table, const std::string& row, const std::string& column) {
  const int r = Leaf(table, 0, row);
  const int c = Leaf(table, 1, column);
  if (r < 0 || c < 0) return nullptr;
  return table.CellAt({r, c});
}

std::vector<std::string> OutputFixture::CellNotes(const OmTable& table, const std::string& row,
                                                  const std::string& column) {
  std::vector<std::string> texts;
  const OmCell* cell = Cell(table, row, column);
  if (cell == nullptr) return texts;
  for (int index : cell->fContent.fvFootnotes) texts.push_back(table.fvFootnotes[static_cast<std::size_t>(index)]);
  return texts;
}

const OmTable* OutputFixture::NotesTable() const {
  const std::vector<const OmTable*> tables = TablesOf("Notes");
  return tables.empty() ? nullptr : tables.front();
}

}  // namespace output_test
