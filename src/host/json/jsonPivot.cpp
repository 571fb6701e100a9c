#include "host/json/jsonPivot.h"

#include <stdexcept>

jsonPivot::jsonPivot(JNIJSONObject& document, JNIJSONArtifact& table, const ProcedureDataSource* dataSource,
                     const dataDictionary& dictionary)
    : fDocument(document), fTable(table), fpDataSource(dataSource), fDictionary(dictionary) {}

bool jsonPivot::createPivotTable(BpHeading*, const std::string&, bool, const std::string&) {
  throw std::logic_error("jsonPivot::createPivotTable: not implemented yet");
}
