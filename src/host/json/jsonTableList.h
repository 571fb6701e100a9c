#pragma once

#include <cstddef>
#include <string>
#include <vector>

class JNIJSONArtifact;
class JNIJSONObject;

// The table objects of a results document in JSON, found the one way every
// reader of such a document finds them: the value at
// "glmm.RandomEffectsParameters.tables", else at "tables", else the
// document itself. The value is an array of table objects or one table
// object. Each table's title is the caller's, numbered " 1", " 2", ... when
// the document holds an array of more than one.
class jsonTableList {
 public:
  // A document that did not parse holds no tables and is not found.
  explicit jsonTableList(JNIJSONObject& document);

  // Whether the document has a place for tables at all; an empty array is
  // found and holds none.
  bool isFound() const { return fbFound; }
  std::size_t size() const { return fvTables.size(); }
  JNIJSONArtifact& getTable(std::size_t index) const { return *fvTables[index]; }
  std::string getTitle(const std::string& title, std::size_t index) const;

 private:
  std::vector<JNIJSONArtifact*> fvTables;
  bool fbFound = false;
  bool fbNumbered = false;
};
