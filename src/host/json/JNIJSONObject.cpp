#include "host/json/JNIJSONObject.h"

#include <cstring>
#include <limits>
#include <utility>

#include <nlohmann/json.hpp>

namespace {

using Json = nlohmann::ordered_json;

// Builds the values of a document as the parser meets them.
class TreeBuilder : public nlohmann::json_sax<Json> {
 public:
  explicit TreeBuilder(JNIJSONArtifact* root) : fpRoot(root) {}

  bool null() override { return Place() != nullptr; }

  bool boolean(bool value) override {
    JNIJSONArtifact* v = Place();
    v->setBoolean(value);
    return true;
  }

  bool number_integer(number_integer_t value) override {
    Place()->setInteger(static_cast<long long>(value));
    return true;
  }

  bool number_unsigned(number_unsigned_t value) override {
    JNIJSONArtifact* v = Place();
    if (value <= static_cast<number_unsigned_t>(std::numeric_limits<long long>::max())) {
      v->setInteger(static_cast<long long>(value));
    } else {
      v->setNumber(static_cast<double>(value));
    }
    return true;
  }

  bool number_float(number_float_t value, const string_t&) override {
    Place()->setNumber(value);
    return true;
  }

  bool string(string_t& value) override {
    Place()->setString(value);
    return true;
  }

  bool binary(binary_t&) override { return Refuse("binary values are not JSON text"); }

  bool start_object(std::size_t) override {
    if (fvOpen.size() >= JNIJSONObject::MAX_DEPTH) return TooDeep();
    JNIJSONArtifact* v = Place();
    v->setEmptyObject();
    fvOpen.push_back(v);
    return true;
  }

  bool key(string_t& name) override {
    fKey = name;
    return true;
  }

  bool end_object() override {
    fvOpen.pop_back();
    return true;
  }

  bool start_array(std::size_t) override {
    if (fvOpen.size() >= JNIJSONObject::MAX_DEPTH) return TooDeep();
    JNIJSONArtifact* v = Place();
    v->setEmptyArray();
    fvOpen.push_back(v);
    return true;
  }

  bool end_array() override {
    fvOpen.pop_back();
    return true;
  }

  bool parse_error(std::size_t position, const std::string&, const nlohmann::detail::exception& ex) override {
    std::string message = ex.what();
    // The library's own prefix, "[json.exception.parse_error.101] ", tells
    // the reader nothing.
    if (!message.empty() && message[0] == '[') {
      std::size_t close = message.find("] ");
      if (close != std::string::npos) message.erase(0, close + 2);
    }
    fError = message;
    fErrorOffset = position;
    return false;
  }

  const std::string& GetError() const { return fError; }
  std::size_t GetErrorOffset() const { return fErrorOffset; }

 private:
  // Where the next value goes: the root, the end of the open array, or the
  // member named by the last key of the open object.
  JNIJSONArtifact* Place() {
    if (fvOpen.empty()) return fpRoot;
    JNIJSONArtifact* container = fvOpen.back();
    if (container->getKind() == JNIJSONArtifact::KIND_ARRAY) return container->appendElement();
    return container->putMember(fKey);
  }

  bool TooDeep() {
    return Refuse("arrays and objects are nested deeper than " + std::to_string(JNIJSONObject::MAX_DEPTH) +
                  " levels");
  }

  bool Refuse(const std::string& message) {
    fError = message;
    return false;
  }

