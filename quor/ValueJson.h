#pragma once

#include <BaseObj/BaseObj.h>
#include <KxGeBasic/KxGeBasic.h>
#include <cstddef>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace quor {

/// Members stand in the order in which they are put.
using Json = nlohmann::ordered_json;

/// The host's values in JSON; docs/json.md says how each looks. Texts, in GBK, become UTF-8.
class ValueJson {
public:
    /// `strays` grows by the bytes of texts that belong to no character (CharacterSet.h).
    explicit ValueJson(std::size_t& strays) : strays_(strays) {}

    Json of(bool value) const { return value; }
    Json of(int value) const { return value; }
    Json of(long long value) const { return value; }
    Json of(double value) const;
    Json of(const std::string& gbk) const;
    Json of(const QuorPoint& value) const;
    Json of(const KxGePoint3D& value) const { return of(value.toQuorPoint()); }
    Json of(const KxGeVector3D& value) const { return of(value.toQuorPoint()); }
    Json of(const KxGeMatrix3D& value) const;
    Json of(const KxDbObjectId& value) const { return value.toInt(); }
    Json of(const QuorPolyDesc& value) const;
    Json of(const KVValue& value) const;
    Json of(const KVParams& record) const;
    Json of(const KVData& record) const;
    template<class Item>
    Json of(const std::vector<Item>& items) const
    {
        Json array = Json::array();
        for (const Item& item : items)
            array.push_back(of(item));
        return array;
    }

private:
    std::size_t& strays_;
};

} // namespace quor
