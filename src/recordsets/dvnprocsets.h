// Recordset classes of the process model: categories, data structures,
// processes, activities and everything drawn in a process diagram.
#pragma once

#include <string>
#include <unordered_map>

#include "dvncolumns.h"
#include "dvnkernn.h"

// --------------------------------------------------------------- graph base
#define DVN_GRAPH_ATTR_COLUMNS(C)                                                       \
    C(LONG, ZOOM_FACTOR) C(LONG, VIEW_REF_PT_XPOS) C(LONG, VIEW_REF_PT_YPOS)            \
    C(LONG, PAPER_SIZE_WIDTH) C(LONG, PAPER_SIZE_HEIGHT) C(LONG, SHOW_CONNECTORS)       \
    C(INT, SHOW_EXIT_COND) C(INT, SHOW_TRANS_COND) C(INT, SHOW_TEXT_ANNOTAT)

// The diagram settings shared by a process and a block; no table of its own.
class DvnGraphAttrSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnGraphAttrSet, DVN_GRAPH_ATTR_COLUMNS)
};

// ------------------------------------------------------------------ tables
#define DVN_CATEGORY_COLUMNS(C)                                                         \
    C(TEXT, CATID) C(TEXT, NAME) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)            \
    C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnCategorySet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnCategorySet, DVN_CATEGORY_COLUMNS)
    // name in quoted form; a database exception goes up.
    CString GetCatID(const CString& name, const CString& prefix, bool includeDeleted);
    DvnfString GetName(const CString& id, const CString& prefix, bool includeDeleted);
};

#define DVN_DATA_STRUCTURE_COLUMNS(C)                                                   \
    C(TEXT, DSID) C(TEXT, NAME) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)             \
    C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnDataStructureSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnDataStructureSet, DVN_DATA_STRUCTURE_COLUMNS)
    // name in quoted form; a database exception goes up.
    CString GetDsID(const CString& name, const CString& prefix, bool includeDeleted);
    DvnfString GetName(const CString& id, const CString& prefix, bool includeDeleted);
};

#define DVN_DATA_STRUCTURE_MBR_COLUMNS(C)                                               \
    C(TEXT, MEMBER) C(TEXT, DSID) C(LONG, SEQUENCE_NO) C(TEXT, TYPE_DS) C(INT, DATA_TYPE) \
    C(LONG, ARRAY_SIZE) C(LONG, LENGTH) C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnDataStructureMbrSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnDataStructureMbrSet, DVN_DATA_STRUCTURE_MBR_COLUMNS)
};

#define DVN_PROCESS_COLUMNS(C)                                                          \
    C(TEXT, PID) C(TEXT, NAME) C(TEXT, CATID) C(TEXT, ORGANIZATION) C(TEXT, ROLE)       \
    C(TEXT, ADMINISTRATOR) C(TEXT, INPUT_DS) C(TEXT, OUTPUT_DS) C(TEXT, VALID_FROM)     \
    C(TEXT, ORG_CONT_MEMBER) C(TEXT, ROLE_CONT_MEMBER) C(TEXT, PADM_CONT_MEMBER)        \
    C(LONG, RC_CREATION) C(TEXT, USER_DEFINED_ICON) C(INT, PROMPT_AT_PRC_STRT)          \
    C(LONG, DATA_FROM_IN_CONT) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)              \
    C(TEXT, DESCRIPTION) C(DOC, DOCUMENTATION)

class DvnProcessSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnProcessSet, DVN_PROCESS_COLUMNS)
};

// A narrow view of PROCESS for the tests that need no whole row.
#define DVN_SIMPLE_PRC_COLUMNS(C) C(TEXT, PID) C(TEXT, NAME) C(INT, CHECKED_OUT) C(TEXT, CHECKED_OUT_BY)

class DvnSimplePrcSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnSimplePrcSet, DVN_SIMPLE_PRC_COLUMNS)
    // name in quoted form; a database exception is written on standard output.
    CString GetProcessID(const CString& name, const CString& prefix);
};

