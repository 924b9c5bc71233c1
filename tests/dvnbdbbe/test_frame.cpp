// What every store shares: the saves of the kinds without a store of their
// own yet, the rights of the loops, the second pass, states, links, deletes
// and the default system names.
#include <gtest/gtest.h>

#include <functional>

#include "backendrun.h"
#include "testenv.h"

namespace {

// Opens the protected frame helpers to the tests.
struct FrameProbe : DvnConvCoreDbBe {
    using DvnConvCoreDbBe::DvnConvCoreDbBe;
    using DvnConvCoreDbBe::MarkForInsert;
    using DvnConvCoreDbBe::SecondPassLoop;
    using DvnConvCoreDbBe::SecondPassMayWrite;
};

class Frame : public RepositoryTest {};

using Save = std::function<int(DvnConvCoreDbBe&, CDatabase&, bool)>;
struct Kind {
    const char* type;
    const char* label;     // kind in 51900 and, unless refusalKind is set, in the refusal
    long refusal;          // 51165, 51166 or 51167
    Save save;
    const char* refusalKind = nullptr;
};

TEST_P(Frame, KindsWithoutAStoreAreReportedPerObjectUnderTheirRight) {
    const std::vector<Kind> kinds = {
        {"Domain", "Domain", 51167, [](auto& b, auto& db, bool r) { return b.SaveDomains(db, r); }, "DOMAIN"},
        {"SystemGroup", "System Group", 51167, [](auto& b, auto& db, bool r) { return b.SaveSystemGroups(db, r); }},
        {"Node", "Node", 51167, [](auto& b, auto& db, bool r) { return b.SaveNodes(db, r); }},
        {"QueueManager", "Queue Manager", 51167, [](auto& b, auto& db, bool r) { return b.SaveQueueManagers(db, r); }},
        {"System", "System", 51167, [](auto& b, auto& db, bool r) { return b.SaveSystems(db, r); }},
        {"Server", "Server", 51167, [](auto& b, auto& db, bool r) { return b.SaveServers(db, r, DvnString()); }},
        {"Level", "Level", 51166, [](auto& b, auto& db, bool r) { return b.SaveLevels(db, r); }},
        {"Person", "Person", 51166, [](auto& b, auto& db, bool r) { return b.SavePeople(db, r); }},
        {"Organization", "Organization", 51166, [](auto& b, auto& db, bool r) { return b.SaveOrgs(db, r); }},
        {"ActivitiesList", "Activity Instance List", 51166,
         [](auto& b, auto& db, bool r) { return b.SaveActInstanceLists(db, r); }},
        {"ProcessInstancesList", "Process Instance List", 51166,
         [](auto& b, auto& db, bool r) { return b.SavePrcInstanceLists(db, r); }},
        {"TemplatesList", "Process Template List", 51166,
         [](auto& b, auto& db, bool r) { return b.SavePrcTemplateLists(db, r); }},
        {"Worklist", "Work List", 51166, [](auto& b, auto& db, bool r) { return b.SaveWorkLists(db, r); }},
        {"Role", "Role", 51166, [](auto& b, auto& db, bool r) { return b.SaveRoles(db, r); }},
        {"PEAgent", "PEA", 51167, [](auto& b, auto& db, bool r) { return b.SavePEAs(db, r); }},
        {"Program", "Program", 51165, [](auto& b, auto& db, bool r) { return b.SavePrograms(db, r); }},
        {"Process", "Process", 51165, [](auto& b, auto& db, bool r) { return b.SaveProcesses(db, r, false); }},
        {"ToolSet", "Tool Set", 51165, [](auto& b, auto& db, bool r) { return b.SaveToolSets(db, r); }},
    };
    for (const Kind& kind : kinds) {
        SCOPED_TRACE(kind.type);
        {
            BackEndRun run(true);
            run.Add(kind.type, "One");
            run.Add(kind.type, "Two");
            run.Add(kind.type, "Named").State(DvnfObject::StateNone);  // only named: nothing to save
            EXPECT_EQ(kind.save(run.be, Db(), true), 8);
            const std::string label = kind.label;
            EXPECT_EQ(run.Messages(), (std::vector<std::string>{"51900|One|" + label, "51900|Two|" + label}));
            EXPECT_EQ(run.handler.Entries()[0].Line().str(),
                      "51900: " + label + " One is not stored: objects of this kind cannot be stored yet.");
        }
        {
            BackEndRun run(true);
            run.Add(kind.type, "One");
            EXPECT_EQ(kind.save(run.be, Db(), false), 4);
            const std::string refusalKind = kind.refusalKind ? kind.refusalKind : kind.label;
            EXPECT_EQ(run.Messages(), (std::vector<std::string>{std::to_string(kind.refusal) + "|" + refusalKind}));
        }
    }
    // The second person pass adds nothing: each person was reported by the first.
    BackEndRun run(true);
    run.Add("Person", "ADMIN");
    EXPECT_EQ(run.be.SavePeople2(Db(), true), 0);
    EXPECT_TRUE(run.Messages().empty());
}

TEST_P(Frame, SecondPassTakesRowsOfTheFirstPassAndOnlyWithOverwriteOthers) {
    FrameProbe be;
    be.SetSourceOption(false);
    EXPECT_EQ(be.MarkForInsert(true), 9);
    EXPECT_EQ(be.MarkForInsert(false), 5);
    int mark = 9;
    EXPECT_TRUE(be.SecondPassMayWrite(mark));
    EXPECT_EQ(mark, 5);
    mark = 0;
    EXPECT_TRUE(be.SecondPassMayWrite(mark));
    be.SetOverwriteOption(false);
    EXPECT_FALSE(be.SecondPassMayWrite(mark));
    mark = 9;
    EXPECT_TRUE(be.SecondPassMayWrite(mark));

    // The loop visits valid entities in a state above 1, in name order.
    DvnfTRXData& data = *be.CoreData();
    for (auto [name, state] : std::vector<std::pair<const char*, int>>{{"a", 0}, {"b", 1}, {"c", 2}, {"d", 3}, {"e", 4}})
        data.CreateEntity(DvnfString("Role"), DvnfString(""), DvnfString(name)).State(state);
    std::string visited;
    EXPECT_EQ(be.SecondPassLoop(Db(), "Role",
                                [&](DvnfEntity& e) {
                                    visited += e.Name().str();
                                    return e.Name() == "d" ? 4 : 0;
                                }),
              4);
    EXPECT_EQ(visited, "cde");
}

TEST_P(Frame, StatesLinksAndDeletes) {
    BackEndRun run(true);
    DvnfEntity& process = run.Add("Process", "Ordering");
    EXPECT_EQ(run.be.GetLinkName("ProcessHasCategory", process, "Category"), "");
    EXPECT_FALSE(run.be.GetLink("ProcessHasCategory", process, "Category").IsValid());
    run.data.AddLinkByName(process, "ProcessHasCategory", "Category", "Sales");
    EXPECT_EQ(run.be.GetLinkName("ProcessHasCategory", process, "Category"), "Sales");
    EXPECT_EQ(run.be.GetLink("ProcessHasCategory", process, "Category").Name().str(), "Sales");

    for (auto [from, to] : std::vector<std::pair<int, int>>{{0, 0}, {1, 1}, {2, 3}, {3, 3}, {4, 3}}) {
        process.State(from);
        run.be.ResetState(process);
        EXPECT_EQ(process.State(), to) << from;
    }
    run.be.ResetState(DvnfEntity::undefined);  // an invalid entity is left alone
    EXPECT_EQ(DvnfEntity::undefined.State(), 0);

    ExecAll(Db(), {"INSERT INTO DVBT.CATEGORY (CATID, NAME, CHECKED_OUT) VALUES ('K1', 'Sales', 0)"});
    EXPECT_EQ(run.be.DeleteObject(Db(), "DELETE FROM DVBT.CATEGORY WHERE CATID = 'K1'", "CATEGORY"), 0);
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.CATEGORY"), "0");
    TraceCapture trace;
    EXPECT_EQ(run.be.DeleteObject(Db(), "DELETE FROM DVBT.NO_SUCH_TABLE", "NO_SUCH_TABLE"), 8);
    EXPECT_EQ(run.handler.Count(51368), 1u);
    EXPECT_NE(trace.Text().find("Exception opening table NO_SUCH_TABLE rc ="), std::string::npos) << trace.Text();
}

TEST(FrameDefaults, SystemNamesComeFromTheProfileOrTheirFallbacksOnce) {
    {
        ProfileFile profile("current = Work\n[Work]\nSystem = PRODSYS\nSystemGroup = PRODGRP\n");
        DvnConvCoreDbBe be;
        EXPECT_EQ(be.DefaultSystem().str(), "PRODSYS");
        EXPECT_EQ(be.DefaultSysGrp().str(), "PRODGRP");
        ProfileFile other("current = Work\n[Work]\nSystem = OTHER\n");
        EXPECT_EQ(be.DefaultSystem().str(), "PRODSYS");  // kept from the first call
    }
    ProfileFile none("current = Work\n[Work]\n");
    DvnConvCoreDbBe be;
    EXPECT_EQ(be.DefaultSystem().str(), "DVNSYS");
    EXPECT_EQ(be.DefaultSysGrp().str(), "SYS_GRP");
    EXPECT_EQ(be.GetTablePrefix(), "");
    EXPECT_TRUE(be.Overwrite());
    EXPECT_EQ(be.SourceMark(), 0);
}

DVN_INSTANTIATE_BOTH_BACKENDS(Frame);

}  // namespace
