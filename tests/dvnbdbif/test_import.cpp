// The import through the facade: the road from a TRX file to the rows, the
// rights, the version row, the parse, the open, levels, final words.
#include <gtest/gtest.h>

#include <functional>
#include <sstream>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "repositorydb.h"
#include "testenv.h"

namespace {

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
    // Runs the import on this test's database; keeps standard output.
    int Run(const std::string& file, bool initialLoad, bool overwrite = true, bool sourceOption = true) {
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        int level = facade.ImportTRX(DvnString(file), DvnString(DataSource()), overwrite, sourceOption, initialLoad);
        out = testing::internal::GetCapturedStdout();
        return level;
    }
    // The reported messages, one line each as the default handler prints them.
    std::vector<std::string> Messages() {
        std::vector<std::string> lines;
        std::istringstream in(m_messages.str());
        for (std::string line; std::getline(in, line);)
            if (line.compare(0, 2, "52") != 0) lines.push_back(line);  // the parser's own remarks aside
        m_messages.str("");
        return lines;
    }
    static std::string Line(long number, const char* a1 = nullptr, const char* a2 = nullptr) {
        return DvnfMessageHandler::Format(number, DvnString(a1), DvnString(a2)).str();
    }
    std::string Count(const char* table) { return QueryValue(Db(), std::string("SELECT COUNT(*) FROM DVBT.") + table); }

    std::string out;

    TrxFiles m_files;

private:
    std::ostringstream m_messages;
};

const char* kNoErrors = "Finished with Process Model import \nNo errors during import.\n";
const char* kWarnings = "Finished with Process Model import\nWarnings found during import.\n";
const char* kErrors = "Finished with Process Model import\nErrors found during import.\n";

TEST_P(Import, AnInitialLoadStoresEverythingItCanAndWritesTheVersionRow) {
    std::string file = File("Category \"Sales\" { Description = \"Orders\"; }\nCategory \"Billing\" {}\n");
    {
        TraceCapture trace;
        EXPECT_EQ(Run(file, true), 0);
        // The final words in the trace: level 2, category 8.
        const std::string text = trace.Text();
        const size_t at = text.find(": Finished with Process Model import. No errors during import.\n");
        ASSERT_NE(at, std::string::npos) << text;
        EXPECT_EQ(text.compare(text.rfind('\n', at) + 1, 19, "[trace 2/8/0x10000]"), 0) << text;
    }
    EXPECT_EQ(out, std::string("Version, Release, Level\n") + "Category Billing...\n\nCategory Sales...\n\n" + kNoErrors);
    EXPECT_EQ(Messages(), (std::vector<std::string>{Line(51019, "Billing"), Line(51019, "Sales")}));
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.CATEGORY ORDER BY NAME"),
              (std::vector<std::string>{"Billing|0|<null>", "Sales|0|Orders"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT VERSION, RELEASE, MOD_LEVEL FROM DVBT.VERSION"),
              (std::vector<std::string>{"3|3|0"}));

    // Again, marking changes: the rows are updated in place and marked 3;
    // a deletion leaves a tombstone. The version row is not written twice.
    std::string again = File("Category \"Sales\" { Description = \"All orders\"; }\ndelete Category \"Billing\";\n");
    EXPECT_EQ(Run(again, true, true, false), 0);
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, CHECKED_OUT, DESCRIPTION FROM DVBT.CATEGORY ORDER BY NAME"),
              (std::vector<std::string>{"Billing|4|<null>", "Sales|3|All orders"}));
    EXPECT_EQ(Count("VERSION"), "1");
}

TEST_P(Import, WithoutRightsASectionIsRefusedOnceAndTheVersionRowIsNotTouched) {
    // The user has no rights at all: only an initial load may store.
    DvnBTAuthorization::GetInstance();
    std::string file = File("Category \"A\" {}\nCategory \"B\" {}\nDataStructure \"Order\" {}\n");
    EXPECT_EQ(Run(file, false), 4);
    EXPECT_EQ(Messages(), (std::vector<std::string>{Line(51165, "Category"), Line(51165, "Data Structure")}));
    EXPECT_EQ(out, kWarnings);
    EXPECT_EQ(Count("CATEGORY"), "0");
    EXPECT_EQ(Count("VERSION"), "0");

    // A file that does not touch a refused section goes through clean.
    EXPECT_EQ(Run(File("# nothing\n"), false), 0);
    EXPECT_EQ(out, kNoErrors);
}

TEST_P(Import, AFileThatCannotBeParsedLeavesTheDatabaseUntouched) {
    std::string file = File("Category \"A\" {}\nCategory \"B\" { Description = ; }\n");
    EXPECT_EQ(Run(file, true), 12);
    EXPECT_EQ(out, "Could not load TRX" + file);  // no line end, no final words
    std::vector<std::string> messages = Messages();
    ASSERT_FALSE(messages.empty());
    EXPECT_EQ(messages.back(), Line(51301, file.c_str()));
    EXPECT_EQ(Count("CATEGORY"), "0");
    EXPECT_EQ(Count("VERSION"), "0");  // the version row comes after the parse

    EXPECT_EQ(Run(m_files.Folder() + "/missing.trx", true), 12);
    EXPECT_EQ(Count("VERSION"), "0");
}