#define DVN_PROCESS_GRAPH_ATTR_COLUMNS(C)                                               \
    C(TEXT, PID) C(LONG, PAPER_COLOR) C(LONG, PAPER_BACK_COLOR) C(LONG, ACT_NAME_COLOR) \
    C(TEXT, ACT_NAME_FONT) C(LONG, ACT_FONT_SIZE) C(LONG, ACT_FONT_STYLE)               \
    C(TEXT, ACT_FONT_DESC) C(LONG, CONTROL_COLOR) C(LONG, DATA_COLOR)                   \
    C(LONG, EXIT_COND_COLOR) C(TEXT, EXIT_COND_FONT) C(LONG, EXIT_COND_FONT_SIZ)        \
    C(LONG, EXIT_COND_FONT_STY) C(TEXT, EXIT_COND_FONT_DSC) C(LONG, TRAN_COND_COLOR)    \
    C(TEXT, TRAN_COND_FONT) C(LONG, TRAN_COND_FONT_SIZ) C(LONG, TRAN_COND_FONT_STY)     \
    C(TEXT, TRAN_COND_FONT_DSC)

class DvnProcessGraphAttrSet : public DvnGraphAttrSet {
    DVN_DECLARE_RECORDSET(DvnProcessGraphAttrSet, DVN_PROCESS_GRAPH_ATTR_COLUMNS)
};

#define DVN_PROCESS_TOPOL_ATTR_COLUMNS(C)                                               \
    C(TEXT, PID) C(LONG, NOTIFICATION_MODE) C(LONG, WRITE_AUDIT_LOG) C(LONG, SUBSTITUTION) \
    C(LONG, SELECT_LEAST_WRKLD) C(LONG, PREFER_NABSENT_USR) C(LONG, PREFER_LOCAL_USERS) \
    C(LONG, INCL_PRC_ASSGMNT) C(LONG, STAFF_AUTONOMY) C(LONG, NOTIFICAT_AUTONOMY)       \
    C(LONG, ADMIN_AUTONOMY) C(LONG, CONTROL_AUTONOMY) C(LONG, TERMINATE_ON_ERROR)       \
    C(LONG, ENFORCE_IM_EXEC) C(LONG, CHECKOUT_POSSIBLE) C(LONG, KEEP_FIN_WRKITM_TI)     \
    C(LONG, KEEP_FIN_PRC_TIME) C(LONG, REFRESH_POLICY) C(LONG, SECOND_NOTIFICAT)        \
    C(LONG, NOTIFICATION_INTVL) C(TEXT, NOT_CONT_MEMBER) C(LONG, USE_SUBST_FOR_NOT)     \
    C(LONG, HX_AUDIT_LOG) C(TEXT, AUDIT_EVENTS_TO_HX) C(TEXT, AUDIT_EVENTS_TO_DB)

class DvnProcessTopolAttrSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnProcessTopolAttrSet, DVN_PROCESS_TOPOL_ATTR_COLUMNS)
};

#define DVN_ACTIVITY_COLUMNS(C)                                                         \
    C(TEXT, AID) C(TEXT, NAME) C(TEXT, PID) C(TEXT, INSIDE_BLOCK) C(TEXT, INPUT_DS)     \
    C(TEXT, OUTPUT_DS) C(LONG, ACTIVITY_KIND) C(TEXT, USER_DEFINED_ICON)                \
    C(LTEXT, EXIT_CONDITION) C(LONG, START_CONDITION) C(LONG, XPOS) C(LONG, YPOS)       \
    C(LONG, HEIGHT) C(LONG, WIDTH) C(LONG, NAME_XPOS) C(LONG, NAME_YPOS)                \
    C(LONG, EXIT_COND_XPOS) C(LONG, EXIT_COND_YPOS) C(TEXT, DESCRIPTION)                \
    C(DOC, DOCUMENTATION)

