// The core model: skeletons and the by-name map, the undefined entity,
// factories and the process cleaner, keys, messages.
#include "dvnfcorn.h"

#include <gtest/gtest.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <map>
#include <random>
#include <set>
#include <sstream>
#include <string>
#include <thread>
#include <sys/wait.h>
#include <unistd.h>

namespace {

DvnfString S(const char* s) { return DvnfString(s); }
DvnfEntity& Named(DvnfEntity& e, const char* name) {
    e.Name(S(name));
    return e;
}

// An attribute tree as text: groups in braces in the order made, sets in
// brackets, entities by type and name.
std::string Dump(const DvnfAttributeDataReader& r) {
    switch (r.Type()) {
    case DvnfAttributeType::Group: {
        std::string out = "{";
        for (const std::string& n : r.Names()) out += (out.size() > 1 ? " " : "") + n + "=" + Dump(r(n.c_str()));
        return out + "}";
    }
    case DvnfAttributeType::Set: {
        std::string out = "[";
        DvnfDataSetIterator it = r.ElementsOfSet();
        for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next()) out += Dump(e) + ";";
        return out + "]";
    }
    case DvnfAttributeType::Entity: {
        const DvnfEntity& e = r.AsEntity();
        return "<" + e.Type().Name().str() + " " + e.Name().str() + ">";
    }
    default: return r.AsString().str();
    }
}

TEST(CoreData, EntitiesByKeyAndNameAndSkeletonsThroughLinks) {
    DvnfTRXData data;
    DvnfEntity& p = data.CreateEntity(S("Process"), S("P1"), S("Order"));
    EXPECT_FALSE(data.GetEntityByOID(S("Process"), S("P2")).IsValid());

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
    for (const auto& [name, obj] : data.GetEntities(S("Process"))) names.push_back(obj->Name().str());
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
    EXPECT_FALSE(data.GetEntityByName(S("Process"), S("Zulu")).IsValid());

    // Deleting the links of one type leaves the others.
    p.DeleteAllLinksOfType(S("ProcessHasCategory"));
    EXPECT_FALSE(p.FirstLinkOfType(S("ProcessHasCategory")).IsValid());
    EXPECT_TRUE(p.FirstLinkOfType(S("ProcessHasRole")).IsValid());
}

TEST(CoreData, EntitiesTakenOverFromScratchDataBelongToTheirNewData) {
    DvnfTRXData scratch, data;
    DvnfEntity& cat = scratch.CreateEntity(S("Category"), S("C1"), S("Sales"));
    DvnfEntity& renamed = scratch.CreateEntity(S("Category"), S("C2"), S("Zulu"));
    scratch.GetEntities(S("Category"));  // listed under its first name ...
    renamed.Name(S("Able"));              // ... and renamed before the move
    DvnfEntity& ds = scratch.CreateEntity(S("DataStructure"), S("D1"), S("Order"));
    scratch.AddLinkByName(scratch.CreateEntity(S("Process"), S("P1"), S("P")), S("ProcessHasCategory"),
                          S("Category"), S("Sales"), true, true);
    data.TakeEntitiesFrom(scratch);

    EXPECT_EQ(scratch.NumberOfEntities(), 0);
    EXPECT_TRUE(scratch.GetEntities(S("Category")).empty());
    EXPECT_FALSE(scratch.GetEntityByName(S("Category"), S("Sales")).IsValid());
    EXPECT_EQ(data.NumberOfEntities(), 4);
    EXPECT_EQ(&data.GetEntityByName(S("Category"), S("Sales")), &cat);
    EXPECT_EQ(&data.GetEntityByOID(S("Category"), S("C2")), &renamed);
    std::vector<std::string> names;
    for (const auto& [name, obj] : data.GetEntities(S("Category"))) names.push_back(name.str());
    EXPECT_EQ(names, (std::vector<std::string>{"Able", "Sales"}));
    for (DvnfEntity* e : data.AllEntities()) EXPECT_EQ(e->CoreData(), &data);
    EXPECT_EQ(&data.GetEntityByName(S("Process"), S("P")).FirstLinkOfType(S("ProcessHasCategory")).Target(), &cat);
    // What the model makes for an entity from then on is made in the new data.
    DvnfEntity& member = ds.AttributeData()("Members").NewSetElement().AsEntity();
    ASSERT_TRUE(member.IsValid());
    EXPECT_EQ(member.CoreData(), &data);
    EXPECT_EQ(data.NumberOfEntities(), 5);
    EXPECT_EQ(scratch.NumberOfEntities(), 0);
    // Data that holds entities takes none over.
    DvnfTRXData more;
    more.CreateEntity(S("Category"), S("C3"), S("Other"));
    EXPECT_DEATH(data.TakeEntitiesFrom(more), "holds entities");
}

