#pragma once

#include <string>

#include "host/output/OmDocument.h"

// A report holding one chart of each kind the model viewer draws, each
// built the way the chart composer builds it: through the host's chart
// classes, from the templates, with the composer's text operations, and
// sent to the output under a procedure. Its data are made up but
// plausible, and the same on every run.
namespace ChartGallery {

// The chart kinds, in the order the report holds them.
extern const char* const kKinds[7];

// Builds the report into `document` under a heading of its own.
void Build(OmDocument& document);

}  // namespace ChartGallery
