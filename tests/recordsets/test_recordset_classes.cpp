// The recordset classes as the stores and loads rely on them: one class per
// table, counts, and the orders that differ from "own columns first".
#include <gtest/gtest.h>

#include <set>
#include <typeindex>

#include "dvnrecordsets.h"
#include "dvnschema.h"

namespace {

std::vector<std::string> Names(CRecordset&& rs) {
    std::vector<std::string> names;
    for (const auto& f : rs.DescribeFields()) names.push_back(f.name);
    return names;
}

template <class T>
void ExpectCountMatchesExchange(int expected) {
    T rs(nullptr);
    EXPECT_EQ(rs.m_nFields, expected) << typeid(T).name();
    EXPECT_EQ(static_cast<int>(rs.DescribeFields().size()), rs.m_nFields) << typeid(T).name();
    EXPECT_EQ(rs.m_nDefaultType, CRecordset::snapshot);
}

TEST(RecordsetClasses, EightyOneTablesServedBySeventyFiveClassesWithCountsEqualToTheirExchange) {
    std::set<std::type_index> classes;
    std::set<std::string> names;
    for (const auto& t : DvnSchema::Tables()) {
        auto rs = t.make(nullptr);
        classes.insert(typeid(*rs));
        names.insert(t.name);
        EXPECT_EQ(static_cast<int>(rs->DescribeFields().size()), rs->m_nFields) << t.name;
        std::set<std::string> distinct;
        for (const auto& f : rs->DescribeFields()) EXPECT_TRUE(distinct.insert(f.name).second) << t.name << " " << f.name;
    }
    EXPECT_EQ(names.size(), 81u);
    EXPECT_EQ(classes.size(), 75u);

    // Counts stated for the classes, and the classes without a table.
    ExpectCountMatchesExchange<DvnDomainSet>(5 + 28);
    ExpectCountMatchesExchange<DvnSystemGroupSet>(7 + 28);
    ExpectCountMatchesExchange<DvnSystemSet>(10 + 28);
    ExpectCountMatchesExchange<DvnTopologyCommonSet>(28);
    ExpectCountMatchesExchange<DvnSystemSvsSet>(1 + 26);
    ExpectCountMatchesExchange<DvnProcessGraphAttrSet>(20 + 9);
    ExpectCountMatchesExchange<DvnBlockActivitySet>(2 + 9);
    ExpectCountMatchesExchange<DvnGraphAttrSet>(9);
    ExpectCountMatchesExchange<DvnPlatformSet>(11);
    ExpectCountMatchesExchange<DvnOPlatformSet>(11 + 3);
    ExpectCountMatchesExchange<DvnServerSet>(16);
    ExpectCountMatchesExchange<DvnPEServerSet>(16 + 10);
    ExpectCountMatchesExchange<DvnListSet>(10);
    ExpectCountMatchesExchange<DvnWListSet>(11);
    ExpectCountMatchesExchange<DvnPersonSet>(28);
    ExpectCountMatchesExchange<DvnActivityExtentSet>(38);
    ExpectCountMatchesExchange<DvnSimplePrcSet>(4);
    ExpectCountMatchesExchange<DvnAct2Set>(2);
    ExpectCountMatchesExchange<DvnExternalDomainSet>(14);
}

TEST(RecordsetClasses, OrdersOfDerivedClassesAndTheirMembersStartEmpty) {
    using V = std::vector<std::string>;
    // Own columns first, the base's last.
    auto graph = Names(DvnBlockActivitySet(nullptr));
    EXPECT_EQ(V(graph.begin(), graph.begin() + 3), (V{"AID", "RETURN_CODE_SET", "ZOOM_FACTOR"}));
    EXPECT_EQ(graph.back(), "SHOW_TEXT_ANNOTAT");
    auto level = Names(DvnSystemGroupSvrSet(nullptr));
    EXPECT_EQ(V(level.begin(), level.begin() + 2), (V{"SYSTEM_GROUP_ID", "SERVER_TYPE"}));
    auto domain = Names(DvnDomainSet(nullptr));
    EXPECT_EQ(domain[4], "MAX_MSG_SIZE");
    EXPECT_EQ(domain[5], "SYSTEM_QUALIFIER");
    // Platform tables: the base's columns first.
    auto nk2 = Names(DvnOPlatformSet(nullptr));
    EXPECT_EQ(nk2.front(), "PATH_AND_FILE_NAME");
    EXPECT_EQ(V(nk2.end() - 3, nk2.end()), (V{"AUTOMATIC_CLOSE", "START_IN_FOREGRND", "STYLE"}));
    // Servers: the base's first twelve, the class's own, the base's last four.
    auto pes = Names(DvnPEServerSet(nullptr));
    EXPECT_EQ(pes[11], "EXTRNL_CNTRL_CNTXT");
    EXPECT_EQ(pes[12], "PLATFORM");
    EXPECT_EQ(pes[21], "MAX_DLLS_LOADED");
    EXPECT_EQ(V(pes.end() - 4, pes.end()), (V{"CHECKED_OUT", "CHECKED_OUT_BY", "DESCRIPTION", "DOCUMENTATION"}));
    auto dist = Names(DvnDistributionServerSet(nullptr));
    EXPECT_EQ(dist[12], "DIST_RECEIVE_TIME");
    // WORK_LIST: BEEP_OPTION between SORT_CRITERIA and THRESHOLD.
    auto work = Names(DvnWListSet(nullptr));
    EXPECT_EQ(V(work.begin() + 5, work.begin() + 8), (V{"SORT_CRITERIA", "BEEP_OPTION", "THRESHOLD"}));
    // Server rows mark CHECKED_OUT as a long, other topology rows as an int.
    auto kinds = [](CRecordset&& rs, const std::string& column) {
        for (const auto& f : rs.DescribeFields())
            if (f.name == column) return f.kind;
        return CFieldInfo::Kind(-1);
    };
    EXPECT_EQ(kinds(DvnCleanupServerSet(nullptr), "CHECKED_OUT"), CFieldInfo::Long);
    EXPECT_EQ(kinds(DvnAdminServerSet(nullptr), "CHECKED_OUT"), CFieldInfo::Long);
    EXPECT_EQ(kinds(DvnNodeSet(nullptr), "CHECKED_OUT"), CFieldInfo::Int);
    // Only container values are 32672 long.
    for (const auto& t : DvnSchema::Tables())
        for (const auto& f : DvnSchema::Columns(t))
            EXPECT_EQ(f.maxLength == 32672, f.name == "INITIAL_VALUE") << t.name << " " << f.name;

    // Spellings the repositories hold and that must not be "corrected".
    EXPECT_EQ(kinds(DvnControlBendpointSet(nullptr), "SEQUENCENO"), CFieldInfo::Long);
    EXPECT_EQ(kinds(DvnDataBendpointSet(nullptr), "SEQUENCENO"), CFieldInfo::Long);
    EXPECT_EQ(kinds(DvnDataStructureMbrSet(nullptr), "SEQUENCE_NO"), CFieldInfo::Long);
    EXPECT_EQ(kinds(DvnExternalDomainSet(nullptr), "MODLEVEL"), CFieldInfo::Long);
    EXPECT_EQ(kinds(DvnUPEServerSet(nullptr), "MOD_LEVEL"), CFieldInfo::Long);
    EXPECT_EQ(kinds(DvnBundleActivitySet(nullptr), "RETUN_CODE_SETTING"), CFieldInfo::Long);
    EXPECT_EQ(kinds(DvnBlockActivitySet(nullptr), "RETURN_CODE_SET"), CFieldInfo::Long);

    DvnProcessSet process(nullptr);
    EXPECT_TRUE(process.m_PID.IsEmpty());
    EXPECT_EQ(process.m_RC_CREATION, 0);
    EXPECT_EQ(process.m_CHECKED_OUT, 0);
    EXPECT_EQ(DvnBundleActivitySet(nullptr).m_RETUN_CODE_SETTING, 0);
    EXPECT_EQ(DvnListSet(nullptr).GetDefaultSQL(), "[DVBT_ACT_INSTANCE_LIST]");
    EXPECT_EQ(DvnPlatformSet(nullptr).GetDefaultSQL(), "[DVBT_WINNT_EXTENT]");
}

}  // namespace
