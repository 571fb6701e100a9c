#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "host/output/OmChartData.h"

// The output document of a run: what the procedures wrote, in order, ready
// to be rendered as terminal text, an HTML report or JSON. Texts here are
// final: translated, expanded and formatted when they were written.

// A formatted text with the footnotes attached to it.
struct OmText {
  std::string fText;
  std::vector<int> fvFootnotes;  // indices into OmTable::fvFootnotes
};

// One cell of a table. Numbers keep their raw value beside the text.
struct OmCell {
  OmText fContent;
  bool fbNumeric = false;
  bool fbMissing = false;  // the system-missing value: shown empty
  double fValue = 0.0;
  std::string fFormat;  // the format the text was made with, e.g. "F8.3"
};

// A node of a dimension's tree: a group (with children) or a category (a
// leaf). Leaves are numbered in the order of a depth-first walk.
struct OmDimensionNode {
  OmText fLabel;
  bool fbShowLabel = true;  // a group may hide its own label
  std::vector<OmDimensionNode> fvChildren;
  bool IsCategory() const { return fvChildren.empty() && !fbIsGroup; }
  bool fbIsGroup = false;
};

struct OmDimension {
  enum Place { ROW = 0, COLUMN = 1, LAYER = 2 };
  OmText fName;
  Place fPlace = ROW;
  bool fbShowName = false;  // the dimension's name is shown as a heading over its labels
  OmDimensionNode fRoot;    // a group holding the top-level nodes
  // Nesting among the dimensions of the same place: 1 is the innermost,
  // next to the data; higher numbers stand further out.
  int fOrder = 1;
  bool fbShowLabels = true;  // false: the categories' labels are not shown

  // The leaves in order, each with the path of nodes above it (root excluded).
  std::vector<std::vector<const OmDimensionNode*>> LeafPaths() const;
};

// One split variable of the split a table was made for, as the table shows
// it: the variable's text and the value's text (its label when it has one).
struct OmSplitLevel {
  std::string fVariable;
  std::string fValue;
};

struct OmTable {
  OmText fTitle;
  std::string fSubType;  // the stable name by which the table is found
  std::vector<OmDimension> fvDimensions;
  // Cells by their coordinates: one leaf index per dimension, in the order
  // of fvDimensions.
  std::map<std::vector<int>, OmCell> fCells;
  std::vector<OmText> fvCaptions;
  std::vector<OmText> fvNotes;
  std::vector<std::string> fvFootnotes;  // footnote texts; markers are the renderer's
  int fMinDataColumnWidth = 0;
  // Set on a table made for one split when the splits are shown together:
  // when the command ends, the tables of the same kind made for the splits
  // become one table (OmSplitLayering). With fbSplitInRows the table already
  // shows its split as its first, outermost row dimensions.
  std::vector<OmSplitLevel> fvSplit;
  bool fbSplitInRows = false;

  const OmCell* CellAt(const std::vector<int>& coords) const;
};

struct OmMessage {
  enum Level { NOTE = 1, WARNING = 2, ERROR = 3 };
  Level fLevel = WARNING;
  std::string fText;

  // "Note", "Warning" or "Error": the word a reader sees before the text.
  static const char* LevelWord(Level level);
  // The same in lower case, for style classes and JSON.
  static const char* LevelName(Level level);
};

// Text sent to the front end line by line; a line may be continued.
struct OmFrontEndText {
  std::vector<std::string> fvLines;
};

// A chart as the chart library sent it: its description, its finished
// markup and data, and the drawing made of them when it was sent.
struct OmChart {
  std::string fTitle;   // the description by which the output lists it
  std::string fKind;    // the kind its markup names (the template's name)
  std::string fMarkup;  // the chart markup, UTF-8; empty for a static picture
  OmChartData fData;    // empty when sent without data or as a static picture
  std::string fSvg;     // the drawing: one SVG element, without script
  bool fbHidden = false;  // kept in the output, but not shown
};

struct OmHeading;

// One item of the outline.
struct OmItem {
  enum Kind { HEADING, TABLE, MESSAGE, TEXT, CHART };
  Kind fKind = TEXT;
  std::unique_ptr<OmHeading> fpHeading;
  std::unique_ptr<OmTable> fpTable;
  std::unique_ptr<OmMessage> fpMessage;
  std::unique_ptr<OmFrontEndText> fpText;
  std::unique_ptr<OmChart> fpChart;
};

struct OmHeading {
  std::string fText;
  std::vector<OmItem> fvItems;

  OmHeading& AddHeading(const std::string& text);
  OmTable& AddTable();
  OmMessage& AddMessage(OmMessage::Level level, const std::string& text);
  OmFrontEndText& AddText();
  OmChart& AddChart();
};

// The whole document: a root whose headings are the commands run.
struct OmDocument {
  std::string fTitle = "glmixfit output";
  OmHeading fRoot;
};
