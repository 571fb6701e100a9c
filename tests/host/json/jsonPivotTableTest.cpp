#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "JsonPivotFixture.h"
#include "host/output/BpFormatSpec.h"
#include "host/render/OmTextRenderer.h"
#include "host/strings/FacSTDictionary.h"

namespace {

using jsonPivotTable = JsonPivotFixture;

// Two subjects by two statistics, as predictions of random effects come.
const char* const kSmallTable = R"({
  "name": "Predictions",
  "dimensions": [
    {"name": "Subject", "categories": [{"label": "1"}, {"label": "2"}]},
    {"name": "Statistics", "place": "column", "showName": false,
     "categories": [{"label": "Prediction"}, {"label": "Std. Error"}]}
  ],
  "cells": [
    {"at": [0, 0], "value": 1.25, "format": "Coefficient"},
    {"at": [0, 1], "value": 0.5, "format": "CoefficientSE"},
    {"at": [1, 0], "value": -2},
    {"at": [1, 1], "value": null}
  ]
})";

}  // namespace

TEST_F(jsonPivotTable, WritesTitleSubTypeDimensionsAndCells) {
  ASSERT_TRUE(Build(kSmallTable, "Empirical Best Linear Unbiased Predictions")) << fProblem;
  EXPECT_TRUE(fProblem.empty());
  const OmTable& table = OnlyTable();
  EXPECT_EQ(table.fTitle.fText, "Empirical Best Linear Unbiased Predictions");
  EXPECT_EQ(table.fSubType, "Sub Type");
  ASSERT_EQ(table.fvDimensions.size(), 2u);

  const OmDimension& rows = table.fvDimensions[0];
  EXPECT_EQ(rows.fName.fText, "Subject");
  EXPECT_EQ(rows.fPlace, OmDimension::ROW);
  EXPECT_TRUE(rows.fbShowName);
  EXPECT_EQ(rows.fOrder, 1);
  EXPECT_EQ(LeafLabels(rows), (std::vector<std::string>{"1", "2"}));

  const OmDimension& columns = table.fvDimensions[1];
  EXPECT_EQ(columns.fName.fText, "Statistics");
  EXPECT_EQ(columns.fPlace, OmDimension::COLUMN);
  EXPECT_FALSE(columns.fbShowName);
  EXPECT_EQ(columns.fOrder, 1);
  EXPECT_EQ(LeafLabels(columns), (std::vector<std::string>{"Prediction", "Std. Error"}));

  EXPECT_EQ(CellText(table, {0, 0}), "1.250");
  EXPECT_EQ(CellText(table, {0, 1}), "0.500");
  EXPECT_EQ(CellText(table, {1, 0}), "-2.000");
  const OmCell* missing = table.CellAt({1, 1});
  ASSERT_NE(missing, nullptr);
  EXPECT_TRUE(missing->fbNumeric);
  EXPECT_TRUE(missing->fbMissing);
  EXPECT_EQ(missing->fContent.fText, "");
  EXPECT_EQ(table.fCells.size(), 4u);
  EXPECT_TRUE(table.fvCaptions.empty());
  EXPECT_TRUE(table.fvNotes.empty());
  EXPECT_TRUE(table.fvFootnotes.empty());
}

TEST_F(jsonPivotTable, AnEmptyTitleTakesTheTablesName) {
  ASSERT_TRUE(Build(kSmallTable, "")) << fProblem;
  EXPECT_EQ(OnlyTable().fTitle.fText, "Predictions");
}

TEST_F(jsonPivotTable, WithoutTitleOrNameTheTitleIsEmpty) {
  ASSERT_TRUE(Build(R"({"dimensions": [{"name": "d", "categories": [{"label": "a"}]}]})", "")) << fProblem;
  EXPECT_EQ(OnlyTable().fTitle.fText, "");
}

