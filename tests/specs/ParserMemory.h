#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>
#include <vector>

#include "host/parser/ParserWords.h"
#include "run/MixExports.h"

namespace specs_test {

// The parser's memory as the module reads it: the numeric block (8-byte
// slots at byte offsets), the character block (three file names of 255
// bytes) and the command's word array, in which a position is the 1-based
// index of a word. Publishing hands the blocks to the module; the object
// withdraws them again when it goes.
class ParserMemory {
 public:
  enum { kNumericBytes = 2048, kCharacterBytes = 1024, kMaxWords = 1 << 15 };

  ParserMemory() : fvNumeric(kNumericBytes / 8, 0), fvCharacter(kCharacterBytes, '\0') { fvWords.reserve(kMaxWords); }
  ~ParserMemory() { exposemix_(0, 0); }
  ParserMemory(const ParserMemory&) = delete;
  ParserMemory& operator=(const ParserMemory&) = delete;

  void SetReal(long offset, double value) { std::memcpy(Slot(offset), &value, sizeof value); }
  void SetInt(long offset, INTEGER value) { std::memcpy(Slot(offset), &value, sizeof value); }
  INTEGER GetInt(long offset) {
    INTEGER value = 0;
    std::memcpy(&value, Slot(offset), sizeof value);
    return value;
  }

  // A file name in the character block, blank padded to its 255 bytes.
  void SetFileName(long offset, const std::string& name) {
    std::string padded = name;
    padded.resize(255, ' ');
    std::memcpy(fvCharacter.data() + offset, padded.data(), padded.size());
  }

  // Words appended to the array; each returns the position of its first word.
  INTEGER AddInts(const std::vector<INTEGER>& words) {
    const INTEGER position = NextPosition(words.size());
    fvWords.insert(fvWords.end(), words.begin(), words.end());
    return position;
  }
  INTEGER AddReals(const std::vector<double>& values) {
    const INTEGER position = NextPosition(values.size());
    for (double value : values) {
      INTEGER word = 0;
      std::memcpy(&word, &value, sizeof value);
      fvWords.push_back(word);
    }
    return position;
  }
  // Characters, 8 to a word, the last word blank padded; at least `bytes`.
  INTEGER AddText(const std::string& text, std::size_t bytes = 0) {
    std::string padded = text;
    const std::size_t size = std::max(text.size(), bytes);
    padded.resize(((size + 7) / 8) * 8, ' ');
    const INTEGER position = NextPosition(padded.size() / 8);
    for (std::size_t w = 0; w < padded.size() / 8; ++w) {
      INTEGER word = 0;
      std::memcpy(&word, padded.data() + 8 * w, 8);
      fvWords.push_back(word);
    }
    return position;
  }
  INTEGER NextPosition() const { return static_cast<INTEGER>(fvWords.size()) + 1; }

  // A list of variables: its count at one offset, and at the other the
  // position of their dictionary positions (columns + 1).
  void SetVarList(long countOffset, long positionOffset, const std::vector<int>& columns) {
    std::vector<INTEGER> positions;
    for (int column : columns) positions.push_back(column + 1);
    SetInt(countOffset, static_cast<INTEGER>(columns.size()));
    SetInt(positionOffset, columns.empty() ? 0 : AddInts(positions));
  }

  // The values a command with no optional keyword gives.
  void SetDefaults(int targetColumn) {
    SetReal(0, 95.0);
    SetReal(8, 0.0);
    SetReal(16, 0.0);
    SetReal(64, 1e-6);
    SetReal(80, 1e-12);
    SetInt(104, targetColumn + 1);
    SetInt(144, 2);
    SetInt(232, 1);
    SetInt(240, 1);
    SetInt(272, 2);
    SetInt(312, 2);
    SetInt(336, 100);
    SetInt(344, 5);
    SetInt(584, 1);
    SetInt(1688, 0);
    SetInt(1696, 3);
    SetInt(1736, 1);
  }

  // Publishes the blocks and returns the command handle.
  void* Publish() {
    exposemix_(reinterpret_cast<std::intptr_t>(fvNumeric.data()), reinterpret_cast<std::intptr_t>(fvCharacter.data()));
    return fvWords.data();
  }

  INTEGER* Words() { return fvWords.data(); }
  const LR* Reals() const { return reinterpret_cast<const LR*>(fvWords.data()); }
  const LR* RealsAt(INTEGER position) const { return Reals() + (position - 1); }

 private:
  char* Slot(long offset) {
    if (offset < 0 || offset + 8 > kNumericBytes) throw std::out_of_range("numeric block offset");
    return reinterpret_cast<char*>(fvNumeric.data()) + offset;
  }
  INTEGER NextPosition(std::size_t adding) const {
    if (fvWords.size() + adding > static_cast<std::size_t>(kMaxWords)) throw std::length_error("word array full");
    return NextPosition();
  }

  std::vector<INTEGER> fvNumeric;
  std::vector<char> fvCharacter;
  std::vector<INTEGER> fvWords;
};

}  // namespace specs_test
