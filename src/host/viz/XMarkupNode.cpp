#include "host/viz/XMarkupNode.h"

#include "host/viz/XNumber.h"

bool XMarkupNode::HasAttribute(const std::string& name) const { return FindAttribute(name) != nullptr; }

const std::string* XMarkupNode::FindAttribute(const std::string& name) const {
  for (const auto& attribute : fvAttributes) {
    if (attribute.first == name) return &attribute.second;
  }
  return nullptr;
}

std::string XMarkupNode::Attribute(const std::string& name, const std::string& fallback) const {
  const std::string* value = FindAttribute(name);
  return value != nullptr ? *value : fallback;
}

double XMarkupNode::Length(const std::string& name, double fallback) const {
  double value = fallback;
  return XNumber::ParseLength(Attribute(name), value) ? value : fallback;
}

double XMarkupNode::LengthOf(const XMarkupNode* node, const std::string& name, double fallback) {
  return node != nullptr ? node->Length(name, fallback) : fallback;
}

std::string XMarkupNode::OwnText() const {
  std::string text;
  for (const auto& child : fvChildren) {
    if (child->IsText()) text += child->fText;
  }
  return text;
}

void XMarkupNode::SetAttribute(const std::string& name, const std::string& value) {
  for (auto& attribute : fvAttributes) {
    if (attribute.first == name) {
      attribute.second = value;
      return;
    }
  }
  fvAttributes.emplace_back(name, value);
}

std::vector<const XMarkupNode*> XMarkupNode::Children(const std::string& name) const {
  std::vector<const XMarkupNode*> out;
  for (const auto& child : fvChildren) {
    if (!child->IsText() && (name.empty() || child->fName == name)) out.push_back(child.get());
  }
  return out;
}

const XMarkupNode* XMarkupNode::FirstChild(const std::string& name) const {
  for (const auto& child : fvChildren) {
    if (!child->IsText() && child->fName == name) return child.get();
  }
  return nullptr;
}

XMarkupNode* XMarkupNode::FirstChild(const std::string& name) {
  return const_cast<XMarkupNode*>(static_cast<const XMarkupNode*>(this)->FirstChild(name));
}

const XMarkupNode* XMarkupNode::FindDescendant(const std::string& name) const {
  for (const auto& child : fvChildren) {
    if (child->IsText()) continue;
    if (child->fName == name) return child.get();
    if (const XMarkupNode* found = child->FindDescendant(name)) return found;
  }
  return nullptr;
}

XMarkupNode& XMarkupNode::AddElement(const std::string& name) {
  fvChildren.push_back(std::make_unique<XMarkupNode>());
  XMarkupNode& child = *fvChildren.back();
  child.fName = name;
  child.fpParent = this;
  return child;
}

void XMarkupNode::AddText(const std::string& text) {
  if (text.empty()) return;
  if (!fvChildren.empty() && fvChildren.back()->IsText()) {
    fvChildren.back()->fText += text;
    return;
  }
  fvChildren.push_back(std::make_unique<XMarkupNode>());
  fvChildren.back()->fText = text;
  fvChildren.back()->fpParent = this;
}
