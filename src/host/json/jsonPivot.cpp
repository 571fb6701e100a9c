#include "host/json/jsonPivot.h"

#include <cstddef>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "host/data/OBS.h"
#include "host/data/ProcedureDataSource.h"
#include "host/data/ZORV_Format.h"
#include "host/data/ZORV_Session.h"
#include "host/data/ZORV_Variable.h"
#include "host/json/JNIJSONArray.h"
#include "host/json/JNIJSONArtifact.h"
#include "host/json/JNIJSONObject.h"
#include "host/output/BpAnnotation.h"
#include "host/output/BpCategory.h"
#include "host/output/BpDataValue.h"
#include "host/output/BpDimension.h"
#include "host/output/BpFormatSpec.h"
#include "host/output/BpGroup.h"
#include "host/output/BpHeading.h"
#include "host/output/BpHeadingState.h"
#include "host/output/BpNodeState.h"
#include "host/output/BpNumber.h"
#include "host/output/BpPivotTable.h"
#include "host/output/BpProcedure.h"
#include "host/output/BpProcedureState.h"
#include "host/output/BpString.h"
#include "host/output/BpTableState.h"
#include "host/output/BpVariable.h"
#include "host/output/OmDocument.h"
#include "host/strings/FacSTDictionary.h"
#include "host/text/NumericText.h"

namespace {

// ---- the table as read, with its texts final ----

struct NodeSpec {
  std::string fLabel;
  bool fbGroup = false;
  std::vector<NodeSpec> fvChildren;
  std::vector<int> fvNotes;
};

struct DimensionSpec {
  std::string fName;
  BpDimension::Place fPlace = BpDimension::ROWS;
  bool fbShowName = true;
  std::vector<NodeSpec> fvCategories;
  int fLeafCount = 0;
};

struct CellSpec {
  enum Kind { EMPTY, NUMBER, TEXT };
  std::vector<int> fvAt;
  Kind fKind = EMPTY;
  double fValue = 0.0;
  BpFormatSpec fFormat = BpProcedure::GeneralStat();
  std::string fText;
  std::vector<int> fvNotes;
};

struct TableSpec {
  std::string fName;
  std::vector<std::string> fvCaptions;
  std::vector<std::string> fvNotes;
  std::vector<DimensionSpec> fvDimensions;
  std::vector<CellSpec> fvCells;
};

// Reads and checks a table object. Texts of the table (name, labels,
// dimension names, captions, notes) are translated as they are read when a
// dictionary is given; a text without an entry stands as written. Cell texts
// are data and are never translated.
class TableReader {
 public:
  TableReader(const FacSTDictionary* pDictionary, std::string& problem)
      : fpDictionary(pDictionary), fProblem(problem) {}

  bool Read(const JNIJSONArtifact* table, TableSpec& spec) {
    if (!JNIJSONArtifact::isJSONObject(table)) return Fail("the table is not an object");
    if (!ReadOptionalText(table, "name", "the table's \"name\"", spec.fName)) return false;
    if (!ReadTexts(table, "captions", spec.fvCaptions)) return false;
    if (!ReadTexts(table, "notes", spec.fvNotes)) return false;
    fNoteCount = static_cast<int>(spec.fvNotes.size());

    const JNIJSONArtifact* dimensions = JNIJSONObject::get(table, "dimensions");
    if (dimensions == nullptr) return Fail("the table has no \"dimensions\"");
    if (!JNIJSONArtifact::isJSONArray(dimensions)) return Fail("\"dimensions\" is not an array");
    const int dimensionCount = JNIJSONArray::size(dimensions);
    if (dimensionCount == 0) return Fail("\"dimensions\" is empty");
    for (int i = 0; i < dimensionCount; ++i) {
      DimensionSpec dimension;
      if (!ReadDimension(JNIJSONArray::get(dimensions, i), i, dimension)) return false;
      spec.fvDimensions.push_back(std::move(dimension));
    }

    const JNIJSONArtifact* cells = JNIJSONObject::get(table, "cells");
    if (cells == nullptr) return true;
    if (!JNIJSONArtifact::isJSONArray(cells)) return Fail("\"cells\" is not an array");
    const int cellCount = JNIJSONArray::size(cells);
    spec.fvCells.reserve(static_cast<std::size_t>(cellCount));
    for (int i = 0; i < cellCount; ++i) {
      CellSpec cell;
      if (!ReadCell(JNIJSONArray::get(cells, i), i, spec.fvDimensions, cell)) return false;
      spec.fvCells.push_back(std::move(cell));
    }
    return true;
  }