// The indexes of a type are made at its first look-up: what was made,
// renamed and given keys before then is found as it is now.
TEST(CoreData, IndexesMadeAtTheFirstLookUpKnowEveryEarlierChange) {
    DvnfTRXData data;
    DvnfEntity& first = data.CreateEntity(S("Role"), S(""), S("Clerk"));
    DvnfEntity& second = data.CreateEntity(S("Role"), S(""), S("Clerk"));
    DvnfEntity& renamed = data.CreateEntity(S("Role"), S(""), S("Zulu"));
    renamed.Name(S("Able"));
    first.OID(S("R1"));
    EXPECT_EQ(&data.GetEntityByName(S("Role"), S("Clerk")), &first);  // the first made of the name
    EXPECT_FALSE(data.GetEntityByName(S("Role"), S("Zulu")).IsValid());
    EXPECT_EQ(&data.GetEntityByName(S("Role"), S("Able")), &renamed);
    EXPECT_EQ(&data.GetEntityByOID(S("Role"), S("R1")), &first);
    EXPECT_FALSE(data.GetEntityByName(S("Role"), S("")).IsValid());
    // Once made, the index follows: the name's next holder is the second.
    first.Name(S("Boss"));
    EXPECT_EQ(&data.GetEntityByName(S("Role"), S("Clerk")), &second);
    EXPECT_FALSE(data.GetEntityByOID(S("Role"), S("R9")).IsValid());
    second.OID(S("R9"));
    EXPECT_EQ(&data.GetEntityByOID(S("Role"), S("R9")), &second);

    // The list, first asked after renames, holds the names of now.
    DvnfEntity& p = data.CreateEntity(S("Process"), S("P1"), S("Order"));
    p.Name(S("Bill"));
    data.CreateEntity(S("Process"), S("P2"), S("Alpha"));
    std::vector<std::string> names;
    for (const auto& [name, obj] : data.GetEntities(S("Process"))) names.push_back(name.str() + "=" + obj->Name().str());
    EXPECT_EQ(names, (std::vector<std::string>{"Alpha=Alpha", "Bill=Bill"}));

    // A key another entity of the type holds is refused, whether the index
    // was made before or is made by the change.
    DvnfTRXData fresh;
    fresh.CreateEntity(S("Category"), S("C1"), S("Sales"));
    DvnfEntity& other = fresh.CreateEntity(S("Category"), S(""), S("Stock"));
    EXPECT_DEATH(other.OID(S("C1")), "key already used");
    DvnfTRXData unindexed;
    DvnfEntity& c1 = unindexed.CreateEntity(S("Category"), S(""), S("Sales"));  // with a key made for it
    const DvnfString taken = unindexed.CreateEntity(S("Category"), S(""), S("Stock")).OID();
    EXPECT_DEATH(c1.OID(taken), "key already used");
}

