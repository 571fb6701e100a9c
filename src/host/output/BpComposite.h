#pragma once

#include <memory>
#include <string>
#include <vector>

#include "host/output/BpCellText.h"

// A text built from a pattern and arguments (the pattern language is
// described in OmParseTreeNode.h). With `translate` the pattern is a fixed
// text of the system: it is translated first and expanded afterwards, so a
// translation may place the markers in any order.
//
// Arguments are added in order. Sublist opens a list, which counts as one
// argument in the place where it opens; Add then adds its items, and
// EndSublist closes it. SplitList adds the current split's variables and
// values, as pairs, to the open list (or as a list argument of its own
// when none is open); call it while the split is current.
//
// Finish marks the text complete. A composite is expanded whenever it is
// written, with the arguments it has then, finished or not.
class BpComposite : public BpCellText {
 public:
  BpComposite(const std::string& pattern, bool translate);
  BpComposite(const BpComposite& other);
  BpComposite& operator=(const BpComposite& other);
  ~BpComposite() override;

  const std::string& GetPattern() const { return fPattern; }
  void SetPattern(const std::string& pattern) { fPattern = pattern; }
  bool GetTranslate() const { return fbTranslate; }
  void SetTranslate(bool translate) { fbTranslate = translate; }
  bool IsFinished() const { return fbFinished; }

  void Add(const BpCellText& text);
  void Sublist();
  void SplitList();
  void EndSublist();
  void Finish();

  BpCellText* Replicate() const override { return new BpComposite(*this); }
  using BpCellText::GetText;
  std::string GetText(const BpTextContext& context) const override;

 private:
  struct Argument {
    std::unique_ptr<BpCellText> fpText;  // null for a list
    std::vector<Argument> fvItems;
  };

  static void Copy(const std::vector<Argument>& from, std::vector<Argument>& to);
  std::vector<Argument>& OpenLevel();

  std::string fPattern;
  bool fbTranslate;
  std::vector<Argument> fvArguments;
  int fOpenDepth = 0;
  bool fbFinished = false;
};
