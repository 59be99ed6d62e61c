#include "CallFormats.h"

#include <cstring>

namespace quorlua::call {

Shape shapeOf(const char* format)
{
    Shape shape;
    const char* at = format;
    while (*at != '\0' && *at != '>' && kindsOf(*at).argument != CallItemKind::None) {
        if (*at == 'c' || *at == 't') ++shape.handles;
        ++at;
    }
    shape.arguments = static_cast<int>(at - format);
    shape.valid = *at == '\0' || *at == '>';
    shape.rest = *at == '\0' ? at : at + 1;
    shape.results = static_cast<int>(std::strlen(shape.rest));
    return shape;
}

void Items::add(CallItem item)
{
    if (count_ < fewItems) {
        few_[count_++] = item;
        return;
    }
    if (more_.empty()) more_.assign(few_, few_ + fewItems);
    more_.push_back(item);
}

void Items::takeArguments(const Shape& shape, const char* format, va_list& list)
{
    for (int i = 0; i < shape.arguments; ++i) {
        CallItem item{};
        switch (kindsOf(format[i]).argument) {
        case CallItemKind::Int:
            item.integer = va_arg(list, int);
            break;
        case CallItemKind::Bool:
            // A truth value arrives promoted to int, and only its low byte says anything.
            item.truth = (va_arg(list, int) & 0xFF) != 0;
            break;
        case CallItemKind::Double:
            item.number = va_arg(list, double);
            break;
        case CallItemKind::Int64:
            item.integer64 = va_arg(list, long long);
            break;
        default:
            item.address = va_arg(list, void*);
        }
        add(item);
    }
}

void Items::takeResults(const char* format, va_list& list)
{
    for (const char* at = format; kindsOf(*at).result != CallItemKind::None; ++at) {
        CallItem item{};
        item.address = va_arg(list, void*);
        add(item);
    }
}

} // namespace quorlua::call
