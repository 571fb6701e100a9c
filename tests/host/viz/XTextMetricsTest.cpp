#include <gtest/gtest.h>

#include "host/viz/XTextMetrics.h"

TEST(XTextMetrics, MeasuresWithTheFontsAdvanceWidths) {
  // DejaVu Sans in font units of 2048: H 1540, e 1260, l 569, o 1253; a
  // browser measured "Hello" at 12px as 30.421875 px (it rounds each
  // advance to 1/64 of a pixel).
  EXPECT_NEAR(XTextMetrics::Width("Hello", 12.0), (1540 + 1260 + 569 + 569 + 1253) * 12.0 / 2048, 1e-9);
  EXPECT_NEAR(XTextMetrics::Width("Hello", 12.0), 30.421875, 0.02);
  EXPECT_GT(XTextMetrics::Width("Hello", 12.0, true), XTextMetrics::Width("Hello", 12.0));
  EXPECT_EQ(XTextMetrics::Width("", 12.0), 0.0);
  // Letters outside the table count as wide ones; bad bytes as one each.
  EXPECT_DOUBLE_EQ(XTextMetrics::Width("\xe4\xb8\xad", 10.0), 10.0);
  EXPECT_GT(XTextMetrics::Width("a\xff", 10.0), XTextMetrics::Width("a", 10.0));
  // A combining mark takes no room of its own.
  EXPECT_DOUBLE_EQ(XTextMetrics::Width("e\xcc\x81", 10.0), XTextMetrics::Width("e", 10.0));
}

TEST(XTextMetrics, WrapsAtBlanksAndInsideWordsTooLong) {
  const std::vector<std::string> lines = XTextMetrics::Wrap("Low dose given twice daily", 60.0, 12.0);
  ASSERT_GE(lines.size(), 2u);
  for (const std::string& line : lines) EXPECT_LE(XTextMetrics::Width(line, 12.0), 60.0) << line;
  std::string joined;
  for (const std::string& line : lines) joined += (joined.empty() ? "" : " ") + line;
  EXPECT_EQ(joined, "Low dose given twice daily");
  const std::vector<std::string> broken = XTextMetrics::Wrap("Supercalifragilistic", 40.0, 12.0);
  EXPECT_GT(broken.size(), 1u);
  for (const std::string& line : broken) EXPECT_LE(XTextMetrics::Width(line, 12.0), 40.0);
  EXPECT_EQ(XTextMetrics::Wrap("one\ntwo", 500.0, 12.0), (std::vector<std::string>{"one", "two"}));
}

TEST(XTextMetrics, CutsWithAnEllipsis) {
  EXPECT_EQ(XTextMetrics::Truncate("short", 100.0, 12.0), "short");
  const std::string cut = XTextMetrics::Truncate("High dose given at bedtime", 60.0, 12.0);
  EXPECT_LE(XTextMetrics::Width(cut, 12.0), 60.0);
  EXPECT_EQ(cut.substr(cut.size() - 3), "\xe2\x80\xa6");
  EXPECT_EQ(cut.rfind("High", 0), 0u);
}
