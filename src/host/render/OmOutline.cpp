#include "host/render/OmOutline.h"

std::vector<const OmItem*> OmOutline::ItemsOf(const OmHeading& heading) {
  std::vector<const OmItem*> items;
  items.reserve(heading.fvItems.size());
  for (const OmItem& item : heading.fvItems) items.push_back(&item);
  return items;
}

std::vector<OmOutline::Entry> OmOutline::Entries(const std::vector<const OmItem*>& items, bool merge) {
  std::vector<Entry> entries;
  bool lastIsHeading = false;
  for (const OmItem* item : items) {
    if (item == nullptr) continue;
    if (item->fKind != OmItem::HEADING) {
      const bool present = (item->fKind == OmItem::TABLE && item->fpTable) ||
                           (item->fKind == OmItem::MESSAGE && item->fpMessage) ||
                           (item->fKind == OmItem::TEXT && item->fpText) ||
                           (item->fKind == OmItem::CHART && item->fpChart);
      if (!present) continue;
      Entry entry;
      entry.fpItem = item;
      entries.push_back(entry);
      lastIsHeading = false;
      continue;
    }
    if (!item->fpHeading) continue;
    const OmHeading& heading = *item->fpHeading;
    if (!merge || !lastIsHeading || entries.back().fHeading != heading.fText) {
      Entry entry;
      entry.fHeading = heading.fText;
      entries.push_back(entry);
    }
    std::vector<const OmItem*>& contents = entries.back().fvContents;
    for (const OmItem& inner : heading.fvItems) contents.push_back(&inner);
    lastIsHeading = true;
  }
  return entries;
}