  JNIJSONArtifact* fpRoot;
  std::vector<JNIJSONArtifact*> fvOpen;
  std::string fKey;
  std::string fError;
  std::size_t fErrorOffset = 0;
};

Json ToJson(const JNIJSONArtifact& value) {
  switch (value.getKind()) {
    case JNIJSONArtifact::KIND_BOOLEAN: {
      bool b = false;
      value.getBoolean(b);
      return Json(b);
    }
    case JNIJSONArtifact::KIND_NUMBER: {
      if (value.isIntegral()) {
        long long i = 0;
        value.getInteger(i);
        return Json(i);
      }
      double d = 0.0;
      value.getNumber(d);
      return Json(d);
    }
    case JNIJSONArtifact::KIND_STRING: {
      std::string s;
      value.getString(s);
      return Json(s);
    }
    case JNIJSONArtifact::KIND_ARRAY: {
      Json array = Json::array();
      for (std::size_t i = 0; i < value.getElementCount(); ++i) array.push_back(ToJson(*value.getElement(i)));
      return array;
    }
    case JNIJSONArtifact::KIND_OBJECT: {
      Json object = Json::object();
      for (std::size_t i = 0; i < value.getMemberCount(); ++i) {
        object[value.getMemberName(i)] = ToJson(*value.getMember(i));
      }
      return object;
    }
    case JNIJSONArtifact::KIND_NULL:
      break;
  }
  return Json();
}

// A decimal array index with nothing else in it; false otherwise.
bool ReadIndex(const std::string& step, std::size_t& index) {
  if (step.empty() || step.size() > 18) return false;
  index = 0;
  for (char c : step) {
    if (c < '0' || c > '9') return false;
    index = index * 10 + static_cast<std::size_t>(c - '0');
  }
  return true;
}

template <typename Artifact>
Artifact* FollowPath(Artifact* from, const std::string& path) {
  if (from == nullptr || path.empty()) return nullptr;
  Artifact* current = from;
  std::size_t start = 0;
  while (current != nullptr) {
    std::size_t dot = path.find('.', start);
    std::string step = path.substr(start, dot == std::string::npos ? std::string::npos : dot - start);
    if (step.empty()) return nullptr;
    if (JNIJSONArtifact::isJSONObject(current)) {
      current = current->findMember(step);
    } else if (JNIJSONArtifact::isJSONArray(current)) {
      std::size_t index = 0;
      current = ReadIndex(step, index) ? current->getElement(index) : nullptr;
    } else {
      return nullptr;
    }
    if (dot == std::string::npos) break;
    start = dot + 1;
  }
  return current;
}

}  // namespace

struct JNIJSONObject::Impl {
  std::unique_ptr<JNIJSONArtifact> fpRoot;
  std::string fError;
  std::size_t fErrorOffset = 0;
};

JNIJSONObject::JNIJSONObject() : fpImpl(new Impl) {
  fpImpl->fpRoot = std::make_unique<JNIJSONArtifact>(JNIJSONArtifact::KIND_OBJECT);
}

JNIJSONObject::JNIJSONObject(const char* text) : fpImpl(new Impl) { parse(text); }

JNIJSONObject::~JNIJSONObject() = default;

bool JNIJSONObject::parse(const char* text) {
  fpImpl->fpRoot.reset();
  fpImpl->fError.clear();
  fpImpl->fErrorOffset = 0;
  if (text == nullptr) {
    fpImpl->fError = "there is no text to read";
    return false;
  }

  auto root = std::make_unique<JNIJSONArtifact>();
  TreeBuilder builder(root.get());
  bool ok = false;
  try {
    const char* end = text + std::strlen(text);
    ok = Json::sax_parse(text, end, &builder);
  } catch (const std::exception& e) {
    fpImpl->fError = e.what();
    return false;
  }
  if (!ok) {
    fpImpl->fError = builder.GetError().empty() ? "the text is not JSON" : builder.GetError();
    fpImpl->fErrorOffset = builder.GetErrorOffset();
    return false;
  }
  fpImpl->fpRoot = std::move(root);
  return true;
}

bool JNIJSONObject::isGood() const { return fpImpl->fpRoot != nullptr; }

const std::string& JNIJSONObject::getError() const { return fpImpl->fError; }

std::size_t JNIJSONObject::getErrorOffset() const { return fpImpl->fErrorOffset; }

JNIJSONArtifact* JNIJSONObject::getTop() { return fpImpl->fpRoot.get(); }

const JNIJSONArtifact* JNIJSONObject::getTop() const { return fpImpl->fpRoot.get(); }

