#pragma once

#include "document/setup/SetupDictionary.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// The edits of a setup that can be taken back and done again, in their order. Holds values only; the document puts
/// them into its dictionary.
class UndoHistory {
public:
    using Change = std::optional<SetupDictionary::Value>; // std::nullopt: the key is absent

    /// What an edit changed: the values of the changed keys before and after it.
    struct Edit {
        std::string name; // as a menu says it: "Move Steppers"
        std::map<std::string, Change, std::less<>> before;
        std::map<std::string, Change, std::less<>> after;
        bool listChangeCounted = false; // it added, removed or moved entries, which counts as a change of the document
    };

    /// Adds the edit that led from `before` to `after`, unless nothing differs; edits that were undone are forgotten.
    void record(std::string name, const SetupDictionary::Values& before, const SetupDictionary::Values& after,
                bool listChangeCounted);
    void clear();
    /// Exchanges the texts that steps would put under the key, where what they mean has got another text.
    void replaceTexts(std::string_view key, const std::function<std::string(const std::string&)>& replacement);

    [[nodiscard]] bool canUndo() const { return m_done > 0; }
    [[nodiscard]] bool canRedo() const { return m_done < m_edits.size(); }
    [[nodiscard]] std::string_view undoName() const; // empty when there is nothing to undo
    [[nodiscard]] std::string_view redoName() const;

    /// Steps over the next edit and returns it; its `before` (or, for redo, its `after`) is to be put in place. Legal
    /// only when canUndo() (canRedo()) holds; valid until the history changes.
    const Edit& stepBack() { return m_edits[--m_done]; }
    const Edit& stepForward() { return m_edits[m_done++]; }

private:
    std::vector<Edit> m_edits;
    std::size_t m_done = 0; // edits in place; those behind were undone
};

} // namespace orrery
