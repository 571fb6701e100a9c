#pragma once

#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "SpecsTestData.h"
#include "base/AssertText.h"
#include "base/CommandDefaults.h"
#include "base/MIXCommandLayout.h"
#include "base/MixExports.h"
#include "host/adapter/ACAInputAdapter.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "host/parser/ParserMemory.h"
#include "specs/MIXValidSpecs.h"

namespace specs_test {

using base_test::AssertText;
namespace L = MIXCommandLayout;

// A test file, the parser's memory of a command on it (by default a model
// of y with an intercept only), an output procedure that collects the
// messages, and the record read from the memory.
//
// Adding words may move the word array, and a record keeps the address it
// was read from: add every word a test needs before Read.
class SpecsFixture : public ::testing::Test {
 protected:
  SpecsFixture() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed") {
    ZORV_Session::Current().BeginCommand();
    MakeSpecsFile(fData);
    // As the parser does, the first word is reserved and zero.
    fMemory.AddInteger(0);
    SetDefaults(Y);
  }
  ~SpecsFixture() override {
    fSpecs.reset();
    exposemix_(0, 0);
    ZORV_Session::Current().BeginCommand();
  }

  // The values a command with no optional keyword gives.
  void SetDefaults(int targetColumn) { base_test::WriteDefaultSettings(fMemory, targetColumn); }

  // A list of variables: its count at one offset, and at the other the
  // position of their dictionary positions (columns + 1).
  void SetVarList(L::Slot<L::CODE> countOffset, L::Slot<L::POSITION> positionOffset, const std::vector<int>& columns) {
    std::vector<INTEGER> positions;
    for (int column : columns) positions.push_back(column + 1);
    fMemory.SetNumericInteger(countOffset, static_cast<INTEGER>(columns.size()));
    fMemory.SetNumericInteger(positionOffset, fMemory.AddIntegers(positions));
  }

  // Term rows: their count at one offset, the position of the first row at
  // the other. A row shorter than the model's predictors is zero padded.
  void SetTerms(L::Slot<L::CODE> countOffset, L::Slot<L::POSITION> positionOffset,
                const std::vector<std::vector<INTEGER>>& rows) {
    const std::size_t length =
        static_cast<std::size_t>(fMemory.GetNumericInteger(L::N_FACTORS) + fMemory.GetNumericInteger(L::N_COVARIATES));
    std::vector<INTEGER> words;
    for (std::vector<INTEGER> row : rows) {
      row.resize(length, 0);
      words.insert(words.end(), row.begin(), row.end());
    }
    if (countOffset == L::N_FIXED_TERMS) fbFixedTermsSet = true;
    fMemory.SetNumericInteger(countOffset, static_cast<INTEGER>(rows.size()));
    fMemory.SetNumericInteger(positionOffset, fMemory.AddIntegers(words));
  }

  // A file name of the character block, blank padded.
  void SetText(L::Text field, const std::string& text) { fMemory.SetCharacterText(field.fOffset, field.fBytes, text); }

  // Words in the array; returns the position of the first.
  INTEGER List(const std::vector<INTEGER>& words) { return fMemory.AddIntegers(words); }
  // The real view at a position, for records read directly.
  const LR* RealsAt(INTEGER position) { return fMemory.GetRealWords() + (position - 1); }

  // Publishes the memory and reads it into a fresh record; the result of
  // SetMixedSpecs is kept in fbRead. Without fixed terms of its own the
  // command has the intercept's row.
  MIXValidSpecs& Read() {
    if (!fbFixedTermsSet) SetTerms(L::N_FIXED_TERMS, L::FIXED_TERMS, {{}});
    fSpecs.reset();
    exposemix_(fMemory.GetNumericAddress(), fMemory.GetCharacterAddress());
    fSpecs.emplace(fMemory.GetCommand(), fData);
    fbRead = fSpecs->SetMixedSpecs();
    return *fSpecs;
  }
  // An adapter on the record's layout, standing on the first split.
  std::unique_ptr<ACAInputAdapter> OpenAdapter() {
    auto adapter = std::make_unique<ACAInputAdapter>(fSpecs->GetVarValidSpecsPtr(), fData);
    adapter->SetSplitFile(fProcedure, true, true, true);
    adapter->ChangeSplitNoIter();
    return adapter;
  }

  // Reads and completes.
  MIXValidSpecs& ReadAndComplete() {
    Read();
    fSpecs->CompleteSpecs();
    return *fSpecs;
  }

  std::vector<std::string> Messages() const {
    std::vector<std::string> texts;
    for (const OmItem& item : fDocument.fRoot.fvItems[0].fpHeading->fvItems) {
      if (item.fKind == OmItem::MESSAGE) texts.push_back(item.fpMessage->fText);
    }
    return texts;
  }

  ZORV_Dataset fData;
  ParserMemory fMemory;
  OmDocument fDocument;
  BpProcedure fProcedure;
  std::optional<MIXValidSpecs> fSpecs;
  bool fbRead = false;
  bool fbFixedTermsSet = false;
};

}  // namespace specs_test
