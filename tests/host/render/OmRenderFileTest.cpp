#include <gtest/gtest.h>

#include <cstdio>
#include <fstream>
#include <sstream>
#include <string>
#include <unistd.h>

#include "OmRenderSample.h"
#include "host/render/OmHtmlRenderer.h"
#include "host/render/OmJsonRenderer.h"
#include "host/render/OmOutputFile.h"
#include "host/render/OmTextRenderer.h"

namespace {

std::string TempPath(const std::string& name) {
  const char* dir = std::getenv("TMPDIR");
  return std::string(dir != nullptr && *dir != '\0' ? dir : "/tmp") + "/glmix-render-" + std::to_string(getpid()) + "-" + name;
}

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream buffer;
  buffer << in.rdbuf();
  return buffer.str();
}

}  // namespace

TEST(OmRenderFileTest, WritesEachForm) {
  const OmDocument doc = OmRenderSample::Build();
  std::string error;
  const std::string text = TempPath("out.txt");
  const std::string html = TempPath("out.html");
  const std::string json = TempPath("out.json");
  ASSERT_TRUE(OmTextRenderer().WriteFile(doc, text, error)) << error;
  ASSERT_TRUE(OmHtmlRenderer().WriteFile(doc, html, error)) << error;
  ASSERT_TRUE(OmJsonRenderer().WriteFile(doc, json, error)) << error;
  EXPECT_TRUE(error.empty());
  EXPECT_EQ(ReadFile(text), OmTextRenderer().Render(doc));
  EXPECT_EQ(ReadFile(html), OmHtmlRenderer().Render(doc));
  EXPECT_EQ(ReadFile(json), OmJsonRenderer().Render(doc));
  std::remove(text.c_str());
  std::remove(html.c_str());
  std::remove(json.c_str());
}

TEST(OmRenderFileTest, FailureNamesThePathAndTheReason) {
  std::string error;
  const std::string path = TempPath("no-such-folder/out.html");
  EXPECT_FALSE(OmHtmlRenderer().WriteFile(OmDocument(), path, error));
  EXPECT_NE(error.find(path), std::string::npos) << error;
  EXPECT_NE(error.find("No such file or directory"), std::string::npos) << error;
}

TEST(OmRenderFileTest, EmptyPathIsRefused) {
  std::string error;
  EXPECT_FALSE(OmOutputFile::Write("", "x", error));
  EXPECT_FALSE(error.empty());
}
