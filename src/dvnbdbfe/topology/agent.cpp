// Load of program execution agents: the row of PE_AGENT, named by the user
// id of its person, with the link to that person and its own "PEADefault".
#include "dvnbdbfe.h"
#include "dvnstaffsets.h"
#include "dvntoposets.h"
#include "topologysettings.h"

void DvnConvCoreDbFe::PeAgent(DvnString const& id) {
    const bool all = id.IsNull() || id.str().empty();
    DvnPEASet rs(m_pDatabase);
    const long count = ReadRows(rs, all ? SelectFrom("PE_AGENT") : SelectFrom("PE_AGENT", "PE_AGENT_ID", id.c_str()),
                                [&](DvnPEASet& row) {
        // The person names the agent, as a file names it: by the user id.
        DvnPersonSet persons(m_pDatabase);
        const DvnfString userId = row.IsFieldNull(&row.m_ASSOC_USER)
                                      ? DvnfString("")
                                      : persons.GetName(row.m_ASSOC_USER, m_strTablePrefix, true);
        const DvnfString name = userId.IsEmpty() ? DvnfString(row.m_PE_AGENT_ID.c_str()) : userId;
        Report(51523, DvnString(name.c_str()));
        DvnfEntity& agent = m_pCoreData->CreateEntity(DvnfString("PEAgent"), DvnfString(row.m_PE_AGENT_ID.c_str()), name);
        if (!TakeState(agent, row.m_CHECKED_OUT)) return;
        if (!userId.IsEmpty()) {
            m_pCoreData->AddLinkByOID(agent, DvnfString("PEAHasPerson"), DvnfString("Person"),
                                      DvnfString(row.m_ASSOC_USER.c_str()));
            DvnfEntity& person = m_pCoreData->GetEntityByOID(DvnfString("Person"), DvnfString(row.m_ASSOC_USER.c_str()), false);
            if (person.IsValid() && person.Name().str().empty()) person.Name(userId);
        }
        DvnfAttributeData attributes = agent.AttributeData();
        GetPEADefaultSetting(&row, attributes);
        CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, attributes);
    });
    DVN_TRACE(3, 1, "Number of PE Agents found: " << count);
    if (count == 0 && !all) Report(51559, id);
}

void DvnConvCoreDbFe::GetPEADefaultSetting(DvnPEASet* row, DvnfAttributeData attributes) {
    for (const DvnStored::AgentSetting& s : DvnStored::AgentSettings()) {
        const long& column = row->*s.column;
        if (row->IsFieldNull(&column)) continue;
        if (s.mode) {
            const long& mode = row->*s.modeColumn;
            if (!row->IsFieldNull(&mode) && mode == 2) attributes("PEADefault")(s.attribute) = column;
            continue;
        }
        for (const auto& [given, stored] : s.map)
            if (stored == column) attributes("PEADefault")(s.attribute) = given;
    }
}
