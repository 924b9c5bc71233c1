// The TRX parser: text to a syntax tree one definition at a time, each
// checked by building it into scratch core data as soon as it is parsed;
// then the scratch result is taken over when the caller's core data holds
// nothing yet, or else the text is parsed and built a second time into the
// caller's data. See docs/trx.md.
#include "dvnfffdn.h"

#include <climits>
#include <cstdint>
#include <cstring>
#include <fstream>
#include <map>
#include <memory>
#include <new>
#include <optional>
#include <set>
#include <sstream>
#include <string_view>
#include <type_traits>
#include <unordered_map>
#include <unordered_set>

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

std::string Text(std::string_view v) { return std::string(v); }

DvnfString Str(std::string_view v) { return DvnfString(v.data() ? v.data() : "", static_cast<long>(v.size())); }

// ---------------------------------------------------------------------------
// Encoding: a file is UTF-8 text, optionally after a byte-order mark.

constexpr std::string_view kByteOrderMark = "\xEF\xBB\xBF";

// The offset of the first byte that does not begin a well-formed UTF-8
// character (a stray continuation byte, a sequence cut short, an overlong
// form, a surrogate, a value above U+10FFFF), or npos.
size_t FirstNonUtf8(std::string_view t) {
    const unsigned char* s = reinterpret_cast<const unsigned char*>(t.data());
    size_t n = t.size(), i = 0;
    while (i < n) {
        // Plain ASCII, eight bytes at a time.
        if (i + 8 <= n) {
            unsigned long long w;
            std::memcpy(&w, s + i, 8);
            if ((w & 0x8080808080808080ULL) == 0) {
                i += 8;
                continue;
            }
        }
        unsigned char c = s[i];
        if (c < 0x80) {
            ++i;
            continue;
        }
        size_t len;
        unsigned char lo = 0x80, hi = 0xBF;  // range of the second byte
        if (c >= 0xC2 && c <= 0xDF) {
            len = 2;
        } else if (c >= 0xE0 && c <= 0xEF) {
            len = 3;
            if (c == 0xE0) lo = 0xA0;       // overlong
            else if (c == 0xED) hi = 0x9F;  // surrogates
        } else if (c >= 0xF0 && c <= 0xF4) {
            len = 4;
            if (c == 0xF0) lo = 0x90;       // overlong
            else if (c == 0xF4) hi = 0x8F;  // above U+10FFFF
        } else {
            return i;  // a continuation byte, C0, C1 or F5..FF
        }
        if (i + len > n) return i;
        if (s[i + 1] < lo || s[i + 1] > hi) return i;
        for (size_t k = 2; k < len; ++k)
            if ((s[i + k] & 0xC0) != 0x80) return i;
        i += len;
    }
    return std::string::npos;
}

std::string NotUtf8(unsigned char byte) {
    char buf[48];
    std::snprintf(buf, sizeof buf, "text is not UTF-8: byte 0x%02X", byte);
    return buf;
}

// ---------------------------------------------------------------------------
// Syntax tree. Its nodes live in an arena and hold views of the text (or of
// unescaped copies kept in a second arena); nothing in it needs destroying.
// The parser gives one top-level definition at a time: it is built into the
// core model and its nodes are dropped before the next one is parsed, so the
// tree of the whole file never stands in memory.

class Arena {
public:
    Arena() = default;
    Arena(const Arena&) = delete;
    Arena& operator=(const Arena&) = delete;

    void* Allocate(size_t size, size_t align) {
        size_t at = (_used + align - 1) & ~(align - 1);
        if (!_block || at + size > _size) {
            if (_kept && !_block && size <= kBlock) {  // the block kept by Reset
                _block = _kept.get();
                _size = kBlock;
            } else {
                _size = size > kBlock / 4 ? size : kBlock;
                _blocks.emplace_back(new char[_size]);  // not zeroed: every node is constructed in place
                _block = _blocks.back().get();
            }
            at = 0;
        }
        _used = at + size;
        return _block + at;
    }
    // Forgets everything allocated; one block is kept for what comes next.
    void Reset() {
        if (!_kept && !_blocks.empty() && _size == kBlock && _block == _blocks.back().get()) {
            _kept = std::move(_blocks.back());
        }
        _blocks.clear();
        _block = nullptr;
        _size = _used = 0;
    }
    // A default-made T (trivially destructible).
    template <class T>
    T* New() {
        static_assert(std::is_trivially_destructible_v<T>);
        return new (Allocate(sizeof(T), alignof(T))) T();
    }
    // A copy of the items, as an array the arena keeps.
    template <class T>
    const T* Copy(const T* from, size_t count) {
        static_assert(std::is_trivially_copyable_v<T>);
        if (count == 0) return nullptr;
        void* to = Allocate(sizeof(T) * count, alignof(T));
        std::memcpy(to, from, sizeof(T) * count);
        return static_cast<const T*>(to);
    }
    std::string_view Keep(const std::string& text) {
        char* to = static_cast<char*>(Allocate(text.size(), 1));
        std::memcpy(to, text.data(), text.size());
        return std::string_view(to, text.size());
    }

private:
    static constexpr size_t kBlock = 256 * 1024;
    std::vector<std::unique_ptr<char[]>> _blocks;
    std::unique_ptr<char[]> _kept;  // a block of kBlock bytes, kept by Reset for reuse
    char* _block = nullptr;
    size_t _size = 0, _used = 0;
};

