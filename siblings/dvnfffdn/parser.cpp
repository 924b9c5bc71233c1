// The TRX parser: text to a syntax tree, the tree checked by building it into
// scratch core data, then built into the caller's core data. See docs/trx.md.
#include "dvnfffdn.h"

#include <climits>
#include <fstream>
#include <map>
#include <memory>
#include <set>
#include <sstream>
#include <unordered_map>

namespace {

constexpr int kMaxNesting = 200;

struct Pos {
    int line = 1, col = 1;
};

// An error that stops the parse; number and arguments after the position.
struct TrxError {
    Pos pos;
    long number;
    std::string a4, a5;
};

// ---------------------------------------------------------------------------
// Syntax tree

struct Value;
struct EntityNode;

struct Item {
    Pos pos;
    std::string name;
    bool isLink = false;
    std::unique_ptr<Value> value;  // attribute
    bool byOid = false;            // link
    std::string target;
};

struct EntityNode {
    Pos pos;
    std::string type;
    bool hasName = false;
    std::string name;
    bool hasOid = false;
    std::string oid;
    bool hasBody = false;
    bool isDelete = false;
    std::vector<Item> body;
};

struct Value {
    enum Kind { Long, Bool, String, Group, Set, Entity } kind = Long;
    Pos pos;
    long l = 0;
    bool b = false;
    std::string s;
    std::vector<Item> group;
    std::vector<std::unique_ptr<Value>> elements;
    std::unique_ptr<EntityNode> entity;
};

// ---------------------------------------------------------------------------
// Lexer

struct Token {
    enum Kind { End, Ident, Str, Int, LBrace, RBrace, LBracket, RBracket, Equals, Semi, Comma, Arrow } kind = End;
    Pos pos;
    std::string text;
    long value = 0;
};

const char* KindName(Token::Kind k) {
    switch (k) {
    case Token::End: return "end of file";
    case Token::Ident: return "a name";
    case Token::Str: return "a string";
    case Token::Int: return "a number";
    case Token::LBrace: return "'{'";
    case Token::RBrace: return "'}'";
    case Token::LBracket: return "'['";
    case Token::RBracket: return "']'";
    case Token::Equals: return "'='";
    case Token::Semi: return "';'";
    case Token::Comma: return "','";
    case Token::Arrow: return "'->'";
    }
    return "?";
}

class Lexer {
public:
    explicit Lexer(const std::string& text) : _t(text) {}

    Token Next() {
        SkipSpace();
        Token tok;
        tok.pos = _pos;
        if (_i >= _t.size()) return tok;
        char c = _t[_i];
        auto single = [&](Token::Kind k) {
            Advance();
            tok.kind = k;
            return tok;
        };
        switch (c) {
        case '{': return single(Token::LBrace);
        case '}': return single(Token::RBrace);
        case '[': return single(Token::LBracket);
        case ']': return single(Token::RBracket);
        case '=': return single(Token::Equals);
        case ';': return single(Token::Semi);
        case ',': return single(Token::Comma);
        case '"': return String(tok);
        default: break;
        }
        if (c == '-' && _i + 1 < _t.size() && _t[_i + 1] == '>') {
            Advance();
            Advance();
            tok.kind = Token::Arrow;
            return tok;
        }
        if (c == '-' || (c >= '0' && c <= '9')) return Number(tok);
        if (IsIdentStart(c)) {
            tok.kind = Token::Ident;
            while (_i < _t.size() && IsIdentChar(_t[_i])) {
                tok.text += _t[_i];
                Advance();
            }
            return tok;
        }
        throw TrxError{_pos, DvnTRXMsgSyntax, Describe(c), ""};
    }

private:
    static bool IsIdentStart(char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '_'; }
    static bool IsIdentChar(char c) { return IsIdentStart(c) || (c >= '0' && c <= '9'); }

