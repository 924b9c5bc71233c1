// One run of the front end on core data of the test's own, whose messages
// are collected, over a repository of the test.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <fstream>
#include <sstream>
#include <string>
#include <vector>

#include "backendrun.h"
#include "dvnbdbfe.h"

using Lines = std::vector<std::string>;

// A file of tests/data, e.g. "dvnbdbfe/order.trx".
inline std::string TestData(const std::string& relative) {
    std::ifstream in(std::string(DVN_SOURCE_DIR) + "/tests/data/" + relative, std::ios::binary);
    EXPECT_TRUE(in) << relative;
    std::stringstream text;
    text << in.rdbuf();
    return text.str();
}

// Runs the statements of an SQL file of tests/data: each ends a line with
// ";", lines that start with "--" are comments.
inline void ExecData(CDatabase& db, const std::string& relative) {
    std::istringstream lines(TestData(relative));
    std::string statement;
    for (std::string line; std::getline(lines, line);) {
        if (line.rfind("--", 0) == 0) continue;
        statement += line + "\n";
        if (!line.empty() && line.back() == ';') {
            db.ExecuteSQL(CString(statement.substr(0, statement.size() - 2).c_str()));
            statement.clear();
        }
    }
}

// The protected parts of the frame, for the tests.
class TestableFe : public DvnConvCoreDbFe {
public:
    using DvnConvCoreDbFe::DvnConvCoreDbFe;
    using DvnConvCoreDbFe::DataStructureMember;
    using DvnConvCoreDbFe::TakeParentState;
    using DvnConvCoreDbFe::TakeState;
    // staff
    using DvnConvCoreDbFe::Levels;
    using DvnConvCoreDbFe::Orgs;
    using DvnConvCoreDbFe::Persons;
    using DvnConvCoreDbFe::Roles;
};

struct LoadRun {
    DvnfCollectingMessageHandler handler;
    DvnfTRXData data{DvnfTRXTypes::_instance, &handler};
    TestableFe fe;

    explicit LoadRun(CDatabase& db) : fe(&db, &data) { fe.SetTablePrefix("DVBT."); }
    std::vector<std::string> Messages() const { return MessageLines(handler); }
    DvnfEntity& Get(const char* type, const char* oid) {
        return data.GetEntityByOID(DvnfString(type), DvnfString(oid), false);
    }
    size_t Count(const char* type) { return data.GetEntities(DvnfString(type)).size(); }
};

// The attributes of a group that are defined, as "Name=value" joined by ' '.
inline std::string Defined(const DvnfAttributeDataReader& group, std::initializer_list<const char*> names) {
    std::string out;
    for (const char* name : names) {
        auto value = group(name);
        if (!value.IsDefined()) continue;
        if (!out.empty()) out += ' ';
        out += std::string(name) + "=" + value.Value().str();
    }
    return out;
}

// The elements of a set as fn gives them, joined by sep.
template <class F>
std::string Joined(const DvnfAttributeDataReader& set, F fn, const char* sep = " ") {
    std::string out;
    DvnfDataSetIterator elements = set.ElementsOfSet();
    for (DvnfAttributeDataReader e = elements.First(); e.IsValid(); e = elements.Next())
        out += (out.empty() ? "" : sep) + fn(e);
    return out;
}

// The entity's links as "LinkType>key" joined by ' ', in their order, but for
// the types left out.
inline std::string LinkKeys(const DvnfEntity& entity, std::initializer_list<const char*> leftOut = {}) {
    std::string out;
    for (const DvnfLink& link : entity.Links()) {
        const std::string type = link.Type().Name().str();
        if (std::any_of(leftOut.begin(), leftOut.end(), [&](const char* t) { return type == t; })) continue;
        out += (out.empty() ? "" : " ") + type + ">" + link.Target().OID().str();
    }
    return out;
}
