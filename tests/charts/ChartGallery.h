#pragma once

#include "host/output/OmDocument.h"

// A report holding one chart of each kind the model viewer draws, made by
// the chart composer from a result model written by hand over a small
// dataset, under a procedure. Its numbers are made up but plausible, and
// the same on every run.
namespace ChartGallery {

// The chart kinds, in the order the report holds them.
extern const char* const kKinds[7];

// Builds the report into `document` under a heading of its own.
void Build(OmDocument& document);

}  // namespace ChartGallery
