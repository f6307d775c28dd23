#pragma once

#include "document/DocumentMessages.h"
#include "document/DocumentServices.h"
#include "document/SetupEditing.h"
#include "platform/KnownFile.h"

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// The file that a document's setup is read from and saved in. Owned by its document; main thread.
class DocumentFile {
public:
    /// All of them are the document's, and outlive this.
    DocumentFile(SetupEditing& setup, const DocumentMessages& messages, const DocumentServices& services)
        : m_setup(setup), m_messages(messages), m_services(services) {}

    [[nodiscard]] const std::optional<std::string>& path() const { return m_path; } // none: never saved
    void setPath(std::optional<std::string> path) { m_path = std::move(path); }
    [[nodiscard]] std::string absolutePath() const; // empty without a file
    [[nodiscard]] std::string pathForMessages() const { return m_path.value_or("setup"); }
    /// The file as it was when the document last read or wrote it.
    [[nodiscard]] KnownFile& known() { return m_known; }
    /// A copy that was never saved, and so has no file for the engine.
    [[nodiscard]] bool isUnsavedCopy() const { return m_isUnsavedCopy; }
    /// Why the file that was opened is no setup, with the place; empty when it is one, and after the next save.
    [[nodiscard]] const std::string& unparsedFault() const { return m_unparsedFault; }
    /// The model file's path as the setup has it, made absolute from the setup file's directory; empty without one.
    [[nodiscard]] std::string modelPath() const;

    /// Takes over a setup file's bytes. @throws OrreryError when required elements are missing; nothing has changed
    /// then. Bytes that do not parse are logged and give an empty setup.
    void load(std::string_view bytes);
    /// Reads the file and takes its path. @throws OrreryError as load and KnownFile::read; nothing has changed then
    void read(std::string path);
    /// Reads the file as a copy that has no file yet and names the same model. @throws as read
    void readCopyOf(const std::string& path);
    /// The same of bytes that were the file's. @throws as load
    void readCopy(std::string_view bytes, const std::string& path);
    /// Writes the setup whole, or throws OrreryError and leaves the old file. Stores the user default "lastPath".
    void write(const std::string& path) { (void)write(m_setup.dictionary(), path); }
    /// Writes the setup as it moves to the path, and is at that path then. @throws as write
    void save(const std::string& path);
    /// Whether the file may be run as it is now; says or asks why not.
    [[nodiscard]] bool mayRun();

private:
    KnownFile write(const SetupDictionary& setup, const std::string& path);
    void keepUnparsed(const std::string& path);
    [[nodiscard]] bool asksToWriteOver(const std::vector<std::string>& files);

    SetupEditing& m_setup;
    const DocumentMessages& m_messages;
    const DocumentServices& m_services;
    std::optional<std::string> m_path;
    KnownFile m_known; // at that path
    bool m_isUnsavedCopy = false;
    bool m_isOurs = true; // the setup was written here, or the user has allowed its run
    std::string m_unparsedFault;
    std::string m_unparsedBytes; // of the file that was opened, when it was no setup; kept beside the first save
};

} // namespace orrery
