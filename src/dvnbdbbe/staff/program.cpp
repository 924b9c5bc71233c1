// Store of programs: the row of PROGRAM with the general settings, then, at
// once, one row per platform group in the table of its platform and one
// external service row per platform. docs/programs.md tells the choices.
#include <algorithm>

#include "dvnprocsets.h"
#include "dvnprogsets.h"
#include "familystore.h"
#include "processmodel/processstore.h"
#include "storedforms.h"

using processstore::kDefaultDataStructure;
using processstore::Quoted;

namespace {

// The recordset class a platform table is read through.
enum class PlatformClass { W, O, X };

struct PlatformGroup {
    const char* group;  // attribute group of the program
    const char* table;  // bare table name
    int platform;       // PLATFORM of its external service
    PlatformClass kind;
};

// In the order they are written.
constexpr PlatformGroup kPlatformGroups[] = {
    {"WINNT", "WINNT_EXTENT", 5, PlatformClass::W}, {"WIN95", "WIN95_EXTENT", 4, PlatformClass::W},
    {"KRX", "KRX_EXTENT", 2, PlatformClass::X},     {"HPUX", "HPUX_EXTENT", 3, PlatformClass::X},
    {"Solaris", "SOLARIS_EXTENT", 7, PlatformClass::X}, {"NK2", "NK2_EXTENT", 1, PlatformClass::O},
};
// A platform with an external service and no table of its own.
constexpr const char* kServiceOnlyGroup = "TR880";
constexpr int kServiceOnlyPlatform = 6;

// IMPLEMENTATION_TYP under which a group needs no path ("NONE" is stored),
// and the one under which the start options of a window count.
constexpr long kTypeExternal = 3;
constexpr long kTypeWindowed = 2;

// A duration without limit, in seconds.
constexpr long kNoTimeLimit = 999999999;

const PlatformGroup* GroupOfTable(const CString& table) {
    for (const PlatformGroup& g : kPlatformGroups)
        if (table == g.table) return &g;
    return nullptr;
}

void SetTextOrNull(CRecordset& row, CString& member, const DvnfAttributeDataReader& value) {
    if (value.IsDefined())
        DvnStored::SetText(row, member, value.AsString("").str());
    else
        row.SetFieldNull(&member);
}

// A flag as 1 or 0; when not defined, the default, or null for a default below 0.
void SetFlag(CRecordset& row, long& member, const DvnfAttributeDataReader& value, long undefined) {
    if (value.IsDefined())
        member = value.AsBool(false) ? 1 : 0;
    else if (undefined < 0)
        row.SetFieldNull(&member);
    else
        member = undefined;
}

// ---- the column tables
template <class Set>
struct TextColumn {
    const char* attribute;
    CString Set::*member;
};
template <class Set>
struct FlagColumn {
    const char* attribute;
    long Set::*member;
    long undefined;  // -1: null
};

const TextColumn<DvnPlatformSet> kPlatformTexts[] = {
    {"EntryPoint", &DvnPlatformSet::m_ENTRY_POINT},
    {"Parameter", &DvnPlatformSet::m_COMMAND_LINE_PARM},
    {"WorkingDirectory", &DvnPlatformSet::m_WORKING_DIR},
    {"Environment", &DvnPlatformSet::m_ENVIRONMENT},
};
const FlagColumn<DvnPlatformSet> kPlatformFlags[] = {
    {"InheritEnvironment", &DvnPlatformSet::m_INHERIT_ENV, -1},
    {"KeepLoaded", &DvnPlatformSet::m_KEEP_LOADED, -1},
    {"FencedMode", &DvnPlatformSet::m_FENCED, -1},
    {"DllV2Compatibility", &DvnPlatformSet::m_DLL_V2_COMPAT, -1},
};
const TextColumn<DvnExternalService> kServiceTexts[] = {
    {"Service", &DvnExternalService::m_SERVICE},
    {"ServiceType", &DvnExternalService::m_SERVICE_TYPE},
    {"Executable", &DvnExternalService::m_EXECUTABLE},
    {"ExecutableType", &DvnExternalService::m_EXECUTABLE_TYPE},
    {"InvocationType", &DvnExternalService::m_INVOCATION_TYPE},
    {"MappingType", &DvnExternalService::m_MAPPING_TYPE},
    {"ForwardMapping", &DvnExternalService::m_FORWARD_MAPPING},
    {"BackwardMapping", &DvnExternalService::m_BACKWARD_MAPPING},
    {"ForwardMappingParms", &DvnExternalService::m_FORWARD_MAP_PARAM},
    {"BackwardMappingParms", &DvnExternalService::m_BACKWARD_MAP_PARAM},
};
const FlagColumn<DvnExternalService> kServiceFlags[] = {
    {"LocalUser", &DvnExternalService::m_LOCAL_USER, 1},
    {"SecurityChecking", &DvnExternalService::m_SECURITY_CHECKING, 1},
    {"Mapping", &DvnExternalService::m_MAPPING, 1},
};

template <class Set, class Row>
void ReadColumns(const DvnfAttributeDataReader& attributes, Row& row, const TextColumn<Set>* texts,
                 size_t textCount, const FlagColumn<Set>* flags, size_t flagCount) {
    for (size_t i = 0; i < textCount; ++i) SetTextOrNull(row, row.*texts[i].member, attributes(texts[i].attribute));
    for (size_t i = 0; i < flagCount; ++i)
        SetFlag(row, row.*flags[i].member, attributes(flags[i].attribute), flags[i].undefined);
}

// A row of a settings table, found by the filter: rewritten in place, or
// added. read fills it and gives a level; at 8 the row is not written.
// fail deals with a database exception (the action in its trace) and gives 8.
template <class Set, class Read, class Fail>
int WriteSettingsRow(Set& row, const CString& table, const CString& filter, const char* bareTable, Read read,
                     Fail fail) {
    row.m_strFilter = filter;
    try {
        row.Open(CRecordset::snapshot, table, CRecordset::none);
    } catch (CDBException* e) {
        return fail(e, "opening");
    }
    int level = 0;
    try {
        if (!row.IsEOF()) {
            row.MoveFirst();
            row.Edit();
        } else if (!row.CanAppend()) {
            row.Close();
            DVN_TRACE(1, 2, "Program extent could not be added to table " << bareTable);
            return DvnConvCoreDbBe::LevelError;
        } else {
            row.AddNew();
        }
        level = read();
        if (level >= DvnConvCoreDbBe::LevelError) {
            row.Close();
            return level;
        }
    } catch (CDBException* e) {
        return fail(e, "reading");
    }
    if (!row.CanUpdate()) {
        row.Close();
        DVN_TRACE(1, 2, "Program extent could not be updated");
        return DvnConvCoreDbBe::LevelError;
    }
    try {
        row.Update();
    } catch (CDBException* e) {
        return fail(e, "updating");
    }
    row.Close();
    return level;
}

// Whether the statement gives a row; a database exception goes up.
template <class Set>
bool AnyRow(CDatabase& db, const CString& statement) {
    Set rs(&db);
    rs.Open(CRecordset::snapshot, statement, CRecordset::readOnly);
    return !rs.IsEOF();
}

}  // namespace

