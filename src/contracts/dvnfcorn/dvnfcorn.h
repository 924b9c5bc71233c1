// The core model: entities of a catalogue of types, their attribute trees,
// the links between them, the message handler and its catalogue of texts.
// It knows no database; whatever must come from elsewhere comes through a
// DvnfFrontendReader. The implementation lives in siblings/dvnfcorn; the
// model is described in docs/core-model.md.
#pragma once

#include "dvnkernn.h"

#include <cstdint>
#include <functional>
#include <iosfwd>
#include <map>
#include <memory>
#include <memory_resource>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

class DvnfObject;
class DvnfEntity;
class DvnfEntityType;
class DvnfLinkType;
class DvnfCoreTypes;
class DvnfCoreData;
class DvnfTRXData;
class DvnfAttributeData;
class DvnfDataSetIterator;
struct DvnfAttrNode;

// ---------------------------------------------------------------------------
// Messages. Report gets a number and seven arguments; unused ones are null.
// The default handler prints one line per report on standard output:
//     "<number>: <text>"
// where the text comes from the catalogue with %1 .. %7 replaced by the
// arguments (a null argument gives nothing). A number the catalogue does not
// know prints "<number>: Message without text." followed by the non-null
// arguments, each after " | ".
class DvnfMessageHandler {
public:
    virtual ~DvnfMessageHandler();
    virtual void Report(long number, const DvnString& a1 = DvnString(), const DvnString& a2 = DvnString(),
                        const DvnString& a3 = DvnString(), const DvnString& a4 = DvnString(),
                        const DvnString& a5 = DvnString(), const DvnString& a6 = DvnString(),
                        const DvnString& a7 = DvnString());

    // The line the default handler prints (without the line end).
    static DvnString Format(long number, const DvnString& a1 = DvnString(), const DvnString& a2 = DvnString(),
                            const DvnString& a3 = DvnString(), const DvnString& a4 = DvnString(),
                            const DvnString& a5 = DvnString(), const DvnString& a6 = DvnString(),
                            const DvnString& a7 = DvnString());
    // The catalogue text of a number with its %n placeholders, or nullptr.
    static const char* Text(long number);
    // Every number the catalogue holds, ascending.
    static std::vector<long> Numbers();
    // Where the default handler prints: standard output unless a program
    // chooses another stream (the command line prints messages on standard
    // error, apart from its progress lines). Not owned; null restores
    // standard output.
    static void DefaultOutput(std::ostream* out);
};

// Keeps every report (number and arguments) and, when echo is true, also
// prints it as the default handler does. Used by tests and by callers that
// want to look at what was reported.
class DvnfCollectingMessageHandler : public DvnfMessageHandler {
public:
    struct Entry {
        long number;
        DvnString args[7];
        // The formatted line, as the default handler prints it.
        DvnString Line() const;
    };
    explicit DvnfCollectingMessageHandler(bool echo = false) : _echo(echo) {}
    void Report(long number, const DvnString& a1 = DvnString(), const DvnString& a2 = DvnString(),
                const DvnString& a3 = DvnString(), const DvnString& a4 = DvnString(),
                const DvnString& a5 = DvnString(), const DvnString& a6 = DvnString(),
                const DvnString& a7 = DvnString()) override;
    const std::vector<Entry>& Entries() const { return _entries; }
    // How many reports carried this number.
    size_t Count(long number) const;
    void Clear() { _entries.clear(); }
private:
    bool _echo;
    std::vector<Entry> _entries;
};

// ---------------------------------------------------------------------------
// Kinds of attribute nodes.
enum class DvnfAttributeType {
    Undefined = 0,  // no such attribute (or an invalid reader / iterator)
    Long = 1,
    Bool = 2,
    String = 3,
    Group = 4,   // has named sub-attributes
    Set = 5,     // has ordered elements
    Entity = 6,  // refers to an entity (an element of a diagram, an implementation object)
};

// ---------------------------------------------------------------------------
// The catalogue: entity types and link types.
class DvnfEntityType {
public:
    const DvnfString& Name() const { return _name; }
    bool IsValid() const { return _valid; }
    // True for the types a TRX file defines at its top level (everything but
    // the objects that live inside another entity's attributes).
    bool IsTopLevel() const { return _topLevel; }
    // Kind of a known attribute path such as "Diagram.Activities" or
    // "Members[].Name" (a set element's attribute); Undefined when the
    // catalogue does not know the path for this type.
    DvnfAttributeType AttributeKind(const std::string& path) const;
    // Whether the path may hold that kind (a few paths take two kinds, as a
    // time event that is stored as a group and loaded as text).
    bool AcceptsKind(const std::string& path, DvnfAttributeType kind) const;
    // For a set whose elements are entities: the element entity type
    // (DvnfEntityType::undefined for sets of plain values or groups).
    const DvnfEntityType& SetElementType(const std::string& path) const;
    static const DvnfEntityType undefined;

