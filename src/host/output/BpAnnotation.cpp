#include "host/output/BpAnnotation.h"

BpAnnotation::BpAnnotation(const BpAnnotation& other)
    : fpText(other.fpText ? other.fpText->Replicate() : nullptr), fMarker(other.fMarker), fFlag(other.fFlag) {}

BpAnnotation& BpAnnotation::operator=(const BpAnnotation& other) {
  if (this == &other) return *this;
  fpText.reset(other.fpText ? other.fpText->Replicate() : nullptr);
  fMarker = other.fMarker;
  fFlag = other.fFlag;
  return *this;
}

std::string BpAnnotation::Render(const BpTextContext& context) const {
  return fpText ? fpText->GetText(context) : std::string();
}
