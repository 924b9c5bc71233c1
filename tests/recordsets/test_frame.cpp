// The recordset layer on both databases: what the stores and loads rely on.
#include <gtest/gtest.h>

#include <functional>

#include "dvnbdbif.h"
#include "testdb.h"

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
        set.Close();
    }
    std::vector<std::string> Rows(const char* columns = "ITEM_ID, NAME, NUM, FLAGS") {
        return QueryRows(Db(), std::string("SELECT ") + columns + " FROM DVBT.ITEM ORDER BY ITEM_ID, NAME");
    }
    CString prefix;
};

TEST_P(Frame, ConnectionReportsWhatTheDriverSaysAndClosesIdempotently) {
    CDatabase& db = Db();
    EXPECT_NE(db.m_hdbc, nullptr);
    EXPECT_EQ(prefix, "DVBT.");
    EXPECT_FALSE(db.GetConnect().IsEmpty());
    // Bracketed names fold as the driver folds unquoted names.
    EXPECT_EQ(db.TranslateBrackets("[NAME] = 'a[b]' AND \"X[Y]\" = 1"),
              IsPostgres() ? "\"name\" = 'a[b]' AND \"X[Y]\" = 1" : "\"NAME\" = 'a[b]' AND \"X[Y]\" = 1");
    if (!IsPostgres()) {
        // DVBT is the connection's own file, attached with a write-ahead log.
        EXPECT_EQ(QueryValue(db, "PRAGMA DVBT.journal_mode"), "wal");
        EXPECT_EQ(QueryValue(db, "PRAGMA DVBT.synchronous"), "1");
        ExecAll(db, {"INSERT INTO DVBT.ITEM (ITEM_ID) VALUES ('x')"});
        EXPECT_EQ(QueryValue(db, "SELECT ITEM_ID FROM main.ITEM"), "x");
    }
    db.Close();
    EXPECT_EQ(db.m_hdbc, nullptr);
    db.Close();
    EXPECT_EQ(db.m_hdbc, nullptr);
}

TEST_P(Frame, AddNewWritesOnlyWhatWasSetAndEverythingElseIsNull) {
    ItemSet set(&Db());
    ASSERT_TRUE(set.Open(1, prefix + "ITEM", 0));
    EXPECT_EQ(set.GetRecordCount(), 0);
    EXPECT_TRUE(set.IsEOF());
    EXPECT_TRUE(set.CanAppend());
    set.AddNew();
    EXPECT_TRUE(set.IsFieldNull(&set.m_NAME));
    EXPECT_TRUE(set.IsFieldNull(&set.m_NUM));
    set.m_ITEM_ID = "a";
    set.m_NUM = 0;  // zero is a value, not null
    EXPECT_FALSE(set.IsFieldNull(&set.m_NUM));
    EXPECT_TRUE(set.Update());
    set.Close();
    EXPECT_EQ(Rows("ITEM_ID, NAME, DOCUMENTATION, NUM, FLAGS"),
              (std::vector<std::string>{"a|<null>|<null>|0|<null>"}));

    set.m_strFilter = "ITEM_ID = 'a'";
    set.Open(1, prefix + "ITEM", 4);
    ASSERT_EQ(set.GetRecordCount(), 1);
    EXPECT_TRUE(set.IsFieldNull(&set.m_NAME));
    EXPECT_TRUE(set.IsFieldNull(&set.m_FLAGS));
    EXPECT_EQ(set.m_FLAGS, 0);
    EXPECT_FALSE(set.IsFieldNull(&set.m_NUM));
}

TEST_P(Frame, EditWritesOnlyTheChangedMembersAndSetFieldNullClears) {
    Insert("a", "first", 1);
    ItemSet one(&Db());
    one.m_strFilter = "ITEM_ID = 'a'";
    one.Open(1, prefix + "ITEM", 0);
    // Another statement changes a column after the recordset read the row.
    Db().ExecuteSQL("UPDATE DVBT.ITEM SET NUM = 42");
    one.Edit();
    one.m_NAME = "renamed";
    if (IsPostgres()) {
        // The row's locator moved with that change: the recordset refuses to
        // guess which row it had and raises instead of writing elsewhere.
        try {
            one.Update();
            ADD_FAILURE() << "a moved row was updated";
        } catch (CDBException* e) {
            e->Delete();
        }
        one.Close();
        one.Open(1, prefix + "ITEM", 0);
        one.Edit();
        one.m_NAME = "renamed";
    }
    // The stale NUM of the recordset is not written back.
    EXPECT_TRUE(one.Update());
    EXPECT_EQ(Rows(), (std::vector<std::string>{"a|renamed|42|<null>"}));

    // An Edit without a change writes nothing; a null number set to 0 is a change.
    one.Edit();
    EXPECT_FALSE(one.Update());
    one.Edit();
    one.m_FLAGS = 0;
    one.SetFieldNull(&one.m_NAME, true);
    EXPECT_TRUE(one.IsFieldNull(&one.m_NAME));
    EXPECT_TRUE(one.Update());
    EXPECT_EQ(Rows(), (std::vector<std::string>{"a|<null>|42|0"}));
    EXPECT_TRUE(one.IsFieldNull(&one.m_NAME));
    EXPECT_FALSE(one.IsFieldNull(&one.m_FLAGS));
    // An empty text is stored as NULL.
    one.Edit();
    one.m_NAME = "x";
    one.Update();
    one.Edit();
    one.m_NAME = "";
    one.Update();
    EXPECT_EQ(QueryValue(Db(), "SELECT NAME FROM DVBT.ITEM"), "<null>");
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
    // A second change of the same row (on PostgreSQL its locator moved).
    set.Edit();
    set.m_NAME = "changed";
    set.Update();
    EXPECT_EQ(Rows(), (std::vector<std::string>{"same|changed|8|<null>", "same|twin|7|<null>", "same|twin|7|<null>"}));
    set.MoveNext();
    set.Delete();
    EXPECT_TRUE(set.IsDeleted());
    set.MoveNext();
    EXPECT_TRUE(set.IsEOF());
    EXPECT_EQ(Rows(), (std::vector<std::string>{"same|changed|8|<null>", "same|twin|7|<null>"}));
    // The row is gone: changing it again is an error, not a silent no-op.
    set.MoveFirst();
    set.Delete();
    EXPECT_THROW(
        {
            try {
                set.Edit();
            } catch (CDBException* e) {
                e->Delete();
                throw std::runtime_error("deleted");
            }
        },
        std::runtime_error);
    EXPECT_EQ(Rows(), (std::vector<std::string>{"same|changed|8|<null>"}));
}

