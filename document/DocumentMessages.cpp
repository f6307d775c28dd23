#include "document/DocumentMessages.h"

#include <fmt/format.h>

namespace orrery {

void DocumentMessages::showSheet(const AlertText& text) const {
    if (m_outlets.alerts == nullptr) return print(text.message, " ", text.informative);
    m_outlets.alerts->beginSheet(text, [](std::size_t) {});
}

void DocumentMessages::showModal(const AlertText& text) const {
    if (m_outlets.alerts == nullptr) return print(text.message, ": ", text.informative);
    (void)m_outlets.alerts->runModal(text);
}

bool DocumentMessages::agrees(const AlertText& question, std::string_view otherwise) const {
    if (m_outlets.alerts != nullptr) return m_outlets.alerts->runModal(question) == 0;
    print(question.message, " ", fmt::format("{} {}", question.informative, otherwise));
    return false;
}

void DocumentMessages::print(std::string_view message, std::string_view separator, std::string_view rest) const {
    if (m_services.run.message) m_services.run.message(fmt::format("{}{}{}", message, separator, rest));
}

} // namespace orrery