TEST_F(jsonPivotTable, ATitleGivenAsKeyIsTranslated) {
  ASSERT_TRUE(Build(kSmallTable, "Standard Error", false, true, nullptr, true)) << fProblem;
  EXPECT_EQ(OnlyTable().fTitle.fText, "Std. Error");
}

TEST_F(jsonPivotTable, AFinalTitleIsNotTranslated) {
  ASSERT_TRUE(Build(kSmallTable, "Standard Error", true)) << fProblem;
  EXPECT_EQ(OnlyTable().fTitle.fText, "Standard Error");
}

TEST_F(jsonPivotTable, CellsMayComeInAnyOrderAndAbsentCellsStayEmpty) {
  ASSERT_TRUE(Build(R"({"dimensions": [
      {"name": "r", "categories": [{"label": "a"}, {"label": "b"}, {"label": "c"}]},
      {"name": "c", "place": "column", "categories": [{"label": "x"}, {"label": "y"}]}],
    "cells": [{"at": [2, 1], "value": 6}, {"at": [0, 0], "value": 1}, {"at": [1, 1], "text": "four"}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(table.fCells.size(), 3u);
  EXPECT_EQ(CellText(table, {0, 0}), "1.000");
  EXPECT_EQ(CellText(table, {1, 1}), "four");
  EXPECT_EQ(CellText(table, {2, 1}), "6.000");
  EXPECT_EQ(CellText(table, {0, 1}), "<none>");
  EXPECT_EQ(CellText(table, {1, 0}), "<none>");
  EXPECT_EQ(CellText(table, {2, 0}), "<none>");
}

TEST_F(jsonPivotTable, ATableWithoutCellsHasItsStructure) {
  ASSERT_TRUE(Build(R"({"dimensions": [{"name": "r", "categories": [{"label": "a"}, {"label": "b"}]}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvDimensions.size(), 1u);
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"a", "b"}));
  EXPECT_TRUE(table.fCells.empty());
}

TEST_F(jsonPivotTable, NestedGroupsNumberTheirLeavesDepthFirst) {
  ASSERT_TRUE(Build(R"({"dimensions": [
      {"name": "Effect", "categories": [
        {"label": "Intercept", "categories": [{"label": "s1"}, {"label": "s2"}]},
        {"label": "time", "categories": [
          {"label": "inner", "categories": [{"label": "s1"}]},
          {"label": "s2"}]},
        {"label": "alone"}]},
      {"name": "Statistics", "place": "column", "categories": [
        {"label": "Prediction"},
        {"label": "95% Confidence Interval", "categories": [{"label": "Lower Bound"}, {"label": "Upper Bound"}]}]}],
    "cells": [{"at": [0, 0], "value": 10}, {"at": [2, 1], "value": 21}, {"at": [3, 2], "value": 32},
              {"at": [4, 0], "value": 40}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvDimensions.size(), 2u);
  const OmDimension& rows = table.fvDimensions[0];
  EXPECT_EQ(LeafLabels(rows), (std::vector<std::string>{"s1", "s2", "s1", "s2", "alone"}));
  const auto paths = rows.LeafPaths();
  ASSERT_EQ(paths.size(), 5u);
  ASSERT_EQ(paths[2].size(), 3u);
  EXPECT_EQ(paths[2][0]->fLabel.fText, "time");
  EXPECT_TRUE(paths[2][0]->fbIsGroup);
  EXPECT_TRUE(paths[2][0]->fbShowLabel);
  EXPECT_EQ(paths[2][1]->fLabel.fText, "inner");
  ASSERT_EQ(paths[3].size(), 2u);
  EXPECT_EQ(paths[3][0]->fLabel.fText, "time");
  ASSERT_EQ(paths[4].size(), 1u);

  const OmDimension& columns = table.fvDimensions[1];
  EXPECT_EQ(LeafLabels(columns), (std::vector<std::string>{"Prediction", "Lower Bound", "Upper Bound"}));
  ASSERT_EQ(columns.fRoot.fvChildren.size(), 2u);
  EXPECT_EQ(columns.fRoot.fvChildren[1].fLabel.fText, "95% Confidence Interval");

  EXPECT_EQ(CellText(table, {0, 0}), "10.000");
  EXPECT_EQ(CellText(table, {2, 1}), "21.000");
  EXPECT_EQ(CellText(table, {3, 2}), "32.000");
  EXPECT_EQ(CellText(table, {4, 0}), "40.000");
  EXPECT_EQ(table.fCells.size(), 4u);
}

TEST_F(jsonPivotTable, EqualLabelsUnderDifferentGroupsStayApart) {
  ASSERT_TRUE(Build(R"({"dimensions": [
      {"name": "r", "categories": [
        {"label": "g1", "categories": [{"label": "x"}]},
        {"label": "g2", "categories": [{"label": "x"}]},
        {"label": "x"},
        {"label": "g1b", "categories": [{"label": "g1"}]}]}],
    "cells": [{"at": [0], "text": "first"}, {"at": [1], "text": "second"}, {"at": [2], "text": "third"},
              {"at": [3], "text": "fourth"}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"x", "x", "x", "g1"}));
  EXPECT_EQ(CellText(table, {0}), "first");
  EXPECT_EQ(CellText(table, {1}), "second");
  EXPECT_EQ(CellText(table, {2}), "third");
  EXPECT_EQ(CellText(table, {3}), "fourth");
}

TEST_F(jsonPivotTable, AGroupAndALeafMayShareALabel) {
  ASSERT_TRUE(Build(R"({"dimensions": [
      {"name": "r", "categories": [{"label": "x", "categories": [{"label": "y"}]}, {"label": "x"}]}],
    "cells": [{"at": [0], "text": "in"}, {"at": [1], "text": "out"}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"y", "x"}));
  EXPECT_EQ(CellText(table, {0}), "in");
  EXPECT_EQ(CellText(table, {1}), "out");
}

