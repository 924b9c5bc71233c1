// The icons of a tool set, one by one: found by tool set and icon name,
// written whatever the overwrite option, one flag at most. Imports of tool
// sets: tests/dvnbt/test_import_lists.cpp.
#include <gtest/gtest.h>

#include "backendrun.h"

namespace {

using Lines = std::vector<std::string>;

class ToolSetStore : public StoreTest {
protected:
    Lines Icons() {
        return QueryRows(Db(),
                         "SELECT TOOL_SET_NAME, NAME, IS_PROC_ACT, IS_BLK_ACT, IS_BUN_ACT, IS_INFO_ACT, IS_PROG_ACT, "
                         "DESCRIPTION FROM DVBT.TOOL_SET_ICONS ORDER BY TOOL_SET_NAME, NAME");
    }
};

TEST_P(ToolSetStore, AnIconIsRewrittenWhateverTheOverwriteOptionAndKeepsItsDescription) {
    Exec("INSERT INTO DVBT.TOOL_SET_ICONS (TOOL_SET_NAME, NAME, IS_PROC_ACT, IS_BLK_ACT, IS_BUN_ACT, IS_INFO_ACT, "
         "IS_PROG_ACT, DESCRIPTION) VALUES ('T', 'a', 1, 1, 1, 1, 1, 'kept')");
    BackEndRun run(false);
    run.be.SetOverwriteOption(false);
    // The kinds by number; one outside 1 to 5 sets no flag.
    const struct {
        int kind;
        const char* flags;
    } cases[] = {{1, "1|0|0|0|0"}, {2, "0|1|0|0|0"}, {3, "0|0|1|0|0"}, {4, "0|0|0|1|0"}, {5, "0|0|0|0|1"},
                 {0, "0|0|0|0|0"}, {6, "0|0|0|0|0"}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.kind);
        EXPECT_EQ(run.be.SaveToolSetIcon(Db(), DvnfString("T"), "a", c.kind), 0);
        EXPECT_EQ(run.be.SaveToolSetIcon(Db(), DvnfString("U"), "a", c.kind), 0);
        EXPECT_EQ(Icons(), (Lines{"T|a|" + std::string(c.flags) + "|kept", "U|a|" + std::string(c.flags) + "|<null>"}));
    }
    EXPECT_TRUE(run.Messages().empty());
}

DVN_INSTANTIATE_BOTH_BACKENDS(ToolSetStore);

}  // namespace