// ------------------------------------------------------------------ the row

const DvnConvCoreDbBe::Family<DvnProgramSet> DvnConvCoreDbBe::ProgramFamily = {
    .typeName = "Program",
    .kind = "Program",
    .right = &ModelingRight,
    .table = "PROGRAM",
    .keyColumn = "PROGRAM_ID",
    .key = &DvnProgramSet::m_PROGRAM_ID,
    .progress = "Program ",
    .invalidTrace = "Program is not defined",
    .deleteKeyword = "DELETE PROGRAM ",
    .messages = {.added = 51020, .updated = 51052, .kept = 51084, .held = 51147, .deleted = 51220,
                 .cannotAppend = 51316, .cannotUpdate = 51348},
    .read = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, DvnProgramSet& row, bool isNew) {
        return be.ReadProgramAttributes(db, entity, entity.AttributeData(), row, isNew);
    },
    .inUse = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key) {
        return be.ProgramInUse(db, entity, key);
    },
    // A tombstone keeps its platform rows and services, as it keeps the rest
    // of its row.
    .afterWrite = [](DvnConvCoreDbBe& be, CDatabase& db, DvnfEntity& entity, const CString& key, bool tombstone) {
        return tombstone ? static_cast<int>(LevelOk) : be.SaveProgram2(db, entity.AttributeData(), key);
    },
    .afterDelete = [](DvnConvCoreDbBe& be, CDatabase& db, const CString& key) { return be.DeleteProgramRows(db, key); },
};

