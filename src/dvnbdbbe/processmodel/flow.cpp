// Store of what connects the activities of one diagram: sources and sinks,
// control connectors with their bend points, data connectors with their bend
// points and member mappings. SaveDiagram calls these after every activity
// of the diagram has its row; their ends are looked up in the database by
// name or number, never taken from the core model's keys.
//
// All parts share one rule for the entity's state (PositionPart); a source
// and a sink are one algorithm over two tables. docs/store.md tells the
// choices made.
#include <cstdlib>
#include <iostream>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "processstore.h"
#include "storedforms.h"

using namespace processstore;

const DvnConvCoreDbBe::DiagramPart DvnConvCoreDbBe::SourcePart = {
    "SOURCE", "Source is not defined", 51312, "Source not added", 51080, nullptr, 51178, 51016, 51048};
const DvnConvCoreDbBe::DiagramPart DvnConvCoreDbBe::SinkPart = {
    "SINK", "Sink is not defined", 51313, "Sink not added", 51081, nullptr, 51179, 51017, 51049};
const DvnConvCoreDbBe::DiagramPart DvnConvCoreDbBe::ControlConnectorPart = {
    "CONTROL_CONNECTOR", "Control connector is not defined", 0, "Control Connector not added", 0,
    "Control connector not added, already exists", 51180, 0, 0};
const DvnConvCoreDbBe::DiagramPart DvnConvCoreDbBe::DataConnectorPart = {
    "DATA_CONNECTOR", "Data connector is not defined", 0, "Data Connector not added", 0,
    "Data connector not added, already exists", 51181, 0, 0};

namespace {

// The number of a source or sink: its name read as a decimal number, as
// atol reads it ("3x" is 3, a name without leading digits 0). The filters
// hold this number, never the name.
long NodeNumber(const CString& name) { return std::atol(name.c_str()); }

// "PID = 'pid'" and the block condition of a diagram's part.
CString InDiagram(const CString& pid, const char* blockColumn, const CString& blockAid) {
    CString filter = CString("PID = ") + Quoted(pid);
    filter += blockAid.IsEmpty() ? CString(" AND ") + blockColumn + " IS NULL"
                                 : CString(" AND ") + blockColumn + " = " + Quoted(blockAid);
    return filter;
}

// A text column from a value of the entity, cut to limit characters; null
// when not defined. A name is never cut (kWhole): one that does not fit
// its column is refused with the row.
constexpr size_t kWhole = std::string::npos;
void SetTextOrNull(CRecordset& row, CString& member, const DvnfAttributeDataReader& value, size_t limit) {
    const std::string text = value.IsDefined() ? DvnStored::Cut(value.AsString("").str(), limit) : std::string();
    DvnStored::SetText(row, member, text);
}

// Each element of a set, up to the first that is not valid, with its
// sequence number from 1.
template <class Visit>
void ForEachOfSet(const DvnfAttributeDataReader& set, Visit visit) {
    DvnfDataSetIterator elements = set.ElementsOfSet();
    long sequence = 0;
    for (DvnfAttributeDataReader element = elements.First(); element.IsValid(); element = elements.Next())
        visit(element, ++sequence);
}

}  // namespace

// ------------------------------------------------------------------ the shared rule