TEST_F(jsonPivotTable, NamedFormatsAreTheProceduresFormats) {
  ASSERT_TRUE(Build(R"({"dimensions": [
      {"name": "f", "categories": [{"label": "Count"}, {"label": "GeneralStat"}, {"label": "Significance"},
        {"label": "Correlation"}, {"label": "Coefficient"}, {"label": "CoefficientSE"}, {"label": "Percent"},
        {"label": "default"}, {"label": "tiny coefficient"}]}],
    "cells": [{"at": [0], "value": 12.4, "format": "Count"},
              {"at": [1], "value": 1.23456, "format": "GeneralStat"},
              {"at": [2], "value": 0.04567, "format": "Significance"},
              {"at": [3], "value": -0.5, "format": "Correlation"},
              {"at": [4], "value": 2.5, "format": "Coefficient"},
              {"at": [5], "value": 0.25, "format": "CoefficientSE"},
              {"at": [6], "value": 45.67, "format": "Percent"},
              {"at": [7], "value": 3.14159},
              {"at": [8], "value": 0.0000123, "format": "Coefficient"}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  const char* const expected[] = {"12", "1.235", "0.046", "-0.500", "2.500", "0.250", "45.7%", "3.142"};
  for (int i = 0; i < 8; ++i) EXPECT_EQ(CellText(table, {i}), expected[i]) << "leaf " << i;
  EXPECT_EQ(table.CellAt({0})->fFormat, BpProcedure::Count().ToText());
  EXPECT_EQ(table.CellAt({6})->fFormat, BpProcedure::Percent().ToText());
  EXPECT_EQ(table.CellAt({7})->fFormat, BpProcedure::GeneralStat().ToText());
  EXPECT_EQ(table.CellAt({8})->fFormat, BpProcedure::Coefficient().ToText());
  EXPECT_NE(CellText(table, {8}), "0.000");
  EXPECT_NE(CellText(table, {8}).find('E'), std::string::npos);
}

TEST_F(jsonPivotTable, ExplicitFormatsUseTheDictionarysTypeLetters) {
  ASSERT_TRUE(Build(R"({"dimensions": [{"name": "f", "categories": [
        {"label": "F"}, {"label": "E"}, {"label": "COMMA"}, {"label": "DOLLAR"}, {"label": "DOT"},
        {"label": "PCT"}, {"label": "no decimals"}]}],
    "cells": [{"at": [0], "value": 3.14159, "format": {"type": "F", "width": 8, "decimals": 2}},
              {"at": [1], "value": 31415.9, "format": {"type": "E", "width": 10, "decimals": 2}},
              {"at": [2], "value": 1234567.5, "format": {"type": "COMMA", "width": 12, "decimals": 1}},
              {"at": [3], "value": 1234.5, "format": {"type": "DOLLAR", "width": 10, "decimals": 2}},
              {"at": [4], "value": 1234.5, "format": {"type": "DOT", "width": 10, "decimals": 1}},
              {"at": [5], "value": 12.5, "format": {"type": "PCT", "width": 6, "decimals": 1}},
              {"at": [6], "value": 7.6, "format": {"type": "F", "width": 4, "unknown": true}}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(CellText(table, {0}), "3.14");
  EXPECT_EQ(table.CellAt({0})->fFormat, "F8.2");
  EXPECT_EQ(table.CellAt({1})->fFormat, "E10.2");
  EXPECT_NE(CellText(table, {1}).find('E'), std::string::npos);
  EXPECT_EQ(CellText(table, {2}), "1,234,567.5");
  EXPECT_EQ(CellText(table, {3}), "$1,234.50");
  EXPECT_EQ(CellText(table, {4}), "1.234,5");
  EXPECT_EQ(CellText(table, {5}), "12.5%");
  EXPECT_EQ(CellText(table, {6}), "8");
  EXPECT_EQ(table.CellAt({6})->fFormat, "F4.0");
}

TEST_F(jsonPivotTable, TextCellsAreWrittenAsTheyStandEvenWhenTranslating) {
  ASSERT_TRUE(Build(R"({"dimensions": [{"name": "d", "categories": [{"label": "a"}, {"label": "b"}]}],
    "cells": [{"at": [0], "text": "Standard Error"}, {"at": [1], "text": "line one\nline two"}]})",
                    "T", true))
      << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(CellText(table, {0}), "Standard Error");
  EXPECT_FALSE(table.CellAt({0})->fbNumeric);
  EXPECT_EQ(CellText(table, {1}), "line one\nline two");
}

