// Fuzz target of the TRX parser (libFuzzer). Every input must parse without
// a crash; what parses must write as text that parses again and writes to
// the same text.
#include "dvnfffdn.h"

#include <cstdint>
#include <cstdlib>
#include <string>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
    std::string text(reinterpret_cast<const char*>(bytes), size);
    DvnfCollectingMessageHandler quiet;
    DvnfTRXData data(DvnfTRXTypes::_instance, &quiet);
    if (DvnTRXFrontend(data, nullptr).ReadText(text, "fuzz") > DvnTRXWarnings) return 0;
    std::string once = DvnTRXWriter(data).Write();
    DvnfTRXData again(DvnfTRXTypes::_instance, &quiet);
    if (DvnTRXFrontend(again, nullptr).ReadText(once, "written") > DvnTRXWarnings) std::abort();
    if (DvnTRXWriter(again).Write() != once) std::abort();
    return 0;
}