class DvnActivitySet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnActivitySet, DVN_ACTIVITY_COLUMNS)
    // name in quoted form; block empty for the top of the process. A database
    // exception is written on standard output.
    CString GetAID(const CString& name, const CString& pid, const CString& block, const CString& prefix);
    // A database exception goes up.
    CString GetPID(const CString& aid, const CString& prefix);
    CString GetBlockID(const CString& aid, const CString& prefix);
    DvnfString GetName(const CString& aid, const CString& prefix);
};

// A narrow view of ACTIVITY: the key and the kind.
#define DVN_ACT2_COLUMNS(C) C(TEXT, AID) C(LONG, ACTIVITY_KIND)

#define DVN_ACT_NAME_COLUMNS(C) C(TEXT, AID) C(TEXT, NAME)

class DvnActNameSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnActNameSet, DVN_ACT_NAME_COLUMNS)
public:
    // The keys of the activities of one diagram (block empty for the top of
    // the process) by their names, in one read: of two rows of one name, the
    // first, as GetAID finds it. A database exception is written on standard
    // output and gives none.
    std::unordered_map<std::string, CString> AIDsByName(const CString& pid, const CString& block,
                                                        const CString& prefix);
};

class DvnAct2Set : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnAct2Set, DVN_ACT2_COLUMNS)
};

#define DVN_ACTIVITY_EXTENT_COLUMNS(C)                                                  \
    C(TEXT, AID) C(LONG, MIN_LEVEL) C(LONG, MAX_LEVEL) C(TEXT, FIRST_NOT_ASSGMNT)       \
    C(TEXT, ORGANIZATION) C(TEXT, STARTER_OF_AID) C(TEXT, MANAGER_OF_S_AID)             \
    C(TEXT, XCL_STARTER_OF_AID) C(LONG, PRIORITY) C(INT, PRIO_FROM_INPUT)               \
    C(TEXT, PRIO_CONT_MEMBER) C(TEXT, MIN_LVL_CONT_MBR) C(TEXT, MAX_LVL_CONT_MBR)       \
    C(TEXT, ORG_CONT_MEMBER) C(LONG, INCL_CHILD_ORG) C(LONG, DONE_BY)                   \
    C(LONG, FIRST_NOT_TARGET) C(TEXT, FIRST_NOT_CONT) C(LONG, NOTIF_FROM_INPUT)         \
    C(TEXT, NOT_CONT_MEMBER) C(LONG, NOTIFICATION_INTVL) C(LONG, SECOND_NOTIFICAT)      \
    C(TEXT, SCND_NOT_CONT_MBR) C(LONG, SECOND_NOT_DURAT) C(LONG, USE_SUBST_FOR_NOT)     \
    C(LONG, START_OPTION) C(LONG, EXIT_OPTION) C(LONG, INCL_PRC_ASSGMNT)                \
    C(LONG, ENFORCE_IM_EXEC) C(LONG, CHECKOUT_POSSIBLE) C(LONG, SUBSTITUTION)           \
    C(LONG, SELECT_LEAST_WRKLD) C(LONG, PREFER_NABSENT_USR) C(LONG, PREFER_LOCAL_USERS) \
    C(LONG, EXPIRATION_INTVL) C(TEXT, EXPIR_CONT_MEMBER) C(TEXT, AUDIT_EVENTS_TO_HX)    \
    C(TEXT, AUDIT_EVENTS_TO_DB)

class DvnActivityExtentSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnActivityExtentSet, DVN_ACTIVITY_EXTENT_COLUMNS)
};

#define DVN_SOURCE_COLUMNS(C)                                                           \
    C(TEXT, SOURCE_ID) C(LONG, SOURCE_NUMBER) C(TEXT, PID) C(TEXT, BLOCK_AID)           \
    C(LONG, XPOS) C(LONG, YPOS) C(LONG, HEIGHT) C(LONG, WIDTH)

class DvnSourceSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnSourceSet, DVN_SOURCE_COLUMNS)
    // A database exception is written on standard output.
    CString GetSourceID(long number, const CString& pid, const CString& prefix);
    CString GetSourceID(long number, const CString& pid, const CString& block, const CString& prefix);
};

