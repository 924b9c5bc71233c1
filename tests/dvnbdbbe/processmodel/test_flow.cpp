// What connects the activities of a diagram: sources and sinks, control and
// data connectors with their bend points and mappings, and the text
// annotations; in an import, in the editor, and when their owners go. After
// every test no row of the process model has lost its owner.
#include <gtest/gtest.h>

#include <algorithm>

#include "backendrun.h"
#include "orphans.h"

namespace {

using Lines = std::vector<std::string>;

struct Point {
    long x, y;
};
struct Mapping {
    const char* from;
    const char* to;
};

class FlowStore : public StoreTest {
protected:
    void TearDown() override {
        if (!IsSkipped()) {
            EXPECT_EQ(OrphanRows(Db()), Lines{});
        }
        StoreTest::TearDown();
    }

    template <class Run>
    static DvnfAttributeData Diagram(Run&, DvnfEntity& owner) {
        return owner.AttributeData()("Diagram");
    }
    // An information activity of the diagram, named before connectors name it.
    template <class Run>
    static DvnfEntity& Act(Run& run, DvnfEntity& owner, const char* name, const std::string& oid = "",
                           long kind = 5) {
        DvnfAttributeData diagram = owner.AttributeData()("Diagram");
        DvnfEntity& activity = kind == 3 ? run.data.CreateBlockActivityByOID(diagram, DvnfString(oid.c_str()))
                                         : run.data.CreateInfoActivityByOID(diagram, DvnfString(oid.c_str()));
        activity.Name(DvnfString(name));
        activity.Flags(7);
        return activity;
    }
    template <class Run>
    static DvnfEntity& Source(Run& run, DvnfEntity& owner, const char* number, const std::string& oid = "") {
        DvnfEntity& source = run.data.CreateSourceByOID(owner.AttributeData()("Diagram"), DvnfString(oid.c_str()));
        source.Name(DvnfString(number));
        source.Flags(7);
        return source;
    }
    template <class Run>
    static DvnfEntity& Sink(Run& run, DvnfEntity& owner, const char* number, const std::string& oid = "") {
        DvnfEntity& sink = run.data.CreateSinkByOID(owner.AttributeData()("Diagram"), DvnfString(oid.c_str()));
        sink.Name(DvnfString(number));
        sink.Flags(7);
        return sink;
    }
    // A control connector ("ConnectorSpec" 1) or a default one (2).
    template <class Run>
    static DvnfEntity& Control(Run& run, DvnfEntity& owner, const char* from, const char* to, bool withCondition = true) {
        DvnfAttributeData diagram = owner.AttributeData()("Diagram");
        DvnfEntity& connector = withCondition
                                    ? run.data.CreateControlConnector(diagram, DvnfString(from), DvnfString(to), nullptr)
                                    : run.data.CreateDefaultConnector(diagram, DvnfString(from), DvnfString(to), nullptr);
        connector.Flags(7);
        return connector;
    }
    // A data connector; an end whose name starts with '#' is the source or
    // sink of that number.
    template <class Run>
    static DvnfEntity& Data(Run& run, DvnfEntity& owner, std::string from, std::string to,
                            const std::string& oid = "") {
        const bool fromNode = from[0] == '#', toNode = to[0] == '#';
        if (fromNode) from.erase(0, 1);
        if (toNode) to.erase(0, 1);
        DvnfEntity& connector = run.data.CreateDataConnectorWithOID(owner.AttributeData()("Diagram"),
                                                                    DvnfString(from), fromNode, DvnfString(to), toNode,
                                                                    DvnfString(oid.c_str()));
        connector.Flags(7);
        return connector;
    }
    template <class Run>
    static DvnfEntity& Loop(Run& run, DvnfEntity& owner, const char* activity, bool firstDirection) {
        DvnfEntity& connector = run.data.CreateDataConnectorWithOID(owner.AttributeData()("Diagram"),
                                                                    DvnfString(activity), firstDirection, DvnfString(""));
        connector.Flags(7);
        return connector;
    }
    static void BendPoints(DvnfEntity& connector, const std::vector<Point>& points) {
        connector.AttributeData().Reset("BendPoints");
        for (const Point& p : points) {
            DvnfAttributeData point = connector.AttributeData()("BendPoints").NewSetElement();
            point("Xpos") = p.x;
            point("Ypos") = p.y;
        }
    }
    static void Mappings(DvnfEntity& connector, const std::vector<Mapping>& mappings) {
        for (const Mapping& m : mappings) {
            DvnfAttributeData mapping = connector.AttributeData()("Mappings").NewSetElement();
            mapping("From") = m.from;
            mapping("To") = m.to;
        }
    }

