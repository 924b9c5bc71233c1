// DvnConvCoreDbBe: the back end. It walks the entities of the core model and
// writes them to the tables, one recordset per table, one transaction per
// object. This header is the frame shared by every store; the stores
// themselves live in src/dvnbdbbe/processmodel, staff and topology, one file
// per family. The back end knows the core model and the recordsets, never the
// facade, the load or the authorization.
#pragma once

#include <cstdint>
#include <functional>
#include <set>
#include <string>
#include <unordered_map>
#include <vector>

#include "dvnfcorn.h"
#include "dvnkernn.h"
#include "odbcframe.h"

class DvnCategorySet;
class DvnDataStructureSet;
class DvnDataStructureMbrSet;
class DvnProcessSet;
class DvnActivitySet;
class DvnActivityExtentSet;
// staff: levels, persons, organizations, roles
class DvnStaffLevelSet;
class DvnPersonSet;
class DvnOrganizationSet;
class DvnRoleSet;
// topology: domain, system groups, systems and their layered settings
class DvnDomainSet;
class DvnSystemGroupSet;
class DvnSystemSet;
class DvnTopologyCommonSet;
class DvnTopologyPrcSet;
class DvnTopologyPrgSet;
class DvnTopologySvrSet;
class DvnTopologySvsSet;
class DvnDomainPrcSet;
class DvnDomainPrgSet;
class DvnDomainSvrSet;
class DvnDomainSvsSet;
class DvnSystemGroupPrcSet;
class DvnSystemGroupPrgSet;
class DvnSystemGroupSvrSet;
class DvnSystemGroupSvsSet;
class DvnSystemPrcSet;
class DvnSystemPrgSet;
class DvnSystemSvrSet;
class DvnSystemSvsSet;

class DvnGraphAttrSet;
class DvnProcessGraphAttrSet;
class DvnProcessTopolAttrSet;
// lists and tool sets
class DvnListSet;
class DvnWListSet;
class DvnToolDefaultSet;
class DvnToolIconSet;
// programs
class DvnProgramSet;
// nodes, queue managers, program execution agents
class DvnNodeSet;
class DvnQueueManagerSet;
class DvnPEASet;
class DvnPlatformSet;
class DvnWPlatformSet;
class DvnOPlatformSet;
class DvnXPlatformSet;
class DvnExternalService;
// servers
class DvnServerSet;
class DvnCleanupServerSet;
class DvnDistributionServerSet;
class DvnExecutionServerSet;
class DvnSchedulingServerSet;
class DvnPEServerSet;
class DvnUPEServerSet;
class DvnAdminServerSet;
namespace DvnStored {
template <class Set>
struct Setting;
}

// Keys of rows found by name (roles, persons, data structures, programs),
// kept while one process is saved: its activities name the same few again and
// again, and each is read once per process. A name not found is not kept, so
// that each miss is read, and reported, as without it. Outside a Span it keeps
// nothing.
class DvnKeysByName {
public:
    // The key of name in the table of set, read() when not kept.
    template <class Read>
    CString Find(CRecordset& set, const DvnString& name, Read read) {
        if (!m_on) return read();
        std::string key = set.GetDefaultSQL().str();
        key.append(1, '\0').append(name.c_str());
        if (auto it = m_keys.find(key); it != m_keys.end()) return it->second;
        CString found = read();
        if (!found.IsEmpty()) m_keys.emplace(std::move(key), found);
        return found;
    }
    // Keeps keys from its making to its end.
    class Span {
    public:
        explicit Span(DvnKeysByName& keys) : m_keys(keys) {
            m_keys.m_keys.clear();
            m_keys.m_on = true;
        }
        ~Span() {
            m_keys.m_keys.clear();
            m_keys.m_on = false;
        }
        Span(const Span&) = delete;
        Span& operator=(const Span&) = delete;

    private:
        DvnKeysByName& m_keys;
    };

private:
    std::unordered_map<std::string, CString> m_keys;
    bool m_on = false;
};

class DvnConvCoreDbBe {
public:
    // Result levels: the highest met wins.
    enum Level { LevelOk = 0, LevelWarning = 4, LevelError = 8, LevelFatal = 12 };

    // Entity states as the integer behind DvnfObject::State().
    enum EntityState {
        StateNone = 0,       // takes no part in a save
        StateDeleted = 1,    // remove the row
        StateNew = 2,        // no row yet
        StateUnchanged = 3,  // object and row agree
        StateChanged = 4,    // object and row differ
    };

    // Row marks in the column CHECKED_OUT.
    enum RowMark {
        MarkClean = 0,
        MarkChangedRead = 1,
        MarkNewEditor = 2,
        MarkChanged = 3,
        MarkTombstone = 4,
        MarkNew = 5,
        MarkFirstPassDone = 9,  // first pass inserted the row, second pass pending
    };

    // Import mode: core data of its own, rows matched by name.
    DvnConvCoreDbBe();
    // Editor mode: the caller's core data (never deleted), rows matched by
    // identifier.
    explicit DvnConvCoreDbBe(DvnfTRXData* data);
    virtual ~DvnConvCoreDbBe();
    DvnConvCoreDbBe(const DvnConvCoreDbBe&) = delete;
    DvnConvCoreDbBe& operator=(const DvnConvCoreDbBe&) = delete;

    // ---- options
    void SetOverwriteOption(bool overwrite) { m_bOverwrite = overwrite; }
    // true: rows are written clean (mark 0) and deletions are physical;
    // false: rows are marked 5 (new) or 3 (changed), deletions leave mark 4.
    void SetSourceOption(bool source) { m_nSourceMark = source ? MarkClean : MarkNew; }
    void SetCurrentUser(const DvnString& user) { m_strCurrentUser = user; }
    void SetTablePrefix(const CString& prefix) { m_strTablePrefix = prefix; }
    CString GetTablePrefix() const { return m_strTablePrefix; }
    DvnfTRXData* CoreData() const { return m_pCoreData; }
    bool Overwrite() const { return m_bOverwrite; }
    int32_t SourceMark() const { return m_nSourceMark; }

