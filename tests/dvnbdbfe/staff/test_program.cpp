// Load of programs stored by dvnbt import: the groups per platform with their
// extras and services, the general settings, a program loaded twice, and the
// fill of a skeleton by name or by key.
#include <gtest/gtest.h>

#include "../loadrun.h"
#include "testenv.h"

namespace {

using Lines = std::vector<std::string>;

class ProgramLoad : public RepositoryTest {
protected:
    void Import(const std::string& trx) {
        const CliResult r =
            RunDvnbt(DvnbtArgs({"import", "--initial-load", files.Write(trx)}), {"DVNBT_PASSWORD=pw"});
        ASSERT_LE(r.status, 3) << r.err;
    }
    // Every group of the program: group|its defined attributes, and
    // group.External|the service's.
    static Lines Groups(const DvnfEntity& program) {
        Lines out;
        const DvnfAttributeDataReader attributes = program.AttributeData();
        for (const char* g : {"WINNT", "WIN95", "NK2", "KRX", "HPUX", "Solaris", "TR880"}) {
            const auto group = attributes(g);
            if (!group.IsDefined()) continue;
            out.push_back(std::string(g) + "|" +
                          Defined(group, {"Type", "PathAndFilename", "Parameter", "EntryPoint", "InheritEnvironment",
                                          "Autoclose", "Style", "Foreground", "XTerm"}));
            const auto external = group("External");
            if (!external.IsDefined()) continue;
            std::string line = std::string(g) + ".External|" +
                               Defined(external, {"Service", "LocalUser", "SecurityChecking", "Codepage", "Mapping",
                                                  "MappingType", "ForwardMapping"});
            if (external("Duration").IsDefined())
                line += " Duration=" + Defined(external("Duration"), {"Type", "Seconds"});
            out.push_back(line);
        }
        return out;
    }
    DvnfEntity& ByName(LoadRun& run, const char* name) {
        return run.data.GetEntityByName(DvnfString("Program"), DvnfString(name));
    }
    TrxFiles files;
};

TEST_P(ProgramLoad, GroupsComeBackFromTheirTablesWithTheirExtrasAndServices) {
    Import(R"(
Program "All" { Description = "d"; Icon = "ICON"; Unattended = true; ExecutionMode = 1; ExecutionUser = 1; Trusted = false;
  WINNT { Type = 1; PathAndFilename = "a.exe"; Parameter = "-v"; InheritEnvironment = true; Style = 2; Foreground = true; }
  WIN95 { Type = 4; PathAndFilename = "lost"; Style = 2;
          External { Service = "w"; Mapping = false; MappingType = "lost"; Duration { Type = 0; } } }
  NK2 { Type = 1; PathAndFilename = "n"; Autoclose = true; }
  KRX { Type = 2; PathAndFilename = "/k"; XTerm = true; External { Service = "k"; Mapping = true; MappingType = "mt"; } }
  TR880 { External { Service = "t"; Codepage = 850; Duration { Type = 2; Minutes = 2; } } } }
Program "Bare" { WINNT { Type = 2; PathAndFilename = "b.exe"; } }
)");
    ExecAll(Db(), {"UPDATE DVBT.PROGRAM SET EXECUTION_USER = 3 WHERE NAME = 'Bare'"});
    LoadRun run(Db());
    TraceCapture trace;
    run.fe.Programs("");
    EXPECT_EQ(run.Messages(), (Lines{"51514|All", "51514|Bare"}));
    EXPECT_EQ(run.Count("Program"), 2u);

    DvnfEntity& all = ByName(run, "All");
    EXPECT_EQ(Defined(all.AttributeData(), {"Description", "Icon", "Unattended", "ExecutionMode", "ExecutionUser",
                                            "Trusted", "StructuresFromActivity", "InputContainerAccess"}),
              "Description=d Icon=ICON Unattended=true ExecutionMode=1 ExecutionUser=1 Trusted=false "
              "StructuresFromActivity=false");
    // A group of the external type has its type and its service only; a
    // duration of none comes back as its type.
    EXPECT_EQ(Groups(all), (Lines{"WINNT|Type=1 PathAndFilename=a.exe Parameter=-v InheritEnvironment=true Style=2 "
                                  "Foreground=true",
                                  "WIN95|Type=4", "WIN95.External|Service=w LocalUser=true SecurityChecking=true "
                                  "Mapping=false Duration=Type=0",
                                  "NK2|Type=1 PathAndFilename=n Autoclose=true Style=0 Foreground=false",
                                  // The service of a group of another type is not read back.
                                  "KRX|Type=2 PathAndFilename=/k XTerm=true",
                                  "TR880|Type=4", "TR880.External|Service=t LocalUser=true SecurityChecking=true "
                                  "Codepage=850 Mapping=true Duration=Type=2 Seconds=120"}));
    // Rows of one table only give that group only, not of the windowed type
    // with its extras neutral; an unknown user is traced.
    DvnfEntity& bare = ByName(run, "Bare");
    EXPECT_EQ(Groups(bare), (Lines{"WINNT|Type=2 PathAndFilename=b.exe Style=0 Foreground=false"}));
    for (const char* absent : {"WIN95", "NK2", "KRX", "HPUX", "Solaris", "TR880"})
        EXPECT_FALSE(bare.AttributeData()(absent).IsValid()) << absent;
    EXPECT_FALSE(bare.AttributeData()("ExecutionUser").IsValid());
    EXPECT_NE(trace.Text().find("Error in ProgramSetting: Unknown EXECUTION_USER"), std::string::npos);
    // Both have the default structure.
    EXPECT_EQ(bare.FirstLinkOfType("ProgramHasInputStr").Target().OID().str(),
              QueryValue(Db(), "SELECT DSID FROM DVBT.DATA_STRUCTURE WHERE NAME = 'Default Data Structure'"));
}

TEST_P(ProgramLoad, ASkeletonIsFilledByNameOrByKeyAndAProgramReadTwiceHoldsTheRowsOfNow) {
    Import(R"(
Program "Calc" { WINNT { Type = 1; PathAndFilename = "c.exe"; } KRX { Type = 1; PathAndFilename = "/c"; } }
Program "Gone" { WINNT { Type = 1; PathAndFilename = "g.exe"; } }
)");
    ExecAll(Db(), {"UPDATE DVBT.PROGRAM SET CHECKED_OUT = 4 WHERE NAME = 'Gone'"});
    const std::string key = QueryValue(Db(), "SELECT PROGRAM_ID FROM DVBT.PROGRAM WHERE NAME = 'Calc'");
    LoadRun run(Db());
    DvnfEntity& gone = run.data.CreateEntity(DvnfString("Program"), DvnfString(""), DvnfString("Gone"));
    gone.State(DvnfObject::StateNone);
    EXPECT_EQ(run.fe.ProgramToCore(gone), 8);
    DvnfEntity& calc = run.data.CreateEntity(DvnfString("Program"), DvnfString(""), DvnfString("Calc"));
    calc.State(DvnfObject::StateNone);
    EXPECT_EQ(run.fe.ProgramToCore(calc), 0);
    DvnfEntity& filled = run.Get("Program", key.c_str());
    ASSERT_TRUE(filled.IsValid());
    EXPECT_EQ(static_cast<int>(filled.State()), 3);
    EXPECT_EQ(Groups(filled), (Lines{"WINNT|Type=1 PathAndFilename=c.exe Style=0 Foreground=false",
                                     "KRX|Type=1 PathAndFilename=/c"}));

    // By key, after a platform row went: the group goes with it.
    ExecAll(Db(), {"DELETE FROM DVBT.KRX_EXTENT"});
    EXPECT_EQ(run.fe.ProgramToCore(filled), 0);
    EXPECT_EQ(Groups(filled), (Lines{"WINNT|Type=1 PathAndFilename=c.exe Style=0 Foreground=false"}));
    // Loaded already: passed over by the load of all.
    const size_t before = run.Messages().size();
    run.fe.Programs("");
    const Lines messages = run.Messages();
    // Only the tombstone of Gone, which stays bare.
    EXPECT_EQ(Lines(messages.begin() + static_cast<long>(before), messages.end()), (Lines{"51514|Gone"}));
    EXPECT_EQ(Groups(filled).size(), 1u);
}

DVN_INSTANTIATE_BOTH_BACKENDS(ProgramLoad);

}  // namespace
