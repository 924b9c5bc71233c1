// The rights of a logged-in user gate the sections of an import.
#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <sstream>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnfcorn.h"
#include "repositorydb.h"
#include "staffrows.h"

namespace {

class ImportGate : public RepositoryTest {
protected:
    void PrepareSchema() override {
        RepositoryTest::PrepareSchema();
        AddSystemGroup(Db(), "G1", "SYS_GRP");
        AddPerson(Db(), {.id = "P1", .userId = "STAFFER", .systemGroup = "G1", .password = "s", .staff = 1});
        AddPerson(Db(), {.id = "P2", .userId = "MODELLER", .systemGroup = "G1", .password = "m",
                         .processModeling = 1});
    }
    void SetUp() override {
        RepositoryTest::SetUp();
        DvnfMessageHandler::DefaultOutput(&m_messages);
        m_file = (std::filesystem::temp_directory_path() / ("dvn_gate_" + std::to_string(getpid()) + ".trx")).string();
        std::ofstream(m_file) << "Category \"Claims\" {}\nCategory \"Loans\" { Description = \"Credit\"; }\n";
    }
    void TearDown() override {
        DvnfMessageHandler::DefaultOutput(nullptr);
        DvnBTAuthorization::DestroyInstance();
        std::filesystem::remove(m_file);
        RepositoryTest::TearDown();
    }
    int ImportAs(const char* userId, bool initialLoad) {
        DvnMessageTarget target;
        DvnBTAuthorization* auth = DvnBTAuthorization::GetInstance();
        auth->SetUser(target, DvnString("SYS_GRP"), DvnString(userId), DvnString(), DvnString(), DvnString(DataSource()));
        EXPECT_EQ(auth->UserID(), DvnString(userId));
        m_messages.str("");
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        int level = facade.ImportTRX(DvnString(m_file), DvnString(DataSource()), true, true, initialLoad);
        out = testing::internal::GetCapturedStdout();
        return level;
    }
    std::vector<std::string> Categories() {
        return QueryRows(Db(), "SELECT NAME, DESCRIPTION FROM " + prefix.str() + "CATEGORY ORDER BY NAME");
    }
    // The reported messages, the parser's own remarks (52xxx) aside.
    std::string Messages() const {
        std::istringstream in(m_messages.str());
        std::string kept;
        for (std::string line; std::getline(in, line);)
            if (line.compare(0, 2, "52") != 0) kept += line + "\n";
        return kept;
    }

    std::string out;

private:
    std::ostringstream m_messages;
    std::string m_file;
};

TEST_P(ImportGate, CategoriesNeedTheModellingRightOrAnInitialLoad) {
    // Staff rights do not cover categories: one refusal, a warning, nothing stored.
    EXPECT_EQ(ImportAs("STAFFER", false), 4);
    EXPECT_EQ(Messages(), DvnfMessageHandler::Format(51165, DvnString("Category")).str() + "\n");
    EXPECT_NE(out.find("Warnings found during import."), std::string::npos);
    EXPECT_TRUE(Categories().empty());

    // The same user with an initial load holds every right.
    EXPECT_EQ(ImportAs("STAFFER", true), 0);
    EXPECT_EQ(Categories(), (std::vector<std::string>{"Claims|<null>", "Loans|Credit"}));
    ExecAll(Db(), {"DELETE FROM DVBT.CATEGORY"});

    // The modelling right stores them without an initial load.
    EXPECT_EQ(ImportAs("MODELLER", false), 0);
    EXPECT_EQ(Categories(), (std::vector<std::string>{"Claims|<null>", "Loans|Credit"}));
}

}  // namespace

DVN_INSTANTIATE_BOTH_BACKENDS(ImportGate);
