#include "numeric/common/MCStatus.h"

#include <gtest/gtest.h>

#include <sstream>

using MCCommon_850::MCStatus;

namespace {

int KindsHeld(const MCStatus& status) {
  return (status.IsOK() ? 1 : 0) + (status.IsWarning() ? 1 : 0) + (status.IsError() ? 1 : 0);
}

}  // namespace

TEST(MCStatus, DefaultIsOK) {
  MCStatus status;
  EXPECT_TRUE(status.IsOK());
  EXPECT_FALSE(status.IsWarning());
  EXPECT_FALSE(status.IsError());
  EXPECT_EQ(status.GetErrorCode(), 0);
}

TEST(MCStatus, NoValidCasesAndInvalidSettingsAreErrors) {
  EXPECT_TRUE(MCStatus(230024, false).IsError());
  EXPECT_TRUE(MCStatus(130009, false).IsError());
  EXPECT_EQ(MCStatus(230024, false).GetErrorCode(), 230024);
}

TEST(MCStatus, CodeZeroIsOKWhateverTheFlag) {
  EXPECT_TRUE(MCStatus(0, false).IsOK());
  EXPECT_TRUE(MCStatus(0, true).IsOK());
}

TEST(MCStatus, WarningCodesAreWarnings) {
  for (long code : {130024L, 130035L, 130044L, 130045L, 130069L, 130070L, 130088L, 230036L, 230037L, 230038L,
                    230087L, 230094L, 230095L}) {
    EXPECT_TRUE(MCStatus(code, false).IsWarning()) << code;
  }
}

TEST(MCStatus, ErrorCodesAreErrors) {
  for (long code : {130009L, 130018L, 130025L, 130032L, 130054L, 130074L, 130077L, 130079L, 130089L, 130090L,
                    130093L, 230024L, 230025L, 230092L}) {
    EXPECT_TRUE(MCStatus(code, false).IsError()) << code;
  }
}

TEST(MCStatus, UnknownCodeIsAnError) {
  EXPECT_TRUE(MCStatus(999999, false).IsError());
  EXPECT_TRUE(MCStatus(-5, false).IsError());
}

TEST(MCStatus, WarningOnlyTurnsAnErrorIntoAWarning) {
  MCStatus status(130018, true);
  EXPECT_TRUE(status.IsWarning());
  EXPECT_FALSE(status.IsError());
  EXPECT_TRUE(MCStatus(130044, true).IsWarning());
}

TEST(MCStatus, AtMostOneKind) {
  for (long code = 129990; code < 130100; ++code) {
    EXPECT_EQ(KindsHeld(MCStatus(code, false)), 1) << code;
    EXPECT_EQ(KindsHeld(MCStatus(code, true)), 1) << code;
  }
  for (long code = 230000; code < 230100; ++code) EXPECT_EQ(KindsHeld(MCStatus(code, false)), 1) << code;
}

TEST(MCStatus, ANoteIsNoneOfTheKinds) {
  MCStatus note(130051, MCCommon_850::STATUS_NOTE);
  EXPECT_EQ(KindsHeld(note), 0);
  EXPECT_EQ(note.GetKind(), MCCommon_850::STATUS_NOTE);
}

TEST(MCStatus, ExplicitKind) {
  MCStatus status(230024, MCCommon_850::STATUS_WARNING);
  EXPECT_TRUE(status.IsWarning());
  EXPECT_EQ(status.GetErrorCode(), 230024);
}

TEST(MCStatus, DiscreteData) {
  MCStatus status(130035, false);
  EXPECT_EQ(status.GetNDiscreteData(), 0u);
  EXPECT_EQ(status.GetDiscreteDatum(0), 0);
  status.AddDiscreteDatum(3);
  EXPECT_EQ(status.GetDiscreteDatum(0), 3);
  status.SetDiscreteDatum(2, 7);
  EXPECT_EQ(status.GetNDiscreteData(), 3u);
  EXPECT_EQ(status.GetDiscreteDatum(1), 0);
  EXPECT_EQ(status.GetDiscreteDatum(2), 7);
  EXPECT_EQ(status.GetDiscreteDatum(9), 0);
}

TEST(MCStatus, CopiesByAssignment) {
  MCStatus first(130035, false);
  first.AddDiscreteDatum(4);
  MCStatus second;
  second = first;
  EXPECT_TRUE(second.IsWarning());
  EXPECT_EQ(second.GetErrorCode(), 130035);
  EXPECT_EQ(second.GetDiscreteDatum(0), 4);
}

TEST(MCStatus, KindOfCode) {
  EXPECT_EQ(MCStatus::KindOfCode(0), MCCommon_850::STATUS_OK);
  EXPECT_EQ(MCStatus::KindOfCode(130070), MCCommon_850::STATUS_WARNING);
  EXPECT_EQ(MCStatus::KindOfCode(130009), MCCommon_850::STATUS_ERROR);
}

TEST(MCStatus, DisplayWritesLabelledLines) {
  MCStatus status(130035, false);
  status.AddDiscreteDatum(2);
  std::ostringstream os;
  status.Display(os);
  EXPECT_EQ(os.str(), "Status code: 130035\nStatus kind: warning\nStatus data: 2\n");
}
