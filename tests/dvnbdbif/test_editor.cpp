// The editor's operations through the facade on both databases: loading a
// process level by level, the attributes on demand, the inside of blocks,
// and the save with its final words.
#include <gtest/gtest.h>

#include <algorithm>
#include <regex>

#include "facadetest.h"
#include "dvnbdbrd.h"
#include "dvnfffdn.h"

namespace {

// The facade with its connection in view.
class EditorFacade : public DvnConvCoreDbIF {
public:
    using DvnConvCoreDbIF::DvnConvCoreDbIF;
    bool ConnectionOpen() const { return m_pDatabase->IsOpen(); }
};

class Editor : public FacadeTest {
protected:
    // The text parsed into the editor's core data, as a file gives it.
    void Parse(const std::string& text) {
        std::string error;
        ASSERT_EQ(DvnTRXFrontend(data, nullptr).ReadText(text, "editor", 0, nullptr, &error), 0) << error;
    }
    // Saves the core data; the level and what was written on standard output.
    std::pair<int, std::string> Save(EditorFacade& facade) {
        testing::internal::CaptureStdout();
        const int level = facade.SaveProcess();
        std::string out = testing::internal::GetCapturedStdout();
        const size_t words = out.find("Finished with");
        return {level, words == std::string::npos ? std::string() : out.substr(words)};
    }
};

// A process entity in the core data as a load leaves it: state 3, with a
// diagram holding one block and one program activity.
struct Shallow {
    DvnfEntity& process;
    DvnfEntity& block;
    DvnfEntity& program;
    explicit Shallow(DvnfTRXData& data, const char* pid = "P404")
        : process(data.CreateEntity(DvnfString("Process"), DvnfString(pid), DvnfString("Gone"))),
          block(data.CreateBlockActivityByOID(process.AttributeData()("Diagram"), DvnfString("A404"))),
          program(data.CreateProgramActivityByOID(process.AttributeData()("Diagram"), DvnfString("A405"))) {
        block.Name(DvnfString("Outer"));
        program.Name(DvnfString("Check"));
        for (DvnfEntity* e : {&process, &block, &program}) e->State(DvnfObject::StateUnchanged);
    }
};

TEST_P(Editor, RowsThatAreNotThereGiveEightWhatIsInMemoryIsNotReadAndAFailedOpenGivesTwelve) {
    DvnBTAuthorization::GetInstance();
    EditorFacade facade(&data);
    Shallow s(data);
    {
        TraceCapture trace;
        // The process's attributes are read at every call: two calls, two reports.
        EXPECT_EQ(facade.LoadProcessAttributes(s.process), 8);
        EXPECT_EQ(facade.LoadProcessAttributes(s.process), 8);
        EXPECT_FALSE(facade.ConnectionOpen());
        EXPECT_EQ(Messages(), (Lines{"51700|Gone", "51700|Gone"}));
        EXPECT_EQ(facade.LoadActivityAttributes(s.program), 8);
        EXPECT_FALSE(facade.ConnectionOpen());
        EXPECT_EQ(Messages(), Lines{"51701|Check"});
        EXPECT_FALSE(s.process.IsAttributeDataAttrComplete() || s.program.IsAttributeDataAttrComplete());
        // A name that no process has: undefined, and the connection closed.
        EXPECT_FALSE(facade.LoadProcess(DvnString("Nope")).IsValid());
        EXPECT_FALSE(facade.ConnectionOpen());
        EXPECT_EQ(Messages(), Lines{});
        for (const char* traced : {"Load Process attributes Gone", "Load Activity attributes Check",
                                   "Load Process Nope", "ProcesstoCoreNope"})
            EXPECT_NE(trace.Text().find(traced), std::string::npos) << traced;
    }

    // In memory: 0 before anything is opened, so a data source that cannot
    // be opened does not matter.
    s.program.SetFlags(DvnfEntity::FlagAttributesComplete);
    s.block.SetFlags(DvnfEntity::FlagBlockContent);
    DvnProfile::SetOverride("BTODBCDataSourceName", DvnString("dvnbt_no_such_dsn"));
    TraceCapture trace;
    EXPECT_EQ(facade.LoadActivityAttributes(s.program), 0);
    EXPECT_EQ(facade.LoadBlock(s.block, DvnString("P404"), true), 0);
    EXPECT_NE(trace.Text().find("Attributes for Check are already loded"), std::string::npos);
    EXPECT_NE(trace.Text().find("block Outer is already loaded"), std::string::npos);
    EXPECT_EQ(trace.Text().find("Open database failed"), std::string::npos);

    // Otherwise the open is tried: its level, no message, no flag.
    s.program.SetFlags(DvnfEntity::FlagAttributesComplete, false);
    s.block.SetFlags(DvnfEntity::FlagBlockContent, false);
    EXPECT_EQ(facade.LoadActivityAttributes(s.program), 12);
    EXPECT_EQ(facade.LoadBlock(s.block, DvnString("P404"), false), 12);
    EXPECT_EQ(facade.LoadProcessAttributes(s.process), 12);
    EXPECT_FALSE(facade.LoadProcess(DvnString("Gone")).IsValid());
    EXPECT_EQ(Save(facade), std::make_pair(12, std::string()));
    EXPECT_EQ(Messages(), Lines{});
    EXPECT_FALSE(s.block.IsBlockContentInMemory() || s.program.IsAttributeDataAttrComplete());
    const std::string text = trace.Text();
    const std::regex failed("Open database failed");
    EXPECT_EQ(std::distance(std::sregex_iterator(text.begin(), text.end(), failed), std::sregex_iterator()), 5);
}

TEST_P(Editor, ASaveStoresByKeyAndWarningsEndAsZero) {
    DvnBTAuthorization::GetInstance();
    EditorFacade facade(&data);
    AddCategory(Db(), "C1", "Sales");
    Parse(R"(Process "Order" oid "P1" { Description = "first"; ProcessHasCategory -> "Sales"; })");
    TraceCapture trace;
    EXPECT_EQ(Save(facade), std::make_pair(0, std::string("Finished with Process Model Save \nNo errors found.\n")));
    EXPECT_EQ(QueryRows(Db(), "SELECT PID, NAME, DESCRIPTION, CATID FROM DVBT.PROCESS"), Lines{"P1|Order|first|C1"});
    EXPECT_FALSE(facade.ConnectionOpen());
    EXPECT_NE(trace.Text().find("Save Process To Database "), std::string::npos);
    EXPECT_NE(trace.Text().find("Finished with Process Model Save. No errors found."), std::string::npos);

    // A category that is not there is a warning: the row is written
    // without it, the words say so, and the level is 0.
    Parse(R"(Process "Order" oid "P1" { Description = "second"; ProcessHasCategory -> "Nope"; })");
    data.GetEntityByOID(DvnfString("Process"), DvnfString("P1")).State(DvnfObject::StateChanged);
    EXPECT_EQ(Save(facade), std::make_pair(0, std::string("Finished with Process Model Save\nWarnings found.\n")));
    EXPECT_EQ(QueryRows(Db(), "SELECT PID, NAME, DESCRIPTION, CATID FROM DVBT.PROCESS"),
              Lines{"P1|Order|second|<null>"});
    const Lines messages = Messages();
    EXPECT_NE(std::find(messages.begin(), messages.end(), "51112|Order"), messages.end())
        << testing::PrintToString(messages);
    EXPECT_NE(trace.Text().find("Finished with Process Model Save.Warnings found."), std::string::npos);
}

// tests/data/dvnbdbif/nested.trx: a process with a block three deep and an
// activity beside it.
TEST_P(Editor, AttributesAndBlocksAreReadAsAskedAndOnlyWhatIsAskedIsMarked) {
    ASSERT_NO_FATAL_FAILURE(ImportText(DataText("nested.trx")));
    EditorFacade facade(&data);
    DvnfEntity& order = facade.LoadProcess(DvnString("Order"));
    ASSERT_TRUE(order.IsValid());
    EXPECT_EQ(order.State(), DvnfObject::StateUnchanged);
    EXPECT_FALSE(facade.ConnectionOpen());
    auto activity = [&](const char* name) -> DvnfEntity& {
        return data.GetEntityByName(DvnfString("Activity"), DvnfString(name));
    };
    DvnfEntity& check = activity("Check");
    // The editor's load reads the attributes of the first level already.
    EXPECT_TRUE(order.IsAttributeDataAttrComplete());
    EXPECT_TRUE(check.IsAttributeDataAttrComplete());
    auto description = [](const DvnfEntity& e) { return e.AttributeData()("Description").Value().str(); };

    ExecAll(Db(), {"UPDATE DVBT.PROCESS SET DESCRIPTION = 'changed'",
                   "UPDATE DVBT.ACTIVITY SET DESCRIPTION = 'changed' WHERE NAME = 'Check'"});
    // In memory: not read again.
    EXPECT_EQ(facade.LoadActivityAttributes(check), 0);
    EXPECT_EQ(description(check), "as imported");
    // Not in memory: read, and marked; a second call reads no more.
    check.SetFlags(DvnfEntity::FlagAttributesComplete, false);
    EXPECT_EQ(facade.LoadActivityAttributes(check), 0);
    EXPECT_EQ(description(check), "changed");
    EXPECT_TRUE(check.IsAttributeDataAttrComplete());
    ExecAll(Db(), {"UPDATE DVBT.ACTIVITY SET DESCRIPTION = 'again' WHERE NAME = 'Check'"});
    EXPECT_EQ(facade.LoadActivityAttributes(check), 0);
    EXPECT_EQ(description(check), "changed");
    // The process's attributes are read whenever asked.
    EXPECT_EQ(facade.LoadProcessAttributes(order), 0);
    EXPECT_EQ(description(order), "changed");
    ExecAll(Db(), {"UPDATE DVBT.PROCESS SET DESCRIPTION = 'again'"});
    EXPECT_EQ(facade.LoadProcessAttributes(order), 0);
    EXPECT_EQ(description(order), "again");
    EXPECT_FALSE(facade.ConnectionOpen());

    // The first level: Outer is a shell. One level: Inner appears as a
    // shell, and only Outer is marked.
    DvnfEntity& outer = activity("Outer");
    ASSERT_TRUE(outer.IsValid());
    EXPECT_FALSE(outer.IsBlockContentInMemory());
    EXPECT_FALSE(activity("Inner").IsValid());
    const DvnString pid(order.OID().c_str());
    EXPECT_EQ(facade.LoadBlock(outer, pid, false), 0);
    EXPECT_FALSE(facade.ConnectionOpen());
    DvnfEntity& inner = activity("Inner");
    ASSERT_TRUE(inner.IsValid());
    EXPECT_TRUE(outer.IsBlockContentInMemory());
    EXPECT_FALSE(inner.IsBlockContentInMemory());
    EXPECT_FALSE(activity("Deepest").IsValid());
    // Outer is in memory: deep or not, nothing more is read through it.
    EXPECT_EQ(facade.LoadBlock(outer, pid, true), 0);
    EXPECT_FALSE(activity("Deepest").IsValid());
    // Deep from Inner, asked by the on-demand reader of the process: the
    // blocks found on the way are read in the same call.
    DvnODBCReader reader(data, &order);
    reader.ReadBlock(data, inner, true);
    EXPECT_TRUE(inner.IsBlockContentInMemory());
    EXPECT_TRUE(activity("Deepest").IsValid());
    EXPECT_TRUE(activity("Leaf").IsValid());
    EXPECT_EQ(Messages(), Lines{});
    // No load stamps the process.
    EXPECT_EQ(QueryValue(Db(), "SELECT CHECKED_OUT_BY FROM DVBT.PROCESS"), "<null>");
}

DVN_INSTANTIATE_BOTH_BACKENDS(Editor);

}  // namespace
