#include "ChartGallery.h"

#include <gtest/gtest.h>

#include <fstream>

#include "host/render/OmHtmlRenderer.h"

TEST(ChartGallery, SendsOneChartOfEachKindWithoutAMessage) {
  OmDocument document;
  ChartGallery::Build(document);
  std::ofstream("/tmp/gallery.html") << OmHtmlRenderer().Render(document);
}
