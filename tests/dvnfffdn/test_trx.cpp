// The TRX language: round trips, error positions (a file with errors changes
// nothing), warnings, the reader for what a file only names, definitions over
// loaded data, the fuzzer's corpus.
#include "dvnfffdn.h"
#include "parsed.h"

#include <gtest/gtest.h>

#include <climits>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <sstream>

namespace {

DvnfString S(const char* s) { return DvnfString(s); }

std::string ReadAll(const std::filesystem::path& path) {
    std::ifstream in(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(in), {}};
}

TEST(TrxRoundTrip, ExampleFileArrivesInTheCoreModelAndWritesToAFixedPoint) {
    DvnfCollectingMessageHandler mh;
    DvnfTRXData d(DvnfTRXTypes::_instance, &mh);
    std::vector<DvnfEntity*> defined;
    std::string err, path = std::string(DVN_SOURCE_DIR) + "/examples/order.trx";
    ASSERT_EQ(DvnTRXFrontend(d, nullptr).ReadFile(path.c_str(), 2, &defined, &err), DvnTRXGood) << err;
    EXPECT_EQ(defined.size(), 20u);
    EXPECT_EQ(mh.Count(DvnTRXMsgRead), 1u);

    // Links reach what the file defines; a connector in a block the activities of the block.
    DvnfEntity& proc = d.GetEntityByName(S("Process"), S("Order"));
    DvnfAttributeDataReader diagram = static_cast<const DvnfEntity&>(proc).AttributeData()("Diagram");
    DvnfDataSetIterator acts = diagram("Activities").ElementsOfSet();
    DvnfEntity& check = acts.First().AsEntity();
    DvnfEntity& pack = acts.Next().AsEntity();
    DvnfEntity& impl = check.AttributeData()("Implementation")("AsProgram").AsEntity();
    EXPECT_EQ(&impl.FirstLinkOfType(S("ReferencesPEServer")).Target(),
              &d.GetEntityByName(S("Server"), S("PES1.DVNSYS.SYS_GRP")));
    DvnfAttributeData block = pack.AttributeData()("Implementation")("AsBlock").AsEntity().AttributeData()("Diagram");
    DvnfEntity& blockCc = block("ControlConnectors").ElementsOfSet().First().AsEntity();
    EXPECT_EQ(&blockCc.FirstLinkOfType(S("ControlToActivity")).Target(),
              &block("Activities").ElementsOfSet().Next().AsEntity());

    // Written with keys, it reads back to the same text and the same keys.
    const DvnTRXWriter::Options withKeys{.withOIDs = true};
    std::string keyed = DvnTRXWriter(d, withKeys).Write();
    Parsed k(keyed);
    ASSERT_EQ(k.rc, DvnTRXGood) << k.error;
    EXPECT_EQ(DvnTRXWriter(k.data, withKeys).Write(), keyed);
    EXPECT_EQ(k.data.GetEntityByName(S("Process"), S("Order")).OID(), proc.OID());
}

TEST(TrxRoundTrip, DataBuiltAsALoadBuildsItComesBackEqual) {
    DvnfTRXData d;
    const char* name = "Weird \"name\"\t";
    const char* description = "Ünïcödé ✓ and control \x01\x1f\x7f, back\\slash\r\n";
    DvnfEntity& p = d.CreateEntity(S("Process"), S("P1"), S(name));
    p.State(DvnfObject::StateUnchanged);
    DvnfAttributeData a = p.AttributeData();
    a("Description") = description;
    a("RcCreation") = static_cast<long>(INT32_MIN);
    a("Icon") = "";
    a("NotifyDuration")("Seconds") = static_cast<long>(INT32_MAX);
    a("WindowLayout").MakeGroup();
    a("odd name")("with.dot") = 1;  // names outside the catalogue are kept, with a warning
    DvnfEntity& x = d.CreateProcessActivityByOID(a("Diagram"), S("A1"));
    x.Name(S("X"));
    d.AddLinkByOID(x.AttributeData()("Implementation")("AsProcess").AsEntity(), S("ReferencesSystem"), S("System"),
                   S("SYSKEY"), true, true);
    d.AddLinkByName(p, S("ProcessHasRole"), S("Role"), S("R"), true, true);
    DvnfEntity& gone = d.CreateEntity(S("Program"), S("G"), S("Gone"));
    gone.State(DvnfObject::StateDeleted);

    std::string text = DvnTRXWriter(d).Write();
    Parsed back(text);
    ASSERT_LE(back.rc, DvnTRXWarnings) << back.error << "\n" << text;
    EXPECT_EQ(back.messages.Count(DvnTRXMsgUnknownAttr), 1u);  // "odd name", once for the whole group
    EXPECT_EQ(DvnTRXWriter(back.data).Write(), text);
    const DvnfEntity& q = back.data.GetEntityByName(S("Process"), S(name));
    EXPECT_EQ(q.AttributeData()("Description").AsString().str(), description);
    EXPECT_EQ(q.AttributeData()("RcCreation").AsLong(), INT32_MIN);
    EXPECT_EQ(q.AttributeData()("NotifyDuration")("Seconds").AsLong(), INT32_MAX);
    EXPECT_EQ(q.AttributeData()("Icon").Type(), DvnfAttributeType::String);
    // The skeleton reached by key keeps its key; the one by name its name.
    EXPECT_EQ(back.data.GetEntityByOID(S("System"), S("SYSKEY")).State(), DvnfObject::StateNone);
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
        // Twice by name whatever the keys, or one key under two names; a
        // definition may take the place of a mere mention.
        {"Role \"R\" oid \"K1\" {}\nRole \"R\" oid \"K2\" {}", "t.trx:2:1: error: Role R is defined twice."},
        {"Role \"R\" oid \"K\" {}\nRole \"S\" oid \"K\" {}", "t.trx:2:1: error: Role S is defined twice."},
        {"Process \"P\" { ProcessHasRole -> \"R\"; ProcessHasCategory -> oid \"K\"; }\nRole \"R\" {}\n"
         "Category \"C\" oid \"K\" {}\nCategory \"C\" {}",
         "t.trx:4:1: error: Category C is defined twice."},
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
        {"Process \"P\" { A1=1; A2=1; A3=1; A4=1; A5=1; A6=1; A7=1; A8=1; A9=1; B1=1; B2=1; B3=1; B4=1; B5=1;\n"
         "  B6=1; B7=1; B8=1; A5=2; }",
         "t.trx:2:21: error: attribute A5 is given twice"},
        // Text that is not UTF-8, wherever it stands; the place is that of the
        // character the bad byte begins or breaks.
        {"Category \"Caf\xE9\" {}", "t.trx:1:14: error: text is not UTF-8: byte 0xE9"},
        {"Category \"A\" {\n  Description = \"\xC3\x9Cn\xE9\";\n}", "t.trx:2:20: error: text is not UTF-8: byte 0xE9"},
        {"# caf\xE9 au lait\nCategory \"A\" {}", "t.trx:1:6: error: text is not UTF-8: byte 0xE9"},
        {"Category \"A\" { Description = \"\xC0\xAF\"; }", "t.trx:1:31: error: text is not UTF-8: byte 0xC0"},
        {"Category \"A\" { Description = \"\xE0\x80\xAF\"; }", "t.trx:1:31: error: text is not UTF-8: byte 0xE0"},
        {"Category \"A\" { Description = \"\xED\xA0\x80\"; }", "t.trx:1:31: error: text is not UTF-8: byte 0xED"},
        {"Category \"A\" { Description = \"\xF4\x90\x80\x80\"; }", "t.trx:1:31: error: text is not UTF-8: byte 0xF4"},
        {"Category \"A\" { Description = \"ok\x80\"; }", "t.trx:1:33: error: text is not UTF-8: byte 0x80"},
        {"Category \"A\" { Description = \"\xE2\x82x\"; }", "t.trx:1:31: error: text is not UTF-8: byte 0xE2"},
        {"Category \"A\" { Description = \"x\xE2\x82", "t.trx:1:32: error: text is not UTF-8: byte 0xE2"},
        {"Category \"A\" { Description = \"a\\xE9b\"; }", "t.trx:1:32: error: text is not UTF-8: byte 0xE9"},
        {"Category \"A\" { Description = \"\\xC3\\x28\"; }", "t.trx:1:31: error: text is not UTF-8: byte 0xC3"},
        // A byte-order mark is taken at the very start only; columns count after it.
        {"\xEF\xBB\xBF" "Categry \"A\" {}", "t.trx:1:1: error: unknown entity type Categry."},
        {"\xEF\xBB\xBF\xEF\xBB\xBF" "Category \"A\" {}", "t.trx:1:1: error: unexpected character 0xEF"},
        {"Category \"A\" {}\n  \xEF\xBB\xBF" "Category \"B\" {}", "t.trx:2:3: error: unexpected character 0xEF"},
        // Definitions are built while the text is parsed, yet a syntax error
        // after an error of the build is the one reported, and errors of the
        // build come before those of the links, as for a file read whole.
        {"Role \"R\" {}\nRole \"R\" {}\nCategory \"C\" { Description = ; }",
         "t.trx:3:30: error: expected a value (number, true, false, string, '{', '[' or an entity), found ';'"},
        {"Process \"P\" { Diagram { ControlConnectors [ ControlConnector { ControlFromActivity -> \"A\"; } ] } }\n"
         "Role \"R\" {}\nRole \"R\" {}",
         "t.trx:3:1: error: Role R is defined twice."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.text);
        DvnfCollectingMessageHandler mh;
        DvnfTRXData d(DvnfTRXTypes::_instance, &mh);
        DvnfEntity& before = d.CreateEntity(S("Category"), S("K"), S("Kept"));
        before.AttributeData()("Description") = "old";
        before.State(DvnfObject::StateUnchanged);
        const std::string text0 = DvnTRXWriter(d).Write();
        std::string err;
        EXPECT_EQ(DvnTRXFrontend(d, nullptr).ReadText(c.text, "t.trx", 2, nullptr, &err), DvnTRXFailed);
        EXPECT_EQ(err, c.error);
        EXPECT_EQ(d.NumberOfEntities(), 1);
        EXPECT_EQ(DvnTRXWriter(d).Write(), text0);
        EXPECT_EQ(before.State(), DvnfObject::StateUnchanged);
        EXPECT_EQ(mh.Count(DvnTRXMsgNotCommitted), 1u);
    }
    // Deep nesting is refused rather than crashing.
    std::string deep = "Process \"P\" {";
    for (int i = 0; i < 5000; ++i) deep += " A {";
    Parsed p(deep + std::string(5001, '}'));
    EXPECT_EQ(p.rc, DvnTRXFailed);
    EXPECT_NE(p.error.find("nesting too deep"), std::string::npos);

