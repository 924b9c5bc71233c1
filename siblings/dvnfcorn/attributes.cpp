// The attribute tree of an entity and the handles that read and write it.
#include "attrnode.h"

#include <atomic>
#include <bit>
#include <cerrno>
#include <cstdint>
#include <cstdlib>
#include <mutex>
#include <new>
#include <unordered_map>
#include <utility>

static_assert(sizeof(DvnfAttrNode) <= 40, "an attribute node stays at five words (docs/core-model.md)");
static_assert(DvnfAttrNode::kRootAt % alignof(DvnfAttrNode) == 0, "the root lies aligned after its entity");

const DvnfAttributeDataReader DvnfAttributeDataReader::undefined;
const DvnfAttributeData DvnfAttributeData::undefined;
const DvnfDataSetIterator DvnfDataSetIterator::undefined;

// ---------------------------------------------------------------------------
// Names

namespace {
// The one T of the process, kept to its end on purpose (nodes of static core
// data may outlive any other static).
template <class T>
T& OfTheProcess() {
    static T* one = new T;
    return *one;
}

// The interned names: chunks that double in size and never move (chunk c
// holds 64 << c names), so that a name is read by its index without a lock;
// a map from the text to the index, under a lock, for Intern. The chunks
// are a constant-initialised array, so that a read needs no guard of a
// static; chunk 0 comes with the first name (index 0, the empty name, is
// read from an empty text of its own until then).
constexpr unsigned kFirstNameBits = 6;
constexpr std::uint64_t kFirstNames = std::uint64_t{1} << kFirstNameBits;
constinit std::atomic<std::string*> gNameChunks[33 - kFirstNameBits] = {};

// Index i lies in chunk c at place p where i + 64 = (64 << c) + p.
std::pair<unsigned, std::uint64_t> NamePlace(std::uint32_t index) {
    const std::uint64_t v = std::uint64_t{index} + kFirstNames;
    const unsigned top = static_cast<unsigned>(std::bit_width(v)) - 1;
    return {top - kFirstNameBits, v - (std::uint64_t{1} << top)};
}

// A name read here, inlined where a node is searched by name (NameOf, the
// entry of the library, costs a call through the symbol table each time).
[[gnu::always_inline]] inline const std::string& NameAt(std::uint32_t index) {
    auto [chunk, at] = NamePlace(index);
    if (const std::string* names = gNameChunks[chunk].load(std::memory_order_acquire)) return names[at];
    return OfTheProcess<std::string>();
}

class NameTable {
public:
    std::uint32_t Intern(std::string_view text) {
        std::lock_guard<std::mutex> lock(_guard);
        auto it = _byText.find(text);
        if (it != _byText.end()) return it->second;
        DVNK_REQUIRE(_count != UINT32_MAX, "more attribute names than an index holds");
        const std::uint32_t index = _count;
        auto [chunk, at] = NamePlace(index);
        std::string* names = gNameChunks[chunk].load(std::memory_order_relaxed);
        if (!names) {
            names = new std::string[kFirstNames << chunk];
            gNameChunks[chunk].store(names, std::memory_order_release);
        }
        names[at].assign(text);
        _byText.emplace(std::string_view(names[at]), index);
        ++_count;
        return index;
    }

private:
    std::mutex _guard;
    std::unordered_map<std::string_view, std::uint32_t> _byText;
    std::uint32_t _count = 1;
};
}  // namespace

std::uint32_t DvnfAttrNode::Intern(std::string_view text) {
    return text.empty() ? 0 : OfTheProcess<NameTable>().Intern(text);
}

const std::string& DvnfAttrNode::NameOf(std::uint32_t index) { return NameAt(index); }

// ---------------------------------------------------------------------------
// The pool of nodes

// Under AddressSanitizer the nodes come from the allocator one by one, so
// that a node used after it was freed is still seen: the pool would hand
// its place out again unnoticed.
#if defined(__SANITIZE_ADDRESS__)
#define DVNF_NODE_POOL 0
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define DVNF_NODE_POOL 0
#endif
#endif
#ifndef DVNF_NODE_POOL
#define DVNF_NODE_POOL 1
#endif

