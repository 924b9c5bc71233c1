// The extent of an activity (ACTIVITY_EXTENT: start and exit, priority,
// notification, expiration, staff assignment, activity defaults), the five
// assignment tables, and the stored forms of durations and time events.
#include <iostream>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "dvnprocsets.h"
#include "dvnstaffsets.h"
#include "processstore.h"
#include "storedforms.h"

using namespace processstore;

// ------------------------------------------------------------------ stored forms

long DvnConvCoreDbBe::SetTimeInterval(const DvnfAttributeDataReader& duration) {
    static const char* const units[] = {"Years", "Months", "Weeks", "Days", "Hours", "Minutes", "Seconds"};
    DvnStored::DurationUnits given;
    for (size_t i = 0; i < given.size(); ++i) given[i] = Given(duration(units[i]));
    return DvnStored::Seconds(given);
}

CString DvnConvCoreDbBe::SetTimeEvent(const DvnfAttributeDataReader& event) {
    return CString(DvnStored::TimeEvent(Given(event("Every")), Given(event("On")), Given(event("AtHours")),
                                        Given(event("AtMinutes"))));
}

// ------------------------------------------------------------------ extent

int DvnConvCoreDbBe::ReadActivityExtentAttributes(CDatabase& db, DvnfEntity& activity, DvnActivityExtentSet& row,
                                                  const CString& pid, const CString&, const CString& aid) {
    const DvnfAttributeDataReader attributes = static_cast<const DvnfEntity&>(activity).AttributeData();
    const DvnString activityName = activity.Name();
    int level = LevelOk;
    auto warn = [&] { level = std::max(level, static_cast<int>(LevelWarning)); };

    // 1. Start and exit.
    row.m_AID = aid;
    const DvnfAttributeDataReader start = attributes("Start");
    if (start.IsValid() && start("Manual").IsDefined())
        row.m_START_OPTION = start("Manual").AsBool(false) ? 1 : 2;
    else
        row.m_START_OPTION = attributes("Implementation")("Type").AsLong(0) == ProcessType ? 2 : 1;
    const DvnfAttributeDataReader exit = attributes("Exit");
    row.m_EXIT_OPTION = exit.IsValid() && exit("Manual").IsDefined() && exit("Manual").AsBool(false) ? 1 : 2;

    // 2. Priority.
    row.SetFieldNull(&row.m_PRIORITY);
    row.SetFieldNull(&row.m_PRIO_CONT_MEMBER);
    const DvnfAttributeDataReader priority = attributes("Priority");
    if (priority.IsValid()) {
        switch (priority("PriorityType").AsLong(0)) {
            case 1:
                row.m_PRIO_FROM_INPUT = 0;
                if (priority("FromInput").IsDefined())
                    DvnStored::SetText(row, row.m_PRIO_CONT_MEMBER, priority("FromInput").AsString("").str());
                break;
            case 2:
                row.m_PRIORITY = priority("Number").AsLong(0);
                row.m_PRIO_FROM_INPUT = 0;
                break;
            default: row.m_PRIO_FROM_INPUT = 1; break;
        }
    } else {
        row.m_PRIO_FROM_INPUT = 0;
    }

    // 3. Notification.
    for (long* member : {&row.m_NOTIF_FROM_INPUT, &row.m_FIRST_NOT_TARGET, &row.m_NOTIFICATION_INTVL,
                         &row.m_SECOND_NOT_DURAT})
        row.SetFieldNull(member);
    for (CString* member :
         {&row.m_FIRST_NOT_CONT, &row.m_FIRST_NOT_ASSGMNT, &row.m_NOT_CONT_MEMBER, &row.m_SCND_NOT_CONT_MBR})
        row.SetFieldNull(member);
    const DvnfAttributeDataReader notifyType = attributes("NotifyType");
    if (notifyType.IsValid()) {
        const long type = notifyType.AsLong(0);
        if (type == 4) {
            row.m_NOTIF_FROM_INPUT = 1;
        } else {
            if (type >= 1 && type <= 3) row.m_FIRST_NOT_TARGET = type;
            if (type == 5) {
                row.m_FIRST_NOT_TARGET = 4;
                if (attributes("NotifyPersonFromInput").IsDefined()) {
                    DvnStored::SetText(row, row.m_FIRST_NOT_CONT,
                                       attributes("NotifyPersonFromInput").AsString("").str());
                } else {
                    DvnfEntity& person = GetLink(DvnfString("NotifiedPerson"), activity, DvnfString("Person"));
                    DvnPersonSet persons(&db);
                    const CString oid = person.IsValid() ? CString(person.OID().c_str()) : CString();
                    DvnString name = person.IsValid() ? DvnString(person.Name()) : DvnString("");
                    if (name.IsEmpty() && !oid.IsEmpty()) name = persons.GetName(oid, m_strTablePrefix, false);
                    const CString key =
                        name.IsEmpty() ? CString() : persons.GetPersonID(Quoted(name), m_strTablePrefix, false);
                    if (!key.IsEmpty()) {
                        DvnStored::SetText(row, row.m_FIRST_NOT_ASSGMNT, key.str());
                    } else {
                        Report(51136, name, activityName);
                        row.SetFieldNull(&row.m_FIRST_NOT_TARGET);
                        row.SetFieldNull(&row.m_FIRST_NOT_ASSGMNT);
                        warn();
                        if (!oid.IsEmpty() && !persons.GetName(oid, m_strTablePrefix, false).IsEmpty())
                            DvnStored::SetText(row, row.m_FIRST_NOT_ASSGMNT, oid.str());
                    }
                }
            }
            if (attributes("NotificationFromInput").IsDefined())
                DvnStored::SetText(row, row.m_NOT_CONT_MEMBER, attributes("NotificationFromInput").AsString("").str());
            else
                row.m_NOTIFICATION_INTVL = SetTimeInterval(attributes("NotifyDuration"));
            if (attributes("DecisionFromInput").IsDefined())
                DvnStored::SetText(row, row.m_SCND_NOT_CONT_MBR, attributes("DecisionFromInput").AsString("").str());
            else if (attributes("DecisionDuration").IsValid())
                row.m_SECOND_NOT_DURAT = SetTimeInterval(attributes("DecisionDuration"));
        }
    }

    // 4. Expiration.
    row.SetFieldNull(&row.m_EXPIR_CONT_MEMBER);
    row.SetFieldNull(&row.m_EXPIRATION_INTVL);
    if (attributes("ExpirationFromInput").IsDefined())
        DvnStored::SetText(row, row.m_EXPIR_CONT_MEMBER, attributes("ExpirationFromInput").AsString("").str());
    else if (attributes("ExpirationDuration").IsValid())
        row.m_EXPIRATION_INTVL = SetTimeInterval(attributes("ExpirationDuration"));

    // 5. The assignment rows are written anew.
    if (activity.State() != StateNew) {
        level = std::max(level, DeleteActByPerson(db, aid));
        level = std::max(level, DeleteActByPersonFromCont(db, aid));
        level = std::max(level, DeleteActByRole(db, aid));
        level = std::max(level, DeleteActByRoleFromCont(db, aid));
    }

    // 6. Staff assignment.
    row.SetFieldNull(&row.m_ORGANIZATION);
    const DvnfAttributeDataReader doneBy = attributes("DoneBy");
    if (!doneBy.IsValid()) {
        row.m_DONE_BY = 12;
    } else {
        const long assignType = doneBy("AssignType").AsLong(0);
        row.m_DONE_BY = assignType >= 1 && assignType <= 12 ? assignType : 12;

        auto saveRole = [&](DvnfEntity& role) {
            DvnString name;
            const CString key = ResolveKey<DvnRoleSet>(db, role, m_strTablePrefix, "System administrator",
                                                       &DvnRoleSet::GetRoleID, name, &m_processKeys);
            if (key.IsEmpty()) {
                Report(51132, name);
                warn();
            } else {
                level = std::max(level, SaveActByRole(db, key, aid));
            }
        };
        // An organization found by name, or by the name of its key; an
        // unknown one: 51131. False: the link names nothing.
        auto organization = [&](const char* link) {
            DvnfEntity& target = GetLink(DvnfString(link), activity, DvnfString("Organization"));
            if (!target.IsValid()) return false;
            DvnOrganizationSet organizations(&db);
            DvnString name = target.Name();
            if (name.IsEmpty() && target.HasOID())
                name = organizations.GetName(target.OID().c_str(), m_strTablePrefix, false);
            if (name.IsEmpty()) return false;
            const CString key = organizations.GetOrganizationID(Quoted(name), m_strTablePrefix, false);
            if (key.IsEmpty()) {
                Report(51131, name);
                warn();
            } else {
                DvnStored::SetText(row, row.m_ORGANIZATION, key.str());
                row.SetFieldNull(&row.m_ORG_CONT_MEMBER);
            }
            return true;
        };
        // An activity named by its path of blocks, outermost first.
        auto byPath = [&](const char* attribute, CString& column) {
            const DvnfAttributeDataReader path = doneBy(attribute);
            if (!path.IsDefined()) return;
            const DvnString text = path.AsString("");
            DvnActivitySet activities(&db);
            CString found;
            DvnString::Tokenizer tokens(text, '.');
            while (!tokens.Empty()) {
                found = activities.GetAID(Quoted(tokens.Next()), pid, found, m_strTablePrefix);
                if (found.IsEmpty()) break;
            }
            if (found.IsEmpty()) {
                Report(51130, text);
                warn();
            }
            DvnStored::SetText(row, column, found.str());
        };

        switch (assignType) {
            case 1: {
                bool levelFrom = true;
                if (doneBy("LevelFrom").IsDefined())
                    row.m_MIN_LEVEL = doneBy("LevelFrom").AsLong(0);
                else if (doneBy("LevelFromFromInput").IsDefined())
                    DvnStored::SetText(row, row.m_MIN_LVL_CONT_MBR, doneBy("LevelFromFromInput").AsString("").str());
                else
                    levelFrom = false;
                if (levelFrom) {
                    if (doneBy("LevelTo").IsDefined())
                        row.m_MAX_LEVEL = doneBy("LevelTo").AsLong(0);
                    else if (doneBy("LevelToFromInput").IsDefined())
                        DvnStored::SetText(row, row.m_MAX_LVL_CONT_MBR, doneBy("LevelToFromInput").AsString("").str());
                }
                const bool fromInput = doneBy("OrganizationFromInput").IsDefined();
                if (!activity.FirstLinkOfType(DvnfString("DoneByOrg")).IsValid() && fromInput)
                    DvnStored::SetText(row, row.m_ORG_CONT_MEMBER, doneBy("OrganizationFromInput").AsString("").str());
                else
                    organization("DoneByOrg");
                if (!row.m_ORGANIZATION.IsEmpty() || fromInput) {
                    const DvnfAttributeDataReader include = doneBy("IncludeType");
                    const long value = include.IsDefined() ? include.AsLong(0) : 1;
                    row.m_INCL_CHILD_ORG = value == 1 ? 1 : value == 2 ? 2 : 3;
                }
                DvnfLinkTypeIterator roles = activity.LinksOfType(DvnfString("DoneByRoleMember"));
                for (const DvnfLink* link = &roles.First(); link->IsValid(); link = &roles.Next())
                    saveRole(link->Target());
                if (doneBy("MembersFromInput").IsDefined()) {
                    DvnfDataSetIterator members = doneBy("MembersFromInput").ElementsOfSet();
                    if (!members.IsValid()) {
                        Report(51168, activityName);
                        warn();
                    }
                    for (DvnfAttributeDataReader m = members.First(); m.IsValid(); m = members.Next())
                        if (!m.AsString("").IsEmpty())
                            level = std::max(level, SaveActByRoleFromCont(db, m.AsString("").c_str(), aid));
                }
                break;
            }
            case 2: {
                const DvnfLink& coordinator = activity.FirstLinkOfType(DvnfString("DoneByRoleCoordinator"));
                if (coordinator.IsValid()) {
                    saveRole(coordinator.Target());
                } else if (doneBy("CoordinatorFromInput").IsDefined()) {
                    level = std::max(
                        level, SaveActByRoleFromCont(db, doneBy("CoordinatorFromInput").AsString("").c_str(), aid));
                } else {
                    Report(51168, activityName);
                    warn();
                }
                break;
            }
            case 3: {
                DvnfLinkTypeIterator persons = activity.LinksOfType(DvnfString("DoneByPerson"));
                for (const DvnfLink* link = &persons.First(); link->IsValid(); link = &persons.Next()) {
                    DvnString name;
                    const CString key = ResolveKey<DvnPersonSet>(db, link->Target(), m_strTablePrefix, "ADMIN",
                                                                 &DvnPersonSet::GetPersonID, name, &m_processKeys);
                    if (!key.IsEmpty()) level = std::max(level, SaveActByPerson(db, key, aid));
                }
                DvnfDataSetIterator members = doneBy("PersonsFromInput").ElementsOfSet();
                for (DvnfAttributeDataReader m = members.First(); m.IsValid(); m = members.Next())
                    if (!m.AsString("").IsEmpty())
                        level = std::max(level, SaveActByPersonFromCont(db, m.AsString("").c_str(), aid));
                break;
            }
            case 8: byPath("StarterOf", row.m_STARTER_OF_AID); break;
            case 9: byPath("MgrStarterOf", row.m_MANAGER_OF_S_AID); break;
            case 10: byPath("NotStarterOf", row.m_XCL_STARTER_OF_AID); break;
            case 11:
                if (!organization("DoneByMgrOrganization") && doneBy("MgrOrganizationFromInput").IsDefined())
                    DvnStored::SetText(row, row.m_ORG_CONT_MEMBER,
                                       doneBy("MgrOrganizationFromInput").AsString("").str());
                break;
            default: break;  // 4 to 7, 12 and anything else: DONE_BY only
        }
    }

    // 7. Activity defaults.
    const DvnfAttributeDataReader defaults = attributes("ActivityDefault");
    ReadActivityDefaults(row, defaults);
    return level;
}