int DvnConvCoreDbBe::SavePrograms(CDatabase& db, bool authorized) { return SaveFamily(db, authorized, ProgramFamily); }

int DvnConvCoreDbBe::SaveProgram(CDatabase& db, DvnfEntity& entity) {
    return SaveSingleRow(db, entity, ProgramFamily);
}

// A program that an activity runs or has as a support tool stays.
int DvnConvCoreDbBe::ProgramInUse(CDatabase& db, DvnfEntity& entity, const CString& key) {
    const CString where = CString(" WHERE PROGRAM_ID ='") + key + "'";
    if (AnyRow<DvnProgramActivitySet>(db, CString("SELECT * FROM ") + Table("PROGRAM_ACTIVITY") + where) ||
        AnyRow<DvnSupportToolsSet>(db, CString("SELECT * FROM ") + Table("ACT_HAS_SUP_TOOL") + where)) {
        Report(51243, entity.Name());
        return LevelWarning;
    }
    return LevelOk;
}

int DvnConvCoreDbBe::ReadProgramAttributes(CDatabase& db, DvnfEntity& entity,
                                           const DvnfAttributeDataReader& attributes, DvnProgramSet& row,
                                           bool isNew) {
    int level = LevelOk;

    // The structures: the linked one by its name (or by the name of its key),
    // else the default one; a link to a structure without a row gets 51102
    // and the default, and when even that is missing, the target's key. No
    // link and no default row: null.
    DvnDataStructureSet structures(&db);
    const CString defaultName = Quoted(DvnString(kDefaultDataStructure));
    auto structure = [&](const char* link) -> CString {
        DvnfEntity& target = GetLink(DvnfString(link), entity, DvnfString("DataStructure"));
        if (!target.IsValid()) return structures.GetDsID(defaultName, m_strTablePrefix, false);
        const CString oid = target.OID().c_str();
        DvnString name = target.Name();
        if (name.IsEmpty() && !oid.IsEmpty()) name = structures.GetName(oid, m_strTablePrefix, false);
        if (name.IsEmpty()) name = kDefaultDataStructure;
        CString key = structures.GetDsID(Quoted(name), m_strTablePrefix, false);
        if (key.IsEmpty()) {
            Report(51102, name);
            level = std::max(level, static_cast<int>(LevelWarning));
            key = structures.GetDsID(defaultName, m_strTablePrefix, false);
        }
        return key.IsEmpty() ? oid : key;
    };
    DvnStored::SetText(row, row.m_INPUT_DS, structure("ProgramHasInputStr").str());
    DvnStored::SetText(row, row.m_OUTPUT_DS, structure("ProgramHasOutputStr").str());

    row.m_NAME = entity.Name().c_str();
    if (isNew) {
        row.m_PROGRAM_ID = DvnfObject::CreateOID().c_str();
        row.m_CHECKED_OUT = MarkForInsert(true);
        row.SetFieldNull(&row.m_CHECKED_OUT_BY);
    } else {
        row.m_CHECKED_OUT = MarkForUpdate(row.m_CHECKED_OUT);
    }
    const auto description = attributes("Description");
    if (description.IsDefined())
        DvnStored::SetText(row, row.m_DESCRIPTION,
                           DvnStored::Cut(description.AsString("").str(), DvnStored::DescriptionChars));
    else
        row.SetFieldNull(&row.m_DESCRIPTION);
    SetTextOrNull(row, row.m_DOCUMENTATION, attributes("Documentation"));

    row.m_DS_FROM_ACTIVITY = attributes("StructuresFromActivity").AsBool(false) ? 1 : 0;
    row.m_UNATTENDED = attributes("Unattended").AsBool(false) ? 1 : 0;
    const auto user = attributes("ExecutionUser");
    const long userValue = user.AsLong(-1);
    if (user.IsDefined() && (userValue == 0 || userValue == 1))
        row.m_EXECUTION_USER = userValue + 1;
    else
        row.SetFieldNull(&row.m_EXECUTION_USER);
    const auto mode = attributes("ExecutionMode");
    if (mode.IsDefined()) row.m_EXECUTION_MODE = mode.AsLong(0) == 1 ? 2 : 1;
    SetFlag(row, row.m_INPUT_ACCESS, attributes("InputContainerAccess"), -1);
    SetFlag(row, row.m_OUTPUT_ACCESS, attributes("OutputContainerAccess"), -1);
    SetFlag(row, row.m_TRUST_MODE, attributes("Trusted"), -1);

    row.SetFieldNull(&row.m_USER_DEFINED_ICON);
    return std::max(level, StoreIcon(row, row.m_USER_DEFINED_ICON, attributes("Icon")));
}

