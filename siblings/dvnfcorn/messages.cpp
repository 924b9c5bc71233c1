// The message handler and the catalogue of message texts.
#include "dvnfcorn.h"

#include <algorithm>
#include <iostream>
#include <iterator>

namespace {
std::ostream* g_defaultOutput = &std::cout;

struct CatalogueEntry {
    long number;
    const char* text;
};
constexpr CatalogueEntry kCatalogue[] = {
#include "messages.inc"
};

const CatalogueEntry* Find(long number) {
    auto it = std::lower_bound(std::begin(kCatalogue), std::end(kCatalogue), number,
                               [](const CatalogueEntry& e, long n) { return e.number < n; });
    return (it != std::end(kCatalogue) && it->number == number) ? it : nullptr;
}

// Fills %1 .. %7; a [ ] part is dropped when every argument it names is null.
std::string Fill(const char* text, const DvnString* const args[7]) {
    std::string out, part;
    bool inPart = false, partHasValue = false;
    for (const char* p = text; *p; ++p) {
        std::string& to = inPart ? part : out;
        if (*p == '%' && p[1] >= '1' && p[1] <= '7') {
            const DvnString& a = *args[p[1] - '1'];
            if (!a.IsNull()) {
                to += a.str();
                partHasValue = true;
            }
            ++p;
        } else if (*p == '[' && !inPart) {
            inPart = true;
            partHasValue = false;
            part.clear();
        } else if (*p == ']' && inPart) {
            inPart = false;
            if (partHasValue) out += part;
        } else {
            to += *p;
        }
    }
    if (inPart && partHasValue) out += part;
    return out;
}
}  // namespace

DvnfMessageHandler::~DvnfMessageHandler() = default;

const char* DvnfMessageHandler::Text(long number) {
    const CatalogueEntry* e = Find(number);
    return e ? e->text : nullptr;
}

std::vector<long> DvnfMessageHandler::Numbers() {
    std::vector<long> out;
    for (const auto& e : kCatalogue) out.push_back(e.number);
    return out;
}

void DvnfMessageHandler::DefaultOutput(std::ostream* out) { g_defaultOutput = out ? out : &std::cout; }

DvnString DvnfMessageHandler::Format(long number, const DvnString& a1, const DvnString& a2, const DvnString& a3,
                                     const DvnString& a4, const DvnString& a5, const DvnString& a6,
                                     const DvnString& a7) {
    const DvnString* const args[7] = {&a1, &a2, &a3, &a4, &a5, &a6, &a7};
    std::string line = std::to_string(number) + ": ";
    if (const char* text = Text(number)) {
        line += Fill(text, args);
    } else {
        line += "Message without text.";
        for (const DvnString* a : args)
            if (!a->IsNull()) line += " | " + a->str();
    }
    return DvnString(line);
}

void DvnfMessageHandler::Report(long number, const DvnString& a1, const DvnString& a2, const DvnString& a3,
                                const DvnString& a4, const DvnString& a5, const DvnString& a6, const DvnString& a7) {
    *g_defaultOutput << Format(number, a1, a2, a3, a4, a5, a6, a7).str() << '\n' << std::flush;
}

DvnString DvnfCollectingMessageHandler::Entry::Line() const {
    return Format(number, args[0], args[1], args[2], args[3], args[4], args[5], args[6]);
}

void DvnfCollectingMessageHandler::Report(long number, const DvnString& a1, const DvnString& a2, const DvnString& a3,
                                          const DvnString& a4, const DvnString& a5, const DvnString& a6,
                                          const DvnString& a7) {
    _entries.push_back(Entry{number, {a1, a2, a3, a4, a5, a6, a7}});
    if (_echo) DvnfMessageHandler::Report(number, a1, a2, a3, a4, a5, a6, a7);
}

size_t DvnfCollectingMessageHandler::Count(long number) const {
    return static_cast<size_t>(
        std::count_if(_entries.begin(), _entries.end(), [number](const Entry& e) { return e.number == number; }));
}
