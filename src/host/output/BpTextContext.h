#pragma once

#include <string>

class FacSTDictionary;

// What a cell text needs to become final text: the dictionary that
// translates fixed texts (none: texts stay as keys), and which of the host's
// two display settings for names and labels applies. The first setting is
// for the body of tables (titles, dimensions, categories, cells); the second
// for captions, notes, footnotes, messages and split titles.
class BpTextContext {
 public:
  BpTextContext() = default;
  BpTextContext(const FacSTDictionary* pDictionary, bool bSecond) : fpDictionary(pDictionary), fbSecond(bSecond) {}

  const FacSTDictionary* GetDictionary() const { return fpDictionary; }
  void SetDictionary(const FacSTDictionary* pDictionary) { fpDictionary = pDictionary; }
  bool IsSecond() const { return fbSecond; }
  void SetSecond(bool bSecond) { fbSecond = bSecond; }
  // The same context for captions and notes.
  BpTextContext Second() const { return BpTextContext(fpDictionary, true); }

  // The translation of a fixed text, or the text itself without a dictionary.
  std::string Translate(const std::string& key) const;

  // The host's setting for variables and for values in this context:
  // 0 names (values) alone, 1 labels alone, 2 both.
  int GetVariableDisplay() const;
  int GetValueDisplay() const;

 private:
  const FacSTDictionary* fpDictionary = nullptr;
  bool fbSecond = false;
};
