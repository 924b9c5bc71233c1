// The conversion facade that callers hold: the import of a TRX file, and the
// opening of its database connection. The facade owns one connection for its
// whole life, opened at the start of each operation and closed at its end.
#pragma once

#include <string>
#include <vector>

#include "dvnfcorn.h"
#include "dvnkernn.h"
#include "odbcframe.h"

// ---- export: what an export reads (export.cpp)
// The sections of an export by group. Only the numbers are fixed; a number
// without a section (10, 11, 14, 20, 31) reads nothing.
enum EXPORT_GROUPS {
    EXPORT_CATEGORIES = 1,
    EXPORT_PROCESSES = 2,
    EXPORT_PERSONS = 3,
    EXPORT_ROLES = 4,
    EXPORT_ORGANIZATIONS = 5,
    EXPORT_LEVELS = 6,
    EXPORT_DOMAINS = 7,
    EXPORT_SYSTEM_GROUPS = 8,
    EXPORT_SYSTEMS = 9,
    EXPORT_NODES = 12,
    EXPORT_DATA_STRUCTURES = 13,
    EXPORT_PROGRAMS = 15,
    EXPORT_ACT_INSTANCE_LISTS = 16,
    EXPORT_PRC_INSTANCE_LISTS = 17,
    EXPORT_PRC_TEMPLATE_LISTS = 18,
    EXPORT_WORK_LISTS = 19,
    EXPORT_CLEANUP_SERVERS = 21,
    EXPORT_DISTRIBUTION_SERVERS = 22,
    EXPORT_EXECUTION_SERVERS = 23,
    EXPORT_GATEWAY_SERVERS = 24,
    EXPORT_MODELLING_SERVERS = 25,
    EXPORT_SCHEDULING_SERVERS = 26,
    EXPORT_PE_AGENTS = 27,
    EXPORT_QUEUE_MANAGERS = 28,
    EXPORT_TOOL_SETS = 29,
    EXPORT_PE_SERVERS = 30,
    EXPORT_USER_PE_SERVERS = 32,
};

// The kind of object a command names.
struct DvnEntityType {
    enum Type {
        Level = 1,
        DataStructure = 2,
        ToolSet = 3,
        Category = 4,
        Unused = 5,  // reads nothing
        Domain = 6,
        Program = 7,
        SystemGroup = 8,
        System = 9,
        Person = 10,
        Role = 11,
        Organization = 12,
        Server = 13,
        Node = 14,
        TemplatesList = 15,
        ProcessInstancesList = 16,
        ActivitiesList = 17,
        Worklist = 18,
        PEAgent = 19,
        QueueManager = 20,
        Process = 21,
    };
};

// The kind of server a command names (5 and 8 mean nothing).
struct DvnSvrKind {
    enum Type {
        None = 0,
        Execution = 4,
        Scheduling = 6,
        Cleanup = 7,
        Distribution = 9,
        Modelling = 10,
        Gateway = 11,
        PEServer = 12,
        UserPEServer = 13,
    };
};

// A command of an export by command: a kind, and all of it or some names.
struct DvnCmdVisitor {
    class Command {
    public:
        Command() = default;
        Command(DvnEntityType::Type type, std::vector<DvnString> names, bool all = false, bool deep = false,
                DvnSvrKind::Type svrKind = DvnSvrKind::None)
            : m_type(type), m_svrKind(svrKind), m_all(all), m_deep(deep), m_names(std::move(names)) {}
        DvnEntityType::Type EntityType() const { return m_type; }
        DvnSvrKind::Type SvrKind() const { return m_svrKind; }
        bool All() const { return m_all; }
        bool Deep() const { return m_deep; }
        std::vector<DvnString>& Names() { return m_names; }

    private:
        DvnEntityType::Type m_type = DvnEntityType::Unused;
        DvnSvrKind::Type m_svrKind = DvnSvrKind::None;
        bool m_all = false;
        bool m_deep = false;
        std::vector<DvnString> m_names;
    };
};

class DvnConvCoreDbFe;

class DvnConvCoreDbIF {
public:
    // With data: kept and never deleted. With null: core data of its own over
    // the process-wide catalogue, with the default message handler, deleted
    // by the destructor.
    explicit DvnConvCoreDbIF(DvnfTRXData* data = nullptr);
    virtual ~DvnConvCoreDbIF();

    // Parses a TRX file and stores what it holds, section after section, so
    // that every reference points backwards. dataSource null or empty: the
    // data source of the machine profile. overwrite: an existing row is
    // rewritten (else left alone). sourceOption: true writes rows clean and
    // deletes physically, false marks new rows 5, changed rows 3 and leaves
    // deleted rows as tombstones (mark 4). initialLoad: the row of VERSION is
    // written when missing, and every right counts as held. Returns the
    // highest level met: 0, 4 warnings, 8 errors, 12 failed as a whole.
    int ImportTRX(const DvnString& file, const DvnString& dataSource, bool overwrite, bool sourceOption,
                  bool initialLoad);


    // ---- export (export.cpp): definitions read from the database into the
    // core data; the caller writes them. dataSource null or empty: the data
    // source of the machine profile. 0 when the export ran (also when
    // sections were refused for want of a right), 12 when the database could
    // not be opened or failed, 1 when the connection was still not open.
    int ExportAll(const DvnString& dataSource);
    // One section; id empty: all of it. deep (groups 2, 13, 15): also what
    // the processes read refer to.
    int ExportGroups(const DvnString& dataSource, const DvnString& id, EXPORT_GROUPS group, bool deep);
    // A kind, all of it or the objects of the names (turned into keys first).
    int ExportByCommand(const DvnString& dataSource, DvnCmdVisitor::Command& command);

