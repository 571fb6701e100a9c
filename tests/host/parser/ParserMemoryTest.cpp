#include "host/parser/ParserMemory.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

INTEGER NumericWord(const ParserMemory& memory, int offset) {
  INTEGER word = 0;
  std::memcpy(&word, static_cast<const char*>(memory.GetNumericBlock()) + offset, sizeof word);
  return word;
}

}  // namespace

TEST(ParserWords, WalksAListByOrdinal) {
  static_assert(sizeof(INTEGER) == 8 && sizeof(LR) == 8, "parser words are 8 bytes");
  // Word 1 unused, a directory of two records at 2, the records at 5 and 9.
  INTEGER words[12] = {0, 2, 5, 9, 0, 0, 0, 0, 0, 0, 0, 0};
  LR* reals = reinterpret_cast<LR*>(words);
  INTEGER head = 2;
  EXPECT_EQ(tmcget_(words, reals, head, 1.0), 5);
  EXPECT_EQ(tmcget_(words, reals, head, 2.0), 9);
  EXPECT_EQ(tmcget_(words, reals, head, 2.9), 9);
}

TEST(ParserWords, GivesNoPositionOutsideTheList) {
  INTEGER words[4] = {1, 3, 0, 0};
  LR* reals = reinterpret_cast<LR*>(words);
  INTEGER head = 1;
  EXPECT_EQ(tmcget_(words, reals, head, 0.0), 0);
  EXPECT_EQ(tmcget_(words, reals, head, 2.0), 0);
  EXPECT_EQ(tmcget_(words, reals, head, -1.0), 0);
  INTEGER none = 0;
  EXPECT_EQ(tmcget_(words, reals, none, 1.0), 0);
  EXPECT_EQ(tmcget_(nullptr, nullptr, head, 1.0), 0);
}

TEST(ParserMemory, StartsZeroedAndEmpty) {
  ParserMemory memory;
  EXPECT_EQ(memory.GetWordCount(), 0);
  EXPECT_EQ(memory.GetIntegerWords(), nullptr);
  for (int offset = 0; offset < ParserMemory::kNumericBytes; offset += 8) ASSERT_EQ(NumericWord(memory, offset), 0);
  for (int i = 0; i < ParserMemory::kCharacterBytes; ++i) ASSERT_EQ(memory.GetCharacterBlock()[i], '\0');
}

TEST(ParserMemory, NumericSlotsHoldIntegersAndDoublesAtByteOffsets) {
  ParserMemory memory;
  memory.SetNumericReal(0, 97.5);
  memory.SetNumericInteger(104, 3);
  memory.SetNumericInteger(1832, 1);
  EXPECT_EQ(memory.GetNumericReal(0), 97.5);
  EXPECT_EQ(NumericWord(memory, 104), 3);
  EXPECT_EQ(NumericWord(memory, 1832), 1);
  double read = 0.0;
  std::memcpy(&read, memory.GetNumericBlock(), sizeof read);
  EXPECT_EQ(read, 97.5);
}

TEST(ParserMemory, CharacterFieldsAreBlankPaddedAndCut) {
  ParserMemory memory;
  memory.SetCharacterText(40, 8, "ab");
  EXPECT_EQ(memory.GetCharacterText(40, 8), "ab      ");
  memory.SetCharacterText(40, 4, "abcdefg");
  EXPECT_EQ(memory.GetCharacterText(40, 8), "abcd    ");
  EXPECT_EQ(memory.GetCharacterBlock()[39], '\0');
}

TEST(ParserMemory, WordsArePositionedFromOne) {
  ParserMemory memory;
  EXPECT_EQ(memory.AddInteger(7), 1);
  EXPECT_EQ(memory.AddReal(2.5), 2);
  EXPECT_EQ(memory.AddIntegers({4, 5, 6}), 3);
  EXPECT_EQ(memory.AddReals({-1.0, 0.25}), 6);
  EXPECT_EQ(memory.AddIntegers({}), 0);
  EXPECT_EQ(memory.AddReals({}), 0);
  EXPECT_EQ(memory.AddZeros(2), 8);
  EXPECT_EQ(memory.GetWordCount(), 9);
  INTEGER* words = memory.GetIntegerWords();
  LR* reals = memory.GetRealWords();
  EXPECT_EQ(words[0], 7);
  EXPECT_EQ(reals[1], 2.5);
  EXPECT_EQ(words[4], 6);
  EXPECT_EQ(reals[6], 0.25);
  memory.SetReal(8, 3.75);
  memory.SetInteger(9, -2);
  EXPECT_EQ(memory.GetReal(8), 3.75);
  EXPECT_EQ(memory.GetInteger(9), -2);
  EXPECT_EQ(memory.GetCommand(), static_cast<void*>(memory.GetIntegerWords()));
}

TEST(ParserMemory, TextFillsWholeWordsWithBlanks) {
  ParserMemory memory;
  memory.AddInteger(0);
  INTEGER at = memory.AddText("Residual", 64);
  EXPECT_EQ(at, 2);
  EXPECT_EQ(memory.GetWordCount(), 9);
  EXPECT_EQ(memory.GetText(at, 64), "Residual" + std::string(56, ' '));
  INTEGER label = memory.AddText("abc");
  EXPECT_EQ(memory.GetWordCount(), 10);
  EXPECT_EQ(memory.GetText(label, 8), "abc     ");
  EXPECT_EQ(memory.AddText(""), 0);
  INTEGER longer = memory.AddText("0123456789", 4);
  EXPECT_EQ(memory.GetText(longer, 16), "0123456789      ");
}

TEST(ParserMemory, ListsAreReachedThroughTheListWalk) {
  ParserMemory memory;
  memory.AddInteger(0);
  INTEGER first = memory.AddReals({1.0, 2.0});
  INTEGER second = memory.AddReals({3.0});
  INTEGER head = memory.AddList({first, second});
  EXPECT_EQ(memory.GetInteger(head), 2);
  EXPECT_EQ(tmcget_(memory.GetIntegerWords(), memory.GetRealWords(), head, 1.0), first);
  EXPECT_EQ(tmcget_(memory.GetIntegerWords(), memory.GetRealWords(), head, 2.0), second);
  EXPECT_EQ(memory.AddList({}), 0);
}

TEST(ParserMemory, ClearZeroesEverything) {
  ParserMemory memory;
  memory.SetNumericInteger(392, 4);
  memory.SetCharacterText(550, 255, "x.xml");
  memory.AddInteger(1);
  memory.Clear();
  EXPECT_EQ(memory.GetNumericInteger(392), 0);
  EXPECT_EQ(memory.GetCharacterText(550, 3), std::string(3, '\0'));
  EXPECT_EQ(memory.GetWordCount(), 0);
}
