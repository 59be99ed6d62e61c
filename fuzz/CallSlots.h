#pragma once

#include "Drawn.h"
#include "Shapes.h"

#include <QuorPureScriptor/lua_tinker.h>
#include <QuorScriptor/GlibCallbacks.h>
#include <QuorScriptor/luacall.h>
#include <array>
#include <cstdlib>
#include <string>
#include <vector>

namespace fuzz {

constexpr std::size_t mostSlots = 24;
using SlotAddresses = std::array<void*, mostSlots>;

class Style final : public GlibTextStyle {
public:
    virtual ~Style() = default;
    double height() const override { return 2.5; }
    double getlen(const char* text) const override { return text ? 1 : 0; }
    double getlen_h(const char* text, double height) const override { return getlen(text) * height; }
    void setstyle(const char*) override {}
    double getfactor() const override { return 0.75; }
};

/// An object of every type that letters name, for one place of a format. What one call read is an argument of
/// the next.
struct CallSlot {
    int integer = 0;
    bool truth = false;
    double number = 0;
    long long integer64 = 0;
    std::string given;
    quor_binary givenBytes;
    lua_tinker::table givenTable;
    char* text = nullptr;
    std::string string;
    quor_binary bytes;
    void* pointer = nullptr;
    KxDbObjectId id;
    KxGePoint3D point;
    KxGeVector3D vector;
    KxGeMatrix3D matrix;
    std::vector<KxGePoint3D> points;
    std::vector<KxDbObjectId> ids;
    std::vector<std::string> texts;
    std::vector<QuorPolyDesc> polyline;
    std::vector<std::vector<QuorPolyDesc>> polylines;
    std::vector<KVParams> records;
    std::vector<std::vector<KVParams>> lists;
    std::vector<KVData> data;
    Drawn drawn;
    lua_tinker::table table;
    lua_tinker::table* made = nullptr;
};

/// The slots of a call, from place to place of the format.
class CallSlots {
public:
    /// The items of argument letters, up to the first byte that is none.
    std::vector<quorlua::CallItem> arguments(const std::string& letters, Input& input, lua_State* L)
    {
        std::vector<quorlua::CallItem> items;
        for (std::size_t i = 0; i < letters.size(); ++i) {
            quorlua::CallItem item{};
            if (!argument(letters[i], slots_[i], input, L, item)) break;
            items.push_back(item);
        }
        return items;
    }

    /// The outputs of result letters; a byte that is none has an address, too, which nothing may write.
    SlotAddresses outputs(const std::string& letters)
    {
        SlotAddresses addresses{};
        for (std::size_t i = 0; i < letters.size(); ++i)
            addresses[i] = output(letters[i], slots_[i]);
        return addresses;
    }

    /// Frees what a call handed out.
    void free(const std::string& letters)
    {
        for (std::size_t i = 0; i < letters.size(); ++i) {
            CallSlot& slot = slots_[i];
            std::free(slot.text);
            slot.text = nullptr;
            require(slot.bytes.length >= 0 && (slot.bytes.length == 0) == !slot.bytes.data,
                    "bytes have a block and a length, or neither");
            std::free(slot.bytes.data);
            slot.bytes = {};
            slot.drawn.free();
            slot.table = {};
            delete slot.made;
            slot.made = nullptr;
        }
    }

private:
    bool argument(char letter, CallSlot& slot, Input& input, lua_State* L, quorlua::CallItem& item)
    {
        switch (letter) {
        case 'i':
            item.integer = static_cast<signed char>(input.byte()) * 0x1000000;
            return true;
        case 'n':
            item.truth = input.flag();
            return true;
        case 'd':
            item.number = readNumber(input);
            return true;
        case 'I':
            item.integer64 = static_cast<long long>(input.byte()) << 40;
            return true;
        case 'T': // results alone
            return false;
        default:
            break;
        }
        slot.given = input.word(16);
        switch (letter) {
        case 's':
            item.address = slot.given == "null" ? nullptr : slot.given.c_str();
            break;
        case 'r':
            item.address = &slot.given;
            break;
        case 'y':
            slot.givenBytes = {static_cast<int>(slot.given.size()) - 1, slot.given.data()};
            item.address = &slot.givenBytes;
            break;
        case 'c':
        case 't':
            slot.givenTable = lua_tinker::table(L, slot.given.size() == 1 ? 100 : 1);
            item.address = slot.givenTable.handle();
            break;
        case 'm':
        case 'M':
        case 'a':
            slot.records = readRecords(input, 4);
            item.address = &slot.records;
            break;
        case 'x':
            item.address = slot.given.empty() ? nullptr : &style_;
            break;
        default:
            item.address = output(letter, slot);
            return item.address != nullptr;
        }
        return true;
    }

    static void* output(char letter, CallSlot& slot)
    {
        switch (letter) {
        case 'i':
            return &slot.integer;
        case 'd':
            return &slot.number;
        case 'n':
            return &slot.truth;
        case 'I':
            return &slot.integer64;
        case 's':
            return &slot.text;
        case 'r':
            return &slot.string;
        case 'y':
            return &slot.bytes;
        case 'u':
            return &slot.pointer;
        case 'o':
            return &slot.id;
        case 'p':
            return &slot.point;
        case 'v':
            return &slot.vector;
        case 'X':
            return &slot.matrix;
        case 'P':
            return &slot.points;
        case 'O':
            return &slot.ids;
        case 'S':
            return &slot.texts;
        case 'g':
            return &slot.polyline;
        case 'l':
            return &slot.polylines;
        case 'm':
        case 'M':
        case 'a':
            return &slot.records;
        case 'B':
        case 'b':
            return &slot.lists;
        case 'k':
            return &slot.data;
        case 'T':
            return static_cast<std::vector<QuorPrimary*>*>(&slot.drawn);
        case 'c':
            return &slot.table;
        case 't':
            return &slot.made;
        default:
            return nullptr;
        }
    }

    CallSlot slots_[mostSlots];
    Style style_;
};

} // namespace fuzz
