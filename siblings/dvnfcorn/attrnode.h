// The node of an attribute tree (inside the core model only).
//
// A model read from a file holds about one node per 15 bytes of text, so a
// node is kept small: its name is interned (one copy of each name in the
// process, shared by every node that bears it), its children are a ring of
// siblings with no array of their own (the node keeps the last child, whose
// successor is the first), and the fields that no node uses at once share
// their place.
#pragma once

#include "dvnfcorn.h"

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
        if (kind == DvnfAttributeType::String) sval.~DvnfString();
    }

    // The kind; change it with Clear only (a text value lives only while
    // the kind is String).
    DvnfAttributeType kind = DvnfAttributeType::Group;
    const std::string* name = Intern({});  // interned; empty for set elements and the root
    union {
        long lval = 0;       // kind Long, and Bool (0 or 1)
        size_t cursorIndex;  // kind Set: the place of `cursor`
        DvnfString sval;     // kind String
    };
    union {
        DvnfEntity* entity = nullptr;    // kind Entity
        DvnfAttrNode* cursor;            // kind Set: the element last reached by At (or null)
        const DvnfEntity* ownerEntity;   // the root
    };
    DvnfAttrNode* parent = nullptr;  // null for the root

    // Children: group members or set elements, in their order.
    DvnfAttrNode* First() const { return _last ? _last->_next : nullptr; }
    DvnfAttrNode* After(const DvnfAttrNode* child) const { return child == _last ? nullptr : child->_next; }
    bool HasChildren() const { return _last != nullptr; }
    size_t Count() const;
    // The element at that place (walks from the last one reached when it
    // lies ahead, so a walk over a set is linear); null past the end.
    DvnfAttrNode* At(size_t index);
    // Takes the child and appends it.
    void Append(std::unique_ptr<DvnfAttrNode> child);
    // Removes (and destroys) the children for which pred is true; with
    // once, the first of them only. Gives how many.
    template <class Pred>
    long RemoveIf(Pred pred, bool once);
    void DropChildren();
    // Takes the children of another node (which is left without).
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

    // The one copy of a name that every node bearing it shares. Names are
    // never dropped: they are the attribute names of the catalogue and
    // whatever few others files give.
    static const std::string* Intern(std::string_view text);

    // The root of an entity's attributes stands right behind the entity, in
    // its block (DvnfCoreData::Make); the undefined entity has none.
    static const size_t kRootAt;
    static DvnfAttrNode* AttrRoot(DvnfEntity& e);
    static const DvnfAttrNode* AttrRoot(const DvnfEntity& e) { return AttrRoot(const_cast<DvnfEntity&>(e)); }

private:
    DvnfAttrNode* _last = nullptr;  // the last child; its _next is the first
    DvnfAttrNode* _next = nullptr;  // the next sibling in the ring
};

template <class Pred>
long DvnfAttrNode::RemoveIf(Pred pred, bool once) {
    long removed = 0;
    if (!_last) return 0;
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
    if (removed && kind == DvnfAttributeType::Set) cursor = nullptr;
    return removed;
}

inline constexpr size_t DvnfAttrNode::kRootAt =
    (sizeof(DvnfEntity) + alignof(DvnfAttrNode) - 1) / alignof(DvnfAttrNode) * alignof(DvnfAttrNode);

inline DvnfAttrNode* DvnfAttrNode::AttrRoot(DvnfEntity& e) {
    return &e == &DvnfEntity::undefined ? nullptr
                                        : reinterpret_cast<DvnfAttrNode*>(reinterpret_cast<char*>(&e) + kRootAt);
}

inline DvnfAttrNode* AttrRoot(DvnfEntity& e) { return DvnfAttrNode::AttrRoot(e); }