 private:
  bool Fail(const std::string& why) {
    fProblem = why;
    return false;
  }

  // A text that reads as a number is data (a subject's id, a value) even
  // when a table of numbered host messages happens to hold it as a key.
  std::string Translate(const std::string& text) const {
    if (fpDictionary == nullptr || !fpDictionary->Contains(text)) return text;
    bool bNumber = false;
    String2Double(text, &bNumber);
    return bNumber ? text : fpDictionary->LookUp(text);
  }

  static std::string Ordinal(const std::string& what, int index) { return what + " " + std::to_string(index); }

  // A string member that may be absent; `out` stays as it is then.
  bool ReadOptionalText(const JNIJSONArtifact* object, const char* key, const std::string& what,
                        std::string& out) {
    const JNIJSONArtifact* value = JNIJSONObject::get(object, key);
    if (value == nullptr) return true;
    std::string text;
    if (!value->getString(text)) return Fail(what + " is not a string");
    out = Translate(text);
    return true;
  }

  // An array of strings that may be absent.
  bool ReadTexts(const JNIJSONArtifact* table, const char* key, std::vector<std::string>& out) {
    const JNIJSONArtifact* texts = JNIJSONObject::get(table, key);
    if (texts == nullptr) return true;
    if (!JNIJSONArtifact::isJSONArray(texts)) return Fail(std::string("\"") + key + "\" is not an array");
    const int count = JNIJSONArray::size(texts);
    for (int i = 0; i < count; ++i) {
      std::string text;
      if (!JNIJSONArray::getString(texts, i, text)) {
        return Fail(std::string("element ") + std::to_string(i) + " of \"" + key + "\" is not a string");
      }
      out.push_back(Translate(text));
    }
    return true;
  }

  // An array of indices below `limit`, that may be absent.
  bool ReadIndices(const JNIJSONArtifact* object, const char* key, int limit, const std::string& what,
                   std::vector<int>& out) {
    const JNIJSONArtifact* indices = JNIJSONObject::get(object, key);
    if (indices == nullptr) return true;
    if (!JNIJSONArtifact::isJSONArray(indices)) return Fail(what + ": \"" + key + "\" is not an array");
    const int count = JNIJSONArray::size(indices);
    for (int i = 0; i < count; ++i) {
      long long index = 0;
      if (!JNIJSONArray::getInteger(indices, i, index)) {
        return Fail(what + ": element " + std::to_string(i) + " of \"" + key + "\" is not a whole number");
      }
      if (index < 0 || index >= limit) {
        return Fail(what + ": index " + std::to_string(index) + " of \"" + key + "\" is out of range");
      }
      out.push_back(static_cast<int>(index));
    }
    return true;
  }

  bool ReadDimension(const JNIJSONArtifact* object, int index, DimensionSpec& dimension) {
    const std::string what = Ordinal("dimension", index);
    if (!JNIJSONArtifact::isJSONObject(object)) return Fail(what + " is not an object");
    if (!ReadOptionalText(object, "name", what + ": \"name\"", dimension.fName)) return false;

    if (const JNIJSONArtifact* place = JNIJSONObject::get(object, "place")) {
      std::string text;
      if (!place->getString(text)) return Fail(what + ": \"place\" is not a string");
      if (text == "row") {
        dimension.fPlace = BpDimension::ROWS;
      } else if (text == "column") {
        dimension.fPlace = BpDimension::COLUMNS;
      } else if (text == "layer") {
        dimension.fPlace = BpDimension::LAYERS;
      } else {
        return Fail(what + ": unknown place \"" + text + "\"");
      }
    }
    if (const JNIJSONArtifact* showName = JNIJSONObject::get(object, "showName")) {
      if (!showName->getBoolean(dimension.fbShowName)) return Fail(what + ": \"showName\" is not a boolean");
    }

    const JNIJSONArtifact* categories = JNIJSONObject::get(object, "categories");
    if (categories == nullptr) return Fail(what + " has no \"categories\"");
    if (!ReadCategories(categories, what, dimension.fvCategories, dimension.fLeafCount)) return false;
    if (dimension.fLeafCount == 0) return Fail(what + " has no categories");
    return true;
  }

