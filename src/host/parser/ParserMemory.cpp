#include "host/parser/ParserMemory.h"

#include <algorithm>
#include <cassert>
#include <cstring>

namespace {

INTEGER RealBits(double value) {
  INTEGER word = 0;
  std::memcpy(&word, &value, sizeof word);
  return word;
}

double BitsReal(INTEGER word) {
  double value = 0.0;
  std::memcpy(&value, &word, sizeof value);
  return value;
}

}  // namespace

ParserMemory::ParserMemory()
    : fvNumeric(kNumericBytes / sizeof(INTEGER), 0), fvCharacter(kCharacterBytes, '\0') {}

void ParserMemory::Clear() {
  std::fill(fvNumeric.begin(), fvNumeric.end(), 0);
  std::fill(fvCharacter.begin(), fvCharacter.end(), '\0');
  fvWords.clear();
}

std::size_t ParserMemory::NumericIndex(int offset) const {
  assert(offset >= 0 && offset % 8 == 0 && offset < kNumericBytes && "numeric block offset");
  return static_cast<std::size_t>(offset / 8);
}

std::size_t ParserMemory::WordIndex(INTEGER position) const {
  assert(position >= 1 && position <= GetWordCount() && "word array position");
  return static_cast<std::size_t>(position - 1);
}

void ParserMemory::SetNumericReal(int offset, double value) { fvNumeric[NumericIndex(offset)] = RealBits(value); }

double ParserMemory::GetNumericReal(int offset) const { return BitsReal(fvNumeric[NumericIndex(offset)]); }

void ParserMemory::SetNumericInteger(int offset, INTEGER value) { fvNumeric[NumericIndex(offset)] = value; }

INTEGER ParserMemory::GetNumericInteger(int offset) const { return fvNumeric[NumericIndex(offset)]; }

void ParserMemory::SetCharacterText(int offset, int length, const std::string& text) {
  assert(offset >= 0 && length >= 0 && offset + length <= kCharacterBytes && "character block field");
  std::size_t room = static_cast<std::size_t>(length);
  std::size_t used = text.size() < room ? text.size() : room;
  std::memset(fvCharacter.data() + offset, ' ', room);
  std::memcpy(fvCharacter.data() + offset, text.data(), used);
}

std::string ParserMemory::GetCharacterText(int offset, int length) const {
  assert(offset >= 0 && length >= 0 && offset + length <= kCharacterBytes && "character block field");
  return std::string(fvCharacter.data() + offset, static_cast<std::size_t>(length));
}

INTEGER ParserMemory::AddInteger(INTEGER value) {
  fvWords.push_back(value);
  return GetWordCount();
}

INTEGER ParserMemory::AddReal(double value) { return AddInteger(RealBits(value)); }

INTEGER ParserMemory::AddIntegers(const std::vector<INTEGER>& values) {
  if (values.empty()) return 0;
  INTEGER first = GetWordCount() + 1;
  fvWords.insert(fvWords.end(), values.begin(), values.end());
  return first;
}

INTEGER ParserMemory::AddReals(const std::vector<double>& values) {
  if (values.empty()) return 0;
  INTEGER first = GetWordCount() + 1;
  for (double value : values) fvWords.push_back(RealBits(value));
  return first;
}

INTEGER ParserMemory::AddZeros(std::size_t count) {
  if (count == 0) return 0;
  INTEGER first = GetWordCount() + 1;
  fvWords.resize(fvWords.size() + count, 0);
  return first;
}

INTEGER ParserMemory::AddText(const std::string& text, std::size_t bytes) {
  if (bytes < text.size()) bytes = text.size();
  if (bytes == 0) return 0;
  std::size_t words = (bytes + sizeof(INTEGER) - 1) / sizeof(INTEGER);
  std::vector<char> buffer(words * sizeof(INTEGER), ' ');
  std::memcpy(buffer.data(), text.data(), text.size());
  INTEGER first = GetWordCount() + 1;
  for (std::size_t i = 0; i < words; ++i) {
    INTEGER word = 0;
    std::memcpy(&word, buffer.data() + i * sizeof(INTEGER), sizeof word);
    fvWords.push_back(word);
  }
  return first;
}

INTEGER ParserMemory::AddList(const std::vector<INTEGER>& recordPositions) {
  if (recordPositions.empty()) return 0;
  INTEGER head = AddInteger(static_cast<INTEGER>(recordPositions.size()));
  AddIntegers(recordPositions);
  return head;
}

void ParserMemory::SetInteger(INTEGER position, INTEGER value) { fvWords[WordIndex(position)] = value; }

void ParserMemory::SetReal(INTEGER position, double value) { fvWords[WordIndex(position)] = RealBits(value); }

INTEGER ParserMemory::GetInteger(INTEGER position) const { return fvWords[WordIndex(position)]; }

double ParserMemory::GetReal(INTEGER position) const { return BitsReal(fvWords[WordIndex(position)]); }

std::string ParserMemory::GetText(INTEGER position, std::size_t bytes) const {
  if (bytes == 0) return std::string();
  std::size_t first = WordIndex(position);
  assert(first * sizeof(INTEGER) + bytes <= fvWords.size() * sizeof(INTEGER) && "text inside the word array");
  std::string text(bytes, ' ');
  std::memcpy(&text[0], reinterpret_cast<const char*>(fvWords.data() + first), bytes);
  return text;
}

INTEGER* ParserMemory::GetIntegerWords() { return fvWords.empty() ? nullptr : fvWords.data(); }

LR* ParserMemory::GetRealWords() { return reinterpret_cast<LR*>(GetIntegerWords()); }