// ------------------------------------------------------------------ what hangs from the row

int DvnConvCoreDbBe::SaveProgram2(CDatabase& db, const DvnfAttributeDataReader& attributes,
                                  const CString& programId) {
    DvnProgramSet row(&db);
    row.m_strFilter = CString("PROGRAM_ID = '") + programId + "'";
    try {
        row.Open(CRecordset::snapshot, Table("PROGRAM"), CRecordset::none);
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", "PROGRAM", &row);
    }
    if (row.IsEOF()) {
        row.Close();
        return LevelOk;
    }
    bool inserted = false;
    try {
        row.MoveFirst();
        if (row.m_CHECKED_OUT == MarkFirstPassDone) {
            row.Edit();
            row.m_CHECKED_OUT = m_nSourceMark;
            row.Update();
            inserted = true;
        }
    } catch (CDBException* e) {
        return ReportDbException(e, "updating", "PROGRAM", &row);
    }
    row.Close();
    if (!inserted && !m_bOverwrite) return LevelOk;

    // A row that was there before this run has its rows written anew, so that
    // a platform or a service the definition no longer gives goes.
    int level = inserted ? static_cast<int>(LevelOk) : DeleteProgramRows(db, programId);
    for (const PlatformGroup& g : kPlatformGroups) {
        const DvnfAttributeDataReader group = attributes(g.group);
        if (group.IsDefined()) level = std::max(level, SavePlatformSettings(db, group, programId, g.table));
        if (group("External").IsDefined())
            level = std::max(level, SaveExternalServices(db, group("External"), programId, g.platform));
    }
    const DvnfAttributeDataReader serviceOnly = attributes(kServiceOnlyGroup)("External");
    if (serviceOnly.IsDefined())
        level = std::max(level, SaveExternalServices(db, serviceOnly, programId, kServiceOnlyPlatform));
    return level;
}

