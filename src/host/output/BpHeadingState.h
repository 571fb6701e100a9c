#pragma once

#include <vector>

#include "host/output/BpHandle.h"
#include "host/output/BpTextContext.h"

struct OmHeading;
class BpProcedureState;

// The body of a heading handle: the outline node it writes into, and the
// procedure whose dictionary translates its texts. A heading keeps its
// procedure's body alive.
class BpHeadingState : public BpHandle::Body {
 public:
  BpHeadingState(BpProcedureState* pProcedure, OmHeading* pHeading);
  ~BpHeadingState() override;

  OmHeading* GetHeading() const { return fpHeading; }
  BpProcedureState* GetProcedure() const { return fpProcedure; }
  // The context for the body of tables (first) or captions and notes (second).
  BpTextContext GetContext(bool bSecond) const;

  // The heading made last of those whose handles are not all gone: where
  // output that names no heading of its own (a chart) goes. A procedure is a
  // heading too. Null when no heading is alive.
  static BpHeadingState* Innermost();
  // Every heading whose handles are not all gone, in the order made.
  static const std::vector<BpHeadingState*>& Live();

 protected:
  // For the procedure itself, which is its own procedure.
  explicit BpHeadingState(OmHeading* pHeading);
  void SetProcedure(BpProcedureState* pProcedure) { fpProcedure = pProcedure; }

 private:
  BpProcedureState* fpProcedure = nullptr;
  BpHandle fProcedureRef;
  OmHeading* fpHeading;
};
