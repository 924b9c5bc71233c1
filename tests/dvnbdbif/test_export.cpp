// The exports, the loads and lookups of single objects and the readers,
// through the facade on both databases. What dvnbt makes of them:
// tests/dvnbt/test_export.cpp.
#include <gtest/gtest.h>

#include <sstream>
#include <tuple>

#include "facadetest.h"
#include "dvnbdbfe.h"
#include "dvnbdbrd.h"
#include "dvnfffdn.h"

namespace {

class Export : public FacadeTest {
protected:
    static void AllRights() { DvnBTAuthorization::GetInstance()->GrantDefinitionRights(); }
    DvnString Source() const { return DvnString(DataSource()); }
    // The entity of the type by name or by key, made when not there.
    DvnfEntity& Named(const char* type, const char* name, bool create = true) {
        return data.GetEntityByName(DvnfString(type), DvnfString(name), create);
    }
    DvnfEntity& Keyed(const char* type, const std::string& key, bool create = true) {
        return data.GetEntityByOID(DvnfString(type), DvnfString(key.c_str()), create);
    }
    // Two structures, Order (D2) holding an Address (D1); with all, also the
    // category Sales (C1, "Orders") and the process O'Neil (P1).
    void Structures(bool all = false) {
        ExecAll(Db(), {"INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('D1', 'Address', 0)",
                       "INSERT INTO DVBT.DATA_STRUCTURE (DSID, NAME, CHECKED_OUT) VALUES ('D2', 'Order', 0)",
                       "INSERT INTO DVBT.DATA_STRUCTURE_MBR (DSID, MEMBER, SEQUENCE_NO, DATA_TYPE) "
                       "VALUES ('D1', 'Street', 1, 1)",
                       "INSERT INTO DVBT.DATA_STRUCTURE_MBR (DSID, MEMBER, SEQUENCE_NO, DATA_TYPE, TYPE_DS) "
                       "VALUES ('D2', 'ShipTo', 1, 7, 'D1')"});
        if (!all) return;
        AddCategory(Db(), "C1", "Sales");
        ExecAll(Db(), {"UPDATE DVBT.CATEGORY SET DESCRIPTION = 'Orders' WHERE CATID = 'C1'",
                       "INSERT INTO DVBT.PROCESS (PID, NAME, CHECKED_OUT) VALUES ('P1', 'O''Neil', 0)",
                       "INSERT INTO DVBT.PROCESS_GRAPH_ATTR (PID) VALUES ('P1')"});
    }
    // Entities of the type in a state other than 0, by name.
    Lines Read(const char* type) {
        Lines names;
        for (const auto& [name, object] : data.GetEntities(DvnfString(type)))
            if (object->State() != DvnfObject::StateNone)
                names.push_back(name.str() + "|" + std::to_string(object->State()));
        return names;
    }
};

TEST_P(Export, WithoutRightsEverySectionIsRefusedAndNothingIsRead) {
    AddCategory(Db(), "C1", "Sales");
    DvnBTAuthorization::GetInstance();  // a user without any right
    DvnConvCoreDbIF facade(&data);
    EXPECT_EQ(facade.ExportAll(Source()), 0);
    // Seventeen sections, in their order, each refused by its right (5153x).
    Lines expected;
    for (char right : std::string("33334444435555555")) expected.push_back(std::string("5153") + right);
    EXPECT_EQ(Messages(), expected);
    EXPECT_EQ(data.NumberOfEntities(), 0);

    // A group without a section reads nothing and refuses nothing.
    for (int group : {0, 10, 11, 14, 20, 31, 33})
        EXPECT_EQ(facade.ExportGroups(Source(), DvnString(""), static_cast<EXPORT_GROUPS>(group), false), 0);
    EXPECT_EQ(Messages(), Lines{});
    // A kind without a right: ToolSet and the lists need none.
    DvnCmdVisitor::Command lists(DvnEntityType::Worklist, {"Mine"});
    EXPECT_EQ(facade.ExportByCommand(Source(), lists), 0);
    EXPECT_EQ(Messages(), Lines{"51543"});
}

TEST_P(Export, NamesAreLookedUpOneByOneAKeyAskedTwiceIsReadOnceAndATombstoneIsFound) {
    AddCategory(Db(), "C1", "Sales");
    AddCategory(Db(), "C2", "O''Brien");
    AddCategory(Db(), "C3", "Gone", 4);
    ExecAll(Db(), {"INSERT INTO DVBT.NODE (NODE_ID, NAME, CHECKED_OUT) VALUES ('N1', 'Front', 0)"});
    AllRights();
    DvnConvCoreDbIF facade(&data);
    DvnCmdVisitor::Command command(DvnEntityType::Category, {"Sales", "Nope", "O'Brien", "Gone"});
    EXPECT_EQ(facade.ExportByCommand(Source(), command), 0);
    EXPECT_EQ(Messages(), (Lines{"51513|Sales", "51549", "51513|O'Brien", "51513|Gone"}));
    // The tombstone is a bare entity to delete.
    EXPECT_EQ(Read("Category"), (Lines{"Gone|1", "O'Brien|3", "Sales|3"}));
    DvnCmdVisitor::Command nodes(DvnEntityType::Node, {"Front", "Front", "Nope"});
    EXPECT_EQ(facade.ExportByCommand(Source(), nodes), 0);
    EXPECT_EQ(Messages(), (Lines{"51521|Front", "51557"}));

    // All of a kind reads the table once.
    DvnfTRXData all;
    DvnConvCoreDbIF again(&all);
    DvnCmdVisitor::Command every(DvnEntityType::Category, {"ignored"}, true);
    EXPECT_EQ(again.ExportByCommand(Source(), every), 0);
    EXPECT_EQ(all.GetEntities(DvnfString("Category")).size(), 3u);
}

TEST_P(Export, ADeepExportPullsInWhatTheStructuresReferTo) {
    Structures();
    AllRights();
    DvnConvCoreDbIF facade(&data);
    EXPECT_EQ(facade.ExportGroups(Source(), DvnString("D2"), EXPORT_DATA_STRUCTURES, false), 0);
    EXPECT_EQ(Read("DataStructure"), Lines{"Order|3"});  // Address: a skeleton with its name
    EXPECT_EQ(facade.ExportGroups(Source(), DvnString("D2"), EXPORT_DATA_STRUCTURES, true), 0);
    EXPECT_EQ(Read("DataStructure"), (Lines{"Address|3", "Order|3"}));
    // The members of Order are read once although it was read twice.
    EXPECT_EQ(Keyed("DataStructure", "D2").AttributeData()("Members").NumberOfElements(), 1);

    // A category group has no deep step.
    DvnfTRXData other;
    DvnConvCoreDbIF categories(&other);
    other.CreateEntity(DvnfString("DataStructure"), DvnfString("D1"), DvnfString("")).State(DvnfObject::StateNone);
    EXPECT_EQ(categories.ExportGroups(Source(), DvnString(""), EXPORT_CATEGORIES, true), 0);
    EXPECT_EQ(other.GetEntityByOID(DvnfString("DataStructure"), DvnfString("D1")).State(), DvnfObject::StateNone);
}

TEST_P(Export, TheDeepReaderReadsByKeyAndAProcessByItsQuotedName) {
    Structures(true);
    DvnConvCoreDbFe fe(&Db(), &data);
    fe.SetTablePrefix("DVBT.");
    Keyed("Category", "C1");
    Named("Process", "O'Neil");
    Named("Process", "Gone");  // no row
    fe.DeepProcesses();
    EXPECT_EQ(Read("Category"), Lines{"Sales|3"});
    // The process found is read by its key; the one gone stays a skeleton.
    EXPECT_EQ(Messages(), (Lines{"51508|O'Neil", "51513|Sales"}));
    EXPECT_EQ(Read("Process"), Lines{"O'Neil|3"});
    EXPECT_EQ(Named("Process", "Gone", false).State(), DvnfObject::StateNone);
}

TEST_P(Export, SingleLoadsLookupsAndTheOnDemandReader) {
    Structures(true);
    DvnConvCoreDbIF facade(&data);
    DvnODBCReader reader(data, nullptr);
    // A category a file only names: read by its name, it takes the row's
    // key; a name without a row stays a skeleton.
    DvnfEntity& sales = Named("Category", "Sales");
    reader.ReadEntity(data, sales);
    EXPECT_EQ(sales.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(sales.OID().str(), "C1");
    EXPECT_EQ(sales.AttributeData()("Description").AsString("").str(), "Orders");
    reader.ReadEntity(data, Named("Category", "Nope"));
    EXPECT_EQ(Named("Category", "Nope").State(), DvnfObject::StateNone);
    // A structure known by key gets its name and its members; a second and
    // a third read do not double them.
    DvnfEntity& order = Keyed("DataStructure", "D2");
    reader.ReadEntity(data, order);
    EXPECT_EQ(order.Name().str(), "Order");
    EXPECT_EQ(order.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(facade.LoadDataStructure(order), 0);
    EXPECT_EQ(facade.LoadDataStructure(order), 0);
    EXPECT_EQ(order.AttributeData()("Members").NumberOfElements(), 1);
    // A type the reader does not read keeps its state and its name.
    DvnfEntity& node = Named("Node", "N1");
    reader.ReadEntity(data, node);
    EXPECT_EQ(node.State(), DvnfObject::StateNone);
    EXPECT_EQ(node.Name().str(), "N1");
    // The key of a structure by its name; the reader's GetOID knows structures only.
    EXPECT_EQ(facade.GetDataStructureID(Named("DataStructure", "Address")).str(), "D1");
    EXPECT_EQ(reader.GetOID(Named("DataStructure", "Address")).str(), "D1");
    EXPECT_EQ(reader.GetOID(Named("Program", "Edit")).str(), "");
    EXPECT_EQ(facade.FindProcess(DvnString("O'Neil")).str(), "P1");
    EXPECT_EQ(facade.FindProcess(DvnString("Nobody")).str(), "");

    // A program known by its name takes the row's key; loaded again by key
    // it holds the groups whose rows are there now, once. No row: 8, and
    // the skeleton stays.
    ASSERT_NO_FATAL_FAILURE(ImportText("Program \"Edit\" { WINNT { Type = 1; PathAndFilename = \"e.exe\"; }\n"
                                       "  KRX { Type = 2; PathAndFilename = \"/e\"; } }\n"));
    Messages();
    EXPECT_EQ(facade.LoadProgram(Named("Program", "Edit")), 0);
    DvnfEntity& edit = Named("Program", "Edit", false);
    EXPECT_EQ(edit.OID().str(), QueryValue(Db(), "SELECT PROGRAM_ID FROM DVBT.PROGRAM"));
    EXPECT_EQ(edit.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(edit.AttributeData()("KRX")("PathAndFilename").AsString("").str(), "/e");
    ExecAll(Db(), {"DELETE FROM DVBT.KRX_EXTENT", "UPDATE DVBT.WINNT_EXTENT SET PATH_AND_FILE_NAME = 'f.exe'"});
    EXPECT_EQ(facade.LoadProgram(edit), 0);
    EXPECT_EQ(facade.LoadProgram(edit), 0);
    EXPECT_FALSE(edit.AttributeData()("KRX").IsDefined());
    EXPECT_EQ(edit.AttributeData()("WINNT")("PathAndFilename").AsString("").str(), "f.exe");
    EXPECT_EQ(facade.LoadProgram(Named("Program", "Nope")), 8);
    EXPECT_EQ(Named("Program", "Nope", false).State(), DvnfObject::StateNone);
    EXPECT_EQ(Messages(), Lines{});

    // An invalid entity opens no connection: with the profile pointing
    // nowhere, nothing is traced or reported.
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString("no_such_source"));
    TraceCapture trace;
    reader.ReadEntity(data, DvnfEntity::undefined);
    EXPECT_EQ(trace.Text().find("Open database failed"), std::string::npos);
    EXPECT_EQ(trace.Text().find("GetName"), std::string::npos);
    EXPECT_EQ(Messages(), Lines{});
}

TEST_P(Export, AnImportTakesWhatAFileOnlyNamesFromTheRepositoryWithoutTouchingIt) {
    Structures(true);
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "CLERK", .systemGroup = "G1", .password = "pw"});
    DvnMessageTarget target;
    DvnBTAuthorization::GetInstance()->SetUser(target, DvnString("G1"), DvnString("CLERK"), DvnString(),
                                               DvnString(), Source());
    TrxFiles files;
    // The person names a category that only the repository holds. Without
    // the modelling right it is not refused, and the parse finds it.
    const std::string file = files.Write("Person \"ADMIN\" { PersonIsAuthorizedFor -> \"Sales\"; }\n");
    std::ostringstream printed;
    DvnfMessageHandler::DefaultOutput(&printed);
    auto import = [&](const std::string& path) {
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        const int level = facade.ImportTRX(DvnString(path), Source(), true, true, false);
        testing::internal::GetCapturedStdout();
        return level;
    };
    import(file);
    DvnfMessageHandler::DefaultOutput(nullptr);
    EXPECT_EQ(printed.str().find("52009"), std::string::npos) << printed.str();
    EXPECT_EQ(printed.str().find(DvnfMessageHandler::Format(51165, DvnString("Category")).str()), std::string::npos)
        << printed.str();
    EXPECT_NE(printed.str().find("51166"), std::string::npos) << printed.str();  // the person, for the staff right
    EXPECT_EQ(QueryRows(Db(), "SELECT CATID, NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.CATEGORY"),
              Lines{"C1|Sales|0|Orders"});

    // With the right, a structure naming one of the repository is stored
    // with the key of the repository's.
    AllRights();
    EXPECT_EQ(import(files.Write("DataStructure \"Invoice\" { Members [ DataStructureMember \"To\" { Name = \"To\"; "
                                 "Type = 4; HasSubStructure -> \"Address\"; } ] }\n")),
              0);
    EXPECT_EQ(QueryRows(Db(), "SELECT m.MEMBER, m.TYPE_DS FROM DVBT.DATA_STRUCTURE_MBR m JOIN DVBT.DATA_STRUCTURE s "
                              "ON s.DSID = m.DSID WHERE s.NAME = 'Invoice'"),
              Lines{"To|D1"});
    EXPECT_EQ(QueryRows(Db(), "SELECT CHECKED_OUT FROM DVBT.DATA_STRUCTURE WHERE DSID = 'D1'"), Lines{"0"});
}

// tests/data/dvnbdbif/flow.trx: one connector from a source at process
// level to Check, one from a source inside the block Pack to Wrap; each
// activity holds Number in its input container (1, 2, 3), the process 7.

// The elements of a set as "a=b;..." of two of their attributes: a
// container's members by name and value, a connector's mappings.
std::string Pairs(const DvnfAttributeDataReader& set, const char* first, const char* second) {
    std::string out;
    DvnfDataSetIterator it = set.ElementsOfSet();
    for (DvnfAttributeDataReader m = it.First(); m.IsValid(); m = it.Next())
        out += m(first).AsString().str() + "=" + m(second).AsString().str() + ";";
    return out;
}
std::string Members(const DvnfEntity& e) {
    return Pairs(e.AttributeData()("InputContainer")("Members"), "Name", "Value");
}
std::string Mappings(const DvnfEntity& e) { return Pairs(e.AttributeData()("Mappings"), "From", "To"); }

TEST_P(Export, ADataMappingIsReadOnceWithTheContainersOfWhatHoldsItsEnds) {
    ASSERT_NO_FATAL_FAILURE(ImportText(DataText("flow.trx")));
    DvnConvCoreDbIF facade(&data);
    DvnfEntity& flow = facade.LoadProcess(DvnString("Flow"));
    ASSERT_TRUE(flow.IsValid());
    DvnfEntity& pack = Named("Activity", "Pack", false);
    ASSERT_EQ(facade.LoadBlock(pack, DvnString(flow.OID().c_str()), false), 0);
    DvnfEntity& check = Named("Activity", "Check", false);
    DvnfEntity& wrap = Named("Activity", "Wrap", false);
    auto connector = [&](const char* where) -> DvnfEntity& {
        const std::string sql = std::string("SELECT DCID FROM DVBT.DATA_CONNECTOR WHERE ") + where;
        return Keyed("DataConnector", QueryValue(Db(), sql), false);
    };
    DvnfEntity& outer = connector("INSIDE_BLOCK IS NULL");
    DvnfEntity& inner = connector("INSIDE_BLOCK IS NOT NULL");
    ASSERT_TRUE(outer.IsValid() && inner.IsValid());

    // What the loads read so far is forgotten, and the rows changed: only a
    // read of this load can bring the new values.
    for (DvnfEntity* e : {&flow, &check, &pack, &wrap, &outer, &inner})
        e->SetFlags(DvnfEntity::FlagAttributesComplete | DvnfEntity::FlagContainersComplete, false);
    ExecAll(Db(), {"UPDATE DVBT.DATA_MAP SET TO_MEMBER = 'Changed'",
                   "UPDATE DVBT.ACT_CONTAINER SET INITIAL_VALUE = INITIAL_VALUE || '0'",
                   "UPDATE DVBT.PRC_CONTAINER SET INITIAL_VALUE = INITIAL_VALUE || '0'"});
    Messages();

    // From a source at process level: the process's containers and those of
    // the activity at the other end; from a source inside a block: the block
    // activity's containers.
    EXPECT_EQ(facade.LoadDataMapping(outer), 0);
    EXPECT_EQ(Mappings(outer), "Number=Changed;");
    EXPECT_TRUE(outer.IsAttributeDataAttrComplete());
    EXPECT_EQ(Members(flow) + Members(check) + Members(pack), "Number=70;Number=10;Number=2;");
    EXPECT_TRUE(flow.IsAttributeDataContainerComplete() && check.IsAttributeDataContainerComplete());
    EXPECT_FALSE(pack.IsAttributeDataContainerComplete());
    EXPECT_EQ(facade.LoadDataMapping(inner), 0);
    EXPECT_EQ(Mappings(inner), "Number=Changed;");
    EXPECT_EQ(Members(pack) + Members(wrap), "Number=20;Number=30;");
    EXPECT_TRUE(pack.IsAttributeDataContainerComplete() && wrap.IsAttributeDataContainerComplete());
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
    EXPECT_EQ(Mappings(outer), "Number=Changed;");
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(DataSource()));

