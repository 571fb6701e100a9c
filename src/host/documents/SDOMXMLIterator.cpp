#include "host/documents/SDOMXMLIterator.h"

#include <utility>

SDOMXMLIterator::SDOMXMLIterator(std::vector<std::unique_ptr<SDOMXMLWrapper>> vElements)
    : fvElements(std::move(vElements)) {}

SDOMXMLIterator::~SDOMXMLIterator() = default;

bool SDOMXMLIterator::Next(SDOMXMLWrapper** element) {
  if (element == nullptr) return false;
  if (fPosition >= fvElements.size()) {
    *element = nullptr;
    return false;
  }
  *element = fvElements[fPosition++].get();
  return true;
}
