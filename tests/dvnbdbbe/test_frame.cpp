// What every store shares: the life of a row (insert, update in place with
// the marks of the source option, overwrite off, deletion as a tombstone or
// for good, held rows, database failures, names that cannot be stored), the
// variations a family may state, and the default system names.
// The rights of the sections: tests/dvnbdbif/test_import.cpp.
#include <gtest/gtest.h>

#include <cctype>
#include <chrono>
#include <thread>

#include "backendrun.h"
#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "dvnstaffsets.h"
#include "familystore.h"
#include "testenv.h"

namespace {

using Lines = std::vector<std::string>;

// One row per family of one row each, as the store's family descriptors
// state them; a new family adds its row here.
struct Store {
    const char* type;
    const char* kind;  // in words, as refusals say it
    const char* table;
    const char* key;  // key column
    int (DvnConvCoreDbBe::*save)(CDatabase&, bool);
    int passes;  // a held row is refused, and a failure reported, in each
    long inserted, updated, removed, kept, held, cannotAppend, cannotUpdate;
    const char* missing;  // a deleted name without a row: 51273 with this before it
};

const Store kStores[] = {
    {"Category", "Category", "CATEGORY", "CATID", &DvnConvCoreDbBe::SaveCategories, 1, 51019, 51051, 51219, 51083,
     51146, 51315, 51347, "DELETE PROCESS_CATEGORY "},
    {"DataStructure", "Data Structure", "DATA_STRUCTURE", "DSID", &DvnConvCoreDbBe::SaveDataStructures, 2, 51021,
     51053, 51221, 51085, 51148, 51317, 51349, "DELETE STRUCTURE "},
    // staff: the role's own second pass runs after each written row
    {"Role", "Role", "ROLE", "ROLE_ID", &DvnConvCoreDbBe::SaveRoles, 1, 51002, 51039, 51211, 51071, 51138, 51303,
     51335, "DELETE ROLE "},
    // lists
    {"ActivitiesList", "Activity Instance List", "ACT_INSTANCE_LIST", "LIST_ID",
     &DvnConvCoreDbBe::SaveActInstanceLists, 1, 51006, 51042, 51214, 51074, 51141, 51306, 51338,
     "DELETE ACTIVITIES_LIST "},
    {"ProcessInstancesList", "Process Instance List", "PRC_INSTANCE_LIST", "LIST_ID",
     &DvnConvCoreDbBe::SavePrcInstanceLists, 1, 51007, 51043, 51215, 51075, 51142, 51307, 51339,
     "DELETE PROCESS_INSTANCES_LIST "},
    {"TemplatesList", "Process Template List", "PRC_TEMPLATE_LIST", "LIST_ID",
     &DvnConvCoreDbBe::SavePrcTemplateLists, 1, 51008, 51044, 51216, 51076, 51143, 51308, 51340,
     "DELETE TEMPLATE_LIST "},
    {"Worklist", "Work List", "WORK_LIST", "LIST_ID", &DvnConvCoreDbBe::SaveWorkLists, 1, 51009, 51045, 51217,
     51077, 51144, 51309, 51341, "DELETE WORKLIST "},
    // programs
    {"Program", "Program", "PROGRAM", "PROGRAM_ID", &DvnConvCoreDbBe::SavePrograms, 1, 51020, 51052, 51220, 51084,
     51147, 51316, 51348, "DELETE PROGRAM "},
};

class Frame : public StoreTest {};

TEST_P(Frame, RowsAreInsertedUpdatedInPlaceAndDeletedUnderTheOptionsAndNamesThatCannotBeStoredAreRefused) {
    for (const Store& s : kStores) {
        SCOPED_TRACE(s.type);
        const std::string table = s.table;
        auto save = [&](BackEndRun& run) { return (run.be.*s.save)(Db(), true); };
        auto msg = [](long number, const std::string& name) { return std::to_string(number) + "|" + name; };
        const std::string longName(256, 'n');
        {
            // In the order of names; the long name fails at its insert.
            BackEndRun run(false);
            run.Add(s.type, "");
            run.Add(s.type, longName.c_str());
            run.Add(s.type, "Kept");
            EXPECT_EQ(save(run), 8);
            const Lines messages = run.Messages();
            ASSERT_EQ(messages.size(), 4u) << testing::PrintToString(messages);
            EXPECT_EQ(messages[0], "51901|" + std::string(s.kind));
            EXPECT_EQ(messages[1], msg(s.inserted, "Kept"));
            EXPECT_EQ(messages[2].rfind("51368|", 0), 0u) << messages[2];
            EXPECT_EQ(messages[3], msg(s.cannotAppend, longName));
        }
        {
            // A deletion of no name is refused as well, and touches nothing.
            BackEndRun run(true);
            run.Delete(s.type, "");
            EXPECT_EQ(save(run), 8);
            EXPECT_EQ(run.Messages(), (Lines{"51901|" + std::string(s.kind)}));
        }
        // No row of no name, and no first pass left unfinished.
        EXPECT_EQ(Marks(table), (Lines{"Kept|5"}));
        EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT." + table + " WHERE NAME IS NULL OR CHECKED_OUT = 9"),
                  "0");
        Exec("DELETE FROM DVBT." + table + " WHERE NAME = 'Kept'");

        // A row of this run's kind (5) stays 5, a clean (0) or changed (3)
        // one becomes 3, in place; a new row gets 5; a row a user holds is refused.
        Exec("INSERT INTO DVBT." + table + " (" + s.key + ", NAME, CHECKED_OUT, CHECKED_OUT_BY) VALUES ('K1', " +
             "'Sales', 5, NULL), ('K2', 'Billing', 0, NULL), ('K3', 'Audit', 3, NULL), ('K4', 'Held', 0, 'ADMIN')");
        {
            BackEndRun run(/*sourceOption=*/false);
            for (const char* name : {"Sales", "Billing", "Audit", "Held", "New"}) run.Add(s.type, name);
            EXPECT_EQ(save(run), 4);
            Lines expected = {msg(s.updated, "Audit"), msg(s.updated, "Billing"), msg(s.held, "Held|ADMIN"),
                              msg(s.inserted, "New"), msg(s.updated, "Sales")};
            if (s.passes == 2) expected.push_back(msg(s.held, "Held|ADMIN"));
            EXPECT_EQ(run.Messages(), expected);
        }
        EXPECT_EQ(Marks(table), (Lines{"Audit|3", "Billing|3", "Held|0", "New|5", "Sales|5"}));
        EXPECT_EQ(QueryValue(Db(), "SELECT " + std::string(s.key) + " FROM DVBT." + table + " WHERE NAME = 'Sales'"),
                  "K1");

        // A clean run writes 0 and deletes for good; a missing row is no error.
        {
            BackEndRun run(true);
            run.Add(s.type, "Sales");
            run.Delete(s.type, "Billing");
            run.Delete(s.type, "Nowhere");
            EXPECT_EQ(save(run), 0);
            EXPECT_EQ(run.Messages(),
                      (Lines{msg(s.removed, "Billing"), "51273|" + (s.missing + std::string("Nowhere")),
                             msg(s.updated, "Sales")}));
        }
        EXPECT_EQ(Marks(table), (Lines{"Audit|3", "Held|0", "New|5", "Sales|0"}));

        // Overwrite off leaves rows alone but still deletes, here as a tombstone.
        {
            BackEndRun run(false);
            run.be.SetOverwriteOption(false);
            run.Add(s.type, "Sales");
            run.Delete(s.type, "Audit");
            run.Add(s.type, "Fresh");
            EXPECT_EQ(save(run), 0);
            EXPECT_EQ(run.Messages(), (Lines{msg(s.updated, "Audit"), msg(s.inserted, "Fresh"), msg(s.kept, "Sales")}));
        }
        EXPECT_EQ(Marks(table), (Lines{"Audit|4", "Fresh|5", "Held|0", "New|5", "Sales|0"}));

        // A database failure is reported per object and the loop goes on.
        // The table is given back afterwards: the next family may read it.
        Exec("ALTER TABLE DVBT." + table + " RENAME TO " + table + "_GONE");
        BackEndRun run(true);
        run.Add(s.type, "A");
        run.Add(s.type, "B");
        EXPECT_EQ(save(run), 8);
        EXPECT_EQ(run.handler.Count(51368), 2u * s.passes);
        EXPECT_FALSE(run.handler.Entries()[0].args[0].IsEmpty());  // the driver's text
        Exec("ALTER TABLE DVBT." + table + "_GONE RENAME TO " + table);
    }
}

