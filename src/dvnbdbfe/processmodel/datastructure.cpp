// Load of data structures: the row of DATA_STRUCTURE and its members in
// DATA_STRUCTURE_MBR, in the order of their sequence numbers.
#include "dvnbdbfe.h"
#include "dvnprocsets.h"

const DvnConvCoreDbFe::Kind<DvnDataStructureSet> DvnConvCoreDbFe::DataStructureKind = {
    .typeName = "DataStructure",
    .table = "DATA_STRUCTURE",
    .keyColumn = "DSID",
    .plural = "DataStructures",
    .progress = 51515,
    .notFound = 51551,
    .lookFirst = true,
    .key = [](const DvnDataStructureSet& row) { return row.m_DSID; },
    .name = [](const DvnDataStructureSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::DataStructure,
};

void DvnConvCoreDbFe::DataStructures(DvnString const& id) {
    LoadKind(DataStructureKind, id);
}

int DvnConvCoreDbFe::DataStructure(DvnDataStructureSet& row, DvnfEntity& structure) {
    if (!TakeState(structure, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = structure.AttributeData();
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    // The members are read anew, so that a structure read a second time
    // (by key, for the editor) does not hold them twice.
    attributes.Reset("Members");
    DataStructureMember(row.m_DSID, &structure);
    return LevelOk;
}

void DvnConvCoreDbFe::DataStructureMember(CString dsid, DvnfEntity* structure) {
    DvnDataStructureMbrSet rs(m_pDatabase);
    // The one set whose order a column keeps: the members' order is part of
    // the structure.
    rs.m_strFilter = CString("DSID = ") + Literal(DvnString(dsid.c_str()));
    rs.m_strSort = "SEQUENCE_NO";
    try {
        ReadRows(rs, Table("DATA_STRUCTURE_MBR"), [&](DvnDataStructureMbrSet& row) {
            DvnfAttributeData member = structure->AttributeData()("Members").NewSetElement();
            DvnfEntity& object = member.AsEntity();
            if (object.IsValid()) object.Name(DvnfString(row.m_MEMBER.c_str()));
            member("Name") = row.m_MEMBER.c_str();
            CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, member);
            switch (row.m_DATA_TYPE) {
                case 3: member("Type") = 3L; break;
                case 5: member("Type") = 1L; break;
                case 6: member("Type") = 2L; break;
                case 7: SubStructure(row, member, object); break;
                default: member("Type") = 0L; break;
            }
            CopyLong(row, row.m_ARRAY_SIZE, member("Cardinality"));
        });
    } catch (CDBException* e) {
        TraceDbException("Exception In DataStructureMember: rc =", e);
    }
}

// A member of a sub-structure: "Type" 4 and the link only when the
// structure's row is there. A target known only by its key gets the name at
// hand, so that the link reads as a name without a further lookup; its state
// stays 0, so its own load still fills it.
void DvnConvCoreDbFe::SubStructure(DvnDataStructureMbrSet& row, DvnfAttributeData member, DvnfEntity& object) {
    DvnDataStructureSet sub(m_pDatabase);
    sub.m_strFilter = CString("DSID = ") + Literal(DvnString(row.m_TYPE_DS.c_str()));
    ReadRows(sub, Table("DATA_STRUCTURE"), [&](DvnDataStructureSet& found) {
        member("Type") = 4L;
        if (!LinkByOID(object, "HasSubStructure", "DataStructure", row, row.m_TYPE_DS)) return;
        DvnfEntity& target =
            m_pCoreData->GetEntityByOID(DvnfString("DataStructure"), DvnfString(row.m_TYPE_DS.c_str()), false);
        if (target.IsValid() && target.Name().str().empty()) target.Name(DvnfString(found.m_NAME.c_str()));
    });
}

int DvnConvCoreDbFe::DsToCore(DvnfEntity& structure) {
    DvnDataStructureSet row(m_pDatabase);
    try {
        const DvnString name = structure.Name();
        if (structure.State() == DvnfObject::StateNone && !name.str().empty()) {
            // A skeleton known by name: the entity of the key found, when this
            // run loaded it already, otherwise this one takes the key.
            const long count = ReadRows(row, SelectLive("DATA_STRUCTURE", "NAME", Literal(name)),
                                        [&](DvnDataStructureSet& found) {
                                            DvnfEntity* target = &m_pCoreData->GetEntityByOID(
                                                DvnfString("DataStructure"), DvnfString(found.m_DSID.c_str()), false);
                                            // Loaded already: used as it is, its members
                                            // are not read a second time.
                                            if (target->State() > DvnfObject::StateDeleted) return;
                                            target = &m_pCoreData->CreateEntity(DvnfString("DataStructure"),
                                                                                DvnfString(found.m_DSID.c_str()),
                                                                                DvnfString(found.m_NAME.c_str()));
                                            DataStructure(found, *target);
                                            target->State(DvnfObject::StateUnchanged);
                                        });
            return count == 0 ? LevelError : LevelOk;
        }
        const long count = ReadRows(row, SelectLive("DATA_STRUCTURE", "DSID", Literal(structure.OID())),
                                    [&](DvnDataStructureSet& found) { DataStructure(found, structure); });
        return count == 0 ? LevelError : LevelOk;
    } catch (CDBException* e) {
        TraceDbException("Exception In DsToCore: rc =", e);
        return LevelError;
    }
}
