#include <gtest/gtest.h>

#include <fstream>

#include "ChartGallery.h"
#include "host/render/OmHtmlRenderer.h"

TEST(ChartGallery, SendsOneChartOfEachKindWithoutAMessage) {
  OmDocument document;
  ChartGallery::Build(document);
  std::ofstream("/tmp/gallery.html") << OmHtmlRenderer().Render(document);
}
