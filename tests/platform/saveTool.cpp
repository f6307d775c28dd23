// saveTool PATH SIZE: replaces the file by that many "n". One line on standard error and exit 1 when it fails.
#include "platform/Files.h"
#include "platform/Log.h"
#include "platform/values/Numbers.h"
#include "platform/values/OrreryError.h"

int main(int count, char** arguments) {
    if (count != 3) return 2;
    try {
        orrery::replaceFile(arguments[1], std::string(static_cast<std::size_t>(orrery::floatValue(arguments[2])), 'n'));
    } catch (const orrery::OrreryError& error) {
        orrery::logLine(error.what());
        return 1;
    }
    return 0;
}
