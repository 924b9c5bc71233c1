// DvnConvCoreDbFe: the front end. It reads the tables that the stores write
// and builds in the core model the entities, attributes and links that a TRX
// file would have given. This header is the frame shared by every load; the
// loads themselves live in src/dvnbdbfe/processmodel, staff and topology,
// with the same file names as their stores. The front end knows the core
// model, the recordsets and the stored forms, never the store or the facade.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "dvnfcorn.h"
#include "dvnkernn.h"
#include "odbcframe.h"

class DvnActivityExtentSet;
class DvnCategorySet;
class DvnDataStructureSet;
class DvnDataStructureMbrSet;
// staff
class DvnRoleSet;
class DvnOrganizationSet;
class DvnStaffLevelSet;
class DvnPersonSet;
// topology: domain, system groups, systems and their layered settings
class DvnDomainSet;
class DvnSystemGroupSet;
class DvnSystemSet;
class DvnTopologyCommonSet;
class DvnTopologyPrcSet;
class DvnTopologyPrgSet;
class DvnTopologySvrSet;
class DvnTopologySvsSet;
// servers
class DvnServerSet;
class DvnCleanupServerSet;
class DvnDistributionServerSet;
class DvnExecutionServerSet;
class DvnSchedulingServerSet;
class DvnPEServerSet;
class DvnUPEServerSet;
namespace DvnStored {
template <class Set>
struct Setting;
}
// lists and tool sets
class DvnListSet;
class DvnWListSet;
class DvnToolDefaultSet;
// programs
class DvnProgramSet;
class DvnPlatformSet;
class DvnWPlatformSet;
class DvnOPlatformSet;
class DvnXPlatformSet;
// processes, activities, sources, sinks, connectors, annotations
class DvnProcessSet;
class DvnGraphAttrSet;
class DvnActivitySet;
// nodes, queue managers, program execution agents
class DvnNodeSet;
class DvnQueueManagerSet;
class DvnPEASet;

class DvnConvCoreDbFe {
public:
    // Result levels, as the stores have them.
    enum Level { LevelOk = 0, LevelWarning = 4, LevelError = 8, LevelFatal = 12 };

    // data null: core data of the object's own, deleted with it; otherwise
    // the caller's, never deleted.
    DvnConvCoreDbFe(CDatabase* db, DvnfTRXData* data);
    virtual ~DvnConvCoreDbFe();
    DvnConvCoreDbFe(const DvnConvCoreDbFe&) = delete;
    DvnConvCoreDbFe& operator=(const DvnConvCoreDbFe&) = delete;

    // Put in front of every table name; the facade sets it before any load.
    void SetTablePrefix(CString prefix) { m_strTablePrefix = prefix; }
    CString GetTablePrefix() { return m_strTablePrefix; }
    DvnfTRXData* CoreData() const { return m_pCoreData; }

    // The entity state of a row mark (CHECKED_OUT): 1 and 3 changed, 2 and 5
    // new, 4 deleted (a tombstone), anything else unchanged.
    static DvnfObject::State_t GetState(int rowMark);

    // The stored forms undone, into the attribute group given.
    // "Red", "Green", "Blue" from the nine digits RRRGGGBBB.
    void GetColor(long value, DvnfAttributeData target);
    // "Name"; "Size" unless -1; "Style" when 1 or 2; "Descriptor" unless empty.
    void GetFontSetting(CString const& name, long size, long style, CString const& descriptor,
                        DvnfAttributeData target);
    // "Type" 0 (none), 1 (unlimited) or 2 with "Seconds".
    void GetTimePeriod(long value, DvnfAttributeData target);
    // "AnyTime", "Every", "On", "AtHours", "AtMinutes" from the stored text.
    void GetTimeEvent(CString& text, DvnfAttributeData target);

    // ---- process categories (processmodel/category.cpp)
    // Every category (id empty) or the one of that key.
    void Categories(DvnString const& id);
    // Fills a category that the core model holds by key; 0 also when no live
    // row has that key (the entity stays as it is), 8 on a database failure.
    int CategoryToCore(DvnfEntity& category);

    // ---- data structures (processmodel/datastructure.cpp)
    void DataStructures(DvnString const& id);
    // Fills a structure that the core model holds as a skeleton, by name when
    // it has a name and no state, otherwise by key; 8 when no live row is found.
    int DsToCore(DvnfEntity& structure);