int DvnConvCoreDbBe::SavePlatformSettings(CDatabase& db, const DvnfAttributeDataReader& group,
                                          const CString& programId, const CString& table) {
    const PlatformGroup* platform = GroupOfTable(table);
    if (!platform) {
        DVN_TRACE(1, 2, "No platform table " << table);
        return LevelError;
    }
    const CString filter = CString("PROGRAM_ID = '") + programId + "'";
    auto write = [&](auto& row, auto readExtras) {
        return WriteSettingsRow(
            row, Table(platform->table), filter, platform->table,
            [&] {
                const int level = ReadPlatformSettings(db, group, row, programId);
                return level >= LevelError ? level : std::max(level, readExtras());
            },
            [&](CDBException* e, const char* action) { return ReportDbException(e, action, platform->table, &row); });
    };
    switch (platform->kind) {
        case PlatformClass::W: {
            DvnWPlatformSet row(&db);
            return write(row, [&] { return ReadWPlatformSettings(db, group, row, programId); });
        }
        case PlatformClass::O: {
            DvnOPlatformSet row(&db);
            return write(row, [&] { return ReadOPlatformSettings(db, group, row, programId); });
        }
        case PlatformClass::X: {
            DvnXPlatformSet row(&db);
            return write(row, [&] { return ReadXPlatformSettings(db, group, row, programId); });
        }
    }
    return LevelError;
}

int DvnConvCoreDbBe::ReadPlatformSettings(CDatabase&, const DvnfAttributeDataReader& group, DvnPlatformSet& row,
                                          const CString& programId) {
    row.m_PROGRAM_ID = programId;
    switch (group("Type").AsLong(0)) {
        case 1: row.m_IMPLEMENTATION_TYP = 2; break;
        case 2: row.m_IMPLEMENTATION_TYP = 1; break;
        case 4: row.m_IMPLEMENTATION_TYP = kTypeExternal; break;
        default: break;
    }
    const auto path = group("PathAndFilename");
    if (path.IsDefined()) {
        DvnStored::SetText(row, row.m_PATH_AND_FILE_NAME, path.AsString("").str());
    } else if (row.m_IMPLEMENTATION_TYP == kTypeExternal) {
        row.m_PATH_AND_FILE_NAME = "NONE";
    } else {
        DVN_TRACE(1, 2, "Path and file name not defined");
        return LevelError;
    }
    ReadColumns(group, row, kPlatformTexts, std::size(kPlatformTexts), kPlatformFlags, std::size(kPlatformFlags));
    return LevelOk;
}

namespace {

// The start options of a window, read when the group and its "Type" are
// defined; they count only for a group of the windowed type.
template <class Set>
void ReadWindowOptions(const DvnfAttributeDataReader& group, Set& row) {
    const bool windowed = row.m_IMPLEMENTATION_TYP == kTypeWindowed;
    const auto style = group("Style");
    row.m_STYLE = 1;
    if (windowed && style.IsDefined()) {
        const long value = style.AsLong(0);
        if (value >= 1 && value <= 3) row.m_STYLE = value + 1;
    }
    const auto foreground = group("Foreground");
    row.m_START_IN_FOREGRND = windowed && foreground.IsDefined() && foreground.AsBool(false) ? 1 : 0;
}

bool ExtrasAreRead(const DvnfAttributeDataReader& group) { return group.IsDefined() && group("Type").IsDefined(); }

}  // namespace

int DvnConvCoreDbBe::ReadWPlatformSettings(CDatabase&, const DvnfAttributeDataReader& group, DvnWPlatformSet& row,
                                           const CString&) {
    if (ExtrasAreRead(group)) ReadWindowOptions(group, row);
    return LevelOk;
}

int DvnConvCoreDbBe::ReadOPlatformSettings(CDatabase&, const DvnfAttributeDataReader& group, DvnOPlatformSet& row,
                                           const CString&) {
    if (!ExtrasAreRead(group)) return LevelOk;
    ReadWindowOptions(group, row);
    // The column holds the opposite of "Autoclose".
    const auto autoclose = group("Autoclose");
    row.m_AUTOMATIC_CLOSE =
        row.m_IMPLEMENTATION_TYP == kTypeWindowed && autoclose.IsDefined() && !autoclose.AsBool(false) ? 1 : 0;
    return LevelOk;
}

