// The drawing of each element of the chart markup, of faceting, line
// guides, legends, axes and an embedded chart, checked in the SVG text.
// The browser test (tests/host/render) checks the same drawings' geometry as
// a browser lays them out.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <regex>
#include <string>

#include "ChartTestSupport.h"
#include "host/viz/XChartRenderer.h"
#include "host/viz/XSvgWriter.h"
#include "host/viz/XTextMetrics.h"

using ChartTestSupport::Count;
using ChartTestSupport::DataBuilder;
using ChartTestSupport::Drawn;

namespace {

std::string Chart(const std::string& data, const std::string& graph, const std::string& extra = std::string()) {
  return "<chart width=\"400\" height=\"300\"><data>" + data + "</data>" + extra + "<graph>" + graph +
         "</graph></chart>";
}

std::string Decl(const std::string& name, const std::string& attributes = std::string()) {
  return "<variable source=\"s\" name=\"" + name + "\" " + attributes + "/>";
}

// Values of one attribute, in order, on the elements of that tag.
std::vector<std::string> Attributes(const std::string& svg, const std::string& tag, const std::string& name) {
  std::vector<std::string> out;
  const std::regex element("<" + tag + "\\b[^>]*>");
  const std::regex attribute("\\b" + name + "=\"([^\"]*)\"");
  for (auto it = std::sregex_iterator(svg.begin(), svg.end(), element); it != std::sregex_iterator(); ++it) {
    std::smatch value;
    const std::string text = it->str();
    if (std::regex_search(text, value, attribute)) out.push_back(value[1]);
  }
  return out;
}

}  // namespace

TEST(XChartPainter, PointsWithColourShapeTooltipAndLabel) {
  DataBuilder data;
  const char* groups[] = {"a", "b", "a"};
  for (long row = 0; row < 3; ++row) {
    data.Number("s", "x", row, row).Number("s", "y", row, 10 * row).Text("s", "g", row, groups[row]);
    data.Text("s", "name", row, "P&amp;" + std::to_string(row));
  }
  const std::string svg = Drawn(Chart(Decl("x") + Decl("y") + Decl("g", "categorical=\"true\"") + Decl("name"),
                                      "<point x=\"x\" y=\"y\"><color variable=\"g\"/><shape variable=\"g\"/>"
                                      "<label variable=\"name\"/><tooltip variable=\"name\"/></point>"),
                                data.Get());
  // Group a: circles; group b: squares; the colours by group.
  EXPECT_EQ(Count(svg, "<circle"), 2);
  EXPECT_EQ(Count(svg, "<rect x="), 1);
  const std::vector<std::string> fills = Attributes(svg, "circle", "fill");
  ASSERT_EQ(fills.size(), 2u);
  EXPECT_EQ(fills[0], fills[1]);
  EXPECT_NE(Attributes(svg, "rect", "fill").back(), fills[0]);
  // Labels and tooltips show the text as the chart code meant it.
  EXPECT_NE(svg.find("<title>P&amp;2</title>"), std::string::npos);
  EXPECT_EQ(Count(svg, "class=\"point-label\""), 3);
}

TEST(XChartPainter, LinesJoinEachGroupInTheOrderOfTheAxis) {
  DataBuilder data;
  const double xs[] = {3, 1, 2, 1, 2};
  const char* groups[] = {"u", "u", "u", "v", "v"};
  for (long row = 0; row < 5; ++row) {
    data.Number("s", "x", row, xs[row]).Number("s", "y", row, row).Text("s", "g", row, groups[row]);
  }
  const std::string svg = Drawn(
      Chart(Decl("x") + Decl("y") + Decl("g"), "<line x=\"x\" y=\"y\"><color variable=\"g\"/></line>"), data.Get());
  const std::vector<std::string> lines = Attributes(svg, "polyline", "points");
  ASSERT_EQ(lines.size(), 2u);
  // Group u runs x = 1, 2, 3: its first point is the leftmost.
  const std::vector<std::string> xs1 = {lines[0].substr(0, lines[0].find(','))};
  EXPECT_LT(std::stod(xs1[0]), std::stod(lines[0].substr(lines[0].rfind(' ') + 1)));
  EXPECT_EQ(Count(lines[0], ","), 3);
  EXPECT_EQ(Count(lines[1], ","), 2);
}

