#include "host/output/BpComposite.h"

#include "host/data/ZORV_Session.h"
#include "host/output/BpDataValue.h"
#include "host/output/BpVariable.h"
#include "host/output/OmComposite.h"
#include "host/output/OmStringCell.h"

namespace {

struct Writer {
  const BpTextContext& fContext;
  OmComposite& fComposite;

  template <typename Argument>
  void Write(const std::vector<Argument>& arguments) {
    for (const Argument& argument : arguments) {
      if (argument.fpText) {
        fComposite.Add(OmStringCell(argument.fpText->GetText(fContext)));
      } else {
        fComposite.BeginRepeatList();
        Write(argument.fvItems);
        fComposite.EndRepeatList();
      }
    }
  }
};

}  // namespace

BpComposite::BpComposite(const std::string& pattern, bool translate) : fPattern(pattern), fbTranslate(translate) {}

BpComposite::BpComposite(const BpComposite& other)
    : BpCellText(other),
      fPattern(other.fPattern),
      fbTranslate(other.fbTranslate),
      fOpenDepth(other.fOpenDepth),
      fbFinished(other.fbFinished) {
  Copy(other.fvArguments, fvArguments);
}

BpComposite& BpComposite::operator=(const BpComposite& other) {
  if (this == &other) return *this;
  fPattern = other.fPattern;
  fbTranslate = other.fbTranslate;
  fOpenDepth = other.fOpenDepth;
  fbFinished = other.fbFinished;
  fvArguments.clear();
  Copy(other.fvArguments, fvArguments);
  return *this;
}

BpComposite::~BpComposite() = default;

void BpComposite::Copy(const std::vector<Argument>& from, std::vector<Argument>& to) {
  for (const Argument& argument : from) {
    to.emplace_back();
    if (argument.fpText) to.back().fpText.reset(argument.fpText->Replicate());
    Copy(argument.fvItems, to.back().fvItems);
  }
}

std::vector<BpComposite::Argument>& BpComposite::OpenLevel() {
  std::vector<Argument>* level = &fvArguments;
  for (int depth = 0; depth < fOpenDepth; ++depth) level = &level->back().fvItems;
  return *level;
}

void BpComposite::Add(const BpCellText& text) {
  std::vector<Argument>& level = OpenLevel();
  level.emplace_back();
  level.back().fpText.reset(text.Replicate());
}

void BpComposite::Sublist() {
  OpenLevel().emplace_back();
  ++fOpenDepth;
}

void BpComposite::SplitList() {
  const bool bOwnList = fOpenDepth == 0;
  if (bOwnList) Sublist();
  for (const ZORV_Session::SplitValue& split : ZORV_Session::Current().GetCurrentSplit()) {
    if (split.fpVariable == nullptr || split.fvValue.empty()) continue;
    Add(BpVariable(*split.fpVariable, BpVariable::AS_SET));
    Add(BpDataValue(*split.fpVariable, split.fvValue.data(), BpDataValue::AS_SET));
  }
  if (bOwnList) EndSublist();
}

void BpComposite::EndSublist() {
  if (fOpenDepth > 0) --fOpenDepth;
}

void BpComposite::Finish() {
  fOpenDepth = 0;
  fbFinished = true;
}

std::string BpComposite::GetText(const BpTextContext& context) const {
  OmComposite composite(fbTranslate ? context.Translate(fPattern) : fPattern);
  Writer writer{context, composite};
  writer.Write(fvArguments);
  composite.End();
  return composite.AsString();
}
