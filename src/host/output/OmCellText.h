#pragma once

#include <string>

class OmMemoryRegion;

// A text that can stand as an argument of a composite: plain strings, and
// composites themselves.
class OmCellText {
 public:
  virtual ~OmCellText() = default;

  // The final text of the cell.
  virtual std::string GetText() const = 0;
  // A copy made in `region`; give it back with region.Destroy.
  virtual OmCellText* Clone(OmMemoryRegion& region) const = 0;

 protected:
  OmCellText() = default;
  OmCellText(const OmCellText&) = default;
  OmCellText& operator=(const OmCellText&) = default;
};