// A back end with a family of its own over the table of categories, which
// states the variations that families may need: rows found by the name in
// upper case, no held test, an attribute step that fails, a step after the
// row, a tombstone also reported as missing, and deletion refused.
class VariedBackEnd : public DvnConvCoreDbBe {
public:
    using DvnConvCoreDbBe::DvnConvCoreDbBe;
    using DvnConvCoreDbBe::Family;
    using DvnConvCoreDbBe::SaveFamily;
    static inline Lines after;  // key|tombstone of each step after a row

    static Family<DvnCategorySet> Varied() {
        return {
            .typeName = "Category",
            .kind = "Varied",
            .right = &ModelingRight,
            .table = "CATEGORY",
            .keyColumn = "CATID",
            .key = &DvnCategorySet::m_CATID,
            .progress = "Varied ",
            .invalidTrace = "Varied is not defined",
            .deleteKeyword = "DELETE VARIED ",
            .messages = {.added = 1, .updated = 2, .kept = 3, .held = 0, .deleted = 5, .cannotAppend = 6,
                         .cannotUpdate = 7},
            .read = [](DvnConvCoreDbBe& be, CDatabase&, DvnfEntity& entity, DvnCategorySet& row, bool isNew) {
                row.m_NAME = Upper(entity.Name()).c_str();
                if (isNew) row.m_CATID = ("V-" + entity.Name().str()).c_str();
                row.m_CHECKED_OUT = be.SourceMark();
                if (entity.AttributeData()("Description").AsString("").str() == "fail") return 8;
                row.m_DESCRIPTION = "read";
                return 0;
            },
            .filter = [](const DvnString& name) {
                return CString("NAME = ") + ReturnQuotedString(DvnString(Upper(name).c_str()), "'", "'").c_str();
            },
            .readErrorStops = true,
            .tombstoneNotFound = true,
            .afterWrite = [](DvnConvCoreDbBe&, CDatabase&, DvnfEntity&, const CString& key, bool tombstone) {
                after.push_back(std::string(key.c_str()) + "|" + (tombstone ? "1" : "0"));
                return key == "V-warn" ? 4 : 0;
            },
        };
    }

private:
    static std::string Upper(const DvnString& name) {
        std::string text = name.str();
        for (char& c : text) c = static_cast<char>(std::toupper(static_cast<unsigned char>(c)));
        return text;
    }
};

