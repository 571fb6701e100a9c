#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <unordered_map>
#include <vector>

#include "host/data/OBS.h"

class ZORV_DataSource;

// A set of cells keyed by a row of data values. A cell is a row of 8-byte
// words: first the key, then a fixed number of extra words that belong to
// the user of the map (zero when the cell is made).
//
// The key layout has one entry per variable: 0 for a numeric variable,
// otherwise the width of the string. A numeric value, and a string of up to
// 8 bytes, takes one word; a wider string (width + 7) / 8 words. A layout
// without variables still has one key word.
//
// Keys are equal when their bytes are equal. Cells never move: a pointer to
// a cell stays valid as long as the map.
class ObsVecMap {
 public:
  // The layout for these columns of the data source. A column that does not
  // exist counts as numeric.
  static std::vector<short> MakeKeySpec(const ZORV_DataSource& dataSource, const std::vector<int>& hostIndices);

  ObsVecMap(const std::vector<short>& keySpec, unsigned long extra);
  ObsVecMap(const ObsVecMap&) = delete;
  ObsVecMap& operator=(const ObsVecMap&) = delete;

  const std::vector<short>& GetKeySpec() const { return fvKeySpec; }
  // Words of the key, of the extra part, and of both together.
  unsigned long KeySize() const { return fKeyWords; }
  unsigned long ExtraSize() const { return fExtraWords; }
  unsigned long CellSize() const { return fKeyWords + fExtraWords; }
  // Number of cells.
  unsigned long Size() const { return static_cast<unsigned long>(fvCells.size()); }

  // The cell of that place, in order of insertion; null past the end.
  OBS* operator[](unsigned long index);
  const OBS* operator[](unsigned long index) const;

  // The cell with that key (KeySize() words), or null.
  OBS* Contains(const OBS* key) const;
  // The cell with that key, made when there is none.
  OBS* Insert(const OBS* key);

  // All cells in ascending key order: variable by variable, numbers by value
  // and strings byte by byte; a not-a-number value after every number.
  void Sort(std::vector<OBS*>& out) const;

 private:
  std::string KeyBytes(const OBS* key) const;
  // Negative, zero or positive as key a sorts before, with or after key b.
  int CompareKeys(const OBS* a, const OBS* b) const;

  std::vector<short> fvKeySpec;
  unsigned long fKeyWords;
  unsigned long fExtraWords;
  std::vector<std::unique_ptr<OBS[]>> fvCells;
  std::unordered_map<std::string, std::size_t> fIndex;
};