TEST(XChartPainter, IntervalsAsBarsFromZeroRangesAndWhiskers) {
  DataBuilder data;
  const char* levels[] = {"low", "low", "high", "high"};
  const double values[] = {4, 8, 2, 6};
  for (long row = 0; row < 4; ++row) {
    data.Text("s", "c", row, levels[row]).Number("s", "v", row, values[row]);
  }
  const std::string data1 = Decl("c", "categorical=\"true\"") + Decl("v");
  // Plain bars stand on zero, which the axis then holds.
  std::string svg = Drawn(Chart(data1, "<interval x=\"c\" y=\"v\" summarize=\"sum\"/>"), data.Get());
  EXPECT_EQ(Count(svg, "class=\"mark interval\""), 1);
  EXPECT_NE(svg.find(">0</text>"), std::string::npos);
  const std::vector<std::string> heights = Attributes(svg, "rect", "height");
  // Background, then two bars: 12 and 8 high in value, so in that ratio.
  ASSERT_EQ(heights.size(), 3u);
  EXPECT_NEAR(std::stod(heights[1]) / std::stod(heights[2]), 12.0 / 8.0, 0.01);
  // A range and a whisker span the rows' values.
  svg = Drawn(Chart(data1,
                    "<interval x=\"c\" y=\"v\" summarize=\"range\"/>"
                    "<interval x=\"c\" y=\"v\" summarize=\"range\" mark=\"errorbar\"/>"),
              data.Get());
  EXPECT_EQ(Count(svg, "class=\"mark errorbar\""), 1);
  EXPECT_EQ(Count(svg, "<path d=\"M"), 2);
  EXPECT_EQ(svg.find(">0</text>"), std::string::npos);  // a range need not reach zero
}

TEST(XChartPainter, AnAreaFillsDownToItsBase) {
  DataBuilder data;
  for (long row = 0; row < 4; ++row) data.Number("s", "x", row, row).Number("s", "y", row, 1 + row * row);
  const std::string svg = Drawn(Chart(Decl("x") + Decl("y"), "<area x=\"x\" y=\"y\"/>"), data.Get());
  const std::vector<std::string> polygons = Attributes(svg, "polygon", "points");
  ASSERT_EQ(polygons.size(), 1u);
  EXPECT_EQ(Count(polygons[0], ","), 8);  // four points along the top, four along the base
}

TEST(XChartPainter, EdgesByCoordinatesAndBetweenNodesWithWidthsFromWeights) {
  DataBuilder data;
  for (long row = 0; row < 3; ++row) {
    data.Number("e", "x1", row, 0).Number("e", "y1", row, row).Number("e", "x2", row, 2).Number("e", "y2", row, 1);
    data.Number("e", "w", row, 1 + 4 * row);
  }
  const std::string edges =
      "<variable source=\"e\" name=\"x1\"/><variable source=\"e\" name=\"y1\"/>"
      "<variable source=\"e\" name=\"x2\"/><variable source=\"e\" name=\"y2\"/>"
      "<variable source=\"e\" name=\"w\"/>";
  std::string svg =
      Drawn(Chart(edges,
                  "<edge source=\"e\" x=\"x1\" y=\"y1\" x2=\"x2\" y2=\"y2\">"
                  "<width variable=\"w\" high=\"9\" low=\"1\" widthFrom=\"1px\" widthTo=\"9px\"/></edge>"),
            data.Get());
  // Weights 1, 5, 9 over the range 1 to 9: widths 1, 5, 9.
  std::vector<std::string> widths;
  for (const std::string& w : Attributes(svg, "line", "stroke-width")) widths.push_back(w);
  EXPECT_NE(std::find(widths.begin(), widths.end(), "1"), widths.end());
  EXPECT_NE(std::find(widths.begin(), widths.end(), "5"), widths.end());
  EXPECT_NE(std::find(widths.begin(), widths.end(), "9"), widths.end());

  DataBuilder network;
  for (long i = 0; i < 4; ++i) network.Number("n", "id", i, 10 + i);
  network.Number("e", "from", 0, 10).Number("e", "to", 0, 12).Number("e", "from", 1, 11).Number("e", "to", 1, 99);
  svg = Drawn(Chart("<variable source=\"n\" name=\"id\"/><variable source=\"e\" name=\"from\"/>"
                    "<variable source=\"e\" name=\"to\"/>",
                    "<edge source=\"e\" from=\"from\" to=\"to\" nodes=\"n\"/>"
                    "<node source=\"n\" key=\"id\" layout=\"circle\"><label variable=\"id\"/></node>"),
              network.Get());
  EXPECT_EQ(Count(svg, "class=\"mark node\""), 1);
  EXPECT_EQ(Count(svg, "class=\"node-label\""), 4);
  // The edge to a node that does not exist is left out.
  EXPECT_EQ(Count(svg, "<line x1"), 1);
  // Nodes on a circle: the first at the top, the third at the bottom, both
  // on its vertical axis.
  const std::vector<std::string> cx = Attributes(svg, "circle", "cx");
  const std::vector<std::string> cy = Attributes(svg, "circle", "cy");
  ASSERT_EQ(cx.size(), 4u);
  EXPECT_EQ(cx[0], cx[2]);
  EXPECT_LT(std::stod(cy[0]), std::stod(cy[2]));
}

