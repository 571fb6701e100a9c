#pragma once

#include <string>
#include <vector>

#include "host/data/OBS.h"

class ZORV_DataSource;

// Pools the model files that one command saves under one name. An unsplit
// file saves under the name itself. In a split file each split saves a file
// of its own: the name with "_split<k>" before its extension, k counting the
// splits from 1 in the order they are first met ("model.xml" gives
// "model_split1.xml", "model_split2.xml", ...). The same split values always
// give the same name.
class ZORV_PMMLPooling {
 public:
  ZORV_PMMLPooling(const ZORV_DataSource& dataSource, const std::string& name);

  // The file name for the split with these values (one per split variable;
  // none for an unsplit file). False, with an empty name, once the pool is
  // complete or when it has no name.
  bool GetCurrentPMMLName(std::string& name, const std::vector<OBS*>& splitValues);

  // Closes the pool: it gives no more names.
  void CompletePMML();

  const std::string& GetBaseName() const { return fBaseName; }
  bool IsComplete() const { return fbComplete; }
  // The names given so far, one per split met.
  const std::vector<std::string>& GetFileNames() const { return fvFileNames; }

 private:
  // The bytes of the split values, each over its variable's storage width.
  std::string SplitKey(const std::vector<OBS*>& splitValues) const;
  std::string NameForSplit(std::size_t ordinal) const;

  const ZORV_DataSource* fpDataSource;
  std::string fBaseName;
  std::vector<std::string> fvSplitKeys;
  std::vector<std::string> fvFileNames;
  bool fbComplete = false;
};