    static std::string Describe(char c) {
        unsigned char u = static_cast<unsigned char>(c);
        if (u >= 0x21 && u < 0x7F) return std::string("unexpected character '") + c + "'";
        char buf[48];
        std::snprintf(buf, sizeof buf, "unexpected character 0x%02X", u);
        return buf;
    }

    // Columns count characters: bytes that continue a UTF-8 sequence do not.
    void Advance() {
        unsigned char u = static_cast<unsigned char>(_t[_i++]);
        if (u == '\n') {
            ++_pos.line;
            _pos.col = 1;
        } else if ((u & 0xC0) != 0x80) {
            ++_pos.col;
        }
    }

    void SkipSpace() {
        while (_i < _t.size()) {
            char c = _t[_i];
            if (c == ' ' || c == '\t' || c == '\r' || c == '\n') {
                Advance();
            } else if (c == '#') {
                while (_i < _t.size() && _t[_i] != '\n') Advance();
            } else {
                break;
            }
        }
    }

    Token Number(Token& tok) {
        bool neg = false;
        if (_t[_i] == '-') {
            neg = true;
            Advance();
        }
        if (_i >= _t.size() || _t[_i] < '0' || _t[_i] > '9')
            throw TrxError{tok.pos, DvnTRXMsgSyntax, "a digit must follow '-'", ""};
        long long v = 0;
        while (_i < _t.size() && _t[_i] >= '0' && _t[_i] <= '9') {
            v = v * 10 + (_t[_i] - '0');
            if (v > 2147483648LL) throw TrxError{tok.pos, DvnTRXMsgSyntax, "number out of the 32-bit range", ""};
            Advance();
        }
        if (neg) v = -v;
        if (v > INT32_MAX || v < INT32_MIN)
            throw TrxError{tok.pos, DvnTRXMsgSyntax, "number out of the 32-bit range", ""};
        if (_i < _t.size() && IsIdentChar(_t[_i]))
            throw TrxError{_pos, DvnTRXMsgSyntax, "a number runs into a name", ""};
        tok.kind = Token::Int;
        tok.value = static_cast<long>(v);
        return tok;
    }

    static int Hex(char c) {
        if (c >= '0' && c <= '9') return c - '0';
        if (c >= 'a' && c <= 'f') return c - 'a' + 10;
        if (c >= 'A' && c <= 'F') return c - 'A' + 10;
        return -1;
    }

    Token String(Token& tok) {
        Advance();  // the opening quote
        tok.kind = Token::Str;
        for (;;) {
            if (_i >= _t.size()) throw TrxError{tok.pos, DvnTRXMsgSyntax, "string not closed", ""};
            char c = _t[_i];
            if (c == '"') {
                Advance();
                return tok;
            }
            if (c == '\n') throw TrxError{_pos, DvnTRXMsgSyntax, "line break inside a string (write \\n)", ""};
            if (c == '\\') {
                Pos at = _pos;
                Advance();
                if (_i >= _t.size()) throw TrxError{tok.pos, DvnTRXMsgSyntax, "string not closed", ""};
                char e = _t[_i];
                Advance();
                switch (e) {
                case '"': tok.text += '"'; break;
                case '\\': tok.text += '\\'; break;
                case 'n': tok.text += '\n'; break;
                case 'r': tok.text += '\r'; break;
                case 't': tok.text += '\t'; break;
                case 'x': {
                    int h1 = _i < _t.size() ? Hex(_t[_i]) : -1;
                    int h2 = _i + 1 < _t.size() ? Hex(_t[_i + 1]) : -1;
                    if (h1 < 0 || h2 < 0 || (h1 == 0 && h2 == 0))
                        throw TrxError{at, DvnTRXMsgSyntax, "\\x needs two hexadecimal digits, not 00", ""};
                    Advance();
                    Advance();
                    tok.text += static_cast<char>(h1 * 16 + h2);
                    break;
                }
                default: throw TrxError{at, DvnTRXMsgSyntax, std::string("unknown escape \\") + e, ""};
                }
                continue;
            }
            if (c == '\0') throw TrxError{_pos, DvnTRXMsgSyntax, "NUL character inside a string", ""};
            tok.text += c;
            Advance();
        }
    }

