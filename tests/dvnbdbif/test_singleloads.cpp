// The single loads of the facade that the editor and the on-demand reader
// ask for one object: a data connector's mappings with the containers at its
// ends, and the server of a program activity. Both databases.
#include <gtest/gtest.h>

#include "backendrun.h"
#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "repositorydb.h"
#include "testenv.h"

namespace {

using Lines = std::vector<std::string>;

class SingleLoads : public RepositoryTest {
protected:
    void SetUp() override {
        RepositoryTest::SetUp();
        DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(DataSource()));
    }
    void TearDown() override {
        DvnBTAuthorization::DestroyInstance();
        DvnProfile::SetOverride("BTODBCDataSourceName", DvnString());
        RepositoryTest::TearDown();
    }
    Lines Messages() {
        Lines lines = MessageLines(handler);
        handler.Clear();
        return lines;
    }
    DvnfCollectingMessageHandler handler;
    DvnfTRXData data{DvnfTRXTypes::_instance, &handler};
};

// One connector from a source at process level, one from a source inside
// a block; each end holds a container value.
const char* const kFlow = R"(
DataStructure "D" { Members [ DataStructureMember "Number" { Name = "Number"; Type = 1; } ] }
Process "Flow" {
  ProcessHasInputStr -> "D";
  ProcessHasOutputStr -> "D";
  InputContainer { Members [ { Name = "Number"; Value = "7"; } ] }
  Diagram {
    Activities [
      Activity "Check" {
        Implementation { Type = 5; }
        InputContainer { Members [ { Name = "Number"; Value = "1"; } ] }
        ActivityHasInputStr -> "D";
        ActivityHasOutputStr -> "D";
      }
      Activity "Pack" {
        Implementation { Type = 3; AsBlock = BlockImplementation { Diagram {
          Activities [
            Activity "Wrap" {
              Implementation { Type = 5; }
              InputContainer { Members [ { Name = "Number"; Value = "3"; } ] }
              ActivityHasInputStr -> "D";
              ActivityHasOutputStr -> "D";
            }
          ]
          Sources [ Source "1" { Layout { Xpos = 1; Ypos = 2; } } ]
          DataConnectors [ DataConnector { Type = 0; Mappings [ { From = "Number"; To = "Number"; } ]
                                           DataFromSource -> "1"; DataToActivity -> "Wrap"; } ]
        } } }
        InputContainer { Members [ { Name = "Number"; Value = "2"; } ] }
        ActivityHasInputStr -> "D";
        ActivityHasOutputStr -> "D";
      }
    ]
    Sources [ Source "1" { Layout { Xpos = 10; Ypos = 20; } } ]
    DataConnectors [ DataConnector { Type = 0; Mappings [ { From = "Number"; To = "Number"; } ]
                                     DataFromSource -> "1"; DataToActivity -> "Check"; } ]
  }
}
)";

// "Name=Value;..." of a container, and of the mappings "From>To;...".
std::string Members(const DvnfEntity& e, const char* container) {
    std::string out;
    DvnfDataSetIterator it = e.AttributeData()(container)("Members").ElementsOfSet();
    for (DvnfAttributeDataReader m = it.First(); m.IsValid(); m = it.Next())
        out += m("Name").AsString().str() + "=" + m("Value").AsString().str() + ";";
    return out;
}
std::string Mappings(const DvnfEntity& e) {
    std::string out;
    DvnfDataSetIterator it = e.AttributeData()("Mappings").ElementsOfSet();
    for (DvnfAttributeDataReader m = it.First(); m.IsValid(); m = it.Next())
        out += m("From").AsString().str() + ">" + m("To").AsString().str() + ";";
    return out;
}