TEST_F(jsonPivotTable, ACellWithNeitherValueNorTextCarriesOnlyItsNotes) {
  ASSERT_TRUE(Build(R"({"notes": ["Not estimable."],
    "dimensions": [{"name": "d", "categories": [{"label": "a"}, {"label": "b"}]}],
    "cells": [{"at": [0], "notes": [0]}, {"at": [1]}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  const OmCell* cell = table.CellAt({0});
  ASSERT_NE(cell, nullptr);
  EXPECT_EQ(cell->fContent.fText, "");
  EXPECT_EQ(Footnotes(table, cell->fContent), (std::vector<std::string>{"Not estimable."}));
  EXPECT_EQ(table.CellAt({1}), nullptr);
}

TEST_F(jsonPivotTable, NotesBecomeFootnotesOfCellsLeavesAndGroups) {
  ASSERT_TRUE(Build(R"({"notes": ["Cell note.", "Leaf note.", "Group note.", "Shared note."],
    "dimensions": [
      {"name": "r", "categories": [
        {"label": "g", "notes": [2, 3], "categories": [{"label": "a", "notes": [1]}]},
        {"label": "b"}]},
      {"name": "c", "place": "column", "categories": [{"label": "x", "notes": [3]}]}],
    "cells": [{"at": [0, 0], "value": 1, "notes": [0, 3]}, {"at": [1, 0], "value": 2}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  const OmDimension& rows = table.fvDimensions[0];
  const OmDimensionNode& group = rows.fRoot.fvChildren[0];
  EXPECT_EQ(Footnotes(table, group.fLabel), (std::vector<std::string>{"Group note.", "Shared note."}));
  EXPECT_EQ(Footnotes(table, group.fvChildren[0].fLabel), (std::vector<std::string>{"Leaf note."}));
  EXPECT_TRUE(rows.fRoot.fvChildren[1].fLabel.fvFootnotes.empty());
  EXPECT_EQ(Footnotes(table, table.fvDimensions[1].fRoot.fvChildren[0].fLabel),
            (std::vector<std::string>{"Shared note."}));
  EXPECT_EQ(Footnotes(table, table.CellAt({0, 0})->fContent),
            (std::vector<std::string>{"Cell note.", "Shared note."}));
  EXPECT_TRUE(table.CellAt({1, 0})->fContent.fvFootnotes.empty());
  // A note pointed at several times is one footnote.
  EXPECT_EQ(table.fvFootnotes.size(), 4u);
  EXPECT_TRUE(table.fvNotes.empty());
}

TEST_F(jsonPivotTable, NotesNothingPointsAtGoUnderTheTable) {
  ASSERT_TRUE(Build(R"({"notes": ["Used.", "Unused one.", "Unused two."],
    "dimensions": [{"name": "d", "categories": [{"label": "a"}]}],
    "cells": [{"at": [0], "value": 1, "notes": [0]}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvNotes.size(), 2u);
  EXPECT_EQ(table.fvNotes[0].fText, "Unused one.");
  EXPECT_EQ(table.fvNotes[1].fText, "Unused two.");
  EXPECT_EQ(table.fvFootnotes, (std::vector<std::string>{"Used."}));
}

TEST_F(jsonPivotTable, CaptionsFollowInOrder) {
  ASSERT_TRUE(Build(R"({"captions": ["First line.", "Second line."],
    "dimensions": [{"name": "d", "categories": [{"label": "a"}]}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvCaptions.size(), 2u);
  EXPECT_EQ(table.fvCaptions[0].fText, "First line.");
  EXPECT_EQ(table.fvCaptions[1].fText, "Second line.");
}

TEST_F(jsonPivotTable, TranslationCoversLabelsNamesCaptionsAndNotes) {
  FacSTDictionary::ClearMissingKeys();
  const char* const json = R"({"name": "Standard Error",
    "captions": ["Standard Error", "Caption without entry"],
    "notes": ["Standard Error", "Note without entry"],
    "dimensions": [
      {"name": "Standard Error", "categories": [
        {"label": "Standard Error", "notes": [0], "categories": [{"label": "Subject 17"}]},
        {"label": "Upper Bound"}]},
      {"name": "Statistics", "place": "column", "categories": [{"label": "Significance"}]}],
    "cells": [{"at": [0, 0], "value": 1, "notes": [1]}]})";
  ASSERT_TRUE(Build(json, "", true)) << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(table.fTitle.fText, "Std. Error");
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Std. Error");
  EXPECT_EQ(table.fvDimensions[0].fRoot.fvChildren[0].fLabel.fText, "Std. Error");
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"Subject 17", "Upper Bound"}));
  EXPECT_EQ(table.fvDimensions[1].fName.fText, "Statistics");
  EXPECT_EQ(LeafLabels(table.fvDimensions[1]), (std::vector<std::string>{"Sig."}));
  ASSERT_EQ(table.fvCaptions.size(), 2u);
  EXPECT_EQ(table.fvCaptions[0].fText, "Std. Error");
  EXPECT_EQ(table.fvCaptions[1].fText, "Caption without entry");
  EXPECT_EQ(table.fvFootnotes, (std::vector<std::string>{"Std. Error", "Note without entry"}));
  // Texts of the table that have no entry are data, not missing keys.
  EXPECT_EQ(FacSTDictionary::GetMissingKeys().count("Subject 17"), 0u);
  EXPECT_EQ(FacSTDictionary::GetMissingKeys().count("Caption without entry"), 0u);
  EXPECT_EQ(FacSTDictionary::GetMissingKeys().count("Note without entry"), 0u);
}

TEST_F(jsonPivotTable, TextsThatReadAsNumbersAreNeverTranslated) {
  // "15902" is also the key of a numbered host message.
  ASSERT_TRUE(Build(R"({"dimensions": [{"name": "Subject", "categories": [{"label": "15902"}, {"label": "15903"},
    {"label": "Standard Error"}]}]})",
                    "T", true))
      << fProblem;
  EXPECT_EQ(LeafLabels(OnlyTable().fvDimensions[0]), (std::vector<std::string>{"15902", "15903", "Std. Error"}));
}

