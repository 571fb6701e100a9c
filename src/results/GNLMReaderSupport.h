#pragma once

#include <string>
#include <vector>

#include "results/GNLMOutputStats.h"

class SDOMXMLWrapper;

// Small steps the result reader takes everywhere.
namespace GNLMReaderSupport {

// The children of that name in document order; none for a null parent.
// They belong to the parent.
std::vector<SDOMXMLWrapper*> Children(SDOMXMLWrapper* parent, const std::string& name);
// Each child of that name read by the reader's `fill` into a new record,
// which is appended; the first false ends the walk with false.
template <typename Reader, typename Record>
bool FillChildren(Reader& reader, bool (Reader::*fill)(SDOMXMLWrapper*, Record&), SDOMXMLWrapper* parent,
                  const std::string& name, std::vector<Record>& list) {
  for (SDOMXMLWrapper* child : Children(parent, name)) {
    Record record;
    if (!(reader.*fill)(child, record)) return false;
    list.push_back(record);
  }
  return true;
}
// The members of a list parameter: the StructuredValue elements of its
// ListValue. False when either is missing: a list is never empty.
bool StructuredValues(SDOMXMLWrapper* parameter, std::vector<SDOMXMLWrapper*>& members);
// The attribute's text; empty when the attribute or the element is absent.
std::string Attribute(const SDOMXMLWrapper* element, const std::string& name);
// A number cut to a whole one; a value beyond the range of int (the
// system-missing value among them) gives the most negative int, as a
// hardware truncation does.
int TruncateToInt(double value);
// The position in the variable list of a field, -1 when the field is not
// in it.
int MappedVariable(const GNLMOutputStats::VariableMapInfo& info, int fieldIndex);

}  // namespace GNLMReaderSupport