    const std::string& _t;
    size_t _i = 0;
    Pos _pos;
};

// ---------------------------------------------------------------------------
// Parser

class Parser {
public:
    explicit Parser(const std::string& text) : _lex(text) { _tok = _lex.Next(); }

    std::vector<std::unique_ptr<EntityNode>> File() {
        std::vector<std::unique_ptr<EntityNode>> defs;
        while (_tok.kind != Token::End) {
            bool del = false;
            if (_tok.kind == Token::Ident && _tok.text == "delete") {
                del = true;
                Take();
            }
            if (_tok.kind != Token::Ident) Fail("an entity type");
            auto e = Entity(0, true);
            e->isDelete = del;
            if (del && e->hasBody) throw TrxError{e->pos, DvnTRXMsgSyntax, "a deletion has no body", ""};
            if (!del && !e->hasBody && !Accept(Token::Semi)) Fail("'{' or ';'");
            if (del && !Accept(Token::Semi)) Fail("';'");
            defs.push_back(std::move(e));
        }
        return defs;
    }

private:
    [[noreturn]] void Fail(const char* expected) {
        throw TrxError{_tok.pos, DvnTRXMsgSyntax,
                       std::string("expected ") + expected + ", found " + KindName(_tok.kind) +
                           (_tok.kind == Token::Ident ? " " + _tok.text : std::string()),
                       ""};
    }
    Token Take() {
        Token t = _tok;
        _tok = _lex.Next();
        return t;
    }
    bool Accept(Token::Kind k) {
        if (_tok.kind != k) return false;
        Take();
        return true;
    }
    Token Expect(Token::Kind k, const char* what) {
        if (_tok.kind != k) Fail(what);
        return Take();
    }
    void Deeper(int depth) {
        if (depth > kMaxNesting) throw TrxError{_tok.pos, DvnTRXMsgSyntax, "nesting too deep", ""};
    }

    // Type ["name"] [oid "key"] [{ body }]; at the top level the name is required.
    std::unique_ptr<EntityNode> Entity(int depth, bool topLevel) {
        Deeper(depth);
        auto e = std::make_unique<EntityNode>();
        e->pos = _tok.pos;
        e->type = Expect(Token::Ident, "an entity type").text;
        if (_tok.kind == Token::Str) {
            e->hasName = true;
            e->name = Take().text;
        } else if (topLevel) {
            Fail("the entity's name (a string)");
        }
        if (_tok.kind == Token::Ident && _tok.text == "oid") {
            Take();
            e->hasOid = true;
            e->oid = Expect(Token::Str, "the key (a string)").text;
        }
        if (Accept(Token::LBrace)) {
            e->hasBody = true;
            Body(e->body, depth + 1, true);
        }
        return e;
    }

    // Items up to the closing brace.
    void Body(std::vector<Item>& items, int depth, bool entityBody) {
        while (!Accept(Token::RBrace)) {
            Item it;
            it.pos = _tok.pos;
            if (_tok.kind == Token::Ident || _tok.kind == Token::Str) {
                it.name = Take().text;
            } else {
                Fail("an attribute or link name, or '}'");
            }
            if (Accept(Token::Arrow)) {
                if (!entityBody)
                    throw TrxError{it.pos, DvnTRXMsgSyntax, "link " + it.name + " inside a group: links belong to entities", ""};
                it.isLink = true;
                if (_tok.kind == Token::Ident && _tok.text == "oid") {
                    Take();
                    it.byOid = true;
                }
                it.target = Expect(Token::Str, "the target's name (a string) or oid \"key\"").text;
                Expect(Token::Semi, "';'");
            } else if (_tok.kind == Token::LBrace) {
                it.value = Group(depth + 1);
            } else if (_tok.kind == Token::LBracket) {
                it.value = Set(depth + 1);
            } else if (Accept(Token::Equals)) {
                it.value = Scalar(depth + 1);
                if (it.value->kind == Value::Entity && it.value->entity->hasBody)
                    Accept(Token::Semi);
                else
                    Expect(Token::Semi, "';'");
            } else {
                Fail("'=', '{', '[' or '->'");
            }
            items.push_back(std::move(it));
        }
    }

