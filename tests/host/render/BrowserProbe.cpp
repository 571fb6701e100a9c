#include "BrowserProbe.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/render/BrowserSupport.h"

namespace BrowserProbe {

namespace {

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

}  // namespace

bool Measure(const std::string& browser, const std::string& scratch, const std::string& report,
             const std::string& extraFigures, nlohmann::json& findings, std::string& error) {
  std::string probe = report;
  probe.insert(probe.rfind("</main>"), extraFigures);
  probe.insert(probe.rfind("</body>"), kProbe);
  std::ofstream(scratch + "/probe.html", std::ios::binary) << probe;
  const int status =
      RunBrowser(browser, scratch, "--virtual-time-budget=5000 --dump-dom 'file://" + scratch + "/probe.html'",
                 scratch + "/dom.html");
  if (status != 0) {
    error = status == 124 ? "the browser did not finish within " + std::to_string(kTimeoutSeconds) + " s"
                          : "the browser failed: " + ReadFile(scratch + "/browser.log");
    return false;
  }
  const std::string text = ElementText(ReadFile(scratch + "/dom.html"), "probe-result");
  if (text.empty()) {
    error = "the browser's page holds no findings";
    return false;
  }
  findings = nlohmann::json::parse(text);
  return true;
}

void ExpectReadable(const nlohmann::json& chart) {
  EXPECT_GT(chart["width"].get<double>(), 200.0);
  EXPECT_GT(chart["height"].get<double>(), 150.0);
  EXPECT_GT(chart["elements"].get<int>(), 10);
  EXPECT_GT(chart["marks"].get<int>(), 1);
  EXPECT_EQ(chart["marksVisible"].get<int>(), chart["marks"].get<int>());
  EXPECT_GT(chart["texts"].get<int>(), 2);
  EXPECT_TRUE(chart["outside"].empty()) << chart["outside"].dump();
  EXPECT_TRUE(chart["overlaps"].empty()) << chart["overlaps"].dump();
}

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

}  // namespace BrowserProbe
