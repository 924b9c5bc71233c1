// The whole vocabulary (tests/dvnfffdn/vocabulary.txt) written as TRX: one
// entity of every type holding every attribute path of its type and every
// link from it. It must read without a warning, every path must arrive with
// its kind and value, every link with its target type, and the text must
// survive the writer unchanged.
#include "dvnfffdn.h"
#include "parsed.h"

#include <gtest/gtest.h>

#include <fstream>
#include <map>
#include <set>
#include <sstream>

namespace {

// One node of the attribute tree of a type: a leaf carries a kind; "[]"
// under a set holds the attributes of its elements.
struct Node {
    std::string kind;  // "long", "bool", "text", "texts", "elements [TYPE]", "entity TYPE"; "" for a group
    std::vector<std::string> order;
    std::map<std::string, Node> kids;
    Node& Kid(const std::string& name) {
        if (!kids.count(name)) order.push_back(name);
        return kids[name];
    }
};

struct TypeVocabulary {
    std::vector<std::pair<std::string, std::string>> paths;  // path, kind
    std::vector<std::pair<std::string, std::string>> links;  // link, target type
    Node tree;     // every path that is not also the prefix of another one
    Node variant;  // the others: a path that is a value in one reading and a group in another
};

// The i-th word of a kind ("elements Activity": 0 "elements", 1 "Activity"), or "".
std::string Word(const std::string& kind, int i) {
    std::istringstream s(kind);
    std::string w;
    for (int k = 0; k <= i; ++k) {
        w.clear();
        s >> w;
    }
    return w;
}

void Insert(Node& root, const std::string& path, const std::string& kind) {
    Node* n = &root;
    size_t from = 0;
    while (true) {
        size_t dot = path.find('.', from);
        std::string seg = path.substr(from, dot == std::string::npos ? std::string::npos : dot - from);
        bool element = seg.size() > 2 && seg.compare(seg.size() - 2, 2, "[]") == 0;
        if (element) seg.resize(seg.size() - 2);
        n = &n->Kid(seg);
        if (element) n = &n->Kid("[]");
        if (dot == std::string::npos) break;
        from = dot + 1;
    }
    n->kind = kind;
}

std::map<std::string, TypeVocabulary> ReadVocabulary() {
    std::ifstream in(std::string(DVN_SOURCE_DIR) + "/tests/dvnfffdn/vocabulary.txt");
    EXPECT_TRUE(in.good());
    std::map<std::string, TypeVocabulary> v;
    std::vector<std::string> current;
    std::string line;
    while (std::getline(in, line)) {
        if (line.empty() || line[0] == '#') continue;
        std::istringstream s(line);
        std::string first, second;
        s >> first;
        if (first == "type") {
            current.clear();
            while (s >> second) current.push_back(second);
            continue;
        }
        std::string rest;
        std::getline(s >> std::ws, rest);
        for (const std::string& t : current) {
            if (first == "link") v[t].links.emplace_back(Word(rest, 0), Word(rest, 1));
            else v[t].paths.emplace_back(first, rest);
        }
    }
    for (auto& [type, tv] : v) {
        std::set<std::string> prefixes;
        for (const auto& [p, k] : tv.paths)
            for (size_t i = p.find('.'); i != std::string::npos; i = p.find('.', i + 1)) prefixes.insert(p.substr(0, i));
        for (const auto& [p, k] : tv.paths) Insert(prefixes.count(p) ? tv.variant : tv.tree, p, k);
    }
    return v;
}

// The value every path is given: fixed by the path, so a check knows it.
long LongOf(const std::string& path) {
    unsigned long h = 5381;
    for (char c : path) h = h * 33 + static_cast<unsigned char>(c);
    return static_cast<long>(h % 2000000) - 1000000;
}
bool BoolOf(const std::string& path) { return path.size() % 2 == 1; }
std::string TextOf(const std::string& path) { return "\"" + path + "\" ✓\n"; }

// Names of the inner entities and of link targets.
std::string NameFor(const std::string& type) {
    if (type == "Activity") return "A";
    if (type == "Source" || type == "Sink") return "1";
    return "T";
}

class Vocabulary {
public:
    Vocabulary() : _v(ReadVocabulary()) {
        for (const auto& [type, tv] : _v)
            for (const auto& [p, k] : tv.paths)
                if (Word(k, 0) == "entity" || (Word(k, 0) == "elements" && !Word(k, 1).empty()))
                    _inner.insert(Word(k, 1));
    }
    const std::map<std::string, TypeVocabulary>& Types() const { return _v; }
    bool IsInner(const std::string& type) const { return _inner.count(type) != 0; }

    // The TRX text: entity "A" of every top-level type, and "B" with the
    // paths that take a second reading.
    std::string Text() const {
        std::ostringstream o;
        for (const auto& [type, tv] : _v) {
            if (IsInner(type)) continue;
            o << type << " \"A\" {\n";
            Body(o, type, tv.tree, true, true, "", 1);
            o << "}\n";
            if (!tv.variant.order.empty()) {
                o << type << " \"B\" {\n";
                Body(o, type, tv.variant, true, false, "", 1);
                o << "}\n";
            }
        }
        return o.str();
    }