TEST_P(SingleLoads, ADataMappingIsReadOnceWithTheContainersOfWhatHoldsItsEnds) {
    DvnBTAuthorization::GetInstance()->GrantDefinitionRights();
    {
        TrxFiles files;
        DvnConvCoreDbIF importer;
        testing::internal::CaptureStdout();
        const int level = importer.ImportTRX(DvnString(files.Write(kFlow)), DvnString(DataSource()), true, true, true);
        const std::string out = testing::internal::GetCapturedStdout();
        ASSERT_EQ(level, 0) << out;
    }
    DvnConvCoreDbIF facade(&data);
    DvnfEntity& flow = facade.LoadProcess(DvnString("Flow"));
    ASSERT_TRUE(flow.IsValid());
    auto activity = [&](const char* name) -> DvnfEntity& {
        return data.GetEntityByName(DvnfString("Activity"), DvnfString(name));
    };
    DvnfEntity& pack = activity("Pack");
    ASSERT_EQ(facade.LoadBlock(pack, DvnString(flow.OID().c_str()), false), 0);
    auto connector = [&](const char* where) -> DvnfEntity& {
        const std::string dcid = QueryValue(Db(), std::string("SELECT DCID FROM DVBT.DATA_CONNECTOR WHERE ") + where);
        return data.GetEntityByOID(DvnfString("DataConnector"), DvnfString(dcid), false);
    };
    DvnfEntity& outer = connector("INSIDE_BLOCK IS NULL");
    DvnfEntity& inner = connector("INSIDE_BLOCK IS NOT NULL");
    ASSERT_TRUE(outer.IsValid());
    ASSERT_TRUE(inner.IsValid());

    // What the loads read so far is forgotten, and the rows changed: only a
    // read of this load can bring the new values.
    for (DvnfEntity* e : {&flow, &activity("Check"), &pack, &activity("Wrap"), &outer, &inner})
        e->SetFlags(DvnfEntity::FlagAttributesComplete | DvnfEntity::FlagContainersComplete, false);
    ExecAll(Db(), {"UPDATE DVBT.DATA_MAP SET TO_MEMBER = 'Changed'",
                   "UPDATE DVBT.ACT_CONTAINER SET INITIAL_VALUE = INITIAL_VALUE || '0'",
                   "UPDATE DVBT.PRC_CONTAINER SET INITIAL_VALUE = INITIAL_VALUE || '0'"});
    Messages();

    // From a source at process level: the process's containers and those of
    // the activity at the other end.
    EXPECT_EQ(facade.LoadDataMapping(outer), 0);
    EXPECT_EQ(Mappings(outer), "Number>Changed;");
    EXPECT_TRUE(outer.IsAttributeDataAttrComplete());
    EXPECT_EQ(Members(flow, "InputContainer"), "Number=70;");
    EXPECT_EQ(Members(activity("Check"), "InputContainer"), "Number=10;");
    EXPECT_TRUE(flow.IsAttributeDataContainerComplete());
    EXPECT_TRUE(activity("Check").IsAttributeDataContainerComplete());
    EXPECT_FALSE(pack.IsAttributeDataContainerComplete());
    EXPECT_EQ(Members(pack, "InputContainer"), "Number=2;");

    // From a source inside a block: the block activity's containers.
    EXPECT_EQ(facade.LoadDataMapping(inner), 0);
    EXPECT_EQ(Mappings(inner), "Number>Changed;");
    EXPECT_EQ(Members(pack, "InputContainer"), "Number=20;");
    EXPECT_EQ(Members(activity("Wrap"), "InputContainer"), "Number=30;");
    EXPECT_TRUE(pack.IsAttributeDataContainerComplete());
    EXPECT_TRUE(activity("Wrap").IsAttributeDataContainerComplete());
    EXPECT_EQ(Messages(), Lines{});

    // Read once: a second call reads nothing, even with the profile
    // pointing nowhere.
    ExecAll(Db(), {"UPDATE DVBT.DATA_MAP SET TO_MEMBER = 'Again'"});
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString("no_such_source"));
    {
        TraceCapture trace;
        EXPECT_EQ(facade.LoadDataMapping(outer), 0);
        EXPECT_NE(trace.Text().find("is already loded"), std::string::npos);
        EXPECT_EQ(trace.Text().find("Open database failed"), std::string::npos);
    }
    EXPECT_EQ(Mappings(outer), "Number>Changed;");
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(DataSource()));

    // A connector without its row: 51702 with its name, 8, no flag, and the
    // ends are left alone.
    const std::string remove = "DELETE FROM DVBT.DATA_CONNECTOR WHERE DCID = '" + inner.OID().str() + "'";
    ExecAll(Db(), {remove.c_str()});
    inner.SetFlags(DvnfEntity::FlagAttributesComplete, false);
    pack.SetFlags(DvnfEntity::FlagContainersComplete, false);
    EXPECT_EQ(facade.LoadDataMapping(inner), 8);
    EXPECT_EQ(Messages(), Lines{"51702|" + inner.Name().str()});
    EXPECT_FALSE(inner.IsAttributeDataAttrComplete());
    EXPECT_FALSE(pack.IsAttributeDataContainerComplete());
}

