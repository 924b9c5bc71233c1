// The node of an attribute tree (inside the core model only).
//
// A model read from a file holds about one node per 15 bytes of text, so a
// node is kept to five words (docs/core-model.md, "How the tree is kept"):
// its kind in a byte, its name as the index of an interned name (one copy of
// each name in the process, shared by every node that bears it), its
// children as a ring of siblings with no array of their own (the node keeps
// the last child, whose successor is the first), and the fields that no node
// uses at once in one place.
#pragma once

#include "dvnfcorn.h"

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

struct DvnfAttrNode {
    DvnfAttrNode() {}  // not defaulted: a text value shares its place with the number
    DvnfAttrNode(const DvnfAttrNode&) = delete;
    DvnfAttrNode& operator=(const DvnfAttrNode&) = delete;
    ~DvnfAttrNode() {
        DropChildren();
        if (Kind() == DvnfAttributeType::String) sval.~DvnfString();
    }

    // From the pool of nodes (attributes.cpp, "The pool of nodes"); a node
    // made in the block of its entity (the root) is placed there instead.
    static void* operator new(size_t bytes);
    static void* operator new(size_t, void* at) noexcept { return at; }
    static void operator delete(void* p) noexcept;

    // The kind; change it with Clear only (a text value lives only while
    // the kind is String, children only while it is Group or Set).
    DvnfAttributeType Kind() const { return static_cast<DvnfAttributeType>(_kind); }
    // Empty for set elements and the root.
    const std::string& Name() const { return NameOf(_name); }

    union {
        long lval = 0;         // kind Long, and Bool (0 or 1)
        DvnfString sval;       // kind String
        DvnfAttrNode* cursor;  // kind Set: the element last reached by At (or null)
    };
    union {
        DvnfEntity* entity = nullptr;  // kind Entity
        DvnfAttrNode* _last;           // kinds Group and Set (the node's own): the last child, whose _next is the first
    };
    DvnfAttrNode* parent = nullptr;  // null for the root

    // Children: group members or set elements, in their order.
    bool HasChildren() const { return Holds() && _last; }
    DvnfAttrNode* First() const { return HasChildren() ? _last->_next : nullptr; }
    DvnfAttrNode* After(const DvnfAttrNode* child) const { return child == _last ? nullptr : child->_next; }
    size_t Count() const;
    // The element at that place (walks from the last one reached when it
    // lies ahead, so a walk over a set is linear); null past the end.
    DvnfAttrNode* At(size_t index);
    // Takes the child and appends it (to a group or a set).
    void Append(std::unique_ptr<DvnfAttrNode> child);
    // Removes (and destroys) the children for which pred is true; with
    // once, the first of them only. Gives how many.
    template <class Pred>
    long RemoveIf(Pred pred, bool once);
    void DropChildren();
    // Takes the children of another node of the same kind (which is left
    // without).
    void TakeChildren(DvnfAttrNode& from);

    DvnfAttrNode* Child(std::string_view childName) const;
    // The child of that name below this node (or below the root of the
    // entity it refers to), made as an empty group when missing; a node
    // that is no group becomes one. Null for a set.
    DvnfAttrNode* MakeChild(std::string_view childName);
    // Drops value and children and takes the kind.
    void Clear(DvnfAttributeType newKind);
    std::unique_ptr<DvnfAttrNode> Clone(DvnfAttrNode* newParent) const;
    // For a node that refers to an entity, that entity's root; else itself.
    DvnfAttrNode* Inner();
    // The path of this node below its entity's root as the catalogue spells
    // it ("Members[].Name"), and the entity.
    std::string CataloguePath(const DvnfEntity** owner) const;

    // The index of the one copy of a name that every node bearing it shares
    // (0 for the empty name), and the name of an index. Names are never
    // dropped and never move: they are the attribute names of the catalogue
    // and whatever few others files give, and a name is read without a lock.
    static std::uint32_t Intern(std::string_view text);
    static const std::string& NameOf(std::uint32_t index);

    // An entity and the root of its attributes share one block, the root at
    // this offset (DvnfCoreData::Make); so neither needs a field to find the
    // other. The undefined entity has no root.
    static constexpr size_t kRootAt =
        (sizeof(DvnfEntity) + alignof(DvnfEntity) - 1) / alignof(DvnfEntity) * alignof(DvnfEntity);
    // The entity whose root this node is (for the root of an entity only).
    const DvnfEntity* Owner() const {
        return reinterpret_cast<const DvnfEntity*>(reinterpret_cast<const char*>(this) - kRootAt);
    }
    static DvnfAttrNode* AttrRoot(DvnfEntity& e) {
        return &e == &DvnfEntity::undefined ? nullptr
                                            : reinterpret_cast<DvnfAttrNode*>(reinterpret_cast<char*>(&e) + kRootAt);
    }
    static const DvnfAttrNode* AttrRoot(const DvnfEntity& e) { return AttrRoot(const_cast<DvnfEntity&>(e)); }

private:
    bool Holds() const {
        return _kind == static_cast<std::uint8_t>(DvnfAttributeType::Group) ||
               _kind == static_cast<std::uint8_t>(DvnfAttributeType::Set);
    }

    DvnfAttrNode* _next = nullptr;  // the next sibling in the ring
    std::uint32_t _kind : 8 = static_cast<std::uint8_t>(DvnfAttributeType::Group);
    // Kind Set: the place of cursor. Past kMaxAt the cursor stays where it
    // was (a walk stays right, only slower, on sets of more than 16 million
    // elements).
    std::uint32_t _at : 24 = 0;
    std::uint32_t _name = 0;  // Intern
    static constexpr size_t kMaxAt = (size_t{1} << 24) - 1;
};

template <class Pred>
long DvnfAttrNode::RemoveIf(Pred pred, bool once) {
    long removed = 0;
    if (!HasChildren()) return 0;
    DvnfAttrNode* prev = _last;
    DvnfAttrNode* cur = _last->_next;
    for (;;) {
        const bool wasLast = cur == _last;
        DvnfAttrNode* following = cur->_next;
        if (pred(*cur)) {
            if (cur == prev) {
                _last = nullptr;  // it was the only one
            } else {
                prev->_next = following;
                if (wasLast) _last = prev;
            }
            delete cur;
            ++removed;
            if (once) break;
        } else {
            prev = cur;
        }
        if (wasLast) break;
        cur = following;
    }
    if (removed && Kind() == DvnfAttributeType::Set) cursor = nullptr;
    return removed;
}

inline DvnfAttrNode* AttrRoot(DvnfEntity& e) { return DvnfAttrNode::AttrRoot(e); }
