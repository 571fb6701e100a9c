#pragma once

class BpCellText;

// Where a message is shown: 0 suppresses it (an error still turns the host
// fatal); any other value writes it into the output.
enum BpErrorShow { BpErrorShowNone = 0, BpErrorShowLog = 1, BpErrorShowOutput = 2 };

// How grave a message is. An error turns the host fatal for the rest of the
// command (ZORV_Session::IsFatal, ProcedureDataSource::FatalError).
enum BpErrorLevel { BpErrorLevelNote = 1, BpErrorLevelWarning = 2, BpErrorLevelError = 3 };

// Issues a message in the current procedure's output (the host document when
// there is none), in the caption-and-note display setting. Levels below 1
// count as notes and above 3 as errors.
void BpError(const BpCellText& text, BpErrorShow show, BpErrorLevel level);
void BpError(const BpCellText& text, int show, int level);