DvnConvCoreDbBe::PartRow DvnConvCoreDbBe::PositionPart(CRecordset& row, const CString& filter, DvnfEntity& part,
                                                       DvnfEntity& process, const DiagramPart& kind,
                                                       const DvnString& label, bool rewrite,
                                                       const std::function<int()>& beforeDelete, int& level) {
    // A change below an unchanged process makes it changed (editor only).
    auto promote = [&] {
        if (m_bCallerData && process.IsValid() && process.State() == StateUnchanged) process.State(StateChanged);
    };
    level = LevelOk;
    row.m_strFilter = filter;
    try {
        row.Open(CRecordset::snapshot, Table(kind.table), CRecordset::none);
    } catch (CDBException* e) {
        level = ReportDbException(e, "opening", kind.table, &row);
        return PartRow::Done;
    }
    if (!row.CanAppend()) {
        row.Close();
        if (kind.cannotAppend)
            Report(kind.cannotAppend, label);
        else
            DVN_TRACE(1, 2, kind.notAdded);
        level = LevelError;
        return PartRow::Done;
    }
    const char* action = "updating";
    try {
        if (row.IsEOF()) {
            if (part.State() == StateDeleted) {
                row.Close();
                return PartRow::Done;
            }
            row.AddNew();
            if (part.IsValid()) part.State(StateNew);
            promote();
            return PartRow::Insert;
        }
        if (!m_bCallerData) {
            if (kind.exists)
                Report(kind.exists, label);
            else
                DVN_TRACE(1, 2, kind.existsTrace);
            row.Close();
            return PartRow::Done;
        }
        if (part.State() != StateUnchanged) promote();
        row.MoveFirst();
        if (part.State() == StateDeleted) {
            if (beforeDelete) level = beforeDelete();
            if (level == LevelOk) {
                action = "deleting record in";
                row.Delete();
                Report(kind.deleted, label);
            }
            row.Close();
            return PartRow::Done;
        }
        if (part.State() == StateChanged || part.State() == StateNew) {
            if (rewrite) {
                // The row goes (the schema removes what hangs below it) and
                // a clean one takes its place.
                action = "deleting record in";
                row.Delete();
                action = "updating";
                row.AddNew();
                return PartRow::Insert;
            }
            row.Edit();
            return PartRow::Update;
        }
        row.Close();
        return PartRow::Unchanged;
    } catch (CDBException* e) {
        level = ReportDbException(e, action, kind.table, &row);
        return PartRow::Done;
    }
}

int DvnConvCoreDbBe::WritePart(CRecordset& row, DvnfEntity& part, const DiagramPart& kind, const DvnString& label) {
    try {
        row.Update();
    } catch (CDBException* e) {
        ReportDbException(e, "updating", kind.table, &row);
        if (kind.cannotAppend)
            Report(kind.cannotAppend, label);
        else
            DVN_TRACE(1, 2, kind.notAdded);
        return LevelError;
    }
    row.Close();
    const long message = part.State() == StateNew ? kind.added : kind.updated;
    if (message) Report(message, label);
    return LevelOk;
}

template <class Set>
int DvnConvCoreDbBe::AddRowOnce(CDatabase& db, const char* table, const CString& filter, const char* existsTrace,
                                const char* notAdded, const std::function<void(Set&)>& fill) {
    Set row(&db);
    row.m_strFilter = filter;
    try {
        row.Open(CRecordset::snapshot, Table(table), CRecordset::none);
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", table, &row);
    }
    if (!row.IsEOF()) {
        DVN_TRACE(1, 2, existsTrace);
        row.Close();
        return LevelOk;
    }
    if (!row.CanAppend()) {
        row.Close();
        DVN_TRACE(1, 2, notAdded);
        return LevelError;
    }
    try {
        row.AddNew();
        fill(row);
        row.Update();
    } catch (CDBException* e) {
        ReportDbException(e, "updating", table, &row);
        DVN_TRACE(1, 2, notAdded);
        return LevelError;
    }
    row.Close();
    return LevelOk;
}

int DvnConvCoreDbBe::DeleteRows(CDatabase& db, const char* table, const CString& where) {
    try {
        db.ExecuteSQL(CString("DELETE FROM ") + Table(table) + " WHERE " + where);
    } catch (CDBException* e) {
        return ReportDbException(e, "deleting in", table);
    }
    return LevelOk;
}

// ------------------------------------------------------------------ sources and sinks