    // The reader that the parser asks for objects a file only names. The
    // facade builds it and keeps it alive for the operation; null: the parse
    // has no reader, and such objects stay as the file gives them.
    void SetReader(DvnfFrontendReader* reader) { m_pReader = reader; }

    // ---- parse: the TRX file into the core data; the parser's result as it
    // stands (above 2 is failure and is reported as 51301).
    int LoadTRX(const DvnString& file);

    // ---- the row of VERSION, written on an initial load when missing.
    int SaveVersion(CDatabase& db);

    // ---- the saves of an import, in the order the facade calls them.
    int SaveDomains(CDatabase& db, bool authorized);
    int SaveSystemGroups(CDatabase& db, bool authorized);
    int SaveNodes(CDatabase& db, bool authorized);
    int SaveQueueManagers(CDatabase& db, bool authorized);
    int SaveSystems(CDatabase& db, bool authorized);
    int SaveServers(CDatabase& db, bool authorized, const DvnString& system);
    int SaveCategories(CDatabase& db, bool authorized);
    int SaveLevels(CDatabase& db, bool authorized);
    int SavePeople(CDatabase& db, bool authorized);
    int SaveOrgs(CDatabase& db, bool authorized);
    int SaveActInstanceLists(CDatabase& db, bool authorized);
    int SavePrcInstanceLists(CDatabase& db, bool authorized);
    int SavePrcTemplateLists(CDatabase& db, bool authorized);
    int SaveWorkLists(CDatabase& db, bool authorized);
    int SaveRoles(CDatabase& db, bool authorized);
    int SavePeople2(CDatabase& db, bool authorized);
    int SavePEAs(CDatabase& db, bool authorized);
    int SaveDataStructures(CDatabase& db, bool authorized);
    int SavePrograms(CDatabase& db, bool authorized);
    int SaveProcesses(CDatabase& db, bool authorized, bool byIdentifier);
    int SaveToolSets(CDatabase& db, bool authorized);

    // ---- categories
    int SaveCategory(CDatabase& db, DvnfEntity& entity);
    int ReadCategoryAttributes(CDatabase& db, DvnfEntity& entity, DvnCategorySet& row, bool isNew);

    // ---- data structures: the row in a first pass (which a caller may also
    // run on one structure), the members in a second.
    int SaveDataStructure(CDatabase& db, DvnfEntity& entity);
    int SaveDataStructure2(CDatabase& db, DvnfEntity& entity);
    int ReadDataStructureAttributes(CDatabase& db, DvnfEntity& entity, const DvnfAttributeDataReader& attributes,
                                    DvnDataStructureSet& row, bool isNew);
    int SaveDataStructureMbr(CDatabase& db, const DvnfAttributeDataReader& member, const CString& key, long sequence);
    int ReadDataStructureMbrAttributes(CDatabase& db, const DvnfAttributeDataReader& member,
                                       DvnDataStructureMbrSet& row, const CString& key, long sequence);

    // ---- programs (staff/program.cpp): the row of PROGRAM, then its rows
    // per platform and its external services, written at once.
    // The platform rows and services of a written row (the row's first-pass
    // mark 9 ends here; an older row has its rows cleared and rewritten).
    int SaveProgram2(CDatabase& db, const DvnfAttributeDataReader& attributes, const CString& programId);
    int ReadProgramAttributes(CDatabase& db, DvnfEntity& entity, const DvnfAttributeDataReader& attributes,
                              DvnProgramSet& row, bool isNew);
    // One group ("WINNT", ...) into its table; 8 when it is not written.
    int SavePlatformSettings(CDatabase& db, const DvnfAttributeDataReader& group, const CString& programId,
                             const CString& table);
    int ReadPlatformSettings(CDatabase& db, const DvnfAttributeDataReader& group, DvnPlatformSet& row,
                             const CString& programId);
    int ReadOPlatformSettings(CDatabase& db, const DvnfAttributeDataReader& group, DvnOPlatformSet& row,
                              const CString& programId);
    int ReadWPlatformSettings(CDatabase& db, const DvnfAttributeDataReader& group, DvnWPlatformSet& row,
                              const CString& programId);
    int ReadXPlatformSettings(CDatabase& db, const DvnfAttributeDataReader& group, DvnXPlatformSet& row,
                              const CString& programId);
    // "External" of a group into EXTERNAL_SERVICE under its platform number.
    int SaveExternalServices(CDatabase& db, const DvnfAttributeDataReader& external, const CString& programId,
                             int platform);
    int ReadExternalServices(CDatabase& db, const DvnfAttributeDataReader& external, DvnExternalService& row,
                             const CString& programId, int platform);
    // All rows of the program in one table (one statement each).
    int DeletePlatformSettings(CDatabase& db, const CString& programId, const CString& table);
    int DeleteWPlatformSettings(CDatabase& db, const CString& programId, const CString& table);
    int DeleteXPlatformSettings(CDatabase& db, const CString& programId, const CString& table);
    int DeleteOPlatformSettings(CDatabase& db, const CString& programId);
    int DeleteExternalService(CDatabase& db, const CString& programId);

