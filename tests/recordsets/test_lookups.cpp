// The lookups of the recordset classes on both databases: the tombstone
// rule, quoting, empty results, failures, and an index behind each filter.
#include <gtest/gtest.h>

#include <functional>

#include "dvnrecordsets.h"
#include "repositorydb.h"

namespace {

// A name as the callers pass it: an SQL literal with quotes doubled.
CString Quoted(const char* name) { return CString(DvnString(name).AsQuoted("'", "'").str()); }

std::string Lower(std::string s) {
    for (char& c : s) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    return s;
}

class Lookups : public RepositoryTest {
protected:
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
};

// A row of each kind in a table looked up with the tombstone flag: clean,
// tombstone (CHECKED_OUT 4) with a quote in its name, checked out (3).
TEST_P(Lookups, ByNameAndByIdHonourTombstonesAndQuotes) {
    DvnRoleSet role(&Db());
    DvnSystemSet sys(&Db());
    struct Family {
        const char* table;
        const char* key;
        bool quotedName;  // false: the lookup takes the bare name
        std::function<CString(const CString&, bool)> byName;
        std::function<DvnfString(const CString&, bool)> byId;
    };
    const std::vector<Family> families = {
        {"ROLE", "ROLE_ID", true, [&](auto& n, bool d) { return role.GetRoleID(n, prefix, d); },
         [&](auto& i, bool d) { return role.GetName(i, prefix, d); }},
        {"SYSTEM", "SYSTEM_ID", false, [&](auto& n, bool d) { return sys.GetSystemID(n, prefix, d); },
         [&](auto& i, bool d) { return sys.GetName(i, prefix, d); }},
    };
    for (const auto& f : families) {
        SCOPED_TRACE(f.table);
        auto name = [&](const char* n) { return f.quotedName ? Quoted(n) : CString(n); };
        const std::string insert = std::string("INSERT INTO DVBT.") + f.table + " (" + f.key + ", NAME, CHECKED_OUT) ";
        Exec(insert + "VALUES ('K1', 'Plain', 0)");
        Exec(insert + "VALUES ('K2', 'O''Brien', 4)");
        Exec(insert + "VALUES ('K3', 'Changed', 3)");
        EXPECT_EQ(f.byName(name("Plain"), false), "K1");
        EXPECT_EQ(f.byName(name("Changed"), false), "K3");
        EXPECT_EQ(f.byName(name("O'Brien"), false), "");
        EXPECT_EQ(f.byName(name("O'Brien"), true), "K2");
        EXPECT_EQ(f.byName(name("plain"), true), "");
        EXPECT_EQ(std::string(f.byId("K1", false)), "Plain");
        EXPECT_EQ(std::string(f.byId("K2", false)), "");
        EXPECT_EQ(std::string(f.byId("K2", true)), "O'Brien");
    }
    // Person ids are found by the user id in upper case, whatever the case given.
    DvnPersonSet person(&Db());
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P1', 'JDOE', 0)");
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P2', 'D''ARCY', 4)");
    EXPECT_EQ(person.GetPersonID(Quoted("jDoe"), prefix, false), "P1");
    EXPECT_EQ(person.GetPersonID(Quoted("d'Arcy"), prefix, false), "");
    EXPECT_EQ(person.GetPersonID(Quoted("d'Arcy"), prefix, true), "P2");
}

// The lookups whose rows depend on more than one column, on a default or on
// another table.
TEST_P(Lookups, BlocksDefaultsQueueManagerNamesAndAgents) {
    Exec("INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, INSIDE_BLOCK) VALUES ('A1', 'Check', 'P1', NULL)");
    Exec("INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, INSIDE_BLOCK) VALUES ('A2', 'Check', 'P1', 'B1')");
    Exec("INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID, BLOCK_AID) VALUES ('SO1', 1, 'P1', NULL)");
    Exec("INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID, BLOCK_AID) VALUES ('SO2', 1, 'P1', 'B1')");
    DvnActivitySet act(&Db());
    EXPECT_EQ(act.GetAID(Quoted("Check"), "P1", "", prefix), "A1");
    EXPECT_EQ(act.GetAID(Quoted("Check"), "P1", "B1", prefix), "A2");
    EXPECT_EQ(act.GetBlockID("A1", prefix), "");
    DvnSourceSet source(&Db());
    EXPECT_EQ(source.GetSourceID(1, "P1", prefix), "SO1");
    EXPECT_EQ(source.GetSourceID(1, "P1", "B1", prefix), "SO2");

    DvnStaffLevelSet level(&Db());
    DvnSystemSet system(&Db());
    EXPECT_EQ(level.GetDefaultLevelID(prefix), -1);
    EXPECT_EQ(system.GetPrimarySystem(prefix), "");
    Exec("INSERT INTO DVBT.STAFF_LEVEL (LEVEL_ID, NAME, CHECKED_OUT) VALUES (3, 'Three', 0)");
    Exec("INSERT INTO DVBT.SYSTEM (SYSTEM_ID, NAME, SYSTEM_IDENTIFIER, PRIMARY_SYSTEM, CHECKED_OUT) "
         "VALUES ('S1', 'sys1', 42, 0, 0)");
    Exec("INSERT INTO DVBT.SYSTEM (SYSTEM_ID, NAME, SYSTEM_IDENTIFIER, PRIMARY_SYSTEM, CHECKED_OUT) "
         "VALUES ('S2', 'sys2', 43, 1, 0)");
    EXPECT_EQ(level.GetLevelID(3, prefix), 3);
    EXPECT_EQ(level.GetLevelID(4, prefix), -1);
    EXPECT_EQ(level.GetDefaultLevelID(prefix), 3);
    EXPECT_EQ(system.GetPrimarySystem(prefix), "S2");
    EXPECT_TRUE(system.GetSystemIdentifier(42, prefix));
    EXPECT_FALSE(system.GetSystemIdentifier(44, prefix));

    // A definition may keep its own queue manager name, not take another's.
    Exec("INSERT INTO DVBT.QUEUE_MANAGER (QUEUE_MANAGER_ID, NAME, QUEUE_MANAGER_NAME, CHECKED_OUT) "
         "VALUES ('Q1', 'QM1', 'MQ1', 0)");
    DvnQueueManagerSet qm(&Db());
    EXPECT_TRUE(qm.IsValidQueueManagerName("MQ1", Quoted("QM1"), prefix));
    EXPECT_FALSE(qm.IsValidQueueManagerName("MQ1", Quoted("QM2"), prefix));
    EXPECT_TRUE(qm.IsValidQueueManagerName("MQ9", Quoted("QM2"), prefix));

    // An agent is found by its person's user id, which the schema keeps in
    // PE_AGENT.NAME as agents and persons are written or changed.
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P1', 'ANNA', 0)");
    Exec("INSERT INTO DVBT.PE_AGENT (PE_AGENT_ID, ASSOC_USER, CHECKED_OUT) VALUES ('A1', 'P1', 0)");
    Exec("INSERT INTO DVBT.PE_AGENT (PE_AGENT_ID, ASSOC_USER, CHECKED_OUT) VALUES ('A2', 'P2', 0)");
    DvnPEASet agent(&Db());
    EXPECT_EQ(agent.GetPEAID("ANNA", prefix), "A1");
    EXPECT_EQ(agent.GetPEAID("BERT", prefix), "");
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P2', 'BERT', 0)");
    EXPECT_EQ(agent.GetPEAID("BERT", prefix), "A2");
    DvnPEASet rs(&Db());  // as the agent store changes it
    rs.m_strFilter = "PE_AGENT_ID = 'A1'";
    ASSERT_TRUE(rs.Open(CRecordset::snapshot, prefix + "PE_AGENT", CRecordset::none));
    rs.Edit();
    rs.m_ASSOC_USER = "P2";
    rs.Update();
    rs.Close();
    EXPECT_EQ(agent.GetPEAID("ANNA", prefix), "");
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.PE_AGENT WHERE PE_AGENT_ID = 'A1'"), "BERT");
}

// One lookup of each result type and way of failing (all run through one
// frame): whether a database failure goes up to the caller or is swallowed,
// and the result it gives then and on an empty table.
struct LookupCase {
    const char* member;
    const char* table;
    bool goesUp;
    const char* emptyResult;
    // Runs the lookup on a recordset of its own; gives back its filter.
    std::function<std::string(CDatabase&, const CString&, std::string& filter)> run;
};

std::string Render(const CString& s) { return s.str(); }
std::string Render(const DvnfString& s) { return std::string(s); }
std::string Render(long n) { return std::to_string(n); }
std::string Render(bool b) { return b ? "true" : "false"; }

template <class RS, class F>
LookupCase Case(const char* member, const char* table, bool goesUp, const char* emptyResult, F call) {
    return {member, table, goesUp, emptyResult, [call](CDatabase& db, const CString& prefix, std::string& filter) {
                RS rs(&db);
                struct Report {  // also when the lookup raises
                    RS& rs;
                    std::string& filter;
                    ~Report() {
                        filter = rs.m_strFilter.str();
                        EXPECT_FALSE(rs.IsOpen());
                    }
                } report{rs, filter};
                return Render(call(rs, prefix));
            }};
}

std::vector<LookupCase> RepresentativeLookups() {
    const CString quoted = Quoted("Nobody"), bare = "Nobody", key = "K0";
    return {
        Case<DvnRoleSet>("GetRoleID", "ROLE", false, "", [=](auto& r, auto& p) { return r.GetRoleID(quoted, p, false); }),
        Case<DvnRoleSet>("GetName", "ROLE", true, "", [=](auto& r, auto& p) { return r.GetName(key, p, true); }),
        Case<DvnCategorySet>("GetCatID", "CATEGORY", true, "",
                             [=](auto& r, auto& p) { return r.GetCatID(quoted, p, false); }),
        Case<DvnSystemSet>("GetSystemIdentifier", "SYSTEM", false, "false",
                           [=](auto& r, auto& p) { return r.GetSystemIdentifier(42, p); }),
        Case<DvnStaffLevelSet>("GetLevelID", "STAFF_LEVEL", false, "-1",
                               [=](auto& r, auto& p) { return r.GetLevelID(3, p); }),
        Case<DvnQueueManagerSet>("IsValidQueueManagerName", "QUEUE_MANAGER", false, "true",
                                 [=](auto& r, auto& p) { return r.IsValidQueueManagerName(bare, quoted, p); }),
        Case<DvnActivitySet>("GetAID", "ACTIVITY", false, "",
                             [=](auto& r, auto& p) { return r.GetAID(quoted, key, "", p); }),
        Case<DvnActivitySet>("GetPID", "ACTIVITY", true, "", [=](auto& r, auto& p) { return r.GetPID(key, p); }),
    };
}

// On a schema that is not there a lookup either raises and writes nothing,
// or writes the driver's text and an end of line and gives its empty
// result. On the real schema its filter searches an index (SQLite's plan).
TEST_P(Lookups, EachKindFailsAsDocumentedAndFindsItsRowsThroughAnIndex) {
    for (const auto& c : RepresentativeLookups()) {
        SCOPED_TRACE(std::string(c.member) + " on " + c.table);
        std::string filter, result = "unset";
        bool raised = false;
        testing::internal::CaptureStdout();
        try {
            result = c.run(Db(), "NOPE.", filter);
        } catch (CDBException* e) {
            raised = !e->m_strError.IsEmpty();
            e->Delete();
        }
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_EQ(raised, c.goesUp);
        if (c.goesUp) {
            EXPECT_EQ(out, "");
        } else {
            EXPECT_EQ(result, c.emptyResult);
            ASSERT_FALSE(out.empty());
            EXPECT_NE(Lower(out).find(Lower(c.table)), std::string::npos) << out;
            EXPECT_EQ(out.back(), '\n');
        }

        EXPECT_EQ(c.run(Db(), prefix, filter), c.emptyResult);  // the tables are empty
        if (IsPostgres()) continue;
        for (const auto& row :
             QueryRows(Db(), "EXPLAIN QUERY PLAN SELECT * FROM DVBT." + std::string(c.table) + " WHERE " + filter))
            EXPECT_EQ(row.find("|SCAN "), std::string::npos) << filter << ": " << row;
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(Lookups);

}  // namespace