TEST_F(jsonPivotTable, WithoutTranslationTextsStandAsWritten) {
  ASSERT_TRUE(Build(R"({"name": "Standard Error", "captions": ["Standard Error"], "notes": ["Standard Error"],
    "dimensions": [{"name": "Standard Error", "categories": [{"label": "Significance"}]}]})",
                    ""))
      << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(table.fTitle.fText, "Standard Error");
  EXPECT_EQ(table.fvDimensions[0].fName.fText, "Standard Error");
  EXPECT_EQ(LeafLabels(table.fvDimensions[0]), (std::vector<std::string>{"Significance"}));
  EXPECT_EQ(table.fvCaptions[0].fText, "Standard Error");
  ASSERT_EQ(table.fvNotes.size(), 1u);
  EXPECT_EQ(table.fvNotes[0].fText, "Standard Error");
}

TEST_F(jsonPivotTable, PlacesAndOrdersPutTheFirstListedDimensionOutermost) {
  ASSERT_TRUE(Build(R"({"dimensions": [
      {"name": "outer", "categories": [{"label": "a"}]},
      {"name": "statistics", "place": "column", "categories": [{"label": "s"}]},
      {"name": "layer", "place": "layer", "showName": true, "categories": [{"label": "l"}]},
      {"name": "inner", "place": "row", "showName": false, "categories": [{"label": "b"}]},
      {"name": "innermost", "categories": [{"label": "c"}]}],
    "cells": [{"at": [0, 0, 0, 0, 0], "value": 5}]})"))
      << fProblem;
  const OmTable& table = OnlyTable();
  ASSERT_EQ(table.fvDimensions.size(), 5u);
  EXPECT_EQ(table.fvDimensions[0].fPlace, OmDimension::ROW);
  EXPECT_EQ(table.fvDimensions[0].fOrder, 3);
  EXPECT_EQ(table.fvDimensions[1].fPlace, OmDimension::COLUMN);
  EXPECT_EQ(table.fvDimensions[1].fOrder, 1);
  EXPECT_EQ(table.fvDimensions[2].fPlace, OmDimension::LAYER);
  EXPECT_EQ(table.fvDimensions[2].fOrder, 1);
  EXPECT_TRUE(table.fvDimensions[2].fbShowName);
  EXPECT_EQ(table.fvDimensions[3].fOrder, 2);
  EXPECT_FALSE(table.fvDimensions[3].fbShowName);
  EXPECT_EQ(table.fvDimensions[4].fOrder, 1);
  for (const OmDimension& dimension : table.fvDimensions) EXPECT_TRUE(dimension.fbShowLabels);
  EXPECT_EQ(CellText(table, {0, 0, 0, 0, 0}), "5.000");
}

