#include "host/output/OmComposite.h"

#include "host/output/OmParseTreeNode.h"

OmComposite::OmComposite(const std::string& pattern, OmMemoryRegion& region) : fPattern(pattern), fpRegion(&region) {}

OmComposite::~OmComposite() {
  DestroyArguments(fvArguments);
  OmParseTreeNode::Destroy(fpResult, *fpRegion);
}

void OmComposite::DestroyArguments(std::vector<Argument>& arguments) {
  for (Argument& argument : arguments) {
    fpRegion->Destroy(argument.fpCell);
    DestroyArguments(argument.fvItems);
  }
  arguments.clear();
}

void OmComposite::CopyArguments(const std::vector<Argument>& from, std::vector<Argument>& to, OmMemoryRegion& region) {
  for (const Argument& argument : from) {
    to.emplace_back();
    if (argument.fpCell != nullptr) to.back().fpCell = argument.fpCell->Clone(region);
    CopyArguments(argument.fvItems, to.back().fvItems, region);
  }
}

std::vector<OmComposite::Argument>& OmComposite::OpenList() {
  std::vector<Argument>* level = &fvArguments;
  for (int depth = 0; depth < fOpenDepth; ++depth) level = &level->back().fvItems;
  return *level;
}

void OmComposite::Add(const OmCellText& cell) {
  std::vector<Argument>& level = OpenList();
  level.emplace_back();
  level.back().fpCell = cell.Clone(*fpRegion);
}

void OmComposite::BeginRepeatList() {
  OpenList().emplace_back();
  ++fOpenDepth;
}

void OmComposite::EndRepeatList() {
  if (fOpenDepth > 0) --fOpenDepth;
}

void OmComposite::End() {
  fOpenDepth = 0;
  fbEnded = true;
}

std::string OmComposite::ArgumentText(const Argument& argument) {
  if (argument.fpCell != nullptr) return argument.fpCell->GetText();
  std::string text;
  for (std::size_t i = 0; i < argument.fvItems.size(); ++i) {
    if (i > 0) text += ", ";
    text += ArgumentText(argument.fvItems[i]);
  }
  return text;
}

bool OmComposite::Expand(bool bKeepUnmatched, std::string* text, OmParseTreeNode* result) const {
  OmParseTreeNode* tree = OmParseTreeNode::Parse(fPattern, *fpRegion);
  bool bAllMatched = true;
  auto emit = [&](const std::string& piece) {
    if (piece.empty()) return;
    if (text != nullptr) *text += piece;
    if (result != nullptr) result->AppendChild(OmParseTreeNode::MakeLiteral(piece, *fpRegion), *fpRegion);
  };
  auto unmatched = [&](const OmParseTreeNode* node) {
    bAllMatched = false;
    if (bKeepUnmatched) emit(node->GetText());
  };

  for (const OmParseTreeNode* node : tree->GetChildren()) {
    switch (node->GetKind()) {
      case OmParseTreeNode::LITERAL:
        emit(node->GetText());
        break;
      case OmParseTreeNode::ARGUMENT:
        if (node->GetIndex() <= GetArgumentCount()) {
          emit(ArgumentText(fvArguments[node->GetIndex() - 1]));
        } else {
          unmatched(node);
        }
        break;
      case OmParseTreeNode::LIST: {
        if (node->GetIndex() > GetArgumentCount()) {
          // A list never given is an empty list: lists may be optional
          // trailing arguments, such as notes added only when they apply.
          bAllMatched = false;
          break;
        }
        const Argument& argument = fvArguments[node->GetIndex() - 1];
        // A plain argument given where a list is expected is a list of one.
        std::vector<const Argument*> items;
        if (argument.fpCell != nullptr) {
          items.push_back(&argument);
        } else {
          for (const Argument& item : argument.fvItems) items.push_back(&item);
        }
        const std::size_t size = static_cast<std::size_t>(node->GetElementSize());
        const bool bFirstEmpty = node->GetFirstText()->GetChildren().empty();
        for (std::size_t start = 0; start < items.size(); start += size) {
          const OmParseTreeNode* texts = (start == 0 && !bFirstEmpty) ? node->GetFirstText() : node->GetRestText();
          for (const OmParseTreeNode* part : texts->GetChildren()) {
            if (part->GetKind() != OmParseTreeNode::SUBITEM) {
              emit(part->GetText());
              continue;
            }
            std::size_t position = start + static_cast<std::size_t>(part->GetIndex()) - 1;
            if (position < items.size()) {
              emit(ArgumentText(*items[position]));
            } else {
              unmatched(part);
            }
          }
        }
        break;
      }
      default:
        emit(node->GetText());
        break;
    }
  }
  OmParseTreeNode::Destroy(tree, *fpRegion);
  return bAllMatched;
}

bool OmComposite::Substitute(OmParseTreeNode** ppResult, bool bKeepUnmatched) {
  OmParseTreeNode::Destroy(fpResult, *fpRegion);
  fpResult = OmParseTreeNode::MakeSequence(*fpRegion);
  bool bAllMatched = Expand(bKeepUnmatched, nullptr, fpResult);
  if (ppResult != nullptr) *ppResult = fpResult;
  return bAllMatched;
}

std::string OmComposite::AsString() const {
  if (fpResult != nullptr) return fpResult->AsString();
  std::string text;
  Expand(true, &text, nullptr);
  return text;
}

OmCellText* OmComposite::Clone(OmMemoryRegion& region) const {
  OmComposite* copy = region.Make<OmComposite>(fPattern, region);
  CopyArguments(fvArguments, copy->fvArguments, region);
  copy->fOpenDepth = fOpenDepth;
  copy->fbEnded = fbEnded;
  return copy;
}
