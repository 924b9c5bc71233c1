// What connects the activities of a diagram: sources and sinks, control and
// data connectors with their bend points and mappings, and the text
// annotations; in an import, in the editor, and when their owners go. After
// every test no row of the process model has lost its owner.
#include "../storetests.h"

namespace {

using Points = std::vector<std::pair<long, long>>;
using Maps = std::vector<std::pair<const char*, const char*>>;

class FlowStore : public ModelStore {
protected:
    // A source, or a sink, named by its number.
    template <class Run>
    static DvnfEntity& Node(Run& run, DvnfEntity& owner, bool sink, const char* number, const std::string& oid = "") {
        const DvnfString key(oid.c_str());
        DvnfEntity& node =
            sink ? run.data.CreateSinkByOID(Diagram(owner), key) : run.data.CreateSourceByOID(Diagram(owner), key);
        node.Name(DvnfString(number));
        node.Flags(7);
        return node;
    }
    // A control connector ("ConnectorSpec" 1) or a default one (2).
    template <class Run>
    static DvnfEntity& Control(Run& run, DvnfEntity& owner, const char* from, const char* to, bool condition = true,
                               const Points& points = {}) {
        const DvnfString a(from), b(to);
        DvnfEntity& c = condition ? run.data.CreateControlConnector(Diagram(owner), a, b, nullptr)
                                  : run.data.CreateDefaultConnector(Diagram(owner), a, b, nullptr);
        c.Flags(7);
        BendPoints(c, points);
        return c;
    }
    // A data connector; an end "#n" is the source or sink of number n; a
    // loop ("Type" 1 or 2) when given.
    template <class Run>
    static DvnfEntity& Data(Run& run, DvnfEntity& owner, std::string from, std::string to, const Points& points = {},
                            const Maps& maps = {}, const std::string& oid = "", long loop = 0) {
        const bool fromNode = from[0] == '#', toNode = to[0] == '#';
        DvnfEntity& c = loop ? run.data.CreateDataConnectorWithOID(Diagram(owner), DvnfString(from), loop == 1,
                                                                   DvnfString(oid.c_str()))
                             : run.data.CreateDataConnectorWithOID(Diagram(owner), DvnfString(from.substr(fromNode)),
                                                                   fromNode, DvnfString(to.substr(toNode)), toNode,
                                                                   DvnfString(oid.c_str()));
        c.Flags(7);
        BendPoints(c, points);
        for (const auto& [f, t] : maps) {
            DvnfAttributeData mapping = c.AttributeData()("Mappings").NewSetElement();
            mapping("From") = f;
            mapping("To") = t;
        }
        return c;
    }
    static void BendPoints(DvnfEntity& connector, const Points& points) {
        for (const auto& [x, y] : points) {
            DvnfAttributeData point = connector.AttributeData()("BendPoints").NewSetElement();
            point("Xpos") = x;
            point("Ypos") = y;
        }
    }
    // Each data connector by its ends (activity names, S<n> a source, K<n> a
    // sink), direction, name, number of bend points and of mappings.
    Lines DataConnectors() {
        return Sorted(
            "SELECT COALESCE(fa.NAME, 'S' || CAST(so.SOURCE_NUMBER AS VARCHAR(9))), COALESCE(ta.NAME, 'K' || "
            "CAST(si.SINK_NUMBER AS VARCHAR(9))), c.DIRECTION, c.NAME, (SELECT COUNT(*) FROM DVBT.DATA_BENDPOINT b "
            "WHERE b.DCID = c.DCID), (SELECT COUNT(*) FROM DVBT.DATA_MAP m WHERE m.DCID = c.DCID) FROM "
            "DVBT.DATA_CONNECTOR c LEFT JOIN DVBT.ACTIVITY fa ON fa.AID = c.FROM_ACTIVITY LEFT JOIN DVBT.ACTIVITY ta "
            "ON ta.AID = c.TO_ACTIVITY LEFT JOIN DVBT.SOURCE so ON so.SOURCE_ID = c.FROM_SOURCE LEFT JOIN DVBT.SINK "
            "si ON si.SINK_ID = c.TO_SINK");
    }
    Lines ControlBendPoints() {
        return Rows("SELECT f.NAME, t.NAME, b.SEQUENCENO, b.XPOS, b.YPOS FROM DVBT.CONTROL_BENDPOINT b JOIN "
                    "DVBT.ACTIVITY f ON f.AID = b.FROM_ACTIVITY JOIN DVBT.ACTIVITY t ON t.AID = b.TO_ACTIVITY ORDER BY "
                    "f.NAME, t.NAME, b.SEQUENCENO");
    }
};

// ------------------------------------------------------------------ imports

TEST_P(FlowStore, AnImportStoresSourcesSinksAndConnectorsAndAReplacementLeavesTheSameRows) {
    const char* tables[] = {"SOURCE", "SINK", "CONTROL_CONNECTOR", "CONTROL_BENDPOINT", "DATA_CONNECTOR",
                            "DATA_BENDPOINT", "DATA_MAP", "TEXT_ANNOTATION"};
    auto counts = [&] {
        Lines out;
        for (const char* t : tables) out.push_back(std::string(t) + "|" + Count(t));
        return out;
    };
    Lines first;
    for (int round = 0; round < 2; ++round) {
        ImportRun run(true);
        Read(run, "flow.trx");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
        EXPECT_EQ(run.Messages(), (Lines{"51010|Flow", "51015|A", "51015|B", "51016|3", "51080|3x", "51017|4",
                                         "51011|Flow", round ? "51046|Flow" : "51014|Flow"}));
        if (round == 0) first = counts();
    }
    EXPECT_EQ(counts(), first);
    const std::string pid = Value("SELECT PID FROM DVBT.PROCESS");
    EXPECT_EQ(Value("SELECT COUNT(*) FROM DVBT.DATA_CONNECTOR WHERE PID = '" + pid + "'"), "6");

    EXPECT_EQ(Rows("SELECT SOURCE_NUMBER, PID, BLOCK_AID, XPOS, YPOS, WIDTH FROM DVBT.SOURCE"),
              (Lines{"3|" + pid + "|-|10|20|-"}));
    EXPECT_EQ(Rows("SELECT SINK_NUMBER, XPOS, WIDTH FROM DVBT.SINK"), (Lines{"4|-|30"}));
    EXPECT_EQ(Sorted("SELECT f.NAME, t.NAME, c.TYPE, LENGTH(c.TRANSITION_COND), SUBSTR(c.TRANSITION_COND, 4096), "
                     "c.COND_XPOS, c.COND_YPOS, c.NAME, LENGTH(c.DESCRIPTION), c.INSIDE_BLOCK FROM "
                     "DVBT.CONTROL_CONNECTOR c JOIN DVBT.ACTIVITY f ON f.AID = c.FROM_ACTIVITY JOIN DVBT.ACTIVITY t "
                     "ON t.AID = c.TO_ACTIVITY"),
              (Lines{"A|B|1|4097|cd|5|6|go on|254|-", "B|A|2|-|-|-|-|-|-|-"}));
    EXPECT_EQ(ControlBendPoints(), (Lines{"A|B|1|1|2", "A|B|2|3|4", "A|B|3|5|6"}));
    EXPECT_EQ(DataConnectors(), (Lines{"A|A|1|-|0|0", "A|A|2|-|0|0", "A|B|0|-|0|0",
                                       "B|K4|0|-|0|0", "S3|A|0|in|2|5", "S3|K4|0|-|0|0"}));
    EXPECT_EQ(Sorted("SELECT FROM_MEMBER, TO_MEMBER FROM DVBT.DATA_MAP"),
              (Lines{"100%|z", "1000|z", "aXb|y", "a_b|y", "it's|x"}));

    ImportRun run(true);
    run.Delete("Process", "Flow");
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 0);
    for (const char* t : tables) EXPECT_EQ(Count(t), "0") << t;
}

