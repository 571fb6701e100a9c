#pragma once

#include <cstddef>
#include <iosfwd>
#include <string>
#include <utility>
#include <vector>

namespace MCGLMM_850 {

// Writes an XML document element by element onto a stream, escaping all
// text. Text that is not valid UTF-8, and characters that XML 1.0 does not
// allow, are replaced so that the document always stays well formed.
// Numbers are written in the shortest form that reads back to the same
// double; the system-missing value and non-finite numbers are written as
// empty text in attributes and as "__MISSING__" in arrays.
class GLMMXMLWriter {
 public:
  explicit GLMMXMLWriter(std::ostream& os);
  GLMMXMLWriter(const GLMMXMLWriter&) = delete;
  GLMMXMLWriter& operator=(const GLMMXMLWriter&) = delete;

  // The XML declaration.
  void Declaration();
  // Starts an element; attributes may follow until content or Close.
  void Open(const std::string& name);
  void Attribute(const std::string& name, const std::string& value);
  void Attribute(const std::string& name, const char* value) { Attribute(name, std::string(value)); }
  void Attribute(const std::string& name, double value) { Attribute(name, NumberText(value)); }
  void Attribute(const std::string& name, int value) { Attribute(name, std::to_string(value)); }
  void Attribute(const std::string& name, long value) { Attribute(name, std::to_string(value)); }
  void Attribute(const std::string& name, bool value) { Attribute(name, value ? "true" : "false"); }
  // Starts an element with the attribute name.
  void OpenNamed(const std::string& element, const std::string& name);
  // An empty element with the attributes name and value, in that order.
  void NameValue(const std::string& element, const std::string& name, const std::string& value);
  // Character content of the current element.
  void Text(const std::string& text);
  // Ends the innermost open element.
  void Close();
  // An element with attribute n and the items as its content, quoted where
  // needed; type is written as the attribute type when not empty.
  void Array(const std::vector<std::string>& items, const std::string& type);
  void NumberArray(const std::vector<double>& values);
  // Closes every open element.
  void Finish();
  int GetDepth() const { return static_cast<int>(fvOpen.size()); }

  // Shortest decimal text that reads back as the same double; empty for the
  // system-missing value and for non-finite values.
  static std::string NumberText(double value);
  // The text made safe for XML content (quotes too when attribute is true).
  static std::string Escape(const std::string& text, bool attribute);
  // An array item: as it stands when it has no blank, quote or backslash
  // and is not empty; otherwise in double quotes with \" and \\.
  static std::string ArrayItem(const std::string& item);
  // The token of a value in a table of (value, token) pairs; the fallback
  // for a value the table does not have.
  template <typename Value, std::size_t N>
  static const char* Token(Value value, const std::pair<Value, const char*> (&table)[N], const char* fallback) {
    for (const std::pair<Value, const char*>& entry : table) {
      if (entry.first == value) return entry.second;
    }
    return fallback;
  }

 private:
  void EndStartTag();
  void Indent();

  std::ostream* fpStream;
  std::vector<std::string> fvOpen;
  bool fbStartTagOpen;
  bool fbHasContent;
  bool fbHasText;
};

}  // namespace MCGLMM_850
