// The null rule and links from reference columns, on rows of both databases.
#include <gtest/gtest.h>

#include <functional>

#include "dvnprocsets.h"
#include "loadrun.h"

namespace {

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
    std::vector<std::string> seen;
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
    EXPECT_EQ(seen, (std::vector<std::string>{
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