    DvnfEntityType(const DvnfString& name, bool topLevel, bool valid = true)
        : _name(name), _valid(valid), _topLevel(topLevel) {}

private:
    friend class DvnfCoreTypes;
    DvnfString _name;
    bool _valid;
    bool _topLevel;
    struct AttrInfo {
        DvnfAttributeType kind;
        unsigned kinds;  // bit per accepted kind
    };
    std::unordered_map<std::string, AttrInfo> _attributes;
    std::unordered_map<std::string, const DvnfEntityType*> _setElements;
};

class DvnfLinkType {
public:
    const DvnfString& Name() const { return _name; }
    const DvnfEntityType& Source() const { return *_source; }
    const DvnfEntityType& Target() const { return *_target; }
    bool IsValid() const { return _valid; }
    static const DvnfLinkType undefined;

    DvnfLinkType(const DvnfString& name, const DvnfEntityType* source, const DvnfEntityType* target,
                 bool valid = true)
        : _name(name), _source(source), _target(target), _valid(valid) {}

private:
    DvnfString _name;
    const DvnfEntityType* _source;
    const DvnfEntityType* _target;
    bool _valid;
};

class DvnfCoreTypes {
public:
    DvnfCoreTypes();
    virtual ~DvnfCoreTypes();
    DvnfCoreTypes(const DvnfCoreTypes&) = delete;
    DvnfCoreTypes& operator=(const DvnfCoreTypes&) = delete;

    // With mustExist true an unknown name is a programming error (the
    // precondition check aborts); with false it gives DvnfEntityType::undefined.
    const DvnfEntityType& GetEntityType(const DvnfString& name, bool mustExist = true) const;
    // The link type of that name from the source type; the target must be the
    // registered target type. Unknown: as above, DvnfLinkType::undefined.
    // From the undefined type (that of DvnfEntity::undefined) every known
    // link name gives DvnfLinkType::undefined: that entity has no links.
    const DvnfLinkType& GetLinkType(const DvnfString& name, const DvnfEntityType& source,
                                    const DvnfEntityType& target, bool mustExist = true) const;
    const DvnfLinkType& GetLinkType(const DvnfString& name, const DvnfString& source, const DvnfString& target,
                                    bool mustExist = true) const;
    // The link type of that name from the source type, whatever its target.
    const DvnfLinkType& FindLinkType(const DvnfString& name, const DvnfEntityType& source) const;

    // In catalogue order (the order of the writer's output).
    const std::vector<const DvnfEntityType*>& EntityTypes() const { return _typeOrder; }
    const std::vector<const DvnfLinkType*>& LinkTypes() const { return _linkOrder; }
    // The link types that start at a type, in catalogue order.
    std::vector<const DvnfLinkType*> LinkTypesFrom(const DvnfEntityType& source) const;

protected:
    DvnfEntityType& AddEntityType(const char* name, bool topLevel);
    void AddLinkType(const char* name, const char* source, const char* target);
    void AddAttribute(const char* type, const char* path, DvnfAttributeType kind);
    void AddSetElementType(const char* type, const char* path, const char* elementType);

private:
    std::vector<std::unique_ptr<DvnfEntityType>> _types;
    std::vector<std::unique_ptr<DvnfLinkType>> _links;
    std::vector<const DvnfEntityType*> _typeOrder;
    std::vector<const DvnfLinkType*> _linkOrder;
    std::unordered_map<std::string, DvnfEntityType*> _typeByName;
    std::unordered_map<std::string, const DvnfLinkType*> _linkBySourceAndName;  // "source\nname"
};

// The catalogue of this system's vocabulary; one process-wide instance.
class DvnfTRXTypes : public DvnfCoreTypes {
public:
    DvnfTRXTypes();
    static DvnfTRXTypes _instance;
};

// ---------------------------------------------------------------------------
// Attribute access. A reader is a light handle: a node and a path below it.
// It stays usable as long as the node it starts from is not reset.
class DvnfAttributeDataReader {
public:
    DvnfAttributeDataReader() = default;
    virtual ~DvnfAttributeDataReader() = default;

