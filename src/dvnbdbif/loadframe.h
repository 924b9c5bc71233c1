// The frame of every load of a single object through the facade: trace,
// user, connection from the machine profile, front end with the prefix, one
// transaction, the work under the four handlers, then the front end gone and
// the connection closed; and the read of one row by key inside it. Used by
// lookups.cpp and editor.cpp.
#pragma once

#include <cstring>

#include "dvnbauth.h"
#include "dvnbdbfe.h"
#include "dvnbdbif.h"
#include "guard.h"

namespace dvnguard {

// The words of a load's handlers; GetName's last one says "In".
inline Words LoadWords(const char* where) { return For(where, std::strcmp(where, "GetName") == 0 ? "In" : "in"); }

}  // namespace dvnguard

namespace dvnload {

// A completeness flag, on a valid entity only.
inline void SetFlag(DvnfEntity& entity, unsigned bit) {
    if (entity.IsValid()) entity.SetFlags(bit);
}

// The long attributes of one row, found by key: the recordset opened on the
// filter (a database exception here is 51368 and level 12), 8 with the
// not-found message when no row has the key, else read(row) and the flag
// "attributes complete". Used by the editor's loads and the data mapping.
struct AttributeRead {
    const char* table;
    const char* keyColumn;
    long notFound;
};

template <class Set, class Read>
int ReadAttributes(CDatabase& db, const CString& prefix, const AttributeRead& what, DvnfEntity& entity,
                   DvnfMessageHandler& handler, Read read) {
    Set rs(&db);
    rs.m_strFilter = CString(what.keyColumn) + " =" + ReturnQuotedString(entity.OID(), "'", "'").c_str();
    try {
        rs.Open(CRecordset::snapshot, prefix + what.table, CRecordset::readOnly);
    } catch (CDBException* e) {
        handler.Report(51368, DvnString(e->m_strError.c_str()));
        DVN_TRACE(1, 2, "Exception opening table " << what.table << ": rc =" << e->m_nRetCode << "Error: "
                                                    << e->m_strError << "State: " << e->m_strStateNativeOrigin);
        e->Delete();
        return 12;
    }
    if (rs.IsEOF()) {
        rs.Close();
        handler.Report(what.notFound, entity.Name());
        return 8;
    }
    rs.MoveFirst();
    const int level = read(rs);
    SetFlag(entity, DvnfEntity::FlagAttributesComplete);
    rs.Close();
    return level;
}

}  // namespace dvnload

// first: traced with the name before the open; second (null: none) with the
// name after BeginTrans. work(frontEnd) gives the level; after() runs once
// the transaction is committed. A failed open gives its level and runs
// nothing; after a handler the level is 12 and the transaction is rolled
// back.
template <class Work, class After>
int DvnConvCoreDbIF::LoadFrame(const DvnString& name, const char* first, const char* second, const char* where,
                               Work work, After after) {
    DVN_TRACE(1, 8, first << name);
    DvnBTAuthorization* person = DvnBTAuthorization::GetInstance();
    DVNK_REQUIRE(person != nullptr, "person != 0");
    CDatabase& db = *m_pDatabase;
    const int opened = OpenDatabaseFromProfile(db, person->DbUser(), person->DbPassword());
    if (opened != 0) {
        DVN_TRACE(1, 8, "Open database failed");
        return opened;
    }
    int level = 0;
    DvnConvCoreDbFe* frontEnd = nullptr;
    dvnguard::Run(*m_pData->MessageHandler(), dvnguard::LoadWords(where), level, [&] {
        frontEnd = new DvnConvCoreDbFe(&db, m_pData);
        frontEnd->SetTablePrefix(GetTablePrefix(db));
        db.BeginTrans();
        if (second) DVN_TRACE(1, 8, second << name);
        level = work(*frontEnd);
        db.CommitTrans();
        after();
    });
    if (db.InTransaction()) {
        try {
            db.Rollback();
        } catch (CDBException* e) {
            e->Delete();
        }
    }
    delete frontEnd;
    if (db.IsOpen()) db.Close();
    return level;
}
