#include "host/json/jsonPivot.h"

#include <gtest/gtest.h>

#include <stdexcept>
#include <string>

#include "host/json/JNIJSONObject.h"
#include "host/json/dataDictionary.h"

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

TEST(jsonPivot, MakingTheTableIsNotAvailableYet) {
  JNIJSONObject doc("{}");
  dataDictionary dictionary;
  jsonPivot pivot(doc, *doc.getTop(), nullptr, dictionary);
  try {
    pivot.createPivotTable(nullptr, "Title", false, "Sub type");
    FAIL() << "createPivotTable returned";
  } catch (const std::logic_error& e) {
    EXPECT_EQ(std::string(e.what()), "jsonPivot::createPivotTable: not implemented yet");
  }
}