    // ---- topology (topology/domain.cpp, systemgroup.cpp, system.cpp): every
    // object of the kind (id empty) or the one of that key, with its settings.
    void DvDomains(DvnString const& id);
    void SystemGroups(DvnString const& id);
    void Systems(DvnString const& id);
    // ---- lists (staff/lists.cpp) and tool sets (topology/toolset.cpp)
    // The lists of all four kinds (id empty), or the list of that key in
    // whichever table holds it; the not-found messages of all four only
    // when none does.
    void Lists(DvnString const& id);
    void WorkList(DvnString const& id);
    // kind 0 activity instance, 1 process instance, 2 process template lists.
    void OtherLists(int kind, DvnString const& id);
    // The columns all four tables share, into "Description" and "ListCommon".
    void GetListSettings(DvnListSet* row, DvnfEntity& list);
    // Every tool set (name empty) or the one of that name; each with a new key.
    void ToolSet(DvnString const& name);
    // ---- programs (staff/program.cpp)
    // Every program (id empty) or the one of that key, with its platform
    // groups and services.
    void Programs(DvnString const& id);
    // Fills a program that the core model holds as a skeleton, by name when
    // it has a name and no state, otherwise by key; 8 when no live row is found.
    int ProgramToCore(DvnfEntity& program);

    // ---- the server of a program activity (topology/server.cpp)
    // Fills a program execution server or a user one: a skeleton with a name
    // and no state by its dotted name (server.system[.group]; a name of one
    // level is left as it is, with 0), otherwise by key. It takes "Type" 7 or
    // 8, the columns of its row, and state 3; its name stays. 51184 and 8
    // when the name finds no live server, 8 when no live row has the key.
    int PeUnitToCore(DvnfEntity& server);
    // The key of a system group: by name, or with no name the profile's
    // "SystemGroup" ("SYS_GRP" when it has none), else the default group.
    CString SystemGroupKey(DvnString const& name);

    // ---- staff (staff/*.cpp): every object (id empty) or the one of that
    // key; a link is made only to a row that exists, and the rows of a
    // relation come in the order of their key. Levels and Persons trace a
    // database exception and end there.
    void Levels(DvnString const& id);
    void Persons(DvnString const& id);
    void Roles(DvnString const& id);
    void Orgs(DvnString const& id);

    // ---- processes (processmodel/process.cpp, activity.cpp, flow.cpp,
    // annotations.cpp). Every process (pid empty) or the one of that key,
    // whole, each under a lock of its own that is released after its load.
    void Processes(DvnString const& pid);
    // The process of that name, whole but for the inside of its blocks, in
    // state 3, without a lock; DvnfEntity::undefined when there is none.
    // A second call reads it again without doubling what it holds.
    DvnfEntity& ProcessByName(const char* name);
    // The long attributes of a process: its PROCESS columns and its
    // PROCESS_TOPOL_ATTR row; 8 when that row is missing or the read fails.
    int ProcessAttributes(DvnfAttributeData attributes, DvnfEntity* process, DvnProcessSet& row);
    // "InputContainer" and "OutputContainer"; 8 on a database failure.
    int ProcessContainers(DvnfAttributeData attributes, DvnfEntity* process, CString const& pid);
    // The long attributes of an activity, by its kind; 0.
    int ActivityAttributes(DvnfAttributeData attributes, DvnfEntity* activity, DvnActivitySet* row);
    // The container values of an activity; a database failure is reported.
    void ActivityContainers(DvnfAttributeData attributes, DvnfEntity* activity, CString const& aid);
    // The mappings of a data connector; 8 on a database failure.
    int DataMapping(DvnfEntity* connector, CString const& dcid);
    // The inside of a block activity (its window and its diagram); blocks
    // found inside are appended to blocks when withBlocks and blocks is
    // given. Also the editor's load of one block.
    void BlockActivity(DvnfAttributeData& attributes, DvnfEntity* activity, CString const& aid, CString const& pid,
                       bool withAttributes, bool withBlocks, std::vector<DvnfEntity*>* blocks);

    // ---- topology sections of an export
    void PeAgent(DvnString const& id);
    void Nodes(DvnString const& id);
    void QueueManager(DvnString const& id);
    // The servers of one kind, by the export group of the kind (21 to 26,
    // 30, 32); a group of no server kind reads nothing.
    void Servers(int group, DvnString const& id);
    // Every kind, in the order of ServerKinds.
    void Servers(DvnString const& id);
    // The server kinds: export group, the kind number the loads pass on,
    // the table and the TRX kind name; in the order in which all are read.
    struct ServerKindRow {
        int group;
        int kind;
        const char* table;
        const char* typeName;
    };
    static const ServerKindRow ServerKinds[8];
    // The connection the loads read through.
    CDatabase* Database() const { return m_pDatabase; }

