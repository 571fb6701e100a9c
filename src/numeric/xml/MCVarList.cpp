#include "numeric/xml/MCVarList.h"

#include <ostream>

#include "numeric/display/MCDisplay.h"

namespace MCXML_850 {

MCVarList::MCVarList()
    : fbListwiseDeletion(false), fUnWeightedCount(0), fWeightedCount(0.0), fDroppedCount(0), fWeightedDroppedCount(0.0) {}

MCVarList::~MCVarList() = default;

int MCVarList::AddVariable(const IMCVariable& variable) {
  fvVariables.push_back(variable);
  return Size() - 1;
}

void MCVarList::Clear() { *this = MCVarList(); }

const IMCVariable* MCVarList::GetVarAt(int i) const {
  if (i < 0 || i >= Size()) return nullptr;
  return &fvVariables[static_cast<std::size_t>(i)];
}

IMCVariable* MCVarList::GetVarAt(int i) {
  if (i < 0 || i >= Size()) return nullptr;
  return &fvVariables[static_cast<std::size_t>(i)];
}

int MCVarList::FindVar(const std::string& name) const {
  for (int i = 0; i < Size(); ++i) {
    if (fvVariables[static_cast<std::size_t>(i)].GetName() == name) return i;
  }
  return -1;
}

int MCVarList::FindRole(MCMath_850::MCConst::MCVarRole role) const {
  for (int i = 0; i < Size(); ++i) {
    if (fvVariables[static_cast<std::size_t>(i)].GetRole() == role) return i;
  }
  return -1;
}

void MCVarList::Display() const { Display(*MCDisplay_850::GetOutStream()); }

void MCVarList::Display(std::ostream& os) const {
  using namespace MCDisplay_850;
  DisplayText(os, "Begin MCVarList display.");
  DisplayI(os, "Variables:", Size());
  for (const IMCVariable& variable : fvVariables) variable.Display(os);
  DisplayB(os, "Listwise deletion:", fbListwiseDeletion);
  DisplayI(os, "Unweighted count:", fUnWeightedCount);
  DisplayD(os, "Weighted count:", fWeightedCount);
  DisplayI(os, "Dropped count:", fDroppedCount);
  DisplayD(os, "Weighted dropped count:", fWeightedDroppedCount);
  DisplayText(os, "End MCVarList display.");
}

}  // namespace MCXML_850
