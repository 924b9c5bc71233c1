// Load of programs: the row of PROGRAM, a group per platform from the table
// of that platform, and "External" of a group from its service row.
// docs/programs.md tells what comes back and what does not.
#include <string>

#include "dvnbdbfe.h"
#include "dvnprogsets.h"

namespace {

enum class Reader { W, O, X, ServiceOnly };

struct Platform {
    long code;          // argument of GetProgramSetting
    const char* group;  // attribute group
    const char* table;  // bare table name; null: a service only
    long number;        // PLATFORM of its service
    Reader reader;
};

// In the order a program reads them.
constexpr Platform kPlatforms[] = {
    {3, "WIN95", "WIN95_EXTENT", 4, Reader::W},   {4, "WINNT", "WINNT_EXTENT", 5, Reader::W},
    {2, "NK2", "NK2_EXTENT", 1, Reader::O},       {0, "KRX", "KRX_EXTENT", 2, Reader::X},
    {1, "HPUX", "HPUX_EXTENT", 3, Reader::X},     {5, "TR880", nullptr, 6, Reader::ServiceOnly},
    {6, "Solaris", "SOLARIS_EXTENT", 7, Reader::X},
};

// "Type" of a group whose program is reached through a service only.
constexpr long kTypeExternal = 4;

}  // namespace

const DvnConvCoreDbFe::Kind<DvnProgramSet> DvnConvCoreDbFe::ProgramKind = {
    .typeName = "Program",
    .table = "PROGRAM",
    .keyColumn = "PROGRAM_ID",
    .plural = "Programs",
    .progress = 51514,
    .notFound = 51550,
    .lookFirst = true,
    .key = [](const DvnProgramSet& row) { return row.m_PROGRAM_ID; },
    .name = [](const DvnProgramSet& row) { return row.m_NAME; },
    .fill = &DvnConvCoreDbFe::Program,
};

void DvnConvCoreDbFe::Programs(DvnString const& id) { LoadKind(ProgramKind, id); }

int DvnConvCoreDbFe::Program(DvnProgramSet& row, DvnfEntity& program) {
    if (!TakeState(program, row.m_CHECKED_OUT)) return LevelOk;
    DvnfAttributeData attributes = program.AttributeData();
    // A null structure column (no structure when it was stored) makes no link.
    LinkByOID(program, "ProgramHasInputStr", "DataStructure", row, row.m_INPUT_DS);
    LinkByOID(program, "ProgramHasOutputStr", "DataStructure", row, row.m_OUTPUT_DS);
    CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    CopyText(row, row.m_USER_DEFINED_ICON, attributes("Icon"));
    CopyFlag(row, row.m_DS_FROM_ACTIVITY, attributes("StructuresFromActivity"));
    CopyFlag(row, row.m_UNATTENDED, attributes("Unattended"));
    if (!row.IsFieldNull(&row.m_EXECUTION_MODE)) {
        if (row.m_EXECUTION_MODE == 1) attributes("ExecutionMode") = 2L;
        if (row.m_EXECUTION_MODE == 2) attributes("ExecutionMode") = 1L;
    }
    if (!row.IsFieldNull(&row.m_EXECUTION_USER)) {
        if (row.m_EXECUTION_USER == 1 || row.m_EXECUTION_USER == 2)
            attributes("ExecutionUser") = row.m_EXECUTION_USER - 1;
        else
            DVN_TRACE(1, 2, "Error in ProgramSetting: Unknown EXECUTION_USER");
    }
    CopyFlag(row, row.m_INPUT_ACCESS, attributes("InputContainerAccess"));
    CopyFlag(row, row.m_OUTPUT_ACCESS, attributes("OutputContainerAccess"));
    CopyFlag(row, row.m_TRUST_MODE, attributes("Trusted"));
    for (const Platform& p : kPlatforms) GetProgramSetting(attributes, row.m_PROGRAM_ID, p.code);
    return LevelOk;
}

