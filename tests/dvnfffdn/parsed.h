// TRX text read into fresh core data whose reports are kept, for the tests
// of this directory.
#pragma once

#include "dvnfffdn.h"

#include <string>
#include <vector>

struct Parsed {
    DvnfCollectingMessageHandler messages;
    DvnfTRXData data{DvnfTRXTypes::_instance, &messages};
    int rc = -1;
    std::string error;
    explicit Parsed(const std::string& text, int accept = DvnTRXWarnings, DvnfFrontendReader* reader = nullptr) {
        rc = DvnTRXFrontend(data, reader).ReadText(text, "t.trx", accept, nullptr, &error);
    }
    // Every report but the closing line of a good read.
    std::vector<std::string> Remarks() const {
        std::vector<std::string> out;
        for (const auto& e : messages.Entries())
            if (e.number != DvnTRXMsgRead) out.push_back(e.Line().str());
        return out;
    }
};
