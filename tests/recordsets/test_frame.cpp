// The recordset layer on both databases: what the stores and loads rely on.
#include <gtest/gtest.h>

#include <functional>

#include "dvnbdbif.h"
#include "odbccall.h"
#include "testdb.h"
#include "testenv.h"

namespace {

// A table with every kind of column the recordset classes use.
class ItemSet : public CRecordset {
public:
    explicit ItemSet(CDatabase* db) : CRecordset(db) {
        m_ITEM_ID = m_NAME = m_DOCUMENTATION = m_INITIAL_VALUE = "";
        m_NUM = 0;
        m_FLAGS = 0;
        m_nFields = 6;
        m_nDefaultType = snapshot;
    }
    void DoFieldExchange(CFieldExchange* pFX) override {
        pFX->SetFieldType(CFieldExchange::outputColumn);
        RFX_Text(pFX, "[ITEM_ID]", m_ITEM_ID, 255, 12, 0);
        RFX_Text(pFX, "[NAME]", m_NAME, 255, 12, 0);
        RFX_Text(pFX, "[DOCUMENTATION]", m_DOCUMENTATION, 4097, -1, 0);
        RFX_Text(pFX, "[INITIAL_VALUE]", m_INITIAL_VALUE, 32672, -1, 0);
        RFX_Long(pFX, "[NUM]", m_NUM);
        RFX_Int(pFX, "[FLAGS]", m_FLAGS);
    }
    CString m_ITEM_ID, m_NAME, m_DOCUMENTATION, m_INITIAL_VALUE;
    long m_NUM;
    int m_FLAGS;
};

// What a call raised: the driver's text and "State:..." ("" and "" if nothing).
struct Raised {
    bool any = false;
    std::string error, state;
    short rc = 0;
};
template <class F>
Raised Catch(F f) {
    Raised r;
    try {
        f();
    } catch (CDBException* e) {
        r = {true, e->m_strError.str(), e->m_strStateNativeOrigin.str(), e->m_nRetCode};
        e->Delete();
    }
    return r;
}

class Frame : public DbTest {
protected:
    void PrepareSchema() override {
        ExecAll(Db(), {"CREATE TABLE DVBT.ITEM (ITEM_ID VARCHAR(64), NAME VARCHAR(255), DOCUMENTATION TEXT, "
                       "INITIAL_VALUE TEXT, NUM INTEGER, FLAGS INTEGER)"});
        prefix = DvnConvCoreDbIF::GetTablePrefix(Db());
    }
    void Insert(const char* id, const char* name, long num) {
        ItemSet set(&Db());
        set.Open(1, prefix + "ITEM", 0);
        set.AddNew();
        set.m_ITEM_ID = id;
        set.m_NAME = name;
        set.m_NUM = num;
        set.Update();
    }
    std::vector<std::string> Rows() {
        return QueryRows(Db(), "SELECT ITEM_ID, NAME, NUM, FLAGS FROM DVBT.ITEM ORDER BY ITEM_ID, NAME");
    }
    using V = std::vector<std::string>;
    CString prefix;
};

// An SQLite connection opens its file once (nothing is attached, so the
// schema is held once) with a write-ahead log, synchronous NORMAL and a page
// cache of 256 KiB. "DVBT." names the tables of the main database, also of an
// in-memory one, wherever it qualifies a name; the trace shows the statement
// as written.
TEST_P(Frame, AnSQLiteConnectionOpensItsFileOnceWithItsLogSyncAndCacheSettings) {
    if (IsPostgres()) GTEST_SKIP() << "PostgreSQL has schemas: DVBT is one";
    std::unique_ptr<CDatabase> second = OpenSecondConnection();
    for (CDatabase* db : {&Db(), second.get()}) {
        EXPECT_EQ(QueryValue(*db, "PRAGMA journal_mode"), "wal");
        EXPECT_EQ(QueryValue(*db, "PRAGMA synchronous"), "1");
        EXPECT_EQ(QueryValue(*db, "PRAGMA cache_size"), "-256");
        EXPECT_EQ(QueryRows(*db, "SELECT name FROM pragma_database_list WHERE name <> 'temp'"), V{"main"});
    }

    CDatabase memory;
    ASSERT_EQ(DvnConvCoreDbIF::OpenDatabaseFromFile(DvnConvCoreDbIF::EmbeddedDataSource(":memory:"), memory,
                                                    DvnString(), DvnString()),
              0);
    ExecAll(memory, {"CREATE TABLE DVBT.T (A VARCHAR(16), B INTEGER)", "CREATE INDEX dvbt.T_IX ON T (A)",
                     "CREATE TABLE \"DVBT.Q\" (A INTEGER)"});
    {
        TraceCapture trace;
        memory.ExecuteSQL("INSERT INTO Dvbt.\"T\" (A, B) VALUES ('DVBT.kept', 1)");
        EXPECT_NE(trace.Text().find(" SQLExecDirect rc=0 INSERT INTO Dvbt.\"T\" (A, B) VALUES ('DVBT.kept', 1)"),
                  std::string::npos)
            << trace.Text();
    }
    // A literal, a quoted name and a name that ends in DVBT keep theirs.
    EXPECT_EQ(QueryRows(memory, "SELECT MY_DVBT.A, MY_DVBT.B FROM DVBT.T MY_DVBT"), V{"DVBT.kept|1"});
    EXPECT_EQ(QueryRows(memory, "SELECT name FROM DVBT.sqlite_master ORDER BY name"), (V{"DVBT.Q", "T", "T_IX"}));
    // The writer probe of a transaction deletes from the first table by name,
    // "DVBT.Q".
    EXPECT_TRUE(memory.BeginTrans());
    memory.ExecuteSQL("DELETE FROM DVBT.T");
    EXPECT_TRUE(memory.Rollback());
    EXPECT_EQ(QueryValue(memory, "SELECT COUNT(*) FROM DVBT.T"), "1");
}

TEST_P(Frame, AddNewAndEditWriteOnlyTheMembersThatWereSet) {
    ItemSet set(&Db());
    ASSERT_TRUE(set.Open(1, prefix + "ITEM", 0));
    set.AddNew();
    set.m_ITEM_ID = "a";
    set.m_NUM = 0;  // zero is a value, not null
    EXPECT_TRUE(set.Update());
    set.Close();
    EXPECT_EQ(Rows(), V{"a|<null>|0|<null>"});

    set.m_strFilter = "ITEM_ID = 'a'";
    set.Open(1, prefix + "ITEM", 0);
    EXPECT_TRUE(set.IsFieldNull(&set.m_FLAGS));
    // Another statement changes a column after the recordset read the row.
    Db().ExecuteSQL("UPDATE DVBT.ITEM SET NUM = 42");
    set.Edit();
    set.m_NAME = "renamed";
    if (IsPostgres()) {
        // The row's locator moved: the recordset raises instead of guessing.
        EXPECT_TRUE(Catch([&] { set.Update(); }).any) << "a moved row was updated";
        set.Close();
        set.Open(1, prefix + "ITEM", 0);
        set.Edit();
        set.m_NAME = "renamed";
    }
    EXPECT_TRUE(set.Update());  // the stale NUM is not written back
    EXPECT_EQ(Rows(), V{"a|renamed|42|<null>"});

    // No change writes nothing; a null number set to 0 is a change; an
    // empty text is stored as NULL; SetFieldNull clears a number.
    set.Edit();
    EXPECT_FALSE(set.Update());
    set.Edit();
    set.m_FLAGS = 0;
    set.m_NAME = "";
    set.SetFieldNull(&set.m_NUM);
    EXPECT_TRUE(set.Update());
    EXPECT_EQ(Rows(), V{"a|<null>|<null>|0"});

    // A whole bracketed statement gives an updatable recordset too.
    Insert("b", "two", 2);
    ItemSet whole(&Db());
    whole.Open(1, "SELECT * FROM " + prefix + "ITEM WHERE [ITEM_ID] ='b'", 0);
    ASSERT_EQ(whole.GetRecordCount(), 1);
    EXPECT_EQ(whole.m_NUM, 2);
    whole.Edit();
    whole.m_FLAGS = 5;
    whole.Update();
    EXPECT_EQ(Rows(), (V{"a|<null>|<null>|0", "b|two|2|5"}));
}

TEST_P(Frame, UpdateAndDeleteHitExactlyTheCurrentRowAmongIdenticalRows) {
    for (int i = 0; i < 3; ++i) Insert("same", "twin", 7);
    ItemSet set(&Db());
    set.Open(1, prefix + "ITEM", 0);
    ASSERT_EQ(set.GetRecordCount(), 3);
    set.MoveNext();
    set.Edit();
    set.m_NUM = 8;
    set.Update();
    set.Edit();  // a second change of the same row (on PostgreSQL its locator moved)
    set.m_NAME = "changed";
    set.Update();
    EXPECT_EQ(Rows(), (V{"same|changed|8|<null>", "same|twin|7|<null>", "same|twin|7|<null>"}));
    set.MoveNext();
    set.Delete();
    EXPECT_EQ(Rows(), (V{"same|changed|8|<null>", "same|twin|7|<null>"}));
    // A deleted row cannot be changed again: an error, not a silent no-op.
    set.MoveFirst();
    set.Delete();
    EXPECT_TRUE(Catch([&] { set.Edit(); }).any);
    EXPECT_EQ(Rows(), V{"same|changed|8|<null>"});

    // A row that another statement removed after the recordset read it:
    // Update and Delete say so (on SQLite the driver counts no rows for the
    // statements it keeps compiled; the count comes from the database), and
    // the next row is still hit.
    Insert("gone", "soon", 1);
    ItemSet stale(&Db());
    stale.m_strSort = "ITEM_ID";
    stale.Open(1, prefix + "ITEM", 0);
    ASSERT_EQ(stale.m_ITEM_ID.str(), "gone");
    ExecAll(Db(), {"DELETE FROM DVBT.ITEM WHERE ITEM_ID = 'gone'"});
    stale.Edit();
    stale.m_NUM = 2;
    const Raised edited = Catch([&] { stale.Update(); });
    EXPECT_EQ(edited.state.substr(0, 11), "State:01001") << edited.error;
    EXPECT_EQ(Catch([&] { stale.Delete(); }).state.substr(0, 11), "State:01001");
    stale.MoveNext();
    stale.Edit();
    stale.m_NUM = 9;
    stale.Update();
    EXPECT_EQ(Rows(), V{"same|changed|9|<null>"});
}

// Long texts read back whole: ADocumentationOfAnyLengthIsStoredAndReadBackWhole
// (tests/dvnbdbif/test_import.cpp); quotes and brackets in values: the
// filter test below.
TEST_P(Frame, AColumnsBoundCountsCharactersNotBytes) {
    std::string fits;  // 255 two-byte characters
    for (int i = 0; i < 255; ++i) fits += "\xC3\xBC";
    ItemSet set(&Db());
    set.Open(1, prefix + "ITEM", 0);
    set.AddNew();
    set.m_ITEM_ID = "utf8";
    set.m_NAME = fits;
    set.Update();
    set.AddNew();
    set.m_ITEM_ID = "over";
    set.m_NAME = fits + "u";
    const Raised over = Catch([&] { set.Update(); });
    EXPECT_NE(over.state.find("State:22001"), std::string::npos) << over.state;
    EXPECT_NE(over.error.find("NAME"), std::string::npos) << over.error;
    set.Close();
    set.Open(1, prefix + "ITEM", 4);
    ASSERT_EQ(set.GetRecordCount(), 1);
    EXPECT_EQ(set.m_NAME.str(), fits);
}

// A filter's literals become parameters and its bracketed names quoted
// identifiers: quotes, brackets and markers inside literals stay data, and
// statements that differ only in their literals give each their own rows.
TEST_P(Frame, AFilterIsReadTheSameWhateverItsLiteralsHold) {
    Insert("a", "it's [NUM]", 1);
    Insert("b", "[NAME]", 2);
    Insert("c", "?", 3);
    Insert("d", "x\"y", 4);
    const struct {
        const char* filter;
        V ids;
    } cases[] = {
        {"[NAME] = 'it''s [NUM]'", {"a"}},
        {"NAME = '[NAME]' OR [NUM] = 3", {"b", "c"}},
        {"[NAME] = '?' AND [NUM] = 3", {"c"}},
        {"[NAME] = 'x\"y'", {"d"}},
        {"NAME = ''''", {}},
        {"[NAME] = '[NAME' OR [NAME] = 'NAME]' OR [NUM] = 4", {"d"}},
        {"[NUM] > 1 AND [ITEM_ID] <> '' AND [NAME] <> 'it''s'", {"b", "c", "d"}},
    };
    for (const auto& c : cases) {
        for (unsigned options : {0u, 4u}) {  // with and without the row locator
            ItemSet set(&Db());
            set.m_strFilter = c.filter;
            set.m_strSort = "[ITEM_ID]";
            set.Open(1, prefix + "ITEM", options);
            V ids;
            for (; !set.IsEOF(); set.MoveNext()) ids.push_back(set.m_ITEM_ID.str());
            EXPECT_EQ(ids, c.ids) << c.filter << " options " << options;
        }
    }
}

// The statements of a connection are kept with their parameters bound to
// buffers of their own: each use must write and find its own values, longer
// or shorter than the last, however many times the statement has been used.
TEST_P(Frame, AKeptStatementWritesAndFindsEachUsesOwnValuesWhateverTheirLength) {
    const std::vector<std::string> docs = {"d", std::string(3000, 'l'), "dd", std::string(70, 'm'),
                                           "",  std::string(4000, 'n'), "e"};
    for (size_t i = 0; i < docs.size(); ++i) {
        ItemSet set(&Db());
        set.Open(1, prefix + "ITEM", 0);
        set.AddNew();
        set.m_ITEM_ID = std::to_string(i).c_str();
        set.m_NAME = std::string(i % 2 ? 200 : 1, static_cast<char>('a' + i)).c_str();
        set.m_DOCUMENTATION = docs[i].c_str();
        set.m_NUM = static_cast<long>(i);
        set.Update();
    }
    for (int round = 0; round < 2; ++round) {
        for (size_t i = 0; i < docs.size(); ++i) {
            SCOPED_TRACE(i);
            ItemSet set(&Db());
            set.m_strFilter = docs[i].empty() ? CString("[DOCUMENTATION] IS NULL")
                                              : CString("[DOCUMENTATION] = '") + docs[i].c_str() + "'";
            set.m_strFilter +=
                CString(" AND [NAME] = '") + std::string(i % 2 ? 200 : 1, static_cast<char>('a' + i)).c_str() + "'";
            set.Open(1, prefix + "ITEM", 0);
            ASSERT_FALSE(set.IsEOF());
            EXPECT_EQ(set.m_ITEM_ID.str(), std::to_string(i));
            EXPECT_EQ(set.m_NUM, static_cast<long>(i));
            EXPECT_EQ(set.m_DOCUMENTATION.str(), docs[i]);
            set.MoveNext();
            EXPECT_TRUE(set.IsEOF());
        }
    }
}

TEST_P(Frame, FailuresRaiseTheDriversTextAndStateAndLeaveTheConnectionUsable) {
    ItemSet set(&Db());
    Raised missing = Catch([&] { set.Open(1, prefix + "NO_SUCH_TABLE", 4); });
    for (char& c : missing.error) c = static_cast<char>(std::tolower(static_cast<unsigned char>(c)));
    EXPECT_NE(missing.error.find("no_such_table"), std::string::npos) << missing.error;
    EXPECT_EQ(missing.state.rfind("State:", 0), 0u) << missing.state;
    EXPECT_NE(missing.state.find(",Native:"), std::string::npos);
    EXPECT_NE(missing.state.find(",Origin:"), std::string::npos);
    EXPECT_FALSE(set.IsOpen());
    EXPECT_FALSE(Catch([&] { Db().ExecuteSQL("DELETE FROM DVBT.NO_SUCH_TABLE"); }).error.empty());
    Insert("ok", "still usable", 1);
    EXPECT_EQ(Rows().size(), 1u);

    // A class whose column count disagrees with its field exchange is refused.
    set.m_nFields = 5;
    EXPECT_NE(Catch([&] { set.Open(1, prefix + "ITEM", 4); }).error.find("m_nFields is 5 but DoFieldExchange binds 6"),
              std::string::npos);

    // Read-only recordsets refuse every change.
    set.m_nFields = 6;
    set.Open(1, prefix + "ITEM", 4);
    for (auto op : {&CRecordset::AddNew, &CRecordset::Edit, &CRecordset::Delete})
        EXPECT_TRUE(Catch([&] { (set.*op)(); }).any) << "a read-only recordset accepted a change";
    set.Close();
    EXPECT_EQ(Rows(), V{"ok|still usable|1|<null>"});
    Db().Close();
    Db().Close();  // closing twice is harmless
    EXPECT_EQ(Db().m_hdbc, nullptr);
}

TEST_P(Frame, TheQueryTimeoutCancelsLongStatementsAlsoWhenChangedOnAnOpenConnection) {
    if (!IsPostgres()) GTEST_SKIP() << "the SQLite driver does not cancel a running statement";
    Insert("a", "one", 1);
    CDatabase db;
    db.SetQueryTimeout(60);
    ASSERT_TRUE(db.OpenEx(("DSN=" + DataSource()).c_str(), 12));
    auto sleepy = [&db](const char* seconds) {
        ItemSet set(&db);
        set.Open(1, CString("SELECT * FROM DVBT.ITEM WHERE pg_sleep(CAST('") + seconds + "' AS FLOAT8)) IS NOT NULL", 4);
        return set.GetRecordCount();
    };
    EXPECT_EQ(sleepy("0"), 1);  // the statement is now prepared and kept
    db.SetQueryTimeout(1);
    EXPECT_EQ(Catch([&] { sleepy("3"); }).state.substr(0, 11), "State:57014");
    EXPECT_EQ(sleepy("0"), 1);
    EXPECT_EQ(Catch([&] { db.ExecuteSQL("SELECT pg_sleep(3)"); }).state.substr(0, 11), "State:57014");
}

TEST_P(Frame, AFailedCallLooksLikeTheDriversFailureAndLeavesNothingHalfDone) {
    Insert("a", "one", 1);
    Db().BeginTrans();  // the first transaction switches autocommit; later ones count alike
    Db().CommitTrans();
    // Each operation, with call k of its calls failed in turn: it raises what
    // a driver would, changes nothing, and the connection goes on.
    struct Case {
        const char* what;
        std::function<void()> run;
        size_t rowsAdded;
    };
    // A row added through a recordset that reads no rows.
    auto add = [&](const char* id) {
        ItemSet set(&Db());
        set.m_strFilter = "ITEM_ID = 'none'";
        set.Open(1, prefix + "ITEM", 0);
        set.AddNew();
        set.m_ITEM_ID = id;
        set.m_NUM = 2;
        set.Update();
    };
    const std::vector<Case> cases = {
        {"read", [&] { ItemSet set(&Db()); set.Open(1, prefix + "ITEM WHERE NAME = 'one'", 4); }, 0},
        {"insert", [&] { add("b"); }, 1},
        {"statement", [&] { Db().ExecuteSQL("INSERT INTO DVBT.ITEM (ITEM_ID) VALUES ('c')"); }, 1},
        // As a store does it: a failure inside the transaction rolls it back.
        {"transaction", [&] {
             Db().BeginTrans();
             try {
                 add("d");
                 add("e");
             } catch (...) {
                 Db().Rollback();
                 throw;
             }
             Db().CommitTrans();
         }, 2},
    };
    for (const auto& c : cases) {
        c.run();  // its statements are now prepared and kept
        DvnOdbcFaults::Reset();
        c.run();  // once more undisturbed: its number of calls
        const unsigned long calls = DvnOdbcFaults::Calls();
        ASSERT_GT(calls, 0u) << c.what;
        size_t rows = Rows().size();
        for (unsigned long k = 1; k <= calls; ++k) {
            SCOPED_TRACE(std::string(c.what) + ", call " + std::to_string(k) + " of " + std::to_string(calls));
            DvnOdbcFaults::Reset();
            DvnOdbcFaults::FailCall(k, "40001");
            Raised r = Catch(c.run);
            ASSERT_TRUE(DvnOdbcFaults::Fired());
            if (DvnOdbcFaults::FiredTolerated()) {
                EXPECT_FALSE(r.any) << r.error;
                rows += c.rowsAdded;
            } else {
                EXPECT_EQ(r.rc, SQL_ERROR);
                EXPECT_EQ(r.state, "State:40001,Native:0,Origin:[dvnbdbbe][fault injection]");
                const std::string text = "Serialization failure (40001, injected into call " + std::to_string(k);
                EXPECT_EQ(r.error.rfind(text + ", SQL", 0), 0u) << r.error;
                EXPECT_FALSE(Db().InTransaction());
            }
            EXPECT_EQ(Rows().size(), rows);
            DvnOdbcFaults::Reset();
            c.run();  // the connection is as good as before
            rows += c.rowsAdded;
            EXPECT_EQ(Rows().size(), rows);
        }
    }
    // Giving things back is not counted: it cannot be failed.
    DvnOdbcFaults::Reset();
    Db().Close();
    EXPECT_EQ(DvnOdbcFaults::Calls(), 0u);
}

TEST_P(Frame, ACommitIsSeenByASecondConnectionAFailedOneCommitsNothingAndAutocommitComesBack) {
    auto other = OpenSecondConnection();
    auto seen = [&] { return QueryRows(*other, "SELECT ITEM_ID FROM DVBT.ITEM ORDER BY ITEM_ID"); };
    ASSERT_TRUE(Db().BeginTrans());
    Insert("t1", "in transaction", 1);
    Insert("t2", "in transaction", 2);
    ASSERT_TRUE(Db().CommitTrans());
    EXPECT_EQ(seen(), (V{"t1", "t2"}));
    Insert("t3", "after", 3);  // autocommit is back
    EXPECT_EQ(seen(), (V{"t1", "t2", "t3"}));
    ExecAll(Db(), {"DELETE FROM DVBT.ITEM"});

    // The commit fails: the transaction's work is gone, the next statement
    // is committed at once.
    Db().BeginTrans();
    Insert("lost", "x", 1);
    DvnOdbcFaults::FailCall(DvnOdbcFaults::Calls() + 1, "08S01");
    EXPECT_EQ(Catch([&] { Db().CommitTrans(); }).state.substr(0, 11), "State:08S01");
    EXPECT_FALSE(Db().InTransaction());
    Insert("after-failed-commit", "x", 2);
    EXPECT_EQ(seen(), (V{"after-failed-commit"}));

    // The commit succeeds but the switch back to autocommit fails: the commit
    // stands, and the next statement outside a transaction is committed too.
    Db().BeginTrans();
    Insert("kept", "x", 3);
    DvnOdbcFaults::FailCall(DvnOdbcFaults::Calls() + 2, "08S01");
    EXPECT_TRUE(Db().CommitTrans());
    EXPECT_TRUE(DvnOdbcFaults::FiredTolerated());
    Insert("outside", "x", 4);
    EXPECT_EQ(seen(), (V{"after-failed-commit", "kept", "outside"}));

    // Closing with a transaction open rolls it back.
    Db().BeginTrans();
    Insert("open", "x", 5);
    Db().Close();
    EXPECT_EQ(seen().size(), 3u);
}

TEST_P(Frame, EachCallIsTracedWithItsNumberAndTheFailureToArmIsReadAsNColonState) {
    {
        TraceCapture trace;
        DvnOdbcFaults::Reset();
        Insert("a", "one", 1);
        DvnOdbcFaults::FailCall(DvnOdbcFaults::Calls() + 1, "HYT00");
        Raised r = Catch([&] { Insert("b", "two", 2); });
        EXPECT_EQ(r.error.rfind("Timeout expired (HYT00, injected into call", 0), 0u) << r.error;
        const std::string text = trace.Text();
        EXPECT_NE(text.find("[trace 3/1/"), std::string::npos);
        EXPECT_NE(text.find("ODBC 1 SQLAllocHandle rc=0"), std::string::npos) << text;
        // On SQLite an insert begins with WITH, so that the driver keeps it compiled.
        const std::string insert = IsPostgres() ? "INSERT INTO " : "WITH KEPT AS (SELECT 1) INSERT INTO ";
        EXPECT_NE(text.find(" SQLExecute rc=0 " + insert), std::string::npos) << text;
        EXPECT_NE(text.find(" rc=-1 State:HYT00 injected"), std::string::npos) << text;
        EXPECT_NE(text.find("SQLFreeStmt (cleanup) rc=0"), std::string::npos) << text;
    }
    const std::vector<std::pair<const char*, unsigned long>> arming = {
        {"7:08S01", 7}, {"12:40001", 12}, {"0:08S01", 0}, {"7:0801", 0}, {"x:08S01", 0},
        {"7", 0},       {"", 0},        {"7:08S01:", 0},
    };
    for (const auto& [text, n] : arming) {
        SCOPED_TRACE(text);
        DvnOdbcFaults::Reset();
        EXPECT_EQ(DvnOdbcFaults::ArmFromText(text), n != 0);
        // An armed failure hits exactly call n.
        for (unsigned long k = 1; k <= 12; ++k) Catch([&] { Db().ExecuteSQL("DELETE FROM DVBT.ITEM WHERE 1 = 0"); });
        EXPECT_EQ(DvnOdbcFaults::Fired(), n != 0);
    }
    DvnOdbcFaults::Reset();
}

DVN_INSTANTIATE_BOTH_BACKENDS(Frame);

}  // namespace
