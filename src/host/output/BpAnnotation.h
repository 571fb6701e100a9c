#pragma once

#include <memory>

#include "host/output/BpCellText.h"

// A footnote: the text it owns, a marker and a flag. A marker of -1 lets
// the table number the footnote; the flag is kept for the host's use.
class BpAnnotation {
 public:
  // Takes `pText`, a heap text such as BpCellText::Replicate gives.
  explicit BpAnnotation(BpCellText* pText, int marker = -1, int flag = 0) : fpText(pText), fMarker(marker), fFlag(flag) {}
  BpAnnotation(const BpAnnotation& other);
  BpAnnotation& operator=(const BpAnnotation& other);
  ~BpAnnotation() = default;

  // Null only for an annotation made on a null text.
  const BpCellText* GetText() const { return fpText.get(); }
  void SetText(BpCellText* pText) { fpText.reset(pText); }
  int GetMarker() const { return fMarker; }
  void SetMarker(int marker) { fMarker = marker; }
  int GetFlag() const { return fFlag; }
  void SetFlag(int flag) { fFlag = flag; }

  // The final text of the footnote; "" without a text.
  std::string Render(const BpTextContext& context) const;

 private:
  std::unique_ptr<BpCellText> fpText;
  int fMarker;
  int fFlag;
};