int DvnConvCoreDbBe::ReadXPlatformSettings(CDatabase&, const DvnfAttributeDataReader& group, DvnXPlatformSet& row,
                                           const CString&) {
    if (ExtrasAreRead(group)) SetFlag(row, row.m_RUN_IN_XTERM, group("XTerm"), -1);
    return LevelOk;
}

int DvnConvCoreDbBe::SaveExternalServices(CDatabase& db, const DvnfAttributeDataReader& external,
                                          const CString& programId, int platform) {
    DvnExternalService row(&db);
    const CString filter =
        CString("PROGRAM_ID = '") + programId + "' AND PLATFORM = " + std::to_string(platform).c_str();
    return WriteSettingsRow(
        row, Table("EXTERNAL_SERVICE"), filter, "EXTERNAL_SERVICE",
        [&] { return ReadExternalServices(db, external, row, programId, platform); },
        [&](CDBException* e, const char* action) { return ReportDbException(e, action, "EXTERNAL_SERVICE", &row); });
}

int DvnConvCoreDbBe::ReadExternalServices(CDatabase&, const DvnfAttributeDataReader& external,
                                          DvnExternalService& row, const CString& programId, int platform) {
    row.m_PLATFORM = platform;
    row.m_PROGRAM_ID = programId;
    ReadColumns(external, row, kServiceTexts, std::size(kServiceTexts), kServiceFlags, std::size(kServiceFlags));
    const auto codepage = external("Codepage");
    if (codepage.IsDefined())
        row.m_CODEPAGE = codepage.AsLong(0);
    else
        row.SetFieldNull(&row.m_CODEPAGE);
    // By the duration's "Type": none, without limit, or the given units;
    // a type not known (or not given) leaves the column.
    const auto duration = external("Duration");
    if (!duration.IsDefined()) {
        row.m_DURATION = kNoTimeLimit;
    } else {
        switch (duration("Type").AsLong(-1)) {
            case 0: row.m_DURATION = 0; break;
            case 1: row.m_DURATION = kNoTimeLimit; break;
            case 2: {
                const long seconds = SetTimeInterval(duration);
                row.m_DURATION = seconds == 0 ? kNoTimeLimit : seconds;
                break;
            }
            default: break;
        }
    }
    return LevelOk;
}

// ------------------------------------------------------------------ deletes

int DvnConvCoreDbBe::DeletePlatformSettings(CDatabase& db, const CString& programId, const CString& table) {
    return DeleteObject(db, CString("DELETE FROM ") + m_strTablePrefix + table + " WHERE PROGRAM_ID = '" + programId +
                                "'",
                        table);
}

int DvnConvCoreDbBe::DeleteWPlatformSettings(CDatabase& db, const CString& programId, const CString& table) {
    return DeletePlatformSettings(db, programId, table);
}

int DvnConvCoreDbBe::DeleteXPlatformSettings(CDatabase& db, const CString& programId, const CString& table) {
    return DeletePlatformSettings(db, programId, table);
}

int DvnConvCoreDbBe::DeleteOPlatformSettings(CDatabase& db, const CString& programId) {
    return DeletePlatformSettings(db, programId, "NK2_EXTENT");
}

int DvnConvCoreDbBe::DeleteExternalService(CDatabase& db, const CString& programId) {
    return DeletePlatformSettings(db, programId, "EXTERNAL_SERVICE");
}

int DvnConvCoreDbBe::DeleteProgramRows(CDatabase& db, const CString& programId) {
    int level = std::max(DeleteWPlatformSettings(db, programId, "WINNT_EXTENT"),
                         DeleteWPlatformSettings(db, programId, "WIN95_EXTENT"));
    level = std::max(level, DeleteOPlatformSettings(db, programId));
    for (const char* table : {"KRX_EXTENT", "HPUX_EXTENT", "SOLARIS_EXTENT"})
        level = std::max(level, DeleteXPlatformSettings(db, programId, table));
    return std::max(level, DeleteExternalService(db, programId));
}