template <class Set>
int DvnConvCoreDbBe::SaveSourceOrSink(CDatabase& db, DvnfEntity& node, DvnfEntity& process, const CString& blockAid,
                                      const DiagramPart& kind, const char* numberColumn, long Set::*number,
                                      CString Set::*key) {
    if (!node.IsValid()) {
        DVN_TRACE(1, 2, kind.invalidTrace);
        return LevelError;
    }
    const CString pid = process.OID().c_str();
    const DvnString name = node.Name();
    const long value = NodeNumber(CString(name.c_str()));
    Set row(&db);
    const CString filter = InDiagram(pid, "BLOCK_AID", blockAid) + " AND " + numberColumn + " = " +
                           CString(std::to_string(value).c_str());
    int level = LevelOk;
    const PartRow at = PositionPart(row, filter, node, process, kind, name, false, nullptr, level);
    if (at == PartRow::Done || at == PartRow::Unchanged) return level;
    const DvnfAttributeDataReader layout = static_cast<const DvnfEntity&>(node).AttributeData()("Layout");
    row.*key = node.OID().c_str();
    row.m_PID = pid;
    DvnStored::SetText(row, row.m_BLOCK_AID, blockAid.str());
    row.*number = value;
    SetLongOrNull(row, row.m_XPOS, layout("Xpos"));
    SetLongOrNull(row, row.m_YPOS, layout("Ypos"));
    SetLongOrNull(row, row.m_WIDTH, layout("Width"));
    SetLongOrNull(row, row.m_HEIGHT, layout("Height"));
    return WritePart(row, node, kind, name);
}

int DvnConvCoreDbBe::SaveSource(CDatabase& db, DvnfEntity& source, DvnfEntity& process, const CString& blockAid) {
    return SaveSourceOrSink<DvnSourceSet>(db, source, process, blockAid, SourcePart, "SOURCE_NUMBER",
                                          &DvnSourceSet::m_SOURCE_NUMBER, &DvnSourceSet::m_SOURCE_ID);
}

int DvnConvCoreDbBe::SaveSink(CDatabase& db, DvnfEntity& sink, DvnfEntity& process, const CString& blockAid) {
    return SaveSourceOrSink<DvnSinkSet>(db, sink, process, blockAid, SinkPart, "SINK_NUMBER",
                                        &DvnSinkSet::m_SINK_NUMBER, &DvnSinkSet::m_SINK_ID);
}

// ------------------------------------------------------------------ control connectors

CString DvnConvCoreDbBe::DiagramAID(CDatabase& db, const CString& name, const CString& pid, const CString& blockAid) {
    if (DiagramAIDs* aids = m_diagramAIDs; aids && aids->pid == pid && aids->blockAid == blockAid) {
        if (!aids->read) {
            aids->byName = DvnActNameSet(&db).AIDsByName(pid, blockAid, m_strTablePrefix);
            aids->read = true;
        }
        auto it = aids->byName.find(name.str());
        return it == aids->byName.end() ? CString() : it->second;
    }
    DvnActivitySet activities(&db);
    return activities.GetAID(Quoted(name), pid, blockAid, m_strTablePrefix);
}

