// Objects, entities, links and the core data that owns them.
#include "attrnode.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <mutex>
#include <random>
#include <pthread.h>
#include <unistd.h>

DvnfEntity DvnfEntity::undefined(nullptr, &DvnfEntityType::undefined, DvnfString(), DvnfString(),
                                 DvnfObject::StateNone);
const DvnfLink DvnfLink::undefined(&DvnfLinkType::undefined, nullptr);
const DvnfLinkTypeIterator DvnfLinkTypeIterator::undefined;

namespace {
// Names are never null, so that "" finds every entity without a name.
DvnfString NotNull(const DvnfString& s) { return s.IsNull() ? DvnfString("") : s; }

// The text of a string, for the indexes' look-ups.
std::string_view View(const DvnString& s) { return std::string_view(s.c_str(), static_cast<size_t>(s.Length())); }

// Upper-case hexadecimal digits of the low width nibbles of value.
char* PutHex(char* out, unsigned long long value, int width) {
    static const char digits[] = "0123456789ABCDEF";
    for (int i = width - 1; i >= 0; --i) {
        out[i] = digits[value & 0xF];
        value >>= 4;
    }
    return out + width;
}
}  // namespace

// ---------------------------------------------------------------------------
// Objects

namespace {
int HexDigit(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

// The 16 bytes of a key of 32 upper-case hexadecimal digits; false (and out
// undefined) for any other text.
bool PackKey(std::string_view text, unsigned char* out) {
    if (text.size() != 32) return false;
    for (size_t i = 0; i < 16; ++i) {
        const int high = HexDigit(text[2 * i]), low = HexDigit(text[2 * i + 1]);
        if (high < 0 || low < 0) return false;
        out[i] = static_cast<unsigned char>(high << 4 | low);
    }
    return true;
}

std::string_view Bytes(const unsigned char* packed) {
    return std::string_view(reinterpret_cast<const char*>(packed), 16);
}
}  // namespace

DvnfObject::DvnfObject(const DvnfString& oid, State_t state, bool fixed) : _state(state), _fixed(fixed) {
    StoreKey(oid);
}

DvnfObject::~DvnfObject() {
    if (!_packed) _textKey.~DvnfString();
}

void DvnfObject::StoreKey(const DvnfString& oid) {
    _packed = PackKey(View(oid), _packedKey);
    if (!_packed) new (&_textKey) DvnfString(oid);
}

void DvnfObject::SetKey(const DvnfString& oid) {
    if (!_packed) _textKey.~DvnfString();
    StoreKey(oid);
}

DvnfString DvnfObject::OID() const {
    if (!_packed) return _textKey;
    char text[32];
    for (size_t i = 0; i < 16; ++i) PutHex(text + 2 * i, _packedKey[i], 2);
    return DvnfString(text, 32);
}

DvnfKeyView DvnfObject::Key() const {
    return _packed ? DvnfKeyView{Bytes(_packedKey), true} : DvnfKeyView{View(_textKey)};
}

DvnfKeyView DvnfObject::KeyOf(const DvnfString& text, unsigned char (&buffer)[16]) {
    return PackKey(View(text), buffer) ? DvnfKeyView{Bytes(buffer), true} : DvnfKeyView{View(text)};
}

DvnfString DvnfObject::CreateOID() {
    // Time in microseconds, process id, a counter and a random word drawn once
    // per process. The (time, counter) pair only grows within a process, so
    // keys of one process never repeat, even when the clock steps back; the
    // process id and the random word keep processes apart.
    static std::mutex lock;
    static unsigned long long last = 0;
    static unsigned counter = 0;
    static const unsigned salt = [] {
        std::random_device rd;
        return static_cast<unsigned>(rd());
    }();
    // The process id, asked once; a child of fork asks again.
    static unsigned pid = [] {
        pthread_atfork(nullptr, nullptr, [] { pid = 0; });
        return 0u;
    }();
    std::lock_guard<std::mutex> guard(lock);
    if (pid == 0) pid = static_cast<unsigned>(getpid());
    auto now = static_cast<unsigned long long>(
        std::chrono::duration_cast<std::chrono::microseconds>(std::chrono::system_clock::now().time_since_epoch())
            .count());
    if (now > last) {
        last = now;
        counter = 0;
    } else if (++counter > 0xFFFF) {
        ++last;
        counter = 0;
    }
    // 14 digits of time, 6 of process, 4 of counter, 8 of salt.
    char buf[32];
    char* p = PutHex(buf, last, 14);
    p = PutHex(p, pid, 6);
    p = PutHex(p, counter, 4);
    PutHex(p, salt, 8);
    return DvnfString(buf, 32);
}

// ---------------------------------------------------------------------------
// Links

bool DvnfLink::IsValid() const { return _type && _type->IsValid() && _target && _target->IsValid(); }

DvnfEntity& DvnfLink::Target() const { return IsValid() ? *_target : DvnfEntity::undefined; }

const DvnfLink& DvnfLinkTypeIterator::Seek(size_t from) {
    if (_entity && _type) {
        const auto& links = _entity->Links();
        for (size_t i = from; i < links.size(); ++i) {
            if (&links[i].Type() == _type) {
                _pos = i;
                return links[i];
            }
        }
        _pos = links.size();
    }
    return DvnfLink::undefined;
}

const DvnfLink& DvnfLinkTypeIterator::First() { return Seek(0); }

const DvnfLink& DvnfLinkTypeIterator::Next() { return Seek(_pos + 1); }

long DvnfLinkTypeIterator::Count() const {
    if (!_entity || !_type) return 0;
    const auto& links = _entity->Links();
    return static_cast<long>(
        std::count_if(links.begin(), links.end(), [this](const DvnfLink& l) { return &l.Type() == _type; }));
}

// ---------------------------------------------------------------------------
// Entities

DvnfEntity::DvnfEntity(DvnfCoreData* data, const DvnfEntityType* type, const DvnfString& oid,
                       const DvnfString& name, State_t state)
    : DvnfObject(oid, state, data == nullptr), _data(data), _type(type), _name(name) {}

DvnfEntity::~DvnfEntity() = default;

void DvnfEntity::Name(const DvnfString& name) {
    if (!_data) return;
    DvnfString old = _name;
    _name = NotNull(name);
    _data->Rename(*this, old);
}

void DvnfEntity::OID(const DvnfString& oid) {
    if (!_data) return;
    DvnfString old = OID();
    SetKey(oid);
    _data->Rekey(*this, old);
}

DvnfAttributeData DvnfEntity::AttributeData() { return DvnfAttributeData(AttrRoot(*this), {}); }

DvnfAttributeDataReader DvnfEntity::AttributeData() const {
    return DvnfAttributeDataReader(const_cast<DvnfAttrNode*>(DvnfAttrNode::AttrRoot(*this)), {});
}

DvnfLinkTypeIterator DvnfEntity::LinksOfType(const DvnfLinkType& type) const { return DvnfLinkTypeIterator(this, &type); }

namespace {
const DvnfLinkType* LinkTypeOf(const DvnfEntity& e, const DvnfString& linkName) {
    if (!e.IsValid() || !e.CoreData()) return nullptr;
    const DvnfLinkType& t = e.CoreData()->Types().FindLinkType(linkName, e.Type());
    DVNK_REQUIRE(t.IsValid(), "link type not in the catalogue for this entity type");
    return &t;
}
}  // namespace

DvnfLinkTypeIterator DvnfEntity::LinksOfType(const DvnfString& linkName) const {
    const DvnfLinkType* t = LinkTypeOf(*this, linkName);
    return t ? DvnfLinkTypeIterator(this, t) : DvnfLinkTypeIterator::undefined;
}

const std::vector<DvnfLink>& DvnfEntity::Links() const {
    static const std::vector<DvnfLink> none;
    return _links ? *_links : none;
}

const DvnfLink& DvnfEntity::FirstLinkOfType(const DvnfLinkType& type) const {
    for (const auto& l : Links())
        if (&l.Type() == &type) return l;
    return DvnfLink::undefined;
}

const DvnfLink& DvnfEntity::FirstLinkOfType(const DvnfString& linkName) const {
    const DvnfLinkType* t = LinkTypeOf(*this, linkName);
    return t ? FirstLinkOfType(*t) : DvnfLink::undefined;
}

void DvnfEntity::DeleteAllLinksOfType(const DvnfLinkType& type) {
    if (_links) std::erase_if(*_links, [&](const DvnfLink& l) { return &l.Type() == &type; });
}

void DvnfEntity::DeleteAllLinksOfType(const DvnfString& linkName) {
    if (const DvnfLinkType* t = LinkTypeOf(*this, linkName)) DeleteAllLinksOfType(*t);
}

const DvnfLink& DvnfEntity::AddLink(const DvnfLinkType& type, DvnfEntity& target, bool noDuplicate) {
    if (!IsValid() || !target.IsValid() || !type.IsValid()) return DvnfLink::undefined;
    DVNK_REQUIRE(&type.Source() == _type, "link type does not start at this entity's type");
    DVNK_REQUIRE(&type.Target() == &target.Type(), "link target is not of the link type's target type");
    if (noDuplicate) {
        for (const auto& l : Links())
            if (&l.Type() == &type && &l.Target() == &target) return l;
    }
    if (!_links) _links = std::make_unique<std::vector<DvnfLink>>();
    return _links->emplace_back(&type, &target);
}

// ---------------------------------------------------------------------------
// Frontend reader defaults

DvnfFrontendReader::~DvnfFrontendReader() = default;

DvnfString DvnfFrontendReader::GetName(DvnfEntity& entity) { return entity.Name(); }

void DvnfFrontendReader::ReadBlock(DvnfTRXData&, DvnfEntity&, bool) {}

DvnfString DvnfFrontendReader::GetOID(DvnfEntity&) { return DvnfString(""); }

// ---------------------------------------------------------------------------
// Node pool

void* DvnfNodePool::do_allocate(size_t bytes, size_t align) {
    if (_size == 0 && bytes >= sizeof(Free) && bytes % alignof(Free) == 0) _size = bytes;
    if (!Pooled(bytes, align)) return ::operator new(bytes, std::align_val_t(align));
    if (Free* node = _free) {
        _free = node->next;
        return node;
    }
    if (_usedInLast == kNodesPerBlock) {
        _blocks.push_back(std::make_unique<std::byte[]>(_size * kNodesPerBlock));
        _usedInLast = 0;
    }
    return _blocks.back().get() + _size * _usedInLast++;
}

void DvnfNodePool::do_deallocate(void* p, size_t bytes, size_t align) {
    if (!Pooled(bytes, align)) {
        ::operator delete(p, bytes, std::align_val_t(align));
        return;
    }
    _free = new (p) Free{_free};
}

// ---------------------------------------------------------------------------
// Core data

DvnfCoreRepresentation::DvnfCoreRepresentation(DvnfCoreTypes& types, DvnfMessageHandler* handler)
    : _types(&types), _handler(handler ? handler : &_default) {}

DvnfCoreRepresentation::~DvnfCoreRepresentation() = default;

void DvnfCoreRepresentation::MessageHandler(DvnfMessageHandler* handler) { _handler = handler ? handler : &_default; }

DvnfCoreData::DvnfCoreData(DvnfCoreTypes& types, DvnfMessageHandler* handler) : DvnfCoreRepresentation(types, handler) {}

namespace {
// An entity and the root of its attributes share one block: a model holds
// many small entities (every member of a data structure is one), and one
// allocation less each is a tenth of what they take; the root finds its
// entity by its place in the block (DvnfAttrNode::Owner), the entity its root.

// An entity block of 80 + 40 bytes is a chunk of 128 of the allocator; a
// field more would make it 144.
static_assert(sizeof(void*) != 8 || sizeof(DvnfEntity) <= 80, "an entity grew");

void Destroy(DvnfEntity* e) {
    DvnfAttrNode* root = AttrRoot(*e);
    e->~DvnfEntity();
    root->~DvnfAttrNode();
    ::operator delete(static_cast<void*>(e));
}
}  // namespace

DvnfCoreData::~DvnfCoreData() {
    for (DvnfEntity* e : _order) Destroy(e);
}

void DvnfCoreData::TakeEntitiesFrom(DvnfCoreData& other) {
    DVNK_REQUIRE(&other != this, "TakeEntitiesFrom: the other core data is this one");
    DVNK_REQUIRE(&other.Types() == &Types(), "TakeEntitiesFrom: the other core data has another catalogue");
    DVNK_REQUIRE(_order.empty(), "TakeEntitiesFrom: this core data holds entities");
    _index = std::move(other._index);
    _order = std::move(other._order);
    other._index.clear();
    other._order.clear();
    for (DvnfEntity* e : _order) e->_data = this;
}

DvnfCoreData::TypeIndex& DvnfCoreData::Index(const DvnfEntityType& type) const { return _index[&type]; }

size_t DvnfCoreData::EntityTable::Home(DvnfKeyView key) const {
    return std::hash<std::string_view>{}(key.bytes) & (_slots.size() - 1);
}

DvnfKeyView DvnfCoreData::EntityTable::KeyAt(size_t slot) const { return _keyOf(*_slots[slot]); }

void DvnfCoreData::EntityTable::Grow() {
    std::vector<DvnfEntity*> old(std::max<size_t>(16, _slots.size() * 2), nullptr);
    old.swap(_slots);
    const size_t mask = _slots.size() - 1;
    for (DvnfEntity* e : old) {
        if (!e) continue;
        size_t i = Home(_keyOf(*e));
        while (_slots[i]) i = (i + 1) & mask;
        _slots[i] = e;
    }
}

void DvnfCoreData::EntityTable::Insert(DvnfEntity& e) {
    if (_keyOf(e).bytes.empty()) return;
    if ((_count + 1) * 4 > _slots.size() * 3) Grow();  // at most three slots of four in use
    const size_t mask = _slots.size() - 1;
    size_t i = Home(_keyOf(e));
    while (_slots[i]) i = (i + 1) & mask;  // after the entities entered before: FirstNamed goes by age anyway
    _slots[i] = &e;
    ++_count;
}

void DvnfCoreData::EntityTable::Erase(const DvnfEntity& e, DvnfKeyView key) {
    if (key.bytes.empty() || _slots.empty()) return;
    const size_t mask = _slots.size() - 1;
    size_t i = Home(key);
    while (_slots[i] != &e) {
        if (!_slots[i]) return;  // not entered
        i = (i + 1) & mask;
    }
    // Shift back the entries after the gap that would no longer be reached
    // from their home slot, so that no probe stops early.
    for (size_t j = (i + 1) & mask; _slots[j]; j = (j + 1) & mask) {
        const size_t home = Home(KeyAt(j));
        const bool reachable = i <= j ? (i < home && home <= j) : (i < home || home <= j);
        if (reachable) continue;
        _slots[i] = _slots[j];
        i = j;
    }
    _slots[i] = nullptr;
    --_count;
}

template <class F>
void DvnfCoreData::EntityTable::ForEach(DvnfKeyView key, F f) const {
    if (key.bytes.empty() || _slots.empty()) return;
    const size_t mask = _slots.size() - 1;
    for (size_t i = Home(key); _slots[i]; i = (i + 1) & mask)
        if (KeyAt(i) == key && f(*_slots[i])) return;
}

DvnfEntity* DvnfCoreData::EntityTable::Find(DvnfKeyView key) const {
    DvnfEntity* found = nullptr;
    ForEach(key, [&](DvnfEntity& e) {
        found = &e;
        return true;
    });
    return found;
}

namespace {
void AddKey(auto& byOID, DvnfEntity& e) {
    if (!e.HasOID()) return;
    DVNK_REQUIRE(!byOID.Find(e.Key()), "key already used by another entity");
    byOID.Insert(e);
}
}  // namespace

DvnfCoreData::TypeIndex& DvnfCoreData::Keyed(const DvnfEntityType& type) const {
    TypeIndex& ix = Index(type);
    if (!ix.keyed) {
        ix.keyed = true;
        for (DvnfEntity* e : _order) {
            if (e->_type != &type) continue;
            ix.byName.Insert(*e);
            AddKey(ix.byOID, *e);
        }
    }
    return ix;
}

template <class Pred>
DvnfEntity* DvnfCoreData::FirstNamed(const DvnfEntityType& type, const DvnfString& name, Pred pred) const {
    DvnfEntity* first = nullptr;
    Keyed(type).byName.ForEach(DvnfKeyView{View(name)}, [&](DvnfEntity& e) {
        if ((!first || e._seq < first->_seq) && pred(e)) first = &e;
        return false;
    });
    return first;
}

const DvnfEntityMap& DvnfCoreData::GetEntities(const DvnfString& typeName) const {
    const DvnfEntityType& type = Types().GetEntityType(typeName, true);
    TypeIndex& ix = Index(type);
    if (!ix.viewed) {
        ix.viewed = true;
        for (DvnfEntity* e : _order) {
            if (e->_type != &type) continue;
            e->_viewName = e->_name;
            ix.view.emplace_hint(ix.view.end(), e->_name, e);
        }
    }
    for (DvnfEntity* e : ix.renamed) {
        if (e->_viewName == e->_name) continue;  // named back
        auto range = ix.view.equal_range(e->_viewName);
        for (auto it = range.first; it != range.second; ++it) {
            if (it->second == e) {
                ix.view.erase(it);
                break;
            }
        }
        ix.view.emplace(e->_name, e);
        e->_viewName = e->_name;
    }
    ix.renamed.clear();
    return ix.view;
}

DvnfEntity& DvnfCoreData::Make(const DvnfEntityType& type, const DvnfString& oid, const DvnfString& name,
                               DvnfObject::State_t state) {
    DVNK_REQUIRE(type.IsValid(), "entity type not valid");
    void* block = ::operator new(DvnfAttrNode::kRootAt + sizeof(DvnfAttrNode));
    DvnfAttrNode* root = nullptr;
    DvnfEntity* made = nullptr;
    try {
        root = new (static_cast<char*>(block) + DvnfAttrNode::kRootAt) DvnfAttrNode();
        made = new (block) DvnfEntity(this, &type, oid, NotNull(name), state);
        made->_seq = static_cast<std::uint32_t>(_order.size());
        _order.push_back(made);  // owned by _order from here on
    } catch (...) {
        if (made) made->~DvnfEntity();
        if (root) root->~DvnfAttrNode();
        ::operator delete(block);
        throw;
    }
    DvnfEntity& e = *made;
    TypeIndex& ix = Index(type);
    if (ix.viewed) {
        e._viewName = e.Name();
        // After the entities of an equal name, as emplace puts it; the hint
        // makes that one comparison when the name sorts last (names made in
        // order).
        ix.view.emplace_hint(ix.view.end(), e.Name(), &e);
    }
    if (ix.keyed) {
        ix.byName.Insert(e);
        AddKey(ix.byOID, e);
    }
    return e;
}

void DvnfCoreData::Rename(DvnfEntity& entity, const DvnfString& oldName) {
    TypeIndex& ix = Index(entity.Type());
    if (ix.keyed) {
        ix.byName.Erase(entity, DvnfKeyView{View(oldName)});
        ix.byName.Insert(entity);
    }
    if (ix.viewed) ix.renamed.push_back(&entity);
}

void DvnfCoreData::Rekey(DvnfEntity& entity, const DvnfString& oldOID) {
    TypeIndex& ix = Index(entity.Type());
    if (!ix.keyed) {
        Keyed(entity.Type());  // made with the key the entity has now
        return;
    }
    // The entity itself may be found by its new key where it stands under the old one.
    const DvnfEntity* holder = ix.byOID.Find(entity.Key());
    DVNK_REQUIRE(!holder || holder == &entity, "key already used by another entity");
    unsigned char packed[16];
    ix.byOID.Erase(entity, DvnfObject::KeyOf(oldOID, packed));
    ix.byOID.Insert(entity);
}

DvnfEntity& DvnfCoreData::CreateEntity(const DvnfEntityType& type, const DvnfString& oid, const DvnfString& name) {
    DVNK_REQUIRE(type.IsValid(), "CreateEntity: entity type not valid");
    if (!oid.IsEmpty()) {
        DvnfEntity& known = GetEntityByOID(type, oid, false);
        DvnfEntity* found = known.IsValid() ? &known : nullptr;
        if (!found && !name.IsEmpty()) {
            // A skeleton made by name takes the key.
            found = FirstNamed(type, name, [](const DvnfEntity& e) { return !e.HasOID(); });
            if (found) found->OID(oid);
        }
        if (found) {
            if (!name.IsEmpty() && !(found->Name() == name)) found->Name(name);
            if (found->State() == DvnfObject::StateNone) found->State(DvnfObject::StateNew);
            return *found;
        }
        return Make(type, oid, name, DvnfObject::StateNew);
    }
    return Make(type, DvnfObject::CreateOID(), name, DvnfObject::StateNew);
}

DvnfEntity& DvnfCoreData::CreateEntity(const DvnfString& typeName, const DvnfString& oid, const DvnfString& name) {
    return CreateEntity(Types().GetEntityType(typeName, true), oid, name);
}

DvnfEntity& DvnfCoreData::GetEntityByOID(const DvnfEntityType& type, const DvnfString& oid, bool create) {
    if (!type.IsValid() || oid.IsEmpty()) return DvnfEntity::undefined;
    TypeIndex& ix = Keyed(type);
    unsigned char packed[16];
    if (DvnfEntity* found = ix.byOID.Find(DvnfObject::KeyOf(oid, packed))) return *found;
    if (!create) return DvnfEntity::undefined;
    return Make(type, oid, DvnfString(""), DvnfObject::StateNone);
}

DvnfEntity& DvnfCoreData::GetEntityByOID(const DvnfString& typeName, const DvnfString& oid, bool create) {
    return GetEntityByOID(Types().GetEntityType(typeName, true), oid, create);
}

DvnfEntity& DvnfCoreData::GetEntityByName(const DvnfEntityType& type, const DvnfString& name, bool create) {
    if (!type.IsValid() || name.IsEmpty()) return DvnfEntity::undefined;  // no name finds nothing
    if (DvnfEntity* found = FirstNamed(type, name, [](const DvnfEntity&) { return true; })) return *found;
    if (!create) return DvnfEntity::undefined;
    return Make(type, DvnfString(""), name, DvnfObject::StateNone);
}

DvnfEntity& DvnfCoreData::GetEntityByName(const DvnfString& typeName, const DvnfString& name, bool create) {
    return GetEntityByName(Types().GetEntityType(typeName, true), name, create);
}

namespace {
// The link type of that name from the entity's type to the target type;
// undefined for an entity that is not valid.
const DvnfLinkType& LinkTypeFor(const DvnfCoreTypes& types, const DvnfEntity& entity, const DvnfString& linkName,
                                const DvnfString& typeName) {
    if (!entity.IsValid()) return DvnfLinkType::undefined;
    return types.GetLinkType(linkName, entity.Type(), types.GetEntityType(typeName, true), true);
}

const DvnfLink& LinkTo(DvnfEntity& entity, const DvnfLinkType& linkType, DvnfEntity& target, bool noDuplicate) {
    if (!entity.IsValid() || !target.IsValid()) return DvnfLink::undefined;
    return entity.AddLink(linkType, target, noDuplicate);
}
}  // namespace

const DvnfLink& DvnfCoreData::AddLinkByOID(DvnfEntity& entity, const DvnfLinkType& linkType, const DvnfString& oid,
                                           bool createTarget, bool noDuplicate) {
    if (!linkType.IsValid()) return DvnfLink::undefined;
    return LinkTo(entity, linkType, GetEntityByOID(linkType.Target(), oid, createTarget && entity.IsValid()),
                  noDuplicate);
}

const DvnfLink& DvnfCoreData::AddLinkByOID(DvnfEntity& entity, const DvnfString& linkName, const DvnfString& typeName,
                                           const DvnfString& oid, bool createTarget, bool noDuplicate) {
    return AddLinkByOID(entity, LinkTypeFor(Types(), entity, linkName, typeName), oid, createTarget, noDuplicate);
}

const DvnfLink& DvnfCoreData::AddLinkByName(DvnfEntity& entity, const DvnfLinkType& linkType, const DvnfString& name,
                                            bool createTarget, bool noDuplicate) {
    if (!linkType.IsValid()) return DvnfLink::undefined;
    return LinkTo(entity, linkType, GetEntityByName(linkType.Target(), name, createTarget && entity.IsValid()),
                  noDuplicate);
}

const DvnfLink& DvnfCoreData::AddLinkByName(DvnfEntity& entity, const DvnfString& linkName, const DvnfString& typeName,
                                            const DvnfString& name, bool createTarget, bool noDuplicate) {
    return AddLinkByName(entity, LinkTypeFor(Types(), entity, linkName, typeName), name, createTarget, noDuplicate);
}

// ---------------------------------------------------------------------------
// Processed

bool DvnfProcessed::Processed(const DvnfObject& object) const {
    auto it = _done.find(&object);
    return it != _done.end() && it->second;
}

void DvnfProcessed::Processed(const DvnfObject& object, bool flag) { _done[&object] = flag; }

// ---------------------------------------------------------------------------

DvnfString ReturnQuotedString(const DvnString& text, const char* open, const char* close) {
    std::string o = open ? open : "", c = close ? close : "";
    std::string in = text.str(), out = o;
    out.reserve(in.size() + o.size() + c.size() + 4);
    if (c.empty()) {
        out += in;
    } else {
        for (size_t i = 0; i < in.size();) {
            if (in.compare(i, c.size(), c) == 0) {
                out += c;
                out += c;
                i += c.size();
            } else {
                out += in[i++];
            }
        }
    }
    out += c;
    return DvnfString(out);
}