// Many entities renamed and given new keys at random, names repeating: after
// every round each name finds the first made of its holders, each key its
// entity, and a name or key given up finds nothing (the indexes grow and
// close their gaps under this churn), and the list by name stays ordered.
TEST(CoreData, IndexesFollowManyRenamesAndNewKeys) {
    DvnfTRXData data;
    std::mt19937 random(7);
    std::vector<DvnfEntity*> roles;
    auto name = [&](unsigned n) { return S(("N" + std::to_string(n % 300)).c_str()); };
    for (int i = 0; i < 2000; ++i) roles.push_back(&data.CreateEntity(S("Role"), S(""), name(random())));
    std::set<std::string> givenUp;
    int key = 0;
    for (int round = 0; round < 5; ++round) {
        for (int i = 0; i < 1500; ++i) {
            DvnfEntity& e = *roles[random() % roles.size()];
            if (random() % 2) {
                e.Name(random() % 10 ? name(random()) : S(""));
            } else {
                givenUp.insert(e.OID().str());
                e.OID(S(("K" + std::to_string(key++)).c_str()));
            }
        }
        std::map<std::string, DvnfEntity*> firstOfName;  // the entities are in the order made
        for (DvnfEntity* e : roles) {
            firstOfName.emplace(e->Name().str(), e);
            ASSERT_EQ(&data.GetEntityByOID(S("Role"), e->OID()), e);
            givenUp.erase(e->OID().str());
        }
        for (unsigned n = 0; n < 300; ++n) {
            auto it = firstOfName.find(name(n).str());
            DvnfEntity& found = data.GetEntityByName(S("Role"), name(n));
            ASSERT_EQ(it == firstOfName.end() ? &DvnfEntity::undefined : it->second, &found) << name(n).str();
        }
        for (const std::string& k : givenUp) ASSERT_FALSE(data.GetEntityByOID(S("Role"), S(k.c_str())).IsValid()) << k;
        // The list by name, its nodes used again round after round, holds each once under its name of now.
        std::multiset<std::string> expected, listed;
        for (DvnfEntity* e : roles) expected.insert(e->Name().str() + "/" + e->OID().str());
        std::string last;
        for (const auto& [listedName, obj] : data.GetEntities(S("Role"))) {
            ASSERT_EQ(listedName, obj->Name());
            ASSERT_LE(last, listedName.str());
            last = listedName.str();
            listed.insert(listedName.str() + "/" + obj->OID().str());
        }
        ASSERT_EQ(listed, expected);
    }
}

// Sub writes as a path does and finds what is there; removing members and
// elements anywhere in their order, walking a set after a removal, and copying
// a whole tree onto an entity's root.
TEST(Attributes, SubRemovalsAndCopies) {
    DvnfTRXData data;
    DvnfAttributeData ra = data.CreateEntity(S("Process"), S("P1"), S("A")).AttributeData();
    DvnfAttributeData rb = data.CreateEntity(S("Process"), S("P2"), S("B")).AttributeData();
    ra("Description") = "d";
    rb.Sub("Description") = "d";
    ra("NotifyDuration")("Hours") = 4L;
    rb.Sub("NotifyDuration").Sub("Hours") = 4L;
    ra("Flags")("On") = true;
    rb.Sub("Flags").Sub("On") = true;
    ra("Documentation") = 1L;
    ra("Documentation")("Part") = "x";  // a value node written below becomes a group
    rb.Sub("Documentation") = 1L;
    rb.Sub("Documentation").Sub("Part") = "x";
    EXPECT_EQ(Dump(ra), Dump(rb));
    EXPECT_EQ(Dump(rb), "{Description=d NotifyDuration={Hours=4} Flags={On=true} Documentation={Part=x}}");

    // The same name twice is the same node; a set has no names.
    rb.Sub("Description") = "e";
    EXPECT_EQ(rb.Names(), (std::vector<std::string>{"Description", "NotifyDuration", "Flags", "Documentation"}));
    EXPECT_EQ(rb("Description").AsString().str(), "e");
    EXPECT_FALSE(rb.Sub("Sets").MakeSet().Sub("X").IsValid());
    EXPECT_FALSE(DvnfAttributeData().Sub("X").IsValid());
    EXPECT_EQ(rb("Sets").Type(), DvnfAttributeType::Set);

    // Removals keep the order of what is left.
    DvnfAttributeData r = data.CreateEntity(S("Process"), S("P3"), S("P")).AttributeData();
    for (const char* n : {"A", "B", "C", "D"}) r(n) = n;
    r.Reset("A");  // the first
    r.Reset("C");  // one inside
    r.Reset("D");  // the last
    r.Reset("X");  // none
    EXPECT_EQ(Dump(r), "{B=B}");
    r("B").Reset();  // the only one
    EXPECT_EQ(Dump(r), "{}");
    r("E") = 1L;
    EXPECT_EQ(Dump(r), "{E=1}");

    DvnfEntity& a = data.CreateEntity(S("Category"), S("CA"), S("a"));
    DvnfEntity& b = data.CreateEntity(S("Category"), S("CB"), S("b"));
    DvnfAttributeData set = r("Refs");
    for (DvnfEntity* e : {&a, &b, &a, &a, &b, &a}) set.NewSetElement(*e);
    EXPECT_EQ(Dump(set), "[<Category a>;<Category b>;<Category a>;<Category a>;<Category b>;<Category a>;]");
    EXPECT_EQ(set.RemoveSetElement(a), 4);  // first, inside and last
    EXPECT_EQ(set.NumberOfElements(), 2);
    EXPECT_EQ(Dump(set), "[<Category b>;<Category b>;]");
    EXPECT_EQ(set.RemoveSetElement(b), 2);
    EXPECT_FALSE(set.ElementsOfSet().First().IsValid());
    set.NewSetElement(a);
    EXPECT_EQ(set.NumberOfElements(), 1);

    // A tree copied onto another entity's root: the root stays that entity's,
    // so elements it makes are entities of the catalogue's type there.
    DvnfEntity& s1 = data.CreateEntity(S("DataStructure"), S("D1"), S("S1"));
    DvnfEntity& s2 = data.CreateEntity(S("DataStructure"), S("D2"), S("S2"));
    s1.AttributeData()("Description") = "d";
    s1.AttributeData()("Members").NewSetElement()("Name") = "m";
    s2.AttributeData() = s1.AttributeData();
    EXPECT_EQ(Dump(s2.AttributeData()), "{Description=d Members=[<DataStructureMember >;]}");
    DvnfAttributeData added = s2.AttributeData()("Members").NewSetElement();
    EXPECT_EQ(added.AsEntity().Type().Name().str(), "DataStructureMember");
    EXPECT_EQ(s2.AttributeData()("Members").NumberOfElements(), 2);
    EXPECT_EQ(s1.AttributeData()("Members").NumberOfElements(), 1);
}