#if DVNF_NODE_POOL
namespace {
// Blocks of 16 KiB, each at an address that is a multiple of its size, so
// that a node finds its block by its address; a node costs its 40 bytes,
// where the allocator would take 48. A block counts its nodes handed out and
// keeps those freed in a list of its own; it goes back to the allocator when
// its last node is freed (one empty block is kept, so that a node made and
// freed over and over at the edge of a block does not cost a block each
// time). So the pool holds what the models alive hold, not the most they
// ever held. One lock for the process: core datas live in several threads,
// and a node moves between trees (TakeChildren, Clone) and so between them.
class NodePool {
public:
    void* Allocate() {
        std::lock_guard<std::mutex> lock(_guard);
        Block* b = _open;
        if (!b) b = Open(TakeBlock());
        void* p;
        if (b->free) {
            p = b->free;
            b->free = b->free->next;
        } else {
            p = b->Node(b->fresh++);
        }
        if (++b->live == kPerBlock) Close(b);
        return p;
    }

    void Free(void* p) {
        std::lock_guard<std::mutex> lock(_guard);
        Block* b = reinterpret_cast<Block*>(reinterpret_cast<std::uintptr_t>(p) & ~(kBlockBytes - 1));
        DVNK_REQUIRE(b->live > 0, "an attribute node freed twice");
        if (b->live == kPerBlock) Open(b);
        b->free = new (p) FreeNode{b->free};
        if (--b->live == 0) GiveBack(b);
    }

private:
    static constexpr std::uintptr_t kBlockBytes = 16 * 1024;
    struct FreeNode {
        FreeNode* next;
    };
    struct Block {
        Block* prev = nullptr;  // the blocks with a free place
        Block* next = nullptr;
        FreeNode* free = nullptr;  // freed nodes
        std::uint32_t live = 0;    // nodes handed out
        std::uint32_t fresh = 0;   // nodes handed out at least once: those past it were never
        void* Node(std::uint32_t i) { return reinterpret_cast<char*>(this) + kFirstAt + i * sizeof(DvnfAttrNode); }
    };
    static constexpr std::uintptr_t kFirstAt =
        (sizeof(Block) + alignof(DvnfAttrNode) - 1) / alignof(DvnfAttrNode) * alignof(DvnfAttrNode);
    static constexpr std::uint32_t kPerBlock = (kBlockBytes - kFirstAt) / sizeof(DvnfAttrNode);

    Block* TakeBlock() {
        if (Block* spare = _spare) {
            _spare = nullptr;
            return spare;
        }
        return new (::operator new(kBlockBytes, std::align_val_t(kBlockBytes))) Block;
    }
    // Empty now: kept as the spare or given back.
    void GiveBack(Block* b) {
        Close(b);
        b->free = nullptr;
        b->fresh = 0;
        if (!_spare) {
            _spare = b;
            return;
        }
        b->~Block();
        ::operator delete(b, std::align_val_t(kBlockBytes));
    }
    Block* Open(Block* b) {
        b->prev = nullptr;
        b->next = _open;
        if (_open) _open->prev = b;
        _open = b;
        return b;
    }
    void Close(Block* b) {
        if (b->prev) b->prev->next = b->next;
        if (b->next) b->next->prev = b->prev;
        if (_open == b) _open = b->next;
        b->prev = b->next = nullptr;
    }

    std::mutex _guard;
    Block* _open = nullptr;   // the blocks with a free place, the one that got one last first
    Block* _spare = nullptr;  // an empty block
};
}  // namespace

void* DvnfAttrNode::operator new(size_t bytes) {
    DVNK_REQUIRE(bytes == sizeof(DvnfAttrNode), "an attribute node of another size");
    return OfTheProcess<NodePool>().Allocate();
}

void DvnfAttrNode::operator delete(void* p) noexcept {
    if (p) OfTheProcess<NodePool>().Free(p);
}
#else
void* DvnfAttrNode::operator new(size_t bytes) { return ::operator new(bytes); }

