#pragma once

#include <string>

#include "host/output/BpTextContext.h"

struct OmCell;

// The text of a table cell, category, title, caption, note or message.
// Texts are values: they hold what they need to be written, and are turned
// into final text when they reach the output.
class BpCellText {
 public:
  virtual ~BpCellText() = default;

  // A copy on the heap; the caller owns it.
  virtual BpCellText* Replicate() const = 0;
  // The final text in a context.
  virtual std::string GetText(const BpTextContext& context) const = 0;
  // The final text without translation, in the body-of-table setting.
  std::string GetText() const { return GetText(BpTextContext()); }
  // Fills a cell of a table: the text, and for a number its value and format.
  virtual void FillCell(OmCell& cell, const BpTextContext& context) const;

 protected:
  BpCellText() = default;
  BpCellText(const BpCellText&) = default;
  BpCellText& operator=(const BpCellText&) = default;
};
