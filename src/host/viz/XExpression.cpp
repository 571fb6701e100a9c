#include "host/viz/XExpression.h"

#include <cctype>

#include "host/viz/XNumber.h"

struct XExpression::Node {
  enum Kind { CONSTANT, NOT, AND, OR, EQUAL, NOT_EQUAL, NAME, LITERAL };
  Kind fKind = CONSTANT;
  bool fbValue = false;
  std::string fText;
  std::unique_ptr<Node> fpLeft;
  std::unique_ptr<Node> fpRight;
};

namespace {

class Parser {
 public:
  explicit Parser(const std::string& text) : fText(text) {}

  template <typename N>
  std::unique_ptr<N> ParseAll(std::string& error) {
    std::unique_ptr<N> root = Or<N>();
    Skip();
    if (fError.empty() && fPos != fText.size()) Fail("unexpected \"" + fText.substr(fPos, 1) + "\"");
    if (!fError.empty()) {
      error = fError + " at character " + std::to_string(fErrorPos + 1);
      return nullptr;
    }
    return root;
  }

 private:
  void Skip() {
    while (fPos < fText.size() && std::isspace(static_cast<unsigned char>(fText[fPos]))) ++fPos;
  }
  bool Take(const char* token) {
    Skip();
    const std::string t(token);
    if (fText.compare(fPos, t.size(), t) != 0) return false;
    fPos += t.size();
    return true;
  }
  void Fail(const std::string& message) {
    if (!fError.empty()) return;
    fError = message;
    fErrorPos = fPos;
  }

  template <typename N>
  std::unique_ptr<N> Binary(typename N::Kind kind, std::unique_ptr<N> left, std::unique_ptr<N> right) {
    auto node = std::make_unique<N>();
    node->fKind = kind;
    node->fpLeft = std::move(left);
    node->fpRight = std::move(right);
    return node;
  }

  template <typename N>
  std::unique_ptr<N> Or() {
    std::unique_ptr<N> left = And<N>();
    while (fError.empty() && Take("||")) left = Binary<N>(N::OR, std::move(left), And<N>());
    return left;
  }

  template <typename N>
  std::unique_ptr<N> And() {
    std::unique_ptr<N> left = Unary<N>();
    while (fError.empty() && Take("&&")) left = Binary<N>(N::AND, std::move(left), Unary<N>());
    return left;
  }

  template <typename N>
  std::unique_ptr<N> Unary() {
    if (Take("!")) {
      if (fText.compare(fPos, 1, "=") == 0) {
        Fail("\"!=\" needs a value before it");
        return nullptr;
      }
      auto node = std::make_unique<N>();
      node->fKind = N::NOT;
      node->fpLeft = Unary<N>();
      return node;
    }
    if (Take("(")) {
      std::unique_ptr<N> inner = Or<N>();
      if (!Take(")")) Fail("a \")\" is missing");
      return inner;
    }
    std::unique_ptr<N> left = Operand<N>();
    if (!fError.empty()) return nullptr;
    if (left->fKind == N::CONSTANT) return left;
    typename N::Kind kind = N::EQUAL;
    if (Take("==")) {
      kind = N::EQUAL;
    } else if (Take("!=")) {
      kind = N::NOT_EQUAL;
    } else {
      // A value alone is a condition of its own.
      return left;
    }
    std::unique_ptr<N> right = Operand<N>();
    if (!fError.empty()) return nullptr;
    if (right->fKind == N::CONSTANT) {
      Fail("true and false cannot be compared");
      return nullptr;
    }
    return Binary<N>(kind, std::move(left), std::move(right));
  }

  template <typename N>
  std::unique_ptr<N> Operand() {
    Skip();
    auto node = std::make_unique<N>();
    if (fPos >= fText.size()) {
      Fail("the condition ends too early");
      return node;
    }
    const char c = fText[fPos];
    if (c == '"' || c == '\'') {
      const std::size_t close = fText.find(c, fPos + 1);
      if (close == std::string::npos) {
        Fail("a quoted text is not closed");
        return node;
      }
      node->fKind = N::LITERAL;
      node->fText = fText.substr(fPos + 1, close - fPos - 1);
      fPos = close + 1;
      return node;
    }
    const std::size_t start = fPos;
    while (fPos < fText.size()) {
      const char d = fText[fPos];
      if (std::isalnum(static_cast<unsigned char>(d)) || d == '_' || d == '.' || d == '-' || d == '+' ||
          static_cast<unsigned char>(d) >= 0x80) {
        ++fPos;
      } else {
        break;
      }
    }
    if (fPos == start) {
      Fail("unexpected \"" + fText.substr(fPos, 1) + "\"");
      return node;
    }
    const std::string word = fText.substr(start, fPos - start);
    double number = 0.0;
    if (word == "true" || word == "false") {
      node->fKind = N::CONSTANT;
      node->fbValue = word == "true";
    } else if (XNumber::Parse(word, number)) {
      node->fKind = N::LITERAL;
      node->fText = word;
    } else {
      node->fKind = N::NAME;
      node->fText = word;
    }
    return node;
  }

  const std::string& fText;
  std::size_t fPos = 0;
  std::string fError;
  std::size_t fErrorPos = 0;
};

bool SameValue(const std::string& a, const std::string& b) {
  double x = 0.0;
  double y = 0.0;
  if (XNumber::Parse(a, x) && XNumber::Parse(b, y)) return x == y;
  return a == b;
}

template <typename N>
std::string ValueOf(const N& node, const XExpression::Lookup& lookup) {
  return node.fKind == N::NAME ? lookup(node.fText) : node.fText;
}

template <typename N>
bool Evaluate(const N& node, const XExpression::Lookup& lookup) {
  switch (node.fKind) {
    case N::CONSTANT:
      return node.fbValue;
    case N::NOT:
      return !Evaluate(*node.fpLeft, lookup);
    case N::AND:
      return Evaluate(*node.fpLeft, lookup) && Evaluate(*node.fpRight, lookup);
    case N::OR:
      return Evaluate(*node.fpLeft, lookup) || Evaluate(*node.fpRight, lookup);
    case N::EQUAL:
      return SameValue(ValueOf(*node.fpLeft, lookup), ValueOf(*node.fpRight, lookup));
    case N::NOT_EQUAL:
      return !SameValue(ValueOf(*node.fpLeft, lookup), ValueOf(*node.fpRight, lookup));
    case N::NAME:
    case N::LITERAL: {
      const std::string value = ValueOf(node, lookup);
      return !value.empty() && value != "0" && value != "false";
    }
  }
  return false;
}

template <typename N>
void CollectNames(const N* node, std::vector<std::string>& names) {
  if (node == nullptr) return;
  if (node->fKind == N::NAME) names.push_back(node->fText);
  CollectNames(node->fpLeft.get(), names);
  CollectNames(node->fpRight.get(), names);
}

}  // namespace

XExpression::XExpression() = default;
XExpression::~XExpression() = default;
XExpression::XExpression(XExpression&&) noexcept = default;
XExpression& XExpression::operator=(XExpression&&) noexcept = default;

bool XExpression::Parse(const std::string& text, XExpression& out, std::string& error) {
  Parser parser(text);
  std::unique_ptr<Node> root = parser.ParseAll<Node>(error);
  if (!root) return false;
  out.fpRoot = std::move(root);
  return true;
}

bool XExpression::Evaluate(const Lookup& lookup) const { return fpRoot && ::Evaluate(*fpRoot, lookup); }

std::vector<std::string> XExpression::Names() const {
  std::vector<std::string> names;
  CollectNames(fpRoot.get(), names);
  return names;
}
