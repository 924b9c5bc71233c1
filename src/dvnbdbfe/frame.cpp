// The frame of all loads: construction, states, the stored forms undone into
// attributes, the null rule, links, messages and the traces of caught
// database exceptions.
#include <algorithm>

#include "dvnbdbfe.h"
#include "storedforms.h"

DvnConvCoreDbFe::DvnConvCoreDbFe(CDatabase* db, DvnfTRXData* data)
    : m_pCoreData(data ? data : new DvnfTRXData(DvnfTRXTypes::_instance, nullptr)),
      m_bCallerData(data != nullptr),
      m_pDatabase(db) {}

DvnConvCoreDbFe::~DvnConvCoreDbFe() {
    if (!m_bCallerData) delete m_pCoreData;
}

// ------------------------------------------------------------------ states

DvnfObject::State_t DvnConvCoreDbFe::GetState(int rowMark) {
    switch (rowMark) {
        case 1:
        case 3: return DvnfObject::StateChanged;
        case 2:
        case 5: return DvnfObject::StateNew;
        case 4: return DvnfObject::StateDeleted;
        default: return DvnfObject::StateUnchanged;
    }
}

bool DvnConvCoreDbFe::TakeState(DvnfEntity& entity, int rowMark) {
    if (!entity.IsValid()) return true;
    entity.State(GetState(rowMark));
    return entity.State() != DvnfObject::StateDeleted;
}

void DvnConvCoreDbFe::TakeParentState(DvnfEntity& entity, const DvnfEntity& parent) {
    if (entity.IsValid()) entity.State(parent.State());
}

bool DvnConvCoreDbFe::AlreadyLoaded(const char* typeName, const CString& key) {
    return m_pCoreData->GetEntityByOID(DvnfString(typeName), DvnfString(key.c_str()), false).State() >
           DvnfObject::StateDeleted;
}

// ------------------------------------------------------------ stored forms

void DvnConvCoreDbFe::GetColor(long value, DvnfAttributeData target) {
    const DvnStored::ColorParts parts = DvnStored::UnpackedColor(value);
    target("Red") = parts.red;
    target("Green") = parts.green;
    target("Blue") = parts.blue;
}

void DvnConvCoreDbFe::GetFontSetting(CString const& name, long size, long style, CString const& descriptor,
                                     DvnfAttributeData target) {
    const DvnStored::FontParts parts = DvnStored::FontSetting(size, style, descriptor.str());
    target("Name") = name.c_str();
    if (parts.size) target("Size") = *parts.size;
    if (parts.style) target("Style") = *parts.style;
    if (parts.descriptor) target("Descriptor") = parts.descriptor->c_str();
}

void DvnConvCoreDbFe::GetTimePeriod(long value, DvnfAttributeData target) {
    const DvnStored::PeriodParts parts = DvnStored::Period(value);
    target("Type") = parts.type;
    if (parts.seconds) target("Seconds") = *parts.seconds;
}

void DvnConvCoreDbFe::GetTimeEvent(CString& text, DvnfAttributeData target) {
    const DvnStored::TimeEventParts parts = DvnStored::ParsedTimeEvent(text.str());
    if (parts.anyTimeWord) {
        target("AnyTime") = true;
        for (const char* name : {"Every", "On", "AtHours", "AtMinutes"}) target.Reset(name);
        return;
    }
    if (parts.anyTime) target("AnyTime") = *parts.anyTime;
    if (parts.every) target("Every") = *parts.every;
    if (parts.on) target("On") = *parts.on;
    if (parts.atHours) target("AtHours") = *parts.atHours;
    if (parts.atMinutes) target("AtMinutes") = *parts.atMinutes;
}

// ------------------------------------------------------------- statements

CString DvnConvCoreDbFe::SelectFrom(const char* table, const char* keyColumn, const CString& key,
                                    bool quoted) const {
    CString statement = CString("SELECT * FROM ") + Table(table);
    if (keyColumn) {
        statement += CString(" WHERE [") + keyColumn + "] =";
        statement += quoted ? Literal(DvnString(key.c_str())) : key;
    }
    return statement;
}

CString DvnConvCoreDbFe::SelectLive(const char* table, const char* column, const CString& literal) const {
    return CString("SELECT * FROM ") + Table(table) + " WHERE [" + column + "] = " + literal + " AND CHECKED_OUT <> 4";
}

// ---------------------------------------------------------------- null rule

void DvnConvCoreDbFe::CopyText(const CRecordset& row, const CString& member, DvnfAttributeData target) {
    if (!row.IsFieldNull(&member)) target = member.c_str();
}