    // The sub-attribute of that name (a reader that is not valid when absent).
    DvnfAttributeDataReader operator()(const char* name) const;
    // Valid: the attribute exists (as a value, a group, a set or an entity).
    bool IsValid() const;
    // Defined: valid and holding a value, an entity, or a group or set with
    // at least one member.
    bool IsDefined() const;
    // Values, with the default when the attribute is not defined or cannot be
    // read as that kind. Longs read texts that are whole numbers and bools
    // (1/0); bools read longs (not 0) and the texts "true"/"false"; texts
    // read longs and bools in their TRX spelling.
    long AsLong(long defaultValue = 0) const;
    DvnfString AsString(const DvnfString& defaultValue = DvnfString()) const;
    bool AsBool(bool defaultValue = false) const;
    // The entity an Entity attribute or set element refers to; otherwise
    // DvnfEntity::undefined.
    DvnfEntity& AsEntity() const;
    // The value as text (as AsString with a null default).
    DvnfString Value() const;
    DvnfAttributeType Type() const;
    // Elements of a set (0 for anything else).
    long NumberOfElements() const;
    DvnfDataSetIterator ElementsOfSet() const;
    // Names of the sub-attributes of a group, in the order they were made.
    std::vector<std::string> Names() const;

    static const DvnfAttributeDataReader undefined;

protected:
    friend class DvnfDataSetIterator;
    friend class DvnfAttributeData;
    friend class DvnfEntity;
    DvnfAttributeDataReader(DvnfAttrNode* base, std::vector<std::string> path)
        : _base(base), _path(std::move(path)) {}
    DvnfAttrNode* Resolve() const;
    DvnfAttrNode* _base = nullptr;
    std::vector<std::string> _path;
};

// Walks the elements of a set. First and Next give readers of the elements;
// a reader that is not valid marks the end.
class DvnfDataSetIterator {
public:
    DvnfDataSetIterator() = default;
    DvnfAttributeDataReader First();
    DvnfAttributeDataReader Next();
    // Set when the iterator walks a set; Undefined otherwise.
    DvnfAttributeType Type() const { return _set ? DvnfAttributeType::Set : DvnfAttributeType::Undefined; }
    bool IsValid() const { return _set != nullptr; }
    static const DvnfDataSetIterator undefined;

private:
    friend class DvnfAttributeDataReader;
    explicit DvnfDataSetIterator(DvnfAttrNode* set) : _set(set) {}
    DvnfAttributeDataReader At(size_t index);
    DvnfAttrNode* _set = nullptr;
    size_t _pos = 0;
};

// The writable handle. Writing through a path makes the groups on the way.
// Assigning one DvnfAttributeData to another copies the value (deeply);
// constructing one from another gives a second handle on the same node.
class DvnfAttributeData : public DvnfAttributeDataReader {
public:
    DvnfAttributeData() = default;
    DvnfAttributeData(const DvnfAttributeData&) = default;

    DvnfAttributeData operator()(const char* name) const;
    // The sub-attribute of that name, made (as an empty group) when it is
    // missing, as a handle that stands on that node itself: what is written
    // through it walks no path. Writing a value, group, set or entity through
    // it gives what writing through operator() gives. Nothing can be made
    // (this handle is not valid, or is a set): a handle that is not valid.
    DvnfAttributeData Sub(std::string_view name) const;

    DvnfAttributeData& operator=(long value);
    DvnfAttributeData& operator=(int value) { return *this = static_cast<long>(value); }
    DvnfAttributeData& operator=(bool value);
    DvnfAttributeData& operator=(const char* value);
    DvnfAttributeData& operator=(const DvnString& value);
    DvnfAttributeData& operator=(const DvnfString& value) { return *this = static_cast<const DvnString&>(value); }
    DvnfAttributeData& operator=(const std::string& value) { return *this = DvnString(value); }
    // A deep copy of what the other handle reaches (nothing there: this is reset).
    DvnfAttributeData& operator=(const DvnfAttributeDataReader& other);
    DvnfAttributeData& operator=(const DvnfAttributeData& other) {
        return *this = static_cast<const DvnfAttributeDataReader&>(other);
    }
    // Makes this attribute refer to an entity.
    DvnfAttributeData& operator=(DvnfEntity& entity);

    // Removes the sub-attribute of that name with all it holds.
    void Reset(const char* name);
    // Removes this attribute itself.
    void Reset();
    // Makes this attribute an (empty) group or set when it is not one yet;
    // gives a handle that stands on that node itself (no path to walk).
    DvnfAttributeData MakeGroup();
    DvnfAttributeData MakeSet();
    // Appends an element to the set (the set is made when missing). For a
    // set whose catalogue element type is an entity type (the members of a
    // data structure), the element is a new entity of that type and its
    // handle writes into that entity's attributes; otherwise the element is
    // an empty slot that takes a value or sub-attributes.
    DvnfAttributeData NewSetElement();
    // Appends an element that refers to the entity.
    DvnfAttributeData NewSetElement(DvnfEntity& entity);
    // Removes the elements that refer to the entity; gives how many.
    long RemoveSetElement(const DvnfEntity& entity);