    DvnfCollectingMessageHandler mh;
    DvnfTRXData d(DvnfTRXTypes::_instance, &mh);
    EXPECT_EQ(DvnTRXFrontend(d, nullptr).ReadFile("/nonexistent/x.trx", 2, nullptr, nullptr), DvnTRXFailed);
    ASSERT_EQ(mh.Count(DvnTRXMsgCannotOpen), 1u);
    EXPECT_EQ(mh.Entries()[0].Line().str(), "52001: TRX file /nonexistent/x.trx cannot be opened.");
}

TEST(TrxEncoding, UTF8TextIsKeptByteForByteAfterAnOptionalByteOrderMark) {
    // Two, three and four bytes, the edges of the ranges, a BOM inside a
    // string (a character like any other there), and escaped bytes that make
    // a character together.
    const std::string name = "Caf\xC3\xA9 \xE2\x9C\x93 \xF0\x9F\x98\x80";
    const std::string chars = "\xC2\x80 \xDF\xBF \xE0\xA0\x80 \xED\x9F\xBF \xEE\x80\x80 \xEF\xBB\xBF "
                              "\xF0\x90\x80\x80 \xF4\x8F\xBF\xBF ", text = chars + "\xC3\xA9";
    const std::string file = "\xEF\xBB\xBF# \xC3\xBC" "ber\nCategory \"" + name + "\" {\n  Description = \"" +
                             chars + "\\xC3\\xA9\";\n}\n";
    Parsed p(file);
    ASSERT_EQ(p.rc, DvnTRXGood) << p.error;
    DvnfEntity& c = p.data.GetEntityByName(S("Category"), DvnfString(name));
    ASSERT_TRUE(c.IsValid());
    EXPECT_EQ(c.AttributeData()("Description").AsString().str(), text);
    // The writer gives the characters back as they are, and they read again.
    std::string written = DvnTRXWriter(p.data).Write();
    EXPECT_NE(written.find(text), std::string::npos);
    Parsed again(written);
    EXPECT_EQ(again.rc, DvnTRXGood) << again.error;
    EXPECT_EQ(DvnTRXWriter(again.data).Write(), written);
    // Without the mark the same file reads the same; columns count characters.
    Parsed bare(file.substr(3) + "Category \"\xC3\xA9\" { Description = @; }");
    EXPECT_EQ(bare.error, "t.trx:5:30: error: unexpected character '@'");
}

