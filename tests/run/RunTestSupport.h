#pragma once

#include <gtest/gtest.h>

#include <cstdint>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>
#include <unistd.h>

#include "base/CommandDefaults.h"
#include "base/MIXCommandLayout.h"
#include "base/MixExports.h"
#include "host/data/ZORV_Dataset.h"
#include "host/data/ZORV_Format.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_StopFlag.h"
#include "host/files/BEPesRepos.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"
#include "host/parser/ParserMemory.h"
#include "run/MIXRunTrace.h"
#include "specs/MIXValidSpecs.h"

namespace run_test {

// Columns of the growth data.
enum { Y = 0, X = 1, SUBJ = 2, GRP = 3 };

// One split of the growth data: its number of cases, and whether every
// target value is missing (a split without a valid case).
struct GroupData {
  int fCases;
  bool fbTargetMissing;
};

// Repeated measures of four subjects per group: y grows with x, each
// subject has its own level, and a little deterministic noise keeps the fit
// away from a perfect one. grp is the split variable (1, 2, ...).
inline void MakeGrowthData(ZORV_Dataset& ds, const std::vector<GroupData>& groups) {
  ds.AddVariable("y", 0);
  ds.AddVariable("x", 0);
  ds.AddVariable("subj", 0);
  ds.AddVariable("grp", 0);
  ds.GetVariable(Y)->SetFormat(ZORV_Format(ZORV_Format::F, 8, 2));
  ds.GetVariable(X)->SetFormat(ZORV_Format(ZORV_Format::F, 4, 0));
  ds.GetVariable(SUBJ)->SetFormat(ZORV_Format(ZORV_Format::F, 4, 0));
  ds.GetVariable(GRP)->SetFormat(ZORV_Format(ZORV_Format::F, 4, 0));
  long total = 0;
  for (const GroupData& group : groups) total += group.fCases;
  ds.AppendCases(total);
  const double levels[] = {3.0, -1.5, 0.75, -2.25};
  std::uint32_t seed = 12345u;
  long row = 0;
  for (std::size_t g = 0; g < groups.size(); ++g) {
    for (int i = 0; i < groups[g].fCases; ++i, ++row) {
      seed = seed * 1103515245u + 12345u;
      const double noise = static_cast<double>((seed >> 8) % 1000u) / 1000.0 - 0.5;
      const int subject = i % 4;
      const double x = static_cast<double>(i / 4);
      ds.SetNum(row, X, x);
      ds.SetNum(row, SUBJ, static_cast<double>(subject + 1));
      ds.SetNum(row, GRP, static_cast<double>(g + 1));
      if (!groups[g].fbTargetMissing) {
        ds.SetNum(row, Y, 10.0 + static_cast<double>(g) + 2.0 * x + levels[subject] + noise);
      }
    }
  }
}

// A GLMIXFIT command as the parser lays it out: target y, an intercept and
// the covariate x as fixed terms, and by default a random intercept per
// subject.
struct CommandData {
  bool fbRandom = true;
  bool fbRandomSlope = false;  // the block's term is x instead of the intercept
  bool fbPredict = false;
  int fCovariance = 0;
  int fIterations = 100;
  int fFileKind = 0;  // 2: a model file named by the user
  std::string fModelFile;
  std::string fStatXmlFile;
  std::string fStatJsonFile;
  // Saved variables: a kind (MIXValidSpecs::SaveTypes) and a name each.
  std::vector<std::pair<int, std::string>> fvSaves;
};

inline void WriteCommand(const CommandData& command, ParserMemory& memory) {
  namespace L = MIXCommandLayout;
  memory.Clear();
  memory.AddInteger(0);
  base_test::WriteDefaultSettings(memory, Y);
  memory.SetNumericInteger(L::ITERATIONS, command.fIterations);

  memory.SetNumericInteger(L::N_COVARIATES, 1);
  memory.SetNumericInteger(L::COVARIATES, memory.AddIntegers({X + 1}));
  memory.SetNumericInteger(L::N_FIXED_TERMS, 2);
  memory.SetNumericInteger(L::FIXED_TERMS, memory.AddIntegers({0, 1}));

  if (command.fbRandom) {
    const INTEGER subjects = memory.AddIntegers({SUBJ + 1});
    memory.SetNumericInteger(L::N_RANDOM_BLOCKS, 1);
    memory.SetNumericInteger(L::N_RANDOM_TERMS, 1);
    memory.SetNumericInteger(L::RANDOM_TERMS, memory.AddIntegers({command.fbRandomSlope ? 1 : 0}));
    memory.SetNumericInteger(L::BLOCK_TERM_COUNTS, memory.AddIntegers({1}));
    memory.SetNumericInteger(L::BLOCK_PREDICT, memory.AddIntegers({command.fbPredict ? 1 : 0}));
    memory.SetNumericInteger(L::BLOCK_COVARIANCES, memory.AddIntegers({command.fCovariance}));
    memory.SetNumericInteger(L::BLOCK_SUBJECT_COUNTS, memory.AddIntegers({1}));
    memory.SetNumericInteger(L::BLOCK_SUBJECT_LISTS, memory.AddIntegers({subjects}));
    memory.SetNumericInteger(L::N_RANDOM_SUBJECTS, 1);
    memory.SetNumericInteger(L::RANDOM_SUBJECTS, memory.AddIntegers({SUBJ + 1}));
  }

  memory.SetNumericInteger(L::N_SAVES, static_cast<INTEGER>(command.fvSaves.size()));
  for (std::size_t i = 0; i < command.fvSaves.size() && i < L::SAVE_SLOTS; ++i) {
    const int slot = static_cast<int>(i);
    memory.SetNumericInteger(L::SAVE_KINDS.At(slot), command.fvSaves[i].first + 1);
    memory.SetNumericInteger(L::SAVE_NAMES.At(slot), memory.AddText(command.fvSaves[i].second, L::SAVE_NAME_BYTES));
  }

  memory.SetNumericInteger(L::FILE_KIND, command.fFileKind);
  for (const auto& file : {std::make_pair(L::MODEL_FILE, &command.fModelFile),
                           std::make_pair(L::STATJSON_FILE, &command.fStatJsonFile),
                           std::make_pair(L::STATXML_FILE, &command.fStatXmlFile)}) {
    memory.SetCharacterText(file.first.fOffset, file.first.fBytes, *file.second);
  }
}

// One message of the output, with its level.
struct MessageText {
  int fLevel;
  std::string fText;
};

// The session, the output document with one procedure heading, a folder of
// its own for files, and the debug switches, all reset around each test.
class RunFixture : public ::testing::Test {
 protected:
  RunFixture() : fProcedure(fDocument.fRoot.AddHeading("Mixed Model"), "Mixed Model", "Mixed") {
    ZORV_Session::Current().BeginCommand();
    ZORV_StopFlag::Clear();
    fDir = std::filesystem::temp_directory_path() /
           ("glmixfit-run-test-" + std::string(::testing::UnitTest::GetInstance()->current_test_info()->name()) + "-" +
            std::to_string(::getpid()));
    std::filesystem::remove_all(fDir);
    std::filesystem::create_directories(fDir);
    fSavedWritableDir = ZORV_Session::Current().GetWritableDir();
    ZORV_Session::Current().SetWritableDir(fDir.string());
    ResetSwitches();
    BEPesRepos::BEPesClear();
  }
  ~RunFixture() override {
    MIXRunTrace::SetLog(nullptr);
    ResetSwitches();
    exposemix_(0, 0);
    ZORV_Session::Current().SetWritableDir(fSavedWritableDir);
    ZORV_Session::Current().BeginCommand();
    ZORV_StopFlag::Clear();
    BEPesRepos::BEPesClear();
    std::error_code ec;
    std::filesystem::remove_all(fDir, ec);
  }

