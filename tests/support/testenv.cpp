#include "testenv.h"

#include <sys/wait.h>
#include <grp.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "dvnkernn.h"

namespace {

std::string TempPath(const std::string& stem) {
    static std::atomic<int> counter{0};
    return (std::filesystem::temp_directory_path() /
            (stem + "_" + std::to_string(getpid()) + "_" + std::to_string(++counter)))
        .string();
}

std::string ReadFile(const std::string& path) {
    std::ifstream in(path, std::ios::binary);
    std::ostringstream os;
    os << in.rdbuf();
    return os.str();
}

}  // namespace

TraceCapture::TraceCapture() : m_file(TempPath("dvnbt_trace")) {
    setenv("DVN_TRACE", "1", 1);
    setenv("DVN_TRACE_LEVEL", "3", 1);
    setenv("DVN_TRACE_FILE", m_file.c_str(), 1);
    unsetenv("DVN_TRACE_CATEGORIES");
    DvnTrace::ConfigureFromEnvironment();
}

TraceCapture::~TraceCapture() {
    unsetenv("DVN_TRACE");
    unsetenv("DVN_TRACE_LEVEL");
    unsetenv("DVN_TRACE_FILE");
    DvnTrace::ConfigureFromEnvironment();
    std::filesystem::remove(m_file);
}

std::string TraceCapture::Text() const { return ReadFile(m_file); }

ProfileFile::ProfileFile(const std::string& content) : m_file(TempPath("dvnbt_profile")) {
    std::ofstream(m_file) << content;
    setenv("DVN_PROFILE", m_file.c_str(), 1);
    DvnProfile::ClearOverrides();
}

ProfileFile::~ProfileFile() {
    unsetenv("DVN_PROFILE");
    DvnProfile::ClearOverrides();
    std::filesystem::remove(m_file);
}

DvnbtProcess::DvnbtProcess(const std::vector<std::string>& args, const std::vector<std::string>& env, int uid)
    : m_out(TempPath("dvnbt_out")), m_err(TempPath("dvnbt_err")) {
    // Everything the child needs is made before the fork.
    std::string program = std::string(DVN_BINARY_DIR) + "/tools/dvnbt/dvnbt";
    std::vector<char*> argv;
    argv.push_back(program.data());
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    m_pid = fork();
    if (m_pid == 0) {
        for (const std::string& e : env) putenv(const_cast<char*>(e.c_str()));
        // Never a terminal on standard input: nothing may wait for a person.
        if (!freopen("/dev/null", "r", stdin) || !freopen(m_out.c_str(), "w", stdout) ||
            !freopen(m_err.c_str(), "w", stderr))
            _exit(127);
        if (uid >= 0 && (setgroups(0, nullptr) != 0 || setgid(static_cast<gid_t>(uid)) != 0 ||
                         setuid(static_cast<uid_t>(uid)) != 0))
            _exit(126);
        execv(program.c_str(), argv.data());
        _exit(127);
    }
}

DvnbtProcess::~DvnbtProcess() {
    if (m_pid > 0) Wait();
}

CliResult DvnbtProcess::Wait() {
    int status = 0;
    if (m_pid > 0) waitpid(m_pid, &status, 0);
    m_pid = -1;
    CliResult r{WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status), ReadFile(m_out), ReadFile(m_err)};
    std::filesystem::remove(m_out);
    std::filesystem::remove(m_err);
    return r;
}

CliResult RunDvnbt(const std::vector<std::string>& args, const std::vector<std::string>& env) {
    return DvnbtProcess(args, env).Wait();
}

TrxFiles::TrxFiles() : m_dir(TempPath("dvn_trx")) { std::filesystem::create_directories(m_dir); }

TrxFiles::~TrxFiles() {
    std::error_code ec;
    std::filesystem::remove_all(m_dir, ec);
}

std::string TrxFiles::Write(const std::string& text) {
    std::string path = m_dir + "/f" + std::to_string(++m_count) + ".trx";
    std::ofstream(path) << text;
    return path;
}