    // ==== processes: the row, its containers, its diagram of activities with
    // their attributes and staff assignment (processmodel/process.cpp,
    // activity.cpp, assignment.cpp, containers.cpp).
    //
    // One process, with its own transactions. In an import the process is
    // built beside the old one under the name "TEMP" + its key and takes
    // the old one's place only when it is complete; by identifier (the
    // editor) its row is changed in place.
    int SaveProcess(CDatabase& db, DvnfEntity& entity, bool byIdentifier);
    // The rows of PROCESS_GRAPH_ATTR and PROCESS_TOPOL_ATTR of the process.
    int SaveProcessGraphAttributes(CDatabase& db, DvnfEntity& entity, const CString& pid);
    int SaveProcessTopologyAttributes(CDatabase& db, DvnfEntity& entity, const CString& pid);
    // Key, name, structures, icon and mark of a positioned PROCESS row; 8
    // when not even the default structure exists.
    int ReadProcessInitAttributes(CDatabase& db, DvnfEntity& entity, DvnProcessSet& row, const CString& pid,
                                  int mark);
    // The activities of a diagram (each in a transaction of its own), then
    // what connects them; the second pass of its activities.
    int SaveDiagram(CDatabase& db, DvnfAttributeDataReader diagram, DvnfEntity& process, const CString& blockAid);
    int SaveDiagram2(CDatabase& db, DvnfAttributeDataReader diagram, DvnfEntity& process, const CString& blockAid);
    // First pass: the ACTIVITY row and its kind; second pass: extent,
    // assignment, containers, support tools (aid: the stored key).
    int SaveActivity(CDatabase& db, DvnfEntity& activity, DvnfEntity& process, const CString& blockAid);
    int SaveActivity2(CDatabase& db, DvnfEntity& activity, DvnfEntity& process, const CString& blockAid,
                      const CString& aid);
    int ReadActivityAttributes(CDatabase& db, DvnfEntity& activity, DvnActivitySet& row);
    // Fills the ACTIVITY columns; gives "Implementation"."Type". level
    // becomes at least 4 on a warning.
    long ReadActivityInitAttributes(CDatabase& db, DvnfEntity& activity, DvnActivitySet& row, const CString& pid,
                                    const CString& blockAid, int& level);
    // Fills the ACTIVITY_EXTENT columns and rewrites the assignment rows.
    int ReadActivityExtentAttributes(CDatabase& db, DvnfEntity& activity, DvnActivityExtentSet& row,
                                     const CString& pid, const CString& blockAid, const CString& aid);
    // Stored forms of a duration (seconds, 32 bits) and of a time event.
    long SetTimeInterval(const DvnfAttributeDataReader& duration);
    CString SetTimeEvent(const DvnfAttributeDataReader& event);
    // One assignment row unless it exists (0, or 8 on a failure) ...
    int SaveActByPerson(CDatabase& db, const CString& personId, const CString& aid);
    int SaveActByPersonFromCont(CDatabase& db, const CString& member, const CString& aid);
    int SaveActByRole(CDatabase& db, const CString& roleId, const CString& aid);
    int SaveActByRoleFromCont(CDatabase& db, const CString& member, const CString& aid);
    int SaveActSupportTools(CDatabase& db, const CString& programId, const CString& aid);
    // ... and all rows of the activity in one table.
    int DeleteActByPerson(CDatabase& db, const CString& aid);
    int DeleteActByPersonFromCont(CDatabase& db, const CString& aid);
    int DeleteActByRole(CDatabase& db, const CString& aid);
    int DeleteActByRoleFromCont(CDatabase& db, const CString& aid);
    int DeleteActSupportTools(CDatabase& db, const CString& aid);
    // Initial container values: only members with a value, cut to 32672.
    int ReadActivityContainers(CDatabase& db, const DvnfAttributeDataReader& attributes, const CString& aid);
    int SaveActContainer(CDatabase& db, const CString& aid, int inputOrOutput, const CString& name,
                         const CString& value);
    int DeleteActContainer(CDatabase& db, const CString& aid);
    // Also ends the first-pass mark 9 of a new PROCESS row.
    int SaveProcessContainer(CDatabase& db, DvnfEntity& process);
    int WritePrcContainer(CDatabase& db, const CString& pid, int inputOrOutput, const CString& name,
                          const CString& value);
    int DeleteProcessContainer(CDatabase& db, const CString& pid);

    // ==== what connects the activities of a diagram (processmodel/flow.cpp)
    // and its text annotations (processmodel/annotations.cpp). blockAid is
    // empty at the top of a process. Each returns a level.
    int SaveSource(CDatabase& db, DvnfEntity& source, DvnfEntity& process, const CString& blockAid);
    int SaveSink(CDatabase& db, DvnfEntity& sink, DvnfEntity& process, const CString& blockAid);
    int SaveControlConnector(CDatabase& db, DvnfEntity& connector, DvnfEntity& process, const CString& blockAid);
    int SaveDataConnector(CDatabase& db, DvnfEntity& connector, DvnfEntity& process, const CString& blockAid);
    // The key of the activity of that name in the diagram: from the keys the
    // diagram's connectors or second pass are saved with (read at the first
    // key asked, after the first pass, where no activity row of the diagram
    // changes any more), else from the database.
    CString DiagramAID(CDatabase& db, const CString& name, const CString& pid, const CString& blockAid);
    // One bend point ("Xpos", "Ypos") or mapping ("From", "To") unless its
    // row is there; the deletes remove all of one connector.
    int SaveControlBendPoint(CDatabase& db, const DvnfAttributeDataReader& point, const CString& pid,
                             const CString& from, const CString& to, long sequence);
    int DeleteControlBendPoint(CDatabase& db, const CString& pid, const CString& from, const CString& to);
    int SaveDataBendPoint(CDatabase& db, const DvnfAttributeDataReader& point, const CString& dcid, long sequence);
    int DeleteDataBendPoint(CDatabase& db, const CString& dcid);
    int SaveDataMap(CDatabase& db, const DvnfAttributeDataReader& mapping, const CString& dcid);
    int DeleteDataMap(CDatabase& db, const CString& dcid);
    // The rows of TEXT_ANNOTATION of the diagram, rewritten from its set
    // "TextAnnotations".
    int SaveTextAnnotations(CDatabase& db, DvnfAttributeDataReader diagram, const CString& pid,
                            const CString& blockAid);

