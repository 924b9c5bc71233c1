#include "dvnprocsets.h"

#include "dvnlookup.h"

using dvnlookup::FirstRowQuiet;
using dvnlookup::FirstValue;
using dvnlookup::FirstValueQuiet;
using dvnlookup::Literal;
using dvnlookup::WithTombstoneRule;

DVN_IMPLEMENT_RECORDSET(DvnGraphAttrSet, DVN_GRAPH_ATTR_COLUMNS, "PROCESS_GRAPH_ATTR")
DVN_IMPLEMENT_RECORDSET(DvnCategorySet, DVN_CATEGORY_COLUMNS, "CATEGORY")
DVN_IMPLEMENT_RECORDSET(DvnDataStructureSet, DVN_DATA_STRUCTURE_COLUMNS, "DATA_STRUCTURE")
DVN_IMPLEMENT_RECORDSET(DvnDataStructureMbrSet, DVN_DATA_STRUCTURE_MBR_COLUMNS, "DATA_STRUCTURE_MBR")
DVN_IMPLEMENT_RECORDSET(DvnProcessSet, DVN_PROCESS_COLUMNS, "PROCESS")
DVN_IMPLEMENT_RECORDSET(DvnSimplePrcSet, DVN_SIMPLE_PRC_COLUMNS, "PROCESS")
DVN_IMPLEMENT_DERIVED(DvnProcessGraphAttrSet, DvnGraphAttrSet, DVN_PROCESS_GRAPH_ATTR_COLUMNS, "PROCESS_GRAPH_ATTR")
DVN_IMPLEMENT_RECORDSET(DvnProcessTopolAttrSet, DVN_PROCESS_TOPOL_ATTR_COLUMNS, "PROCESS_TOPOL_ATTR")
DVN_IMPLEMENT_RECORDSET(DvnActivitySet, DVN_ACTIVITY_COLUMNS, "ACTIVITY")
DVN_IMPLEMENT_RECORDSET(DvnAct2Set, DVN_ACT2_COLUMNS, "ACTIVITY")
DVN_IMPLEMENT_RECORDSET(DvnActNameSet, DVN_ACT_NAME_COLUMNS, "ACTIVITY")
DVN_IMPLEMENT_RECORDSET(DvnActivityExtentSet, DVN_ACTIVITY_EXTENT_COLUMNS, "ACTIVITY_EXTENT")
DVN_IMPLEMENT_RECORDSET(DvnSourceSet, DVN_SOURCE_COLUMNS, "SOURCE")
DVN_IMPLEMENT_RECORDSET(DvnSinkSet, DVN_SINK_COLUMNS, "SINK")
DVN_IMPLEMENT_DERIVED(DvnBlockActivitySet, DvnGraphAttrSet, DVN_BLOCK_ACTIVITY_COLUMNS, "BLOCK_ACTIVITY")
DVN_IMPLEMENT_RECORDSET(DvnProgramActivitySet, DVN_PROGRAM_ACTIVITY_COLUMNS, "PROGRAM_ACTIVITY")
DVN_IMPLEMENT_RECORDSET(DvnProcessActivitySet, DVN_PROCESS_ACTIVITY_COLUMNS, "PROCESS_ACTIVITY")
DVN_IMPLEMENT_RECORDSET(DvnBundleActivitySet, DVN_BUNDLE_ACTIVITY_COLUMNS, "BUNDLE_ACTIVITY")
DVN_IMPLEMENT_RECORDSET(DvnControlConnectorSet, DVN_CONTROL_CONNECTOR_COLUMNS, "CONTROL_CONNECTOR")
DVN_IMPLEMENT_RECORDSET(DvnControlBendpointSet, DVN_CONTROL_BENDPOINT_COLUMNS, "CONTROL_BENDPOINT")
DVN_IMPLEMENT_RECORDSET(DvnDataConnectorSet, DVN_DATA_CONNECTOR_COLUMNS, "DATA_CONNECTOR")
DVN_IMPLEMENT_RECORDSET(DvnDataBendpointSet, DVN_DATA_BENDPOINT_COLUMNS, "DATA_BENDPOINT")
DVN_IMPLEMENT_RECORDSET(DvnDataMapSet, DVN_DATA_MAP_COLUMNS, "DATA_MAP")
DVN_IMPLEMENT_RECORDSET(DvnActContainerSet, DVN_ACT_CONTAINER_COLUMNS, "ACT_CONTAINER")
DVN_IMPLEMENT_RECORDSET(DvnProcessContainerSet, DVN_PRC_CONTAINER_COLUMNS, "PRC_CONTAINER")
DVN_IMPLEMENT_RECORDSET(DvnActivityByPersonSet, DVN_ACTIVITY_BY_PERSON_COLUMNS, "ACTIVITY_BY_PERSON")
DVN_IMPLEMENT_RECORDSET(DvnActByPersonContMSet, DVN_ACT_BY_CONT_COLUMNS, "ACT_BY_PERS_F_CONT")
DVN_IMPLEMENT_RECORDSET(DvnActivityByRoleSet, DVN_ACTIVITY_BY_ROLE_COLUMNS, "ACTIVITY_BY_ROLE")
DVN_IMPLEMENT_RECORDSET(DvnActByRoleContMSet, DVN_ACT_BY_CONT_COLUMNS, "ACT_BY_ROLE_F_CONT")
DVN_IMPLEMENT_RECORDSET(DvnSupportToolsSet, DVN_ACT_HAS_SUP_TOOL_COLUMNS, "ACT_HAS_SUP_TOOL")
DVN_IMPLEMENT_RECORDSET(DvnTextAnnotationSet, DVN_TEXT_ANNOTATION_COLUMNS, "TEXT_ANNOTATION")
DVN_IMPLEMENT_RECORDSET(DvnVersionSet, DVN_VERSION_COLUMNS, "VERSION")

