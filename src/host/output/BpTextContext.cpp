#include "host/output/BpTextContext.h"

#include "host/data/ZORV_Session.h"
#include "host/strings/FacSTDictionary.h"

namespace {

// The host's settings are 1 (names), 2 (labels) or 3 (both).
int FromSetting(long setting) {
  if (setting <= 1) return 0;
  return setting == 2 ? 1 : 2;
}

}  // namespace

std::string BpTextContext::Translate(const std::string& key) const {
  return fpDictionary == nullptr ? key : fpDictionary->LookUp(key);
}

int BpTextContext::GetVariableDisplay() const {
  long varSecond = 0, valSecond = 0, varFirst = 0, valFirst = 0;
  getdisplayoptions_(&varSecond, &valSecond, &varFirst, &valFirst);
  return FromSetting(fbSecond ? varSecond : varFirst);
}

int BpTextContext::GetValueDisplay() const {
  long varSecond = 0, valSecond = 0, varFirst = 0, valFirst = 0;
  getdisplayoptions_(&varSecond, &valSecond, &varFirst, &valFirst);
  return FromSetting(fbSecond ? valSecond : valFirst);
}
