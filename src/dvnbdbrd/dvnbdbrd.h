// The readers that the core model calls back when it meets an object that it
// knows only by a name or a key.
//
// DvnODBCReader reads one entity from the database: it stands behind the
// parse of a TRX file and the process cleaner. Each read runs through a
// facade of its own, and so a connection of its own, always to the data
// source of the machine profile: it never shares the connection of the
// operation that it interrupts. Categories, data structures, programs and
// the servers of program activities are read, and the inside of a block
// (ReadBlock, the editor's LoadBlock); processes and activities are not
// read: their entities stay as they are.
//
// DvnfExportFrontend is the reader of the deep export: through the front end
// and the connection of the export, it pulls in what the processes,
// categories, programs and structures read so far refer to.
#pragma once

#include "dvnbdbif.h"
#include "dvnfcorn.h"

class DvnODBCReader : public DvnfFrontendReader {
public:
    // process: the process in whose context activities are read; may be null.
    DvnODBCReader(DvnfTRXData& data, DvnfEntity* process);
    ~DvnODBCReader() override;

    // data is not used: the reader works on the data given to the constructor.
    // Fills name or key (GetName), then reads the entity by its type; a new
    // entity that was read counts as unchanged (state 3).
    void ReadEntity(DvnfTRXData& data, DvnfEntity& entity) override;
    // The facade's GetName.
    DvnfString GetName(DvnfEntity& entity) override;
    // The inner diagram of a block activity of the process.
    void ReadBlock(DvnfTRXData& data, DvnfEntity& block, bool deep) override;
    // The stored key of a data structure; empty for every other type.
    DvnfString GetOID(DvnfEntity& entity) override;

private:
    DvnConvCoreDbIF m_facade;
    DvnfEntity* _process;
};

class DvnConvCoreDbFe;

class DvnfExportFrontend : public DvnfFrontendReader {
public:
    ~DvnfExportFrontend() override;
    // The front end whose connection and prefix the reads use.
    void GetClassPtr(DvnConvCoreDbFe* frontEnd) { m_pFrontEnd = frontEnd; }
    // Reads what the entities of the types "Process", "Category", "Program"
    // and "DataStructure" of data stand for, in that order, and again while
    // a walk brings objects that name further ones.
    void ExportDeep(DvnfTRXData& data);
    // The row of an entity not read yet (state 0; a process by name, the
    // others by key): when there is one, the front end reads that object.
    void ReadEntity(DvnfTRXData& data, DvnfEntity& entity) override;

private:
    DvnConvCoreDbFe* m_pFrontEnd = nullptr;
};
