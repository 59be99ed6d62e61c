#include "SceneTextStyle.h"

#include "CharacterSet.h"
#include "Failure.h"
#include "Terminal.h"

namespace quor {
namespace {

/// A script can ask for names without end. So many are told, and kept, up to so many bytes of each.
constexpr std::size_t mostTold = 100;
constexpr std::size_t longestTold = 200;

} // namespace

SceneTextStyle::Style::Style(const SceneStyle& style)
    : font(style.font, style.face), height(style.height), factor(style.factor)
{
}

SceneTextStyle::SceneTextStyle(const Scene& scene) : path_(scene.path)
{
    for (const auto& [name, style] : scene.textStyles) {
        try {
            styles_.try_emplace(name, style);
        } catch (const FontError& error) {
            throw Failure(WrongUsage, fmt::format("{}: font {}: {}", style.place, style.font, error.what()));
        }
    }
    current_ = styles_.find(scene.textStyle);
}

double SceneTextStyle::height() const
{
    return current_->second.height;
}

double SceneTextStyle::getfactor() const
{
    return current_->second.factor;
}

double SceneTextStyle::getlen(const char* text) const
{
    return getlen_h(text, height());
}

double SceneTextStyle::getlen_h(const char* text, double height) const
{
    const Style& style = current_->second;
    try {
        const double width = style.font.widthOf(charset::charactersFromGbk(text ? text : ""));
        return width / style.font.capHeight() * height * style.factor;
    } catch (const std::exception&) {
        return 0; // no memory for the characters: a script sees no error of the host
    }
}

void SceneTextStyle::setstyle(const char* name)
{
    try {
        const std::string wanted = name ? name : "";
        const auto found = styles_.find(wanted);
        if (found != styles_.end()) {
            current_ = found;
            return;
        }
        const std::string told = wanted.substr(0, longestTold);
        if (told_.size() < mostTold && told_.insert(told).second)
            terminal::say("{}: the script asks for the text style \"{}\", which is not there; \"{}\" stays",
                          path_, terminal::fromGbk(told), terminal::fromGbk(current_->first));
    } catch (const std::exception&) {
        return; // no memory to look for it: the style stays
    }
}

} // namespace quor
