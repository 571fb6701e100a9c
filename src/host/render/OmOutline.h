#pragma once

#include <string>
#include <vector>

#include "host/output/OmDocument.h"

// The items under a heading as a reader is shown them. Procedures open a
// heading for each table they write, so the same heading can follow itself
// several times; consecutive sibling headings with the same text are shown
// as one heading that holds their contents in order (merged again at every
// depth). The document itself keeps the outline as it was built.
class OmOutline {
 public:
  // One entry to show: an item that is no heading, or a heading made of one
  // or more of the document's headings.
  struct Entry {
    const OmItem* fpItem = nullptr;         // not a heading; null for a heading
    std::string fHeading;                   // the heading's text
    std::vector<const OmItem*> fvContents;  // the headings' items, in order
  };

  // The items of `heading`, in order.
  static std::vector<const OmItem*> ItemsOf(const OmHeading& heading);
  // `items` as entries. With `merge` false every heading stands alone.
  // Items without their object are left out.
  static std::vector<Entry> Entries(const std::vector<const OmItem*>& items, bool merge);
};
