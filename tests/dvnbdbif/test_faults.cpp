// Driver failures at every call of an import: each driver call of an import
// of examples/order.trx is failed in turn, as a lost connection and as a
// serialization failure. Every such run ends with a level and a message
// naming the failure (or, for a call whose failure the layer survives by
// design, exactly as an undisturbed run), and a clean run afterwards leaves
// exactly the rows of an undisturbed run.
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <iostream>
#include <map>
#include <regex>
#include <set>
#include <sstream>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnschema.h"
#include "odbccall.h"
#include "repositorydb.h"

namespace {

// The rows of tables by table name, keys made by the import replaced by the
// table and name of the row they key, so that two runs compare although
// their keys differ.
using Contents = std::map<std::string, std::vector<std::string>>;

// A key as the core model makes them: 32 upper-case hexadecimal digits.
bool IsGeneratedKey(const std::string& v) {
    static const std::regex key("[0-9A-F]{32}");
    return std::regex_match(v, key);
}

std::vector<std::string> Split(const std::string& row) {
    std::vector<std::string> out;
    std::istringstream in(row);
    for (std::string v; std::getline(in, v, '|');) out.push_back(v);
    if (!row.empty() && row.back() == '|') out.emplace_back();
    return out;
}

class Faults : public RepositoryTest {
protected:
    void SetUp() override {
        RepositoryTest::SetUp();
        DvnfMessageHandler::DefaultOutput(&m_messages);
        DvnBTAuthorization::GetInstance();  // nobody: the initial load gives the rights
    }
    void TearDown() override {
        DvnOdbcFaults::Reset();
        DvnfMessageHandler::DefaultOutput(nullptr);
        DvnBTAuthorization::DestroyInstance();
        RepositoryTest::TearDown();
    }

    // One initial load of the example, overwriting; the messages it reported.
    int Import(std::string& messages) {
        m_messages.str("");
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        int level = facade.ImportTRX(DvnString(std::string(DVN_SOURCE_DIR) + "/examples/order.trx"),
                                     DvnString(DataSource()), true, true, true);
        m_out = testing::internal::GetCapturedStdout();
        messages = m_messages.str();
        return level;
    }

    // The rows of the tables (all of them when none are named), and of every
    // other table the number of rows under the name "others".
    Contents Rows(const std::vector<std::string>& only = {}) {
        std::map<std::string, std::vector<std::vector<std::string>>> raw;
        std::map<std::string, std::string> label;  // generated key -> "TABLE:name"
        std::string others;
        for (const auto& table : DvnSchema::Tables()) {
            const std::string from = " FROM " + prefix.str() + table.name;
            if (!only.empty() && std::find(only.begin(), only.end(), table.name) == only.end()) {
                others += (others.empty() ? "SELECT (SELECT COUNT(*)" : " + (SELECT COUNT(*)") + from + ")";
                continue;
            }
            std::string list;
            size_t name = 0, i = 0;
            for (const auto& column : DvnSchema::Columns(table)) {
                if (column.name == "NAME") name = i;
                list.append(i++ ? ", [" : "[").append(column.name) += ']';
            }
            auto& rows = raw[table.name];
            for (const auto& row : QueryRows(Db(), "SELECT " + list + from)) {
                const auto& values = rows.emplace_back(Split(row));
                if (!values.empty() && IsGeneratedKey(values[0]))
                    label[values[0]] = std::string(table.name) + ":" + (name ? values[name] : "?");
            }
        }
        Contents out;
        if (!others.empty()) out["others"] = QueryRows(Db(), others);
        for (const auto& [table, rows] : raw) {
            auto& canonical = out[table];
            for (const auto& values : rows) {
                std::string line;
                for (size_t i = 0; i < values.size(); ++i) {
                    auto it = label.find(values[i]);
                    line += (i ? "|" : "") + (it != label.end()             ? "<" + it->second + ">"
                                              : IsGeneratedKey(values[i]) ? std::string("<dangling key>")
                                                                          : values[i]);
                }
                canonical.push_back(line);
            }
            std::sort(canonical.begin(), canonical.end());
        }
        return out;
    }

