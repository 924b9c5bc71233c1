// The TRX language: round trips of every construct, error positions, files
// with errors change nothing, warnings, the reader for objects a file only
// names, states and flags of what a file defines, the corpus of the fuzzer.
#include "dvnfffdn.h"
#include "parsed.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <sstream>

namespace {

DvnfString S(const char* s) { return DvnfString(s); }

std::string ReadAll(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream s;
    s << in.rdbuf();
    return s.str();
}

// ---------------------------------------------------------------------------
// Structural equality of two core data: top-level entities by type and name,
// deep attributes, inner entities, links by type and target.

std::string Describe(const DvnfEntity& e, int depth);

std::string DescribeValue(const DvnfAttributeDataReader& r, int depth) {
    std::ostringstream o;
    switch (r.Type()) {
    case DvnfAttributeType::Long: o << "L" << r.AsLong(); break;
    case DvnfAttributeType::Bool: o << (r.AsBool() ? "T" : "F"); break;
    case DvnfAttributeType::String: o << "S[" << r.AsString().str() << "]"; break;
    case DvnfAttributeType::Entity: o << Describe(r.AsEntity(), depth + 1); break;
    case DvnfAttributeType::Group: {
        std::vector<std::string> names = r.Names();
        std::sort(names.begin(), names.end());
        o << "{";
        for (const auto& n : names) o << n << "=" << DescribeValue(r(n.c_str()), depth) << ";";
        o << "}";
        break;
    }
    case DvnfAttributeType::Set: {
        o << "[";
        DvnfDataSetIterator it = r.ElementsOfSet();
        for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next()) o << DescribeValue(e, depth) << ",";
        o << "]";
        break;
    }
    default: o << "?";
    }
    return o.str();
}

std::string Describe(const DvnfEntity& e, int depth) {
    std::ostringstream o;
    o << e.Type().Name().str() << "<" << e.Name().str() << ">";
    if (e.Type().IsTopLevel() && depth > 0) return o.str();  // a reference
    o << (e.State() == DvnfObject::StateDeleted ? "(deleted)" : "");
    o << DescribeValue(e.AttributeData(), depth);
    std::vector<std::string> links;
    for (const DvnfLink& l : e.Links())
        links.push_back(l.Type().Name().str() + "->" + l.Target().Type().Name().str() + ":" +
                        (l.Target().Name().IsEmpty() ? "#" + l.Target().OID().str() : l.Target().Name().str()));
    std::stable_sort(links.begin(), links.end());
    for (const auto& l : links) o << " " << l;
    return o.str();
}

std::vector<std::string> Content(const DvnfTRXData& d) {
    std::vector<std::string> out;
    for (const DvnfEntity* e : d.AllEntities())
        if (e->Type().IsTopLevel() && e->State() != DvnfObject::StateNone) out.push_back(Describe(*e, 0));
    std::sort(out.begin(), out.end());
    return out;
}

// ---------------------------------------------------------------------------

TEST(TrxRoundTrip, ExampleFileParsesAndWritesToAFixedPoint) {
    std::string path = std::string(DVN_SOURCE_DIR) + "/examples/order.trx";
    DvnfCollectingMessageHandler mh;
    DvnfTRXData data(DvnfTRXTypes::_instance, &mh);
    std::vector<DvnfEntity*> defined;
    std::string err;
    ASSERT_EQ(DvnTRXFrontend(data, nullptr).ReadFile(path.c_str(), 2, &defined, &err), DvnTRXGood) << err;
    EXPECT_EQ(defined.size(), 20u);
    EXPECT_EQ(mh.Count(DvnTRXMsgRead), 1u);

    std::string once = DvnTRXWriter(data).Write();
    Parsed again(once);
    ASSERT_EQ(again.rc, DvnTRXGood) << again.error;
    EXPECT_EQ(DvnTRXWriter(again.data).Write(), once);
    EXPECT_EQ(Content(again.data), Content(data));

    // Keys survive when they are written.
    DvnTRXWriter::Options withKeys;
    withKeys.withOIDs = true;
    std::string keyed = DvnTRXWriter(data, withKeys).Write();
    Parsed k(keyed);
    ASSERT_EQ(k.rc, DvnTRXGood) << k.error;
    EXPECT_EQ(DvnTRXWriter(k.data, withKeys).Write(), keyed);
    EXPECT_EQ(k.data.GetEntityByName(S("Process"), S("Order")).OID(), data.GetEntityByName(S("Process"), S("Order")).OID());
}