    std::string Pid(const char* name) {
        return QueryValue(Db(), std::string("SELECT PID FROM DVBT.PROCESS WHERE NAME = '") + name + "'");
    }
    std::string Aid(const char* name) {
        return QueryValue(Db(), std::string("SELECT AID FROM DVBT.ACTIVITY WHERE NAME = '") + name + "'");
    }
    // In byte order, whatever the collation of the database.
    Lines Sorted(const std::string& sql) {
        Lines rows = QueryRows(Db(), sql);
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    // The data connectors with their ends by name: activity names, "S<n>"
    // for a source, "K<n>" for a sink.
    Lines DataConnectors() {
        return Sorted(
            "SELECT COALESCE(fa.NAME, 'S' || CAST(so.SOURCE_NUMBER AS VARCHAR(9))), "
            "COALESCE(ta.NAME, 'K' || CAST(si.SINK_NUMBER AS VARCHAR(9))), c.DIRECTION, c.NAME, "
            "(SELECT COUNT(*) FROM DVBT.DATA_BENDPOINT b WHERE b.DCID = c.DCID), "
            "(SELECT COUNT(*) FROM DVBT.DATA_MAP m WHERE m.DCID = c.DCID) FROM DVBT.DATA_CONNECTOR c "
            "LEFT JOIN DVBT.ACTIVITY fa ON fa.AID = c.FROM_ACTIVITY LEFT JOIN DVBT.ACTIVITY ta ON ta.AID = "
            "c.TO_ACTIVITY LEFT JOIN DVBT.SOURCE so ON so.SOURCE_ID = c.FROM_SOURCE LEFT JOIN DVBT.SINK si ON "
            "si.SINK_ID = c.TO_SINK");
    }
    Lines ControlBendPoints() {
        return QueryRows(Db(), "SELECT f.NAME, t.NAME, b.SEQUENCENO, b.XPOS, b.YPOS FROM DVBT.CONTROL_BENDPOINT b "
                               "JOIN DVBT.ACTIVITY f ON f.AID = b.FROM_ACTIVITY JOIN DVBT.ACTIVITY t ON t.AID = "
                               "b.TO_ACTIVITY ORDER BY f.NAME, t.NAME, b.SEQUENCENO");
    }
    std::string Count(const char* table) { return QueryValue(Db(), std::string("SELECT COUNT(*) FROM DVBT.") + table); }
};

// ------------------------------------------------------------------ an import

TEST_P(FlowStore, AnImportStoresSourcesSinksAndConnectorsFoundByNumberAndName) {
    ImportRun run(true);
    DvnfEntity& flow = run.Add("Process", "Flow");
    Act(run, flow, "A");
    Act(run, flow, "B");
    DvnfEntity& three = Source(run, flow, "3");
    three.AttributeData()("Layout")("Xpos") = 10L;
    three.AttributeData()("Layout")("Ypos") = 20L;
    // Its number is 3 too: the filter holds the number, not the name.
    Source(run, flow, "3x");
    Sink(run, flow, "4").AttributeData()("Layout")("Width") = 30L;

    DvnfEntity& ab = Control(run, flow, "A", "B");
    DvnfAttributeData attributes = ab.AttributeData();
    attributes("Condition") = std::string(4096, 'c') + "de";
    attributes("ConditionPos")("Xpos") = 5L;
    attributes("ConditionPos")("Ypos") = 6L;
    attributes("Name") = "go on";
    attributes("Description") = std::string(300, 'd');
    BendPoints(ab, {{1, 2}, {3, 4}, {5, 6}});
    // The same two ends again: it exists, the first stays.
    BendPoints(Control(run, flow, "A", "B", false), {{9, 9}});
    Control(run, flow, "B", "A", false).AttributeData()("Condition") = "ignored";

    DvnfEntity& fromSource = Data(run, flow, "#3", "A");
    fromSource.AttributeData()("Name") = "in";
    BendPoints(fromSource, {{7, 8}, {9, 10}});
    // Members are matched whole: quotes, '%' and '_' are no patterns.
    Mappings(fromSource, {{"it's", "x"}, {"a_b", "y"}, {"aXb", "y"}, {"100%", "z"}, {"1000", "z"}, {"a_b", "y"}});
    Data(run, flow, "B", "#4");
    Data(run, flow, "#3", "#4");
    Data(run, flow, "A", "B");
    Loop(run, flow, "A", true);
    Loop(run, flow, "A", false);
    Loop(run, flow, "A", true);  // exists

    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51010|Flow", "51015|A", "51015|B", "51016|3", "51080|3x", "51017|4",
                                     "51011|Flow", "51014|Flow"}));
    const std::string pid = Pid("Flow");
    EXPECT_EQ(QueryRows(Db(), "SELECT SOURCE_NUMBER, PID, BLOCK_AID, XPOS, YPOS, WIDTH FROM DVBT.SOURCE"),
              (Lines{"3|" + pid + "|<null>|10|20|<null>"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT SINK_NUMBER, XPOS, WIDTH FROM DVBT.SINK"), (Lines{"4|<null>|30"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT SOURCE_ID FROM DVBT.SOURCE"), three.OID().str());

    EXPECT_EQ(Sorted("SELECT f.NAME, t.NAME, c.TYPE, LENGTH(c.TRANSITION_COND), SUBSTR(c.TRANSITION_COND, 4096), "
                     "c.COND_XPOS, c.COND_YPOS, c.NAME, LENGTH(c.DESCRIPTION), c.INSIDE_BLOCK FROM "
                     "DVBT.CONTROL_CONNECTOR c JOIN DVBT.ACTIVITY f ON f.AID = c.FROM_ACTIVITY JOIN DVBT.ACTIVITY t "
                     "ON t.AID = c.TO_ACTIVITY"),
              (Lines{"A|B|1|4097|cd|5|6|go on|254|<null>", "B|A|2|<null>|<null>|<null>|<null>|<null>|<null>|<null>"}));
    EXPECT_EQ(ControlBendPoints(), (Lines{"A|B|1|1|2", "A|B|2|3|4", "A|B|3|5|6"}));

    EXPECT_EQ(DataConnectors(), (Lines{"A|A|1|<null>|0|0", "A|A|2|<null>|0|0", "A|B|0|<null>|0|0",
                                       "B|K4|0|<null>|0|0", "S3|A|0|in|2|5", "S3|K4|0|<null>|0|0"}));
    EXPECT_EQ(QueryValue(Db(), "SELECT DCID FROM DVBT.DATA_CONNECTOR WHERE NAME = 'in'"), fromSource.OID().str());
    EXPECT_EQ(Sorted("SELECT FROM_MEMBER, TO_MEMBER FROM DVBT.DATA_MAP"),
              (Lines{"100%|z", "1000|z", "aXb|y", "a_b|y", "it's|x"}));
    EXPECT_EQ(Sorted("SELECT b.SEQUENCENO, b.XPOS, b.YPOS FROM DVBT.DATA_BENDPOINT b"), (Lines{"1|7|8", "2|9|10"}));
}

