// Until the process loads of the front end exist, the editor's reads find
// nothing: a process is not there, attributes cannot be read (8), a block
// stays as it is.
#include "editorloads.h"

namespace editorloads {

DvnfEntity& ProcessByName(DvnConvCoreDbFe&, const DvnString&) { return DvnfEntity::undefined; }
int ProcessAttributes(DvnConvCoreDbFe&, DvnfEntity&, DvnProcessSet&) { return 8; }
int ActivityAttributes(DvnConvCoreDbFe&, DvnfEntity&, DvnActivitySet&) { return 8; }
void BlockActivity(DvnConvCoreDbFe&, DvnfEntity&, const CString&, std::vector<DvnfEntity*>*) {}

}  // namespace editorloads