TEST(TrxRoundTrip, WhatTheFileSaysArrivesInTheCoreModel) {
    std::string path = std::string(DVN_SOURCE_DIR) + "/examples/order.trx";
    Parsed p(ReadAll(path));
    ASSERT_EQ(p.rc, DvnTRXGood) << p.error;
    DvnfTRXData& d = p.data;

    // States and flags of defined entities; deletion; skeletons of named-only objects.
    DvnfEntity& proc = d.GetEntityByName(S("Process"), S("Order"));
    EXPECT_EQ(proc.State(), DvnfObject::StateNew);
    EXPECT_EQ(proc.Flags(), 7u);
    EXPECT_EQ(d.GetEntityByName(S("Category"), S("Obsolete")).State(), DvnfObject::StateDeleted);
    DvnfEntity& invoice = d.GetEntityByName(S("Process"), S("Invoice"));
    EXPECT_TRUE(invoice.IsValid());
    EXPECT_EQ(invoice.State(), DvnfObject::StateNone);

    // Escapes, numbers, booleans, sets of texts, dotted server names.
    DvnfEntity& clerk = d.GetEntityByName(S("Person"), S("CLERK"));
    EXPECT_EQ(clerk.AttributeData()("LastName").AsString().str(), "O'Neil \"the clerk\"");
    EXPECT_EQ(d.GetEntityByName(S("Role"), S("Clerk")).AttributeData()("Description").AsString().str(),
              "Takes orders\nand ships them");
    EXPECT_EQ(d.GetEntityByName(S("Program"), S("checkord")).AttributeData()("WINNT")("PathAndFilename").AsString().str(),
              "C:\\orders\\check.exe");

    // The diagram: activities of each kind, blocks in blocks, connectors with their ends.
    DvnfAttributeDataReader diagram = static_cast<const DvnfEntity&>(proc).AttributeData()("Diagram");
    ASSERT_EQ(diagram("Activities").NumberOfElements(), 4);
    DvnfDataSetIterator acts = diagram("Activities").ElementsOfSet();
    DvnfEntity& check = acts.First().AsEntity();
    DvnfEntity& pack = acts.Next().AsEntity();
    EXPECT_EQ(check.Name().str(), "Check");
    EXPECT_EQ(check.State(), DvnfObject::StateNew);
    DvnfEntity& impl = check.AttributeData()("Implementation")("AsProgram").AsEntity();
    EXPECT_EQ(impl.Type().Name().str(), DvnfNames::ProgramImplementation);
    EXPECT_EQ(impl.FirstLinkOfType(S("ReferencesPEServer")).Target().Name().str(), "PES1.DVNSYS.SYS_GRP");
    EXPECT_EQ(&impl.FirstLinkOfType(S("ReferencesPEServer")).Target(),
              &d.GetEntityByName(S("Server"), S("PES1.DVNSYS.SYS_GRP")));
    DvnfEntity& block = pack.AttributeData()("Implementation")("AsBlock").AsEntity();
    DvnfEntity& inner = block.AttributeData()("Diagram")("Activities").ElementsOfSet().Next().AsEntity();
    DvnfEntity& innerBlock = inner.AttributeData()("Implementation")("AsBlock").AsEntity();
    EXPECT_EQ(innerBlock.AttributeData()("Diagram")("Activities").ElementsOfSet().First().AsEntity().Name().str(),
              "Label");
    DvnfEntity& cc = diagram("ControlConnectors").ElementsOfSet().First().AsEntity();
    EXPECT_EQ(&cc.FirstLinkOfType(S("ControlFromActivity")).Target(), &check);
    EXPECT_EQ(&cc.FirstLinkOfType(S("ControlToActivity")).Target(), &pack);
    DvnfEntity& blockCc = block.AttributeData()("Diagram")("ControlConnectors").ElementsOfSet().First().AsEntity();
    EXPECT_EQ(&blockCc.FirstLinkOfType(S("ControlToActivity")).Target(), &inner);
    DvnfEntity& dc = diagram("DataConnectors").ElementsOfSet().First().AsEntity();
    EXPECT_EQ(dc.FirstLinkOfType(S("DataFromSource")).Target().Type().Name().str(), "Source");

    // Members of a data structure are entities with names and links.
    DvnfEntity& shipTo = static_cast<const DvnfEntity&>(d.GetEntityByName(S("DataStructure"), S("OrderData")))
                             .AttributeData()("Members")
                             .ElementsOfSet()
                             .Next()
                             .AsEntity();
    EXPECT_EQ(shipTo.Name().str(), "ShipTo");
    EXPECT_EQ(&shipTo.FirstLinkOfType(S("HasSubStructure")).Target(),
              &d.GetEntityByName(S("DataStructure"), S("Address")));
}

