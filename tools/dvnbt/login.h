// The login of dvnbt: a command that reads or changes what a repository
// holds goes through it before it touches anything.
//
//   user          --user NAME, else the environment variable DVNBT_USER.
//                 The letters a-z of a login name match in any case:
//                 persons are stored under their name folded by
//                 DvnUser::FoldUserId, which the login applies too. Other
//                 letters (outside ASCII) match only as stored.
//   password      the environment variable DVNBT_PASSWORD, else a prompt
//                 without echo when standard input is a terminal. Never an
//                 option: a command line is visible to every user of the
//                 machine.
//   system group  --system-group NAME, else "SystemGroup" of the machine
//                 profile, else "SYS_GRP".
#pragma once

#include <string>

#include "cli.h"

namespace dvnbt {

enum class LoginFor {
    // Work under the user's own rights. A repository without any person has
    // nobody to log in, and refuses.
    Rights,
    // An import with --initial-load, which holds every right whoever runs
    // it. On a repository without any person it runs without a login (the
    // program says so on standard error), and the persons it loads become
    // the users; on a repository with users it needs a system administrator.
    InitialLoad,
    // An export, under the user's own rights. On a repository without any
    // person nobody can log in: the export runs with every right, and the
    // program says so on standard error.
    Export,
    // Work that replaces the whole repository (init --recreate): without
    // persons it runs without a login, with users it needs a system
    // administrator.
    Administration,
};

// Checks the user's password and loads the user's rights into
// DvnBTAuthorization, with the database user of ctx. Returns true when the
// command may go on; otherwise it has said why on standard error, and the
// command must end with kFailed without touching the repository.
bool Login(const Context& ctx, LoginFor purpose);

// The system group of a login when none is given: "SystemGroup" of the
// machine profile, else "SYS_GRP".
std::string DefaultSystemGroup();

}  // namespace dvnbt