// Nodes come from one pool for the process, and names from one table: a
// place handed out twice, a block given back while a node of it lives, or a
// name read from the wrong place shows as a value or a name that changed.
// Two threads at once build trees of several blocks each with names both
// intern, thin them out so that every block keeps a few, and fill them again;
// then a tree is copied to the other core data and its first home goes.
TEST(Attributes, NodesKeepTheirValuesWhileTreesGrowShrinkAndMoveBetweenThreads) {
    constexpr long kChildren = 600;  // six nodes each: several blocks, several chunks of names
    auto grow = [](DvnfAttributeData r, long tag, std::string* expected) {
        auto name = [](char c, long i) { return c + std::to_string(i); };
        for (long i = 0; i < kChildren; ++i) {
            r(name('F', i).c_str())("V") = tag + i;
            r(name('F', i).c_str())("T") = std::to_string(tag - i).c_str();
            r(name('F', i).c_str())("S").NewSetElement()("W") = i;
        }
        for (long i = 0; i < kChildren; ++i)
            if (i % 3 != 0) r.Reset(name('F', i).c_str());
        for (long i = 0; i < kChildren; ++i) r(name('G', i).c_str()) = std::to_string(tag * 2 + i).c_str();
        *expected = "{";
        for (long i = 0; i < kChildren; i += 3)
            *expected += (i ? " F" : "F") + std::to_string(i) + "={V=" + std::to_string(tag + i) +
                         " T=" + std::to_string(tag - i) + " S=[{W=" + std::to_string(i) + "};]}";
        for (long i = 0; i < kChildren; ++i) *expected += " G" + std::to_string(i) + "=" + std::to_string(tag * 2 + i);
        *expected += "}";
    };
    auto a = std::make_unique<DvnfTRXData>();
    DvnfTRXData b;
    DvnfEntity& ea = a->CreateEntity(S("Process"), S("PA"), S("A"));
    DvnfEntity& eb = b.CreateEntity(S("Process"), S("PB"), S("B"));
    std::string wantA, wantB;
    std::thread ta([&] { grow(ea.AttributeData(), 1000000, &wantA); });
    std::thread tb([&] { grow(eb.AttributeData(), 5000000, &wantB); });
    ta.join();
    tb.join();
    EXPECT_EQ(Dump(ea.AttributeData()), wantA);
    EXPECT_EQ(Dump(eb.AttributeData()), wantB);

    DvnfEntity& copy = b.CreateEntity(S("Process"), S("PC"), S("C"));
    copy.AttributeData() = ea.AttributeData();
    a.reset();  // frees the first tree: blocks shared with the copy and with b stay
    DvnfEntity& ed = b.CreateEntity(S("Process"), S("PD"), S("D"));
    std::string wantAgain;
    std::thread tc([&] { grow(ed.AttributeData(), 9000000, &wantAgain); });
    tc.join();
    EXPECT_EQ(Dump(copy.AttributeData()), wantA);
    EXPECT_EQ(Dump(eb.AttributeData()), wantB);
    EXPECT_EQ(Dump(ed.AttributeData()), wantAgain);
}

