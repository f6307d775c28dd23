#include "app/GuardedPlot.h"

#include "platform/Log.h"

#include <exception>
#include <new>
#include <string>

namespace orrery {

namespace {

void fail(MyDocument& document, const std::string& reason) {
    logLine(reason);
    const DocumentOutlets& outlets = document.outlets();
    if (outlets.glView != nullptr) {
        outlets.glView->setSurfaces({}, 0, {});
        outlets.glView->setNeedsDisplay();
    }
    if (outlets.alerts != nullptr) {
        outlets.alerts->beginSheet({"The plot could not be drawn.", reason}, [](std::size_t) {});
    }
}

} // namespace

void guardedPlot(MyDocument& document, const std::function<void()>& command) {
    try {
        command();
    } catch (const std::bad_alloc&) {
        fail(document,
             "There is not enough memory. Draw fewer responses, or put a variable of fewer values on an axis.");
    } catch (const std::exception& failure) {
        fail(document, failure.what());
    }
}

} // namespace orrery
