#pragma once

#include <iosfwd>
#include <vector>

#include "numeric/common/MCStatusCode.h"

namespace MCCommon_850 {

// What a status says: all is well, a warning, an error, or a plain note that
// is none of the three.
enum MCStatusKind { STATUS_OK = 0, STATUS_WARNING = 1, STATUS_ERROR = 2, STATUS_NOTE = 3 };

// The result of an engine operation: a numeric code, its kind, and optional
// integer data that fill the code's message (for example the number of a
// marginal means request). A plain value, copied by assignment.
class MCStatus {
 public:
  // OK, code 0.
  MCStatus();
  // A status of that code, of the kind the code has by default. With
  // bWarningOnly an error code becomes a warning; code 0 is always OK.
  MCStatus(long code, bool bWarningOnly);
  // A status of that code and an explicit kind.
  MCStatus(long code, MCStatusKind kind);

  bool IsOK() const { return fKind == STATUS_OK; }
  bool IsWarning() const { return fKind == STATUS_WARNING; }
  bool IsError() const { return fKind == STATUS_ERROR; }

  long GetErrorCode() const { return fCode; }
  MCStatusKind GetKind() const { return fKind; }

  // Datum i, or 0 when there is no such datum.
  long GetDiscreteDatum(unsigned int i) const;
  unsigned int GetNDiscreteData() const { return static_cast<unsigned int>(fvDiscreteData.size()); }
  void AddDiscreteDatum(long value) { fvDiscreteData.push_back(value); }
  // Stores datum i, filling any gap before it with 0.
  void SetDiscreteDatum(unsigned int i, long value);

  // The kind a code has by default: OK for 0, the listed kind for a known
  // code, error for any other.
  static MCStatusKind KindOfCode(long code);
  static const char* KindName(MCStatusKind kind);

  void Display() const;
  void Display(std::ostream& os) const;

 private:
  long fCode;
  MCStatusKind fKind;
  std::vector<long> fvDiscreteData;
};

}  // namespace MCCommon_850
