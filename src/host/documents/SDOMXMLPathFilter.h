#pragma once

#include <string>
#include <vector>

#include <xercesc/parsers/XercesDOMParser.hpp>

// A DOM parser that holds, below the root, only the elements along the given
// paths of child names (each path's last element with all it contains); the
// others are read as the parse goes, so a document that is not well formed
// still fails, but no node is made for them. A reader that wants a few
// elements of a large document (a model file whose covariance matrix holds
// half a million cells) then neither waits for nor holds the rest. No path
// holds everything.
class SDOMXMLPathFilter : public xercesc::XercesDOMParser {
 public:
  // Each path as its steps, the names of the child elements from the root's.
  explicit SDOMXMLPathFilter(const std::vector<std::vector<std::u16string>>& paths);

  void startElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId, const XMLCh* const elemPrefix,
                    const xercesc::RefVectorOf<xercesc::XMLAttr>& attrList, const XMLSize_t attrCount,
                    const bool isEmpty, const bool isRoot) override;
  void endElement(const xercesc::XMLElementDecl& elemDecl, const unsigned int urlId, const bool isRoot,
                  const XMLCh* const elemPrefix) override;
  void docCharacters(const XMLCh* const chars, const XMLSize_t length, const bool cdataSection) override;
  void ignorableWhitespace(const XMLCh* const chars, const XMLSize_t length, const bool cdataSection) override;
  void docComment(const XMLCh* const comment) override;
  void docPI(const XMLCh* const target, const XMLCh* const data) override;

 private:
  // Whether the element of that local name, below the open held elements,
  // is held: on a path (a step of one) or within a path's last element.
  bool Holds(const XMLCh* name) const;

  std::vector<std::vector<std::u16string>> fvPaths;
  // The names of the open held elements below the root, whether each lies
  // within a path's last element (that element included), and how many do.
  std::vector<std::u16string> fvOpen;
  std::vector<bool> fvWithin;
  int fWithin = 0;
  // The depth of the open elements not held; 0 outside them.
  int fSkipped = 0;
  bool fbAll;
};
