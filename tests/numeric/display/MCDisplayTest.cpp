#include "numeric/display/MCDisplay.h"

#include <gtest/gtest.h>

#include <sstream>

#include "numeric/common/MCMV.h"
#include "numeric/glmm/GLMMComponentDisplay.h"
#include "numeric/gzl/GZLComponentDisplay.h"

namespace {

// Points the current stream at a string stream for one test.
class MCDisplayCurrent : public ::testing::Test {
 protected:
  void SetUp() override {
    fpSaved = MCDisplay_850::GetOutStream();
    MCDisplay_850::SetOutStream(fText);
  }
  void TearDown() override { MCDisplay_850::SetOutStream(*fpSaved); }

  std::ostream* fpSaved = nullptr;
  std::ostringstream fText;
};

}  // namespace

TEST(MCDisplay, CurrentStreamIsNeverNull) { EXPECT_NE(MCDisplay_850::GetOutStream(), nullptr); }

TEST(MCDisplay, ExplicitStreamLines) {
  using namespace MCDisplay_850;
  std::ostringstream os;
  DisplayI(os, "GLMM algorithm returned code:", 130009);
  DisplayD(os, "Value:", 0.1);
  DisplayD(os, "Missing:", MCCommon_850::MCMV::Missing());
  DisplayDF(os, "Fixed:", 2.0 / 3.0, 3);
  DisplayB(os, "Flag:", true);
  DisplayS(os, "Name:", "abc");
  DisplayIV(os, "List:", {1, 2, 3});
  DisplayIV(os, "Empty:", {});
  DisplayDV(os, "Doubles:", {1.5, -2.0});
  DisplayText(os, "Plain text.");
  EXPECT_EQ(os.str(),
            "GLMM algorithm returned code: 130009\n"
            "Value: 0.1\n"
            "Missing: missing\n"
            "Fixed: 0.667\n"
            "Flag: true\n"
            "Name: abc\n"
            "List: 1 2 3\n"
            "Empty: (none)\n"
            "Doubles: 1.5 -2\n"
            "Plain text.\n");
}

TEST(MCDisplay, DoublesKeepFifteenDigits) {
  EXPECT_EQ(MCDisplay_850::FormatDouble(1e-12), "1e-12");
  EXPECT_EQ(MCDisplay_850::FormatDouble(123456.789012345), "123456.789012345");
  EXPECT_EQ(MCDisplay_850::FormatDoubleFixed(1.25, -3), "1");
}

TEST_F(MCDisplayCurrent, CurrentStreamReceivesTheLines) {
  MCDisplay_850::DisplayI("Count:", 4);
  MCDisplay_850::DisplayB("Flag:", false);
  MCDisplay_850::DisplayText("End.");
  EXPECT_EQ(fText.str(), "Count: 4\nFlag: false\nEnd.\n");
}

TEST_F(MCDisplayCurrent, EnumerationsShowNameAndNumber) {
  MCDisplay_850::DisplayC("Adjustment:", MCMath_850::MCConst::PADJUST_SEQ_SIDAK);
  MCDisplay_850::DisplayC("Contrast:", MCMath_850::MCConst::CONTRAST_PAIRWISE);
  GLMMComponentDisplay_850::DisplayC("Covariance type:", GLMMConst_850::VC);
  GLMMComponentDisplay_850::DisplayC("Estimation:", GLMMConst_850::REML);
  GZLComponentDisplay_850::DisplayC("Interval:", GZLConst_850::CI_PROFILE_LIKELIHOOD);
  EXPECT_EQ(fText.str(),
            "Adjustment: sequential Sidak (3)\n"
            "Contrast: pairwise (6)\n"
            "Covariance type: VC (8)\n"
            "Estimation: REML (1)\n"
            "Interval: profile likelihood (1)\n");
}

TEST(MCDisplay, UnnamedEnumeratorShowsUnknown) {
  std::ostringstream os;
  MCDisplay_850::DisplayC(os, "Order:", static_cast<MCMath_850::MCConst::MCCategOrder>(9));
  EXPECT_EQ(os.str(), "Order: unknown (9)\n");
}