TEST_P(Frame, LongQuotedAndUtf8TextRoundTripsExactly) {
    std::string doc(4097, 'x'), value;
    for (int i = 0; i < 32672; ++i) value += static_cast<char>('a' + i % 26);
    doc[0] = 'B';
    doc[4096] = 'E';
    const std::string quoted = "O'Brien said \"[NAME]\" -- ; ''";
    const std::string utf8 = "Grüße – 東京 ✓";
    ItemSet set(&Db());
    set.Open(1, prefix + "ITEM", 0);
    set.AddNew();
    set.m_ITEM_ID = "long";
    set.m_DOCUMENTATION = doc;
    set.m_INITIAL_VALUE = value;
    set.m_NAME = quoted;
    set.Update();
    set.AddNew();
    set.m_ITEM_ID = "utf8";
    set.m_NAME = utf8;
    set.Update();
    set.Close();

    set.m_strSort = "ITEM_ID";
    set.Open(1, prefix + "ITEM", 4);
    ASSERT_EQ(set.GetRecordCount(), 2);
    EXPECT_EQ(set.m_DOCUMENTATION.str(), doc);
    EXPECT_EQ(set.m_INITIAL_VALUE.str(), value);
    EXPECT_EQ(set.m_NAME.str(), quoted);
    set.MoveNext();
    EXPECT_EQ(set.m_NAME.str(), utf8);
    // A value in a filter goes through as an SQL literal.
    set.Close();
    set.m_strFilter = CString("NAME = '") + "O''Brien said \"[NAME]\" -- ; ''''" + "'";
    set.Open(1, prefix + "ITEM", 4);
    EXPECT_EQ(set.GetRecordCount(), 1);
    EXPECT_EQ(set.m_ITEM_ID, "long");
    set.Close();

    // A column's bound counts characters, not bytes, and holds alike on
    // every database: 255 two-byte characters fit, one more is refused.
    std::string fits;
    for (int i = 0; i < 255; ++i) fits += "\xC3\xBC";
    set.m_strFilter = "";
    set.Open(1, prefix + "ITEM", 0);
    set.AddNew();
    set.m_ITEM_ID = "bound";
    set.m_NAME = fits;
    set.Update();
    set.AddNew();
    set.m_ITEM_ID = "over";
    set.m_NAME = fits + "u";
    try {
        set.Update();
        ADD_FAILURE() << "a 256-character name was written";
    } catch (CDBException* e) {
        EXPECT_NE(e->m_strStateNativeOrigin.str().find("State:22001"), std::string::npos);
        EXPECT_NE(e->m_strError.str().find("NAME"), std::string::npos) << e->m_strError.str();
        e->Delete();
    }
    set.Close();
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM " + prefix.str() + "ITEM WHERE ITEM_ID = 'over'"), "0");
    set.m_strFilter = "ITEM_ID = 'bound'";
    set.Open(1, prefix + "ITEM", 4);
    EXPECT_EQ(set.m_NAME.str(), fits);
}