void DvnfAttrNode::operator delete(void* p) noexcept { ::operator delete(p); }
#endif

// ---------------------------------------------------------------------------
// Nodes

size_t DvnfAttrNode::Count() const {
    size_t n = 0;
    for (const DvnfAttrNode* c = First(); c; c = After(c)) ++n;
    return n;
}

DvnfAttrNode* DvnfAttrNode::At(size_t index) {
    const bool cached = Kind() == DvnfAttributeType::Set;
    DvnfAttrNode* c = First();
    size_t at = 0;
    if (cached && cursor && _at <= index) {
        c = cursor;
        at = _at;
    }
    for (; c && at < index; ++at) c = After(c);
    if (cached && c && at <= kMaxAt) {
        cursor = c;
        _at = static_cast<std::uint32_t>(at);
    }
    return c;
}

void DvnfAttrNode::Append(std::unique_ptr<DvnfAttrNode> child) {
    DvnfAttrNode* c = child.release();
    c->parent = this;
    if (!_last) {
        c->_next = c;
    } else {
        c->_next = _last->_next;
        _last->_next = c;
    }
    _last = c;
}

void DvnfAttrNode::DropChildren() {
    if (!HasChildren()) return;
    DvnfAttrNode* c = _last->_next;
    _last->_next = nullptr;  // the ring open after the last one
    _last = nullptr;
    while (c) {
        DvnfAttrNode* following = c->_next;
        delete c;
        c = following;
    }
    if (Kind() == DvnfAttributeType::Set) cursor = nullptr;
}

void DvnfAttrNode::TakeChildren(DvnfAttrNode& from) {
    DropChildren();
    if (!from.HasChildren()) return;
    _last = from._last;
    from._last = nullptr;
    if (from.Kind() == DvnfAttributeType::Set) from.cursor = nullptr;
    for (DvnfAttrNode* c = First(); c; c = After(c)) c->parent = this;
}

DvnfAttrNode* DvnfAttrNode::Child(std::string_view childName) const {
    for (DvnfAttrNode* c = First(); c; c = After(c))
        if (NameAt(c->_name) == childName) return c;
    return nullptr;
}

DvnfAttrNode* DvnfAttrNode::MakeChild(std::string_view childName) {
    DvnfAttrNode* n = Inner();
    if (n->Kind() == DvnfAttributeType::Set) return nullptr;  // a set has elements, not names
    if (n->Kind() != DvnfAttributeType::Group) n->Clear(DvnfAttributeType::Group);
    if (DvnfAttrNode* c = n->Child(childName)) return c;
    auto fresh = std::make_unique<DvnfAttrNode>();
    fresh->_name = Intern(childName);
    DvnfAttrNode* c = fresh.get();
    n->Append(std::move(fresh));
    return c;
}

void DvnfAttrNode::Clear(DvnfAttributeType newKind) {
    DropChildren();
    if (Kind() == DvnfAttributeType::String) sval.~DvnfString();
    _kind = static_cast<std::uint8_t>(newKind);
    _at = 0;
    if (Kind() == DvnfAttributeType::String)
        new (&sval) DvnfString();
    else
        lval = 0;
    entity = nullptr;
}

std::unique_ptr<DvnfAttrNode> DvnfAttrNode::Clone(DvnfAttrNode* newParent) const {
    auto n = std::make_unique<DvnfAttrNode>();
    n->parent = newParent;
    n->Clear(Kind());
    n->_name = _name;
    if (Kind() == DvnfAttributeType::String)
        n->sval = sval;
    else if (Kind() != DvnfAttributeType::Set)
        n->lval = lval;
    if (Kind() == DvnfAttributeType::Entity) n->entity = entity;
    for (const DvnfAttrNode* c = First(); c; c = After(c)) n->Append(c->Clone(n.get()));
    return n;
}

DvnfAttrNode* DvnfAttrNode::Inner() {
    if (Kind() == DvnfAttributeType::Entity && entity && entity->IsValid()) return AttrRoot(*entity);
    return this;
}

