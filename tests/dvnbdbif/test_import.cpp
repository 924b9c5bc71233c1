// The import through the facade: the sections a user's rights let through,
// the version row, the levels, the data source, and failures that come up
// to the facade. What dvnbt prints of it: tests/dvnbt/test_import.cpp.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <optional>
#include <sstream>
#include <utility>

#include "backendrun.h"
#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnprocsets.h"
#include "testenv.h"

namespace {

using Lines = std::vector<std::string>;

const char* kErrors = "Finished with Process Model import\nErrors found during import.\n";

class Import : public RepositoryTest {
protected:
    void SetUp() override {
        RepositoryTest::SetUp();
        DvnfMessageHandler::DefaultOutput(&m_messages);
    }
    void TearDown() override {
        DvnfMessageHandler::DefaultOutput(nullptr);
        DvnBTAuthorization::DestroyInstance();
        RepositoryTest::TearDown();
    }
    std::string File(const std::string& text) { return m_files.Write(text); }
    // Imports the file from this test's database (or the data source given),
    // overwriting, clean; keeps standard output.
    int Run(const std::string& file, bool initialLoad, std::optional<DvnString> source = {}) {
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        const DvnString dataSource = source.value_or(DvnString(DataSource()));
        int level = facade.ImportTRX(DvnString(file), dataSource, true, true, initialLoad);
        out = testing::internal::GetCapturedStdout();
        return level;
    }
    // The reported messages as the default handler prints them, the parser's own remarks aside.
    Lines Messages() {
        Lines lines;
        std::istringstream in(m_messages.str());
        for (std::string line; std::getline(in, line);)
            if (line.compare(0, 2, "52") != 0) lines.push_back(line);
        m_messages.str("");
        return lines;
    }
    static std::string Line(long number, const char* a1, const char* a2 = nullptr) {
        return DvnfMessageHandler::Format(number, DvnString(a1), DvnString(a2)).str();
    }
    std::string Count(const char* table) { return QueryValue(Db(), std::string("SELECT COUNT(*) FROM DVBT.") + table); }
    Lines Version() { return QueryRows(Db(), "SELECT VERSION, RELEASE, MOD_LEVEL FROM DVBT.VERSION"); }

    std::string out;
    TrxFiles m_files;

private:
    std::ostringstream m_messages;
};

TEST_P(Import, EachSectionIsRefusedOnceUnderItsRightAndAnInitialLoadStoresWhatItCan) {
    // The category named by the process is defined nowhere: it is no object to save.
    std::string file = File("Domain \"domain\" {}\nPerson \"P\" {}\nPerson \"Q\" {}\nDataStructure \"Order\" {}\n"
                            "Process \"Ordering\" { ProcessHasCategory -> \"Sales\"; }\n");
    DvnBTAuthorization::GetInstance();  // a user without any right
    EXPECT_EQ(Run(file, false), 4);
    EXPECT_EQ(Messages(), (Lines{Line(51167, "DOMAIN"), Line(51166, "Person"), Line(51165, "Data Structure"),
                                 Line(51165, "Process")}));
    EXPECT_EQ(Count("DATA_STRUCTURE"), "1");  // the default one
    EXPECT_EQ(Count("VERSION"), "0");

    // Kinds that cannot be stored yet are errors, the category that the
    // process names and the repository lacks a warning; the sections between
    // and after them go on, and the version row is written once.
    EXPECT_EQ(Run(file, true), 8);
    // A person without any system is an error too.
    const std::string noSystem = DvnfMessageHandler::Format(51106, DvnString()).str();
    // The run makes the default node and queue manager.
    EXPECT_EQ(Messages(), (Lines{Line(51023, "domain"), Line(51027, "Default Node"),
                                 Line(51026, "Default Queue Manager"), noSystem, Line(51302, "P"), noSystem,
                                 Line(51302, "Q"), Line(51021, "Order"), Line(51010, "Ordering"),
                                 Line(51112, "Ordering"), Line(51011, "Ordering"),
                                 Line(51014, "Ordering")}));
    EXPECT_EQ(out.substr(out.size() - std::string(kErrors).size()), kErrors);
    EXPECT_EQ(Version(), (Lines{"3|3|0"}));
    ExecAll(Db(), {"UPDATE DVBT.VERSION SET MOD_LEVEL = 7"});
    EXPECT_EQ(Run(file, true), 8);
    EXPECT_EQ(Version(), (Lines{"3|3|7"}));
}

TEST_P(Import, TheDataSourceComesFromTheArgumentOrElseFromTheProfile) {
    std::string file = File("Category \"A\" {}\n");
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(DataSource()));
    for (DvnString source : {DvnString(), DvnString("")}) EXPECT_EQ(Run(file, true, source), 0);
    DvnProfile::ClearOverrides();
    EXPECT_EQ(Count("CATEGORY"), "1");
    Messages();

    // A data source that does not open: 51366 with its name, 12, no final
    // words; a password in the name is masked, whatever its spelling.
    EXPECT_EQ(Run(file, true, DvnString("dvnbt_no_such_dsn")), 12);
    EXPECT_EQ(out, "");
    EXPECT_EQ(Messages(), (Lines{Line(51366, "dvnbt_no_such_dsn")}));
    EXPECT_EQ(Run(file, true, DvnString("dvnbt_no_such_dsn;Password=Zq7secret")), 12);
    EXPECT_EQ(Messages(), (Lines{Line(51366, "dvnbt_no_such_dsn;Password=********")}));
}

