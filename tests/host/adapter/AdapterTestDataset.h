#pragma once

#include <cfloat>
#include <string>
#include <vector>

#include "host/adapter/ACAProcDataSourceIter.h"
#include "host/data/ZORV_Dataset.h"
#include "host/output/BpProcedure.h"

namespace adapter_test {

const double kSysMiss = -DBL_MAX;

// Columns of the small file below.
enum { REGION = 0, Y = 1, GROUP = 2, SEX = 3, W = 4 };

// Eight cases:
//   row region  y     group  sex  w
//   0   b       1     2      m    1
//   1   a       2     1      f    2
//   2   b       3     3      f    1
//   3   a       4     1      m    1
//   4   b       sys   2      m    1    y missing
//   5   a       6     9      f    1    group 9 is user-missing
//   6   b       7     2      f    0    weight 0
//   7   c       8     sys    m    1    group missing
inline void MakeSmallFile(ZORV_Dataset& ds) {
  ds.AddVariable("region", 4);
  ds.AddVariable("y", 0);
  ds.AddVariable("group", 0);
  ds.AddVariable("sex", 6);
  ds.AddVariable("w", 0);
  ds.GetVariable(GROUP)->AddMissingValue(9);
  ds.AppendCases(8);
  const char* regions[] = {"b", "a", "b", "a", "b", "a", "b", "c"};
  const double ys[] = {1, 2, 3, 4, kSysMiss, 6, 7, 8};
  const double groups[] = {2, 1, 3, 1, 2, 9, 2, kSysMiss};
  const char* sexes[] = {"m", "f", "f", "m", "m", "f", "f", "m"};
  const double ws[] = {1, 2, 1, 1, 1, 1, 0, 1};
  for (long r = 0; r < 8; ++r) {
    ds.SetString(r, REGION, regions[r]);
    ds.SetNum(r, Y, ys[r]);
    ds.SetNum(r, GROUP, groups[r]);
    ds.SetString(r, SEX, sexes[r]);
    ds.SetNum(r, W, ws[r]);
  }
}

// The split settings are read from the data source; the procedure is not.
inline BpProcedure& NoProcedure() {
  static BpProcedure unbound;
  return unbound;
}

// One column of every record of the open split.
inline std::vector<double> ReadSplit(ACAProcDataSourceIter& it, int recIndex) {
  std::vector<double> values;
  for (; it.HasRecord(); it.Next()) values.push_back(it.Current()[recIndex]);
  return values;
}

inline OBS Num(double value) {
  OBS cell;
  cell.fNum = value;
  return cell;
}

// A string value in whole words, blank padded.
struct Text {
  explicit Text(const std::string& text, int width) : fvWords(static_cast<std::size_t>(ObsWordsForWidth(width))) {
    std::string padded = text;
    padded.resize(fvWords.size() * sizeof(OBS), ' ');
    for (std::size_t i = 0; i < padded.size(); ++i) fvWords[i / 8].fStr[i % 8] = padded[i];
  }
  const OBS* Get() const { return fvWords.data(); }
  std::vector<OBS> fvWords;
};

}  // namespace adapter_test
