// Load of what stands beside the activities of a diagram: sources and sinks
// (SOURCE, SINK), control connectors (CONTROL_CONNECTOR, CONTROL_BENDPOINT)
// and data connectors (DATA_CONNECTOR, DATA_BENDPOINT, DATA_MAP).
//
// The tables hold keys, the core model makes connectors between names: the
// ends are found among the activities, sources and sinks that the diagram
// holds already (read before the connectors), and the bend points of a
// diagram come from one read, so that no end and no bend point costs a
// statement of its own.
#include <map>
#include <tuple>

#include "dvnprocsets.h"
#include "processload.h"

using namespace processload;

namespace {

// The names of the elements of one set of the diagram, by key.
std::map<std::string, std::string> NamesByKey(DvnfAttributeData& diagram, const char* set) {
    std::map<std::string, std::string> names;
    DvnfDataSetIterator elements = diagram(set).ElementsOfSet();
    for (DvnfAttributeDataReader e = elements.First(); e.IsValid(); e = elements.Next()) {
        const DvnfEntity& entity = e.AsEntity();
        if (entity.IsValid()) names[entity.OID().str()] = entity.Name().str();
    }
    return names;
}

std::string NameOf(const std::map<std::string, std::string>& names, const CRecordset& row, const CString& key) {
    if (row.IsFieldNull(&key)) return std::string();
    const auto it = names.find(key.str());
    return it == names.end() ? std::string() : it->second;
}

using Points = std::map<std::string, std::vector<std::pair<long, long>>>;

void AddBendPoints(DvnfEntity& connector, const Points& points, const std::string& key) {
    DvnfAttributeData set = connector.AttributeData()("BendPoints");
    set.Reset();
    const auto it = points.find(key);
    if (it == points.end()) return;
    for (const auto& [x, y] : it->second) {
        DvnfAttributeData point = set.NewSetElement();
        point("Xpos") = x;
        point("Ypos") = y;
    }
}

// A source or sink: its number, key and layout.
struct EndRow {
    long number;
    std::string key;
    std::optional<long> x, y, height, width;
    bool operator<(const EndRow& other) const { return std::tie(number, key) < std::tie(other.number, other.key); }
};

struct Control {
    std::string from, to;  // names of the ends
    std::string fromKey, toKey;
    long type;
    std::optional<std::string> condition, name, description;
    std::optional<long> x, y;
    auto Order() const { return std::tie(from, to, type, name, description, condition); }
};

struct Data {
    std::string from, to;
    bool fromIsNode, toIsNode;
    std::string dcid;
    std::optional<long> direction;
    std::optional<std::string> name, description;
    auto Order() const { return std::tie(from, fromIsNode, to, toIsNode, direction, name, description); }
};

}  // namespace

// ------------------------------------------------------------------ sources and sinks

void DvnConvCoreDbFe::GetSourceAndSink(CString const& pid, CString const& blockId, DvnfEntity* parent,
                                       DvnfAttributeData& diagram) {
    auto make = [&](std::vector<EndRow>& nodes, bool sink) {
        std::sort(nodes.begin(), nodes.end());
        for (const EndRow& node : nodes) {
            DvnfEntity& entity = sink ? m_pCoreData->CreateSinkByOID(diagram, DvnfString(node.key))
                                      : m_pCoreData->CreateSourceByOID(diagram, DvnfString(node.key));
            if (entity.IsValid()) entity.Name(DvnfString(DvnString::FromLong(node.number, 0).str()));
            DvnfAttributeData layout = entity.AttributeData()("Layout");
            Put(node.x, layout("Xpos"));
            Put(node.y, layout("Ypos"));
            Put(node.height, layout("Height"));
            Put(node.width, layout("Width"));
            TakeParentState(entity, *parent);
        }
    };
    const CString where = CString(" WHERE [PID] =") + Literal(DvnString(pid.c_str())) + InBlock("BLOCK_AID", blockId);
    std::vector<EndRow> sinks, sources;
    DvnSinkSet sinkRows(m_pDatabase);
    ReadRows(sinkRows, CString("SELECT * FROM ") + Table("SINK") + where, [&](DvnSinkSet& row) {
        sinks.push_back({row.m_SINK_NUMBER, row.m_SINK_ID.str(), Value(row, row.m_XPOS), Value(row, row.m_YPOS),
                         Value(row, row.m_HEIGHT), Value(row, row.m_WIDTH)});
    });
    make(sinks, true);
    DvnSourceSet sourceRows(m_pDatabase);
    ReadRows(sourceRows, CString("SELECT * FROM ") + Table("SOURCE") + where, [&](DvnSourceSet& row) {
        sources.push_back({row.m_SOURCE_NUMBER, row.m_SOURCE_ID.str(), Value(row, row.m_XPOS), Value(row, row.m_YPOS),
                           Value(row, row.m_HEIGHT), Value(row, row.m_WIDTH)});
    });
    make(sources, false);
}

