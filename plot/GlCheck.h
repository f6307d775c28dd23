#pragma once

#include <string>

namespace orrery {

/// Reads one OpenGL error; unless it is 0, logs "Error: %s." with the library's text for it. Returns the code.
unsigned glCheckError();

/// Keeps the text of the first OpenGL error that glCheckError reads while this lives ("out of memory"), in a string
/// that is left alone when there is one already. Watches nest, and each hears of the error. Main thread.
class GlErrorWatch {
public:
    explicit GlErrorWatch(std::string& first);
    ~GlErrorWatch();
    GlErrorWatch(const GlErrorWatch&) = delete;
    GlErrorWatch& operator=(const GlErrorWatch&) = delete;

    void hear(const std::string& text) const;

private:
    std::string& m_first;
    const GlErrorWatch* m_outer;
};

/// What the current context lacks for our drawing, in words for the user ("OpenGL 2.1 is needed, …"); empty when
/// nothing is missing.
[[nodiscard]] std::string missingGlFeature();

} // namespace orrery
