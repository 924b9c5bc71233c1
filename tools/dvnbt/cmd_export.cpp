// dvnbt export: definitions of the repository as TRX text, on standard
// output or into a file. Standard output carries the TRX text and nothing
// else; progress and messages go to standard error.
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <fstream>
#include <iostream>
#include <map>

#include "cli.h"
#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnfcorn.h"
#include "dvnfffdn.h"
#include "login.h"

namespace {

std::string Lower(std::string text) {
    std::transform(text.begin(), text.end(), text.begin(), [](unsigned char c) { return std::tolower(c); });
    return text;
}

// KIND: the TRX type name of a top-level definition, in any case.
const std::map<std::string, DvnEntityType::Type> kKinds = {
    {"process", DvnEntityType::Process},
    {"category", DvnEntityType::Category},
    {"datastructure", DvnEntityType::DataStructure},
    {"program", DvnEntityType::Program},
    {"person", DvnEntityType::Person},
    {"role", DvnEntityType::Role},
    {"organization", DvnEntityType::Organization},
    {"level", DvnEntityType::Level},
    {"domain", DvnEntityType::Domain},
    {"systemgroup", DvnEntityType::SystemGroup},
    {"system", DvnEntityType::System},
    {"node", DvnEntityType::Node},
    {"queuemanager", DvnEntityType::QueueManager},
    {"server", DvnEntityType::Server},
    {"peagent", DvnEntityType::PEAgent},
    {"toolset", DvnEntityType::ToolSet},
    {"worklist", DvnEntityType::Worklist},
    {"activitieslist", DvnEntityType::ActivitiesList},
    {"processinstanceslist", DvnEntityType::ProcessInstancesList},
    {"templateslist", DvnEntityType::TemplatesList},
};

const std::map<std::string, DvnSvrKind::Type> kServerKinds = {
    {"execution", DvnSvrKind::Execution},     {"scheduling", DvnSvrKind::Scheduling},
    {"cleanup", DvnSvrKind::Cleanup},         {"distribution", DvnSvrKind::Distribution},
    {"modelling", DvnSvrKind::Modelling},     {"gateway", DvnSvrKind::Gateway},
    {"pe", DvnSvrKind::PEServer},             {"user-pe", DvnSvrKind::UserPEServer},
};

const std::map<std::string, int> kGroups = {
    {"categories", 1},           {"processes", 2},
    {"persons", 3},              {"roles", 4},
    {"organizations", 5},        {"levels", 6},
    {"domains", 7},              {"system-groups", 8},
    {"systems", 9},              {"nodes", 12},
    {"data-structures", 13},     {"programs", 15},
    {"activities-lists", 16},    {"process-instances-lists", 17},
    {"templates-lists", 18},     {"worklists", 19},
    {"cleanup-servers", 21},     {"distribution-servers", 22},
    {"execution-servers", 23},   {"gateway-servers", 24},
    {"modelling-servers", 25},   {"scheduling-servers", 26},
    {"pe-agents", 27},           {"queue-managers", 28},
    {"tool-sets", 29},           {"pe-servers", 30},
    {"user-pe-servers", 32},
};

struct Options {
    std::string output;  // -o FILE; empty: standard output
    bool deep = false, list = false, quiet = false, withDeletions = false;
    std::string kind, serverKind, group, id;
    bool hasId = false;
    std::vector<std::string> names;
};

// The messages that make an export "done with warnings": refusals and names
// that gave no key.
bool IsWarning(long number) { return (number >= 51533 && number <= 51568) || number == 51184; }

// The entities the export writes: every top-level definition that was read,
// deletions only when asked for.
std::vector<const DvnfEntity*> Selection(const DvnfTRXData& data, bool withDeletions) {
    std::vector<const DvnfEntity*> selection;
    for (const DvnfEntityType* type : data.Types().EntityTypes()) {
        if (!type->IsTopLevel()) continue;
        for (const auto& [name, object] : data.GetEntities(DvnfString(type->Name()))) {
            const DvnfObject::State_t state = object->State();
            if (state == DvnfObject::StateNone) continue;
            if (state == DvnfObject::StateDeleted && !withDeletions) continue;
            selection.push_back(&object->Entity());
        }
    }
    return selection;
}

// Writes text to path through a temporary file beside it, renamed at the
// end: a failed export leaves an existing file as it was.
bool WriteThrough(const std::string& path, const std::string& text) {
    std::string temp = path + ".XXXXXX";
    int fd = mkstemp(temp.data());
    if (fd < 0) return false;
    const char* p = text.data();
    size_t left = text.size();
    bool ok = true;
    while (ok && left > 0) {
        ssize_t n = write(fd, p, left);
        if (n <= 0) ok = false;
        else {
            p += n;
            left -= static_cast<size_t>(n);
        }
    }
    ok = ok && fsync(fd) == 0;
    ok = (close(fd) == 0) && ok;
    // mkstemp makes the file readable by its owner only; an export is as
    // readable as any file the user writes.
    const mode_t mask = umask(0);
    umask(mask);
    ok = ok && chmod(temp.c_str(), 0666 & ~mask) == 0;
    ok = ok && std::rename(temp.c_str(), path.c_str()) == 0;
    if (!ok) std::remove(temp.c_str());
    return ok;
}

int Parse(const std::vector<std::string>& args, Options& o) {
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        auto value = [&](std::string& target) {
            if (i + 1 >= args.size() || args[i + 1].empty()) return false;
            target = args[++i];
            return true;
        };
        if (a == "-o") {
            if (!value(o.output)) return dvnbt::UsageError("export: -o needs a file");
        } else if (a == "--deep") {
            o.deep = true;
        } else if (a == "--list") {
            o.list = true;
        } else if (a == "--quiet") {
            o.quiet = true;
        } else if (a == "--with-deletions") {
            o.withDeletions = true;
        } else if (a == "--group") {
            if (!value(o.group)) return dvnbt::UsageError("export: --group needs a name or number");
        } else if (a == "--id") {
            if (!value(o.id)) return dvnbt::UsageError("export: --id needs a key");
            o.hasId = true;
        } else if (a == "--server-kind") {
            if (!value(o.serverKind)) return dvnbt::UsageError("export: --server-kind needs a kind");
        } else if (a.size() > 1 && a[0] == '-') {
            return dvnbt::UsageError("export: unknown option " + a);
        } else if (o.kind.empty()) {
            o.kind = a;
        } else {
            o.names.push_back(a);
        }
    }
    if (!o.group.empty() && !o.kind.empty()) return dvnbt::UsageError("export: give either --group or a KIND");
    if (o.hasId && o.group.empty()) return dvnbt::UsageError("export: --id goes with --group");
    if (!o.serverKind.empty() && Lower(o.kind) != "server")
        return dvnbt::UsageError("export: --server-kind goes with the kind Server");
    if (!o.serverKind.empty() && !kServerKinds.count(Lower(o.serverKind)))
        return dvnbt::UsageError("export: unknown server kind " + o.serverKind);
    if (!o.kind.empty() && !kKinds.count(Lower(o.kind))) return dvnbt::UsageError("export: unknown kind " + o.kind);
    if (o.deep) {
        const std::string k = Lower(o.kind);
        const bool kindDeep = k == "process" || k == "datastructure" || k == "program";
        if (!o.group.empty() ? false : !kindDeep)
            return dvnbt::UsageError("export: --deep goes with Process, DataStructure or Program, or --group");
    }
    return -1;
}

