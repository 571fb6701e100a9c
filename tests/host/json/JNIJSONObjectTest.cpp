#include "host/json/JNIJSONObject.h"

#include <gtest/gtest.h>

#include <limits>
#include <string>
#include <vector>

#include "host/json/JNIJSONArray.h"
#include "host/json/JNIJSONArtifact.h"

namespace {

const char* kEBLUPDocument = R"({
  "glmm": {
    "RandomEffectsParameters": {
      "tables": [ {"title": "first", "rows": 2}, {"title": "second", "rows": 3.5} ]
    }
  },
  "tables": {"title": "top level"},
  "flag": true,
  "nothing": null,
  "name": "caf\u00e9"
})";

}  // namespace

TEST(JNIJSONObject, ParsesADocumentAndReachesValuesByDottedPaths) {
  JNIJSONObject doc(kEBLUPDocument);
  ASSERT_TRUE(doc.isGood()) << doc.getError();
  EXPECT_TRUE(doc.getError().empty());
  JNIJSONArtifact* top = doc.getTop();
  ASSERT_NE(top, nullptr);
  EXPECT_TRUE(JNIJSONArtifact::isJSONObject(top));

  JNIJSONArtifact* tables = JNIJSONObject::getByPath(top, "glmm.RandomEffectsParameters.tables");
  ASSERT_NE(tables, nullptr);
  EXPECT_TRUE(JNIJSONArtifact::isJSONArray(tables));
  EXPECT_EQ(JNIJSONArray::size(tables), 2);
  std::string title;
  EXPECT_TRUE(JNIJSONObject::getString(JNIJSONArray::get(tables, 1), "title", title));
  EXPECT_EQ(title, "second");

  JNIJSONArtifact* plain = doc.getByPath(top, "tables");
  ASSERT_NE(plain, nullptr);
  EXPECT_FALSE(JNIJSONArtifact::isJSONArray(plain));
  EXPECT_TRUE(JNIJSONArtifact::isJSONObject(plain));

  // Array elements by index inside a path.
  const JNIJSONArtifact* second = JNIJSONObject::getByPath(top, "glmm.RandomEffectsParameters.tables.1.title");
  ASSERT_NE(second, nullptr);
  EXPECT_TRUE(second->getString(title));
  EXPECT_EQ(title, "second");
}

TEST(JNIJSONObject, AMissingPathGivesNull) {
  JNIJSONObject doc(kEBLUPDocument);
  JNIJSONArtifact* top = doc.getTop();
  JNIJSONArtifact* noNode = nullptr;
  EXPECT_EQ(JNIJSONObject::getByPath(top, "glmm.Missing.tables"), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, ""), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, "glmm..tables"), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, "glmm."), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, ".glmm"), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, "flag.deeper"), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, "glmm.RandomEffectsParameters.tables.2"), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, "glmm.RandomEffectsParameters.tables.-1"), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, "glmm.RandomEffectsParameters.tables.x"), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(top, "glmm.RandomEffectsParameters.tables.99999999999999999999"), nullptr);
  EXPECT_EQ(JNIJSONObject::getByPath(noNode, "glmm"), nullptr);
  EXPECT_NE(JNIJSONObject::getByPath(top, "nothing"), nullptr);
  EXPECT_TRUE(JNIJSONArtifact::isJSONNull(JNIJSONObject::getByPath(top, "nothing")));
}

