#include <gtest/gtest.h>

#include <filesystem>

#include "app/AppSession.h"
#include "host/data/ZORV_Dataset.h"

namespace fs = std::filesystem;

// Every example command file runs without a mistake, and each of its
// GLMIXFIT commands is read and handed on.
TEST(AppExamples, EveryExampleParses) {
  int files = 0;
  for (const fs::directory_entry& entry : fs::directory_iterator(fs::path(GLMIX_SOURCE_DIR) / "examples")) {
    if (entry.path().extension() != ".gmx") continue;
    ++files;
    AppOptions options;
    options.fOutputDir = "";
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
}

// The dictionaries beside the example data give labels and levels.
TEST(AppExamples, ExampleDataHaveDictionaries) {
  for (const char* name : {"orthodont", "oats", "machines", "pastes", "penicillin", "dyestuff", "bodyweight"}) {
    fs::path dictionary = fs::path(GLMIX_SOURCE_DIR) / "examples" / "data" / (std::string(name) + ".dictionary.json");
    EXPECT_TRUE(fs::is_regular_file(dictionary)) << dictionary;
  }
}
