// dvnbt import on both databases: progress on standard output, messages on
// standard error, exit statuses by level under the rights of the user.
#include <gtest/gtest.h>

#include "importtest.h"

namespace {

class DvnbtImport : public DvnbtImportTest {
protected:
    // dvnbt import of the files on this test's database, logged in as user (password "pw") when given.
    CliResult Import(Lines args, const std::string& user = "") {
        args.insert(args.begin(), "import");
        return Run(args, user);
    }
    std::vector<std::string> Rows() {
        return QueryRows(Db(), "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.CATEGORY ORDER BY NAME");
    }
    // structure|member|sequence|type name|data type, in order.
    std::vector<std::string> Members() {
        return QueryRows(Db(),
                         "SELECT s.NAME, m.MEMBER, m.SEQUENCE_NO, t.NAME, m.DATA_TYPE "
                         "FROM DVBT.DATA_STRUCTURE_MBR m JOIN DVBT.DATA_STRUCTURE s ON s.DSID = m.DSID "
                         "LEFT JOIN DVBT.DATA_STRUCTURE t ON t.DSID = m.TYPE_DS ORDER BY s.NAME, m.SEQUENCE_NO");
    }
};

TEST_P(DvnbtImport, ExitStatusFollowsTheLevelUnderTheRightsOfTheUser) {
    // A repository without users imports only as an initial load.
    const std::string sales = files.Write("Category \"Sales\" { Description = \"Orders\"; }\n");
    CliResult nobody = Import({sales});
    EXPECT_EQ(nobody.status, 1);
    EXPECT_NE(nobody.err.find("no users yet"), std::string::npos) << nobody.err;
    EXPECT_TRUE(Rows().empty());

    // Standard output holds the import's own lines only; the note that no
    // login was needed goes with the messages.
    CliResult r = Import({"--initial-load", sales});
    EXPECT_EQ(r.status, 0) << r.err;
    EXPECT_EQ(r.out,
              "Version, Release, Level\nNode Default Node...\n\nQueueManager Default Queue Manager...\n\n"
              "Category Sales...\n\nFinished with Process Model import \nNo errors during import.\n");
    EXPECT_EQ(Missing(r, {"dvnbt: the repository has no users yet: importing as initial load", Line(51019, "Sales")}), "");
    EXPECT_EQ(Rows(), (std::vector<std::string>{"Sales|0|Orders"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.VERSION"), "1");

    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P2", .userId = "MODELER", .systemGroup = "G1", .password = "pw", .staff = 1,
                     .topology = 1, .processModeling = 1});

    // Warnings (3): WithoutItsRightEveryKindIsRefusedOnceAndNothingOfItIsWritten.
    // An object that cannot be stored (an agent of no person): errors, the rest is stored.
    CliResult partly = Import({files.Write("PEAgent \"N1\" {}\nCategory \"A\" {}\n")}, "modeler");
    EXPECT_EQ(partly.status, 4) << partly.err;
    EXPECT_NE(partly.out.find("Errors found during import.\n"), std::string::npos);
    EXPECT_EQ(Rows().size(), 2u);

    // A file that does not parse: failure, nothing stored.
    std::string bad = files.Write("Category \"B\" {\n");
    CliResult failed = Import({bad}, "modeler");
    EXPECT_EQ(failed.status, 1);
    EXPECT_EQ(failed.out, "Could not load TRX" + bad);
    EXPECT_EQ(Missing(failed, {Line(51301, bad), "dvnbt: import of " + bad + " failed"}), "");
    EXPECT_EQ(Rows().size(), 2u);
}

TEST_P(DvnbtImport, AReimportedStructureGetsItsNewMembersOnlyWhenOverwriting) {
    auto structures = [&](const std::string& address, const std::string& order) {
        return files.Write("DataStructure \"Address\" { Members [ " + address + " ] }\n" +
                           "DataStructure \"Order\" { Members [ " + order + " ] }\n");
    };
    auto member = [](const char* name, int type, const char* sub = nullptr) {
        return std::string("DataStructureMember \"") + name + "\" { Name = \"" + name +
               "\"; Type = " + std::to_string(type) + ";" +
               (sub ? std::string(" HasSubStructure -> \"") + sub + "\";" : std::string()) + " } ";
    };
    const std::string order = member("Number", 1) + member("ShipTo", 4, "Address");
    ASSERT_EQ(Import({"--initial-load", structures(member("Street", 0) + member("Zip", 1), order)}).status, 0);
    ASSERT_EQ(Members(), (std::vector<std::string>{"Address|Street|1|<null>|1", "Address|Zip|2|<null>|5",
                                                   "Order|Number|1|<null>|5", "Order|ShipTo|2|Address|7"}));

    // Overwriting: a dropped member goes, an added one comes, the order is
    // the file's; a structure left as it was keeps its members.
    CliResult overwritten = Import({"--initial-load", structures(member("City", 0) + member("Street", 1), order)});
    EXPECT_EQ(overwritten.status, 0) << overwritten.err;
    EXPECT_EQ(Missing(overwritten, {Line(51053, "Address")}), "");
    const std::vector<std::string> changedMembers{"Address|City|1|<null>|1", "Address|Street|2|<null>|5",
                                                  "Order|Number|1|<null>|5", "Order|ShipTo|2|Address|7"};
    EXPECT_EQ(Members(), changedMembers);

    // Not overwriting: the structures and all their members stay untouched.
    CliResult kept = Import({"--initial-load", "--no-overwrite",
                             structures(member("Country", 0), member("Total", 1) + member("BillTo", 4, "Address"))});
    EXPECT_EQ(kept.status, 0) << kept.err;
    EXPECT_EQ(Missing(kept, {Line(51085, "Address"), Line(51085, "Order")}), "");
    EXPECT_EQ(Members(), changedMembers);
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, CHECKED_OUT FROM DVBT.DATA_STRUCTURE ORDER BY NAME"),
              (std::vector<std::string>{"Address|0", "Default Data Structure|0", "Order|0"}));
}

// Each kind is guarded by its own right: without it the kind is refused
// once, in the order in which the kinds are stored, however many objects the
// file holds, and nothing of it is written, not even the defaults that a run
// makes; a user with one right is refused exactly the kinds of the others.
TEST_P(DvnbtImport, WithoutItsRightEveryKindIsRefusedOnceAndNothingOfItIsWritten) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "NOBODY", .systemGroup = "G1", .password = "pw"});
    AddPerson(Db(), {.id = "P2", .userId = "STAFF", .systemGroup = "G1", .password = "pw", .staff = 1});
    AddPerson(Db(), {.id = "P3", .userId = "MODELER", .systemGroup = "G1", .password = "pw", .processModeling = 1});
    AddPerson(Db(), {.id = "P4", .userId = "TOPO", .systemGroup = "G1", .password = "pw", .topology = 1});
    std::string text = "Domain \"domain\" {}\nSystemGroup \"SYS_GRP\" { GroupIsInDomain -> \"domain\"; }\n";
    for (const char* kind : {"Level", "Category", "ToolSet", "Worklist", "ActivitiesList", "ProcessInstancesList",
                             "TemplatesList", "Node", "QueueManager", "System"})
        for (const char* name : {"1", "2"}) text += std::string(kind) + " \"" + name + "\" {}\n";
    for (const char* name : {"N1.SYS_GRP", "N2.SYS_GRP"})
        text += "Server \"" + std::string(name) + "\" { Type = 4; }\n";
    for (const char* name : {"NOBODY", "STAFF"})
        text += "PEAgent \"" + std::string(name) + "\" { PEAHasPerson -> \"" + name + "\"; }\n";
    const std::string file = files.Write(text);
    const std::vector<std::pair<long, const char*>> kinds{
        {51167, "DOMAIN"}, {51167, "System Group"}, {51167, "Node"}, {51167, "Queue Manager"},
        {51167, "System"}, {51167, "Server"}, {51165, "Category"}, {51166, "Level"},
        {51166, "Activity Instance List"}, {51166, "Process Instance List"}, {51166, "Process Template List"},
        {51166, "Work List"}, {51167, "PEA"}, {51165, "Tool Set"}};
    // user, and the refusal that its right spares it
    for (auto [user, allowed] : std::vector<std::pair<const char*, long>>{
             {"nobody", 0}, {"staff", 51166}, {"modeler", 51165}, {"topo", 51167}}) {
        SCOPED_TRACE(user);
        CliResult r = Import({file}, user);
        std::vector<std::string> refused, expected;
        for (size_t at = 0; (at = r.err.find("\n5116", at)) != std::string::npos; ++at)
            refused.push_back(r.err.substr(at + 1, r.err.find('\n', at + 1) - at));
        for (auto [number, kind] : kinds)
            if (number != allowed) expected.push_back(Line(number, kind));
        EXPECT_EQ(refused, expected) << r.err;
        if (allowed != 0) continue;
        EXPECT_EQ(r.status, 3) << r.err;
        EXPECT_NE(r.out.find("Warnings found during import.\n"), std::string::npos) << r.out;
        for (const char* table : {"DV_DOMAIN", "SYSTEM", "SYSTEMGRP_PRC_ATTR", "NODE", "QUEUE_MANAGER",
                                  "GATEWAY_SERVER", "PE_AGENT", "STAFF_LEVEL", "ACT_INSTANCE_LIST",
                                  "PRC_INSTANCE_LIST", "PRC_TEMPLATE_LIST", "WORK_LIST", "CATEGORY", "TOOL_SET_DEFAULT"})
            EXPECT_EQ(QueryValue(Db(), std::string("SELECT COUNT(*) FROM DVBT.") + table), "0") << table;
    }
}

