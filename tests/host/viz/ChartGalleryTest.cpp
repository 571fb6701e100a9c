#include "ChartGallery.h"

#include <gtest/gtest.h>

#include <string>

#include "host/render/OmHtmlRenderer.h"

namespace {

int Count(const OmHeading& heading, OmItem::Kind kind) {
  int count = 0;
  for (const OmItem& item : heading.fvItems) count += item.fKind == kind ? 1 : 0;
  return count;
}

}  // namespace

TEST(ChartGallery, SendsOneChartOfEachKindWithoutAMessage) {
  OmDocument document;
  ChartGallery::Build(document);
  ASSERT_EQ(document.fRoot.fvItems.size(), 1u);
  const OmHeading& heading = *document.fRoot.fvItems[0].fpHeading;
  EXPECT_EQ(Count(heading, OmItem::MESSAGE), 0);
  ASSERT_EQ(Count(heading, OmItem::CHART), 7);
  for (std::size_t i = 0; i < 7; ++i) {
    const OmChart& chart = *heading.fvItems[i].fpChart;
    EXPECT_EQ(chart.fKind, ChartGallery::kKinds[i]);
    EXPECT_FALSE(chart.fTitle.empty());
    EXPECT_FALSE(chart.fMarkup.empty());
    EXPECT_FALSE(chart.fData.Empty());
    EXPECT_EQ(chart.fSvg.rfind("<svg", 0), 0u);
  }
  // The diagrams hold the histogram of the target.
  EXPECT_NE(heading.fvItems[1].fpChart->fSvg.find("class=\"embedded-chart\""), std::string::npos);
  EXPECT_NE(heading.fvItems[2].fpChart->fSvg.find("class=\"embedded-chart\""), std::string::npos);
}

TEST(ChartGallery, IsTheSameReportOnEveryRun) {
  OmDocument first;
  OmDocument second;
  ChartGallery::Build(first);
  ChartGallery::Build(second);
  EXPECT_EQ(OmHtmlRenderer().Render(first), OmHtmlRenderer().Render(second));
}
