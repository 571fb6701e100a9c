#include "host/documents/SDOMXMLWrapper.h"

#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <mutex>
#include <utility>

#include <xercesc/dom/DOM.hpp>
#include <xercesc/framework/MemBufInputSource.hpp>
#include <xercesc/parsers/XercesDOMParser.hpp>
#include <xercesc/sax/ErrorHandler.hpp>
#include <xercesc/sax/SAXParseException.hpp>
#include <xercesc/util/OutOfMemoryException.hpp>
#include <xercesc/util/PlatformUtils.hpp>
#include <xercesc/util/SecurityManager.hpp>
#include <xercesc/util/TransService.hpp>
#include <xercesc/util/XMLException.hpp>

#include "host/documents/SDOMXMLIterator.h"
#include "host/documents/SDOMXMLPathFilter.h"

namespace {

namespace xc = xercesc;

// Bounds the expansion of internal entities, so that a small document cannot
// blow up into an enormous one.
const XMLSize_t kEntityExpansionLimit = 10000;

std::string ToUTF8(const XMLCh* text) {
  if (text == nullptr || *text == 0) return std::string();
  try {
    xc::TranscodeToStr utf8(text, "UTF-8");
    return std::string(reinterpret_cast<const char*>(utf8.str()), utf8.length());
  } catch (...) {
    return std::string();
  }
}

// Empty on a text that is not valid UTF-8; no element or attribute can then
// carry that name.
std::u16string FromUTF8(const std::string& text) {
  if (text.empty()) return std::u16string();
  try {
    xc::TranscodeFromStr wide(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "UTF-8");
    return std::u16string(wide.str(), wide.length());
  } catch (...) {
    return std::u16string();
  }
}

// The steps of a path of child names separated by "/"; none when a step is
// empty or not valid UTF-8.
std::vector<std::u16string> PathSteps(const std::string& path) {
  std::vector<std::u16string> steps;
  std::size_t start = 0;
  while (true) {
    const std::size_t slash = path.find('/', start);
    steps.push_back(FromUTF8(path.substr(start, slash == std::string::npos ? std::string::npos : slash - start)));
    if (steps.back().empty()) return {};
    if (slash == std::string::npos) return steps;
    start = slash + 1;
  }
}

const XMLCh* LocalName(const xc::DOMElement* element) {
  const XMLCh* name = element->getLocalName();
  return name != nullptr ? name : element->getTagName();
}

bool HasName(const xc::DOMElement* element, const std::u16string& name) {
  return xc::XMLString::equals(LocalName(element), name.c_str());
}

class ErrorCollector : public xc::ErrorHandler {
 public:
  void warning(const xc::SAXParseException&) override {}
  void error(const xc::SAXParseException& e) override { Record(e); }
  void fatalError(const xc::SAXParseException& e) override { Record(e); }
  void resetErrors() override {}

  bool Failed() const { return fbFailed; }
  const std::string& GetMessage() const { return fMessage; }
  long GetLine() const { return fLine; }
  long GetColumn() const { return fColumn; }

 private:
  // The first problem is the one worth telling; later ones often follow
  // from it.
  void Record(const xc::SAXParseException& e) {
    if (fbFailed) return;
    fbFailed = true;
    fMessage = ToUTF8(e.getMessage());
    fLine = static_cast<long>(e.getLineNumber());
    fColumn = static_cast<long>(e.getColumnNumber());
  }

  bool fbFailed = false;
  std::string fMessage;
  long fLine = 0;
  long fColumn = 0;
};

// The parsed document, shared by every wrapper of its elements.
struct DocumentHolder {
  explicit DocumentHolder(xc::DOMDocument* document) : fpDocument(document) {}
  ~DocumentHolder() {
    if (fpDocument != nullptr) fpDocument->release();
  }
  DocumentHolder(const DocumentHolder&) = delete;
  DocumentHolder& operator=(const DocumentHolder&) = delete;

  xc::DOMDocument* fpDocument;
};

void FindAlongPath(xc::DOMElement* from, const std::vector<std::u16string>& steps, std::size_t step,
                   xc::DOMElement** found) {
  for (xc::DOMElement* child = from->getFirstElementChild(); child != nullptr && *found == nullptr;
       child = child->getNextElementSibling()) {
    if (!HasName(child, steps[step])) continue;
    if (step + 1 == steps.size()) {
      *found = child;
    } else {
      FindAlongPath(child, steps, step + 1, found);
    }
  }
}

bool IsSpace(char c) { return c == ' ' || c == '\t' || c == '\n' || c == '\r'; }

}  // namespace

struct SDOMXMLWrapper::Impl {
  std::shared_ptr<DocumentHolder> fpDocument;
  xc::DOMElement* fpElement = nullptr;
  std::string fLastError;
  long fErrorLine = 0;
  long fErrorColumn = 0;
  std::vector<std::unique_ptr<SDOMXMLWrapper>> fvOwnedElements;
  std::vector<std::unique_ptr<SDOMXMLIterator>> fvOwnedIterators;