    // ---- deep export (with the reader, src/dvnbdbrd): what the processes,
    // categories, programs and structures read so far refer to.
    void DeepProcesses();

protected:
    // ================================================================ frame
    // What a load of a whole kind needs to know of its table: the read of a
    // table, the "already loaded" test, the messages and the entity from the
    // row. Set is the recordset class; its key and name come through the two
    // functions (a key need not be a text column).
    template <class Set>
    struct Kind {
        const char* typeName;    // entity type, "Category"
        const char* table;       // "CATEGORY", without prefix
        const char* keyColumn;   // "CATID"
        const char* plural;      // in the count trace: "Number of Categories found:"
        long progress;           // message for each row, the name as argument
        long notFound;           // message when a key was asked for and no row came
        bool lookFirst;          // pass over a row whose object is loaded already
        CString (*key)(const Set& row);
        CString (*name)(const Set& row);
        // Sets the state and the attributes of the entity made from the row.
        int (DvnConvCoreDbFe::*fill)(Set& row, DvnfEntity& entity);
        bool quoteKey = true;    // the key is compared as a text literal
    };

    // Every row of the kind (id empty) or the row of that key, each made an
    // entity of the core data and filled. A database exception goes up.
    // The number of rows; reportNotFound false leaves the not-found message
    // to the caller.
    template <class Set>
    long LoadKind(const Kind<Set>& kind, const DvnString& id, bool reportNotFound = true);

    // Opens rs read-only on the statement and calls onRow for each row; the
    // number of rows. A database exception goes up (rs closes itself).
    template <class Set, class OnRow>
    long ReadRows(Set& rs, const CString& statement, OnRow onRow);
    // The rows of an open recordset, from its first, each given to onRow;
    // the recordset stays open.
    template <class Set, class OnRow>
    static void EachRow(Set& rs, OnRow onRow) {
        if (rs.IsBOF()) return;  // no rows (wherever a walk before left it)
        for (rs.MoveFirst(); !rs.IsEOF(); rs.MoveNext()) onRow(rs);
    }

    // "SELECT * FROM " + prefix + table, and " WHERE [KEY] ='key'" when a key
    // is given (without quotes when quoted is false).
    CString SelectFrom(const char* table, const char* keyColumn = nullptr, const CString& key = CString(),
                       bool quoted = true) const;
    CString Table(const char* table) const { return m_strTablePrefix + table; }
    // The live row (no tombstone) whose column equals the literal, which the
    // caller quotes: "SELECT * FROM " + prefix + table + " WHERE [COLUMN] = "
    // + literal + " AND CHECKED_OUT <> 4".
    CString SelectLive(const char* table, const char* column, const CString& literal) const;
    // A key or name as an SQL string literal, a quote inside doubled.
    static CString Literal(const DvnString& text) { return ReturnQuotedString(text, "'", "'").c_str(); }

    // True when the core data holds the entity of that key in a state above
    // 1: it was loaded in this run, and the row is passed over.
    bool AlreadyLoaded(const char* typeName, const CString& key);

    // Sets the entity's state from the row mark when the entity is valid.
    // False for a tombstone: the row ends there and the entity stays bare.
    bool TakeState(DvnfEntity& entity, int rowMark);
    // For an entity without a row mark of its own (activities, sources,
    // sinks, connectors, containers): the state of the process or block that
    // holds it, when the entity is valid.
    void TakeParentState(DvnfEntity& entity, const DvnfEntity& parent);

    // The null rule: a column is copied only when it is not NULL.
    void CopyText(const CRecordset& row, const CString& member, DvnfAttributeData target);
    void CopyLong(const CRecordset& row, const long& member, DvnfAttributeData target);
    void CopyLong(const CRecordset& row, const int& member, DvnfAttributeData target);
    // "Description" and "Documentation", each unless NULL.
    void CopyTexts(const CRecordset& row, const CString& description, const CString& documentation,
                   DvnfAttributeData target);
    // A flag column: true when not 0, nothing when NULL.
    void CopyFlag(const CRecordset& row, const long& member, DvnfAttributeData target);
    void CopyFlag(const CRecordset& row, const int& member, DvnfAttributeData target);