// ------------------------------------------------------------------ assignment rows

// The second column is compared with "=": exact and case-sensitive on every
// database, so that no text matches another row (docs/schema.md).
template <class Set>
int DvnConvCoreDbBe::SaveActRelation(CDatabase& db, const char* table, const char* column, CString Set::*member,
                                     const CString& value, const CString& aid, const char* notAdded) {
    Set row(&db);
    row.m_strFilter = CString("AID = ") + Quoted(aid) + " AND " + column + " = " + Quoted(value);
    try {
        row.Open(CRecordset::snapshot, Table(table), CRecordset::none);
        if (row.IsEOF()) {
            if (!row.CanAppend()) {
                row.Close();
                DVN_TRACE(1, 2, notAdded);
                return LevelError;
            }
            row.AddNew();
            row.m_AID = aid;
            row.*member = value;
            row.Update();
        } else {
            DVN_TRACE(3, 2, notAdded << ", already exists");
        }
    } catch (CDBException* e) {
        return ReportDbException(e, "opening", table, &row);
    }
    row.Close();
    return LevelOk;
}

int DvnConvCoreDbBe::DeleteActRelation(CDatabase& db, const char* table, const CString& aid) {
    return DeleteObject(db, CString("DELETE FROM ") + Table(table) + " WHERE AID = " + Quoted(aid), table);
}