TEST(TrxWarnings, UnknownAttributesAndKindsWarnAndAcceptLevelDecides) {
    const char* text =
        "Category \"A\" {\n  Colour = \"red\";\n  Description = 5;\n}\n"
        "DataStructure \"D\" { Members [ \"notamember\" ] }";
    const std::vector<std::string> warnings{
        "52006: t.trx:2:12: warning: attribute Colour is not known for Category.",
        "52007: t.trx:3:17: warning: attribute Description should hold a string.",
        "52007: t.trx:5:31: warning: attribute Members[] should hold an entity."};
    Parsed p(text);
    EXPECT_EQ(p.rc, DvnTRXWarnings);
    EXPECT_EQ(p.Remarks(), warnings);
    // Unknown attributes are kept; a value cannot stand for a member entity.
    DvnfEntity& a = p.data.GetEntityByName(S("Category"), S("A"));
    EXPECT_EQ(a.AttributeData()("Colour").AsString().str(), "red");
    EXPECT_EQ(a.AttributeData()("Description").AsLong(), 5);
    EXPECT_EQ(p.data.GetEntityByName(S("DataStructure"), S("D")).AttributeData()("Members").NumberOfElements(), 0);

    // Asked to take no warnings, the file changes nothing.
    Parsed strict(text, 0);
    EXPECT_EQ(strict.rc, DvnTRXWarnings);
    EXPECT_FALSE(strict.data.GetEntityByName(S("Category"), S("A")).IsValid());
    EXPECT_EQ(strict.Remarks().back(), "52011: TRX file t.trx not taken (result 2); nothing was changed.");
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

// The example file followed by many definitions (more nodes than one block
// of the parser's memory holds) whose names and link targets are escaped
// strings, linked backwards and forwards: read into empty data and into data
// that holds an entity already, it arrives alike, every link finds the entity
// the file defines, and every entity answers to the data it was read into, so
// what is made for it later (a member of a structure) is made there too.
TEST(TrxState, EmptyAndLoadedDataReadALargeFileAlikeAndOwnWhatItDefines) {
    const int n = 600;
    std::ostringstream text;
    text << ReadAll(std::string(DVN_SOURCE_DIR) + "/examples/order.trx") << "\n";
    for (int i = 0; i < n; ++i) {
        text << "DataStructure \"S\\x41\\t" << i << "\" {\n  Members [\n";
        for (int m = 0; m < 5; ++m)
            text << "    DataStructureMember \"M" << m << "\" { Name = \"n\\\"" << m << "\"; Type = 4;"
                 << " HasSubStructure -> \"S\\x41\\t" << (i + m) % n << "\"; }\n";
        text << "  ]\n}\n";
    }
    DvnfCollectingMessageHandler mh;
    DvnfTRXData empty(DvnfTRXTypes::_instance, &mh), loaded(DvnfTRXTypes::_instance, &mh);
    loaded.CreateEntity(S("Category"), S("K"), S("Kept")).State(DvnfObject::StateUnchanged);
    std::vector<DvnfEntity*> defined, definedLoaded;
    ASSERT_EQ(DvnTRXFrontend(empty, nullptr).ReadText(text.str(), "t.trx", 2, &defined, nullptr), DvnTRXGood);
    ASSERT_EQ(DvnTRXFrontend(loaded, nullptr).ReadText(text.str(), "t.trx", 2, &definedLoaded, nullptr), DvnTRXGood);
    EXPECT_EQ(defined.size(), definedLoaded.size());
    EXPECT_EQ(empty.NumberOfEntities() + 1, loaded.NumberOfEntities());
    for (DvnfTRXData* d : {&empty, &loaded}) {
        EXPECT_EQ(d->GetEntities(S("DataStructure")).size(), n + 2u);  // the example's two, no skeletons
        for (DvnfEntity* e : d->AllEntities()) ASSERT_EQ(e->CoreData(), d);
        DvnfEntity& s7 = d->GetEntityByName(S("DataStructure"), S("SA\t7"));
        ASSERT_TRUE(s7.IsValid());
        DvnfDataSetIterator it = s7.AttributeData()("Members").ElementsOfSet();
        int m = 0;
        for (DvnfAttributeDataReader e = it.First(); e.IsValid(); e = it.Next(), ++m) {
            EXPECT_EQ(e.AsEntity().AttributeData()("Name").AsString().str(), "n\"" + std::to_string(m));
            EXPECT_EQ(e.AsEntity().FirstLinkOfType(S("HasSubStructure")).Target().Name().str(),
                      "SA\t" + std::to_string(7 + m));
        }
        EXPECT_EQ(m, 5);
    }
    for (DvnfEntity* e : defined) EXPECT_EQ(e->CoreData(), &empty);
    std::string fromLoaded = DvnTRXWriter(loaded).Write(), kept = "Category \"Kept\" {}\n\n";
    ASSERT_NE(fromLoaded.find(kept), std::string::npos);
    EXPECT_EQ(DvnTRXWriter(empty).Write(), fromLoaded.erase(fromLoaded.find(kept), kept.size()));

    long before = empty.NumberOfEntities();
    DvnfEntity& ds = empty.GetEntityByName(S("DataStructure"), S("OrderData"));
    EXPECT_EQ(ds.AttributeData()("Members").NewSetElement().AsEntity().CoreData(), &empty);
    EXPECT_EQ(empty.NumberOfEntities(), before + 1);
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