    std::ostringstream m_messages;
    std::string m_out;  // standard output of the last import
};

TEST_P(Faults, EveryFailedCallOfAnImportEndsWithAMessageAndALevelAndACleanRunRepairsIt) {
    const auto start = std::chrono::steady_clock::now();
    const Contents fresh = Rows();
    std::string messages;

    DvnOdbcFaults::Reset();
    const int baseLevel = Import(messages);
    const unsigned long calls = DvnOdbcFaults::Calls();
    const std::string baseMessages = messages;
    const Contents all = Rows();
    ASSERT_NE(fresh, all);
    // From here on the tables the import writes are compared row by row,
    // the others by their number of rows (none but the seeded).
    std::vector<std::string> written;
    for (const auto& table : DvnSchema::Tables())
        if (fresh.at(table.name) != all.at(table.name)) written.push_back(table.name);
    const Contents loaded = Rows(written);
    ASSERT_GT(calls, 20u);
    // Every object of the file is either stored or refused with a message;
    // the repository gains rows.
    EXPECT_LE(baseLevel, 8);
    EXPECT_EQ(baseMessages.find("51368"), std::string::npos) << baseMessages;

    // A second clean run over the first leaves the same rows: the check
    // after each failure below relies on that.
    const int againLevel = Import(messages);
    EXPECT_LE(againLevel, 8);
    EXPECT_EQ(messages.find("51368"), std::string::npos) << messages;
    EXPECT_EQ(Rows(), all);
    // What takes the repository back to its state after creation: the rows
    // written go, the seeded row stays.
    std::vector<std::string> restore;
    for (auto t = written.rbegin(); t != written.rend(); ++t) {
        restore.push_back("DELETE FROM " + prefix.str() + *t);
        if (*t == "DATA_STRUCTURE")
            restore.back() += std::string(" WHERE DSID <> '") + DvnSchema::kDefaultDataStructureKey + "'";
        else
            EXPECT_TRUE(fresh.at(*t).empty()) << *t << " has seeded rows";
    }

    // Calls fail one at a time, as a lost connection or as a serialization
    // failure by turns. An import makes about two thousand calls, so the
    // n-th run fails the call at the n-th point of a sequence that halves the
    // gaps left so far (the first call, 1/2, 1/4, 3/4, 1/8, ...): every
    // prefix of the runs covers the import evenly. At most 60 runs on SQLite,
    // 30 on PostgreSQL (a third under the address sanitizer), or fewer when
    // they take two minutes. The message names the call, which DVN_ODBC_FAIL
    // repeats.
#if defined(__SANITIZE_ADDRESS__)
    const unsigned long sample = 3;
#else
    const unsigned long sample = 1;
#endif
    const unsigned long budget = (IsPostgres() ? 30 : 60) / sample;
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::minutes(2);
    auto point = [calls](unsigned long k) {  // k-th point of the halving sequence, in 1..calls
        double fraction = 0, weight = 0.5;
        for (unsigned long rest = k; rest != 0; rest >>= 1, weight /= 2)
            if (rest & 1) fraction += weight;
        return 1 + static_cast<unsigned long>(fraction * static_cast<double>(calls - 1));
    };
    std::set<unsigned long> tried;
    int tolerated = 0, failedRuns = 0, swallowed = 0;
    for (unsigned long k = 0; tried.size() < std::min(budget, calls); ++k) {
        if (!tried.empty() && std::chrono::steady_clock::now() > deadline) break;
        const unsigned long n = point(k);
        if (!tried.insert(n).second) continue;
        const char* state = tried.size() % 2 ? "40001" : "08S01";
        SCOPED_TRACE(std::string(state) + " at call " + std::to_string(n) + " of " + std::to_string(calls));
        for (const auto& sql : restore) ExecAll(Db(), {sql.c_str()});
        DvnOdbcFaults::Reset();
        DvnOdbcFaults::FailCall(n, state);
        const int level = Import(messages);
        ASSERT_TRUE(DvnOdbcFaults::Fired());
        const std::string injected = "injected into call " + std::to_string(n) + ",";
        if (DvnOdbcFaults::FiredTolerated()) {
            // A call whose failure the layer survives by design: the run
            // is an undisturbed one.
            ++tolerated;
            EXPECT_EQ(level, baseLevel);
            EXPECT_EQ(messages, baseMessages);
        } else if (messages.find(injected) == std::string::npos &&
                   m_out.find(injected) != std::string::npos) {
            // A lookup that gives its empty result on a database failure
            // prints the driver's text on standard output; the store goes
            // on as for an object not found.
            ++swallowed;
            EXPECT_NE(m_out.find(std::string("(") + state + ","), std::string::npos) << m_out;
        } else {
            ++failedRuns;
            EXPECT_GE(level, 8) << messages << "\n----\n" << m_out;
            const bool named = messages.find(injected) != std::string::npos;
            const bool notOpened = level == 12 && messages.find("51366") != std::string::npos &&
                                   DvnConvCoreDbIF::LastOpenError().str().find(injected) != std::string::npos;
            EXPECT_TRUE(named || notOpened) << messages << DvnConvCoreDbIF::LastOpenError();
            const std::string reason = named ? messages : DvnConvCoreDbIF::LastOpenError().str();
            EXPECT_NE(reason.find(std::string("(") + state + ","), std::string::npos) << reason;
        }
        // A clean run repairs whatever the failure left.
        DvnOdbcFaults::Reset();
        EXPECT_LE(Import(messages), std::max(baseLevel, againLevel));
        EXPECT_EQ(messages.find("51368"), std::string::npos) << messages;
        ASSERT_EQ(Rows(written), loaded);
    }
    EXPECT_GT(failedRuns, 0);
    EXPECT_GE(tried.size(), std::min<unsigned long>(4, calls));
    const double seconds = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    std::cout << BackendName(GetParam()) << ": " << calls << " calls per import, " << tried.size() << " runs, " << failedRuns << " failed, "
              << tolerated << " tolerated, " << swallowed << " swallowed by lookups, " << seconds << " s"
              << std::endl;
}

DVN_INSTANTIATE_BOTH_BACKENDS(Faults);

}  // namespace
