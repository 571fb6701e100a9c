#pragma once

#include <string>

// The viewer side as the host drives it after a fit: the clinic data of the
// result reader's tests with their dictionary, a plug-in that is handed one
// model's PMML and StatXML texts and asked for its output, and that output
// rendered as terminal text.
namespace fuzzviewer {

// A document of tests/data/documents/glmm, read once.
const std::string& Fixture(const std::string& name);

// False when the documents break an assertion of the viewer (see
// FuzzViewer.cpp): such an input is not kept.
bool Show(const std::string& pmml, const std::string& statXML);

}  // namespace fuzzviewer
