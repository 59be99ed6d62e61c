#include "CallResults.h"

#include "CallWatch.h"
#include "LuaValue.h"
#include "PrimaryJson.h"
#include "PrimaryLine.h"
#include "ValueLine.h"

#include <QuorPrimary/QuorPrimary.h>
#include <QuorPureScriptor/lua_tinker.h>
#include <algorithm>
#include <bit>
#include <cstdint>
#include <cstdlib>
#include <fmt/format.h>

namespace quor {

struct CallResults::Output {
    Output() = default;
    virtual ~Output() = default;
    Output(const Output&) = delete;
    Output& operator=(const Output&) = delete;

    virtual const void* address() const = 0;
    /// Whether the call left it as it was, where the type of the result does not tell.
    virtual bool isUntouched() const { return false; }
    virtual Json json(std::size_t& strays) const = 0;
    virtual void line(std::string& line, std::size_t& strays) const = 0;
};

/// A value of the host's.
template<class T>
struct CallResults::Plain : Output {
    const void* address() const override { return &value; }
    Json json(std::size_t& strays) const override { return ValueJson(strays).of(value); }
    void line(std::string& line, std::size_t& strays) const override { ValueLine(line, strays).put(value); }

    T value{};
};

/// A result that is a text of something else than a number is of the type that the letter takes, but not
/// taken.
struct CallResults::Number final : Plain<double> {
    /// A value that is no number, of a kind that no calculation gives.
    static constexpr std::uint64_t mark = 0x7FF8'51A7'0C0B'1E55;

    Number() { value = std::bit_cast<double>(mark); }
    bool isUntouched() const override { return std::bit_cast<std::uint64_t>(value) == mark; }
};

struct CallResults::Text final : Output {
    ~Text() override { std::free(text); }
    const void* address() const override { return &text; }
    Json json(std::size_t& strays) const override
    {
        return text ? ValueJson(strays).of(std::string(text)) : Json();
    }
    void line(std::string& line, std::size_t& strays) const override
    {
        ValueLine values(line, strays);
        if (text)
            values.put(std::string(text));
        else
            values.raw("null");
    }

    char* text = nullptr;
};

struct CallResults::Bytes final : Output {
    ~Bytes() override { std::free(buffer.data); }
    const void* address() const override { return &buffer; }
    Json json(std::size_t&) const override { return digits(); }
    void line(std::string& line, std::size_t&) const override { line += '"' + digits() + '"'; }
    std::string digits() const
    {
        std::string digits;
        for (int i = 0; i < buffer.length; ++i)
            digits += fmt::format("{:02X}", static_cast<unsigned char>(buffer.data[i]));
        return digits;
    }

    quor_binary buffer;
};

struct CallResults::Pointer final : Output {
    const void* address() const override { return &pointer; }
    Json json(std::size_t&) const override { return pointer ? Json(digits()) : Json(); }
    void line(std::string& line, std::size_t&) const override { line += pointer ? digits() : "null"; }
    std::string digits() const { return fmt::format("{:#x}", reinterpret_cast<std::uintptr_t>(pointer)); }

    void* pointer = nullptr;
};

struct CallResults::Primitives final : Output {
    ~Primitives() override
    {
        for (const QuorPrimary* primitive : list)
            delete primitive;
    }
    const void* address() const override { return &list; }
    Json json(std::size_t& strays) const override
    {
        Json array = Json::array();
        for (const QuorPrimary* primitive : list)
            array.push_back(jsonOf(*primitive, strays));
        return array;
    }
    void line(std::string& line, std::size_t& strays) const override
    {
        line += fmt::format("{} primitive{}", list.size(), list.size() == 1 ? "" : "s");
        std::string lines;
        for (std::size_t i = 0; i < list.size(); ++i) {
            line += "\n  ";
            appendLine(lines, i, *list[i], strays);
            lines.pop_back();
            line += lines;
            lines.clear();
        }
    }

    std::vector<QuorPrimary*> list;
};

struct CallResults::Table final : Output {
    const void* address() const override { return &table; }
    Json json(std::size_t& strays) const override
    {
        return jsonOf(readLuaValue(table.state(), table.index()), ValueJson(strays));
    }
    void line(std::string& line, std::size_t& strays) const override
    {
        ValueLine values(line, strays);
        putValue(values, readLuaValue(table.state(), table.index()));
    }