TEST_P(Import, AFileWithWarningsIsStoredAndGivesAWarning) {
    std::string file = File("Category \"A\" { Colour = 3; }\n");
    EXPECT_EQ(Run(file, true), 4);
    EXPECT_EQ(Count("CATEGORY"), "1");
    EXPECT_NE(out.find(kWarnings), std::string::npos) << out;
}

TEST_P(Import, AFailureInTheMiddleKeepsEarlierSectionsAndTriesTheLaterOnes) {
    std::string file = File(
        "Domain \"domain\" {}\n"
        "Category \"Sales\" {}\n"
        "Process \"Ordering\" { ProcessHasCategory -> \"Sales\"; }\n");
    EXPECT_EQ(Run(file, true), 8);
    EXPECT_EQ(Messages(), (std::vector<std::string>{
                              DvnfMessageHandler::Format(51900, DvnString("domain"), DvnString("Domain")).str(),
                              Line(51019, "Sales"),
                              DvnfMessageHandler::Format(51900, DvnString("Ordering"), DvnString("Process")).str()}));
    EXPECT_EQ(Count("CATEGORY"), "1");
    EXPECT_EQ(out.substr(out.size() - std::string(kErrors).size()), kErrors);
}

TEST_P(Import, TheDataSourceComesFromTheArgumentOrElseFromTheProfile) {
    std::string file = File("Category \"A\" {}\n");
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(DataSource()));
    for (DvnString source : {DvnString(), DvnString("")}) {
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        EXPECT_EQ(facade.ImportTRX(DvnString(file), source, true, true, true), 0);
        testing::internal::GetCapturedStdout();
    }
    DvnProfile::ClearOverrides();
    EXPECT_EQ(Count("CATEGORY"), "1");
    Messages();

    // A data source that does not open: 51366 with its name, level 12, no final words.
    DvnConvCoreDbIF facade;
    TraceCapture trace;
    testing::internal::CaptureStdout();
    EXPECT_EQ(facade.ImportTRX(DvnString(file), DvnString("dvnbt_no_such_dsn"), true, true, true), 12);
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "");
    EXPECT_EQ(Messages(), (std::vector<std::string>{Line(51366, "dvnbt_no_such_dsn")}));
    EXPECT_NE(trace.Text().find("Open database failed"), std::string::npos) << trace.Text();
    EXPECT_EQ(trace.Text().find("Finished with Process Model import"), std::string::npos) << trace.Text();
}

// A message stream that raises a failure once, at the first report that
// starts with the trigger: the way a failure from deep inside a save comes
// up to the facade.
class FailingBuffer : public std::stringbuf {
public:
    FailingBuffer(std::string trigger, std::function<void()> raise)
        : m_trigger(std::move(trigger)), m_raise(std::move(raise)) {}

protected:
    std::streamsize xsputn(const char* s, std::streamsize n) override {
        if (m_raise && std::string(s, static_cast<size_t>(n)).rfind(m_trigger, 0) == 0) {
            auto raise = std::move(m_raise);
            m_raise = nullptr;
            raise();
        }
        return std::stringbuf::xsputn(s, n);
    }

private:
    std::string m_trigger;
    std::function<void()> m_raise;
};

TEST_P(Import, AFailureThatReachesTheFacadeIsReportedThereAndEndsWithTwelve) {
    std::string file = File("Category \"Sales\" {}\n");
    struct Case {
        const char* name;
        std::function<void()> raise;
        std::vector<std::string> messages;  // to the facade's handler
        const char* trace;
    };
    const std::vector<Case> cases = {
        {"database", [] { throw new CDBException(-1, "commit failed", "State:40001"); },
         {"51368|commit failed"}, "Database exception In ImportTRX: rc =-1Error: commit failedState: State:40001"},
        {"operating system", [] { throw DvnOSException(DvnString("write"), 5, 6); }, {"24140|write|5|6"},
         "DVNException in ImportTRX"},
        {"memory", [] { throw new CMemoryException; }, {"51373|Out of memory."}, "Exception in ImportTRX"},
        {"unknown", [] { throw 7; }, {"51374"}, "Unknown exception In ImportTRX"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        DvnfCollectingMessageHandler handler;
        DvnfTRXData data(DvnfTRXTypes::_instance, &handler);
        FailingBuffer buffer("51019", c.raise);  // the back end's report of the new category
        std::ostream stream(&buffer);
        stream.exceptions(std::ios::badbit);
        DvnfMessageHandler::DefaultOutput(&stream);
        TraceCapture trace;
        DvnConvCoreDbIF facade(&data);
        testing::internal::CaptureStdout();
        EXPECT_EQ(facade.ImportTRX(DvnString(file), DvnString(DataSource()), true, true, true), 12);
        std::string stdoutText = testing::internal::GetCapturedStdout();
        DvnfMessageHandler::DefaultOutput(nullptr);
        std::vector<std::string> messages;
        for (const auto& e : handler.Entries()) {
            std::string line = std::to_string(e.number);
            for (const DvnString& a : e.args)
                if (!a.IsNull()) line += "|" + a.str();
            messages.push_back(line);
        }
        EXPECT_EQ(messages, c.messages);
        EXPECT_NE(trace.Text().find(c.trace), std::string::npos) << trace.Text();
        // The final words are written all the same.
        EXPECT_EQ(stdoutText.substr(stdoutText.size() - std::string(kErrors).size()), kErrors);
    }
}

DVN_INSTANTIATE_BOTH_BACKENDS(Import);

}  // namespace
