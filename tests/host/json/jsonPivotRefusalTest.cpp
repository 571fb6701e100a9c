#include <gtest/gtest.h>

#include <string>

#include "JsonPivotFixture.h"

namespace {

struct BadTable {
  const char* fName;
  const char* fJson;
  const char* fProblemPart;  // a part of the text saying why it was refused
};

std::ostream& operator<<(std::ostream& os, const BadTable& table) { return os << table.fName; }

// A dimension with two leaves and one with three, for the cells to point into.
#define DIMS                                                              \
  R"("dimensions": [{"name": "r", "categories": [{"label": "a"}, {"label": "b"}]}, )" \
  R"({"name": "c", "place": "column", "categories": [{"label": "x"}, {"label": "y"}, {"label": "z"}]}])"

const BadTable kBadTables[] = {
    // The table itself.
    {"TableIsAnArray", R"([{"dimensions": []}])", "not an object"},
    {"TableIsAString", R"("table")", "not an object"},
    {"TableIsNull", R"(null)", "not an object"},
    {"NameIsANumber", R"({"name": 5, )" DIMS "}", "\"name\""},
    {"CaptionsIsAString", R"({"captions": "one", )" DIMS "}", "\"captions\""},
    {"CaptionIsANumber", R"({"captions": ["one", 2], )" DIMS "}", "\"captions\""},
    {"NotesIsAnObject", R"({"notes": {"a": "b"}, )" DIMS "}", "\"notes\""},
    {"NoteIsNull", R"({"notes": [null], )" DIMS "}", "\"notes\""},
    // Dimensions.
    {"NoDimensions", R"({"name": "t", "cells": []})", "\"dimensions\""},
    {"DimensionsIsAnObject", R"({"dimensions": {"name": "r"}})", "\"dimensions\""},
    {"DimensionsIsEmpty", R"({"dimensions": []})", "empty"},
    {"DimensionIsAString", R"({"dimensions": ["r"]})", "dimension 0"},
    {"DimensionWithoutCategories", R"({"dimensions": [{"name": "r"}]})", "\"categories\""},
    {"CategoriesIsAnObject", R"({"dimensions": [{"name": "r", "categories": {"label": "a"}}]})", "not an array"},
    {"DimensionWithoutLeaves", R"({"dimensions": [{"name": "r", "categories": []}]})", "no categories"},
    {"DimensionWithOnlyEmptyGroups",
     R"({"dimensions": [{"name": "r", "categories": [{"label": "g", "categories": []}]}]})", "no categories"},
    {"SecondDimensionWithoutLeaves",
     R"({"dimensions": [{"name": "r", "categories": [{"label": "a"}]}, {"name": "c", "categories": []}]})",
     "dimension 1"},
    {"DimensionNameIsANumber", R"({"dimensions": [{"name": 1, "categories": [{"label": "a"}]}]})", "\"name\""},
    {"PlaceIsUnknown", R"({"dimensions": [{"name": "r", "place": "diagonal", "categories": [{"label": "a"}]}]})",
     "place"},
    {"PlaceIsANumber", R"({"dimensions": [{"name": "r", "place": 0, "categories": [{"label": "a"}]}]})", "place"},
    {"PlaceInCapitals", R"({"dimensions": [{"name": "r", "place": "ROW", "categories": [{"label": "a"}]}]})",
     "place"},
    {"ShowNameIsAString", R"({"dimensions": [{"name": "r", "showName": "yes", "categories": [{"label": "a"}]}]})",
     "showName"},
    // Categories.
    {"CategoryIsAString", R"({"dimensions": [{"name": "r", "categories": ["a"]}]})", "category 0"},
    {"CategoryWithoutLabel", R"({"dimensions": [{"name": "r", "categories": [{"text": "a"}]}]})", "\"label\""},
    {"LabelIsANumber", R"({"dimensions": [{"name": "r", "categories": [{"label": 1}]}]})", "\"label\""},
    {"LabelIsNull", R"({"dimensions": [{"name": "r", "categories": [{"label": null}]}]})", "\"label\""},
    {"GroupCategoriesIsAString",
     R"({"dimensions": [{"name": "r", "categories": [{"label": "g", "categories": "a"}]}]})", "not an array"},
    {"DeepCategoryWithoutLabel",
     R"({"dimensions": [{"name": "r", "categories": [{"label": "g", "categories": [{"label": "a"}, {}]}]}]})",
     "category 1"},
    {"RepeatedLeafLabel", R"({"dimensions": [{"name": "r", "categories": [{"label": "a"}, {"label": "a"}]}]})",
     "repeats"},
    {"RepeatedGroupLabel",
     R"({"dimensions": [{"name": "r", "categories": [{"label": "g", "categories": [{"label": "a"}]},
                                                   {"label": "g", "categories": [{"label": "b"}]}]}]})",
     "repeats"},
    {"RepeatedLabelInAGroup",
     R"({"dimensions": [{"name": "r", "categories": [{"label": "g", "categories": [{"label": "a"}, {"label": "a"}]}]}]})",
     "repeats"},
    {"CategoryNotesIsANumber",
     R"({"notes": ["n"], "dimensions": [{"name": "r", "categories": [{"label": "a", "notes": 0}]}]})", "\"notes\""},
    {"CategoryNoteOutOfRange",
     R"({"notes": ["n"], "dimensions": [{"name": "r", "categories": [{"label": "a", "notes": [1]}]}]})",
     "out of range"},
    {"CategoryNoteWithoutNotes", R"({"dimensions": [{"name": "r", "categories": [{"label": "a", "notes": [0]}]}]})",
     "out of range"},
    {"GroupNoteNegative",
     R"({"notes": ["n"], "dimensions": [{"name": "r", "categories": [{"label": "g", "notes": [-1],
        "categories": [{"label": "a"}]}]}]})",
     "out of range"},
    {"CategoryNoteIsAString",
     R"({"notes": ["n"], "dimensions": [{"name": "r", "categories": [{"label": "a", "notes": ["0"]}]}]})",
     "whole number"},
    // Cells.
    {"CellsIsAnObject", R"({)" DIMS R"(, "cells": {"at": [0, 0]}})", "\"cells\""},
    {"CellIsAnArray", R"({)" DIMS R"(, "cells": [[0, 0]]})", "cell 0"},
    {"CellWithoutAt", R"({)" DIMS R"(, "cells": [{"value": 1}]})", "\"at\""},
    {"AtIsANumber", R"({)" DIMS R"(, "cells": [{"at": 0, "value": 1}]})", "\"at\""},
    {"AtTooShort", R"({)" DIMS R"(, "cells": [{"at": [0], "value": 1}]})", "entries"},
    {"AtTooLong", R"({)" DIMS R"(, "cells": [{"at": [0, 0, 0], "value": 1}]})", "entries"},
    {"AtEmpty", R"({)" DIMS R"(, "cells": [{"at": [], "value": 1}]})", "entries"},
    {"AtRowOutOfRange", R"({)" DIMS R"(, "cells": [{"at": [2, 0], "value": 1}]})", "out of range"},
    {"AtColumnOutOfRange", R"({)" DIMS R"(, "cells": [{"at": [0, 3], "value": 1}]})", "out of range"},
    {"AtNegative", R"({)" DIMS R"(, "cells": [{"at": [-1, 0], "value": 1}]})", "out of range"},
    {"AtHuge", R"({)" DIMS R"(, "cells": [{"at": [0, 9223372036854775807], "value": 1}]})", "out of range"},
    {"AtFraction", R"({)" DIMS R"(, "cells": [{"at": [0.5, 0], "value": 1}]})", "whole number"},
    {"AtString", R"({)" DIMS R"(, "cells": [{"at": ["0", 0], "value": 1}]})", "whole number"},
    {"AtNull", R"({)" DIMS R"(, "cells": [{"at": [null, 0], "value": 1}]})", "whole number"},
    {"LaterCellOutOfRange",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1}, {"at": [1, 1], "value": 2}, {"at": [1, 5], "value": 3}]})",
     "cell 2"},
    {"GroupIsNoPosition",
     R"({"dimensions": [{"name": "r", "categories": [{"label": "g", "categories": [{"label": "a"}]}]}],
        "cells": [{"at": [1], "value": 1}]})",
     "out of range"},
    {"ValueIsAString", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": "1.5"}]})", "\"value\""},
    {"ValueIsABoolean", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": true}]})", "\"value\""},
    {"ValueIsAnArray", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": [1]}]})", "\"value\""},
    {"TextIsANumber", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "text": 1}]})", "\"text\""},
    {"ValueAndText", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "text": "one"}]})", "both"},
    {"CellNotesIsAString", R"({"notes": ["n"], )" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "notes": "0"}]})",
     "\"notes\""},
    {"CellNoteOutOfRange", R"({"notes": ["n"], )" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "notes": [1]}]})",
     "out of range"},
    // Formats.
    {"FormatNameUnknown", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": "Mean"}]})",
     "unknown format"},
    {"FormatNameInLowerCase", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": "count"}]})",
     "unknown format"},
    {"FormatIsANumber", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": 5}]})", "\"format\""},
    {"FormatWithoutType", R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"width": 8}}]})",
     "\"type\""},
    {"FormatOfStrings",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "A", "width": 8}}]})",
     "number format type"},
    {"FormatTypeUnknown",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "Q", "width": 8}}]})",
     "number format type"},
    {"FormatWithoutWidth",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "F", "decimals": 2}}]})",
     "\"width\""},
    {"FormatWidthZero",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "F", "width": 0}}]})", "width"},
    {"FormatTooWide",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "F", "width": 41}}]})", "width"},
    {"FormatWidthAString",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "F", "width": "8"}}]})", "\"width\""},
    {"FormatDecimalsNegative",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "F", "width": 8, "decimals": -1}}]})",
     "decimals"},
    {"FormatDecimalsFillTheWidth",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "F", "width": 4, "decimals": 4}}]})",
     "decimals"},
    {"FormatDecimalsTooMany",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "F", "width": 40, "decimals": 17}}]})",
     "decimals"},
    {"FormatDecimalsAFraction",
     R"({)" DIMS R"(, "cells": [{"at": [0, 0], "value": 1, "format": {"type": "F", "width": 8, "decimals": 1.5}}]})",
     "decimals"},
};

