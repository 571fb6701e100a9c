#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "host/cf/CFField.h"
#include "host/cf/CFFormat.h"
#include "host/cf/CFMetaData.h"
#include "host/cf/CFStatVariableValue.h"
#include "host/cf/CFStatXMLInfoBlock.h"
#include "host/data/ZORV_DataSource.h"
#include "host/data/ZORV_Variable.h"

namespace {

class TwoColumnSource : public ZORV_DataSource {
 public:
  TwoColumnSource() : fNumber("score", 0), fText("group", 6) {
    fNumber.SetLabel("Test score");
    fNumber.SetFormat(ZORV_Format(ZORV_Format::F, 10, 3));
  }
  int ColumnCount() const override { return 2; }
  const ZORV_Variable* GetVariable(int index) const override { return index == 0 ? &fNumber : &fText; }
  ZORV_Variable* GetVariable(int index) override { return index == 0 ? &fNumber : &fText; }
  int FindVarIndex(const char*, int) const override { return -1; }
  bool MakeVariable(int, unsigned int*) override { return false; }

 private:
  ZORV_Variable fNumber;
  ZORV_Variable fText;
};

class DerivedFormat : public CFFormat {
 public:
  DerivedFormat() : CFFormat(ZORV_Format::E, 12, 4) {}
  CFFormat* Clone() const override { return new DerivedFormat(*this); }
  std::string fExtra = "kept";
};

std::string CellText(const CFStatVariableValue& v) {
  return std::string(reinterpret_cast<const char*>(v.GetObsValue()),
                     static_cast<std::size_t>(v.GetObsCount()) * sizeof(OBS));
}

}  // namespace

TEST(CFFormat, HoldsTypeWidthAndDecimals) {
  CFFormat standard;
  EXPECT_EQ(standard.GetType(), ZORV_Format::F);
  EXPECT_EQ(standard.GetWidth(), 8);
  EXPECT_EQ(standard.GetDecimals(), 2);
  CFFormat f(ZORV_Format::COMMA, 12, 1);
  EXPECT_EQ(f.ToText(), "COMMA12.1");
  EXPECT_FALSE(f.IsString());
  EXPECT_TRUE(CFFormat(ZORV_Format::A, 8, 0).IsString());
  f.SetType(ZORV_Format::F);
  f.SetWidth(6);
  f.SetDecimals(0);
  EXPECT_EQ(f.ToZORVFormat(), ZORV_Format(ZORV_Format::F, 6, 0));
  EXPECT_EQ(CFFormat(ZORV_Format(ZORV_Format::DOLLAR, 9, 2)), CFFormat(ZORV_Format::DOLLAR, 9, 2));
  EXPECT_NE(CFFormat(ZORV_Format::F, 9, 2), CFFormat(ZORV_Format::F, 9, 3));
}

TEST(CFFormat, CutsOutOfRangePartsWhenMadeIntoTheHostForm) {
  ZORV_Format z = CFFormat(ZORV_Format::F, 70000, -3).ToZORVFormat();
  EXPECT_EQ(z.fWidth, 65535);
  EXPECT_EQ(z.fDecimals, 0);
}

TEST(CFFormat, CloneKeepsTheDynamicType) {
  DerivedFormat derived;
  derived.fExtra = "changed";
  const CFFormat& base = derived;
  std::unique_ptr<CFFormat> copy(base.Clone());
  ASSERT_NE(dynamic_cast<DerivedFormat*>(copy.get()), nullptr);
  EXPECT_EQ(dynamic_cast<DerivedFormat*>(copy.get())->fExtra, "changed");
  EXPECT_EQ(*copy, derived);
  std::unique_ptr<CFFormat> plain(CFFormat(ZORV_Format::F, 5, 1).Clone());
  EXPECT_EQ(*plain, CFFormat(ZORV_Format::F, 5, 1));
}

