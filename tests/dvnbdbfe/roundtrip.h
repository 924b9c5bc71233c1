// A repository that a text is imported into (an initial load through the
// facade) and loaded back from, and the canonical text of what a file says,
// for the tests of round trips.
#pragma once

#include <gtest/gtest.h>

#include <string>

#include "dvnbauth.h"
#include "dvnbdbif.h"
#include "dvnfffdn.h"
#include "loadrun.h"
#include "repositorydb.h"
#include "testenv.h"

class RoundTripTest : public RepositoryTest {
protected:
    void TearDown() override {
        DvnBTAuthorization::DestroyInstance();
        RepositoryTest::TearDown();
    }
    // Imports the file as an initial load, overwriting; the level.
    int ImportFile(const std::string& path, bool sourceOption = true) {
        DvnConvCoreDbIF facade;
        testing::internal::CaptureStdout();
        const int level = facade.ImportTRX(DvnString(path), DvnString(DataSource()), true, sourceOption, true);
        testing::internal::GetCapturedStdout();
        return level;
    }
    // The same for a text.
    int Import(const std::string& text, bool sourceOption = true) { return ImportFile(m_files.Write(text), sourceOption); }
    // The text as the writer writes what the parser made of it.
    static std::string Canonical(const std::string& text) {
        DvnfCollectingMessageHandler handler;
        DvnfTRXData data(DvnfTRXTypes::_instance, &handler);
        std::string error;
        EXPECT_EQ(DvnTRXFrontend(data, nullptr).ReadText(text, "expected", 0, nullptr, &error), 0) << error;
        return DvnTRXWriter(data).Write();
    }
    // The text with the first place of each "from" replaced by its "to".
    static std::string Replaced(std::string text, std::initializer_list<std::pair<std::string, std::string>> pairs) {
        for (const auto& [from, to] : pairs) {
            const size_t at = text.find(from);
            EXPECT_NE(at, std::string::npos) << from;
            if (at != std::string::npos) text.replace(at, from.size(), to);
        }
        return text;
    }
    TrxFiles m_files;
};