  void Clear() {
    fvOwnedIterators.clear();
    fvOwnedElements.clear();
    fpElement = nullptr;
    fpDocument.reset();
    fLastError.clear();
    fErrorLine = 0;
    fErrorColumn = 0;
  }

  bool Fail(const std::string& message, long line, long column) {
    fLastError = message;
    fErrorLine = line;
    fErrorColumn = column;
    return false;
  }

  std::unique_ptr<SDOMXMLWrapper> MakeElement(xc::DOMElement* element) const {
    std::unique_ptr<Impl> impl(new Impl);
    impl->fpDocument = fpDocument;
    impl->fpElement = element;
    return std::unique_ptr<SDOMXMLWrapper>(new SDOMXMLWrapper(std::move(impl)));
  }
};

SDOMXMLWrapper::SDOMXMLWrapper() : fpImpl(new Impl) {}

SDOMXMLWrapper::SDOMXMLWrapper(std::unique_ptr<Impl> impl) : fpImpl(std::move(impl)) {}

SDOMXMLWrapper::~SDOMXMLWrapper() = default;

void SDOMXMLWrapper::InitializePlatform() {
  static std::once_flag once;
  std::call_once(once, [] { xc::XMLPlatformUtils::Initialize(); });
}

bool SDOMXMLWrapper::LoadFromString(const std::string& text) { return LoadFromString(text, {}); }

bool SDOMXMLWrapper::LoadFromString(const std::string& text, const std::vector<std::string>& paths) {
  InitializePlatform();
  fpImpl->Clear();

  // A path that cannot name an element holds nothing along it (an empty
  // step names no element).
  std::vector<std::vector<std::u16string>> held;
  for (const std::string& path : paths) {
    held.push_back(PathSteps(path));
    if (held.back().empty()) held.back().emplace_back();
  }
  SDOMXMLPathFilter parser(held);
  parser.setValidationScheme(xc::XercesDOMParser::Val_Never);
  parser.setDoNamespaces(true);
  parser.setDoSchema(false);
  parser.setLoadSchema(false);
  parser.setLoadExternalDTD(false);
  parser.setDisableDefaultEntityResolution(true);
  parser.setCreateEntityReferenceNodes(false);
  parser.setCreateCommentNodes(false);
  xc::SecurityManager security;
  security.setEntityExpansionLimit(kEntityExpansionLimit);
  parser.setSecurityManager(&security);
  ErrorCollector errors;
  parser.setErrorHandler(&errors);

  xc::MemBufInputSource source(reinterpret_cast<const XMLByte*>(text.data()), text.size(), "document", false);
  try {
    parser.parse(source);
  } catch (const xc::OutOfMemoryException&) {
    return fpImpl->Fail("out of memory while reading the document", 0, 0);
  } catch (const xc::XMLException& e) {
    return fpImpl->Fail(ToUTF8(e.getMessage()), 0, 0);
  } catch (const xc::DOMException& e) {
    return fpImpl->Fail(ToUTF8(e.getMessage()), 0, 0);
  } catch (...) {
    return fpImpl->Fail("the document could not be read", 0, 0);
  }
  if (errors.Failed()) return fpImpl->Fail(errors.GetMessage(), errors.GetLine(), errors.GetColumn());

  auto holder = std::make_shared<DocumentHolder>(parser.adoptDocument());
  if (holder->fpDocument == nullptr || holder->fpDocument->getDocumentElement() == nullptr) {
    return fpImpl->Fail("the document has no root element", 0, 0);
  }
  fpImpl->fpDocument = holder;
  fpImpl->fpElement = holder->fpDocument->getDocumentElement();
  return true;
}