TEST(CFField, TakesItsPartsFromAVariable) {
  ZORV_Variable number("score", 0);
  number.SetLabel("Test score");
  number.SetMeasurementLevel(ZORV_Variable::ORDINAL);
  number.SetFormat(ZORV_Format(ZORV_Format::F, 10, 3));
  CFField field(number);
  EXPECT_EQ(field.GetName(), "score");
  EXPECT_EQ(field.GetLabel(), "Test score");
  EXPECT_EQ(field.GetType(), CFField::REAL_STORAGE);
  EXPECT_EQ(field.GetMeasure(), CFField::ORDINAL);
  EXPECT_EQ(field.GetFormat(), CFFormat(ZORV_Format::F, 10, 3));

  CFField text(ZORV_Variable("group", 6));
  EXPECT_EQ(text.GetType(), CFField::STRING_STORAGE);
  EXPECT_EQ(text.GetLabel(), "");
  EXPECT_EQ(text.GetMeasure(), CFField::NOMINAL);
  EXPECT_TRUE(text.GetFormat().IsString());
}

TEST(CFField, IsAPlainRecord) {
  CFField field("when", CFField::DATE_STORAGE);
  EXPECT_EQ(field.GetType(), 4);
  EXPECT_EQ(field.GetMeasure(), CFField::UNKNOWN_MEASURE);
  field.SetName("then");
  field.SetLabel("Then");
  field.SetType(CFField::TIMESTAMP_STORAGE);
  field.SetMeasure(CFField::SCALE);
  field.SetFormat(CFFormat(ZORV_Format::E, 11, 4));
  CFField copy = field;
  EXPECT_EQ(copy.GetName(), "then");
  EXPECT_EQ(copy.GetLabel(), "Then");
  EXPECT_EQ(copy.GetType(), 6);
  EXPECT_EQ(copy.GetMeasure(), 3);
  EXPECT_EQ(copy.GetFormat().ToText(), "E11.4");
}

TEST(CFMetaData, HoldsOneFieldPerColumnOfADataSource) {
  TwoColumnSource source;
  CFMetaData meta(source);
  ASSERT_EQ(meta.FieldCount(), 2);
  ASSERT_NE(meta.GetField(0), nullptr);
  EXPECT_EQ(meta.GetField(0)->GetName(), "score");
  EXPECT_EQ(meta.GetField(0)->GetLabel(), "Test score");
  EXPECT_EQ(meta.GetField(1)->GetType(), CFField::STRING_STORAGE);
  EXPECT_EQ(meta.GetField(-1), nullptr);
  EXPECT_EQ(meta.GetField(2), nullptr);
}

TEST(CFMetaData, FindsFieldsByNamePreferringAnExactMatch) {
  CFMetaData meta;
  EXPECT_EQ(meta.FieldCount(), 0);
  EXPECT_EQ(meta.GetFieldIndex("a"), -1);
  EXPECT_EQ(meta.AddField(CFField("Age", CFField::REAL_STORAGE)), 0);
  EXPECT_EQ(meta.AddField(CFField("age", CFField::INTEGER_STORAGE)), 1);
  EXPECT_EQ(meta.AddField(CFField("Group", CFField::STRING_STORAGE)), 2);
  EXPECT_EQ(meta.GetFieldIndex("Age"), 0);
  EXPECT_EQ(meta.GetFieldIndex("age"), 1);
  EXPECT_EQ(meta.GetFieldIndex("AGE"), 0);
  EXPECT_EQ(meta.GetFieldIndex("group"), 2);
  EXPECT_EQ(meta.GetFieldIndex("grou"), -1);
  EXPECT_EQ(meta.GetFieldIndex(""), -1);
  meta.GetField(2)->SetLabel("Treatment group");
  EXPECT_EQ(meta.GetField(2)->GetLabel(), "Treatment group");
  meta.Clear();
  EXPECT_EQ(meta.FieldCount(), 0);
}

TEST(CFStatVariableValue, KeepsItsTextAndStartsUnloaded) {
  CFStatVariableValue empty;
  EXPECT_EQ(empty.GetStringValue(), "");
  EXPECT_EQ(empty.GetObsValue(), nullptr);
  EXPECT_FALSE(empty.IsLoaded());
  CFStatVariableValue v("2.5");
  EXPECT_EQ(v.GetStringValue(), "2.5");
  EXPECT_EQ(v.GetObsValue(), nullptr);
  EXPECT_EQ(v.GetObsCount(), 0);
}