TEST_P(Frame, WholeStatementsFiltersAndSortAreHonoured) {
    Insert("b", "two", 2);
    Insert("a", "one", 1);
    Insert("c", "three", 3);
    ItemSet set(&Db());
    set.m_strFilter = "NUM >= 2";
    set.m_strSort = "NUM DESC";
    set.Open(1, prefix + "ITEM", 4);
    std::vector<std::string> seen;
    for (; !set.IsEOF(); set.MoveNext()) seen.push_back(set.m_ITEM_ID.str());
    EXPECT_EQ(seen, (std::vector<std::string>{"c", "b"}));
    set.Close();

    // "SELECT * FROM" with brackets: the columns come in DoFieldExchange order,
    // and the rows can be changed.
    ItemSet whole(&Db());
    whole.Open(1, "SELECT * FROM " + prefix + "ITEM WHERE [ITEM_ID] ='b'", 0);
    ASSERT_EQ(whole.GetRecordCount(), 1);
    EXPECT_EQ(whole.m_NAME, "two");
    EXPECT_EQ(whole.m_NUM, 2);
    EXPECT_TRUE(whole.CanUpdate());
    whole.Edit();
    whole.m_FLAGS = 5;
    whole.Update();
    EXPECT_EQ(QueryValue(Db(), "SELECT FLAGS FROM DVBT.ITEM WHERE ITEM_ID = 'b'"), "5");
}

TEST_P(Frame, CommittedWorkIsSeenByASecondConnection) {
    CDatabase& db = Db();
    ASSERT_TRUE(db.BeginTrans());
    Insert("t1", "in transaction", 1);
    Insert("t2", "in transaction", 2);
    ASSERT_TRUE(db.CommitTrans());
    auto other = OpenSecondConnection();
    ItemSet set(other.get());
    set.Open(1, prefix + "ITEM", 4);
    EXPECT_EQ(set.GetRecordCount(), 2);
    // Autocommit is back after the commit.
    Insert("t3", "after", 3);
    set.Close();
    set.Open(1, prefix + "ITEM", 4);
    EXPECT_EQ(set.GetRecordCount(), 3);
}

TEST_P(Frame, FailuresRaiseExceptionsWithTheDriversTextAndState) {
    ItemSet set(&Db());
    CDBException* caught = nullptr;
    try {
        set.Open(1, prefix + "NO_SUCH_TABLE", 4);
    } catch (CDBException* e) {
        caught = e;
    }
    ASSERT_NE(caught, nullptr);
    EXPECT_EQ(caught->m_nRetCode, SQL_ERROR);
    CString lower = caught->m_strError;
    lower.MakeLower();
    EXPECT_NE(lower.Find("no_such_table"), -1) << caught->m_strError;
    EXPECT_EQ(caught->m_strStateNativeOrigin.Left(6), "State:") << caught->m_strStateNativeOrigin;
    EXPECT_NE(caught->m_strStateNativeOrigin.Find(",Native:"), -1);
    EXPECT_NE(caught->m_strStateNativeOrigin.Find(",Origin:"), -1);
    char buffer[255];
    EXPECT_TRUE(caught->GetErrorMessage(buffer, 255, nullptr));
    EXPECT_EQ(CString(buffer), caught->m_strError);
    caught->Delete();
    EXPECT_FALSE(set.IsOpen());

    // ExecuteSQL reports in the same way; the connection stays usable.
    try {
        Db().ExecuteSQL("DELETE FROM DVBT.NO_SUCH_TABLE");
        ADD_FAILURE() << "no exception";
    } catch (CDBException* e) {
        EXPECT_FALSE(e->m_strError.IsEmpty());
        e->Delete();
    }
    Insert("ok", "still usable", 1);
    EXPECT_EQ(Rows().size(), 1u);

    // A class whose column count disagrees with its DoFieldExchange is caught.
    ItemSet miscounted(&Db());
    miscounted.m_nFields = 5;
    try {
        miscounted.Open(1, prefix + "ITEM", 4);
        ADD_FAILURE() << "a wrong m_nFields was accepted";
    } catch (CDBException* e) {
        EXPECT_NE(e->m_strError.Find("m_nFields is 5 but DoFieldExchange binds 6"), -1) << e->m_strError;
        e->Delete();
    }
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
    auto stateOf = [](const std::function<void()>& run) {
        try {
            run();
        } catch (CDBException* e) {
            std::string state = e->m_strStateNativeOrigin.Left(11).str();
            e->Delete();
            return state;
        }
        return std::string("no exception");
    };
    EXPECT_EQ(sleepy("0"), 1);  // the statement is now prepared and kept
    db.SetQueryTimeout(1);
    EXPECT_EQ(stateOf([&] { sleepy("3"); }), "State:57014");
    EXPECT_EQ(sleepy("0"), 1);
    EXPECT_EQ(stateOf([&] { db.ExecuteSQL("SELECT pg_sleep(3)"); }), "State:57014");
}

TEST_P(Frame, ReadOnlyRecordsetsCannotChangeRows) {
    Insert("a", "one", 1);
    ItemSet set(&Db());
    set.Open(1, prefix + "ITEM", 4);
    EXPECT_FALSE(set.CanAppend());
    EXPECT_FALSE(set.CanUpdate());
    for (auto op : {&CRecordset::AddNew, &CRecordset::Edit, &CRecordset::Delete}) {
        try {
            (set.*op)();
            ADD_FAILURE() << "a read-only recordset accepted a change";
        } catch (CDBException* e) {
            e->Delete();
        }
    }
    EXPECT_EQ(Rows(), (std::vector<std::string>{"a|one|1|<null>"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(Frame);

}  // namespace
