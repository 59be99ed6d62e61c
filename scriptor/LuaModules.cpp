#include <QuorScriptor/LuaModules.h>

#include "KeptBlocks.h"
#include "Modules.h"
#include "duplicateText.h"

#include <algorithm>
#include <cstdlib>
#include <cstring>
#include <exception>
#include <memory>
#include <new>

namespace quorlua {
namespace {

constexpr std::size_t mostEntries = 10000;

std::size_t entriesOf(const luaL_Reg* list)
{
    std::size_t count = 0;
    while (count < mostEntries && list[count].name && list[count].func)
        ++count;
    return count;
}

/// Copies entries with names of their own. False when memory ran out, with the rest left empty.
bool copyEntries(const luaL_Reg* from, std::size_t count, luaL_Reg* to)
{
    for (std::size_t i = 0; i < count; ++i) {
        to[i].name = duplicateText(from[i].name);
        if (!to[i].name) return false;
        to[i].func = from[i].func;
    }
    return true;
}

void freeNames(const luaL_Reg* list, std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i)
        std::free(const_cast<char*>(list[i].name));
}

/// The entries of both lists in one array, null when memory ran out.
luaL_Reg* merge(const luaL_Reg* first, const luaL_Reg* second)
{
    const std::size_t firstCount = entriesOf(first);
    const std::size_t secondCount = entriesOf(second);
    const std::size_t count = firstCount + secondCount;
    auto* merged = static_cast<luaL_Reg*>(std::calloc(count + 1, sizeof(luaL_Reg)));
    if (!merged) return nullptr;
    if (copyEntries(first, firstCount, merged) && copyEntries(second, secondCount, merged + firstCount))
        return merged;
    freeNames(merged, count);
    std::free(merged);
    return nullptr;
}

/// False, with nothing made, when memory runs out.
bool makeContainers(LuaLRegHelper::Map*& lists, std::vector<luaL_Reg*>*& merged)
{
    std::unique_ptr<LuaLRegHelper::Map> made(new (std::nothrow) LuaLRegHelper::Map);
    auto* arrays = made ? new (std::nothrow) std::vector<luaL_Reg*> : nullptr;
    if (!arrays) return false;
    lists = made.release();
    merged = arrays;
    return true;
}

LuaLRegHelper& registry()
{
    static LuaLRegHelper helper;
    return helper;
}

} // namespace

LuaLRegHelper::LuaLRegHelper() : lists_(nullptr), merged_(nullptr)
{
    // What `get_reg` gives where there was no memory, until there is some for the first list.
    static Map none;
    if (!makeContainers(lists_, merged_)) lists_ = &none;
}

LuaLRegHelper::~LuaLRegHelper()
{
    if (!merged_) return;
    for (luaL_Reg* list : *merged_) {
        for (const luaL_Reg* entry = list + 1; list->name && entry->name; ++entry)
            // Without memory the name stays all the same: a state may hold it.
            static_cast<void>(kept::keep(const_cast<char*>(entry->name)));
        std::free(const_cast<char*>(list->name));
        std::free(list);
    }
    delete merged_;
    delete lists_;
}

LuaLRegHelper& LuaLRegHelper::operator=(const LuaLRegHelper& other) = default;

void LuaLRegHelper::addLuaRegFunc(const char* name, const luaL_Reg* list)
{
    if (!name || !*name || !list) return;
    if (!merged_ && !makeContainers(lists_, merged_)) return;
    try {
        const auto [entry, added] = lists_->try_emplace(name, list);
        if (added) return;
        merged_->reserve(merged_->size() + 1);
        luaL_Reg* merged = merge(entry->second, list);
        if (!merged) return;
        merged_->push_back(merged);
        entry->second = merged;
    } catch (const std::exception&) {
        // Without memory the registry stays as it was.
    }
}

void addRegLuaModule(const char* name, const luaL_Reg* list)
{
    registry().addLuaRegFunc(name, list);
}

LuaLRegHelper::Map registeredModules()
{
    return registry().get_reg();
}

} // namespace quorlua