void DvnConvCoreDbFe::CopyTexts(const CRecordset& row, const CString& description, const CString& documentation,
                                DvnfAttributeData target) {
    CopyText(row, description, target("Description"));
    CopyText(row, documentation, target("Documentation"));
}

void DvnConvCoreDbFe::CopyLong(const CRecordset& row, const long& member, DvnfAttributeData target) {
    if (!row.IsFieldNull(&member)) target = member;
}

void DvnConvCoreDbFe::CopyLong(const CRecordset& row, const int& member, DvnfAttributeData target) {
    if (!row.IsFieldNull(&member)) target = static_cast<long>(member);
}

void DvnConvCoreDbFe::CopyFlag(const CRecordset& row, const long& member, DvnfAttributeData target) {
    if (!row.IsFieldNull(&member)) target = member != 0;
}

void DvnConvCoreDbFe::CopyFlag(const CRecordset& row, const int& member, DvnfAttributeData target) {
    if (!row.IsFieldNull(&member)) target = member != 0;
}

// -------------------------------------------------------------------- links

namespace {

// A reference column as a link made by the core model's call `add` (by key
// or by name); none for a NULL or empty column.
using AddLink = const DvnfLink& (DvnfCoreData::*)(DvnfEntity&, const DvnfString&, const DvnfString&,
                                                 const DvnfString&, bool, bool);
bool LinkColumn(DvnfTRXData& data, AddLink add, DvnfEntity& entity, const char* linkName, const char* targetType,
                const CRecordset& row, const CString& member) {
    if (row.IsFieldNull(&member) || member.IsEmpty()) return false;
    (data.*add)(entity, DvnfString(linkName), DvnfString(targetType), DvnfString(member.c_str()), true, true);
    return true;
}

}  // namespace

// Names, not keys, give the order (staff/staffload.h, LinkEach).
void DvnConvCoreDbFe::LinkInNameOrder(DvnfEntity& entity, const char* linkName, const char* targetType,
                                      NamesAndKeys& targets) {
    std::sort(targets.begin(), targets.end());  // by name, then by key
    for (const auto& [targetName, key] : targets)
        m_pCoreData->AddLinkByOID(entity, DvnfString(linkName), DvnfString(targetType), DvnfString(key.c_str()));
}

bool DvnConvCoreDbFe::LinkByOID(DvnfEntity& entity, const char* linkName, const char* targetType,
                                const CRecordset& row, const CString& member) {
    return LinkColumn(*m_pCoreData, &DvnfCoreData::AddLinkByOID, entity, linkName, targetType, row, member);
}

bool DvnConvCoreDbFe::LinkByName(DvnfEntity& entity, const char* linkName, const char* targetType,
                                 const CRecordset& row, const CString& member) {
    return LinkColumn(*m_pCoreData, &DvnfCoreData::AddLinkByName, entity, linkName, targetType, row, member);
}

// ------------------------------------------------------------------ reports

void DvnConvCoreDbFe::Report(long number, const DvnString& a1, const DvnString& a2, const DvnString& a3,
                             const DvnString& a4, const DvnString& a5, const DvnString& a6, const DvnString& a7) {
    m_pCoreData->MessageHandler()->Report(number, a1, a2, a3, a4, a5, a6, a7);
}

void DvnConvCoreDbFe::TraceDbException(const char* context, CDBException* e, const char* detail) {
    DVN_TRACE(1, 2, context << (detail ? " " : "") << (detail ? detail : "") << " " << e->m_nRetCode
                            << " Error: " << e->m_strError << " State: " << e->m_strStateNativeOrigin);
    e->Delete();
}

int DvnConvCoreDbFe::ReportDbException(const char* context, CDBException* e, const char* detail) {
    Report(51368, DvnString(e->m_strError.c_str()));
    TraceDbException(context, e, detail);
    return LevelError;
}

// ------------------------------------------------------------------ servers

const DvnConvCoreDbFe::ServerKindRow DvnConvCoreDbFe::ServerKinds[8] = {
    {23, 3, "EXECUTION_SERVER", "ExecutionServer"},   {26, 6, "SCHEDULING_SERVER", "SchedulingServer"},
    {25, 5, "MODELLING_SERVER", "ModellingServer"},   {24, 4, "GATEWAY_SERVER", "GatewayServer"},
    {22, 2, "DISTRIBUTION_SRV", "DistributionServer"}, {21, 1, "CLEANUP_SERVER", "CleanupServer"},
    {30, 7, "PE_SERVER", "PEServer"},                 {32, 8, "USER_PE_SERVER", "UserPEServer"},
};

void DvnConvCoreDbFe::Servers(DvnString const& id) {
    for (const ServerKindRow& row : ServerKinds) Servers(row.group, id);
}