TEST(XChartPainter, ANodeHoldsTheChartEmbeddedInIt) {
  const std::string inner =
      "<chart><data><variable source=\"h\" name=\"X\"><n row=\"0\">1</n><n row=\"1\">2</n>"
      "<n row=\"2\">3</n></variable><variable source=\"h\" name=\"Y\"><n row=\"0\">2</n>"
      "<n row=\"1\">5</n><n row=\"2\">1</n></variable></data>"
      "<graph><interval x=\"X\" y=\"Y\"><binStatistic binCount=\"3\"/></interval>"
      "<line x=\"X\" y=\"Y\"><distributionStatistic distribution=\"normal\"/></line></graph></chart>";
  DataBuilder data;
  data.Number("t", "x", 0, 5).Number("t", "y", 0, 5).Text("t", "name", 0, "target");
  const std::string svg =
      Drawn(Chart("<variable source=\"t\" name=\"x\"/><variable source=\"t\" name=\"y\"/><variable source=\"t\" "
                  "name=\"name\"/>",
                  "<node source=\"t\" x=\"x\" y=\"y\" mark=\"box\" width=\"150px\" height=\"100px\" chartSlot=\"true\">"
                  "<label variable=\"name\"/><embeddedChart fieldType=\"1\">" +
                      inner + "</embeddedChart></node>"),
            data.Get());
  EXPECT_EQ(Count(svg, "class=\"embedded-chart\""), 1);
  const std::size_t embedded = svg.find("class=\"embedded-chart\"");
  const std::string nested = svg.substr(embedded, svg.find("</svg>", embedded) - embedded);
  EXPECT_EQ(Count(nested, "<rect x="), 3);   // three bins
  EXPECT_EQ(Count(nested, "<polyline"), 1);  // the fitted curve
  // An integer field's axis is labelled in whole numbers.
  EXPECT_EQ(Count(nested, ".5</text>"), 0);
  EXPECT_NE(svg.find(">target</text>"), std::string::npos);
}

