// The whole vocabulary (tests/dvnfffdn/vocabulary.txt) written as TRX: one
// entity of every type holding every attribute path of its type and every
// link from it. It must read without a remark (so every path is known in its
// kind and every link from its type), the writer must give back the same
// lines in its own order, and its text must survive the writer unchanged.
#include "dvnfffdn.h"
#include "parsed.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <iterator>
#include <map>
#include <set>
#include <sstream>

namespace {

// One node of the attribute tree of a type: a leaf carries a kind ("long",
// "bool", "text", "texts", "elements", "entity") and, for entities, their
// type; "[]" under a set holds the attributes of its elements.
struct Node {
    std::string kind, type;
    std::vector<std::string> order;
    std::map<std::string, Node> kids;
    Node& Kid(const std::string& name) {
        if (!kids.count(name)) order.push_back(name);
        return kids[name];
    }
    Node& At(const std::string& path) {  // made as needed
        Node* n = this;
        std::istringstream segments(path);
        for (std::string seg; std::getline(segments, seg, '.');)
            n = seg.ends_with("[]") ? &n->Kid(seg.substr(0, seg.size() - 2)).Kid("[]") : &n->Kid(seg);
        return *n;
    }
};

struct TypeVocabulary {
    std::vector<std::pair<std::string, std::string>> links;  // link, target type
    Node tree;     // every path that is not also the prefix of another one
    Node variant;  // the others: a path that is a value in one reading and a group in another
    bool inner = false;  // held by an attribute of another type, never at the top level
};

std::map<std::string, TypeVocabulary> ReadVocabulary() {
    std::ifstream in(std::string(DVN_SOURCE_DIR) + "/tests/dvnfffdn/vocabulary.txt");
    EXPECT_TRUE(in.good());
    std::map<std::string, std::vector<std::vector<std::string>>> lines;  // type: its lines, split in words
    std::vector<std::string> current;
    for (std::string line; std::getline(in, line);) {
        std::istringstream s(line);
        std::vector<std::string> words{std::istream_iterator<std::string>(s), {}};
        if (words.empty() || words[0][0] == '#') continue;
        words.resize(std::max<size_t>(words.size(), 3));
        if (words[0] == "type") current.assign(words.begin() + 1, words.end());
        else
            for (const std::string& t : current)
                if (!t.empty()) lines[t].push_back(words);
    }
    std::map<std::string, TypeVocabulary> v;
    for (const auto& [type, typeLines] : lines) {
        TypeVocabulary& tv = v[type];
        std::set<std::string> prefixes;
        for (const auto& w : typeLines)
            for (size_t i = w[0].find('.'); i != std::string::npos; i = w[0].find('.', i + 1))
                prefixes.insert(w[0].substr(0, i));
        for (const auto& w : typeLines) {
            if (w[0] == "link") {
                tv.links.emplace_back(w[1], w[2]);
                continue;
            }
            Node& n = (prefixes.count(w[0]) ? tv.variant : tv.tree).At(w[0]);
            n.kind = w[1];
            n.type = w[2];
            if (!w[2].empty()) v[w[2]].inner = true;
        }
    }
    return v;
}

// Values fixed by the path, negative and positive, so that a check knows them.
long LongOf(const std::string& path) { return static_cast<long>(path.size()) * 104729 % 2000000 - 1000000; }
std::string TextOf(const std::string& path) { return DvnTRXWriter::Quote("\"" + path + "\" ✓\n"); }
std::string NameFor(const std::string& type) { return type == "Source" || type == "Sink" ? "1" : "A"; }

// Entity "A" of every top-level type, and "B" with the paths that take a
// second reading. Entities stand in the diagram of a top-level entity only.
// The lines go without indentation: the comparison leaves it out.
struct VocabularyText {
    const std::map<std::string, TypeVocabulary>& v;
    std::set<std::string> reached;  // the types the text holds an entity of

