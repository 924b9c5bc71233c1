// The frame of every load of a single object through the facade: trace,
// user, connection from the machine profile, front end with the prefix, one
// transaction, the work under the four handlers, then the front end gone and
// the connection closed. Used by lookups.cpp and editor.cpp.
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
