// The core model: catalogue, entities and skeletons, attributes, links,
// factories, states and flags, keys, messages.
#include "dvnfcorn.h"

#include <gtest/gtest.h>

#include <fstream>
#include <set>
#include <sstream>
#include <sys/wait.h>
#include <unistd.h>

namespace {

DvnfString S(const char* s) { return DvnfString(s); }

TEST(Catalogue, HoldsEveryTypeAndLinkWithTheirEnds) {
    const DvnfCoreTypes& t = DvnfTRXTypes::_instance;
    for (const char* name : {"Category", "DataStructure", "Process", "Activity", "Source", "Sink", "Person", "Role",
                             "Organization", "Level", "Program", "ActivitiesList", "ProcessInstancesList",
                             "TemplatesList", "Worklist", "Domain", "SystemGroup", "System", "Node", "QueueManager",
                             "Server", "PEAgent", "ToolSet", DvnfNames::ProgramImplementation,
                             DvnfNames::ProcessImplementation, DvnfNames::BlockImplementation,
                             DvnfNames::BundleImplementation, DvnfNames::ControlConnector, DvnfNames::DataConnector,
                             DvnfNames::TextAnnotation, DvnfNames::DataStructureMember}) {
        const DvnfEntityType& et = t.GetEntityType(S(name), false);
        EXPECT_TRUE(et.IsValid()) << name;
        EXPECT_EQ(et.Name().str(), name);
    }
    EXPECT_EQ(t.EntityTypes().size(), 31u);
    EXPECT_EQ(t.LinkTypes().size(), 51u);
    EXPECT_FALSE(t.GetEntityType(S("Categry"), false).IsValid());

    const DvnfLinkType& l = t.GetLinkType(S("ReferencesPEServer"), S(DvnfNames::ProgramImplementation), S("Server"));
    EXPECT_TRUE(l.IsValid());
    EXPECT_EQ(l.Target().Name().str(), "Server");
    // A link asked from the wrong source or to the wrong target is not there.
    EXPECT_FALSE(t.GetLinkType(S("ProcessHasCategory"), S("Program"), S("Category"), false).IsValid());
    EXPECT_FALSE(t.GetLinkType(S("ProcessHasCategory"), S("Process"), S("Person"), false).IsValid());
    EXPECT_TRUE(t.GetLinkType(S("HasSubStructure"), S(DvnfNames::DataStructureMember), S("DataStructure")).IsValid());

    // Attribute paths and their kinds, including prefixes and set elements.
    const DvnfEntityType& act = t.GetEntityType(S("Activity"));
    EXPECT_EQ(act.AttributeKind("DoneBy.AssignType"), DvnfAttributeType::Long);
    EXPECT_EQ(act.AttributeKind("DoneBy"), DvnfAttributeType::Group);
    EXPECT_EQ(act.AttributeKind("DoneBy.PersonsFromInput[]"), DvnfAttributeType::String);
    EXPECT_EQ(act.AttributeKind("Implementation.AsBlock"), DvnfAttributeType::Entity);
    EXPECT_EQ(act.AttributeKind("Nonsense"), DvnfAttributeType::Undefined);
    const DvnfEntityType& srv = t.GetEntityType(S("Server"));
    const std::string drt = "ServerDefault.DistributionServer.DistributionReceiveTime";
    EXPECT_TRUE(srv.AcceptsKind(drt, DvnfAttributeType::Group));
    EXPECT_TRUE(srv.AcceptsKind(drt, DvnfAttributeType::String));
    EXPECT_EQ(t.GetEntityType(S("Process")).SetElementType("Diagram.Activities").Name().str(), "Activity");
    EXPECT_EQ(t.GetEntityType(S("DataStructure")).SetElementType("Members").Name().str(),
              DvnfNames::DataStructureMember);
}

TEST(CoreData, EntitiesByKeyAndNameAndSkeletonsThroughLinks) {
    DvnfTRXData data;
    DvnfEntity& p = data.CreateEntity(S("Process"), S("P1"), S("Order"));
    EXPECT_TRUE(p.IsValid());
    EXPECT_EQ(p.State(), DvnfObject::StateNew);
    EXPECT_EQ(&data.GetEntityByOID(S("Process"), S("P1")), &p);
    EXPECT_FALSE(data.GetEntityByOID(S("Process"), S("P2")).IsValid());
    EXPECT_LE(data.GetEntityByOID(S("Process"), S("P2")).State(), 1);

    // By key: a skeleton with the key and no name, state 0.
    const DvnfLink& l = data.AddLinkByOID(p, S("ProcessHasCategory"), S("Category"), S("C9"), true, true);
    ASSERT_TRUE(l.IsValid());
    DvnfEntity& cat = l.Target();
    EXPECT_EQ(cat.OID().str(), "C9");
    EXPECT_TRUE(cat.Name().IsEmpty());
    EXPECT_EQ(cat.State(), DvnfObject::StateNone);
    // The same link again is not added twice; without createTarget a missing one fails.
    data.AddLinkByOID(p, S("ProcessHasCategory"), S("Category"), S("C9"), true, true);
    EXPECT_EQ(p.LinksOfType(S("ProcessHasCategory")).Count(), 1);
    EXPECT_FALSE(data.AddLinkByOID(p, S("ProcessHasCategory"), S("Category"), S("NONE"), false, true).IsValid());
    // The load of the category later fills the same object.
    DvnfEntity& loaded = data.CreateEntity(S("Category"), S("C9"), S("Finance"));
    EXPECT_EQ(&loaded, &cat);
    EXPECT_EQ(cat.Name().str(), "Finance");
    EXPECT_EQ(cat.State(), DvnfObject::StateNew);

    // By name: a skeleton with the name and no key, adopted by a later key.
    const DvnfLink& r = data.AddLinkByName(p, S("ProcessHasRole"), S("Role"), S("Clerk"), true, true);
    DvnfEntity& role = r.Target();
    EXPECT_TRUE(role.OID().IsEmpty());
    EXPECT_EQ(&data.CreateEntity(S("Role"), S("R1"), S("Clerk")), &role);
    EXPECT_EQ(&data.GetEntityByOID(S("Role"), S("R1")), &role);

    // GetEntities: ordered by name, follows renames.
    data.CreateEntity(S("Process"), S("P2"), S("Alpha"));
    data.CreateEntity(S("Process"), S(""), S("Zulu"));
    std::vector<std::string> names;
    for (const auto& [name, obj] : data.GetEntities(S("Process"))) {
        // An object of the map answers name, type and validity as its entity does.
        EXPECT_TRUE(obj->IsValid());
        EXPECT_EQ(&obj->Type(), &obj->Entity().Type());
        names.push_back(obj->Name().str());
    }
    EXPECT_EQ(names, (std::vector<std::string>{"Alpha", "Order", "Zulu"}));
    // A loop over the map may rename the entity it stands on, and name it back.
    std::vector<std::string> visited;
    for (const auto& [name, obj] : data.GetEntities(S("Process"))) {
        DvnfEntity& e = obj->Entity();
        DvnfString was = e.Name();
        e.Name(S("TEMP") | e.OID());
        EXPECT_EQ(&data.GetEntityByName(S("Process"), S("TEMP") | e.OID()), &e);
        e.Name(was);
        visited.push_back(e.Name().str());
    }
    EXPECT_EQ(visited, names);
    for (const auto& [name, obj] : data.GetEntities(S("Process")))
        if (obj->Entity().Name() == "Zulu") obj->Entity().Name(S("Able"));  // moves at the next call
    names.clear();
    for (const auto& [name, obj] : data.GetEntities(S("Process"))) names.push_back(name.str());
    EXPECT_EQ(names, (std::vector<std::string>{"Able", "Alpha", "Order"}));
    p.Name(S("TEMPP1"));
    EXPECT_EQ(data.GetEntities(S("Process")).count(S("Order")), 0u);
    EXPECT_EQ(data.GetEntities(S("Process")).find(S("TEMPP1"))->second, &p);
    EXPECT_EQ(&data.GetEntityByName(S("Process"), S("TEMPP1")), &p);

    // Links by type: first, iteration, deletion.
    data.AddLinkByOID(p, S("ProcessHasCategory"), S("Category"), S("C10"), true, false);
    DvnfLinkTypeIterator it = p.LinksOfType(S("ProcessHasCategory"));
    EXPECT_EQ(it.First().Target().OID().str(), "C9");
    EXPECT_EQ(it.Next().Target().OID().str(), "C10");
    EXPECT_FALSE(it.Next().IsValid());
    p.DeleteAllLinksOfType(S("ProcessHasCategory"));
    EXPECT_FALSE(p.FirstLinkOfType(S("ProcessHasCategory")).IsValid());
    EXPECT_TRUE(p.FirstLinkOfType(S("ProcessHasRole")).IsValid());
}

TEST(CoreData, UndefinedEntityStaysInertAndStateAndFlagsWork) {
    DvnfEntity& u = DvnfEntity::undefined;
    u.State(DvnfObject::StateChanged);
    u.Name(S("x"));
    u.AttributeData()("A") = 5L;
    EXPECT_EQ(u.State(), DvnfObject::StateNone);
    EXPECT_TRUE(u.Name().IsEmpty());
    EXPECT_FALSE(u.AttributeData()("A").IsValid());
    EXPECT_FALSE(u.LinksOfType(S("ProcessHasRole")).First().IsValid());
    DvnfLinkTypeIterator none = DvnfLinkTypeIterator::undefined;
    EXPECT_FALSE(none.First().IsValid());
    EXPECT_EQ(none.Count(), 0);
    EXPECT_FALSE(DvnfLink::undefined.Target().IsValid());

    DvnfTRXData data;
    DvnfEntity& a = data.CreateEntity(S("Activity"), S("A1"), S("Check"));
    EXPECT_EQ(a.Flags(), 0u);
    a.SetFlags(DvnfEntity::FlagAttributesComplete | DvnfEntity::FlagBlockContent);
    EXPECT_TRUE(a.IsAttributeDataAttrComplete());
    EXPECT_FALSE(a.IsAttributeDataContainerComplete());
    EXPECT_TRUE(a.IsBlockContentInMemory());
    a.SetFlags(DvnfEntity::FlagAttributesComplete, false);
    EXPECT_EQ(a.Flags(), 4u);
    a.State(DvnfObject::StateDeleted);
    EXPECT_EQ(a.State(), 1);
}

TEST(Attributes, ValuesGroupsSetsAndTheirReaders) {
    DvnfTRXData data;
    DvnfEntity& s = data.CreateEntity(S("Server"), S(""), S("PES1.SYS.GRP"));
    DvnfAttributeData a = s.AttributeData();
    a("Type") = 7;
    a("Description") = "Runs programs";
    a("ServerDefault")("ProgramExecutionServer")("ServerCommon")("StartTime")("AnyTime") = true;
    a("ServerDefault")("ProgramExecutionServer")("Platform") = 3L;

    const DvnfEntity& cs = s;
    DvnfAttributeDataReader r = cs.AttributeData();
    EXPECT_EQ(r("Type").AsLong(0), 7);
    EXPECT_EQ(r("Type").Type(), DvnfAttributeType::Long);
    EXPECT_EQ(r("Type").AsString(S("")).str(), "7");
    EXPECT_EQ(r("Description").AsString(S("")).str(), "Runs programs");
    EXPECT_EQ(r("Description").AsLong(-1), -1);  // not a number: the default
    EXPECT_TRUE(r("ServerDefault")("ProgramExecutionServer")("ServerCommon")("StartTime")("AnyTime").AsBool(false));
    EXPECT_EQ(r("ServerDefault")("ProgramExecutionServer")("Platform").AsLong(0), 3);
    // Valid but not defined: an empty group; neither: a missing attribute.
    a("WindowLayout").MakeGroup();
    EXPECT_TRUE(r("WindowLayout").IsValid());
    EXPECT_FALSE(r("WindowLayout").IsDefined());
    EXPECT_FALSE(r("Missing").IsValid());
    EXPECT_FALSE(r("Missing")("Deeper").IsValid());
    EXPECT_EQ(r("Missing").AsLong(42), 42);
    EXPECT_EQ(r.Names(), (std::vector<std::string>{"Type", "Description", "ServerDefault", "WindowLayout"}));

    // Reset removes a whole group.
    a.Reset("ServerDefault");
    EXPECT_FALSE(r("ServerDefault").IsValid());
    EXPECT_FALSE(r("ServerDefault")("ProgramExecutionServer")("Platform").IsDefined());

    // Sets of texts and of groups; iteration stops at the first invalid element.
    DvnfAttributeData set = a("UPESContext")("Names");
    set.NewSetElement() = "one";
    set.NewSetElement() = "two";
    DvnfAttributeData bend = a("BendPoints").NewSetElement();
    bend("Xpos") = 10;
    bend("Ypos") = 20;
    EXPECT_EQ(r("UPESContext")("Names").NumberOfElements(), 2);
    DvnfDataSetIterator it = r("UPESContext")("Names").ElementsOfSet();
    EXPECT_EQ(it.Type(), DvnfAttributeType::Set);
    EXPECT_EQ(it.First().AsString().str(), "one");
    EXPECT_EQ(it.Next().AsString().str(), "two");
    EXPECT_FALSE(it.Next().IsValid());
    EXPECT_FALSE(r("Description").ElementsOfSet().IsValid());
    EXPECT_EQ(r("BendPoints").ElementsOfSet().First()("Ypos").AsLong(), 20);

    // Deep copy, also of a subtree onto an attribute inside it.
    a("Copy") = r("BendPoints");
    bend("Xpos") = 11;
    EXPECT_EQ(r("Copy").ElementsOfSet().First()("Xpos").AsLong(), 10);
    a("Nest")("Inner") = 1;
    a("Nest")("Inner") = r("Nest");
    EXPECT_EQ(r("Nest")("Inner")("Inner").AsLong(), 1);
    // A value turns into a group when a sub-attribute is written into it.
    a("Description")("Sub") = true;
    EXPECT_EQ(r("Description").Type(), DvnfAttributeType::Group);
    EXPECT_TRUE(r("Description")("Sub").AsBool());
    // The root takes no value.
    a = 5L;
    EXPECT_EQ(r.Type(), DvnfAttributeType::Group);
}

TEST(Attributes, MemberElementsAreEntitiesWithNamesAndLinks) {
    DvnfTRXData data;
    DvnfEntity& ds = data.CreateEntity(S("DataStructure"), S(""), S("Order"));
    DvnfAttributeData m = ds.AttributeData()("Members").NewSetElement();
    m("Name") = "Customer";
    m("Type") = 4;
    DvnfEntity& member = m.AsEntity();
    ASSERT_TRUE(member.IsValid());
    EXPECT_EQ(member.Type().Name().str(), DvnfNames::DataStructureMember);
    member.Name(S("Customer"));
    data.AddLinkByName(member, S("HasSubStructure"), S("DataStructure"), S("Address"), true, true);
    DvnfAttributeDataReader first = static_cast<const DvnfEntity&>(ds).AttributeData()("Members").ElementsOfSet().First();
    EXPECT_EQ(first("Name").AsString().str(), "Customer");
    EXPECT_EQ(first("Type").AsLong(), 4);
    EXPECT_EQ(first.AsEntity().FirstLinkOfType(S("HasSubStructure")).Target().Name().str(), "Address");
    // Container members are plain groups.
    DvnfAttributeData cm = ds.AttributeData()("InputContainer")("Members").NewSetElement();
    cm("Name") = "a.b";
    EXPECT_FALSE(cm.AsEntity().IsValid());
}

TEST(Factories, BuildDiagramsWithLinkedConnectors) {
    DvnfTRXData data;
    DvnfEntity& p = data.CreateEntity(S("Process"), S("P"), S("Order"));
    DvnfAttributeData d = p.AttributeData()("Diagram");
    DvnfEntity& a1 = data.CreateProgramActivityByOID(d, S("A1"));
    a1.Name(S("Check"));
    DvnfEntity& a2 = data.CreateBlockActivityByOID(d, S("A2"));
    a2.Name(S("Ship"));
    DvnfEntity& a3 = data.CreateInfoActivityByOID(d, S("A3"));
    a3.Name(S("Note"));
    EXPECT_EQ(a1.AttributeData()("Implementation")("Type").AsLong(), 1);
    EXPECT_EQ(a2.AttributeData()("Implementation")("Type").AsLong(), 3);
    EXPECT_EQ(a2.AttributeData()("Implementation")("AsBlock").AsEntity().Type().Name().str(),
              DvnfNames::BlockImplementation);
    EXPECT_EQ(a3.AttributeData()("Implementation")("Type").AsLong(), 5);
    EXPECT_FALSE(a3.AttributeData()("Implementation")("AsProgram").IsValid());
    EXPECT_EQ(d("Activities").NumberOfElements(), 3);

    DvnfEntity& src = data.CreateSourceByOID(d, S("S1"));
    src.Name(S("1"));
    DvnfEntity& snk = data.CreateSinkByOID(d, S("K1"));
    snk.Name(S("1"));
    DvnfEntity& c = data.CreateControlConnector(d, S("Check"), S("Ship"), nullptr);
    EXPECT_EQ(c.AttributeData()("ConnectorSpec").AsLong(), 1);
    EXPECT_EQ(&c.FirstLinkOfType(S("ControlFromActivity")).Target(), &a1);
    EXPECT_EQ(&c.FirstLinkOfType(S("ControlToActivity")).Target(), &a2);
    EXPECT_FALSE(c.OID().IsEmpty());
    EXPECT_EQ(data.CreateDefaultConnector(d, S("Ship"), S("Note"), "CC2").AttributeData()("ConnectorSpec").AsLong(), 2);
    DvnfEntity& dc = data.CreateDataConnectorWithOID(d, S("1"), true, S("Check"), false, S("DC1"));
    EXPECT_EQ(&dc.FirstLinkOfType(S("DataFromSource")).Target(), &src);
    EXPECT_EQ(&dc.FirstLinkOfType(S("DataToActivity")).Target(), &a1);
    DvnfEntity& loop = data.CreateDataConnectorWithOID(d, S("Check"), false, S("DC2"));
    EXPECT_EQ(loop.AttributeData()("Type").AsLong(), 2);
    EXPECT_EQ(&loop.FirstLinkOfType(S("DataFromActivity")).Target(), &loop.FirstLinkOfType(S("DataToActivity")).Target());
    // A diagram read a second time keeps each object once, with its implementation.
    DvnfEntity& implBefore = a1.AttributeData()("Implementation")("AsProgram").AsEntity();
    EXPECT_EQ(&data.CreateProgramActivityByOID(d, S("A1")), &a1);
    EXPECT_EQ(&a1.AttributeData()("Implementation")("AsProgram").AsEntity(), &implBefore);
    EXPECT_EQ(d("Activities").NumberOfElements(), 3);
    EXPECT_EQ(&data.CreateDataConnectorWithOID(d, S("1"), true, S("Check"), false, S("DC1")), &dc);
    EXPECT_EQ(dc.Links().size(), 2u);
    data.CreateTextAnnotation(d, S("Remark"));
    EXPECT_EQ(d(DvnfNames::TextAnnotations).NumberOfElements(), 1);

    // The cleaner drops connectors whose ends are gone, also inside blocks.
    DvnfAttributeData inner = a2.AttributeData()("Implementation")("AsBlock").AsEntity().AttributeData()("Diagram");
    DvnfEntity& i1 = data.CreateInfoActivityByOID(inner, S("I1"));
    i1.Name(S("In"));
    data.CreateControlConnector(inner, S("In"), S("Gone"), nullptr);
    a3.State(DvnfObject::StateDeleted);
    DvnfProcessCleaner clean(data, nullptr);
    EXPECT_EQ(clean(p), 2);  // Ship->Note (Note deleted) and In->Gone
    EXPECT_EQ(d("ControlConnectors").NumberOfElements(), 1);
    EXPECT_EQ(d("DataConnectors").NumberOfElements(), 2);
}

// A reader that knows the names of two stored categories by key and counts
// what it is asked, as the database layer's reader would answer.
class KnownNames : public DvnfFrontendReader {
public:
    int reads = 0;
    void ReadEntity(DvnfTRXData&, DvnfEntity& e) override {
        ++reads;
        e.AttributeData()("Description") = "read";
        e.State(DvnfObject::StateUnchanged);
    }
    DvnfString GetName(DvnfEntity& e) override {
        if (e.OID() == "C1") return DvnfString("Sales");
        return DvnfString("");
    }
};

TEST(Reader, CleanerResolvesNamesAndReadAllEntitiesReadsEachOnce) {
    DvnfTRXData data;
    DvnfEntity& p = data.CreateEntity(S("Process"), S("P"), S("Order"));
    DvnfEntity& a = data.CreateProcessActivityByOID(p.AttributeData()("Diagram"), S("A1"));
    a.Name(S("Sub"));
    data.AddLinkByOID(a.AttributeData()("Implementation")("AsProcess").AsEntity(), S("ReferencesSystem"), S("System"),
                      S("S1"), true, true);
    data.AddLinkByOID(p, S("ProcessHasCategory"), S("Category"), S("C1"), true, true);
    KnownNames reader;
    DvnfProcessCleaner clean(data, &reader);
    EXPECT_EQ(clean(p), 0);
    EXPECT_EQ(data.GetEntityByOID(S("Category"), S("C1")).Name().str(), "Sales");
    EXPECT_EQ(&data.GetEntityByName(S("Category"), S("Sales")), &data.GetEntityByOID(S("Category"), S("C1")));
    EXPECT_TRUE(data.GetEntityByOID(S("System"), S("S1")).Name().IsEmpty());  // the reader knew no name

    data.CreateEntity(S("Category"), S("C2"), S("Other"));
    data.ReadAllEntities(S("Category"), reader);
    EXPECT_EQ(reader.reads, 2);
    EXPECT_EQ(data.GetEntityByOID(S("Category"), S("C2")).State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(data.GetEntityByOID(S("Category"), S("C1")).AttributeData()("Description").AsString().str(), "read");

    // An empty name finds nothing and makes nothing.
    long count = data.NumberOfEntities();
    EXPECT_FALSE(data.AddLinkByName(p, S("ProcessHasRole"), S("Role"), S(""), true, true).IsValid());
    EXPECT_FALSE(data.GetEntityByName(S("System"), S(""), true).IsValid());
    EXPECT_EQ(data.NumberOfEntities(), count);
    // A link asked of an entity that is not valid makes no skeleton either.
    EXPECT_FALSE(data.AddLinkByOID(DvnfEntity::undefined, S("ProcessHasRole"), S("Role"), S("R9"), true, true).IsValid());
    EXPECT_EQ(data.NumberOfEntities(), count);
}

TEST(Names, FullNamesQuotingAndKeys) {
    EXPECT_EQ(DvnfTRXData::MakeFQName(S("PES1"), S("SYS"), S("GRP")).str(), "PES1.SYS.GRP");
    EXPECT_EQ(DvnfTRXData::MakeFQName(S("PES1"), S("SYS"), S("")).str(), "PES1.SYS");
    DvnfString a, b, c;
    EXPECT_EQ(DvnfTRXData::SplitFQName(S("PES1.SYS.GRP"), &a, &b, &c).str(), "PES1");
    EXPECT_EQ(b.str(), "SYS");
    EXPECT_EQ(c.str(), "GRP");
    EXPECT_EQ(DvnfTRXData::SplitFQName(S("ONLY"), nullptr, nullptr, nullptr).str(), "ONLY");

    EXPECT_EQ(ReturnQuotedString(S("O'Neil"), "'", "'").str(), "'O''Neil'");
    EXPECT_EQ(ReturnQuotedString(S(""), "'", "'").str(), "''");

    // Keys: 32 hexadecimal characters, unique within a process and across processes.
    std::set<std::string> keys;
    for (int i = 0; i < 20000; ++i) keys.insert(DvnfObject::CreateOID().str());
    EXPECT_EQ(keys.size(), 20000u);
    EXPECT_EQ(keys.begin()->size(), 32u);
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    pid_t child = fork();
    if (child == 0) {
        std::string k = DvnfObject::CreateOID().str();
        (void)!write(fds[1], k.data(), k.size());
        _exit(0);
    }
    std::string mine = DvnfObject::CreateOID().str();
    char buf[64] = {};
    ASSERT_EQ(read(fds[0], buf, 32), 32);
    waitpid(child, nullptr, 0);
    close(fds[0]);
    close(fds[1]);
    EXPECT_NE(std::string(buf), mine);
}

TEST(Messages, EveryNumberHasATextAndTheLineFillsArguments) {
    // Every number the system reports has a text that shows each of its
    // arguments and names no argument it is not given.
    std::ifstream in(std::string(DVN_SOURCE_DIR) + "/tests/dvnfcorn/messages.txt");
    ASSERT_TRUE(in.good());
    size_t listed = 0;
    for (std::string line; std::getline(in, line);) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream s(line);
        int arguments = 0;
        char colon = 0;
        s >> arguments >> colon;
        for (long n; s >> n; ++listed) {
            const char* text = DvnfMessageHandler::Text(n);
            ASSERT_NE(text, nullptr) << n;
            std::set<int> used;
            for (const char* p = text; *p; ++p)
                if (p[0] == '%' && p[1] >= '1' && p[1] <= '7') used.insert(p[1] - '0');
            std::set<int> given;
            for (int a = 1; a <= arguments; ++a) given.insert(a);
            EXPECT_EQ(used, given) << n << ": " << text;
        }
    }
    EXPECT_EQ(listed, 361u);
    EXPECT_EQ(DvnfMessageHandler::Format(51019, S("Finance")).str(), "51019: Category Finance added.");
    EXPECT_EQ(DvnfMessageHandler::Format(51146, S("Finance"), S("ADMIN")).str(),
              "51146: Category Finance is checked out by ADMIN; not saved.");
    // An optional part disappears when its arguments are null.
    EXPECT_EQ(DvnfMessageHandler::Format(51549).str(), "51549: Category not found.");
    EXPECT_EQ(DvnfMessageHandler::Format(51549, S("C1")).str(), "51549: Category not found: C1.");
    EXPECT_EQ(DvnfMessageHandler::Format(99999, S("a"), DvnString(), S("c")).str(),
              "99999: Message without text. | a | c");

    // The default handler of core data prints one line on standard output.
    DvnfTRXData data;
    testing::internal::CaptureStdout();
    data.MessageHandler()->Report(51301, S("/tmp/x.trx"));
    EXPECT_EQ(testing::internal::GetCapturedStdout(), "51301: TRX file /tmp/x.trx was not loaded.\n");

    DvnfCollectingMessageHandler collect;
    DvnfTRXData data2(DvnfTRXTypes::_instance, &collect);
    data2.MessageHandler()->Report(51019, S("X"));
    ASSERT_EQ(collect.Entries().size(), 1u);
    EXPECT_EQ(collect.Entries()[0].args[0].str(), "X");
    EXPECT_TRUE(collect.Entries()[0].args[1].IsNull());
    EXPECT_EQ(collect.Count(51019), 1u);
}

}  // namespace
