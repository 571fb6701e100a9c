#pragma once

class BpCellText;

// One row of the current procedure's notes table (the host document's when
// there is none): a name and a value in a row group. See BpNotesTable for
// the groups.
void AddNotes(int group, const BpCellText& name, const BpCellText& value);