TEST(JNIJSONObject, ReportsMalformedTextClearly) {
  const char* bad[] = {"", "{", "{\"a\":}", "[1,2", "{\"a\" 1}", "tru", "{} extra", "{'a':1}", "[1,]",
                       "\"unterminated", "{\"a\":1,}", "\"\xff\""};
  for (const char* text : bad) {
    JNIJSONObject doc(text);
    EXPECT_FALSE(doc.isGood()) << text;
    EXPECT_EQ(doc.getTop(), nullptr) << text;
    EXPECT_FALSE(doc.getError().empty()) << text;
    EXPECT_EQ(doc.toString(), "") << text;
  }
  JNIJSONObject doc("{\n  \"a\": 1,\n  \"b\": x\n}");
  EXPECT_FALSE(doc.isGood());
  EXPECT_NE(doc.getError().find("line 3"), std::string::npos) << doc.getError();
  EXPECT_NE(doc.getError().find("column"), std::string::npos) << doc.getError();
  EXPECT_EQ(doc.getError().find("[json.exception"), std::string::npos) << doc.getError();
  EXPECT_GT(doc.getErrorOffset(), 0u);

  JNIJSONObject none(nullptr);
  EXPECT_FALSE(none.isGood());
  EXPECT_FALSE(none.getError().empty());
}

TEST(JNIJSONObject, RefusesNestingDeeperThanItsLimit) {
  std::string deep(JNIJSONObject::MAX_DEPTH + 1, '[');
  deep += std::string(JNIJSONObject::MAX_DEPTH + 1, ']');
  JNIJSONObject tooDeep(deep.c_str());
  EXPECT_FALSE(tooDeep.isGood());
  EXPECT_NE(tooDeep.getError().find("nested"), std::string::npos);

  std::string fits(JNIJSONObject::MAX_DEPTH, '[');
  fits += std::string(JNIJSONObject::MAX_DEPTH, ']');
  JNIJSONObject ok(fits.c_str());
  EXPECT_TRUE(ok.isGood()) << ok.getError();

  std::string huge(100000, '[');
  JNIJSONObject hugeDoc(huge.c_str());
  EXPECT_FALSE(hugeDoc.isGood());
}

TEST(JNIJSONObject, GivesTypedMembers) {
  JNIJSONObject doc(R"({"s":"text","i":42,"d":2.5,"whole":3.0,"big":1e300,"neg":-7,"b":false,"n":null,
                        "u":18446744073709551615})");
  ASSERT_TRUE(doc.isGood()) << doc.getError();
  const JNIJSONArtifact* top = doc.getTop();
  std::string s;
  double d = 0;
  long long i = 0;
  bool b = true;
  EXPECT_TRUE(JNIJSONObject::getString(top, "s", s));
  EXPECT_EQ(s, "text");
  EXPECT_TRUE(JNIJSONObject::getInteger(top, "i", i));
  EXPECT_EQ(i, 42);
  EXPECT_TRUE(JNIJSONObject::getDouble(top, "i", d));
  EXPECT_EQ(d, 42.0);
  EXPECT_TRUE(JNIJSONObject::getDouble(top, "d", d));
  EXPECT_EQ(d, 2.5);
  EXPECT_FALSE(JNIJSONObject::getInteger(top, "d", i));
  EXPECT_EQ(i, 42);
  EXPECT_TRUE(JNIJSONObject::getInteger(top, "whole", i));
  EXPECT_EQ(i, 3);
  EXPECT_FALSE(JNIJSONObject::getInteger(top, "big", i));
  EXPECT_TRUE(JNIJSONObject::getInteger(top, "neg", i));
  EXPECT_EQ(i, -7);
  EXPECT_FALSE(JNIJSONObject::getInteger(top, "u", i));
  EXPECT_TRUE(JNIJSONObject::getDouble(top, "u", d));
  EXPECT_DOUBLE_EQ(d, 18446744073709551615.0);
  EXPECT_TRUE(JNIJSONObject::getBoolean(top, "b", b));
  EXPECT_FALSE(b);

  s = "unchanged";
  EXPECT_FALSE(JNIJSONObject::getString(top, "i", s));
  EXPECT_FALSE(JNIJSONObject::getString(top, "n", s));
  EXPECT_FALSE(JNIJSONObject::getString(top, "missing", s));
  EXPECT_EQ(s, "unchanged");
  EXPECT_FALSE(JNIJSONObject::getBoolean(top, "s", b));
  EXPECT_TRUE(JNIJSONObject::has(top, "n"));
  EXPECT_FALSE(JNIJSONObject::has(top, "N"));
  EXPECT_EQ(JNIJSONObject::keys(top),
            (std::vector<std::string>{"s", "i", "d", "whole", "big", "neg", "b", "n", "u"}));
  // A value that is no object has no members.
  EXPECT_EQ(JNIJSONObject::get(JNIJSONObject::get(doc.getTop(), "s"), "x"), nullptr);
  EXPECT_TRUE(JNIJSONObject::keys(JNIJSONObject::get(doc.getTop(), "s")).empty());
}