    static const DvnfAttributeData undefined;

private:
    friend class DvnfEntity;
    friend class DvnfCoreData;
    DvnfAttributeData(DvnfAttrNode* base, std::vector<std::string> path)
        : DvnfAttributeDataReader(base, std::move(path)) {}
    DvnfAttrNode* Make() const;  // resolves, making the nodes on the way
};

// ---------------------------------------------------------------------------
// Objects and entities.

// A key or a name as the indexes of a core data compare them: its bytes, and
// whether they are a key's packed form (which never equals a text, even one
// of the same bytes).
struct DvnfKeyView {
    std::string_view bytes;
    bool packed = false;
    bool operator==(const DvnfKeyView&) const = default;
};

class DvnfObject {
public:
    // 0 takes no part in a save, 1 to delete, 2 new, 3 unchanged, 4 changed.
    using State_t = std::int32_t;
    enum : State_t { StateNone = 0, StateDeleted = 1, StateNew = 2, StateUnchanged = 3, StateChanged = 4 };

    virtual ~DvnfObject();
    State_t State() const { return _state; }
    // The undefined entity keeps its state 0 whatever is set.
    void State(State_t state) {
        if (!_fixed) _state = state;
    }
    // The key as text (made again from its bytes when it is held packed).
    DvnfString OID() const;
    bool HasOID() const { return _packed || !_textKey.IsEmpty(); }
    // The key as the indexes compare it.
    DvnfKeyView Key() const;
    // A text as a key compares: packed into buffer when it has the form of
    // CreateOID's keys.
    static DvnfKeyView KeyOf(const DvnfString& text, unsigned char (&buffer)[16]);
    // A fresh key: unique across runs and processes, 32 characters of
    // upper-case hexadecimal digits (time, process, counter, random).
    static DvnfString CreateOID();
    // What every object answers, in this order of virtual slots: validity,
    // name, type, and the object as the entity it is (so an object of the
    // map of GetEntities answers without a cast).
    virtual bool IsValid() const = 0;
    virtual const DvnfString& Name() const = 0;
    virtual const DvnfEntityType& Type() const = 0;
    virtual DvnfEntity& Entity() = 0;

protected:
    DvnfObject(const DvnfString& oid, State_t state, bool fixed = false);
    DvnfObject(const DvnfObject&) = delete;
    DvnfObject& operator=(const DvnfObject&) = delete;
    void SetKey(const DvnfString& oid);
    State_t _state;
    bool _fixed;  // beside the state: an entity is kept small

private:
    void StoreKey(const DvnfString& oid);  // into a slot that holds none
    // A key of CreateOID's form (32 upper-case hexadecimal digits) is held as
    // its 16 bytes, any other text as it is: a key of text would cost a
    // block of 64 bytes of its own for every entity.
    bool _packed = false;
    union {
        unsigned char _packedKey[16];
        DvnfString _textKey;
    };
};

class DvnfLink {
public:
    DvnfLink(const DvnfLinkType* type, DvnfEntity* target) : _type(type), _target(target) {}
    bool IsValid() const;
    // The target (writable); DvnfEntity::undefined for an invalid link.
    DvnfEntity& Target() const;
    const DvnfLinkType& Type() const { return *_type; }
    static const DvnfLink undefined;

private:
    const DvnfLinkType* _type;
    DvnfEntity* _target;
};

class DvnfLinkTypeIterator {
public:
    DvnfLinkTypeIterator() = default;
    // The first / next link of the type; DvnfLink::undefined at the end.
    const DvnfLink& First();
    const DvnfLink& Next();
    // Every link of the type, in the order they were made.
    long Count() const;
    // Walks nothing: First gives DvnfLink::undefined.
    static const DvnfLinkTypeIterator undefined;

private:
    friend class DvnfEntity;
    DvnfLinkTypeIterator(const DvnfEntity* entity, const DvnfLinkType* type) : _entity(entity), _type(type) {}
    const DvnfLink& Seek(size_t from);
    const DvnfEntity* _entity = nullptr;
    const DvnfLinkType* _type = nullptr;
    size_t _pos = 0;
};

class DvnfEntity : public DvnfObject {
public:
    // The completeness flags word.
    enum : unsigned { FlagAttributesComplete = 1, FlagContainersComplete = 2, FlagBlockContent = 4 };