TEST_F(jsonPivotTable, UnknownMembersAreIgnored) {
  ASSERT_TRUE(Build(R"({"version": 3, "extra": {"deep": [1, 2]},
    "dimensions": [{"name": "d", "sort": "whatever", "categories": [{"label": "a", "id": 7}]}],
    "cells": [{"at": [0], "value": 1, "style": "bold"}]})"))
      << fProblem;
  EXPECT_EQ(CellText(OnlyTable(), {0}), "1.000");
}

TEST_F(jsonPivotTable, NumbersWrittenAsWholeNumbersAreIndicesToo) {
  ASSERT_TRUE(Build(R"({"notes": ["n"], "dimensions": [{"name": "d", "categories": [{"label": "a"}, {"label": "b"}]}],
    "cells": [{"at": [1.0], "value": 2, "notes": [0.0]}]})"))
      << fProblem;
  EXPECT_EQ(CellText(OnlyTable(), {1}), "2.000");
}

TEST_F(jsonPivotTable, ALaterCellAtTheSamePlaceWins) {
  ASSERT_TRUE(Build(R"({"dimensions": [{"name": "d", "categories": [{"label": "a"}]}],
    "cells": [{"at": [0], "value": 1}, {"at": [0], "text": "second"}]})"))
      << fProblem;
  EXPECT_EQ(CellText(OnlyTable(), {0}), "second");
}

