#pragma once

#include <BaseObj/BaseObj.h>
#include <KxGeBasic/KxGeBasic.h>
#include <cstddef>
#include <string>
#include <string_view>
#include <vector>

namespace quor {

/// Adds the host's values to a line of UTF-8 for people: numbers as the shortest text that reads back as the
/// same, `(x, y, z)` for points, `"texts"` with backslashes, `[lists]`, `"NAME"=value`. Texts are in GBK.
class ValueLine {
public:
    /// `strays` grows by the bytes of texts that belong to no character (CharacterSet.h).
    ValueLine(std::string& line, std::size_t& strays) : line_(line), strays_(strays) {}

    /// UTF-8, as it stands.
    void raw(std::string_view utf8) { line_ += utf8; }

    void put(bool value) { line_ += value ? "true" : "false"; }
    void put(int value);
    void put(long long value);
    void put(double value);
    void put(const std::string& gbk);
    void put(const QuorPoint& value);
    void put(const KxGePoint3D& value) { put(value.toQuorPoint()); }
    void put(const KxGeVector3D& value) { put(value.toQuorPoint()); }
    void put(const KxGeMatrix3D& value);
    void put(const KxDbObjectId& value) { put(value.toInt()); }
    void put(const QuorPolyDesc& value);
    void put(const KVValue& value);
    /// With its note, where it has one, behind the value in brackets.
    void put(const KVParams& record);
    void put(const KVData& record);
    template<class Item>
    void put(const std::vector<Item>& items)
    {
        std::string_view before = "";
        line_ += '[';
        for (const Item& item : items) {
            line_ += before;
            put(item);
            before = ", ";
        }
        line_ += ']';
    }

private:
    std::string& line_;
    std::size_t& strays_;
};

} // namespace quor
