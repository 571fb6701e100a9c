#include "host/json/JNIJSONArray.h"

#include <climits>

int JNIJSONArray::size(const JNIJSONArtifact* array) {
  if (!JNIJSONArtifact::isJSONArray(array)) return 0;
  std::size_t n = array->getElementCount();
  return n > static_cast<std::size_t>(INT_MAX) ? INT_MAX : static_cast<int>(n);
}

JNIJSONArtifact* JNIJSONArray::get(JNIJSONArtifact* array, int index) {
  if (array == nullptr || index < 0) return nullptr;
  return array->getElement(static_cast<std::size_t>(index));
}

const JNIJSONArtifact* JNIJSONArray::get(const JNIJSONArtifact* array, int index) {
  if (array == nullptr || index < 0) return nullptr;
  return array->getElement(static_cast<std::size_t>(index));
}

bool JNIJSONArray::getString(const JNIJSONArtifact* array, int index, std::string& out) {
  const JNIJSONArtifact* element = get(array, index);
  return element != nullptr && element->getString(out);
}

bool JNIJSONArray::getDouble(const JNIJSONArtifact* array, int index, double& out) {
  const JNIJSONArtifact* element = get(array, index);
  return element != nullptr && element->getNumber(out);
}

bool JNIJSONArray::getInteger(const JNIJSONArtifact* array, int index, long long& out) {
  const JNIJSONArtifact* element = get(array, index);
  return element != nullptr && element->getInteger(out);
}

bool JNIJSONArray::getBoolean(const JNIJSONArtifact* array, int index, bool& out) {
  const JNIJSONArtifact* element = get(array, index);
  return element != nullptr && element->getBoolean(out);
}

JNIJSONArtifact* JNIJSONArray::addString(JNIJSONArtifact* array, const std::string& value) {
  JNIJSONArtifact* element = addNull(array);
  if (element != nullptr) element->setString(value);
  return element;
}

JNIJSONArtifact* JNIJSONArray::addDouble(JNIJSONArtifact* array, double value) {
  JNIJSONArtifact* element = addNull(array);
  if (element != nullptr) element->setNumber(value);
  return element;
}

JNIJSONArtifact* JNIJSONArray::addInteger(JNIJSONArtifact* array, long long value) {
  JNIJSONArtifact* element = addNull(array);
  if (element != nullptr) element->setInteger(value);
  return element;
}

JNIJSONArtifact* JNIJSONArray::addBoolean(JNIJSONArtifact* array, bool value) {
  JNIJSONArtifact* element = addNull(array);
  if (element != nullptr) element->setBoolean(value);
  return element;
}

JNIJSONArtifact* JNIJSONArray::addNull(JNIJSONArtifact* array) {
  return array != nullptr ? array->appendElement() : nullptr;
}

JNIJSONArtifact* JNIJSONArray::addObject(JNIJSONArtifact* array) {
  JNIJSONArtifact* element = addNull(array);
  if (element != nullptr) element->setEmptyObject();
  return element;
}

JNIJSONArtifact* JNIJSONArray::addArray(JNIJSONArtifact* array) {
  JNIJSONArtifact* element = addNull(array);
  if (element != nullptr) element->setEmptyArray();
  return element;
}
