// Opens a report that holds one chart of each kind in a real browser
// (headless Chromium) and checks, from what the browser laid out, that each
// chart's drawing is there, is not empty, and has its axes, marks and
// labels inside its own area without labels running into each other.
//
// The report itself has no script. The test writes a copy of it with a
// probe script at its end, which measures the laid-out page and writes its
// findings into the page, and reads them back from the browser's dump of
// the page. A screenshot of the report itself checks that it renders.
//
// CI installs Chromium (scripts/install-deps.sh); without it the test fails.

#include <gtest/gtest.h>
#include <unistd.h>

#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>

#include "host/render/BrowserSupport.h"
#include "host/render/OmHtmlRenderer.h"
#include "host/viz/ChartGallery.h"

namespace {

using Json = nlohmann::json;
using namespace browser_support;

const char* const kProbe = R"(<script>
(function () {
  var results = [];
  var charts = document.querySelectorAll('figure.chart > svg');
  for (var n = 0; n < charts.length; ++n) {
    var svg = charts[n];
    var area = svg.getBoundingClientRect();
    var result = {
      kind: svg.parentNode.getAttribute('data-kind'),
      width: area.width, height: area.height,
      elements: svg.querySelectorAll('*').length,
      marks: svg.querySelectorAll('g.mark > *').length,
      axes: svg.querySelectorAll('g.axis').length,
      ticks: svg.querySelectorAll('text.tick-label').length,
      texts: 0, outside: [], overlaps: [], marksOutside: 0, marksVisible: 0
    };
    var boxes = [];
    var texts = svg.querySelectorAll('text');
    for (var i = 0; i < texts.length; ++i) {
      var b = texts[i].getBoundingClientRect();
      if (b.width === 0 || b.height === 0) continue;
      result.texts++;
      if (b.left < area.left - 1 || b.right > area.right + 1 || b.top < area.top - 1 || b.bottom > area.bottom + 1) {
        result.outside.push(texts[i].textContent);
      }
      // Slanted labels have boxes that overlap by their shape; they are
      // spaced by their bands instead.
      if ((texts[i].getAttribute('transform') || '').indexOf('rotate') < 0) {
        boxes.push({ box: b, text: texts[i].textContent });
      }
    }
    for (var p = 0; p < boxes.length; ++p) {
      for (var q = p + 1; q < boxes.length; ++q) {
        var a = boxes[p].box, c = boxes[q].box;
        var w = Math.min(a.right, c.right) - Math.max(a.left, c.left);
        var h = Math.min(a.bottom, c.bottom) - Math.max(a.top, c.top);
        if (w > 1 && h > 2) result.overlaps.push(boxes[p].text + ' / ' + boxes[q].text);
      }
    }
    var marks = svg.querySelectorAll('g.mark > *');
    for (var m = 0; m < marks.length; ++m) {
      var r = marks[m].getBoundingClientRect();
      var inside = r.right >= area.left && r.left <= area.right && r.bottom >= area.top && r.top <= area.bottom;
      if (inside) result.marksVisible++; else result.marksOutside++;
    }
    results.push(result);
  }
  var pre = document.createElement('pre');
  pre.id = 'probe-result';
  pre.textContent = JSON.stringify(results);
  document.body.appendChild(pre);
})();
</script>)";

// Width and height of a PNG image from its header; false when it is none.
bool PngSize(const std::string& png, unsigned& width, unsigned& height) {
  if (png.size() < 24 || png.compare(0, 8, "\x89PNG\r\n\x1a\n") != 0) return false;
  auto word = [&](std::size_t at) {
    return (static_cast<unsigned>(static_cast<unsigned char>(png[at])) << 24) |
           (static_cast<unsigned>(static_cast<unsigned char>(png[at + 1])) << 16) |
           (static_cast<unsigned>(static_cast<unsigned char>(png[at + 2])) << 8) |
           static_cast<unsigned>(static_cast<unsigned char>(png[at + 3]));
  };
  width = word(16);
  height = word(20);
  return true;
}

}  // namespace

TEST(OmHtmlBrowserTest, EveryKindOfChartIsDrawnVisibleAndReadable) {
  const std::string browser = Browser();
  ASSERT_FALSE(browser.empty()) << "Chromium is not installed: the browser check of the HTML report needs it "
                                   "(scripts/install-deps.sh installs it)";
  const std::string scratch = Scratch();
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
  std::string probe = report;
  probe.insert(probe.rfind("</main>"), faulty);
  probe.insert(probe.rfind("</body>"), kProbe);
  std::ofstream(scratch + "/probe.html", std::ios::binary) << probe;

  const int status =
      RunBrowser(browser, scratch, "--virtual-time-budget=5000 --dump-dom 'file://" + scratch + "/probe.html'",
                 scratch + "/dom.html");
  ASSERT_EQ(status, 0) << (status == 124 ? "the browser did not finish within " + std::to_string(kTimeoutSeconds) + " s"
                                         : "the browser failed: " + ReadFile(scratch + "/browser.log"));
  const std::string findings = ElementText(ReadFile(scratch + "/dom.html"), "probe-result");
  ASSERT_FALSE(findings.empty()) << "the browser's page holds no findings";
  const Json results = Json::parse(findings);

  ASSERT_EQ(results.size(), 8u);
  EXPECT_EQ(results[7]["outside"], Json::array({"far beyond the edge"}));
  EXPECT_EQ(results[7]["overlaps"], Json::array({"first / second"}));
  for (std::size_t i = 0; i < 7; ++i) {
    const Json& chart = results[i];
    const std::string kind = chart["kind"];
    SCOPED_TRACE(std::to_string(i) + " " + kind);
    EXPECT_EQ(kind, ChartGallery::kKinds[i]);
    EXPECT_GT(chart["width"].get<double>(), 200.0);
    EXPECT_GT(chart["height"].get<double>(), 150.0);
    EXPECT_GT(chart["elements"].get<int>(), 10);
    EXPECT_GT(chart["marks"].get<int>(), 2);
    EXPECT_EQ(chart["marksVisible"].get<int>(), chart["marks"].get<int>());
    EXPECT_GT(chart["texts"].get<int>(), 3);
    EXPECT_TRUE(chart["outside"].empty()) << chart["outside"].dump();
    EXPECT_TRUE(chart["overlaps"].empty()) << chart["overlaps"].dump();
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
