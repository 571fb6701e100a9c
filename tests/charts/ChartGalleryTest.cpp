#include "ChartGallery.h"

#include <gtest/gtest.h>

#include <string>

#include "ChartsTestSupport.h"
#include "host/render/OmHtmlRenderer.h"

TEST(ChartGallery, SendsOneChartOfEachKindWithoutAMessage) {
  OmDocument document;
  ChartGallery::Build(document);
  EXPECT_TRUE(charts_test::Messages(document).empty());
  const std::vector<const OmChart*> charts = charts_test::Charts(document);
  ASSERT_EQ(charts.size(), 7u);
  for (std::size_t i = 0; i < 7; ++i) {
    const OmChart& chart = *charts[i];
    EXPECT_EQ(chart.fKind, ChartGallery::kKinds[i]);
    EXPECT_FALSE(chart.fTitle.empty());
    EXPECT_FALSE(chart.fMarkup.empty());
    EXPECT_FALSE(chart.fData.Empty());
    EXPECT_EQ(chart.fSvg.rfind("<svg", 0), 0u);
  }
  // The diagrams hold the histogram of the target.
  EXPECT_NE(charts[1]->fSvg.find("class=\"embedded-chart\""), std::string::npos);
  EXPECT_NE(charts[2]->fSvg.find("class=\"embedded-chart\""), std::string::npos);
}

TEST(ChartGallery, IsTheSameReportOnEveryRun) {
  OmDocument first;
  OmDocument second;
  ChartGallery::Build(first);
  ChartGallery::Build(second);
  EXPECT_EQ(OmHtmlRenderer().Render(first), OmHtmlRenderer().Render(second));
}
