// The reads of the front end that the editor's operations run inside their
// frame: a process by name, the long attributes of a process or an activity
// from its row, and the inside of a block.
#pragma once

#include <vector>

#include "dvnbdbfe.h"
#include "dvnprocsets.h"

namespace editorloads {

// The process of that name, first level only, in state 3; undefined when none.
DvnfEntity& ProcessByName(DvnConvCoreDbFe& fe, const DvnString& name);
// The long attributes of the process whose row is given; the level.
int ProcessAttributes(DvnConvCoreDbFe& fe, DvnfEntity& process, DvnProcessSet& row);
// The long attributes of the activity whose row is given; the level.
int ActivityAttributes(DvnConvCoreDbFe& fe, DvnfEntity& activity, DvnActivitySet& row);
// The diagram inside the block, with every activity's attributes; blocks
// null: this level only, else each block met inside is appended to it.
void BlockActivity(DvnConvCoreDbFe& fe, DvnfEntity& block, const CString& processId, std::vector<DvnfEntity*>* blocks);

}  // namespace editorloads