    // ==== topology: domain, system groups, systems and their layered
    // settings (topology/domain.cpp, systemgroup.cpp, system.cpp,
    // settings.cpp). top: the domain, where a setting the entity leaves
    // out gets its default; below it such a setting is null.
    int SaveSystemGroup(CDatabase& db, DvnfEntity& entity);
    int SaveSystemGrp2(CDatabase& db, DvnfEntity& entity);
    int ReadDomainAttributes(CDatabase& db, DvnfEntity& entity, DvnDomainSet& row, bool isNew);
    int ReadSystemGrpAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemGroupSet& row, bool isNew);
    int ReadSystemGrpAttr2(CDatabase& db, DvnfEntity& entity, DvnSystemGroupSet& row);
    int ReadSystemAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemSet& row, bool isNew);
    int ReadTopologyCommonAttributes(CDatabase& db, DvnfEntity& entity, DvnTopologyCommonSet& row, bool top);
    int ReadTopologyProcessAttributes(CDatabase& db, DvnfEntity& entity, DvnTopologyPrcSet& row, bool top);
    int ReadTopologyProgramAttributes(CDatabase& db, DvnfEntity& entity, DvnTopologyPrgSet& row, bool top);
    // kind: the SERVER_TYPE, 1 to 7.
    int ReadTopologySvrAttributes(CDatabase& db, DvnfEntity& entity, DvnTopologySvrSet& row, bool top, int kind);
    int ReadTopologySvsAttributes(CDatabase& db, DvnfEntity& entity, DvnTopologySvsSet& row, bool top);
    // One settings row of the level object with key id, found or added,
    // rewritten whole: 0 or the level of the reading, 8 on a failure.
    int SaveDomainPrcAttributes(CDatabase& db, DvnfEntity& entity, DvnDomainPrcSet& row, const CString& id);
    int SaveDomainPrgAttributes(CDatabase& db, DvnfEntity& entity, DvnDomainPrgSet& row, const CString& id);
    int SaveDomainSvsAttributes(CDatabase& db, DvnfEntity& entity, DvnDomainSvsSet& row, const CString& id);
    int SaveDomainSvrAttributes(CDatabase& db, DvnfEntity& entity, DvnDomainSvrSet& row, const CString& id,
                                int kind);
    int SaveSystemGrpPrcAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemGroupPrcSet& row, const CString& id);
    int SaveSystemGrpPrgAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemGroupPrgSet& row, const CString& id);
    int SaveSystemGrpSvsAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemGroupSvsSet& row, const CString& id);
    int SaveSystemGrpSvrAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemGroupSvrSet& row, const CString& id,
                                   int kind);
    int SaveSystemPrcAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemPrcSet& row, const CString& id);
    int SaveSystemPrgAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemPrgSet& row, const CString& id);
    int SaveSystemSvsAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemSvsSet& row, const CString& id);
    int SaveSystemSvrAttributes(CDatabase& db, DvnfEntity& entity, DvnSystemSvrSet& row, const CString& id,
                                int kind);

    // ==== activity kinds and process attributes (processmodel/activitykinds.cpp,
    // processattributes.cpp)
    //
    // The row of an activity's kind, under the activity's key (aid); entity:
    // the implementation ("AsProgram", "AsProcess", "AsBundle"); activity:
    // the activity's name, for the messages. A bundle's pattern activity is
    // stored inside the bundle.
    int SaveProgramActivity(CDatabase& db, DvnfEntity& program, const CString& aid, const DvnString& activity);
    int SaveProcessActivity(CDatabase& db, DvnfEntity& process, const CString& aid);
    int SaveBundleActivity(CDatabase& db, DvnfEntity& bundle, DvnfEntity& process, const CString& aid,
                           const DvnString& activity);
    // A block: its row in BLOCK_ACTIVITY (flag bit 0) and its inner diagram
    // (bit 2), which brackets its own transactions: the caller's transaction
    // is ended before and begun again after. SaveBlock2: the second pass of
    // the inner diagram.
    int SaveBlock(CDatabase& db, DvnfEntity& block, DvnfEntity& process, const CString& aid);
    int SaveBlock2(CDatabase& db, DvnfEntity& block, DvnfEntity& process, const CString& aid);
    // The columns of the process attributes in positioned rows: category,
    // staff, validity, prompt, return code, texts of PROCESS; the topology
    // row; the window settings that a process and a block share; colours and
    // fonts. 4 on a reference that is not found.
    int ReadProcessAttributes(CDatabase& db, DvnfEntity& entity, DvnProcessSet& row);
    int ReadProcessTopologyAttributes(CDatabase& db, DvnfEntity& entity, DvnProcessTopolAttrSet& row,
                                      const CString& pid);
    int ReadGraphAttributes(CDatabase& db, DvnfEntity& entity, DvnGraphAttrSet& row);
    int ReadProcessGraphAttributes(CDatabase& db, DvnfEntity& entity, DvnProcessGraphAttrSet& row,
                                   const CString& pid);
    // ==== lists (staff/lists.cpp) and tool sets (topology/toolset.cpp)
    //
    // One list of the three kinds that share their columns; table is the
    // bare name of its table (ACT_INSTANCE_LIST, PRC_INSTANCE_LIST or
    // PRC_TEMPLATE_LIST), which selects texts and messages. Another table: 8.
    int SaveList(CDatabase& db, DvnfEntity& entity, const CString& table);
    int SaveWorkList(CDatabase& db, DvnfEntity& entity);
    int ReadListAttributes(CDatabase& db, DvnfEntity& entity, DvnListSet& row, bool isNew);
    int ReadWorkListAttributes(CDatabase& db, DvnfEntity& entity, DvnWListSet& row, bool isNew);
    // One tool set: its row of defaults, then its icons.
    int SaveToolSet(CDatabase& db, DvnfEntity& entity);
    int ReadToolSetDefaultAttributes(CDatabase& db, DvnfEntity& entity, DvnToolDefaultSet& row);
    // One icon of a tool set for the kind of activity (1 process, 2 block,
    // 3 bundle, 4 info, 5 program), inserted or rewritten whatever the
    // overwrite option; 0, or 8 after the trace "Tool set icon not added".
    int SaveToolSetIcon(CDatabase& db, const DvnfString& toolSet, const CString& icon, int kind);
    int ReadToolSetIconAttributes(CDatabase& db, DvnToolIconSet& row, const CString& toolSet, const CString& icon,
                                  int kind);

