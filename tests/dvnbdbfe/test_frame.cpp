// The frame of the loads: row marks to states, the stored forms undone
// (colours, fonts, periods, time events), who owns the core data, and the
// null rule and links from reference columns on rows of both databases.
#include <gtest/gtest.h>

#include <functional>

#include "dvnprocsets.h"
#include "loadrun.h"

namespace {

// A scratch group to convert into.
struct Scratch {
    DvnfTRXData data{DvnfTRXTypes::_instance, nullptr};
    DvnConvCoreDbFe fe{nullptr, &data};
    DvnfEntity& entity = data.CreateEntity(DvnfString("Category"), DvnfString(""), DvnfString("scratch"));
    DvnfAttributeData Group(const char* name) { return entity.AttributeData()(name); }
    std::string Read(const char* name, std::initializer_list<const char*> names) {
        return Defined(static_cast<const DvnfEntity&>(entity).AttributeData()(name), names);
    }
};

TEST(LoadFrame, RowMarksBecomeStates) {
    const std::pair<int, DvnfObject::State_t> cases[] = {
        {0, 3}, {1, 4}, {2, 2}, {3, 4}, {4, 1}, {5, 2}, {9, 3}, {6, 3}, {-1, 3},
    };
    DvnfTRXData data;
    TestableFe fe(nullptr, &data);
    for (const auto& [mark, state] : cases) {
        EXPECT_EQ(DvnConvCoreDbFe::GetState(mark), state) << "mark " << mark;
        // An entity made from a row takes it, and only a tombstone ends the row.
        DvnfEntity& entity = data.CreateEntity(DvnfString("Process"), DvnfString(""), DvnfString("P"));
        EXPECT_EQ(fe.TakeState(entity, mark), state != DvnfObject::StateDeleted);
        EXPECT_EQ(entity.State(), state);
        // What a process holds has its state.
        DvnfEntity& activity = data.CreateProgramActivityByOID(entity.AttributeData()("Diagram"), DvnfString(""));
        fe.TakeParentState(activity, entity);
        EXPECT_EQ(activity.State(), state);
    }
    // The undefined entity keeps its state and the row goes on.
    EXPECT_TRUE(fe.TakeState(DvnfEntity::undefined, 4));
    EXPECT_EQ(DvnfEntity::undefined.State(), 0);
}

TEST(LoadFrame, StoredFormsComeBackAsTheirGroups) {
    using Convert = std::function<void(DvnConvCoreDbFe&, DvnfAttributeData)>;
    auto event = [](const char* text) -> Convert {
        return [text](DvnConvCoreDbFe& fe, DvnfAttributeData group) {
            CString stored(text);
            fe.GetTimeEvent(stored, group);
        };
    };
    auto font = [](long size, long style, const char* descriptor) -> Convert {
        return [=](DvnConvCoreDbFe& fe, DvnfAttributeData group) {
            fe.GetFontSetting("Arial", size, style, descriptor, group);
        };
    };
    auto colour = [](long value) -> Convert { return [=](auto& fe, auto group) { fe.GetColor(value, group); }; };
    auto period = [](long value) -> Convert { return [=](auto& fe, auto group) { fe.GetTimePeriod(value, group); }; };
    const std::vector<std::pair<Convert, const char*>> cases = {
        // Colours from their nine digits, also below 1000.
        {colour(255000128), "Red=255 Green=0 Blue=128"},
        {colour(1002003), "Red=1 Green=2 Blue=3"},
        {colour(255), "Red=0 Green=0 Blue=255"},
        // A font sets only what its columns hold: size and style NULL; a
        // style other than 1 and 2 is not set.
        {font(-1, -1, ""), "Name=Arial"},
        {font(10, 1, "bold"), "Name=Arial Size=10 Style=1 Descriptor=bold"},
        {font(0, 2, ""), "Name=Arial Size=0 Style=2"},
        {font(12, 3, ""), "Name=Arial Size=12"},
        // Periods: none, forever, seconds.
        {period(0), "Type=0"},
        {period(999999999), "Type=1"},
        {period(3600), "Type=2 Seconds=3600"},
        // Time events word by word.
        {event("EVERY MONTH ON FRIDAY AT 9.30"), "AnyTime=false Every=2 On=5 AtHours=9 AtMinutes=30"},
        {event(" AT 7.05"), "AnyTime=false AtHours=7 AtMinutes=5"},
        {event("AT 30"), "AnyTime=false"},  // two characters are too few for a time
        {event("AT 12:15"), "AnyTime=false AtHours=12 AtMinutes=15"},
        {event("EVERY WEEK ON SUNDAY"), "AnyTime=false Every=3 On=7"},
        {event("EVERY YEAR AT 23.5"), "AnyTime=false Every=4 AtHours=23"},  // one digit left: no minutes
        {event("ANYTIME"), "AnyTime=true"},
        {event(""), ""},
        {event("SOMETIMES"), ""},
        // The store's text for a weekday without a period: no word after
        // "EVERY" is a period, and "ON" is not at the front.
        {event("EVERY WEDNESDAY"), ""},
    };
    const std::initializer_list<const char*> names = {"Red", "Green", "Blue", "Name", "Size", "Style", "Descriptor",
                                                      "Type", "Seconds", "AnyTime", "Every", "On", "AtHours",
                                                      "AtMinutes"};
    for (size_t i = 0; i < cases.size(); ++i) {
        Scratch s;
        cases[i].first(s.fe, s.Group("G"));
        EXPECT_EQ(s.Read("G", names), cases[i].second) << "case " << i;
    }
    // "ANYTIME" removes what was there.
    Scratch s;
    DvnfAttributeData group = s.Group("G");
    group("Every") = 2L;
    group("AtHours") = 8L;
    event("ANYTIME")(s.fe, group);
    EXPECT_EQ(s.Read("G", names), "AnyTime=true");
}

TEST(LoadFrame, OwnCoreDataDiesWithTheObjectAndTheCallersStays) {
    DvnfTRXData data;
    {
        DvnConvCoreDbFe fe(nullptr, &data);
        EXPECT_EQ(fe.CoreData(), &data);
    }
    data.CreateEntity(DvnfString("Category"), DvnfString(""), DvnfString("still here"));
    EXPECT_EQ(data.GetEntities(DvnfString("Category")).size(), 1u);
    // Its own core data is made with a handler and freed (the sanitizer run
    // would find a leak).
    DvnConvCoreDbFe own(nullptr, nullptr);
    ASSERT_NE(own.CoreData(), nullptr);
    EXPECT_NE(own.CoreData()->MessageHandler(), nullptr);
}

class ColumnsFe : public TestableFe {
public:
    using TestableFe::TestableFe;
    // The columns of a PROCESS row as a load would copy them.
    void Copy(DvnProcessSet& row, DvnfEntity& process) {
        DvnfAttributeData a = process.AttributeData();
        CopyFlag(row, row.m_PROMPT_AT_PRC_STRT, a("PromptAtProcessStart"));
        CopyLong(row, row.m_RC_CREATION, a("RcCreation"));
        CopyTexts(row, row.m_DESCRIPTION, row.m_DOCUMENTATION, a);
        LinkByOID(process, "ProcessHasCategory", "Category", row, row.m_CATID);
        LinkByName(process, "ProcessHasOrganization", "Organization", row, row.m_ORGANIZATION);
    }
    long Read(const CString& statement, const std::function<void(DvnProcessSet&)>& onRow) {
        DvnProcessSet rs(m_pDatabase);
        return ReadRows(rs, statement, onRow);
    }
};

class NullRule : public RepositoryTest {};

TEST_P(NullRule, ANullColumnSetsNothingAndAReferenceBecomesALinkToASkeleton) {
    ExecAll(Db(), {"INSERT INTO DVBT.PROCESS (PID, NAME, CATID, ORGANIZATION, RC_CREATION, PROMPT_AT_PRC_STRT, "
                   "CHECKED_OUT, DESCRIPTION, DOCUMENTATION) VALUES "
                   "('P1', 'One', 'C9', 'Org A', 0, 7, 0, 'd', 'doc'), "
                   "('P2', 'Two', NULL, NULL, 2, 0, 0, NULL, NULL), "
                   "('P3', 'Three', NULL, NULL, NULL, NULL, 0, NULL, NULL)"});
    DvnfTRXData data;
    ColumnsFe fe(&Db(), &data);
    fe.SetTablePrefix("DVBT.");
    Lines seen;
    const long count = fe.Read("SELECT * FROM DVBT.PROCESS ORDER BY PID", [&](DvnProcessSet& row) {
        DvnfEntity& process = data.CreateEntity(DvnfString("Process"), DvnfString(row.m_PID.c_str()),
                                                DvnfString(row.m_NAME.c_str()));
        fe.Copy(row, process);
        const DvnfEntity& p = process;
        std::string line = Defined(p.AttributeData(), {"PromptAtProcessStart", "RcCreation", "Description",
                                                       "Documentation"});
        for (const char* link : {"ProcessHasCategory", "ProcessHasOrganization"}) {
            const DvnfLink& l = p.FirstLinkOfType(link);
            if (l.IsValid()) line += std::string("|") + link + "=" + l.Target().OID().str() + "/" +
                                     l.Target().Name().str() + "/" + std::to_string(l.Target().State());
        }
        seen.push_back(line);
    });
    EXPECT_EQ(count, 3);
    EXPECT_EQ(seen, (Lines{
                        "PromptAtProcessStart=true RcCreation=0 Description=d Documentation=doc"
                        "|ProcessHasCategory=C9//0|ProcessHasOrganization=/Org A/0",
                        "PromptAtProcessStart=false RcCreation=2",
                        "",
                    }));
    // No row: no call, and the count says so.
    EXPECT_EQ(fe.Read("SELECT * FROM DVBT.PROCESS WHERE PID = 'none'", [](DvnProcessSet&) { FAIL(); }), 0);
}

DVN_INSTANTIATE_BOTH_BACKENDS(NullRule);

}  // namespace