    // A connector without its row: 51702 with its name, 8, no flag, and the
    // ends are left alone.
    ExecAll(Db(), {("DELETE FROM DVBT.DATA_CONNECTOR WHERE DCID = '" + inner.OID().str() + "'").c_str()});
    inner.SetFlags(DvnfEntity::FlagAttributesComplete, false);
    pack.SetFlags(DvnfEntity::FlagContainersComplete, false);
    EXPECT_EQ(facade.LoadDataMapping(inner), 8);
    EXPECT_EQ(Messages(), Lines{"51702|" + inner.Name().str()});
    EXPECT_FALSE(inner.IsAttributeDataAttrComplete() || pack.IsAttributeDataContainerComplete());
}

TEST_P(Export, AServerIsFoundByItsDottedNameOrKeyOrUnderTheProfileSystemThenDvnsysThenTheFirst) {
    ExecAll(Db(), {"INSERT INTO DVBT.SYSTEM_GROUP (SYSTEM_GROUP_ID, NAME) VALUES ('G1', 'SYS_GRP')",
                   "INSERT INTO DVBT.SYSTEM (SYSTEM_ID, NAME, SYSTEM_GROUP) VALUES ('S1', 'DVNSYS', 'G1')",
                   "INSERT INTO DVBT.SYSTEM (SYSTEM_ID, NAME) VALUES ('S2', 'Other')",
                   "INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM) VALUES ('K4', 'PES2', 'S2')",
                   "INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM, DESCRIPTION, USER_SUPPORT, CHECKED_OUT) "
                   "VALUES ('K1', 'PES1', 'S1', 'runs programs', 2, 0)",
                   "INSERT INTO DVBT.USER_PE_SERVER (SERVER_ID, NAME, SYSTEM, QMGRNAME, CHECKED_OUT) "
                   "VALUES ('K2', 'UPES1', 'S1', 'QM1', 0)",
                   "INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM, CHECKED_OUT) VALUES ('K3', 'GONE', 'S1', 4)"});
    DvnBTAuthorization::GetInstance();  // the loads need no right
    DvnConvCoreDbIF facade(&data);
    auto type = [](const DvnfEntity& e) { return e.AttributeData()("Type").AsLong(0); };

    // By the dotted name, the group from the name or, without one, the
    // default group "SYS_GRP"; the name stays as the activity gives it.
    DvnfEntity& pes = Named("Server", "PES1.DVNSYS.SYS_GRP");
    EXPECT_EQ(facade.LoadPEUnit(pes), 0);
    EXPECT_EQ(type(pes), 7);
    EXPECT_EQ(pes.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(pes.Name().str(), "PES1.DVNSYS.SYS_GRP");
    EXPECT_EQ(pes.AttributeData()("Description").AsString().str(), "runs programs");
    EXPECT_EQ(pes.AttributeData()("ServerDefault")("ProgramExecutionServer")("UserSupport").AsLong(-1), 1);
    DvnfEntity& upes = Named("Server", "UPES1.DVNSYS");
    EXPECT_EQ(facade.LoadPEUnit(upes), 0);
    EXPECT_EQ(type(upes), 8);
    EXPECT_EQ(upes.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(upes.AttributeData()("UPESContext")("QueueManagerName").AsString().str(), "QM1");
    EXPECT_EQ(Messages(), Lines{});

    // By key: an entity the process load made from the activity's row; a
    // key of no live row gives 8 alone.
    for (auto [key, level, kind] : {std::tuple{"K2", 0, 8L}, std::tuple{"K3", 8, 0L}}) {
        DvnfEntity& byKey = Keyed("Server", key);
        byKey.State(DvnfObject::StateNew);
        EXPECT_EQ(facade.LoadPEUnit(byKey), level) << key;
        EXPECT_EQ(type(byKey), kind) << key;
    }
    // Not there: a name of no server, of an unknown system or of a
    // tombstone gives 51184 and 8. A name of one level is no dotted name:
    // left as it is.
    for (const char* name : {"NOPE.DVNSYS", "PES1.NOSYS", "GONE.DVNSYS"}) {
        SCOPED_TRACE(name);
        DvnfEntity& none = Named("Server", name);
        EXPECT_EQ(facade.LoadPEUnit(none), 8);
        EXPECT_EQ(Messages(), Lines{std::string("51184|") + name});
        EXPECT_EQ(none.State(), DvnfObject::StateNone);
        EXPECT_EQ(type(none), 0);
    }
    DvnfEntity& bare = Named("Server", "PES1");
    EXPECT_EQ(facade.LoadPEUnit(bare), 0);
    EXPECT_EQ(bare.State(), DvnfObject::StateNone);
    EXPECT_EQ(Messages(), Lines{});

    // An export of each name alone: a server found is read (51532), one not
    // found is reported (51568); without a system in the name, the profile's
    // system, then DVNSYS, then the first.
    AllRights();
    auto found = [&](const char* name) {
        DvnfTRXData scratch{DvnfTRXTypes::_instance, &handler};
        DvnConvCoreDbIF exporter(&scratch);
        DvnCmdVisitor::Command command(DvnEntityType::Server, {name}, false, false, DvnSvrKind::PEServer);
        EXPECT_EQ(exporter.ExportByCommand(Source(), command), 0);
        const Lines lines = Messages();
        return std::string(lines.size() == 1 && lines[0].starts_with("51532|") ? "found"
                           : lines == Lines{"51568"}                            ? "not found"
                                                                                : "?");
    };
    // The profile's "System" (empty: none), whether DVNSYS exists, what is found of PES1 and PES2.
    using Case = std::tuple<std::string, bool, const char*, const char*>;
    for (const auto& [system, dvnsys, pes1, pes2] : {Case{"Other", true, "not found", "found"},
                                                     Case{"", true, "found", "not found"},
                                                     Case{"", false, "not found", "found"}}) {
        SCOPED_TRACE(system + (dvnsys ? ", DVNSYS" : ""));
        ProfileFile profile("current = Work\n[Work]\n" + (system.empty() ? "" : "System = " + system + "\n"));
        if (!dvnsys) ExecAll(Db(), {"DELETE FROM DVBT.SYSTEM WHERE SYSTEM_ID = 'S1'"});
        EXPECT_EQ(found("PES1"), pes1);
        EXPECT_EQ(found("PES2"), pes2);
        // With the system named, the profile plays no part.
        EXPECT_EQ(found("PES2.Other"), "found");
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(Export);

}  // namespace
