#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

// One value of a JSON document: null, a boolean, a number, a string, an
// array or an object. Values are handed around by pointer, and a null
// pointer means "no such value". A value owns what it contains, so a
// pointer into a document stays valid as long as the document and the value
// itself do, whatever is added elsewhere.
//
// An object keeps its members in the order they were first put; putting a
// name again replaces that member's value in place.
class JNIJSONArtifact {
 public:
  enum Kind { KIND_NULL = 0, KIND_BOOLEAN, KIND_NUMBER, KIND_STRING, KIND_ARRAY, KIND_OBJECT };

  explicit JNIJSONArtifact(Kind kind = KIND_NULL);
  ~JNIJSONArtifact();
  JNIJSONArtifact(const JNIJSONArtifact&) = delete;
  JNIJSONArtifact& operator=(const JNIJSONArtifact&) = delete;

  // Each is false for a null pointer.
  static bool isJSONArray(const JNIJSONArtifact* value);
  static bool isJSONObject(const JNIJSONArtifact* value);
  static bool isJSONString(const JNIJSONArtifact* value);
  static bool isJSONNumber(const JNIJSONArtifact* value);
  static bool isJSONBoolean(const JNIJSONArtifact* value);
  static bool isJSONNull(const JNIJSONArtifact* value);

  Kind getKind() const { return fKind; }

  // Typed reading: false, and out unchanged, when the value is of another
  // kind. getInteger takes a number that has no fraction and fits.
  bool getBoolean(bool& out) const;
  bool getNumber(double& out) const;
  bool getInteger(long long& out) const;
  bool getString(std::string& out) const;

  // Each turns the value into that kind, dropping what it held.
  void setNull();
  void setBoolean(bool value);
  void setNumber(double value);
  void setInteger(long long value);
  void setString(const std::string& value);
  void setEmptyArray();
  void setEmptyObject();

  // Arrays. On a value of another kind the count is 0, look-ups give null
  // and nothing is appended.
  std::size_t getElementCount() const;
  JNIJSONArtifact* getElement(std::size_t index);
  const JNIJSONArtifact* getElement(std::size_t index) const;
  // A new null element at the end, to be set by the caller.
  JNIJSONArtifact* appendElement();

  // Objects, likewise.
  std::size_t getMemberCount() const;
  // Empty for an index out of range.
  std::string getMemberName(std::size_t index) const;
  JNIJSONArtifact* getMember(std::size_t index);
  const JNIJSONArtifact* getMember(std::size_t index) const;
  JNIJSONArtifact* findMember(const std::string& name);
  const JNIJSONArtifact* findMember(const std::string& name) const;
  // The member of that name, made null: a new one at the end, or the one
  // that was there, emptied in place.
  JNIJSONArtifact* putMember(const std::string& name);

  // Whether the number was written as an integer, or set as one.
  bool isIntegral() const { return fKind == KIND_NUMBER && fbIntegral; }

 private:
  void Reset(Kind kind);

  Kind fKind;
  bool fbBoolean = false;
  bool fbIntegral = false;
  double fNumber = 0.0;
  long long fInteger = 0;
  std::string fString;
  std::vector<std::unique_ptr<JNIJSONArtifact>> fvElements;
  std::vector<std::string> fvMemberNames;
  std::unordered_map<std::string, std::size_t> fMemberIndex;
};
