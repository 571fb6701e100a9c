#include "host/json/jsonTableList.h"

#include "host/json/JNIJSONArray.h"
#include "host/json/JNIJSONArtifact.h"
#include "host/json/JNIJSONObject.h"

jsonTableList::jsonTableList(JNIJSONObject& document) {
  if (!document.isGood()) return;
  JNIJSONArtifact* top = document.getTop();
  JNIJSONArtifact* source = JNIJSONObject::getByPath(top, "glmm.RandomEffectsParameters.tables");
  if (source == nullptr) source = JNIJSONObject::getByPath(top, "tables");
  if (source == nullptr) source = top;
  if (source == nullptr) return;
  fbFound = true;
  if (!JNIJSONArtifact::isJSONArray(source)) {
    fvTables.push_back(source);
    return;
  }
  const int count = JNIJSONArray::size(source);
  fbNumbered = count != 1;
  for (int i = 0; i < count; ++i) {
    JNIJSONArtifact* table = JNIJSONArray::get(source, i);
    if (table != nullptr) fvTables.push_back(table);
  }
}

std::string jsonTableList::getTitle(const std::string& title, std::size_t index) const {
  return fbNumbered ? title + " " + std::to_string(index + 1) : title;
}
