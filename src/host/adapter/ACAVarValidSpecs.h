#pragma once

#include <string>
#include <vector>

#include "host/data/OBS.h"
#include "host/data/ZORV_Format.h"

// The variables a procedure reads, and the layout of the record that the
// data adapter builds from each case: one double per record variable, in
// the order of registration. A record variable holds either the value of a
// host variable or, for a categorical one, the code of its category.
//
// A host variable registered twice keeps its first record position and its
// first flags, unless multiple recoding is on: variables registered while it
// is on get positions of their own, shared only among themselves, so that
// the same host variable can appear once more under another coding.
class ACAVarValidSpecs {
 public:
  struct RecordVarData {
    int fHostIndex = -1;                // column in the data source
    bool fbCategorical = false;         // the record holds category codes
    bool fbSysmisValid = false;         // a system-missing value is kept, not dropped
    bool fbUserMissingExcluded = true;  // user-missing values count as missing
    bool fbListwise = true;             // a missing value drops the whole case
    bool fbWeight = false;              // the data file's frequency weight
    bool fbMultRecode = false;          // registered under multiple recoding
  };

  // Whether the adapter applies the host's case filter, frequency weight and
  // split file settings.
  ACAVarValidSpecs(bool useFilter, bool useWeight, bool useSplit);

  // Registers a host variable and returns its record position; -1 for a
  // negative host index, which registers nothing.
  int AddVariable(int hostIndex, bool categorical, bool sysmisValid, bool userMissingExcluded, bool listwise);
  // Registers each host variable in order; recIndices receives their record
  // positions. False when any index was negative (its position is -1).
  bool AddVariables(const std::vector<int>& hostIndices, std::vector<int>& recIndices, bool categorical,
                    bool sysmisValid, bool userMissingExcluded, bool listwise);

  // Registers the data file's frequency weight and returns its record
  // position; a second call returns the same position. Its host index is
  // unknown (-1) until the adapter sets it from the data source.
  int SetWeightVar();
  void SetWeightHostIndex(int hostIndex);
  // Record position of the weight; -1 without one.
  int GetWeightRecIndex() const { return fWeightRecIndex; }

  void SetMultRecode(bool multRecode) { fbMultRecode = multRecode; }
  bool GetMultRecode() const { return fbMultRecode; }

  bool GetUseFilter() const { return fbUseFilter; }
  bool GetUseWeight() const { return fbUseWeight; }
  bool GetUseSplit() const { return fbUseSplit; }

  int GetNRecordVars() const { return static_cast<int>(fvRecordVars.size()); }
  // Record position of a host variable (its first registration without
  // multiple recoding, else its first at all); -1 when not registered.
  int GetRecVarIndex(int hostIndex) const;
  // Whether the record variable holds category codes; false out of range.
  bool GetRecordCatVar(int recIndex) const;
  // Host index of a record variable; -1 out of range.
  int GetZORVVarIndex(int recIndex) const;
  // Null out of range.
  const RecordVarData* GetRecordVar(int recIndex) const;

  // The text of a value in a format: trimmed, or padded to the format's
  // width when `padded` is true. Empty when the value cannot be written so.
  std::string ConvertObsToString(const OBS* value, const ZORV_Format& format, bool padded) const;

  // The record layout as debug text.
  void Display() const;

 private:
  int FindRecordVar(int hostIndex, bool multRecode) const;

  bool fbUseFilter;
  bool fbUseWeight;
  bool fbUseSplit;
  bool fbMultRecode = false;
  int fWeightRecIndex = -1;
  std::vector<RecordVarData> fvRecordVars;
};