// ------------------------------------------------------------------ control connectors

void DvnConvCoreDbFe::GetControlFlow(CString const& pid, CString const& blockId, DvnfEntity* parent,
                                     DvnfAttributeData& diagram) {
    const DvnString process(pid.c_str());
    const std::map<std::string, std::string> activities = NamesByKey(diagram, "Activities");
    std::vector<Control> connectors;
    DvnControlConnectorSet rs(m_pDatabase);
    rs.m_strFilter = CString("PID = ") + Literal(process) + InBlock("INSIDE_BLOCK", blockId);
    ReadRows(rs, Table("CONTROL_CONNECTOR"), [&](DvnControlConnectorSet& row) {
        Control c{NameOf(activities, row, row.m_FROM_ACTIVITY),
                  NameOf(activities, row, row.m_TO_ACTIVITY),
                  row.m_FROM_ACTIVITY.str(),
                  row.m_TO_ACTIVITY.str(),
                  row.IsFieldNull(&row.m_TYPE) ? 0 : row.m_TYPE,
                  Value(row, row.m_TRANSITION_COND),
                  Value(row, row.m_NAME),
                  Value(row, row.m_DESCRIPTION),
                  Value(row, row.m_COND_XPOS),
                  Value(row, row.m_COND_YPOS)};
        // An end that is gone, or in another diagram: the row does not load.
        if (c.from.empty() || c.to.empty()) return;
        connectors.push_back(std::move(c));
    });
    if (connectors.empty()) return;
    std::sort(connectors.begin(), connectors.end(),
              [](const Control& a, const Control& b) { return a.Order() < b.Order(); });

    // The bend points of every connector of the diagram, in one read.
    Points points;
    DvnControlBendpointSet bends(m_pDatabase);
    bends.m_strFilter = CString("PID = ") + Literal(process) + " AND FROM_ACTIVITY IN (SELECT AID FROM " +
                        Table("ACTIVITY") + " WHERE PID = " + Literal(process) + InBlock("INSIDE_BLOCK", blockId) +
                        ")";
    bends.m_strSort = "SEQUENCENO";
    ReadRows(bends, Table("CONTROL_BENDPOINT"), [&](DvnControlBendpointSet& row) {
        points[row.m_FROM_ACTIVITY.str() + '\n' + row.m_TO_ACTIVITY.str()].emplace_back(row.m_XPOS, row.m_YPOS);
    });

    for (const Control& c : connectors) {
        const DvnfString from(c.from), to(c.to);
        DvnfEntity& connector = c.type == 1 ? m_pCoreData->CreateControlConnector(diagram, from, to, nullptr)
                                            : m_pCoreData->CreateDefaultConnector(diagram, from, to, nullptr);
        TakeParentState(connector, *parent);
        DvnfAttributeData attributes = connector.AttributeData();
        Put(c.name, attributes("Name"));
        Put(c.description, attributes("Description"));
        if (c.type == 1 && c.condition) {
            attributes("Condition") = c.condition->c_str();
            PutPair(c.x, c.y, attributes("ConditionPos"));
        }
        AddBendPoints(connector, points, c.fromKey + '\n' + c.toKey);
    }
}

// ------------------------------------------------------------------ data connectors