std::string DvnfAttrNode::CataloguePath(const DvnfEntity** owner) const {
    std::vector<const DvnfAttrNode*> chain;
    const DvnfAttrNode* n = this;
    while (n->parent) {
        chain.push_back(n);
        n = n->parent;
    }
    if (owner) *owner = n->Owner();
    std::string path;
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        const DvnfAttrNode* c = *it;
        if (c->parent->Kind() == DvnfAttributeType::Set) {
            path += "[]";
        } else {
            if (!path.empty()) path += '.';
            path += c->Name();
        }
    }
    return path;
}

// ---------------------------------------------------------------------------
// Reader

DvnfAttrNode* DvnfAttributeDataReader::Resolve() const {
    DvnfAttrNode* n = _base;
    for (const auto& name : _path) {
        if (!n) return nullptr;
        n = n->Inner();
        if (n->Kind() != DvnfAttributeType::Group) return nullptr;
        n = n->Child(name);
    }
    return n;
}

DvnfAttributeDataReader DvnfAttributeDataReader::operator()(const char* name) const {
    if (!_base || !name) return DvnfAttributeDataReader();
    std::vector<std::string> p = _path;
    p.emplace_back(name);
    return DvnfAttributeDataReader(_base, std::move(p));
}

bool DvnfAttributeDataReader::IsValid() const { return Resolve() != nullptr; }

bool DvnfAttributeDataReader::IsDefined() const {
    const DvnfAttrNode* n = Resolve();
    if (!n) return false;
    switch (n->Kind()) {
    case DvnfAttributeType::Long:
    case DvnfAttributeType::Bool:
    case DvnfAttributeType::String: return true;
    case DvnfAttributeType::Entity: return n->entity && n->entity->IsValid();
    case DvnfAttributeType::Group:
    case DvnfAttributeType::Set: return n->HasChildren();
    default: return false;
    }
}

namespace {
bool ParseLong(const char* text, long& out) {
    if (!text || !*text) return false;
    char* end = nullptr;
    errno = 0;
    long v = std::strtol(text, &end, 10);
    if (errno != 0 || *end != '\0') return false;
    out = v;
    return true;
}
}  // namespace

long DvnfAttributeDataReader::AsLong(long defaultValue) const {
    const DvnfAttrNode* n = Resolve();
    if (!n) return defaultValue;
    switch (n->Kind()) {
    case DvnfAttributeType::Long: return n->lval;
    case DvnfAttributeType::Bool: return n->lval != 0 ? 1 : 0;
    case DvnfAttributeType::String: {
        long v;
        return ParseLong(n->sval.c_str(), v) ? v : defaultValue;
    }
    default: return defaultValue;
    }
}

bool DvnfAttributeDataReader::AsBool(bool defaultValue) const {
    const DvnfAttrNode* n = Resolve();
    if (!n) return defaultValue;
    switch (n->Kind()) {
    case DvnfAttributeType::Bool: return n->lval != 0;
    case DvnfAttributeType::Long: return n->lval != 0;
    case DvnfAttributeType::String:
        if (n->sval == "true") return true;
        if (n->sval == "false") return false;
        return defaultValue;
    default: return defaultValue;
    }
}

DvnfString DvnfAttributeDataReader::AsString(const DvnfString& defaultValue) const {
    const DvnfAttrNode* n = Resolve();
    if (!n) return defaultValue;
    switch (n->Kind()) {
    case DvnfAttributeType::String: return n->sval;
    case DvnfAttributeType::Long: return DvnfString(DvnString::FromLong(n->lval));
    case DvnfAttributeType::Bool: return DvnfString(n->lval != 0 ? "true" : "false");
    default: return defaultValue;
    }
}

DvnfString DvnfAttributeDataReader::Value() const { return AsString(DvnfString()); }

DvnfEntity& DvnfAttributeDataReader::AsEntity() const {
    const DvnfAttrNode* n = Resolve();
    if (n && n->Kind() == DvnfAttributeType::Entity && n->entity) return *n->entity;
    return DvnfEntity::undefined;
}

