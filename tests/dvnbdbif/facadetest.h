// A repository that the machine profile's data source names, as the
// facade's operations open it, with core data and the messages reported
// into it.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "backendrun.h"
#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "repositorydb.h"
#include "testenv.h"

// A file of tests/data/dvnbdbif as text.
inline std::string DataText(const char* name) {
    std::ostringstream text;
    text << std::ifstream(std::string(DVN_SOURCE_DIR) + "/tests/data/dvnbdbif/" + name).rdbuf();
    return text.str();
}

class FacadeTest : public RepositoryTest {
protected:
    using Lines = std::vector<std::string>;
    void SetUp() override {
        RepositoryTest::SetUp();
        DvnProfile::SetOverride("BTODBCDataSourceName", DvnString(DataSource()));
    }
    void TearDown() override {
        DvnBTAuthorization::DestroyInstance();
        DvnProfile::SetOverride("BTODBCDataSourceName", DvnString());
        RepositoryTest::TearDown();
    }
    // Imports the text as an initial load with every right: level 0.
    void ImportText(const std::string& text) {
        DvnBTAuthorization::GetInstance()->GrantDefinitionRights();
        TrxFiles files;
        DvnConvCoreDbIF importer;
        testing::internal::CaptureStdout();
        const int level = importer.ImportTRX(DvnString(files.Write(text)), DvnString(DataSource()), true, true, true);
        const std::string out = testing::internal::GetCapturedStdout();
        ASSERT_EQ(level, 0) << out;
    }
    // The messages reported since the last call.
    Lines Messages() {
        Lines lines = MessageLines(handler);
        handler.Clear();
        return lines;
    }
    DvnfCollectingMessageHandler handler;
    DvnfTRXData data{DvnfTRXTypes::_instance, &handler};
};