    // ---- single objects and lookups (lookups.cpp)
    // Fill one entity from its row: 0, 8 when it was not found or cannot be
    // read yet, 12 on a failure.
    int LoadDataStructure(DvnfEntity& structure);
    int LoadCategory(DvnfEntity& category);
    int LoadDataMapping(DvnfEntity& connector);
    int LoadProgram(DvnfEntity& program);
    int LoadPEUnit(DvnfEntity& server);
    // The name of an entity known by key, or the name itself when an entity
    // known by name has a row; empty when not found. Leaves the connection
    // as it found it.
    DvnfString GetName(DvnfEntity& entity);
    // GetName for every entity of the type below state 2.
    void GetNamesOfAll(const DvnfString& typeName);
    void GetNamesOfAll();
    // The key of the structure of the entity's name, or empty.
    DvnfString GetDataStructureID(DvnfEntity& structure);
    // The key of the process of that name, or empty.
    DvnString FindProcess(const DvnString& name);

    // ---- process editing (editor.cpp): the editor works on one process in
    // the core data of the facade, and reads the attributes of a process,
    // an activity or the inside of a block only when they are asked for.
    // Every load opens the machine profile's data source, reads in one
    // transaction and closes it again; no row is locked.
    // The process of that name with its first level (blocks stay shells),
    // the names of what it refers to resolved; DvnfEntity::undefined when
    // there is none or the load failed.
    DvnfEntity& LoadProcess(const DvnString& name);
    // Stores every process of the core data, rows found by key; the level,
    // with warnings (4) given as 0.
    int SaveProcess();
    // The long attributes and the containers of a process, read again at
    // each call: 0, 8 when no row has its key, 12 on a failure.
    int LoadProcessAttributes(DvnfEntity& process);
    // The same for an activity, read once: 0 at once when they are in memory.
    int LoadActivityAttributes(DvnfEntity& activity);
    // The inside of a block activity: its own level, or with deep every
    // block within at any depth; 0 at once when the block's content is in
    // memory already.
    int LoadBlock(DvnfEntity& block, const DvnString& processId, bool deep);

    // The core data of the facade (its handler receives the facade's messages).
    DvnfTRXData* CoreData() const { return m_pData; }
    DvnConvCoreDbIF(const DvnConvCoreDbIF&) = delete;
    DvnConvCoreDbIF& operator=(const DvnConvCoreDbIF&) = delete;

    // Opens db on the data source named by "BTODBCDataSourceName" of the
    // current configuration of the machine profile. 0 when db is open
    // afterwards (also when it already was), 12 when not. Traces (level 3)
    // the user and password it connects with.
    static int OpenDatabaseFromProfile(CDatabase& db, const DvnString& user, const DvnString& password);
    // The same on a data source named by the caller, without that trace.
    static int OpenDatabaseFromFile(const CString& dataSource, CDatabase& db, const DvnString& user,
                                    const DvnString& password);
    // "DVBT_" when the driver's file type (FIL= of the connect string) is
    // exactly "MS Access", else "DVBT.".
    static CString GetTablePrefix(CDatabase& db);

    // The connect string both open operations use: "DSN=" name ";UID=" user
    // ";PWD=" password; a null user or password leaves its value empty.
    // A user or password holding ';' (or beginning with '{', or with blanks
    // at either end) goes in braces, each '}' doubled.
    static CString BuildConnectString(const CString& dataSource, const CString& user, const CString& password);
    // A data source name for an SQLite database file that needs no ODBC
    // configuration: it names the driver library itself.
    static CString EmbeddedDataSource(const std::string& file);
    // The SQLite ODBC driver library that EmbeddedDataSource names:
    // $DVN_SQLITE_ODBC_DRIVER, else the driver unixODBC has registered as
    // "SQLite3", else the one found at build time, else libsqlite3odbc.so in
    // the platform's library folders.
    static std::string EmbeddedDriverPath();
    // Why the last open operation of this process that gave 12 failed (the
    // driver's message or the profile's complaint); empty after a success.
    // For programs that show the reason to a person.
    static CString LastOpenError();

protected:
    // ---- export (export.cpp)
    // The frame shared by the three exports: open, front end, read, names, deep step, close.
    template <class Read>
    int RunExport(const DvnString& dataSource, const char* guardedName, Read read);
    // Asks the right of a section; false after the refusal (message and trace).
    bool MayRead(int right);
    int ReadGroup(DvnConvCoreDbFe& fe, const DvnString& id, int group);
    void ReadCommand(DvnConvCoreDbFe& fe, DvnCmdVisitor::Command& command);
    void ReadServersByName(DvnConvCoreDbFe& fe, DvnCmdVisitor::Command& command);
    // ---- the frame of the single-object loads (loadframe.h)
    template <class Work, class After>
    int LoadFrame(const DvnString& name, const char* first, const char* second, const char* where, Work work,
                  After after);
    // ---- lookups (lookups.cpp)
    template <class Work>
    int RunLoad(DvnfEntity& entity, const char* first, const char* second, const char* where, Work work);
    template <class Find>
    DvnfString WithConnection(const char* where, Find find);
    DvnfString FindName(DvnfEntity& entity, const CString& prefix);
    DvnfString ServerName(DvnfEntity& entity, const CString& prefix);
    DvnfString ServerKey(DvnfEntity& entity, const CString& prefix);

    // Reports to the handler of the facade's core data; unused arguments null.
    void Report(long number, const DvnString& a1 = DvnString(), const DvnString& a2 = DvnString(),
                const DvnString& a3 = DvnString());

    DvnfTRXData* m_pData;
    CDatabase* m_pDatabase;  // owned; open only during an operation
    bool m_bCallerData;
};