protected:
    // The three levels of the layered settings.
    enum class TopologyLevel { Domain, SystemGroup, System };
    // All settings rows of a level object (process, program, specific
    // server, and one common server row per SERVER_TYPE): the highest level.
    int SaveTopologySettings(CDatabase& db, DvnfEntity& entity, const CString& key, TopologyLevel level);
    // Removes the settings rows of a system that was deleted for good.
    int DeleteTopologySettings(CDatabase& db, const CString& key, TopologyLevel level);
    // The frame of the twelve writers: find the row by key (and kind), edit
    // or add it, run read, update.
    template <class Set>
    int SaveSettingsRow(CDatabase& db, Set& row, const char* table, const char* keyColumn, CString Set::*key,
                        const CString& id, int kind, const char* notAdded, const char* failed,
                        const std::function<int()>& read);
    // A value outside what a setting knows: 51910 (object, setting, value), 4.
    int ReportUnknownSetting(DvnfEntity& entity, const std::string& setting, long value);
    // Whether the table (of one domain, one system group) holds a row of
    // another name: 4 after message (the name), unless to delete; else 0.
    int AnotherOfItsKind(CRecordset& row, const CString& rowName, const char* table, const DvnString& name,
                         bool toDelete, long message);
    // The reference tests before a system goes; 4 after the first refusal.
    int SystemInUse(CDatabase& db, DvnfEntity& entity, const CString& key);
public:

protected:
    // ---- the diagram's parts (processmodel/flow.cpp)
    // Texts and messages of one kind of part (a message 0: none, or the
    // trace beside it).
    struct DiagramPart {
        const char* table;         // bare table name
        const char* invalidTrace;  // "Source is not defined"
        long cannotAppend;         // 51312; 0: the trace notAdded
        const char* notAdded;      // "Control Connector not added"
        long exists;               // 51080; 0: the trace existsTrace
        const char* existsTrace;
        long deleted, added, updated;
    };
    static const DiagramPart SourcePart, SinkPart, ControlConnectorPart, DataConnectorPart;
    // How the shared state rule left an opened row of a part.
    enum class PartRow { Done, Insert, Update, Unchanged };
    // Opens the part's table by the filter and applies the state rule: Done
    // or Unchanged (the row closed, the result in level), or the row
    // positioned for writing (AddNew or Edit; with rewrite a found row is
    // deleted and added anew). beforeDelete runs before a row is deleted; a
    // level above 0 from it keeps the row.
    PartRow PositionPart(CRecordset& row, const CString& filter, DvnfEntity& part, DvnfEntity& process,
                         const DiagramPart& kind, const DvnString& label, bool rewrite,
                         const std::function<int()>& beforeDelete, int& level);
    // Update and close the positioned row; the added or updated message.
    int WritePart(CRecordset& row, DvnfEntity& part, const DiagramPart& kind, const DvnString& label);
    // A source or a sink: one algorithm over two tables.
    template <class Set>
    int SaveSourceOrSink(CDatabase& db, DvnfEntity& node, DvnfEntity& process, const CString& blockAid,
                         const DiagramPart& kind, const char* numberColumn, long Set::*number, CString Set::*key);
    // A row found by the filter is left alone (the trace existsTrace, 0);
    // else one row is added and filled (0, or 8 with the trace notAdded).
    template <class Set>
    int AddRowOnce(CDatabase& db, const char* table, const CString& filter, const char* existsTrace,
                   const char* notAdded, const std::function<void(Set&)>& fill);
    // "DELETE FROM" the table "WHERE" where: 0, or 8 after reporting.
    int DeleteRows(CDatabase& db, const char* table, const CString& where);

    // Removes the processes a broken import left under their temporary
    // name ("TEMP" + key); 0, or 8 after reporting the failure.
    int RemoveStrandedProcesses(CDatabase& db);
    // The key of a structure that a link names, "Default Data Structure"
    // (with the container attribute reset and 51102) when it is not found.
    // An activity stores the target's key when even that is not found; a
    // process (activity false) tries the key before the default and gives
    // an empty key when the default is missing too.
    CString StructureKey(CDatabase& db, DvnfEntity& entity, const char* link, const char* container, int& level,
                         bool activity);
    // A row of an assignment table unless it is there (the recordset of
    // that table; column: the second column).
    template <class Set>
    int SaveActRelation(CDatabase& db, const char* table, const char* column, CString Set::*member,
                        const CString& value, const CString& aid, const char* notAdded);
    int DeleteActRelation(CDatabase& db, const char* table, const CString& aid);
    // Walks "InputContainer" and "OutputContainer" of the attributes.
    int WalkContainers(const DvnfAttributeDataReader& attributes,
                       const std::function<int(int, const CString&, const CString&)>& write);
    // The frame of the kind rows: the row of table under the activity's key,
    // inserted or rewritten in place; fill sets the kind's columns and may
    // clear write to leave the row out. notAdded: the trace of a failure.
    template <class Set>
    int SaveKindRow(CDatabase& db, const char* table, const char* notAdded, const CString& aid,
                    const std::function<int(Set&, bool& write)>& fill);
    // The key of a program execution server from its dotted name, or empty
    // (51184 with the text and the activity's name when it is not found).
    CString ServerKey(CDatabase& db, const CString& text, const DvnString& activity);
    // The second pass of a bundle's pattern activity.
    int SavePatternActivity2(CDatabase& db, DvnfEntity& bundle, DvnfEntity& process, const CString& aid);
    DvnString m_savingProcess;                // its own name (the entity may carry "TEMP...")
public:

    // ---- link access for the Read<X>Attributes
    // The target of the first link of that name to that type; may be invalid.
    DvnfEntity& GetLink(const DvnfString& linkName, DvnfEntity& entity, const DvnfString& targetType);
    // The name of that target, or an empty text when the first link is not valid.
    CString GetLinkName(const DvnfString& linkName, DvnfEntity& entity, const DvnfString& targetType);

    // ---- frame operations
    // 2 and 4 become 3 on a valid entity; 0, 1 and 3 stay.
    void ResetState(DvnfEntity& entity);
    // Runs a statement that removes rows; 0, or 8 after reporting 51368.
    int DeleteObject(CDatabase& db, const CString& statement, const CString& table);
    // Profile key "System" (fallback "DVNSYS"), read once.
    DvnString DefaultSystem();
    // Profile key "SystemGroup" (fallback "SYS_GRP"), read once.
    DvnString DefaultSysGrp();