DvnfAttributeType DvnfAttributeDataReader::Type() const {
    const DvnfAttrNode* n = Resolve();
    return n ? n->Kind() : DvnfAttributeType::Undefined;
}

long DvnfAttributeDataReader::NumberOfElements() const {
    const DvnfAttrNode* n = Resolve();
    return (n && n->Kind() == DvnfAttributeType::Set) ? static_cast<long>(n->Count()) : 0;
}

DvnfDataSetIterator DvnfAttributeDataReader::ElementsOfSet() const {
    DvnfAttrNode* n = Resolve();
    if (n && n->Kind() == DvnfAttributeType::Set) return DvnfDataSetIterator(n);
    return DvnfDataSetIterator();
}

std::vector<std::string> DvnfAttributeDataReader::Names() const {
    std::vector<std::string> names;
    DvnfAttrNode* n = Resolve();
    if (!n) return names;
    n = n->Inner();
    if (n->Kind() != DvnfAttributeType::Group) return names;
    for (const DvnfAttrNode* c = n->First(); c; c = n->After(c)) names.push_back(c->Name());
    return names;
}

// ---------------------------------------------------------------------------
// Set iterator

DvnfAttributeDataReader DvnfDataSetIterator::At(size_t index) {
    _pos = index;
    DvnfAttrNode* element = _set ? _set->At(index) : nullptr;
    if (!element) return DvnfAttributeDataReader();
    return DvnfAttributeDataReader(element, {});
}

DvnfAttributeDataReader DvnfDataSetIterator::First() { return At(0); }

DvnfAttributeDataReader DvnfDataSetIterator::Next() { return At(_pos + 1); }

// ---------------------------------------------------------------------------
// Writer

DvnfAttrNode* DvnfAttributeData::Make() const {
    DvnfAttrNode* n = _base;
    for (const auto& name : _path) {
        if (!n) return nullptr;
        n = n->MakeChild(name);
    }
    return n;
}

DvnfAttributeData DvnfAttributeData::operator()(const char* name) const {
    if (!_base || !name) return DvnfAttributeData();
    std::vector<std::string> p = _path;
    p.emplace_back(name);
    return DvnfAttributeData(_base, std::move(p));
}

DvnfAttributeData DvnfAttributeData::Sub(std::string_view name) const {
    DvnfAttrNode* n = Make();
    DvnfAttrNode* c = n ? n->MakeChild(name) : nullptr;
    return c ? DvnfAttributeData(c, {}) : DvnfAttributeData();
}

namespace {
// A node that may take a value: not the root of an entity's attributes.
DvnfAttrNode* ValueNode(DvnfAttrNode* n) { return (n && n->parent) ? n : nullptr; }
}  // namespace

DvnfAttributeData& DvnfAttributeData::operator=(long value) {
    if (DvnfAttrNode* n = ValueNode(Make())) {
        n->Clear(DvnfAttributeType::Long);
        n->lval = value;
    }
    return *this;
}

DvnfAttributeData& DvnfAttributeData::operator=(bool value) {
    if (DvnfAttrNode* n = ValueNode(Make())) {
        n->Clear(DvnfAttributeType::Bool);
        n->lval = value ? 1 : 0;
    }
    return *this;
}

DvnfAttributeData& DvnfAttributeData::operator=(const char* value) { return *this = DvnString(value ? value : ""); }

DvnfAttributeData& DvnfAttributeData::operator=(const DvnString& value) {
    if (DvnfAttrNode* n = ValueNode(Make())) {
        n->Clear(DvnfAttributeType::String);
        n->sval = DvnfString(value.IsNull() ? DvnString("") : value);
    }
    return *this;
}

DvnfAttributeData& DvnfAttributeData::operator=(DvnfEntity& entity) {
    if (!entity.IsValid()) {
        Reset();
        return *this;
    }
    if (DvnfAttrNode* n = ValueNode(Make())) {
        n->Clear(DvnfAttributeType::Entity);
        n->entity = &entity;
    }
    return *this;
}

