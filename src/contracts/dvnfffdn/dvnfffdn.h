// The TRX language: a parser that reads TRX text into core data and a writer
// that turns core data back into TRX text in one canonical form. The
// language is described in docs/trx.md; the implementation lives in
// siblings/dvnfffdn.
#pragma once

#include "dvnfcorn.h"

#include <string>
#include <vector>

// Result levels of a parse.
enum : int {
    DvnTRXGood = 0,      // read without remarks
    DvnTRXWarnings = 2,  // read; warnings were reported
    DvnTRXFailed = 8,    // not read: the file could not be opened, or it holds an error
};

// Message numbers the parser reports through the core data's handler.
enum : long {
    DvnTRXMsgCannotOpen = 52001,     // %1 file
    DvnTRXMsgSyntax = 52002,         // %1 file, %2 line, %3 column, %4 what
    DvnTRXMsgUnknownType = 52003,    // %1 file, %2 line, %3 column, %4 type
    DvnTRXMsgUnknownLink = 52004,    // %1..%3 position, %4 link, %5 type
    DvnTRXMsgDuplicate = 52005,      // %1..%3 position, %4 type, %5 name
    DvnTRXMsgUnknownAttr = 52006,    // warning: %1..%3 position, %4 attribute path, %5 type
    DvnTRXMsgKindMismatch = 52007,   // warning: %1..%3 position, %4 path, %5 expected kind
    DvnTRXMsgNoSuchEnd = 52008,      // %1..%3 position, %4 link, %5 target name
    DvnTRXMsgNotRead = 52009,        // warning: %1 type, %2 name (named only, the reader found nothing)
    DvnTRXMsgRead = 52010,           // %1 file, %2 number of definitions: end of a good parse
    DvnTRXMsgNotCommitted = 52011,   // %1 file, %2 result: nothing of the file was taken
};

class DvnTRXFrontend {
public:
    // reader may be null: objects that a file only names then stay skeletons.
    DvnTRXFrontend(DvnfTRXData& data, DvnfFrontendReader* reader);

    // Reads a TRX file into the core data. acceptLevel is the highest result
    // at which the definitions are taken into the core data (2: warnings are
    // accepted, 0: only a clean file); above it, or on an error, the core
    // data is left exactly as it was. defined (may be null) receives the
    // entities the file defined, in file order; firstError (may be null)
    // receives the text of the first error, as "file:line:column: what".
    // Returns 0, 2 or 8.
    int ReadFile(const char* file, int acceptLevel, std::vector<DvnfEntity*>* defined, std::string* firstError);
    // The same on text in memory; sourceName stands in the messages.
    int ReadText(const std::string& text, const char* sourceName, int acceptLevel = DvnTRXWarnings,
                 std::vector<DvnfEntity*>* defined = nullptr, std::string* firstError = nullptr);

private:
    DvnfTRXData& _data;
    DvnfFrontendReader* _reader;
};

// Writes core data as TRX text. The form is canonical: entities by type in
// catalogue order and then by name, sub-attributes by name, set elements in
// their order, links by type in catalogue order and then in their order; two
// spaces per level; so the text of equal data is equal.
class DvnTRXWriter {
public:
    struct Options {
        bool withOIDs = false;  // write "oid" clauses (keys); off for files meant for import
    };
    explicit DvnTRXWriter(const DvnfTRXData& data) : _data(data) {}
    DvnTRXWriter(const DvnfTRXData& data, Options options) : _data(data), _options(options) {}

    // Every top-level entity in a state other than 0 (state 1 is written as
    // a deletion).
    std::string Write() const;
    // Only these entities (each must be of a top-level type), in the
    // canonical order, whatever their state.
    std::string Write(const std::vector<const DvnfEntity*>& selection) const;
    // Write() into a file; false when the file cannot be written.
    bool WriteFile(const char* path) const;

    // A TRX string literal for the text (quotes and escapes).
    static std::string Quote(const std::string& text);

private:
    const DvnfTRXData& _data;
    Options _options;
};
