// Load of processes from rows written by hand: which processes load and in
// which state, the lock of an export, the activity and flow readings that
// differ from what the store writes, the order of the sets, a second load by
// name, and a failed read in each load that catches it.
#include <gtest/gtest.h>

#include <functional>

#include "../loadrun.h"
#include "odbccall.h"
#include "dvnbauth.h"
#include "repositorydb.h"
#include "testenv.h"

namespace {

// Stops at every annotation read and asks the database who holds the
// process: the lock of an export lasts while its diagram is read.
class LockWatch : public DvnfCollectingMessageHandler {
public:
    CDatabase* db = nullptr;
    Lines holders;
    void Report(long number, const DvnString& a1, const DvnString& a2, const DvnString& a3, const DvnString& a4,
                const DvnString& a5, const DvnString& a6, const DvnString& a7) override {
        DvnfCollectingMessageHandler::Report(number, a1, a2, a3, a4, a5, a6, a7);
        if (number == 51512 && db)
            holders.push_back(a1.str() + "=" + QueryValue(*db, "SELECT CHECKED_OUT_BY FROM DVBT.PROCESS WHERE PID = '" +
                                                                   a1.str() + "'"));
    }
};

class ProcessLoad : public RepositoryTest {
protected:
    void TearDown() override {
        DvnBTAuthorization::DestroyInstance();
        RepositoryTest::TearDown();
    }
    // The user whose identifier stamps the processes an export reads.
    void LogIn() {
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddPerson(Db(), {.id = "U1", .userId = "ANNA", .systemGroup = "G1", .password = "a"});
        DvnBTAuthorization::DestroyInstance();
        DvnMessageTarget target;
        DvnBTAuthorization::GetInstance()->SetUser(target, DvnString("SYS_GRP"), DvnString("ANNA"),
                                                   DvnString("postgres"), DvnString("login-pw"),
                                                   DvnString(DataSource()));
        ASSERT_EQ(DvnBTAuthorization::GetInstance()->UserID(), DvnString("ANNA"));
    }
    // A process row with its window row (unless graph is false) and its
    // defaults row; an annotation named by its key.
    void AddProcess(const std::string& pid, const std::string& name, const std::string& mark, const char* holder,
                    bool graph = true, const std::string& show = "1, 0, 0") {
        const std::string by = holder ? "'" + std::string(holder) + "'" : "NULL";
        Exec("INSERT INTO DVBT.PROCESS (PID, NAME, RC_CREATION, PROMPT_AT_PRC_STRT, CHECKED_OUT, CHECKED_OUT_BY) "
             "VALUES ('" + pid + "', '" + name + "', 1, 0, " + mark + ", " + by + ")");
        if (graph)
            Exec("INSERT INTO DVBT.PROCESS_GRAPH_ATTR (PID, SHOW_CONNECTORS, SHOW_EXIT_COND, SHOW_TRANS_COND) "
                 "VALUES ('" + pid + "', " + show + ")");
        Exec("INSERT INTO DVBT.PROCESS_TOPOL_ATTR (PID) VALUES ('" + pid + "')");
        Exec("INSERT INTO DVBT.TEXT_ANNOTATION (ANNOTATION_ID, NAME, PID, ANNOTATION_TEXT) VALUES ('N" + pid +
             "', '" + pid + "', '" + pid + "', 'note')");
    }
    void Exec(const std::string& sql) { Db().ExecuteSQL(CString(sql.c_str())); }

