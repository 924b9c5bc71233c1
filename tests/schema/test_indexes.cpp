// No filter that the code writes scans a table: SQLite's query plan for
// each index the schema declares and for each shape of filter searches an
// index. (PostgreSQL plans by statistics, so a plan on an empty table says
// nothing; the indexes are the same on both.)
#include <gtest/gtest.h>

#include "dvnschema.h"
#include "repositorydb.h"

namespace {

#define SUBTREE                                                                                      \
    "(WITH RECURSIVE S(AID) AS (SELECT CAST('a' AS VARCHAR(255)) UNION ALL SELECT A.AID FROM DVBT.ACTIVITY A " \
    "JOIN S ON A.PID = 'p' AND A.INSIDE_BLOCK = S.AID) SELECT AID FROM S)"

// The shapes beyond an equality on every column of an index: the tombstone
// rule, IS NULL for the top level of a diagram, columns out of index order,
// a leading part of an index, OR, NOT, LIKE behind a key, a sub-select, and
// the cascades below a deleted process and a deleted activity.
const std::vector<std::pair<const char*, const char*>> kShapes = {
    {"CATEGORY", "NAME = 'x' AND CHECKED_OUT <> 4"},
    {"ACTIVITY", "NAME = 'x' AND PID = 'p' AND INSIDE_BLOCK IS NULL"},
    {"SOURCE", "SOURCE_NUMBER = 1 AND PID = 'p' AND BLOCK_AID IS NULL"},
    {"SINK", "PID = 'p' AND BLOCK_AID IS NULL"},
    {"DATA_CONNECTOR", "PID = 'p' AND FROM_ACTIVITY = 'a' AND TO_SINK = 't'"},
    {"PERSON", "USERID = 'X' AND SYSTEM_GROUP = 'g' AND PASSWORD = 'p'"},
    {"PROCESS", "INPUT_DS = 'k' OR OUTPUT_DS = 'k'"},
    {"PROCESS", "NAME = 'x' AND NOT (PID = 'k')"},
    {"QUEUE_MANAGER", "(QUEUE_MANAGER_NAME = 'q') AND (NAME <> 'x')"},
    {"DATA_MAP", "DCID = 'd' AND FROM_MEMBER LIKE 'x' AND TO_MEMBER LIKE 'y'"},
    {"ACT_CONTAINER", "AID = 'a' AND INPUT_OR_OUTPUT = 1 AND DOTTED_NAME = 'm' AND INITIAL_VALUE = 'v'"},
    {"ACT_BY_ROLE_F_CONT", "AID = 'a' AND CONTAINER_MEMBER = 'm'"},
    {"PERSON", "PERSON_ID = (SELECT MIN(PERSON_ID) FROM DVBT.PERSON)"},
    {"CATEGORY", "CATID IN (SELECT CATID FROM DVBT.PERS_HAS_PRC_AUTH WHERE PERSON_ID = 'k')"},
    {"ROLE", "ROLE_ID IN (SELECT ROLE_ID FROM DVBT.ROLE_INCL_PERSON WHERE PERSON_ID = 'k')"},
    {"ACT_BY_ROLE_F_CONT", "AID IN (SELECT AID FROM DVBT.ACTIVITY WHERE PID = 'p')"},
    // the cascade below a deleted activity: the block's subtree in one sub-select
    {"ACTIVITY_EXTENT", "AID IN " SUBTREE},
    {"CONTROL_CONNECTOR", "PID = 'p' AND TO_ACTIVITY IN " SUBTREE},
    {"CONTROL_BENDPOINT", "PID = 'p' AND TO_ACTIVITY IN " SUBTREE},
    {"DATA_CONNECTOR", "PID = 'p' AND TO_ACTIVITY IN " SUBTREE},
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
        for (std::string columns : table.indexes) {
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

}  // namespace
