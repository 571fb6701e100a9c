#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "host/json/JNIJSONArtifact.h"

// A JSON document, parsed from text or built value by value, and the
// operations that reach into its objects. The document owns every value in
// it; the pointers it hands out stay valid while the document lives.
class JNIJSONObject {
 public:
  // Nesting of arrays and objects deeper than this is refused when reading.
  enum { MAX_DEPTH = 512 };

  // A document holding an empty object.
  JNIJSONObject();
  // Parses the text; isGood tells whether that worked. A null text is not
  // a document.
  explicit JNIJSONObject(const char* text);
  ~JNIJSONObject();
  JNIJSONObject(const JNIJSONObject&) = delete;
  JNIJSONObject& operator=(const JNIJSONObject&) = delete;

  // Replaces the document by the one parsed from the text. On failure the
  // document is empty and getError tells why.
  bool parse(const char* text);
  bool isGood() const;
  // Empty when the text parsed; otherwise the reason with its line and
  // column, and the byte offset at which reading stopped.
  const std::string& getError() const;
  std::size_t getErrorOffset() const;

  // The root value; null when the text did not parse.
  JNIJSONArtifact* getTop();
  const JNIJSONArtifact* getTop() const;

  // The value at a dotted path below `from`: each step is a member name of
  // an object or a decimal index into an array. Null when a step is missing,
  // when the path or a step is empty, or when `from` is null.
  static JNIJSONArtifact* getByPath(JNIJSONArtifact* from, const std::string& path);
  static const JNIJSONArtifact* getByPath(const JNIJSONArtifact* from, const std::string& path);

  // Members of an object by name; null or false when `object` is not an
  // object or has no such member.
  static JNIJSONArtifact* get(JNIJSONArtifact* object, const std::string& key);
  static const JNIJSONArtifact* get(const JNIJSONArtifact* object, const std::string& key);
  static bool has(const JNIJSONArtifact* object, const std::string& key);
  static std::vector<std::string> keys(const JNIJSONArtifact* object);
  // Typed members: false, and out unchanged, when the member is missing or
  // of another kind.
  static bool getString(const JNIJSONArtifact* object, const std::string& key, std::string& out);
  static bool getDouble(const JNIJSONArtifact* object, const std::string& key, double& out);
  static bool getInteger(const JNIJSONArtifact* object, const std::string& key, long long& out);
  static bool getBoolean(const JNIJSONArtifact* object, const std::string& key, bool& out);

  // Puts a member, replacing one of the same name, and returns it; null when
  // `object` is not an object.
  static JNIJSONArtifact* putString(JNIJSONArtifact* object, const std::string& key, const std::string& value);
  static JNIJSONArtifact* putDouble(JNIJSONArtifact* object, const std::string& key, double value);
  static JNIJSONArtifact* putInteger(JNIJSONArtifact* object, const std::string& key, long long value);
  static JNIJSONArtifact* putBoolean(JNIJSONArtifact* object, const std::string& key, bool value);
  static JNIJSONArtifact* putNull(JNIJSONArtifact* object, const std::string& key);
  static JNIJSONArtifact* putObject(JNIJSONArtifact* object, const std::string& key);
  static JNIJSONArtifact* putArray(JNIJSONArtifact* object, const std::string& key);

  // The document as JSON text: compact with a negative indent, else one
  // value per line indented by that many blanks. Empty when the document did
  // not parse. Numbers that are not finite are written as null.
  std::string toString(int indent = -1) const;
  static std::string toString(const JNIJSONArtifact* value, int indent = -1);

 private:
  struct Impl;
  std::unique_ptr<Impl> fpImpl;
};
