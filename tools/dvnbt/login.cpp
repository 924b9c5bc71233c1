#include "login.h"

#include <signal.h>
#include <termios.h>
#include <unistd.h>

#include <cstdlib>
#include <iostream>
#include <optional>

#include "dvnbauth.h"
#include "dvnfcorn.h"

namespace dvnbt {

namespace {

// The terminal's settings while the prompt hides the echo: an interrupt
// (Ctrl-C) or a termination puts them back before the program ends.
termios g_savedTerminal{};
struct sigaction g_savedInt{}, g_savedTerm{};

void RestoreTerminalAndEnd(int signalNumber) {
    tcsetattr(STDIN_FILENO, TCSANOW, &g_savedTerminal);
    sigaction(SIGINT, &g_savedInt, nullptr);
    sigaction(SIGTERM, &g_savedTerm, nullptr);
    raise(signalNumber);
}

// Reads a line from the terminal on standard input with echo off. The
// prompt goes to standard error, so that standard output stays clean, and
// only once the echo is off: whoever answers a prompt, a person or a
// program, may type at once and nothing shows.
std::optional<std::string> PromptPassword(const std::string& user) {
    if (!isatty(STDIN_FILENO)) return std::nullopt;
    const bool canHide = tcgetattr(STDIN_FILENO, &g_savedTerminal) == 0;
    if (canHide) {
        struct sigaction restore {};
        restore.sa_handler = RestoreTerminalAndEnd;
        sigemptyset(&restore.sa_mask);
        sigaction(SIGINT, &restore, &g_savedInt);
        sigaction(SIGTERM, &restore, &g_savedTerm);
        termios hidden = g_savedTerminal;
        hidden.c_lflag &= ~static_cast<tcflag_t>(ECHO);
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &hidden);
    }
    std::cerr << "Password for " << user << ": " << std::flush;
    std::string line;
    const bool read = static_cast<bool>(std::getline(std::cin, line));
    if (canHide) {
        tcsetattr(STDIN_FILENO, TCSAFLUSH, &g_savedTerminal);
        sigaction(SIGINT, &g_savedInt, nullptr);
        sigaction(SIGTERM, &g_savedTerm, nullptr);
    }
    std::cerr << std::endl;
    if (!read) return std::nullopt;
    return line;
}

// Each message as the default handler prints it, on standard error.
void PrintMessages(const DvnMessageTarget& target) {
    for (const DvnMessageTarget::Entry& m : target.Messages())
        std::cerr << DvnfMessageHandler::Format(m.number, m.argument) << std::endl;
}

}  // namespace

std::string DefaultSystemGroup() {
    try {
        DvnProfile profile;
        profile.OpenConfig(profile.CurrentConfig(), false);
        DvnString group = profile.Find(DvnString("SystemGroup"), false);
        if (!group.IsEmpty()) return group.str();
    } catch (const DvnException&) {
        // No profile or no configuration: the fallback below holds.
    }
    return "SYS_GRP";
}

bool Login(const Context& ctx, LoginFor purpose) {
    DvnBTAuthorization* auth = DvnBTAuthorization::GetInstance();
    auth->SetDBUser(ctx.dbUser, ctx.dbPassword);
    const DvnString dataSource(ctx.dataSource);

    DvnMessageTarget target;
    if (!auth->HasUsers(target, dataSource)) {
        if (!target.Messages().empty()) {
            PrintMessages(target);
            Error("cannot read the users of " + ctx.Describe() + "; nothing was changed");
            return false;
        }
        switch (purpose) {
            case LoginFor::InitialLoad:
                // A note, not a failure; standard output keeps the import's own lines.
                Error("the repository has no users yet: importing as initial load, with all rights. "
                      "The persons of this file become its users");
                return true;
            case LoginFor::Administration:
                return true;
            case LoginFor::Export:
                Error("the repository has no users yet: exporting with all rights");
                auth->GrantDefinitionRights();
                return true;
            case LoginFor::Rights:
                break;
        }
        Error("the repository has no users yet. Only an import with --initial-load may run on it; "
              "the persons it loads become the users. Nothing was changed");
        return false;
    }

    std::string user = ctx.user;
    if (user.empty())
        if (const char* env = std::getenv("DVNBT_USER")) user = env;
    if (user.empty()) {
        Error("no user given: use --user NAME or set DVNBT_USER");
        return false;
    }
    // Folded as persons are stored: a-z to A-Z, nothing else.
    user = DvnUser::FoldUserId(DvnString(user)).str();
    std::optional<std::string> password;
    if (const char* env = std::getenv("DVNBT_PASSWORD")) password = env;
    if (!password) password = PromptPassword(user);
    if (!password) {
        Error("no password for " + user + ": set DVNBT_PASSWORD, or run from a terminal to be asked for it");
        return false;
    }
    const std::string group = ctx.systemGroup.empty() ? DefaultSystemGroup() : ctx.systemGroup;

    const DvnString userId(user), systemGroup(group);
    if (!auth->IsPasswordValid(target, systemGroup, userId, DvnString(*password), dataSource)) {
        PrintMessages(target);
        Error("login refused: unknown user " + user + " in system group " + group +
              ", or a wrong password. Nothing was changed");
        return false;
    }
    auth->SetUser(target, systemGroup, userId, ctx.dbUser, ctx.dbPassword, dataSource);
    if (!target.Messages().empty() || !(auth->UserID() == userId)) {
        PrintMessages(target);
        Error("the rights of " + user + " could not be read. Nothing was changed");
        return false;
    }
    if (purpose != LoginFor::Rights && purpose != LoginFor::Export && !auth->IsSystemAdmin()) {
        Error(std::string(purpose == LoginFor::InitialLoad ? "--initial-load holds every right and"
                                                           : "replacing the repository")
              + " needs a system administrator on a repository that has users; " + user +
              " is not one. Nothing was changed");
        return false;
    }
    return true;
}

}  // namespace dvnbt