    // A reference column as a link: by key, or by name where the column holds
    // a name; the target need not exist yet (a skeleton stands for it). A
    // NULL or empty column makes no link. True when a link was made.
    bool LinkByOID(DvnfEntity& entity, const char* linkName, const char* targetType, const CRecordset& row,
                   const CString& member);
    bool LinkByName(DvnfEntity& entity, const char* linkName, const char* targetType, const CRecordset& row,
                    const CString& member);

    // Messages to the handler of the core data.
    void Report(long number, const DvnString& a1 = DvnString(), const DvnString& a2 = DvnString(),
                const DvnString& a3 = DvnString(), const DvnString& a4 = DvnString(),
                const DvnString& a5 = DvnString(), const DvnString& a6 = DvnString(),
                const DvnString& a7 = DvnString());
    // A caught database exception, traced at level 1, category 2, as
    // context, return code, "Error: ", text, "State: ", origin (detail, when
    // given, after the context), and deleted.
    void TraceDbException(const char* context, CDBException* e, const char* detail = nullptr);
    // The same after message 51368 with the driver's text; gives 8.
    int ReportDbException(const char* context, CDBException* e, const char* detail = nullptr);

    // ================================================================ loads
    // ---- categories
    int Category(DvnCategorySet& row, DvnfEntity& category);
    static const Kind<DvnCategorySet> CategoryKind;

    // ---- data structures
    int DataStructure(DvnDataStructureSet& row, DvnfEntity& structure);
    // The members of a structure, in their stored order.
    void DataStructureMember(CString dsid, DvnfEntity* structure);
    void SubStructure(DvnDataStructureMbrSet& row, DvnfAttributeData member, DvnfEntity& object);
    static const Kind<DvnDataStructureSet> DataStructureKind;