    std::unique_ptr<Value> Group(int depth) {
        Deeper(depth);
        auto v = std::make_unique<Value>();
        v->kind = Value::Group;
        v->pos = Expect(Token::LBrace, "'{'").pos;
        Body(v->group, depth, false);
        return v;
    }

    std::unique_ptr<Value> Set(int depth) {
        Deeper(depth);
        auto v = std::make_unique<Value>();
        v->kind = Value::Set;
        v->pos = Expect(Token::LBracket, "'['").pos;
        while (!Accept(Token::RBracket)) {
            if (_tok.kind == Token::LBrace)
                v->elements.push_back(Group(depth + 1));
            else
                v->elements.push_back(Scalar(depth + 1));
            Accept(Token::Comma);
        }
        return v;
    }

    // A number, true/false, a string or an entity.
    std::unique_ptr<Value> Scalar(int depth) {
        auto v = std::make_unique<Value>();
        v->pos = _tok.pos;
        switch (_tok.kind) {
        case Token::Int:
            v->kind = Value::Long;
            v->l = Take().value;
            return v;
        case Token::Str:
            v->kind = Value::String;
            v->s = Take().text;
            return v;
        case Token::Ident:
            if (_tok.text == "true" || _tok.text == "false") {
                v->kind = Value::Bool;
                v->b = Take().text == "true";
                return v;
            }
            v->kind = Value::Entity;
            v->entity = Entity(depth + 1, false);
            return v;
        default: Fail("a value (number, true, false, string, '{', '[' or an entity)");
        }
    }

    Lexer _lex;
    Token _tok;
};

// ---------------------------------------------------------------------------
// Builder: makes entities, attributes and links from the tree. Run once on
// scratch core data to find errors and warnings, then on the real data.

struct Warning {
    Pos pos;
    long number;
    std::string a4, a5;
};

const char* KindWord(DvnfAttributeType k) {
    switch (k) {
    case DvnfAttributeType::Long: return "a number";
    case DvnfAttributeType::Bool: return "true or false";
    case DvnfAttributeType::String: return "a string";
    case DvnfAttributeType::Group: return "a group { }";
    case DvnfAttributeType::Set: return "a set [ ]";
    case DvnfAttributeType::Entity: return "an entity";
    default: return "nothing";
    }
}

DvnfAttributeType KindOf(const Value& v) {
    switch (v.kind) {
    case Value::Long: return DvnfAttributeType::Long;
    case Value::Bool: return DvnfAttributeType::Bool;
    case Value::String: return DvnfAttributeType::String;
    case Value::Group: return DvnfAttributeType::Group;
    case Value::Set: return DvnfAttributeType::Set;
    case Value::Entity: return DvnfAttributeType::Entity;
    }
    return DvnfAttributeType::Undefined;
}

class Builder {
public:
    explicit Builder(DvnfTRXData& data) : _data(data), _types(data.Types()) {}

    void Build(const std::vector<std::unique_ptr<EntityNode>>& defs) {
        std::set<std::pair<std::string, std::string>> seen;
        for (const auto& d : defs) {
            const DvnfEntityType& t = TypeOf(*d);
            if (!t.IsTopLevel())
                throw TrxError{d->pos, DvnTRXMsgSyntax, d->type + " stands inside a diagram, not at the top level", ""};
            if (!seen.insert({d->type, d->name}).second)
                throw TrxError{d->pos, DvnTRXMsgDuplicate, d->type, d->name};
            DvnfEntity& e = DefineTop(*d, t);
            _defined.push_back(&e);
        }
        for (const Pending& p : _pending) Link(p);
    }

