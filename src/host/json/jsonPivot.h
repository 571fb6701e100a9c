#pragma once

#include <string>

class BpHeading;
class JNIJSONArtifact;
class JNIJSONObject;
class ProcedureDataSource;
class dataDictionary;

// Builds one pivot table from a table object of a result document. The
// document, the table object, the data source and the dictionary are
// borrowed and must outlive the builder.
//
// A table object holds "name", "captions", "notes", "dimensions" and
// "cells" (docs/design.md, "Result tables in JSON"). The whole object is
// read and checked before anything is written: a table that breaks a rule
// of the format is refused and leaves no trace in the output.
class jsonPivot {
 public:
  jsonPivot(JNIJSONObject& document, JNIJSONArtifact& table, const ProcedureDataSource* dataSource,
            const dataDictionary& dictionary);

  // Whether the table's own texts go through the translation tables.
  void translateTableStrings(bool bTranslate) { fbTranslateStrings = bTranslate; }
  bool getTranslateTableStrings() const { return fbTranslateStrings; }
  // Whether the builder lays out the splits of a split file itself; it does
  // unless told otherwise.
  void supportSplits(bool bSupport) { fbSupportSplits = bSupport; }
  bool getSupportSplits() const { return fbSupportSplits; }

  // Writes the table under the heading. The title is a final text, or a
  // key of the translation tables when bTitleIsKey is set; an empty title
  // takes the table's own name. The sub-type is the name by which the table
  // is found in the output. True when the table was written; false, with
  // nothing written, for a missing heading or a table the builder refuses.
  bool createPivotTable(BpHeading* heading, const std::string& title, bool bTitleIsKey, const std::string& subType);

  // Why the last createPivotTable wrote nothing; empty after a table was
  // written. For diagnostics only: the text is not translated.
  const std::string& getProblem() const { return fProblem; }

  JNIJSONObject& getDocument() const { return fDocument; }
  JNIJSONArtifact& getTable() const { return fTable; }
  const ProcedureDataSource* getDataSource() const { return fpDataSource; }
  const dataDictionary& getDictionary() const { return fDictionary; }

 private:
  JNIJSONObject& fDocument;
  JNIJSONArtifact& fTable;
  const ProcedureDataSource* fpDataSource;
  const dataDictionary& fDictionary;
  bool fbTranslateStrings = false;
  bool fbSupportSplits = true;
  std::string fProblem;
};
