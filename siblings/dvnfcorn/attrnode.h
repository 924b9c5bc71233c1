// The node of an attribute tree (inside the core model only).
#pragma once

#include "dvnfcorn.h"

#include <memory>
#include <string>
#include <vector>

struct DvnfAttrNode {
    DvnfAttributeType kind = DvnfAttributeType::Group;
    std::string name;  // empty for set elements and the root
    long lval = 0;
    bool bval = false;
    DvnfString sval;
    DvnfEntity* entity = nullptr;                         // kind Entity
    std::vector<std::unique_ptr<DvnfAttrNode>> children;  // group members or set elements
    DvnfAttrNode* parent = nullptr;                       // null for the root
    const DvnfEntity* ownerEntity = nullptr;              // the root only

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

    static DvnfAttrNode* AttrRoot(DvnfEntity& e) { return e._root.get(); }
    static const DvnfAttrNode* AttrRoot(const DvnfEntity& e) { return e._root.get(); }
};

inline DvnfAttrNode* AttrRoot(DvnfEntity& e) { return DvnfAttrNode::AttrRoot(e); }
