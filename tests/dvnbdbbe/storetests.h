// What the stores' tests share: rows read back with "-" for NULL; for the
// process model, entities made as a parsed file or an editor load gives them,
// or read by the parser from a file of tests/data/dvnbdbbe; and after every
// test no row of the process model without its owner.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "backendrun.h"
#include "dvnfffdn.h"
#include "orphans.h"

using Lines = std::vector<std::string>;

// The path of a file of tests/data/dvnbdbbe.
inline std::string DataFile(const char* name) { return std::string(DVN_SOURCE_DIR "/tests/data/dvnbdbbe/") + name; }

// The definitions of such a file read into the run as the parser gives them
// to an import; the parser's own messages are left out of the run's.
template <class Run>
void Read(Run& run, const char* name) {
    std::string error;
    ASSERT_EQ(DvnTRXFrontend(run.data, nullptr).ReadFile(DataFile(name).c_str(), 0, nullptr, &error), 0) << error;
    run.handler.Clear();
}

// The rows with "-" for NULL.
inline Lines Dashed(Lines rows) {
    for (std::string& row : rows) {
        std::string wrapped = "|" + row + "|";
        for (size_t at; (at = wrapped.find("|<null>|")) != std::string::npos;) wrapped.replace(at + 1, 6, "-");
        row = wrapped.substr(1, wrapped.size() - 2);
    }
    return rows;
}

class ModelStore : public StoreTest {
protected:
    void TearDown() override {
        if (!IsSkipped()) {
            EXPECT_EQ(OrphanRows(Db()), Lines{});
        }
        StoreTest::TearDown();
    }
    // An activity of a diagram (a process's or a block's) of the kind as
    // "Implementation"."Type": 1 program, 2 process, 3 block, 4 bundle, 5 information.
    template <class Run>
    static DvnfEntity& Act(Run& run, DvnfAttributeData diagram, const char* name, long kind = 5,
                           const std::string& oid = "") {
        const DvnfString key(oid.c_str());
        DvnfEntity* activity = nullptr;
        switch (kind) {
            case 1: activity = &run.data.CreateProgramActivityByOID(diagram, key); break;
            case 2: activity = &run.data.CreateProcessActivityByOID(diagram, key); break;
            case 3: activity = &run.data.CreateBlockActivityByOID(diagram, key); break;
            case 4: activity = &run.data.CreateBundleActivityByOID(diagram, key); break;
            default: activity = &run.data.CreateInfoActivityByOID(diagram, key); break;
        }
        activity->Name(DvnfString(name));
        activity->Flags(7);
        return *activity;
    }
    template <class Run>
    static DvnfEntity& Act(Run& run, DvnfEntity& owner, const char* name, long kind = 5, const std::string& oid = "") {
        return Act(run, Diagram(owner), name, kind, oid);
    }
    static DvnfAttributeData Diagram(DvnfEntity& owner) { return owner.AttributeData()("Diagram"); }
    // The implementation object of an activity ("AsProgram", ...).
    static DvnfEntity& Impl(DvnfEntity& activity, const char* as) {
        return activity.AttributeData()("Implementation")(as).AsEntity();
    }
    template <class Run>
    static void Link(Run& run, DvnfEntity& entity, const char* link, const char* type, const char* target) {
        run.data.AddLinkByName(entity, DvnfString(link), DvnfString(type), DvnfString(target), true, false);
    }
    // The processes of a file of tests/data/dvnbdbbe, stored by an import.
    void Imported(const char* file) {
        ImportRun run(true);
        Read(run, file);
        ASSERT_EQ(run.be.SaveProcesses(Db(), true, false), 0) << testing::PrintToString(run.Messages());
    }
    // A stored process as the editor loads it: unchanged, complete.
    static DvnfEntity& Loaded(BackEndRun& run, const std::string& pid, const char* name) {
        DvnfEntity& process = run.data.CreateEntity(DvnfString("Process"), DvnfString(pid.c_str()), DvnfString(name));
        process.State(DvnfObject::StateUnchanged);
        process.Flags(7);
        return process;
    }

    // Makes the database refuse every statement of the event ("INSERT",
    // "UPDATE") on the table (a trigger), or takes that back.
    void Refuse(const std::string& event, const std::string& table, bool refuse = true) {
        const std::string trigger = "REFUSE_" + event + "_" + table;
        if (!refuse) {
            Exec(IsPostgres() ? "DROP TRIGGER " + trigger + " ON DVBT." + table : "DROP TRIGGER DVBT." + trigger);
        } else if (IsPostgres()) {
            Exec(
                "CREATE OR REPLACE FUNCTION DVBT.REFUSE() RETURNS trigger LANGUAGE plpgsql AS $$ BEGIN RAISE "
                "EXCEPTION 'refused'; END $$");
            Exec("CREATE TRIGGER " + trigger + " BEFORE " + event + " ON DVBT." + table +
                 " FOR EACH ROW EXECUTE FUNCTION DVBT.REFUSE()");
        } else {
            Exec("CREATE TRIGGER DVBT." + trigger + " BEFORE " + event + " ON " + table +
                 " BEGIN SELECT RAISE(ABORT, 'refused'); END");
        }
    }

    Lines Rows(const std::string& sql) { return Dashed(QueryRows(Db(), sql)); }
    // In byte order, whatever the collation of the database.
    Lines Sorted(const std::string& sql) {
        Lines rows = Rows(sql);
        std::sort(rows.begin(), rows.end());
        return rows;
    }
    std::string Value(const std::string& sql) { return QueryValue(Db(), sql); }
    std::string Count(const std::string& table) { return Value("SELECT COUNT(*) FROM DVBT." + table); }
    std::string Pid(const std::string& name) {
        return Value("SELECT PID FROM DVBT.PROCESS WHERE NAME = '" + name + "'");
    }
    std::string Aid(const std::string& name) {
        return Value("SELECT AID FROM DVBT.ACTIVITY WHERE NAME = '" + name + "'");
    }
    static size_t Count(const Lines& lines, const std::string& line) {
        return static_cast<size_t>(std::count(lines.begin(), lines.end(), line));
    }
};