#undef DIMS

class jsonPivotRefusal : public JsonPivotFixture, public ::testing::WithParamInterface<BadTable> {};

}  // namespace

TEST_P(jsonPivotRefusal, RefusesTheWholeTableAndWritesNothing) {
  const BadTable& bad = GetParam();
  EXPECT_FALSE(Build(bad.fJson));
  EXPECT_TRUE(Node().fvItems.empty());
  EXPECT_NE(fProblem.find(bad.fProblemPart), std::string::npos) << "problem: " << fProblem;
}

INSTANTIATE_TEST_SUITE_P(BadTables, jsonPivotRefusal, ::testing::ValuesIn(kBadTables),
                         [](const ::testing::TestParamInfo<BadTable>& info) { return std::string(info.param.fName); });

namespace {

using jsonPivotAfterRefusal = JsonPivotFixture;

}  // namespace

TEST_F(jsonPivotAfterRefusal, AGoodTableAfterABadOneIsWrittenAndHasNoProblem) {
  EXPECT_FALSE(Build(R"({"dimensions": []})"));
  EXPECT_FALSE(fProblem.empty());
  EXPECT_TRUE(Build(R"({"dimensions": [{"name": "r", "categories": [{"label": "a"}]}]})")) << fProblem;
  EXPECT_TRUE(fProblem.empty());
  EXPECT_EQ(Node().fvItems.size(), 1u);
}

