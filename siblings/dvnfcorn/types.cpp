// The catalogue of entity types, link types and attribute paths.
#include "dvnfcorn.h"

#include <algorithm>

const DvnfEntityType DvnfEntityType::undefined(DvnfString(""), false, false);
const DvnfLinkType DvnfLinkType::undefined(DvnfString(""), &DvnfEntityType::undefined, &DvnfEntityType::undefined,
                                           false);

DvnfTRXTypes DvnfTRXTypes::_instance;

namespace {
unsigned Bit(DvnfAttributeType k) { return 1u << static_cast<unsigned>(k); }
std::string LinkKey(const DvnfEntityType& source, const DvnfString& name) {
    return source.Name().str() + '\n' + name.str();
}
}  // namespace

DvnfAttributeType DvnfEntityType::AttributeKind(const std::string& path) const {
    auto it = _attributes.find(path);
    return it == _attributes.end() ? DvnfAttributeType::Undefined : it->second.kind;
}

bool DvnfEntityType::AcceptsKind(const std::string& path, DvnfAttributeType kind) const {
    auto it = _attributes.find(path);
    return it != _attributes.end() && (it->second.kinds & Bit(kind)) != 0;
}

const DvnfEntityType& DvnfEntityType::SetElementType(const std::string& path) const {
    auto it = _setElements.find(path);
    return it == _setElements.end() ? undefined : *it->second;
}

DvnfCoreTypes::DvnfCoreTypes() = default;
DvnfCoreTypes::~DvnfCoreTypes() = default;

DvnfEntityType& DvnfCoreTypes::AddEntityType(const char* name, bool topLevel) {
    DVNK_REQUIRE(_typeByName.find(name) == _typeByName.end(), "entity type registered twice");
    _types.push_back(std::make_unique<DvnfEntityType>(DvnfString(name), topLevel));
    DvnfEntityType* t = _types.back().get();
    _typeByName[name] = t;
    _typeOrder.push_back(t);
    return *t;
}

void DvnfCoreTypes::AddLinkType(const char* name, const char* source, const char* target) {
    const DvnfEntityType& s = GetEntityType(DvnfString(source), true);
    const DvnfEntityType& t = GetEntityType(DvnfString(target), true);
    std::string key = LinkKey(s, DvnfString(name));
    DVNK_REQUIRE(_linkBySourceAndName.find(key) == _linkBySourceAndName.end(), "link type registered twice");
    _links.push_back(std::make_unique<DvnfLinkType>(DvnfString(name), &s, &t));
    _linkBySourceAndName[key] = _links.back().get();
    _linkOrder.push_back(_links.back().get());
}

void DvnfCoreTypes::AddAttribute(const char* type, const char* path, DvnfAttributeType kind) {
    DvnfEntityType& t = *_typeByName.at(type);
    std::string p = path;
    auto note = [&](const std::string& at, DvnfAttributeType k) {
        auto [it, fresh] = t._attributes.try_emplace(at, DvnfEntityType::AttrInfo{k, 0});
        (void)fresh;
        it->second.kinds |= Bit(k);
    };
    note(p, kind);
    // Every prefix is a group ("A.B" of "A.B.C"), or a set ("A" of "A[].B").
    for (size_t i = 0; i < p.size(); ++i) {
        if (p[i] == '.') {
            bool element = i >= 2 && p.compare(i - 2, 2, "[]") == 0;
            note(p.substr(0, i), DvnfAttributeType::Group);
            if (element) note(p.substr(0, i - 2), DvnfAttributeType::Set);
        }
    }
}

void DvnfCoreTypes::AddSetElementType(const char* type, const char* path, const char* elementType) {
    DvnfEntityType& t = *_typeByName.at(type);
    t._setElements[path] = &GetEntityType(DvnfString(elementType), true);
    std::string element = std::string(path) + "[]";
    t._attributes.try_emplace(element, DvnfEntityType::AttrInfo{DvnfAttributeType::Entity, 0}).first->second.kinds |=
        Bit(DvnfAttributeType::Entity);
}

const DvnfEntityType& DvnfCoreTypes::GetEntityType(const DvnfString& name, bool mustExist) const {
    auto it = _typeByName.find(name.str());
    if (it != _typeByName.end()) return *it->second;
    if (mustExist) dvnkFail("precondition", ("entity type not in the catalogue: " + name.str()).c_str(), __FILE__,
                            __LINE__);
    return DvnfEntityType::undefined;
}

const DvnfLinkType& DvnfCoreTypes::FindLinkType(const DvnfString& name, const DvnfEntityType& source) const {
    auto it = _linkBySourceAndName.find(LinkKey(source, name));
    return it == _linkBySourceAndName.end() ? DvnfLinkType::undefined : *it->second;
}

const DvnfLinkType& DvnfCoreTypes::GetLinkType(const DvnfString& name, const DvnfEntityType& source,
                                               const DvnfEntityType& target, bool mustExist) const {
    // The undefined entity (an implementation object a file left out, say)
    // has no links: asking for one of them finds none. A name no type has is
    // still a programming error.
    if (!source.IsValid()) {
        if (mustExist)
            DVNK_REQUIRE(std::any_of(_linkOrder.begin(), _linkOrder.end(),
                                     [&](const DvnfLinkType* l) { return l->Name() == name; }),
                         "link type not in the catalogue");
        return DvnfLinkType::undefined;
    }
    const DvnfLinkType& l = FindLinkType(name, source);
    if (l.IsValid() && &l.Target() == &target) return l;
    if (mustExist)
        dvnkFail("precondition",
                 ("link type not in the catalogue: " + name.str() + " from " + source.Name().str() + " to " +
                  target.Name().str())
                     .c_str(),
                 __FILE__, __LINE__);
    return DvnfLinkType::undefined;
}

const DvnfLinkType& DvnfCoreTypes::GetLinkType(const DvnfString& name, const DvnfString& source,
                                               const DvnfString& target, bool mustExist) const {
    return GetLinkType(name, GetEntityType(source, mustExist), GetEntityType(target, mustExist), mustExist);
}

std::vector<const DvnfLinkType*> DvnfCoreTypes::LinkTypesFrom(const DvnfEntityType& source) const {
    std::vector<const DvnfLinkType*> out;
    for (const DvnfLinkType* l : _linkOrder)
        if (&l->Source() == &source) out.push_back(l);
    return out;
}

DvnfTRXTypes::DvnfTRXTypes() {
    using K = DvnfAttributeType;
    constexpr K Long = K::Long, Bool = K::Bool, String = K::String, Set = K::Set, Entity = K::Entity;
#define DVNF_ENTITY(name, top) AddEntityType(name, top);
#define DVNF_LINK(name, source, target) AddLinkType(name, source, target);
#define DVNF_ATTR(type, path, kind) AddAttribute(type, path, kind);
#define DVNF_SETELEM(type, path, element) AddSetElementType(type, path, element);
#include "vocabulary.inc"
#undef DVNF_ENTITY
#undef DVNF_LINK
#undef DVNF_ATTR
#undef DVNF_SETELEM
}
