#include "log/LogFile.h"

#include "platform/Files.h"
#include "platform/Workers.h"
#include "platform/values/OrreryError.h"

#include <algorithm>
#include <atomic>

namespace orrery {
namespace {

constexpr std::uint64_t pieceSize = 1U << 20U;

} // namespace

bool saveLog(const LogText& text, const std::string& path, WaitPanel& panel) {
    std::atomic<std::uint64_t> written = 0;
    std::atomic<bool> cancelled = false;
    bool saved = false;
    const auto save = [&] {
        FileReplacement file(path);
        for (std::uint64_t at = text.begin(); at < text.end() && !cancelled; at += pieceSize, written += pieceSize) {
            const auto piece = text.wholeBytes(at, at + pieceSize);
            if (!piece) throw OrreryError("The older text of the log cannot be read back from the disk.", {path}, {});
            file.write(*piece);
        }
        if (cancelled) return;
        file.finish();
        saved = true;
    };
    const auto wait = [&] {
        const auto size = static_cast<double>(text.end() - text.begin());
        if (!panel.update(size == 0 ? 1 : std::min(static_cast<double>(written) / size, 1.0))) cancelled = true;
    };
    const PanelWait open(panel, "Saving the log\u2026");
    runBeside(save, wait);
    return saved;
}

} // namespace orrery