  // The categories of a dimension or a group. Two siblings of one kind may
  // not have the same label: a pivot table holds one position per label
  // under a group, so the second would fall onto the first.
  bool ReadCategories(const JNIJSONArtifact* array, const std::string& where, std::vector<NodeSpec>& out,
                      int& leafCount) {
    if (!JNIJSONArtifact::isJSONArray(array)) return Fail(where + ": \"categories\" is not an array");
    const int count = JNIJSONArray::size(array);
    std::set<std::string> leafLabels;
    std::set<std::string> groupLabels;
    for (int i = 0; i < count; ++i) {
      const JNIJSONArtifact* object = JNIJSONArray::get(array, i);
      const std::string what = where + ", " + Ordinal("category", i);
      if (!JNIJSONArtifact::isJSONObject(object)) return Fail(what + " is not an object");
      NodeSpec node;
      const JNIJSONArtifact* label = JNIJSONObject::get(object, "label");
      if (label == nullptr) return Fail(what + " has no \"label\"");
      std::string text;
      if (!label->getString(text)) return Fail(what + ": \"label\" is not a string");
      node.fLabel = Translate(text);
      if (!ReadIndices(object, "notes", fNoteCount, what, node.fvNotes)) return false;
      if (const JNIJSONArtifact* children = JNIJSONObject::get(object, "categories")) {
        node.fbGroup = true;
        if (!ReadCategories(children, what, node.fvChildren, leafCount)) return false;
      } else {
        ++leafCount;
      }
      std::set<std::string>& seen = node.fbGroup ? groupLabels : leafLabels;
      if (!seen.insert(node.fLabel).second) return Fail(what + ": the label \"" + node.fLabel + "\" repeats");
      out.push_back(std::move(node));
    }
    return true;
  }

  bool ReadFormat(const JNIJSONArtifact* value, const std::string& what, BpFormatSpec& format) {
    std::string name;
    if (value->getString(name)) {
      if (name == "Count") {
        format = BpProcedure::Count();
      } else if (name == "GeneralStat") {
        format = BpProcedure::GeneralStat();
      } else if (name == "Significance") {
        format = BpProcedure::Significance();
      } else if (name == "Correlation") {
        format = BpProcedure::Correlation();
      } else if (name == "Coefficient") {
        format = BpProcedure::Coefficient();
      } else if (name == "CoefficientSE") {
        format = BpProcedure::CoefficientSE();
      } else if (name == "Percent") {
        format = BpProcedure::Percent();
      } else {
        return Fail(what + ": unknown format \"" + name + "\"");
      }
      return true;
    }
    if (!JNIJSONArtifact::isJSONObject(value)) return Fail(what + ": \"format\" is neither a name nor an object");

    static const std::pair<const char*, ZORV_Format::Type> kTypes[] = {
        {"F", ZORV_Format::F},         {"E", ZORV_Format::E},     {"COMMA", ZORV_Format::COMMA},
        {"DOLLAR", ZORV_Format::DOLLAR}, {"DOT", ZORV_Format::DOT}, {"PCT", ZORV_Format::PCT},
    };
    std::string typeName;
    if (!JNIJSONObject::getString(value, "type", typeName)) return Fail(what + ": the format has no \"type\"");
    int type = 0;
    for (const auto& known : kTypes) {
      if (typeName == known.first) type = known.second;
    }
    if (type == 0) return Fail(what + ": \"" + typeName + "\" is no number format type");
    long long width = 0;
    if (!JNIJSONObject::getInteger(value, "width", width)) {
      return Fail(what + ": the format's \"width\" is missing or not a whole number");
    }
    long long decimals = 0;
    if (JNIJSONObject::has(value, "decimals") && !JNIJSONObject::getInteger(value, "decimals", decimals)) {
      return Fail(what + ": the format's \"decimals\" is not a whole number");
    }
    if (width < 1 || width > ZORV_Variable::MAXNUMFMTWID) return Fail(what + ": the format's width is out of range");
    if (decimals < 0 || decimals > 16 || decimals >= width) {
      return Fail(what + ": the format's decimals are out of range");
    }
    format = BpFormatSpec(ZORV_Format(static_cast<std::uint8_t>(type), static_cast<std::uint16_t>(width),
                                      static_cast<std::uint8_t>(decimals)));
    return true;
  }

