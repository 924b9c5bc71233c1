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

TEST(LoadFrame, ColoursComeBackFromTheirNineDigits) {
    const struct {
        long value;
        const char* parts;
    } cases[] = {
        {255000128, "Red=255 Green=0 Blue=128"},
        {0, "Red=0 Green=0 Blue=0"},
        {255, "Red=0 Green=0 Blue=255"},  // below 1000: still nine digits
        {1002003, "Red=1 Green=2 Blue=3"},
    };
    Scratch s;
    for (const auto& c : cases) {
        s.fe.GetColor(c.value, s.Group("Color"));
        EXPECT_EQ(s.Read("Color", {"Red", "Green", "Blue"}), c.parts) << c.value;
    }
}

TEST(LoadFrame, AFontSetsOnlyWhatItsColumnsHold) {
    const struct {
        long size, style;
        const char* descriptor;
        const char* expected;
    } cases[] = {
        {-1, -1, "", "Name=Arial"},  // size and style NULL
        {10, 1, "bold", "Name=Arial Size=10 Style=1 Descriptor=bold"},
        {0, 2, "", "Name=Arial Size=0 Style=2"},
        {12, 3, "", "Name=Arial Size=12"},  // a style other than 1 and 2 is not set
    };
    for (const auto& c : cases) {
        Scratch s;
        s.fe.GetFontSetting("Arial", c.size, c.style, c.descriptor, s.Group("Font"));
        EXPECT_EQ(s.Read("Font", {"Name", "Size", "Style", "Descriptor"}), c.expected) << c.size << "/" << c.style;
    }
}

TEST(LoadFrame, PeriodsComeBackAsSeconds) {
    const std::pair<long, const char*> cases[] = {
        {0, "Type=0"}, {999999999, "Type=1"}, {3600, "Type=2 Seconds=3600"},
    };
    for (const auto& [value, expected] : cases) {
        Scratch s;
        s.fe.GetTimePeriod(value, s.Group("Period"));
        EXPECT_EQ(s.Read("Period", {"Type", "Seconds"}), expected) << value;
    }
}

TEST(LoadFrame, TimeEventsAreReadWordByWord) {
    const std::pair<const char*, const char*> cases[] = {
        {"EVERY MONTH ON FRIDAY AT 9.30", "AnyTime=false Every=2 On=5 AtHours=9 AtMinutes=30"},
        {" AT 7.05", "AnyTime=false AtHours=7 AtMinutes=5"},
        {"AT 30", "AnyTime=false"},  // two characters are too few for a time
        {"AT 12:15", "AnyTime=false AtHours=12 AtMinutes=15"},
        {"EVERY DAY", "AnyTime=false Every=1"},
        {"EVERY WEEK ON SUNDAY", "AnyTime=false Every=3 On=7"},
        {"EVERY YEAR AT 23.5", "AnyTime=false Every=4 AtHours=23"},  // one digit left: no minutes
        {"ANYTIME", "AnyTime=true"},
        {"", ""},
        {"SOMETIMES", ""},
        // The store's text for a weekday without a period: no word after
        // "EVERY" is a period, and "ON" is not at the front.
        {"EVERY WEDNESDAY", ""},
    };
    const std::initializer_list<const char*> names = {"AnyTime", "Every", "On", "AtHours", "AtMinutes"};
    for (const auto& [text, expected] : cases) {
        Scratch s;
        CString stored(text);
        s.fe.GetTimeEvent(stored, s.Group("Event"));
        EXPECT_EQ(s.Read("Event", names), expected) << '"' << text << '"';
    }
    // "ANYTIME" removes what was there.
    Scratch s;
    DvnfAttributeData event = s.Group("Event");
    event("Every") = 2L;
    event("AtHours") = 8L;
    CString anytime("ANYTIME");
    s.fe.GetTimeEvent(anytime, event);
    EXPECT_EQ(s.Read("Event", names), "AnyTime=true");
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
