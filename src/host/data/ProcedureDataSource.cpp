#include "host/data/ProcedureDataSource.h"

#include "host/data/ZORV_Session.h"

bool ProcedureDataSource::FatalError() const { return ZORV_Session::Current().IsFatal(); }

bool ProcedureDataSource::SplitsInSeparateTables() const { return !SplitsInOneTable(); }
