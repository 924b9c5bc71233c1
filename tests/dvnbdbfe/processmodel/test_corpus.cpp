// The process corpus of tests/data/processes: each file imported into a
// repository that holds what it refers to, loaded back whole (the export's
// load) and level by level (the editor's loads), gives the text of its
// expected file on both databases; an editor cycle changes what it changed
// and nothing else. docs/load.md lists why an expected file differs from
// its input.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <sstream>

#include "backendrun.h"
#include "../roundtrip.h"

namespace {

std::string ReadData(const std::string& name) { return TestData("processes/" + name); }

// The corpus: a file and the text its load gives.
struct CorpusFile {
    const char* input;
    const char* expected;
    int importLevel;  // 4: it names what another file defines
    std::vector<long> warnings = {};  // the store's, beside those of what another file defines
};
const CorpusFile kCorpus[] = {
    {"diagram.trx", "diagram.expected.trx", 4},
    {"staff.trx", "staff.expected.trx", 4},
    {"differences.trx", "differences.expected.trx", 4, {51102, 51118}},
};

// The facade with its core data.
struct Loaded {
    DvnfCollectingMessageHandler handler;
    DvnfTRXData data{DvnfTRXTypes::_instance, &handler};
    DvnConvCoreDbIF facade{&data};
    std::string Text() const { return DvnTRXWriter(data).Write(); }
};

class Corpus : public RoundTripTest {
protected:
    void SetUp() override {
        RoundTripTest::SetUp();
        if (IsSkipped() || HasFatalFailure()) return;  // no PostgreSQL configured, or no database
        DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(DataSource()));
        DvnBTAuthorization::GetInstance()->GrantDefinitionRights();
        Store(ReadData("definitions.trx"));  // with the server the program activities run on
    }
    void TearDown() override {
        DvnProfile::SetOverride("BTODBCDataSourceName", DvnString());
        RoundTripTest::TearDown();
    }
    // Imports the text as an initial load. A process file names persons,
    // roles, organizations and systems that it does not define, which the
    // parser cannot read on demand: it warns (52009) and the import gives 4
    // (a server it names is read from the row above). Any other message but
    // progress fails.
    void Store(const std::string& text, int expectedLevel = 0, const std::vector<long>& warnings = {}) {
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        const int level = facade.ImportTRX(DvnString(m_files.Write(text)), DvnString(DataSource()), true, true, true);
        const std::string out = testing::internal::GetCapturedStdout();
        ASSERT_EQ(level, expectedLevel) << out;
        std::istringstream lines(out);
        for (std::string line; std::getline(lines, line);) {
            if (line.size() < 6 || line[5] != ':' || line.find_first_not_of("0123456789") != 5) continue;
            const long number = std::stol(line.substr(0, 5));
            auto ends = [&](const char* tail) { return line.size() > 8 && line.rfind(tail) == line.size() - std::strlen(tail); };
            const bool progress =
                ends(" added.") || ends(" saved.") || line.find(": Saving ") == 5 || number == 52010;
            const bool expected = std::find(warnings.begin(), warnings.end(), number) != warnings.end();
            EXPECT_TRUE(progress || expected || number == 52009) << line;
        }
    }
    // Every process whole, as an export reads them, with the names of what
    // they refer to.
    std::string Exported() {
        Loaded run;
        EXPECT_EQ(run.facade.ExportGroups(DvnString(DataSource()), DvnString(""), EXPORT_PROCESSES, false), 0);
        return run.Text();
    }
    // The processes of the repository through the editor's loads: the
    // process, its attributes, the attributes of its activities and every
    // block at every depth.
    std::string Edited() {
        Loaded run;
        for (const std::string& name : QueryRows(Db(), "SELECT NAME FROM DVBT.PROCESS")) Open(run, name);
        return run.Text();
    }
    static void Open(Loaded& run, const std::string& name) {
        DvnfEntity& process = run.facade.LoadProcess(DvnString(name));
        ASSERT_TRUE(process.IsValid()) << name;
        EXPECT_EQ(run.facade.LoadProcessAttributes(process), 0);
        std::vector<DvnfEntity*> activities;
        DvnfDataSetIterator it = process.AttributeData()("Diagram")("Activities").ElementsOfSet();
        for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next()) activities.push_back(&e.AsEntity());
        for (DvnfEntity* each : activities) {
            DvnfEntity& activity = *each;
            EXPECT_EQ(run.facade.LoadActivityAttributes(activity), 0) << activity.Name();
            if (activity.AttributeData()("Implementation")("Type").AsLong(0) == 3) {
                EXPECT_EQ(run.facade.LoadBlock(activity, DvnString(process.OID().c_str()), true), 0);
            }
        }
    }
};

