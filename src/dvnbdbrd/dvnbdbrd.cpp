// The on-demand reader.
#include "dvnbdbrd.h"

#include <cstring>

DvnODBCReader::DvnODBCReader(DvnfTRXData& data, DvnfEntity* process) : m_facade(&data), _process(process) {}

DvnODBCReader::~DvnODBCReader() = default;

void DvnODBCReader::ReadEntity(DvnfTRXData&, DvnfEntity& entity) {
    if (!entity.IsValid()) return;
    // An activity is read in the context of a process: only a reader built
    // with one may be asked for activities.
    if (std::strcmp(entity.Type().Name(), "Activity") == 0)
        DVNK_REQUIRE(_process != nullptr, "_process != 0");
    // No single-object load exists yet: the entity stays as the file gave it,
    // with its state untouched.
}

DvnfString DvnODBCReader::GetName(DvnfEntity&) { return DvnfString(""); }

void DvnODBCReader::ReadBlock(DvnfTRXData&, DvnfEntity& block, bool) {
    if (!block.IsValid()) return;
    DVNK_REQUIRE(std::strcmp(block.Type().Name(), "Activity") == 0, "block is an Activity");
    DVNK_REQUIRE(_process != nullptr, "_process != 0");
}

DvnfString DvnODBCReader::GetOID(DvnfEntity&) { return DvnfString(""); }
