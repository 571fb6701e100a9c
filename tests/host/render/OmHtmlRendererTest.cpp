#include <gtest/gtest.h>

#include <string>

#include "OmRenderSample.h"
#include "host/render/OmHtmlRenderer.h"

namespace {

OmDimension Dim(const std::string& name, OmDimension::Place place, std::vector<OmDimensionNode> nodes) {
  OmDimension dim;
  dim.fName.fText = name;
  dim.fPlace = place;
  dim.fRoot.fbIsGroup = true;
  dim.fRoot.fvChildren = std::move(nodes);
  return dim;
}

bool Contains(const std::string& text, const std::string& part) { return text.find(part) != std::string::npos; }

}  // namespace

TEST(OmHtmlRenderTest, EscapesMarkupCharacters) {
  EXPECT_EQ(OmHtmlRenderer::Escape("<a href='x'>&\"</a>"), "&lt;a href=&#39;x&#39;&gt;&amp;&quot;&lt;/a&gt;");
  EXPECT_EQ(OmHtmlRenderer::Escape("\xce\xbc"), "\xce\xbc");
  EXPECT_EQ(OmHtmlRenderer::Escape("a\xff" "b"), "a\xef\xbf\xbd" "b");
  EXPECT_EQ(OmHtmlRenderer::Escape(std::string("a\x01" "b\x7f", 4)), "a b ");
  EXPECT_EQ(OmHtmlRenderer::Escape("one\r\ntwo"), "one\ntwo");
}

TEST(OmHtmlRenderTest, EveryUserTextIsEscaped) {
  OmDocument doc;
  doc.fTitle = "<title>";
  OmHeading& h = doc.fRoot.AddHeading("<h>");
  OmTable& t = h.AddTable();
  t.fTitle.fText = "<t>";
  t.fvDimensions.push_back(Dim("<d>", OmDimension::ROW, {OmRenderSample::Category("<c>")}));
  t.fvDimensions.back().fbShowName = true;
  t.fCells[{0}] = OmRenderSample::Text("<cell>");
  t.fvFootnotes = {"<f>"};
  t.fvCaptions.push_back(OmText{"<cap>", {}});
  t.fvNotes.push_back(OmText{"<note>", {}});
  h.AddMessage(OmMessage::ERROR, "<m>");
  h.AddText().fvLines = {"<pre>"};
  OmChart& chart = h.AddChart();
  chart.fTitle = "<chart>";
  chart.fKind = "<kind>";
  const std::string html = OmHtmlRenderer().Render(doc);
  EXPECT_TRUE(Contains(html, "<title>&lt;title&gt;</title>"));
  for (const char* raw : {"<title><", "<h>", "<t>", "<d>", "<c>", "<cell>", "<f>", "<cap>", "<note>", "<m>", "<pre><",
                          "<chart>", "<kind>"}) {
    EXPECT_FALSE(Contains(html, raw)) << raw;
  }
  for (const char* escaped : {"&lt;h&gt;", "&lt;t&gt;", "&lt;cell&gt;", "&lt;f&gt;", "&lt;m&gt;", "&lt;kind&gt;"}) {
    EXPECT_TRUE(Contains(html, escaped)) << escaped;
  }
}

TEST(OmHtmlRenderTest, PageIsSelfContained) {
  const std::string html = OmHtmlRenderer().Render(OmRenderSample::Build());
  EXPECT_EQ(html.rfind("<!DOCTYPE html>\n", 0), 0u);
  EXPECT_TRUE(Contains(html, "<meta charset=\"utf-8\">"));
  EXPECT_TRUE(Contains(html, "<style>"));
  EXPECT_FALSE(Contains(html, "<script"));
  EXPECT_FALSE(Contains(html, "<link"));
  EXPECT_FALSE(Contains(html, "src="));
  EXPECT_FALSE(Contains(html, "url("));
  EXPECT_FALSE(Contains(html, "@import"));
  EXPECT_FALSE(Contains(html, "href=\"http"));
  EXPECT_TRUE(Contains(html, "</html>\n"));
}

TEST(OmHtmlRenderTest, OutlineLinksToHeadingsTablesAndCharts) {
  const std::string html = OmHtmlRenderer().Render(OmRenderSample::Build());
  EXPECT_TRUE(Contains(html, "<nav class=\"outline\""));
  EXPECT_TRUE(Contains(html, "<a href=\"#s2\">Fixed Effects</a>"));
  EXPECT_TRUE(Contains(html, "<section id=\"s2\">"));
  EXPECT_TRUE(Contains(html, "<a href=\"#t3\">Fixed Parameter Estimates</a>"));
  EXPECT_TRUE(Contains(html, "<table class=\"pivot\" id=\"t3\""));
  EXPECT_TRUE(Contains(html, "<a href=\"#c1\">Predicted by Observed</a>"));
  EXPECT_TRUE(Contains(html, "<figure class=\"chart\" id=\"c1\""));
}

