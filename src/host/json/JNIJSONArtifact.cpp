#include "host/json/JNIJSONArtifact.h"

#include <cmath>

JNIJSONArtifact::JNIJSONArtifact(Kind kind) : fKind(kind) {}

JNIJSONArtifact::~JNIJSONArtifact() = default;

bool JNIJSONArtifact::isJSONArray(const JNIJSONArtifact* value) {
  return value != nullptr && value->fKind == KIND_ARRAY;
}

bool JNIJSONArtifact::isJSONObject(const JNIJSONArtifact* value) {
  return value != nullptr && value->fKind == KIND_OBJECT;
}

bool JNIJSONArtifact::isJSONString(const JNIJSONArtifact* value) {
  return value != nullptr && value->fKind == KIND_STRING;
}

bool JNIJSONArtifact::isJSONNumber(const JNIJSONArtifact* value) {
  return value != nullptr && value->fKind == KIND_NUMBER;
}

bool JNIJSONArtifact::isJSONBoolean(const JNIJSONArtifact* value) {
  return value != nullptr && value->fKind == KIND_BOOLEAN;
}

bool JNIJSONArtifact::isJSONNull(const JNIJSONArtifact* value) {
  return value != nullptr && value->fKind == KIND_NULL;
}

bool JNIJSONArtifact::getBoolean(bool& out) const {
  if (fKind != KIND_BOOLEAN) return false;
  out = fbBoolean;
  return true;
}

bool JNIJSONArtifact::getNumber(double& out) const {
  if (fKind != KIND_NUMBER) return false;
  out = fbIntegral ? static_cast<double>(fInteger) : fNumber;
  return true;
}

bool JNIJSONArtifact::getInteger(long long& out) const {
  if (fKind != KIND_NUMBER) return false;
  if (fbIntegral) {
    out = fInteger;
    return true;
  }
  // 2^63 is exact as a double; every double below it in magnitude that has
  // no fraction converts exactly.
  const double limit = 9223372036854775808.0;
  if (!std::isfinite(fNumber) || std::trunc(fNumber) != fNumber || fNumber >= limit || fNumber < -limit) {
    return false;
  }
  out = static_cast<long long>(fNumber);
  return true;
}

bool JNIJSONArtifact::getString(std::string& out) const {
  if (fKind != KIND_STRING) return false;
  out = fString;
  return true;
}

void JNIJSONArtifact::Reset(Kind kind) {
  fKind = kind;
  fbBoolean = false;
  fbIntegral = false;
  fNumber = 0.0;
  fInteger = 0;
  fString.clear();
  fvElements.clear();
  fvMemberNames.clear();
  fMemberIndex.clear();
}

void JNIJSONArtifact::setNull() { Reset(KIND_NULL); }

void JNIJSONArtifact::setBoolean(bool value) {
  Reset(KIND_BOOLEAN);
  fbBoolean = value;
}

void JNIJSONArtifact::setNumber(double value) {
  Reset(KIND_NUMBER);
  fNumber = value;
}

void JNIJSONArtifact::setInteger(long long value) {
  Reset(KIND_NUMBER);
  fbIntegral = true;
  fInteger = value;
  fNumber = static_cast<double>(value);
}

void JNIJSONArtifact::setString(const std::string& value) {
  Reset(KIND_STRING);
  fString = value;
}

void JNIJSONArtifact::setEmptyArray() { Reset(KIND_ARRAY); }

void JNIJSONArtifact::setEmptyObject() { Reset(KIND_OBJECT); }

std::size_t JNIJSONArtifact::getElementCount() const { return fKind == KIND_ARRAY ? fvElements.size() : 0; }

JNIJSONArtifact* JNIJSONArtifact::getElement(std::size_t index) {
  if (fKind != KIND_ARRAY || index >= fvElements.size()) return nullptr;
  return fvElements[index].get();
}

const JNIJSONArtifact* JNIJSONArtifact::getElement(std::size_t index) const {
  if (fKind != KIND_ARRAY || index >= fvElements.size()) return nullptr;
  return fvElements[index].get();
}

JNIJSONArtifact* JNIJSONArtifact::appendElement() {
  if (fKind != KIND_ARRAY) return nullptr;
  fvElements.push_back(std::make_unique<JNIJSONArtifact>());
  return fvElements.back().get();
}

std::size_t JNIJSONArtifact::getMemberCount() const { return fKind == KIND_OBJECT ? fvElements.size() : 0; }

std::string JNIJSONArtifact::getMemberName(std::size_t index) const {
  if (fKind != KIND_OBJECT || index >= fvMemberNames.size()) return std::string();
  return fvMemberNames[index];
}

JNIJSONArtifact* JNIJSONArtifact::getMember(std::size_t index) {
  if (fKind != KIND_OBJECT || index >= fvElements.size()) return nullptr;
  return fvElements[index].get();
}

const JNIJSONArtifact* JNIJSONArtifact::getMember(std::size_t index) const {
  if (fKind != KIND_OBJECT || index >= fvElements.size()) return nullptr;
  return fvElements[index].get();
}

JNIJSONArtifact* JNIJSONArtifact::findMember(const std::string& name) {
  if (fKind != KIND_OBJECT) return nullptr;
  auto found = fMemberIndex.find(name);
  return found == fMemberIndex.end() ? nullptr : fvElements[found->second].get();
}

const JNIJSONArtifact* JNIJSONArtifact::findMember(const std::string& name) const {
  if (fKind != KIND_OBJECT) return nullptr;
  auto found = fMemberIndex.find(name);
  return found == fMemberIndex.end() ? nullptr : fvElements[found->second].get();
}

JNIJSONArtifact* JNIJSONArtifact::putMember(const std::string& name) {
  if (fKind != KIND_OBJECT) return nullptr;
  auto found = fMemberIndex.find(name);
  if (found != fMemberIndex.end()) {
    JNIJSONArtifact* member = fvElements[found->second].get();
    member->setNull();
    return member;
  }
  fMemberIndex.emplace(name, fvElements.size());
  fvMemberNames.push_back(name);
  fvElements.push_back(std::make_unique<JNIJSONArtifact>());
  return fvElements.back().get();
}
