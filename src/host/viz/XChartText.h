#pragma once

#include <string>
#include <vector>

#include "host/viz/XMarkupNode.h"

// Texts that a chart shows. The chart code writes labels escaped for markup
// (an ampersand as "&amp;", a line break as "<BR/>") and some data values
// as they stand; a shown text therefore reads both forms.
class XChartText {
 public:
  // The text with the references &amp; &lt; &gt; &quot; &apos; &#n; and
  // &#xh; resolved and <BR/> (any case, with or without the slash) as a
  // line break; anything else, a lone "&" or "<" included, as it stands.
  static std::string Decode(const std::string& text);
  // The text of a <title>, <subtitle>, <caption>, <footnote> or <field>:
  // its <text> children, each <BR/> a line break, each text decoded.
  static std::string Of(const XMarkupNode* holder);
  // The text cut at its line breaks.
  static std::vector<std::string> Lines(const std::string& text);
};
