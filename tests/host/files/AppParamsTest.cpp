#include "host/files/AppParams.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

TEST(AppParams, NamesTheApplication) {
  const AppParams* params = GetAppParams();
  ASSERT_NE(params, nullptr);
  EXPECT_STREQ(params->fpApplicationName, "glmixfit");
  EXPECT_STREQ(params->fpApplicationVersion, GLMIX_VERSION);
  ASSERT_NE(params->fpCopyright, nullptr);
  EXPECT_NE(std::string(params->fpCopyright).find("glmixfit"), std::string::npos);
  EXPECT_EQ(GetAppParams(), params);
}

TEST(AppParams, VersionPartsMatchTheVersionText) {
  const AppParams* params = GetAppParams();
  std::string version = std::to_string(params->fMajorVersion) + "." + std::to_string(params->fMinorVersion) + "." +
                        std::to_string(params->fPatchVersion);
  EXPECT_EQ(version, GLMIX_VERSION);
  EXPECT_EQ(params->fPointerBits, static_cast<long>(sizeof(void*) * 8));
  EXPECT_STREQ(params->fpLocalCodePage, "UTF-8");
}

TEST(AppParams, ApplicationStringsLieAtTheirBytePositions) {
  const AppParams* params = GetAppParams();
  const unsigned char* bytes = reinterpret_cast<const unsigned char*>(params);
  const char* at72 = nullptr;
  const char* at80 = nullptr;
  const char* at88 = nullptr;
  std::memcpy(&at72, bytes + 72, sizeof at72);
  std::memcpy(&at80, bytes + 80, sizeof at80);
  std::memcpy(&at88, bytes + 88, sizeof at88);
  EXPECT_STREQ(at72, "glmixfit");
  EXPECT_STREQ(at80, GLMIX_VERSION);
  EXPECT_EQ(at88, params->fpCopyright);
}
