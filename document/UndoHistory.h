#pragma once

#include "document/PlotAct.h"
#include "document/setup/SetupDictionary.h"
#include "plot/data/PlotState.h"

#include <cstddef>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace orrery {

/// What was edited in a setup or chosen on the plot tab and can be taken back and done again, in its order. Holds
/// values only; the document puts them in place.
///
/// A choice that no longer applies, because a run brought other variables, is passed over as if it were not there.
class UndoHistory {
public:
    using Change = std::optional<SetupDictionary::Value>; // std::nullopt: the key is absent

    /// What an edit changed: the values of the setup's changed keys before and after it, or the plot.
    struct Edit {
        std::string name; // as a menu says it: "Move Steppers"
        std::map<std::string, Change, std::less<>> before;
        std::map<std::string, Change, std::less<>> after;
        bool listChangeCounted = false; // it added, removed or moved entries, which counts as a change of the document
        PlotChange plot;
    };

    /// Who knows whether the plot has what a change is about.
    void setApplies(std::function<bool(const PlotChange&)> applies) { m_applies = std::move(applies); }

    /// Adds the edit that led from `before` to `after`, unless nothing differs; edits that were undone are forgotten.
    void record(std::string name, const SetupDictionary::Values& before, const SetupDictionary::Values& after,
                bool listChangeCounted);
    /// Adds a change of the plot. While one control moves, its changes are one edit.
    void recordPlot(PlotControl control, const PlotChange& change);
    void endMove() { m_moving.reset(); } // the control was let go
    void clear();
    /// Exchanges the texts that steps would put under the key, where what they mean has got another text.
    void replaceTexts(std::string_view key, const std::function<std::string(const std::string&)>& replacement);

    [[nodiscard]] bool canUndo() const { return nextUndo() != nullptr; }
    [[nodiscard]] bool canRedo() const { return nextRedo() != nullptr; }
    /// The edits that would be taken back and done again next; nullptr without one. Valid until the history changes.
    [[nodiscard]] const Edit* nextUndo() const;
    [[nodiscard]] const Edit* nextRedo() const;

    /// Steps over the next edit and returns it; its `before` (or, for redo, its `after`) is to be put in place. Legal
    /// only when canUndo() (canRedo()) holds; valid until the history changes.
    const Edit& stepBack();
    const Edit& stepForward();

private:
    void push(Edit edit);
    [[nodiscard]] bool applies(const Edit& edit) const {
        return edit.plot.empty() || !m_applies || m_applies(edit.plot);
    }

    std::vector<Edit> m_edits;
    std::size_t m_done = 0;              // edits in place; those behind were undone
    std::optional<PlotControl> m_moving; // the last edit is its and goes on
    std::function<bool(const PlotChange&)> m_applies;
};

} // namespace orrery