TEST_P(Corpus, EachFileLoadsAsItsExpectedTextWholeAndLevelByLevel) {
    for (const CorpusFile& file : kCorpus) {
        SCOPED_TRACE(file.input);
        const std::string input = ReadData(file.input);
        ExecAll(Db(), {"DELETE FROM DVBT.PROCESS"});  // the schema takes all below a process along
        ASSERT_NO_FATAL_FAILURE(Store(input, file.importLevel, file.warnings));
        const std::string expected = Canonical(ReadData(file.expected));
        const std::string exported = Exported(), edited = Edited();
        EXPECT_EQ(exported, expected);
        EXPECT_EQ(edited, expected);
        // Stored anew, with fresh keys, it gives the same text (the server of
        // a program activity, which only the repository holds, found by its
        // full name each time).
        ExecAll(Db(), {"DELETE FROM DVBT.PROCESS"});
        ASSERT_NO_FATAL_FAILURE(Store(input, file.importLevel, file.warnings));
        EXPECT_EQ(Exported(), exported);
        // DVN_CORPUS_OUT=folder writes what was loaded there, and the
        // canonical text of the input beside it, to compare by eye.
        if (const char* out = std::getenv("DVN_CORPUS_OUT")) {
            const std::string base = std::string(out) + "/" + BackendName(GetParam()) + "." + file.input;
            std::ofstream(base + ".input") << Canonical(input);
            std::ofstream(base + ".exported") << exported;
            std::ofstream(base + ".edited") << edited;
        }
    }
}

TEST_P(Corpus, AnEditorCycleChangesOneActivityAndNothingElse) {
    const std::string input = ReadData("diagram.trx");
    ASSERT_NO_FATAL_FAILURE(Store(input, 4));
    {
        Loaded run;
        Open(run, "Shipment");
        DvnfEntity& check = run.data.GetEntityByName(DvnfString("Activity"), DvnfString("Check"));
        ASSERT_TRUE(check.IsValid());
        check.AttributeData()("Description") = "Looks at the order twice";
        check.State(DvnfObject::StateChanged);
        run.handler.Clear();
        testing::internal::CaptureStdout();
        EXPECT_EQ(run.facade.SaveProcess(), 0);
        const std::string out = testing::internal::GetCapturedStdout();
        EXPECT_NE(out.find("No errors found."), std::string::npos) << out;
        // The changed activity is written, and the process above it; no other row.
        EXPECT_EQ(MessageLines(run.handler), (std::vector<std::string>{"51047|Check", "51046|Shipment"}));
    }
    std::string expected = ReadData("diagram.expected.trx");
    const std::string before = "Description = \"Looks at the order\";";
    const size_t at = expected.find(before);
    ASSERT_NE(at, std::string::npos);
    expected.replace(at, before.size(), "Description = \"Looks at the order twice\";");
    EXPECT_EQ(Edited(), Canonical(expected));
    EXPECT_EQ(Exported(), Canonical(expected));
}

DVN_INSTANTIATE_BOTH_BACKENDS(Corpus);

}  // namespace
