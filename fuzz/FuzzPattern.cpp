// The pattern expander of the output. The input is a pattern, then a zero
// byte, then one byte per step that builds the arguments: a text, a text
// made of a pattern of its own, the opening or closing of a repeat list, or
// the end. The composite is expanded both ways, copied, and destroyed; its
// memory region must then hold no block.
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>

#include "host/output/OmComposite.h"
#include "host/output/OmMemoryRegion.h"
#include "host/output/OmParseTreeNode.h"
#include "host/output/OmStringCell.h"

namespace {

const std::size_t kMaxInput = 4096;

// The argument texts hold markers of their own, which must stay as they are.
const char* const kTexts[] = {"x", "", "^1", "[%1:^1:]1", "a, b", "%2"};

void Build(const uint8_t* steps, std::size_t count, OmComposite& composite, OmMemoryRegion& region) {
  for (std::size_t i = 0; i < count; ++i) {
    const uint8_t step = steps[i];
    switch (step % 5) {
      case 0:
        composite.Add(OmStringCell(kTexts[(step / 5) % (sizeof kTexts / sizeof kTexts[0])]));
        break;
      case 1: {
        OmComposite inner(kTexts[(step / 5) % (sizeof kTexts / sizeof kTexts[0])], region);
        inner.Add(OmStringCell("inner"));
        composite.Add(inner);
        break;
      }
      case 2:
        composite.BeginRepeatList();
        break;
      case 3:
        composite.EndRepeatList();
        break;
      default:
        composite.End();
        break;
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  if (size > kMaxInput) return -1;
  const uint8_t* zero = static_cast<const uint8_t*>(std::memchr(bytes, 0, size));
  const std::size_t patternSize = zero == nullptr ? size : static_cast<std::size_t>(zero - bytes);
  const std::size_t stepsAt = zero == nullptr ? size : patternSize + 1;
  OmMemoryRegion region;
  {
    OmComposite composite(std::string(reinterpret_cast<const char*>(bytes), patternSize), region);
    Build(bytes + stepsAt, size - stepsAt, composite, region);
    composite.AsString();
    OmParseTreeNode* tree = nullptr;
    composite.Substitute(&tree, false);
    if (tree != nullptr) tree->AsString();
    composite.Substitute(&tree, true);
    OmCellText* copy = composite.Clone(region);
    copy->GetText();
    region.Destroy(copy);
  }
  // Every block of the region came back.
  if (region.GetLiveBlocks() != 0) std::abort();
  return 0;
}
