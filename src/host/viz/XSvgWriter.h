#pragma once

#include <string>
#include <utility>
#include <vector>

// Writes an SVG drawing as text: elements with their attributes, texts of
// one or more lines, and tooltips as <title> children. Numbers are written
// with at most two decimals, so that equal drawings are equal texts. It
// writes no script and no id, so that several drawings can stand in one page.
class XSvgWriter {
 public:
  using Attributes = std::vector<std::pair<std::string, std::string>>;

  // A number as an attribute value.
  static std::string Num(double value);

  void Open(const std::string& tag, const Attributes& attributes);
  void Close(const std::string& tag);
  // An element without content but, when `tooltip` is not empty, its title.
  void Element(const std::string& tag, const Attributes& attributes, const std::string& tooltip = std::string());
  // A text whose first line's baseline is at y; further lines follow
  // `lineHeight` apart.
  void Text(double x, double y, const std::vector<std::string>& lines, double lineHeight, const Attributes& attributes,
            const std::string& tooltip = std::string());

  // A drawing made by another writer, placed as it stands.
  void Raw(const std::string& text) { fText += text; }

  const std::string& GetText() const { return fText; }

 private:
  void StartTag(const std::string& tag, const Attributes& attributes);
  void Indent();

  std::string fText;
  int fDepth = 0;
};
