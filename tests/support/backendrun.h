// One run of the back end on core data of the test's own, whose messages are
// collected: the entities are made by hand, as a parsed file would give them.
#pragma once

#include <string>
#include <vector>

#include "dvnbdbbe.h"
#include "dvnfcorn.h"
#include "repositorydb.h"

// Each report as "number|arg|arg...", null arguments left out.
inline std::vector<std::string> MessageLines(const DvnfCollectingMessageHandler& handler) {
    std::vector<std::string> out;
    for (const auto& e : handler.Entries()) {
        std::string line = std::to_string(e.number);
        for (const DvnString& a : e.args)
            if (!a.IsNull()) line += "|" + a.str();
        out.push_back(line);
    }
    return out;
}

// Be: the back end, or a test's own class derived from it.
template <class Be>
struct BasicBackEndRun {
    DvnfCollectingMessageHandler handler;
    DvnfTRXData data{DvnfTRXTypes::_instance, &handler};
    Be be{&data};

    explicit BasicBackEndRun(bool sourceOption) {
        be.SetSourceOption(sourceOption);
        be.SetTablePrefix("DVBT.");
    }
    // A new entity (state 2) of the type.
    DvnfEntity& Add(const char* type, const char* name) {
        return data.CreateEntity(DvnfString(type), DvnfString(""), DvnfString(name));
    }
    void Delete(const char* type, const char* name) { Add(type, name).State(DvnfObject::StateDeleted); }
    std::vector<std::string> Messages() const { return MessageLines(handler); }
};

// A run in import mode: the back end's own core data, rows matched by name,
// its messages collected. Entities are made as the parser makes those a file
// defines: state 2, all completeness flags set.
struct ImportRun {
    DvnfCollectingMessageHandler handler;
    DvnConvCoreDbBe be;
    DvnfTRXData& data;

    explicit ImportRun(bool sourceOption) : data(*be.CoreData()) {
        data.MessageHandler(&handler);
        be.SetSourceOption(sourceOption);
        be.SetTablePrefix("DVBT.");
    }
    DvnfEntity& Add(const char* type, const char* name) {
        DvnfEntity& entity = data.CreateEntity(DvnfString(type), DvnfString(""), DvnfString(name));
        entity.Flags(7);
        return entity;
    }
    // A deletion: state 1, no flags.
    void Delete(const char* type, const char* name) {
        DvnfEntity& entity = Add(type, name);
        entity.State(DvnfObject::StateDeleted);
        entity.Flags(0);
    }
    std::vector<std::string> Messages() const { return MessageLines(handler); }
};
using BackEndRun = BasicBackEndRun<DvnConvCoreDbBe>;

// A fresh repository to store into.
class StoreTest : public RepositoryTest {
protected:
    void Exec(const std::string& sql) { ExecAll(Db(), {sql.c_str()}); }
    // name|mark of every row of the table but the default data structure.
    std::vector<std::string> Marks(const std::string& table) {
        return QueryRows(Db(), "SELECT NAME, CHECKED_OUT FROM DVBT." + table +
                                   " WHERE NAME <> 'Default Data Structure' ORDER BY NAME");
    }
};
