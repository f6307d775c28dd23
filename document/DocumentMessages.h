#pragma once

#include "document/DocumentOutlets.h"
#include "document/DocumentServices.h"
#include "platform/Outlets.h"

#include <string_view>

namespace orrery {

/// How a document speaks to the user: in its window, or without one to its services, a line each.
class DocumentMessages {
public:
    /// Both are the document's, and outlive this.
    DocumentMessages(const DocumentOutlets& outlets, const DocumentServices& services)
        : m_outlets(outlets), m_services(services) {}

    /// A sheet that needs no answer.
    void showSheet(const AlertText& text) const;
    /// A message that the user has to have read before anything goes on.
    void showModal(const AlertText& text) const;
    /// Whether the user's answer is the first button's. Without a window it is no, and `otherwise` says what to do.
    [[nodiscard]] bool agrees(const AlertText& question, std::string_view otherwise) const;

private:
    void print(std::string_view message, std::string_view separator, std::string_view rest) const;

    const DocumentOutlets& m_outlets;
    const DocumentServices& m_services;
};

} // namespace orrery