    // ---- staff: roles, organizations, levels, persons (staff/*.cpp)
    int Role(DvnRoleSet& row, DvnfEntity& role);
    int Organization(DvnOrganizationSet& row, DvnfEntity& organization);
    int Level(DvnStaffLevelSet& row, DvnfEntity& level);
    int Person(DvnPersonSet& row, DvnfEntity& person);
    static const Kind<DvnRoleSet> RoleKind;
    static const Kind<DvnOrganizationSet> OrganizationKind;
    static const Kind<DvnStaffLevelSet> LevelKind;
    static const Kind<DvnPersonSet> PersonKind;
    // Whether table, read through Set, has a row whose column holds the key
    // (any mark). staff/staffload.h defines the two templates.
    template <class Set>
    bool RowExists(const char* table, const char* keyColumn, const CString& key);
    // The link by key when the target's row exists; a dangling key is left
    // out in silence. True when a link was made.
    template <class Set>
    bool LinkToRow(DvnfEntity& entity, const char* linkName, const char* targetType, const char* table,
                   const char* keyColumn, const CRecordset& row, const CString& member);
    // A link by key to each of the keys whose row exists in table, in the
    // order of the targets' names (the name column read through TargetSet).
    template <class TargetSet>
    void LinkEach(DvnfEntity& entity, const char* linkName, const char* targetType, const char* table,
                  const char* keyColumn, CString TargetSet::*name, const std::vector<CString>& keys);
    // The same for rows that hold their targets' keys and names themselves:
    // a link to each row the statement gives, read once through TargetSet.
    template <class TargetSet>
    void LinkEachRow(DvnfEntity& entity, const char* linkName, const char* targetType, const CString& statement,
                     CString TargetSet::*key, CString TargetSet::*name);
    // Links by key, sorted by name and then key (the pairs are sorted here).
    using NamesAndKeys = std::vector<std::pair<std::string, CString>>;
    void LinkInNameOrder(DvnfEntity& entity, const char* linkName, const char* targetType, NamesAndKeys& targets);
    // The values of one column of the rows that the statement gives, read
    // through Set, in the order the statement says.
    template <class Set>
    std::vector<CString> ColumnOf(const CString& statement, CString Set::*member);
    // ---- topology: domain, system groups, systems (topology/domain.cpp,
    // systemgroup.cpp, system.cpp) and their layered settings
    // (topology/settings.cpp). Each level gets its own columns only; nothing
    // comes down from the level above.
    int Domain(DvnDomainSet& row, DvnfEntity& domain);
    int SystemGroup(DvnSystemGroupSet& row, DvnfEntity& group);
    int System(DvnSystemSet& row, DvnfEntity& system);
    static const Kind<DvnDomainSet> DomainKind;
    static const Kind<DvnSystemGroupSet> SystemGroupKind;
    static const Kind<DvnSystemSet> SystemKind;
    // The settings of a level object: its own row (common) and its four
    // settings tables, open on the object's key.
    void GetTopologyDefaultSetting(DvnfEntity& entity, DvnTopologyCommonSet& common, DvnTopologySvrSet& svr,
                                   DvnTopologySvsSet& svs, DvnTopologyPrcSet& prc, DvnTopologyPrgSet& prg);
    // One common server row, by its SERVER_TYPE, with the kind's own columns.
    void GetServerDefaultSetting(DvnfEntity& entity, DvnTopologySvrSet& svr, DvnTopologySvsSet& svs);
    // Under "ServerCommon" of target; true when one column gave a value.
    bool GetServerCommonSetting(DvnfAttributeData target, DvnTopologySvrSet& svr);
    // target: "ServerDefault" of the entity.
    void GetExecutionServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs, DvnTopologySvrSet& svr);
    void GetSchedulingServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs, DvnTopologySvrSet& svr);
    void GetDistributionServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs,
                                             DvnTopologySvrSet& svr);
    void GetCleanupServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs, DvnTopologySvrSet& svr);
    void GetProgramExecutionServerDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs,
                                                 DvnTopologySvrSet& svr);
    // target: the entity's attributes.
    void GetPEADefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs);
    void GetProcessDefaultSetting(DvnfEntity* entity, DvnfAttributeData target, DvnTopologyPrcSet& prc);
    void GetProgramDefaultSetting(DvnfAttributeData target, DvnTopologyPrgSet& prg);
    void GetImportDefaultSetting(DvnfAttributeData target, DvnTopologyCommonSet& common);
    void GetOperationDefaultSetting(DvnfAttributeData target, DvnTopologyCommonSet& common);
    void GetSessionDefaultSetting(DvnfAttributeData target, DvnTopologyCommonSet& common);
    // The settings table of a family undone below target (paths beginning
    // with prefix, less dropped); true when a column was not null.
    template <class Set>
    bool GetSettings(const Set& row, const std::vector<DvnStored::Setting<Set>>& table, DvnfAttributeData target,
                     const std::string& prefix, const std::string& dropped);
    void GetKindDefaultSetting(DvnfAttributeData target, DvnTopologySvsSet& svs, DvnTopologySvrSet& svr,
                               const char* group);
    template <class PrcSet, class PrgSet, class SvsSet, class SvrSet>
    void LevelSettings(DvnfEntity& entity, DvnTopologyCommonSet& common, const char* tablePrefix,
                       const char* keyColumn, const CString& key);
    // A reference column as a link when the target's row is there (Set: the
    // target's recordset, whose NAME names a target known by key only).
    template <class Set>
    void LinkThroughRow(DvnfEntity& entity, const char* linkName, const char* targetType, const char* table,
                        const char* keyColumn, const CRecordset& row, const CString& member);
    // ---- lists and tool sets
    int ListRow(DvnListSet& row, DvnfEntity& list);
    int WorkListRow(DvnWListSet& row, DvnfEntity& list);
    int ToolSetRow(DvnToolDefaultSet& row, DvnfEntity& toolSet);
    static const Kind<DvnWListSet> WorkListKind;
    static const Kind<DvnListSet> OtherListKinds[3];
    static const Kind<DvnToolDefaultSet> ToolSetKind;
    // ---- programs
    int Program(DvnProgramSet& row, DvnfEntity& program);
    // One platform by its code (0 KRX, 1 HPUX, 2 NK2, 3 WIN95, 4 WINNT,
    // 5 TR880, 6 Solaris) into its group, read anew.
    void GetProgramSetting(DvnfAttributeData attributes, CString programId, long code);
    // The columns every platform table shares; false when the group is of
    // the external type, which has nothing further.
    bool GetGeneralSetting(DvnfAttributeData target, DvnPlatformSet* row, long platform);
    void GetNK2_Setting(DvnfAttributeData target, DvnOPlatformSet* row, long platform);
    void GetUNIX_Setting(DvnfAttributeData target, DvnXPlatformSet* row, long platform);
    void GetWIN_Setting(DvnfAttributeData target, DvnWPlatformSet* row, long platform);
    // "External" of the group from the service of that platform; true when
    // there is one.
    bool GetExternalServices(DvnfAttributeData target, CString const& programId, long platform);
    static const Kind<DvnProgramSet> ProgramKind;

    // ---- processes, activities, sources, sinks, connectors, annotations
    DvnfEntity& Process(DvnProcessSet& row, bool withAttributes, bool withBlocks, bool asUnchanged);
    // The window of a process or block: zoom, paper, what is shown.
    void Graphics(DvnGraphAttrSet& row, DvnfAttributeData target);
    // What one diagram holds, in the order that connectors need: sources and
    // sinks, activities, (blocks, by the caller), connectors, annotations.
    // blockId empty: the top of the process.
    void DiagramBefore(CString const& pid, CString const& blockId, DvnfEntity* parent, DvnfAttributeData& diagram,
                       bool withAttributes, bool withBlocks, std::vector<DvnfEntity*>* blocks);
    void DiagramAfter(CString const& pid, CString const& blockId, DvnfEntity* parent, DvnfAttributeData& diagram,
                      bool withAttributes);
    // The activities of a diagram (or, singleActivity, the one of key
    // parentKey), made in the order of their names, then filled.
    void Activities(CString const& parentKey, CString const& blockId, DvnfEntity* parent, DvnfAttributeData& diagram,
                    bool singleActivity, bool withAttributes, bool withBlocks, std::vector<DvnfEntity*>* blocks);
    void ActivityInitSetting(DvnfAttributeData attributes, DvnfEntity* activity, DvnActivitySet* row);
    void ActivitySetting(DvnfAttributeData attributes, DvnfEntity* activity, DvnActivitySet* row);
    // Both walk the activity's ACTIVITY_EXTENT rows, opened by the caller.
    void ActivityExtSetting(DvnfAttributeData attributes, DvnfEntity* activity, CString const& aid,
                            DvnActivityExtentSet& extent);
    void Done_by(DvnfEntity* activity, CString aid, DvnActivityExtentSet& extent);
    // The dotted path of blocks, outermost first, to the activity of that key.
    CString StarterPath(CString const& aid);
    void ProgramActivity(DvnfAttributeData& attributes, CString const& aid);
    void ProcessActivity(DvnfAttributeData& attributes, CString const& aid);
    void BundleActivity(DvnfAttributeData& attributes, DvnfEntity* activity, CString const& aid);
    // The row of an activity's kind table (read through Set), handed with the
    // implementation object "Implementation".as to fill(row, object).
    template <class Set, class Fill>
    void KindRow(DvnfAttributeData& attributes, const char* as, const char* table, CString const& aid, Fill fill);
    void GetSourceAndSink(CString const& pid, CString const& blockId, DvnfEntity* parent, DvnfAttributeData& diagram);
    void GetControlFlow(CString const& pid, CString const& blockId, DvnfEntity* parent, DvnfAttributeData& diagram);
    void GetDataFlow(CString const& pid, CString const& blockId, DvnfEntity* parent, DvnfAttributeData& diagram,
                     bool withMappings);
    void GetTextAnnotation(CString const& pid, CString const& blockId, DvnfEntity* parent,
                           DvnfAttributeData& diagram);
    // " AND [column] IS NULL" or " AND [column] = 'blockId'".
    static CString InBlock(const char* column, CString const& blockId);
    // The rows of a relation of one key (the text column member of Set) as
    // new elements of the set target, in the order of the texts.
    // "InputContainer" and "OutputContainer" of attributes from the rows of
    // table with INPUT_OR_OUTPUT 1 and 2, in the order of names and values.
    template <class Set>
    void ContainerValues(const char* table, const char* keyColumn, const CString& key, DvnfAttributeData attributes);
    template <class Set>
    void TextsInOrder(const char* table, const char* keyColumn, const CString& key, CString Set::*member,
                      DvnfAttributeData target);
    // ---- nodes, queue managers, program execution agents
    // (topology/node.cpp, queuemanager.cpp, agent.cpp)
    int Node(DvnNodeSet& row, DvnfEntity& node);
    int QueueManagerRow(DvnQueueManagerSet& row, DvnfEntity& queueManager);
    static const Kind<DvnNodeSet> NodeKind;
    static const Kind<DvnQueueManagerSet> QueueManagerKind;
    // An agent's own "PEADefault": a mode by its map undone, a maximum only
    // with its mode stored as 2.
    void GetPEADefaultSetting(DvnPEASet* row, DvnfAttributeData attributes);
    // A link by key to each live row of table whose column holds key, in
    // the order of the rows' NAME; a target known by key only takes its name.
    template <class Set>
    void LinkLiveRows(DvnfEntity& entity, const char* linkName, const char* targetType, const char* table,
                      const char* column, const CString& key, CString Set::*targetKey);

    // ---- servers (topology/server.cpp): every server of the kind (id
    // empty) or the one of that key, each named server.system.group, with
    // its "Type" and its own settings only (docs/topology.md, "Servers").
    void Server(CString table, int progressMessage, long type, DvnString const& id);
    void ExecutionServer(CString table, int progressMessage, long type, DvnString const& id);
    void SchedulingServer(CString table, int progressMessage, long type, DvnString const& id);
    void DistributionServer(CString table, int progressMessage, long type, DvnString const& id);
    void CleanupServer(CString table, int progressMessage, long type, DvnString const& id);
    void PEServers(CString table, int progressMessage, long type, DvnString const& id);
    void UPEServers(int progressMessage, long type, DvnString const& id);
    // Texts, links to the system and its group, the common settings.
    void ServerSetting(DvnfAttributeData attributes, long type, DvnServerSet& row, DvnfEntity& server);
    // The columns of a program execution server, and of a user defined one.
    void PEServer(DvnPEServerSet& row, DvnfEntity& server, long type);
    void UPEServer(DvnUPEServerSet& row, DvnfEntity& server, long type);
    // The rows of a server table (id empty: all), each made the entity
    // "Server" of its full name in the state of its mark; fill then runs on
    // every row that is not a tombstone. notFound 0: none is reported.
    template <class Set>
    void LoadServerRows(const char* table, long progress, long notFound, long type, DvnString const& id,
                        void (DvnConvCoreDbFe::*fill)(Set& row, DvnfEntity& server, long type));
    // Each kind's own columns below its group of "ServerDefault".
    void CommonServerColumns(DvnServerSet& row, DvnfEntity& server, long type);
    void CleanupServerColumns(DvnCleanupServerSet& row, DvnfEntity& server, long type);
    void DistributionServerColumns(DvnDistributionServerSet& row, DvnfEntity& server, long type);
    void ExecutionServerColumns(DvnExecutionServerSet& row, DvnfEntity& server, long type);
    void SchedulingServerColumns(DvnSchedulingServerSet& row, DvnfEntity& server, long type);
    void PEServerColumns(DvnPEServerSet& row, DvnfEntity& server, long type);
    void UPEServerColumns(DvnUPEServerSet& row, DvnfEntity& server, long type);

    DvnfTRXData* m_pCoreData;
    bool m_bCallerData;
    CDatabase* m_pDatabase;
    CString m_strTablePrefix;
};