template <class T>
struct Span {
    const T* data = nullptr;
    size_t size = 0;
    const T* begin() const { return data; }
    const T* end() const { return data + size; }
};

struct Value;
struct EntityNode;

struct Item {
    Pos pos;
    std::string_view name;
    bool isLink = false;
    bool byOid = false;       // link
    const Value* value = nullptr;  // attribute
    std::string_view target;  // link
};

struct EntityNode {
    Pos pos;
    std::string_view type;
    bool hasName = false;
    bool hasOid = false;
    bool hasBody = false;
    bool isDelete = false;
    std::string_view name;
    std::string_view oid;
    Span<Item> body;
};

struct Value {
    enum Kind { Long, Bool, String, Group, Set, Entity } kind = Long;
    Pos pos;
    long l = 0;
    bool b = false;
    std::string_view s;
    Span<Item> group;
    Span<const Value*> elements;
    const EntityNode* entity = nullptr;
};

// ---------------------------------------------------------------------------
// Lexer

struct Token {
    enum Kind { End, Ident, Str, Int, LBrace, RBrace, LBracket, RBracket, Equals, Semi, Comma, Arrow } kind = End;
    Pos pos;
    std::string_view text;
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

// How many bytes of [from, to) continue a UTF-8 sequence (top bits 10).
int Continuing(const char* from, const char* to) {
    int n = 0;
    for (; to - from >= 8; from += 8) {
        std::uint64_t w;
        std::memcpy(&w, from, 8);
        std::uint64_t continuing = w & ~(w << 1) & 0x8080808080808080ULL;
        n += static_cast<int>(((continuing >> 7) * 0x0101010101010101ULL) >> 56);
    }
    for (; from < to; ++from)
        if ((static_cast<unsigned char>(*from) & 0xC0) == 0x80) ++n;
    return n;
}

// Lines and columns of places in the text. Columns count characters: bytes
// that continue a UTF-8 sequence do not. Outside strings and comments only
// ASCII stands (anything else is an error at its first byte), so the column
// of a token is its distance from the start of the line less the bytes that
// continued a sequence in the strings before it on that line.
class Where {
public:
    explicit Where(const char* begin) : _lineStart(begin) {}
    void NewLine(const char* next) {
        ++_line;
        _lineStart = next;
        _continuing = 0;
    }
    // A string or a comment (from, to) on this line was passed over.
    void Passed(const char* from, const char* to) { _continuing += Continuing(from, to); }
    // A place outside strings and comments, after all of them passed so far.
    Pos At(const char* p) const { return Pos{_line, static_cast<int>(p - _lineStart) + 1 - _continuing}; }
    // Any place on the current line (inside a string, say).
    Pos Inside(const char* p) const {
        return Pos{_line, static_cast<int>(p - _lineStart) + 1 - Continuing(_lineStart, p)};
    }

private:
    const char* _lineStart;
    int _line = 1, _continuing = 0;
};

// The place of an offset, counted from the start (for an error found
// before lexing).
Pos PlaceOf(std::string_view text, size_t offset) {
    Where w(text.data());
    for (size_t i = 0; i < offset; ++i)
        if (text[i] == '\n') w.NewLine(text.data() + i + 1);
    return w.Inside(text.data() + offset);
}

// Classes of bytes: 1 starts a name, 2 continues one, 4 ends a run of
// plain string characters (quote, backslash, line break, NUL).
struct ByteClasses {
    unsigned char of[256] = {};
    constexpr ByteClasses() {
        for (int c = 'A'; c <= 'Z'; ++c) of[c] = 3;
        for (int c = 'a'; c <= 'z'; ++c) of[c] = 3;
        of[static_cast<unsigned char>('_')] = 3;
        for (int c = '0'; c <= '9'; ++c) of[c] = 2;
        for (char c : {'"', '\\', '\n', '\0'}) of[static_cast<unsigned char>(c)] = 4;
    }
};
constexpr ByteClasses kClasses{};

class Lexer {
public:
    Lexer(std::string_view text, Arena& arena)
        : _p(text.data()), _end(text.data() + text.size()), _where(text.data()), _arena(arena) {}

