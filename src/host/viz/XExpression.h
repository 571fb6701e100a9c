#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

// A condition of the chart markup, such as facet1!="A"||facet2!="B": the
// words true and false, comparisons with == and != of variable names,
// quoted texts and numbers, combined with !, && and || and grouped by
// parentheses. Two sides that both read as numbers compare as numbers,
// otherwise as texts. A name stands for its value in the panel being drawn
// (the empty text when the panel has none); a value alone holds when it is
// not empty, 0 or false.
class XExpression {
 public:
  using Lookup = std::function<std::string(const std::string& name)>;

  XExpression();
  ~XExpression();
  XExpression(XExpression&&) noexcept;
  XExpression& operator=(XExpression&&) noexcept;

  // False, with the reason in `error`, for a text that is not a condition.
  static bool Parse(const std::string& text, XExpression& out, std::string& error);

  bool Evaluate(const Lookup& lookup) const;
  // The names the condition reads.
  std::vector<std::string> Names() const;

 private:
  struct Node;
  std::unique_ptr<Node> fpRoot;
};
