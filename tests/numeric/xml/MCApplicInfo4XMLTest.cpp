#include "numeric/xml/MCApplicInfo4XML.h"

#include <gtest/gtest.h>

#include <sstream>

using MCXML_850::MCApplicInfo4XML;

TEST(MCApplicInfo4XML, DefaultsAndRoundTrip) {
  MCApplicInfo4XML info;
  EXPECT_FALSE(info.GetIncludeTimestamp());
  EXPECT_TRUE(info.GetApplicationName().empty());
  info.SetApplicationName("glmixfit");
  info.SetApplicationVersion("0.1.0");
  info.SetCopyright("(c) the authors");
  info.SetIncludeTimestamp(true);
  EXPECT_EQ(info.GetApplicationName(), "glmixfit");
  EXPECT_EQ(info.GetApplicationVersion(), "0.1.0");
  EXPECT_EQ(info.GetCopyright(), "(c) the authors");
  EXPECT_TRUE(info.GetIncludeTimestamp());
  MCApplicInfo4XML three("a", "b", "c");
  EXPECT_EQ(three.GetApplicationVersion(), "b");
  EXPECT_FALSE(three.GetIncludeTimestamp());
}

TEST(MCApplicInfo4XML, Display) {
  std::ostringstream os;
  MCApplicInfo4XML("glmixfit", "0.1.0", "").Display(os);
  EXPECT_EQ(os.str(), "Application: glmixfit\nVersion: 0.1.0\nCopyright: \nTimestamp: false\n");
}