TEST(CoreData, UndefinedEntityStaysInertAndLinksAreFoundOnlyBetweenTheirEnds) {
    DvnfEntity& u = DvnfEntity::undefined;
    u.State(DvnfObject::StateChanged);
    u.Name(S("x"));
    u.AttributeData()("A") = 5L;
    EXPECT_EQ(u.State(), DvnfObject::StateNone);
    EXPECT_TRUE(u.Name().IsEmpty());
    EXPECT_FALSE(u.AttributeData()("A").IsValid());
    EXPECT_EQ(DvnfLinkTypeIterator::undefined.Count(), 0);
    EXPECT_FALSE(DvnfLink::undefined.Target().IsValid());

    // A link asked from the wrong source or to the wrong target is not there.
    const DvnfCoreTypes& t = DvnfTRXTypes::_instance;
    EXPECT_FALSE(t.GetLinkType(S("ProcessHasCategory"), S("Program"), S("Category"), false).IsValid());
    EXPECT_FALSE(t.GetLinkType(S("ProcessHasCategory"), S("Process"), S("Person"), false).IsValid());
    // Asked from the undefined entity (a program activity whose file gave no
    // implementation object), a link is simply not there; a misspelt name
    // still stops the program.
    const DvnfEntityType& program = t.GetEntityType(S("Program"));
    const DvnfLinkType& fromNone = t.GetLinkType(S("ReferencesProgram"), u.Type(), program, true);
    EXPECT_FALSE(fromNone.IsValid());
    EXPECT_FALSE(u.FirstLinkOfType(fromNone).Target().IsValid());
    EXPECT_DEATH(t.GetLinkType(S("ReferencesProgramm"), u.Type(), program, true), "link type not in the catalogue");
}

