// Where `--db` finds the SQLite ODBC driver: $DVN_SQLITE_ODBC_DRIVER, the
// driver that unixODBC has registered as "SQLite3" (also by a bare name), and
// the platform's library folders; and that what is found loads and connects.
#include <gtest/gtest.h>

#include <unistd.h>

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <optional>

#include "dvnconnection.h"

namespace fs = std::filesystem;

namespace {

bool IsFile(const std::string& path) {
    std::error_code ec;
    return fs::is_regular_file(path, ec);
}

// A temporary unixODBC system folder; restores the environment it changes.
class DriverPath : public ::testing::Test {
protected:
    void SetUp() override {
        dir = fs::temp_directory_path() / ("dvn-driverpath-" + std::to_string(getpid()));
        fs::create_directories(dir);
        for (const char* name : {"DVN_SQLITE_ODBC_DRIVER", "ODBCSYSINI", "ODBCINSTINI"}) {
            const char* v = std::getenv(name);
            saved.emplace_back(name, v ? std::optional<std::string>(v) : std::nullopt);
        }
        unsetenv("DVN_SQLITE_ODBC_DRIVER");
        unsetenv("ODBCINSTINI");
        setenv("ODBCSYSINI", dir.c_str(), 1);
    }
    void TearDown() override {
        for (auto& [name, value] : saved) {
            if (value) setenv(name.c_str(), value->c_str(), 1);
            else unsetenv(name.c_str());
        }
        fs::remove_all(dir);
    }
    std::string Touch(const std::string& name) {
        std::ofstream(dir / name) << "not a driver";
        return (dir / name).string();
    }

    fs::path dir;
    std::vector<std::pair<std::string, std::optional<std::string>>> saved;
};

TEST_F(DriverPath, EnvironmentThenRegisteredDriverThenLibraryFolders) {
    const std::string fake = Touch("fake-driver.so");
    const std::string missing = (dir / "missing.so").string();
    struct Case {
        const char* what;
        std::string env;       // $DVN_SQLITE_ODBC_DRIVER, empty: unset
        std::string registry;  // the registry file, empty: none
        std::string expected;  // empty: a real driver library of this machine
        const char* file = "odbcinst.ini";  // another: named by ODBCINSTINI, as in unixODBC
    };
    const std::vector<Case> cases = {
        {"the environment wins over a registered driver", "/opt/x/libsqlite3odbc.so",
         "[SQLite3]\nDriver=" + fake + "\n", "/opt/x/libsqlite3odbc.so"},
        {"a registered path", "", "[SQLite3]\nDriver=" + fake + "\n", fake},
        {"names and keys in any case, spaces, comments, other sections first", "",
         "# drivers\n[SQLite]\nDriver=" + missing + "\n\n[ sqlite3 ]\n; the one\n  DRIVER = " + fake +
             "  \r\nSetup=x.so\n[Other]\nDriver=y.so\n",
         fake},
        {"a registered driver that is not there", "", "[SQLite3]\nDriver=" + missing + "\n", ""},
        {"a bare registered name", "", "[SQLite3]\nDriver=libsqlite3odbc.so\n", ""},
        {"no registry at all", "", "", ""},
        {"a registry file of another name", "", "[SQLite3]\nDriver=" + fake + "\n", fake, "drivers.ini"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.what);
        fs::remove(dir / "odbcinst.ini");
        if (!c.registry.empty()) std::ofstream(dir / c.file) << c.registry;
        if (c.file == std::string("odbcinst.ini")) unsetenv("ODBCINSTINI");
        else setenv("ODBCINSTINI", c.file, 1);
        if (c.env.empty()) unsetenv("DVN_SQLITE_ODBC_DRIVER");
        else setenv("DVN_SQLITE_ODBC_DRIVER", c.env.c_str(), 1);
        const std::string found = DvnConnection::EmbeddedDriverPath();
        if (!c.expected.empty()) {
            EXPECT_EQ(found, c.expected);
        } else {
            EXPECT_TRUE(IsFile(found)) << found;
            EXPECT_NE(found, fake);
            EXPECT_NE(found.find("sqlite3odbc"), std::string::npos) << found;
        }
    }
}

// The driver found from a bare registered name loads: a database file is
// created and answers.
TEST_F(DriverPath, FoundDriverConnects) {
    std::ofstream(dir / "odbcinst.ini") << "[SQLite3]\nDriver=libsqlite3odbc.so\n";
    const std::string file = (dir / "found.db").string();
    CDatabase db;
    ASSERT_TRUE(db.OpenEx(DvnConnection::BuildConnectString(DvnConnection::EmbeddedDataSource(file), "", "")));
    EXPECT_TRUE(db.IsSQLite());
    db.ExecuteSQL("CREATE TABLE T (A INTEGER)");
    db.Close();
    EXPECT_TRUE(IsFile(file));
}

}  // namespace