    ~DvnfEntity() override;
    bool IsValid() const override { return _type->IsValid(); }
    const DvnfString& Name() const override { return _name; }
    const DvnfEntityType& Type() const override { return *_type; }
    DvnfEntity& Entity() override { return *this; }
    // Renames the entity. GetEntityByName knows the new name at once; in the
    // map of GetEntities the entity moves when GetEntities is next called, so
    // a loop over that map may rename the entity it stands on (and name it
    // back) without losing its place.
    void Name(const DvnfString& name);
    // Gives an entity that has none its key (GetEntityByOID finds it then).
    void OID(const DvnfString& oid);
    using DvnfObject::OID;

    DvnfAttributeData AttributeData();
    DvnfAttributeDataReader AttributeData() const;

    // Links of a type from this entity, in the order they were made.
    DvnfLinkTypeIterator LinksOfType(const DvnfLinkType& type) const;
    DvnfLinkTypeIterator LinksOfType(const DvnfString& linkName) const;  // from this entity's type
    const DvnfLink& FirstLinkOfType(const DvnfLinkType& type) const;
    const DvnfLink& FirstLinkOfType(const DvnfString& linkName) const;
    void DeleteAllLinksOfType(const DvnfLinkType& type);
    void DeleteAllLinksOfType(const DvnfString& linkName);
    // Adds a link; with noDuplicate a link of the same type to the same target
    // is not added twice. The link type must start at this entity's type.
    const DvnfLink& AddLink(const DvnfLinkType& type, DvnfEntity& target, bool noDuplicate = true);
    const std::vector<DvnfLink>& Links() const;

    bool IsAttributeDataAttrComplete() const { return (_flags & FlagAttributesComplete) != 0; }
    bool IsAttributeDataContainerComplete() const { return (_flags & FlagContainersComplete) != 0; }
    bool IsBlockContentInMemory() const { return (_flags & FlagBlockContent) != 0; }
    unsigned Flags() const { return _flags; }
    void Flags(unsigned flags) { _flags = flags; }
    // Sets (on) or clears (off) the given bits of the flags word.
    void SetFlags(unsigned bits, bool on = true) { _flags = on ? (_flags | bits) : (_flags & ~bits); }

    // The core data that holds the entity (nullptr for undefined).
    DvnfCoreData* CoreData() const { return _data; }

    // Invalid, state 0, no name, no key; reads give nothing, writes go nowhere.
    static DvnfEntity undefined;

private:
    friend class DvnfCoreData;
    friend struct DvnfAttrNode;
    DvnfEntity(DvnfCoreData* data, const DvnfEntityType* type, const DvnfString& oid, const DvnfString& name,
               State_t state);
    DvnfCoreData* _data;
    const DvnfEntityType* _type;
    DvnfString _name;
    unsigned _flags = 0;
    std::uint32_t _seq = 0;         // place in the order of creation
    DvnfString _viewName;           // the key of the entity in the map of GetEntities
    // Made at the first link: most entities of a model (the members of the
    // data structures, categories) have none.
    std::unique_ptr<std::vector<DvnfLink>> _links;
};

// Entities of one type, ordered by name (several skeletons may share the
// empty name, so equal names are allowed). The core data keeps the nodes of
// its maps in pools of their own (DvnfNodePool); a copy uses the allocator.
using DvnfEntityMap = std::pmr::multimap<DvnfString, DvnfObject*>;

// Blocks of the nodes of one size, each node reused once freed, all given
// back when the pool goes: a node costs its own size, where the allocator
// adds 8 bytes and rounds to 16 (48 bytes become 64). The size is that of
// the first request; requests of another size go to the allocator.
class DvnfNodePool : public std::pmr::memory_resource {
public:
    DvnfNodePool() = default;
    DvnfNodePool(const DvnfNodePool&) = delete;
    DvnfNodePool& operator=(const DvnfNodePool&) = delete;

private:
    void* do_allocate(size_t bytes, size_t align) override;
    void do_deallocate(void* p, size_t bytes, size_t align) override;
    bool do_is_equal(const std::pmr::memory_resource& other) const noexcept override { return this == &other; }
    // Blocks are aligned for any type, and a node lies at a multiple of the size.
    bool Pooled(size_t bytes, size_t align) const {
        return bytes == _size && align <= alignof(std::max_align_t) && _size % align == 0;
    }
    struct Free {
        Free* next;
    };
    static constexpr size_t kNodesPerBlock = 64;
    size_t _size = 0;
    Free* _free = nullptr;
    std::vector<std::unique_ptr<std::byte[]>> _blocks;
    size_t _usedInLast = kNodesPerBlock;  // nodes handed out of the last block
};

