#pragma once

#include <memory>
#include <string>
#include <vector>

class SDOMXMLIterator;

// An XML document, or one element of it. A wrapper made by the default
// constructor is loaded with LoadFromString or LoadFromFile and then stands
// for the document's root element; the wrappers it hands out stand for
// elements below it.
//
// Element names are matched exactly (case-sensitive) against an element's
// local name, so a namespace prefix does not take part. All text is UTF-8.
//
// Ownership: what GetFirstElement and GetElementIterator hand out belongs to
// the wrapper they were asked of when the last argument is true, and is
// deleted with it; with false the caller deletes it. Every wrapper keeps the
// parsed document alive, so an element handed to the caller stays usable
// after the wrapper that made it is gone. Loading again releases what the
// wrapper handed out before.
class SDOMXMLWrapper {
 public:
  SDOMXMLWrapper();
  ~SDOMXMLWrapper();
  SDOMXMLWrapper(const SDOMXMLWrapper&) = delete;
  SDOMXMLWrapper& operator=(const SDOMXMLWrapper&) = delete;

  // Starts the XML platform once for the process. Any number of calls, from
  // anywhere, are safe; it is never shut down while the process runs.
  static void InitializePlatform();

  // Parse a whole document. False when it is not well formed or cannot be
  // read; GetLastError, GetErrorLine and GetErrorColumn then tell why. No
  // DTD or external entity is loaded.
  bool LoadFromString(const std::string& text);
  // The same, holding below the root only the elements along the paths of
  // child names separated by "/" (each path's last element with all it
  // contains); the rest of the document is still read and must be well
  // formed. A reader of a few elements of a large document neither builds
  // nor holds the others.
  bool LoadFromString(const std::string& text, const std::vector<std::string>& paths);
  bool LoadFromFile(const std::string& path);

  // True when the wrapper stands for an element.
  bool IsLoaded() const;
  // The reason of the last failed load, empty after a successful one. The
  // line and column are 1-based, and 0 when the failure has no position.
  const std::string& GetLastError() const;
  long GetErrorLine() const;
  long GetErrorColumn() const;

  // The element's local name; empty when nothing is loaded.
  std::string GetName() const;

  // The first element reached by a path of child names separated by "/",
  // searched in document order. False, and null in *element, when there is
  // none or the path is empty or has an empty step.
  bool GetFirstElement(const std::string& path, SDOMXMLWrapper** element, bool bParentOwns = true);

  // An iterator over the child elements of that name, in document order.
  // False, and null in *iterator, when there is no such child.
  bool GetElementIterator(const std::string& name, SDOMXMLIterator** iterator, bool bParentOwns = true);

  // The same asked of an element that may be null: a null parent has
  // nothing, so the answer is false and a null result.
  static bool GetFirstElement(SDOMXMLWrapper* parent, const std::string& path, SDOMXMLWrapper** element,
                              bool bParentOwns = true);
  static bool GetElementIterator(SDOMXMLWrapper* parent, const std::string& name, SDOMXMLIterator** iterator,
                                 bool bParentOwns = true);
  // The child elements of that name in document order, owned by the
  // parent; none for a null parent.
  static std::vector<SDOMXMLWrapper*> GetChildren(SDOMXMLWrapper* parent, const std::string& name);

  // False, and the text unchanged, when the attribute is absent.
  bool GetAttribute(const std::string& name, std::string& value) const;
  bool HasAttribute(const std::string& name) const;

  // The text content of the element and all its descendants.
  std::string GetText() const;

  // The items of an array element: its text split at white space, where an
  // item in double quotes may hold white space, \" stands for a quote and
  // \\ for a backslash inside quotes, and "" is an empty item. False when a
  // quote is left open or when the element has an attribute n that is not
  // the number of items read; the items read are delivered either way.
  bool GetSimpleArray(std::vector<std::string>& items) const;

 private:
  struct Impl;
  explicit SDOMXMLWrapper(std::unique_ptr<Impl> impl);

  std::unique_ptr<Impl> fpImpl;
};
