#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "host/documents/SDOMXMLWrapper.h"

// Walks a list of elements, as SDOMXMLWrapper::GetElementIterator makes it.
// The iterator owns the elements it hands out: they live as long as it does.
class SDOMXMLIterator {
 public:
  explicit SDOMXMLIterator(std::vector<std::unique_ptr<SDOMXMLWrapper>> vElements);
  ~SDOMXMLIterator();
  SDOMXMLIterator(const SDOMXMLIterator&) = delete;
  SDOMXMLIterator& operator=(const SDOMXMLIterator&) = delete;

  // The next element; false, and null in *element, at the end.
  bool Next(SDOMXMLWrapper** element);
  // Back to the first element.
  void Reset() { fPosition = 0; }
  std::size_t GetCount() const { return fvElements.size(); }

 private:
  std::vector<std::unique_ptr<SDOMXMLWrapper>> fvElements;
  std::size_t fPosition = 0;
};
