#pragma once

#include <memory>
#include <string>
#include <string_view>

namespace orrery {

/// A file as this program last read or wrote it, to find out what others have done to it since.
///
/// It keeps that file open and can claim it. A claim is an advisory lock that every Orrery shares on the documents that
/// it shows; the system ends it with the process. Copies of this object are one and the same.
class KnownFile {
public:
    enum class Change { None, Contents, Missing };

    KnownFile(); // of no file: nothing changes

    /// Reads the whole file into `bytes`. @throws OrreryError as readWholeFile
    [[nodiscard]] static KnownFile read(const std::string& path, std::string& bytes);
    /// The file that the descriptor has open, which becomes this object's, with its contents as they are known.
    [[nodiscard]] static KnownFile opened(int descriptor, std::string_view contents);

    /// What is at the path now, compared with what was read or written. The contents decide: a file that was only
    /// touched or copied back has not changed. Where they can no longer be read, device, inode, size and the times of
    /// modification and change do.
    [[nodiscard]] Change changeAt(const std::string& path) const;

    /// Lets other programs see that the file is open here.
    void claim();
    /// Whether another program has claimed the file that is at the path now.
    [[nodiscard]] bool isClaimedElsewhere(const std::string& path) const;

private:
    struct State;
    explicit KnownFile(std::shared_ptr<State> state);
    std::shared_ptr<State> m_state;
};

/// Replaces the file as replaceFile does, and keeps the new one open. @throws OrreryError as replaceFile
[[nodiscard]] KnownFile replaceKnownFile(const std::string& path, std::string_view bytes);

} // namespace orrery
