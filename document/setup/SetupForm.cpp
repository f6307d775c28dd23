#include "document/setup/SetupForm.h"

namespace orrery::setup_form {

std::string settingText(const SetupDictionary& setup, const Setting& setting) {
    if (setting.kind != Kind::Date) return std::string(setup.textOrEmpty(setting.key));
    const std::optional<Date> day = setup.startDay();
    return day ? dateDescription(*day) : std::string();
}

} // namespace orrery::setup_form