TEST_P(FlowStore, ConnectorsWithoutTheirEndsAreRefusedOrPassedOverWhenDeleted) {
    ImportRun run(true);
    DvnfEntity& flow = run.Add("Process", "Flow");
    Act(run, flow, "A");
    // Gone is deleted: so are the connectors to it, and their ends are not
    // looked for. Ghost and source 9 take no part in the save: no row.
    Act(run, flow, "Gone").State(DvnfObject::StateDeleted);
    Act(run, flow, "Ghost").State(DvnfObject::StateNone);
    Source(run, flow, "9").State(DvnfObject::StateNone);
    Control(run, flow, "A", "Gone").State(DvnfObject::StateDeleted);
    Data(run, flow, "Gone", "A").State(DvnfObject::StateDeleted);
    Control(run, flow, "A", "Ghost");
    Data(run, flow, "#9", "A");
    Data(run, flow, "A", "Ghost");
    // Ends that the diagram does not have leave the connector without links.
    Control(run, flow, "A", "Nowhere");
    Data(run, flow, "Nowhere", "Nowhere");
    Control(run, flow, "A", "A");  // the one that is stored

    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 8);
    EXPECT_EQ(run.Messages(), (Lines{"51010|Flow", "51015|A", "51367|A -> Ghost", "51367|Source 9 -> A",
                                     "51367|A -> Ghost", "51011|Flow", "51014|Flow"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME FROM DVBT.ACTIVITY"), (Lines{"A"}));
    EXPECT_EQ(Count("CONTROL_CONNECTOR"), "1");
    EXPECT_EQ(Count("DATA_CONNECTOR"), "0");
}

// ------------------------------------------------------------------ the editor

TEST_P(FlowStore, TheEditorRewritesBendPointsAndRenumbersThemAndACompleteDataConnectorStartsClean) {
    {
        ImportRun run(true);
        DvnfEntity& flow = run.Add("Process", "Flow");
        Act(run, flow, "A");
        Act(run, flow, "B");
        BendPoints(Control(run, flow, "A", "B"), {{1, 1}, {2, 2}, {3, 3}});
        DvnfEntity& ab = Data(run, flow, "A", "B");
        BendPoints(ab, {{1, 1}, {2, 2}, {3, 3}});
        Mappings(ab, {{"a", "b"}, {"c", "d"}});
        DvnfEntity& ba = Data(run, flow, "B", "A");
        BendPoints(ba, {{1, 1}, {2, 2}});
        Mappings(ba, {{"e", "f"}});
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const std::string pid = Pid("Flow");
    const std::string abKey = QueryValue(Db(), "SELECT DCID FROM DVBT.DATA_CONNECTOR WHERE FROM_ACTIVITY = '" +
                                                   Aid("A") + "'");
    const std::string baKey = QueryValue(Db(), "SELECT DCID FROM DVBT.DATA_CONNECTOR WHERE FROM_ACTIVITY = '" +
                                                   Aid("B") + "'");
    BackEndRun run(true);
    DvnfEntity& flow = run.data.CreateEntity(DvnfString("Process"), DvnfString(pid.c_str()), DvnfString("Flow"));
    flow.State(DvnfObject::StateUnchanged);
    flow.Flags(7);
    Act(run, flow, "A", Aid("A")).State(DvnfObject::StateUnchanged);
    Act(run, flow, "B", Aid("B")).State(DvnfObject::StateUnchanged);
    DvnfEntity& control = Control(run, flow, "A", "B");
    control.State(DvnfObject::StateChanged);
    BendPoints(control, {{7, 7}, {8, 8}});
    // Complete (bit 0): the row is deleted and added anew, without the old
    // bend points and mappings.
    DvnfEntity& ab = Data(run, flow, "A", "B", abKey);
    ab.State(DvnfObject::StateChanged);
    ab.AttributeData()("Name") = "rewritten";
    BendPoints(ab, {{9, 9}});
    Mappings(ab, {{"c", "d"}, {"x", "y"}});
    // Not complete: the row is edited, its bend points rewritten, its
    // mappings kept; without "Type" its direction stays.
    DvnfEntity& ba = Data(run, flow, "B", "A", baKey);
    ba.State(DvnfObject::StateChanged);
    ba.Flags(0);
    ba.AttributeData().Reset("Type");
    BendPoints(ba, {{5, 5}});
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51046|Flow"}));
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, CHECKED_OUT FROM DVBT.PROCESS"), (Lines{"Flow|3"}));
    EXPECT_EQ(ControlBendPoints(), (Lines{"A|B|1|7|7", "A|B|2|8|8"}));
    EXPECT_EQ(DataConnectors(), (Lines{"A|B|0|rewritten|1|2", "B|A|0|<null>|1|1"}));
    EXPECT_EQ(Sorted("SELECT c.NAME, m.FROM_MEMBER, m.TO_MEMBER FROM DVBT.DATA_MAP m JOIN DVBT.DATA_CONNECTOR c ON "
                     "c.DCID = m.DCID"),
              (Lines{"<null>|e|f", "rewritten|c|d", "rewritten|x|y"}));
    EXPECT_EQ(Sorted("SELECT DCID, SEQUENCENO, XPOS FROM DVBT.DATA_BENDPOINT"),
              (Lines{abKey + "|1|9", baKey + "|1|5"}));
}

TEST_P(FlowStore, ADeletedSinkOrSourceTakesItsDataConnectorsWithTheirBendPointsAndMappings) {
    {
        ImportRun run(true);
        DvnfEntity& flow = run.Add("Process", "Flow");
        Act(run, flow, "A");
        Source(run, flow, "1");
        Sink(run, flow, "2");
        for (auto [from, to] : {std::pair{"#1", "A"}, {"A", "#2"}, {"#1", "#2"}}) {
            DvnfEntity& connector = Data(run, flow, from, to);
            BendPoints(connector, {{1, 1}});
            Mappings(connector, {{"m", "n"}});
        }
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    }
    const std::string pid = Pid("Flow");
    // An editor save of the process as a load gives it, its sink deleted.
    auto save = [&](const char* deleted) {
        BackEndRun run(true);
        DvnfEntity& flow = run.data.CreateEntity(DvnfString("Process"), DvnfString(pid.c_str()), DvnfString("Flow"));
        flow.State(DvnfObject::StateUnchanged);
        flow.Flags(7);
        Act(run, flow, "A", Aid("A")).State(DvnfObject::StateUnchanged);
        for (const auto& row : QueryRows(Db(), "SELECT SOURCE_ID FROM DVBT.SOURCE"))
            Source(run, flow, "1", row).State(std::string(deleted) == "source" ? 1 : 3);
        for (const auto& row : QueryRows(Db(), "SELECT SINK_ID FROM DVBT.SINK"))
            Sink(run, flow, "2", row).State(std::string(deleted) == "sink" ? 1 : 3);
        const int level = run.be.SaveProcesses(Db(), true, true);
        EXPECT_EQ(level, 0);
        return run.Messages();
    };
    EXPECT_EQ(save("sink"), (Lines{"51179|2", "51046|Flow"}));
    EXPECT_EQ(DataConnectors(), (Lines{"S1|A|0|<null>|1|1"}));
    EXPECT_EQ(Count("DATA_BENDPOINT"), "1");
    EXPECT_EQ(save("source"), (Lines{"51178|1", "51046|Flow"}));
    for (const char* table : {"SOURCE", "SINK", "DATA_CONNECTOR", "DATA_BENDPOINT", "DATA_MAP"})
        EXPECT_EQ(Count(table), "0") << table;
    EXPECT_EQ(Count("ACTIVITY"), "1");
}

// ------------------------------------------------------------------ replacement

TEST_P(FlowStore, ReplacingAProcessLeavesTheSameRowsAndDeletingItLeavesNone) {
    const char* tables[] = {"SOURCE", "SINK", "CONTROL_CONNECTOR", "CONTROL_BENDPOINT", "DATA_CONNECTOR",
                            "DATA_BENDPOINT", "DATA_MAP", "TEXT_ANNOTATION", "ACTIVITY"};
    auto counts = [&] {
        Lines out;
        for (const char* t : tables) out.push_back(std::string(t) + "|" + Count(t));
        return out;
    };
    Lines first;
    std::string firstPid;
    for (int round = 0; round < 2; ++round) {
        ImportRun run(true);
        DvnfEntity& flow = run.Add("Process", "Flow");
        Act(run, flow, "A");
        Act(run, flow, "B");
        Source(run, flow, "1");
        Sink(run, flow, "1");
        BendPoints(Control(run, flow, "A", "B"), {{1, 1}, {2, 2}});
        for (auto [from, to] : {std::pair{"#1", "A"}, {"B", "#1"}, {"A", "B"}}) {
            DvnfEntity& connector = Data(run, flow, from, to);
            BendPoints(connector, {{1, 1}, {2, 2}, {3, 3}});
            Mappings(connector, {{"m", "n"}, {"o", "p"}});
        }
        run.data.CreateTextAnnotation(Diagram(run, flow), DvnfString("Note"));
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        if (round == 0) {
            first = counts();
            firstPid = Pid("Flow");
        }
    }
    EXPECT_NE(Pid("Flow"), firstPid);
    EXPECT_EQ(counts(), first);
    EXPECT_EQ(first[6], "DATA_MAP|6");
    EXPECT_EQ(QueryValue(Db(), "SELECT COUNT(*) FROM DVBT.DATA_CONNECTOR WHERE PID = '" + firstPid + "'"), "0");

    ImportRun run(true);
    run.Delete("Process", "Flow");
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    for (const char* t : tables) EXPECT_EQ(Count(t), "0") << t;
}

// ------------------------------------------------------------------ text annotations

TEST_P(FlowStore, TextAnnotationsAreStoredWithTheirDiagramAndRewrittenWithIt) {
    const char* columns = "SELECT NAME, INSIDE_BLOCK, ANNOTATION_TEXT, TEXT_COLOR, BACK_COLOR, TEXT_FONT, "
                          "TEXT_FONT_SIZ, TEXT_FONT_STYLE, TEXT_FONT_DESC, XPOS, YPOS, WIDTH, HEIGHT FROM "
                          "DVBT.TEXT_ANNOTATION ";
    {
        ImportRun run(true);
        DvnfEntity& flow = run.Add("Process", "Flow");
        Act(run, flow, "Box");
        DvnfAttributeData note = run.data.CreateTextAnnotation(Diagram(run, flow), DvnfString("Note")).AttributeData();
        note("Text") = "Bills go out on Fridays";
        note("Color")("Red") = 255L;
        note("Color")("Green") = 128L;
        note("Color")("Blue") = 0L;
        note("BackgroundColor")("Blue") = 7L;
        note("Font")("Name") = "Sans";
        note("Font")("Size") = 12L;
        note("Font")("Style") = 2L;
        note("Font")("Descriptor") = "sans-12";
        for (const char* at : {"Xpos", "Ypos", "Width", "Height"}) note("Layout")(at) = 40L;
        run.data.CreateTextAnnotation(Diagram(run, flow), DvnfString("Bare"));
        // A text longer than its column is refused; the others are stored.
        run.data.CreateTextAnnotation(Diagram(run, flow), DvnfString("Long")).AttributeData()("Text") =
            std::string(256, 't');
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 8);
        const Lines messages = run.Messages();
        ASSERT_EQ(messages.size(), 5u);
        EXPECT_EQ(messages[2].substr(0, 6), "51368|");
    }
    EXPECT_EQ(QueryRows(Db(), std::string(columns) + "ORDER BY NAME"),
              (Lines{"Bare|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>|<null>",
                     "Note|<null>|Bills go out on Fridays|255128000|7|Sans|12|2|sans-12|40|40|40|40"}));

    // The block's diagram has its own rows; the editor's process diagram
    // replaces the rows at the top, those of the block stay.
    const std::string pid = Pid("Flow"), box = Aid("Box");
    BackEndRun run(true);
    DvnfEntity& flow = run.data.CreateEntity(DvnfString("Process"), DvnfString(pid.c_str()), DvnfString("Flow"));
    flow.State(DvnfObject::StateUnchanged);
    flow.Flags(7);
    DvnfEntity& block = Act(run, flow, "Box", box, 3);
    block.State(DvnfObject::StateUnchanged);
    DvnfAttributeData inner = block.AttributeData()("Implementation")("AsBlock").AsEntity().AttributeData()("Diagram");
    run.data.CreateTextAnnotation(inner, DvnfString("Inside")).AttributeData()("Text") = "in the box";
    EXPECT_EQ(run.be.SaveDiagram(Db(), inner, flow, CString(box.c_str())), 0);
    run.data.CreateTextAnnotation(Diagram(run, flow), DvnfString("Note")).AttributeData()("Text") = "changed";
    run.data.CreateTextAnnotation(Diagram(run, flow), DvnfString("Bare")).State(DvnfObject::StateDeleted);
    EXPECT_EQ(run.be.SaveDiagram(Db(), Diagram(run, flow), flow, CString()), 0);
    EXPECT_EQ(QueryRows(Db(), "SELECT NAME, INSIDE_BLOCK, ANNOTATION_TEXT FROM DVBT.TEXT_ANNOTATION ORDER BY NAME"),
              (Lines{"Inside|" + box + "|in the box", "Note|<null>|changed"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(FlowStore);

}  // namespace