TEST(XChartPainter, FacetsMakeSmallMultiplesThatShareTheirScales) {
  DataBuilder data;
  const char* f1[] = {"A", "A", "B", "B"};
  const char* f2[] = {"x", "y", "x", "y"};
  for (long row = 0; row < 4; ++row) {
    data.Number("s", "x", row, row)
        .Number("s", "y", row, row)
        .Text("s", "f1", row, f1[row])
        .Text("s", "f2", row, f2[row]);
  }
  const std::string facets =
      "<faceting><variableReference variable=\"f1\"></variableReference>"
      "<variableReference variable=\"f2\"></variableReference></faceting>"
      "<facetLayout><facetLevel level=\"1\"></facetLevel><facetLevel level=\"2\"></facetLevel></facetLayout>";
  const std::string decls = Decl("x") + Decl("y") + Decl("f1", "prefix=\"Group = \"") + Decl("f2");
  std::string svg = Drawn(Chart(decls, facets + "<point x=\"x\" y=\"y\"/>"), data.Get());
  EXPECT_EQ(Count(svg, "class=\"panel\""), 4);
  EXPECT_EQ(Count(svg, "<circle"), 4);
  EXPECT_NE(svg.find(">Group = A</tspan>"), std::string::npos);
  // Tick labels stand once per row of panels and once per column.
  EXPECT_EQ(Count(svg, "class=\"axis x\""), 4);
  // One facet wraps; a layer whose source lacks the facet is in every panel.
  DataBuilder more = data;
  more.Number("g", "gx", 0, 1.5).Number("g", "gy", 0, 1.5);
  svg = Drawn(Chart(decls + "<variable source=\"g\" name=\"gx\"/><variable source=\"g\" name=\"gy\"/>",
                    "<faceting><variableReference variable=\"f1\"></variableReference></faceting>"
                    "<facetLayout><facetLevel level=\"1\" wrap=\"1\"></facetLevel></facetLayout>"
                    "<point x=\"x\" y=\"y\"/><point source=\"g\" x=\"gx\" y=\"gy\" mark=\"square\"/>"),
              more.Get());
  EXPECT_EQ(Count(svg, "class=\"panel\""), 2);
  EXPECT_EQ(Count(svg, "class=\"panel-header\""), 2);
  EXPECT_EQ(Count(svg, "<rect x="), 2);  // the square, in each panel
}

TEST(XChartPainter, ALongFacetHeadingTakesASecondLineSoItsLevelShows) {
  DataBuilder data;
  const char* levels[] = {"0.2", "0.4", "0.6", "0.8"};
  for (long row = 0; row < 4; ++row) {
    data.Number("s", "x", row, row).Number("s", "y", row, row).Text("s", "f", row, levels[row]);
  }
  const std::string decls =
      Decl("x") + Decl("y") + Decl("f", "prefix=\"Nitrogen (hundredweight per acre) = \"");
  const std::string svg = Drawn(Chart(decls,
                                      "<faceting><variableReference variable=\"f\"></variableReference></faceting>"
                                      "<facetLayout><facetLevel level=\"1\" wrap=\"2\"></facetLevel></facetLayout>"
                                      "<point x=\"x\" y=\"y\"/>"),
                                data.Get());
  ASSERT_EQ(Count(svg, "class=\"panel\""), 4);
  // The heading goes on at its second line, which ends in the level.
  for (const char* level : levels) {
    EXPECT_NE(svg.find(std::string(" = ") + level + "</tspan></text>"), std::string::npos) << level;
  }
  EXPECT_EQ(Count(svg, ">Nitrogen (hundredweight</tspan>"), 4);
  EXPECT_EQ(svg.find("\xE2\x80\xA6"), std::string::npos);  // nothing cut short
  // Two lines of heading: the headers are twice a line high.
  const std::vector<std::string> heights = Attributes(svg, "rect", "height");
  EXPECT_NE(std::find(heights.begin(), heights.end(), XSvgWriter::Num(2 * XTextMetrics::LineHeight(12) + 4)),
            heights.end());
}

TEST(XChartPainter, LineGuidesStandInThePanelsTheirConditionLeaves) {
  DataBuilder data;
  const char* f1[] = {"A", "B", "C"};
  for (long row = 0; row < 3; ++row) {
    data.Text("s", "c", row, "k").Number("s", "v", row, row + 1).Text("s", "f1", row, f1[row]);
  }
  const std::string svg = Drawn(Chart(Decl("c", "categorical=\"true\"") + Decl("v") + Decl("f1"),
                                      "<faceting><variableReference variable=\"f1\"></variableReference></faceting>"
                                      "<facetLayout><facetLevel level=\"1\"></facetLevel></facetLayout>"
                                      "<interval x=\"c\" y=\"v\"/>"
                                      "<lineGuide axis=\"y\" y=\"2.5\" hideWhen=\"facet1!=&quot;B&quot;\"/>"
                                      "<lineGuide axis=\"y\" y=\"0.5\" hideWhen=\"f1==&quot;A&quot;\"/>"),
                                data.Get());
  // The first guide names a facet the chart does not have: hidden
  // everywhere; the second is hidden in panel A only.
  EXPECT_EQ(Count(svg, "class=\"guide\""), 2);
}

