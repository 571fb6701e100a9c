#pragma once

#include <cstddef>

// A source of memory for the objects of composite texts: parse trees and
// copies of argument cells. Every block handed out must be given back with
// Release on the same region. The region counts its live blocks, so that a
// leak shows up as a count that does not return to where it was.
class OmMemoryRegion {
 public:
  OmMemoryRegion() = default;
  OmMemoryRegion(const OmMemoryRegion&) = delete;
  OmMemoryRegion& operator=(const OmMemoryRegion&) = delete;

  // The process-wide region used when no other is given.
  static OmMemoryRegion& DefaultHeap();

  // A block of at least `size` bytes, aligned for any object.
  void* Allocate(std::size_t size);
  // Gives back a block from Allocate; null is ignored.
  void Release(void* block);

  std::size_t GetLiveBlocks() const { return fLiveBlocks; }

  // Makes an object of type T in this region.
  template <typename T, typename... Args>
  T* Make(Args&&... args);
  // Destroys an object made by Make (or placed in a block of this region).
  template <typename T>
  void Destroy(T* object);

 private:
  std::size_t fLiveBlocks = 0;
};

#include <new>
#include <utility>

template <typename T, typename... Args>
T* OmMemoryRegion::Make(Args&&... args) {
  void* block = Allocate(sizeof(T));
  try {
    return new (block) T(std::forward<Args>(args)...);
  } catch (...) {
    Release(block);
    throw;
  }
}

template <typename T>
void OmMemoryRegion::Destroy(T* object) {
  if (object == nullptr) return;
  object->~T();
  Release(object);
}
