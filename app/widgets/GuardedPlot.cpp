#include "app/widgets/GuardedPlot.h"

#include "platform/Log.h"

#include <exception>
#include <new>
#include <stdexcept>
#include <string>

namespace orrery {

namespace {

void fail(MyDocument& document, const std::string& reason) {
    logLine(reason);
    const DocumentOutlets& outlets = document.outlets();
    if (outlets.glView != nullptr) {
        outlets.glView->setSurfaces({}, 0, {});
        outlets.glView->setFailure(reason); // stays to be read when the sheet has gone
        outlets.glView->setNeedsDisplay();
    }
    if (outlets.alerts != nullptr) {
        outlets.alerts->beginSheet({"The plot could not be drawn.", reason}, [](std::size_t) {});
    }
}

} // namespace

void guardedPlot(MyDocument& document, const std::function<void()>& command) {
    const char* const tooLarge =
        "There is not enough memory. Include fewer responses, or put a variable with fewer values on an axis.";
    try {
        command();
    } catch (const std::bad_alloc&) {
        fail(document, tooLarge);
    } catch (const std::length_error&) {
        fail(document, tooLarge);
    } catch (const std::exception& failure) {
        fail(document, failure.what());
    }
}

} // namespace orrery
