#include "host/viz/XMarkupReader.h"

#include <expat.h>

#include <limits>
#include <vector>

#include "host/render/OmUtf8.h"

namespace {

// The state of one parse, handed to expat's callbacks.
struct ParseState {
  XML_Parser fParser = nullptr;
  const std::string* fpText = nullptr;
  std::unique_ptr<XMarkupNode> fpRoot;
  std::vector<XMarkupNode*> fvOpen;
  XMarkupError fError;
  bool fbFailed = false;

  void Fail(const std::string& message, std::size_t offset) {
    if (fbFailed) return;
    fbFailed = true;
    fError.fMessage = message;
    fError.fLine = static_cast<long>(XML_GetCurrentLineNumber(fParser));
    fError.fColumn = XMarkupReader::ColumnOf(*fpText, offset);
    XML_StopParser(fParser, XML_FALSE);
  }
};

std::size_t CurrentOffset(XML_Parser parser) {
  const XML_Index index = XML_GetCurrentByteIndex(parser);
  return index < 0 ? 0 : static_cast<std::size_t>(index);
}

void OnStart(void* data, const XML_Char* name, const XML_Char** attributes) {
  auto* state = static_cast<ParseState*>(data);
  if (state->fbFailed) return;
  const std::size_t offset = CurrentOffset(state->fParser);
  if (static_cast<int>(state->fvOpen.size()) >= XMarkupReader::kMaxDepth) {
    state->Fail("elements nest deeper than " + std::to_string(XMarkupReader::kMaxDepth) + " levels", offset);
    return;
  }
  XMarkupNode* node = nullptr;
  if (state->fvOpen.empty()) {
    state->fpRoot = std::make_unique<XMarkupNode>();
    node = state->fpRoot.get();
    node->fName = name;
  } else {
    node = &state->fvOpen.back()->AddElement(name);
  }
  for (int i = 0; attributes[i] != nullptr; i += 2) node->fvAttributes.emplace_back(attributes[i], attributes[i + 1]);
  node->fLine = static_cast<long>(XML_GetCurrentLineNumber(state->fParser));
  node->fColumn = XMarkupReader::ColumnOf(*state->fpText, offset);
  node->fStart = offset;
  node->fStartTagEnd = offset + static_cast<std::size_t>(XML_GetCurrentByteCount(state->fParser));
  state->fvOpen.push_back(node);
}

void OnEnd(void* data, const XML_Char*) {
  auto* state = static_cast<ParseState*>(data);
  if (state->fbFailed || state->fvOpen.empty()) return;
  XMarkupNode* node = state->fvOpen.back();
  const int count = XML_GetCurrentByteCount(state->fParser);
  node->fbEmptyTag = count == 0;
  node->fEnd = node->fbEmptyTag ? node->fStartTagEnd : CurrentOffset(state->fParser) + static_cast<std::size_t>(count);
  state->fvOpen.pop_back();
}

void OnText(void* data, const XML_Char* text, int length) {
  auto* state = static_cast<ParseState*>(data);
  if (state->fbFailed || state->fvOpen.empty()) return;
  state->fvOpen.back()->AddText(std::string(text, static_cast<std::size_t>(length)));
}

void OnDoctype(void* data, const XML_Char*, const XML_Char*, const XML_Char*, int) {
  auto* state = static_cast<ParseState*>(data);
  state->Fail("a document type declaration is not allowed in chart markup", CurrentOffset(state->fParser));
}

}  // namespace

long XMarkupReader::ColumnOf(const std::string& text, std::size_t offset) {
  if (offset > text.size()) offset = text.size();
  std::size_t lineStart = 0;
  if (offset > 0) {
    const std::size_t newline = text.rfind('\n', offset - 1);
    if (newline != std::string::npos) lineStart = newline + 1;
  }
  return static_cast<long>(OmUtf8::Characters(text.substr(lineStart, offset - lineStart)).size()) + 1;
}

std::unique_ptr<XMarkupNode> XMarkupReader::Read(const std::string& text, XMarkupError& error) {
  error = XMarkupError();
  if (text.find_first_not_of(" \t\r\n") == std::string::npos) {
    error.fMessage = "the chart markup is empty";
    return nullptr;
  }
  if (text.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
    error.fMessage = "the chart markup is too large";
    return nullptr;
  }
  ParseState state;
  state.fpText = &text;
  state.fParser = XML_ParserCreate("UTF-8");
  if (state.fParser == nullptr) {
    error.fMessage = "the markup reader cannot start";
    return nullptr;
  }
  XML_SetUserData(state.fParser, &state);
  XML_SetElementHandler(state.fParser, OnStart, OnEnd);
  XML_SetCharacterDataHandler(state.fParser, OnText);
  XML_SetStartDoctypeDeclHandler(state.fParser, OnDoctype);

  const XML_Status status = XML_Parse(state.fParser, text.data(), static_cast<int>(text.size()), XML_TRUE);
  if (status != XML_STATUS_OK && !state.fbFailed) {
    state.fbFailed = true;
    state.fError.fMessage = XML_ErrorString(XML_GetErrorCode(state.fParser));
    state.fError.fLine = static_cast<long>(XML_GetCurrentLineNumber(state.fParser));
    state.fError.fColumn = ColumnOf(text, CurrentOffset(state.fParser));
  }
  XML_ParserFree(state.fParser);
  if (state.fbFailed) {
    error = state.fError;
    return nullptr;
  }
  return std::move(state.fpRoot);
}