TEST(JNIJSONObject, ReadsEscapesAndUnicode) {
  JNIJSONObject doc(R"({"t":"a\"b\\c\n\u00e9\ud83d\ude00"})");
  ASSERT_TRUE(doc.isGood()) << doc.getError();
  std::string t;
  ASSERT_TRUE(JNIJSONObject::getString(doc.getTop(), "t", t));
  EXPECT_EQ(t, "a\"b\\c\n\xc3\xa9\xf0\x9f\x98\x80");
}

TEST(JNIJSONObject, ALaterDuplicateKeyWinsButKeepsThePlaceOfTheFirst) {
  JNIJSONObject doc(R"({"a":1,"b":2,"a":3})");
  ASSERT_TRUE(doc.isGood());
  long long i = 0;
  EXPECT_TRUE(JNIJSONObject::getInteger(doc.getTop(), "a", i));
  EXPECT_EQ(i, 3);
  EXPECT_EQ(JNIJSONObject::keys(doc.getTop()), (std::vector<std::string>{"a", "b"}));
}

TEST(JNIJSONObject, TheRootMayBeAnyValue) {
  JNIJSONObject array("[1, 2]");
  ASSERT_TRUE(array.isGood());
  EXPECT_TRUE(JNIJSONArtifact::isJSONArray(array.getTop()));
  JNIJSONObject text("\"only\"");
  ASSERT_TRUE(text.isGood());
  EXPECT_TRUE(JNIJSONArtifact::isJSONString(text.getTop()));
  JNIJSONObject null("null");
  ASSERT_TRUE(null.isGood());
  EXPECT_TRUE(JNIJSONArtifact::isJSONNull(null.getTop()));
}

TEST(JNIJSONObject, BuildsDocumentsAndWritesThemOut) {
  JNIJSONObject doc;
  ASSERT_TRUE(doc.isGood());
  JNIJSONArtifact* top = doc.getTop();
  EXPECT_EQ(doc.toString(), "{}");
  JNIJSONArtifact* title = JNIJSONObject::putString(top, "title", "Tests \"quoted\"");
  ASSERT_NE(title, nullptr);
  JNIJSONObject::putInteger(top, "n", 3);
  JNIJSONObject::putDouble(top, "x", 0.5);
  JNIJSONObject::putBoolean(top, "ok", true);
  JNIJSONObject::putNull(top, "none");
  JNIJSONArtifact* rows = JNIJSONObject::putArray(top, "rows");
  JNIJSONArray::addInteger(rows, 1);
  JNIJSONArray::addString(rows, "two");
  JNIJSONArtifact* inner = JNIJSONObject::putObject(top, "inner");
  JNIJSONObject::putDouble(inner, "y", -1.25);
  EXPECT_EQ(doc.toString(),
            R"({"title":"Tests \"quoted\"","n":3,"x":0.5,"ok":true,"none":null,"rows":[1,"two"],"inner":{"y":-1.25}})");

  // Replacing keeps the member's place, and the earlier pointer is the
  // member itself.
  JNIJSONArtifact* again = JNIJSONObject::putInteger(top, "title", 7);
  EXPECT_EQ(again, title);
  EXPECT_EQ(JNIJSONObject::keys(top).front(), "title");

  std::string pretty = doc.toString(2);
  EXPECT_NE(pretty.find("\n  \"title\": 7"), std::string::npos) << pretty;

  JNIJSONObject reread(doc.toString().c_str());
  ASSERT_TRUE(reread.isGood());
  EXPECT_EQ(reread.toString(), doc.toString());

  // Puts into something that is no object do nothing.
  EXPECT_EQ(JNIJSONObject::putString(rows, "k", "v"), nullptr);
  JNIJSONArtifact* noNode = nullptr;
  EXPECT_EQ(JNIJSONObject::putObject(noNode, "k"), nullptr);
}