TEST_P(Import, AFileThatCannotBeReadOrParsedStoresNothingAndOneWithWarningsIsStored) {
    // A folder, an unreadable file and an empty one are refused by name.
    const std::string unreadable = File("Category \"A\" {}\n");
    std::filesystem::permissions(unreadable, std::filesystem::perms::none);
    const bool asRoot = static_cast<bool>(std::ifstream(unreadable));  // root reads it all the same
    for (const std::string& path : {m_files.Folder(), unreadable, std::string("/dev/null")}) {
        if (path == unreadable && asRoot) continue;
        SCOPED_TRACE(path);
        EXPECT_EQ(Run(path, true), 12);
        EXPECT_EQ(out, "Could not load TRX" + path);
        EXPECT_EQ(Messages(), (Lines{Line(51301, path.c_str())}));  // after the parser's 52001
    }
    EXPECT_EQ(Run(File("Category \"A\" {}\nCategory \"B\" { Description = ; }\n"), true), 12);
    EXPECT_EQ(Run(m_files.Folder() + "/missing.trx", true), 12);
    EXPECT_EQ(Count("CATEGORY"), "0");
    EXPECT_EQ(Count("VERSION"), "0");  // the version row comes after the parse

    EXPECT_EQ(Run(File("Category \"A\" { Colour = 3; }\n"), true), 4);
    EXPECT_EQ(Count("CATEGORY"), "1");
}

TEST_P(Import, ADocumentationOfAnyLengthIsStoredAndReadBackWhole) {
    // 100,000 characters, a third of them of two and three bytes in UTF-8.
    std::string text;
    for (int k = 0; k < 100000 / 3; ++k) text += "a\xC3\xA4\xE2\x82\xAC";  // a, a umlaut, euro sign
    text += "z";
    ASSERT_EQ(text.size(), 100000u / 3 * 6 + 1);
    const std::string file = File("Category \"Long\" { Documentation = \"" + text +
                                  "\"; }\nDataStructure \"Long\" { Documentation = \"" + text + "\"; }\n");
    ASSERT_EQ(Run(file, true), 0) << out;
    EXPECT_EQ(Messages(), (Lines{Line(51027, "Default Node"), Line(51026, "Default Queue Manager"),
                                 Line(51019, "Long"), Line(51021, "Long")}));
    // Read back through the recordsets, as every load reads.
    auto readBack = [&](auto&& set, const char* table) {
        SCOPED_TRACE(table);
        set.m_strFilter = "NAME = 'Long'";
        set.Open(CRecordset::snapshot, table, CRecordset::readOnly);
        ASSERT_FALSE(set.IsEOF());
        EXPECT_EQ(set.m_DOCUMENTATION.str().size(), text.size());
        EXPECT_TRUE(set.m_DOCUMENTATION.str() == text);
        set.Close();
    };
    readBack(DvnCategorySet(&Db()), "DVBT.CATEGORY");
    readBack(DvnDataStructureSet(&Db()), "DVBT.DATA_STRUCTURE");
}

// A message stream that raises a failure at the first report starting with
// the trigger: the way a failure from deep inside a save comes up.
struct RaisingBuffer : std::stringbuf {
    const char* trigger;
    std::function<void()> raise;
    RaisingBuffer(const char* t, std::function<void()> r) : trigger(t), raise(std::move(r)) {}
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        if (raise && std::string(s, static_cast<size_t>(n)).rfind(trigger, 0) == 0) std::exchange(raise, nullptr)();
        return std::stringbuf::xsputn(s, n);
    }
};

TEST_P(Import, AFailureThatReachesTheFacadeIsReportedThereAndEndsWithTwelve) {
    std::string file = File("Category \"Sales\" {}\n");
    const std::vector<std::pair<std::function<void()>, std::string>> cases = {
        {[] { throw new CDBException(-1, "commit failed", "State:40001"); }, "51368|commit failed"},
        {[] { throw DvnOSException(DvnString("write"), 5, 6); }, "24140|write|5|6"},
        {[] { throw new CMemoryException; }, "51373|Out of memory."},
        {[] { throw 7; }, "51374"},
    };
    for (const auto& [raise, message] : cases) {
        SCOPED_TRACE(message);
        BackEndRun run(true);  // its handler takes the facade's reports
        RaisingBuffer buffer("51019", raise);  // the back end's report of the new category
        std::ostream stream(&buffer);
        stream.exceptions(std::ios::badbit);
        DvnfMessageHandler::DefaultOutput(&stream);
        DvnConvCoreDbIF facade(&run.data);
        testing::internal::CaptureStdout();
        EXPECT_EQ(facade.ImportTRX(DvnString(file), DvnString(DataSource()), true, true, true), 12);
        const std::string stdoutText = testing::internal::GetCapturedStdout();
        DvnfMessageHandler::DefaultOutput(nullptr);
        EXPECT_EQ(run.Messages(), Lines{message});
        // The final words are written all the same.
        EXPECT_EQ(stdoutText.substr(stdoutText.size() - std::string(kErrors).size()), kErrors);
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(Import);

}  // namespace