int DvnConvCoreDbBe::SaveActByPerson(CDatabase& db, const CString& personId, const CString& aid) {
    return SaveActRelation(db, "ACTIVITY_BY_PERSON", "PERSON_ID", &DvnActivityByPersonSet::m_PERSON_ID, personId,
                           aid, "Activity_by_Person not added");
}

int DvnConvCoreDbBe::SaveActByPersonFromCont(CDatabase& db, const CString& member, const CString& aid) {
    return SaveActRelation(db, "ACT_BY_PERS_F_CONT", "CONTAINER_MEMBER", &DvnActByPersonContMSet::m_CONTAINER_MEMBER,
                           member, aid, "Activity_by_Person container member not added");
}

int DvnConvCoreDbBe::SaveActByRole(CDatabase& db, const CString& roleId, const CString& aid) {
    return SaveActRelation(db, "ACTIVITY_BY_ROLE", "ROLE", &DvnActivityByRoleSet::m_ROLE, roleId, aid,
                           "Activity_by_Role not added");
}

int DvnConvCoreDbBe::SaveActByRoleFromCont(CDatabase& db, const CString& member, const CString& aid) {
    return SaveActRelation(db, "ACT_BY_ROLE_F_CONT", "CONTAINER_MEMBER", &DvnActByRoleContMSet::m_CONTAINER_MEMBER,
                           member, aid, "Activity_by_Role container member not added");
}