TEST(XChartPainter, LegendsShowTheMappedVariablesUnlessHidden) {
  DataBuilder data;
  for (long row = 0; row < 3; ++row) {
    data.Number("s", "x", row, row)
        .Number("s", "y", row, row)
        .Number("s", "t", row, row % 2)
        .Number("s", "f", row, 1 + row);
  }
  const std::string decls = Decl("x") + Decl("y") + Decl("t", "categorical=\"true\" label=\"Significance\"") +
                            "<variable source=\"s\" name=\"f\" label=\"Frequency\"/>";
  const std::string graph = "<point x=\"x\" y=\"y\"><color variable=\"t\"/><transparency variable=\"f\"/></point>";
  std::string svg = Drawn(Chart(decls, graph), data.Get());
  EXPECT_EQ(svg.find("class=\"legend\""), std::string::npos);  // no <legend>, no legend
  const std::string chart = Chart(decls, graph);
  svg = Drawn(
      chart.substr(0, chart.size() - 8) + "<legend id=\"legend\"><title><text>Key</text></title></legend></chart>",
      data.Get());
  EXPECT_NE(svg.find(">Key</text>"), std::string::npos);
  EXPECT_NE(svg.find(">Significance</text>"), std::string::npos);
  EXPECT_NE(svg.find(">Frequency</text>"), std::string::npos);
  EXPECT_EQ(Count(svg, "class=\"legend-label\""), 2 + 3);
  svg = Drawn(chart.substr(0, chart.size() - 8) +
                  "<legend id=\"legend\"><style visible=\"false\" id=\"legendStyle\"/></legend></chart>",
              data.Get());
  EXPECT_EQ(svg.find("class=\"legend\""), std::string::npos);
}

TEST(XChartPainter, LongCategoryLabelsWrapOrSlant) {
  DataBuilder data;
  const char* words[] = {"Placebo", "Low dose given twice daily with food", "High dose given once at bedtime"};
  for (long row = 0; row < 3; ++row) data.Text("s", "c", row, words[row]).Number("s", "v", row, row + 1);
  std::string svg = Drawn(Chart(Decl("c") + Decl("v"), "<point x=\"c\" y=\"v\"/>"), data.Get());
  EXPECT_GT(Count(svg, "<tspan"), 3);  // wrapped into lines
  EXPECT_EQ(svg.find("rotate(-45"), std::string::npos);
  DataBuilder many;
  for (long row = 0; row < 12; ++row) {
    many.Text("s", "c", row, "Category with a long name number " + std::to_string(row)).Number("s", "v", row, row);
  }
  svg = Drawn(Chart(Decl("c") + Decl("v"), "<point x=\"c\" y=\"v\"/>"), many.Get());
  EXPECT_EQ(Count(svg, "rotate(-45"), 12);
  svg = Drawn(Chart(Decl("c") + Decl("v"),
                    "<coordinates><axis dimension=\"x\" labelAngle=\"90\"/></coordinates>"
                    "<point x=\"c\" y=\"v\"/>"),
              many.Get());
  EXPECT_EQ(Count(svg, "rotate(-90"), 12 + 1);  // and the y axis title
}

TEST(XChartPainter, LabelsOfPointsWidenTheRangeSoTheyFit) {
  DataBuilder data;
  data.Number("s", "x", 0, 0).Number("s", "y", 0, 0).Text("s", "name", 0, "A rather long label to the left");
  data.Number("s", "x", 1, 1).Number("s", "y", 1, 1).Text("s", "name", 1, "B");
  data.Number("s", "lx", 0, -0.1).Number("s", "lx", 1, 0.9);
  const std::string svg =
      Drawn(Chart(Decl("x") + Decl("y") + Decl("name") + Decl("lx"),
                  "<point x=\"x\" y=\"y\"><label variable=\"name\" x=\"lx\" anchor=\"end\"/></point>"),
            data.Get());
  // The label ends at its anchor; the range grew to the left so that the
  // label starts inside the panel: its anchor stands well right of the
  // panel's edge, by about the label's width.
  std::smatch anchor;
  ASSERT_TRUE(
      std::regex_search(svg, anchor, std::regex("<text x=\"([0-9.]+)\"[^>]*class=\"point-label\"[^>]*>A rather")));
  EXPECT_GT(std::stod(anchor[1]), 160.0);
}

