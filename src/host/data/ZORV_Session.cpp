#include "host/data/ZORV_Session.h"

#include "host/data/ZORV_StopFlag.h"

ZORV_Session::ZORV_Session() : fResourceDir(GLMIX_RESOURCE_DIR), fWritableDir(".") {}

ZORV_Session& ZORV_Session::Current() {
  static ZORV_Session session;
  return session;
}

void ZORV_Session::BeginCommand() {
  fbFatal = false;
  fvSplit.clear();
  ZORV_StopFlag::Clear();
}

void ZORV_Session::GetDisplayOptions(long* varSecond, long* valSecond, long* varFirst, long* valFirst) const {
  if (varSecond) *varSecond = fVarSecond;
  if (valSecond) *valSecond = fValSecond;
  if (varFirst) *varFirst = fVarFirst;
  if (valFirst) *valFirst = fValFirst;
}

void getdisplayoptions_(long* varSecond, long* valSecond, long* varFirst, long* valFirst) {
  ZORV_Session::Current().GetDisplayOptions(varSecond, valSecond, varFirst, valFirst);
}