int DvnConvCoreDbBe::SaveActSupportTools(CDatabase& db, const CString& programId, const CString& aid) {
    return SaveActRelation(db, "ACT_HAS_SUP_TOOL", "PROGRAM_ID", &DvnSupportToolsSet::m_PROGRAM_ID, programId, aid,
                           "Support tool not added");
}

int DvnConvCoreDbBe::DeleteActByPerson(CDatabase& db, const CString& aid) {
    return DeleteActRelation(db, "ACTIVITY_BY_PERSON", aid);
}

int DvnConvCoreDbBe::DeleteActByPersonFromCont(CDatabase& db, const CString& aid) {
    return DeleteActRelation(db, "ACT_BY_PERS_F_CONT", aid);
}

int DvnConvCoreDbBe::DeleteActByRole(CDatabase& db, const CString& aid) {
    return DeleteActRelation(db, "ACTIVITY_BY_ROLE", aid);
}

int DvnConvCoreDbBe::DeleteActByRoleFromCont(CDatabase& db, const CString& aid) {
    return DeleteActRelation(db, "ACT_BY_ROLE_F_CONT", aid);
}

int DvnConvCoreDbBe::DeleteActSupportTools(CDatabase& db, const CString& aid) {
    return DeleteActRelation(db, "ACT_HAS_SUP_TOOL", aid);
}