JNIJSONArtifact* JNIJSONObject::getByPath(JNIJSONArtifact* from, const std::string& path) {
  return FollowPath(from, path);
}

const JNIJSONArtifact* JNIJSONObject::getByPath(const JNIJSONArtifact* from, const std::string& path) {
  return FollowPath(from, path);
}

JNIJSONArtifact* JNIJSONObject::get(JNIJSONArtifact* object, const std::string& key) {
  return object != nullptr ? object->findMember(key) : nullptr;
}

const JNIJSONArtifact* JNIJSONObject::get(const JNIJSONArtifact* object, const std::string& key) {
  return object != nullptr ? object->findMember(key) : nullptr;
}

bool JNIJSONObject::has(const JNIJSONArtifact* object, const std::string& key) { return get(object, key) != nullptr; }

std::vector<std::string> JNIJSONObject::keys(const JNIJSONArtifact* object) {
  std::vector<std::string> names;
  if (object == nullptr) return names;
  for (std::size_t i = 0; i < object->getMemberCount(); ++i) names.push_back(object->getMemberName(i));
  return names;
}

bool JNIJSONObject::getString(const JNIJSONArtifact* object, const std::string& key, std::string& out) {
  const JNIJSONArtifact* member = get(object, key);
  return member != nullptr && member->getString(out);
}

bool JNIJSONObject::getDouble(const JNIJSONArtifact* object, const std::string& key, double& out) {
  const JNIJSONArtifact* member = get(object, key);
  return member != nullptr && member->getNumber(out);
}

bool JNIJSONObject::getInteger(const JNIJSONArtifact* object, const std::string& key, long long& out) {
  const JNIJSONArtifact* member = get(object, key);
  return member != nullptr && member->getInteger(out);
}

bool JNIJSONObject::getBoolean(const JNIJSONArtifact* object, const std::string& key, bool& out) {
  const JNIJSONArtifact* member = get(object, key);
  return member != nullptr && member->getBoolean(out);
}

JNIJSONArtifact* JNIJSONObject::putString(JNIJSONArtifact* object, const std::string& key, const std::string& value) {
  JNIJSONArtifact* member = putNull(object, key);
  if (member != nullptr) member->setString(value);
  return member;
}

JNIJSONArtifact* JNIJSONObject::putDouble(JNIJSONArtifact* object, const std::string& key, double value) {
  JNIJSONArtifact* member = putNull(object, key);
  if (member != nullptr) member->setNumber(value);
  return member;
}

JNIJSONArtifact* JNIJSONObject::putInteger(JNIJSONArtifact* object, const std::string& key, long long value) {
  JNIJSONArtifact* member = putNull(object, key);
  if (member != nullptr) member->setInteger(value);
  return member;
}

JNIJSONArtifact* JNIJSONObject::putBoolean(JNIJSONArtifact* object, const std::string& key, bool value) {
  JNIJSONArtifact* member = putNull(object, key);
  if (member != nullptr) member->setBoolean(value);
  return member;
}

JNIJSONArtifact* JNIJSONObject::putNull(JNIJSONArtifact* object, const std::string& key) {
  return object != nullptr ? object->putMember(key) : nullptr;
}

JNIJSONArtifact* JNIJSONObject::putObject(JNIJSONArtifact* object, const std::string& key) {
  JNIJSONArtifact* member = putNull(object, key);
  if (member != nullptr) member->setEmptyObject();
  return member;
}

JNIJSONArtifact* JNIJSONObject::putArray(JNIJSONArtifact* object, const std::string& key) {
  JNIJSONArtifact* member = putNull(object, key);
  if (member != nullptr) member->setEmptyArray();
  return member;
}

std::string JNIJSONObject::toString(int indent) const { return toString(getTop(), indent); }

std::string JNIJSONObject::toString(const JNIJSONArtifact* value, int indent) {
  if (value == nullptr) return std::string();
  return ToJson(*value).dump(indent < 0 ? -1 : indent, ' ', false, Json::error_handler_t::replace);
}
