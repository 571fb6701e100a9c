#pragma once

#include <string>

#include "host/json/JNIJSONArtifact.h"

// Access to the arrays of a JSON document. Every operation takes the array
// value; a null pointer or a value that is no array has size 0, no elements,
// and takes no new ones.
class JNIJSONArray {
 public:
  JNIJSONArray() = default;

  static int size(const JNIJSONArtifact* array);
  // Null for an index out of range.
  static JNIJSONArtifact* get(JNIJSONArtifact* array, int index);
  static const JNIJSONArtifact* get(const JNIJSONArtifact* array, int index);

  // Typed elements: false, and out unchanged, when the element is missing
  // or of another kind.
  static bool getString(const JNIJSONArtifact* array, int index, std::string& out);
  static bool getDouble(const JNIJSONArtifact* array, int index, double& out);
  static bool getInteger(const JNIJSONArtifact* array, int index, long long& out);
  static bool getBoolean(const JNIJSONArtifact* array, int index, bool& out);

  // Appends an element and returns it.
  static JNIJSONArtifact* addString(JNIJSONArtifact* array, const std::string& value);
  static JNIJSONArtifact* addDouble(JNIJSONArtifact* array, double value);
  static JNIJSONArtifact* addInteger(JNIJSONArtifact* array, long long value);
  static JNIJSONArtifact* addBoolean(JNIJSONArtifact* array, bool value);
  static JNIJSONArtifact* addNull(JNIJSONArtifact* array);
  static JNIJSONArtifact* addObject(JNIJSONArtifact* array);
  static JNIJSONArtifact* addArray(JNIJSONArtifact* array);
};
