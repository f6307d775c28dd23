#pragma once

#include "document/MyDocument.h"
#include "platform/UserDefaults.h"
#include "platform/native/PosixChildProcess.h"
#include "platform/qt/QtNamedServices.h"
#include "platform/qt/QtRunLoop.h"
#include "platform/qt/QtTextRasterizer.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <utility>

namespace orrery {

/// The platform as the application's documents and windows use it. One, made by main after the application object; it
/// outlives every window.
class ApplicationServices {
public:
    explicit ApplicationServices(std::unique_ptr<UserDefaults> defaults);

    [[nodiscard]] DocumentServices forDocuments();
    [[nodiscard]] UserDefaults& defaults() { return *m_defaults; }
    /// Empty when there is none to work in; then the fault says why.
    [[nodiscard]] const std::string& temporaryDirectory() const { return m_temporaryDirectory; }
    [[nodiscard]] const std::string& temporaryDirectoryFault() const { return m_temporaryDirectoryFault; }
    /// Where runs are kept; empty, as at first: they are not.
    void setStoreDirectory(std::string directory) { m_storeDirectory = std::move(directory); }
    [[nodiscard]] const std::string& storeDirectory() const { return m_storeDirectory; }
    [[nodiscard]] TextRasterizer& rasterizer() { return m_rasterizer; }
    [[nodiscard]] RunLoop& runLoop() { return m_loop; }

private:
    QtRunLoop m_loop;
    PosixChildProcessLauncher m_launcher{m_loop};
    std::unique_ptr<UserDefaults> m_defaults;
    QtTextRasterizer m_rasterizer;
    QtNamedServices m_namedServices;
    std::string m_storeDirectory;
    std::string m_temporaryDirectory;
    std::string m_temporaryDirectoryFault;
};

} // namespace orrery