TEST_P(SingleLoads, AServerOfAProgramActivityIsReadByItsDottedNameOrItsKey) {
    ExecAll(Db(), {"INSERT INTO DVBT.SYSTEM_GROUP (SYSTEM_GROUP_ID, NAME) VALUES ('G1', 'SYS_GRP')",
                   "INSERT INTO DVBT.SYSTEM (SYSTEM_ID, NAME, SYSTEM_GROUP) VALUES ('S1', 'DVNSYS', 'G1')",
                   "INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM, DESCRIPTION, USER_SUPPORT, CHECKED_OUT) "
                   "VALUES ('K1', 'PES1', 'S1', 'runs programs', 2, 0)",
                   "INSERT INTO DVBT.USER_PE_SERVER (SERVER_ID, NAME, SYSTEM, QMGRNAME, CHECKED_OUT) "
                   "VALUES ('K2', 'UPES1', 'S1', 'QM1', 0)",
                   "INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) "
                   "VALUES ('K3', 'GONE', 'S1', 4)"});
    DvnBTAuthorization::GetInstance();
    DvnConvCoreDbIF facade(&data);
    auto server = [&](const char* name) -> DvnfEntity& {
        return data.GetEntityByName(DvnfString("Server"), DvnfString(name), true);
    };
    auto type = [](const DvnfEntity& e) { return e.AttributeData()("Type").AsLong(0); };

    // By the dotted name, the group from the name or, without one, the
    // default group "SYS_GRP"; the name stays as the activity gives it.
    DvnfEntity& pes = server("PES1.DVNSYS.SYS_GRP");
    EXPECT_EQ(facade.LoadPEUnit(pes), 0);
    EXPECT_EQ(type(pes), 7);
    EXPECT_EQ(pes.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(pes.Name().str(), "PES1.DVNSYS.SYS_GRP");
    EXPECT_EQ(pes.AttributeData()("Description").AsString().str(), "runs programs");
    EXPECT_EQ(pes.AttributeData()("ServerDefault")("ProgramExecutionServer")("UserSupport").AsLong(-1), 1);
    DvnfEntity& upes = server("UPES1.DVNSYS");
    EXPECT_EQ(facade.LoadPEUnit(upes), 0);
    EXPECT_EQ(type(upes), 8);
    EXPECT_EQ(upes.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(upes.AttributeData()("UPESContext")("QueueManagerName").AsString().str(), "QM1");
    EXPECT_EQ(Messages(), Lines{});

    // By key: an entity the process load made from the activity's row.
    DvnfEntity& byKey = data.GetEntityByOID(DvnfString("Server"), DvnfString("K2"), true);
    byKey.State(DvnfObject::StateNew);
    EXPECT_EQ(facade.LoadPEUnit(byKey), 0);
    EXPECT_EQ(type(byKey), 8);

    // Not there: a name of no server, of an unknown system or of a
    // tombstone gives 51184 and 8; a key of no live row gives 8 alone. A
    // name of one level is no dotted name: left as it is.
    for (const char* name : {"NOPE.DVNSYS", "PES1.NOSYS", "GONE.DVNSYS"}) {
        SCOPED_TRACE(name);
        DvnfEntity& none = server(name);
        EXPECT_EQ(facade.LoadPEUnit(none), 8);
        EXPECT_EQ(Messages(), Lines{std::string("51184|") + name});
        EXPECT_EQ(none.State(), DvnfObject::StateNone);
        EXPECT_EQ(type(none), 0);
    }
    DvnfEntity& tombstone = data.GetEntityByOID(DvnfString("Server"), DvnfString("K3"), true);
    tombstone.State(DvnfObject::StateNew);
    EXPECT_EQ(facade.LoadPEUnit(tombstone), 8);
    EXPECT_EQ(type(tombstone), 0);
    DvnfEntity& bare = server("PES1");
    EXPECT_EQ(facade.LoadPEUnit(bare), 0);
    EXPECT_EQ(bare.State(), DvnfObject::StateNone);
    EXPECT_EQ(Messages(), Lines{});
}

}  // namespace

DVN_INSTANTIATE_BOTH_BACKENDS(SingleLoads);
