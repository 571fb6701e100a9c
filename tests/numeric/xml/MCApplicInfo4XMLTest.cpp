#include "numeric/xml/MCApplicInfo4XML.h"
#include "numeric/xml/MCPMMLParser.h"

#include <gtest/gtest.h>

#include <sstream>
#include <stdexcept>

#include "numeric/xml/MCVarList.h"

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

TEST(MCPMMLParser, ReadingIsNotImplementedYet) {
  MCXML_850::MCPMMLParser parser;
  EXPECT_FALSE(parser.IsParsed());
  std::istringstream is("<PMML/>");
  EXPECT_THROW(parser.ParseToDOM(is), std::logic_error);
  MCXML_850::MCVarList list;
  try {
    parser.FillVarList(list, {}, false);
    FAIL() << "FillVarList returned";
  } catch (const std::logic_error& error) {
    EXPECT_STREQ(error.what(), "MCPMMLParser::FillVarList: not implemented yet");
  }
}
