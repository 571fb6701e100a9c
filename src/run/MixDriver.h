#pragma once

class BpProcedure;
class MIXFactory;
class ProcedureDataSource;

// The procedure's entry: runs one GLMIXFIT command.
//
// `commandTree` is the parser's word array of the command; the parser's two
// blocks must have been published through exposemix_ before the call and
// stay in place until it returns. Everything the user sees leaves through
// `procedure`, BpError and the files registered with the host.
//
// The call owns one MIXValidSpecs, one MIXOutput and one MIXFactory for its
// length and runs the passes over the splits: the data pass, the component
// pass and the output pass, asking the host's fatal state before nearly every
// step. The three objects are destroyed in the order MIXFactory, MIXOutput,
// MIXValidSpecs on every path, also when an exception passes through; none
// is caught here.
void MixDriver(void* commandTree, BpProcedure& procedure, ProcedureDataSource& dataSource);

// The host's extension of the run: a pass of its own over the run's factory,
// after the output pass and before the run closes (the check of the saved
// files and the notes table), when the run is still going on and the host is
// not fatal. With none set (the default) the run is the sequence above.
typedef void (*MixHostPass)(MIXFactory& factory);
void MixSetHostPass(MixHostPass pass);
