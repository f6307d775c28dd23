// Any bytes are a setup or an OrreryError, and a setup that can be saved is saved the same again after it is read back.
#include "FuzzTarget.h"
#include "document/setup/SetupReader.h"
#include "document/setup/SetupWriter.h"
#include "platform/values/OrreryError.h"

int LLVMFuzzerTestOneInput(const unsigned char* data, std::size_t size) {
    std::string saved;
    try {
        saved =
            orrery::setupFileBytes(orrery::readSetup(orrery::fuzz::asText(data, size), "input").dictionary, "saved");
    } catch (const orrery::OrreryError&) {
        return 0;
    }
    const orrery::LoadedSetup again = orrery::readSetup(saved, "saved");
    orrery::fuzz::require(again.parsed, "a saved setup is well-formed");
    orrery::fuzz::require(orrery::setupFileBytes(again.dictionary, "again") == saved, "a saved setup reads back");
    return 0;
}
