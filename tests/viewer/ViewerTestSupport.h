#pragma once

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host/output/OmDocument.h"
#include "results/ResultsTestSupport.h"

// Shared by the tests of the model viewer's tables: a result model read
// from the hand-written documents (or changed by a test after reading), the
// output it writes, and a table's cells found by their labels.
namespace viewer_test {

// The column group of a 95% confidence interval.
const std::string kCI = "95% Confidence Interval";

// A dimension's leaves, each as the labels of its path joined by "/", so
// that a category under a group reads "95% Confidence Interval/Lower".
inline std::vector<std::string> Leaves(const OmTable& table, std::size_t dimension) {
  std::vector<std::string> leaves;
  for (const auto& path : table.fvDimensions[dimension].LeafPaths()) {
    std::string text;
    for (const OmDimensionNode* node : path) text += (text.empty() ? "" : "/") + node->fLabel.fText;
    leaves.push_back(text);
  }
  return leaves;
}

// The cell at one leaf (as Leaves writes it) per dimension; null when a
// leaf or the cell does not exist.
inline const OmCell* CellOf(const OmTable& table, const std::vector<std::string>& leaves) {
  if (leaves.size() != table.fvDimensions.size()) return nullptr;
  std::vector<int> coordinates;
  for (std::size_t d = 0; d < leaves.size(); ++d) {
    const std::vector<std::string> labels = Leaves(table, d);
    std::size_t at = 0;
    while (at < labels.size() && labels[at] != leaves[d]) ++at;
    if (at == labels.size()) return nullptr;
    coordinates.push_back(static_cast<int>(at));
  }
  return table.CellAt(coordinates);
}

// The text of that cell, "<none>" when there is no cell.
inline std::string TextOf(const OmTable& table, const std::vector<std::string>& leaves) {
  const OmCell* pCell = CellOf(table, leaves);
  return pCell != nullptr ? pCell->fContent.fText : "<none>";
}

inline std::vector<std::string> Footnotes(const OmTable& table, const OmText& text) {
  std::vector<std::string> notes;
  for (int index : text.fvFootnotes) notes.push_back(table.fvFootnotes[static_cast<std::size_t>(index)]);
  return notes;
}

// The footnotes of a cell, as texts.
inline std::vector<std::string> CellFootnotes(const OmTable& table, const std::vector<std::string>& leaves) {
  const OmCell* pCell = CellOf(table, leaves);
  return pCell != nullptr ? Footnotes(table, pCell->fContent) : std::vector<std::string>{"<none>"};
}

inline std::vector<std::string> Texts(const std::vector<OmText>& texts) {
  std::vector<std::string> out;
  for (const OmText& text : texts) out.push_back(text.fText);
  return out;
}

// What a reader of a model-viewer's output finds in it, read from the
// hand-written documents into the reader's result model.
class ViewerTest : public results_test::ReaderTest {
 protected:
  // The procedure knows its data, as the host's does, for the formats of
  // their variables.
  void SetUp() override {
    ReaderTest::SetUp();
    fProcedure->SetDataSource(fData.get());
  }

  const OmHeading& Output() const { return *fDocument.fRoot.fvItems.front().fpHeading; }

  // Every table under the output, at any depth, of a sub-type, in order.
  std::vector<const OmTable*> Tables(const std::string& subType) const {
    std::vector<const OmTable*> tables;
    Collect(Output(), subType, tables);
    return tables;
  }
  // The one table of a sub-type; fails the test when there is not exactly one.
  const OmTable& Table(const std::string& subType) const {
    const std::vector<const OmTable*> tables = Tables(subType);
    EXPECT_EQ(tables.size(), 1u) << "tables of sub-type " << subType;
    static const OmTable kNone;
    return tables.empty() ? kNone : *tables.front();
  }
  // The outline in order: "heading: text", "table: sub-type", "chart:
  // kind", "message: text", at any depth, indented by two blanks per level.
  std::vector<std::string> Outline() const {
    std::vector<std::string> lines;
    Walk(Output(), "", lines);
    return lines;
  }

 private:
  static void Collect(const OmHeading& heading, const std::string& subType, std::vector<const OmTable*>& out) {
    for (const OmItem& item : heading.fvItems) {
      if (item.fKind == OmItem::HEADING) Collect(*item.fpHeading, subType, out);
      if (item.fKind == OmItem::TABLE && item.fpTable->fSubType == subType) out.push_back(item.fpTable.get());
    }
  }
  static void Walk(const OmHeading& heading, const std::string& indent, std::vector<std::string>& out) {
    for (const OmItem& item : heading.fvItems) {
      if (item.fKind == OmItem::HEADING) {
        out.push_back(indent + "heading: " + item.fpHeading->fText);
        Walk(*item.fpHeading, indent + "  ", out);
      } else if (item.fKind == OmItem::TABLE) {
        out.push_back(indent + "table: " + item.fpTable->fSubType);
      } else if (item.fKind == OmItem::CHART) {
        out.push_back(indent + "chart: " + item.fpChart->fKind);
      } else if (item.fKind == OmItem::MESSAGE) {
        out.push_back(indent + "message: " + item.fpMessage->fText);
      }
    }
  }
};

}  // namespace viewer_test
