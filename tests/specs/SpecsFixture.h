#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "ParserMemory.h"
#include "SpecsTestData.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Session.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "specs/MIXValidSpecs.h"

namespace specs_test {

// A test file, the parser's memory of a command on it (by default a model
// of y with an intercept only), an output procedure that collects the
// messages, and the record read from the memory.
class SpecsFixture : public ::testing::Test {
 protected:
  SpecsFixture() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed") {
    ZORV_Session::Current().BeginCommand();
    MakeSpecsFile(fData);
    fMemory.SetDefaults(Y);
  }
  ~SpecsFixture() override { ZORV_Session::Current().BeginCommand(); }

  // Term rows: their count at one offset, the position of the first row at
  // the other. A row shorter than the model's predictors is zero padded.
  void SetTerms(long countOffset, long positionOffset, const std::vector<std::vector<INTEGER>>& rows) {
    const std::size_t length = static_cast<std::size_t>(fMemory.GetInt(392) + fMemory.GetInt(360));
    std::vector<INTEGER> words;
    for (std::vector<INTEGER> row : rows) {
      row.resize(length, 0);
      words.insert(words.end(), row.begin(), row.end());
    }
    if (countOffset == 368) fbFixedTermsSet = true;
    fMemory.SetInt(countOffset, static_cast<INTEGER>(rows.size()));
    fMemory.SetInt(positionOffset, fMemory.AddInts(words));
  }

  // Reads the memory into a fresh record; the result of SetMixedSpecs is
  // kept in fbRead.
  // Without fixed terms of its own the command has the intercept's row.
  MIXValidSpecs& Read() {
    if (!fbFixedTermsSet) SetTerms(368, 696, {{}});
    fSpecs.reset();
    fSpecs.emplace(fMemory.Publish(), fData);
    fbRead = fSpecs->SetMixedSpecs();
    return *fSpecs;
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