TEST_F(jsonPivotAfterRefusal, RefusalLeavesNoFootnotesOrCaptionsAnywhere) {
  // Everything is fine but the last cell: the notes and captions read before
  // it must not have reached the output.
  EXPECT_FALSE(Build(R"({"captions": ["c"], "notes": ["n"],
    "dimensions": [{"name": "r", "categories": [{"label": "a", "notes": [0]}]}],
    "cells": [{"at": [0], "value": 1, "notes": [0]}, {"at": [1], "value": 2}]})"));
  EXPECT_TRUE(Node().fvItems.empty());
}

TEST_F(jsonPivotAfterRefusal, DeeplyNestedGroupsAreReadWithoutTrouble) {
  std::string json = R"({"dimensions": [{"name": "r", "categories": )";
  const int kDepth = 200;
  for (int i = 0; i < kDepth; ++i) json += R"([{"label": "g", "categories": )";
  json += R"([{"label": "leaf"}])";
  for (int i = 0; i < kDepth; ++i) json += "}]";
  json += R"(}], "cells": [{"at": [0], "value": 1}]})";
  ASSERT_TRUE(Build(json)) << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvDimensions.size(), 1u);
  const auto paths = table.fvDimensions[0].LeafPaths();
  ASSERT_EQ(paths.size(), 1u);
  EXPECT_EQ(paths[0].size(), static_cast<std::size_t>(kDepth + 1));
  EXPECT_EQ(CellText(table, {0}), "1.000");
}