// ----------------------------------------------------------------- lookups
CString DvnCategorySet::GetCatID(const CString& name, const CString& prefix, bool includeDeleted) {
    return FirstValue(*this, prefix + "CATEGORY", WithTombstoneRule("NAME = " + name, includeDeleted), "[CATID]");
}

DvnfString DvnCategorySet::GetName(const CString& id, const CString& prefix, bool includeDeleted) {
    return FirstValue<DvnfString>(*this, prefix + "CATEGORY",
                                  WithTombstoneRule("CATID = " + Literal(id), includeDeleted), "[NAME]");
}

CString DvnDataStructureSet::GetDsID(const CString& name, const CString& prefix, bool includeDeleted) {
    return FirstValue(*this, prefix + "DATA_STRUCTURE", WithTombstoneRule("NAME = " + name, includeDeleted), "[DSID]");
}

DvnfString DvnDataStructureSet::GetName(const CString& id, const CString& prefix, bool includeDeleted) {
    return FirstValue<DvnfString>(*this, prefix + "DATA_STRUCTURE",
                                  WithTombstoneRule("DSID = " + Literal(id), includeDeleted), "[NAME]");
}

CString DvnSimplePrcSet::GetProcessID(const CString& name, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "PROCESS", "NAME = " + name, "[PID]");
}

namespace {
// The activities of one diagram: those of the process inside the block, or
// at the top of the process when block is empty.
CString DiagramFilter(const CString& pid, const CString& block) {
    return "PID = " + Literal(pid) +
           (block.IsEmpty() ? CString(" AND INSIDE_BLOCK IS NULL") : " AND INSIDE_BLOCK = " + Literal(block));
}
}  // namespace

CString DvnActivitySet::GetAID(const CString& name, const CString& pid, const CString& block, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "ACTIVITY", "NAME = " + name + " AND " + DiagramFilter(pid, block), "[AID]");
}

std::unordered_map<std::string, CString> DvnActNameSet::AIDsByName(const CString& pid, const CString& block,
                                                                    const CString& prefix) {
    std::unordered_map<std::string, CString> aids;
    FirstRowQuiet(*this, prefix + "ACTIVITY", DiagramFilter(pid, block), 0, [&] {
        for (; !IsEOF(); MoveNext()) aids.emplace(m_NAME.str(), m_AID);
        return 0;
    });
    return aids;
}

CString DvnActivitySet::GetPID(const CString& aid, const CString& prefix) {
    return FirstValue(*this, prefix + "ACTIVITY", "AID = " + Literal(aid), "[PID]");
}

CString DvnActivitySet::GetBlockID(const CString& aid, const CString& prefix) {
    return FirstValue(*this, prefix + "ACTIVITY", "AID = " + Literal(aid), "[INSIDE_BLOCK]");
}

DvnfString DvnActivitySet::GetName(const CString& aid, const CString& prefix) {
    return FirstValue<DvnfString>(*this, prefix + "ACTIVITY", "AID = " + Literal(aid), "[NAME]");
}

namespace {
// "<NUMBER column> = n AND PID = 'pid'" and the block condition: a source or
// sink at the top of the process has no block.
CString NodeFilter(const char* numberColumn, long number, const CString& pid, const CString& block) {
    CString filter;
    filter.Format("%s = %ld AND PID = ", numberColumn, number);
    filter += Literal(pid);
    filter += block.IsEmpty() ? CString(" AND BLOCK_AID IS NULL") : " AND BLOCK_AID = " + Literal(block);
    return filter;
}
}  // namespace

CString DvnSourceSet::GetSourceID(long number, const CString& pid, const CString& prefix) {
    return GetSourceID(number, pid, CString(), prefix);
}

CString DvnSourceSet::GetSourceID(long number, const CString& pid, const CString& block, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "SOURCE", NodeFilter("SOURCE_NUMBER", number, pid, block), "[SOURCE_ID]");
}

CString DvnSinkSet::GetSinkID(long number, const CString& pid, const CString& prefix) {
    return GetSinkID(number, pid, CString(), prefix);
}

CString DvnSinkSet::GetSinkID(long number, const CString& pid, const CString& block, const CString& prefix) {
    return FirstValueQuiet(*this, prefix + "SINK", NodeFilter("SINK_NUMBER", number, pid, block), "[SINK_ID]");
}