TEST_P(Frame, AFamilyStatesItsFilterHeldTestAttributeFailuresStepsAfterTheRowAndDeletionRules) {
    using VariedRun = BasicBackEndRun<VariedBackEnd>;
    const auto varied = VariedBackEnd::Varied();
    auto rows = [&] {
        return QueryRows(Db(), "SELECT CATID, NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.CATEGORY ORDER BY NAME");
    };
    Exec("INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT, CHECKED_OUT_BY) VALUES ('K1', 'SALES', 0, 'ADMIN')");
    VariedBackEnd::after.clear();
    {
        // No held test: the held row is rewritten. A failed attribute step
        // writes no row and takes no step after it.
        VariedRun run(false);
        run.Add("Category", "sales");
        run.Add("Category", "new");
        run.Add("Category", "warn");
        run.Add("Category", "bad").AttributeData()("Description") = "fail";
        EXPECT_EQ(run.be.SaveFamily(Db(), true, varied), 8);
        EXPECT_EQ(run.Messages(), (Lines{"6|bad", "1|new", "2|sales", "1|warn"}));
        EXPECT_EQ(VariedBackEnd::after, (Lines{"V-new|0", "K1|0", "V-warn|0"}));
    }
    EXPECT_EQ(rows(), (Lines{"V-new|NEW|5|read", "K1|SALES|5|read", "V-warn|WARN|5|read"}));
    VariedBackEnd::after.clear();
    {
        // A failed attribute step leaves an existing row as it was; the
        // level of the step after the row counts; a tombstone is also
        // reported as missing.
        VariedRun run(false);
        run.Delete("Category", "new");
        run.Add("Category", "sales").AttributeData()("Description") = "fail";
        run.Add("Category", "warn");
        EXPECT_EQ(run.be.SaveFamily(Db(), true, varied), 8);
        EXPECT_EQ(run.Messages(), (Lines{"2|new", "51273|DELETE VARIED new", "7|sales", "2|warn"}));
        EXPECT_EQ(VariedBackEnd::after, (Lines{"V-new|1", "V-warn|0"}));
        VariedRun warned(false);
        warned.Add("Category", "warn");
        EXPECT_EQ(warned.be.SaveFamily(Db(), true, varied), 4);
    }
    EXPECT_EQ(rows(), (Lines{"V-new|NEW|4|read", "K1|SALES|5|read", "V-warn|WARN|5|read"}));

    // A family whose rows are never deleted refuses, with either source option.
    auto kept = varied;
    kept.refuseDelete = 9;
    for (bool source : {true, false}) {
        VariedRun run(source);
        run.Delete("Category", "sales");
        run.Delete("Category", "nowhere");
        EXPECT_EQ(run.be.SaveFamily(Db(), true, kept), 4);
        EXPECT_EQ(run.Messages(), (Lines{"51273|DELETE VARIED nowhere", "9|sales"}));
    }
    EXPECT_EQ(rows().size(), 3u);

    // What hangs from a row deleted for good goes first; when it cannot, the
    // row stays. A tombstone leaves it alone.
    auto dependents = varied;
    dependents.deleteDependents = [](DvnConvCoreDbBe&, CDatabase&, const CString& key) {
        VariedBackEnd::after.push_back(std::string("drop ") + key.c_str());
        return key == "V-warn" ? 8 : 0;
    };
    VariedBackEnd::after.clear();
    {
        VariedRun marking(false);
        marking.Delete("Category", "sales");
        EXPECT_EQ(marking.be.SaveFamily(Db(), true, dependents), 0);
        VariedRun run(true);
        run.Delete("Category", "new");
        run.Delete("Category", "warn");
        EXPECT_EQ(run.be.SaveFamily(Db(), true, dependents), 8);
        EXPECT_EQ(run.Messages(), (Lines{"5|new"}));
    }
    EXPECT_EQ(VariedBackEnd::after, (Lines{"K1|1", "drop V-new", "drop V-warn"}));
    EXPECT_EQ(rows(), (Lines{"K1|SALES|4|read", "V-warn|WARN|5|read"}));
}