  bool ReadCell(const JNIJSONArtifact* object, int index, const std::vector<DimensionSpec>& dimensions,
                CellSpec& cell) {
    const std::string what = Ordinal("cell", index);
    if (!JNIJSONArtifact::isJSONObject(object)) return Fail(what + " is not an object");

    const JNIJSONArtifact* at = JNIJSONObject::get(object, "at");
    if (at == nullptr) return Fail(what + " has no \"at\"");
    if (!JNIJSONArtifact::isJSONArray(at)) return Fail(what + ": \"at\" is not an array");
    if (JNIJSONArray::size(at) != static_cast<int>(dimensions.size())) {
      return Fail(what + ": \"at\" has " + std::to_string(JNIJSONArray::size(at)) + " entries for " +
                  std::to_string(dimensions.size()) + " dimensions");
    }
    for (std::size_t d = 0; d < dimensions.size(); ++d) {
      long long leaf = 0;
      if (!JNIJSONArray::getInteger(at, static_cast<int>(d), leaf)) {
        return Fail(what + ": entry " + std::to_string(d) + " of \"at\" is not a whole number");
      }
      if (leaf < 0 || leaf >= dimensions[d].fLeafCount) {
        return Fail(what + ": entry " + std::to_string(d) + " of \"at\" is out of range");
      }
      cell.fvAt.push_back(static_cast<int>(leaf));
    }

    const JNIJSONArtifact* value = JNIJSONObject::get(object, "value");
    const JNIJSONArtifact* text = JNIJSONObject::get(object, "text");
    if (value != nullptr && text != nullptr) return Fail(what + " has both a \"value\" and a \"text\"");
    if (value != nullptr) {
      cell.fKind = CellSpec::NUMBER;
      if (JNIJSONArtifact::isJSONNull(value)) {
        cell.fValue = BpFormatSpec::Missing();
      } else if (!value->getNumber(cell.fValue)) {
        return Fail(what + ": \"value\" is neither a number nor null");
      }
    } else if (text != nullptr) {
      cell.fKind = CellSpec::TEXT;
      if (!text->getString(cell.fText)) return Fail(what + ": \"text\" is not a string");
    }
    if (const JNIJSONArtifact* format = JNIJSONObject::get(object, "format")) {
      if (!ReadFormat(format, what, cell.fFormat)) return false;
    }
    return ReadIndices(object, "notes", fNoteCount, what, cell.fvNotes);
  }

