// Opens the HTML report of an example in a real browser (headless
// Chromium) and checks, from what the browser laid out, that the model
// viewer's tables stand in their order after the command's own, each under
// the model viewer's heading, laid out with their cells and no wider than
// the page. A probe script is added to a copy of the report (the report
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
#include "host/render/BrowserSupport.h"
#include "run/MixDriver.h"

namespace {

using Json = nlohmann::json;
using namespace browser_support;

const char* const kProbe = R"(<script>
(function () {
  var tables = [];
  var nodes = document.querySelectorAll('table.pivot');
  var page = document.documentElement.clientWidth;
  for (var i = 0; i < nodes.length; ++i) {
    var table = nodes[i];
    var box = table.getBoundingClientRect();
    var cells = 0;
    var tds = table.querySelectorAll('td');
    for (var k = 0; k < tds.length; ++k) if (tds[k].textContent.trim() !== '') cells++;
    var section = table.closest('section');
    var heading = section ? section.querySelector('h1,h2,h3,h4,h5,h6') : null;
    var sections = [];
    for (var s = table.parentNode; s; s = s.parentNode) {
      if (s.tagName === 'SECTION') sections.unshift(s.querySelector('h1,h2,h3,h4,h5,h6').textContent);
    }
    tables.push({ subtype: table.getAttribute('data-subtype'), width: box.width, height: box.height,
                  cells: cells, fits: box.right <= page + 1, sections: sections });
  }
  var pre = document.createElement('pre');
  pre.id = 'probe-result';
  pre.textContent = JSON.stringify(tables);
  document.body.appendChild(pre);
})();
</script>)";

TEST(AppReportBrowserTest, TheModelViewersTablesAreLaidOutAfterTheCommandsOwn) {
  const std::string browser = Browser();
  ASSERT_FALSE(browser.empty()) << "Chromium is not installed: the browser check of the HTML report needs it "
                                   "(scripts/install-deps.sh installs it)";
  const std::string scratch = Scratch("glmixfit-report-browser");
  AppProcedureHook::Set(MixDriver);
  AppOptions options;
  options.fOutputDir = scratch;
  options.fbText = false;
  options.fbHtml = true;
  {
    AppSession session(options);
    ASSERT_TRUE(session.RunFile((std::filesystem::path(GLMIX_SOURCE_DIR) / "examples" / "sleepstudy.gmx").string()));
    std::ostringstream terminal;
    std::string error;
    ASSERT_TRUE(session.WriteReports(terminal, error)) << error;
  }
  AppProcedureHook::Set(nullptr);
  std::string page = ReadFile(scratch + "/report.html");
  ASSERT_EQ(page.find("<script"), std::string::npos) << "the report must not hold a script";
  page.insert(page.rfind("</body>"), kProbe);
  std::ofstream(scratch + "/probe.html", std::ios::binary) << page;

  const int status = RunBrowser(browser, scratch,
                                "--window-size=1100,1400 --virtual-time-budget=5000 --dump-dom 'file://" + scratch +
                                    "/probe.html'",
                                scratch + "/dom.html");
  ASSERT_EQ(status, 0) << "the browser failed: " << ReadFile(scratch + "/browser.log");
  const std::string findings = ElementText(ReadFile(scratch + "/dom.html"), "probe-result");
  ASSERT_FALSE(findings.empty()) << "the browser's page holds no findings";
  const Json tables = Json::parse(findings);

  std::vector<std::string> subtypes;
  for (const Json& table : tables) subtypes.push_back(table["subtype"].get<std::string>());
  EXPECT_EQ(subtypes, (std::vector<std::string>{"Notes", "Information Criteria", "Tests of Fixed Effects",
                                                "Parameter Estimates", "Empirical Best Linear Unbiased Predictions",
                                                "ModelSummary", "DataStructure", "FixedEffects", "FixedCoefficients",
                                                "RandomEffects", "CovarianceParametersSummary", "ResidualEffect",
                                                "CovarianceParameters"}));
  // The first five are the command's own.
  const std::size_t firstOfViewer = 5;
  for (std::size_t i = 0; i < tables.size(); ++i) {
    const Json& table = tables[i];
    SCOPED_TRACE(table["subtype"].get<std::string>());
    EXPECT_GT(table["width"].get<double>(), 100.0);
    EXPECT_GT(table["height"].get<double>(), 40.0);
    EXPECT_GT(table["cells"].get<int>(), 1);
    EXPECT_TRUE(table["fits"].get<bool>());
    const std::vector<std::string> sections = table["sections"].get<std::vector<std::string>>();
    ASSERT_GE(sections.size(), 1u);
    EXPECT_EQ(sections[0], "Mixed Model");
    EXPECT_EQ(sections.size() >= 2 && sections[1] == "Model Viewer", i >= firstOfViewer);
  }
  std::error_code ignored;
  std::filesystem::remove_all(scratch, ignored);
}

}  // namespace
