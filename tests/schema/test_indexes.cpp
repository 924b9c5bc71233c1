// No filter that the code writes scans a table: SQLite's query plan for
// each index the schema declares and for each shape of filter searches an
// index. (PostgreSQL plans by statistics, so a plan on an empty table says
// nothing; the indexes are the same on both.)
#include <gtest/gtest.h>

#include <algorithm>

#include "dvnschema.h"
#include "repositorydb.h"

namespace {

#define SUBTREE                                                                                      \
    "(WITH RECURSIVE S(AID) AS (SELECT CAST('a' AS VARCHAR(255)) UNION ALL SELECT A.AID FROM DVBT.ACTIVITY A " \
    "JOIN S ON A.PID = 'p' AND A.INSIDE_BLOCK = S.AID) SELECT AID FROM S)"

// The shapes beyond an equality on every column of an index, one of each:
// the tombstone rule, IS NULL for the top level of a diagram, columns out of
// index order, a leading part of an index, more columns than the index, OR,
// NOT, a sub-select, a data connector's ends (two indexes to choose from),
// and the cascades below a deleted process and a deleted block.
const std::vector<std::pair<const char*, const char*>> kShapes = {
    {"CATEGORY", "NAME = 'x' AND CHECKED_OUT <> 4"},
    {"ACTIVITY", "NAME = 'x' AND PID = 'p' AND INSIDE_BLOCK IS NULL"},
    {"SINK", "PID = 'p' AND BLOCK_AID IS NULL"},
    {"PERSON", "USERID = 'X' AND SYSTEM_GROUP = 'g' AND PASSWORD = 'p'"},
    {"ACT_CONTAINER", "AID = 'a' AND INPUT_OR_OUTPUT = 1 AND DOTTED_NAME = 'm' AND INITIAL_VALUE = 'v'"},
    {"PROCESS", "INPUT_DS = 'k' OR OUTPUT_DS = 'k'"},
    {"PROCESS", "NAME = 'x' AND NOT (PID = 'k')"},
    {"PERSON", "PERSON_ID = (SELECT MIN(PERSON_ID) FROM DVBT.PERSON)"},
    {"CATEGORY", "CATID IN (SELECT CATID FROM DVBT.PERS_HAS_PRC_AUTH WHERE PERSON_ID = 'k')"},
    {"DATA_CONNECTOR", "PID = 'p' AND FROM_ACTIVITY = 'a' AND TO_SINK = 't'"},
    {"DATA_CONNECTOR", "PID = 'p' AND FROM_SOURCE = 's' AND TO_SINK = 't'"},
    {"ACT_BY_ROLE_F_CONT", "AID IN (SELECT AID FROM DVBT.ACTIVITY WHERE PID = 'p')"},
    {"ACTIVITY_EXTENT", "AID IN " SUBTREE},
    {"CONTROL_CONNECTOR", "PID = 'p' AND TO_ACTIVITY IN " SUBTREE},
    {"SOURCE", "PID = 'p' AND BLOCK_AID IN " SUBTREE},
    {"ACTIVITY", "PID = 'p' AND AID IN " SUBTREE},
};

class Indexes : public RepositoryTest {
protected:
    void ExpectSearched(const std::string& table, const std::string& where) {
        for (const auto& row : QueryRows(Db(), "EXPLAIN QUERY PLAN SELECT * FROM DVBT." + table + " WHERE " + where)) {
            // The working rows of a recursive sub-select are read whole;
            // they are the subtree found so far, not a table.
            if (row.ends_with("|SCAN CONSTANT ROW") || row.ends_with("|SCAN S")) continue;
            EXPECT_EQ(row.find("|SCAN "), std::string::npos) << table << " WHERE " << where << ": " << row;
        }
    }
};

TEST_P(Indexes, EveryIndexAndEachShapeOfFilterIsSearched) {
    // A column behind no filter is scanned: the plan tells the two apart.
    auto plan = QueryRows(Db(), "EXPLAIN QUERY PLAN SELECT * FROM DVBT.CATEGORY WHERE DESCRIPTION = 'x'");
    ASSERT_FALSE(plan.empty());
    ASSERT_NE(plan[0].find("|SCAN "), std::string::npos) << plan[0];
    for (const auto& table : DvnSchema::Tables()) {
        for (const char* index : table.indexes) {
            std::string columns = DvnSchema::IndexColumns(index);
            std::string where = "";
            for (size_t comma; (comma = columns.find(',')) != std::string::npos; columns.erase(0, comma + 1))
                where += columns.substr(0, comma) + " = 'x' AND ";
            ExpectSearched(table.name, where + columns + " = 'x'");
        }
    }
    for (const auto& [table, where] : kShapes) ExpectSearched(table, where);
}

INSTANTIATE_TEST_SUITE_P(Db, Indexes, ::testing::Values(Backend::SQLite),
                         [](const auto& i) { return BackendName(i.param); });

// Names the stores look up before they insert are unique, so that two
// imports at once cannot both insert one; names that legitimately repeat
// (per process and block, per system, per kind of list) are not.
using UniqueNames = RepositoryTest;

bool Inserts(CDatabase& db, const std::string& sql) {
    try {
        db.ExecuteSQL(sql.c_str());
        return true;
    } catch (CDBException* e) {
        e->Delete();
        return false;
    }
}

TEST_P(UniqueNames, ASecondRowOfAUniqueNameIsRefusedAndLegitimateRepeatsAreKept) {
    std::vector<std::string> unique;
    for (const auto& table : DvnSchema::Tables()) {
        for (const char* index : table.indexes) {
            if (!DvnSchema::IsUniqueIndex(index)) continue;
            const std::string columns = DvnSchema::IndexColumns(index);
            std::string values;
            for (size_t i = 0, n = std::count(columns.begin(), columns.end(), ',') + 1; i < n; ++i)
                values += i ? ", '1'" : "'1'";  // a text, or a number for VERSION
            const std::string insert =
                std::string("INSERT INTO DVBT.") + table.name + " (" + columns + ") VALUES (" + values + ")";
            EXPECT_TRUE(Inserts(Db(), insert)) << insert;
            EXPECT_FALSE(Inserts(Db(), insert)) << insert;
            unique.push_back(std::string(table.name) + "(" + columns + ")");
        }
    }
    // The list that docs/schema.md gives.
    EXPECT_EQ(unique.size(), 28u) << testing::PrintToString(unique);

    // Null names (nothing to look up) do not collide.
    EXPECT_TRUE(Inserts(Db(), "INSERT INTO DVBT.CATEGORY (CATID) VALUES ('n1')"));
    EXPECT_TRUE(Inserts(Db(), "INSERT INTO DVBT.CATEGORY (CATID) VALUES ('n2')"));
    for (const char* repeat : {
             // an activity name per process and block
             "INSERT INTO DVBT.ACTIVITY (AID, PID, INSIDE_BLOCK, NAME) VALUES ('a1', 'p', 'b1', 'Check')",
             "INSERT INTO DVBT.ACTIVITY (AID, PID, INSIDE_BLOCK, NAME) VALUES ('a2', 'p', 'b2', 'Check')",
             "INSERT INTO DVBT.ACTIVITY (AID, PID, NAME) VALUES ('a3', 'q', 'Check')",
             // a member name per structure
             "INSERT INTO DVBT.DATA_STRUCTURE_MBR (DSID, MEMBER) VALUES ('d1', 'Amount')",
             "INSERT INTO DVBT.DATA_STRUCTURE_MBR (DSID, MEMBER) VALUES ('d2', 'Amount')",
             // a server name per system
             "INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM) VALUES ('s1', 'PES', 'sys1')",
             "INSERT INTO DVBT.PE_SERVER (SERVER_ID, NAME, SYSTEM) VALUES ('s2', 'PES', 'sys2')",
             // a list name per kind of list
             "INSERT INTO DVBT.ACT_INSTANCE_LIST (LIST_ID, NAME) VALUES ('l1', 'Mine')",
             "INSERT INTO DVBT.WORK_LIST (LIST_ID, NAME) VALUES ('l2', 'Mine')",
         })
        EXPECT_TRUE(Inserts(Db(), repeat)) << repeat;
}

DVN_INSTANTIATE_BOTH_BACKENDS(UniqueNames);

}  // namespace
