#include "app/LaunchOptions.h"

#include "platform/Files.h"

#include <CLI/CLI.hpp>

#include <iostream>

namespace orrery {

std::optional<LaunchOptions> launchOptions(int argc, char** argv, int& exitCode) {
    LaunchOptions options;
    CLI::App parser{"Orrery sets up, runs and shows parameter sweeps of a simulation model.", "orrery"};
    parser.set_version_flag("--version", "orrery " ORRERY_VERSION);
    parser.add_flag("--new-instance", options.newInstance, "Start another Orrery even when one is running");
    parser.add_option("--picture", options.picture, "Save a picture of the window (PNG) and exit");
    parser.add_option("files", options.files, "Setups and results files to open");
    parser.footer("If Orrery is already running, it opens the files. Without a display, use orrery-batch.");
    try {
        parser.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        exitCode = error.get_exit_code() == 0 ? parser.exit(error) : 2;
        if (exitCode == 2) std::cerr << "orrery: " << error.what() << ". See --help for the options.\n";
        return std::nullopt;
    }
    if (!options.picture.empty()) options.picture = absolutePath(options.picture);
    for (std::string& file : options.files) {
        file = absolutePath(file);
    }
    return options;
}

} // namespace orrery
