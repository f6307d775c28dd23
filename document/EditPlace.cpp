#include "document/EditPlace.h"

#include <algorithm>
#include <numeric>

namespace orrery {

namespace {

const EntryList& entriesOf(const UndoHistory::Change& value) {
    static const EntryList none;
    const EntryList* entries = value ? std::get_if<EntryList>(&*value) : nullptr;
    return entries == nullptr ? none : *entries;
}

/// The one field in which the two differ; empty when there are several.
std::string changedField(const Entry& old, const Entry& present) {
    std::string changed;
    for (const Entry* entry : {&old, &present}) {
        for (const auto& [key, value] : *entry) {
            const std::string* there = old.find(key);
            const std::string* here = present.find(key);
            if (there != nullptr && here != nullptr && *there == *here) continue;
            if (!changed.empty() && changed != key) return {};
            changed = key;
        }
    }
    return changed;
}

/// The stretch of the present list in which it differs from the old one.
void findRows(const EntryList& old, const EntryList& present, EditPlace& place) {
    const auto [oldFront, front] = std::ranges::mismatch(old, present);
    const auto first = static_cast<std::size_t>(front - present.begin());
    const std::size_t shared = std::min(old.size(), present.size()) - first;
    std::size_t behind = 0;
    while (behind < shared && old[old.size() - 1 - behind] == present[present.size() - 1 - behind]) {
        ++behind;
    }
    place.rows.resize(present.size() - behind - first);
    std::iota(place.rows.begin(), place.rows.end(), first);
    if (present.empty()) return;
    place.setup.row = std::min(first, present.size() - 1); // where rows went, the one that took their place
    if (place.rows.size() == 1 && old.size() == present.size()) {
        place.setup.field = changedField(old[first], present[first]);
    }
}

} // namespace

EditPlace placeOf(const UndoHistory::Edit& edit, Step step) {
    EditPlace place;
    place.plot = edit.plot;
    if (edit.before.empty()) return place;
    const auto& [key, before] = *edit.before.begin();
    const UndoHistory::Change& after = edit.after.begin()->second;
    place.setup.key = key;
    if (step == Step::Undone) {
        findRows(entriesOf(after), entriesOf(before), place);
    } else {
        findRows(entriesOf(before), entriesOf(after), place);
    }
    return place;
}

} // namespace orrery