    Token Next() {
        SkipSpace();
        Token tok;
        tok.pos = _where.At(_p);
        if (_p >= _end) return tok;
        char c = *_p;
        auto single = [&](Token::Kind k) {
            ++_p;
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
        if (c == '-' && _p + 1 < _end && _p[1] == '>') {
            _p += 2;
            tok.kind = Token::Arrow;
            return tok;
        }
        if (c == '-' || (c >= '0' && c <= '9')) return Number(tok);
        if (IsIdentStart(c)) {
            const char* from = _p;
            while (_p < _end && IsIdentChar(*_p)) ++_p;
            tok.kind = Token::Ident;
            tok.text = std::string_view(from, static_cast<size_t>(_p - from));
            return tok;
        }
        throw TrxError{tok.pos, DvnTRXMsgSyntax, Describe(c), ""};
    }

private:
    static bool IsIdentStart(char c) { return kClasses.of[static_cast<unsigned char>(c)] & 1; }
    static bool IsIdentChar(char c) { return kClasses.of[static_cast<unsigned char>(c)] & 2; }
    static bool EndsPlain(char c) { return kClasses.of[static_cast<unsigned char>(c)] & 4; }

    static std::string Describe(char c) {
        unsigned char u = static_cast<unsigned char>(c);
        if (u >= 0x21 && u < 0x7F) return std::string("unexpected character '") + c + "'";
        char buf[48];
        std::snprintf(buf, sizeof buf, "unexpected character 0x%02X", u);
        return buf;
    }

    void SkipSpace() {
        constexpr std::uint64_t kEightSpaces = 0x2020202020202020ULL;
        while (_p < _end) {
            char c = *_p;
            if (c == ' ') {
                ++_p;
                // Indentation, eight spaces at a time.
                for (std::uint64_t w; _end - _p >= 8 && (std::memcpy(&w, _p, 8), w == kEightSpaces);) _p += 8;
            } else if (c == '\t' || c == '\r') {
                ++_p;
            } else if (c == '\n') {
                ++_p;
                _where.NewLine(_p);
            } else if (c == '#') {
                const void* nl = std::memchr(_p, '\n', static_cast<size_t>(_end - _p));
                const char* to = nl ? static_cast<const char*>(nl) : _end;
                _where.Passed(_p, to);
                _p = to;
            } else {
                break;
            }
        }
    }

    Token Number(Token& tok) {
        bool neg = false;
        if (*_p == '-') {
            neg = true;
            ++_p;
        }
        if (_p >= _end || *_p < '0' || *_p > '9')
            throw TrxError{tok.pos, DvnTRXMsgSyntax, "a digit must follow '-'", ""};
        long long v = 0;
        while (_p < _end && *_p >= '0' && *_p <= '9') {
            v = v * 10 + (*_p - '0');
            if (v > 2147483648LL) throw TrxError{tok.pos, DvnTRXMsgSyntax, "number out of the 32-bit range", ""};
            ++_p;
        }
        if (neg) v = -v;
        if (v > INT32_MAX || v < INT32_MIN)
            throw TrxError{tok.pos, DvnTRXMsgSyntax, "number out of the 32-bit range", ""};
        if (_p < _end && IsIdentChar(*_p))
            throw TrxError{_where.At(_p), DvnTRXMsgSyntax, "a number runs into a name", ""};
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

    // Scans plain characters of a string up to a quote, a backslash, a line
    // break, a NUL or the end.
    const char* Plain(const char* p) const {
        while (p < _end && !EndsPlain(*p)) ++p;
        return p;
    }

    Token String(Token& tok) {
        ++_p;  // the opening quote
        tok.kind = Token::Str;
        const char* from = _p;
        _p = Plain(_p);
        if (_p < _end && *_p == '"') {  // no escapes: a view of the text
            tok.text = std::string_view(from, static_cast<size_t>(_p - from));
            _where.Passed(from, _p);
            ++_p;
            return tok;
        }
        std::string& out = _unescaped;
        out.assign(from, static_cast<size_t>(_p - from));
        // Escapes that give bytes of 0x80 and above, for the check that the
        // text they make is UTF-8: where each stands and what it gave.
        std::vector<std::pair<Pos, size_t>> high;
        for (;;) {
            if (_p >= _end) throw TrxError{tok.pos, DvnTRXMsgSyntax, "string not closed", ""};
            char c = *_p;
            if (c == '"') {
                ++_p;
                break;
            }
            if (c == '\n')
                throw TrxError{_where.Inside(_p), DvnTRXMsgSyntax, "line break inside a string (write \\n)", ""};
            if (c == '\0') throw TrxError{_where.Inside(_p), DvnTRXMsgSyntax, "NUL character inside a string", ""};
            if (c == '\\') {
                Pos at = _where.Inside(_p);
                ++_p;
                if (_p >= _end) throw TrxError{tok.pos, DvnTRXMsgSyntax, "string not closed", ""};
                char e = *_p++;
                switch (e) {
                case '"': out += '"'; break;
                case '\\': out += '\\'; break;
                case 'n': out += '\n'; break;
                case 'r': out += '\r'; break;
                case 't': out += '\t'; break;
                case 'x': {
                    int h1 = _p < _end ? Hex(_p[0]) : -1;
                    int h2 = _p + 1 < _end ? Hex(_p[1]) : -1;
                    if (h1 < 0 || h2 < 0 || (h1 == 0 && h2 == 0))
                        throw TrxError{at, DvnTRXMsgSyntax, "\\x needs two hexadecimal digits, not 00", ""};
                    _p += 2;
                    if (h1 >= 8) high.emplace_back(at, out.size());
                    out += static_cast<char>(h1 * 16 + h2);
                    break;
                }
                default: throw TrxError{at, DvnTRXMsgSyntax, std::string("unknown escape \\") + e, ""};
                }
                continue;
            }
            const char* run = Plain(_p);
            out.append(_p, static_cast<size_t>(run - _p));
            _p = run;
        }
        if (!high.empty()) {
            // Escaped bytes must make UTF-8 text with what stands around them.
            size_t bad = FirstNonUtf8(out);
            if (bad != std::string::npos) {
                Pos at = tok.pos;
                for (const auto& [pos, offset] : high)
                    if (offset >= bad) {
                        at = pos;
                        break;
                    }
                throw TrxError{at, DvnTRXMsgSyntax, NotUtf8(static_cast<unsigned char>(out[bad])), ""};
            }
        }
        _where.Passed(from, _p);
        tok.text = _arena.Keep(out);
        return tok;
    }

    const char* _p;
    const char* _end;
    Where _where;
    Arena& _arena;
    std::string _unescaped;
};

// ---------------------------------------------------------------------------
// Parser

class Parser {
public:
    // Unescaped strings go to `strings`, which must live as long as what is
    // built from the definitions; the nodes of a definition go to `nodes`,
    // which the caller may reset once the definition is built.
    Parser(std::string_view text, Arena& strings, Arena& nodes) : _lex(text, strings), _arena(nodes) {
        _tok = _lex.Next();
    }

    // The next top-level definition; null at the end of the text.
    const EntityNode* Next() {
        if (_tok.kind == Token::End) return nullptr;
        bool del = false;
        if (_tok.kind == Token::Ident && _tok.text == "delete") {
            del = true;
            Take();
        }
        if (_tok.kind != Token::Ident) Fail("an entity type");
        EntityNode* e = Entity(0, true);
        e->isDelete = del;
        if (del && e->hasBody) throw TrxError{e->pos, DvnTRXMsgSyntax, "a deletion has no body", ""};
        if (!del && !e->hasBody && !Accept(Token::Semi)) Fail("'{' or ';'");
        if (del && !Accept(Token::Semi)) Fail("';'");
        return e;
    }

private:
    [[noreturn]] void Fail(const char* expected) {
        throw TrxError{_tok.pos, DvnTRXMsgSyntax,
                       std::string("expected ") + expected + ", found " + KindName(_tok.kind) +
                           (_tok.kind == Token::Ident ? " " + Text(_tok.text) : std::string()),
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
    EntityNode* Entity(int depth, bool topLevel) {
        Deeper(depth);
        EntityNode* e = _arena.New<EntityNode>();
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
            e->body = Body(depth + 1, true);
        }
        return e;
    }

    // Items up to the closing brace. They gather on a stack shared by every
    // level and are copied to the arena when the body is complete.
    Span<Item> Body(int depth, bool entityBody) {
        size_t mark = _items.size();
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
                    throw TrxError{it.pos, DvnTRXMsgSyntax,
                                   "link " + Text(it.name) + " inside a group: links belong to entities", ""};
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
                const Value* v = Scalar(depth + 1);
                it.value = v;
                if (v->kind == Value::Entity && v->entity->hasBody)
                    Accept(Token::Semi);
                else
                    Expect(Token::Semi, "';'");
            } else {
                Fail("'=', '{', '[' or '->'");
            }
            _items.push_back(it);
        }
        Span<Item> out{_arena.Copy(_items.data() + mark, _items.size() - mark), _items.size() - mark};
        _items.resize(mark);
        return out;
    }

    const Value* Group(int depth) {
        Deeper(depth);
        Value* v = _arena.New<Value>();
        v->kind = Value::Group;
        v->pos = Expect(Token::LBrace, "'{'").pos;
        v->group = Body(depth, false);
        return v;
    }

    const Value* Set(int depth) {
        Deeper(depth);
        Value* v = _arena.New<Value>();
        v->kind = Value::Set;
        v->pos = Expect(Token::LBracket, "'['").pos;
        size_t mark = _elements.size();
        while (!Accept(Token::RBracket)) {
            if (_tok.kind == Token::LBrace)
                _elements.push_back(Group(depth + 1));
            else
                _elements.push_back(Scalar(depth + 1));
            Accept(Token::Comma);
        }
        v->elements = Span<const Value*>{_arena.Copy(_elements.data() + mark, _elements.size() - mark),
                                         _elements.size() - mark};
        _elements.resize(mark);
        return v;
    }

    // A number, true/false, a string or an entity.
    const Value* Scalar(int depth) {
        Value* v = _arena.New<Value>();
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
    Arena& _arena;
    Token _tok;
    std::vector<Item> _items;
    std::vector<const Value*> _elements;
};

// ---------------------------------------------------------------------------
// Builder: makes entities, attributes and links from the tree, one
// definition at a time. Run once on scratch core data to find errors and
// warnings, then (when the caller's data held entities already) on the real
// data from a second parse of the text.

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
    // A builder that checks works on data of its own, which holds nothing
    // but what the file defines and names; one that builds again, once the
    // text was checked, may meet what the data held before.
    Builder(DvnfTRXData& data, bool checks) : _data(data), _types(data.Types()), _checks(checks) {}

    // One top-level definition, built as soon as it is parsed; it may be
    // dropped afterwards (what is kept are views of the text).
    void Define(const EntityNode& d) {
        const DvnfEntityType& t = TypeOf(d);
        if (!t.IsTopLevel())
            throw TrxError{d.pos, DvnTRXMsgSyntax, Text(d.type) + " stands inside a diagram, not at the top level", ""};
        DvnfEntity& e = DefineTop(d, t);
        _defined.push_back(&e);
    }
    // After the last definition: the links, now that every target is known.
    void Finish() {
        for (const Pending& p : _pending) Link(p);
    }

    const std::vector<Warning>& Warnings() const { return _warnings; }
    const std::vector<DvnfEntity*>& Defined() const { return _defined; }
    // Entities the file names but does not define (skeletons of top-level types).
    std::vector<DvnfEntity*> NamedOnly() const {
        std::vector<DvnfEntity*> out;
        std::set<DvnfEntity*> seen;
        for (DvnfEntity* e : _named)  // what the file defines has a state
            if (e->IsValid() && e->Type().IsTopLevel() && e->State() == DvnfObject::StateNone && seen.insert(e).second)
                out.push_back(e);
        return out;
    }

private:
    // A diagram: its activities, sources and sinks by name.
    struct Scope {
        std::map<std::string_view, DvnfEntity*> activities, sources, sinks;
    };
    struct Pending {
        Pos pos;
        DvnfEntity* source;
        const DvnfLinkType* type;
        const Scope* scope;
        std::string_view target;
        bool byOid;
    };
    // Link types by source type and name, as the file spells them.
    struct LinkKey {
        const DvnfEntityType* source;
        std::string_view name;
        bool operator==(const LinkKey& o) const { return source == o.source && name == o.name; }
    };
    struct LinkKeyHash {
        size_t operator()(const LinkKey& k) const noexcept {
            return std::hash<std::string_view>{}(k.name) ^ (std::hash<const void*>{}(k.source) << 1);
        }
    };

    // The catalogue's type of that name; each name is looked up once.
    const DvnfEntityType& TypeOf(const EntityNode& n) {
        auto it = _typeCache.find(n.type);
        const DvnfEntityType* t;
        if (it != _typeCache.end()) {
            t = it->second;
        } else {
            t = &_types.GetEntityType(Dvn(n.type), false);
            _typeCache.emplace(n.type, t);
        }
        if (!t->IsValid()) throw TrxError{n.pos, DvnTRXMsgUnknownType, Text(n.type), ""};
        return *t;
    }

    const DvnfLinkType& LinkTypeOf(std::string_view name, const DvnfEntityType& source) {
        LinkKey key{&source, name};
        auto it = _linkCache.find(key);
        if (it != _linkCache.end()) return *it->second;
        const DvnfLinkType& lt = _types.FindLinkType(Dvn(name), source);
        _linkCache.emplace(key, &lt);
        return lt;
    }

    // The text as core-model text. Texts that repeat (the members of every
    // structure named "M0" .. "M49", their Name values) are made once and
    // shared while they repeat: a cache of one text per slot, by hash, so
    // that texts seen once only pass through it. The empty text is one.
    DvnfString Dvn(std::string_view v) {
        if (v.empty()) return _empty;
        if (v.size() > kSharedLength) return Str(v);
        DvnfString& slot = _shared[std::hash<std::string_view>{}(v) & (kSharedSlots - 1)];
        if (slot.IsNull() || std::string_view(slot.Data(), static_cast<size_t>(slot.Length())) != v) slot = Str(v);
        return slot;
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
        DvnfString name(Dvn(n.name)), oid(n.hasOid ? Dvn(n.oid) : _empty);
        DvnfEntity& byKey = n.hasOid ? _data.GetEntityByOID(t, oid, false) : DvnfEntity::undefined;
        DvnfEntity& byName = _data.GetEntityByName(t, name);
        // While checking, an entity with a state is one the file defined
        // before (what it only names has none): a second definition of the
        // name, or of the key under another name, is refused.
        if (_checks && (byKey.State() != DvnfObject::StateNone || byName.State() != DvnfObject::StateNone))
            throw TrxError{n.pos, DvnTRXMsgDuplicate, Text(n.type), Text(n.name)};
        DvnfEntity* e = byKey.IsValid() ? &byKey : nullptr;
        if (!e && byName.IsValid() && (!n.hasOid || !byName.HasOID())) e = &byName;
        DvnfObject::State_t state;
        if (e) {
            state = (e->State() == DvnfObject::StateUnchanged || e->State() == DvnfObject::StateChanged)
                        ? DvnfObject::StateChanged
                        : DvnfObject::StateNew;
            if (!(e->Name() == name)) e->Name(name);
            if (n.hasOid && !e->HasOID()) e->OID(oid);
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
                throw TrxError{n.pos, DvnTRXMsgSyntax, Text(n.type) + " needs a body { } here", ""};
            DvnfEntity& e = n.hasOid ? _data.GetEntityByOID(t, Dvn(n.oid), true)
                                     : _data.GetEntityByName(t, Dvn(n.name), true);
            if (!e.IsValid()) throw TrxError{n.pos, DvnTRXMsgSyntax, "a reference needs a name or a key", ""};
            _named.push_back(&e);
            return e;
        }
        if (t.IsTopLevel())
            throw TrxError{n.pos, DvnTRXMsgSyntax,
                           Text(n.type) + " is defined at the top level; refer to it without a body", ""};
        DvnfString oid(n.hasOid ? Dvn(n.oid) : _empty);
        DvnfEntity& e = _data.CreateEntity(t, oid, Dvn(n.name));
        if (n.hasOid) Clear(e);
        Fill(e, n.body, state);
        return e;
    }

    // What the catalogue says of one attribute path of one entity type,
    // asked once per path and kept: the attributes below it by name, and
    // the elements of a set ("Members" -> "Members[]").
    struct PathInfo {
        std::string path;  // as the catalogue spells it: "Diagram.Activities", "Members[]"
        DvnfAttributeType kind = DvnfAttributeType::Undefined;  // expected; Undefined: unknown
        unsigned accepts = 0;                                   // bit per kind accepted
        const DvnfEntityType* element = nullptr;                // entity type of a set's elements
        int scope = 0;  // a set of the diagram's scope: 1 activities, 2 sources, 3 sinks
        std::unordered_map<std::string_view, std::unique_ptr<PathInfo>> children;
        std::unique_ptr<PathInfo> elements;
        bool Accepts(DvnfAttributeType k) const { return (accepts >> static_cast<unsigned>(k)) & 1u; }
    };

    std::unique_ptr<PathInfo> MakePath(const DvnfEntityType& t, std::string path) {
        auto p = std::make_unique<PathInfo>();
        p->path = std::move(path);
        if (!p->path.empty()) {
            p->kind = t.AttributeKind(p->path);
            for (unsigned k = 0; k <= static_cast<unsigned>(DvnfAttributeType::Entity); ++k)
                if (t.AcceptsKind(p->path, static_cast<DvnfAttributeType>(k))) p->accepts |= 1u << k;
            const DvnfEntityType& el = t.SetElementType(p->path);
            p->element = &el;
            p->scope = p->path == "Diagram.Activities" ? 1
                       : p->path == "Diagram.Sources"  ? 2
                       : p->path == "Diagram.Sinks"    ? 3
                                                       : 0;
        }
        return p;
    }

    PathInfo& Root(const DvnfEntityType& t) {
        std::unique_ptr<PathInfo>& root = _roots[&t];
        if (!root) root = MakePath(t, std::string());
        return *root;
    }

    PathInfo& Child(const DvnfEntityType& t, PathInfo& parent, std::string_view name) {
        auto it = parent.children.find(name);
        if (it != parent.children.end()) return *it->second;
        std::string path = parent.path;
        if (!path.empty()) path += '.';
        path += name;
        return *parent.children.emplace(name, MakePath(t, std::move(path))).first->second;
    }

    PathInfo& Elements(const DvnfEntityType& t, PathInfo& set) {
        if (!set.elements) set.elements = MakePath(t, set.path + "[]");
        return *set.elements;
    }

    void Fill(DvnfEntity& e, Span<Item> body, DvnfObject::State_t state) {
        e.State(state);
        e.Flags(DvnfEntity::FlagAttributesComplete | DvnfEntity::FlagContainersComplete | DvnfEntity::FlagBlockContent);
        int outer = _unknownDepth;  // an entity's attributes are checked against its own type
        _unknownDepth = 0;
        Items(e, e.AttributeData(), body, Root(e.Type()), state);
        _unknownDepth = outer;
    }

    // Whether a name stands before index i among the attributes of a body.
    static bool GivenBefore(Span<Item> items, size_t i) {
        for (size_t k = 0; k < i; ++k)
            if (!items.data[k].isLink && items.data[k].name == items.data[i].name) return true;
        return false;
    }

    void Items(DvnfEntity& owner, DvnfAttributeData target, Span<Item> items, PathInfo& at,
               DvnfObject::State_t state) {
        // Long bodies find names given twice through a set; short ones by looking back.
        constexpr size_t kLookBack = 16;
        std::unordered_set<std::string_view> names;
        for (size_t i = 0; i < items.size; ++i) {
            const Item& it = items.data[i];
            if (it.isLink) {
                const DvnfLinkType& lt = LinkTypeOf(it.name, owner.Type());
                if (!lt.IsValid())
                    throw TrxError{it.pos, DvnTRXMsgUnknownLink, Text(it.name), owner.Type().Name().str()};
                _pending.push_back(Pending{it.pos, &owner, &lt, _scopes.empty() ? nullptr : _scopes.back().get(),
                                           it.target, it.byOid});
                continue;
            }
            bool twice = items.size <= kLookBack ? GivenBefore(items, i) : !names.insert(it.name).second;
            if (twice) throw TrxError{it.pos, DvnTRXMsgSyntax, "attribute " + Text(it.name) + " is given twice", ""};
            PathInfo& sub = Child(owner.Type(), at, it.name);
            Check(owner.Type(), sub, *it.value);
            bool diagram = it.name == "Diagram" && it.value->kind == Value::Group;
            if (diagram) _scopes.push_back(ScopeOf(*it.value));
            Attr(owner, target.Sub(it.name), *it.value, sub, state);
            if (diagram) {
                _keep.push_back(std::move(_scopes.back()));
                _scopes.pop_back();
            }
        }
    }

    void Check(const DvnfEntityType& t, const PathInfo& p, const Value& v) {
        if (_unknownDepth > 0) return;
        if (p.kind == DvnfAttributeType::Undefined) {
            Warn(v.pos, DvnTRXMsgUnknownAttr, p.path, t.Name().str());
            return;
        }
        DvnfAttributeType given = KindOf(v);
        if (given == DvnfAttributeType::Group && p.Accepts(DvnfAttributeType::Entity)) return;
        if (!p.Accepts(given)) Warn(v.pos, DvnTRXMsgKindMismatch, p.path, KindWord(p.kind));
    }

    // Pre-builds the scope of a diagram: the entities of its three sets.
    std::unique_ptr<Scope> ScopeOf(const Value& diagram) {
        auto s = std::make_unique<Scope>();
        for (const Item& it : diagram.group) {
            std::map<std::string_view, DvnfEntity*>* m = it.name == "Activities" ? &s->activities
                                                         : it.name == "Sources"  ? &s->sources
                                                         : it.name == "Sinks"    ? &s->sinks
                                                                                 : nullptr;
            if (!m || it.isLink || it.value->kind != Value::Set) continue;
            for (const Value* el : it.value->elements) {
                if (el->kind != Value::Entity) continue;
                auto r = m->emplace(el->entity->name, nullptr);
                if (!r.second)
                    throw TrxError{el->pos, DvnTRXMsgDuplicate, Text(el->entity->type), Text(el->entity->name)};
            }
        }
        return s;
    }

    // The scope map a set of the current diagram fills, if any.
    std::map<std::string_view, DvnfEntity*>* ScopeMap(const PathInfo& p) {
        if (_scopes.empty() || p.scope == 0) return nullptr;
        Scope& s = *_scopes.back();
        return p.scope == 1 ? &s.activities : p.scope == 2 ? &s.sources : &s.sinks;
    }

    // Writes the value of the attribute at path p through target.
    void Attr(DvnfEntity& owner, DvnfAttributeData target, const Value& v, PathInfo& p, DvnfObject::State_t state) {
        switch (v.kind) {
        case Value::Long: target = v.l; break;
        case Value::Bool: target = v.b; break;
        case Value::String: target = Dvn(v.s); break;
        case Value::Group: {
            bool unknown = p.kind == DvnfAttributeType::Undefined;
            if (unknown) ++_unknownDepth;
            Items(owner, target.MakeGroup(), v.group, p, state);
            if (unknown) --_unknownDepth;
            break;
        }
        case Value::Set: {
            bool unknown = p.kind == DvnfAttributeType::Undefined;
            if (unknown) ++_unknownDepth;
            DvnfAttributeData set = target.MakeSet();
            const DvnfEntityType& elementType = *p.element;
            std::map<std::string_view, DvnfEntity*>* scope = ScopeMap(p);
            PathInfo& elements = Elements(owner.Type(), p);
            for (const Value* el : v.elements) {
                if (el->kind != Value::Entity) Check(owner.Type(), elements, *el);
                if (el->kind == Value::Entity) {
                    DvnfEntity& e = DefineInner(*el->entity, state);
                    if (elementType.IsValid() && &e.Type() != &elementType)
                        Warn(el->pos, DvnTRXMsgKindMismatch, elements.path, elementType.Name().str());
                    set.NewSetElement(e);
                    if (scope) (*scope)[el->entity->name] = &e;
                } else if (el->kind == Value::Group && elementType.IsValid()) {
                    // A plain group in a set of entities: the element entity takes it.
                    Fill(set.NewSetElement().AsEntity(), el->group, state);
                } else if (elementType.IsValid()) {
                    // A plain value cannot stand for an entity; the warning above says so.
                    continue;
                } else {
                    Attr(owner, set.NewSetElement(), *el, elements, state);
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
                throw TrxError{p.pos, DvnTRXMsgNoSuchEnd, p.type->Name().str(), Text(p.target)};
            const auto& m = tn == "Activity" ? p.scope->activities : tn == "Source" ? p.scope->sources : p.scope->sinks;
            auto it = m.find(p.target);
            if (it == m.end() || !it->second || &it->second->Type() != &tt)
                throw TrxError{p.pos, DvnTRXMsgNoSuchEnd, p.type->Name().str(), Text(p.target)};
            p.source->AddLink(*p.type, *it->second, false);
            return;
        }
        const DvnfLink& l = p.byOid ? _data.AddLinkByOID(*p.source, *p.type, Dvn(p.target), true, false)
                                    : _data.AddLinkByName(*p.source, *p.type, Dvn(p.target), true, false);
        if (!l.IsValid()) throw TrxError{p.pos, DvnTRXMsgSyntax, "link " + p.type->Name().str() + " needs a target", ""};
        _named.push_back(&l.Target());
    }

    DvnfTRXData& _data;
    const DvnfCoreTypes& _types;
    bool _checks;
    const DvnfString _empty{""};
    static constexpr size_t kSharedSlots = 1024, kSharedLength = 64;
    std::vector<DvnfString> _shared = std::vector<DvnfString>(kSharedSlots);
    std::vector<std::unique_ptr<Scope>> _scopes, _keep;
    std::vector<Pending> _pending;
    std::vector<Warning> _warnings;
    std::vector<DvnfEntity*> _defined, _named;
    int _unknownDepth = 0;
    std::unordered_map<const DvnfEntityType*, std::unique_ptr<PathInfo>> _roots;
    std::unordered_map<std::string_view, const DvnfEntityType*> _typeCache;
    std::unordered_map<LinkKey, const DvnfLinkType*, LinkKeyHash> _linkCache;
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
    // Read straight into one string of the file's size (a stream buffer and
    // its copy would hold the text twice while the parse runs).
    std::string text;
    in.seekg(0, std::ios::end);
    std::streamoff size = in.tellg();
    if (size >= 0) {
        in.seekg(0, std::ios::beg);
        text.resize(static_cast<size_t>(size));
        in.read(text.data(), size);
        text.resize(static_cast<size_t>(in.gcount()));
    } else {  // not a file one can seek in (a pipe)
        in.clear();
        std::ostringstream all;
        all << in.rdbuf();
        text = std::move(all).str();
    }
    return ReadText(text, file, acceptLevel, defined, firstError);
}

int DvnTRXFrontend::ReadText(const std::string& text, const char* sourceName, int acceptLevel,
                             std::vector<DvnfEntity*>* defined, std::string* firstError) {
    DvnfMessageHandler* mh = _data.MessageHandler();
    DvnString src(sourceName ? sourceName : "");
    auto report = [&](const Pos& pos, long number, const std::string& a4, const std::string& a5) {
        mh->Report(number, src, DvnString::FromLong(pos.line), DvnString::FromLong(pos.col), DvnString(a4),
                   a5.empty() ? DvnString() : DvnString(a5));
    };
    // A byte-order mark at the very start is no part of the text.
    std::string_view body(text);
    if (body.substr(0, kByteOrderMark.size()) == kByteOrderMark) body.remove_prefix(kByteOrderMark.size());
    // When the core data holds nothing yet, the checked scratch data is the
    // result: it is taken over instead of being built a second time.
    bool takeOver = _data.NumberOfEntities() == 0;
    Arena strings;
    DvnfTRXData scratch(_data.Types(), nullptr);
    Builder check(scratch, true);
    std::vector<Warning> warnings;
    try {
        size_t bad = FirstNonUtf8(body);
        if (bad != std::string::npos)
            throw TrxError{PlaceOf(body, bad), DvnTRXMsgSyntax, NotUtf8(static_cast<unsigned char>(body[bad])), ""};
        // Each definition is built as soon as it is parsed. After an error
        // of the build the rest is still parsed, since a syntax error
        // anywhere in the text is the one reported.
        Arena nodes;
        Parser parser(body, strings, nodes);
        std::optional<TrxError> buildError;
        while (const EntityNode* d = parser.Next()) {
            if (!buildError) {
                try {
                    check.Define(*d);
                } catch (const TrxError& e) {
                    buildError = e;
                }
            }
            nodes.Reset();
        }
        if (buildError) throw *buildError;
        check.Finish();
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
    std::unique_ptr<Builder> again;
    if (takeOver) {
        _data.TakeEntitiesFrom(scratch);
    } else {
        again = std::make_unique<Builder>(_data, false);
        try {
            Arena nodes;
            Parser parser(body, strings, nodes);
            while (const EntityNode* d = parser.Next()) {
                again->Define(*d);
                nodes.Reset();
            }
            again->Finish();
        } catch (const TrxError&) {
            // Cannot happen: the same tree was built without error just before.
            DVNK_INVARIANT(false, "TRX build failed after a clean check");
        }
    }
    const Builder& build = again ? *again : check;
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
