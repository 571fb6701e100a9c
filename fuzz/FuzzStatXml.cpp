// The StatXML reader of the viewer: the input is the results document of a
// model whose PMML is the clinic fixture's. Whatever it holds, the viewer
// reads what it can, says once that the rest could not be read, and shows
// the output it has.
#include <cstddef>
#include <cstdint>
#include <string>

#include "FuzzViewer.h"

namespace {

const std::size_t kMaxInput = 65536;

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size > kMaxInput) return -1;
  const std::string statXML(reinterpret_cast<const char*>(bytes), size);
  return fuzzviewer::Show(fuzzviewer::Fixture("clinic.pmml.xml"), statXML) ? 0 : -1;
}