    const std::vector<Warning>& Warnings() const { return _warnings; }
    const std::vector<DvnfEntity*>& Defined() const { return _defined; }
    // Entities the file names but does not define (skeletons of top-level types).
    std::vector<DvnfEntity*> NamedOnly() const {
        std::vector<DvnfEntity*> out;
        std::set<DvnfEntity*> defined(_defined.begin(), _defined.end());
        std::set<DvnfEntity*> seen;
        for (DvnfEntity* e : _named)
            if (e->IsValid() && e->Type().IsTopLevel() && !defined.count(e) && e->State() == DvnfObject::StateNone &&
                seen.insert(e).second)
                out.push_back(e);
        return out;
    }

private:
    // A diagram: its activities, sources and sinks by name.
    struct Scope {
        std::map<std::string, DvnfEntity*> activities, sources, sinks;
    };
    struct Pending {
        Pos pos;
        DvnfEntity* source;
        const DvnfLinkType* type;
        const Scope* scope;
        std::string target;
        bool byOid;
    };

    const DvnfEntityType& TypeOf(const EntityNode& n) {
        const DvnfEntityType& t = _types.GetEntityType(DvnfString(n.type), false);
        if (!t.IsValid()) throw TrxError{n.pos, DvnTRXMsgUnknownType, n.type, ""};
        return t;
    }

    void Warn(Pos pos, long number, std::string a4, std::string a5) {
        _warnings.push_back(Warning{pos, number, std::move(a4), std::move(a5)});
    }

    // Resets what a definition gives anew: attributes and links.
    static void Clear(DvnfEntity& e) {
        e.AttributeData().Reset();
        for (const DvnfLink& l : std::vector<DvnfLink>(e.Links())) e.DeleteAllLinksOfType(l.Type());
    }

    DvnfEntity& DefineTop(const EntityNode& n, const DvnfEntityType& t) {
        DvnfString name(n.name), oid(n.hasOid ? n.oid : std::string());
        DvnfEntity* e = nullptr;
        if (n.hasOid) {
            DvnfEntity& byKey = _data.GetEntityByOID(t, oid, false);
            if (byKey.IsValid()) e = &byKey;
        }
        if (!e) {
            DvnfEntity& byName = _data.GetEntityByName(t, name);
            if (byName.IsValid() && (!n.hasOid || byName.OID().IsEmpty())) e = &byName;
        }
        DvnfObject::State_t state;
        if (e) {
            state = (e->State() == DvnfObject::StateUnchanged || e->State() == DvnfObject::StateChanged)
                        ? DvnfObject::StateChanged
                        : DvnfObject::StateNew;
            if (!(e->Name() == name)) e->Name(name);
            if (n.hasOid && e->OID().IsEmpty()) e->OID(oid);
            Clear(*e);
        } else {
            e = &_data.CreateEntity(t, oid, name);
            state = DvnfObject::StateNew;
        }
        if (n.isDelete) {
            e->State(DvnfObject::StateDeleted);
            e->Flags(0);
            return *e;
        }
        Fill(*e, n.body, state);
        return *e;
    }

