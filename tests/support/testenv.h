// Helpers for tests that look at traces, the machine profile and the
// command-line program.
#pragma once

#include <string>
#include <vector>

// Switches the trace on into a temporary file for its lifetime (all levels
// and categories), and off again afterwards.
class TraceCapture {
public:
    TraceCapture();
    ~TraceCapture();
    std::string Text() const;  // everything traced so far
private:
    std::string m_file;
};

// Points the machine profile ($DVN_PROFILE) at a temporary file with the
// given content for its lifetime, then unsets it; also clears in-process
// overrides.
class ProfileFile {
public:
    explicit ProfileFile(const std::string& content);
    ~ProfileFile();
private:
    std::string m_file;
};

// Runs the built dvnbt with the arguments (each passed as one argument).
struct CliResult {
    int status;        // exit status
    std::string out;   // standard output
    std::string err;   // standard error
};
CliResult RunDvnbt(const std::vector<std::string>& args, const std::vector<std::string>& env = {});
// dvnbt started without waiting for it, for runs side by side.
class DvnbtProcess {
public:
    // uid: run as that user (when the tests run as root), -1 as the tests' own.
    DvnbtProcess(const std::vector<std::string>& args, const std::vector<std::string>& env = {}, int uid = -1);
    ~DvnbtProcess();  // waits
    CliResult Wait();
    DvnbtProcess(const DvnbtProcess&) = delete;
    DvnbtProcess& operator=(const DvnbtProcess&) = delete;
private:
    int m_pid = -1;
    std::string m_out, m_err;
};

// TRX files written into a temporary folder of their own, removed with it.
class TrxFiles {
public:
    TrxFiles();
    ~TrxFiles();
    // A new file holding the text; its path.
    std::string Write(const std::string& text);
    const std::string& Folder() const { return m_dir; }
private:
    std::string m_dir;
    int m_count = 0;
};