// ---------------------------------------------------------------------------
// The objects the core model asks for when it meets an entity it knows only
// by a name or a key. The database layer implements it.
class DvnfFrontendReader {
public:
    virtual ~DvnfFrontendReader();
    // Fills the entity (attributes, links, state) from wherever it is kept.
    virtual void ReadEntity(DvnfTRXData& data, DvnfEntity& entity) = 0;
    // The entity's name, filling in name or key when it has only one of
    // them. This base gives the entity's name as it stands.
    virtual DvnfString GetName(DvnfEntity& entity);
    // Reads the inner diagram of a block activity. This base does nothing.
    virtual void ReadBlock(DvnfTRXData& data, DvnfEntity& block, bool deep);
    // The stored key of the entity, or an empty text. This base gives "".
    virtual DvnfString GetOID(DvnfEntity& entity);
};

// ---------------------------------------------------------------------------
class DvnfCoreRepresentation {
public:
    DvnfCoreRepresentation(DvnfCoreTypes& types, DvnfMessageHandler* handler);
    virtual ~DvnfCoreRepresentation();
    DvnfCoreRepresentation(const DvnfCoreRepresentation&) = delete;
    DvnfCoreRepresentation& operator=(const DvnfCoreRepresentation&) = delete;
    // Never null: the given handler, or the default one that prints.
    DvnfMessageHandler* MessageHandler() const { return _handler; }
    void MessageHandler(DvnfMessageHandler* handler);
    DvnfCoreTypes& Types() const { return *_types; }

private:
    DvnfCoreTypes* _types;
    DvnfMessageHandler* _handler;
    DvnfMessageHandler _default;
};

class DvnfCoreData : public DvnfCoreRepresentation {
public:
    DvnfCoreData(DvnfCoreTypes& types, DvnfMessageHandler* handler);
    ~DvnfCoreData() override;

    // The entities of a type, by name. The type must be in the catalogue.
    const DvnfEntityMap& GetEntities(const DvnfString& typeName) const;

    // Makes an entity with state 2 (new). When the type already holds an
    // entity with that key (a skeleton made by a link, say), that entity is
    // given the name and returned; when the key is new but an entity of
    // that name has no key yet, that one takes the key. An empty key makes
    // a fresh one.
    DvnfEntity& CreateEntity(const DvnfEntityType& type, const DvnfString& oid, const DvnfString& name);
    DvnfEntity& CreateEntity(const DvnfString& typeName, const DvnfString& oid, const DvnfString& name);

    // The entity of that type and key, or DvnfEntity::undefined. With create
    // true a missing one is made as a skeleton (state 0, no name).
    DvnfEntity& GetEntityByOID(const DvnfEntityType& type, const DvnfString& oid, bool create = false);
    DvnfEntity& GetEntityByOID(const DvnfString& typeName, const DvnfString& oid, bool create = false);
    // The first entity of that type and name, or DvnfEntity::undefined (also
    // for an empty name). With create true a missing one is made as a
    // skeleton (state 0, no key).
    DvnfEntity& GetEntityByName(const DvnfEntityType& type, const DvnfString& name, bool create = false);
    DvnfEntity& GetEntityByName(const DvnfString& typeName, const DvnfString& name, bool create = false);

    // Links entity to the entity of typeName with that key (or name). With
    // createTarget a missing target is made as a skeleton: state 0, with the
    // key and no name (by key) or the name and no key (by name). With
    // noDuplicate an equal link is not added twice. Gives the link, or
    // DvnfLink::undefined when the target is missing and not to be made or
    // the entity is not valid.
    const DvnfLink& AddLinkByOID(DvnfEntity& entity, const DvnfString& linkName, const DvnfString& typeName,
                                 const DvnfString& oid, bool createTarget = true, bool noDuplicate = true);
    const DvnfLink& AddLinkByOID(DvnfEntity& entity, const DvnfLinkType& linkType, const DvnfString& oid,
                                 bool createTarget = true, bool noDuplicate = true);
    const DvnfLink& AddLinkByName(DvnfEntity& entity, const DvnfString& linkName, const DvnfString& typeName,
                                  const DvnfString& name, bool createTarget = true, bool noDuplicate = true);
    const DvnfLink& AddLinkByName(DvnfEntity& entity, const DvnfLinkType& linkType, const DvnfString& name,
                                  bool createTarget = true, bool noDuplicate = true);

    // Every entity, in the order they were made.
    const std::vector<DvnfEntity*>& AllEntities() const { return _order; }