    DvnfEntity& DefineInner(const EntityNode& n, DvnfObject::State_t state) {
        const DvnfEntityType& t = TypeOf(n);
        if (!n.hasBody) {
            // A reference to an entity defined elsewhere.
            if (!t.IsTopLevel())
                throw TrxError{n.pos, DvnTRXMsgSyntax, n.type + " needs a body { } here", ""};
            DvnfEntity& e = n.hasOid ? _data.GetEntityByOID(t, DvnfString(n.oid), true)
                                     : _data.GetEntityByName(t, DvnfString(n.name), true);
            if (!e.IsValid()) throw TrxError{n.pos, DvnTRXMsgSyntax, "a reference needs a name or a key", ""};
            _named.push_back(&e);
            return e;
        }
        if (t.IsTopLevel())
            throw TrxError{n.pos, DvnTRXMsgSyntax, n.type + " is defined at the top level; refer to it without a body", ""};
        DvnfString oid(n.hasOid ? n.oid : std::string());
        DvnfEntity& e = _data.CreateEntity(t, oid, DvnfString(n.name));
        if (n.hasOid) Clear(e);
        Fill(e, n.body, state);
        return e;
    }

    void Fill(DvnfEntity& e, const std::vector<Item>& body, DvnfObject::State_t state) {
        e.State(state);
        e.Flags(DvnfEntity::FlagAttributesComplete | DvnfEntity::FlagContainersComplete | DvnfEntity::FlagBlockContent);
        int outer = _unknownDepth;  // an entity's attributes are checked against its own type
        _unknownDepth = 0;
        Items(e, e.AttributeData(), body, "", state);
        _unknownDepth = outer;
    }

    void Items(DvnfEntity& owner, DvnfAttributeData target, const std::vector<Item>& items, const std::string& path,
               DvnfObject::State_t state) {
        std::set<std::string> names;
        for (const Item& it : items) {
            if (it.isLink) {
                const DvnfLinkType& lt = _types.FindLinkType(DvnfString(it.name), owner.Type());
                if (!lt.IsValid()) throw TrxError{it.pos, DvnTRXMsgUnknownLink, it.name, owner.Type().Name().str()};
                _pending.push_back(Pending{it.pos, &owner, &lt, _scopes.empty() ? nullptr : _scopes.back().get(),
                                           it.target, it.byOid});
                continue;
            }
            if (!names.insert(it.name).second)
                throw TrxError{it.pos, DvnTRXMsgSyntax, "attribute " + it.name + " is given twice", ""};
            std::string sub = path.empty() ? it.name : path + "." + it.name;
            Check(owner.Type(), sub, *it.value);
            bool diagram = it.name == "Diagram" && it.value->kind == Value::Group;
            if (diagram) _scopes.push_back(ScopeOf(*it.value));
            Attr(owner, target(it.name.c_str()), *it.value, sub, state);
            if (diagram) {
                _keep.push_back(std::move(_scopes.back()));
                _scopes.pop_back();
            }
        }
    }

    void Check(const DvnfEntityType& t, const std::string& path, const Value& v) {
        if (_unknownDepth > 0) return;
        DvnfAttributeType expected = t.AttributeKind(path);
        if (expected == DvnfAttributeType::Undefined) {
            Warn(v.pos, DvnTRXMsgUnknownAttr, path, t.Name().str());
            return;
        }
        DvnfAttributeType given = KindOf(v);
        if (given == DvnfAttributeType::Group && t.AcceptsKind(path, DvnfAttributeType::Entity)) return;
        if (!t.AcceptsKind(path, given)) Warn(v.pos, DvnTRXMsgKindMismatch, path, KindWord(expected));
    }

    // Pre-builds the scope of a diagram: the entities of its three sets.
    std::unique_ptr<Scope> ScopeOf(const Value& diagram) {
        auto s = std::make_unique<Scope>();
        for (const Item& it : diagram.group) {
            std::map<std::string, DvnfEntity*>* m = it.name == "Activities" ? &s->activities
                                                    : it.name == "Sources"  ? &s->sources
                                                    : it.name == "Sinks"    ? &s->sinks
                                                                            : nullptr;
            if (!m || it.isLink || it.value->kind != Value::Set) continue;
            for (const auto& el : it.value->elements) {
                if (el->kind != Value::Entity) continue;
                auto r = m->emplace(el->entity->name, nullptr);
                if (!r.second)
                    throw TrxError{el->pos, DvnTRXMsgDuplicate, el->entity->type, el->entity->name};
            }
        }
        return s;
    }

