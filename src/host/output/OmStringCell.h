#pragma once

#include <string>

#include "host/output/OmCellText.h"

// A cell holding a finished string.
class OmStringCell : public OmCellText {
 public:
  OmStringCell() = default;
  explicit OmStringCell(const std::string& text) : fText(text) {}
  explicit OmStringCell(const char* text) : fText(text ? text : "") {}

  const std::string& GetString() const { return fText; }
  void SetString(const std::string& text) { fText = text; }

  std::string GetText() const override { return fText; }
  OmCellText* Clone(OmMemoryRegion& region) const override;

 private:
  std::string fText;
};