    std::string Text() {
        std::ostringstream o;
        for (const auto& [type, tv] : v) {
            if (tv.inner) continue;
            o << type << " \"A\" {\n";
            Entity(o, type);
            if (tv.variant.order.empty()) continue;
            o << type << " \"B\" {\n";
            Body(o, type, tv.variant, true, false, "");
            o << "}\n";
        }
        return o.str();
    }
    void Entity(std::ostringstream& o, const std::string& type, bool topLevel = true) {
        reached.insert(type);
        Body(o, type, v.at(type).tree, topLevel, true, "");
        o << "}\n";
    }
    void Body(std::ostringstream& o, const std::string& type, const Node& n, bool topLevel, bool withLinks,
              const std::string& prefix) {
        for (const std::string& name : n.order) {
            const Node& k = n.kids.at(name);
            const std::string path = prefix + name;
            o << name;
            if (k.kind == "long") o << " = " << LongOf(path) << ";\n";
            else if (k.kind == "bool") o << " = " << (path.size() % 2 ? "true" : "false") << ";\n";
            else if (k.kind == "text") o << " = " << TextOf(path) << ";\n";
            else if (k.kind == "texts") o << " [\n" << TextOf(path + "#1") << "\n" << TextOf(path + "#2") << "\n]\n";
            else if (k.kind == "entity") {
                o << " = " << k.type << " {\n";
                Entity(o, k.type, false);
            } else if (k.kind == "elements" && !k.type.empty() && topLevel) {
                o << " [\n" << k.type << " \"" << NameFor(k.type) << "\" {\n";
                Entity(o, k.type, false);
                o << "]\n";
            } else if (k.kind == "elements" && k.kids.count("[]")) {
                o << " [\n{\n";
                Body(o, type, k.kids.at("[]"), topLevel, false, path + "[].");
                o << "}\n]\n";
            } else if (k.kind == "elements") {
                o << " []\n";
            } else {
                o << " {\n";
                Body(o, type, k, topLevel, false, path + ".");
                o << "}\n";
            }
        }
        if (withLinks)
            for (const auto& [link, target] : v.at(type).links) o << link << " -> \"" << NameFor(target) << "\";\n";
    }
};

// The lines of a text without their indentation, sorted; blank lines left out.
std::vector<std::string> Lines(const std::string& text) {
    std::vector<std::string> out;
    std::istringstream s(text);
    for (std::string line; std::getline(s, line);)
        if (line.find_first_not_of(' ') != std::string::npos) out.push_back(line.substr(line.find_first_not_of(' ')));
    std::sort(out.begin(), out.end());
    return out;
}

TEST(TrxVocabulary, EveryPathAndLinkReadsBackInItsKindAndSurvivesTheWriter) {
    const auto v = ReadVocabulary();
    ASSERT_EQ(v.size(), 31u);
    VocabularyText gen{v, {}};
    const std::string text = gen.Text();
    EXPECT_EQ(gen.reached.size(), v.size());
    // A text names no link's target type: the stores ask the catalogue with it.
    for (const auto& [type, tv] : v)
        for (const auto& [link, target] : tv.links)
            EXPECT_TRUE(DvnfTRXTypes::_instance.GetLinkType(DvnfString(link.c_str()), DvnfString(type.c_str()),
                                                            DvnfString(target.c_str()), false)
                            .IsValid())
                << type << " " << link << " " << target;

    Parsed first(text);
    EXPECT_EQ(first.Remarks(), std::vector<std::string>{});
    ASSERT_EQ(first.rc, DvnTRXGood) << first.error;
    const std::string written = DvnTRXWriter(first.data).Write();
    EXPECT_EQ(Lines(written), Lines(text));

    Parsed second(written);
    EXPECT_EQ(second.Remarks(), std::vector<std::string>{});
    ASSERT_EQ(second.rc, DvnTRXGood) << second.error;
    EXPECT_EQ(DvnTRXWriter(second.data).Write(), written);
}

}  // namespace
