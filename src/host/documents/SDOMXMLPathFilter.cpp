#include "host/documents/SDOMXMLPathFilter.h"

#include <xercesc/framework/XMLElementDecl.hpp>

namespace xc = xercesc;

SDOMXMLPathFilter::SDOMXMLPathFilter(const std::vector<std::vector<std::u16string>>& paths)
    : fvPaths(paths), fbAll(paths.empty()) {}

bool SDOMXMLPathFilter::Holds(const XMLCh* name) const {
  if (fbAll || fWithin > 0) return true;
  const std::size_t depth = fvOpen.size();
  for (const std::vector<std::u16string>& path : fvPaths) {
    if (path.size() <= depth || path[depth] != name) continue;
    bool along = true;
    for (std::size_t i = 0; i < depth && along; ++i) along = path[i] == fvOpen[i];
    if (along) return true;
  }
  return false;
}

void SDOMXMLPathFilter::startElement(const xc::XMLElementDecl& elemDecl, const unsigned int urlId,
                                     const XMLCh* const elemPrefix, const xc::RefVectorOf<xc::XMLAttr>& attrList,
                                     const XMLSize_t attrCount, const bool isEmpty, const bool isRoot) {
  if (fSkipped > 0) {
    if (!isEmpty) ++fSkipped;
    return;
  }
  const XMLCh* name = elemDecl.getBaseName();
  if (!isRoot) {
    if (!Holds(name)) {
      // An empty element has no end of its own to wait for.
      if (!isEmpty) fSkipped = 1;
      return;
    }
    bool within = fbAll || fWithin > 0;
    for (const std::vector<std::u16string>& path : fvPaths) {
      within = within || (path.size() == fvOpen.size() + 1 && path.back() == name);
    }
    // Popped by endElement, which the base calls at once for an empty element.
    fvOpen.emplace_back(name);
    fvWithin.push_back(within);
    if (within) ++fWithin;
  }
  XercesDOMParser::startElement(elemDecl, urlId, elemPrefix, attrList, attrCount, isEmpty, isRoot);
}

void SDOMXMLPathFilter::endElement(const xc::XMLElementDecl& elemDecl, const unsigned int urlId, const bool isRoot,
                                   const XMLCh* const elemPrefix) {
  if (fSkipped > 0) {
    --fSkipped;
    return;
  }
  if (!isRoot && !fvOpen.empty()) {
    if (fvWithin.back()) --fWithin;
    fvOpen.pop_back();
    fvWithin.pop_back();
  }
  XercesDOMParser::endElement(elemDecl, urlId, isRoot, elemPrefix);
}

void SDOMXMLPathFilter::docCharacters(const XMLCh* const chars, const XMLSize_t length, const bool cdataSection) {
  if (fSkipped == 0) XercesDOMParser::docCharacters(chars, length, cdataSection);
}

void SDOMXMLPathFilter::ignorableWhitespace(const XMLCh* const chars, const XMLSize_t length,
                                            const bool cdataSection) {
  if (fSkipped == 0) XercesDOMParser::ignorableWhitespace(chars, length, cdataSection);
}

void SDOMXMLPathFilter::docComment(const XMLCh* const comment) {
  if (fSkipped == 0) XercesDOMParser::docComment(comment);
}

void SDOMXMLPathFilter::docPI(const XMLCh* const target, const XMLCh* const data) {
  if (fSkipped == 0) XercesDOMParser::docPI(target, data);
}
