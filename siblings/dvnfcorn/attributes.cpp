// The attribute tree of an entity and the handles that read and write it.
#include "attrnode.h"

#include <cerrno>
#include <cstdlib>

const DvnfAttributeDataReader DvnfAttributeDataReader::undefined;
const DvnfAttributeData DvnfAttributeData::undefined;
const DvnfDataSetIterator DvnfDataSetIterator::undefined;

// ---------------------------------------------------------------------------
// Nodes

DvnfAttrNode* DvnfAttrNode::Child(std::string_view childName) const {
    for (const auto& c : children)
        if (c->name == childName) return c.get();
    return nullptr;
}

DvnfAttrNode* DvnfAttrNode::MakeChild(std::string_view childName) {
    DvnfAttrNode* n = Inner();
    if (n->kind == DvnfAttributeType::Set) return nullptr;  // a set has elements, not names
    if (n->kind != DvnfAttributeType::Group) n->Clear(DvnfAttributeType::Group);
    if (DvnfAttrNode* c = n->Child(childName)) return c;
    auto fresh = std::make_unique<DvnfAttrNode>();
    fresh->kind = DvnfAttributeType::Group;
    fresh->name = childName;
    fresh->parent = n;
    DvnfAttrNode* c = fresh.get();
    n->children.push_back(std::move(fresh));
    return c;
}

void DvnfAttrNode::Clear(DvnfAttributeType newKind) {
    kind = newKind;
    lval = 0;
    bval = false;
    sval = DvnfString();
    entity = nullptr;
    children.clear();
}

std::unique_ptr<DvnfAttrNode> DvnfAttrNode::Clone(DvnfAttrNode* newParent) const {
    auto n = std::make_unique<DvnfAttrNode>();
    n->kind = kind;
    n->name = name;
    n->lval = lval;
    n->bval = bval;
    n->sval = sval;
    n->entity = entity;
    n->parent = newParent;
    n->children.reserve(children.size());
    for (const auto& c : children) n->children.push_back(c->Clone(n.get()));
    return n;
}

DvnfAttrNode* DvnfAttrNode::Inner() {
    if (kind == DvnfAttributeType::Entity && entity && entity->IsValid()) return AttrRoot(*entity);
    return this;
}