bool SDOMXMLWrapper::LoadFromFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) {
    fpImpl->Clear();
    return fpImpl->Fail("cannot open the file \"" + path + "\"", 0, 0);
  }
  std::string text((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
  if (in.bad()) {
    fpImpl->Clear();
    return fpImpl->Fail("cannot read the file \"" + path + "\"", 0, 0);
  }
  return LoadFromString(text);
}

bool SDOMXMLWrapper::IsLoaded() const { return fpImpl->fpElement != nullptr; }

const std::string& SDOMXMLWrapper::GetLastError() const { return fpImpl->fLastError; }

long SDOMXMLWrapper::GetErrorLine() const { return fpImpl->fErrorLine; }

long SDOMXMLWrapper::GetErrorColumn() const { return fpImpl->fErrorColumn; }

std::string SDOMXMLWrapper::GetName() const {
  if (fpImpl->fpElement == nullptr) return std::string();
  return ToUTF8(LocalName(fpImpl->fpElement));
}

bool SDOMXMLWrapper::GetFirstElement(const std::string& path, SDOMXMLWrapper** element, bool bParentOwns) {
  if (element == nullptr) return false;
  *element = nullptr;
  if (fpImpl->fpElement == nullptr || path.empty()) return false;

  const std::vector<std::u16string> steps = PathSteps(path);
  if (steps.empty()) return false;

  xc::DOMElement* found = nullptr;
  FindAlongPath(fpImpl->fpElement, steps, 0, &found);
  if (found == nullptr) return false;

  std::unique_ptr<SDOMXMLWrapper> wrapper = fpImpl->MakeElement(found);
  if (bParentOwns) {
    *element = wrapper.get();
    fpImpl->fvOwnedElements.push_back(std::move(wrapper));
  } else {
    *element = wrapper.release();
  }
  return true;
}

bool SDOMXMLWrapper::GetElementIterator(const std::string& name, SDOMXMLIterator** iterator, bool bParentOwns) {
  if (iterator == nullptr) return false;
  *iterator = nullptr;
  if (fpImpl->fpElement == nullptr) return false;
  std::u16string wanted = FromUTF8(name);
  if (wanted.empty()) return false;

  std::vector<std::unique_ptr<SDOMXMLWrapper>> elements;
  for (xc::DOMElement* child = fpImpl->fpElement->getFirstElementChild(); child != nullptr;
       child = child->getNextElementSibling()) {
    if (HasName(child, wanted)) elements.push_back(fpImpl->MakeElement(child));
  }
  if (elements.empty()) return false;

  std::unique_ptr<SDOMXMLIterator> made(new SDOMXMLIterator(std::move(elements)));
  if (bParentOwns) {
    *iterator = made.get();
    fpImpl->fvOwnedIterators.push_back(std::move(made));
  } else {
    *iterator = made.release();
  }
  return true;
}

bool SDOMXMLWrapper::GetFirstElement(SDOMXMLWrapper* parent, const std::string& path, SDOMXMLWrapper** element,
                                     bool bParentOwns) {
  if (parent == nullptr) {
    if (element != nullptr) *element = nullptr;
    return false;
  }
  return parent->GetFirstElement(path, element, bParentOwns);
}

bool SDOMXMLWrapper::GetElementIterator(SDOMXMLWrapper* parent, const std::string& name, SDOMXMLIterator** iterator,
                                        bool bParentOwns) {
  if (parent == nullptr) {
    if (iterator != nullptr) *iterator = nullptr;
    return false;
  }
  return parent->GetElementIterator(name, iterator, bParentOwns);
}

std::vector<SDOMXMLWrapper*> SDOMXMLWrapper::GetChildren(SDOMXMLWrapper* parent, const std::string& name) {
  std::vector<SDOMXMLWrapper*> children;
  SDOMXMLIterator* iterator = nullptr;
  if (!GetElementIterator(parent, name, &iterator)) return children;
  SDOMXMLWrapper* element = nullptr;
  while (iterator->Next(&element)) children.push_back(element);
  return children;
}

bool SDOMXMLWrapper::GetAttribute(const std::string& name, std::string& value) const {
  if (fpImpl->fpElement == nullptr) return false;
  std::u16string wanted = FromUTF8(name);
  if (wanted.empty()) return false;
  const xc::DOMAttr* attribute = fpImpl->fpElement->getAttributeNode(wanted.c_str());
  if (attribute == nullptr) return false;
  value = ToUTF8(attribute->getValue());
  return true;
}

bool SDOMXMLWrapper::HasAttribute(const std::string& name) const {
  std::string ignored;
  return GetAttribute(name, ignored);
}

std::string SDOMXMLWrapper::GetText() const {
  if (fpImpl->fpElement == nullptr) return std::string();
  return ToUTF8(fpImpl->fpElement->getTextContent());
}

bool SDOMXMLWrapper::GetSimpleArray(std::vector<std::string>& items) const {
  items.clear();
  if (fpImpl->fpElement == nullptr) return false;
  const std::string text = GetText();
  bool ok = true;

  std::size_t i = 0;
  const std::size_t n = text.size();
  while (i < n) {
    if (IsSpace(text[i])) {
      ++i;
      continue;
    }
    std::string item;
    if (text[i] == '"') {
      ++i;
      bool closed = false;
      while (i < n) {
        char c = text[i];
        if (c == '\\' && i + 1 < n && (text[i + 1] == '"' || text[i + 1] == '\\')) {
          item += text[i + 1];
          i += 2;
        } else if (c == '"') {
          ++i;
          closed = true;
          break;
        } else {
          item += c;
          ++i;
        }
      }
      if (!closed) ok = false;
    } else {
      while (i < n && !IsSpace(text[i])) item += text[i++];
    }
    items.push_back(item);
  }

  std::string declared;
  if (GetAttribute("n", declared)) {
    errno = 0;
    char* end = nullptr;
    long count = std::strtol(declared.c_str(), &end, 10);
    while (end != nullptr && IsSpace(*end)) ++end;
    bool readable = errno == 0 && end != declared.c_str() && end != nullptr && *end == '\0';
    if (!readable || count < 0 || static_cast<unsigned long>(count) != items.size()) ok = false;
  }
  return ok;
}