TEST(JNIJSONObject, PointersStayValidWhileTheDocumentGrows) {
  JNIJSONObject doc("{\"list\":[{\"v\":0}]}");
  JNIJSONArtifact* list = JNIJSONObject::get(doc.getTop(), "list");
  JNIJSONArtifact* first = JNIJSONArray::get(list, 0);
  for (int k = 1; k < 1000; ++k) JNIJSONObject::putInteger(JNIJSONArray::addObject(list), "v", k);
  for (int k = 0; k < 1000; ++k) JNIJSONObject::putInteger(doc.getTop(), "key" + std::to_string(k), k);
  long long v = -1;
  EXPECT_TRUE(JNIJSONObject::getInteger(first, "v", v));
  EXPECT_EQ(v, 0);
  EXPECT_EQ(JNIJSONArray::size(list), 1000);
}

TEST(JNIJSONObject, ParsingAgainReplacesTheDocument) {
  JNIJSONObject doc("{\"a\":1}");
  ASSERT_TRUE(doc.isGood());
  EXPECT_FALSE(doc.parse("{"));
  EXPECT_FALSE(doc.isGood());
  EXPECT_EQ(doc.getTop(), nullptr);
  EXPECT_TRUE(doc.parse("[true]"));
  EXPECT_TRUE(doc.getError().empty());
  EXPECT_EQ(doc.toString(), "[true]");
}