std::string DvnfAttrNode::CataloguePath(const DvnfEntity** owner) const {
    std::vector<const DvnfAttrNode*> chain;
    const DvnfAttrNode* n = this;
    while (n->parent) {
        chain.push_back(n);
        n = n->parent;
    }
    if (owner) *owner = n->ownerEntity;
    std::string path;
    for (auto it = chain.rbegin(); it != chain.rend(); ++it) {
        const DvnfAttrNode* c = *it;
        if (c->parent->kind == DvnfAttributeType::Set) {
            path += "[]";
        } else {
            if (!path.empty()) path += '.';
            path += c->name;
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
        if (n->kind != DvnfAttributeType::Group) return nullptr;
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
    switch (n->kind) {
    case DvnfAttributeType::Long:
    case DvnfAttributeType::Bool:
    case DvnfAttributeType::String: return true;
    case DvnfAttributeType::Entity: return n->entity && n->entity->IsValid();
    case DvnfAttributeType::Group:
    case DvnfAttributeType::Set: return !n->children.empty();
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
    switch (n->kind) {
    case DvnfAttributeType::Long: return n->lval;
    case DvnfAttributeType::Bool: return n->bval ? 1 : 0;
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
    switch (n->kind) {
    case DvnfAttributeType::Bool: return n->bval;
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
    switch (n->kind) {
    case DvnfAttributeType::String: return n->sval;
    case DvnfAttributeType::Long: return DvnfString(DvnString::FromLong(n->lval));
    case DvnfAttributeType::Bool: return DvnfString(n->bval ? "true" : "false");
    default: return defaultValue;
    }
}

DvnfString DvnfAttributeDataReader::Value() const { return AsString(DvnfString()); }

DvnfEntity& DvnfAttributeDataReader::AsEntity() const {
    const DvnfAttrNode* n = Resolve();
    if (n && n->kind == DvnfAttributeType::Entity && n->entity) return *n->entity;
    return DvnfEntity::undefined;
}

DvnfAttributeType DvnfAttributeDataReader::Type() const {
    const DvnfAttrNode* n = Resolve();
    return n ? n->kind : DvnfAttributeType::Undefined;
}

long DvnfAttributeDataReader::NumberOfElements() const {
    const DvnfAttrNode* n = Resolve();
    return (n && n->kind == DvnfAttributeType::Set) ? static_cast<long>(n->children.size()) : 0;
}

DvnfDataSetIterator DvnfAttributeDataReader::ElementsOfSet() const {
    DvnfAttrNode* n = Resolve();
    if (n && n->kind == DvnfAttributeType::Set) return DvnfDataSetIterator(n);
    return DvnfDataSetIterator();
}

std::vector<std::string> DvnfAttributeDataReader::Names() const {
    std::vector<std::string> names;
    DvnfAttrNode* n = Resolve();
    if (!n) return names;
    n = n->Inner();
    if (n->kind != DvnfAttributeType::Group) return names;
    for (const auto& c : n->children) names.push_back(c->name);
    return names;
}

// ---------------------------------------------------------------------------
// Set iterator

DvnfAttributeDataReader DvnfDataSetIterator::At(size_t index) {
    _pos = index;
    if (!_set || index >= _set->children.size()) return DvnfAttributeDataReader();
    return DvnfAttributeDataReader(_set->children[index].get(), {});
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
        n->bval = value;
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
    if (!n->parent && copy->kind != DvnfAttributeType::Group) return *this;  // the root stays a group
    n->kind = copy->kind;
    n->lval = copy->lval;
    n->bval = copy->bval;
    n->sval = copy->sval;
    n->entity = copy->entity;
    n->children = std::move(copy->children);
    for (auto& c : n->children) c->parent = n;
    return *this;
}

void DvnfAttributeData::Reset(const char* name) {
    DvnfAttrNode* n = Resolve();
    if (!n || !name) return;
    n = n->Inner();
    if (n->kind != DvnfAttributeType::Group) return;
    auto& ch = n->children;
    for (auto it = ch.begin(); it != ch.end(); ++it) {
        if ((*it)->name == name) {
            ch.erase(it);
            return;
        }
    }
}

void DvnfAttributeData::Reset() {
    DvnfAttrNode* n = Resolve();
    if (!n) return;
    if (!n->parent) {  // the root: empty it
        n->children.clear();
        return;
    }
    auto& ch = n->parent->children;
    for (auto it = ch.begin(); it != ch.end(); ++it) {
        if (it->get() == n) {
            ch.erase(it);
            return;
        }
    }
}

DvnfAttributeData DvnfAttributeData::MakeGroup() {
    DvnfAttrNode* n = Make();
    if (!n) return DvnfAttributeData();
    if (n->Inner()->kind != DvnfAttributeType::Group) n->Clear(DvnfAttributeType::Group);
    return DvnfAttributeData(n, {});
}

DvnfAttributeData DvnfAttributeData::MakeSet() {
    DvnfAttrNode* n = ValueNode(Make());
    if (!n) return DvnfAttributeData();
    if (n->kind != DvnfAttributeType::Set) n->Clear(DvnfAttributeType::Set);
    return DvnfAttributeData(n, {});
}

namespace {
DvnfAttrNode* Append(DvnfAttrNode* set) {
    auto e = std::make_unique<DvnfAttrNode>();
    e->kind = DvnfAttributeType::Group;
    e->parent = set;
    DvnfAttrNode* raw = e.get();
    set->children.push_back(std::move(e));
    return raw;
}
}  // namespace

DvnfAttributeData DvnfAttributeData::NewSetElement() {
    MakeSet();
    DvnfAttrNode* set = Resolve();
    if (!set || set->kind != DvnfAttributeType::Set) return DvnfAttributeData();
    const DvnfEntity* owner = nullptr;
    std::string path = set->CataloguePath(&owner);
    DvnfAttrNode* e = Append(set);
    if (owner && owner->IsValid() && owner->CoreData()) {
        const DvnfEntityType& elementType = owner->Type().SetElementType(path);
        if (elementType.IsValid()) {
            DvnfEntity& member = owner->CoreData()->CreateEntity(elementType, DvnfString(), DvnfString());
            member.State(owner->State());
            e->kind = DvnfAttributeType::Entity;
            e->entity = &member;
        }
    }
    return DvnfAttributeData(e, {});
}

DvnfAttributeData DvnfAttributeData::NewSetElement(DvnfEntity& entity) {
    if (!entity.IsValid()) return DvnfAttributeData();
    MakeSet();
    DvnfAttrNode* set = Resolve();
    if (!set || set->kind != DvnfAttributeType::Set) return DvnfAttributeData();
    DvnfAttrNode* e = Append(set);
    e->kind = DvnfAttributeType::Entity;
    e->entity = &entity;
    return DvnfAttributeData(e, {});
}

long DvnfAttributeData::RemoveSetElement(const DvnfEntity& entity) {
    DvnfAttrNode* set = Resolve();
    if (!set || set->kind != DvnfAttributeType::Set) return 0;
    auto& ch = set->children;
    long removed = 0;
    for (auto it = ch.begin(); it != ch.end();) {
        if ((*it)->kind == DvnfAttributeType::Entity && (*it)->entity == &entity) {
            it = ch.erase(it);
            ++removed;
        } else {
            ++it;
        }
    }
    return removed;
}
