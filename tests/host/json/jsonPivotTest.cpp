#include "host/json/jsonPivot.h"

#include <gtest/gtest.h>

#include <string>

#include "host/json/JNIJSONObject.h"
#include "host/json/dataDictionary.h"
#include "host/output/BpHeading.h"

TEST(jsonPivot, KeepsWhatItIsBuiltOnAndItsOptions) {
  JNIJSONObject doc(R"({"tables":[{"title":"t"}]})");
  ASSERT_TRUE(doc.isGood());
  JNIJSONArtifact* table = JNIJSONObject::getByPath(doc.getTop(), "tables.0");
  ASSERT_NE(table, nullptr);
  dataDictionary dictionary;
  jsonPivot pivot(doc, *table, nullptr, dictionary);
  EXPECT_EQ(&pivot.getDocument(), &doc);
  EXPECT_EQ(&pivot.getTable(), table);
  EXPECT_EQ(pivot.getDataSource(), nullptr);
  EXPECT_EQ(&pivot.getDictionary(), &dictionary);

  EXPECT_FALSE(pivot.getTranslateTableStrings());
  EXPECT_TRUE(pivot.getSupportSplits());
  pivot.translateTableStrings(true);
  pivot.supportSplits(false);
  EXPECT_TRUE(pivot.getTranslateTableStrings());
  EXPECT_FALSE(pivot.getSupportSplits());
}

TEST(jsonPivot, WithoutAHeadingNothingIsWritten) {
  JNIJSONObject doc(R"({"dimensions":[{"name":"d","categories":[{"label":"a"}]}]})");
  ASSERT_TRUE(doc.isGood());
  dataDictionary dictionary;
  jsonPivot pivot(doc, *doc.getTop(), nullptr, dictionary);
  EXPECT_FALSE(pivot.createPivotTable(nullptr, "Title", false, "Sub type"));
  EXPECT_FALSE(pivot.getProblem().empty());
  BpHeading unbound;
  EXPECT_FALSE(pivot.createPivotTable(&unbound, "Title", false, "Sub type"));
  EXPECT_FALSE(pivot.getProblem().empty());
}