protected:
    // Which right gates a family, and how a refusal is reported.
    struct Right {
        long message;      // 51165, 51166 or 51167
        const char* trace; // "No process modeling authorization", ...
    };
    static const Right ModelingRight;
    static const Right StaffRight;
    static const Right TopologyRight;

    // The first pass of every Save<X>s: each valid entity of the type with a
    // state other than 0 is saved inside BeginTrans/CommitTrans (when
    // withTransaction); a missing right is reported once, at the first entity
    // with something to save, and gives 4. Returns the highest level.
    int SaveLoop(CDatabase& db, const char* typeName, bool authorized, const Right& right, const char* kind,
                 const std::function<int(DvnfEntity&)>& save, bool withTransaction = true);
    // The second pass: each valid entity with a state above 1, in a
    // transaction, without a further test of the right.
    int SecondPassLoop(CDatabase& db, const char* typeName, const std::function<int(DvnfEntity&)>& save2);

    // ---- families of one row each (familystore.h)
    // What a family states: table, key, messages, texts and its own steps.
    template <class Set>
    struct Family;
    // The save of one entity of such a family: find the row by name, then
    // insert, leave, refuse, delete or rewrite it under the options.
    template <class Set>
    int SaveSingleRow(CDatabase& db, DvnfEntity& entity, const Family<Set>& family);
    // The first pass of the family over its entities and, when it has one,
    // the second.
    template <class Set>
    int SaveFamily(CDatabase& db, bool authorized, const Family<Set>& family);
    // The descriptors, each in the file of its family.
    static const Family<DvnCategorySet> CategoryFamily;
    static const Family<DvnDataStructureSet> DataStructureFamily;
    // topology
    static const Family<DvnDomainSet> DomainFamily;
    static const Family<DvnSystemGroupSet> SystemGroupFamily;
    static const Family<DvnSystemSet> SystemFamily;
    // lists and tool sets
    static const Family<DvnListSet> ActInstanceListFamily;
    static const Family<DvnListSet> PrcInstanceListFamily;
    static const Family<DvnListSet> PrcTemplateListFamily;
    static const Family<DvnWListSet> WorkListFamily;
    static const Family<DvnToolDefaultSet> ToolSetFamily;
    // The icons of a written tool set, and those of one deleted for good.
    int SaveToolSetIcons(CDatabase& db, DvnfEntity& entity);
    int DeleteToolSetIcons(CDatabase& db, const CString& toolSet);
    // programs
    static const Family<DvnProgramSet> ProgramFamily;
    // The refusal before a program is deleted: 0, or 4 after 51243 when an
    // activity runs it or has it as a support tool.
    int ProgramInUse(CDatabase& db, DvnfEntity& entity, const CString& key);
    // Every platform row and service of the program.
    int DeleteProgramRows(CDatabase& db, const CString& programId);
    // nodes, queue managers, program execution agents (topology/node.cpp,
    // queuemanager.cpp, agent.cpp; docs/topology.md tells the rules)
    static const Family<DvnNodeSet> NodeFamily;
    static const Family<DvnQueueManagerSet> QueueManagerFamily;
    static const Family<DvnPEASet> AgentFamily;
    // isDefault: the object the loop makes; a row of its name is left alone
    // in silence, and the progress line comes only with an insert.
    int SaveNode(CDatabase& db, DvnfEntity& entity, bool isDefault);
    int SaveQueueManager(CDatabase& db, DvnfEntity& entity, bool isDefault);
    int ReadNodeAttributes(CDatabase& db, DvnfEntity& entity, DvnNodeSet& row, bool isNew);
    // 8 after 51090 when another definition has the queue manager name.
    int ReadQueueManagerAttributes(CDatabase& db, DvnfEntity& entity, DvnQueueManagerSet& row, bool isNew);
    int ReadPEAAttributes(CDatabase& db, DvnfEntity& entity, DvnPEASet& row, bool isNew);
    // The default object of a kind made in the core data (state 3) and
    // saved in a transaction of its own by save.
    int SaveDefaultObject(CDatabase& db, const char* typeName, const char* name,
                          int (DvnConvCoreDbBe::*save)(CDatabase&, DvnfEntity&, bool));
    // The agent's person: the row of PE_AGENT it finds, the name reported.
    int LocateAgent(CDatabase& db, DvnfEntity& entity, bool toDelete, DvnString& name, CString& filter);

    // The message handler of the core data; unused arguments stay null.
    void Report(long number, const DvnString& a1 = DvnString(), const DvnString& a2 = DvnString(),
                const DvnString& a3 = DvnString(), const DvnString& a4 = DvnString(),
                const DvnString& a5 = DvnString(), const DvnString& a6 = DvnString(),
                const DvnString& a7 = DvnString());
    // The one way of dealing with a database exception: 51368 with the
    // exception's text, the trace "Exception <action> table <table>: rc =...",
    // the exception freed, the recordset closed when it is open. Gives 8.
    int ReportDbException(CDBException* e, const char* action, const char* table, CRecordset* rs = nullptr);
    // An icon name into its column: at most 8 characters; a longer one is
    // 51118 with the text, null, and 4. Not defined: the column is not touched.
    int StoreIcon(CRecordset& row, CString& member, const DvnfAttributeDataReader& icon);
    // Prefix + bare table name.
    CString Table(const char* bareName) const { return m_strTablePrefix + bareName; }
    // The mark of a row that a save updates (families without a second
    // pass): 3 for a row marked 0 or 3 in a marking run, else the source mark.
    int MarkForUpdate(int current) const;
    // The key and mark of a row of a family without a second pass: a new row
    // gets a fresh key, the source mark and no holder; a row found gets
    // MarkForUpdate.
    template <class Set>
    void StampRow(Set& row, CString Set::*key, bool isNew) const {
        if (isNew) {
            row.*key = DvnfObject::CreateOID().c_str();
            row.m_CHECKED_OUT = m_nSourceMark;
            row.SetFieldNull(&row.m_CHECKED_OUT_BY);
        } else {
            row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
        }
    }
    // The mark of a row that a first pass inserts: 9 in a family with a
    // second pass, which then sets the source mark; else the source mark.
    int MarkForInsert(bool withSecondPass) const { return withSecondPass ? MarkFirstPassDone : m_nSourceMark; }
    // The second pass at its row: a row marked 9 (inserted by this run's
    // first pass) takes the source mark and is written; any other row was
    // there before this run and is written only with overwrite on. False:
    // leave the row alone, level 0.
    bool SecondPassMayWrite(int& checkedOut) const;

    // The reference test before a category is deleted: 0, or 4 after 51242
    // with the first process that names it. A database exception goes up.
    int CategoryInUse(CDatabase& db, DvnfEntity& entity, const CString& key);
    // The reference test before a structure is deleted: 0, or 4 after the
    // message of the first user found. A structure that holds a member of
    // this type and is itself to be deleted is deleted at once. A database
    // exception goes up to the caller.
    int DataStructureInUse(CDatabase& db, DvnfEntity& entity, const CString& key);

    // Stores not yet there: one save per entity that reports it as not
    // storable. Each is replaced by the real store of its kind.
    int SaveDomain(CDatabase& db, DvnfEntity& entity);
    int SaveNode(CDatabase& db, DvnfEntity& entity);
    int SaveQueueManager(CDatabase& db, DvnfEntity& entity);
    int SaveSystem(CDatabase& db, DvnfEntity& entity);
    int SaveServer(CDatabase& db, DvnfEntity& entity, const DvnString& system);
    int SaveLevel(CDatabase& db, DvnfEntity& entity);
    int SavePerson(CDatabase& db, DvnfEntity& entity);
    int SaveOrganization(CDatabase& db, DvnfEntity& entity);
    int SaveRole(CDatabase& db, DvnfEntity& entity);
    int SavePEA(CDatabase& db, DvnfEntity& entity);
    int SaveProgram(CDatabase& db, DvnfEntity& entity);

    // ==== staff: levels, persons, organizations, roles (staff/*.cpp;
    // docs/staff.md tells the rules).
    static const Family<DvnStaffLevelSet> LevelFamily;
    static const Family<DvnPersonSet> PersonFamily;
    static const Family<DvnOrganizationSet> OrganizationFamily;
    static const Family<DvnRoleSet> RoleFamily;
    int ReadLevelAttributes(CDatabase& db, DvnfEntity& entity, DvnStaffLevelSet& row, bool isNew);
    // Persons: the row (system, group, level, password, flags) in a first
    // pass, what names other objects in a second.
    int ReadPersonAttributes(CDatabase& db, DvnfEntity& entity, DvnPersonSet& row, bool isNew);
    int SavePerson2(CDatabase& db, DvnfEntity& entity);
    int ReadPersonAttr2(CDatabase& db, DvnfEntity& entity, DvnPersonSet& row);
    // Work-list and category authorizations, replaced whole. A database
    // exception of a lookup goes up.
    int WritePersonRelations(CDatabase& db, DvnfEntity& entity, const CString& personId, const DvnString& userId);
    // 0, or 4 after 51187/51189: a server of the person's group has its name.
    int PersonNameIsServer(CDatabase& db, DvnfEntity& entity);
    // 0, or 4 after the message of the first thing that still names the
    // person; on a physical deletion the person's relation rows then go.
    int PersonInUse(CDatabase& db, DvnfEntity& entity, const CString& key);
    // Organizations: children first, then the references.
    int ReadOrganizationAttributes(CDatabase& db, DvnfEntity& entity, DvnOrganizationSet& row, bool isNew);
    int SaveOrg2(CDatabase& db, DvnfEntity& entity);
    int OrganizationInUse(CDatabase& db, DvnfEntity& entity, const CString& key);
    // Its persons lose the organization; a failure is reported and passed.
    void FreeMembers(CDatabase& db, const CString& key);
    // Roles: the memberships are cleared by SaveRole2 after every write and
    // come back from the persons' side.
    int ReadRoleAttributes(CDatabase& db, DvnfEntity& entity, DvnRoleSet& row, bool isNew);
    int SaveRole2(CDatabase& db, DvnfEntity& entity);
    int RoleInUse(CDatabase& db, DvnfEntity& entity, const CString& key);
    int SavePersonHasRole(CDatabase& db, DvnPersonSet& row, const CString& personId, DvnfEntity& entity);
    bool HasRoleSystemAdmin(CDatabase& db, const CString& roleId);
    // A relation row unless it is there: 0, or 8 when it cannot be added.
    int SaveRoleInclPerson(CDatabase& db, const CString& roleId, const CString& personId);
    int SavePersPersAuth(CDatabase& db, const CString& otherPersonId, const CString& personId);
    int SavePersPrcAuth(CDatabase& db, const CString& categoryId, const CString& personId);
    int SavePersPadmAuth(CDatabase& db, const CString& categoryId, const CString& personId);
    // All rows of the person in one table, one statement: 0, or 8.
    int DeletePersPersAuth(CDatabase& db, const CString& personId);
    int DeletePersPrcAuth(CDatabase& db, const CString& personId);
    int DeletePersPadmAuth(CDatabase& db, const CString& personId);
    int DeletePersInRole(CDatabase& db, const CString& personId);
    // The rows of table whose column holds value go, one statement.
    int DeleteStaffRows(CDatabase& db, const char* table, const char* column, const CString& value);
    // Whether any person of this run names the role by a "PersonHasRole" link.
    bool RoleNamedByRun(const DvnString& roleName);

    // ==== servers (topology/server.cpp, serverkinds.cpp; docs/topology.md,
    // "Servers"). A server entity names its kind by "Type" (1 cleanup, 2
    // distribution, 3 execution, 4 gateway, 5 modeling, 6 scheduling, 7
    // program execution, 8 user defined program execution); its name is the
    // full name server.system.group, and its row is found by the server's
    // own name (cut to 8) within its system.
