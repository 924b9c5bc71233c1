// The factories of diagram objects, full names, and the process cleaner.
#include "attrnode.h"

#include <set>

DvnfTRXData::DvnfTRXData(DvnfCoreTypes& types, DvnfMessageHandler* handler) : DvnfCoreData(types, handler) {}

DvnfTRXData::~DvnfTRXData() = default;

namespace {
// The entity of that name among the entity elements of a set.
DvnfEntity& FindElement(const DvnfAttributeDataReader& set, const DvnfString& name) {
    DvnfDataSetIterator it = set.ElementsOfSet();
    for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next()) {
        DvnfEntity& x = e.AsEntity();
        if (x.IsValid() && x.Name() == name) return x;
    }
    return DvnfEntity::undefined;
}

DvnfString KeyOrFresh(const char* oid) { return (oid && *oid) ? DvnfString(oid) : DvnfObject::CreateOID(); }

// Appends the entity to the set unless it is an element already (a diagram
// that is read a second time keeps each object once).
void AppendOnce(DvnfAttributeData set, DvnfEntity& e) {
    DvnfDataSetIterator it = set.ElementsOfSet();
    for (DvnfAttributeDataReader x = it.First(); x.IsValid(); x = it.Next())
        if (&x.AsEntity() == &e) return;
    set.NewSetElement(e);
}
}  // namespace

DvnfEntity& DvnfTRXData::MakeActivity(DvnfAttributeData& diagram, const DvnfString& oid, long kind,
                                      const char* asName, const char* implType) {
    DvnfEntity& act = CreateEntity("Activity", oid, DvnfString(""));
    DvnfAttributeData implementation = act.AttributeData()("Implementation");
    implementation("Type") = kind;
    if (asName && implementation(asName).AsEntity().Type().Name() != implType) {
        DvnfEntity& impl = CreateEntity(implType, DvnfString(), DvnfString(""));
        implementation(asName) = impl;
    }
    AppendOnce(diagram("Activities"), act);
    return act;
}

DvnfEntity& DvnfTRXData::CreateProgramActivityByOID(DvnfAttributeData diagram, const DvnfString& oid) {
    return MakeActivity(diagram, oid, 1, "AsProgram", DvnfNames::ProgramImplementation);
}
DvnfEntity& DvnfTRXData::CreateProcessActivityByOID(DvnfAttributeData diagram, const DvnfString& oid) {
    return MakeActivity(diagram, oid, 2, "AsProcess", DvnfNames::ProcessImplementation);
}
DvnfEntity& DvnfTRXData::CreateBlockActivityByOID(DvnfAttributeData diagram, const DvnfString& oid) {
    return MakeActivity(diagram, oid, 3, "AsBlock", DvnfNames::BlockImplementation);
}
DvnfEntity& DvnfTRXData::CreateBundleActivityByOID(DvnfAttributeData diagram, const DvnfString& oid) {
    return MakeActivity(diagram, oid, 4, "AsBundle", DvnfNames::BundleImplementation);
}
DvnfEntity& DvnfTRXData::CreateInfoActivityByOID(DvnfAttributeData diagram, const DvnfString& oid) {
    return MakeActivity(diagram, oid, 5, nullptr, nullptr);
}

DvnfEntity& DvnfTRXData::CreateSourceByOID(DvnfAttributeData diagram, const DvnfString& oid) {
    DvnfEntity& e = CreateEntity("Source", oid, DvnfString(""));
    AppendOnce(diagram("Sources"), e);
    return e;
}

DvnfEntity& DvnfTRXData::CreateSinkByOID(DvnfAttributeData diagram, const DvnfString& oid) {
    DvnfEntity& e = CreateEntity("Sink", oid, DvnfString(""));
    AppendOnce(diagram("Sinks"), e);
    return e;
}

DvnfEntity& DvnfTRXData::CreateTextAnnotation(DvnfAttributeData diagram, const DvnfString& name) {
    DvnfEntity& e = CreateEntity(DvnfNames::TextAnnotation, DvnfString(), name);
    diagram(DvnfNames::TextAnnotations).NewSetElement(e);
    return e;
}

