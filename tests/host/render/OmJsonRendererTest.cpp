#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>
#include <string>

#include "OmRenderSample.h"
#include "host/render/OmJsonRenderer.h"

namespace {

using Json = nlohmann::json;

OmDimension Dim(const std::string& name, OmDimension::Place place, std::vector<OmDimensionNode> nodes) {
  OmDimension dim;
  dim.fName.fText = name;
  dim.fPlace = place;
  dim.fRoot.fbIsGroup = true;
  dim.fRoot.fvChildren = std::move(nodes);
  return dim;
}

Json Rendered(const OmDocument& doc) { return Json::parse(OmJsonRenderer().Render(doc)); }

}  // namespace

TEST(OmJsonRenderTest, MissingValueIsNullAndNumbersKeepTheirValue) {
  OmDocument doc;
  OmTable& t = doc.fRoot.AddTable();
  t.fvDimensions.push_back(Dim("Rows", OmDimension::ROW,
                               {OmRenderSample::Category("a"), OmRenderSample::Category("b"), OmRenderSample::Category("c"),
                                OmRenderSample::Category("d")}));
  t.fCells[{0}] = OmRenderSample::Missing();
  t.fCells[{1}] = OmRenderSample::Number(0.1234567890123, ".123");
  t.fCells[{2}] = OmRenderSample::Text("Normal");
  t.fCells[{3}] = OmRenderSample::Number(std::numeric_limits<double>::quiet_NaN(), "NaN");
  const Json cells = Rendered(doc)["items"][0]["cells"];
  ASSERT_EQ(cells.size(), 4u);
  EXPECT_TRUE(cells[0]["value"].is_null());
  EXPECT_TRUE(cells[0]["missing"].get<bool>());
  EXPECT_DOUBLE_EQ(cells[1]["value"].get<double>(), 0.1234567890123);
  EXPECT_EQ(cells[1]["text"], ".123");
  EXPECT_EQ(cells[1]["format"], "F8.3");
  EXPECT_EQ(cells[1]["coordinates"], Json::array({1}));
  EXPECT_TRUE(cells[2]["value"].is_null());
  EXPECT_FALSE(cells[2]["numeric"].get<bool>());
  EXPECT_TRUE(cells[3]["value"].is_null());
}

TEST(OmJsonRenderTest, KeysKeepTheirOrderAndOutputIsStable) {
  const OmDocument doc = OmRenderSample::Build();
  const std::string first = OmJsonRenderer().Render(doc);
  EXPECT_EQ(first, OmJsonRenderer().Render(doc));
  EXPECT_EQ(first.rfind("{\n  \"format\": \"glmixfit-output\",\n  \"version\": 1,\n  \"title\": ", 0), 0u);
  EXPECT_EQ(first.back(), '\n');
}

TEST(OmJsonRenderTest, StructureOfTheSample) {
  const Json doc = Rendered(OmRenderSample::Build());
  const Json& command = doc["items"][0];
  EXPECT_EQ(command["kind"], "heading");
  EXPECT_EQ(command["items"][0]["kind"], "text");
  EXPECT_EQ(command["items"][1]["level"], "note");
  const Json& fixed = command["items"][3];
  EXPECT_EQ(fixed["text"], "Fixed Effects");
  const Json& estimates = fixed["items"][1];
  EXPECT_EQ(estimates["subtype"], "Parameter Estimates");
  EXPECT_EQ(estimates["title"]["footnotes"], Json::array({"a"}));
  EXPECT_EQ(estimates["dimensions"][0]["place"], "layer");
  EXPECT_EQ(estimates["dimensions"][2]["place"], "column");
  const Json& group = estimates["dimensions"][1]["children"][1];
  EXPECT_EQ(group["kind"], "group");
  EXPECT_EQ(group["children"][1]["label"]["footnotes"], Json::array({"b"}));
  EXPECT_EQ(group["children"][1]["index"], 2);
  EXPECT_EQ(estimates["footnotes"][2]["marker"], "c");
  EXPECT_EQ(estimates["footnotes"][2]["text"], "Redundant parameter");
  EXPECT_EQ(estimates["captions"][0]["text"], "Dep variable is Reaction");
  EXPECT_EQ(estimates["notes"][0]["text"], "Reg weight is Precision");
  const Json& chart = command["items"].back();
  EXPECT_EQ(chart["kind"], "chart");
  EXPECT_EQ(chart["chartKind"], "GLMMPredictedByObserved");
  EXPECT_EQ(chart["title"], "Predicted by Observed");
  EXPECT_EQ(chart["hidden"], false);
  EXPECT_NE(chart["markup"].get<std::string>().find("<lineGuide slope=\"1\""), std::string::npos);
  ASSERT_EQ(chart["data"].size(), 1u);
  EXPECT_EQ(chart["data"][0]["name"], "s");
  EXPECT_EQ(chart["data"][0]["rows"], 4);
  EXPECT_EQ(chart["data"][0]["variables"][1]["name"], "Y");
  ASSERT_EQ(chart["data"][0]["variables"][1]["values"].size(), 4u);
  EXPECT_EQ(chart["data"][0]["variables"][1]["values"][3], 310.75);
  // The drawing is for the HTML report only.
  EXPECT_FALSE(chart.contains("svg"));
  EXPECT_EQ(command["items"][4]["level"], "warning");
  EXPECT_EQ(command["items"][5]["level"], "error");
}

TEST(OmJsonRenderTest, MalformedTextAndChartsWithoutMarkupDoNotBreak) {
  OmDocument doc;
  doc.fRoot.AddMessage(OmMessage::WARNING, "bad \xff byte");
  OmChart& chart = doc.fRoot.AddChart();
  chart.fMarkup = "<chart>\xff</chart>";
  OmChartData::Source source;
  source.fName = "s";
  source.fRowCount = 3;
  OmChartData::Variable variable;
  variable.fName = "v";
  variable.fCells[0].fbText = true;
  variable.fCells[0].fText = "t\xff";
  variable.fCells[2].fNumber = std::numeric_limits<double>::infinity();
  source.fvVariables.push_back(variable);
  chart.fData.fvSources.push_back(source);
  OmChart& picture = doc.fRoot.AddChart();
  picture.fbHidden = true;
  const Json out = Rendered(doc);
  EXPECT_EQ(out["items"][0]["text"], "bad \xef\xbf\xbd byte");
  EXPECT_EQ(out["items"][1]["markup"], "<chart>\xef\xbf\xbd</chart>");
  const Json& values = out["items"][1]["data"][0]["variables"][0]["values"];
  ASSERT_EQ(values.size(), 3u);
  EXPECT_EQ(values[0], "t\xef\xbf\xbd");
  EXPECT_TRUE(values[1].is_null());  // never written
  EXPECT_TRUE(values[2].is_null());  // not finite
  // A static picture keeps no markup and no data.
  EXPECT_TRUE(out["items"][2]["markup"].is_null());
  EXPECT_TRUE(out["items"][2]["data"].empty());
  EXPECT_EQ(out["items"][2]["hidden"], true);
}