TEST(XChartPainter, ShowsTextsTheWayTheChartCodeWritesThem) {
  DataBuilder data;
  data.Text("s", "c", 0, "A &amp; B<BR/>second line").Number("s", "v", 0, 1);
  const std::string svg = Drawn(Chart(Decl("c", "label=\"Caf&amp;eacute; &lt;1&gt;\"") + Decl("v"),
                                      "<point x=\"c\" y=\"v\"><tooltip variable=\"c\"/></point>",
                                      "<title><text>One<BR/>Two &amp;amp; three</text></title>"),
                                data.Get());
  EXPECT_NE(svg.find("<title>A &amp; B\nsecond line</title>"), std::string::npos);
  EXPECT_NE(svg.find(">One</tspan>"), std::string::npos);
  EXPECT_NE(svg.find(">Two &amp; three</tspan>"), std::string::npos);
  EXPECT_NE(svg.find(">Caf&amp;eacute; &lt;1&gt;</text>"), std::string::npos);
}

TEST(XChartPainter, TheSameChartIsTheSameDrawing) {
  DataBuilder data;
  for (long row = 0; row < 50; ++row) data.Number("s", "x", row, row * 0.37).Number("s", "y", row, row * row * 0.01);
  const std::string chart = Chart(Decl("x") + Decl("y"), "<point x=\"x\" y=\"y\"/><line x=\"x\" y=\"y\"/>");
  EXPECT_EQ(Drawn(chart, data.Get()), Drawn(chart, data.Get()));
}

TEST(XChartPainter, RefusesWhatItCannotDrawAndSaysWhere) {
  std::string svg;
  XMarkupError error;
  EXPECT_FALSE(XChartRenderer::Render(Chart(Decl("x"), "\n<point x=\"x\" y=\"nosuch\"/>"), OmChartData(), svg, error));
  EXPECT_EQ(
      error.ToText(),
      "line 2, column 1: <point> names the variable \"nosuch\" in its y, which the data source \"s\" does not declare");
  EXPECT_TRUE(svg.empty());
  EXPECT_FALSE(XChartRenderer::Render(Chart("<variable source=\"s\" name=\"x\"><n row=\"0\">one</n></variable>", ""),
                                      OmChartData(), svg, error));
  EXPECT_NE(error.fMessage.find("\"one\" is not a number"), std::string::npos);
  DataBuilder huge;
  huge.Number("s", "x", 2000000, 1.0);
  EXPECT_FALSE(XChartRenderer::Render(Chart(Decl("x"), ""), huge.Get(), svg, error));
  EXPECT_NE(error.fMessage.find("a chart draws at most"), std::string::npos);
  EXPECT_FALSE(XChartRenderer::Render("<chart><graph><pie/></graph></chart>", OmChartData(), svg, error));
  EXPECT_FALSE(XChartRenderer::Render("not markup", OmChartData(), svg, error));
}

TEST(XChartPainter, MissingAndUnsetValuesAreLeftOut) {
  DataBuilder data;
  data.Number("s", "x", 0, 1).Number("s", "y", 0, 1);
  data.Number("s", "x", 1, 2);                                               // no y
  data.Number("s", "x", 2, 3).Number("s", "y", 2, -1.7976931348623157e308);  // the system-missing value
  data.Number("s", "x", 3, 4).Number("s", "y", 3, std::numeric_limits<double>::quiet_NaN());
  std::string svg =
      Drawn(Chart(Decl("x", "categorical=\"false\"") + Decl("y"), "<point x=\"x\" y=\"y\"/>"), data.Get());
  EXPECT_EQ(Count(svg, "<circle"), 1);
  // A text among the values makes the axis one of categories.
  data.Text("s", "x", 4, "five").Number("s", "y", 4, 5);
  svg = Drawn(Chart(Decl("x", "categorical=\"false\"") + Decl("y"), "<point x=\"x\" y=\"y\"/>"), data.Get());
  EXPECT_EQ(Count(svg, "<circle"), 2);
  EXPECT_NE(svg.find(">five</text>"), std::string::npos);
}