TEST(TrxRoundTrip, DataBuiltAsALoadBuildsItComesBackEqual) {
    DvnfTRXData d;
    DvnfEntity& p = d.CreateEntity(S("Process"), S("P1"), S("Weird \"name\"\t"));
    p.State(DvnfObject::StateUnchanged);
    DvnfAttributeData a = p.AttributeData();
    a("Description") = "Ünïcödé ✓ and control \x01\x1f\x7f, back\\slash\r\n";
    a("RcCreation") = static_cast<long>(INT32_MIN);
    a("Icon") = "";
    a("NotifyDuration")("Seconds") = static_cast<long>(INT32_MAX);
    a("PromptAtProcessStart") = false;
    a("WindowLayout").MakeGroup();
    a("InputContainer")("Members").MakeSet();
    a("odd name")("with.dot") = 1;  // names outside the catalogue are kept, with a warning
    DvnfAttributeData diagram = a("Diagram");
    DvnfEntity& x = d.CreateProcessActivityByOID(diagram, S("A1"));
    x.Name(S("X"));
    DvnfEntity& y = d.CreateInfoActivityByOID(diagram, S("A2"));
    y.Name(S("Y"));
    d.CreateDefaultConnector(diagram, S("X"), S("Y"), nullptr);
    d.CreateDataConnectorWithOID(diagram, S("Y"), true, S("L1"));
    d.AddLinkByOID(x.AttributeData()("Implementation")("AsProcess").AsEntity(), S("ReferencesSystem"), S("System"),
                   S("SYSKEY"), true, true);
    d.AddLinkByOID(p, S("ProcessHasCategory"), S("Category"), S("C1"), true, true);
    d.AddLinkByName(p, S("ProcessHasRole"), S("Role"), S("R"), true, true);
    DvnfEntity& gone = d.CreateEntity(S("Program"), S("G"), S("Gone"));
    gone.State(DvnfObject::StateDeleted);

    std::string text = DvnTRXWriter(d).Write();
    Parsed back(text);
    ASSERT_LE(back.rc, DvnTRXWarnings) << back.error << "\n" << text;
    EXPECT_EQ(back.messages.Count(DvnTRXMsgUnknownAttr), 1u);  // "odd name", once for the whole group
    EXPECT_EQ(Content(back.data), Content(d)) << text;
    EXPECT_EQ(DvnTRXWriter(back.data).Write(), text);
    // The skeleton reached by key keeps its key; the one by name its name.
    DvnfEntity& sys = back.data.GetEntityByOID(S("System"), S("SYSKEY"));
    EXPECT_TRUE(sys.IsValid());
    EXPECT_EQ(sys.State(), DvnfObject::StateNone);
    EXPECT_TRUE(back.data.GetEntityByName(S("Role"), S("R")).OID().IsEmpty());
    // A selection writes just what it is given.
    std::vector<const DvnfEntity*> only{&gone};
    EXPECT_EQ(DvnTRXWriter(d).Write(only), "delete Program \"Gone\";\n");
}

// ---------------------------------------------------------------------------

