#pragma once

#include <nlohmann/json.hpp>
#include <string>

// Opens an HTML report in a real browser (headless Chromium) and measures
// what the browser laid out. The report itself has no script: the probe
// writes a copy of it with a probe script at its end, which measures each
// chart's drawing and writes its findings into the page, and reads them back
// from the browser's dump of the page.
//
// Starting the browser is browser_support's (BrowserSupport.h).
namespace BrowserProbe {

// The findings for each chart of the report (`extraFigures` is put at the
// end of its main part first), in document order: kind, width, height,
// elements, marks, axes, ticks, texts, the texts outside the drawing and
// the pairs of texts on top of each other, and the marks visible and
// outside. False, with the reason, when the browser gives none.
bool Measure(const std::string& browser, const std::string& scratch, const std::string& report,
             const std::string& extraFigures, nlohmann::json& findings, std::string& error);
// Expects a chart's findings to show a drawing of some size, with marks
// and texts, every mark visible, no text outside it and no two texts on top
// of each other.
void ExpectReadable(const nlohmann::json& chart);
// Width and height of a PNG image from its header; false when it is none.
bool PngSize(const std::string& png, unsigned& width, unsigned& height);

}  // namespace BrowserProbe