void DvnConvCoreDbFe::GetProgramSetting(DvnfAttributeData attributes, CString programId, long code) {
    const Platform* platform = nullptr;
    for (const Platform& p : kPlatforms)
        if (p.code == code) platform = &p;
    if (!platform) return;
    // Read anew: a program loaded a second time holds each group once, and
    // a platform without rows has no group.
    attributes.Reset(platform->group);
    DvnfAttributeData target = attributes(platform->group);
    if (platform->reader == Reader::ServiceOnly) {
        target("Type") = kTypeExternal;
        if (!GetExternalServices(target, programId, platform->number)) attributes.Reset(platform->group);
        return;
    }
    auto read = [&](auto& rs, auto reader) {
        rs.m_strFilter = CString("PROGRAM_ID = ") + Literal(DvnString(programId.c_str()));
        const long count =
            ReadRows(rs, Table(platform->table), [&](auto& row) { (this->*reader)(target, &row, platform->number); });
        if (count == 0) attributes.Reset(platform->group);  // not even an empty group
    };
    switch (platform->reader) {
        case Reader::W: {
            DvnWPlatformSet rs(m_pDatabase);
            read(rs, &DvnConvCoreDbFe::GetWIN_Setting);
            break;
        }
        case Reader::O: {
            DvnOPlatformSet rs(m_pDatabase);
            read(rs, &DvnConvCoreDbFe::GetNK2_Setting);
            break;
        }
        case Reader::X: {
            DvnXPlatformSet rs(m_pDatabase);
            read(rs, &DvnConvCoreDbFe::GetUNIX_Setting);
            break;
        }
        case Reader::ServiceOnly: break;
    }
}

bool DvnConvCoreDbFe::GetGeneralSetting(DvnfAttributeData target, DvnPlatformSet* row, long platform) {
    if (!row->IsFieldNull(&row->m_IMPLEMENTATION_TYP)) {
        switch (row->m_IMPLEMENTATION_TYP) {
            case 1: target("Type") = 2L; break;
            case 2: target("Type") = 1L; break;
            case 3:
                // Reached through its service: the type and the service only.
                target("Type") = kTypeExternal;
                GetExternalServices(target, row->m_PROGRAM_ID, platform);
                return false;
            default: break;
        }
    }
    CopyText(*row, row->m_COMMAND_LINE_PARM, target("Parameter"));
    target("PathAndFilename") = row->m_PATH_AND_FILE_NAME.c_str();
    CopyText(*row, row->m_WORKING_DIR, target("WorkingDirectory"));
    CopyText(*row, row->m_ENVIRONMENT, target("Environment"));
    CopyFlag(*row, row->m_INHERIT_ENV, target("InheritEnvironment"));
    CopyText(*row, row->m_ENTRY_POINT, target("EntryPoint"));
    CopyFlag(*row, row->m_FENCED, target("FencedMode"));
    CopyFlag(*row, row->m_KEEP_LOADED, target("KeepLoaded"));
    CopyFlag(*row, row->m_DLL_V2_COMPAT, target("DllV2Compatibility"));
    return true;
}

namespace {

// "Style" 1 to 4 as 0 to 3; any other value sets nothing.
template <class Set>
void StyleOf(const Set& row, DvnfAttributeData target) {
    if (!row.IsFieldNull(&row.m_STYLE) && row.m_STYLE >= 1 && row.m_STYLE <= 4) target("Style") = row.m_STYLE - 1;
}

}  // namespace

void DvnConvCoreDbFe::GetNK2_Setting(DvnfAttributeData target, DvnOPlatformSet* row, long platform) {
    if (!GetGeneralSetting(target, row, platform)) return;
    // The column holds the opposite of "Autoclose".
    if (!row->IsFieldNull(&row->m_AUTOMATIC_CLOSE)) target("Autoclose") = row->m_AUTOMATIC_CLOSE == 0;
    StyleOf(*row, target);
    CopyFlag(*row, row->m_START_IN_FOREGRND, target("Foreground"));
}

