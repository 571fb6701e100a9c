#include "host/output/OmMemoryRegion.h"

#include <cassert>

OmMemoryRegion& OmMemoryRegion::DefaultHeap() {
  static OmMemoryRegion heap;
  return heap;
}

void* OmMemoryRegion::Allocate(std::size_t size) {
  void* block = ::operator new(size == 0 ? 1 : size);
  ++fLiveBlocks;
  return block;
}

void OmMemoryRegion::Release(void* block) {
  if (block == nullptr) return;
  assert(fLiveBlocks > 0 && "block released to a region that has none live");
  --fLiveBlocks;
  ::operator delete(block);
}