    // Moves every entity of other (same catalogue) into this core data, which
    // must hold none: the entities keep their addresses, names, keys, states,
    // attributes and links, and belong to this core data from then on; other
    // is left empty. A reader that built into scratch data takes the result
    // over this way instead of building it a second time.
    void TakeEntitiesFrom(DvnfCoreData& other);
    long NumberOfEntities() const { return static_cast<long>(_order.size()); }

private:
    friend class DvnfEntity;
    // Looks texts up without making a std::string of the text sought.
    // Entities of one type by what each holds (its name or its key): a
    // table of one pointer a slot, open addressing with linear probing. The
    // key is read from the entity, so an entry costs 8 bytes (and the free
    // slots), where a node of a standard hash map costs six times as much.
    // A key may repeat; an empty one is never entered.
    class EntityTable {
    public:
        using KeyOf = DvnfKeyView (*)(const DvnfEntity&);
        explicit EntityTable(KeyOf keyOf) : _keyOf(keyOf) {}
        void Insert(DvnfEntity& e);
        // Removes that entity, entered under key (which it may no longer hold).
        void Erase(const DvnfEntity& e, DvnfKeyView key);
        // Calls f for each entity entered under key, until f gives true.
        template <class F>
        void ForEach(DvnfKeyView key, F f) const;
        DvnfEntity* Find(DvnfKeyView key) const;

    private:
        size_t Home(DvnfKeyView key) const;
        DvnfKeyView KeyAt(size_t slot) const;
        void Grow();
        KeyOf _keyOf;
        std::vector<DvnfEntity*> _slots;  // empty, or a power of two long
        size_t _count = 0;
    };
    // The indexes of one entity type. Each is made at the first call that
    // needs it and kept up to date from then on: many types are never looked
    // up (the members inside the data structures of a file are neither
    // listed nor sought by name or key), and their entities then cost no
    // entry in any index.
    struct TypeIndex {
        bool keyed = false;   // byName and byOID hold every entity of the type
        bool viewed = false;  // view holds every entity of the type
        DvnfNodePool pool;    // the nodes of view
        DvnfEntityMap view{&pool};         // what GetEntities gives; renames reach it lazily
        std::vector<DvnfEntity*> renamed;  // not yet moved in the view
        // By the entity's own name and key, read from the entity (the entry
        // is redone when Name() or OID() gives it another). Names may repeat
        // (the first made is found); an empty name, which finds nothing, has
        // no entry.
        EntityTable byName{[](const DvnfEntity& e) {
            return DvnfKeyView{std::string_view(e.Name().c_str(), static_cast<size_t>(e.Name().Length()))};
        }};
        EntityTable byOID{[](const DvnfEntity& e) { return e.Key(); }};
    };
    TypeIndex& Index(const DvnfEntityType& type) const;
    // The index of the type with byName and byOID made.
    TypeIndex& Keyed(const DvnfEntityType& type) const;
    // The first made of the type's entities of that name that pass the test.
    template <class Pred>
    DvnfEntity* FirstNamed(const DvnfEntityType& type, const DvnfString& name, Pred pred) const;
    DvnfEntity& Make(const DvnfEntityType& type, const DvnfString& oid, const DvnfString& name,
                     DvnfObject::State_t state);
    void Rename(DvnfEntity& entity, const DvnfString& oldName);
    void Rekey(DvnfEntity& entity, const DvnfString& oldOID);
    mutable std::unordered_map<const DvnfEntityType*, TypeIndex> _index;
    std::vector<DvnfEntity*> _order;  // every entity, owned, in the order made
};

// Names of the types the catalogue gives to the objects inside an activity
// or a diagram, and the diagram set that holds text annotations.
namespace DvnfNames {
inline constexpr const char* ProgramImplementation = "ProgramImplementation";
inline constexpr const char* ProcessImplementation = "ProcessImplementation";
inline constexpr const char* BlockImplementation = "BlockImplementation";
inline constexpr const char* BundleImplementation = "BundleImplementation";
inline constexpr const char* ControlConnector = "ControlConnector";
inline constexpr const char* DataConnector = "DataConnector";
inline constexpr const char* TextAnnotation = "TextAnnotation";
inline constexpr const char* DataStructureMember = "DataStructureMember";
inline constexpr const char* TextAnnotations = "TextAnnotations";  // set of "Diagram"
}  // namespace DvnfNames

class DvnfTRXData : public DvnfCoreData {
public:
    explicit DvnfTRXData(DvnfCoreTypes& types = DvnfTRXTypes::_instance, DvnfMessageHandler* handler = nullptr);
    ~DvnfTRXData() override;

