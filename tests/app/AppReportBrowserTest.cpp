// Opens the HTML reports of the sleepstudy and oats examples in a real
// browser (headless Chromium) and checks, from what the browser laid out,
// that the model viewer's tables stand in their order after the command's
// own, each under the model viewer's heading, laid out with their cells and
// no wider than the page, with the viewer's charts between them, each drawn
// and readable. A probe script is added to a copy of the report (the report
// itself has none) and writes its findings into the page.

#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <sstream>
#include <string>
#include <vector>

#include "app/AppProcedureHook.h"
#include "app/AppSession.h"
#include "host/render/BrowserProbe.h"
#include "host/render/BrowserSupport.h"
#include "run/MixDriver.h"

namespace {

using Json = nlohmann::json;
using namespace browser_support;

const char* const kProbe = R"(<script>
(function () {
  var items = [];
  var nodes = document.querySelectorAll('table.pivot, figure.chart');
  var page = document.documentElement.clientWidth;
  for (var i = 0; i < nodes.length; ++i) {
    var node = nodes[i];
    var box = node.getBoundingClientRect();
    var chart = node.tagName === 'FIGURE';
    var cells = 0;
    var tds = node.querySelectorAll('td');
    for (var k = 0; k < tds.length; ++k) if (tds[k].textContent.trim() !== '') cells++;
    var sections = [];
    for (var s = node.parentNode; s; s = s.parentNode) {
      if (s.tagName === 'SECTION') sections.unshift(s.querySelector('h1,h2,h3,h4,h5,h6').textContent);
    }
    items.push({ chart: chart, name: node.getAttribute(chart ? 'data-kind' : 'data-subtype'), width: box.width,
                 height: box.height, cells: cells, fits: box.right <= page + 1, sections: sections });
  }
  var pre = document.createElement('pre');
  pre.id = 'probe-result';
  pre.textContent = JSON.stringify(items);
  document.body.appendChild(pre);
})();
</script>)";

// Runs an example and returns its HTML report, written where `scratch` is.
std::string Report(const std::string& example, const std::string& scratch) {
  AppProcedureHook::Set(MixDriver);
  AppOptions options;
  options.fOutputDir = scratch;
  options.fbText = false;
  options.fbHtml = true;
  {
    AppSession session(options);
    EXPECT_TRUE(session.RunFile((std::filesystem::path(GLMIX_SOURCE_DIR) / "examples" / (example + ".gmx")).string()));
    std::ostringstream terminal;
    std::string error;
    EXPECT_TRUE(session.WriteReports(terminal, error)) << error;
  }
  AppProcedureHook::Set(nullptr);
  return ReadFile(scratch + "/report.html");
}

// The tables and charts of the report in document order, as the browser
// laid them out.
Json LaidOut(const std::string& browser, const std::string& scratch, std::string page) {
  page.insert(page.rfind("</body>"), kProbe);
  std::ofstream(scratch + "/probe.html", std::ios::binary) << page;
  const int status = RunBrowser(browser, scratch,
                                "--window-size=1100,1400 --virtual-time-budget=5000 --dump-dom 'file://" + scratch +
                                    "/probe.html'",
                                scratch + "/dom.html");
  EXPECT_EQ(status, 0) << "the browser failed: " << ReadFile(scratch + "/browser.log");
  const std::string findings = ElementText(ReadFile(scratch + "/dom.html"), "probe-result");
  EXPECT_FALSE(findings.empty()) << "the browser's page holds no findings";
  return findings.empty() ? Json::array() : Json::parse(findings);
}

// The report's tables and charts stand in the order `expected` names them
// (a chart by its kind), the first `commandsOwn` under the command's
// heading and the rest under the model viewer's; each table has cells and
// fits the page, and each chart is drawn and readable.
void ExpectLaidOut(const std::string& example, const std::vector<std::string>& expected, std::size_t commandsOwn) {
  SCOPED_TRACE(example);
  const std::string browser = Browser();
  ASSERT_FALSE(browser.empty()) << "Chromium is not installed: the browser check of the HTML report needs it "
                                   "(scripts/install-deps.sh installs it)";
  const std::string scratch = Scratch("glmixfit-report-browser-" + example);
  const std::string page = Report(example, scratch);
  ASSERT_EQ(page.find("<script"), std::string::npos) << "the report must not hold a script";
  ASSERT_EQ(page.find("class=\"message"), std::string::npos) << "a chart was refused";
  const Json items = LaidOut(browser, scratch, page);

  std::vector<std::string> names;
  for (const Json& item : items) names.push_back(item["name"].get<std::string>());
  EXPECT_EQ(names, expected);
  std::size_t charts = 0;
  for (std::size_t i = 0; i < items.size(); ++i) {
    const Json& item = items[i];
    SCOPED_TRACE(item["name"].get<std::string>());
    if (item["chart"].get<bool>()) ++charts;
    EXPECT_GT(item["width"].get<double>(), 100.0);
    EXPECT_GT(item["height"].get<double>(), 40.0);
    if (!item["chart"].get<bool>()) {
      EXPECT_GT(item["cells"].get<int>(), 1);
    }
    EXPECT_TRUE(item["fits"].get<bool>());
    const std::vector<std::string> sections = item["sections"].get<std::vector<std::string>>();
    ASSERT_GE(sections.size(), 1u);
    EXPECT_EQ(sections[0], "Mixed Model");
    EXPECT_EQ(sections.size() >= 2 && sections[1] == "Model Viewer", i >= commandsOwn);
  }

  Json drawings;
  std::string error;
  ASSERT_TRUE(BrowserProbe::Measure(browser, scratch, page, "", drawings, error)) << error;
  ASSERT_EQ(drawings.size(), charts);
  for (const Json& drawing : drawings) {
    SCOPED_TRACE(drawing["kind"].get<std::string>());
    BrowserProbe::ExpectReadable(drawing);
  }
  std::error_code ignored;
  std::filesystem::remove_all(scratch, ignored);
}

TEST(AppReportBrowserTest, SleepstudysViewerTablesAndChartsAreLaidOutAfterTheCommandsOwn) {
  ExpectLaidOut("sleepstudy",
                {"Notes", "Information Criteria", "Tests of Fixed Effects", "Parameter Estimates",
                 "Contrast Estimates", "Test Results", "Contrast Estimates", "Test Results", "Contrast Estimates",
                 "Test Results", "Empirical Best Linear Unbiased Predictions", "ModelSummary", "DataStructure",
                 "GLMMPredictedByObserved", "FixedEffects", "GLMMFixedCoefficients", "FixedCoefficients",
                 "GLMMFixedCoefficients", "RandomEffects", "CovarianceParametersSummary", "ResidualEffect",
                 "CovarianceParameters"},
                11);
}

TEST(AppReportBrowserTest, OatsViewerTablesAndChartsStandBetweenEachOther) {
  ExpectLaidOut("oats",
                {"Notes", "Information Criteria", "Tests of Fixed Effects", "Parameter Estimates", "ModelSummary",
                 "DataStructure", "GLMMPredictedByObserved", "FixedEffects", "GLMMFixedCoefficients",
                 "FixedCoefficients", "GLMMFixedCoefficients", "RandomEffects", "RandomEffects",
                 "CovarianceParametersSummary", "ResidualEffect", "CovarianceParameters", "CovarianceParameters",
                 "GLMMEmMeans", "GrandMeans", "Estimates", "GLMMCustomEffects", "Contrasts", "GLMMPairwiseContrasts",
                 "OverallTestResults"},
                4);
}

}  // namespace