TEST(CFStatVariableValue, LoadsNumbersForANumericVariable) {
  ZORV_Variable number("x", 0);
  CFStatVariableValue v("  -2.5e1 ");
  ASSERT_TRUE(v.LoadObsValue(number, 0));
  ASSERT_NE(v.GetObsValue(), nullptr);
  EXPECT_EQ(v.GetObsValue()->fNum, -25.0);
  EXPECT_EQ(v.GetObsCount(), 1);
  EXPECT_EQ(v.GetWidth(), 0);
  EXPECT_TRUE(v.SetCompleteValue("+3", number));
  EXPECT_EQ(v.GetObsValue()->fNum, 3.0);
  EXPECT_EQ(v.GetStringValue(), "+3");
}

TEST(CFStatVariableValue, RefusesTextThatIsNotANumber) {
  ZORV_Variable number("x", 0);
  CFStatVariableValue v;
  for (const char* bad : {"", "  ", "abc", "1x", "1 2", "nan", "inf", "1e999", "+-1", "0x10", "--1"}) {
    EXPECT_FALSE(v.SetCompleteValue(bad, number)) << bad;
    EXPECT_EQ(v.GetObsValue(), nullptr) << bad;
    EXPECT_EQ(v.GetStringValue(), bad);
  }
}

TEST(CFStatVariableValue, LoadsBlankPaddedTextForAStringVariable) {
  ZORV_Variable text("g", 10);
  CFStatVariableValue v("abc");
  ASSERT_TRUE(v.LoadObsValue(text));
  EXPECT_EQ(v.GetWidth(), 10);
  EXPECT_EQ(v.GetObsCount(), 2);
  EXPECT_EQ(CellText(v), "abc             ");

  ASSERT_TRUE(v.SetCompleteValue("0123456789   ", text));
  EXPECT_EQ(CellText(v), "0123456789      ");
  EXPECT_FALSE(v.SetCompleteValue("0123456789A", text));
  EXPECT_FALSE(v.IsLoaded());
  ASSERT_TRUE(v.SetCompleteValue("0123456789A", text, true));
  EXPECT_EQ(CellText(v).substr(0, 10), "0123456789");
  EXPECT_EQ(v.GetStringValue(), "0123456789A");
  ASSERT_TRUE(v.SetCompleteValue("", text));
  EXPECT_EQ(CellText(v), std::string(16, ' '));
}

TEST(CFStatVariableValue, ANewTextForgetsTheLoadedValueAndCopiesAreIndependent) {
  ZORV_Variable number("x", 0);
  CFStatVariableValue v("1");
  ASSERT_TRUE(v.LoadObsValue(number));
  CFStatVariableValue copy(v);
  v.SetStringValue("2");
  EXPECT_EQ(v.GetObsValue(), nullptr);
  ASSERT_NE(copy.GetObsValue(), nullptr);
  EXPECT_EQ(copy.GetObsValue()->fNum, 1.0);
  EXPECT_EQ(copy.GetStringValue(), "1");
  CFStatVariableValue assigned;
  assigned = copy;
  EXPECT_EQ(assigned.GetObsValue()->fNum, 1.0);
  EXPECT_NE(assigned.GetObsValue(), copy.GetObsValue());
}

TEST(CFStatXMLInfoBlock, IsAPlainRecordEndingWithTheDocument) {
  CFStatXMLInfoBlock empty;
  EXPECT_TRUE(empty.fName.empty());
  EXPECT_TRUE(empty.fStatXML.empty());
  CFStatXMLInfoBlock block("model 1", "<StatXML/>");
  EXPECT_EQ(block.fName, "model 1");
  EXPECT_EQ(block.fStatXML, "<StatXML/>");
  std::vector<CFStatXMLInfoBlock> blocks{block, block};
  EXPECT_EQ(blocks[1].fStatXML, "<StatXML/>");
}
