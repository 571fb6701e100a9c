#pragma once

#include <cstddef>
#include <string>

// A text of the chart library, held in UTF-16. It is made from the host's
// texts through XUtility or from UTF-8, and goes back into the chart
// document and its data as UTF-8.
class ChartString {
 public:
  ChartString() = default;
  explicit ChartString(const std::u16string& text) : fText(text) {}
  explicit ChartString(const char16_t* text) : fText(text != nullptr ? text : u"") {}

  // Bytes that are not valid UTF-8 each become U+FFFD.
  static ChartString fromUTF8(const std::string& text);
  // Unpaired surrogates each become U+FFFD.
  std::string toUTF8() const;

  // The wide text, terminated; valid until the string changes.
  const char16_t* xc_str() const { return fText.c_str(); }
  const std::u16string& str() const { return fText; }
  std::size_t length() const { return fText.size(); }
  bool empty() const { return fText.empty(); }

  // Replaces the first occurrence of `from`, or every one when bAll is set;
  // false when there is none. An empty `from` matches nothing.
  bool replaceSubstring(const ChartString& from, const ChartString& to, bool bAll = false);

  ChartString& operator+=(const ChartString& other) {
    fText += other.fText;
    return *this;
  }
  friend ChartString operator+(ChartString a, const ChartString& b) { return a += b; }
  bool operator==(const ChartString& o) const { return fText == o.fText; }
  bool operator!=(const ChartString& o) const { return fText != o.fText; }
  bool operator<(const ChartString& o) const { return fText < o.fText; }

 private:
  std::u16string fText;
};
