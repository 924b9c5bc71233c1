// The admin server, which no "Type" leads to: saved by a direct call, found
// by its name in its system, never deleted.
#include <gtest/gtest.h>

#include "backendrun.h"

namespace {

using Lines = std::vector<std::string>;
using AdminServerStore = StoreTest;

TEST_P(AdminServerStore, ADirectCallAddsUpdatesAndRefusesToDelete) {
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

DVN_INSTANTIATE_BOTH_BACKENDS(AdminServerStore);

}  // namespace