    // Every path of every top-level entity and of the inner ones it holds.
    void Check(DvnfTRXData& data) const {
        for (const auto& [type, tv] : _v) {
            if (IsInner(type)) continue;
            const DvnfEntity& a = data.GetEntityByName(DvnfString(type.c_str()), DvnfString("A"));
            ASSERT_TRUE(a.IsValid()) << type;
            CheckEntity(type, a, tv.tree, true, true);
            if (!tv.variant.order.empty()) {
                const DvnfEntity& b = data.GetEntityByName(DvnfString(type.c_str()), DvnfString("B"));
                ASSERT_TRUE(b.IsValid()) << type;
                CheckEntity(type, b, tv.variant, true, false);
            }
        }
        for (const auto& [type, tv] : _v)
            EXPECT_TRUE(_checked.count(type)) << type << " was never reached";
    }

private:
    static void Indent(std::ostringstream& o, int depth) { o << std::string(2 * static_cast<size_t>(depth), ' '); }

    void Body(std::ostringstream& o, const std::string& type, const Node& n, bool topLevel, bool withLinks,
              const std::string& prefix, int depth) const {
        for (const std::string& name : n.order) {
            const Node& k = n.kids.at(name);
            const std::string path = prefix + name;
            const std::string w = Word(k.kind, 0), t = Word(k.kind, 1);
            Indent(o, depth);
            if (w == "long") o << name << " = " << LongOf(path) << ";\n";
            else if (w == "bool") o << name << " = " << (BoolOf(path) ? "true" : "false") << ";\n";
            else if (w == "text") o << name << " = " << DvnTRXWriter::Quote(TextOf(path)) << ";\n";
            else if (w == "texts")
                o << name << " [ " << DvnTRXWriter::Quote(TextOf(path + "#1")) << ", "
                  << DvnTRXWriter::Quote(TextOf(path + "#2")) << " ]\n";
            else if (w == "entity") {
                o << name << " = " << t << " {\n";
                EntityBody(o, t, depth + 1);
                Indent(o, depth);
                o << "}\n";
            } else if (w == "elements") {
                o << name << " [\n";
                if (!t.empty() && topLevel) {  // entities stand in the diagram of a top-level entity only
                    Indent(o, depth + 1);
                    o << t << " \"" << NameFor(t) << "\" {\n";
                    EntityBody(o, t, depth + 2);
                    Indent(o, depth + 1);
                    o << "}\n";
                } else if (t.empty() && k.kids.count("[]")) {
                    Indent(o, depth + 1);
                    o << "{\n";
                    Body(o, type, k.kids.at("[]"), topLevel, false, path + "[].", depth + 2);
                    Indent(o, depth + 1);
                    o << "}\n";
                }
                Indent(o, depth);
                o << "]\n";
            } else {
                o << name << " {\n";
                Body(o, type, k, topLevel, false, path + ".", depth + 1);
                Indent(o, depth);
                o << "}\n";
            }
        }
        if (!withLinks) return;
        for (const auto& [link, target] : _v.at(type).links) {
            Indent(o, depth);
            o << link << " -> \"" << NameFor(target) << "\";\n";
        }
    }

    void EntityBody(std::ostringstream& o, const std::string& type, int depth) const {
        Body(o, type, _v.at(type).tree, false, true, "", depth);
    }

    void CheckEntity(const std::string& type, const DvnfEntity& e, const Node& tree, bool topLevel,
                     bool withLinks) const {
        _checked.insert(type);
        EXPECT_EQ(e.Type().Name().str(), type);
        CheckNode(type, e.AttributeData(), tree, topLevel, "");
        if (!withLinks) return;
        for (const auto& [link, target] : _v.at(type).links) {
            const DvnfLink& l = e.FirstLinkOfType(DvnfString(link.c_str()));
            ASSERT_TRUE(l.IsValid()) << type << " " << link;
            EXPECT_EQ(l.Target().Type().Name().str(), target) << type << " " << link;
            EXPECT_EQ(l.Target().Name().str(), NameFor(target)) << type << " " << link;
        }
    }