    lua_tinker::table table;
};

struct CallResults::HeapTable final : Output {
    ~HeapTable() override { delete table; }
    const void* address() const override { return &table; }
    Json json(std::size_t& strays) const override
    {
        return jsonOf(readLuaValue(table->state(), table->index()), ValueJson(strays));
    }
    void line(std::string& line, std::size_t& strays) const override
    {
        ValueLine values(line, strays);
        putValue(values, readLuaValue(table->state(), table->index()));
    }

    lua_tinker::table* table = nullptr;
};

CallResults::CallResults(const std::string& letters) : letters_(letters), given_(letters.size(), false)
{
    for (const char letter : letters)
        outputs_.push_back(outputOf(letter));
}

CallResults::~CallResults() = default;

std::unique_ptr<CallResults::Output> CallResults::outputOf(char letter)
{
    switch (letter) {
    case 'i':
        return std::make_unique<Plain<int>>();
    case 'd':
        return std::make_unique<Number>();
    case 'n':
        return std::make_unique<Plain<bool>>();
    case 'I':
        return std::make_unique<Plain<long long>>();
    case 's':
        return std::make_unique<Text>();
    case 'r':
        return std::make_unique<Plain<std::string>>();
    case 'y':
        return std::make_unique<Bytes>();
    case 'u':
        return std::make_unique<Pointer>();
    case 'o':
        return std::make_unique<Plain<KxDbObjectId>>();
    case 'p':
        return std::make_unique<Plain<KxGePoint3D>>();
    case 'v':
        return std::make_unique<Plain<KxGeVector3D>>();
    case 'X':
        return std::make_unique<Plain<KxGeMatrix3D>>();
    case 'P':
        return std::make_unique<Plain<std::vector<KxGePoint3D>>>();
    case 'O':
        return std::make_unique<Plain<std::vector<KxDbObjectId>>>();
    case 'S':
        return std::make_unique<Plain<std::vector<std::string>>>();
    case 'g':
        return std::make_unique<Plain<std::vector<QuorPolyDesc>>>();
    case 'l':
        return std::make_unique<Plain<std::vector<std::vector<QuorPolyDesc>>>>();
    case 'm':
    case 'M':
    case 'a':
        return std::make_unique<Plain<std::vector<KVParams>>>();
    case 'B':
    case 'b':
        return std::make_unique<Plain<std::vector<std::vector<KVParams>>>>();
    case 'k':
        return std::make_unique<Plain<std::vector<KVData>>>();
    case 'T':
        return std::make_unique<Primitives>();
    case 'c':
        return std::make_unique<Table>();
    default: // 't'
        return std::make_unique<HeapTable>();
    }
}

void CallResults::addTo(std::vector<quorlua::CallItem>& items) const
{
    for (const auto& output : outputs_) {
        quorlua::CallItem item{};
        item.address = output->address();
        items.push_back(item);
    }
}

void CallResults::settle(const CallWatch& watch)
{
    for (std::size_t i = 0; i < letters_.size(); ++i)
        given_[i] = watch.takes(i, letters_[i]) && !outputs_[i]->isUntouched();
}

std::size_t CallResults::notGiven() const
{
    return static_cast<std::size_t>(std::count(given_.begin(), given_.end(), false));
}

std::string CallResults::json(std::size_t& strays) const
{
    std::string text = "[";
    const char* before = "\n";
    for (std::size_t i = 0; i < letters_.size(); ++i) {
        Json object;
        object.emplace("letter", std::string(1, letters_[i]));
        if (given_[i])
            object.emplace("value", outputs_[i]->json(strays));
        else
            object.emplace("given", false);
        text += before + object.dump();
        before = ",\n";
    }
    return text + "]";
}

std::string CallResults::lines(std::size_t& strays) const
{
    std::string text;
    for (std::size_t i = 0; i < letters_.size(); ++i) {
        text += letters_[i];
        text += ' ';
        if (given_[i])
            outputs_[i]->line(text, strays);
        else
            text += "not given";
        text += '\n';
    }
    return text;
}

} // namespace quor