DvnfAttributeData& DvnfAttributeData::operator=(const DvnfAttributeDataReader& other) {
    const DvnfAttrNode* src = other.Resolve();
    if (!src) {
        Reset();
        return *this;
    }
    std::unique_ptr<DvnfAttrNode> copy = src->Clone(nullptr);  // first: src may lie below the target
    DvnfAttrNode* n = Make();
    if (!n) return *this;
    if (!n->parent && copy->Kind() != DvnfAttributeType::Group) return *this;  // the root stays a group
    n->Clear(copy->Kind());
    if (copy->Kind() == DvnfAttributeType::String)
        n->sval = copy->sval;
    else if (copy->Kind() != DvnfAttributeType::Set)
        n->lval = copy->lval;
    if (copy->Kind() == DvnfAttributeType::Entity) n->entity = copy->entity;
    n->TakeChildren(*copy);
    return *this;
}

void DvnfAttributeData::Reset(const char* name) {
    DvnfAttrNode* n = Resolve();
    if (!n || !name) return;
    n = n->Inner();
    if (n->Kind() != DvnfAttributeType::Group) return;
    n->RemoveIf([name](const DvnfAttrNode& c) { return c.Name() == name; }, true);
}

void DvnfAttributeData::Reset() {
    DvnfAttrNode* n = Resolve();
    if (!n) return;
    if (!n->parent) {  // the root: empty it
        n->DropChildren();
        return;
    }
    n->parent->RemoveIf([n](const DvnfAttrNode& c) { return &c == n; }, true);
}

DvnfAttributeData DvnfAttributeData::MakeGroup() {
    DvnfAttrNode* n = Make();
    if (!n) return DvnfAttributeData();
    if (n->Inner()->Kind() != DvnfAttributeType::Group) n->Clear(DvnfAttributeType::Group);
    return DvnfAttributeData(n, {});
}

DvnfAttributeData DvnfAttributeData::MakeSet() {
    DvnfAttrNode* n = ValueNode(Make());
    if (!n) return DvnfAttributeData();
    if (n->Kind() != DvnfAttributeType::Set) n->Clear(DvnfAttributeType::Set);
    return DvnfAttributeData(n, {});
}

namespace {
DvnfAttrNode* Append(DvnfAttrNode* set) {
    auto e = std::make_unique<DvnfAttrNode>();
    DvnfAttrNode* raw = e.get();
    set->Append(std::move(e));
    return raw;
}
}  // namespace

DvnfAttributeData DvnfAttributeData::NewSetElement() {
    MakeSet();
    DvnfAttrNode* set = Resolve();
    if (!set || set->Kind() != DvnfAttributeType::Set) return DvnfAttributeData();
    const DvnfEntity* owner = nullptr;
    std::string path = set->CataloguePath(&owner);
    DvnfAttrNode* e = Append(set);
    if (owner && owner->IsValid() && owner->CoreData()) {
        const DvnfEntityType& elementType = owner->Type().SetElementType(path);
        if (elementType.IsValid()) {
            DvnfEntity& member = owner->CoreData()->CreateEntity(elementType, DvnfString(), DvnfString());
            member.State(owner->State());
            e->Clear(DvnfAttributeType::Entity);
            e->entity = &member;
        }
    }
    return DvnfAttributeData(e, {});
}

DvnfAttributeData DvnfAttributeData::NewSetElement(DvnfEntity& entity) {
    if (!entity.IsValid()) return DvnfAttributeData();
    MakeSet();
    DvnfAttrNode* set = Resolve();
    if (!set || set->Kind() != DvnfAttributeType::Set) return DvnfAttributeData();
    DvnfAttrNode* e = Append(set);
    e->Clear(DvnfAttributeType::Entity);
    e->entity = &entity;
    return DvnfAttributeData(e, {});
}

long DvnfAttributeData::RemoveSetElement(const DvnfEntity& entity) {
    DvnfAttrNode* set = Resolve();
    if (!set || set->Kind() != DvnfAttributeType::Set) return 0;
    return set->RemoveIf(
        [&entity](const DvnfAttrNode& c) { return c.Kind() == DvnfAttributeType::Entity && c.entity == &entity; },
        false);
}