TEST(OmHtmlRenderTest, TableUsesSpansScopesAndMarkers) {
  const std::string html = OmHtmlRenderer().Render(OmRenderSample::Build());
  EXPECT_TRUE(Contains(html, "<caption>Fixed Parameter Estimates<sup>a</sup></caption>"));
  EXPECT_TRUE(Contains(html, "<th scope=\"colgroup\" class=\"group\" colspan=\"2\">95% Confidence Interval</th>"));
  EXPECT_TRUE(Contains(html, "<th scope=\"col\" rowspan=\"2\">Estimate</th>"));
  EXPECT_TRUE(Contains(html, "<th scope=\"rowgroup\" rowspan=\"2\">Treatment</th>"));
  EXPECT_TRUE(Contains(html, "<th scope=\"row\">[Treatment=High dose]<sup>b</sup></th>"));
  EXPECT_TRUE(Contains(html, "<td class=\"num\">0<sup>c</sup></td>"));
  EXPECT_TRUE(Contains(html, "<tr class=\"layer\"><th scope=\"rowgroup\" colspan=\"9\">Split: Sex = Male</th></tr>"));
  EXPECT_TRUE(Contains(html, "<td colspan=\"9\" class=\"footnote\"><sup>c</sup> Redundant parameter</td>"));
  EXPECT_TRUE(Contains(html, "<td colspan=\"9\" class=\"caption\">Dep variable is Reaction</td>"));
  EXPECT_TRUE(Contains(html, "<td>Identity: \xce\xbc = \xce\xb7</td>"));
}

TEST(OmHtmlRenderTest, MissingCellIsEmptyNumericCell) {
  OmDocument doc;
  OmTable& t = doc.fRoot.AddTable();
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW, {OmRenderSample::Category("a")}));
  t.fCells[{0}] = OmRenderSample::Missing();
  EXPECT_TRUE(Contains(OmHtmlRenderer().Render(doc), "<th scope=\"row\">a</th><td class=\"num\"></td>"));
}

TEST(OmHtmlRenderTest, MessagesAreBoxesByLevel) {
  const std::string html = OmHtmlRenderer().Render(OmRenderSample::Build());
  EXPECT_TRUE(Contains(html, "<div class=\"message note\"><span class=\"level\">Note</span> "));
  EXPECT_TRUE(Contains(html, "<div class=\"message warning\"><span class=\"level\">Warning</span> "));
  EXPECT_TRUE(Contains(html, "<div class=\"message error\"><span class=\"level\">Error</span> "));
  EXPECT_TRUE(Contains(html, "&lt;Subject&gt; field has fewer than 2 levels &amp; no"));
  EXPECT_TRUE(Contains(html, "<pre class=\"frontend\">GLMIXFIT Reaction"));
}

TEST(OmHtmlRenderTest, ChartsAreTheirDrawingsAndHiddenOnesStayOutOfView) {
  OmDocument doc;
  OmHeading& h = doc.fRoot.AddHeading("Charts");
  OmChart& shown = h.AddChart();
  shown.fTitle = "Shown & told";
  shown.fKind = "Kind";
  shown.fSvg = "<svg class=\"glmix-chart\"><text>drawn</text></svg>\n";
  OmChart& hidden = h.AddChart();
  hidden.fTitle = "Kept";
  hidden.fSvg = "<svg class=\"glmix-chart\"></svg>\n";
  hidden.fbHidden = true;
  const std::string html = OmHtmlRenderer().Render(doc);
  EXPECT_TRUE(Contains(html, "<figure class=\"chart\" id=\"c1\" data-kind=\"Kind\" aria-label=\"Shown &amp; told\">\n"
                             "<svg class=\"glmix-chart\"><text>drawn</text></svg>\n</figure>"));
  EXPECT_TRUE(Contains(html, "<figure class=\"chart\" id=\"c2\" aria-label=\"Kept\" hidden>"));
  EXPECT_TRUE(Contains(html, "<a href=\"#c1\">Shown &amp; told</a>"));
  EXPECT_FALSE(Contains(html, "href=\"#c2\""));
}