void DvnConvCoreDbFe::GetUNIX_Setting(DvnfAttributeData target, DvnXPlatformSet* row, long platform) {
    if (!GetGeneralSetting(target, row, platform)) return;
    CopyFlag(*row, row->m_RUN_IN_XTERM, target("XTerm"));
}

void DvnConvCoreDbFe::GetWIN_Setting(DvnfAttributeData target, DvnWPlatformSet* row, long platform) {
    if (!GetGeneralSetting(target, row, platform)) return;
    StyleOf(*row, target);
    CopyFlag(*row, row->m_START_IN_FOREGRND, target("Foreground"));
}

bool DvnConvCoreDbFe::GetExternalServices(DvnfAttributeData target, CString const& programId, long platform) {
    DvnExternalService rs(m_pDatabase);
    const CString statement = CString("SELECT * FROM ") + Table("EXTERNAL_SERVICE") + " WHERE [PROGRAM_ID] =" +
                              Literal(DvnString(programId.c_str())) + " AND [PLATFORM] =" +
                              std::to_string(platform).c_str();
    const long count = ReadRows(rs, statement, [&](DvnExternalService& row) {
        DvnfAttributeData external = target("External");
        CopyText(row, row.m_SERVICE, external("Service"));
        CopyText(row, row.m_SERVICE_TYPE, external("ServiceType"));
        CopyText(row, row.m_EXECUTABLE, external("Executable"));
        CopyText(row, row.m_EXECUTABLE_TYPE, external("ExecutableType"));
        CopyText(row, row.m_INVOCATION_TYPE, external("InvocationType"));
        external("LocalUser") = row.m_LOCAL_USER == 1;
        external("SecurityChecking") = row.m_SECURITY_CHECKING == 1;
        CopyLong(row, row.m_CODEPAGE, external("Codepage"));
        // A null duration (a type the store did not know) gives none.
        if (!row.IsFieldNull(&row.m_DURATION)) GetTimePeriod(row.m_DURATION, external("Duration"));
        external("Mapping") = row.m_MAPPING == 1;
        if (row.m_MAPPING == 1) {
            CopyText(row, row.m_MAPPING_TYPE, external("MappingType"));
            CopyText(row, row.m_FORWARD_MAPPING, external("ForwardMapping"));
            CopyText(row, row.m_BACKWARD_MAPPING, external("BackwardMapping"));
            CopyText(row, row.m_FORWARD_MAP_PARAM, external("ForwardMappingParms"));
            CopyText(row, row.m_BACKWARD_MAP_PARAM, external("BackwardMappingParms"));
        }
    });
    return count > 0;
}

int DvnConvCoreDbFe::ProgramToCore(DvnfEntity& program) {
    DvnProgramSet row(m_pDatabase);
    try {
        const DvnString name = program.Name();
        if (program.State() == DvnfObject::StateNone && !name.str().empty()) {
            // A skeleton known by name: made again under the key found.
            const long count = ReadRows(row, SelectLive("PROGRAM", "NAME", Literal(name)), [&](DvnProgramSet& found) {
                DvnfEntity& target = m_pCoreData->CreateEntity(
                    DvnfString("Program"), DvnfString(found.m_PROGRAM_ID.c_str()), DvnfString(found.m_NAME.c_str()));
                Program(found, target);
                target.State(DvnfObject::StateUnchanged);
            });
            return count == 0 ? LevelError : LevelOk;
        }
        const long count = ReadRows(row, SelectLive("PROGRAM", "PROGRAM_ID", Literal(program.OID())),
                                    [&](DvnProgramSet& found) { Program(found, program); });
        return count == 0 ? LevelError : LevelOk;
    } catch (CDBException* e) {
        TraceDbException("Exception In ProgramToCore: rc =", e);
        return LevelError;
    }
}