int GroupNumber(const std::string& group) {
    auto it = kGroups.find(Lower(group));
    if (it != kGroups.end()) return it->second;
    if (group.empty() || group.find_first_not_of("0123456789") != std::string::npos || group.size() > 3) return -1;
    return std::atoi(group.c_str());
}

int Export(dvnbt::Context& ctx) {
    Options o;
    if (int usage = Parse(ctx.args, o); usage >= 0) return usage;
    const int group = o.group.empty() ? 0 : GroupNumber(o.group);
    if (group < 0) return dvnbt::UsageError("export: unknown group " + o.group);

    {
        CDatabase db;
        if (!dvnbt::OpenRepository(ctx, db, false)) return dvnbt::kFailed;
        db.Close();
    }
    if (!dvnbt::Login(ctx, dvnbt::LoginFor::Export)) {
        DvnBTAuthorization::DestroyInstance();
        return dvnbt::kFailed;
    }

    DvnfMessageHandler::DefaultOutput(&std::cerr);
    DvnfCollectingMessageHandler messages(true);
    DvnfTRXData data(DvnfTRXTypes::_instance, &messages);
    int level;
    {
        // The library prints some texts on standard output; while it runs,
        // they go to standard error, so that standard output holds TRX only.
        std::streambuf* out = std::cout.rdbuf(std::cerr.rdbuf());
        DvnConvCoreDbIF facade(&data);
        const DvnString source(ctx.dataSource);
        if (!o.group.empty()) {
            level = facade.ExportGroups(source, DvnString(o.id), static_cast<EXPORT_GROUPS>(group), o.deep);
        } else if (o.kind.empty()) {
            level = facade.ExportAll(source);
        } else {
            std::vector<DvnString> names;
            for (const std::string& n : o.names) names.emplace_back(n);
            const std::string kind = Lower(o.kind);
            DvnSvrKind::Type serverKind =
                o.serverKind.empty() ? DvnSvrKind::PEServer : kServerKinds.at(Lower(o.serverKind));
            DvnCmdVisitor::Command command(kKinds.at(kind), names, o.names.empty(), o.deep, serverKind);
            level = facade.ExportByCommand(source, command);
        }
        std::cout.flush();
        std::cout.rdbuf(out);
    }
    DvnBTAuthorization::DestroyInstance();
    DvnfMessageHandler::DefaultOutput(nullptr);

    if (level != 0) {
        dvnbt::Error("export failed");
        return dvnbt::kFailed;
    }
    const std::vector<const DvnfEntity*> selection = Selection(data, o.withDeletions);
    if (!o.quiet) {
        std::map<std::string, long> counts;
        std::vector<std::string> order;
        for (const DvnfEntity* e : selection)
            if (counts[e->Type().Name().str()]++ == 0) order.push_back(e->Type().Name().str());
        for (const std::string& type : order) std::cerr << type << ": " << counts[type] << std::endl;
    }
    std::string text;
    if (o.list) {
        for (const DvnfEntity* e : selection) text += e->Type().Name().str() + "\t" + e->Name().str() + "\n";
    } else {
        text = DvnTRXWriter(data).Write(selection);
    }
    if (o.output.empty()) {
        std::cout << text << std::flush;
        if (!std::cout) {
            dvnbt::Error("cannot write the export to standard output");
            return dvnbt::kFailed;
        }
    } else if (!WriteThrough(o.output, text)) {
        dvnbt::Error("cannot write " + o.output + "; it was left as it was");
        return dvnbt::kFailed;
    }

    // A load that caught a database failure (51368) left an object incomplete.
    bool errors = false, warnings = false;
    for (const auto& entry : messages.Entries()) {
        errors = errors || entry.number == 51368;
        warnings = warnings || IsWarning(entry.number);
    }
    if (errors) return dvnbt::kErrors;
    if (warnings) return dvnbt::kWarnings;
    return dvnbt::kOk;
}

}  // namespace

DVNBT_COMMAND(exportdefs, "export",
              "[-o FILE] [--deep] [--list] [--quiet] [--with-deletions] [--group G [--id KEY]] [KIND [NAME...]]",
              "write definitions as TRX text (see docs/cli.md)", Export);