    // The scope map a set of the current diagram fills, if any.
    std::map<std::string, DvnfEntity*>* ScopeMap(const std::string& path) {
        if (_scopes.empty()) return nullptr;
        Scope& s = *_scopes.back();
        if (path == "Diagram.Activities") return &s.activities;
        if (path == "Diagram.Sources") return &s.sources;
        if (path == "Diagram.Sinks") return &s.sinks;
        return nullptr;
    }

    void Attr(DvnfEntity& owner, DvnfAttributeData target, const Value& v, const std::string& path,
              DvnfObject::State_t state) {
        switch (v.kind) {
        case Value::Long: target = v.l; break;
        case Value::Bool: target = v.b; break;
        case Value::String: target = DvnString(v.s); break;
        case Value::Group: {
            bool unknown = owner.Type().AttributeKind(path) == DvnfAttributeType::Undefined;
            if (unknown) ++_unknownDepth;
            Items(owner, target.MakeGroup(), v.group, path, state);
            if (unknown) --_unknownDepth;
            break;
        }
        case Value::Set: {
            bool unknown = owner.Type().AttributeKind(path) == DvnfAttributeType::Undefined;
            if (unknown) ++_unknownDepth;
            DvnfAttributeData set = target.MakeSet();
            const DvnfEntityType& elementType = owner.Type().SetElementType(path);
            std::string elPath = path + "[]";
            std::map<std::string, DvnfEntity*>* scope = ScopeMap(path);
            for (const auto& el : v.elements) {
                if (el->kind != Value::Entity) Check(owner.Type(), elPath, *el);
                if (el->kind == Value::Entity) {
                    DvnfEntity& e = DefineInner(*el->entity, state);
                    if (elementType.IsValid() && &e.Type() != &elementType)
                        Warn(el->pos, DvnTRXMsgKindMismatch, elPath, elementType.Name().str());
                    set.NewSetElement(e);
                    if (scope) (*scope)[el->entity->name] = &e;
                } else if (el->kind == Value::Group && elementType.IsValid()) {
                    // A plain group in a set of entities: the element entity takes it.
                    Fill(set.NewSetElement().AsEntity(), el->group, state);
                } else if (elementType.IsValid()) {
                    // A plain value cannot stand for an entity; the warning above says so.
                    continue;
                } else {
                    Attr(owner, set.NewSetElement(), *el, elPath, state);
                }
            }
            if (unknown) --_unknownDepth;
            break;
        }
        case Value::Entity: target = DefineInner(*v.entity, state); break;
        }
    }

    void Link(const Pending& p) {
        const DvnfEntityType& tt = p.type->Target();
        const std::string& tn = tt.Name().str();
        bool inDiagram = tn == "Activity" || tn == "Source" || tn == "Sink";
        if (inDiagram) {
            if (!p.scope || p.byOid)
                throw TrxError{p.pos, DvnTRXMsgNoSuchEnd, p.type->Name().str(), p.target};
            const auto& m = tn == "Activity" ? p.scope->activities : tn == "Source" ? p.scope->sources : p.scope->sinks;
            auto it = m.find(p.target);
            if (it == m.end() || !it->second || &it->second->Type() != &tt)
                throw TrxError{p.pos, DvnTRXMsgNoSuchEnd, p.type->Name().str(), p.target};
            p.source->AddLink(*p.type, *it->second, false);
            return;
        }
        const DvnfLink& l = p.byOid ? _data.AddLinkByOID(*p.source, *p.type, DvnfString(p.target), true, false)
                                    : _data.AddLinkByName(*p.source, *p.type, DvnfString(p.target), true, false);
        if (!l.IsValid()) throw TrxError{p.pos, DvnTRXMsgSyntax, "link " + p.type->Name().str() + " needs a target", ""};
        _named.push_back(&l.Target());
    }