// ------------------------------------------------------------ templates

template <class Set, class OnRow>
long DvnConvCoreDbFe::ReadRows(Set& rs, const CString& statement, OnRow onRow) {
    rs.Open(CRecordset::snapshot, statement, CRecordset::readOnly);
    long count = 0;
    EachRow(rs, [&](Set& row) {
        ++count;
        onRow(row);
    });
    rs.Close();
    return count;
}

template <class Set>
long DvnConvCoreDbFe::LoadKind(const Kind<Set>& kind, const DvnString& id, bool reportNotFound) {
    Set rs(m_pDatabase);
    const CString statement = id.IsNull() || id.str().empty()
                                  ? SelectFrom(kind.table)
                                  : SelectFrom(kind.table, kind.keyColumn, CString(id.c_str()), kind.quoteKey);
    const long count = ReadRows(rs, statement, [&](Set& row) {
        const CString key = kind.key(row);
        if (kind.lookFirst && AlreadyLoaded(kind.typeName, key)) return;
        const CString name = kind.name(row);
        Report(kind.progress, DvnString(name.c_str()));
        DvnfEntity& entity =
            m_pCoreData->CreateEntity(DvnfString(kind.typeName), DvnfString(key.c_str()), DvnfString(name.c_str()));
        (this->*kind.fill)(row, entity);
    });
    DVN_TRACE(3, 1, "Number of " << kind.plural << " found: " << count);
    if (reportNotFound && count == 0 && !id.IsNull() && !id.str().empty()) Report(kind.notFound, id);
    return count;
}