public:
    int SaveCleanupServer(CDatabase& db, DvnfEntity& entity);
    int SaveDistributionServer(CDatabase& db, DvnfEntity& entity);
    int SaveExecutionServer(CDatabase& db, DvnfEntity& entity);
    int SaveGatewayServer(CDatabase& db, DvnfEntity& entity);
    int SaveModelingServer(CDatabase& db, DvnfEntity& entity);
    int SaveSchedulingServer(CDatabase& db, DvnfEntity& entity);
    int SavePEServer(CDatabase& db, DvnfEntity& entity);
    int SaveUPEServer(CDatabase& db, DvnfEntity& entity);
    // Reached by a direct call only: no "Type" leads to it.
    int SaveAdminServer(CDatabase& db, DvnfEntity& entity);
    // The key of the server's system: the link "ServerIsInSystem", else the
    // system part of its full name (51103 and rc 4 when not found), else the
    // profile's system, else the first; rc 8 when there is none.
    CString GetServerSystem(CDatabase& db, DvnfEntity& entity, int& rc);
    // The key of the group of the link "ServerIsInSystemGroup" (51104 and rc
    // 4 when not found), else the profile's group, else the first; rc 8.
    CString GetServerSystemGrp(CDatabase& db, DvnfEntity& entity, int& rc);
    // The columns of a server row: name, key, mark, texts and the common
    // settings (ReadServerAttributes), then each kind's own.
    int ReadServerAttributes(CDatabase& db, DvnfEntity& entity, DvnServerSet& row, bool isNew);
    int ReadCleanupServerAttributes(CDatabase& db, DvnfEntity& entity, DvnCleanupServerSet& row);
    int ReadDistributionServerAttributes(CDatabase& db, DvnfEntity& entity, DvnDistributionServerSet& row);
    int ReadExecutionServerAttributes(CDatabase& db, DvnfEntity& entity, DvnExecutionServerSet& row);
    int ReadSchedulingServerAttributes(CDatabase& db, DvnfEntity& entity, DvnSchedulingServerSet& row);
    int ReadPEServerAttributes(CDatabase& db, DvnfEntity& entity, DvnPEServerSet& row);
    int ReadUPEServerAttributes(CDatabase& db, DvnfEntity& entity, DvnUPEServerSet& row, bool isNew);
    int ReadAdminServerAttributes(CDatabase& db, DvnfEntity& entity, DvnAdminServerSet& row, bool isNew);
    // Hooks the server families share: the system found before the row (8
    // after the kind's cannot-append message when there is none), and the
    // filter within it.
    int ServerSystemBeforeRow(CDatabase& db, DvnfEntity& entity, const DvnString& name);
    CString ServerFilter(const DvnString& name, bool bySystemOnly) const;

