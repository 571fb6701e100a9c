#pragma once

#include "host/output/BpCategory.h"
#include "host/output/BpHandle.h"

class BpCellText;
class BpNodeState;

// A group of categories of a dimension. A label that comes a second time
// under the same group gives back the group or category made the first
// time, so that repeated rows land under one head.
class BpGroup : public BpHandle {
 public:
  // How the children of a group are ordered.
  enum Sort {
    ASCENDING = 0,   // by label, rising
    DESCENDING = 1,  // by label, falling
    AS_CREATED = 2,  // in the order they were made
  };

  BpGroup() = default;
  explicit BpGroup(BpNodeState* pState);

  // A sub-group; `showLabel` false hides the group's own label.
  BpGroup Group(const BpCellText& text, bool showLabel, Sort sort);
  BpGroup Group(const BpCellText& text, bool showLabel, int sort) {
    return Group(text, showLabel, static_cast<Sort>(sort));
  }
  // A category, made current on its dimension.
  BpCategory Category(const BpCellText& text);

 protected:
  BpNodeState* State() const;
};