TEST(TrxErrors, NameFileLineAndColumnAndChangeNothing) {
    struct Case {
        const char* text;
        const char* error;
    };
    const Case cases[] = {
        {"Category \"A\" {\n  Description = \"open\n}", "t.trx:2:22: error: line break inside a string (write \\n)"},
        {"Category \"A\" {\n  Description = \"x\\q\";\n}", "t.trx:2:19: error: unknown escape \\q"},
        {"Category \"A\" {\n  Description = \"x\"\n}", "t.trx:3:1: error: expected ';', found '}'"},
        {"Categry \"A\" {}", "t.trx:1:1: error: unknown entity type Categry."},
        {"Process \"P\" {\n  ProcessHasCat -> \"X\";\n}", "t.trx:2:3: error: link ProcessHasCat does not start at Process."},
        {"Role \"R\" {}\nRole \"R\" {}", "t.trx:2:1: error: Role R is defined twice."},
        {"Process \"P\" { Diagram { Activities [ Activity \"A\" {} ]\n ControlConnectors [ ControlConnector {\n"
         "   ControlFromActivity -> \"A\"; ControlToActivity -> \"B\"; } ] } }",
         "t.trx:3:32: error: link ControlToActivity: no B in this diagram."},
        {"Level \"1\" { Name = 2147483648; }", "t.trx:1:20: error: number out of the 32-bit range"},
        {"Activity \"A\" {}", "t.trx:1:1: error: Activity stands inside a diagram, not at the top level"},
        {"Process \"P\" { G { ProcessHasRole -> \"R\"; } }",
         "t.trx:1:19: error: link ProcessHasRole inside a group: links belong to entities"},
        {"Category \"Ä\" { Description = @; }", "t.trx:1:30: error: unexpected character '@'"},
        {"Category {}", "t.trx:1:10: error: expected the entity's name (a string), found '{'"},
        {"Process \"P\" { Description = 1; Description = 2; }", "t.trx:1:32: error: attribute Description is given twice"},
    };
    for (const Case& c : cases) {
        DvnfCollectingMessageHandler mh;
        DvnfTRXData d(DvnfTRXTypes::_instance, &mh);
        DvnfEntity& before = d.CreateEntity(S("Category"), S("K"), S("Kept"));
        before.AttributeData()("Description") = "old";
        before.State(DvnfObject::StateUnchanged);
        std::string text0 = DvnTRXWriter(d).Write();
        long count0 = d.NumberOfEntities();
        std::string err;
        EXPECT_EQ(DvnTRXFrontend(d, nullptr).ReadText(c.text, "t.trx", 2, nullptr, &err), DvnTRXFailed) << c.text;
        EXPECT_EQ(err, c.error) << c.text;
        EXPECT_EQ(d.NumberOfEntities(), count0) << c.text;
        EXPECT_EQ(DvnTRXWriter(d).Write(), text0) << c.text;
        EXPECT_EQ(before.State(), DvnfObject::StateUnchanged);
        EXPECT_EQ(mh.Count(DvnTRXMsgNotCommitted), 1u);
    }
    // Deep nesting is refused rather than crashing.
    std::string deep = "Process \"P\" {";
    for (int i = 0; i < 5000; ++i) deep += " A {";
    deep += std::string(5001, '}');
    Parsed p(deep);
    EXPECT_EQ(p.rc, DvnTRXFailed);
    EXPECT_NE(p.error.find("nesting too deep"), std::string::npos);

    DvnfCollectingMessageHandler mh;
    DvnfTRXData d(DvnfTRXTypes::_instance, &mh);
    EXPECT_EQ(DvnTRXFrontend(d, nullptr).ReadFile("/nonexistent/x.trx", 2, nullptr, nullptr), DvnTRXFailed);
    ASSERT_EQ(mh.Count(DvnTRXMsgCannotOpen), 1u);
    EXPECT_EQ(mh.Entries()[0].Line().str(), "52001: TRX file /nonexistent/x.trx cannot be opened.");
}

TEST(TrxWarnings, UnknownAttributesAndKindsWarnAndAcceptLevelDecides) {
    const char* text =
        "Category \"A\" {\n  Colour = \"red\";\n  Description = 5;\n}\n"
        "DataStructure \"D\" { Members [ \"notamember\" ] }";
    Parsed p(text);
    EXPECT_EQ(p.rc, DvnTRXWarnings);
    ASSERT_EQ(p.messages.Count(DvnTRXMsgUnknownAttr), 1u);
    ASSERT_EQ(p.messages.Count(DvnTRXMsgKindMismatch), 2u);
    for (const auto& e : p.messages.Entries()) {
        if (e.number == DvnTRXMsgUnknownAttr) {
            EXPECT_EQ(e.Line().str(), "52006: t.trx:2:12: warning: attribute Colour is not known for Category.");
        }
        if (e.number == DvnTRXMsgKindMismatch && e.args[1].str() == "3") {
            EXPECT_EQ(e.Line().str(), "52007: t.trx:3:17: warning: attribute Description should hold a string.");
        }
    }
    // Unknown attributes are kept; a value cannot stand for a member entity.
    DvnfEntity& a = p.data.GetEntityByName(S("Category"), S("A"));
    EXPECT_EQ(a.AttributeData()("Colour").AsString().str(), "red");
    EXPECT_EQ(a.AttributeData()("Description").AsLong(), 5);
    EXPECT_EQ(p.data.GetEntityByName(S("DataStructure"), S("D")).AttributeData()("Members").NumberOfElements(), 0);

    Parsed strict(text, 0);
    EXPECT_EQ(strict.rc, DvnTRXWarnings);
    EXPECT_FALSE(strict.data.GetEntityByName(S("Category"), S("A")).IsValid());
    EXPECT_EQ(strict.messages.Count(DvnTRXMsgNotCommitted), 1u);
}