TEST_P(FlowStore, ConnectorsWithoutTheirEndsAreRefusedOrPassedOverWhenDeleted) {
    ImportRun run(true);
    DvnfEntity& flow = run.Add("Process", "Flow");
    Act(run, flow, "A");
    // Gone is deleted and so are the connectors to it: their ends are not
    // looked for. Ghost and source 9 take no part in the save: no row.
    Act(run, flow, "Gone").State(DvnfObject::StateDeleted);
    Act(run, flow, "Ghost").State(DvnfObject::StateNone);
    Node(run, flow, false, "9").State(DvnfObject::StateNone);
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
    EXPECT_EQ(Rows("SELECT NAME FROM DVBT.ACTIVITY"), (Lines{"A"}));
    EXPECT_EQ(Count("CONTROL_CONNECTOR"), "1");
    EXPECT_EQ(Count("DATA_CONNECTOR"), "0");
}

// ------------------------------------------------------------------ the editor

TEST_P(FlowStore, TheEditorRewritesBendPointsAndACompleteDataConnectorStartsClean) {
    Imported("editor-flow.trx");
    auto key = [&](const char* from) {
        return Value("SELECT DCID FROM DVBT.DATA_CONNECTOR WHERE FROM_ACTIVITY = '" + Aid(from) + "'");
    };
    const std::string abKey = key("A"), baKey = key("B");
    BackEndRun run(true);
    DvnfEntity& flow = Loaded(run, Pid("Flow"), "Flow");
    Act(run, flow, "A", 5, Aid("A")).State(DvnfObject::StateUnchanged);
    Act(run, flow, "B", 5, Aid("B")).State(DvnfObject::StateUnchanged);
    Control(run, flow, "A", "B", true, {{7, 7}, {8, 8}}).State(DvnfObject::StateChanged);
    // Complete (bit 0): deleted and added anew, without the old bend points
    // and mappings.
    DvnfEntity& ab = Data(run, flow, "A", "B", {{9, 9}}, {{"c", "d"}, {"x", "y"}}, abKey);
    ab.State(DvnfObject::StateChanged);
    ab.AttributeData()("Name") = "rewritten";
    // Not complete: edited, its bend points rewritten, its mappings kept;
    // without "Type" its direction stays.
    DvnfEntity& ba = Data(run, flow, "B", "A", {{5, 5}}, {}, baKey);
    ba.State(DvnfObject::StateChanged);
    ba.Flags(0);
    ba.AttributeData().Reset("Type");
    EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
    EXPECT_EQ(run.Messages(), (Lines{"51046|Flow"}));
    EXPECT_EQ(Rows("SELECT NAME, CHECKED_OUT FROM DVBT.PROCESS"), (Lines{"Flow|3"}));
    EXPECT_EQ(ControlBendPoints(), (Lines{"A|B|1|7|7", "A|B|2|8|8"}));
    EXPECT_EQ(DataConnectors(), (Lines{"A|B|0|rewritten|1|2", "B|A|0|-|1|1"}));
    EXPECT_EQ(Sorted("SELECT c.NAME, m.FROM_MEMBER, m.TO_MEMBER FROM DVBT.DATA_MAP m JOIN DVBT.DATA_CONNECTOR c ON "
                     "c.DCID = m.DCID"),
              (Lines{"-|e|f", "rewritten|c|d", "rewritten|x|y"}));
    EXPECT_EQ(Sorted("SELECT DCID, SEQUENCENO, XPOS FROM DVBT.DATA_BENDPOINT"),
              (Lines{abKey + "|1|9", baKey + "|1|5"}));
}

