#include "run/results/RunRecord.h"

#include "document/setup/ModelPath.h"
#include "platform/Files.h"
#include "platform/values/OrreryError.h"

#include <fmt/format.h>
#include <nettle/sha2.h>

#include <algorithm>
#include <array>
#include <string_view>

namespace orrery {

namespace {

class Sha256 {
public:
    Sha256() { sha256_init(&m_state); }
    void add(std::string_view bytes) {
        sha256_update(&m_state, bytes.size(), reinterpret_cast<const std::uint8_t*>(bytes.data()));
    }
    [[nodiscard]] std::string text() {
        std::array<std::uint8_t, SHA256_DIGEST_SIZE> digest{};
        sha256_digest(&m_state, digest.size(), digest.data());
        return fmt::format("{:02x}", fmt::join(digest, ""));
    }

private:
    sha256_ctx m_state{};
};

} // namespace

std::string sha256Of(std::string_view bytes) {
    Sha256 hash;
    hash.add(bytes);
    return hash.text();
}

RecordedFile recordFile(const std::string& path, std::uint64_t limit) {
    RecordedFile record{.path = path, .sha256 = {}, .size = 0, .bytes = {}};
    try {
        const ReadableFile file(path);
        Sha256 hash;
        std::string kept;
        std::string block(std::size_t{1} << 20U, '\0');
        for (std::size_t got = 0; (got = file.readAt(block.data(), block.size(), record.size)) > 0;) {
            const std::string_view bytes(block.data(), got);
            hash.add(bytes);
            record.size += got;
            if (record.size <= limit) kept += bytes;
        }
        record.sha256 = hash.text();
        if (record.size <= limit) record.bytes = std::move(kept);
    } catch (const OrreryError&) {
        record.size = 0; // the path alone: a record is no reason to lose results
    }
    return record;
}

RunRecord recordOfSetup(const SetupDictionary& setup, const std::string& setupPath) {
    RunRecord record;
    record.setup = recordFile(setupPath);
    record.model = recordFile(resolvedPath(setup.textOrEmpty(setup_key::modelPath), setupPath), largestKeptModel);
    record.version = ORRERY_VERSION;
    return record;
}

} // namespace orrery
