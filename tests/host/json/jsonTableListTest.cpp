#include "host/json/jsonTableList.h"

#include <gtest/gtest.h>

#include <string>

#include "host/json/JNIJSONObject.h"

namespace {

std::string NameOf(const jsonTableList& tables, std::size_t i) {
  std::string name;
  JNIJSONObject::getString(&tables.getTable(i), "name", name);
  return name;
}

TEST(jsonTableList, TheFullPathComesFirst) {
  JNIJSONObject document(R"({"tables": [{"name": "top"}],
                             "glmm": {"RandomEffectsParameters": {"tables": [{"name": "a"}, {"name": "b"}]}}})");
  const jsonTableList tables(document);
  ASSERT_TRUE(tables.isFound());
  ASSERT_EQ(tables.size(), 2u);
  EXPECT_EQ(NameOf(tables, 0), "a");
  EXPECT_EQ(NameOf(tables, 1), "b");
  EXPECT_EQ(tables.getTitle("Title", 0), "Title 1");
  EXPECT_EQ(tables.getTitle("Title", 1), "Title 2");
}

TEST(jsonTableList, TablesAtTheTopAreTheNextChoice) {
  JNIJSONObject document(R"({"tables": [{"name": "top"}]})");
  const jsonTableList tables(document);
  ASSERT_EQ(tables.size(), 1u);
  EXPECT_EQ(NameOf(tables, 0), "top");
  EXPECT_EQ(tables.getTitle("Title", 0), "Title");
}

TEST(jsonTableList, ADocumentWithNeitherIsOneTable) {
  JNIJSONObject document(R"({"name": "whole"})");
  const jsonTableList tables(document);
  ASSERT_EQ(tables.size(), 1u);
  EXPECT_EQ(NameOf(tables, 0), "whole");
  EXPECT_EQ(tables.getTitle("Title", 0), "Title");
}

TEST(jsonTableList, AnEmptyArrayIsFoundWithoutTables) {
  JNIJSONObject document(R"({"tables": []})");
  const jsonTableList tables(document);
  EXPECT_TRUE(tables.isFound());
  EXPECT_EQ(tables.size(), 0u);
}

TEST(jsonTableList, ADocumentThatDidNotParseHasNoPlaceForTables) {
  JNIJSONObject document("[1,");
  const jsonTableList tables(document);
  EXPECT_FALSE(tables.isFound());
  EXPECT_EQ(tables.size(), 0u);
}

}  // namespace
