#include "host/render/OmFootnoteMarkers.h"

#include <algorithm>

OmFootnoteMarkers::OmFootnoteMarkers(int footnoteCount)
    : fvOrdinal(static_cast<std::size_t>(std::max(footnoteCount, 0)), -1) {}

std::string OmFootnoteMarkers::MarkerFor(int ordinal) {
  if (ordinal < 0) return std::string();
  // Bijective base 26: a..z, aa..az, ba..
  std::string out;
  long n = static_cast<long>(ordinal) + 1;
  while (n > 0) {
    --n;
    out.insert(out.begin(), static_cast<char>('a' + n % 26));
    n /= 26;
  }
  return out;
}

void OmFootnoteMarkers::Reference(const OmText& text) {
  for (int index : text.fvFootnotes) {
    if (index < 0 || index >= GetFootnoteCount()) continue;
    int& ordinal = fvOrdinal[static_cast<std::size_t>(index)];
    if (ordinal >= 0) continue;
    ordinal = static_cast<int>(fvOrder.size());
    fvOrder.push_back(index);
  }
}

void OmFootnoteMarkers::Complete() {
  for (int index = 0; index < GetFootnoteCount(); ++index) {
    int& ordinal = fvOrdinal[static_cast<std::size_t>(index)];
    if (ordinal >= 0) continue;
    ordinal = static_cast<int>(fvOrder.size());
    fvOrder.push_back(index);
  }
}

std::string OmFootnoteMarkers::GetMarker(int footnote) const {
  if (footnote < 0 || footnote >= GetFootnoteCount()) return std::string();
  return MarkerFor(fvOrdinal[static_cast<std::size_t>(footnote)]);
}

std::vector<std::string> OmFootnoteMarkers::MarkersOf(const OmText& text) const {
  std::vector<int> ordinals;
  for (int index : text.fvFootnotes) {
    if (index < 0 || index >= GetFootnoteCount()) continue;
    const int ordinal = fvOrdinal[static_cast<std::size_t>(index)];
    if (ordinal >= 0) ordinals.push_back(ordinal);
  }
  std::sort(ordinals.begin(), ordinals.end());
  ordinals.erase(std::unique(ordinals.begin(), ordinals.end()), ordinals.end());
  std::vector<std::string> out;
  out.reserve(ordinals.size());
  for (int ordinal : ordinals) out.push_back(MarkerFor(ordinal));
  return out;
}