TEST_P(FlowStore, ADeletedSinkOrSourceTakesItsDataConnectorsWithTheirBendPointsAndMappings) {
    Imported("editor-ends.trx");
    // An editor save of the process as loaded, one of its ends deleted.
    auto save = [&](bool sink) {
        BackEndRun run(true);
        DvnfEntity& flow = Loaded(run, Pid("Flow"), "Flow");
        Act(run, flow, "A", 5, Aid("A")).State(DvnfObject::StateUnchanged);
        for (const auto& id : Rows("SELECT SOURCE_ID FROM DVBT.SOURCE"))
            Node(run, flow, false, "1", id).State(sink ? 3 : 1);
        for (const auto& id : Rows("SELECT SINK_ID FROM DVBT.SINK"))
            Node(run, flow, true, "2", id).State(sink ? 1 : 3);
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, true), 0);
        return run.Messages();
    };
    EXPECT_EQ(save(true), (Lines{"51179|2", "51046|Flow"}));
    EXPECT_EQ(DataConnectors(), (Lines{"S1|A|0|-|1|1"}));
    EXPECT_EQ(save(false), (Lines{"51178|1", "51046|Flow"}));
    for (const char* table : {"SOURCE", "SINK", "DATA_CONNECTOR", "DATA_BENDPOINT", "DATA_MAP"})
        EXPECT_EQ(Count(table), "0") << table;
}

