#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/data/ProcedureDataSource.h"
#include "host/json/JNIJSONObject.h"
#include "host/json/dataDictionary.h"
#include "host/json/jsonPivot.h"
#include "host/output/BpProcedure.h"
#include "host/output/OmDocument.h"

// A procedure writing into a document of its own, and a way to build one
// table from JSON text under it.
class JsonPivotFixture : public ::testing::Test {
 protected:
  JsonPivotFixture() : fProcedure(fDocument.fRoot.AddHeading(""), "Mixed", "Mixed") {}

  // Everything the procedure wrote.
  const OmHeading& Node() const { return *fDocument.fRoot.fvItems[0].fpHeading; }

  // Builds a table from the text; the problem of a refusal is kept.
  bool Build(const std::string& json, const std::string& title = "T", bool bTranslate = false,
             bool bSupportSplits = true, const ProcedureDataSource* dataSource = nullptr,
             bool bTitleIsKey = false) {
    JNIJSONObject document(json.c_str());
    EXPECT_TRUE(document.isGood()) << document.getError();
    if (!document.isGood()) return false;
    dataDictionary dictionary;
    jsonPivot pivot(document, *document.getTop(), dataSource, dictionary);
    pivot.translateTableStrings(bTranslate);
    pivot.supportSplits(bSupportSplits);
    bool bWritten = pivot.createPivotTable(&fProcedure, title, bTitleIsKey, "Sub Type");
    fProblem = pivot.getProblem();
    return bWritten;
  }

  // The only table written; fails the test when there is not exactly one.
  const OmTable& OnlyTable() const {
    const OmHeading& node = Node();
    EXPECT_EQ(node.fvItems.size(), 1u);
    static const OmTable kNone;
    if (node.fvItems.size() != 1 || node.fvItems[0].fpTable == nullptr) return kNone;
    return *node.fvItems[0].fpTable;
  }

  static std::vector<std::string> LeafLabels(const OmDimension& dimension) {
    std::vector<std::string> labels;
    for (const auto& path : dimension.LeafPaths()) labels.push_back(path.back()->fLabel.fText);
    return labels;
  }

  // The cell's text; "<none>" when there is no cell.
  static std::string CellText(const OmTable& table, const std::vector<int>& coordinates) {
    const OmCell* cell = table.CellAt(coordinates);
    return cell ? cell->fContent.fText : "<none>";
  }

  // The texts of the footnotes of a text.
  static std::vector<std::string> Footnotes(const OmTable& table, const OmText& text) {
    std::vector<std::string> notes;
    for (int index : text.fvFootnotes) notes.push_back(table.fvFootnotes.at(static_cast<std::size_t>(index)));
    return notes;
  }

  OmDocument fDocument;
  BpProcedure fProcedure;
  std::string fProblem;
};
