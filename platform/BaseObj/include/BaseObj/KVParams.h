#pragma once

#include <BaseObj/Export.h>
#include <KxGeBasic/KxGePoint3D.h>
#include <iosfwd>
#include <string>
#include <utility>

/// What a `KVValue` holds. The numbers are fixed; 6 and 7 are the host's own and never cross into a script.
enum class KVTag : short {
    None = 0,
    Short = 1,
    Double = 2,
    Point = 3,
    String = 4,
    Int = 5,
    Bool = 8,
};

/// A tagged value. Only the reader that fits the tag is meaningful: `asShort`, `asInt` and `asBool` share one
/// integer (each of them narrows or widens what another stored), the others give 0, the origin or an empty
/// text when the value holds something else. Texts are bytes of the host's code page.
class KVValue {
public:
    KVValue() = default;

    static KVValue ofShort(short value) { return KVValue(KVTag::Short, value); }
    static KVValue ofInt(int value) { return KVValue(KVTag::Int, value); }
    static KVValue ofBool(bool value) { return KVValue(KVTag::Bool, value ? 1 : 0); }
    static KVValue ofDouble(double value)
    {
        KVValue made(KVTag::Double, 0);
        made.number_ = value;
        return made;
    }
    static KVValue ofPoint(const QuorPoint& value)
    {
        KVValue made(KVTag::Point, 0);
        made.point_ = value;
        return made;
    }
    static KVValue ofString(std::string value)
    {
        KVValue made(KVTag::String, 0);
        made.text_ = std::move(value);
        return made;
    }
    /// A value with a tag of the host's own and nothing in it.
    static KVValue ofTag(short tag) { return KVValue(static_cast<KVTag>(tag), 0); }

    KVTag tag() const { return tag_; }
    short asShort() const { return static_cast<short>(integer_); }
    int asInt() const { return integer_; }
    bool asBool() const { return integer_ != 0; }
    double asDouble() const { return number_; }
    const QuorPoint& asPoint() const { return point_; }
    const std::string& asString() const { return text_; }

    friend bool operator==(const KVValue&, const KVValue&) = default;

private:
    KVValue(KVTag tag, int integer) : tag_(tag), integer_(integer) {}

    KVTag tag_ = KVTag::None;
    int integer_ = 0;
    double number_ = 0.0;
    QuorPoint point_;
    std::string text_;
};

/// One named parameter of a component: its name, a note for people, and its value.
struct KVParams {
    std::string key;
    std::string note;
    KVValue value;

    friend bool operator==(const KVParams&, const KVParams&) = default;
};

/// Writes the kind and the value: `short:5`, `double:0.1`, `point:(1, 2, 3)`, `string:"DN50"`, `int:7`,
/// `bool:true`, `none`, and `tag:6` for a tag of the host's own. See KxGePrint.h for numbers and
/// `baseobj::printText` for texts.
BASEOBJ_API std::ostream& operator<<(std::ostream& out, const KVValue& value);

/// Writes `{"key", "note", value}`.
BASEOBJ_API std::ostream& operator<<(std::ostream& out, const KVParams& value);
