#include "host/text/ZORVMBConverter.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

struct ConverterDeleter {
  void operator()(ZORVMBConverter* c) const { ZORVMBConverterDelete_A(c); }
};
using ConverterPtr = std::unique_ptr<ZORVMBConverter, ConverterDeleter>;

}  // namespace

TEST(ZORVMBConverter, LocalCodePageIsUTF8) {
  ConverterPtr converter(ZORVMBConverterNew_A(0));
  ASSERT_NE(converter, nullptr);
  EXPECT_EQ(converter->GetCodePage(), ZORVMBConverter::UTF8);
  std::string out;
  EXPECT_EQ(ZORVMBGenericToU8(converter.get(), "Gr\xC3\xB6\xC3\x9F" "e", out), 0);
  EXPECT_EQ(out, "Gr\xC3\xB6\xC3\x9F" "e");
  EXPECT_EQ(ZORVMBU8ToGeneric(converter.get(), "\xE2\x82\xAC 5", out), 0);
  EXPECT_EQ(out, "\xE2\x82\xAC 5");
}

TEST(ZORVMBConverter, NullTextIsEmpty) {
  ConverterPtr converter(ZORVMBConverterNew_A(0));
  std::string out = "old";
  EXPECT_EQ(ZORVMBGenericToU8(converter.get(), nullptr, out), 0);
  EXPECT_EQ(out, "");
}

TEST(ZORVMBConverter, MalformedBytesBecomeReplacementCharacters) {
  ConverterPtr converter(ZORVMBConverterNew_A(ZORVMBConverter::UTF8));
  std::string out;
  // A stray continuation byte, a truncated sequence, an overlong form and a surrogate.
  EXPECT_EQ(ZORVMBGenericToU8(converter.get(), "a\x80" "b\xC3", out), 0);
  EXPECT_EQ(out, "a\xEF\xBF\xBD" "b\xEF\xBF\xBD");
  EXPECT_EQ(ZORVMBGenericToU8(converter.get(), "\xC0\xAF", out), 0);
  EXPECT_EQ(out, "\xEF\xBF\xBD\xEF\xBF\xBD");
  EXPECT_EQ(ZORVMBGenericToU8(converter.get(), "\xED\xA0\x80", out), 0);
  EXPECT_EQ(out, "\xEF\xBF\xBD\xEF\xBF\xBD\xEF\xBF\xBD");
}

TEST(ZORVMBConverter, ConvertsLatin1BothWays) {
  ConverterPtr converter(ZORVMBConverterNew_A(ZORVMBConverter::LATIN1));
  ASSERT_NE(converter, nullptr);
  std::string out;
  EXPECT_EQ(ZORVMBGenericToU8(converter.get(), "caf\xE9", out), 0);
  EXPECT_EQ(out, "caf\xC3\xA9");
  EXPECT_EQ(ZORVMBU8ToGeneric(converter.get(), "caf\xC3\xA9 \xE2\x82\xAC", out), 0);
  EXPECT_EQ(out, "caf\xE9 ?");
}

TEST(ZORVMBConverter, UnknownPageAndNullConverter) {
  EXPECT_EQ(ZORVMBConverterNew_A(77), nullptr);
  std::string out = "x";
  EXPECT_EQ(ZORVMBGenericToU8(nullptr, "abc", out), ZORVMBConverter::NO_CONVERTER);
  EXPECT_EQ(out, "");
  EXPECT_EQ(ZORVMBU8ToGeneric(nullptr, "abc", out), ZORVMBConverter::NO_CONVERTER);
  ZORVMBConverterDelete_A(nullptr);
}

TEST(ZORVMBConverter, CharacterLengths) {
  EXPECT_EQ(ZORVMBmbclen_A("a"), 1);
  EXPECT_EQ(ZORVMBmbclen_A("\xC3\xA9"), 2);
  EXPECT_EQ(ZORVMBmbclen_A("\xE2\x82\xAC"), 3);
  EXPECT_EQ(ZORVMBmbclen_A("\xF0\x9F\x98\x80"), 4);
  EXPECT_EQ(ZORVMBmbclen_A("\x80"), 1);
  EXPECT_EQ(ZORVMBmbclen_A("\xE2\x82"), 1);
  EXPECT_EQ(ZORVMBmbclen_A(""), 1);
  EXPECT_EQ(ZORVMBmbclen_A(nullptr), 0);
}

TEST(ZORVMBConverter, WalkingByCharacterLengthCoversTheText) {
  std::string text = "x\xC3\xA9\xE2\x82\xAC\x80\xF0\x9F\x98\x80y";
  std::size_t pos = 0;
  int characters = 0;
  while (pos < text.size()) {
    pos += static_cast<std::size_t>(ZORVMBmbclen_A(text.c_str() + pos));
    ++characters;
  }
  EXPECT_EQ(pos, text.size());
  EXPECT_EQ(characters, 6);
}