#define DVN_SINK_COLUMNS(C)                                                             \
    C(TEXT, SINK_ID) C(LONG, SINK_NUMBER) C(TEXT, PID) C(TEXT, BLOCK_AID)               \
    C(LONG, XPOS) C(LONG, YPOS) C(LONG, HEIGHT) C(LONG, WIDTH)

class DvnSinkSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnSinkSet, DVN_SINK_COLUMNS)
    // A database exception is written on standard output.
    CString GetSinkID(long number, const CString& pid, const CString& prefix);
    CString GetSinkID(long number, const CString& pid, const CString& block, const CString& prefix);
};

#define DVN_BLOCK_ACTIVITY_COLUMNS(C) C(TEXT, AID) C(LONG, RETURN_CODE_SET)

class DvnBlockActivitySet : public DvnGraphAttrSet {
    DVN_DECLARE_RECORDSET(DvnBlockActivitySet, DVN_BLOCK_ACTIVITY_COLUMNS)
};

#define DVN_PROGRAM_ACTIVITY_COLUMNS(C)                                                 \
    C(TEXT, AID) C(TEXT, PROGRAM_ID) C(TEXT, PE_SERVER) C(TEXT, PES_CONT_MEMBER)        \
    C(LONG, SYNCHRONIZATION)

class DvnProgramActivitySet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnProgramActivitySet, DVN_PROGRAM_ACTIVITY_COLUMNS)
};

#define DVN_PROCESS_ACTIVITY_COLUMNS(C)                                                 \
    C(TEXT, AID) C(TEXT, PROCESS) C(TEXT, PROC_CONT_MEMBER) C(TEXT, SYSTEM)             \
    C(TEXT, SYSTEM_CONT_MEMBER)

class DvnProcessActivitySet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnProcessActivitySet, DVN_PROCESS_ACTIVITY_COLUMNS)
};

#define DVN_BUNDLE_ACTIVITY_COLUMNS(C)                                                  \
    C(TEXT, AID) C(TEXT, PATTERN_ACTIVITY) C(LONG, RESTART_OPTION)                      \
    C(LONG, RETUN_CODE_SETTING) C(LONG, ASGNMNT_ALGORITHM) C(LONG, PLANNING_MODE)       \
    C(INT, PROMPT_FOR_PLANG) C(LONG, NMBR_OF_INSTANCES) C(TEXT, NMBR_OF_INST_MBR)       \
    C(TEXT, INSTANTIATION_FLD) C(LONG, XPOS) C(LONG, YPOS) C(LONG, HEIGHT) C(LONG, WIDTH)

class DvnBundleActivitySet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnBundleActivitySet, DVN_BUNDLE_ACTIVITY_COLUMNS)
};

#define DVN_CONTROL_CONNECTOR_COLUMNS(C)                                                \
    C(TEXT, PID) C(TEXT, FROM_ACTIVITY) C(TEXT, TO_ACTIVITY) C(TEXT, INSIDE_BLOCK)      \
    C(LONG, TYPE) C(LONG, COND_XPOS) C(LONG, COND_YPOS) C(TEXT, NAME)                   \
    C(LTEXT, TRANSITION_COND) C(TEXT, DESCRIPTION)

class DvnControlConnectorSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnControlConnectorSet, DVN_CONTROL_CONNECTOR_COLUMNS)
};

#define DVN_CONTROL_BENDPOINT_COLUMNS(C)                                                \
    C(TEXT, PID) C(TEXT, FROM_ACTIVITY) C(TEXT, TO_ACTIVITY) C(LONG, SEQUENCENO)        \
    C(LONG, XPOS) C(LONG, YPOS)

class DvnControlBendpointSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnControlBendpointSet, DVN_CONTROL_BENDPOINT_COLUMNS)
};

#define DVN_DATA_CONNECTOR_COLUMNS(C)                                                   \
    C(TEXT, PID) C(TEXT, DCID) C(TEXT, INSIDE_BLOCK) C(TEXT, NAME) C(TEXT, FROM_ACTIVITY) \
    C(TEXT, TO_ACTIVITY) C(TEXT, FROM_SOURCE) C(TEXT, TO_SINK) C(LONG, DIRECTION)       \
    C(TEXT, DESCRIPTION)

class DvnDataConnectorSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnDataConnectorSet, DVN_DATA_CONNECTOR_COLUMNS)
};

#define DVN_DATA_BENDPOINT_COLUMNS(C) C(TEXT, DCID) C(LONG, SEQUENCENO) C(LONG, XPOS) C(LONG, YPOS)

class DvnDataBendpointSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnDataBendpointSet, DVN_DATA_BENDPOINT_COLUMNS)
};

#define DVN_DATA_MAP_COLUMNS(C) C(TEXT, DCID) C(TEXT, FROM_MEMBER) C(TEXT, TO_MEMBER)

class DvnDataMapSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnDataMapSet, DVN_DATA_MAP_COLUMNS)
};

#define DVN_ACT_CONTAINER_COLUMNS(C)                                                    \
    C(TEXT, AID) C(INT, INPUT_OR_OUTPUT) C(TEXT, DOTTED_NAME) C(CTEXT, INITIAL_VALUE)

class DvnActContainerSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnActContainerSet, DVN_ACT_CONTAINER_COLUMNS)
};

#define DVN_PRC_CONTAINER_COLUMNS(C)                                                    \
    C(TEXT, PID) C(INT, INPUT_OR_OUTPUT) C(TEXT, DOTTED_NAME) C(CTEXT, INITIAL_VALUE)

class DvnProcessContainerSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnProcessContainerSet, DVN_PRC_CONTAINER_COLUMNS)
};

#define DVN_ACTIVITY_BY_PERSON_COLUMNS(C) C(TEXT, AID) C(TEXT, PERSON_ID)

class DvnActivityByPersonSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnActivityByPersonSet, DVN_ACTIVITY_BY_PERSON_COLUMNS)
};

#define DVN_ACT_BY_CONT_COLUMNS(C) C(TEXT, AID) C(TEXT, CONTAINER_MEMBER)

class DvnActByPersonContMSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnActByPersonContMSet, DVN_ACT_BY_CONT_COLUMNS)
};

#define DVN_ACTIVITY_BY_ROLE_COLUMNS(C) C(TEXT, AID) C(TEXT, ROLE)

class DvnActivityByRoleSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnActivityByRoleSet, DVN_ACTIVITY_BY_ROLE_COLUMNS)
};

class DvnActByRoleContMSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnActByRoleContMSet, DVN_ACT_BY_CONT_COLUMNS)
};

#define DVN_ACT_HAS_SUP_TOOL_COLUMNS(C) C(TEXT, AID) C(TEXT, PROGRAM_ID)

class DvnSupportToolsSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnSupportToolsSet, DVN_ACT_HAS_SUP_TOOL_COLUMNS)
};

#define DVN_TEXT_ANNOTATION_COLUMNS(C)                                                  \
    C(TEXT, ANNOTATION_ID) C(TEXT, NAME) C(TEXT, PID) C(TEXT, INSIDE_BLOCK)             \
    C(TEXT, ANNOTATION_TEXT) C(LONG, BACK_COLOR) C(LONG, TEXT_COLOR) C(TEXT, TEXT_FONT) \
    C(LONG, TEXT_FONT_SIZ) C(LONG, TEXT_FONT_STYLE) C(TEXT, TEXT_FONT_DESC)             \
    C(LONG, XPOS) C(LONG, YPOS) C(LONG, WIDTH) C(LONG, HEIGHT)

class DvnTextAnnotationSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnTextAnnotationSet, DVN_TEXT_ANNOTATION_COLUMNS)
};

#define DVN_VERSION_COLUMNS(C) C(LONG, VERSION) C(LONG, RELEASE) C(LONG, MOD_LEVEL)

class DvnVersionSet : public CRecordset {
    DVN_DECLARE_RECORDSET(DvnVersionSet, DVN_VERSION_COLUMNS)
};