// ------------------------------------------------------------------ text annotations

TEST_P(FlowStore, TextAnnotationsAreStoredWithTheirDiagramAndRewrittenWithIt) {
    {
        ImportRun run(true);
        Read(run, "annotations.trx");
        EXPECT_EQ(run.be.SaveProcesses(Db(), true, false), 8);
        const Lines messages = run.Messages();
        ASSERT_EQ(messages.size(), 5u);
        EXPECT_EQ(messages[2].substr(0, 6), "51368|");
    }
    EXPECT_EQ(Rows("SELECT NAME, INSIDE_BLOCK, ANNOTATION_TEXT, TEXT_COLOR, BACK_COLOR, TEXT_FONT, "
                              "TEXT_FONT_SIZ, TEXT_FONT_STYLE, TEXT_FONT_DESC, XPOS, YPOS, WIDTH, HEIGHT FROM "
                              "DVBT.TEXT_ANNOTATION ORDER BY NAME"),
              (Lines{"Bare|-|-|-|-|-|-|-|-|-|-|-|-",
                     "Note|-|Bills go out on Fridays|255128000|7|Sans|12|2|sans-12|40|40|40|40"}));

    // A block's diagram has rows of its own; the process diagram replaces
    // those at the top, and those of the block stay.
    const std::string box = Aid("Box");
    BackEndRun run(true);
    DvnfEntity& flow = Loaded(run, Pid("Flow"), "Flow");
    DvnfEntity& block = Act(run, flow, "Box", 3, box);
    block.State(DvnfObject::StateUnchanged);
    DvnfAttributeData inner = Diagram(block.AttributeData()("Implementation")("AsBlock").AsEntity());
    run.data.CreateTextAnnotation(inner, DvnfString("Inside")).AttributeData()("Text") = "in the box";
    EXPECT_EQ(run.be.SaveDiagram(Db(), inner, flow, CString(box.c_str())), 0);
    run.data.CreateTextAnnotation(Diagram(flow), DvnfString("Note")).AttributeData()("Text") = "changed";
    run.data.CreateTextAnnotation(Diagram(flow), DvnfString("Bare")).State(DvnfObject::StateDeleted);
    EXPECT_EQ(run.be.SaveDiagram(Db(), Diagram(flow), flow, CString()), 0);
    EXPECT_EQ(Rows("SELECT NAME, INSIDE_BLOCK, ANNOTATION_TEXT FROM DVBT.TEXT_ANNOTATION ORDER BY NAME"),
              (Lines{"Inside|" + box + "|in the box", "Note|-|changed"}));
}

DVN_INSTANTIATE_BOTH_BACKENDS(FlowStore);

}  // namespace