// A reader over a fixed set of stored categories, as the database layer's
// reader would fill them.
class StoredCategories : public DvnfFrontendReader {
public:
    std::vector<std::string> asked;
    void ReadEntity(DvnfTRXData&, DvnfEntity& e) override {
        asked.push_back(e.Type().Name().str() + ":" + e.Name().str());
        if (e.Type().Name().str() == "Category" && e.Name().str() == "Stored") {
            e.AttributeData()("Description") = "from the store";
            e.State(DvnfObject::StateUnchanged);
        }
    }
};

TEST(TrxReader, IsAskedForWhatTheFileOnlyNames) {
    StoredCategories reader;
    Parsed p("Process \"P\" {\n"
             "  Diagram { Activities [ Activity \"A\" { Implementation { Type = 2;\n"
             "    AsProcess = ProcessImplementation { ReferencesProcess -> \"Q\"; } } } ] }\n"
             "  ProcessHasCategory -> \"Stored\";\n"
             "  ProcessHasRole -> \"Defined\";\n"
             "  ProcessHasOrganization -> \"Nowhere\";\n"
             "}\n"
             "Role \"Defined\" {}\n",
             2, &reader);
    EXPECT_EQ(p.rc, DvnTRXWarnings);
    std::sort(reader.asked.begin(), reader.asked.end());
    EXPECT_EQ(reader.asked, (std::vector<std::string>{"Category:Stored", "Organization:Nowhere", "Process:Q"}));
    DvnfEntity& stored = p.data.GetEntityByName(S("Category"), S("Stored"));
    EXPECT_EQ(stored.State(), DvnfObject::StateUnchanged);
    EXPECT_EQ(stored.AttributeData()("Description").AsString().str(), "from the store");
    EXPECT_EQ(p.messages.Count(DvnTRXMsgNotRead), 2u);  // Q and Nowhere stay skeletons
    // Without a reader nothing is asked and nothing is warned.
    Parsed none("Process \"P\" { ProcessHasCategory -> \"Stored\"; }");
    EXPECT_EQ(none.rc, DvnTRXGood);
}

TEST(TrxState, DefinitionsOverLoadedDataMarkChangesAndReplaceContent) {
    DvnfCollectingMessageHandler mh;
    DvnfTRXData d(DvnfTRXTypes::_instance, &mh);
    DvnfEntity& loaded = d.CreateEntity(S("Category"), S("CAT1"), S("Sales"));
    loaded.State(DvnfObject::StateUnchanged);
    loaded.AttributeData()("Documentation") = "old";
    DvnfEntity& other = d.CreateEntity(S("Process"), S("P0"), S("Other"));
    d.AddLinkByOID(other, S("ProcessHasCategory"), S("Category"), S("CAT1"), true, true);
    ASSERT_EQ(DvnTRXFrontend(d, nullptr).ReadText("Category \"Sales\" { Description = \"new\"; }\n"
                                                  "Category \"Fresh\" {}\n"
                                                  "delete Process \"Other\";\n",
                                                  "t.trx"),
              DvnTRXGood);
    EXPECT_EQ(&d.GetEntityByName(S("Category"), S("Sales")), &loaded);
    EXPECT_EQ(loaded.State(), DvnfObject::StateChanged);
    EXPECT_EQ(loaded.OID().str(), "CAT1");
    EXPECT_FALSE(loaded.AttributeData()("Documentation").IsValid());
    EXPECT_EQ(loaded.AttributeData()("Description").AsString().str(), "new");
    EXPECT_EQ(loaded.Flags(), 7u);
    EXPECT_EQ(d.GetEntityByName(S("Category"), S("Fresh")).State(), DvnfObject::StateNew);
    EXPECT_EQ(other.State(), DvnfObject::StateDeleted);
}

// Every file of the fuzzer's corpus: no crash, and what parses writes to a
// fixed point.
TEST(TrxCorpus, ReplaysWithoutCrashAndRoundTrips) {
    std::filesystem::path dir = std::filesystem::path(DVN_SOURCE_DIR) / "tests" / "dvnfffdn" / "corpus";
    ASSERT_TRUE(std::filesystem::is_directory(dir));
    int files = 0;
    for (const auto& f : std::filesystem::directory_iterator(dir)) {
        ++files;
        Parsed p(ReadAll(f.path().string()));
        if (p.rc > DvnTRXWarnings) continue;
        std::string once = DvnTRXWriter(p.data).Write();
        Parsed again(once);
        EXPECT_LE(again.rc, DvnTRXWarnings) << f.path() << ": " << again.error;
        EXPECT_EQ(DvnTRXWriter(again.data).Write(), once) << f.path();
    }
    EXPECT_GT(files, 0);
}

}  // namespace
