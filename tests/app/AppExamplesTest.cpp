#include <gtest/gtest.h>

#include <filesystem>

#include <sstream>
#include <unistd.h>

#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "host/data/ZORV_Dataset.h"
#include "specs/MIXValidSpecs.h"

namespace fs = std::filesystem;

// Every example command file runs without a mistake, and each of its
// GLMIXFIT commands is read and handed on.
TEST(AppExamples, EveryExampleParses) {
  int files = 0;
  // What the examples write goes to a folder of this test's own.
  const fs::path output = fs::temp_directory_path() / ("glmixfit-examples-parse-" + std::to_string(::getpid()));
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(GLMIX_SOURCE_DIR) / "examples")) {
    if (entry.path().extension() != ".gmx") continue;
    ++files;
    AppOptions options;
    options.fOutputDir = output.string();
    AppSession session(options);
    ASSERT_TRUE(session.RunFile(entry.path().string()));
    int mixed = 0;
    for (const OmItem& item : session.GetDocument().fRoot.fvItems) {
      ASSERT_EQ(item.fKind, OmItem::HEADING) << entry.path();
      for (const OmItem& inner : item.fpHeading->fvItems) {
        if (inner.fKind != OmItem::MESSAGE) continue;
        EXPECT_EQ(inner.fpMessage->fLevel, OmMessage::NOTE) << entry.path() << ": " << inner.fpMessage->fText;
        ++mixed;
      }
    }
    EXPECT_GE(mixed, 1) << entry.path();
    EXPECT_EQ(session.ExitStatus(), 0) << entry.path();
  }
  EXPECT_GE(files, 8);
  fs::remove_all(output);
}

// The dictionaries beside the example data give labels and levels.
TEST(AppExamples, ExampleDataHaveDictionaries) {
  for (const char* name : {"orthodont", "oats", "machines", "pastes", "penicillin", "dyestuff", "bodyweight", "ovary"}) {
    fs::path dictionary = fs::path(GLMIX_SOURCE_DIR) / "examples" / "data" / (std::string(name) + ".dictionary.json");
    EXPECT_TRUE(fs::is_regular_file(dictionary)) << dictionary;
  }
}

namespace {

struct ReadBack {
  int fCommands = 0;
  int fRead = 0;
  std::string fDisplay;
};
ReadBack gReadBack;

// Reads the published command into the procedure's specification record.
void ReadSpecification(void* command, BpProcedure&, ProcedureDataSource& data) {
  ++gReadBack.fCommands;
  MIXValidSpecs specs(command, data);
  if (specs.SetMixedSpecs()) ++gReadBack.fRead;
  specs.CompleteSpecs();
  std::ostringstream text;
  specs.Display(text);
  gReadBack.fDisplay = text.str();
}

}  // namespace

// The procedure's own reader takes every example command as it is laid out.
TEST(AppExamples, TheSpecificationRecordReadsEveryExample) {
  struct Hook {
    Hook() { AppProcedureHook::Set(ReadSpecification); }
    ~Hook() { AppProcedureHook::Set(nullptr); }
  } hook;
  const fs::path output = fs::temp_directory_path() / ("glmixfit-examples-test-" + std::to_string(::getpid()));
  for (const char* name : {"sleepstudy", "orthodont", "oats", "machines", "pastes", "penicillin", "dyestuff",
                           "bodyweight", "ovary"}) {
    gReadBack = ReadBack();
    AppOptions options;
    options.fOutputDir = output.string();
    AppSession session(options);
    ASSERT_TRUE(session.RunFile((fs::path(GLMIX_SOURCE_DIR) / "examples" / (std::string(name) + ".gmx")).string()));
    EXPECT_EQ(session.ExitStatus(), 0) << name;
    EXPECT_EQ(gReadBack.fCommands, 1) << name;
    EXPECT_EQ(gReadBack.fRead, 1) << name;
    EXPECT_NE(gReadBack.fDisplay.find("MIXValidSpecs display start"), std::string::npos) << name;
    EXPECT_NE(gReadBack.fDisplay.find((output / "model-1.xml").lexically_normal().string()), std::string::npos)
        << name;
  }
  fs::remove_all(output);
}