int DvnConvCoreDbBe::SaveControlConnector(CDatabase& db, DvnfEntity& connector, DvnfEntity& process,
                                          const CString& blockAid) {
    const DiagramPart& kind = ControlConnectorPart;
    if (!connector.IsValid()) {
        DVN_TRACE(1, 2, kind.invalidTrace);
        return LevelError;
    }
    const CString fromName = GetLinkName(DvnfString("ControlFromActivity"), connector, DvnfString("Activity"));
    const CString toName = GetLinkName(DvnfString("ControlToActivity"), connector, DvnfString("Activity"));
    if (fromName.IsEmpty() || toName.IsEmpty()) {
        DVN_TRACE(1, 2, "no from or to Activity defined in TRX for control connecter");
        return LevelError;
    }
    const DvnString label = DvnString((fromName + " -> " + toName).c_str());
    const CString pid = process.OID().c_str();
    const CString from = DiagramAID(db, fromName, pid, blockAid);
    const CString to = DiagramAID(db, toName, pid, blockAid);
    if ((from.IsEmpty() || to.IsEmpty()) && connector.State() != StateDeleted) {
        Report(51367, label);
        DVN_TRACE(1, 2, "from or to activity of control connector not found in database");
        return LevelError;
    }

    DvnControlConnectorSet row(&db);
    const CString filter = CString("PID = ") + Quoted(pid) + " AND FROM_ACTIVITY = " + Quoted(from) +
                           " AND TO_ACTIVITY = " + Quoted(to);
    int level = LevelOk;
    const PartRow at = PositionPart(row, filter, connector, process, kind, label, false,
                                    [&] { return DeleteControlBendPoint(db, pid, from, to); }, level);
    if (at == PartRow::Done || at == PartRow::Unchanged) return level;

    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(connector).AttributeData();
    row.m_PID = pid;
    row.m_FROM_ACTIVITY = from;
    row.m_TO_ACTIVITY = to;
    DvnStored::SetText(row, row.m_INSIDE_BLOCK, blockAid.str());
    // A condition only on a connector of type 1; a rewritten connector
    // keeps nothing the entity no longer has.
    const long type = attributes("ConnectorSpec").AsLong(0);
    if (type == 1 || type == 2) row.m_TYPE = type;
    SetTextOrNull(row, row.m_TRANSITION_COND, type == 1 ? attributes("Condition") : DvnfAttributeDataReader(),
                  DvnStored::LongTextChars);
    SetTextOrNull(row, row.m_NAME, attributes("Name"), kWhole);
    const DvnfAttributeDataReader position = attributes("ConditionPos");
    SetLongOrNull(row, row.m_COND_XPOS, position.IsDefined() ? position("Xpos") : DvnfAttributeDataReader());
    SetLongOrNull(row, row.m_COND_YPOS, position.IsDefined() ? position("Ypos") : DvnfAttributeDataReader());
    SetTextOrNull(row, row.m_DESCRIPTION, attributes("Description"), DvnStored::DescriptionChars);
    level = WritePart(row, connector, kind, label);
    if (level >= LevelError) return level;

    // The bend points are rewritten as a whole, numbered from 1.
    if (connector.State() != StateNew) level = DeleteControlBendPoint(db, pid, from, to);
    ForEachOfSet(attributes("BendPoints"), [&](const DvnfAttributeDataReader& point, long sequence) {
        level = std::max(level, SaveControlBendPoint(db, point, pid, from, to, sequence));
    });
    return level;
}

int DvnConvCoreDbBe::SaveControlBendPoint(CDatabase& db, const DvnfAttributeDataReader& point, const CString& pid,
                                          const CString& from, const CString& to, long sequence) {
    const CString filter = CString("PID = ") + Quoted(pid) + " AND FROM_ACTIVITY = " + Quoted(from) +
                           " AND TO_ACTIVITY = " + Quoted(to) + " AND SEQUENCENO = " +
                           CString(std::to_string(sequence).c_str());
    return AddRowOnce<DvnControlBendpointSet>(db, "CONTROL_BENDPOINT", filter,
                                              "Control bendpoint not added, already exists",
                                              "Control Bendpoint not added", [&](DvnControlBendpointSet& row) {
                                                  row.m_PID = pid;
                                                  row.m_FROM_ACTIVITY = from;
                                                  row.m_TO_ACTIVITY = to;
                                                  row.m_SEQUENCENO = sequence;
                                                  row.m_XPOS = point("Xpos").AsLong(0);
                                                  row.m_YPOS = point("Ypos").AsLong(0);
                                              });
}

int DvnConvCoreDbBe::DeleteControlBendPoint(CDatabase& db, const CString& pid, const CString& from,
                                            const CString& to) {
    return DeleteRows(db, "CONTROL_BENDPOINT",
                      CString("PID = ") + Quoted(pid) + " AND FROM_ACTIVITY = " + Quoted(from) +
                          " AND TO_ACTIVITY = " + Quoted(to));
}

// ------------------------------------------------------------------ data connectors

