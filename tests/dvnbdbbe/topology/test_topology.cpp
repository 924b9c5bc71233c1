// The parts of the topology saved by direct calls: the admin server, which no
// "Type" leads to, found by its name in its system and never deleted; and the
// icons of a tool set, one by one, found by tool set and icon name, written
// whatever the overwrite option, one flag at most. Imports of tool sets:
// tests/dvnbt/test_import_lists.cpp.
#include "../storetests.h"

namespace {

using TopologyStore = StoreTest;

TEST_P(TopologyStore, TheAdminServerIsAddedUpdatedAndNeverDeleted) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddSystem(Db(), "S1", "DVNSYS", "G1");
    BackEndRun run(true);
    run.be.SetOverwriteOption(true);
    DvnfEntity& admin = run.Add("Server", "ADMINSERVER.DVNSYS.SYS_GRP");
    admin.AttributeData()("Description") = DvnString("first");
    EXPECT_EQ(run.be.SaveAdminServer(Db(), admin), 0);
    admin.AttributeData()("Description") = DvnString("second");
    EXPECT_EQ(run.be.SaveAdminServer(Db(), admin), 0);
    admin.State(DvnfObject::StateDeleted);
    EXPECT_EQ(run.be.SaveAdminServer(Db(), admin), 4);
    EXPECT_EQ(run.Messages(), (Lines{"51126|ADMINSERVER", "51030|ADMINSER", "51126|ADMINSERVER", "51062|ADMINSER",
                                     "51126|ADMINSERVER", "51258|ADMINSER"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, SYSTEM, CHECKED_OUT, DESCRIPTION FROM DVBT.ADMIN_SERVER"),
              (Lines{"ADMINSER|S1|0|second"}));
}

TEST_P(TopologyStore, AToolSetIconIsRewrittenWhateverTheOverwriteOptionAndKeepsItsDescription) {
    Exec("INSERT INTO DVBT.TOOL_SET_ICONS (TOOL_SET_NAME, NAME, IS_PROC_ACT, IS_BLK_ACT, IS_BUN_ACT, IS_INFO_ACT, "
         "IS_PROG_ACT, DESCRIPTION) VALUES ('T', 'a', 1, 1, 1, 1, 1, 'kept')");
    BackEndRun run(false);
    run.be.SetOverwriteOption(false);
    // The kinds by number; one outside 1 to 5 sets no flag.
    const std::pair<int, std::string> cases[] = {{1, "1|0|0|0|0"}, {2, "0|1|0|0|0"}, {3, "0|0|1|0|0"},
                                                 {4, "0|0|0|1|0"}, {5, "0|0|0|0|1"}, {0, "0|0|0|0|0"},
                                                 {6, "0|0|0|0|0"}};
    for (const auto& [kind, flags] : cases) {
        SCOPED_TRACE(kind);
        EXPECT_EQ(run.be.SaveToolSetIcon(Db(), DvnfString("T"), "a", kind), 0);
        EXPECT_EQ(run.be.SaveToolSetIcon(Db(), DvnfString("U"), "a", kind), 0);
        EXPECT_EQ(QueryRows(Db(), "SELECT TOOL_SET_NAME, NAME, IS_PROC_ACT, IS_BLK_ACT, IS_BUN_ACT, IS_INFO_ACT, "
                                  "IS_PROG_ACT, DESCRIPTION FROM DVBT.TOOL_SET_ICONS ORDER BY TOOL_SET_NAME, NAME"),
                  (Lines{"T|a|" + flags + "|kept", "U|a|" + flags + "|<null>"}));
    }
    EXPECT_TRUE(run.Messages().empty());
}

DVN_INSTANTIATE_BOTH_BACKENDS(TopologyStore);

}  // namespace