TEST_P(DvnbtImport, TwoImportsOfOneFileAtOnceNeitherFailOnALockNorDoubleAName) {
    AddSystemGroup(Db(), "G1", "SYS_GRP");
    AddPerson(Db(), {.id = "P1", .userId = "MODELER", .systemGroup = "G1", .password = "pw", .processModeling = 1});
    const int count = 1000;
    std::string text;
    for (int i = 0; i < count; ++i) text += "Category \"C" + std::to_string(i) + "\" {}\n";
    const std::string file = files.Write(text);
    // The options after the command, as people type them. Without overwrite
    // the run that trails skips what the other stored and catches up with it,
    // so that the two meet at the same names again and again.
    std::vector<std::string> args{"import", "--no-overwrite", file, "--user", "modeler"};
    for (const std::string& a : DvnbtArgs({})) args.push_back(a);
    CliResult results[2];
    {
        DvnbtProcess first(args, {"DVNBT_PASSWORD=pw"}), second(args, {"DVNBT_PASSWORD=pw"});
        results[0] = first.Wait();
        results[1] = second.Wait();
    }
    EXPECT_EQ(QueryRows(Db(), "SELECT COUNT(*), COUNT(DISTINCT NAME) FROM DVBT.CATEGORY"),
              (std::vector<std::string>{std::to_string(count) + "|" + std::to_string(count)}));
    for (const CliResult& r : results) {
        auto lines = [&](const char* head) { return Count(r.err, head); };
        const size_t refused = lines("\n51315: Category C");
        EXPECT_EQ(r.err.find("locked"), std::string::npos) << r.err.substr(0, 2000);
        if (!IsPostgres()) {
            // The second waits for the first, object by object.
            EXPECT_EQ(r.status, 0) << r.err.substr(0, 2000);
            EXPECT_EQ(refused, 0u);
        } else {
            // A name inserted by the other run in the meantime is refused
            // for that one object, with its message; the others are stored.
            EXPECT_EQ(r.status, refused ? 4 : 0) << r.err.substr(0, 2000);
            EXPECT_EQ(lines("51368: "), refused);
            EXPECT_EQ(lines("\n51019: Category C") + lines("\n51083: Category C") + refused +
                          (r.err.rfind("51019: Category C", 0) == 0 || r.err.rfind("51083: Category C", 0) == 0),
                      static_cast<size_t>(count));
        }
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(DvnbtImport);

}  // namespace