int DvnConvCoreDbBe::SaveDataConnector(CDatabase& db, DvnfEntity& connector, DvnfEntity& process,
                                       const CString& blockAid) {
    const DiagramPart& kind = DataConnectorPart;
    if (!connector.IsValid()) {
        DVN_TRACE(1, 2, kind.invalidTrace);
        return LevelError;
    }
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(connector).AttributeData();
    const long type = attributes("Type").AsLong(0);
    const long direction = type == 1 || type == 2 ? type : 0;

    // The four ends, by name; then their keys, in this order.
    struct End {
        const char* link;
        const char* targetType;
        const char* notFound;
        CString name;
        CString key;
    } ends[] = {
        {"DataFromSource", "Source", "from source of data connector not found in database", {}, {}},
        {"DataToSink", "Sink", "to sink of data connector not found in database", {}, {}},
        {"DataFromActivity", "Activity", "from activity of data connector not found in database", {}, {}},
        {"DataToActivity", "Activity", "to activity of data connector not found in database", {}, {}},
    };
    End& source = ends[0];
    End& sink = ends[1];
    End& fromActivity = ends[2];
    End& toActivity = ends[3];
    for (End& end : ends) end.name = GetLinkName(DvnfString(end.link), connector, DvnfString(end.targetType));
    if (source.name.IsEmpty() && sink.name.IsEmpty() && fromActivity.name.IsEmpty() && toActivity.name.IsEmpty()) {
        DVN_TRACE(1, 2, "no from or to Activity defined in TRX for data connecter");
        return LevelError;
    }
    const CString from = source.name.IsEmpty() ? fromActivity.name : "Source " + source.name;
    const CString to = sink.name.IsEmpty() ? toActivity.name : "Sink " + sink.name;
    const DvnString label = DvnString((from + " -> " + to).c_str());

    const CString pid = process.OID().c_str();
    for (End& end : ends) {
        if (end.name.IsEmpty()) continue;
        if (&end == &source) {
            DvnSourceSet sources(&db);
            end.key = sources.GetSourceID(NodeNumber(end.name), pid, blockAid, m_strTablePrefix);
        } else if (&end == &sink) {
            DvnSinkSet sinks(&db);
            end.key = sinks.GetSinkID(NodeNumber(end.name), pid, blockAid, m_strTablePrefix);
        } else {
            end.key = DiagramAID(db, end.name, pid, blockAid);
        }
        if (end.key.IsEmpty() && connector.State() != StateDeleted) {
            Report(51367, label);
            DVN_TRACE(1, 2, end.notFound);
            return LevelError;
        }
    }

    // The filter by the connector's shape; a loop on one activity differs
    // from its twin only by direction.
    CString filter = CString("PID = ") + Quoted(pid);
    const bool fromSource = !source.name.IsEmpty() && fromActivity.name.IsEmpty();
    const bool fromAct = source.name.IsEmpty() && !fromActivity.name.IsEmpty();
    const bool toSink = !sink.name.IsEmpty() && toActivity.name.IsEmpty();
    const bool toAct = sink.name.IsEmpty() && !toActivity.name.IsEmpty();
    if (fromSource && toSink) {
        filter += " AND FROM_SOURCE = " + Quoted(source.key) + " AND TO_SINK = " + Quoted(sink.key);
    } else if (fromAct && toAct) {
        filter += " AND FROM_ACTIVITY = " + Quoted(fromActivity.key) + " AND TO_ACTIVITY = " + Quoted(toActivity.key);
        if (fromActivity.name == toActivity.name)
            filter += CString(" AND DIRECTION = ") + CString(std::to_string(direction).c_str());
    } else if (fromAct && toSink) {
        filter += " AND FROM_ACTIVITY = " + Quoted(fromActivity.key) + " AND TO_SINK = " + Quoted(sink.key);
    } else if (fromSource && toAct) {
        filter += " AND FROM_SOURCE = " + Quoted(source.key) + " AND TO_ACTIVITY = " + Quoted(toActivity.key);
    } else {
        DVN_TRACE(1, 2, "no from ot to Activity defined in TRX for data connecter");
        return LevelError;
    }

    // With the attributes complete, a found row is deleted and added anew,
    // so that it starts without its old bend points and mappings.
    DvnDataConnectorSet row(&db);
    const bool complete = connector.IsAttributeDataAttrComplete();
    int level = LevelOk;
    const PartRow at = PositionPart(row, filter, connector, process, kind, label, complete, nullptr, level);
    if (at == PartRow::Done || at == PartRow::Unchanged) return level;
    // An edited row keeps its key: its bend points and mappings hang on it.
    const CString dcid = at == PartRow::Update ? row.m_DCID : CString(connector.OID().c_str());
    row.m_DCID = dcid;
    row.m_PID = pid;
    DvnStored::SetText(row, row.m_INSIDE_BLOCK, blockAid.str());
    DvnStored::SetText(row, row.m_FROM_ACTIVITY, fromActivity.key.str());
    DvnStored::SetText(row, row.m_TO_ACTIVITY, toActivity.key.str());
    DvnStored::SetText(row, row.m_FROM_SOURCE, source.key.str());
    DvnStored::SetText(row, row.m_TO_SINK, sink.key.str());
    if (attributes("Type").IsDefined()) row.m_DIRECTION = direction;
    SetTextOrNull(row, row.m_NAME, attributes("Name"), kWhole);
    SetTextOrNull(row, row.m_DESCRIPTION, attributes("Description"), DvnStored::DescriptionChars);
    level = WritePart(row, connector, kind, label);
    if (level >= LevelError) return level;

    if (connector.State() != StateNew && !complete) level = DeleteDataBendPoint(db, dcid);
    ForEachOfSet(attributes("BendPoints"), [&](const DvnfAttributeDataReader& point, long sequence) {
        level = std::max(level, SaveDataBendPoint(db, point, dcid, sequence));
    });
    if (complete)
        ForEachOfSet(attributes("Mappings"), [&](const DvnfAttributeDataReader& mapping, long) {
            level = std::max(level, SaveDataMap(db, mapping, dcid));
        });
    return level;
}

