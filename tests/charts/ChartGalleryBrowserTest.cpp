// Opens the report that holds one chart of each kind in a real browser
// (headless Chromium) and checks, from what the browser laid out, that each
// chart's drawing is there, is not empty, and has its axes, marks and
// labels inside its own area without labels running into each other. A
// screenshot of the report itself checks that it renders.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <string>

#include "ChartGallery.h"
#include "host/render/BrowserProbe.h"
#include "host/render/BrowserSupport.h"
#include "host/render/OmHtmlRenderer.h"

using Json = nlohmann::json;
using namespace BrowserProbe;
using namespace browser_support;

TEST(ChartGalleryBrowser, EveryKindOfChartIsDrawnVisibleAndReadable) {
  const std::string browser = Browser();
  ASSERT_FALSE(browser.empty()) << "Chromium is not installed: the browser check of the HTML report needs it "
                                   "(scripts/install-deps.sh installs it)";
  const std::string scratch = Scratch("glmix-browser-test");
  OmDocument document;
  ChartGallery::Build(document);
  const std::string report = OmHtmlRenderer().Render(document);
  ASSERT_EQ(report.find("<script"), std::string::npos) << "the report must not hold a script";
  ASSERT_EQ(report.find("class=\"message"), std::string::npos) << "a chart was refused";
  std::ofstream(scratch + "/report.html", std::ios::binary) << report;
  // The probe's own check: a drawing with a label outside it and two labels
  // on top of each other, which it must find.
  const std::string faulty =
      "<figure class=\"chart\" data-kind=\"faulty\"><svg xmlns=\"http://www.w3.org/2000/svg\" width=\"300\" "
      "height=\"200\" viewBox=\"0 0 300 200\"><g class=\"mark point\"><circle cx=\"10\" cy=\"10\" r=\"3\"/></g>"
      "<text x=\"250\" y=\"100\" font-size=\"12\">far beyond the edge</text>"
      "<text x=\"20\" y=\"50\" font-size=\"12\">first</text><text x=\"30\" y=\"52\" font-size=\"12\">second</text>"
      "</svg></figure>";
  Json results;
  std::string error;
  ASSERT_TRUE(Measure(browser, scratch, report, faulty, results, error)) << error;

  ASSERT_EQ(results.size(), 8u);
  EXPECT_EQ(results[7]["outside"], Json::array({"far beyond the edge"}));
  EXPECT_EQ(results[7]["overlaps"], Json::array({"first / second"}));
  for (std::size_t i = 0; i < 7; ++i) {
    const Json& chart = results[i];
    const std::string kind = chart["kind"];
    SCOPED_TRACE(std::to_string(i) + " " + kind);
    EXPECT_EQ(kind, ChartGallery::kKinds[i]);
    ExpectReadable(chart);
    EXPECT_GT(chart["marks"].get<int>(), 2);
    // The diagrams and the network have no axes; the others have both.
    const bool axes = kind != "GLMMFixedCoefficients" && kind != "GLMMPairwiseContrasts";
    if (axes) {
      EXPECT_GE(chart["axes"].get<int>(), 2);
      EXPECT_GE(chart["ticks"].get<int>(), 4);
    }
  }

  ASSERT_EQ(RunBrowser(browser, scratch,
                       "--window-size=1100,1400 --screenshot='" + scratch + "/report.png' 'file://" + scratch +
                           "/report.html'",
                       scratch + "/screenshot.log"),
            0)
      << ReadFile(scratch + "/browser.log");
  const std::string png = ReadFile(scratch + "/report.png");
  unsigned width = 0;
  unsigned height = 0;
  ASSERT_TRUE(PngSize(png, width, height)) << "no screenshot";
  EXPECT_EQ(width, 1100u);
  EXPECT_EQ(height, 1400u);
  EXPECT_GT(png.size(), 20000u);  // a page with drawings, not a blank one
  std::error_code ignored;
  std::filesystem::remove_all(scratch, ignored);
}