TEST(Factories, BuildDiagramsWithLinkedConnectors) {
    DvnfTRXData data;
    DvnfEntity& p = data.CreateEntity(S("Process"), S("P"), S("Order"));
    DvnfAttributeData d = p.AttributeData()("Diagram");
    DvnfEntity& a1 = Named(data.CreateProgramActivityByOID(d, S("A1")), "Check");
    DvnfEntity& a2 = Named(data.CreateBlockActivityByOID(d, S("A2")), "Ship");
    DvnfEntity& a3 = Named(data.CreateInfoActivityByOID(d, S("A3")), "Note");
    DvnfEntity& src = Named(data.CreateSourceByOID(d, S("S1")), "1");
    DvnfEntity& c = data.CreateControlConnector(d, S("Check"), S("Ship"), nullptr);
    EXPECT_EQ(&c.FirstLinkOfType(S("ControlFromActivity")).Target(), &a1);
    EXPECT_EQ(&c.FirstLinkOfType(S("ControlToActivity")).Target(), &a2);
    data.CreateDefaultConnector(d, S("Ship"), S("Note"), "CC2");
    DvnfEntity& dc = data.CreateDataConnectorWithOID(d, S("1"), true, S("Check"), false, S("DC1"));
    EXPECT_EQ(&dc.FirstLinkOfType(S("DataFromSource")).Target(), &src);
    EXPECT_EQ(&dc.FirstLinkOfType(S("DataToActivity")).Target(), &a1);
    DvnfEntity& loop = data.CreateDataConnectorWithOID(d, S("Check"), false, S("DC2"));
    EXPECT_EQ(&loop.FirstLinkOfType(S("DataFromActivity")).Target(), &loop.FirstLinkOfType(S("DataToActivity")).Target());
    // A diagram read a second time keeps each object once, with its implementation.
    DvnfEntity& implBefore = a1.AttributeData()("Implementation")("AsProgram").AsEntity();
    EXPECT_EQ(&data.CreateProgramActivityByOID(d, S("A1")), &a1);
    EXPECT_EQ(&a1.AttributeData()("Implementation")("AsProgram").AsEntity(), &implBefore);
    EXPECT_EQ(d("Activities").NumberOfElements(), 3);
    EXPECT_EQ(&data.CreateDataConnectorWithOID(d, S("1"), true, S("Check"), false, S("DC1")), &dc);
    EXPECT_EQ(dc.Links().size(), 2u);

    // The cleaner drops connectors whose ends are gone, also inside blocks.
    DvnfAttributeData inner = a2.AttributeData()("Implementation")("AsBlock").AsEntity().AttributeData()("Diagram");
    Named(data.CreateInfoActivityByOID(inner, S("I1")), "In");
    data.CreateControlConnector(inner, S("In"), S("Gone"), nullptr);
    a3.State(DvnfObject::StateDeleted);
    DvnfProcessCleaner clean(data, nullptr);
    EXPECT_EQ(clean(p), 2);  // Ship->Note (Note deleted) and In->Gone
    EXPECT_EQ(d("ControlConnectors").NumberOfElements(), 1);
    EXPECT_EQ(d("DataConnectors").NumberOfElements(), 2);
}

// A reader that knows the name of one stored category by its key, as the
// database layer's reader would answer.
class KnownNames : public DvnfFrontendReader {
public:
    void ReadEntity(DvnfTRXData&, DvnfEntity&) override {}
    DvnfString GetName(DvnfEntity& e) override { return DvnfString(e.OID() == "C1" ? "Sales" : ""); }
};

TEST(Reader, CleanerNamesSkeletonsAndEmptyNamesMakeNothing) {
    DvnfTRXData data;
    DvnfEntity& p = data.CreateEntity(S("Process"), S("P"), S("Order"));
    data.AddLinkByOID(p, S("ProcessHasCategory"), S("Category"), S("C1"), true, true);
    data.AddLinkByOID(p, S("ProcessHasOrganization"), S("Organization"), S("O1"), true, true);
    KnownNames reader;
    DvnfProcessCleaner clean(data, &reader);
    EXPECT_EQ(clean(p), 0);
    EXPECT_EQ(&data.GetEntityByName(S("Category"), S("Sales")), &data.GetEntityByOID(S("Category"), S("C1")));
    EXPECT_TRUE(data.GetEntityByOID(S("Organization"), S("O1")).Name().IsEmpty());  // the reader knew no name

    // An empty name finds nothing and makes nothing.
    long count = data.NumberOfEntities();
    EXPECT_FALSE(data.AddLinkByName(p, S("ProcessHasRole"), S("Role"), S(""), true, true).IsValid());
    EXPECT_FALSE(data.GetEntityByName(S("System"), S(""), true).IsValid());
    EXPECT_EQ(data.NumberOfEntities(), count);
    // A link asked of an entity that is not valid makes no skeleton either.
    EXPECT_FALSE(data.AddLinkByOID(DvnfEntity::undefined, S("ProcessHasRole"), S("Role"), S("R9"), true, true).IsValid());
    EXPECT_EQ(data.NumberOfEntities(), count);
}

