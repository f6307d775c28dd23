#include "batch/Command.h"

#include <array>

namespace orrery {

std::span<const Command> commands() {
    static constexpr std::array both{Command{"run", runHelp, buildRunCommand},
                                     Command{"plot", plotHelp, buildPlotCommand}};
    return both;
}

} // namespace orrery