DvnfEntity& DvnfTRXData::MakeControl(DvnfAttributeData& diagram, const DvnfString& from, const DvnfString& to,
                                     const char* oid, long spec) {
    DvnfEntity& c = CreateEntity(DvnfNames::ControlConnector, KeyOrFresh(oid), DvnfString(""));
    c.AttributeData()("ConnectorSpec") = spec;
    c.DeleteAllLinksOfType(DvnfString("ControlFromActivity"));
    c.DeleteAllLinksOfType(DvnfString("ControlToActivity"));
    const DvnfEntityType& ct = c.Type();
    DvnfEntity& a = FindElement(diagram("Activities"), from);
    DvnfEntity& b = FindElement(diagram("Activities"), to);
    if (a.IsValid()) c.AddLink(Types().FindLinkType("ControlFromActivity", ct), a);
    if (b.IsValid()) c.AddLink(Types().FindLinkType("ControlToActivity", ct), b);
    AppendOnce(diagram("ControlConnectors"), c);
    return c;
}

DvnfEntity& DvnfTRXData::CreateControlConnector(DvnfAttributeData diagram, const DvnfString& from,
                                                const DvnfString& to, const char* oid) {
    return MakeControl(diagram, from, to, oid, 1);
}

DvnfEntity& DvnfTRXData::CreateDefaultConnector(DvnfAttributeData diagram, const DvnfString& from,
                                                const DvnfString& to, const char* oid) {
    return MakeControl(diagram, from, to, oid, 2);
}

DvnfEntity& DvnfTRXData::CreateDataConnectorWithOID(DvnfAttributeData diagram, const DvnfString& from,
                                                    bool fromIsNode, const DvnfString& to, bool toIsNode,
                                                    const DvnfString& oid) {
    DvnfEntity& c = CreateEntity(DvnfNames::DataConnector, oid, DvnfString(""));
    const DvnfEntityType& ct = c.Type();
    c.AttributeData()("Type") = 0L;
    for (const char* l : {"DataFromActivity", "DataFromSource", "DataToActivity", "DataToSink"})
        c.DeleteAllLinksOfType(DvnfString(l));
    DvnfEntity& a = FindElement(diagram(fromIsNode ? "Sources" : "Activities"), from);
    DvnfEntity& b = FindElement(diagram(toIsNode ? "Sinks" : "Activities"), to);
    if (a.IsValid()) c.AddLink(Types().FindLinkType(fromIsNode ? "DataFromSource" : "DataFromActivity", ct), a);
    if (b.IsValid()) c.AddLink(Types().FindLinkType(toIsNode ? "DataToSink" : "DataToActivity", ct), b);
    AppendOnce(diagram("DataConnectors"), c);
    return c;
}

DvnfEntity& DvnfTRXData::CreateDataConnectorWithOID(DvnfAttributeData diagram, const DvnfString& activity,
                                                    bool firstDirection, const DvnfString& oid) {
    DvnfEntity& c = CreateDataConnectorWithOID(diagram, activity, false, activity, false, oid);
    c.AttributeData()("Type") = firstDirection ? 1L : 2L;
    return c;
}

DvnfString DvnfTRXData::MakeFQName(const DvnfString& a, const DvnfString& b, const DvnfString& c) {
    std::string parts[3] = {a.str(), b.str(), c.str()};
    int last = 2;
    while (last > 0 && parts[last].empty()) --last;
    std::string fq = parts[0];
    for (int i = 1; i <= last; ++i) fq += "." + parts[i];
    return DvnfString(fq);
}

DvnfString DvnfTRXData::SplitFQName(const DvnfString& fq, DvnfString* a, DvnfString* b, DvnfString* c) {
    std::string s = fq.str(), p[3];
    size_t d1 = s.find('.');
    if (d1 == std::string::npos) {
        p[0] = s;
    } else {
        p[0] = s.substr(0, d1);
        size_t d2 = s.find('.', d1 + 1);
        if (d2 == std::string::npos) {
            p[1] = s.substr(d1 + 1);
        } else {
            p[1] = s.substr(d1 + 1, d2 - d1 - 1);
            p[2] = s.substr(d2 + 1);
        }
    }
    if (a) *a = DvnfString(p[0]);
    if (b) *b = DvnfString(p[1]);
    if (c) *c = DvnfString(p[2]);
    return DvnfString(p[0]);
}

void DvnfTRXData::ReadAllEntities(const DvnfString& typeName, DvnfFrontendReader& reader) {
    const DvnfEntityMap& m = GetEntities(typeName);
    std::vector<DvnfEntity*> todo;  // the reader may add entities of the type
    todo.reserve(m.size());
    for (const auto& [name, obj] : m) todo.push_back(&obj->Entity());
    for (DvnfEntity* e : todo) reader.ReadEntity(*this, *e);
}

// ---------------------------------------------------------------------------
// Process cleaner

