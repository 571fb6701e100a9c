#pragma once

#include <string>
#include <vector>

#include "host/output/OmDocument.h"
#include "host/render/OmTableLayout.h"

// One pivot table as terminal text of a given page width.
//
// Columns are sized to their contents: numbers are never cut and line up on
// their decimal point, labels and texts wrap at widths derived from the page.
// A table wider than the page is cut into panels of columns, each repeating
// the stub; a cut falls between outer column groups where it can.
class OmTextTable {
 public:
  OmTextTable(const OmTable& table, int pageWidth);

  int GetPageWidth() const { return fPageWidth; }
  // Widths of the data columns and of the stub's columns, in characters.
  const std::vector<int>& GetColumnWidths() const { return fvColumnWidths; }
  const std::vector<int>& GetStubWidths() const { return fvStubWidths; }
  // The data columns of each panel, in order.
  const std::vector<std::vector<int>>& GetPanels() const { return fvPanels; }

  // The table: title, one block per layer and panel, then captions, notes and
  // footnotes. Every line ends with a line feed.
  std::string Render() const;

  // A text with its footnote markers appended, as "text^a,b".
  static std::string WithMarkers(const std::string& text, const std::vector<std::string>& markers);

  static constexpr int kGap = 2;         // blanks between columns
  static constexpr int kMinPageWidth = 20;

 private:
  struct NumberPartsData {
    std::string fInteger;   // up to the decimal point
    std::string fFraction;  // from the decimal point, with the markers
  };

  std::string Label(const OmText* text) const;
  std::string CellText(const OmCell& cell) const;
  NumberPartsData NumberParts(const OmCell& cell) const;
  bool IsAlignedNumber(const OmCell& cell) const;

  void ComputeColumnWidths();
  void ComputeStubWidths();
  void ComputePanels();
  int StubTotal() const;
  std::vector<std::string> RenderBlock(int layer, const std::vector<int>& panel) const;

  OmTableLayout fLayout;
  int fPageWidth;
  std::vector<int> fvColumnWidths;
  std::vector<int> fvFractionWidths;  // per column, width of the widest fraction part
  std::vector<int> fvIntegerWidths;   // per column, width of the widest integer part
  std::vector<bool> fvbHasText;       // per column, whether texts share it with numbers
  std::vector<int> fvStubWidths;
  std::vector<std::vector<int>> fvPanels;
};
