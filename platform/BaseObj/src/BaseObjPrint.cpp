#include <BaseObj/BaseObj.h>
#include <KxGeBasic/KxGePrint.h>

#include <ostream>

namespace {

void put(std::ostream& out, std::string_view text)
{
    out.write(text.data(), static_cast<std::streamsize>(text.size()));
}

void putEscaped(std::ostream& out, char character)
{
    constexpr std::string_view hex = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(character);
    switch (character) {
    case '"':
        return put(out, "\\\"");
    case '\\':
        return put(out, "\\\\");
    case '\n':
        return put(out, "\\n");
    case '\r':
        return put(out, "\\r");
    case '\t':
        return put(out, "\\t");
    default:
        break;
    }
    if (byte < 0x20 || byte == 0x7F) {
        put(out, "\\x");
        out.put(hex[byte >> 4]);
        out.put(hex[byte & 15U]);
    } else {
        out.put(character);
    }
}

} // namespace

void baseobj::printText(std::ostream& out, std::string_view text)
{
    out.put('"');
    for (const char character : text)
        putEscaped(out, character);
    out.put('"');
}

std::ostream& operator<<(std::ostream& out, const KxDbObjectId& value)
{
    kxge::printInteger(out, value.toInt());
    return out;
}

std::ostream& operator<<(std::ostream& out, const KVValue& value)
{
    switch (value.tag()) {
    case KVTag::None:
        put(out, "none");
        return out;
    case KVTag::Short:
        put(out, "short:");
        kxge::printInteger(out, value.asShort());
        return out;
    case KVTag::Double:
        put(out, "double:");
        kxge::printNumber(out, value.asDouble());
        return out;
    case KVTag::Point:
        put(out, "point:");
        return out << value.asPoint();
    case KVTag::String:
        put(out, "string:");
        baseobj::printText(out, value.asString());
        return out;
    case KVTag::Int:
        put(out, "int:");
        kxge::printInteger(out, value.asInt());
        return out;
    case KVTag::Bool:
        put(out, value.asBool() ? "bool:true" : "bool:false");
        return out;
    }
    put(out, "tag:");
    kxge::printInteger(out, static_cast<short>(value.tag()));
    return out;
}

std::ostream& operator<<(std::ostream& out, const KVParams& value)
{
    put(out, "{");
    baseobj::printText(out, value.key);
    put(out, ", ");
    baseobj::printText(out, value.note);
    put(out, ", ");
    out << value.value;
    put(out, "}");
    return out;
}

std::ostream& operator<<(std::ostream& out, const KVData& value)
{
    put(out, "{");
    baseobj::printText(out, value.key);
    put(out, ", ");
    out << value.value;
    put(out, "}");
    return out;
}
