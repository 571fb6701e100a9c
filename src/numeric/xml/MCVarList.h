#pragma once

#include <iosfwd>
#include <string>
#include <vector>

#include "numeric/xml/IMCVariable.h"

namespace MCXML_850 {

// The engine's description of the variables of its record, in record order,
// with the case counts of the data behind them.
class MCVarList {
 public:
  MCVarList();
  virtual ~MCVarList();

  // Appends a variable; returns its place.
  int AddVariable(const IMCVariable& variable);
  void Clear();
  int Size() const { return static_cast<int>(fvVariables.size()); }
  // The variable at place i; null outside the list.
  const IMCVariable* GetVarAt(int i) const;
  IMCVariable* GetVarAt(int i);
  // Place of the variable of that name; -1 when there is none.
  int FindVar(const std::string& name) const;
  // Place of the first variable with that role; -1 when there is none.
  int FindRole(MCMath_850::MCConst::MCVarRole role) const;

  // Cases with a missing value in any variable are left out.
  bool GetListwiseDeletion() const { return fbListwiseDeletion; }
  void SetListwiseDeletion(bool listwise) { fbListwiseDeletion = listwise; }
  long GetUnWeightedCount() const { return fUnWeightedCount; }
  void SetUnWeightedCount(long count) { fUnWeightedCount = count; }
  double GetWeightedCount() const { return fWeightedCount; }
  void SetWeightedCount(double count) { fWeightedCount = count; }
  long GetDroppedCount() const { return fDroppedCount; }
  void SetDroppedCount(long count) { fDroppedCount = count; }
  double GetWeightedDroppedCount() const { return fWeightedDroppedCount; }
  void SetWeightedDroppedCount(double count) { fWeightedDroppedCount = count; }

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  std::vector<IMCVariable> fvVariables;
  bool fbListwiseDeletion;
  long fUnWeightedCount;
  double fWeightedCount;
  long fDroppedCount;
  double fWeightedDroppedCount;
};

}  // namespace MCXML_850