TEST(Keys, AreUniqueWithinAndAcrossProcesses) {
    // 32 characters, unique within a process and across processes.
    std::set<std::string> keys;
    for (int i = 0; i < 20000; ++i) keys.insert(DvnfObject::CreateOID().str());
    EXPECT_EQ(keys.size(), 20000u);
    EXPECT_EQ(keys.begin()->size(), 32u);
    // Upper-case hexadecimal: microseconds since 1970, process id, counter, salt.
    std::string k = DvnfObject::CreateOID().str();
    EXPECT_EQ(k.find_first_not_of("0123456789ABCDEF"), std::string::npos) << k;
    EXPECT_EQ(std::stoul(k.substr(14, 6), nullptr, 16), static_cast<unsigned long>(getpid()) & 0xFFFFFFu) << k;
    long long micros = std::stoll(k.substr(0, 14), nullptr, 16);
    long long now = std::chrono::duration_cast<std::chrono::microseconds>(
                        std::chrono::system_clock::now().time_since_epoch()).count();
    EXPECT_LT(std::llabs(now - micros), 60LL * 1000000) << k;
    int fds[2];
    ASSERT_EQ(pipe(fds), 0);
    pid_t child = fork();
    if (child == 0) _exit(write(fds[1], DvnfObject::CreateOID().str().data(), 32) == 32 ? 0 : 1);
    std::string mine = DvnfObject::CreateOID().str();
    char buf[33] = {};
    ASSERT_EQ(read(fds[0], buf, 32), 32);
    waitpid(child, nullptr, 0);
    close(fds[0]);
    close(fds[1]);
    EXPECT_NE(std::string(buf), mine);
}

// Keys of CreateOID's form are held as their bytes, other texts as they are:
// each comes back as it was given and finds only itself, also where a text
// has the very bytes of a packed key, and across new keys of either form.
TEST(Keys, ComeBackAsGivenAndFindOnlyThemselves) {
    DvnfTRXData data;
    const char* packed = "4142434445464748494A4B4C4D4E4F50";  // its bytes read "ABCDEFGHIJKLMNOP"
    const std::vector<const char*> keys = {packed, "ABCDEFGHIJKLMNOP", "4142434445464748494a4b4c4d4e4f50",
                                           "4142434445464748494A4B4C4D4E4F5", "4142434445464748494A4B4C4D4E4F500"};
    std::vector<DvnfEntity*> made;
    for (const char* k : keys) made.push_back(&data.CreateEntity(S("Role"), S(k), S(k)));
    for (size_t i = 0; i < keys.size(); ++i) {
        EXPECT_EQ(made[i]->OID().str(), keys[i]);
        EXPECT_EQ(&data.GetEntityByOID(S("Role"), S(keys[i])), made[i]) << keys[i];
    }
    // New keys: packed to text, text to packed, and back; the old key then finds nothing.
    made[0]->OID(S("R0"));
    made[1]->OID(S("00000000000000000000000000000001"));
    EXPECT_FALSE(data.GetEntityByOID(S("Role"), S(packed)).IsValid());
    EXPECT_FALSE(data.GetEntityByOID(S("Role"), S("ABCDEFGHIJKLMNOP")).IsValid());
    EXPECT_EQ(&data.GetEntityByOID(S("Role"), S("R0")), made[0]);
    EXPECT_EQ(&data.GetEntityByOID(S("Role"), S("00000000000000000000000000000001")), made[1]);
    EXPECT_EQ(made[1]->OID().str(), "00000000000000000000000000000001");
    made[0]->OID(S(packed));
    EXPECT_EQ(&data.GetEntityByOID(S("Role"), S(packed)), made[0]);
    EXPECT_TRUE(made[0]->HasOID());
    EXPECT_FALSE(data.GetEntityByName(S("Role"), S("None")).HasOID());
    EXPECT_FALSE(data.CreateEntity(S("Category"), S(""), S("Keyless")).OID().IsEmpty());  // a fresh key
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
            std::set<char> used, given;
            for (const char* p = text; *p; ++p)
                if (p[0] == '%' && p[1] >= '1' && p[1] <= '7') used.insert(p[1]);
            for (int a = 1; a <= arguments; ++a) given.insert(static_cast<char>('0' + a));
            EXPECT_EQ(used, given) << n << ": " << text;
        }
    }
    EXPECT_EQ(listed, 365u);
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
}

}  // namespace
