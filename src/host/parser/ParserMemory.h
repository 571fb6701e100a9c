#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "host/parser/ParserWords.h"

// What the command parser hands a procedure for one command: a numeric
// block of 8-byte slots addressed by byte offsets, a character block of
// fixed-width texts addressed by byte offsets, and the command's word array,
// addressed by 1-based positions and read both as integers and as doubles.
//
// The object owns the three pieces and keeps them at fixed addresses for as
// long as it lives, except that adding words may move the word array: take
// the raw views only when the command is complete. All three start zeroed.
class ParserMemory {
 public:
  // Sizes of the two blocks in bytes; every offset in use lies below them.
  enum { kNumericBytes = 2048, kCharacterBytes = 1024 };

  ParserMemory();
  ParserMemory(const ParserMemory&) = delete;
  ParserMemory& operator=(const ParserMemory&) = delete;

  // Back to three zeroed pieces, the word array empty.
  void Clear();

  // ---- the numeric block: 8-byte slots at byte offsets (multiples of 8) ----
  void SetNumericReal(int offset, double value);
  double GetNumericReal(int offset) const;
  void SetNumericInteger(int offset, INTEGER value);
  INTEGER GetNumericInteger(int offset) const;

  // ---- the character block ----
  // The text fills `length` bytes from `offset`, blank padded; a longer text
  // is cut at the length.
  void SetCharacterText(int offset, int length, const std::string& text);
  // The `length` bytes from `offset`, as they stand.
  std::string GetCharacterText(int offset, int length) const;

  // ---- the word array ----
  // Each Add returns the position of the first word added. Adding nothing
  // returns 0, the position that means "none".
  INTEGER AddInteger(INTEGER value);
  INTEGER AddReal(double value);
  INTEGER AddIntegers(const std::vector<INTEGER>& values);
  INTEGER AddReals(const std::vector<double>& values);
  // `count` zero words, to be filled later with the setters below.
  INTEGER AddZeros(std::size_t count);
  // The bytes of `text` in as many words as `bytes` needs (at least the
  // text's own length), blank padded to the last byte of the last word.
  INTEGER AddText(const std::string& text, std::size_t bytes = 0);
  // A list of records for `tmcget_`: a directory of the count and the
  // records' positions. Returns its head; 0 for no records.
  INTEGER AddList(const std::vector<INTEGER>& recordPositions);

  void SetInteger(INTEGER position, INTEGER value);
  void SetReal(INTEGER position, double value);
  INTEGER GetInteger(INTEGER position) const;
  double GetReal(INTEGER position) const;
  // `bytes` bytes from the word at `position`, as they stand.
  std::string GetText(INTEGER position, std::size_t bytes) const;
  INTEGER GetWordCount() const { return static_cast<INTEGER>(fvWords.size()); }

  // ---- raw views, for the procedure ----
  // The word array in its two views; null while it is empty.
  INTEGER* GetIntegerWords();
  LR* GetRealWords();
  // The handle a procedure receives for the command: the word array.
  void* GetCommand() { return GetIntegerWords(); }
  void* GetNumericBlock() { return fvNumeric.data(); }
  const void* GetNumericBlock() const { return fvNumeric.data(); }
  char* GetCharacterBlock() { return fvCharacter.data(); }
  const char* GetCharacterBlock() const { return fvCharacter.data(); }
  // The block addresses as the words handed to `exposemix_`.
  std::intptr_t GetNumericAddress() { return reinterpret_cast<std::intptr_t>(GetNumericBlock()); }
  std::intptr_t GetCharacterAddress() { return reinterpret_cast<std::intptr_t>(GetCharacterBlock()); }

 private:
  std::size_t NumericIndex(int offset) const;
  std::size_t WordIndex(INTEGER position) const;

  std::vector<INTEGER> fvNumeric;
  std::vector<char> fvCharacter;
  std::vector<INTEGER> fvWords;
};