  static void ResetSwitches() {
    display_settings = false;
    aggreg_random = false;
    display_component = false;
    display_output = false;
    write_text_data = false;
    display_metadata = false;
  }

  std::string InDir(const std::string& name) const { return (fDir / name).string(); }

  // Lays out the command and publishes the parser's blocks.
  void Publish(const CommandData& command) {
    WriteCommand(command, fMemory);
    exposemix_(fMemory.GetNumericAddress(), fMemory.GetCharacterAddress());
  }

  // Reads and completes a specification of the command, for tests of the
  // factory on its own.
  MIXValidSpecs& Specs(const CommandData& command) {
    Publish(command);
    fSpecs.reset();
    fSpecs.emplace(fMemory.GetCommand(), fData);
    EXPECT_TRUE(fSpecs->SetMixedSpecs());
    fSpecs->CompleteSpecs();
    EXPECT_NE(fSpecs->GetCompSettingsPtr(), nullptr);
    return *fSpecs;
  }

  const OmHeading& Heading() const { return *fDocument.fRoot.fvItems[0].fpHeading; }

  std::vector<MessageText> Messages() const {
    std::vector<MessageText> messages;
    for (const OmItem& item : Heading().fvItems) {
      if (item.fKind == OmItem::MESSAGE) messages.push_back({item.fpMessage->fLevel, item.fpMessage->fText});
    }
    return messages;
  }

  std::vector<std::string> TableTitles() const {
    std::vector<std::string> titles;
    for (const OmItem& item : Heading().fvItems) {
      if (item.fKind == OmItem::TABLE) titles.push_back(item.fpTable->fTitle.fText);
    }
    return titles;
  }

  // Every line of front-end text, in order.
  std::vector<std::string> FrontEndLines() const {
    std::vector<std::string> lines;
    for (const OmItem& item : Heading().fvItems) {
      if (item.fKind == OmItem::TEXT) lines.insert(lines.end(), item.fpText->fvLines.begin(), item.fpText->fvLines.end());
    }
    return lines;
  }

  std::size_t CountTables(const std::string& title) const {
    std::size_t count = 0;
    for (const std::string& found : TableTitles()) count += found == title ? 1u : 0u;
    return count;
  }

  bool Fatal() const { return ZORV_Session::Current().IsFatal(); }

  ZORV_Dataset fData;
  ParserMemory fMemory;
  OmDocument fDocument;
  BpProcedure fProcedure;
  std::optional<MIXValidSpecs> fSpecs;
  std::filesystem::path fDir;
  std::string fSavedWritableDir;
};

}  // namespace run_test
