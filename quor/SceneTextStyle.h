#pragma once

#include "Font.h"
#include "Scene.h"

#include <QuorScriptor/GlibCallbacks.h>
#include <map>
#include <set>
#include <string>

namespace quor {

/// The text styles of a scene, one of which is the current one. Heights are those of a capital letter; the
/// length of a text is how far it moves the pen in the style's font, scaled to the height, times the style's
/// factor. Texts and names are in GBK; null is an empty text. Nothing is thrown but by the constructor.
class SceneTextStyle final : public GlibTextStyle {
public:
    /// Opens the fonts of all styles of a scene that has some. Throws `Failure` (wrong usage) that names the
    /// style whose font is of no use.
    explicit SceneTextStyle(const Scene& scene);
    virtual ~SceneTextStyle() = default;

    double height() const override;
    double getlen(const char* text) const override;
    double getlen_h(const char* text, double height) const override;
    /// A name that the scene does not have changes nothing, and is told once on standard error: the first
    /// hundred are, by their first 200 bytes.
    void setstyle(const char* name) override;
    double getfactor() const override;

private:
    struct Style {
        explicit Style(const SceneStyle& style);
        Font font;
        double height;
        double factor;
    };

    std::string path_;
    std::map<std::string, Style> styles_;
    std::map<std::string, Style>::const_iterator current_;
    std::set<std::string> told_;
};

} // namespace quor