  const FacSTDictionary* fpDictionary;
  std::string& fProblem;
  int fNoteCount = 0;
};

// ---- writing ----

// One row dimension for a split variable: the variable and the current
// split's value of it.
struct SplitLevel {
  const ZORV_Variable* fpVariable = nullptr;
  const OBS* fpValue = nullptr;
};

// The split variables of the data source with the current split's values.
// A variable whose value the host has not published is left out.
std::vector<SplitLevel> CurrentSplitLevels(const ProcedureDataSource* dataSource) {
  std::vector<SplitLevel> levels;
  if (dataSource == nullptr) return levels;
  const std::vector<ZORV_Session::SplitValue>& current = ZORV_Session::Current().GetCurrentSplit();
  for (int i = 0; i < dataSource->GetNSplitVars(); ++i) {
    const ZORV_Variable* variable = dataSource->GetVariable(dataSource->GetSplitVar(i));
    if (variable == nullptr) continue;
    const ZORV_Session::SplitValue* found = nullptr;
    for (const ZORV_Session::SplitValue& value : current) {
      if (value.fpVariable == variable) found = &value;
    }
    if (found == nullptr) {
      for (const ZORV_Session::SplitValue& value : current) {
        if (value.fpVariable != nullptr && std::string(value.fpVariable->GetName()) == variable->GetName()) {
          found = &value;
        }
      }
    }
    if (found == nullptr) continue;
    const std::size_t words =
        variable->IsString() ? static_cast<std::size_t>(ObsWordsForWidth(variable->GetType())) : 1u;
    if (found->fvValue.size() < words) continue;
    levels.push_back(SplitLevel{variable, found->fvValue.data()});
  }
  return levels;
}

// The dictionary of the procedure the heading writes for; null when it
// belongs to none.
const FacSTDictionary* ProcedureDictionary(const BpHeading& heading) {
  const BpHeadingState* state = static_cast<const BpHeadingState*>(heading.GetBody());
  if (state == nullptr || state->GetProcedure() == nullptr) return nullptr;
  return &state->GetProcedure()->GetDictionary();
}

BpAnnotation Footnote(const std::string& text) { return BpAnnotation(new BpString(text, false)); }

// Makes the category current on its dimension, so that the next cell
// lands on it.
void MakeCurrent(const BpCategory& category) {
  BpNodeState* state = static_cast<BpNodeState*>(category.GetBody());
  if (state != nullptr) state->GetTable()->SetCurrent(state->GetDimension(), state->GetId());
}

// A footnote on a group's label.
void NoteOnGroup(const BpGroup& group, const BpAnnotation& annotation) {
  BpNodeState* state = static_cast<BpNodeState*>(group.GetBody());
  if (state != nullptr) state->GetTable()->AddNodeFootnote(state->GetDimension(), state->GetId(), annotation);
}

void WriteNodes(BpGroup& parent, const std::vector<NodeSpec>& nodes, const TableSpec& spec,
                std::vector<BpCategory>& leaves) {
  for (const NodeSpec& node : nodes) {
    if (node.fbGroup) {
      BpGroup group = parent.Group(BpString(node.fLabel, false), true, BpGroup::AS_CREATED);
      for (int note : node.fvNotes) NoteOnGroup(group, Footnote(spec.fvNotes[static_cast<std::size_t>(note)]));
      WriteNodes(group, node.fvChildren, spec, leaves);
    } else {
      BpCategory category = parent.Category(BpString(node.fLabel, false));
      for (int note : node.fvNotes) category.Note(Footnote(spec.fvNotes[static_cast<std::size_t>(note)]));
      leaves.push_back(category);
    }
  }
}

void CollectReferencedNotes(const std::vector<NodeSpec>& nodes, std::vector<bool>& referenced) {
  for (const NodeSpec& node : nodes) {
    for (int note : node.fvNotes) referenced[static_cast<std::size_t>(note)] = true;
    CollectReferencedNotes(node.fvChildren, referenced);
  }
}

// Position orders nest the dimensions of one place: the first one listed
// stands outermost, which is the highest order.
int OrderOf(const std::vector<DimensionSpec>& dimensions, std::size_t index) {
  int order = 1;
  for (std::size_t later = index + 1; later < dimensions.size(); ++later) {
    if (dimensions[later].fPlace == dimensions[index].fPlace) ++order;
  }
  return order;
}

}  // namespace

jsonPivot::jsonPivot(JNIJSONObject& document, JNIJSONArtifact& table, const ProcedureDataSource* dataSource,
                     const dataDictionary& dictionary)
    : fDocument(document), fTable(table), fpDataSource(dataSource), fDictionary(dictionary) {}

