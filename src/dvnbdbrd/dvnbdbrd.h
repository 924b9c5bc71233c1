// DvnODBCReader: the reader that the core model calls back when it meets an
// object that a file or a loaded row only names. Each read runs through a
// facade of its own, and so a connection of its own, always to the data
// source of the machine profile: it never shares the connection of the
// operation that it interrupts.
//
// What it can fill depends on the loads that exist. None of the single-object
// loads (processes, categories, programs, data structures, execution units,
// blocks) is there yet: until they are, ReadEntity and ReadBlock leave the
// entity as it is, GetName and GetOID answer with an empty string, which is
// how the reader says that the object is not in the database. The parse of
// a file goes on with what the file itself holds.
#pragma once

#include "dvnbdbif.h"
#include "dvnfcorn.h"

class DvnODBCReader : public DvnfFrontendReader {
public:
    // process: the process in whose context activities are read; may be null.
    DvnODBCReader(DvnfTRXData& data, DvnfEntity* process);
    ~DvnODBCReader() override;

    // data is not used: the reader works on the data given to the constructor.
    void ReadEntity(DvnfTRXData& data, DvnfEntity& entity) override;
    DvnfString GetName(DvnfEntity& entity) override;
    virtual void ReadBlock(DvnfTRXData& data, DvnfEntity& block, bool deep);
    virtual DvnfString GetOID(DvnfEntity& entity);

private:
    DvnConvCoreDbIF m_facade;
    DvnfEntity* _process;
};
