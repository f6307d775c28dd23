#include "platform/LogFile.h"

#include "platform/Files.h"
#include "platform/Workers.h"

#include <atomic>

namespace orrery {

bool saveLog(const LogText& text, const std::string& path, WaitPanel& panel) {
    std::atomic<std::uint64_t> written = 0;
    std::atomic<bool> cancelled = false;
    bool saved = false;
    const auto save = [&] {
        FileReplacement file(path);
        while (written < text.size() && !cancelled) {
            const std::string_view block = text.blockFrom(written);
            file.write(block);
            written += block.size();
        }
        if (cancelled) return;
        file.finish();
        saved = true;
    };
    const auto wait = [&] {
        const auto size = static_cast<double>(text.size());
        if (!panel.update(size == 0 ? 1 : static_cast<double>(written) / size)) cancelled = true;
    };
    const PanelWait open(panel, "Saving the log\u2026");
    runBeside(save, wait);
    return saved;
}

} // namespace orrery
