#include "CallFormats.h"

namespace quorlua::call {

void Items::takeArguments(const Shape& shape, const char* format, va_list& list)
{
    for (int i = 0; i < shape.arguments; ++i) {
        CallItem& item = *next_++;
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
    }
}

void Items::takeResults(const char* format, va_list& list)
{
    for (const char* at = format; kindsOf(*at).result != CallItemKind::None; ++at) {
        CallItem& item = *next_++;
        item.address = va_arg(list, void*);
    }
}

} // namespace quorlua::call