    DvnfTRXData& _data;
    const DvnfCoreTypes& _types;
    std::vector<std::unique_ptr<Scope>> _scopes, _keep;
    std::vector<Pending> _pending;
    std::vector<Warning> _warnings;
    std::vector<DvnfEntity*> _defined, _named;
    int _unknownDepth = 0;
};

}  // namespace

// ---------------------------------------------------------------------------

DvnTRXFrontend::DvnTRXFrontend(DvnfTRXData& data, DvnfFrontendReader* reader) : _data(data), _reader(reader) {}

int DvnTRXFrontend::ReadFile(const char* file, int acceptLevel, std::vector<DvnfEntity*>* defined,
                             std::string* firstError) {
    std::string name = file ? file : "";
    std::ifstream in(name, std::ios::binary);
    if (!file || !in) {
        _data.MessageHandler()->Report(DvnTRXMsgCannotOpen, DvnString(name));
        if (firstError) *firstError = name + ": cannot be opened";
        return DvnTRXFailed;
    }
    std::ostringstream text;
    text << in.rdbuf();
    return ReadText(text.str(), file, acceptLevel, defined, firstError);
}

int DvnTRXFrontend::ReadText(const std::string& text, const char* sourceName, int acceptLevel,
                             std::vector<DvnfEntity*>* defined, std::string* firstError) {
    DvnfMessageHandler* mh = _data.MessageHandler();
    DvnString src(sourceName ? sourceName : "");
    auto report = [&](const Pos& pos, long number, const std::string& a4, const std::string& a5) {
        mh->Report(number, src, DvnString::FromLong(pos.line), DvnString::FromLong(pos.col), DvnString(a4),
                   a5.empty() ? DvnString() : DvnString(a5));
    };
    std::vector<std::unique_ptr<EntityNode>> defs;
    std::vector<Warning> warnings;
    try {
        defs = Parser(text).File();
        DvnfTRXData scratch(_data.Types(), nullptr);
        Builder check(scratch);
        check.Build(defs);
        warnings = check.Warnings();
    } catch (const TrxError& e) {
        report(e.pos, e.number, e.a4, e.a5);
        if (firstError) {
            DvnString line = DvnfMessageHandler::Format(e.number, src, DvnString::FromLong(e.pos.line),
                                                        DvnString::FromLong(e.pos.col), DvnString(e.a4),
                                                        e.a5.empty() ? DvnString() : DvnString(e.a5));
            *firstError = line.str().substr(line.str().find(": ") + 2);
        }
        mh->Report(DvnTRXMsgNotCommitted, src, DvnString::FromLong(DvnTRXFailed));
        return DvnTRXFailed;
    }
    for (const Warning& w : warnings) report(w.pos, w.number, w.a4, w.a5);
    int result = warnings.empty() ? DvnTRXGood : DvnTRXWarnings;
    if (result > acceptLevel) {
        mh->Report(DvnTRXMsgNotCommitted, src, DvnString::FromLong(result));
        return result;
    }
    Builder build(_data);
    try {
        build.Build(defs);
    } catch (const TrxError&) {
        // Cannot happen: the same tree was built without error just before.
        DVNK_INVARIANT(false, "TRX build failed after a clean check");
    }
    if (defined) *defined = build.Defined();
    if (_reader) {
        for (DvnfEntity* e : build.NamedOnly()) {
            _reader->ReadEntity(_data, *e);
            if (e->State() == DvnfObject::StateNone) {
                mh->Report(DvnTRXMsgNotRead, DvnString(e->Type().Name()), DvnString(e->Name()));
                result = DvnTRXWarnings;
            }
        }
    }
    mh->Report(DvnTRXMsgRead, src, DvnString::FromLong(static_cast<long>(build.Defined().size())));
    return result;
}