namespace {
constexpr int kMaxDepth = 256;  // blocks inside blocks; deeper means a cycle

std::set<const DvnfEntity*> Members(const DvnfAttributeDataReader& set) {
    std::set<const DvnfEntity*> out;
    DvnfDataSetIterator it = set.ElementsOfSet();
    for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next()) {
        const DvnfEntity& x = e.AsEntity();
        if (x.IsValid() && x.State() != DvnfObject::StateDeleted) out.insert(&x);
    }
    return out;
}

bool EndPresent(const DvnfEntity& c, const char* linkA, const char* linkB, const std::set<const DvnfEntity*>& a,
                const std::set<const DvnfEntity*>& b) {
    const DvnfEntityType& t = c.Type();
    const DvnfCoreTypes& types = c.CoreData()->Types();
    for (const char* name : {linkA, linkB}) {
        if (!name) continue;
        const DvnfLink& l = c.FirstLinkOfType(types.FindLinkType(name, t));
        if (l.IsValid()) {
            const DvnfEntity* target = &l.Target();
            return a.count(target) || b.count(target);
        }
    }
    return false;
}

long RemoveBroken(DvnfAttributeData set, bool control, const std::set<const DvnfEntity*>& acts,
                  const std::set<const DvnfEntity*>& sources, const std::set<const DvnfEntity*>& sinks) {
    std::vector<DvnfEntity*> broken;
    DvnfDataSetIterator it = set.ElementsOfSet();
    for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next()) {
        DvnfEntity& c = e.AsEntity();
        if (!c.IsValid()) continue;
        bool ok = control ? EndPresent(c, "ControlFromActivity", nullptr, acts, acts) &&
                                EndPresent(c, "ControlToActivity", nullptr, acts, acts)
                          : EndPresent(c, "DataFromActivity", "DataFromSource", acts, sources) &&
                                EndPresent(c, "DataToActivity", "DataToSink", acts, sinks);
        if (!ok) broken.push_back(&c);
    }
    long removed = 0;
    for (DvnfEntity* c : broken) removed += set.RemoveSetElement(*c);
    return removed;
}
}  // namespace

long DvnfProcessCleaner::CleanDiagram(DvnfAttributeData diagram, int depth) {
    if (depth > kMaxDepth || !diagram.IsValid()) return 0;
    auto acts = Members(diagram("Activities"));
    long removed = RemoveBroken(diagram("ControlConnectors"), true, acts, {}, {}) +
                   RemoveBroken(diagram("DataConnectors"), false, acts, Members(diagram("Sources")),
                                Members(diagram("Sinks")));
    for (const DvnfEntity* a : acts) {
        DvnfEntity& act = const_cast<DvnfEntity&>(*a);
        for (const char* as : {"AsBlock", "AsBundle"}) {
            DvnfEntity& inner = act.AttributeData()("Implementation")(as).AsEntity();
            if (inner.IsValid()) removed += CleanDiagram(inner.AttributeData()("Diagram"), depth + 1);
        }
    }
    return removed;
}

void DvnfProcessCleaner::ResolveNames(DvnfEntity& entity, int depth) {
    if (depth > kMaxDepth || !entity.IsValid()) return;
    for (const DvnfLink& l : entity.Links()) {
        DvnfEntity& t = l.Target();
        if (t.IsValid() && (t.Name().IsEmpty() || !t.HasOID()) && _reader) {
            DvnfString name = _reader->GetName(t);
            if (t.Name().IsEmpty() && !name.IsEmpty()) t.Name(name);
        }
    }
    // Down into every entity the attributes hold (activities, implementation
    // objects, connectors, members).
    std::vector<DvnfAttributeDataReader> stack{entity.AttributeData()};
    while (!stack.empty()) {
        DvnfAttributeDataReader r = stack.back();
        stack.pop_back();
        switch (r.Type()) {
        case DvnfAttributeType::Entity: ResolveNames(r.AsEntity(), depth + 1); break;
        case DvnfAttributeType::Group:
            for (const auto& n : r.Names()) stack.push_back(r(n.c_str()));
            break;
        case DvnfAttributeType::Set: {
            DvnfDataSetIterator it = r.ElementsOfSet();
            for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next()) stack.push_back(e);
            break;
        }
        default: break;
        }
    }
}

long DvnfProcessCleaner::operator()(DvnfEntity& process) {
    if (!process.IsValid()) return 0;
    long removed = CleanDiagram(process.AttributeData()("Diagram"), 0);
    ResolveNames(process, 0);
    return removed;
}