TEST_F(jsonPivotTable, SeveralTablesGoUnderTheHeadingInOrder) {
  ASSERT_TRUE(Build(kSmallTable, "one")) << fProblem;
  ASSERT_TRUE(Build(kSmallTable, "two")) << fProblem;
  ASSERT_EQ(Node().fvItems.size(), 2u);
  EXPECT_EQ(Node().fvItems[0].fpTable->fTitle.fText, "one");
  EXPECT_EQ(Node().fvItems[1].fpTable->fTitle.fText, "two");
}

TEST_F(jsonPivotTable, TheWrittenTableRenders) {
  ASSERT_TRUE(Build(R"({"captions": ["Dependent Variable: y."], "notes": ["Approximate."],
    "dimensions": [
      {"name": "Subject", "categories": [
        {"label": "Intercept", "notes": [0], "categories": [{"label": "1"}, {"label": "2"}]}]},
      {"name": "Statistics", "place": "column", "showName": false, "categories": [
        {"label": "Prediction"}, {"label": "Std. Error"}]}],
    "cells": [{"at": [0, 0], "value": 0.125}, {"at": [0, 1], "value": 0.5},
              {"at": [1, 0], "value": -0.25}, {"at": [1, 1], "value": null}]})",
                    "Empirical Best Linear Unbiased Predictions"))
      << fProblem;
  const std::string text = OmTextRenderer(80).Render(fDocument);
  EXPECT_NE(text.find("Empirical Best Linear Unbiased Predictions"), std::string::npos) << text;
  EXPECT_NE(text.find("Prediction"), std::string::npos) << text;
  EXPECT_NE(text.find("-0.250"), std::string::npos) << text;
  EXPECT_NE(text.find("Dependent Variable: y."), std::string::npos) << text;
  EXPECT_NE(text.find("Approximate."), std::string::npos) << text;
}

TEST_F(jsonPivotTable, ALargeTableIsWrittenWhole) {
  std::string json = R"({"dimensions": [{"name": "Subject", "categories": [)";
  const int kSubjects = 300;
  for (int i = 0; i < kSubjects; ++i) json += (i ? "," : "") + std::string("{\"label\": \"") + std::to_string(i) + "\"}";
  json += R"(]}, {"name": "Statistics", "place": "column", "categories": [{"label": "p"}, {"label": "se"}]}], "cells": [)";
  for (int i = 0; i < kSubjects; ++i) {
    json += (i ? "," : "") + std::string("{\"at\": [") + std::to_string(i) + ", 0], \"value\": " + std::to_string(i) +
            "}, {\"at\": [" + std::to_string(i) + ", 1], \"value\": 1}";
  }
  json += "]}";
  ASSERT_TRUE(Build(json)) << fProblem;
  const OmTable& table = OnlyTable();
  EXPECT_EQ(table.fCells.size(), 2u * kSubjects);
  EXPECT_EQ(CellText(table, {kSubjects - 1, 0}), std::to_string(kSubjects - 1) + ".000");
}