    // Activity factories: a new "Activity" with the key (a fresh one when
    // empty), "Implementation"."Type" set to its kind (1 program, 2 process,
    // 3 block, 4 bundle, 5 information), for the first four an
    // implementation object in "Implementation"."As<Kind>", appended to
    // "Activities" of the diagram. State 2; the caller names it.
    DvnfEntity& CreateProgramActivityByOID(DvnfAttributeData diagram, const DvnfString& oid);
    DvnfEntity& CreateProcessActivityByOID(DvnfAttributeData diagram, const DvnfString& oid);
    DvnfEntity& CreateBlockActivityByOID(DvnfAttributeData diagram, const DvnfString& oid);
    DvnfEntity& CreateBundleActivityByOID(DvnfAttributeData diagram, const DvnfString& oid);
    DvnfEntity& CreateInfoActivityByOID(DvnfAttributeData diagram, const DvnfString& oid);
    // A "Source" / "Sink" appended to "Sources" / "Sinks" of the diagram.
    DvnfEntity& CreateSourceByOID(DvnfAttributeData diagram, const DvnfString& oid);
    DvnfEntity& CreateSinkByOID(DvnfAttributeData diagram, const DvnfString& oid);
    // A text annotation of that name appended to "TextAnnotations".
    DvnfEntity& CreateTextAnnotation(DvnfAttributeData diagram, const DvnfString& name);
    // A control connector ("ConnectorSpec" 1) or default connector (2) between
    // the activities of the diagram with those names, linked by
    // "ControlFromActivity" and "ControlToActivity", appended to
    // "ControlConnectors". oid may be null (a fresh key).
    DvnfEntity& CreateControlConnector(DvnfAttributeData diagram, const DvnfString& from, const DvnfString& to,
                                       const char* oid);
    DvnfEntity& CreateDefaultConnector(DvnfAttributeData diagram, const DvnfString& from, const DvnfString& to,
                                       const char* oid);
    // A data connector between two ends of the diagram: an end is an activity
    // name, or with isNode true a source (from) or sink (to) name. Links
    // "DataFromActivity"/"DataFromSource" and "DataToActivity"/"DataToSink";
    // "Type" 0; appended to "DataConnectors".
    DvnfEntity& CreateDataConnectorWithOID(DvnfAttributeData diagram, const DvnfString& from, bool fromIsNode,
                                           const DvnfString& to, bool toIsNode, const DvnfString& oid);
    // A data connector that loops on one activity: both links go to it;
    // "Type" 1 with firstDirection true, else 2.
    DvnfEntity& CreateDataConnectorWithOID(DvnfAttributeData diagram, const DvnfString& activity,
                                           bool firstDirection, const DvnfString& oid);

    // "a.b.c" from the levels; empty trailing levels are left out.
    static DvnfString MakeFQName(const DvnfString& a, const DvnfString& b, const DvnfString& c);
    // Splits a full name at its first two dots; any pointer may be null.
    // Returns the first level.
    static DvnfString SplitFQName(const DvnfString& fq, DvnfString* a, DvnfString* b, DvnfString* c);

    // ReadEntity of the reader on every entity of the type (those present
    // when the call starts, in name order).
    void ReadAllEntities(const DvnfString& typeName, DvnfFrontendReader& reader);

private:
    DvnfEntity& MakeActivity(DvnfAttributeData& diagram, const DvnfString& oid, long kind, const char* asName,
                             const char* implType);
    DvnfEntity& MakeControl(DvnfAttributeData& diagram, const DvnfString& from, const DvnfString& to,
                            const char* oid, long spec);
};

// ---------------------------------------------------------------------------
// Records which objects were processed.
class DvnfProcessed {
public:
    bool Processed(const DvnfObject& object) const;
    void Processed(const DvnfObject& object, bool flag);
    void Clear() { _done.clear(); }
private:
    std::unordered_map<const DvnfObject*, bool> _done;
};

// Tidies a process before an editor save: in its diagram and in the inner
// diagrams of its blocks and bundles (any depth) it removes the connectors
// whose ends are gone (no link, an end not valid, not an element of that
// diagram, or marked for deletion); then it asks the reader (when there is
// one) for the name of every link target, anywhere below the process, that
// lacks a name or a key. Gives the number of connectors removed.
class DvnfProcessCleaner {
public:
    // The data is the one the process lives in; the cleaner works through the process.
    DvnfProcessCleaner(DvnfTRXData& /*data*/, DvnfFrontendReader* reader) : _reader(reader) {}
    long operator()(DvnfEntity& process);
private:
    long CleanDiagram(DvnfAttributeData diagram, int depth);
    void ResolveNames(DvnfEntity& entity, int depth);
    DvnfFrontendReader* _reader;
};

// The text between open and close, each close inside it doubled:
// ReturnQuotedString("O'Neil", "'", "'") gives 'O''Neil'.
DvnfString ReturnQuotedString(const DvnString& text, const char* open, const char* close);