bool jsonPivot::createPivotTable(BpHeading* heading, const std::string& title, bool bTitleIsKey,
                                 const std::string& subType) {
  fProblem.clear();
  if (heading == nullptr || !heading->IsBound()) {
    fProblem = "there is no heading to write under";
    return false;
  }

  TableSpec spec;
  TableReader reader(fbTranslateStrings ? ProcedureDictionary(*heading) : nullptr, fProblem);
  if (!reader.Read(&fTable, spec)) return false;

  const std::vector<SplitLevel> splits = fbSupportSplits ? CurrentSplitLevels(fpDataSource) : std::vector<SplitLevel>();

  // A table that shows its split in its rows does not repeat it in the
  // caption that the host gives the procedure's tables of a split.
  const bool bSplitCaption = splits.empty();
  BpPivotTable table = title.empty()
                           ? heading->PivotTable(BpString(spec.fName, false), BpString(subType, false), bSplitCaption)
                           : heading->PivotTable(BpString(title, bTitleIsKey), BpString(subType, false), bSplitCaption);
  if (!table.IsBound()) {
    fProblem = "the heading made no table";
    return false;
  }

  int rowDimensions = 0;
  for (const DimensionSpec& dimension : spec.fvDimensions) {
    if (dimension.fPlace == BpDimension::ROWS) ++rowDimensions;
  }
  std::vector<BpDimension> splitDimensions;
  for (std::size_t i = 0; i < splits.size(); ++i) {
    BpDimension dimension = table.Dimension(BpVariable(*splits[i].fpVariable, BpVariable::AS_SET),
                                            BpPivotTable::AS_CREATED);
    const int order = rowDimensions + static_cast<int>(splits.size() - i);
    dimension.Position(BpDimension::ROWS, order, false, false);
    dimension.Category(BpDataValue(*splits[i].fpVariable, splits[i].fpValue, BpDataValue::LABEL));
    splitDimensions.push_back(dimension);
  }
  OmTable* made = table.GetOmTable();
  if (made != nullptr && !splits.empty() && fpDataSource->SplitsInOneTable()) {
    // Tables of the other splits merge with this one when the command ends.
    for (std::size_t i = 0; i < splits.size() && i < made->fvDimensions.size(); ++i) {
      const OmDimension& dimension = made->fvDimensions[i];
      OmSplitLevel level;
      level.fVariable = dimension.fName.fText;
      if (!dimension.fRoot.fvChildren.empty()) level.fValue = dimension.fRoot.fvChildren.front().fLabel.fText;
      made->fvSplit.push_back(level);
    }
    made->fbSplitInRows = !made->fvSplit.empty();
  }

  std::vector<std::vector<BpCategory>> leaves(spec.fvDimensions.size());
  std::vector<bool> referenced(spec.fvNotes.size(), false);
  for (std::size_t d = 0; d < spec.fvDimensions.size(); ++d) {
    const DimensionSpec& dimensionSpec = spec.fvDimensions[d];
    BpDimension dimension = table.Dimension(BpString(dimensionSpec.fName, false), BpPivotTable::AS_CREATED);
    dimension.Position(dimensionSpec.fPlace, OrderOf(spec.fvDimensions, d), !dimensionSpec.fbShowName, false);
    WriteNodes(dimension, dimensionSpec.fvCategories, spec, leaves[d]);
    CollectReferencedNotes(dimensionSpec.fvCategories, referenced);
  }

  for (const CellSpec& cell : spec.fvCells) {
    for (std::size_t d = 0; d < cell.fvAt.size(); ++d) {
      MakeCurrent(leaves[d][static_cast<std::size_t>(cell.fvAt[d])]);
    }
    BpCategory& last = leaves.back()[static_cast<std::size_t>(cell.fvAt.back())];
    if (cell.fKind == CellSpec::NUMBER) {
      last.Cell(BpNumber(cell.fValue, cell.fFormat));
    } else if (cell.fKind == CellSpec::TEXT) {
      last.Cell(BpString(cell.fText, false));
    }
    for (int note : cell.fvNotes) {
      last.CellNote(Footnote(spec.fvNotes[static_cast<std::size_t>(note)]));
      referenced[static_cast<std::size_t>(note)] = true;
    }
  }

  for (const std::string& caption : spec.fvCaptions) table.Caption(BpString(caption, false));
  // A note nothing points at is still part of the table: it goes under it.
  for (std::size_t i = 0; i < spec.fvNotes.size(); ++i) {
    if (!referenced[i]) table.Note(Footnote(spec.fvNotes[i]));
  }
  return true;
}