TEST(FrameDefaults, SystemNamesComeFromTheProfileOrTheirFallbacksOnce) {
    {
        ProfileFile profile("current = Work\n[Work]\nSystem = PRODSYS\nSystemGroup = PRODGRP\n");
        DvnConvCoreDbBe be;
        EXPECT_EQ(be.DefaultSystem().str(), "PRODSYS");
        EXPECT_EQ(be.DefaultSysGrp().str(), "PRODGRP");
        ProfileFile other("current = Work\n[Work]\nSystem = OTHER\n");
        EXPECT_EQ(be.DefaultSystem().str(), "PRODSYS");  // kept from the first call
    }
    ProfileFile none("current = Work\n[Work]\n");
    DvnConvCoreDbBe be;
    EXPECT_EQ(be.DefaultSystem().str(), "DVNSYS");
    EXPECT_EQ(be.DefaultSysGrp().str(), "SYS_GRP");
}

// Keys found by name are kept by table and name while a span lasts; a miss
// is read again each time, and no key outlives its span.
TEST(KeysByName, AFoundKeyIsReadOncePerSpanAndTableAMissEveryTime) {
    DvnKeysByName keys;
    DvnRoleSet roles(nullptr);
    DvnProgramSet programs(nullptr);
    int reads = 0;
    auto find = [&](CRecordset& set, const char* name, const char* stored) {
        return keys.Find(set, DvnString(name), [&] {
            ++reads;
            return CString(stored);
        }).str();
    };
    EXPECT_EQ(find(roles, "Clerk", "R1"), "R1");
    EXPECT_EQ(find(roles, "Clerk", "R2"), "R2");  // outside a span: read every time
    {
        const DvnKeysByName::Span span(keys);
        reads = 0;
        EXPECT_EQ(find(roles, "Clerk", "R3"), "R3");
        EXPECT_EQ(find(roles, "Clerk", "R4"), "R3");
        EXPECT_EQ(find(programs, "Clerk", "G1"), "G1");
        EXPECT_EQ(find(roles, "Ghost", ""), "");
        EXPECT_EQ(find(roles, "Ghost", ""), "");
        EXPECT_EQ(reads, 4);
    }
    EXPECT_EQ(find(roles, "Clerk", "R5"), "R5");
    const DvnKeysByName::Span next(keys);
    EXPECT_EQ(find(roles, "Clerk", "R6"), "R6");
}

TEST_P(Frame, TwoInitialLoadsAtOnceKeepOneVersionRowAndNeitherFails) {
    // The other load has inserted the row and not committed yet: this one
    // reads an empty table, inserts, waits for the other, and meets the
    // table's one-row index when it commits.
    auto other = OpenSecondConnection();
    other->BeginTrans();
    ExecAll(*other, {"INSERT INTO DVBT.VERSION (VERSION, RELEASE, MOD_LEVEL) VALUES (3, 3, 0)"});
    BackEndRun run(false);
    CDatabase& db = Db();
    int level = -1;
    std::thread first([&] { level = run.be.SaveVersion(db); });
    if (IsPostgres()) {
        auto watcher = OpenSecondConnection();
        const std::string waiting =
            "SELECT COUNT(*) FROM pg_stat_activity WHERE wait_event_type = 'Lock' AND datname = current_database()";
        for (int i = 0; i < 200 && QueryValue(*watcher, waiting) == "0"; ++i)
            std::this_thread::sleep_for(std::chrono::milliseconds(50));
        EXPECT_EQ(QueryValue(*watcher, waiting), "1") << "the insert never waited for the other load";
    } else {
        std::this_thread::sleep_for(std::chrono::milliseconds(500));
    }
    other->CommitTrans();
    first.join();
    EXPECT_EQ(level, 0);
    EXPECT_EQ(run.Messages(), Lines{});
    EXPECT_EQ(QueryRows(Db(), "SELECT VERSION, RELEASE, MOD_LEVEL FROM DVBT.VERSION"), Lines{"3|3|0"});
}

DVN_INSTANTIATE_BOTH_BACKENDS(Frame);

}  // namespace
