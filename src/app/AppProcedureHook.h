#pragma once

class BpProcedure;
class ProcedureDataSource;

// Where the session hands a checked GLMIXFIT command to the procedure.
//
// The session lays the command out in the parser's memory, publishes the two
// blocks with `exposemix_`, and calls the procedure set here with the
// command's word array, the command's output procedure and the active
// dataset; it is the entry point the procedure offers. With none set, the
// session says in a note that fitting is not available, and writes nothing
// else.
class AppProcedureHook {
 public:
  typedef void (*Procedure)(void* command, BpProcedure& procedure, ProcedureDataSource& data);

  // Null takes the procedure away.
  static void Set(Procedure procedure);
  static Procedure Get();
};