void DvnConvCoreDbFe::GetDataFlow(CString const& pid, CString const& blockId, DvnfEntity* parent,
                                  DvnfAttributeData& diagram, bool withMappings) {
    const DvnString process(pid.c_str());
    const std::map<std::string, std::string> activities = NamesByKey(diagram, "Activities");
    const std::map<std::string, std::string> sources = NamesByKey(diagram, "Sources");
    const std::map<std::string, std::string> sinks = NamesByKey(diagram, "Sinks");
    const CString inDiagram = CString("PID = ") + Literal(process) + InBlock("INSIDE_BLOCK", blockId);
    std::vector<Data> connectors;
    DvnDataConnectorSet rs(m_pDatabase);
    rs.m_strFilter = inDiagram;
    ReadRows(rs, Table("DATA_CONNECTOR"), [&](DvnDataConnectorSet& row) {
        const bool fromIsNode = row.IsFieldNull(&row.m_FROM_ACTIVITY);
        const bool toIsNode = row.IsFieldNull(&row.m_TO_ACTIVITY);
        Data d{fromIsNode ? NameOf(sources, row, row.m_FROM_SOURCE) : NameOf(activities, row, row.m_FROM_ACTIVITY),
               toIsNode ? NameOf(sinks, row, row.m_TO_SINK) : NameOf(activities, row, row.m_TO_ACTIVITY),
               fromIsNode,
               toIsNode,
               row.m_DCID.str(),
               Value(row, row.m_DIRECTION),
               Value(row, row.m_NAME),
               Value(row, row.m_DESCRIPTION)};
        if (d.from.empty() || d.to.empty()) return;
        connectors.push_back(std::move(d));
    });
    if (connectors.empty()) return;
    std::sort(connectors.begin(), connectors.end(), [](const Data& a, const Data& b) { return a.Order() < b.Order(); });

    Points points;
    DvnDataBendpointSet bends(m_pDatabase);
    bends.m_strFilter = CString("DCID IN (SELECT DCID FROM ") + Table("DATA_CONNECTOR") + " WHERE " + inDiagram + ")";
    bends.m_strSort = "SEQUENCENO";
    ReadRows(bends, Table("DATA_BENDPOINT"),
             [&](DvnDataBendpointSet& row) { points[row.m_DCID.str()].emplace_back(row.m_XPOS, row.m_YPOS); });

    for (const Data& d : connectors) {
        const DvnfString key(d.dcid);
        DvnfEntity* connector;
        if (!d.fromIsNode && !d.toIsNode && d.from == d.to) {
            // A loop on one activity: the direction says which.
            connector = &m_pCoreData->CreateDataConnectorWithOID(diagram, DvnfString(d.from),
                                                                 d.direction && *d.direction == 1, key);
        } else {
            connector = &m_pCoreData->CreateDataConnectorWithOID(diagram, DvnfString(d.from), d.fromIsNode,
                                                                 DvnfString(d.to), d.toIsNode, key);
        }
        TakeParentState(*connector, *parent);
        DvnfAttributeData attributes = connector->AttributeData();
        Put(d.name, attributes("Name"));
        Put(d.description, attributes("Description"));
        AddBendPoints(*connector, points, d.dcid);
        if (withMappings) {
            DataMapping(connector, CString(d.dcid.c_str()));
            connector->SetFlags(DvnfEntity::FlagAttributesComplete);
        }
    }
}

int DvnConvCoreDbFe::DataMapping(DvnfEntity* connector, CString const& dcid) {
    DvnfAttributeData mappings = connector->AttributeData()("Mappings");
    mappings.Reset();
    std::vector<std::pair<std::string, std::string>> pairs;
    DvnDataMapSet rs(m_pDatabase);
    try {
        ReadRows(rs, SelectFrom("DATA_MAP", "DCID", dcid),
                 [&](DvnDataMapSet& row) { pairs.emplace_back(row.m_FROM_MEMBER.str(), row.m_TO_MEMBER.str()); });
    } catch (CDBException* e) {
        return ReportDbException("Exception In DataMapping: rc =", e);
    }
    std::sort(pairs.begin(), pairs.end());
    for (const auto& [from, to] : pairs) {
        DvnfAttributeData mapping = mappings.NewSetElement();
        mapping("From") = from.c_str();
        mapping("To") = to.c_str();
    }
    return LevelOk;
}