int DvnConvCoreDbBe::SaveDataBendPoint(CDatabase& db, const DvnfAttributeDataReader& point, const CString& dcid,
                                       long sequence) {
    const CString filter =
        CString("DCID = ") + Quoted(dcid) + " AND SEQUENCENO = " + CString(std::to_string(sequence).c_str());
    return AddRowOnce<DvnDataBendpointSet>(db, "DATA_BENDPOINT", filter, "Data bendpoint not added, already exists",
                                           "Data Bendpoint not added", [&](DvnDataBendpointSet& row) {
                                               row.m_DCID = dcid;
                                               row.m_SEQUENCENO = sequence;
                                               row.m_XPOS = point("Xpos").AsLong(0);
                                               row.m_YPOS = point("Ypos").AsLong(0);
                                           });
}

int DvnConvCoreDbBe::DeleteDataBendPoint(CDatabase& db, const CString& dcid) {
    return DeleteRows(db, "DATA_BENDPOINT", CString("DCID = ") + Quoted(dcid));
}

// Members are compared with "=": a name holding "%" or "_" matches only
// itself (docs/schema.md, "Text from a file in a filter").
int DvnConvCoreDbBe::SaveDataMap(CDatabase& db, const DvnfAttributeDataReader& mapping, const CString& dcid) {
    const std::string from = mapping("From").AsString("").str();
    const std::string to = mapping("To").AsString("").str();
    const CString filter = CString("DCID = ") + Quoted(dcid) + " AND FROM_MEMBER = " + Quoted(DvnString(from)) +
                           " AND TO_MEMBER = " + Quoted(DvnString(to));
    return AddRowOnce<DvnDataMapSet>(db, "DATA_MAP", filter, "Data mapping not added, already exists",
                                     "Data Mapping not added", [&](DvnDataMapSet& row) {
                                         row.m_DCID = dcid;
                                         DvnStored::SetText(row, row.m_FROM_MEMBER, from);
                                         DvnStored::SetText(row, row.m_TO_MEMBER, to);
                                     });
}

int DvnConvCoreDbBe::DeleteDataMap(CDatabase& db, const CString& dcid) {
    return DeleteRows(db, "DATA_MAP", CString("DCID = ") + Quoted(dcid));
}