    // The names of the elements of a set of a diagram.
    static std::string Names(const DvnfAttributeDataReader& diagram, const char* set) {
        return Joined(diagram(set), [](const DvnfAttributeDataReader& e) { return e.AsEntity().Name().str(); });
    }
    static DvnfAttributeDataReader BlockDiagram(const DvnfEntity& activity) {
        return activity.AttributeData()("Implementation")("AsBlock").AsEntity().AttributeData()("Diagram");
    }
    // A connector as "from>to" and its attributes.
    static Lines Connectors(const DvnfAttributeDataReader& diagram, const char* set, const char* from,
                            const char* to) {
        Lines out;
        DvnfDataSetIterator elements = diagram(set).ElementsOfSet();
        for (DvnfAttributeDataReader e = elements.First(); e.IsValid(); e = elements.Next()) {
            const DvnfEntity& c = e.AsEntity();
            std::string line = c.FirstLinkOfType(from).Target().Name().str() + ">" +
                               c.FirstLinkOfType(to).Target().Name().str() + " " +
                               Defined(c.AttributeData(), {"ConnectorSpec", "Type", "Condition"});
            if (c.AttributeData()("ConditionPos").IsDefined()) line += " at";
            for (const char* s : {"BendPoints", "Mappings"}) {
                DvnfDataSetIterator points = c.AttributeData()(s).ElementsOfSet();
                for (DvnfAttributeDataReader p = points.First(); p.IsValid(); p = points.Next())
                    line += " " + Defined(p, {"Xpos", "Ypos", "From", "To"});
            }
            out.push_back(line);
        }
        return out;
    }
};

TEST_P(ProcessLoad, WhichProcessesLoadInWhichStateAndTheLockOfAnExport) {
    AddProcess("P1", "Free", "0", nullptr);
    AddProcess("P2", "Held", "9", "OTHER");
    AddProcess("P3", "Gone", "4", nullptr);
    AddProcess("P4", "NoWindow", "2", nullptr, false);
    // The window settings that the store writes come back in the corpus
    // (test_corpus.cpp); an unknown SHOW_CONNECTORS sets nothing, NULL
    // conditions show none.
    AddProcess("P5", "OddWindow", "0", nullptr, true, "7, NULL, NULL");
    LogIn();
    LockWatch watch;
    watch.db = &Db();
    DvnfTRXData data(DvnfTRXTypes::_instance, &watch);
    TestableFe fe(&Db(), &data);
    fe.SetTablePrefix("DVBT.");
    fe.Processes(DvnString("P1"));
    fe.Processes(DvnString(""));  // P1 is passed over: no message, no lock
    fe.Processes(DvnString("NOPE"));
    Lines messages = MessageLines(watch);
    EXPECT_EQ(messages, (Lines{"51508|Free", "51512|P1", "51508|Held", "51569|Held|OTHER", "51512|P2",
                               "51508|Gone", "51508|NoWindow", "51508|OddWindow", "51512|P5", "51544|NOPE"}))
        << ::testing::PrintToString(messages);
    // Stamped while read, released after; a held one is left as it was.
    EXPECT_EQ(watch.holders, (Lines{"P1=ANNA", "P2=OTHER", "P5=ANNA"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT PID, CHECKED_OUT_BY FROM DVBT.PROCESS ORDER BY PID"),
              (Lines{"P1|<null>", "P2|OTHER", "P3|<null>", "P4|<null>", "P5|<null>"}));

    auto get = [&](const char* pid) -> DvnfEntity& {
        return data.GetEntityByOID(DvnfString("Process"), DvnfString(pid), false);
    };
    EXPECT_EQ(get("P1").State(), DvnfObject::StateUnchanged);
    EXPECT_TRUE(get("P1").IsAttributeDataAttrComplete());
    EXPECT_EQ(get("P2").State(), DvnfObject::StateUnchanged);  // mark 9
    // A tombstone is bare; a process without its window row does not load.
    EXPECT_EQ(get("P3").State(), DvnfObject::StateDeleted);
    EXPECT_FALSE(get("P3").AttributeData()("Diagram").IsDefined());
    EXPECT_FALSE(get("P3").AttributeData()("RcCreation").IsDefined());
    EXPECT_FALSE(get("P4").IsValid());
    EXPECT_EQ(Defined(get("P5").AttributeData()("WindowLayout"), {"ShowConnectors", "ShowConditions"}),
              "ShowConditions=0");

    // By name the tombstone loads whole, as unchanged, and nothing is locked.
    LoadRun byName(Db());
    DvnfEntity& gone = byName.fe.ProcessByName("Gone");
    EXPECT_EQ(gone.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(Names(gone.AttributeData()("Diagram"), "TextAnnotations"), "P3");
    EXPECT_EQ(Defined(gone.AttributeData(), {"RcCreation", "PromptAtProcessStart"}),
              "RcCreation=2 PromptAtProcessStart=false");
    EXPECT_FALSE(byName.fe.ProcessByName("Nobody").IsValid());
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.PROCESS WHERE CHECKED_OUT_BY IS NOT NULL"), "1");
}

TEST_P(ProcessLoad, TheDiagramReadsBackActivitiesBlocksBundlesSourcesSinksAndConnectors) {
    // The process "Order" (O) with everything a diagram holds, in rows in
    // an order other than the one the load gives.
    AddProcess("O", "Order", "0", nullptr);
    ExecData(Db(), "dvnbdbfe/order-rows.sql");
    LoadRun run(Db());
    run.fe.Processes(DvnString("O"));
    const DvnfEntity& order = run.Get("Process", "O");
    const DvnfAttributeDataReader diagram = order.AttributeData()("Diagram");
    // By name, whatever the rows' order; the pattern and the inner ones stay inside.
    EXPECT_EQ(Names(diagram, "Activities"), "Alpha Bundle Empty Mid Outer Zeta");
    auto activity = [&](const char* aid) -> const DvnfEntity& { return run.Get("Activity", aid); };
    auto attributes = [&](const char* aid) { return activity(aid).AttributeData(); };

    // Start condition 2 is "AND", 1 "OR", anything else "AND"; exit option 1 drops the condition.
    EXPECT_EQ(Defined(attributes("Z")("Start"), {"Condition", "Manual"}), "Condition=AND Manual=true");
    EXPECT_EQ(Defined(attributes("Z")("Exit"), {"Condition", "Manual"}), "Manual=true");
    EXPECT_EQ(Defined(attributes("A")("Start"), {"Condition", "Manual"}), "Condition=OR Manual=false");
    EXPECT_EQ(Defined(attributes("M")("Start"), {"Condition"}), "Condition=AND");
    // A position without its second half is not read.
    EXPECT_EQ(Defined(attributes("A")("Exit"), {"Condition", "ConditionPos", "Manual"}),
              "Condition=RC > 1 Manual=false");
    // Priority from input wins over the number; notification without a person or a duration goes.
    EXPECT_EQ(Defined(attributes("Z")("Priority"), {"PriorityType", "Number"}), "PriorityType=0");
    EXPECT_FALSE(attributes("Z")("NotifyType").IsDefined());
    EXPECT_FALSE(attributes("A")("NotifyType").IsDefined());
    EXPECT_EQ(Defined(attributes("A")("Priority"), {"PriorityType", "Number"}), "PriorityType=2 Number=7");
    EXPECT_EQ(Defined(attributes("Z")("ActivityDefault"), {"CheckoutPossible"}), "CheckoutPossible=true");
    // Done by: 12 leaves it empty, 3 without rows sets no type, 8 gives the path outermost first.
    EXPECT_FALSE(attributes("A")("DoneBy").IsDefined());
    EXPECT_FALSE(attributes("M")("DoneBy")("AssignType").IsDefined());
    EXPECT_EQ(Defined(attributes("Z")("DoneBy"), {"AssignType", "StarterOf"}),
              "AssignType=8 StarterOf=Outer.Inner.Act");
    // Container values by name.
    EXPECT_EQ(Joined(attributes("A")("InputContainer")("Members"),
                     [](const DvnfAttributeDataReader& m) { return Defined(m, {"Name", "Value"}); }, ";"),
              "Name=a Value=9;Name=b Value=2");

    // The program and its server by key, the server known as a program execution server.
    const DvnfEntity& program = attributes("Z")("Implementation")("AsProgram").AsEntity();
    EXPECT_EQ(program.FirstLinkOfType("ReferencesProgram").Target().OID().str(), "PRG1");
    const DvnfEntity& server = program.FirstLinkOfType("ReferencesPEServer").Target();
    EXPECT_EQ(server.OID().str(), "SRV1");
    EXPECT_EQ(server.AttributeData()("Type").AsLong(), 7);
    EXPECT_EQ(program.AttributeData()("Synchronization").AsLong(), 1);

    // The bundle's pattern comes from inside it; a bundle without its row has nothing.
    const DvnfEntity& bundle = attributes("B")("Implementation")("AsBundle").AsEntity();
    EXPECT_EQ(Names(bundle.AttributeData()("Diagram"), "Activities"), "Pattern");
    EXPECT_EQ(Defined(bundle.AttributeData(), {"RestartOption", "PromptForPlanning", "InstantiatingMember",
                                               "NrOfInstances"}),
              "RestartOption=1 PromptForPlanning=false InstantiatingMember=Items NrOfInstances=3");
    EXPECT_EQ(Defined(attributes("BP")("Start"), {"Manual"}), "Manual=true");
    EXPECT_FALSE(attributes("E")("Implementation")("AsBundle").AsEntity().AttributeData()("Diagram").IsDefined());

    // Blocks three deep, all in one call, each with its own sources and annotations.
    const DvnfAttributeDataReader outer = BlockDiagram(activity("OB"));
    EXPECT_EQ(Names(outer, "Activities"), "Inner");
    EXPECT_EQ(Names(outer, "Sources"), "9");
    const DvnfAttributeDataReader inner = BlockDiagram(activity("IB"));
    EXPECT_EQ(Names(inner, "Activities"), "Act Deep");
    EXPECT_EQ(Names(inner, "TextAnnotations"), "InBlock");
    EXPECT_EQ(Names(BlockDiagram(activity("DB")), "Activities"), "Act");
    EXPECT_TRUE(activity("DB").IsBlockContentInMemory());

    // By name, for the editor: blocks stay shells; a second load doubles nothing.
    LoadRun editor(Db());
    DvnfEntity& first = editor.fe.ProcessByName("Order");
    EXPECT_FALSE(editor.Get("Activity", "OB").IsBlockContentInMemory());
    EXPECT_FALSE(BlockDiagram(editor.Get("Activity", "OB"))("Activities").IsDefined());
    const Lines control = Connectors(first.AttributeData()("Diagram"), "ControlConnectors", "ControlFromActivity",
                                     "ControlToActivity");
    DvnfEntity& second = editor.fe.ProcessByName("Order");
    EXPECT_EQ(&first, &second);
    EXPECT_EQ(Connectors(second.AttributeData()("Diagram"), "ControlConnectors", "ControlFromActivity",
                         "ControlToActivity"),
              control);
    EXPECT_EQ(Names(second.AttributeData()("Diagram"), "TextAnnotations"), "Early Later O");
    EXPECT_EQ(second.AttributeData()("Diagram")("DataConnectors").NumberOfElements(), 4);
    EXPECT_EQ(editor.Get("Activity", "A").AttributeData()("InputContainer")("Members").NumberOfElements(), 2);

    // Sources, sinks and connectors in their order.
    EXPECT_EQ(Names(diagram, "Sources"), "3 10");
    EXPECT_EQ(Names(diagram, "Sinks"), "1 2");
    // A lost end or an end in another diagram drops the row; type 2 keeps no
    // condition; half a position is none; bend points by their sequence.
    EXPECT_EQ(Connectors(diagram, "ControlConnectors", "ControlFromActivity", "ControlToActivity"),
              (Lines{"Alpha>Zeta ConnectorSpec=1 Condition=RC = 1 Xpos=10 Ypos=11 Xpos=20 Ypos=21",
                     "Zeta>Alpha ConnectorSpec=2 Xpos=30 Ypos=31"}));
    // Source 3 to Alpha; loops by direction; a sink that is not there drops the row.
    Lines data = Connectors(diagram, "DataConnectors", "DataFromActivity", "DataToActivity");
    EXPECT_EQ(data, (Lines{">Alpha Type=0 Xpos=1 Ypos=1 Xpos=2 Ypos=2 Xpos=3 Ypos=3 From=x To=a From=x To=c "
                           "From=y To=b",
                           "Alpha>Alpha Type=1", "Zeta> Type=0", "Zeta>Zeta Type=2"}));
    const DvnfEntity& fromSource = run.Get("DataConnector", "D1");
    EXPECT_EQ(fromSource.FirstLinkOfType("DataFromSource").Target().Name().str(), "3");
    EXPECT_EQ(run.Get("DataConnector", "D4").FirstLinkOfType("DataToSink").Target().Name().str(), "1");
    EXPECT_TRUE(fromSource.IsAttributeDataAttrComplete());
    // Annotations by name; a font only with its name.
    EXPECT_EQ(Names(diagram, "TextAnnotations"), "Early Later O");
    const DvnfEntity& later = run.data.GetEntityByName(DvnfString("TextAnnotation"), DvnfString("Later"));
    EXPECT_EQ(Defined(later.AttributeData(), {"Text"}), "Text=second");
    EXPECT_EQ(later.AttributeData()("Font")("Name").AsString().str(), "Arial");
    EXPECT_FALSE(run.data.GetEntityByName(DvnfString("TextAnnotation"), DvnfString("Early"))
                     .AttributeData()("Font")
                     .IsDefined());
}

TEST_P(ProcessLoad, StaffAssignmentsAndTheirLinksComeInTheOrderOfNames) {
    AddProcess("S", "Staff", "0", nullptr);
    // Keys run against the names: an order by key would show.
    AddRole(Db(), "R1", "Zed");
    AddRole(Db(), "R2", "Abe");
    AddOrganization(Db(), "G1", "Shipping");
    AddProgram(Db(), "T1", "zip");
    AddProgram(Db(), "T2", "adder");
    AddSystemGroup(Db(), "SG", "SYS_GRP");
    AddPerson(Db(), {.id = "U1", .userId = "ZOE", .systemGroup = "SG", .password = "a"});
    AddPerson(Db(), {.id = "U2", .userId = "ADA", .systemGroup = "SG", .password = "a"});
    ExecData(Db(), "dvnbdbfe/staff-rows.sql");
    LoadRun run(Db());
    run.fe.Processes(DvnString("S"));
    // Each activity: its assignment, the members from input, then the keys of its links.
    auto line = [&](const char* aid) {
        const DvnfEntity& activity = run.Get("Activity", aid);
        const DvnfAttributeDataReader doneBy = activity.AttributeData()("DoneBy");
        std::string out = Defined(doneBy, {"AssignType", "IncludeType", "CoordinatorFromInput", "OrganizationFromInput",
                                           "MgrOrganizationFromInput", "LevelFrom", "LevelToFromInput"});
        for (const char* set : {"MembersFromInput", "PersonsFromInput"}) {
            DvnfDataSetIterator members = doneBy(set).ElementsOfSet();
            for (DvnfAttributeDataReader m = members.First(); m.IsValid(); m = members.Next())
                out += " " + m.Value().str();
        }
        const std::string links = LinkKeys(activity, {"ActivityHasInputStr", "ActivityHasOutputStr"});
        return links.empty() ? out : out + " " + links;
    };
    const std::vector<std::pair<const char*, std::string>> cases = {
        {"M1", "AssignType=1 IncludeType=2 LevelFrom=1 LevelToFromInput=top a z DoneByRoleMember>R2 "
               "DoneByRoleMember>R1 DoneByOrg>G1"},
        {"C2", "AssignType=2 CoordinatorFromInput=b DoneByRoleCoordinator>R2 DoneByRoleCoordinator>R1"},
        {"P3", "AssignType=3 c q DoneByPerson>U2 DoneByPerson>U1"},
        {"O11", "AssignType=11 IncludeType=1 DoneByMgrOrganization>G1"},
        {"F11", "AssignType=11 IncludeType=3 MgrOrganizationFromInput=boss"},
        {"N5", "AssignType=6 NotifiedPerson>U1 HasSupportTool>T2 HasSupportTool>T1"},
    };
    for (const auto& [aid, expected] : cases) EXPECT_EQ(line(aid), expected) << aid;
    EXPECT_EQ(Defined(run.Get("Activity", "N5").AttributeData(), {"NotifyType"}), "NotifyType=5");
}

TEST_P(ProcessLoad, AFailedReadIsTracedOrReportedWhereTheLoadCatchesIt) {
    AddProcess("P1", "Free", "0", nullptr);
    TraceCapture trace;
    LoadRun run(Db());
    DvnfEntity& connector = run.data.CreateEntity(DvnfString("DataConnector"), DvnfString("D1"), DvnfString(""));
    DvnfEntity& process = run.data.CreateEntity(DvnfString("Process"), DvnfString("P1"), DvnfString("Free"));
    DvnfEntity& category = run.data.GetEntityByOID(DvnfString("Category"), DvnfString("C1"), true);
    DvnfEntity& structure = run.data.CreateEntity(DvnfString("DataStructure"), DvnfString("S1"), DvnfString("Order"));
    // Each load's first statement fails once. Some give 8 and tell the user
    // (51368), the others only trace; the load of all categories lets the
    // exception go up (-1 here).
    struct Case {
        std::string context;
        std::function<int()> load;
        int result;
        bool reported;
    };
    const std::vector<Case> loads = {
        {"Exception In Processes: rc =", [&] { run.fe.Processes(DvnString("")); return 0; }, 0, false},
        {"Exception In ProcessByName: rc =", [&] { return run.fe.ProcessByName("Free").IsValid() ? 1 : 0; }, 0,
         false},
        {"Exception In ProcessContainers: rc =",
         [&] { return run.fe.ProcessContainers(process.AttributeData(), &process, "P1"); }, 8, true},
        {"Exception In DataMapping: rc =", [&] { return run.fe.DataMapping(&connector, "D1"); }, 8, true},
        {"Exception In CategoryToCore: rc = -1 Error: Communication link failure",
         [&] {
             const int rc = run.fe.CategoryToCore(category);
             EXPECT_EQ(category.State(), 0);  // still a skeleton
             return rc;
         },
         8, false},
        {"Exception In DataStructureMember: rc = -1",
         [&] {
             run.fe.DataStructureMember("S1", &structure);
             return structure.AttributeData()("Members").NumberOfElements();
         },
         0, false},
        {"",
         [&] {
             try {
                 run.fe.Categories(DvnString(""));
             } catch (CDBException* e) {
                 e->Delete();
                 return -1;
             }
             return 0;
         },
         -1, false},
    };
    for (const auto& [context, load, expected, reported] : loads) {
        SCOPED_TRACE(context);
        run.handler.Clear();
        DvnOdbcFaults::Reset();
        DvnOdbcFaults::FailCall(1, "08S01");
        const int result = load();
        EXPECT_TRUE(DvnOdbcFaults::Fired());
        DvnOdbcFaults::Reset();
        EXPECT_NE(trace.Text().find(context), std::string::npos) << trace.Text();
        EXPECT_EQ(result, expected);
        const Lines told = {"51368|Communication link failure (08S01, injected into call 1, SQLAllocHandle)"};
        EXPECT_EQ(run.Messages(), reported ? told : Lines{});
    }
    EXPECT_EQ(QueryValue(Db(), "SELECT CHECKED_OUT_BY FROM DVBT.PROCESS"), "<null>");
}

DVN_INSTANTIATE_BOTH_BACKENDS(ProcessLoad);

}  // namespace