protected:
    static const Family<DvnCleanupServerSet> CleanupServerFamily;
    static const Family<DvnDistributionServerSet> DistributionServerFamily;
    static const Family<DvnExecutionServerSet> ExecutionServerFamily;
    static const Family<DvnServerSet> GatewayServerFamily;
    static const Family<DvnServerSet> ModelingServerFamily;
    static const Family<DvnSchedulingServerSet> SchedulingServerFamily;
    static const Family<DvnPEServerSet> PEServerFamily;
    static const Family<DvnUPEServerSet> UPEServerFamily;
    static const Family<DvnAdminServerSet> AdminServerFamily;
    // One server through its family: the system found before the row counts
    // in the level.
    template <class Set>
    int SaveServerRow(CDatabase& db, DvnfEntity& entity, const Family<Set>& family);
    template <class Set>
    void ReadServerIdentity(DvnfEntity& entity, Set& row, CString Set::*key, bool isNew);
    // Before an insert: one cleanup or scheduling server per system group
    // (the table's), no program execution server of a user defined one's
    // name in the system and the other way round, no person of the group of
    // the name. 0, or 4 after the message.
    int OneServerOfKindInGroup(CDatabase& db, DvnfEntity& entity, const char* table, long message);
    int ServerNameIsFree(CDatabase& db, DvnfEntity& entity, const char* otherTable, long otherMessage,
                         long personMessage);
    // Before a program execution or user defined server goes: 0, or 4 after
    // the message when a program activity names its key.
    int ServerInUse(CDatabase& db, DvnfEntity& entity, const CString& key, long message);
    // A table of server settings below base into the row: what the entity
    // leaves out is null. 0, or 4 after 51910.
    template <class Set>
    int ReadServerSettings(DvnfEntity& entity, const DvnfAttributeDataReader& base, Set& row,
                           const std::vector<DvnStored::Setting<Set>>& table);
    // The keys of the activities of the diagram whose connectors or second
    // pass are being saved, by name (once read), with that diagram's process
    // and block.
    struct DiagramAIDs {
        CString pid, blockAid;
        bool read = false;
        std::unordered_map<std::string, CString> byName;
    };
    DiagramAIDs* m_diagramAIDs = nullptr;
    // Makes a diagram's keys the ones DiagramAID uses, for the life of this
    // object; those of the diagram around it come back after.
    struct DiagramAIDsInUse {
        DiagramAIDs*& now;
        DiagramAIDs* before;
        DiagramAIDsInUse(DiagramAIDs*& current, DiagramAIDs& aids) : now(current), before(current) { now = &aids; }
        ~DiagramAIDsInUse() { now = before; }
        DiagramAIDsInUse(const DiagramAIDsInUse&) = delete;
        DiagramAIDsInUse& operator=(const DiagramAIDsInUse&) = delete;
    };
    DvnKeysByName m_processKeys;  // while a process is saved
    CString m_serverSystem;     // the key of the system of the server being saved
    int m_serverSystemLevel = 0;  // 4 when its link was not found
    long m_serverCannotAppend = 0;  // its kind's cannot-append message

    DvnfTRXData* m_pCoreData;
    CString m_strTablePrefix;
    DvnString m_strDefaultSystem;
    DvnString m_strDefaultSysGrp;
    DvnString m_strCurrentUser;
    bool m_bCallerData;
    bool m_bOverwrite;
    int32_t m_nSourceMark;
    DvnfProcessed m_processed;
    DvnfFrontendReader* m_pReader = nullptr;  // not owned
};