TEST(JNIJSONObject, WritesNumbersThatAreNotFiniteAsNull) {
  JNIJSONObject doc;
  JNIJSONObject::putDouble(doc.getTop(), "x", std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(doc.toString(), "{\"x\":null}");
}

TEST(JNIJSONArray, GivesSizesElementsAndTypedElements) {
  JNIJSONObject doc(R"([1, "two", 3.5, false, null, [], {}])");
  ASSERT_TRUE(doc.isGood());
  JNIJSONArray arrays;
  JNIJSONArtifact* top = doc.getTop();
  EXPECT_EQ(arrays.size(top), 7);
  long long i = 0;
  std::string s;
  double d = 0;
  bool b = true;
  EXPECT_TRUE(JNIJSONArray::getInteger(top, 0, i));
  EXPECT_EQ(i, 1);
  EXPECT_TRUE(JNIJSONArray::getString(top, 1, s));
  EXPECT_EQ(s, "two");
  EXPECT_TRUE(JNIJSONArray::getDouble(top, 2, d));
  EXPECT_EQ(d, 3.5);
  EXPECT_TRUE(JNIJSONArray::getBoolean(top, 3, b));
  EXPECT_FALSE(b);
  EXPECT_TRUE(JNIJSONArtifact::isJSONNull(arrays.get(top, 4)));
  EXPECT_TRUE(JNIJSONArtifact::isJSONArray(arrays.get(top, 5)));
  EXPECT_EQ(JNIJSONArray::size(arrays.get(top, 5)), 0);
  EXPECT_TRUE(JNIJSONArtifact::isJSONObject(arrays.get(top, 6)));
  EXPECT_EQ(arrays.get(top, 7), nullptr);
  EXPECT_EQ(arrays.get(top, -1), nullptr);
  EXPECT_FALSE(JNIJSONArray::getString(top, 0, s));
  EXPECT_EQ(s, "two");
}

TEST(JNIJSONArray, AValueThatIsNoArrayIsEmpty) {
  JNIJSONObject doc(R"({"a":1})");
  JNIJSONArtifact* top = doc.getTop();
  JNIJSONArtifact* noNode = nullptr;
  EXPECT_EQ(JNIJSONArray::size(top), 0);
  EXPECT_EQ(JNIJSONArray::size(noNode), 0);
  EXPECT_EQ(JNIJSONArray::get(top, 0), nullptr);
  EXPECT_EQ(JNIJSONArray::get(noNode, 0), nullptr);
  EXPECT_EQ(JNIJSONArray::addInteger(top, 1), nullptr);
  EXPECT_EQ(JNIJSONArray::addNull(noNode), nullptr);
  EXPECT_EQ(doc.toString(), R"({"a":1})");
}

TEST(JNIJSONArray, AppendsElementsOfEveryKind) {
  JNIJSONObject doc("[]");
  JNIJSONArtifact* top = doc.getTop();
  JNIJSONArray::addString(top, "s");
  JNIJSONArray::addDouble(top, 1.5);
  JNIJSONArray::addInteger(top, -2);
  JNIJSONArray::addBoolean(top, true);
  JNIJSONArray::addNull(top);
  JNIJSONArray::addArray(top);
  JNIJSONObject::putInteger(JNIJSONArray::addObject(top), "k", 1);
  EXPECT_EQ(doc.toString(), R"(["s",1.5,-2,true,null,[],{"k":1}])");
}

TEST(JNIJSONArtifact, TellsKindsAndNullPointersApart) {
  JNIJSONArtifact* none = nullptr;
  EXPECT_FALSE(JNIJSONArtifact::isJSONArray(none));
  EXPECT_FALSE(JNIJSONArtifact::isJSONObject(none));
  EXPECT_FALSE(JNIJSONArtifact::isJSONString(none));
  EXPECT_FALSE(JNIJSONArtifact::isJSONNumber(none));
  EXPECT_FALSE(JNIJSONArtifact::isJSONBoolean(none));
  EXPECT_FALSE(JNIJSONArtifact::isJSONNull(none));
  JNIJSONArtifact value;
  EXPECT_EQ(value.getKind(), JNIJSONArtifact::KIND_NULL);
  value.setNumber(2.0);
  EXPECT_TRUE(JNIJSONArtifact::isJSONNumber(&value));
  EXPECT_FALSE(value.isIntegral());
  value.setInteger(2);
  EXPECT_TRUE(value.isIntegral());
  value.setBoolean(true);
  EXPECT_TRUE(JNIJSONArtifact::isJSONBoolean(&value));
  double d = 9;
  EXPECT_FALSE(value.getNumber(d));
  EXPECT_EQ(d, 9);
  value.setString("s");
  EXPECT_TRUE(JNIJSONArtifact::isJSONString(&value));
}

TEST(JNIJSONArtifact, ContainersOnlyActAsTheirOwnKind) {
  JNIJSONArtifact array(JNIJSONArtifact::KIND_ARRAY);
  EXPECT_EQ(array.putMember("x"), nullptr);
  EXPECT_EQ(array.getMemberCount(), 0u);
  EXPECT_EQ(array.findMember("x"), nullptr);
  ASSERT_NE(array.appendElement(), nullptr);
  EXPECT_EQ(array.getElementCount(), 1u);

  JNIJSONArtifact object(JNIJSONArtifact::KIND_OBJECT);
  EXPECT_EQ(object.appendElement(), nullptr);
  EXPECT_EQ(object.getElement(0), nullptr);
  object.putMember("b")->setInteger(1);
  object.putMember("a")->setInteger(2);
  EXPECT_EQ(object.getMemberCount(), 2u);
  EXPECT_EQ(object.getMemberName(0), "b");
  EXPECT_EQ(object.getMemberName(1), "a");
  EXPECT_EQ(object.getMemberName(2), "");
  EXPECT_EQ(object.getMember(2), nullptr);
  long long v = 0;
  EXPECT_TRUE(object.getMember(1)->getInteger(v));
  EXPECT_EQ(v, 2);

  // Turning a container into a scalar drops its contents.
  object.setString("now text");
  EXPECT_EQ(object.getMemberCount(), 0u);
  EXPECT_EQ(object.findMember("a"), nullptr);
  object.setEmptyObject();
  EXPECT_EQ(object.findMember("a"), nullptr);
  EXPECT_NE(object.putMember("a"), nullptr);
}