    void CheckNode(const std::string& type, const DvnfAttributeDataReader& r, const Node& n, bool topLevel,
                   const std::string& prefix) const {
        for (const std::string& name : n.order) {
            const Node& k = n.kids.at(name);
            const std::string path = prefix + name;
            const std::string w = Word(k.kind, 0), t = Word(k.kind, 1);
            const DvnfAttributeDataReader a = r(name.c_str());
            const std::string at = type + " " + path;
            if (w == "long") {
                EXPECT_EQ(a.Type(), DvnfAttributeType::Long) << at;
                EXPECT_EQ(a.AsLong(), LongOf(path)) << at;
            } else if (w == "bool") {
                EXPECT_EQ(a.Type(), DvnfAttributeType::Bool) << at;
                EXPECT_EQ(a.AsBool(!BoolOf(path)), BoolOf(path)) << at;
            } else if (w == "text") {
                EXPECT_EQ(a.Type(), DvnfAttributeType::String) << at;
                EXPECT_EQ(a.AsString().str(), TextOf(path)) << at;
            } else if (w == "texts") {
                ASSERT_EQ(a.Type(), DvnfAttributeType::Set) << at;
                ASSERT_EQ(a.NumberOfElements(), 2) << at;
                DvnfDataSetIterator it = a.ElementsOfSet();
                DvnfAttributeDataReader e1 = it.First(), e2 = it.Next();
                EXPECT_EQ(e1.Type(), DvnfAttributeType::String) << at;
                EXPECT_EQ(e1.AsString().str(), TextOf(path + "#1")) << at;
                EXPECT_EQ(e2.AsString().str(), TextOf(path + "#2")) << at;
            } else if (w == "entity") {
                ASSERT_EQ(a.Type(), DvnfAttributeType::Entity) << at;
                CheckEntity(t, a.AsEntity(), _v.at(t).tree, false, true);
            } else if (w == "elements") {
                ASSERT_EQ(a.Type(), DvnfAttributeType::Set) << at;
                if (!t.empty() && topLevel) {
                    ASSERT_EQ(a.NumberOfElements(), 1) << at;
                    DvnfAttributeDataReader e = a.ElementsOfSet().First();
                    ASSERT_EQ(e.Type(), DvnfAttributeType::Entity) << at;
                    EXPECT_EQ(e.AsEntity().Name().str(), NameFor(t)) << at;
                    CheckEntity(t, e.AsEntity(), _v.at(t).tree, false, true);
                } else if (t.empty() && k.kids.count("[]")) {
                    ASSERT_EQ(a.NumberOfElements(), 1) << at;
                    DvnfAttributeDataReader e = a.ElementsOfSet().First();
                    EXPECT_EQ(e.Type(), DvnfAttributeType::Group) << at;
                    CheckNode(type, e, k.kids.at("[]"), topLevel, path + "[].");
                } else {
                    EXPECT_EQ(a.NumberOfElements(), 0) << at;
                }
            } else {
                EXPECT_EQ(a.Type(), DvnfAttributeType::Group) << at;
                CheckNode(type, a, k, topLevel, path + ".");
            }
        }
    }

    std::map<std::string, TypeVocabulary> _v;
    std::set<std::string> _inner;
    mutable std::set<std::string> _checked;
};

TEST(TrxVocabulary, EveryPathAndLinkReadsBackInItsKindAndSurvivesTheWriter) {
    Vocabulary v;
    ASSERT_EQ(v.Types().size(), 31u);
    const std::string text = v.Text();
    Parsed first(text);
    ASSERT_LE(first.rc, DvnTRXWarnings) << first.error;
    EXPECT_EQ(first.Remarks(), std::vector<std::string>{});
    EXPECT_EQ(first.rc, DvnTRXGood);
    v.Check(first.data);

    const std::string written = DvnTRXWriter(first.data).Write();
    Parsed second(written);
    ASSERT_LE(second.rc, DvnTRXWarnings) << second.error;
    EXPECT_EQ(second.Remarks(), std::vector<std::string>{});
    EXPECT_EQ(second.rc, DvnTRXGood);
    v.Check(second.data);
    EXPECT_EQ(DvnTRXWriter(second.data).Write(), written);
}

// The catalogue answers for every link from the type that carries it, so a
// store that asks for a link from an inner object (a member, an
// implementation object, a connector) finds it; and every path has the kind
// the vocabulary gives it.
TEST(TrxVocabulary, CatalogueKnowsEveryPathAndLinkFromItsType) {
    Vocabulary v;
    const DvnfCoreTypes& types = DvnfTRXTypes::_instance;
    for (const auto& [type, tv] : v.Types()) {
        const DvnfEntityType& et = types.GetEntityType(DvnfString(type.c_str()), false);
        ASSERT_TRUE(et.IsValid()) << type;
        EXPECT_EQ(et.IsTopLevel(), !v.IsInner(type)) << type;
        for (const auto& [link, target] : tv.links) {
            const DvnfEntityType& to = types.GetEntityType(DvnfString(target.c_str()), false);
            EXPECT_TRUE(types.GetLinkType(DvnfString(link.c_str()), et, to, false).IsValid())
                << type << " " << link << " " << target;
        }
        for (const auto& [path, kind] : tv.paths) {
            const std::string w = Word(kind, 0);
            DvnfAttributeType k = w == "long"     ? DvnfAttributeType::Long
                                  : w == "bool"   ? DvnfAttributeType::Bool
                                  : w == "text"   ? DvnfAttributeType::String
                                  : w == "entity" ? DvnfAttributeType::Entity
                                                  : DvnfAttributeType::Set;
            EXPECT_TRUE(et.AcceptsKind(path, k)) << type << " " << path;
            if (w == "elements" && !Word(kind, 1).empty()) {
                EXPECT_EQ(et.SetElementType(path).Name().str(), Word(kind, 1)) << type << " " << path;
            }
        }
    }
}

}  // namespace
