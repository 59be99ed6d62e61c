#pragma once

#include "duplicateText.h"

#include <cstdlib>

class GlibScriptFunctor;
class GlibTextStyle;

namespace quorlua {

/// A NUL-terminated text that its holder owns, or none.
class OwnedText {
public:
    OwnedText() = default;
    ~OwnedText() { std::free(text_); }
    OwnedText(const OwnedText&) = delete;
    OwnedText& operator=(const OwnedText&) = delete;

    /// Keeps a copy of the text, or none for null; when memory runs out, none.
    void set(const char* text)
    {
        std::free(text_);
        text_ = text ? duplicateText(text) : nullptr;
    }
    const char* get() const { return text_; }

private:
    char* text_ = nullptr;
};

/// What holds on one thread while a script draws: the current drawing attributes, which records change and
/// new primitives are stamped with, and the host's objects that the "glib" functions ask.
struct ScriptContext {
    static constexpr short defaultColour = 257;

    OwnedText material;
    short colour = defaultColour;
    const GlibScriptFunctor* functor = nullptr;
    const GlibTextStyle* textStyle = nullptr;
    double thickness = 0.0;
    double lineTypeScale = 1.0;
    OwnedText lineType;

    /// Everything as in a new context, save the text style, which stays.
    void reset();
};

/// The calling thread's context: its own, or the one that all threads without their own share.
ScriptContext& currentContext();

} // namespace quorlua
