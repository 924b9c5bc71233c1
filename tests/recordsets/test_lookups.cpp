// The lookups of the recordset classes on both databases: filters, the
// tombstone rule, quoting, empty results and failures.
#include <gtest/gtest.h>

#include <functional>
#include <memory>

#include "dvnrecordsets.h"
#include "repositorydb.h"

namespace {

// A name as the callers pass it: an SQL literal with quotes doubled.
CString Quoted(const char* name) { return CString(DvnString(name).AsQuoted("'", "'").str()); }

class Lookups : public RepositoryTest {
protected:
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
    template <class F>
    std::string Stdout(F f) {
        testing::internal::CaptureStdout();
        f();
        return testing::internal::GetCapturedStdout();
    }
};

// The classes looked up by name with the tombstone flag: one clean row and
// one tombstone whose name holds a quote, in each table.
TEST_P(Lookups, ByNameAndByIdHonourTombstonesAndQuotes) {
    struct Family {
        const char* table;
        const char* key;
        bool quotedName;  // false: the lookup takes the bare name
        std::function<CString(const CString&, bool)> byName;
        std::function<DvnfString(const CString&, bool)> byId;
    };
    DvnCategorySet cat(&Db());
    DvnDataStructureSet ds(&Db());
    DvnProgramSet prog(&Db());
    DvnRoleSet role(&Db());
    DvnOrganizationSet org(&Db());
    DvnSystemSet sys(&Db());
    const std::vector<Family> families = {
        {"CATEGORY", "CATID", true, [&](auto& n, bool d) { return cat.GetCatID(n, prefix, d); },
         [&](auto& i, bool d) { return cat.GetName(i, prefix, d); }},
        {"DATA_STRUCTURE", "DSID", true, [&](auto& n, bool d) { return ds.GetDsID(n, prefix, d); },
         [&](auto& i, bool d) { return ds.GetName(i, prefix, d); }},
        {"PROGRAM", "PROGRAM_ID", true, [&](auto& n, bool d) { return prog.GetProgramID(n, prefix, d); },
         [&](auto& i, bool d) { return prog.GetName(i, prefix, d); }},
        {"ROLE", "ROLE_ID", true, [&](auto& n, bool d) { return role.GetRoleID(n, prefix, d); },
         [&](auto& i, bool d) { return role.GetName(i, prefix, d); }},
        {"ORGANIZATION", "ORGANIZATION_ID", true,
         [&](auto& n, bool d) { return org.GetOrganizationID(n, prefix, d); },
         [&](auto& i, bool d) { return org.GetName(i, prefix, d); }},
        {"SYSTEM", "SYSTEM_ID", false, [&](auto& n, bool d) { return sys.GetSystemID(n, prefix, d); },
         [&](auto& i, bool d) { return sys.GetName(i, prefix, d); }},
    };
    for (const auto& f : families) {
        SCOPED_TRACE(f.table);
        auto name = [&](const char* n) { return f.quotedName ? Quoted(n) : CString(n); };
        const std::string insert = std::string("INSERT INTO DVBT.") + f.table + " (" + f.key + ", NAME, CHECKED_OUT) ";
        EXPECT_EQ(f.byName(name("Plain"), false), "");  // an empty table
        Exec(insert + "VALUES ('K1', 'Plain', 0)");
        Exec(insert + "VALUES ('K2', 'O''Brien', 4)");
        Exec(insert + "VALUES ('K3', 'Changed', 3)");
        EXPECT_EQ(f.byName(name("Plain"), false), "K1");
        EXPECT_EQ(f.byName(name("Changed"), false), "K3");
        EXPECT_EQ(f.byName(name("O'Brien"), false), "");
        EXPECT_EQ(f.byName(name("O'Brien"), true), "K2");
        EXPECT_EQ(f.byName(name("plain"), true), "");
        EXPECT_EQ(f.byName(name("Nobody"), true), "");
        EXPECT_EQ(std::string(f.byId("K1", false)), "Plain");
        EXPECT_EQ(std::string(f.byId("K2", false)), "");
        EXPECT_EQ(std::string(f.byId("K2", true)), "O'Brien");
        EXPECT_TRUE(f.byId("K9", true).IsEmpty());
    }
}

TEST_P(Lookups, PersonIdsAreFoundInUpperCaseWhateverTheCaseOfTheName) {
    DvnPersonSet person(&Db());
    EXPECT_EQ(person.GetPersonID(Quoted("jdoe"), prefix, false), "");
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P1', 'JDOE', 0)");
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P2', 'D''ARCY', 4)");
    EXPECT_EQ(person.GetPersonID(Quoted("jDoe"), prefix, false), "P1");
    EXPECT_EQ(person.GetPersonID(Quoted("JDOE"), prefix, false), "P1");
    EXPECT_EQ(person.GetPersonID(Quoted("d'Arcy"), prefix, false), "");
    EXPECT_EQ(person.GetPersonID(Quoted("d'Arcy"), prefix, true), "P2");
    EXPECT_EQ(std::string(person.GetName("P1", prefix, false)), "JDOE");
    EXPECT_EQ(std::string(person.GetName("P2", prefix, false)), "");
    EXPECT_EQ(std::string(person.GetName("P2", prefix, true)), "D'ARCY");
}

TEST_P(Lookups, LevelsGiveMinusOneWithoutARow) {
    DvnStaffLevelSet level(&Db());
    EXPECT_EQ(level.GetDefaultLevelID(prefix), -1);
    EXPECT_EQ(level.GetLevelID(3, prefix), -1);
    Exec("INSERT INTO DVBT.STAFF_LEVEL (LEVEL_ID, NAME, CHECKED_OUT) VALUES (3, 'Three', 0)");
    EXPECT_EQ(level.GetLevelID(3, prefix), 3);
    EXPECT_EQ(level.GetLevelID(4, prefix), -1);
    EXPECT_EQ(level.GetDefaultLevelID(prefix), 3);
}

TEST_P(Lookups, TopologyLookupsAndDefaults) {
    DvnDomainSet domain(&Db());
    DvnSystemGroupSet group(&Db());
    DvnSystemSet system(&Db());
    DvnNodeSet node(&Db());
    DvnQueueManagerSet qm(&Db());
    // Empty tables: every text lookup and every default is empty.
    EXPECT_EQ(domain.GetDefaultDomainID(prefix), "");
    EXPECT_EQ(group.GetDefaultSysGrpID(prefix), "");
    EXPECT_EQ(system.GetDefaultSystemID(prefix), "");
    EXPECT_EQ(system.GetPrimarySystem(prefix), "");
    EXPECT_EQ(node.GetDefaultNodeID(prefix), "");
    EXPECT_EQ(qm.GetDefaultQueueManagerID(prefix), "");
    EXPECT_FALSE(system.GetSystemIdentifier(42, prefix));

    Exec("INSERT INTO DVBT.DV_DOMAIN (DOMAIN_ID, NAME, SYSTEM_QUALIFIER, CHECKED_OUT) VALUES ('D1', 'dom', 'QX', 0)");
    Exec("INSERT INTO DVBT.SYSTEM_GROUP (SYSTEM_GROUP_ID, NAME, DV_DOMAIN, CHECKED_OUT) VALUES ('G1', 'grp', 'D1', 0)");
    Exec("INSERT INTO DVBT.SYSTEM (SYSTEM_ID, NAME, SYSTEM_GROUP, SYSTEM_IDENTIFIER, PRIMARY_SYSTEM, CHECKED_OUT) "
         "VALUES ('S1', 'sys1', 'G1', 42, 0, 0)");
    Exec("INSERT INTO DVBT.SYSTEM (SYSTEM_ID, NAME, SYSTEM_GROUP, SYSTEM_IDENTIFIER, PRIMARY_SYSTEM, CHECKED_OUT) "
         "VALUES ('S2', 'sys''2', 'G1', 43, 1, 0)");
    Exec("INSERT INTO DVBT.NODE (NODE_ID, NAME, CHECKED_OUT) VALUES ('N1', 'Default Node', 0)");
    Exec("INSERT INTO DVBT.QUEUE_MANAGER (QUEUE_MANAGER_ID, NAME, QUEUE_MANAGER_NAME, CHECKED_OUT) "
         "VALUES ('Q1', 'QM1', 'MQ1', 0)");
    Exec("INSERT INTO DVBT.QUEUE_MANAGER (QUEUE_MANAGER_ID, NAME, QUEUE_MANAGER_NAME, CHECKED_OUT) "
         "VALUES ('Q2', 'QM2', 'MQ2', 0)");

    EXPECT_EQ(domain.GetDomainID("dom", prefix), "D1");
    EXPECT_EQ(domain.GetDefaultDomainID(prefix), "D1");
    EXPECT_EQ(std::string(domain.GetName("D1", prefix)), "dom");
    EXPECT_EQ(domain.GetPrefix("D1", prefix), "QX");
    EXPECT_EQ(group.GetSysGrpID("grp", prefix), "G1");
    EXPECT_EQ(group.GetDefaultSysGrpID(prefix), "G1");
    EXPECT_EQ(std::string(group.GetName("G1", prefix)), "grp");
    EXPECT_EQ(system.GetSystemID("sys'2", prefix, false), "S2");
    EXPECT_EQ(system.GetSystemGroupID("S1", prefix), "G1");
    EXPECT_EQ(system.GetPrimarySystem(prefix), "S2");
    EXPECT_TRUE(system.GetSystemIdentifier(42, prefix));
    EXPECT_FALSE(system.GetSystemIdentifier(44, prefix));
    EXPECT_FALSE(system.GetDefaultSystemID(prefix).IsEmpty());
    EXPECT_EQ(node.GetNodeID(Quoted("Default Node"), prefix), "N1");
    EXPECT_EQ(node.GetDefaultNodeID(prefix), "N1");
    EXPECT_EQ(std::string(node.GetName("N1", prefix)), "Default Node");
    EXPECT_EQ(qm.GetQueueManagerID(Quoted("QM2"), prefix), "Q2");
    EXPECT_EQ(std::string(qm.GetName("Q2", prefix)), "QM2");
    EXPECT_EQ(qm.GetQmgrName("Q2", prefix), "MQ2");
    // A definition may keep its own queue manager name, not take another's.
    EXPECT_TRUE(qm.IsValidQueueManagerName("MQ1", Quoted("QM1"), prefix));
    EXPECT_FALSE(qm.IsValidQueueManagerName("MQ1", Quoted("QM2"), prefix));
    EXPECT_TRUE(qm.IsValidQueueManagerName("MQ9", Quoted("QM2"), prefix));
}

TEST_P(Lookups, ServersAndAgents) {
    Exec("INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) VALUES ('PS1', 'PES', 'S1', 0)");
    Exec("INSERT INTO DVBT.USER_PE_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) VALUES ('US1', 'UPES', 'S2', 0)");
    Exec("INSERT INTO DVBT.GATEWAY_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) VALUES ('GW1', 'GATE', 'S1', 0)");
    DvnPEServerSet pes(&Db());
    DvnUPEServerSet upes(&Db());
    DvnServerSet server(&Db());
    EXPECT_EQ(pes.GetPESID("PES", "S1", prefix), "PS1");
    EXPECT_EQ(pes.GetPESID("PES", "S2", prefix), "");
    CString system;
    EXPECT_EQ(pes.GetPESIDNoSystem("PES", system, prefix), "PS1");
    EXPECT_EQ(system, "S1");
    EXPECT_EQ(pes.GetSystem("PS1", prefix), "S1");
    EXPECT_EQ(std::string(pes.GetName("PS1", prefix)), "PES");
    EXPECT_EQ(upes.GetUPESID("UPES", "S2", prefix), "US1");
    EXPECT_EQ(upes.GetUPESIDNoSystem("UPES", system, prefix), "US1");
    EXPECT_EQ(system, "S2");
    EXPECT_EQ(std::string(upes.GetName("US1", prefix)), "UPES");
    EXPECT_EQ(server.GetServerID("GATE", "S1", prefix, "GATEWAY_SERVER"), "GW1");
    EXPECT_EQ(server.GetServerID("GATE", "S1", prefix, "MODELLING_SERVER"), "");

    // An agent is found by its person's user id, which the schema keeps in
    // PE_AGENT.NAME, whichever of the two rows comes first.
    DvnPEASet agent(&Db());
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P1', 'ANNA', 0)");
    {  // as the agent store writes it
        DvnPEASet rs(&Db());
        rs.m_strFilter = "ASSOC_USER = 'P1'";
        ASSERT_TRUE(rs.Open(CRecordset::snapshot, prefix + "PE_AGENT", CRecordset::none));
        rs.AddNew();
        rs.m_PE_AGENT_ID = "A1";
        rs.m_ASSOC_USER = "P1";
        rs.m_CHECKED_OUT = 0;
        rs.Update();
        rs.Close();
    }
    Exec("INSERT INTO DVBT.PE_AGENT (PE_AGENT_ID, ASSOC_USER, CHECKED_OUT) VALUES ('A2', 'P2', 0)");
    EXPECT_EQ(agent.GetPEAID("ANNA", prefix), "A1");
    EXPECT_EQ(agent.GetPEAID("BERT", prefix), "");
    Exec("INSERT INTO DVBT.PERSON (PERSON_ID, USERID, CHECKED_OUT) VALUES ('P2', 'BERT', 0)");
    EXPECT_EQ(agent.GetPEAID("BERT", prefix), "A2");
    {
        DvnPEASet rs(&Db());
        rs.m_strFilter = "PE_AGENT_ID = 'A1'";
        ASSERT_TRUE(rs.Open(CRecordset::snapshot, prefix + "PE_AGENT", CRecordset::none));
        rs.Edit();
        rs.m_ASSOC_USER = "P2";
        rs.Update();
        rs.Close();
    }
    EXPECT_EQ(agent.GetPEAID("ANNA", prefix), "");
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.PE_AGENT WHERE PE_AGENT_ID = 'A1'"), "BERT");
}

TEST_P(Lookups, DiagramNodesFoundInsideAndOutsideBlocks) {
    Exec("INSERT INTO DVBT.PROCESS (PID, NAME, CHECKED_OUT) VALUES ('P1', 'Pay''roll', 0)");
    Exec("INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, INSIDE_BLOCK) VALUES ('A1', 'Check', 'P1', NULL)");
    Exec("INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, INSIDE_BLOCK) VALUES ('B1', 'Block', 'P1', NULL)");
    Exec("INSERT INTO DVBT.ACTIVITY (AID, NAME, PID, INSIDE_BLOCK) VALUES ('A2', 'Check', 'P1', 'B1')");
    Exec("INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID, BLOCK_AID) VALUES ('SO1', 1, 'P1', NULL)");
    Exec("INSERT INTO DVBT.SOURCE (SOURCE_ID, SOURCE_NUMBER, PID, BLOCK_AID) VALUES ('SO2', 1, 'P1', 'B1')");
    Exec("INSERT INTO DVBT.SINK (SINK_ID, SINK_NUMBER, PID, BLOCK_AID) VALUES ('SI1', 2, 'P1', NULL)");
    Exec("INSERT INTO DVBT.SINK (SINK_ID, SINK_NUMBER, PID, BLOCK_AID) VALUES ('SI2', 2, 'P1', 'B1')");
    DvnActivitySet act(&Db());
    EXPECT_EQ(act.GetAID(Quoted("Check"), "P1", "", prefix), "A1");
    EXPECT_EQ(act.GetAID(Quoted("Check"), "P1", "B1", prefix), "A2");
    EXPECT_EQ(act.GetAID(Quoted("Check"), "P2", "", prefix), "");
    EXPECT_EQ(act.GetPID("A2", prefix), "P1");
    EXPECT_EQ(act.GetBlockID("A2", prefix), "B1");
    EXPECT_EQ(act.GetBlockID("A1", prefix), "");
    EXPECT_EQ(std::string(act.GetName("A2", prefix)), "Check");
    DvnSourceSet source(&Db());
    DvnSinkSet sink(&Db());
    EXPECT_EQ(source.GetSourceID(1, "P1", prefix), "SO1");
    EXPECT_EQ(source.GetSourceID(1, "P1", "B1", prefix), "SO2");
    EXPECT_EQ(source.GetSourceID(2, "P1", prefix), "");
    EXPECT_EQ(sink.GetSinkID(2, "P1", prefix), "SI1");
    EXPECT_EQ(sink.GetSinkID(2, "P1", "B1", prefix), "SI2");
    DvnSimplePrcSet process(&Db());
    EXPECT_EQ(process.GetProcessID(Quoted("Pay'roll"), prefix), "P1");
    EXPECT_EQ(process.GetProcessID(Quoted("payroll"), prefix), "");
}

TEST_P(Lookups, ListsAreFoundInTheTableTheCallerNames) {
    Exec("INSERT INTO DVBT.WORK_LIST (LIST_ID, NAME, BEEP_OPTION, CHECKED_OUT) VALUES ('W1', 'Mine', 1, 0)");
    Exec("INSERT INTO DVBT.PRC_TEMPLATE_LIST (LIST_ID, NAME, CHECKED_OUT) VALUES ('T1', 'Mine', 0)");
    DvnListSet list(&Db());
    EXPECT_EQ(list.GetListID(Quoted("Mine"), prefix, "WORK_LIST"), "W1");
    EXPECT_EQ(list.GetListID(Quoted("Mine"), prefix, "PRC_TEMPLATE_LIST"), "T1");
    EXPECT_EQ(list.GetListID(Quoted("Mine"), prefix, "ACT_INSTANCE_LIST"), "");
}

// A lookup by name swallows a database failure: the error text and an end
// of line on standard output, the empty result. A lookup by key lets it go up.
TEST_P(Lookups, AFailingOpenGivesTheEmptyResultOrGoesUp) {
    ExecAll(Db(), {"DROP TABLE DVBT.ROLE", "DROP TABLE DVBT.STAFF_LEVEL", "DROP TABLE DVBT.QUEUE_MANAGER",
                   "DROP TABLE DVBT.CATEGORY", "DROP TABLE DVBT.PROCESS"});
    DvnRoleSet role(&Db());
    CString id = "unset";
    std::string out = Stdout([&] { id = role.GetRoleID(Quoted("Boss"), prefix, false); });
    EXPECT_EQ(id, "");
    ASSERT_FALSE(out.empty());
    EXPECT_EQ(out.back(), '\n');
    std::string lower = out;
    for (char& c : lower) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_NE(lower.find("role"), std::string::npos) << out;  // the driver's text names the table
    EXPECT_FALSE(role.IsOpen());

    DvnStaffLevelSet level(&Db());
    long levelId = 0;
    Stdout([&] { levelId = level.GetLevelID(1, prefix); });
    EXPECT_EQ(levelId, -1);
    DvnQueueManagerSet qm(&Db());
    bool valid = false;
    Stdout([&] { valid = qm.IsValidQueueManagerName("MQ1", Quoted("QM1"), prefix); });
    EXPECT_TRUE(valid);
    DvnSimplePrcSet process(&Db());
    EXPECT_EQ(Stdout([&] { EXPECT_EQ(process.GetProcessID(Quoted("P"), prefix), ""); }).empty(), false);

    DvnCategorySet cat(&Db());
    bool raised = false;
    out = Stdout([&] {
        try {
            cat.GetCatID(Quoted("C"), prefix, false);
        } catch (CDBException* e) {
            raised = !e->m_strError.IsEmpty();
            e->Delete();
        }
    });
    EXPECT_TRUE(raised);
    EXPECT_EQ(out, "");
    EXPECT_FALSE(cat.IsOpen());
    raised = false;
    try {
        role.GetName("R1", prefix, true);
    } catch (CDBException* e) {
        raised = true;
        e->Delete();
    }
    EXPECT_TRUE(raised);
}

// Every lookup once: the table it reads, whether a database failure goes up
// to the caller or is swallowed, and the result it gives then.
struct LookupCase {
    const char* member;
    const char* table;
    bool goesUp;
    const char* emptyResult;  // what a swallowed failure gives
    // Runs the lookup on a recordset of its own; filter and open receive the
    // recordset's filter and whether it is open afterwards.
    std::function<std::string(CDatabase&, const CString&, std::string& filter, bool& open)> run;
};

std::string Render(const CString& s) { return s.str(); }
std::string Render(const DvnfString& s) { return s.IsNull() ? "<null>" : std::string(s); }
std::string Render(long n) { return std::to_string(n); }
std::string Render(bool b) { return b ? "true" : "false"; }

template <class RS, class F>
LookupCase Case(const char* member, const char* table, bool goesUp, const char* emptyResult, F call) {
    return {member, table, goesUp, emptyResult,
            [call](CDatabase& db, const CString& prefix, std::string& filter, bool& open) {
                RS rs(&db);
                struct Report {
                    RS& rs;
                    std::string& filter;
                    bool& open;
                    ~Report() {
                        filter = rs.m_strFilter.str();
                        open = rs.IsOpen();
                    }
                } report{rs, filter, open};
                return Render(call(rs, prefix));
            }};
}

std::vector<LookupCase> AllLookups() {
    const CString quoted = Quoted("Nobody"), bare = "Nobody", key = "K0";
    auto outSystem = std::make_shared<CString>();  // the NoSystem lookups' out argument
    using A = DvnActivitySet;
    using P = DvnPEServerSet;
    using U = DvnUPEServerSet;
    using Q = DvnQueueManagerSet;
    using S = DvnSystemSet;
    using G = DvnSystemGroupSet;
    using D = DvnDomainSet;
    using N = DvnNodeSet;
    std::vector<LookupCase> all = {
        Case<A>("GetAID", "ACTIVITY", false, "", [=](A& r, auto& p) { return r.GetAID(quoted, key, "", p); }),
        Case<A>("GetAID in a block", "ACTIVITY", false, "",
                [=](A& r, auto& p) { return r.GetAID(quoted, key, key, p); }),
        Case<A>("GetPID", "ACTIVITY", true, "", [=](A& r, auto& p) { return r.GetPID(key, p); }),
        Case<A>("GetBlockID", "ACTIVITY", true, "", [=](A& r, auto& p) { return r.GetBlockID(key, p); }),
        Case<A>("GetName", "ACTIVITY", true, "", [=](A& r, auto& p) { return r.GetName(key, p); }),
        Case<DvnSourceSet>("GetSourceID", "SOURCE", false, "",
                           [=](DvnSourceSet& r, auto& p) { return r.GetSourceID(1, key, p); }),
        Case<DvnSourceSet>("GetSourceID in a block", "SOURCE", false, "",
                           [=](DvnSourceSet& r, auto& p) { return r.GetSourceID(1, key, key, p); }),
        Case<DvnSinkSet>("GetSinkID", "SINK", false, "",
                         [=](DvnSinkSet& r, auto& p) { return r.GetSinkID(1, key, p); }),
        Case<DvnSinkSet>("GetSinkID in a block", "SINK", false, "",
                         [=](DvnSinkSet& r, auto& p) { return r.GetSinkID(1, key, key, p); }),
        Case<DvnSimplePrcSet>("GetProcessID", "PROCESS", false, "",
                              [=](DvnSimplePrcSet& r, auto& p) { return r.GetProcessID(quoted, p); }),
        Case<DvnStaffLevelSet>("GetLevelID", "STAFF_LEVEL", false, "-1",
                               [=](DvnStaffLevelSet& r, auto& p) { return r.GetLevelID(3, p); }),
        Case<DvnStaffLevelSet>("GetDefaultLevelID", "STAFF_LEVEL", false, "-1",
                               [=](DvnStaffLevelSet& r, auto& p) { return r.GetDefaultLevelID(p); }),
        Case<DvnListSet>("GetListID", "WORK_LIST", false, "",
                         [=](DvnListSet& r, auto& p) { return r.GetListID(quoted, p, "WORK_LIST"); }),
        Case<DvnListSet>("GetListID", "PRC_INSTANCE_LIST", false, "",
                         [=](DvnListSet& r, auto& p) { return r.GetListID(quoted, p, "PRC_INSTANCE_LIST"); }),
        Case<D>("GetDomainID", "DV_DOMAIN", false, "", [=](D& r, auto& p) { return r.GetDomainID(bare, p); }),
        Case<D>("GetDefaultDomainID", "DV_DOMAIN", false, "", [=](D& r, auto& p) { return r.GetDefaultDomainID(p); }),
        Case<D>("GetName", "DV_DOMAIN", true, "", [=](D& r, auto& p) { return r.GetName(key, p); }),
        Case<D>("GetPrefix", "DV_DOMAIN", true, "", [=](D& r, auto& p) { return r.GetPrefix(key, p); }),
        Case<G>("GetSysGrpID", "SYSTEM_GROUP", false, "", [=](G& r, auto& p) { return r.GetSysGrpID(bare, p); }),
        Case<G>("GetDefaultSysGrpID", "SYSTEM_GROUP", false, "",
                [=](G& r, auto& p) { return r.GetDefaultSysGrpID(p); }),
        Case<G>("GetName", "SYSTEM_GROUP", true, "", [=](G& r, auto& p) { return r.GetName(key, p); }),
        Case<S>("GetSystemGroupID", "SYSTEM", true, "", [=](S& r, auto& p) { return r.GetSystemGroupID(key, p); }),
        Case<S>("GetDefaultSystemID", "SYSTEM", false, "", [=](S& r, auto& p) { return r.GetDefaultSystemID(p); }),
        Case<S>("GetPrimarySystem", "SYSTEM", false, "", [=](S& r, auto& p) { return r.GetPrimarySystem(p); }),
        Case<S>("GetSystemIdentifier", "SYSTEM", false, "false",
                [=](S& r, auto& p) { return r.GetSystemIdentifier(42, p); }),
        Case<N>("GetNodeID", "NODE", false, "", [=](N& r, auto& p) { return r.GetNodeID(quoted, p); }),
        Case<N>("GetDefaultNodeID", "NODE", false, "", [=](N& r, auto& p) { return r.GetDefaultNodeID(p); }),
        Case<N>("GetName", "NODE", true, "", [=](N& r, auto& p) { return r.GetName(key, p); }),
        Case<Q>("GetQueueManagerID", "QUEUE_MANAGER", false, "",
                [=](Q& r, auto& p) { return r.GetQueueManagerID(quoted, p); }),
        Case<Q>("GetDefaultQueueManagerID", "QUEUE_MANAGER", false, "",
                [=](Q& r, auto& p) { return r.GetDefaultQueueManagerID(p); }),
        Case<Q>("GetName", "QUEUE_MANAGER", true, "", [=](Q& r, auto& p) { return r.GetName(key, p); }),
        Case<Q>("GetQmgrName", "QUEUE_MANAGER", true, "", [=](Q& r, auto& p) { return r.GetQmgrName(key, p); }),
        Case<Q>("IsValidQueueManagerName", "QUEUE_MANAGER", false, "true",
                [=](Q& r, auto& p) { return r.IsValidQueueManagerName(bare, quoted, p); }),
        Case<DvnPEASet>("GetPEAID", "PE_AGENT", false, "", [=](DvnPEASet& r, auto& p) { return r.GetPEAID(bare, p); }),
        Case<P>("GetPESID", "PE_SERVER", false, "", [=](P& r, auto& p) { return r.GetPESID(bare, key, p); }),
        Case<P>("GetPESIDNoSystem", "PE_SERVER", false, "",
                [=](P& r, auto& p) { return r.GetPESIDNoSystem(bare, *outSystem, p); }),
        Case<P>("GetSystem", "PE_SERVER", true, "", [=](P& r, auto& p) { return r.GetSystem(key, p); }),
        Case<P>("GetName", "PE_SERVER", true, "", [=](P& r, auto& p) { return r.GetName(key, p); }),
        Case<U>("GetUPESID", "USER_PE_SERVER", false, "", [=](U& r, auto& p) { return r.GetUPESID(bare, key, p); }),
        Case<U>("GetUPESIDNoSystem", "USER_PE_SERVER", false, "",
                [=](U& r, auto& p) { return r.GetUPESIDNoSystem(bare, *outSystem, p); }),
        Case<U>("GetName", "USER_PE_SERVER", true, "", [=](U& r, auto& p) { return r.GetName(key, p); }),
    };
    for (const char* server : {"GATEWAY_SERVER", "MODELLING_SERVER", "PE_SERVER", "CLEANUP_SERVER", "DISTRIBUTION_SRV",
                               "EXECUTION_SERVER", "SCHEDULING_SERVER"})
        all.push_back(Case<DvnServerSet>("GetServerID", server, false, "", [=](DvnServerSet& r, auto& p) {
            return r.GetServerID(bare, key, p, server);
        }));
    // The lookups with the tombstone flag, both ways.
    for (bool deleted : {false, true}) {
        using Pr = DvnProgramSet;
        using Ds = DvnDataStructureSet;
        using C = DvnCategorySet;
        using O = DvnOrganizationSet;
        using R = DvnRoleSet;
        using Pe = DvnPersonSet;
        std::vector<LookupCase> flagged = {
            Case<Pr>("GetProgramID", "PROGRAM", false, "",
                     [=](Pr& r, auto& p) { return r.GetProgramID(quoted, p, deleted); }),
            Case<Pr>("GetName", "PROGRAM", true, "", [=](Pr& r, auto& p) { return r.GetName(key, p, deleted); }),
            Case<Ds>("GetDsID", "DATA_STRUCTURE", true, "",
                     [=](Ds& r, auto& p) { return r.GetDsID(quoted, p, deleted); }),
            Case<Ds>("GetName", "DATA_STRUCTURE", true, "", [=](Ds& r, auto& p) { return r.GetName(key, p, deleted); }),
            Case<C>("GetCatID", "CATEGORY", true, "", [=](C& r, auto& p) { return r.GetCatID(quoted, p, deleted); }),
            Case<C>("GetName", "CATEGORY", true, "", [=](C& r, auto& p) { return r.GetName(key, p, deleted); }),
            Case<O>("GetOrganizationID", "ORGANIZATION", false, "",
                    [=](O& r, auto& p) { return r.GetOrganizationID(quoted, p, deleted); }),
            Case<O>("GetName", "ORGANIZATION", true, "", [=](O& r, auto& p) { return r.GetName(key, p, deleted); }),
            Case<R>("GetRoleID", "ROLE", false, "", [=](R& r, auto& p) { return r.GetRoleID(quoted, p, deleted); }),
            Case<R>("GetName", "ROLE", true, "", [=](R& r, auto& p) { return r.GetName(key, p, deleted); }),
            Case<Pe>("GetPersonID", "PERSON", false, "",
                     [=](Pe& r, auto& p) { return r.GetPersonID(quoted, p, deleted); }),
            Case<Pe>("GetName", "PERSON", true, "", [=](Pe& r, auto& p) { return r.GetName(key, p, deleted); }),
            Case<S>("GetSystemID", "SYSTEM", false, "", [=](S& r, auto& p) { return r.GetSystemID(bare, p, deleted); }),
            Case<S>("GetName", "SYSTEM", true, "", [=](S& r, auto& p) { return r.GetName(key, p, deleted); }),
        };
        all.insert(all.end(), flagged.begin(), flagged.end());
    }
    return all;
}

// On a schema that is not there, each lookup either raises the exception
// and writes nothing, or writes the error text and an end of line and gives
// its empty result; either way its recordset is closed. On the real schema
// each filter it writes searches an index (SQLite's plan tells).
TEST_P(Lookups, EveryLookupFailsAsDocumentedAndFindsItsRowsThroughAnIndex) {
    const CString missing = "NOPE.";
    for (const auto& c : AllLookups()) {
        SCOPED_TRACE(std::string(c.member) + " on " + c.table);
        std::string filter, result = "unset";
        bool open = true, raised = false;
        const std::string out = Stdout([&] {
            try {
                result = c.run(Db(), missing, filter, open);
            } catch (CDBException* e) {
                raised = !e->m_strError.IsEmpty();
                e->Delete();
            }
        });
        EXPECT_FALSE(open);
        EXPECT_EQ(raised, c.goesUp);
        if (c.goesUp) {
            EXPECT_EQ(out, "");
        } else {
            EXPECT_EQ(result, c.emptyResult);
            ASSERT_GT(out.size(), 1u);
            EXPECT_EQ(out.back(), '\n');
        }

        result = c.run(Db(), prefix, filter, open);
        EXPECT_FALSE(open);
        EXPECT_EQ(result, c.emptyResult);  // the tables are empty
        if (IsPostgres() || filter.empty()) continue;
        for (const auto& row :
             QueryRows(Db(), "EXPLAIN QUERY PLAN SELECT * FROM DVBT." + std::string(c.table) + " WHERE " + filter))
            EXPECT_EQ(row.find("|SCAN "), std::string::npos) << filter << ": " << row;
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(Lookups);

}  // namespace
