#pragma once

#include "host/output/BpGroup.h"

class BpNodeState;

// A dimension of a table, which is the root group of its categories.
class BpDimension : public BpGroup {
 public:
  enum Place {
    ROWS = 0,
    COLUMNS = 1,
    LAYERS = 2,
  };

  BpDimension() = default;
  explicit BpDimension(BpNodeState* pState);

  // Where the dimension stands. `order` nests it among the dimensions of
  // the same place: 1 is the innermost, next to the data. `hideName` hides
  // the dimension's name over its labels, `hideLabels` the labels of its
  // categories.
  void Position(Place place, int order, bool hideName, bool hideLabels);
  void Position(int place, int order, bool hideName, bool hideLabels) {
    Position(static_cast<Place>(place), order, hideName, hideLabels);
  }

  // The dimension's index in its table; -1 unbound.
  int GetIndex() const;
};
