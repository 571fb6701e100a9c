// Compares each renderer's output for the sample document with its golden
// file in tests/data/render. To accept a deliberate change of the output, run
// the tests with the environment variable GLMIX_UPDATE_GOLDEN=1: the golden
// files are then rewritten instead of compared, and the diff can be reviewed.

#include <gtest/gtest.h>

#include <cstdlib>
#include <fstream>
#include <sstream>
#include <string>

#include "OmRenderSample.h"
#include "host/render/OmHtmlRenderer.h"
#include "host/render/OmJsonRenderer.h"
#include "host/render/OmOutputFile.h"
#include "host/render/OmTextRenderer.h"

namespace {

std::string GoldenPath(const std::string& name) { return std::string(GLMIX_TEST_DATA_DIR) + "/render/" + name; }

bool Updating() {
  const char* value = std::getenv("GLMIX_UPDATE_GOLDEN");
  return value != nullptr && std::string(value) == "1";
}

void CheckGolden(const std::string& name, const std::string& actual) {
  const std::string path = GoldenPath(name);
  if (Updating()) {
    std::string error;
    ASSERT_TRUE(OmOutputFile::Write(path, actual, error)) << error;
    return;
  }
  std::ifstream in(path, std::ios::binary);
  ASSERT_TRUE(in.good()) << "missing golden file " << path << " (run with GLMIX_UPDATE_GOLDEN=1 to create it)";
  std::stringstream buffer;
  buffer << in.rdbuf();
  const std::string expected = buffer.str();
  if (expected == actual) return;
  // Name the first line that differs rather than dumping both documents.
  std::istringstream a(expected), b(actual);
  std::string lineA, lineB;
  int number = 0;
  while (true) {
    const bool moreA = static_cast<bool>(std::getline(a, lineA));
    const bool moreB = static_cast<bool>(std::getline(b, lineB));
    ++number;
    if (!moreA && !moreB) break;
    if (moreA != moreB || lineA != lineB) {
      ADD_FAILURE() << "output differs from " << path << " at line " << number << ":\n  golden: "
                    << (moreA ? lineA : "<end>") << "\n  actual: " << (moreB ? lineB : "<end>");
      return;
    }
  }
  ADD_FAILURE() << "output differs from " << path << " in line endings";
}

}  // namespace

TEST(OmRenderGoldenTest, TextAtDefaultWidth) {
  CheckGolden("sample.txt", OmTextRenderer().Render(OmRenderSample::Build()));
}

TEST(OmRenderGoldenTest, TextAtNarrowWidth) {
  CheckGolden("sample-60.txt", OmTextRenderer(60).Render(OmRenderSample::Build()));
}

TEST(OmRenderGoldenTest, Html) { CheckGolden("sample.html", OmHtmlRenderer().Render(OmRenderSample::Build())); }

TEST(OmRenderGoldenTest, Json) { CheckGolden("sample.json", OmJsonRenderer().Render(OmRenderSample::Build())); }
