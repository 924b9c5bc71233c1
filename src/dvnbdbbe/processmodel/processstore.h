// Small helpers shared by the files of the process store.
#pragma once

#include "dvnbdbbe.h"
#include "dvnfcorn.h"

namespace processstore {

// Any text as an SQL string literal: in single quotes, a quote inside
// doubled. Names, keys and values from a file all go through it.
inline CString Quoted(const DvnString& text) { return ReturnQuotedString(text, "'", "'").c_str(); }
inline CString Quoted(const CString& text) { return Quoted(DvnString(text.c_str())); }

inline constexpr const char* kDefaultDataStructure = "Default Data Structure";

// "Implementation"."Type" of an activity.
enum ImplementationType : long { ProgramType = 1, ProcessType = 2, BlockType = 3, BundleType = 4, InfoType = 5 };

// The kinds of part that 51900 names until their stores exist.
inline constexpr const char* kProgramParts = "Program implementations of process";
inline constexpr const char* kProcessParts = "Process implementations of process";
inline constexpr const char* kBlockParts = "Blocks of process";
inline constexpr const char* kBundleParts = "Bundles of process";
inline constexpr const char* kAttributeParts = "Attributes of process";

// A number column from a value of an entity; null when it is not defined.
inline void SetLongOrNull(CRecordset& row, long& member, const DvnfAttributeDataReader& value) {
    if (value.IsDefined())
        member = value.AsLong(0);
    else
        row.SetFieldNull(&member);
}

}  // namespace processstore
