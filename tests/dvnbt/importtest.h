// A repository that dvnbt imports texts into, and what the tests of the
// import ask of its output and its rows.
#pragma once

#include <gtest/gtest.h>

#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "dvnfcorn.h"
#include "repositorydb.h"
#include "testenv.h"

// The text of a file; of one under tests/data/dvnbt/.
inline std::string ReadFile(const std::string& path) {
    std::ostringstream text;
    text << std::ifstream(path, std::ios::binary).rdbuf();
    return text.str();
}
inline std::string ReadData(const std::string& name) {
    return ReadFile(std::string(DVN_SOURCE_DIR) + "/tests/data/dvnbt/" + name);
}

class DvnbtImportTest : public RepositoryTest {
protected:
    using Lines = std::vector<std::string>;

    // dvnbt on this test's database, logged in as `user` with the password when a user is given.
    CliResult Run(Lines args, const std::string& user = "", const std::string& password = "pw") {
        if (!user.empty()) args.insert(args.begin(), {"--user", user});
        return RunDvnbt(DvnbtArgs(args), {"DVNBT_PASSWORD=" + password});
    }
    // dvnbt import of the text with the options: logged in as `user`, or
    // else as `importer`, with the password "pw"; an initial load when
    // neither is set.
    CliResult Import(const std::string& text, Lines options = {}, std::string user = "") {
        if (user.empty()) user = importer;
        const Lines command = user.empty() ? Lines{"import", "--initial-load"} : Lines{"import"};
        options.insert(options.begin(), command.begin(), command.end());
        options.push_back(files.Write(text));
        return Run(options, user);
    }
    // Import(text, options) that ends with the status and puts each line on standard error.
    CliResult Expect(int status, const std::string& text, const Lines& lines, std::vector<std::string> options = {}) {
        CliResult r = Import(text, std::move(options));
        EXPECT_EQ(r.status, status) << text << "\n" << r.err;
        EXPECT_EQ(Missing(r, lines), "") << text;
        return r;
    }
    // A message line as dvnbt prints it.
    static std::string Line(long number, const std::string& a1 = "", const std::string& a2 = "",
                            const std::string& a3 = "") {
        auto arg = [](const std::string& a) { return a.empty() ? DvnString() : DvnString(a); };
        return DvnfMessageHandler::Format(number, arg(a1), arg(a2), arg(a3)).str() + "\n";
    }
    static bool Has(const CliResult& r, const std::string& line) { return r.err.find(line) != std::string::npos; }
    // "" when every line is on standard error, else the first that is not and what is there.
    static std::string Missing(const CliResult& r, const Lines& lines) {
        for (const std::string& line : lines)
            if (!Has(r, line)) return line + " not in:\n" + r.err;
        return "";
    }
    // How often the part is in the text.
    static size_t Count(const std::string& text, const std::string& part) {
        size_t n = 0;
        for (size_t at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++n;
        return n;
    }
    // A fresh SQLite repository of its own (dvnbt init); its file.
    std::string FreshFile() {
        const std::string file = files.Folder() + "/repo" + std::to_string(++m_fresh) + ".db";
        EXPECT_EQ(RunDvnbt({"--db", file, "init"}).status, 0);
        return file;
    }
    Lines Rows(const std::string& sql) { return QueryRows(Db(), sql); }
    std::string Value(const std::string& sql) { return QueryValue(Db(), sql); }

    TrxFiles files;
    std::string importer;

private:
    int m_fresh = 0;
};
